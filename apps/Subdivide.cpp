// VelmarBase: command line.
#include "ModelFile.h"
#include "Subdivision.h"

#include "host/import/ElementParts.h"
#include "mesh/VXGeom.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>
#include <string>

namespace vx::cli
{

namespace
{

constexpr int kMostLevels = 15;

struct SubdivideArguments
{
    std::string input, scheme;
    int levels = 1;
    ModelOutput output;
};

// A polygon that comes back to a vertex can make fewer quads than it has corners: the slots that stay lie behind the
// quads, have no polygon that they come from, and do not belong into a file.
bool DropEmptySlots(GEOM& record, BArray<int>& parents)
{
    const auto first = std::find(parents.begin(), parents.end(), -1);
    const int count = int(first - parents.begin());
    parents.SetCount(count);
    return count == record.numPolys || record.SetSize(count, record.numVerts, 4 * count, 0, record.tex ? 4 * count : 0,
                                                      record.tex ? record.tex->numVerts : 0) == 0;
}

// The library's own scheme gives its quads the material of their polygon alone; for a file they also take its groups,
// and objects begin where their first polygon's quads do.
bool TakeGroups(const GEOM& from, const BArray<int>& parents, GEOM& to)
{
    if (GEOM_SetNumGroups(&to, from.numGroups) != 0)
        return false;
    to.groupNames = from.groupNames;
    to.objectNames = from.objectNames;
    for (std::int32_t i = 0; i < to.numPolys; ++i)
        for (std::int64_t word = 0; word < from.GroupWords(); ++word)
            to.Poly(i)->SetGroupWord(word, from.Poly(parents[i])->GroupWord(word));
    for (GEOM_ObjectName& object : to.objectNames)
        object.firstPoly =
            std::int32_t(std::lower_bound(parents.begin(), parents.end(), object.firstPoly) - parents.begin());
    return to.groupNames.Count() == from.groupNames.Count() && to.objectNames.Count() == from.objectNames.Count();
}

// Level by level, each from the one before, which ends up in `mesh`.
bool SubdivideByOwnScheme(std::unique_ptr<VXGeom>& mesh, int levels)
{
    for (int level = 0; level < levels; ++level)
    {
        auto next = std::make_unique<VXGeom>();
        next->SetGenerateCreases(false);
        mesh->SubdivideCatmullClark(next.get());
        if (next->NumPolys() == 0 || !DropEmptySlots(*next->Geom(), next->SubdivPolyRemapTable()) ||
            !TakeGroups(*mesh->Geom(), next->SubdivPolyRemapTable(), *next->Geom()))
            return false;
        mesh = std::move(next);
    }
    return true;
}

bool SubdivideByOpenSubdiv(std::unique_ptr<VXGeom>& mesh, int levels)
{
    auto refined = std::make_unique<VXGeom>();
    refined->SetGenerateCreases(false);
    if (mesh->SubdivideOpenSubDiv(refined.get(), levels, kSubdivSchemeDefault, true) != 0)
        return false;
    mesh = std::move(refined);
    return true;
}

// Both schemes make room for texture vertices that no corner may use in the end; a file has no need of them.
bool DropUnusedTexVerts(GEOM& record)
{
    if (!record.tex)
        return true;
    GEOM_Texture& tex = *record.tex;
    BArray<std::int32_t> place;
    if (!place.SetCount(tex.numVerts))
        return false;
    for (std::int32_t i = 0; i < record.numPolys; ++i)
        for (std::int32_t k = 0; record.PolyHasTexture(i) && k < tex.polys[i].length; ++k)
            place[tex.sets[tex.polys[i].start + k]] = 1;
    std::int32_t count = 0;
    for (std::int32_t v = 0; v < tex.numVerts; ++v)
        if (place[v] != 0)
        {
            tex.verts[count] = tex.verts[v];
            place[v] = count++;
        }
    for (std::int32_t i = 0; i < record.numPolys; ++i)
        for (std::int32_t k = 0; record.PolyHasTexture(i) && k < tex.polys[i].length; ++k)
        {
            std::int32_t& corner = tex.sets[tex.polys[i].start + k];
            corner = place[corner];
        }
    return record.SetSize(record.numPolys, record.numVerts, int(record.NumCorners()), 0, tex.numCorners, count) == 0;
}

/// The faces of a model as they are to be subdivided. Null after a failure that has been told, with its code.
std::unique_ptr<VXGeom> ReadFaces(const SubdivideArguments& arguments, Stopwatch& watch, int& code)
{
    auto mesh = std::make_unique<VXGeom>();
    if (code = arguments.output.Open(arguments.input, *mesh, watch); code != kDone)
        return nullptr;
    const BString name = ShownName(arguments.input);
    const GEOM& record = *mesh->Geom();
    if (!HasElements(record, ElementPart::Faces))
        return code = Fail(kFailed, name, 0, "has no faces, expected some to subdivide"), nullptr;
    if (record.vertColors)
        Warn(name + ": colours of vertices are left out");
    if (!HasElements(record, ElementPart::Rest))
        return mesh;
    Warn(name + ": lines and points are left out");
    auto faces = std::make_unique<VXGeom>();
    faces->SetGenerateCreases(false);
    GEOM* const copy = CopyOfElements(record, ElementPart::Faces);
    const bool made = copy && faces->SetGeom(copy, false) == 0;
    faces->SetGeomShared(false);
    if (!made)
        return code = Fail(kFailed, name, 0, "out of memory"), nullptr;
    return faces;
}

int RunSubdivide(const SubdivideArguments& arguments)
{
    const ModelOutput& output = arguments.output;
    Stopwatch watch(output.verbose);
    int code = kDone;
    std::unique_ptr<VXGeom> mesh = ReadFaces(arguments, watch, code);
    if (!mesh)
        return code;
    const BString name = ShownName(arguments.input);

    const bool own = arguments.scheme == kOwnScheme;
    const int before = mesh->NumPolys();
    if (const BString problem = SubdivisionProblem(*mesh->Geom(), arguments.levels, own); !problem.IsEmpty())
        return Fail(kFailed, name, 0, problem);
    const bool done =
        own ? SubdivideByOwnScheme(mesh, arguments.levels) : SubdivideByOpenSubdiv(mesh, arguments.levels);
    if (!done || !DropUnusedTexVerts(*mesh->Geom()))
        return Fail(kFailed, name, 0, "out of memory");
    watch.Tell(BString::Format("subdivided to level %d by %s", arguments.levels, arguments.scheme.c_str()));

    return output.Write(*mesh, BString::Format("%d polygons before, %d after", before, mesh->NumPolys()),
                        {{"polygonsBefore", before},
                         {"polygonsAfter", mesh->NumPolys()},
                         {"levels", arguments.levels},
                         {"scheme", arguments.scheme}});
}

} // namespace

void AddSubdivideVerb(CLI::App& app, int& exitCode)
{
    const auto arguments = std::make_shared<SubdivideArguments>();
    CLI::App* const verb = AddVerb(app, "subdivide", "Refine a model towards the smooth surface that it controls");
    arguments->output.AddTo(*verb, arguments->input);
    AddWholeNumber(*verb, "--levels", arguments->levels, 1, kMostLevels,
                   "How many times: each level has four times the polygons of the one before");
    AddScheme(*verb, arguments->scheme);
    verb->footer("Groups, materials and texture coordinates are those of the polygons that the new ones come from.\n"
                 "Lines, points, normals and colours of vertices are left out.");
    verb->callback([arguments, &exitCode] { exitCode = RunSubdivide(*arguments); });
}

} // namespace vx::cli
