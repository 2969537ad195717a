// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BArray.h"
#include "base/Vertex.h"

#include <cstdint>
#include <span>

namespace vx
{
/// Cuts polygons of any number of corners into triangles that keep the polygon's winding: a fan where the polygon is
/// convex, clipped ears elsewhere. Every corner is tried a bounded number of times, and a tree of the corners that are
/// bent inwards answers whether one of them lies in an ear, so that a polygon of 100,000 corners takes a fraction of a
/// second whatever its shape. Keeps its scratch memory between polygons. One thread at a time.
class VELMAR_HOST_EXPORT Triangulator
{
public:
    Triangulator() = default;
    Triangulator(const Triangulator&) = delete;
    Triangulator& operator=(const Triangulator&) = delete;

    /// Appends three corner positions (0 .. ring.size()-1) for each triangle. A simple polygon of n corners gives n-2
    /// triangles; one without area gives a fan; fewer than 3 corners give none. One that crosses itself gives n-2
    /// triangles, too, which may overlap.
    /// @param points positions  @param ring point index of each corner, in [0, points.size())
    /// @return false when memory ran out; `corners` is then empty
    bool Append(std::span<const VERTEX> points, std::span<const std::int32_t> ring, BArray<std::int32_t>& corners);

private:
    struct Point
    {
        double x, y;
    };
    bool AppendFan(std::int32_t first, std::int32_t count, BArray<std::int32_t>& corners);
    bool AppendQuad(std::span<const VERTEX> points, std::span<const std::int32_t> ring, const VERTEX& normal,
                    BArray<std::int32_t>& corners);
    bool Flatten(std::span<const VERTEX> points, std::span<const std::int32_t> ring, const VERTEX& normal);
    bool IsConvex() const;
    bool ClipEars(BArray<std::int32_t>& corners);
    double TurnAt(std::int32_t corner) const;
    bool IsEar(std::int32_t corner) const;

    // The tree of reflex corners. Node i covers a run of mOrder; its children are 2 i and 2 i + 1.
    struct Node
    {
        Point low, high;
        std::int32_t alive = 0; ///< corners below that are still bent inwards
    };
    bool PlantTree();
    void Split(std::int32_t node, std::int32_t from, std::int32_t to);
    void Fell(std::int32_t corner);
    bool Blocked(std::int32_t node, std::int32_t from, std::int32_t to, const Point (&ear)[3]) const;

    BArray<Point> mFlat;                  ///< the polygon's corners seen along its normal, wound counter-clockwise
    BArray<std::int32_t> mBefore, mAfter; ///< the ring of corners that are left
    BArray<std::int32_t> mTried;          ///< corners to look at, as a stack
    BArray<std::uint8_t> mState;
    BArray<Node> mTree;
    BArray<std::int32_t> mOrder, mPlace; ///< reflex corners in tree order, and where each of them stands
};
} // namespace vx
