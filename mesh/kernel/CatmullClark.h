// VelmarBase: mesh processing.
#pragma once

#include "base/BArray.h"
#include "mesh/VXEdge.h"
#include "mesh/kernel/Polys.h"

#include <cstdint>
#include <span>

/// @file
/// One step of Catmull-Clark subdivision over flat arrays. The topology of the result follows from the edges: each
/// edge knows at which corner of its polygons it starts, so one pass over the edges says which edge starts at each
/// corner, and the quads follow without a search. Time is linear in corners whatever the valences.

namespace vx
{

/// What is subdivided. The polygons' corners and the edges' indices are checked where they are read, so edges that do
/// not belong to the polygons are harmless: what does not fit is passed over.
struct CatmullSource
{
    PolyView polys; ///< with the record's own corners
    std::span<const VERTEX>
        points;                    ///< V: crease vertices included, which no edge reaches and which stay where they are
    std::span<const VXEdge> edges; ///< E
    const GEOM_Texture* tex = nullptr;

    /// T; 0 when no polygon can have texture coordinates.
    std::int64_t NumTexVerts() const { return tex && tex->sets && tex->verts ? tex->numVerts : 0; }
};

/// Where the result goes. Vertices are V vertex points, P face points, E edge points; texture vertices are T old ones,
/// P face points, and two for each edge, one for each side, of 2C (2E where E is larger). All entries are zero when the
/// step starts, apart from the face points, which are the caller's to write, and the old texture vertices.
struct CatmullTarget
{
    VERTEX* verts = nullptr;          ///< V + P + E
    std::uint8_t* polys = nullptr;    ///< C records without group bits, see stride
    std::int64_t stride = 0;          ///< bytes of one record
    std::int32_t* sets = nullptr;     ///< 4C
    std::int32_t* parents = nullptr;  ///< C: the polygon of each quad, -1 for a slot that no quad takes
    T_VERTEX* texVerts = nullptr;     ///< see above, or null without texture coordinates
    std::int32_t* texSets = nullptr;  ///< 4C, likewise
    GEOM_TexPoly* texPolys = nullptr; ///< C, likewise
};

/// Memory of a step.
struct CatmullScratch
{
    /// What the edges at a vertex add up to. Sums over a vertex in many polygons would lose their digits in float.
    struct VertexSum
    {
        double faces[3] = {}, ends[3] = {};
        std::int32_t numEdges = 0; ///< negative at a border
        std::int32_t numEnds = 0;
    };

    BArray<std::int32_t> firstCorner; ///< P + 1: number of each polygon's first corner, counted through; then C
    BArray<std::uint32_t> edgeAt;     ///< C: the edge that starts at each corner, see CatmullClark.cpp
    BArray<VertexSum> sums;           ///< V
    BArray<std::int32_t> mark;        ///< V
    BArray<std::int32_t> walk;        ///< room for walking along the edges of the largest polygon

    std::int64_t NumCorners() const { return firstCorner.Data()[firstCorner.Count() - 1]; } ///< C, once numbered
};

/// Numbers the corners and takes all memory that the step needs. False when it ran out or numbers of 32 bits do.
bool PrepareCatmullClark(const CatmullSource& source, CatmullScratch& scratch);

/// The step itself, after PrepareCatmullClark of the same source.
/// @return the number of quads made: C when all polygons are faces with no corner twice
std::int32_t CatmullClark(const CatmullSource& source, const CatmullTarget& target, CatmullScratch& scratch);

} // namespace vx
