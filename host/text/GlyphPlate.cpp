#include "host/text/detail/GlyphPlate.h"

#include <algorithm>
#include <numeric>
#include <span>
#include <tuple>

namespace vx
{
// Triangles that lose a corner in this have no area and go; their neighbours then meet along the remaining edge.
void GlyphPlate::ShareEqualPoints(const GEOM& flat, std::int32_t first, std::int32_t end)
{
    corners.clear();
    points.clear();
    std::vector<Point> loose;
    for (std::int32_t p = first; p < end; ++p)
        for (std::int32_t k = 0; k < 3; ++k)
        {
            const VERTEX& at = flat.verts[flat.sets[flat.Poly(p)->start + k]];
            loose.push_back({at.x, at.y});
        }
    mOrder.resize(loose.size());
    std::iota(mOrder.begin(), mOrder.end(), 0);
    std::sort(mOrder.begin(), mOrder.end(),
              [&loose](std::int32_t a, std::int32_t b)
              {
                  const Point &p = loose[std::size_t(a)], &q = loose[std::size_t(b)];
                  return std::tie(p.x, p.y, a) < std::tie(q.x, q.y, b);
              });
    std::vector<std::int32_t> shared(loose.size());
    for (const std::int32_t i : mOrder)
    {
        if (points.empty() || !(points.back() == loose[std::size_t(i)]))
            points.push_back(loose[std::size_t(i)]);
        shared[std::size_t(i)] = std::int32_t(points.size()) - 1;
    }
    for (std::size_t i = 0; i + 2 < shared.size(); i += 3)
        if (shared[i] != shared[i + 1] && shared[i + 1] != shared[i + 2] && shared[i + 2] != shared[i])
            corners.insert(corners.end(), {shared[i], shared[i + 1], shared[i + 2]});
}

// Edges between two points are paired one with the other in order, however many there are.
void GlyphPlate::PairEdges()
{
    const auto count = std::int32_t(corners.size());
    mTwin.assign(std::size_t(count), -1);
    mOrder.resize(std::size_t(count));
    std::iota(mOrder.begin(), mOrder.end(), 0);
    const auto low = [this](std::int32_t c)
    { return std::min(corners[std::size_t(c)], corners[std::size_t(Next(c))]); };
    const auto high = [this](std::int32_t c)
    { return std::max(corners[std::size_t(c)], corners[std::size_t(Next(c))]); };
    const auto upwards = [this](std::int32_t c) { return corners[std::size_t(c)] < corners[std::size_t(Next(c))]; };
    std::sort(mOrder.begin(), mOrder.end(),
              [&](std::int32_t a, std::int32_t b)
              {
                  const auto la = low(a), lb = low(b), ha = high(a), hb = high(b);
                  const bool ua = upwards(a), ub = upwards(b);
                  return std::tie(la, ha, ua, a) < std::tie(lb, hb, ub, b);
              });
    for (std::size_t i = 0; i < mOrder.size();)
    {
        std::size_t end = i, up = i;
        for (; end < mOrder.size() && low(mOrder[end]) == low(mOrder[i]) && high(mOrder[end]) == high(mOrder[i]); ++end)
            up += upwards(mOrder[end]) ? 0u : 1u;
        for (std::size_t a = i, b = up; a < up && b < end; ++a, ++b)
        {
            mTwin[std::size_t(mOrder[a])] = mOrder[b];
            mTwin[std::size_t(mOrder[b])] = mOrder[a];
        }
        i = end;
    }
}

// Corners around a point that reach each other across paired edges make one fan; each fan gets the point for itself.
void GlyphPlate::SplitTouchingParts()
{
    std::vector<std::int32_t> parent(corners.size());
    std::iota(parent.begin(), parent.end(), 0);
    const auto root = [&parent](std::int32_t c)
    {
        while (parent[std::size_t(c)] != c)
            c = parent[std::size_t(c)] = parent[std::size_t(parent[std::size_t(c)])];
        return c;
    };
    const auto join = [&](std::int32_t a, std::int32_t b)
    {
        a = root(a);
        b = root(b);
        parent[std::size_t(std::max(a, b))] = std::min(a, b);
    };
    for (std::int32_t c = 0; c < std::int32_t(corners.size()); ++c)
        if (const std::int32_t twin = mTwin[std::size_t(c)]; twin >= 0)
        {
            join(c, Next(twin));
            join(Next(c), twin);
        }
    std::vector<std::int32_t> pointOf(corners.size(), -1);
    std::vector<Point> split;
    for (std::int32_t c = 0; c < std::int32_t(corners.size()); ++c)
    {
        std::int32_t& point = pointOf[std::size_t(root(c))]; // the root is the fan's first corner
        if (point < 0)
        {
            point = std::int32_t(split.size());
            split.push_back(points[std::size_t(corners[std::size_t(c)])]);
        }
        pointOf[std::size_t(c)] = point;
    }
    points.swap(split);
    corners.swap(pointOf);
}

void GlyphPlate::CollectRims()
{
    rims.clear();
    rimEnds.clear();
    std::vector<std::int32_t> after(points.size(), -1); // the next point of the rim through a point
    for (std::int32_t c = 0; c < std::int32_t(corners.size()); ++c)
        if (mTwin[std::size_t(c)] < 0)
            after[std::size_t(corners[std::size_t(c)])] = corners[std::size_t(Next(c))];
    for (std::size_t first = 0; first < after.size(); ++first)
    {
        if (after[first] < 0)
            continue;
        for (std::size_t at = first; after[at] >= 0;)
        {
            rims.push_back(std::int32_t(at));
            const auto next = std::size_t(after[at]);
            after[at] = -1;
            at = next;
        }
        rimEnds.push_back(std::int32_t(rims.size()));
    }
}

void GlyphPlate::Take(const GEOM& flat, std::int32_t first, std::int32_t end)
{
    ShareEqualPoints(flat, first, end);
    PairEdges();
    SplitTouchingParts();
    CollectRims();
}
} // namespace vx
