#include "mesh/kernel/Edges.h"

#include <algorithm>
#include <bit>
#include <new>

namespace vx
{
namespace
{

using Entry = EdgeScratch::Entry;

// Beside the slot, an entry says whether its half-edge runs upwards (from the lower vertex), whether it is part of a
// face, which alone may close an edge, and whether it ends at the polygon's first corner.
constexpr std::uint32_t kUpwards = 1u << 31;
constexpr std::uint32_t kOfFace = 1u << 30;
constexpr std::uint32_t kToFirst = 1u << 29;
constexpr std::uint32_t kSlotMask = kToFirst - 1;

// EdgeScratch::mate of a slot whose half-edge opens an edge is the slot that closes it, with kToFirst of the latter,
// and with kSameWay when both run the same way; or it is kOpen. A slot that closes an edge has kCloses.
constexpr std::int32_t kSameWay = 1 << 30;
constexpr std::int32_t kOpen = -1;
constexpr std::int32_t kCloses = -2;

// Buckets up to this size are paired by looking at each entry's open predecessors, larger ones through tables.
constexpr std::int64_t kSmallBucket = 24;

void NoteKinds(const PolyView& polys, EdgeScratch& scratch)
{
    scratch.lines = scratch.points = false;
    for (std::int64_t p = 0; p < polys.count; ++p)
        if (!polys[p].IsFace() && polys.Length(polys[p]) >= 2)
        {
            scratch.lines |= polys[p].type == kElementLine;
            scratch.points |= polys[p].type == kElementPoint;
        }
}

bool SortByLowerVertex(const PolyView& polys, std::int32_t numVerts, EdgeScratch& scratch)
{
    scratch.bucketEnd.Empty();
    if (!scratch.bucketEnd.SetCount(numVerts))
        return false;
    std::int32_t* const end = scratch.bucketEnd.Data();
    WalkHalfEdges(polys, std::uint32_t(numVerts), end,
                  [end](std::int32_t, std::int32_t, std::int32_t, std::uint32_t a, std::uint32_t b, bool)
                  { ++end[std::min(a, b)]; });
    std::int32_t sum = 0;
    for (std::int32_t v = 0; v < numVerts; ++v)
    {
        const std::int32_t size = end[v];
        end[v] = sum; // the bucket's begin for now; filling it moves this to its end
        sum += size;
    }
    if (!scratch.entries.SetCountForWriting(sum))
        return false;
    Entry* const entries = scratch.entries.Data();
    const SlotNumbers& slots = scratch.slots;
    WalkHalfEdges(polys, std::uint32_t(numVerts), end,
                  [entries, end, &slots](std::int32_t poly, std::int32_t k, std::int32_t kNext, std::uint32_t a,
                                         std::uint32_t b, bool isFace)
                  {
                      const std::uint32_t bits =
                          (a < b ? kUpwards : 0u) | (isFace ? kOfFace : 0u) | (kNext == 0 ? kToFirst : 0u);
                      const std::uint32_t slot = std::uint32_t(slots.First(poly) + k);
                      entries[end[std::min(a, b)]++] = {std::max(a, b), slot | bits};
                  });
    return true;
}

std::int32_t PolyOf(const SlotNumbers& slots, const Entry& entry)
{
    return slots.Poly(std::int32_t(entry.slot & kSlotMask));
}

// The two half-edges become one edge.
void Pair(const Entry& opens, const Entry& closes, std::int32_t* mate)
{
    const bool sameWay = ((opens.slot ^ closes.slot) & kUpwards) == 0;
    mate[opens.slot & kSlotMask] = std::int32_t(closes.slot & (kSlotMask | kToFirst)) | (sameWay ? kSameWay : 0);
    mate[closes.slot & kSlotMask] = kCloses;
}

// Goes through a small bucket with a list of the edges that are open so far. Returns the number of edges.
std::int32_t PairSmallBucket(std::span<const Entry> bucket, const SlotNumbers& slots, std::int32_t* mate)
{
    Entry open[kSmallBucket];
    std::int32_t numOpen = 0, numEdges = 0;
    for (const Entry& entry : bucket)
    {
        std::int32_t found = -1;
        if (entry.slot & kOfFace)
            for (found = numOpen - 1; found >= 0; --found)
                if (open[found].higher == entry.higher && PolyOf(slots, open[found]) != PolyOf(slots, entry))
                    break;
        if (found < 0)
        {
            open[numOpen++] = entry;
            mate[entry.slot & kSlotMask] = kOpen;
            ++numEdges;
            continue;
        }
        Pair(open[found], entry, mate);
        for (--numOpen; found < numOpen; ++found) // keeps the order, as the newest must be found first
            open[found] = open[found + 1];
    }
    return numEdges;
}

// Pairs the entries between one pair of vertices, given as a list in order of walking. Open edges lie on two stacks:
// those of the polygon that is being walked, which it must not close itself, and those of earlier polygons.
std::int32_t PairOneEdge(std::span<const Entry> bucket, std::int32_t first, const std::int32_t* next,
                         std::int32_t* below, const SlotNumbers& slots, std::int32_t* mate)
{
    std::int32_t older = -1, own = -1, ownBottom = -1, poly = -1, numEdges = 0;
    for (std::int32_t i = first; i >= 0; i = next[i])
    {
        const Entry& entry = bucket[std::size_t(i)];
        const std::int32_t entryPoly = PolyOf(slots, entry);
        if (entryPoly != poly)
        {
            if (own >= 0)
            {
                below[ownBottom] = older;
                older = own;
            }
            own = -1;
            poly = entryPoly;
        }
        if ((entry.slot & kOfFace) && older >= 0)
        {
            Pair(bucket[std::size_t(older)], entry, mate);
            older = below[older];
            continue;
        }
        mate[entry.slot & kSlotMask] = kOpen;
        ++numEdges;
        below[i] = own;
        if (own < 0)
            ownBottom = i;
        own = i;
    }
    return numEdges;
}

// A bucket of any size: first threads the entries of each higher vertex onto a list, then pairs list by list.
std::int32_t PairLargeBucket(std::span<const Entry> bucket, EdgeScratch& scratch)
{
    const std::int32_t size = std::int32_t(bucket.size());
    std::int32_t* const last = scratch.lastOf.Data(); // all -1 between buckets
    std::int32_t* const next = scratch.chain.Data();
    std::int32_t* const below = next + size;
    for (std::int32_t i = 0; i < size; ++i)
    {
        std::int32_t& tail = last[bucket[std::size_t(i)].higher];
        next[i] = -1;
        if (tail >= 0)
            next[tail] = i;
        tail = i;
    }
    std::int32_t numEdges = 0;
    for (std::int32_t i = 0; i < size; ++i)
    {
        const std::uint32_t higher = bucket[std::size_t(i)].higher;
        if (last[higher] < 0)
            continue; // its list has been paired from its first entry
        last[higher] = -1;
        numEdges += PairOneEdge(bucket, i, next, below, scratch.slots, scratch.mate.Data());
    }
    return numEdges;
}

// Room for the largest bucket's tables, when it needs them.
bool PrepareLargeBuckets(std::int32_t numVerts, EdgeScratch& scratch)
{
    std::int32_t largest = 0, begin = 0;
    for (const std::int32_t end : scratch.bucketEnd)
    {
        largest = std::max(largest, end - begin);
        begin = end;
    }
    if (largest <= kSmallBucket)
        return true;
    if (!scratch.lastOf.SetCountForWriting(numVerts) || !scratch.chain.SetCountForWriting(2 * std::int64_t(largest)))
        return false;
    std::fill(scratch.lastOf.begin(), scratch.lastOf.end(), -1);
    return true;
}

} // namespace

bool SlotNumbers::Number(const PolyView& polys, std::int64_t limit)
{
    std::int64_t numCorners = 0;
    std::int32_t longest = 1;
    for (std::int64_t p = 0; p < polys.count; ++p)
    {
        const std::int32_t length = polys.Length(polys[p]);
        numCorners += length;
        longest = std::max(longest, length);
    }
    mShift = std::bit_width(std::uint32_t(longest - 1));
    mCount = polys.count << mShift;
    mPolyOf.Empty();
    mFirst.Empty();
    if (mCount <= limit && mCount <= 2 * numCorners)
        return true;
    mShift = -1;
    mCount = numCorners;
    if (numCorners > limit || !mFirst.SetCountForWriting(polys.count) || !mPolyOf.SetCountForWriting(numCorners))
        return false;
    std::int32_t next = 0;
    for (std::int64_t p = 0; p < polys.count; ++p)
    {
        mFirst.Data()[p] = next;
        const std::int32_t end = next + polys.Length(polys[p]);
        std::fill(mPolyOf.Data() + next, mPolyOf.Data() + end, std::int32_t(p));
        next = end;
    }
    return true;
}

bool PairHalfEdges(const PolyView& polys, std::int32_t numVerts, EdgeScratch& scratch)
{
    scratch.numEdges = 0;
    NoteKinds(polys, scratch);
    if (!scratch.slots.Number(polys, kToFirst) || !scratch.mate.SetCountForWriting(scratch.slots.Count()) ||
        !SortByLowerVertex(polys, numVerts, scratch) || !PrepareLargeBuckets(numVerts, scratch))
        return false;
    const std::span<const Entry> entries(scratch.entries.Data(), std::size_t(scratch.entries.Count()));
    const std::int32_t* const mate = scratch.mate.Data();
    const std::int64_t numEntries = scratch.entries.Count();
    std::int64_t numEdges = 0;
    std::int32_t begin = 0;
    for (const std::int32_t end : scratch.bucketEnd)
    {
        const auto bucket = entries.subspan(std::size_t(begin), std::size_t(end - begin));
        for (std::int64_t i = begin + kPrefetchAhead; i < std::min(end + kPrefetchAhead, numEntries); ++i)
            PrefetchForWrite(mate + (entries[std::size_t(i)].slot & kSlotMask));
        numEdges += std::int64_t(bucket.size()) <= kSmallBucket
                        ? PairSmallBucket(bucket, scratch.slots, scratch.mate.Data())
                        : PairLargeBucket(bucket, scratch);
        begin = end;
    }
    scratch.numEdges = numEdges;
    return true;
}

void WriteEdges(const PolyView& polys, const EdgeScratch& scratch, VXEdge* edges, VXVertexLink* links,
                std::span<std::int32_t> firstLink)
{
    std::fill(firstLink.begin(), firstLink.end(), -1);
    const std::int32_t* const mate = scratch.mate.Data();
    const SlotNumbers& slots = scratch.slots;
    std::int32_t* const newest = firstLink.data();
    std::int32_t e = 0;
    WalkHalfEdges(polys, std::uint32_t(firstLink.size()), newest,
                  [&](std::int32_t poly, std::int32_t k, std::int32_t kNext, std::uint32_t a, std::uint32_t b, bool)
                  {
                      const std::int32_t closing = mate[slots.First(poly) + k];
                      if (closing == kCloses)
                          return;
                      VXEdge* const edge = ::new (static_cast<void*>(edges + e))
                          VXEdge(poly, std::int32_t(a), std::int32_t(b), k, kNext, e);
                      if (closing != kOpen)
                      {
                          const std::int32_t slot = closing & std::int32_t(kSlotMask), poly2 = slots.Poly(slot);
                          const std::int32_t from = slot - slots.First(poly2);
                          const std::int32_t to = (closing & std::int32_t(kToFirst)) ? 0 : from + 1;
                          edge->Close(poly2, from, to, (closing & kSameWay) != 0);
                      }
                      links[2 * e] = {e, newest[a]};
                      newest[a] = 2 * e;
                      links[2 * e + 1] = {e, newest[b]};
                      newest[b] = 2 * e + 1;
                      ++e;
                  });
}

void ClassifyFacing(std::span<VXEdge> edges, const PolyView& polys, std::span<const VERTEX> points,
                    const VERTEX* polyNormals, const VERTEX& viewpoint)
{
    for (VXEdge& edge : edges)
    {
        const std::size_t vert = std::size_t(std::uint32_t(edge.VertIndex1()));
        const std::int32_t p1 = edge.PolyIndex1(), p2 = edge.PolyIndex2();
        edge.SetFacingForward(false);
        edge.SetBoundaryEdge(false);
        if (vert >= points.size() || p1 < 0 || p1 >= polys.count || p2 >= polys.count)
            continue;
        const VERTEX v = points[vert] - viewpoint;
        const float d1 = Dot(v, polyNormals[p1]);
        if (d1 <= 0)
            edge.SetFacingForward(true);
        if (p2 < 0)
            continue;
        const float d2 = Dot(v, polyNormals[p2]);
        if (d2 <= 0)
            edge.SetFacingForward(true);
        if ((d1 >= 0 && d2 < 0) || (d1 < 0 && d2 >= 0))
            edge.SetBoundaryEdge(true);
        else if (polys[p1].material != polys[p2].material)
            edge.SetMtlBoundaryEdge(true); // stays when the view changes; that is intended
    }
}

} // namespace vx
