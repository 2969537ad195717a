// VelmarBase: mesh processing.
#pragma once

#include "base/BArray.h"
#include "base/Vertex.h"

#include <cstdint>
#include <span>

namespace vx
{

/// Squared distance in float, summed in this order: what decides between points that are almost equally far.
inline float SquaredDistance(const VERTEX& a, const VERTEX& b)
{
    const float dx = a.x - b.x, dy = a.y - b.y, dz = a.z - b.z;
    return dx * dx + dy * dy + dz * dz;
}

/// Finds the nearest of many points: to the bit the answer of a loop over all of them in order that keeps a point only
/// when its SquaredDistance is smaller than that of the one before. Any spread of points will do, such as all in one
/// place or one far away. Building takes n log n, a search about log n; only where a great many points are
/// nearly equally far from the one asked for, such as those of a sphere from its middle, all of them have to be looked
/// at.
class NearestPoint
{
public:
    /// Points that are not finite are never the answer.
    /// @param points at most 2^31 - 1 are looked at  @return false when memory ran out
    bool Build(std::span<const VERTEX> points);

    /// The nearest point that is nearer than a limit, the lowest index of equals; -1 when none is, also for a point
    /// that is not finite.
    /// @param startSquared the limit, squared
    std::int32_t Find(const VERTEX& point, float startSquared) const;

private:
    struct Entry
    {
        VERTEX point;
        std::int32_t index;
    };
    /// What lies below a node: the box of its points and the lowest of their indices.
    struct Extent
    {
        float lo[3], hi[3];
        std::int32_t least;
    };
    struct Node
    {
        Extent child[2];
    };

    std::int64_t LeafStart(std::int64_t leaf) const { return leaf * mEntries.Count() >> mLeafBits; }
    Extent ExtentOf(std::int64_t first, std::int64_t last) const;
    Extent Split(std::int64_t node, std::int64_t firstLeaf, std::int64_t numLeaves);

    BArray<Entry> mEntries;      ///< the finite points, in the order of the leaves
    BArray<Node> mNodes;         ///< a complete binary tree: node k has children 2k and 2k + 1, leaves follow
    std::int64_t mNumLeaves = 0; ///< 2 to the power of mLeafBits; leaf i's entries start at LeafStart(i)
    int mLeafBits = 0;
};

} // namespace vx
