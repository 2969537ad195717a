#include "base/GEOM.h"

#include "base/MEM.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#if defined(__SSE2__) || defined(_M_X64)
#define FENWICK_SSE
#include <emmintrin.h>
#endif

// --- Bounds

namespace
{
struct Bounds
{
    VERTEX min{FLT_MAX, FLT_MAX, FLT_MAX}, max{-FLT_MAX, -FLT_MAX, -FLT_MAX};

    // A NaN fails both comparisons; infinities are kept out by the second.
    static void AddTo(float value, float& low, float& high)
    {
        low = value < low && value >= -FLT_MAX ? value : low;
        high = value > high && value <= FLT_MAX ? value : high;
    }
    void Add(const VERTEX& p)
    {
        AddTo(p.x, min.x, max.x);
        AddTo(p.y, min.y, max.y);
        AddTo(p.z, min.z, max.z);
    }
    // An axis without any finite coordinate has its box at 0.
    void Close()
    {
        if (min.x > max.x)
            min.x = max.x = 0;
        if (min.y > max.y)
            min.y = max.y = 0;
        if (min.z > max.z)
            min.z = max.z = 0;
    }
    // Halved before the sum, which could overflow.
    VERTEX Mid() const { return min * 0.5f + max * 0.5f; }
};
} // namespace

static Bounds BoundsOf(const GEOM* g, bool all)
{
    Bounds bounds;
    if (g && all)
        for (std::int64_t i = 0; i < g->numVerts; ++i)
            bounds.Add(g->verts[i]);
    else if (g)
        for (std::int64_t i = 0; i < g->numPolys; ++i)
        {
            const ELEMENT* const poly = g->Poly(i);
            for (std::int32_t k = 0; k < poly->length; ++k)
                bounds.Add(g->verts[g->sets[poly->start + k]]);
        }
    bounds.Close();
    return bounds;
}

void GEOM_Bounds(const GEOM* g, float* minX, float* minY, float* minZ, float* maxX, float* maxY, float* maxZ,
                 float* midX, float* midY, float* midZ, bool all)
{
    float* const out[9] = {minX, minY, minZ, maxX, maxY, maxZ, midX, midY, midZ};
    const Bounds bounds = BoundsOf(g, all);
    const VERTEX mid = bounds.Mid();
    const float values[9] = {bounds.min.x, bounds.min.y, bounds.min.z, bounds.max.x, bounds.max.y,
                             bounds.max.z, mid.x,        mid.y,        mid.z};
    for (int i = 0; i < 9; ++i)
        if (out[i])
            *out[i] = values[i];
}

void GEOM_Stats(const GEOM* g, float stats[9])
{
    GEOM_Bounds(g, stats, stats + 1, stats + 2, stats + 3, stats + 4, stats + 5, stats + 6, stats + 7, stats + 8, true);
}

// --- Placing

void GEOM_Center(GEOM* g)
{
    const VERTEX mid = BoundsOf(g, true).Mid();
    GEOM_Offset(g, -mid.x, -mid.y, -mid.z);
}

void GEOM_Scale(GEOM* g, float factor)
{
    if (!g)
        return;
    for (std::int64_t i = 0; i < g->numVerts; ++i)
        g->verts[i] *= factor;
}

void GEOM_Offset(GEOM* g, float dx, float dy, float dz)
{
    if (!g)
        return;
    for (std::int64_t i = 0; i < g->numVerts; ++i)
        g->verts[i] += VERTEX{dx, dy, dz};
}

// --- Normals and centres

// Twice the polygon's area along its normal. Taken relative to the first corner: in float, a polygon far from the
// origin would otherwise lose most of its digits in the products.
static VERTEX NewellSum(const VERTEX* verts, const std::int32_t* ring, std::int32_t length)
{
    const VERTEX first = verts[ring[0]];
    VERTEX sum, previous = verts[ring[1]] - first;
    for (std::int32_t k = 2; k < length; ++k)
    {
        const VERTEX next = verts[ring[k]] - first;
        sum += Cross(previous, next);
        previous = next;
    }
    return sum;
}

