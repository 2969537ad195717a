// VelmarBase: mesh processing.
#pragma once

#include "base/BArray.h"
#include "mesh/VXEdge.h"
#include "mesh/kernel/Polys.h"

#include <cstdint>
#include <span>

namespace vx
{

/// Memory of edge building, and what its first stage leaves for the second. Kept by a caller that builds again.
struct EdgeScratch
{
    /// A half-edge in the bucket of its lower vertex.
    struct Entry
    {
        std::uint32_t higher; ///< the other vertex
        std::uint32_t slot;   ///< running corner number, and the two bits below
    };

    BArray<std::int32_t> bucketEnd; ///< per vertex: end of its bucket in entries
    BArray<Entry> entries;          ///< buckets in order of the lower vertex, each in order of walking
    BArray<std::int32_t> mate;      ///< per slot: how its edge goes on, see Edges.cpp
    BArray<std::int32_t> polyOf;    ///< per slot
    BArray<std::int32_t> firstSlot; ///< per polygon, and one more
    BArray<std::int32_t> lastOf;    ///< per vertex; only for vertices of high valence
    BArray<std::int32_t> chain;     ///< twice the largest bucket; only for vertices of high valence

    std::int64_t numEdges = 0;
    bool lines = false;  ///< some line of at least two corners
    bool points = false; ///< some point polygon of at least two corners
};

/// First stage: pairs the half-edges of all polygons, exactly as adding them one by one would: a face's half-edge
/// closes the newest open edge between its two vertices that another polygon left there, anything else opens an edge.
/// Half-edges are sorted by their lower vertex by counting, so the time is linear in corners whatever the valences.
/// @return false when memory ran out or there are 2^30 corners or more
bool PairHalfEdges(const PolyView& polys, std::int32_t numVerts, EdgeScratch& scratch);

/// Second stage: writes the edges in the order in which polygons first walk them, and the chains of links.
/// @param edges     out: room for scratch.numEdges edges, raw storage
/// @param links     out: 2 * numEdges links; links 2e and 2e+1 belong to V1 and V2 of edge e
/// @param firstLink out: per vertex its newest link, -1 for none
void WriteEdges(const PolyView& polys, const EdgeScratch& scratch, VXEdge* edges, VXVertexLink* links,
                std::span<std::int32_t> firstLink);

/// Marks silhouette and material boundary edges for a viewpoint. Edges whose polygons do not exist are passed over.
/// @param polyNormals one per polygon, of any length
void ClassifyFacing(std::span<VXEdge> edges, const PolyView& polys, std::span<const VERTEX> points,
                    const VERTEX* polyNormals, const VERTEX& viewpoint);

} // namespace vx
