#include "mesh/kernel/CreaseGroups.h"

#include <algorithm>

namespace vx
{

// At an edge of many polygons each is compared with so many: more do not make a surface, and all pairs would take
// quadratic time.
static constexpr std::size_t kMostCompared = 16;

bool CornerGrouper::Init()
{
    return mGroups.Init(mMesh.polys.numCorners) && mMarks.SetCount(mMesh.polys.numCorners) &&
           (!mCanJoin || mNumEdgesTo.SetCount(std::int64_t(mMesh.firstLink.size())));
}

bool CornerGrouper::Group(std::int32_t v)
{
    if (!Collect(v))
        return false;
    JoinAcrossSmoothEdges(mMesh, v, mGroups);
    if (mCanJoin && !JoinPages(v))
        return false;
    MarkSides(v);
    const std::int32_t keeper = Keeper(v);
    for (Corner& corner : mCorners)
    {
        corner.group = mGroups.Root(corner.index);
        corner.keepsVertex = corner.group == keeper || mMarks.Data()[corner.group] == 0;
    }
    return true;
}

// The corners at the vertex, each in a group of its own.
bool CornerGrouper::Collect(std::int32_t v)
{
    mCorners.Empty();
    bool done = true;
    const auto list = [&](std::int32_t corner)
    {
        std::uint8_t& mark = mMarks.Data()[corner];
        if (mark == kListed || !done)
            return;
        mark = kListed;
        mGroups.Reset(corner);
        done = mCorners.Append({corner, corner, false});
    };
    const auto listAll = [&](std::int32_t poly, std::int32_t rel)
    {
        list(mMesh.Corner(poly, rel));
        VisitRepeats(mMesh.polys, poly, rel, list);
    };
    VisitEdges(mMesh, v,
               [&](const VXEdge& edge, bool atV1)
               {
                   const EdgeEnd end = EndAt(edge, atV1);
                   listAll(end.poly1, end.rel1);
                   if (end.poly2 >= 0)
                       listAll(end.poly2, end.rel2);
               });
    for (const Corner& corner : mCorners)
        mMarks.Data()[corner.index] = 0;
    return done;
}

// The polygons at edges that have parallels, those between the same two vertices in a row.
bool CornerGrouper::CollectPages(std::int32_t v)
{
    const auto otherEnd = [](const VXEdge& edge, bool atV1) { return atV1 ? edge.VertIndex2() : edge.VertIndex1(); };
    mPages.Empty();
    VisitEdges(mMesh, v, [&](const VXEdge& edge, bool atV1) { ++mNumEdgesTo.Data()[otherEnd(edge, atV1)]; });
    bool done = true;
    VisitEdges(mMesh, v,
               [&](const VXEdge& edge, bool atV1)
               {
                   const std::int32_t other = otherEnd(edge, atV1);
                   if (mNumEdgesTo.Data()[other] < 2 || !done)
                       return;
                   const EdgeEnd here = EndAt(edge, atV1), there = EndAt(edge, !atV1);
                   done = mPages.Append({other, edge.EdgeIndex(), here.poly1, here.rel1, there.rel1});
                   if (done && here.poly2 >= 0)
                       done = mPages.Append({other, edge.EdgeIndex(), here.poly2, here.rel2, there.rel2});
               });
    VisitEdges(mMesh, v, [&](const VXEdge& edge, bool atV1) { mNumEdgesTo.Data()[otherEnd(edge, atV1)] = 0; });
    std::stable_sort(mPages.begin(), mPages.end(),
                     [](const Page& a, const Page& b)
                     { return a.other != b.other ? a.other < b.other : a.edge < b.edge; });
    return done;
}

bool CornerGrouper::JoinPages(std::int32_t v)
{
    if (!CollectPages(v))
        return false;
    const Page *first = mPages.begin(), *const end = mPages.end();
    while (first != end)
    {
        const Page* const last =
            std::find_if(first, end, [first](const Page& page) { return page.other != first->other; });
        JoinPagesOfOneEdge(v, {first, last});
        first = last;
    }
    return true;
}

void CornerGrouper::JoinPagesOfOneEdge(std::int32_t v, std::span<const Page> pages)
{
    for (std::size_t i = 1; i < pages.size(); ++i)
        for (std::size_t k = i < kMostCompared ? 0 : i - kMostCompared; k < i; ++k)
        {
            const Page &a = pages[k], &b = pages[i];
            if (a.edge == b.edge || a.poly == b.poly) // the first is classified already
                continue;
            VXEdge pair(a.poly, v, a.other, a.rel, a.relOther, -1);
            pair.Close(b.poly, b.rel, b.relOther, true);
            if (mCanJoin(pair))
                mGroups.Join(mMesh.Corner(a.poly, a.rel), mMesh.Corner(b.poly, b.rel));
        }
}

void CornerGrouper::MarkSides(std::int32_t v)
{
    const auto mark = [&](std::int32_t poly, std::int32_t rel, std::uint8_t side)
    { mMarks.Data()[mGroups.Root(mMesh.Corner(poly, rel))] |= side; };
    VisitEdges(mMesh, v,
               [&](const VXEdge& edge, bool atV1)
               {
                   if (!edge.IsCreaseEdge())
                       return;
                   const EdgeEnd end = EndAt(edge, atV1);
                   mark(end.poly1, end.rel1, kFirstSide);
                   mark(end.poly2, end.rel2, kSecondSide);
               });
}

// The group beside the lowest-numbered crease that has only second sides, -1 without one.
std::int32_t CornerGrouper::Keeper(std::int32_t v)
{
    std::int32_t keeper = -1, lowest = -1;
    VisitEdges(mMesh, v,
               [&](const VXEdge& edge, bool atV1)
               {
                   if (!edge.IsCreaseEdge() || (lowest >= 0 && edge.EdgeIndex() > lowest))
                       return;
                   const EdgeEnd end = EndAt(edge, atV1);
                   const std::int32_t group = mGroups.Root(mMesh.Corner(end.poly2, end.rel2));
                   if (mMarks.Data()[group] != kSecondSide)
                       return;
                   keeper = group;
                   lowest = edge.EdgeIndex();
               });
    return keeper;
}

} // namespace vx
