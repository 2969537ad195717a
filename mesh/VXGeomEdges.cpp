#include "mesh/VXGeom.h"

#include "mesh/kernel/Edges.h"
#include "mesh/kernel/Normals.h"

int VXGeom::BuildEdgeList()
{
    ClearEdgeSmoothing();
    if (!mGeom || mGeom->numVerts < 2 || mGeom->numPolys < 1)
    {
        const bool emptied = mEdgeList.Begin(mGeom ? mGeom->numVerts : 0);
        mEdgeList.End();
        return mGeom && emptied ? 0 : -1;
    }
    VXEdgeList::Kinds kinds;
    if (!mEdgeList.Build(*mGeom, nullptr, &kinds))
        return -1;
    SetIncludesLines(kinds.lines);
    SetIncludesPoints(kinds.points);
    return 0;
}

void VXGeom::ClearEdgeSmoothing()
{
    SetEdgesClassified(false);
    ReleaseCreaseArrays();
    if (mNumbCreaseVerts > 0) // else no edge can name a crease vertex
        for (std::int32_t e = 0; e < mEdgeList.GetEdgeCount(); ++e)
            mEdgeList.GetEdge(e).FreeCreaseData();
    mNumbCreaseVerts = 0;
    mSeamEdges.Release();
}

void VXGeom::ReleaseCreaseArrays()
{
    Lend<T_VERTEX>(mUvsPerVertex, mLentUvsPerVertex, nullptr);
    Lend<std::int32_t>(mCreaseSets, mLentCreaseSets, nullptr);
    Lend<std::int32_t>(mOrigCreaseIndex, mLentOrigCreaseIndex, nullptr);
}

void VXGeom::ComputeBackfacingToVertex(const VERTEX* viewpoint)
{
    if (!mGeom || !mGeom->verts || mGeom->numVerts < 1 || !viewpoint)
        return;
    const vx::PolyView polys = vx::PolysOf(*mGeom);
    const std::span<const VERTEX> points(mGeom->verts, std::size_t(mGeom->numVerts));
    if (!UseExternalNormals())
    {
        if (!MEM_SizeArrayForWriting(mPolyNormals, std::size_t(mGeom->numPolys)))
            return;
        vx::FacingNormals(points, polys, mPolyNormals);
    }
    if (!HasAllPolyNormals())
        return;
    vx::ClassifyFacing({mEdgeList.Edges(), std::size_t(mEdgeList.GetEdgeCount())}, polys, points, mPolyNormals,
                       *viewpoint);
    RefreshSilhouetteFlags();
}

int VXGeom::FindClosestUnflaggedEdge(const VERTEX* point) const
{
    if (!mGeom || !mGeom->verts || !point)
        return -1;
    int best = -1;
    float nearest = 1111111106560.0f;
    for (std::int32_t e = 0; e < mEdgeList.GetEdgeCount(); ++e)
    {
        const VXEdge& edge = mEdgeList.GetEdge(e);
        if (edge.IsAppFlagged())
            continue;
        const VERTEX middle = 0.5f * (mGeom->verts[edge.VertIndex1()] + mGeom->verts[edge.VertIndex2()]);
        const float squared = Dot(middle - *point, middle - *point);
        if (squared < nearest)
        {
            nearest = squared;
            best = e;
        }
    }
    return best;
}
