#include "mesh/VXGeom.h"

#include "mesh/kernel/CatmullClark.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace
{
vx::CatmullSource SourceOf(const VXGeom& geom)
{
    const VXEdgeList& edges = geom.EdgeList();
    return {.polys = vx::PolysOf(*geom.Geom()),
            .points = {geom.Verts(), std::size_t(geom.Verts() ? geom.NumVerts(true) : 0)},
            .edges = {edges.Edges(), std::size_t(edges.GetEdgeCount())},
            .tex = geom.Geom()->tex};
}

// What the step does not write itself: the old texture vertices, and the face points.
vx::CatmullTarget TargetIn(const vx::CatmullSource& source, const GEOM& sourceGeom, GEOM& geom, int* parents)
{
    vx::CatmullTarget target{
        .verts = geom.verts, .polys = geom.polys, .stride = geom.PolyStride(), .sets = geom.sets, .parents = parents};
    const std::int64_t numTexVerts = source.NumTexVerts();
    if (numTexVerts > 0)
    {
        target.texVerts = geom.tex->verts;
        target.texSets = geom.tex->sets;
        target.texPolys = geom.tex->polys;
        std::memcpy(target.texVerts, source.tex->verts, std::size_t(numTexVerts) * sizeof(T_VERTEX));
    }
    GEOM_CalcPolyCentroids(&sourceGeom, target.verts + source.points.size(),
                           numTexVerts > 0 ? target.texVerts + numTexVerts : nullptr);
    return target;
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
    vx::CatmullScratch scratch;
    const vx::CatmullSource source = SourceOf(*this);
    if (!vx::PrepareCatmullClark(source, scratch))
        return false;

    const std::int64_t numVerts = std::int64_t(source.points.size()), numPolys = source.polys.count;
    const std::int64_t numCorners = scratch.NumCorners(), numEdges = std::int64_t(source.edges.size());
    const std::int64_t numTexVerts = source.NumTexVerts();
    const std::int64_t allTexVerts = numTexVerts > 0 ? numTexVerts + numPolys + 2 * std::max(numCorners, numEdges) : 0;
    dest.Empty();
    if (dest.SetSizeFor(int(numVerts + numPolys + numEdges), int(numCorners), int(4 * numCorners), int(allTexVerts)) !=
            0 ||
        !dest.TakeMaterials(*mGeom) || !dest.mSubdivPolyRemapTable.SetCountForWriting(numCorners) ||
        !dest.mSubdivVertRemapTable.SetCountForWriting(numVerts))
        return false;
    std::iota(dest.mSubdivVertRemapTable.begin(), dest.mSubdivVertRemapTable.end(), 0);
    vx::CatmullClark(source, TargetIn(source, *mGeom, *dest.mGeom, dest.mSubdivPolyRemapTable.Data()), scratch);
    return true;
}

bool VXGeom::TakeMaterials(const GEOM& from)
{
    mGeom->materials = from.materials;
    mGeom->materialFiles = from.materialFiles;
    return mGeom->materials.Count() == from.materials.Count() &&
           mGeom->materialFiles.Count() == from.materialFiles.Count();
}

bool VXGeom::FinishSubdivided()
{
    if (NumGeomMaterials() == 0)
        GEOM_MakeDefaultMaterial(mGeom);
    return RebuildLists();
}
