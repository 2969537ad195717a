#include "mesh/VXEdgeList.h"

#include "mesh/kernel/Edges.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

// --- Filling

bool VXEdgeList::Begin(std::int32_t numVerts)
{
    mEdges.Empty();
    mLinks.Empty();
    mNumLinks = 0;
    numVerts = std::max(numVerts, 0);
    if (!mFirstLink.SetCountForWriting(numVerts) || !mLinks.Reserve(numVerts))
        return false;
    std::fill(mFirstLink.begin(), mFirstLink.end(), -1);
    return true;
}

bool VXEdgeList::AddLink(std::int32_t vert, std::int32_t edge)
{
    std::int32_t& head = mFirstLink.Data()[vert];
    if (!mLinks.Append(VXVertexLink{edge, head}))
        return false;
    head = mNumLinks++;
    return true;
}

bool VXEdgeList::AddEdge(std::uint32_t vertA, std::uint32_t vertB, std::uint32_t poly, int /*normalA*/, int /*normalB*/,
                         int relA, int relB, bool match)
{
    const std::int64_t numVerts = mFirstLink.Count();
    if (vertA == vertB || vertA >= numVerts || vertB >= numVerts)
        return false;
    const std::int32_t a = std::int32_t(vertA), b = std::int32_t(vertB), p = std::int32_t(poly);
    for (std::int32_t l = match ? mFirstLink[a] : -1; l >= 0; l = mLinks[l].next)
    {
        VXEdge& edge = mEdges[mLinks[l].edge];
        if ((edge.VertIndex1() != b && edge.VertIndex2() != b) || edge.PolyIndex2() != -1 || edge.PolyIndex1() == p)
            continue;
        edge.Close(p, relA, relB, edge.VertIndex2() == b);
        return true;
    }
    const std::int32_t index = GetEdgeCount();
    if (mEdges.Append(VXEdge(p, a, b, relA, relB, index)) && AddLink(a, index) && AddLink(b, index))
        return true;
    mEdges.Release(); // an array that could not grow is empty now, and the others would point into it
    mLinks.Release();
    mNumLinks = 0;
    std::fill(mFirstLink.begin(), mFirstLink.end(), -1);
    return false;
}

void VXEdgeList::End()
{
    mEdges.Trim();
    mFirstLink.Trim();
    mLinks.Trim();
}

bool VXEdgeList::Build(const GEOM& geom, const std::int32_t* sets, Kinds* kinds)
{
    // A list that is built again keeps its storage unless it is too small: growing would copy what is dropped anyway.
    mEdges.Empty();
    mLinks.Empty();
    mNumLinks = 0;

    const vx::PolyView polys = vx::PolysOf(geom, sets);
    vx::EdgeScratch scratch;
    if (!vx::PairHalfEdges(polys, geom.numVerts, scratch))
    {
        Begin(0);
        return false;
    }
    scratch.entries.Release(); // before the edges take their memory
    scratch.bucketEnd.Release();
    if (mEdges.Capacity() < scratch.numEdges)
        mEdges.Release();
    if (mLinks.Capacity() < 2 * scratch.numEdges)
        mLinks.Release();
    const bool room = mFirstLink.SetCountForWriting(geom.numVerts) && mLinks.Reserve(2 * scratch.numEdges) &&
                      mLinks.SetCountForWriting(2 * scratch.numEdges) && mEdges.Reserve(scratch.numEdges);
    VXEdge* const edges = room ? mEdges.AppendRaw(scratch.numEdges) : nullptr;
    if (!room || (!edges && scratch.numEdges > 0))
    {
        Begin(0);
        return false;
    }
    vx::WriteEdges(polys, scratch, edges, mLinks.Data(), {mFirstLink.Data(), std::size_t(mFirstLink.Count())});
    mNumLinks = std::int32_t(mLinks.Count());
    if (kinds)
        *kinds = {scratch.lines, scratch.points};
    return true;
}

bool VXEdgeList::BeginParts(std::int64_t numVerts, std::int64_t numEdges)
{
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    Begin(0);
    if (numVerts <= kMost && 2 * numEdges <= kMost && mFirstLink.Reserve(numVerts) && mLinks.Reserve(2 * numEdges) &&
        mEdges.Reserve(numEdges))
        return true;
    Begin(0);
    return false;
}

