#include "mesh/VXGeom.h"

#include "base/BBitArray.h"
#include "engine/VXEngine.h"
#include "engine/VXSceneContext.h"
#include "engine/VXSwitches.h"
#include "mesh/detail/TangentsBeside.h"
#include "mesh/kernel/Creases.h"
#include "mesh/kernel/Normals.h"

#include <algorithm>
#include <chrono>

// --- Polygon and vertex normals

bool VXGeom::ComputeAllNormals()
{
    if (!mGeom || mGeom->numPolys < 1 || UseExternalNormals())
        return true;
    if (!MEM_SizeArrayForWriting(mPolyNormals, std::size_t(mGeom->numPolys)))
        return false;
    if (mNumbCreaseVerts == 0 && !WantsCreases())
        return ComputePlainTogether();
    if (GEOM_CalcPolyNormals(mGeom, mPolyNormals) == -1)
        return false;
    MakeVertexNormals();
    return mVertNormals != nullptr;
}

// SetSizeFor gives them as many entries as there are vertices; before they are computed that can be too few.
bool VXGeom::HasAllPolyNormals() const
{
    return mPolyNormals && (mPolyNormals == mLentPolyNormals || MEM_Count(mPolyNormals) >= std::size_t(NumPolys()));
}

// Creases are not generated while a temporary vertex array stands in: it is the caller's and cannot grow.
bool VXGeom::WantsCreases() const { return GenerateCreases() && !EdgesClassified() && !mSavedVerts; }

bool VXGeom::ComputePlainTogether()
{
    ClearWeldedNormals();
    const std::size_t numVerts = std::size_t(mGeom->numVerts);
    if (!MEM_SizeArrayForWriting(mVertNormals, numVerts))
    {
        MEM_Release(mVertNormals);
        return false;
    }
    vx::PolyAndPlainNormals(*mGeom, mPolyNormals, {mVertNormals, numVerts});
    return true;
}

