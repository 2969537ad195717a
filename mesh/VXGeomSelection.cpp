#include "mesh/VXGeom.h"

#include "base/BBitArray.h"
#include "mesh/kernel/Selection.h"

#include <optional>

// --- A named group as bits

namespace
{
struct GroupBit
{
    std::int32_t word;
    std::uint32_t mask;

    bool IsIn(const ELEMENT& poly) const { return (poly.GroupWord(word) & mask) != 0; }
    void Put(ELEMENT& poly, bool in) const
    {
        const std::uint32_t bits = poly.GroupWord(word);
        poly.SetGroupWord(word, in ? bits | mask : bits & ~mask);
    }
};

std::optional<GroupBit> BitOf(const GEOM* geom, const char* group)
{
    GroupBit bit;
    if (!geom || !GEOM_GetGroupBit(geom, group, &bit.word, &bit.mask) || bit.word >= geom->GroupWords())
        return std::nullopt;
    return bit;
}

vx::SelectionMesh MeshOf(const VXGeom& geom)
{
    const VXEdgeList& edges = geom.EdgeList();
    return {.polys = vx::PolysOf(*geom.Geom()),
            .edges = {edges.Edges(), std::size_t(edges.GetEdgeCount())},
            .links = edges.Links(),
            .firstLink = edges.FirstLinks()};
}

void ApplyStep(const VXGeom& geom, const char* group, vx::SelectionStep step, bool select)
{
    const std::optional<GroupBit> bit = BitOf(geom.Geom(), group);
    if (!bit)
        return;
    BBitArray selected, changes;
    if (!selected.SetCount(geom.NumPolys()))
        return;
    const vx::PolyView polys = vx::PolysOf(*geom.Geom());
    for (std::int64_t p = 0; p < polys.count; ++p)
        if (bit->IsIn(polys[p]))
            selected.Set(p);
    if (!step(MeshOf(geom), selected, changes))
        return;
    for (std::int64_t p = changes.NextSet(0); p >= 0; p = changes.NextSet(p + 1))
        bit->Put(*geom.Polygon(int(p)), select);
}

// Gives an array with fewer bits those of the mesh's vertices; it would lose all that it has if it could not grow.
// False, with nothing changed, when memory ran out.
bool MakeRoom(const VXGeom& geom, BBitArray& verts)
{
    if (verts.Count() >= geom.NumVerts(false))
        return true;
    BBitArray grown = verts;
    if (grown.Count() != verts.Count() || !grown.SetCount(geom.NumVerts(false)))
        return false;
    verts = std::move(grown);
    return true;
}

void ApplyStep(const VXGeom& geom, BBitArray& verts, vx::SelectionStep step, bool select)
{
    BBitArray changes;
    if (!geom.Geom() || !step(MeshOf(geom), verts, changes) || !MakeRoom(geom, verts))
        return;
    for (std::int64_t v = changes.NextSet(0); v >= 0; v = changes.NextSet(v + 1))
        verts.Set(v, select);
}

// Copies what the flags ask for from each match to its mirror image. A match never changes itself.
template <class IsIn, class Put>
void ApplyMirror(std::span<const VERTEX> places, E_MirrorDirection direction, std::int32_t flags, IsIn&& isIn,
                 Put&& put)
{
    if (direction < kMirrorFromPlusX || direction > kMirrorFromMinusZ)
        return;
    BArray<std::int32_t> match;
    if (!match.SetCountForWriting(std::int64_t(places.size())) ||
        !vx::MirrorMatches(places, direction / 2, direction % 2 == 0, match.Data()))
        return;
    for (std::int64_t i = 0; i < match.Count(); ++i)
    {
        if (match[i] < 0)
            continue;
        const bool in = isIn(match[i]);
        if ((flags & kMirrorAdd) && in)
            put(i, true);
        else if ((flags & kMirrorRemove) && !in)
            put(i, false);
    }
}
} // namespace

// --- Polygons

void VXGeom::PolyGroupAddOrRemoveWithBitArray(const char* group, bool remove, const BBitArray& polys)
{
    const std::optional<GroupBit> bit = BitOf(mGeom, group);
    if (!bit)
        return;
    for (std::int64_t p = polys.NextSet(0); p >= 0 && p < NumPolys(); p = polys.NextSet(p + 1))
        bit->Put(*mGeom->Poly(p), !remove);
}

void VXGeom::PolyGroupGrowSelection(const char* group) { ApplyStep(*this, group, vx::GrowPolys, true); }
void VXGeom::PolyGroupShrinkSelection(const char* group) { ApplyStep(*this, group, vx::ShrinkPolys, false); }
void VXGeom::PolyGroupGrowSelectionEdgeLoop(const char* group) { ApplyStep(*this, group, vx::GrowPolyLoops, true); }
void VXGeom::PolyGroupShrinkSelectionEdgeLoop(const char* group)
{
    ApplyStep(*this, group, vx::ShrinkPolyLoops, false);
}

void VXGeom::PolyGroupMirrorSelection(const char* group, E_MirrorDirection direction, std::int32_t flags)
{
    const std::optional<GroupBit> bit = BitOf(mGeom, group);
    BArray<VERTEX> centers;
    if (!bit || !centers.SetCountForWriting(NumPolys()))
        return;
    ComputePolyCentroids(centers.Data(), nullptr);
    ApplyMirror(
        {centers.Data(), std::size_t(centers.Count())}, direction, flags,
        [&](std::int32_t p) { return bit->IsIn(*mGeom->Poly(p)); },
        [&](std::int64_t p, bool in) { bit->Put(*mGeom->Poly(p), in); });
}

// --- Vertices

void VXGeom::VertexGroupGrowSelection(BBitArray& verts) const { ApplyStep(*this, verts, vx::GrowVerts, true); }
void VXGeom::VertexGroupShrinkSelection(BBitArray& verts) const { ApplyStep(*this, verts, vx::ShrinkVerts, false); }
void VXGeom::VertexGroupGrowSelectionEdgeLoop(BBitArray& verts) const
{
    ApplyStep(*this, verts, vx::GrowVertLoops, true);
}
void VXGeom::VertexGroupShrinkSelectionEdgeLoop(BBitArray& verts) const
{
    ApplyStep(*this, verts, vx::ShrinkVertLoops, false);
}

void VXGeom::VertexGroupMirrorSelection(BBitArray& verts, E_MirrorDirection direction, std::int32_t flags) const
{
    if (!MakeRoom(*this, verts))
        return;
    ApplyMirror(
        {Verts(), std::size_t(Verts() ? NumVerts(false) : 0)}, direction, flags,
        [&](std::int32_t v) { return verts[v]; }, [&](std::int64_t v, bool in) { verts.Set(v, in); });
}

bool VXGeom::SetVertGroupFromPolyGroup(BBitArray& verts, const char* group) const
{
    verts.ClearAll();
    const std::int32_t numVerts = NumVerts(false);
    const std::optional<GroupBit> bit = BitOf(mGeom, group);
    if (!verts.SetCount(numVerts) || !bit)
        return false;
    const vx::PolyView polys = vx::PolysOf(*mGeom);
    for (std::int64_t p = 0; p < polys.count; ++p)
    {
        const ELEMENT& poly = polys[p];
        const std::int32_t length = bit->IsIn(poly) && !poly.IsHidden() ? polys.Length(poly) : 0;
        for (std::int32_t k = 0; k < length; ++k)
            if (const std::int32_t v = polys.sets[poly.start + k]; v < numVerts)
                verts.Set(v);
    }
    return true;
}
