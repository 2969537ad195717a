#include "mesh/kernel/Selection.h"

#include "mesh/kernel/NearestPoint.h"

#include <bit>

namespace vx
{
namespace
{

// --- Walking

template <class Visit>
void VisitSelected(const BBitArray& selected, std::int64_t count, Visit&& visit)
{
    for (std::int64_t i = selected.NextSet(0); i >= 0 && i < count; i = selected.NextSet(i + 1))
        visit(std::int32_t(i));
}

/// A mesh with its selection.
struct Walk
{
    const SelectionMesh& mesh;
    const BBitArray& selected;

    std::int64_t NumPolys() const { return mesh.polys.count; }
    std::int64_t NumVerts() const { return std::int64_t(mesh.firstLink.size()); }
    bool IsPoly(std::int32_t p) const { return p >= 0 && p < mesh.polys.count; }
    bool IsIn(std::int32_t poly) const { return IsPoly(poly) && selected[poly]; }
    bool IsInside(const VXEdge& edge) const { return IsIn(edge.PolyIndex1()) && IsIn(edge.PolyIndex2()); }

    template <class Visit>
    void VisitVerts(std::int32_t poly, Visit&& visit) const // of a polygon that is there
    {
        const ELEMENT& element = mesh.polys[poly];
        const std::int32_t* const ring = mesh.polys.sets + element.start;
        const std::int32_t length = mesh.polys.Length(element);
        for (std::int32_t k = 0; k < length; ++k)
            if (std::uint32_t(ring[k]) < mesh.firstLink.size())
                visit(ring[k]);
    }

    /// Calls visit(edge index, edge), newest edge first, for as long as it answers true.
    template <class Visit>
    void VisitEdgesWhile(std::int32_t vert, Visit&& visit) const
    {
        for (std::int32_t l = mesh.firstLink[std::size_t(vert)]; l >= 0; l = mesh.links[std::size_t(l)].next)
        {
            const std::int32_t e = mesh.links[std::size_t(l)].edge;
            if (!visit(e, mesh.edges[std::size_t(e)]))
                return;
        }
    }
    template <class Visit>
    void VisitEdges(std::int32_t vert, Visit&& visit) const
    {
        VisitEdgesWhile(vert,
                        [&](std::int32_t e, const VXEdge& edge)
                        {
                            visit(e, edge);
                            return true;
                        });
    }

