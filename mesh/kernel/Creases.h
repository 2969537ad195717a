// VelmarBase: mesh processing.
#pragma once

#include "base/BArray.h"
#include "mesh/VXEdge.h"
#include "mesh/kernel/Polys.h"

#include <cmath>
#include <span>

/// @file
/// Hard edges: which edges are creases, and which vertex each polygon corner uses when the vertices along them are
/// split. A sector is a run of polygons around a vertex between two creases (or open edges). The record's indices and
/// the edges' polygons are trusted.

namespace vx
{

/// What the crease kernels read: a record's polygons and texture, and its edges with the chains of links.
struct CreaseMesh
{
    PolyView polys; ///< with the record's own corners
    std::span<VXEdge> edges;
    std::span<const VXVertexLink> links;
    std::span<const std::int32_t> firstLink; ///< per record vertex, -1 for none
    const GEOM_Texture* tex = nullptr;

    std::int32_t Corner(std::int32_t poly, std::int32_t rel) const { return polys[poly].start + rel; }
};

struct CreaseRules
{
    const VERTEX* polyNormals = nullptr;      ///< crease by angle between these; null: not by angle
    float angle = 80;                         ///< degrees; edges at exactly this angle are creases
    const VERTEX* cornerNormals = nullptr;    ///< crease where these differ; null: not by corner normals
    const std::int32_t* normalSets = nullptr; ///< corner normal of each corner
};

inline constexpr float kSameValue = 0.000001f; ///< corner normals and texture coordinates closer than this are the same

inline bool CornersDiffer(float a, float b) { return std::fabs(a - b) > kSameValue; }
inline bool CornersDiffer(const T_VERTEX& a, const T_VERTEX& b)
{
    return CornersDiffer(a.u, b.u) || CornersDiffer(a.v, b.v);
}
inline bool CornersDiffer(const VERTEX& a, const VERTEX& b)
{
    return CornersDiffer(a.x, b.x) || CornersDiffer(a.y, b.y) || CornersDiffer(a.z, b.z);
}

/// Whether the angle between two normals makes a crease: "at least". Angles are read as between 0.81 and 179.74
/// degrees; a dot product that is not a number makes none.
bool ReachesAngle(float dot, float degrees);

/// Sets an edge's crease and smooth flags and clears its Classified flags.
inline void SetKind(VXEdge& edge, bool crease, bool smooth)
{
    constexpr std::uint32_t kCrease = std::uint32_t(EdgeFlag::CreaseEdge),
                            kSmooth = std::uint32_t(EdgeFlag::SmoothEdge);
    constexpr std::uint32_t kCleared =
        kCrease | kSmooth | std::uint32_t(EdgeFlag::P1V1Classified) | std::uint32_t(EdgeFlag::P1V2Classified) |
        std::uint32_t(EdgeFlag::P2V1Classified) | std::uint32_t(EdgeFlag::P2V2Classified);
    edge.SetFlags((edge.Flags() & ~kCleared) | (crease ? kCrease : 0u) | (smooth ? kSmooth : 0u));
}

/// Sets the smooth or crease flag of every edge anew, clears the Classified flags and drops crease data. Edges between
/// polygons of different smoothing groups, with corner normals that differ, or at the crease angle or more become
/// creases; texture seams become crease and stay smooth. Open edges are smooth.
/// @param creases out: indices of the crease edges, ascending
/// @return false when memory ran out
bool ClassifyEdges(const CreaseMesh& mesh, const CreaseRules& rules, BArray<std::int32_t>& creases);

/// Gives every sector beside a crease its own vertex. Crease edges in order, V1 before V2: polygon 1's sector gets a
/// copy of the vertex unless it has one. Of the sectors at a vertex that are left, the first keeps the original and the
/// others get copies. Writes the edges' crease data and Classified flags. Linear in the corners around the vertices
/// that are split.
/// @param sets      in: copy of the record's corner index array; out: crease corners redirected
/// @param originals out: the original of each copy; copy k is vertex firstLink.size() + k
/// @param split     out: per record vertex, whether a crease ends there
/// @return false when memory ran out; some edges may then have crease data
bool SplitSectors(const CreaseMesh& mesh, std::span<const std::int32_t> creases, std::int32_t* sets,
                  BArray<std::int32_t>& originals, BArray<std::uint8_t>& split);

/// Crease data and Classified flags of the edges around a vertex whose corners were redirected.
/// @param sets the redirected corner index array  @return false when memory ran out
bool WriteCreaseData(const CreaseMesh& mesh, std::int32_t v, const std::int32_t* sets);

/// The texture coordinate of each vertex and crease vertex: that of a corner which uses it, namely the last one when
/// all edges write theirs in order. (0, 0) where that corner has none and at vertices without edges.
/// @param sets, split as SplitSectors left them
/// @param uvs  out, one per vertex and crease vertex
void CornerUVs(const CreaseMesh& mesh, const std::int32_t* sets, std::span<const std::uint8_t> split,
               std::span<T_VERTEX> uvs);

/// Makes the corners from which a seam starts use the plain vertex, or the crease vertex again: such corners count for
/// the plain vertex when normals are summed.
/// @param polys the record's own corners  @param sets the redirected corner index array
void RedirectStarts(const VXEdge& seam, const PolyView& polys, std::int32_t* sets, bool toPlain);

} // namespace vx
