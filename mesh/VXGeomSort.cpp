#include "material/VXMaterial.h"
#include "mesh/VXGeom.h"

#include <algorithm>
#include <span>

/// What the drawing order of an element follows: lower transparency first, then higher material.
struct SortKey
{
    std::uint32_t transparency = 0;
    std::uint32_t material = 0;
    bool transparent = false;

    std::uint64_t Key() const { return std::uint64_t(transparency) << 32 | material; }
    bool IsBefore(const SortKey& other) const
    {
        return transparency != other.transparency ? transparency < other.transparency : material > other.material;
    }
};

/// The keys of all material slots, in drawing order. Elements are few times as many as slots, so an element is sorted
/// by the rank of its slot, and the materials are asked once.
struct SortRanks
{
    BArray<SortKey> keys;            ///< distinct, in drawing order: rank r is entry r
    BArray<std::int32_t> rankOfSlot; ///< the rank of each slot, then that of elements without one

    bool Fill(const VXGeom& geom);
    std::int32_t RankOf(std::uint16_t slot) const
    {
        return rankOfSlot.Data()[std::min<std::int64_t>(slot, rankOfSlot.Count() - 1)];
    }
};

static SortKey KeyOfSlot(const VXGeom& geom, int slot)
{
    SortKey key;
    // The slot stores what the host put there: always a VXMaterial.
    const auto* const material = static_cast<const VXMaterial*>(geom.MaterialPointer(slot));
    if (!material)
        return key;
    key.material = std::uint32_t(slot);
    if (material->TextureIndex() > 1)
        key.material |= std::uint32_t(material->TextureIndex()) << 16;
    if (material->TMax() > 0.01f)
    {
        key.transparency = std::uint32_t(material->TransparencyIndex()) << 16;
        key.transparent = true;
    }
    return key;
}

bool SortRanks::Fill(const VXGeom& geom)
{
    const std::int64_t slots = geom.NumGeomMaterials();
    BArray<SortKey> keyOfSlot;
    BArray<std::int32_t> order;
    if (!keyOfSlot.Reserve(slots + 1) || !keyOfSlot.SetCount(slots + 1) || !order.Reserve(slots + 1) ||
        !order.SetCount(slots + 1) || !rankOfSlot.Reserve(slots + 1) || !rankOfSlot.SetCount(slots + 1) ||
        !keys.Reserve(slots + 1))
        return false;

    for (std::int64_t i = 0; i <= slots; ++i)
    {
        order[i] = std::int32_t(i);
        if (i < slots)
            keyOfSlot[i] = KeyOfSlot(geom, int(i));
    }
    std::sort(order.begin(), order.end(),
              [&](std::int32_t a, std::int32_t b) { return keyOfSlot[a].IsBefore(keyOfSlot[b]); });
    for (const std::int32_t slot : order)
    {
        if (keys.IsEmpty() || keys[keys.Count() - 1].IsBefore(keyOfSlot[slot]))
            keys.Append(keyOfSlot[slot]);
        SortKey& last = keys[keys.Count() - 1];
        last.transparent = last.transparent || keyOfSlot[slot].transparent;
        rankOfSlot[slot] = std::int32_t(keys.Count() - 1);
    }
    return true;
}

// --- Elements and their kinds

static constexpr int kNotDrawn = -1;

static int KindOf(const ELEMENT& poly)
{
    if (poly.type > kElementPoint || poly.IsHidden() || poly.length < 2)
        return kNotDrawn;
    if (poly.type == kElementLine)
        return int(VXElementKind::Lines);
    if (poly.type == kElementPoint)
        return int(VXElementKind::Points);
    switch (poly.length)
    {
    case 2:
        return kNotDrawn;
    case 3:
        return int(VXElementKind::Triangles);
    case 4:
        return int(VXElementKind::Quads);
    default:
        return int(VXElementKind::Polygons);
    }
}

/// Corners that a bucket stores for each of its elements.
static int StoredCorners(int kind)
{
    return kind == int(VXElementKind::Quads) ? 4 : kind == int(VXElementKind::Triangles) ? 3 : 0;
}

