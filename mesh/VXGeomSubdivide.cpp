#include "mesh/VXGeom.h"

#include "mesh/kernel/CatmullClark.h"

#include <new>
#include <numeric>

namespace
{
// What a quad of the result takes with its edges, normals and remap entry (about 250), the coarser levels that an
// object keeps beside it, and what building it takes.
constexpr std::size_t kBytesPerQuad = 400;

// Asks the system for all of it at once: it refuses what it could never give, which the many requests of a level would
// find out too late.
bool CanHold(int quads)
{
    const std::size_t bytes = std::size_t(quads) * kBytesPerQuad;
    void* const probe = MEM_RawAlloc(bytes);
    MEM_RawFree(probe, bytes);
    return probe != nullptr;
}
} // namespace

void VXGeom::SubdivideCatmullClark(VXGeom* dest)
{
    if (!dest || dest == this || !mGeom || dest->mGeom == mGeom)
        return;
    if (FillSubdivided(*dest))
    {
        dest->FinishSubdivided();
        return;
    }
    dest->Empty();
    dest->mSubdivPolyRemapTable.Empty();
    dest->mSubdivVertRemapTable.Empty();
}

bool VXGeom::FillSubdivided(VXGeom& dest) const
{
    const vx::CatmullSource source(*mGeom, NumVerts(true), {mEdgeList.Edges(), std::size_t(mEdgeList.GetEdgeCount())});
    vx::CatmullScratch scratch;
    if (!vx::PrepareCatmullClark(source, scratch))
        return false;
    const vx::CatmullSizes sizes = vx::CatmullSizesOf(source, scratch);
    dest.Empty();
    if (!CanHold(sizes.polys) || dest.SetSizeFor(sizes.verts, sizes.polys, sizes.corners, sizes.texVerts) != 0 ||
        !dest.TakeMaterials(*mGeom) || !dest.mSubdivPolyRemapTable.SetCountForWriting(sizes.polys) ||
        !dest.mSubdivVertRemapTable.SetCountForWriting(std::int64_t(source.points.size())))
        return false;
    std::iota(dest.mSubdivVertRemapTable.begin(), dest.mSubdivVertRemapTable.end(), 0);
    vx::CatmullClark(source, {*dest.mGeom, dest.mSubdivPolyRemapTable.Data()}, scratch);
    return true;
}

bool VXGeom::TakeMaterials(const GEOM& from)
{
    try
    {
        mGeom->materials = from.materials;
        mGeom->materialFiles = from.materialFiles;
    }
    catch (const std::bad_alloc&) // a name
    {
        return false;
    }
    return mGeom->materials.Count() == from.materials.Count() &&
           mGeom->materialFiles.Count() == from.materialFiles.Count();
}

bool VXGeom::FinishSubdivided()
{
    if (NumGeomMaterials() == 0)
        GEOM_MakeDefaultMaterial(mGeom);
    return RebuildLists();
}
