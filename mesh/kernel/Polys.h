// VelmarBase: mesh processing.
#pragma once

#include "base/GEOM.h"

#include <algorithm>
#include <cstdint>

/// @file
/// How the kernels read a record's polygons: packed records by stride, corners as runs of one flat array. Nothing here
/// trusts the record's indices: a run that leaves the corner array has no corners, and half-edges to vertices that do
/// not exist are passed over, so a record that was never verified is harmless.

namespace vx
{

/// The polygons of a record together with the corner index array to walk (the record's own, or the creased one).
struct PolyView
{
    const std::uint8_t* records = nullptr;
    std::int64_t stride = 0;
    std::int64_t count = 0;
    const std::int32_t* sets = nullptr; ///< vertex index of each corner
    std::int64_t numCorners = 0;        ///< entries of sets

    const ELEMENT& operator[](std::int64_t i) const { return *reinterpret_cast<const ELEMENT*>(records + i * stride); }
    /// Corners of a polygon; 0 for a run that is not inside the corner array.
    std::int32_t Length(const ELEMENT& e) const
    {
        const bool inside = e.start >= 0 && e.length >= 0 && std::int64_t(e.start) + e.length <= numCorners;
        return inside ? e.length : 0;
    }
};

/// @param sets corner index array as long as the record's; null takes the record's own
inline PolyView PolysOf(const GEOM& geom, const std::int32_t* sets = nullptr)
{
    return {geom.polys, geom.PolyStride(), geom.polys ? geom.numPolys : 0, sets ? sets : geom.sets, geom.NumCorners()};
}

/// Asks for a cache line that will be read and written soon. Where vertices lie in random order, loops over corners
/// spend their time waiting for memory unless they ask in time.
inline void PrefetchForWrite([[maybe_unused]] const void* address)
{
#if defined(__GNUC__)
    __builtin_prefetch(address, 1);
#endif
}

inline constexpr std::int64_t kPrefetchAhead = 48; ///< corners; far enough for memory, near enough to stay in the cache

/// Calls visit(poly, k, kNext, a, b, isFace) for each half-edge in the order in which polygons and corners lie: from
/// corner k with vertex a to corner kNext with vertex b of the polygon. Half-edges between two corners of the same
/// vertex are passed over; faces are closed, lines and points are not.
/// @param perVertex numVerts entries that the visits read and write: fetched ahead
template <class Visit>
inline void WalkHalfEdges(const PolyView& polys, std::uint32_t numVerts, const std::int32_t* perVertex, Visit&& visit)
{
    for (std::int64_t p = 0; p < polys.count; ++p)
    {
        const ELEMENT& element = polys[p];
        const std::int32_t length = polys.Length(element);
        if (length < 2)
            continue;
        const std::int32_t* const ring = polys.sets + element.start;
        const bool isFace = element.IsFace();
        if (element.start + kPrefetchAhead + length <= polys.numCorners)
            for (std::int32_t k = 0; k < length; ++k)
                PrefetchForWrite(perVertex + ring[k + kPrefetchAhead]);
        std::uint32_t a = std::uint32_t(ring[0]);
        for (std::int32_t k = 1; k < length; ++k)
        {
            const std::uint32_t b = std::uint32_t(ring[k]);
            if (a != b && std::max(a, b) < numVerts)
                visit(std::int32_t(p), k - 1, k, a, b, isFace);
            a = b;
        }
        const std::uint32_t first = std::uint32_t(ring[0]);
        if (isFace && a != first && std::max(a, first) < numVerts)
            visit(std::int32_t(p), length - 1, 0, a, first, true);
    }
}

} // namespace vx