int VXGeom::MakeVertexNormals(EDGELIST* /*unused*/)
{
    if (!mGeom)
        return -1;
    ClearWeldedNormals();
    if (UseExternalNormals())
        return 0;
    const bool split = WantsCreases();
    const auto start = std::chrono::steady_clock::now();
    if (split)
        SplitCreases(nullptr); // when memory runs out there are none, and the mesh can still be drawn
    if (mNumbCreaseVerts > 0)
        ComputeCreasedNormals();
    else
        ComputeNonCreasedNormals();
    if (split && EdgesClassified())
        DumpCreaseData(nullptr,
                       std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    return 0;
}

VERTEX* VXGeom::ComputeNonCreasedNormals()
{
    if (!mGeom || UseExternalNormals())
        return mVertNormals;
    if (!HasAllPolyNormals())
        return nullptr;
    const std::size_t numVerts = std::size_t(mGeom->numVerts);
    if (!MEM_SizeArrayForWriting(mVertNormals, numVerts))
    {
        MEM_Release(mVertNormals);
        return nullptr;
    }
    vx::PlainNormals({mGeom->verts, numVerts}, vx::PolysOf(*mGeom), mPolyNormals, {mVertNormals, numVerts});
    return mVertNormals;
}

VERTEX* VXGeom::ComputeCreasedNormals(VERTEX* normals, VERTEX* polyNormals, bool tangents)
{
    ClearWeldedNormals();
    const VERTEX* const faces = polyNormals ? polyNormals : HasAllPolyNormals() ? mPolyNormals : nullptr;
    if (!mGeom || !faces)
        return nullptr;
    const vx::TangentsBeside beside(this, (tangents || VXSwitches::TangentsRequested()) &&
                                              VXEngine::TangentCalculationsEnabled());
    if (mNumbCreaseVerts == 0 && !normals && !polyNormals)
        return ComputeNonCreasedNormals();

    const std::size_t numVerts = std::size_t(NumVerts(true));
    if (!normals)
    {
        if (UseExternalNormals())
            return mVertNormals; // the host's: not changed here
        if (!MEM_SizeArrayForWriting(mVertNormals, numVerts))
        {
            MEM_SetAllocationFailed(true);
            MEM_Release(mVertNormals);
            return nullptr;
        }
        normals = mVertNormals;
    }
    const std::span<VERTEX> sums(normals, numVerts);
    if (mNumbCreaseVerts == 0)
        vx::PlainNormals({mGeom->verts, numVerts}, vx::PolysOf(*mGeom), faces, sums);
    else
        SumCreasedNormals(faces, sums);
    return normals;
}

void VXGeom::SumCreasedNormals(const VERTEX* polyNormals, std::span<VERTEX> sums)
{
    vx::ClearSums(sums);
    const std::span<VXEdge> edges(mEdgeList.Edges(), std::size_t(mEdgeList.GetEdgeCount()));
    const bool ours = mCreaseSets && mCreaseSets != mLentCreaseSets;
    if (ours)
    {
        // Walking the corners reads a sixth of what walking the edges does. The corners from which a seam starts count
        // for the plain vertex; they are put back from the edges afterwards.
        const auto redirectSeams = [this, edges](bool toPlain)
        {
            for (const std::int32_t e : mSeamEdges)
                vx::RedirectStarts(edges[std::size_t(e)], vx::PolysOf(*mGeom), mCreaseSets, toPlain);
        };
        redirectSeams(true);
        vx::AddCornerNormals(vx::PolysOf(*mGeom, mCreaseSets), polyNormals, sums);
        redirectSeams(false);
    }
    else
        vx::AddEdgeNormals(edges, {polyNormals, std::size_t(mGeom->numPolys)}, sums);
    vx::NormaliseSums(sums);
    if (ours)
    {
        for (const std::int32_t e : mSeamEdges)
            vx::CopySeamNormals(edges[std::size_t(e)], sums);
        return;
    }
    for (const VXEdge& edge : edges)
        if (edge.IsCreaseEdge() && edge.IsSmoothEdge())
            vx::CopySeamNormals(edge, sums);
}

// --- Welded normals

void VXGeom::CalculateWeldedNormals()
{
    ClearWeldedNormals();
    const std::int32_t numVerts = NumVerts(true);
    if (!mVertNormals || !mPolyNormals || numVerts <= 2 || !VXSceneContext::HaberlinesWelded())
        return;
    GEOM* const welded = GEOM_Copy(mGeom, 0);
    std::int32_t* const remap = MEM_AllocArray<std::int32_t>(std::size_t(mGeom->numVerts));
    VERTEX* const normals = MEM_AllocArray<VERTEX>(std::size_t(numVerts));
    const float tolerance = GEOM_WeldTolerance();
    GEOM_SetWeldTolerance(0.000005f);
    const bool done = welded && remap && normals && GEOM_Weld(welded, remap) == 0;
    GEOM_SetWeldTolerance(tolerance);
    if (done)
    {
        // Welding keeps the polygons, so their normals hold for the welded record too.
        const std::size_t numWelded = std::size_t(welded->numVerts);
        vx::PlainNormals({welded->verts, numWelded}, vx::PolysOf(*welded), mPolyNormals, {normals, numWelded});
        // Downwards, because a vertex never welds to a higher index: what is read has not been overwritten yet.
        for (std::int32_t i = numVerts - 1; i >= 0; --i)
            normals[i] = normals[remap[OrigVertIndex(i)]];
        mWeldedNormals = normals;
    }
    else
        MEM_Free(normals);
    MEM_Free(remap);
    GEOM_Free(welded);
}

VERTEX* VXGeom::WeldedNormals(bool compute)
{
    if (!mGeom)
        return nullptr;
    if (!mWeldedNormals && compute)
        CalculateWeldedNormals();
    return mWeldedNormals ? mWeldedNormals : mVertNormals;
}

void VXGeom::ClearWeldedNormals() { MEM_Release(mWeldedNormals); }

// --- Polygon centres

void VXGeom::ComputePolyCenters()
{
    ClearPolyCenters();
    mPolyCenters = MEM_CallocArray<VERTEX>(std::size_t(NumPolys()));
    if (mPolyCenters)
        ComputePolyCentroids(mPolyCenters, nullptr);
}

void VXGeom::ComputePolyCentroids(VERTEX* out, T_VERTEX* texOut) const { GEOM_CalcPolyCentroids(mGeom, out, texOut); }

void VXGeom::ClearPolyCenters() { MEM_Release(mPolyCenters); }

// --- Smoothing list

void VXGeom::BuildVertSmoothList()
{
    mVertSmoothingList.Clear();
    const std::int32_t numVerts = NumVerts(false);
    if (numVerts == 0 || !mVertSmoothingList.SetSize(NumVerts(true)))
        return;
    // A vertex is walked around once for each of its neighbours whose newest edge starts there. Walking again adds
    // nothing, so around a vertex of high valence it is done once only.
    BBitArray walked(numVerts);
    const std::int32_t numLinked = std::min(numVerts, mEdgeList.GetVertexLinkCount());
    for (std::int32_t v = 0; v < numLinked; ++v)
    {
        const std::int32_t newest = mEdgeList.GetFirstVertexLink(v);
        if (newest < 0)
            continue;
        const VXEdge& start = mEdgeList.GetEdge(mEdgeList.GetEdgefromVertexLink(newest));
        if (walked[start.VertIndex1()])
            continue;
        walked.Set(start.VertIndex1());
        VertLinkEdgeWalker walker(start.VertIndex1(), &mEdgeList, nullptr, start.PolyIndex1(), false);
        for (std::int32_t e = walker.NextEdgeIndex(); e >= 0; e = walker.NextEdgeIndex())
            SmoothAcross(mEdgeList.GetEdge(e));
    }
}

void VXGeom::SmoothAcross(const VXEdge& edge)
{
    const std::int32_t poly1 = edge.PolyIndex1(), poly2 = edge.PolyIndex2();
    for (const std::int32_t v :
         {edge.VertIndex1(), edge.VertIndex2(), edge.CreaseVertexP1V1(false), edge.CreaseVertexP1V2(false)})
        mVertSmoothingList.Add(v, poly1);
    if (edge.IsOpenEdge())
        return;
    for (const std::int32_t v :
         {edge.VertIndex1(), edge.VertIndex2(), edge.CreaseVertexP2V1(false), edge.CreaseVertexP2V2(false)})
        mVertSmoothingList.Add(v, poly2);
    // Polygon 1 is not added to polygon 2's crease vertices in turn: the rule is one-sided.
    if (edge.IsSmoothEdge())
        for (const std::int32_t v :
             {edge.VertIndex1(), edge.VertIndex2(), edge.CreaseVertexP1V1(false), edge.CreaseVertexP1V2(false)})
            mVertSmoothingList.Add(v, poly2);
}
