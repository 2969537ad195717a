#include "mesh/kernel/Normals.h"

#include "base/MAT.h"

#include <bit>
#include <cmath>

namespace vx
{
namespace
{

// A little off the z axis, so that what is built across it has a direction.
constexpr VERTEX kDefaultNormal = {0.0000137f, 0.000071f, 1.0f};

// The normal of a one-corner line, which does not count as a contribution: it yields to the default at the end unless
// a face adds to it. No sum and no line normal has these bits, as they never come out as minus zero.
constexpr VERTEX kUncounted = {-0.0f, -0.0f, 1.0f};

// Likewise what no addition leaves behind: sums start here, and what is added is never minus zero.
constexpr VERTEX kNothingAdded = {-0.0f, -0.0f, -0.0f};

bool SameBits(const VERTEX& a, const VERTEX& b)
{
    return std::bit_cast<std::uint32_t>(a.x) == std::bit_cast<std::uint32_t>(b.x) &&
           std::bit_cast<std::uint32_t>(a.y) == std::bit_cast<std::uint32_t>(b.y) &&
           std::bit_cast<std::uint32_t>(a.z) == std::bit_cast<std::uint32_t>(b.z);
}

VERTEX WithoutMinusZero(const VERTEX& v) { return {v.x + 0.0f, v.y + 0.0f, v.z + 0.0f}; }

// Normals of a line of at least one corner, with the polygon normal n.
void LineNormals(std::span<const VERTEX> points, const std::int32_t* ring, std::int32_t length, const VERTEX& n,
                 VERTEX* normals)
{
    if (length < 2)
    {
        normals[ring[0]] = kUncounted;
        return;
    }
    for (std::int32_t k = 0; k + 1 < length; ++k)
    {
        VERTEX d = points[std::size_t(ring[k])] - points[std::size_t(ring[k + 1])];
        d *= MATH_FastSqrtInv(Dot(d, d));
        // In place, one component after the other: y and z are taken from the new x and y. It is no cross product, and
        // is meant so; lines look as they always did.
        d.x = d.z * n.y - d.y * n.z;
        d.y = n.z * d.x - d.z * n.x;
        d.z = d.y * n.x - d.x * n.y;
        normals[ring[k]] = WithoutMinusZero(d);
    }
    normals[ring[length - 1]] = normals[ring[length - 2]];
    VERTEX previous = normals[ring[0]];
    for (std::int32_t k = 1; k + 1 < length; ++k)
    {
        const VERTEX own = normals[ring[k]];
        normals[ring[k]] = own + previous;
        previous = own;
    }
}

} // namespace

void FacingNormals(std::span<const VERTEX> points, const PolyView& polys, VERTEX* out)
{
    for (std::int64_t p = 0; p < polys.count; ++p)
    {
        const ELEMENT& element = polys[p];
        const std::int32_t length = polys.Length(element);
        const std::int32_t* const ring = polys.sets + element.start;
        if (length < 3 || element.type == kElementPoint)
        {
            out[p] = {0, 0, 1};
            continue;
        }
        // Relative to the first corner, which changes nothing but the rounding of polygons far from the origin.
        const VERTEX first = points[std::size_t(ring[0])];
        VERTEX sum, a;
        for (std::int32_t k = 1; k <= length; ++k)
        {
            const VERTEX b = k < length ? points[std::size_t(ring[k])] - first : VERTEX{};
            sum += {(a.y - b.y) * (a.z + b.z), (a.z - b.z) * (a.x + b.x), (a.x - b.x) * (a.y + b.y)};
            a = b;
        }
        out[p] = sum;
    }
}

void PlainNormals(std::span<const VERTEX> points, const PolyView& polys, const VERTEX* polyNormals,
                  std::span<VERTEX> normals)
{
    std::fill(normals.begin(), normals.end(), VERTEX{});
    VERTEX* const sums = normals.data();
    for (std::int64_t p = 0; p < polys.count; ++p)
    {
        const ELEMENT& element = polys[p];
        const std::int32_t length = polys.Length(element);
        const std::int32_t* const ring = polys.sets + element.start;
        if (element.type == kElementPoint || length < 1)
            continue;
        const VERTEX n = polyNormals[p];
        if (element.type == kElementLine)
            LineNormals(points, ring, length, n, sums);
        else if (length > 2)
            for (std::int32_t k = 0; k < length; ++k)
                sums[ring[k]] += n;
    }
    for (VERTEX& normal : normals)
    {
        if (normal == VERTEX{} || SameBits(normal, kUncounted))
            normal = kDefaultNormal;
        else
            normal *= MATH_FastSqrtInv(Dot(normal, normal));
    }
}

void ClearSums(std::span<VERTEX> sums) { std::fill(sums.begin(), sums.end(), kNothingAdded); }

void AddCornerNormals(const PolyView& polys, const VERTEX* polyNormals, std::span<VERTEX> sums)
{
    for (std::int64_t p = 0; p < polys.count; ++p)
    {
        const ELEMENT& element = polys[p];
        const std::int32_t length = polys.Length(element);
        if (length < 2)
            continue;
        const std::int32_t* const ring = polys.sets + element.start;
        const VERTEX n = WithoutMinusZero(polyNormals[p]);
        std::uint32_t a = std::uint32_t(ring[0]);
        for (std::int32_t k = 1; k <= length; ++k)
        {
            const std::uint32_t b = std::uint32_t(ring[k < length ? k : 0]);
            if (a != b && (k < length || element.IsFace()))
                sums[a] += n;
            a = b;
        }
    }
}

void AddEdgeNormals(std::span<const VXEdge> edges, std::span<const VERTEX> polyNormals, std::span<VERTEX> sums)
{
    const auto add = [&](std::int32_t vert, std::int32_t poly)
    {
        if (std::size_t(std::uint32_t(vert)) < sums.size() && std::size_t(std::uint32_t(poly)) < polyNormals.size())
            sums[std::size_t(vert)] += WithoutMinusZero(polyNormals[std::size_t(poly)]);
    };
    for (const VXEdge& edge : edges)
    {
        add(edge.CreaseVertexP1V1(true), edge.PolyIndex1());
        if (!edge.IsOpenEdge())
            add(edge.IsEdgeOrderedProperly() ? edge.CreaseVertexP2V2(true) : edge.CreaseVertexP2V1(true),
                edge.PolyIndex2());
    }
}

void NormaliseSums(std::span<VERTEX> sums)
{
    for (VERTEX& sum : sums)
    {
        const float length = Length(sum);
        if (length > 0 && std::isfinite(length)) [[likely]]
            sum *= 1 / length;
        else
            sum = SameBits(sum, kNothingAdded) ? VERTEX{0, 0, 1} : VERTEX{};
    }
}

void CopySeamNormals(const VXEdge& edge, std::span<VERTEX> normals)
{
    const auto copy = [&](std::int32_t from, std::int32_t to)
    {
        if (std::size_t(std::uint32_t(from)) < normals.size() && std::size_t(std::uint32_t(to)) < normals.size())
            normals[std::size_t(to)] = normals[std::size_t(from)];
    };
    copy(edge.VertIndex1(), edge.CreaseVertexP1V1(false));
    copy(edge.VertIndex2(), edge.CreaseVertexP1V2(false));
    if (edge.IsOpenEdge())
        return;
    copy(edge.VertIndex1(), edge.CreaseVertexP2V1(false));
    copy(edge.VertIndex2(), edge.CreaseVertexP2V2(false));
}

} // namespace vx
