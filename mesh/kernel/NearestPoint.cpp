// A k-d tree with the points in its leaves (J. L. Bentley, Multidimensional binary search trees used for associative
// searching, 1975), split at medians, so that its depth does not depend on how the points lie. Each node keeps the
// boxes of its children and their lowest indices: by the boxes a search turns away from what is too far, by the indices
// from what is as far as the best but numbered higher.

#include "mesh/kernel/NearestPoint.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace vx
{
namespace
{

constexpr std::int64_t kLeafEntries = 24; // at most; a dozen points are compared in the time of two nodes

float Gap(float lo, float hi, float at) { return std::max(std::max(lo - at, at - hi), 0.0f); }

using KeyOf = float VERTEX::*;

// Moves the entries for which isLess(key) to the front and returns their end. Without a branch, since which entries
// they are cannot be foretold.
template <class Entry, class Less>
Entry* Partition(Entry* first, Entry* last, KeyOf key, Less isLess)
{
    Entry* end = first;
    for (Entry* i = first; i < last; ++i)
    {
        const Entry entry = *i;
        *i = *end;
        *end = entry;
        end += isLess(entry.point.*key) ? 1 : 0;
    }
    return end;
}

float Middle(float a, float b, float c) { return std::max(std::min(a, b), std::min(std::max(a, b), c)); }

// Brings the entry that sorting would put there to `middle`, what sorts before it to its left. Quickselect (C. A. R.
// Hoare, Algorithm 65, 1961); should the pivots turn out badly the standard library finishes.
template <class Entry>
void Select(Entry* first, Entry* middle, Entry* last, KeyOf key)
{
    for (int round = 0; round < 40 && last - first > 32; ++round)
    {
        const std::ptrdiff_t step = (last - first) / 9;
        const auto at = [&](std::ptrdiff_t k) { return first[k * step + step / 2].point.*key; };
        const float pivot =
            Middle(Middle(at(0), at(1), at(2)), Middle(at(3), at(4), at(5)), Middle(at(6), at(7), at(8)));
        Entry* end = Partition(first, last, key, [pivot](float value) { return value < pivot; });
        if (end == first) // nothing is less: those that are equal go to the front
        {
            end = Partition(first, last, key, [pivot](float value) { return value <= pivot; });
            if (middle < end)
                return;
        }
        (middle < end ? last : first) = end;
    }
    std::nth_element(first, middle, last,
                     [key](const Entry& a, const Entry& b) { return a.point.*key < b.point.*key; });
}

} // namespace

bool NearestPoint::Build(std::span<const VERTEX> points)
{
    mNumLeaves = 0;
    if (!mEntries.SetCountForWriting(std::int64_t(points.size())))
        return false;
    std::int64_t count = 0;
    for (std::size_t i = 0; i < points.size(); ++i)
        if (IsFinite(points[i]))
            mEntries.Data()[count++] = {points[i], std::int32_t(i)};
    mEntries.SetCountForWriting(count);
    if (count == 0)
        return true;
    const std::int64_t numLeaves =
        std::int64_t(std::bit_ceil(std::uint64_t((count + kLeafEntries - 1) / kLeafEntries)));
    if (!mNodes.SetCountForWriting(numLeaves))
        return false;
    mNumLeaves = numLeaves;
    mLeafBits = std::countr_zero(std::uint64_t(numLeaves));
    Split(1, 0, numLeaves);
    return true;
}

NearestPoint::Extent NearestPoint::ExtentOf(std::int64_t first, std::int64_t last) const
{
    constexpr float kFar = std::numeric_limits<float>::infinity();
    Extent extent = {{kFar, kFar, kFar}, {-kFar, -kFar, -kFar}, std::numeric_limits<std::int32_t>::max()};
    for (std::int64_t i = first; i < last; ++i)
    {
        const Entry& entry = mEntries.Data()[i];
        const float at[3] = {entry.point.x, entry.point.y, entry.point.z};
        for (int axis = 0; axis < 3; ++axis)
        {
            extent.lo[axis] = std::min(extent.lo[axis], at[axis]);
            extent.hi[axis] = std::max(extent.hi[axis], at[axis]);
        }
        extent.least = std::min(extent.least, entry.index);
    }
    return extent;
}

// Orders the entries of a run of leaves and fills the nodes above them; returns what lies in them.
NearestPoint::Extent NearestPoint::Split(std::int64_t node, std::int64_t firstLeaf, std::int64_t numLeaves)
{
    const std::int64_t first = LeafStart(firstLeaf), last = LeafStart(firstLeaf + numLeaves);
    const Extent extent = ExtentOf(first, last);
    if (numLeaves == 1)
        return extent;
    const float sizes[3] = {extent.hi[0] - extent.lo[0], extent.hi[1] - extent.lo[1], extent.hi[2] - extent.lo[2]};
    constexpr KeyOf kAxes[3] = {&VERTEX::x, &VERTEX::y, &VERTEX::z};
    const KeyOf axis = kAxes[std::max_element(sizes, sizes + 3) - sizes];

    const std::int64_t half = numLeaves / 2, middle = LeafStart(firstLeaf + half);
    Entry* const entries = mEntries.Data();
    Select(entries + first, entries + middle, entries + last, axis);
    const Extent left = Split(2 * node, firstLeaf, half), right = Split(2 * node + 1, firstLeaf + half, half);
    mNodes.Data()[node] = {{left, right}};
    return extent;
}

std::int32_t NearestPoint::Find(const VERTEX& point, float startSquared) const
{
    if (mNumLeaves == 0 || !IsFinite(point))
        return -1;
    float best = startSquared;
    std::int32_t bestIndex = -1; // while there is none, nothing at the limit itself is taken
    const auto losesTo = [&](float squared, std::int32_t index)
    { return squared < best || (squared == best && index < bestIndex); };

    // The distance to a box is summed as that to a point is. Rounding keeps order, so it never exceeds the distance, as
    // computed, of any point inside, and no margin is needed.
    const auto distanceTo = [&point](const Extent& box)
    {
        const float dx = Gap(box.lo[0], box.hi[0], point.x), dy = Gap(box.lo[1], box.hi[1], point.y),
                    dz = Gap(box.lo[2], box.hi[2], point.z);
        return dx * dx + dy * dy + dz * dz;
    };
    struct Postponed
    {
        std::int64_t node;
        float squared;
        std::int32_t least;
    };
    Postponed postponed[64]; // at most one for each level
    int numPostponed = 0;
    postponed[numPostponed++] = {1, 0, -1};
    while (numPostponed > 0)
    {
        Postponed at = postponed[--numPostponed];
        while (at.node < mNumLeaves && losesTo(at.squared, at.least))
        {
            const Node& node = mNodes.Data()[at.node];
            Postponed near = {2 * at.node, distanceTo(node.child[0]), node.child[0].least},
                      far = {2 * at.node + 1, distanceTo(node.child[1]), node.child[1].least};
            if (far.squared < near.squared || (far.squared == near.squared && far.least < near.least))
                std::swap(near, far);
            if (losesTo(far.squared, far.least))
                postponed[numPostponed++] = far;
            at = near;
        }
        if (!losesTo(at.squared, at.least))
            continue;
        const std::int64_t leaf = at.node - mNumLeaves, last = LeafStart(leaf + 1);
        for (std::int64_t i = LeafStart(leaf); i < last; ++i)
        {
            const Entry& entry = mEntries.Data()[i];
            const float squared = SquaredDistance(point, entry.point);
            if (!losesTo(squared, entry.index))
                continue;
            best = squared;
            bestIndex = entry.index;
        }
    }
    return bestIndex;
}

} // namespace vx
