#include "base/GEOM.h"

#include "base/MEM.h"

#include <cfloat>
#include <cmath>

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

int GEOM_CalcPolyNormals(const GEOM* g, VERTEX* out)
{
    if (!g || !out)
        return -1;
    const VERTEX* const verts = g->verts;
    const std::int32_t* const sets = g->sets;
    const std::uint8_t* record = g->polys;
    const std::int64_t stride = g->PolyStride();
    for (std::int64_t i = 0; i < g->numPolys; ++i, record += stride)
    {
        const auto* const poly = reinterpret_cast<const ELEMENT*>(record);
        out[i] = poly->length < 3 ? VERTEX{} : UnitNormal(verts, sets + poly->start, poly->length);
    }
    return 0;
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
