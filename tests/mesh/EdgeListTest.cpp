#include "tests/support/EdgeMeshes.h"

#include <gtest/gtest.h>

namespace
{
// Two faces 0 1 2 and, through the edge 1-2, a second one.
VXEdgeList ListOf(int numVerts, const std::vector<TestPoly>& polys)
{
    return AddedOneByOne(*RecordOf(numVerts, polys));
}

const VXEdge& EdgeBetween(const VXEdgeList& list, int a, int b) { return list.GetEdge(list.FindEdge(a, b, -1)); }
} // namespace

TEST(EdgeList, AnEdgeOfTwoFacesSaysHowTheSecondWalksIt)
{
    struct Row
    {
        const char* name;
        std::vector<int> second; // the second face; the first is 0 1 2
        bool ordered;
        int relV1, relV2; // of vertices 1 and 2 in the second face
        bool starting, closing;
    };
    const Row rows[] = {
        {"opposite, starting there", {2, 1, 3}, true, 1, 0, true, false},
        {"opposite, closing there", {1, 3, 2}, true, 0, 2, false, true},
        {"opposite, in the middle", {3, 2, 1}, true, 2, 1, false, false},
        {"same way, starting there", {1, 2, 3}, false, 0, 1, true, false},
        {"same way, closing there", {2, 3, 1}, false, 2, 0, false, true},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        const VXEdgeList list = ListOf(4, {{kElementFace, {0, 1, 2}}, {kElementFaceAlso, row.second}});
        EXPECT_EQ(list.GetEdgeCount(), 5);
        const VXEdge& edge = EdgeBetween(list, 1, 2);
        EXPECT_EQ(RowOf(edge)[0], 0);
        EXPECT_EQ(edge.PolyIndex2(), 1);
        EXPECT_EQ(edge.VertIndex1(), 1);
        EXPECT_EQ(edge.VertIndex2(), 2);
        EXPECT_FALSE(edge.IsOpenEdge());
        EXPECT_EQ(edge.IsEdgeOrderedProperly(), row.ordered);
        EXPECT_EQ(edge.RelIndexP2V1(), row.relV1);
        EXPECT_EQ(edge.RelIndexP2V2(), row.relV2);
        EXPECT_EQ(edge.IsStartingEdgeP2(), row.starting);
        EXPECT_EQ(edge.IsClosingEdgeP2(), row.closing);
        EXPECT_TRUE(EdgeBetween(list, 0, 1).IsStartingEdgeP1());
        EXPECT_TRUE(EdgeBetween(list, 2, 0).IsClosingEdgeP1());
        EXPECT_TRUE(EdgeBetween(list, 2, 0).IsOpenEdge());
    }
}

TEST(EdgeList, WhichEdgesAreClosedByWhom)
{
    struct Row
    {
        const char* name;
        std::vector<TestPoly> polys;
        std::vector<std::pair<int, int>> between0And1; // polygons of the edges between vertices 0 and 1, in order
    };
    const Row rows[] = {
        {"a third face opens a parallel edge", {{0, {0, 1, 2}}, {0, {1, 0, 3}}, {0, {0, 1, 4}}}, {{0, 1}, {2, -1}}},
        {"a fourth face closes it", {{0, {0, 1, 2}}, {0, {1, 0, 3}}, {0, {0, 1, 4}}, {0, {0, 1, 5}}}, {{0, 1}, {2, 3}}},
        {"a line closes nothing", {{0, {0, 1, 2}}, {1, {1, 0}}}, {{0, -1}, {1, -1}}},
        {"a face closes what a line left open", {{1, {1, 0}}, {0, {0, 1, 2}}}, {{0, 1}}},
        {"the newest open edge is closed first", {{1, {0, 1}}, {1, {0, 1}}, {0, {0, 1, 2}}}, {{0, -1}, {1, 2}}},
        {"a face does not close its own edge", {{0, {0, 1}}}, {{0, -1}, {0, -1}}},
        {"nor its own when an older one is open", {{1, {0, 1}}, {0, {0, 1}}}, {{0, 1}, {1, -1}}},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        const VXEdgeList list = ListOf(6, row.polys);
        std::vector<std::pair<int, int>> found;
        for (int e = 0; e < list.GetEdgeCount(); ++e)
            if (list.GetEdge(e).VertIndex1() + list.GetEdge(e).VertIndex2() == 1)
                found.emplace_back(list.GetEdge(e).PolyIndex1(), list.GetEdge(e).PolyIndex2());
        EXPECT_EQ(found, row.between0And1);
    }
}

