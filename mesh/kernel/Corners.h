// VelmarBase: mesh processing.
#pragma once

#include "mesh/kernel/Creases.h"

#include <algorithm>

/// @file
/// What the kernels that split vertices share: the polygon corners at the ends of edges, and disjoint sets of corners.

namespace vx
{

/// Texture vertex of a polygon's corner, -1 for none.
inline std::int32_t TexVertex(const GEOM_Texture& tex, std::int32_t poly, std::int32_t rel)
{
    if (poly >= tex.numPolys)
        return -1;
    const GEOM_TexPoly run = tex.polys[poly];
    const std::int64_t corner = std::int64_t(run.start) + rel;
    if (rel >= run.length || run.start < 0 || corner >= tex.numCorners)
        return -1;
    const std::int32_t vert = tex.sets[corner];
    return vert >= 0 && vert < tex.numVerts ? vert : -1;
}

/// Calls visit(edge, atV1) for each edge at a vertex, newest first.
template <class Visit>
void VisitEdges(const CreaseMesh& mesh, std::int32_t v, Visit&& visit)
{
    for (std::int32_t l = mesh.firstLink[std::size_t(v)]; l >= 0; l = mesh.links[std::size_t(l)].next)
    {
        VXEdge& edge = mesh.edges[std::size_t(mesh.links[std::size_t(l)].edge)];
        visit(edge, edge.VertIndex1() == v);
    }
}

/// One end of an edge: the corners that its polygons have there.
struct EdgeEnd
{
    std::int32_t poly1, rel1;
    std::int32_t poly2, rel2; // poly2 is -1 at an open edge
};

inline EdgeEnd EndAt(const VXEdge& edge, bool atV1)
{
    return atV1 ? EdgeEnd{edge.PolyIndex1(), edge.RelIndexP1V1(), edge.PolyIndex2(), edge.RelIndexP2V1()}
                : EdgeEnd{edge.PolyIndex1(), edge.RelIndexP1V2(), edge.PolyIndex2(), edge.RelIndexP2V2()};
}

/// Calls visit(corner) for the neighbours of a corner, within its polygon, that have the same vertex as it: a repeated
/// corner belongs to the same sector, though the edges touch only the first and the last of a repetition.
template <class Visit>
void VisitRepeats(const PolyView& polys, std::int32_t poly, std::int32_t rel, Visit&& visit)
{
    const ELEMENT& element = polys[poly];
    const std::int32_t* const ring = polys.sets + element.start;
    const std::int32_t last = element.length - 1;
    const bool closed = element.IsFace();
    const auto next = [&](std::int32_t k) { return k < last ? k + 1 : closed ? 0 : rel; };
    const auto previous = [&](std::int32_t k) { return k > 0 ? k - 1 : closed ? last : rel; };
    for (std::int32_t k = next(rel); k != rel && ring[k] == ring[rel]; k = next(k))
        visit(element.start + k);
    for (std::int32_t k = previous(rel); k != rel && ring[k] == ring[rel]; k = previous(k))
        visit(element.start + k);
}

/// Disjoint sets of corners. A root, the lowest of its set, holds itself, or the complement of a value given to its
/// set. Nothing is set up in advance: each corner is reset before its first use.
class CornerSets
{
public:
    bool Init(std::int64_t numCorners) { return mParent.SetCountForWriting(numCorners); }
    void Reset(std::int32_t corner) { mParent.Data()[corner] = corner; }
    std::int32_t Root(std::int32_t corner)
    {
        std::int32_t* const parent = mParent.Data();
        for (;;)
        {
            const std::int32_t above = parent[corner];
            if (above < 0 || above == corner)
                return corner;
            if (parent[above] >= 0)
                parent[corner] = parent[above];
            corner = above;
        }
    }
    void Join(std::int32_t a, std::int32_t b)
    {
        a = Root(a);
        b = Root(b);
        mParent.Data()[std::max(a, b)] = std::min(a, b);
    }
    bool HasValue(std::int32_t root) const { return mParent.Data()[root] < 0; }
    std::int32_t Value(std::int32_t root) const { return ~mParent.Data()[root]; }
    void SetValue(std::int32_t root, std::int32_t value) { mParent.Data()[root] = ~value; }

private:
    BArray<std::int32_t> mParent;
};

/// Joins the corners at a vertex that repeat each other within a polygon or meet across an edge that is no crease.
inline void JoinAcrossSmoothEdges(const CreaseMesh& mesh, std::int32_t v, CornerSets& sets)
{
    const auto joinRepeats = [&](std::int32_t poly, std::int32_t rel)
    {
        const std::int32_t corner = mesh.Corner(poly, rel);
        VisitRepeats(mesh.polys, poly, rel, [&](std::int32_t repeat) { sets.Join(corner, repeat); });
        return corner;
    };
    VisitEdges(mesh, v,
               [&](const VXEdge& edge, bool atV1)
               {
                   const EdgeEnd end = EndAt(edge, atV1);
                   const std::int32_t corner1 = joinRepeats(end.poly1, end.rel1);
                   const std::int32_t corner2 = end.poly2 >= 0 ? joinRepeats(end.poly2, end.rel2) : corner1;
                   if (!edge.IsCreaseEdge())
                       sets.Join(corner1, corner2);
               });
}

} // namespace vx
