#include "host/gl/VectorLines.h"

#include "mesh/VXGeom.h"

#include <algorithm>
#include <cmath>

namespace vx
{
// Lines are half an edge long, so that those of neighbours stay apart; but on dense models long enough to be seen, and
// on coarse ones short enough to belong to their vertex. Where they are so dense that they would cover the surface,
// they are fainter. Shares of the diagonal of the mesh's box.
static constexpr float kShareOfEdge = 0.5f;
static constexpr float kShortest = 0.008f, kLongest = 0.06f;
static constexpr float kDenseEdge = 0.016f; // with edges shorter than this
static constexpr float kFaintest = 0.4f;

static float MeanEdge(const VXGeom& geom)
{
    const VXEdgeList& edges = geom.EdgeList();
    double sum = 0;
    for (std::int32_t e = 0; e < edges.GetEdgeCount(); ++e)
        sum +=
            double(Length(*geom.Vertex(edges.GetEdge(e).VertIndex1()) - *geom.Vertex(edges.GetEdge(e).VertIndex2())));
    return edges.GetEdgeCount() > 0 ? float(sum / edges.GetEdgeCount()) : 0.0f;
}

static float Diagonal(const VXGeom& geom)
{
    VERTEX low, high, middle;
    geom.GetBounds(&low.x, &low.y, &low.z, &high.x, &high.y, &high.z, &middle.x, &middle.y, &middle.z);
    return Length(high - low);
}

// Vertices of faces; of those with texture coordinates when they are asked for.
static bool MarkUsed(const VXGeom& geom, const std::int32_t* corners, bool textured, BArray<std::uint8_t>& used)
{
    if (!used.SetCountForWriting(geom.NumVerts(true)))
        return false;
    std::fill(used.begin(), used.end(), std::uint8_t(0));
    const GEOM& record = *geom.Geom();
    for (std::int32_t p = 0; p < record.numPolys; ++p)
    {
        const ELEMENT& poly = *record.Poly(p);
        if (!poly.IsFace() || poly.IsHidden())
            continue;
        if (textured && !(record.PolyHasTexture(p) && record.tex->polys[p].length == poly.length))
            continue;
        for (std::int32_t k = 0; k < poly.length; ++k)
            used[corners[poly.start + k]] = 1;
    }
    return true;
}

bool VectorLines::Update(VXGeom& geom, VectorKind kind)
{
    if (kind == VectorKind::Off || !geom.Geom() || !geom.VertNormals())
        return false;
    if (kind == mMadeFor)
        return mPairs.Bytes() > 0;
    const bool tangents = kind == VectorKind::Tangents && geom.ComputeTangents() == 0 && geom.VertBinormals();
    const VERTEX* const vectors[kNumAxes] = {tangents ? geom.VertTangents() : nullptr,
                                             tangents ? geom.VertBinormals() : nullptr, geom.VertNormals()};
    const float diagonal = Diagonal(geom), edge = MeanEdge(geom);
    const float length = std::clamp(kShareOfEdge * edge, kShortest * diagonal, kLongest * diagonal);
    mOpacity = diagonal > 0 ? std::clamp(edge / (kDenseEdge * diagonal), kFaintest, 1.0f) : 1.0f;
    BArray<std::uint8_t> used;
    BArray<VERTEX> points;
    BArray<std::int32_t> pairs;
    for (int axis = 0; axis < kNumAxes; ++axis)
    {
        const std::int32_t first = std::int32_t(pairs.Count() / 2);
        const bool textured = axis != kNormal;
        if (vectors[axis] && !MarkUsed(geom, geom.Sets(!textured), textured, used))
            return false;
        for (std::int32_t v = 0; vectors[axis] && v < geom.NumVerts(!textured); ++v)
        {
            const VERTEX from = *geom.Vertex(v), to = from + vectors[axis][v] * length;
            if (!used[v] || !std::isfinite(to.x + to.y + to.z))
                continue;
            const std::int32_t at = std::int32_t(points.Count());
            if (!points.Append(from) || !points.Append(to) || !pairs.Append(at) || !pairs.Append(at + 1))
                return false;
        }
        mSegments[axis] = {first, std::int32_t(pairs.Count() / 2) - first};
    }
    mPositions.Upload(points.Data(), std::size_t(points.Count()) * sizeof(VERTEX));
    mPairs.Upload(pairs.Data(), std::size_t(pairs.Count()) * sizeof(std::int32_t));
    mMadeFor = kind;
    return mPairs.Bytes() > 0;
}
} // namespace vx
