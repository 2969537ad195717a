// VelmarBase: command line.
#include "Groups.h"

#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "mesh/VXGeom.h"

#include <algorithm>
#include <iterator>

namespace vx::cli
{

BBitArray PolysOfGroup(const VXGeom& geom, const char* group)
{
    BBitArray polys(geom.NumPolys());
    std::int32_t word = 0;
    std::uint32_t mask = 0;
    if (GEOM_GetGroupBit(geom.Geom(), group, &word, &mask))
        for (int p = 0; p < geom.NumPolys(); ++p)
            polys.Set(p, (geom.Polygon(p)->GroupWord(word) & mask) != 0);
    return polys;
}

void SetPolysOfGroup(VXGeom& geom, const char* group, const BBitArray& polys)
{
    BBitArray all(geom.NumPolys());
    all.SetAll(true);
    geom.PolyGroupAddOrRemoveWithBitArray(group, true, all);
    geom.PolyGroupAddOrRemoveWithBitArray(group, false, polys);
}

std::string AddFreshGroup(const std::vector<VXGeom*>& meshes)
{
    std::string name = "selection";
    const auto taken = [&name](const VXGeom* mesh)
    { return GEOM_GetGroupBit(mesh->Geom(), name.c_str(), nullptr, nullptr); };
    while (std::any_of(meshes.begin(), meshes.end(), taken))
        name += '_';
    const bool added =
        std::all_of(meshes.begin(), meshes.end(),
                    [&name](VXGeom* mesh) { return GEOM_GroupAddElem(mesh->Geom(), name.c_str(), -1) == 0; });
    return added ? name : std::string();
}

std::vector<std::string> GroupNames(const VXScene& scene)
{
    std::vector<std::string> names;
    for (std::int64_t i = 0; i < scene.NumObjects(); ++i)
        if (const VXObject* const object = scene.Object(int(i)); object && object->Geom() && object->Geom()->Geom())
            for (const BString& name : object->Geom()->Geom()->groupNames)
                if (std::find(names.begin(), names.end(), name.Std()) == names.end())
                    names.push_back(name.Std());
    return names;
}

const VXMaterialColor4& HighlightColor(std::size_t i)
{
    static const VXMaterialColor4 kColors[] = {{0.98f, 0.45f, 0.05f, 1}, {0.10f, 0.45f, 0.95f, 1},
                                               {0.15f, 0.70f, 0.20f, 1}, {0.85f, 0.15f, 0.60f, 1},
                                               {0.95f, 0.78f, 0.05f, 1}, {0.05f, 0.65f, 0.65f, 1}};
    return kColors[i % std::size(kColors)];
}

} // namespace vx::cli