TEST(EdgeList, ARepeatedCornerGivesNoEdgeAndIsCountedAllTheSame)
{
    const VXEdgeList list = ListOf(3, {{kElementFace, {0, 0, 1, 2, 0}}});
    ASSERT_EQ(list.GetEdgeCount(), 3);
    EXPECT_EQ(list.GetEdge(0).RelIndexP1V1(), 1); // from the second of the two corners at vertex 0
    EXPECT_EQ(list.GetEdge(0).RelIndexP1V2(), 2);
    EXPECT_EQ(list.GetEdge(2).RelIndexP1V2(), 4);
    EXPECT_FALSE(list.GetEdge(0).IsStartingEdgeP1());
    EXPECT_FALSE(list.GetEdge(2).IsClosingEdgeP1()); // the corner 4 and the first are one vertex: no edge between them
}

TEST(EdgeList, SearchesGoAlongTheChainsNewestFirst)
{
    // A fan of three triangles around vertex 0: spokes 0-1, 0-2, 0-3, 0-4.
    const VXEdgeList list = ListOf(5, {{0, {0, 1, 2}}, {0, {0, 2, 3}}, {0, {0, 3, 4}}});
    const std::int32_t spoke2 = list.FindEdge(0, 2, -1), spoke3 = list.FindEdge(0, 3, -1);
    EXPECT_EQ(list.FindEdge(2, 0, 1), spoke2);
    EXPECT_EQ(list.FindEdge(0, 2, 2), -1);
    EXPECT_EQ(list.FindEdge(1, 3, -1), -1);
    // Spoke 0-2 is walked 2 -> 0 by polygon 0, so its V1 is 2.
    const VXEdge& edge = list.GetEdge(spoke2);
    ASSERT_EQ(edge.VertIndex1(), 2);
    EXPECT_EQ(list.GetAttachedEdgeP1V1(&edge), list.FindEdge(1, 2, -1));
    EXPECT_EQ(list.GetAttachedEdgeP1V2(&edge), list.FindEdge(0, 1, -1));
    EXPECT_EQ(list.GetAttachedEdgeP2V1(&edge), list.FindEdge(2, 3, -1));
    EXPECT_EQ(list.GetAttachedEdgeP2V2(&edge), spoke3);
    EXPECT_EQ(list.NextEdgePoly(&edge, 1, false), spoke3);
    EXPECT_EQ(list.NextEdgePoly(&edge, 2, true), -1);
    EXPECT_EQ(list.GetAttachedEdgeP1V1(nullptr), 0); // not -1, on purpose
    EXPECT_EQ(list.NextEdgePoly(nullptr, 0, true), 0);
    EXPECT_EQ(list.GetVertexLinkCountVertex(0), 4);
    EXPECT_EQ(list.GetVertexLinkCountVertex(3), 3);
}

TEST(EdgeList, NeighboursOfNeighboursIncludeTheVertexItself)
{
    const VXEdgeList list = ListOf(5, {{0, {0, 1, 2}}, {0, {0, 2, 3}}, {0, {0, 3, 4}}});
    BArray<std::int32_t> out;
    list.GetNeighborVerts(0, out, 0);
    EXPECT_EQ(std::vector<std::int32_t>(out.begin(), out.end()), (std::vector<std::int32_t>{4, 3, 2, 1}));
    list.GetNeighborVerts(1, out, 1);
    // 1's newest link is 1-2: vertex 2, then 2's neighbours newest first (3, 0, 1). Vertex 0 is there by then, so its
    // own neighbours are not asked.
    EXPECT_EQ(std::vector<std::int32_t>(out.begin(), out.end()), (std::vector<std::int32_t>{2, 3, 0, 1}));
}

TEST(EdgeList, CopiesOwnTheirCreaseData)
{
    VXEdgeList list = ListOf(4, {{0, {0, 1, 2}}, {0, {2, 1, 3}}});
    VXEdge& shared = list.GetEdge(list.FindEdge(1, 2, -1));
    VXEdge& open = list.GetEdge(0);
    EXPECT_EQ(shared.CreaseVertexP2V2(false), 2); // plain without crease data
    ASSERT_TRUE(shared.SetCreaseDataP1V1(7));
    ASSERT_TRUE(open.SetCreaseDataP1V2(8));
    EXPECT_EQ(shared.CreaseVertexP1V1(false), 7);
    EXPECT_EQ(shared.CreaseVertexP2V1(false), 1);
    EXPECT_EQ(open.CreaseVertexP1V1(false), 0);
    EXPECT_EQ(open.CreaseVertexP2V1(false), -1); // there is no polygon 2

    VXEdgeList copy = list;
    ASSERT_TRUE(shared.SetCreaseDataP1V1(9));
    EXPECT_EQ(copy.GetEdge(shared.EdgeIndex()).CreaseVertexP1V1(false), 7);

    shared.SetCreaseEdge(true);
    EXPECT_EQ(shared.CreaseVertexP1V1(true), 9);
    shared.SetSmoothEdge(true); // a seam: normals run through
    EXPECT_EQ(shared.CreaseVertexP1V1(true), 1);
    EXPECT_EQ(shared.CreaseVertexP1V1(false), 9);
}
