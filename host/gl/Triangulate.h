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
/// convex, clipped ears for short concave ones, the GLU tessellator (a sweep, n log n) for long or self-crossing ones.
/// Keeps its scratch memory between polygons. One thread at a time.
class VELMAR_HOST_EXPORT Triangulator
{
public:
    Triangulator() = default;
    ~Triangulator();
    Triangulator(const Triangulator&) = delete;
    Triangulator& operator=(const Triangulator&) = delete;

    /// Appends three corner positions (0 .. ring.size()-1) for each triangle. A simple polygon of n corners gives n-2
    /// triangles; one without area gives a fan; fewer than 3 corners give none.
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
    int ClipEars(BArray<std::int32_t>& corners);
    bool Sweep(BArray<std::int32_t>& corners);

    BArray<Point> mFlat; ///< the polygon's corners seen along its normal, wound counter-clockwise
    BArray<std::int32_t> mLeft;
    void* mSweeper = nullptr; ///< a GLUtesselator, made on first use
};
} // namespace vx