// The same in double, for polygons so large or so small that float products overflow or vanish, and for those without
// a normal.
static VERTEX UnitNormalOfExtremes(const VERTEX* verts, const std::int32_t* ring, std::int32_t length)
{
    double x = 0, y = 0, z = 0;
    const VERTEX& first = verts[ring[0]];
    for (std::int32_t k = 0; k < length; ++k)
    {
        const VERTEX &a = verts[ring[k]], &b = verts[ring[k + 1 < length ? k + 1 : 0]];
        const double ax = double(a.x) - first.x, ay = double(a.y) - first.y, az = double(a.z) - first.z;
        const double bx = double(b.x) - first.x, by = double(b.y) - first.y, bz = double(b.z) - first.z;
        x += ay * bz - az * by;
        y += az * bx - ax * bz;
        z += ax * by - ay * bx;
    }
    const double squared = x * x + y * y + z * z;
    if (!(squared > 0) || !std::isfinite(squared))
        return {};
    const double scale = 1 / std::sqrt(squared);
    return {float(x * scale), float(y * scale), float(z * scale)};
}

static VERTEX UnitNormal(const VERTEX* verts, const std::int32_t* ring, std::int32_t length)
{
    VERTEX sum;
    if (length == 4) // the sum of a quad is the product of its diagonals
        sum = Cross(verts[ring[2]] - verts[ring[0]], verts[ring[3]] - verts[ring[1]]);
    else if (length == 3)
        sum = Cross(verts[ring[1]] - verts[ring[0]], verts[ring[2]] - verts[ring[0]]);
    else
        sum = NewellSum(verts, ring, length);
    const float squared = Dot(sum, sum);
    if (squared > 1e-28f && squared < 1e35f) [[likely]] // inside, every product kept its digits
        return sum * (1 / std::sqrt(squared));
    return UnitNormalOfExtremes(verts, ring, length);
}

#ifdef FENWICK_SSE
namespace
{

__m128 LoadVertex(const VERTEX& v) // x y z 0, without reading past the end
{
    return _mm_movelh_ps(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(&v))), _mm_load_ss(&v.z));
}

__m128 RotateYzx(__m128 a) { return _mm_shuffle_ps(a, a, _MM_SHUFFLE(3, 0, 2, 1)); }

__m128 CrossProduct(__m128 a, __m128 b)
{
    return RotateYzx(_mm_sub_ps(_mm_mul_ps(a, RotateYzx(b)), _mm_mul_ps(RotateYzx(a), b)));
}

__m128 SmallSum(const VERTEX* verts, const std::int32_t* sets, const ELEMENT& e)
{
    const std::int32_t* const ring = sets + e.start;
    const __m128 p0 = LoadVertex(verts[ring[0]]), p1 = LoadVertex(verts[ring[1]]), p2 = LoadVertex(verts[ring[2]]);
    return e.length == 4 ? CrossProduct(_mm_sub_ps(p2, p0), _mm_sub_ps(LoadVertex(verts[ring[3]]), p1))
                         : CrossProduct(_mm_sub_ps(p1, p0), _mm_sub_ps(p2, p0));
}

bool IsSmall(const ELEMENT& e) { return e.length == 3 || e.length == 4; }

template <int I>
__m128 Spread(__m128 a)
{
    return _mm_shuffle_ps(a, a, _MM_SHUFFLE(I, I, I, I));
}