// Gives a bucket its arrays and runs. @param counts elements of each rank; turned into the place of the rank's first
// element  @return false when memory ran out
static bool SizeBucket(VXSortedBucket& bucket, int storedCorners, std::span<std::int32_t> counts,
                       const BArray<SortKey>& keys)
{
    const auto numRuns = std::count_if(counts.begin(), counts.end(), [](std::int32_t count) { return count > 0; });
    if (numRuns == 0)
        return true;
    bucket.runs = MEM_CallocArray<VXSortedSet>(std::size_t(numRuns));
    if (!bucket.runs)
        return false;
    for (std::size_t rank = 0; rank < counts.size(); ++rank)
    {
        const std::int32_t count = counts[rank];
        if (count > 0)
            bucket.runs[bucket.numRuns++] = {count, keys[std::int64_t(rank)].Key()};
        counts[rank] = bucket.count;
        bucket.count += count;
    }

    const std::size_t elements = std::size_t(bucket.count);
    bucket.polys = MEM_AllocArray<std::int32_t>(elements);
    if (!bucket.polys || storedCorners == 0)
        return bucket.polys != nullptr;
    bucket.corners = MEM_AllocArray<std::int32_t>(elements * std::size_t(storedCorners));
    bucket.edgeFlags = MEM_AllocArray<std::uint32_t>(elements);
    return bucket.corners && bucket.edgeFlags;
}

// --- Edges that are drawn as lines

/// Per polygon its edge flags, which need less than 16 bits, and above them its material: edges in random order then
/// read one word of a small array for each polygon instead of its record.
using EdgeMarks = std::span<std::uint32_t>;

static void MarkEdge(EdgeMarks marks, std::int32_t poly, std::int32_t corner, std::uint32_t drawn, std::uint32_t why)
{
    if (std::uint32_t(corner) < 4)
        marks[std::size_t(poly)] |= drawn << corner | why;
}

static void MarkEdgeOnBothSides(EdgeMarks marks, const VXEdge& edge, std::uint32_t drawn, std::uint32_t why)
{
    MarkEdge(marks, edge.PolyIndex1(), edge.RelIndexP1V1(), drawn, why);
    if (edge.PolyIndex2() >= 0)
        MarkEdge(marks, edge.PolyIndex2(), edge.IsEdgeOrderedProperly() ? edge.RelIndexP2V2() : edge.RelIndexP2V1(),
                 drawn, why);
}

// What the last viewpoint made of the edges.
static void MarkSilhouettes(const VXEdgeList& edges, EdgeMarks marks)
{
    const std::int32_t numPolys = std::int32_t(marks.size()), count = edges.GetEdgeCount();
    for (std::int32_t i = 0; i < count; ++i)
    {
        const VXEdge& edge = edges.GetEdge(i);
        if (edge.IsBoundaryEdge() && edge.PolyIndex1() < numPolys && edge.PolyIndex2() < numPolys)
            MarkEdgeOnBothSides(marks, edge, kElementEdgeOutline, kElementEdgeSilhouette);
    }
}

// Marks the elements along every edge that is to be drawn: on both sides, since either may be turned away or hidden.
// Texture seams split vertices like creases, but nothing is to be seen there, so they are no lines.
static void MarkDrawnEdges(const VXEdgeList& edges, bool compareMaterials, EdgeMarks marks)
{
    const std::int32_t numPolys = std::int32_t(marks.size()), count = edges.GetEdgeCount();
    for (std::int32_t i = 0; i < count; ++i)
    {
        const VXEdge& edge = edges.GetEdge(i);
        const std::int32_t poly1 = edge.PolyIndex1(), poly2 = edge.PolyIndex2();
        if (poly1 >= numPolys || poly2 >= numPolys)
            continue; // the record has shrunk since its edges were built
        std::uint32_t why = 0;
        if (poly2 < 0)
            why = kElementEdgeOpen;
        else
        {
            if (edge.IsCreaseEdge() && !edge.IsSmoothEdge())
                why = kElementEdgeCrease;
            if (compareMaterials && (marks[std::size_t(poly1)] ^ marks[std::size_t(poly2)]) >> 16 != 0)
                why |= kElementEdgeMaterial;
        }
        if (why != 0)
            MarkEdgeOnBothSides(marks, edge, kElementEdgeDrawn, why);
    }
}

static bool FillEdgeMarks(const VXEdgeList& edges, const GEOM& geom, BArray<std::uint32_t>& marks)
{
    if (!marks.SetCountForWriting(geom.numPolys))
        return false;
    for (std::int32_t i = 0; i < geom.numPolys; ++i)
        marks[i] = std::uint32_t(geom.Poly(i)->material) << 16;
    MarkDrawnEdges(edges, geom.materials.Count() != 1, {marks.Data(), std::size_t(marks.Count())});
    MarkSilhouettes(edges, {marks.Data(), std::size_t(marks.Count())});
    return true;
}

