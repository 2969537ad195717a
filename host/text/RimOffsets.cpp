#include "host/text/detail/GlyphPlate.h"

#include <algorithm>
#include <cmath>

namespace vx
{
namespace
{
using Point = GlyphPlate::Point;

constexpr float kLongestMitre = 2;      // of a pointed corner, in widths; beyond, the bevel comes closer to the point
constexpr float kShortestEdge = 0.2f;   // what an edge keeps of its length
constexpr float kShareOfGap = 0.45f;    // two rims that face each other stay this much apart
constexpr float kSteepest = 0.5f;       // change of the width along the rim
constexpr int kRounds = 8;              // of shortening; what is left then is small
constexpr float kSameDirection = 0.02f; // of the width: points closer than this are taken as one for directions

Point operator-(const Point& a, const Point& b) { return {a.x - b.x, a.y - b.y}; }
float Dot(const Point& a, const Point& b) { return a.x * b.x + a.y * b.y; }
float Cross(const Point& a, const Point& b) { return a.x * b.y - a.y * b.x; }
float Length(const Point& a) { return std::hypot(a.x, a.y); }

/// The rims of a plate as edges from each entry to the next of its rim.
class Rims
{
public:
    explicit Rims(const GlyphPlate& plate) : mPlate(plate), mAfter(plate.rims.size()), mBefore(plate.rims.size())
    {
        std::size_t first = 0;
        for (const std::int32_t end : plate.rimEnds)
        {
            for (std::size_t i = first; i < std::size_t(end); ++i)
            {
                mAfter[i] = i + 1 < std::size_t(end) ? i + 1 : first;
                mBefore[mAfter[i]] = i;
            }
            first = std::size_t(end);
        }
    }
    std::size_t Count() const { return mAfter.size(); }
    std::size_t After(std::size_t i) const { return mAfter[i]; }
    std::size_t Before(std::size_t i) const { return mBefore[i]; }
    Point At(std::size_t i) const { return mPlate.points[std::size_t(mPlate.rims[i])]; }

private:
    const GlyphPlate& mPlate;
    std::vector<std::size_t> mAfter, mBefore;
};

// The way out at the middle of an edge: to its right, the glyph lying on its left.
Point OutOf(const Point& from, const Point& to)
{
    const Point along = to - from;
    const float length = Length(along);
    return length > 0 ? Point{along.y / length, -along.x / length} : Point{0, 0};
}

// Where a point goes when its two edges move out by 1. Points that all but coincide, as crossings of outlines leave
// them, get the direction of the corner that they make together.
Point Mitre(const Rims& rims, std::size_t i, float near)
{
    std::size_t before = rims.Before(i), after = rims.After(i);
    while (before != i && Length(rims.At(i) - rims.At(before)) < near)
        before = rims.Before(before);
    while (after != i && Length(rims.At(after) - rims.At(i)) < near)
        after = rims.After(after);
    const Point in = OutOf(rims.At(before), rims.At(i)), out = OutOf(rims.At(i), rims.At(after));
    const Point sum{in.x + out.x, in.y + out.y};
    const float length = Length(sum); // twice the cosine of half the turn
    if (length < 1e-3f)
        return {0, 0}; // a needle: it turns back on itself and has no way out
    const float reach = std::min(2 / length, kLongestMitre) / length;
    return {sum.x * reach, sum.y * reach};
}

// No edge may turn round, nor shrink to nothing.
void KeepEdges(const Rims& rims, const std::vector<Point>& mitres, std::vector<float>& widths)
{
    bool changed = true;
    for (int round = 0; round < kRounds && changed; ++round)
    {
        changed = false;
        for (std::size_t i = 0; i < rims.Count(); ++i)
        {
            const std::size_t k = rims.After(i);
            const Point along = rims.At(k) - rims.At(i);
            const float length = Length(along);
            if (!(length > 0))
                continue;
            const float growth = (widths[k] * Dot(mitres[k], along) - widths[i] * Dot(mitres[i], along)) / length;
            if (growth >= -(1 - kShortestEdge) * length)
                continue;
            const float share = (1 - kShortestEdge) * length / -growth;
            widths[i] *= share;
            widths[k] *= share;
            changed = true;
        }
    }
}

// What lies opposite of a rim's point is left its half of the gap.
void KeepGaps(const Rims& rims, const std::vector<Point>& mitres, std::vector<float>& widths)
{
    for (std::size_t i = 0; i < rims.Count(); ++i)
    {
        const Point from = rims.At(i), way = mitres[i];
        for (std::size_t e = 0; e < rims.Count(); ++e)
        {
            const std::size_t f = rims.After(e);
            if (e == i || f == i)
                continue;
            // from + s way = a + t (b - a)
            const Point a = rims.At(e) - from, edge = rims.At(f) - rims.At(e);
            const float across = Cross(way, edge);
            if (across == 0)
                continue;
            const float s = Cross(a, edge) / across, t = Cross(a, way) / across;
            if (s <= 0 || t < 0 || t > 1 || kShareOfGap * s >= widths[i])
                continue;
            widths[i] = kShareOfGap * s;
            widths[e] = std::min(widths[e], kShareOfGap * s);
            widths[f] = std::min(widths[f], kShareOfGap * s);
        }
    }
}

// Twice round each rim, so that a narrow place is led up to from both sides, across its start too.
void KeepSmooth(const Rims& rims, std::vector<float>& widths)
{
    const auto limit = [&](std::size_t to, std::size_t from)
    { widths[to] = std::min(widths[to], widths[from] + kSteepest * Length(rims.At(to) - rims.At(from))); };
    for (int round = 0; round < 2; ++round)
    {
        for (std::size_t i = 0; i < rims.Count(); ++i)
            limit(rims.After(i), i);
        for (std::size_t i = rims.Count(); i-- > 0;)
            limit(i, rims.After(i));
    }
}
} // namespace

void RimOffsets::Compute(const GlyphPlate& plate, float width)
{
    const Rims rims(plate);
    moves.resize(rims.Count());
    std::vector<Point> mitres(rims.Count());
    for (std::size_t i = 0; i < rims.Count(); ++i)
        mitres[i] = Mitre(rims, i, kSameDirection * width);
    std::vector<float> widths(rims.Count(), width);
    KeepGaps(rims, mitres, widths);
    KeepSmooth(rims, widths);
    KeepEdges(rims, mitres, widths);
    for (std::size_t i = 0; i < rims.Count(); ++i)
        moves[i] = {mitres[i].x * widths[i], mitres[i].y * widths[i]};
}
} // namespace vx
