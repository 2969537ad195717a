// VelmarBase: viewer.
#include "Selection.h"

#include "apps/Groups.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"

namespace vx::view
{

bool Selection::Attach(VXScene& scene)
{
    mParts.clear();
    mCount = 0;
    mSurfacesStale = false;
    std::vector<VXGeom*> meshes;
    for (std::int64_t i = 0; i < scene.NumObjects(); ++i)
    {
        VXObject* const object = scene.Object(int(i));
        if (!object || !object->Geom() || !object->Geom()->Geom() || object->InternalName() == "GROUND")
            continue;
        mParts.push_back({object, int(i)});
        meshes.push_back(object->Geom());
    }
    mGroup = cli::AddFreshGroup(meshes);
    if (mGroup.empty())
        mParts.clear();
    return !mGroup.empty();
}

VXGeom* Selection::MeshOf(int object) const
{
    for (const Part& part : mParts)
        if (part.index == object)
            return part.object->Geom();
    return nullptr;
}

void Selection::Changed()
{
    mCount = 0;
    for (const Part& part : mParts)
        mCount += cli::PolysOfGroup(*part.object->Geom(), mGroup.c_str()).NumSet();
    mSurfacesStale = true;
}

void Selection::Replace(VXGeom& mesh, const BBitArray& polys) { cli::SetPolysOfGroup(mesh, mGroup.c_str(), polys); }

bool Selection::Has(int object, int poly) const
{
    const VXGeom* const mesh = MeshOf(object);
    return mesh && cli::PolysOfGroup(*mesh, mGroup.c_str())[poly];
}

// --- Changes

void Selection::Apply(Step step, int times)
{
    constexpr void (VXGeom::*kSteps[])(const char*) = {
        &VXGeom::PolyGroupGrowSelection, &VXGeom::PolyGroupShrinkSelection, &VXGeom::PolyGroupGrowSelectionEdgeLoop,
        &VXGeom::PolyGroupShrinkSelectionEdgeLoop};
    // A step only adds, or only takes away: one that leaves the number as it is has nothing more to do.
    for (std::int64_t i = 0, before = -1; i < times && mCount != before; ++i)
    {
        before = mCount;
        for (const Part& part : mParts)
            (part.object->Geom()->*kSteps[int(step)])(mGroup.c_str());
        Changed();
    }
}

void Selection::SelectOnly(int object, int poly)
{
    for (const Part& part : mParts)
    {
        BBitArray polys(part.object->Geom()->NumPolys());
        if (part.index == object)
            polys.Set(poly);
        Replace(*part.object->Geom(), polys);
    }
    Changed();
}

void Selection::Toggle(int object, int poly)
{
    VXGeom* const mesh = MeshOf(object);
    if (!mesh || poly < 0 || poly >= mesh->NumPolys())
        return;
    BBitArray polys = cli::PolysOfGroup(*mesh, mGroup.c_str());
    polys.Set(poly, !polys[poly]);
    Replace(*mesh, polys);
    Changed();
}

void Selection::SelectAll(bool on)
{
    for (const Part& part : mParts)
    {
        BBitArray polys(part.object->Geom()->NumPolys());
        polys.SetAll(on);
        Replace(*part.object->Geom(), polys);
    }
    Changed();
}

void Selection::Invert()
{
    for (const Part& part : mParts)
    {
        VXGeom& mesh = *part.object->Geom();
        BBitArray polys = cli::PolysOfGroup(mesh, mGroup.c_str());
        for (int p = 0; p < mesh.NumPolys(); ++p)
            polys.Set(p, !polys[p]);
        Replace(mesh, polys);
    }
    Changed();
}

void Selection::SelectGroup(const std::string& name)
{
    for (const Part& part : mParts)
        Replace(*part.object->Geom(), cli::PolysOfGroup(*part.object->Geom(), name.c_str()));
    Changed();
}

void Selection::Mirror(E_MirrorDirection side)
{
    for (const Part& part : mParts)
        part.object->Geom()->PolyGroupMirrorSelection(mGroup.c_str(), side, kMirrorAdd);
    Changed();
}

// --- Surfaces

// Each level knows which polygon of the level before a polygon came from; level 0 is a copy of the control mesh.
int Selection::ControlPoly(int object, int shownPoly) const
{
    for (const Part& part : mParts)
    {
        if (part.index != object)
            continue;
        int poly = shownPoly;
        for (int level = part.object->CurSubDivLevel(); level > 0 && poly >= 0; --level)
        {
            VXGeom* const mesh = part.object->SubdivGeom(level);
            poly = mesh && poly < mesh->SubdivPolyRemapTable().Count() ? mesh->SubdivPolyRemapTable()[poly] : -1;
        }
        return poly < part.object->Geom()->NumPolys() ? poly : -1;
    }
    return -1;
}

void Selection::UpdateSurfaces()
{
    if (!mSurfacesStale)
        return;
    mSurfacesStale = false;
    for (const Part& part : mParts)
    {
        VXGeom* const shown = part.object->CurSubdivGeom(true);
        if (!shown || shown == part.object->Geom() || !shown->Geom() ||
            GEOM_GroupAddElem(shown->Geom(), mGroup.c_str(), -1) != 0)
            continue;
        const BBitArray selected = cli::PolysOfGroup(*part.object->Geom(), mGroup.c_str());
        BBitArray polys(shown->NumPolys());
        for (int p = 0; selected.NextSet(0) >= 0 && p < shown->NumPolys(); ++p)
            polys.Set(p, selected[ControlPoly(part.index, p)]);
        Replace(*shown, polys);
    }
}

void Selection::AppendPoints(std::vector<VERTEX>& points) const
{
    for (const Part& part : mParts)
    {
        const VXGeom* const shown = part.object->CurSubdivGeom(true);
        if (!shown || !shown->Geom())
            continue;
        const GEOM& record = *shown->Geom();
        const BBitArray polys = cli::PolysOfGroup(*shown, mGroup.c_str());
        for (std::int64_t p = polys.NextSet(0); p >= 0; p = polys.NextSet(p + 1))
            for (std::int32_t k = 0; k < record.Poly(p)->length; ++k)
            {
                VERTEX world;
                MAT_VertTransform(record.verts + record.sets[record.Poly(p)->start + k], &world, 1,
                                  part.object->GetTransform());
                points.push_back(world);
            }
    }
}

// --- Through a reload

std::vector<BBitArray> Selection::Bits() const
{
    std::vector<BBitArray> bits;
    for (const Part& part : mParts)
        bits.push_back(cli::PolysOfGroup(*part.object->Geom(), mGroup.c_str()));
    return bits;
}

void Selection::TakeBits(const std::vector<BBitArray>& bits)
{
    for (std::size_t i = 0; i < mParts.size() && i < bits.size(); ++i)
        if (bits[i].Count() == mParts[i].object->Geom()->NumPolys())
            Replace(*mParts[i].object->Geom(), bits[i]);
    Changed();
}

} // namespace vx::view
