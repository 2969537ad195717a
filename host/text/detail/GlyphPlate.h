// VelmarBase: reference host.
#pragma once

#include "base/GEOM.h"

#include <cstdint>
#include <vector>

namespace vx
{
/// The flat shape of one glyph as a mesh that can be given thickness: triangles that share their vertices, and the rims
/// along which walls stand. Every vertex of a rim is passed by exactly one rim, once: where parts only touch in a
/// point, each has that point for itself.
struct GlyphPlate
{
    struct Point
    {
        float x, y;
        friend bool operator==(const Point&, const Point&) = default;
    };

    std::vector<Point> points;
    std::vector<std::int32_t> corners; ///< three in a row make a triangle, counter-clockwise
    std::vector<std::int32_t> rims;    ///< points of the rims, one rim after the other, the filled side on their left
    std::vector<std::int32_t> rimEnds; ///< for each rim where it ends in `rims`

    /// The plate of polygons [first, end) of a flat record of triangles whose vertices are not shared. What was here is
    /// replaced. Linear but for sorting. Throws std::bad_alloc.
    void Take(const GEOM& flat, std::int32_t first, std::int32_t end);

private:
    void ShareEqualPoints(const GEOM& flat, std::int32_t first, std::int32_t end);
    void PairEdges();
    void SplitTouchingParts();
    void CollectRims();
    static std::int32_t Next(std::int32_t corner) { return corner % 3 == 2 ? corner - 2 : corner + 1; }

    std::vector<std::int32_t> mTwin;  ///< per corner, of the edge that starts there: the one it is paired with, -1: rim
    std::vector<std::int32_t> mOrder; ///< scratch
};

/// How far each point of the rims may move out of the glyph, and which way: for a bevel that widens the glyph by
/// `width`, less where rims would fold or meet.
struct RimOffsets
{
    std::vector<GlyphPlate::Point> moves; ///< one for each entry of GlyphPlate::rims

    void Compute(const GlyphPlate& plate, float width); ///< throws std::bad_alloc
};
} // namespace vx
