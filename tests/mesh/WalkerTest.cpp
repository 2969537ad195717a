#include "tests/support/EdgeMeshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace
{
// The rule of one step said plainly: the first edge on the chain that is not done and has the polygon to cross.
std::vector<std::int32_t> WalkedPlainly(const VXEdgeList& list, int vert, int start, int poly)
{
    std::vector<std::int32_t> chain = ChainsOf(list)[std::size_t(vert)], walked;
    std::map<std::int32_t, bool> done;
    std::int32_t current = start;
    if (start >= 0)
        done[start] = true;
    while (!chain.empty())
    {
        std::int32_t next = -1;
        if (current == -1)
            next = chain.front();
        else if (poly != -1)
            for (const std::int32_t e : chain)
                if (!done[e] && e != current &&
                    (list.GetEdge(e).PolyIndex1() == poly || list.GetEdge(e).PolyIndex2() == poly))
                {
                    next = e;
                    break;
                }
        if (next == -1)
            break;
        const VXEdge& edge = list.GetEdge(next);
        poly = current != -1 && edge.PolyIndex1() != poly ? edge.PolyIndex1() : edge.PolyIndex2();
        current = next;
        done[next] = true;
        walked.push_back(next);
    }
    return walked;
}

std::vector<std::int32_t> Walked(VXEdgeList& list, int vert, int start, int poly)
{
    std::vector<std::int32_t> walked;
    VertLinkEdgeWalker walker(vert, &list, start < 0 ? nullptr : &list.GetEdge(start), poly, false);
    for (std::int32_t e = walker.NextEdgeIndex(); e >= 0; e = walker.NextEdgeIndex())
        walked.push_back(e);
    EXPECT_EQ(walker.NextEdgeIndex(), -1); // stays at the end
    return walked;
}
} // namespace

TEST(Walker, GoesOnceAroundAClosedFan)
{
    VXEdgeList list;
    const GeomPtr g = Torus(6, 5).Record();
    ASSERT_TRUE(list.Build(*g));
    for (int v = 0; v < g->numVerts; ++v)
    {
        const std::vector<std::int32_t> walked = Walked(list, v, -1, 0);
        ASSERT_EQ(walked.size(), 4u);
        for (std::size_t i = 0; i < 4; ++i) // neighbours in the walk share a polygon
        {
            const VXEdge &a = list.GetEdge(walked[i]), &b = list.GetEdge(walked[(i + 1) % 4]);
            EXPECT_TRUE(a.PolyIndex1() == b.PolyIndex1() || a.PolyIndex1() == b.PolyIndex2() ||
                        a.PolyIndex2() == b.PolyIndex1() || a.PolyIndex2() == b.PolyIndex2());
        }
    }
}

TEST(Walker, StopsAtAnOpenEdgeAndIgnoresThePolygonWithoutAStart)
{
    VXEdgeList list;
    ASSERT_TRUE(list.Build(*RecordOf(5, {{0, {0, 1, 2}}, {0, {0, 2, 3}}, {0, {0, 3, 4}}})));
    const std::int32_t first = list.FindEdge(0, 1, -1), last = list.FindEdge(0, 4, -1);
    // The newest edge at vertex 0 is the open spoke 0-4, and its second polygon is not there.
    EXPECT_EQ(Walked(list, 0, -1, 2), std::vector<std::int32_t>{last});
    EXPECT_EQ(Walked(list, 0, first, 0),
              (std::vector<std::int32_t>{list.FindEdge(0, 2, -1), list.FindEdge(0, 3, -1), last}));
    EXPECT_TRUE(Walked(list, 0, first, -1).empty());
    VXEdgeList bare;
    bare.Begin(1);
    EXPECT_TRUE(Walked(bare, 0, -1, 0).empty());
}

TEST(Walker, FollowsTheSameRuleAtAnyValence)
{
    std::mt19937 random(7);
    for (int round = 0; round < 60; ++round)
    {
        // Some vertices of these have hundreds of edges, many of them parallel.
        const int numVerts = 3 + int(random() % 12);
        VXEdgeList list;
        ASSERT_TRUE(list.Build(*RecordOf(numVerts, RandomPolys(random, numVerts, 20 + int(random() % 200)))));
        for (int v = 0; v < numVerts; ++v)
        {
            const std::vector<std::int32_t> chain = ChainsOf(list)[std::size_t(v)];
            EXPECT_EQ(Walked(list, v, -1, 0), WalkedPlainly(list, v, -1, 0));
            if (chain.empty())
                continue;
            const std::int32_t start = chain[random() % chain.size()];
            const std::int32_t poly = list.GetEdge(start).PolyIndex1();
            EXPECT_EQ(Walked(list, v, start, poly), WalkedPlainly(list, v, start, poly));
        }
    }
}

TEST(Walker, SmoothingListHasThePolygonsOnBothSides)
{
    const GeomPtr g = Grid(2, 1).Record(); // two coplanar quads
    VXGeom geom;
    ASSERT_EQ(geom.SetGeom(g.get(), true), 0);
    geom.SetUseCreaseAngle(false);
    geom.BuildEdgeList();
    geom.BuildVertSmoothList();
    const auto polysOf = [&geom](int v)
    {
        std::vector<int> polys;
        for (const auto* node = geom.VertSmoothingList().First(v); node; node = node->next)
            polys.push_back(node->poly);
        std::sort(polys.begin(), polys.end());
        return polys;
    };
    const VXEdgeList& edges = geom.EdgeList();
    for (int e = 0; e < edges.GetEdgeCount(); ++e)
        if (!edges.GetEdge(e).IsOpenEdge())
        {
            EXPECT_EQ(polysOf(edges.GetEdge(e).VertIndex1()), (std::vector<int>{0, 1}));
            EXPECT_EQ(polysOf(edges.GetEdge(e).VertIndex2()), (std::vector<int>{0, 1}));
        }
    EXPECT_EQ(geom.VertSmoothingList().Count(), 6);
}
