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

TEST(Walker, SmoothingListIsWhatWalkingAroundEveryVertexGives)
{
    for (const TestMesh& mesh : {Torus(6, 5), RoughGrid(6, 2, 1.5f), Fan(80), TwoCubesSharingAnEdge()})
    {
        SCOPED_TRACE(mesh.name);
        VXGeom geom;
        ASSERT_EQ(geom.SetGeom(mesh.Record().get(), true), 0);
        geom.BuildVertSmoothList();
        ASSERT_EQ(geom.VertSmoothingList().Count(), geom.NumVerts(true));

        std::vector<std::vector<int>> expected(std::size_t(geom.NumVerts(true)));
        const auto add = [&expected](int v, int poly)
        {
            std::vector<int>& list = expected[std::size_t(v)];
            if (std::find(list.begin(), list.end(), poly) == list.end())
                list.push_back(poly);
        };
        const VXEdgeList& edges = geom.EdgeList();
        for (int v = 0; v < geom.NumVerts(false); ++v)
        {
            const VXEdge& newest = edges.GetEdge(edges.GetEdgefromVertexLink(edges.GetFirstVertexLink(v)));
            for (const int e : WalkedPlainly(edges, newest.VertIndex1(), -1, newest.PolyIndex1()))
            {
                const VXEdge& edge = edges.GetEdge(e);
                const int plain[] = {edge.VertIndex1(), edge.VertIndex2()};
                const int crease1[] = {edge.CreaseVertexP1V1(false), edge.CreaseVertexP1V2(false)};
                const int crease2[] = {edge.CreaseVertexP2V1(false), edge.CreaseVertexP2V2(false)};
                for (int end = 0; end < 2; ++end)
                {
                    add(plain[end], edge.PolyIndex1());
                    add(crease1[end], edge.PolyIndex1());
                    if (edge.IsOpenEdge())
                        continue;
                    add(plain[end], edge.PolyIndex2());
                    add(crease2[end], edge.PolyIndex2());
                    if (edge.IsSmoothEdge())
                        add(crease1[end], edge.PolyIndex2());
                }
            }
        }
        for (int v = 0; v < geom.NumVerts(true); ++v)
        {
            std::vector<int> polys;
            for (const auto* node = geom.VertSmoothingList().First(v); node; node = node->next)
                polys.push_back(node->poly);
            EXPECT_EQ(polys, expected[std::size_t(v)]) << v;
        }
    }
}
