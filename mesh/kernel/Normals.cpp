#include "mesh/kernel/Normals.h"

#include "base/MAT.h"

#include <algorithm>
#include <bit>
#include <cmath>

#if defined(__SSE2__) || defined(_M_X64)
#define VELMAR_SSE
#include <emmintrin.h>
#endif

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
        normals[ring[k]] = IsFinite(d) ? WithoutMinusZero(d) : VERTEX{};
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

void AddTo(VERTEX& sum, float x, float y, float z)
{
    sum.x += x;
    sum.y += y;
    sum.z += z;
}

// What one polygon with the normal n does to the sums.
struct PlainSum
{
    std::span<const VERTEX> points;
    PolyView polys; // a copy: what is stored to the sums cannot change it, so it stays in registers
    VERTEX* sums;

    void Add(const ELEMENT& element, float x, float y, float z) const
    {
        const std::int32_t length = element.length;
        const std::int32_t* const ring = polys.sets + element.start;
        if (element.IsFace() && (length == 3 || length == 4)) [[likely]]
        {
            AddTo(sums[ring[0]], x, y, z);
            AddTo(sums[ring[1]], x, y, z);
            AddTo(sums[ring[2]], x, y, z);
            if (length == 4)
                AddTo(sums[ring[3]], x, y, z);
        }
        else if (element.type == kElementLine && length > 0)
            LineNormals(points, ring, length, {x, y, z}, sums);
        else if (element.type != kElementPoint && element.type != kElementLine && length > 2)
            for (std::int32_t k = 0; k < length; ++k)
                AddTo(sums[ring[k]], x, y, z);
    }
};

void NormaliseOne(VERTEX& normal)
{
    if (normal == VERTEX{} || SameBits(normal, kUncounted))
        normal = kDefaultNormal;
    else
        normal *= MATH_FastSqrtInv(Dot(normal, normal));
}

#ifdef VELMAR_SSE
__m128 FourFastSqrtInv(__m128 x) // the same bits as MATH_FastSqrtInv
{
    const __m128 half = _mm_mul_ps(_mm_set1_ps(0.5f), x), threeHalves = _mm_set1_ps(1.5f);
    const __m128i guess = _mm_sub_epi32(_mm_set1_epi32(0x5F375A86), _mm_srli_epi32(_mm_castps_si128(x), 1));
    __m128 y = _mm_castsi128_ps(guess);
    for (int step = 0; step < 3; ++step)
        y = _mm_mul_ps(y, _mm_sub_ps(threeHalves, _mm_mul_ps(_mm_mul_ps(half, y), y)));
    return y;
}

// Four normals in three vectors: x0 y0 z0 x1, y1 z1 x2 y2, z2 x3 y3 z3. False, and nothing written, when one is so
// short that it may be zero, or may be the mark of one that does not count.
bool NormaliseFour(VERTEX* normals)
{
    float* const at = &normals->x;
    const __m128 a = _mm_loadu_ps(at), b = _mm_loadu_ps(at + 4), c = _mm_loadu_ps(at + 8);
    const __m128 xy = _mm_shuffle_ps(b, c, _MM_SHUFFLE(2, 1, 3, 2)), yz = _mm_shuffle_ps(a, b, _MM_SHUFFLE(1, 0, 2, 1));
    const __m128 x = _mm_shuffle_ps(a, xy, _MM_SHUFFLE(2, 0, 3, 0));
    const __m128 y = _mm_shuffle_ps(yz, xy, _MM_SHUFFLE(3, 1, 2, 0));
    const __m128 z = _mm_shuffle_ps(yz, c, _MM_SHUFFLE(3, 0, 3, 1));
    const __m128 squared = _mm_add_ps(_mm_add_ps(_mm_mul_ps(x, x), _mm_mul_ps(y, y)), _mm_mul_ps(z, z));
    const __m128 marked = _mm_and_ps(_mm_castsi128_ps(_mm_cmpeq_epi32(_mm_castps_si128(x), _mm_set1_epi32(INT32_MIN))),
                                     _mm_cmpeq_ps(squared, _mm_set1_ps(1)));
    if (_mm_movemask_ps(_mm_or_ps(marked, _mm_cmpeq_ps(squared, _mm_setzero_ps()))) != 0) [[unlikely]]
        return false;
    const __m128 scale = FourFastSqrtInv(squared);
    _mm_storeu_ps(at, _mm_mul_ps(a, _mm_shuffle_ps(scale, scale, _MM_SHUFFLE(1, 0, 0, 0))));
    _mm_storeu_ps(at + 4, _mm_mul_ps(b, _mm_shuffle_ps(scale, scale, _MM_SHUFFLE(2, 2, 1, 1))));
    _mm_storeu_ps(at + 8, _mm_mul_ps(c, _mm_shuffle_ps(scale, scale, _MM_SHUFFLE(3, 3, 3, 2))));
    return true;
}
#else
bool NormaliseFour(VERTEX*) { return false; }
#endif

void NormalisePlain(std::span<VERTEX> normals)
{
    std::size_t i = 0;
    for (; i + 4 <= normals.size(); i += 4)
        if (!NormaliseFour(normals.data() + i))
            std::for_each(normals.begin() + std::ptrdiff_t(i), normals.begin() + std::ptrdiff_t(i + 4), NormaliseOne);
    std::for_each(normals.begin() + std::ptrdiff_t(i), normals.end(), NormaliseOne);
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
    const PlainSum sum{points, polys, normals.data()};
    for (std::int64_t p = 0; p < polys.count; ++p)
        sum.Add(polys[p], polyNormals[p].x, polyNormals[p].y, polyNormals[p].z);
    NormalisePlain(normals);
}

void PolyAndPlainNormals(const GEOM& geom, VERTEX* polyNormals, std::span<VERTEX> normals)
{
    std::fill(normals.begin(), normals.end(), VERTEX{});
    const PlainSum sum{{geom.verts, normals.size()}, PolysOf(geom), normals.data()};
    constexpr std::int32_t kAtOnce = 512; // polygons whose corners and normals stay in the nearest cache
    for (std::int32_t first = 0; first < geom.numPolys; first += kAtOnce)
    {
        const std::int32_t end = first + std::min(kAtOnce, geom.numPolys - first);
        GEOM_CalcPolyNormalsOf(&geom, polyNormals, first, end - first);
        for (std::int32_t p = first; p < end; ++p)
            sum.Add(sum.polys[p], polyNormals[p].x, polyNormals[p].y, polyNormals[p].z);
    }
    NormalisePlain(normals);
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