// Unit normals of four polygons at once, the same bits as one by one; writes one float past out[3]. False, with nothing
// useful written, when one of them is neither triangle nor quad or is one of the extremes.
bool FourUnitNormals(const VERTEX* verts, const std::int32_t* sets, const std::uint8_t* record, std::int64_t stride,
                     VERTEX* out)
{
    const ELEMENT& e0 = *reinterpret_cast<const ELEMENT*>(record);
    const ELEMENT& e1 = *reinterpret_cast<const ELEMENT*>(record + stride);
    const ELEMENT& e2 = *reinterpret_cast<const ELEMENT*>(record + 2 * stride);
    const ELEMENT& e3 = *reinterpret_cast<const ELEMENT*>(record + 3 * stride);
    if (!(IsSmall(e0) && IsSmall(e1) && IsSmall(e2) && IsSmall(e3))) [[unlikely]]
        return false;
    const __m128 n0 = SmallSum(verts, sets, e0), n1 = SmallSum(verts, sets, e1);
    const __m128 n2 = SmallSum(verts, sets, e2), n3 = SmallSum(verts, sets, e3);
    __m128 x = n0, y = n1, z = n2, rest = n3;
    _MM_TRANSPOSE4_PS(x, y, z, rest);
    const __m128 squared = _mm_add_ps(_mm_add_ps(_mm_mul_ps(x, x), _mm_mul_ps(y, y)), _mm_mul_ps(z, z));
    const __m128 usual =
        _mm_and_ps(_mm_cmpgt_ps(squared, _mm_set1_ps(1e-28f)), _mm_cmplt_ps(squared, _mm_set1_ps(1e35f)));
    if (_mm_movemask_ps(usual) != 15) [[unlikely]]
        return false;
    const __m128 scale = _mm_div_ps(_mm_set1_ps(1), _mm_sqrt_ps(squared));
    float* const to = &out->x;
    _mm_storeu_ps(to, _mm_mul_ps(n0, Spread<0>(scale)));
    _mm_storeu_ps(to + 3, _mm_mul_ps(n1, Spread<1>(scale)));
    _mm_storeu_ps(to + 6, _mm_mul_ps(n2, Spread<2>(scale)));
    _mm_storeu_ps(to + 9, _mm_mul_ps(n3, Spread<3>(scale)));
    return true;
}

} // namespace
#endif

int GEOM_CalcPolyNormals(const GEOM* g, VERTEX* out)
{
    if (!g || !out)
        return -1;
    GEOM_CalcPolyNormalsOf(g, out, 0, g->numPolys);
    return 0;
}

void GEOM_CalcPolyNormalsOf(const GEOM* g, VERTEX* out, std::int32_t first, std::int32_t count)
{
    const VERTEX* const verts = g->verts;
    const std::int32_t* const sets = g->sets;
    const std::int64_t stride = g->PolyStride(), end = std::int64_t(first) + count;
    const std::uint8_t* record = g->polys + first * stride;
    for (std::int64_t i = first; i < end;)
    {
#ifdef FENWICK_SSE
        // Not the last four, because four at once write one float too much.
        if (i + 4 < end && FourUnitNormals(verts, sets, record, stride, out + i))
        {
            i += 4;
            record += 4 * stride;
            continue;
        }
#endif
        const std::int64_t stop = std::min(i + 4, end);
        for (; i < stop; ++i, record += stride)
        {
            const ELEMENT& e = *reinterpret_cast<const ELEMENT*>(record);
            out[i] = e.length < 3 ? VERTEX{} : UnitNormal(verts, sets + e.start, e.length);
        }
    }
}

int GEOM_CalcPolyCentroids(const GEOM* g, VERTEX* out, T_VERTEX* texOut)
{
    if (!g)
        return -1;
    for (std::int64_t i = 0; out && i < g->numPolys; ++i)
    {
        const ELEMENT* const poly = g->Poly(i);
        double x = 0, y = 0, z = 0; // the sum over a large polygon would not keep its digits in float
        for (std::int32_t k = 0; k < poly->length; ++k)
        {
            const VERTEX& p = g->verts[g->sets[poly->start + k]];
            x += p.x;
            y += p.y;
            z += p.z;
        }
        const double part = poly->length > 0 ? 1.0 / poly->length : 0;
        out[i] = {float(x * part), float(y * part), float(z * part)};
    }
    for (std::int64_t i = 0; texOut && i < g->numPolys; ++i)
    {
        const GEOM_TexPoly run = g->PolyHasTexture(i) ? g->tex->polys[i] : GEOM_TexPoly{};
        double u = 0, v = 0;
        for (std::int32_t k = 0; k < run.length; ++k)
        {
            const T_VERTEX& p = g->tex->verts[g->tex->sets[run.start + k]];
            u += p.u;
            v += p.v;
        }
        const double part = run.length > 0 ? 1.0 / run.length : 0;
        texOut[i] = {float(u * part), float(v * part)};
    }
    return 0;
}
