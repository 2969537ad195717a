#include "host/gl/EdgeLines.h"

#include "mesh/VXGeom.h"

#include <algorithm>
#include <cstring>

namespace vx
{
namespace
{
struct Marked
{
    std::uint64_t vertices;    // the two original ones, so that both sides of an edge come together
    std::int32_t rank, corner; // of the element that has it marked
    std::int32_t a, b;         // as they are drawn
};

bool IsInDrawingOrder(const Marked& x, const Marked& y)
{
    return x.rank != y.rank ? x.rank < y.rank : x.corner < y.corner;
}

// Of several elements that mark one edge the first in drawing order keeps it.
void KeepFirstOfEach(BArray<Marked>& marked, std::int64_t& count)
{
    std::sort(marked.begin(), marked.end(),
              [](const Marked& x, const Marked& y)
              { return x.vertices != y.vertices ? x.vertices < y.vertices : IsInDrawingOrder(x, y); });
    Marked* const end = std::unique(marked.begin(), marked.end(),
                                    [](const Marked& x, const Marked& y) { return x.vertices == y.vertices; });
    std::sort(marked.begin(), end, IsInDrawingOrder);
    count = end - marked.begin();
}
} // namespace

bool EdgeLines::Gather(const VXGeom& geom, std::uint32_t firstBit, BArray<std::int32_t>& table, GpuArray& to) const
{
    BArray<Marked> marked;
    std::int32_t numElements = 0;
    for (const VXElementKind kind : {VXElementKind::Quads, VXElementKind::Triangles})
    {
        const VXSortedBucket& bucket = geom.Sorted(kind);
        const std::int32_t n = kind == VXElementKind::Quads ? 4 : 3;
        for (std::int32_t i = 0; bucket.edgeFlags && bucket.corners && i < bucket.count; ++i)
            for (std::int32_t k = 0; (bucket.edgeFlags[i] & (firstBit * 15u)) && k < n; ++k)
                if (bucket.edgeFlags[i] & (firstBit << k))
                {
                    const std::int32_t a = bucket.corners[i * n + k], b = bucket.corners[i * n + (k + 1) % n];
                    const std::int32_t va = geom.OrigVertIndex(a), vb = geom.OrigVertIndex(b);
                    const std::uint64_t key = std::uint64_t(std::min(va, vb)) << 32 | std::uint32_t(std::max(va, vb));
                    if (!marked.Append({key, numElements + i, k, mWelded ? va : a, mWelded ? vb : b}))
                        return false;
                }
        numElements += bucket.count;
    }
    std::int64_t count = 0;
    KeepFirstOfEach(marked, count);
    BArray<std::int32_t> pairs;
    if (!table.SetCount(0) || !table.SetCount(numElements + 1) || !pairs.SetCountForWriting(2 * count))
        return false;
    for (std::int64_t i = 0; i < count; ++i)
    {
        ++table[marked[i].rank + 1];
        pairs[2 * i] = marked[i].a;
        pairs[2 * i + 1] = marked[i].b;
    }
    for (std::int32_t i = 0; i < numElements; ++i)
        table[i + 1] += table[i];
    to.Upload(pairs.Data(), std::size_t(pairs.Count()) * sizeof(std::int32_t));
    return true;
}

bool EdgeLines::Update(VXGeom& geom, bool welded)
{
    if (mFresh && welded == mWelded)
        return true;
    mFresh = mFaced = false;
    mWelded = welded;
    mNumQuads = geom.Sorted(VXElementKind::Quads).count;
    const VERTEX* const normals = welded ? geom.WeldedNormals(true) : geom.VertNormals();
    const std::size_t count = normals ? std::min(std::size_t(geom.NumVerts(true)), MEM_Count(normals)) : 0;
    mNormals.Upload(normals, count * sizeof(VERTEX));
    mFresh = Gather(geom, kElementEdgeDrawn, mFirst, mPairs);
    return mFresh;
}

bool EdgeLines::UpdateOutline(VXGeom& geom, const Mat44 modelView)
{
    if (mFaced && std::memcmp(mFacedView, modelView, sizeof mFacedView) == 0)
        return true;
    Mat44 toObject;
    MAT_Inverse(modelView, toObject, 4);
    VERTEX eye; // the origin of view space
    MAT_VertTransform(&eye, &eye, 1, toObject);
    geom.ComputeBackfacingToVertex(&eye);
    MAT_Copy(modelView, mFacedView);
    mFaced = Gather(geom, kElementEdgeOutline, mFirstOutline, mOutlinePairs);
    return mFaced;
}

GeomBuffers::Range EdgeLines::RangeOf(const BArray<std::int32_t>& table, VXElementKind kind, std::int32_t first,
                                      std::int32_t count) const
{
    const std::int64_t from = (kind == VXElementKind::Triangles ? mNumQuads : 0) + std::int64_t(first);
    if (kind > VXElementKind::Triangles || from + count >= table.Count())
        return {};
    return {table[from], table[from + count] - table[from]};
}
} // namespace vx
