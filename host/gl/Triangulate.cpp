#include "host/gl/Triangulate.h"

#include <algorithm>
#include <cmath>

namespace vx
{
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
    if (!ClipEars(corners))
    {
        corners.Release();
        return false;
    }
    return true;
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

// --- The corners that can lie in an ear are those bent inwards. They stand in a tree of boxes, split in turn at the
// middle of the longer side, so that a query looks at a few boxes only, however unevenly the corners lie.

static constexpr std::int32_t kLeaf = 8;

enum CornerState : std::uint8_t
{
    kConvex = 0,
    kReflex,
    kClipped,
};

bool Triangulator::PlantTree()
{
    const std::int32_t count = std::int32_t(mFlat.Count());
    mOrder.Empty();
    if (!mPlace.SetCountForWriting(count))
        return false;
    for (std::int32_t k = 0; k < count; ++k)
        if (mState[k] == kReflex && !mOrder.Append(k))
            return false;
    const std::int32_t reflex = std::int32_t(mOrder.Count());
    std::int32_t nodes = 2;
    for (std::int32_t leaves = 1; leaves * kLeaf < reflex; leaves *= 2)
        nodes *= 2;
    if (!mTree.SetCount(0) || !mTree.SetCount(2 * std::int64_t(nodes)))
        return false;
    if (reflex > 0)
        Split(1, 0, reflex);
    for (std::int32_t i = 0; i < reflex; ++i)
        mPlace[mOrder[i]] = i;
    return true;
}

void Triangulator::Split(std::int32_t node, std::int32_t from, std::int32_t to)
{
    Node& here = mTree[node];
    here.low = here.high = mFlat[mOrder[from]];
    here.alive = to - from;
    for (std::int32_t i = from; i < to; ++i)
    {
        const Point p = mFlat[mOrder[i]];
        here.low = {std::min(here.low.x, p.x), std::min(here.low.y, p.y)};
        here.high = {std::max(here.high.x, p.x), std::max(here.high.y, p.y)};
    }
    if (to - from <= kLeaf)
        return;
    const bool wide = here.high.x - here.low.x > here.high.y - here.low.y;
    const std::int32_t middle = from + (to - from) / 2;
    // Equal coordinates fall back on the corner's number: the same tree on every machine.
    std::nth_element(mOrder.begin() + from, mOrder.begin() + middle, mOrder.begin() + to,
                     [&](std::int32_t a, std::int32_t b)
                     {
                         const double pa = wide ? mFlat[a].x : mFlat[a].y, pb = wide ? mFlat[b].x : mFlat[b].y;
                         return pa != pb ? pa < pb : a < b;
                     });
    Split(2 * node, from, middle);
    Split(2 * node + 1, middle, to);
}

// The corner is no longer bent inwards.
void Triangulator::Fell(std::int32_t corner)
{
    const std::int32_t place = mPlace[corner];
    std::int32_t node = 1, from = 0, to = std::int32_t(mOrder.Count());
    for (;;)
    {
        --mTree[node].alive;
        if (to - from <= kLeaf)
            return;
        const std::int32_t middle = from + (to - from) / 2;
        const bool left = place < middle;
        node = 2 * node + (left ? 0 : 1);
        (left ? to : from) = middle;
    }
}

// Whether some corner lies in the ear. Boxes wholly on the outer side of one of its edges are passed over.
bool Triangulator::Blocked(std::int32_t node, std::int32_t from, std::int32_t to, const Point (&ear)[3]) const
{
    const Node& here = mTree[node];
    if (here.alive == 0)
        return false;
    for (int k = 0; k < 3; ++k)
    {
        const Point &a = ear[k], &b = ear[(k + 1) % 3];
        // The corner of the box that lies furthest to the inner side, which is the left.
        const Point inner = {a.y > b.y ? here.high.x : here.low.x, b.x > a.x ? here.high.y : here.low.y};
        if (Turn(a, b, inner) < 0)
            return false;
    }
    if (to - from > kLeaf)
    {
        const std::int32_t middle = from + (to - from) / 2;
        return Blocked(2 * node, from, middle, ear) || Blocked(2 * node + 1, middle, to, ear);
    }
    for (std::int32_t i = from; i < to; ++i)
    {
        if (mState[mOrder[i]] != kReflex)
            continue;
        const Point& p = mFlat[mOrder[i]];
        bool inside = true;
        for (int k = 0; k < 3; ++k)
        {
            const Point &a = ear[k], &b = ear[(k + 1) % 3];
            // Its own corners do not block it, nor do others in the same place: a bridge to a hole passes twice.
            inside = inside && !(p.x == a.x && p.y == a.y) && Turn(a, b, p) >= 0;
        }
        if (inside)
            return true;
    }
    return false;
}

// --- Clipping. After D. Eberly, Triangulation by Ear Clipping, 2002: taking away an ear changes only what its two
// neighbours are, so no other corner is looked at again.

double Triangulator::TurnAt(std::int32_t corner) const
{
    return Turn(mFlat[mBefore[corner]], mFlat[corner], mFlat[mAfter[corner]]);
}

bool Triangulator::IsEar(std::int32_t corner) const
{
    if (!(TurnAt(corner) > 0))
        return false;
    const Point ear[3] = {mFlat[mBefore[corner]], mFlat[corner], mFlat[mAfter[corner]]};
    return mOrder.IsEmpty() || !Blocked(1, 0, std::int32_t(mOrder.Count()), ear);
}

bool Triangulator::ClipEars(BArray<std::int32_t>& corners)
{
    const std::int32_t count = std::int32_t(mFlat.Count());
    if (!mBefore.SetCountForWriting(count) || !mAfter.SetCountForWriting(count) || !mState.SetCountForWriting(count) ||
        !mTried.SetCountForWriting(count))
        return false;
    for (std::int32_t k = 0; k < count; ++k)
    {
        mBefore[k] = (k + count - 1) % count;
        mAfter[k] = (k + 1) % count;
        mTried[k] = count - 1 - k;
    }
    for (std::int32_t k = 0; k < count; ++k)
        mState[k] = TurnAt(k) > 0 ? kConvex : kReflex;
    if (!PlantTree())
        return false;

    std::int32_t left = count, start = 0;
    while (left > 3 && !mTried.IsEmpty())
    {
        const std::int32_t tip = mTried[mTried.Count() - 1];
        mTried.SetCount(mTried.Count() - 1);
        if (mState[tip] != kConvex || !IsEar(tip))
            continue;
        const std::int32_t before = mBefore[tip], after = mAfter[tip];
        if (!AppendTriangle(corners, before, tip, after))
            return false;
        mState[tip] = kClipped;
        mAfter[before] = after;
        mBefore[after] = before;
        start = after;
        --left;
        for (const std::int32_t neighbour : {after, before})
        {
            if (mState[neighbour] == kReflex && TurnAt(neighbour) > 0)
            {
                Fell(neighbour);
                mState[neighbour] = kConvex;
            }
            if (!mTried.Append(neighbour))
                return false;
        }
    }
    // Three corners are left, or a ring that crosses itself or lies on a line and has no ear.
    while (mState[start] == kClipped)
        ++start;
    for (std::int32_t b = mAfter[start], c = mAfter[b]; c != start; b = c, c = mAfter[c])
        if (!AppendTriangle(corners, start, b, c))
            return false;
    return true;
}
} // namespace vx