bool VXEdgeList::AppendPart(const VXEdgeList& part, std::int32_t firstPoly)
{
    const std::int32_t firstVert = GetVertexLinkCount(), firstEdge = GetEdgeCount(), firstLink = mNumLinks;
    const auto moved = [](std::int32_t index, std::int32_t by) { return index < 0 ? index : index + by; };
    std::int32_t* const heads = mFirstLink.AppendRaw(part.mFirstLink.Count());
    VXVertexLink* const links = mLinks.AppendRaw(part.mLinks.Count());
    VXEdge* const edges = mEdges.AppendRaw(part.mEdges.Count());
    if ((!heads && part.mFirstLink.Count() > 0) || ((!links || !edges) && part.mEdges.Count() > 0))
    {
        if (edges) // raw storage, which nothing may destroy
            std::uninitialized_default_construct_n(edges, part.mEdges.Count());
        Begin(0);
        return false;
    }
    for (std::int64_t v = 0; v < part.mFirstLink.Count(); ++v)
        heads[v] = moved(part.mFirstLink[v], firstLink);
    for (std::int64_t l = 0; l < part.mLinks.Count(); ++l)
        links[l] = {part.mLinks[l].edge + firstEdge, moved(part.mLinks[l].next, firstLink)};
    for (std::int64_t e = 0; e < part.mEdges.Count(); ++e)
    {
        const VXEdge& from = part.mEdges[e];
        VXEdge* const edge = ::new (static_cast<void*>(edges + e))
            VXEdge(from.PolyIndex1() + firstPoly, from.VertIndex1() + firstVert, from.VertIndex2() + firstVert,
                   from.RelIndexP1V1(), from.RelIndexP1V2(), from.EdgeIndex() + firstEdge);
        edge->SetPolyIndex2(moved(from.PolyIndex2(), firstPoly));
        edge->SetRelIndexP2V1(from.RelIndexP2V1());
        edge->SetRelIndexP2V2(from.RelIndexP2V2());
        edge->SetFlags(from.Flags());
    }
    mNumLinks += part.mNumLinks;
    return true;
}

// --- Reading

std::int32_t VXEdgeList::GetVertexLinkCountVertex(std::int32_t v) const
{
    std::int32_t count = 0;
    for (std::int32_t l = GetFirstVertexLink(v); l >= 0; l = GetNextVertexLink(l))
        ++count;
    return count;
}

std::size_t VXEdgeList::MemoryUsed() const
{
    std::size_t bytes = std::size_t(mEdges.Capacity()) * sizeof(VXEdge) +
                        std::size_t(mFirstLink.Capacity()) * sizeof(std::int32_t) +
                        std::size_t(mLinks.Capacity()) * sizeof(VXVertexLink);
    for (const VXEdge& edge : mEdges)
        bytes += edge.HasCreaseData() ? sizeof(VXCreaseVertexData) : 0;
    return bytes;
}

// --- Searching along the chains

std::int32_t VXEdgeList::FindEdge(std::int32_t vertA, std::int32_t vertB, std::int32_t poly) const
{
    for (std::int32_t l = GetFirstVertexLink(vertA); l >= 0; l = GetNextVertexLink(l))
    {
        const VXEdge& edge = GetEdge(GetEdgefromVertexLink(l));
        if ((edge.VertIndex1() == vertB || edge.VertIndex2() == vertB) &&
            (poly == -1 || edge.PolyIndex1() == poly || edge.PolyIndex2() == poly))
            return GetEdgefromVertexLink(l);
    }
    return -1;
}

std::int32_t VXEdgeList::AttachedEdge(std::int32_t vert, std::int32_t poly, std::int32_t notEdge) const
{
    for (std::int32_t l = GetFirstVertexLink(vert); l >= 0; l = GetNextVertexLink(l))
    {
        const VXEdge& edge = GetEdge(GetEdgefromVertexLink(l));
        if (edge.EdgeIndex() != notEdge && (edge.PolyIndex1() == poly || edge.PolyIndex2() == poly))
            return edge.EdgeIndex();
    }
    return -1;
}

std::int32_t VXEdgeList::GetAttachedEdgeP1V1(const VXEdge* edge) const
{
    return edge ? AttachedEdge(edge->VertIndex1(), edge->PolyIndex1(), edge->EdgeIndex()) : 0;
}

std::int32_t VXEdgeList::GetAttachedEdgeP1V2(const VXEdge* edge) const
{
    return edge ? AttachedEdge(edge->VertIndex2(), edge->PolyIndex1(), edge->EdgeIndex()) : 0;
}

std::int32_t VXEdgeList::GetAttachedEdgeP2V1(const VXEdge* edge) const
{
    return edge ? AttachedEdge(edge->VertIndex1(), edge->PolyIndex2(), edge->EdgeIndex()) : 0;
}

std::int32_t VXEdgeList::GetAttachedEdgeP2V2(const VXEdge* edge) const
{
    return edge ? AttachedEdge(edge->VertIndex2(), edge->PolyIndex2(), edge->EdgeIndex()) : 0;
}

std::int32_t VXEdgeList::NextEdgePoly(const VXEdge* edge, std::int32_t poly, bool atV1) const
{
    return edge ? AttachedEdge(atV1 ? edge->VertIndex1() : edge->VertIndex2(), poly, edge->EdgeIndex()) : 0;
}

