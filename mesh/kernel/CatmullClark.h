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
    /// @param numPoints entries of the record's vertex array that count: crease vertices may be among them, which no
    ///                  edge reaches and which stay where they are
    CatmullSource(const GEOM& record, std::int64_t numPoints, std::span<const VXEdge> edgeList)
        : geom(record), polys(PolysOf(record)), points(record.verts, std::size_t(record.verts ? numPoints : 0)),
          edges(edgeList), numTexVerts(record.tex && record.tex->sets && record.tex->verts ? record.tex->numVerts : 0)
    {
    }

    const GEOM& geom;
    PolyView polys;                 ///< P, with the record's own corners: C in all
    std::span<const VERTEX> points; ///< V
    std::span<const VXEdge> edges;  ///< E
    std::int64_t numTexVerts;       ///< T; 0 when no polygon can have texture coordinates
};

/// Where the result goes: arrays of the sizes that CatmullSizesOf tells, all zero. Vertices are V vertex points, P face
/// points, E edge points; texture vertices are T old ones, P face points, and two for each edge, one for each side.
struct CatmullTarget
{
    /// @param sized a record of those sizes without groups  @param quadParents one entry per polygon of it
    CatmullTarget(GEOM& sized, std::int32_t* quadParents)
        : verts(sized.verts), polys(sized.polys), stride(sized.PolyStride()), sets(sized.sets), parents(quadParents),
          texVerts(sized.tex ? sized.tex->verts : nullptr), texSets(sized.tex ? sized.tex->sets : nullptr),
          texPolys(sized.tex ? sized.tex->polys : nullptr)
    {
    }

    VERTEX* verts;
    std::uint8_t* polys; ///< packed records
    std::int64_t stride; ///< bytes of one record
    std::int32_t* sets;
    std::int32_t* parents; ///< the polygon that each quad comes from, -1 for a slot that no quad takes
    T_VERTEX* texVerts;    ///< null without texture coordinates, as the next two
    std::int32_t* texSets;
    GEOM_TexPoly* texPolys;
};

/// Memory of a step.
struct CatmullScratch
{
    /// What the edges at a vertex add up to. Sums over a vertex in many polygons would lose their digits in float, and
    /// eight of a kind are added in four steps.
    struct VertexSum
    {
        double faces[3], ends[3];
        double numEdges; ///< minus infinity at a border, whatever is added
        double numEnds;
    };

    CatmullScratch() = default;
    ~CatmullScratch() { MEM_Free(sums); }
    CatmullScratch(const CatmullScratch&) = delete;
    CatmullScratch& operator=(const CatmullScratch&) = delete;

    BArray<std::int32_t> firstCorner; ///< P + 1: number of each polygon's first corner, counted through; then C
    BArray<std::uint32_t> edgeAt;     ///< C: the edge that starts at each corner, see CatmullClark.cpp
    VertexSum* sums = nullptr;        ///< V: a handle, as these come zeroed without being touched
    BArray<std::int32_t> mark;        ///< V
    BArray<std::int32_t> walk;        ///< room for walking along the edges of the largest polygon
};

/// What the result's record holds.
struct CatmullSizes
{
    int verts;    ///< V + P + E
    int polys;    ///< C quads
    int corners;  ///< four of each; texture corners too, where there are texture vertices
    int texVerts; ///< T + P + 2C, or 0
};

/// Numbers the corners and takes all memory that the step needs. False when it ran out or numbers of 32 bits do.
bool PrepareCatmullClark(const CatmullSource& source, CatmullScratch& scratch);

CatmullSizes CatmullSizesOf(const CatmullSource& source, const CatmullScratch& scratch); ///< once prepared

/// The step itself, after PrepareCatmullClark of the same source.
/// @return the number of quads made: C when all polygons are faces with no corner twice
std::int32_t CatmullClark(const CatmullSource& source, const CatmullTarget& target, CatmullScratch& scratch);

} // namespace vx
