// VelmarBase: mesh processing.
#pragma once

#include "base/MEM.h"

#include <cstdint>

/// A run of drawn elements that share material and transparency: a count and a 64-bit key whose high word is the
/// transparency key and whose low word is the material key.
struct VXSortedSet
{
    std::int32_t count = 0;
    std::uint64_t key = 0;

    std::uint32_t TransparencyKey() const { return std::uint32_t(key >> 32); }
    std::uint32_t MaterialKey() const { return std::uint32_t(key); }
    std::uint16_t MaterialIndex() const { return std::uint16_t(key); } ///< slot of the record; the rest is the texture
};

/// Which edges of an element are drawn as lines, and why, in the edge-flag words below. An edge is marked in the
/// elements on both its sides. A texture seam splits vertices as a crease does, but is no line. Silhouettes have bits
/// of their own, since they alone follow the view: VXGeom::ComputeBackfacingToVertex writes them anew and leaves the
/// rest.
enum VXElementEdgeFlag : std::uint32_t
{
    kElementEdgeDrawn = 1u << 0,      ///< bit k: draw the edge that starts at corner k (k = 0 .. 3), in every view
    kElementEdgeOutline = 1u << 4,    ///< bit k: draw it, too, as a silhouette from the last viewpoint
    kElementEdgeCrease = 1u << 8,     ///< some edge of the element is drawn because it is a crease
    kElementEdgeOpen = 1u << 9,       ///< ... because it has only one polygon
    kElementEdgeMaterial = 1u << 10,  ///< ... because the materials differ across it
    kElementEdgeSilhouette = 1u << 11 ///< ... because one side faces the last viewpoint and the other does not
};

/// The kinds of element that drawing tells apart, in the order of VXSetIterator's runs.
enum class VXElementKind
{
    Quads,
    Triangles,
    Polygons, ///< faces of more than four corners
    Lines,
    Points,
};
inline constexpr int kNumElementKinds = 5;

/// One kind's elements, sorted for drawing: opaque before transparent, and by material within. Arrays are handles.
struct VXSortedBucket
{
    std::int32_t count = 0;
    std::int32_t* polys = nullptr;      ///< count polygon indices in drawing order
    std::int32_t* corners = nullptr;    ///< quads and triangles: 4 or 3 vertex indices each; null for the others
    std::uint32_t* edgeFlags = nullptr; ///< quads and triangles: one word of VXElementEdgeFlag each
    VXSortedSet* runs = nullptr;        ///< numRuns runs that cover the elements in order
    std::int32_t numRuns = 0;
};
