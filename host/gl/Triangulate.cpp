#include "host/gl/Triangulate.h"

#include <GL/glu.h>

#include <cmath>
#include <utility>

namespace vx
{
// Longer concave polygons go to the sweep: clipping looks at all corners for every ear.
static constexpr std::int64_t kLongestClipped = 48;

Triangulator::~Triangulator()
{
    if (mSweeper)
        gluDeleteTess(static_cast<GLUtesselator*>(mSweeper));
}

static bool AppendTriangle(BArray<std::int32_t>& corners, std::int32_t a, std::int32_t b, std::int32_t c)
{
    return corners.Append(a) && corners.Append(b) && corners.Append(c);
}

bool Triangulator::AppendFan(std::int32_t first, std::int32_t count, BArray<std::int32_t>& corners)
{
    const auto corner = [&](std::int32_t k) { return (first + k) % count; };
    for (std::int32_t k = 1; k + 1 < count; ++k)
        if (!AppendTriangle(corners, corner(0), corner(k), corner(k + 1)))
            return false;
    return true;
}

// Twice the area along the normal; relative to the first corner, so that distance from the origin costs no digits.
static VERTEX NewellNormal(std::span<const VERTEX> points, std::span<const std::int32_t> ring)
{
    double x = 0, y = 0, z = 0;
    const auto at = [&](std::size_t k) { return points[std::size_t(ring[k])] - points[std::size_t(ring[0])]; };
    VERTEX a = at(1);
    for (std::size_t k = 2; k < ring.size(); ++k)
    {
        const VERTEX b = at(k);
        x += double(a.y) * b.z - double(a.z) * b.y;
        y += double(a.z) * b.x - double(a.x) * b.z;
        z += double(a.x) * b.y - double(a.y) * b.x;
        a = b;
    }
    // Scaled so that the squares of tiny and of huge polygons stay in range.
    const double largest = std::max({std::fabs(x), std::fabs(y), std::fabs(z)});
    if (!(largest > 0) || !std::isfinite(largest))
        return {};
    return {float(x / largest), float(y / largest), float(z / largest)};
}

// A quad is split along the diagonal from its one corner that is bent inwards; without one, from its first corner.
bool Triangulator::AppendQuad(std::span<const VERTEX> points, std::span<const std::int32_t> ring, const VERTEX& normal,
                              BArray<std::int32_t>& corners)
{
    std::int32_t first = 0;
    for (std::size_t k = 0; k < 4; ++k)
    {
        const VERTEX before = points[std::size_t(ring[(k + 3) & 3])], here = points[std::size_t(ring[k])];
        const VERTEX after = points[std::size_t(ring[(k + 1) & 3])];
        if (Dot(Cross(here - before, after - here), normal) < 0)
            first = std::int32_t(k);
    }
    return AppendFan(first, 4, corners);
}

bool Triangulator::Append(std::span<const VERTEX> points, std::span<const std::int32_t> ring,
                          BArray<std::int32_t>& corners)
{
    const std::int32_t count = std::int32_t(ring.size());
    if (count <= 3)
        return AppendFan(0, count, corners);
    const VERTEX normal = NewellNormal(points, ring);
    if (normal == VERTEX{})
        return AppendFan(0, count, corners);
    if (count == 4)
        return AppendQuad(points, ring, normal, corners);
    if (!Flatten(points, ring, normal))
    {
        corners.Release();
        return false;
    }
    if (IsConvex())
        return AppendFan(0, count, corners);
    if (count <= kLongestClipped)
    {
        const int answer = ClipEars(corners);
        if (answer != 0)
            return answer > 0;
    }
    return Sweep(corners);
}

// Drops the axis along which the normal is longest: no square root, and no corner moves against another.
bool Triangulator::Flatten(std::span<const VERTEX> points, std::span<const std::int32_t> ring, const VERTEX& normal)
{
    if (!mFlat.SetCountForWriting(std::int64_t(ring.size())))
        return false;
    const float x = std::fabs(normal.x), y = std::fabs(normal.y), z = std::fabs(normal.z);
    const VERTEX origin = points[std::size_t(ring[0])];
    for (std::size_t k = 0; k < ring.size(); ++k)
    {
        const VERTEX p = points[std::size_t(ring[k])] - origin;
        double u = p.x, v = p.y;
        bool mirrored = normal.z < 0;
        if (x >= y && x >= z)
            u = p.y, v = p.z, mirrored = normal.x < 0;
        else if (y >= z)
            u = p.z, v = p.x, mirrored = normal.y < 0;
        mFlat[std::int64_t(k)] = {mirrored ? -u : u, v};
    }
    return true;
}

template <class P>
static double Turn(const P& a, const P& b, const P& c)
{
    return (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
}

// Turning left everywhere is not enough, a star does so too: the ring must also go round once only, which holds when
// its edges change sides, up to down and back, twice.
bool Triangulator::IsConvex() const
{
    const std::int64_t n = mFlat.Count();
    int changes = 0;
    int lastSide = 0;
    for (std::int64_t k = 0; k < 2 * n && changes <= 3; ++k)
    {
        const Point &a = mFlat[k % n], &b = mFlat[(k + 1) % n], &c = mFlat[(k + 2) % n];
        if (!(Turn(a, b, c) >= 0))
            return false;
        const int side = b.y > a.y || (b.y == a.y && b.x > a.x) ? 1 : (b.y == a.y && b.x == a.x ? 0 : -1);
        if (side != 0 && k < n)
        {
            changes += lastSide != 0 && side != lastSide;
            lastSide = side;
        }
        if (k + 1 == n)
            break;
    }
    return changes <= 2;
}

// @return 1 done, 0 no ear was found (the ring crosses itself; `corners` is as it was), -1 memory ran out
int Triangulator::ClipEars(BArray<std::int32_t>& corners)
{
    const std::int64_t before = corners.Count();
    mLeft.Empty();
    for (std::int32_t k = 0; k < mFlat.Count(); ++k)
        if (!mLeft.Append(k))
            return -1;
    const auto blocks = [&](const Point& p, const Point& a, const Point& b, const Point& c)
    {
        if ((p.x == a.x && p.y == a.y) || (p.x == b.x && p.y == b.y) || (p.x == c.x && p.y == c.y))
            return false; // a bridge to a hole passes its corners twice
        return Turn(a, b, p) >= 0 && Turn(b, c, p) >= 0 && Turn(c, a, p) >= 0;
    };
    while (mLeft.Count() > 3)
    {
        const std::int64_t n = mLeft.Count();
        std::int64_t ear = -1;
        for (std::int64_t k = 0; k < n && ear < 0; ++k)
        {
            const Point &a = mFlat[mLeft[(k + n - 1) % n]], &b = mFlat[mLeft[k]], &c = mFlat[mLeft[(k + 1) % n]];
            bool isEar = Turn(a, b, c) > 0;
            for (std::int64_t j = 2; isEar && j < n - 1; ++j)
                isEar = !blocks(mFlat[mLeft[(k + j) % n]], a, b, c);
            if (isEar)
                ear = k;
        }
        if (ear < 0)
        {
            corners.SetCount(before);
            return 0;
        }
        if (!AppendTriangle(corners, mLeft[(ear + n - 1) % n], mLeft[ear], mLeft[(ear + 1) % n]))
            return -1;
        mLeft.RemoveAt(ear);
    }
    return AppendTriangle(corners, mLeft[0], mLeft[1], mLeft[2]) ? 1 : -1;
}

namespace
{
#ifdef _WIN32
#define VX_GLU_CALL CALLBACK
#else
#define VX_GLU_CALL
#endif
using SweepCall = void(VX_GLU_CALL*)();

struct SweepState
{
    BArray<std::int32_t>* corners;
    bool memoryRanOut = false, failed = false;
};

// The sweeper's data words carry corner positions, not addresses; plus 1, as null means no corner to it.
void VX_GLU_CALL OnVertex(void* data, void* user)
{
    SweepState& state = *static_cast<SweepState*>(user);
    if (!state.memoryRanOut && !state.corners->Append(std::int32_t(reinterpret_cast<std::intptr_t>(data) - 1)))
        state.memoryRanOut = true;
}

// Being interested in edge flags makes the sweeper emit single triangles instead of strips and fans.
void VX_GLU_CALL OnEdgeFlag(GLboolean, void*) {}

void VX_GLU_CALL OnError(GLenum, void* user) { static_cast<SweepState*>(user)->failed = true; }

// Where a ring crosses itself the sweeper asks for a new corner. There is none in the mesh, so the heaviest of those
// that meet there stands in: the shape is slightly off at the crossing only.
void VX_GLU_CALL OnCombine(GLdouble*, void* data[4], GLfloat weight[4], void** out, void*)
{
    int best = 0;
    for (int i = 1; i < 4; ++i)
        if (data[i] && weight[i] > weight[best])
            best = i;
    *out = data[best];
}
} // namespace

bool Triangulator::Sweep(BArray<std::int32_t>& corners)
{
    if (!mSweeper)
        mSweeper = gluNewTess();
    if (!mSweeper)
    {
        corners.Release();
        return false;
    }
    GLUtesselator* const tess = static_cast<GLUtesselator*>(mSweeper);
    const std::int64_t before = corners.Count();
    SweepState state{&corners};
    gluTessCallback(tess, GLU_TESS_VERTEX_DATA, reinterpret_cast<SweepCall>(OnVertex));
    gluTessCallback(tess, GLU_TESS_EDGE_FLAG_DATA, reinterpret_cast<SweepCall>(OnEdgeFlag));
    gluTessCallback(tess, GLU_TESS_ERROR_DATA, reinterpret_cast<SweepCall>(OnError));
    gluTessCallback(tess, GLU_TESS_COMBINE_DATA, reinterpret_cast<SweepCall>(OnCombine));
    gluTessProperty(tess, GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_NONZERO);
    gluTessNormal(tess, 0, 0, 1);
    gluTessBeginPolygon(tess, &state);
    gluTessBeginContour(tess);
    for (std::int64_t k = 0; k < mFlat.Count(); ++k)
    {
        GLdouble xyz[3] = {mFlat[k].x, mFlat[k].y, 0};
        gluTessVertex(tess, xyz, reinterpret_cast<void*>(std::intptr_t(k + 1)));
    }
    gluTessEndContour(tess);
    gluTessEndPolygon(tess);
    if (state.memoryRanOut)
        return false;
    if (state.failed)
    {
        // Coordinates beyond what the sweeper accepts: a fan is better than a hole.
        corners.SetCount(before);
        return AppendFan(0, std::int32_t(mFlat.Count()), corners);
    }
    return true;
}
} // namespace vx