// Without memory there are no silhouettes, rather than those of another view.
void VXGeom::RefreshSilhouetteFlags()
{
    if (!DataSorted())
        return;
    constexpr std::uint32_t kOfTheView = kElementEdgeOutline * 15u | kElementEdgeSilhouette;
    BArray<std::uint32_t> marks;
    const bool marked = marks.SetCount(mGeom->numPolys);
    if (marked)
        MarkSilhouettes(mEdgeList, {marks.Data(), std::size_t(marks.Count())});
    for (const VXSortedBucket& bucket : mSorted)
        for (std::int32_t i = 0; bucket.edgeFlags && i < bucket.count; ++i)
        {
            const bool known = marked && bucket.polys[i] < mGeom->numPolys;
            bucket.edgeFlags[i] = (bucket.edgeFlags[i] & ~kOfTheView) | (known ? marks[bucket.polys[i]] : 0u);
        }
}

// --- Sorting

void VXGeom::ClearSortedData()
{
    SetDataSorted(false);
    SetTransparentParts(false);
    for (VXSortedBucket& bucket : mSorted)
    {
        MEM_Free(bucket.polys);
        MEM_Free(bucket.corners);
        MEM_Free(bucket.edgeFlags);
        MEM_Free(bucket.runs);
        bucket = VXSortedBucket();
    }
}

void VXGeom::SortGeomData()
{
    ClearSortedData();
    if (!mGeom)
        return;
    SetIncludesLines(false);
    SetIncludesPoints(false);
    if (!FillSortedData())
    {
        ClearSortedData();
        return;
    }
    SetIncludesLines(mSorted[int(VXElementKind::Lines)].count > 0);
    SetIncludesPoints(mSorted[int(VXElementKind::Points)].count > 0);
    SetDataSorted(true);
}

// A counting sort: the elements of each kind and rank are counted, and then every element goes to the next free place
// of its rank. Elements of one rank therefore stay in the order of their polygons.
bool VXGeom::FillSortedData()
{
    SortRanks ranks;
    if (!ranks.Fill(*this))
        return false;
    const std::int64_t numRanks = ranks.keys.Count();
    BArray<std::int32_t> table; // per kind and rank: first how many, then where the next one goes
    if (!table.Reserve(kNumElementKinds * numRanks) || !table.SetCount(kNumElementKinds * numRanks))
        return false;
    std::int32_t* const next = table.Data();
    for (std::int32_t i = 0; i < mGeom->numPolys; ++i)
    {
        const ELEMENT& poly = *mGeom->Poly(i);
        if (const int kind = KindOf(poly); kind != kNotDrawn)
            ++next[kind * numRanks + ranks.RankOf(poly.material)];
    }
    for (std::int64_t i = 0; i < table.Count(); ++i)
        if (next[i] > 0 && ranks.keys[i % numRanks].transparent)
            SetTransparentParts(true);
    for (int kind = 0; kind < kNumElementKinds; ++kind)
        if (!SizeBucket(mSorted[kind], StoredCorners(kind), {next + kind * numRanks, std::size_t(numRanks)},
                        ranks.keys))
            return false;

    BArray<std::uint32_t> marks;
    const bool haveMarked = NumQuads() > 0 || Sorted(VXElementKind::Triangles).count > 0;
    if (haveMarked && !FillEdgeMarks(mEdgeList, *mGeom, marks))
        return false;

    const std::int32_t* const sets = Sets(true);
    for (std::int32_t i = 0; i < mGeom->numPolys; ++i)
    {
        const ELEMENT& poly = *mGeom->Poly(i);
        const int kind = KindOf(poly);
        if (kind == kNotDrawn)
            continue;
        const std::int32_t place = next[kind * numRanks + ranks.RankOf(poly.material)]++;
        const VXSortedBucket& bucket = mSorted[kind];
        bucket.polys[place] = i;
        if (!bucket.corners)
            continue;
        std::copy_n(sets + poly.start, poly.length, bucket.corners + std::int64_t(place) * poly.length);
        bucket.edgeFlags[place] = marks[i] & 0xFFFFu;
    }
    return true;
}