void VXEdgeList::GetNeighborVerts(std::int32_t vert, BArray<std::int32_t>& out, int depth) const
{
    out.Empty();
    for (std::int32_t l = GetFirstVertexLink(vert); l >= 0; l = GetNextVertexLink(l))
    {
        const VXEdge& edge = GetEdge(GetEdgefromVertexLink(l));
        std::int32_t other = edge.VertIndex1();
        if (other == vert || out.Find(other) >= 0)
            other = edge.VertIndex2();
        if (other == vert || out.Find(other) >= 0)
            continue;
        if (!out.Append(other))
            return;
        if (depth < 1)
            continue;
        BArray<std::int32_t> further;
        GetNeighborVerts(other, further, depth - 1);
        for (const std::int32_t v : further)
            if (out.Find(v) < 0 && !out.Append(v))
                return;
    }
}

// --- Walking around a vertex

// Chains longer than this are indexed: walking 100,000 links for each of 100,000 steps takes half a minute.
static constexpr std::int32_t kLongChain = 48;

VertLinkEdgeWalker::VertLinkEdgeWalker(std::int32_t vert, VXEdgeList* list, VXEdge* startEdge, std::int32_t poly,
                                       bool /*unused*/)
    : mList(list), mVert(vert), mCurrent(startEdge ? startEdge->EdgeIndex() : -1), mPoly(poly)
{
    for (std::int32_t l = list->GetFirstVertexLink(vert); l >= 0; l = list->GetNextVertexLink(l))
    {
        list->GetEdge(list->GetEdgefromVertexLink(l)).SetEdgeWalkDone(false);
        ++mNumLinks;
    }
    if (startEdge)
        startEdge->SetEdgeWalkDone(true);
    if (mNumLinks > kLongChain)
        IndexChain();
}

void VertLinkEdgeWalker::IndexChain()
{
    if (!mSpokes.Reserve(2 * std::int64_t(mNumLinks)) || !mSkipped.Reserve(2 * std::int64_t(mNumLinks)))
    {
        mSpokes.Release(); // slow without the index, but right
        return;
    }
    std::int32_t order = 0;
    for (std::int32_t l = mList->GetFirstVertexLink(mVert); l >= 0; l = mList->GetNextVertexLink(l), ++order)
    {
        const VXEdge& edge = mList->GetEdge(mList->GetEdgefromVertexLink(l));
        mSpokes.Append({edge.PolyIndex1(), order, edge.EdgeIndex()});
        if (edge.PolyIndex2() != -1)
            mSpokes.Append({edge.PolyIndex2(), order, edge.EdgeIndex()});
    }
    std::sort(mSpokes.begin(), mSpokes.end(),
              [](const Spoke& a, const Spoke& b) { return a.poly != b.poly ? a.poly < b.poly : a.order < b.order; });
    mSkipped.SetCount(mSpokes.Count());
}

bool VertLinkEdgeWalker::Crosses(std::int32_t index) const
{
    const VXEdge& edge = mList->GetEdge(index);
    return !edge.IsEdgeWalkDone() && index != mCurrent && (edge.PolyIndex1() == mPoly || edge.PolyIndex2() == mPoly);
}

std::int32_t VertLinkEdgeWalker::FirstOnChain() const
{
    for (std::int32_t l = mList->GetFirstVertexLink(mVert); l >= 0; l = mList->GetNextVertexLink(l))
        if (Crosses(mList->GetEdgefromVertexLink(l)))
            return mList->GetEdgefromVertexLink(l);
    return -1;
}

std::int32_t VertLinkEdgeWalker::FirstInIndex()
{
    const Spoke* const begin = mSpokes.Begin();
    const Spoke* const first =
        std::lower_bound(begin, static_cast<const Spoke*>(mSpokes.End()), mPoly,
                         [](const Spoke& spoke, std::int32_t poly) { return spoke.poly < poly; });
    if (first == mSpokes.End() || first->poly != mPoly)
        return -1;
    // Edges that were done stay done, so each is passed over once.
    std::int32_t& skipped = mSkipped[first - begin];
    for (const Spoke* spoke = first + skipped; spoke != mSpokes.End() && spoke->poly == mPoly; ++spoke)
    {
        if (Crosses(spoke->edge))
            return spoke->edge;
        skipped += mList->GetEdge(spoke->edge).IsEdgeWalkDone() ? 1 : 0;
    }
    return -1;
}

std::int32_t VertLinkEdgeWalker::NextEdgeIndex()
{
    if (mNumLinks == 0)
        return -1;
    std::int32_t next = -1;
    if (mCurrent == -1)
        next = mList->GetEdgefromVertexLink(mList->GetFirstVertexLink(mVert));
    else if (mPoly != -1)
        next = mSpokes.IsEmpty() ? FirstOnChain() : FirstInIndex();
    if (next == -1)
        return -1;
    VXEdge& edge = mList->GetEdge(next);
    if (mCurrent == -1)
        mPoly = edge.PolyIndex2();
    else
        mPoly = edge.PolyIndex1() == mPoly ? edge.PolyIndex2() : edge.PolyIndex1();
    mCurrent = next;
    edge.SetEdgeWalkDone(true);
    return next;
}
