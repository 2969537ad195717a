// VelmarBase: mesh processing.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"
#include "base/GEOM.h"
#include "mesh/VXEdge.h"

#include <cstdint>
#include <span>

/// Every undirected edge of a mesh once, and for each vertex a chain of the edges that touch it, newest first.
///
/// Edges are numbered in the order in which the polygons first walk them. Links 2e and 2e+1 belong to edge e. A third
/// polygon on an edge makes a second, parallel edge. Filled either edge by edge (Begin, AddEdge..., End) or at once
/// from a record (Build), with the same result. Valid until the mesh's topology changes.
class VELMAR_EXPORT VXEdgeList
{
public:
    // --- Filling

    /// Whether some line, or point polygon, of at least two corners was met.
    struct Kinds
    {
        bool lines = false, points = false;
    };

    /// Starts over for `numVerts` vertices. False when memory ran out.
    bool Begin(std::int32_t numVerts);

    /// Adds the edge vertA -> vertB of a polygon, or closes an open one.
    /// @param normalA, normalB corner normal indices of the two corners: accepted and not stored
    /// @param relA, relB corner positions of the two ends within the polygon
    /// @param match true (faces): an open edge between the two vertices, of another polygon, is closed when there is
    ///              one; the newest such edge wins
    /// @return false when the two vertices are the same one (nothing is added) or memory ran out
    bool AddEdge(std::uint32_t vertA, std::uint32_t vertB, std::uint32_t poly, int normalA, int normalB, int relA,
                 int relB, bool match);

    void End(); ///< gives back spare storage

    /// Fills the list from a record in time linear in its corners, whatever the valences.
    /// @param sets corner index array to walk; null takes the record's own
    /// @param kinds out, may be null: which other kinds than faces there are
    /// @return false when memory ran out; the list is then empty
    bool Build(const GEOM& geom, const std::int32_t* sets = nullptr, Kinds* kinds = nullptr);

    /// Starts over for a mesh put together of parts that share no vertices, with room for so many in all. False when
    /// memory ran out or they are too many for 32 bits; the list is then empty.
    bool BeginParts(std::int64_t numVerts, std::int64_t numEdges);

    /// Appends the edges of a part whose vertices follow those that are there already. After all parts, in the order of
    /// their polygons, the list is the same as Build makes it of the whole. Crease data are left behind.
    /// @param firstPoly what the part's polygon 0 is in the whole
    /// @return false when memory ran out; the list is then empty
    bool AppendPart(const VXEdgeList& part, std::int32_t firstPoly);

    // --- Reading
    std::int32_t GetEdgeCount() const { return std::int32_t(mEdges.Count()); }
    VXEdge& GetEdge(std::int32_t i) { return mEdges.Data()[i]; } ///< unchecked
    const VXEdge& GetEdge(std::int32_t i) const { return mEdges.Data()[i]; }
    VXEdge* Edges() { return mEdges.Data(); }
    const VXEdge* Edges() const { return mEdges.Data(); }
    std::span<const VXVertexLink> Links() const { return {mLinks.Data(), std::size_t(mLinks.Count())}; }
    std::span<const std::int32_t> FirstLinks() const { return {mFirstLink.Data(), std::size_t(mFirstLink.Count())}; }
    std::int32_t GetFirstVertexLink(std::int32_t v) const { return mFirstLink.Data()[v]; } ///< newest link, -1 for none
    std::int32_t GetVertexLinkCount() const { return std::int32_t(mFirstLink.Count()); }   ///< number of vertices
    std::int32_t GetEdgefromVertexLink(std::int32_t l) const { return mLinks.Data()[l].edge; }
    std::int32_t GetNextVertexLink(std::int32_t l) const { return mLinks.Data()[l].next; }
    std::int32_t GetVertexLinkCountVertex(std::int32_t v) const; ///< valence in edges
    std::size_t MemoryUsed() const;                              ///< bytes, capacities included

    // --- Searching along the chains

    /// First edge on vertA's chain that ends in vertB and, unless poly is -1, belongs to poly; -1 for none.
    std::int32_t FindEdge(std::int32_t vertA, std::int32_t vertB, std::int32_t poly) const;

    // The other edge of polygon 1 (or 2) that meets `edge` at V1 (or V2); -1 for none. A null edge answers 0.
    std::int32_t GetAttachedEdgeP1V1(const VXEdge* edge) const;
    std::int32_t GetAttachedEdgeP1V2(const VXEdge* edge) const;
    std::int32_t GetAttachedEdgeP2V1(const VXEdge* edge) const;
    std::int32_t GetAttachedEdgeP2V2(const VXEdge* edge) const;
    std::int32_t NextEdgePoly(const VXEdge* edge, std::int32_t poly, bool atV1) const; ///< the same for any polygon

    /// Vertices within depth + 1 edges of `vert`, each once, nearest chains first. From depth 1 on `vert` itself is
    /// among them. `out` is replaced.
    void GetNeighborVerts(std::int32_t vert, BArray<std::int32_t>& out, int depth) const;

private:
    std::int32_t AttachedEdge(std::int32_t vert, std::int32_t poly, std::int32_t notEdge) const;
    bool AddLink(std::int32_t vert, std::int32_t edge);

    BArray<VXEdge> mEdges;
    BArray<std::int32_t> mFirstLink;
    BArray<VXVertexLink> mLinks;
    std::int32_t mNumLinks = 0; ///< links in use, twice the number of edges
};

/// Walks the fan of polygons around one vertex, edge by edge. One walker per edge list at a time: it marks the edges
/// it has visited. A step takes the time of walking the vertex's chain; around vertices of high valence an index of the
/// chain by polygon, made at the start, takes its place.
class VELMAR_EXPORT VertLinkEdgeWalker
{
public:
    /// @param startEdge counted as visited; null starts with the vertex's newest edge and ignores `poly`
    /// @param poly      the polygon to cross first
    /// @param unused    no meaning
    VertLinkEdgeWalker(std::int32_t vert, VXEdgeList* list, VXEdge* startEdge, std::int32_t poly, bool unused);

    std::int32_t NextEdgeIndex();               ///< -1 when an open edge or the start was reached
    std::int32_t Poly() const { return mPoly; } ///< the polygon that the next step crosses

private:
    /// A polygon at the vertex with one of its edges there.
    struct Spoke
    {
        std::int32_t poly;
        std::int32_t order; ///< position of the edge on the chain
        std::int32_t edge;
    };
    void IndexChain();
    std::int32_t FirstOnChain() const;
    std::int32_t FirstInIndex();
    bool Crosses(std::int32_t edge) const;

    VXEdgeList* mList;
    std::int32_t mVert;
    std::int32_t mCurrent; ///< edge index, -1 before the first
    std::int32_t mPoly;
    std::int32_t mNumLinks = 0;
    BArray<Spoke> mSpokes;         ///< sorted by polygon, then order; empty at ordinary vertices
    BArray<std::int32_t> mSkipped; ///< at the first spoke of each polygon: how many of its spokes are done
};