    /// Calls visit(vert) once for each vertex of the selected polygons. False when memory ran out.
    template <class Visit>
    bool VisitVertsOfSelected(Visit&& visit) const
    {
        BBitArray seen;
        if (!seen.SetCount(NumVerts()))
            return false;
        VisitSelected(selected, NumPolys(),
                      [&](std::int32_t p)
                      {
                          VisitVerts(p,
                                     [&](std::int32_t v)
                                     {
                                         if (seen[v])
                                             return;
                                         seen.Set(v);
                                         visit(v);
                                     });
                      });
        return true;
    }
};

bool Clear(BBitArray& bits, std::int64_t count)
{
    bits.ClearAll();
    return bits.SetCount(count);
}

std::int32_t OtherEnd(const VXEdge& edge, std::int32_t vert)
{
    return edge.VertIndex1() == vert ? edge.VertIndex2() : edge.VertIndex1();
}

} // namespace

// --- Polygons

// From this part of all polygons on, looking at the corners of all the others in a row is faster than following the
// chains of edges, which lie all over memory.
static constexpr std::int64_t kLargePart = 48;

// Whether an edge of the polygon ends at its corner k: repetitions of one vertex have none among themselves.
static bool HasEdgeAt(const ELEMENT& element, const std::int32_t* ring, std::int32_t length, std::int32_t k,
                      std::uint32_t numVerts)
{
    const bool closed = element.IsFace();
    const std::int32_t before = k > 0 ? k - 1 : closed ? length - 1 : 0;
    const std::int32_t after = k + 1 < length ? k + 1 : closed ? 0 : length - 1;
    const auto leadsTo = [&](std::int32_t v) { return v != ring[k] && std::uint32_t(v) < numVerts; };
    return leadsTo(ring[before]) || leadsTo(ring[after]);
}

static bool GrowLargePart(const Walk& walk, BBitArray& changes)
{
    const PolyView polys = walk.mesh.polys;
    BArray<std::uint8_t> marks; // vertices of selected polygons; there is one for any index below a power of two
    const std::uint32_t numMarks = std::bit_ceil(std::uint32_t(walk.NumVerts()) + 1);
    if (!marks.SetCount(numMarks))
        return false;
    std::uint8_t* const touched = marks.Data();
    VisitSelected(walk.selected, polys.count,
                  [&](std::int32_t p) { walk.VisitVerts(p, [&](std::int32_t v) { touched[v] = 1; }); });
    for (std::int64_t p = 0; p < polys.count; ++p)
    {
        const ELEMENT& element = polys[p];
        const std::int32_t length = polys.Length(element);
        const std::int32_t* const ring = polys.sets + element.start;
        // Most quads are of no interest, and can say so without a branch for each corner.
        if (length == 4 && std::uint32_t(ring[0] | ring[1] | ring[2] | ring[3]) < numMarks &&
            !(touched[ring[0]] | touched[ring[1]] | touched[ring[2]] | touched[ring[3]]))
            continue;
        for (std::int32_t k = 0; k < length && !walk.selected[p]; ++k)
            if (std::uint32_t(ring[k]) < numMarks && touched[ring[k]] &&
                HasEdgeAt(element, ring, length, k, std::uint32_t(walk.NumVerts())))
            {
                changes.Set(p);
                break;
            }
    }
    return true;
}

bool GrowPolys(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes)
{
    const Walk walk{mesh, selected};
    if (selected.NumSet() * kLargePart > walk.NumPolys() && !mesh.edges.empty())
        return Clear(changes, walk.NumPolys()) && GrowLargePart(walk, changes);
    const auto add = [&](std::int32_t poly)
    {
        if (walk.IsPoly(poly) && !selected[poly])
            changes.Set(poly);
    };
    return Clear(changes, walk.NumPolys()) && walk.VisitVertsOfSelected(
                                                  [&](std::int32_t v)
                                                  {
                                                      walk.VisitEdges(v,
                                                                      [&](std::int32_t, const VXEdge& edge)
                                                                      {
                                                                          add(edge.PolyIndex1());
                                                                          add(edge.PolyIndex2());
                                                                      });
                                                  });
}

bool ShrinkPolys(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes)
{
    const Walk walk{mesh, selected};
    BBitArray rim; // vertices with a closed edge that has an unselected polygon
    if (!Clear(changes, walk.NumPolys()) || !rim.SetCount(walk.NumVerts()))
        return false;
    const bool found = walk.VisitVertsOfSelected(
        [&](std::int32_t v)
        {
            walk.VisitEdgesWhile(v,
                                 [&](std::int32_t, const VXEdge& edge)
                                 {
                                     const bool ends = walk.IsPoly(edge.PolyIndex2()) && !walk.IsInside(edge);
                                     if (ends)
                                         rim.Set(v);
                                     return !ends;
                                 });
        });
    VisitSelected(selected, walk.NumPolys(),
                  [&](std::int32_t p)
                  {
                      walk.VisitVerts(p,
                                      [&](std::int32_t v)
                                      {
                                          if (rim[v])
                                              changes.Set(p);
                                      });
                  });
    return found;
}

bool GrowPolyLoops(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes)
{
    const Walk walk{mesh, selected};
    BBitArray members, inside; // polygons with a selected neighbour; ends of the edges between such
    if (!Clear(changes, walk.NumPolys()) || !members.SetCount(walk.NumPolys()) || !inside.SetCount(walk.NumVerts()))
        return false;
    const bool found = walk.VisitVertsOfSelected(
        [&](std::int32_t v)
        {
            walk.VisitEdges(v,
                            [&](std::int32_t, const VXEdge& edge)
                            {
                                if (!walk.IsInside(edge))
                                    return;
                                members.Set(edge.PolyIndex1());
                                members.Set(edge.PolyIndex2());
                                inside.Set(edge.VertIndex1());
                                inside.Set(edge.VertIndex2());
                            });
        });

    BBitArray tried; // each candidate is looked at once, however many edges lead to it
    if (!found || !tried.SetCount(walk.NumPolys()))
        return false;
    const auto tryPoly = [&](std::int32_t poly)
    {
        if (!walk.IsPoly(poly) || tried[poly])
            return;
        tried.Set(poly);
        bool apart = true;
        walk.VisitVerts(poly, [&](std::int32_t v) { apart = apart && !inside[v]; });
        if (apart)
            changes.Set(poly);
    };
    return walk.VisitVertsOfSelected(
        [&](std::int32_t v)
        {
            walk.VisitEdges(v,
                            [&](std::int32_t, const VXEdge& edge)
                            {
                                const std::int32_t a = edge.PolyIndex1(), b = edge.PolyIndex2();
                                if (walk.IsInside(edge))
                                    return;
                                if (walk.IsPoly(a) && members[a])
                                    tryPoly(b);
                                if (walk.IsPoly(b) && members[b])
                                    tryPoly(a);
                            });
        });
}

bool ShrinkPolyLoops(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes)
{
    // What is known of the edges inside the selection at a vertex: there are none, several, or this one.
    constexpr std::int32_t kNone = -1, kSeveral = -2;
    const Walk walk{mesh, selected};
    BArray<std::int32_t> insideAt;
    if (!Clear(changes, walk.NumPolys()) || !insideAt.SetCountForWriting(walk.NumVerts()))
        return false;
    std::int32_t* const at = insideAt.Data();
    const auto join = [](std::int32_t known, std::int32_t more) {
        return known == kNone || known == more ? more : more == kNone ? known : kSeveral;
    };
    const bool found = walk.VisitVertsOfSelected(
        [&](std::int32_t v)
        {
            at[v] = kNone;
            walk.VisitEdgesWhile(v,
                                 [&](std::int32_t e, const VXEdge& edge)
                                 {
                                     if (walk.IsInside(edge))
                                         at[v] = join(at[v], e);
                                     return at[v] != kSeveral;
                                 });
        });
    if (!found)
        return false;
    VisitSelected(selected, walk.NumPolys(),
                  [&](std::int32_t p)
                  {
                      std::int32_t inside = kNone;
                      walk.VisitVerts(p, [&](std::int32_t v) { inside = join(inside, at[v]); });
                      if (inside != kSeveral)
                          changes.Set(p);
                  });
    return true;
}

// --- Vertices

bool GrowVerts(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes)
{
    const Walk walk{mesh, selected};
    if (!Clear(changes, walk.NumVerts()))
        return false;
    VisitSelected(selected, walk.NumVerts(),
                  [&](std::int32_t v)
                  { walk.VisitEdges(v, [&](std::int32_t, const VXEdge& edge) { changes.Set(OtherEnd(edge, v)); }); });
    return true;
}

bool ShrinkVerts(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes)
{
    const Walk walk{mesh, selected};
    if (!Clear(changes, walk.NumVerts()))
        return false;
    VisitSelected(selected, walk.NumVerts(),
                  [&](std::int32_t v)
                  {
                      walk.VisitEdgesWhile(v,
                                           [&](std::int32_t, const VXEdge& edge)
                                           {
                                               const bool rim = !selected[OtherEnd(edge, v)];
                                               if (rim)
                                                   changes.Set(v);
                                               return !rim;
                                           });
                  });
    return true;
}

bool GrowVertLoops(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes)
{
    const Walk walk{mesh, selected};
    BBitArray counted, one; // polygons whose selected corners were counted; those with exactly one
    if (!Clear(changes, walk.NumVerts()) || !counted.SetCount(walk.NumPolys()) || !one.SetCount(walk.NumPolys()))
        return false;
    const auto hasOne = [&](std::int32_t poly)
    {
        if (!walk.IsPoly(poly))
            return false;
        if (!counted[poly])
        {
            counted.Set(poly);
            std::int32_t corners = 0;
            walk.VisitVerts(poly, [&](std::int32_t v) { corners += selected[v]; });
            one.Set(poly, corners == 1);
        }
        return one[poly];
    };
    VisitSelected(selected, walk.NumVerts(),
                  [&](std::int32_t v)
                  {
                      walk.VisitEdgesWhile(v,
                                           [&](std::int32_t, const VXEdge& edge)
                                           {
                                               const std::int32_t next = OtherEnd(edge, v);
                                               if (selected[next] || !hasOne(edge.PolyIndex1()) ||
                                                   !hasOne(edge.PolyIndex2()))
                                                   return true;
                                               changes.Set(next);
                                               return false;
                                           });
                  });
    return true;
}

bool ShrinkVertLoops(const SelectionMesh& mesh, const BBitArray& selected, BBitArray& changes)
{
    const Walk walk{mesh, selected};
    if (!Clear(changes, walk.NumVerts()))
        return false;
    VisitSelected(selected, walk.NumVerts(),
                  [&](std::int32_t v)
                  {
                      std::int32_t only = -1;
                      bool several = false; // parallel edges to one neighbour are no two neighbours
                      walk.VisitEdgesWhile(v,
                                           [&](std::int32_t, const VXEdge& edge)
                                           {
                                               const std::int32_t next = OtherEnd(edge, v);
                                               if (next == v || !selected[next])
                                                   return true;
                                               several = only >= 0 && only != next;
                                               only = next;
                                               return !several;
                                           });
                      if (only >= 0 && !several)
                          changes.Set(v);
                  });
    return true;
}

// --- Mirroring

bool MirrorMatches(std::span<const VERTEX> places, int axis, bool positive, std::int32_t* match)
{
    constexpr float kFarthest = 1e11f; // squared: beyond it nothing matches
    float VERTEX::*const along = axis == 0 ? &VERTEX::x : axis == 1 ? &VERTEX::y : &VERTEX::z;
    const auto isSource = [&](const VERTEX& p) { return positive ? p.*along > 0 : p.*along < 0; };

    BArray<VERTEX> sources;
    BArray<std::int32_t> indices;
    for (std::size_t i = 0; i < places.size(); ++i)
        if (isSource(places[i]) && (!sources.Append(places[i]) || !indices.Append(std::int32_t(i))))
            return false;
    NearestPoint nearest;
    if (!nearest.Build({sources.Data(), std::size_t(sources.Count())}))
        return false;
    for (std::size_t i = 0; i < places.size(); ++i)
    {
        match[i] = -1;
        if (isSource(places[i]))
            continue;
        VERTEX image = places[i];
        image.*along = -(image.*along);
        const std::int32_t found = nearest.Find(image, kFarthest);
        if (found >= 0)
            match[i] = indices[found];
    }
    return true;
}

} // namespace vx
