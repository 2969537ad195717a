// VelmarBase: mesh processing.
#pragma once

#include "base/BArray.h"
#include "mesh/VXEdge.h"
#include "mesh/kernel/Polys.h"

#include <cstdint>
#include <span>

namespace vx
{

/// One number for each corner of each polygon. Mostly a polygon has its corners in a power of two of its own, so that a
/// number says which polygon and corner it is; where the lengths differ too much, numbers run on without gaps, and
/// tables say so.
class SlotNumbers
{
public:
    /// @return false when memory ran out or there are too many corners for `limit` numbers
    bool Number(const PolyView& polys, std::int64_t limit);

    std::int64_t Count() const { return mCount; }
    std::int32_t First(std::int32_t poly) const { return mShift >= 0 ? poly << mShift : mFirst.Data()[poly]; }
    std::int32_t Poly(std::int32_t slot) const { return mShift >= 0 ? slot >> mShift : mPolyOf.Data()[slot]; }

private:
    std::int32_t mShift = 0; ///< -1: numbers without gaps
    std::int64_t mCount = 0;
    BArray<std::int32_t> mPolyOf; ///< per slot
    BArray<std::int32_t> mFirst;  ///< per polygon
};

/// Memory of edge building, and what its first stage leaves for the second. Kept by a caller that builds again.
struct EdgeScratch
{
    /// A half-edge in the bucket of its lower vertex.
    struct Entry
    {
        std::uint32_t higher; ///< the other vertex
        std::uint32_t slot;   ///< number of the corner where it starts, and some bits, see Edges.cpp
    };

    BArray<std::int32_t> bucketEnd; ///< per vertex: end of its bucket in entries
    BArray<Entry> entries;          ///< buckets in order of the lower vertex, each in order of walking
    BArray<std::int32_t> mate;      ///< per slot: how its edge goes on, see Edges.cpp
    SlotNumbers slots;
    BArray<std::int32_t> lastOf; ///< per vertex; only for vertices of high valence
    BArray<std::int32_t> chain;  ///< twice the largest bucket; only for vertices of high valence

    std::int64_t numEdges = 0;
    bool lines = false;  ///< some line of at least two corners
    bool points = false; ///< some point polygon of at least two corners
};

/// First stage: pairs the half-edges of all polygons, exactly as adding them one by one would: a face's half-edge
/// closes the newest open edge between its two vertices that another polygon left there, anything else opens an edge.
/// Half-edges are sorted by their lower vertex by counting, so the time is linear in corners whatever the valences.
/// @return false when memory ran out or there are 2^29 corners or more
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
