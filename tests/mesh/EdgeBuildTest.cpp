#include "tests/support/EdgeMeshes.h"

#include <gtest/gtest.h>

#include <map>
#include <numeric>
#include <set>

TEST(EdgeBuild, IsWhatAddingEdgeByEdgeGives)
{
    std::mt19937 random(1);
    for (int round = 0; round < 600; ++round)
    {
        // From two vertices with all edges between them (one long bucket) to a mesh of short ones.
        const int numVerts = 2 + int(random() % (round % 2 ? 4 : 60)), count = int(random() % 120);
        const GeomPtr g = RecordOf(numVerts, RandomPolys(random, numVerts, count));
        const VXEdgeList expected = AddedOneByOne(*g);
        VXEdgeList built;
        ASSERT_TRUE(built.Build(*g));
        ASSERT_EQ(RowsOf(built), RowsOf(expected)) << "round " << round;
        ASSERT_EQ(ChainsOf(built), ChainsOf(expected)) << "round " << round;
    }
}

TEST(EdgeBuild, HighValenceGivesTheSameEdgesInAnyOrder)
{
    for (const TestMesh& mesh : {Fan(300), Shuffled(Fan(300), 5), Shuffled(Torus(9, 7), 3), TwoCubesSharingAnEdge()})
    {
        SCOPED_TRACE(mesh.name);
        const GeomPtr g = mesh.Record();
        VXEdgeList built;
        ASSERT_TRUE(built.Build(*g));
        const VXEdgeList expected = AddedOneByOne(*g);
        EXPECT_EQ(RowsOf(built), RowsOf(expected));
        EXPECT_EQ(ChainsOf(built), ChainsOf(expected));
    }
}

TEST(EdgeBuild, APolygonThatPassesOneEdgeManyTimesKeepsTheOrderOfItsOpenEdges)
{
    // A line there and back leaves 100 open edges; the faces close them from the newest on, but never their own.
    std::vector<TestPoly> polys = {{kElementLine, {}}};
    for (int i = 0; i <= 100; ++i)
        polys[0].corners.push_back(i % 2);
    for (int i = 0; i < 70; ++i)
        polys.push_back({kElementFace, {0, 1}});
    const GeomPtr g = RecordOf(2, polys);
    VXEdgeList built;
    ASSERT_TRUE(built.Build(*g));
    EXPECT_EQ(RowsOf(built), RowsOf(AddedOneByOne(*g)));
    EXPECT_EQ(built.GetEdge(99).PolyIndex2(), 1);
}

TEST(EdgeBuild, ManifoldsHaveEachEdgeOnceAndTheirEulerCount)
{
    struct Row
    {
        TestMesh mesh;
        int euler; // vertices - edges + faces
        bool closed;
    };
    const Row rows[] = {
        {Cube(), 2, true},           {OpenBox(), 1, false},  {Fan(6), 1, false},     {Grid(5, 3), 1, false},
        {MoebiusStrip(7), 0, false}, {Torus(6, 5), 0, true}, {EmptyMesh(), 0, true},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.mesh.name);
        const GeomPtr g = row.mesh.Record();
        VXEdgeList list;
        ASSERT_TRUE(list.Build(*g));
        std::set<std::pair<int, int>> seen;
        int valences = 0, open = 0;
        for (int e = 0; e < list.GetEdgeCount(); ++e)
        {
            const VXEdge& edge = list.GetEdge(e);
            EXPECT_TRUE(seen.insert(std::minmax(edge.VertIndex1(), edge.VertIndex2())).second);
            EXPECT_EQ(edge.EdgeIndex(), e);
            EXPECT_EQ(edge.IsOpenEdge(), edge.PolyIndex2() == -1);
            open += edge.IsOpenEdge() ? 1 : 0;
        }
        std::set<int> used;
        for (const std::vector<int>& face : row.mesh.faces)
            used.insert(face.begin(), face.end());
        for (int v = 0; v < list.GetVertexLinkCount(); ++v)
            valences += list.GetVertexLinkCountVertex(v);
        EXPECT_EQ(valences, 2 * list.GetEdgeCount());
        EXPECT_EQ(int(used.size()) - list.GetEdgeCount() + g->numPolys, row.euler);
        EXPECT_EQ(open == 0, row.closed);
    }
}

TEST(EdgeBuild, GeomReportsLinesAndPointsOfAtLeastTwoCorners)
{
    struct Row
    {
        const char* name;
        std::vector<TestPoly> polys;
        bool lines, points;
    };
    const Row rows[] = {
        {"faces", {{0, {0, 1, 2}}}, false, false},
        {"short ones do not count", {{1, {0}}, {3, {1}}}, false, false},
        {"a line", {{0, {0, 1, 2}}, {1, {1, 2}}}, true, false},
        {"points", {{3, {1, 2}}}, false, true},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        const GeomPtr g = RecordOf(3, row.polys);
        VXGeom geom;
        ASSERT_EQ(geom.SetGeom(g.get(), true), 0);
        EXPECT_EQ(geom.BuildEdgeList(), 0);
        EXPECT_EQ(geom.IncludesLines(), row.lines);
        EXPECT_EQ(geom.IncludesPoints(), row.points);
    }
    VXGeom none;
    EXPECT_EQ(none.BuildEdgeList(), -1);
}

TEST(EdgeBuild, RecordsThatWereNeverCheckedAreHarmless)
{
    const GeomPtr g = RecordOf(3, {{0, {0, 1, 99}}, {0, {-5, 1, 2}}, {0, {0, 1, 2}}, {0, {0, 1, 2}}});
    g->Poly(2)->length = 1000;
    VXEdgeList list;
    ASSERT_TRUE(list.Build(*g));
    for (int e = 0; e < list.GetEdgeCount(); ++e)
    {
        EXPECT_LT(std::uint32_t(list.GetEdge(e).VertIndex1()), 3u);
        EXPECT_LT(std::uint32_t(list.GetEdge(e).VertIndex2()), 3u);
        EXPECT_NE(list.GetEdge(e).PolyIndex1(), 2);
    }
    EXPECT_NE(list.FindEdge(0, 1, 0), -1);
    EXPECT_NE(list.FindEdge(0, 1, 3), -1);
}

TEST(EdgeBuild, WithoutMemoryTheListIsEmpty)
{
    const GeomPtr g = Fan(100).Record(); // needs the tables for long buckets too
    for (int n = 1; n < 60; ++n)
    {
        VXEdgeList list;
        MEM_FailAfter(n);
        const bool built = list.Build(*g);
        MEM_FailAfter(0);
        if (built)
        {
            EXPECT_GT(n, 8) << "fewer allocations than arrays";
            EXPECT_EQ(RowsOf(list), RowsOf(AddedOneByOne(*g)));
            return;
        }
        EXPECT_EQ(list.GetEdgeCount(), 0);
        EXPECT_EQ(list.GetVertexLinkCount(), 0);
    }
    FAIL() << "never got enough memory";
}

TEST(EdgeBuild, FacingMarksSilhouettesAndKeepsMaterialBoundaries)
{
    const GeomPtr g = Cube().Record();
    const int other = GEOM_AddMaterialName(g.get(), "other");
    g->Poly(1)->material = std::uint16_t(other); // the top, z = 1
    VXGeom geom;
    ASSERT_EQ(geom.SetGeom(g.get(), true), 0);
    const VERTEX above = {0, 0, 10};
    geom.ComputeBackfacingToVertex(&above);
    EXPECT_EQ(*geom.PolyNormal(1), (VERTEX{0, 0, 8})); // twice the area, not a unit vector
    int silhouettes = 0;
    for (int e = 0; e < geom.EdgeList().GetEdgeCount(); ++e)
    {
        const VXEdge& edge = geom.EdgeList().GetEdge(e);
        const bool top = edge.PolyIndex1() == 1 || edge.PolyIndex2() == 1;
        silhouettes += edge.IsBoundaryEdge() ? 1 : 0;
        EXPECT_EQ(edge.IsBoundaryEdge(), top) << e; // seen from above, only the top faces the viewer
        EXPECT_EQ(edge.IsFacingForward(), top) << e;
        EXPECT_FALSE(edge.IsMtlBoundaryEdge()) << e;
    }
    EXPECT_EQ(silhouettes, 4);

    const VERTEX inside = {0, 0, 0.5f};
    geom.ComputeBackfacingToVertex(&inside);
    int boundaries = 0;
    for (int e = 0; e < geom.EdgeList().GetEdgeCount(); ++e)
        boundaries += geom.EdgeList().GetEdge(e).IsMtlBoundaryEdge() ? 1 : 0;
    EXPECT_EQ(boundaries, 4);
    geom.ComputeBackfacingToVertex(&above);
    const VXEdge& rim = geom.EdgeList().GetEdge(geom.EdgeList().FindEdge(4, 5, 1));
    EXPECT_TRUE(rim.IsBoundaryEdge());
    EXPECT_TRUE(rim.IsMtlBoundaryEdge()); // never cleared
}

TEST(EdgeBuild, FacingTakesTheHostsNormalsAsTheyAre)
{
    // A quad, a line of two corners and a point, seen from above.
    const GeomPtr g = RecordOf(6, {{kElementFace, {0, 1, 2, 3}}, {kElementLine, {3, 4}}, {kElementPoint, {5}}});
    for (int v = 0; v < 4; ++v)
        g->verts[v] = {v == 1 || v == 2 ? 1.0f : 0.0f, v >= 2 ? 1.0f : 0.0f, 0};
    VXGeom geom(g.get());
    const VERTEX above = {0, 0, 10};
    const auto isForward = [&](int e) { return geom.EdgeList().GetEdge(e).IsFacingForward(); };
    geom.ComputeBackfacingToVertex(&above);
    for (const int p : {1, 2})
        EXPECT_EQ(*geom.PolyNormal(p), (VERTEX{0, 0, 1}));
    EXPECT_TRUE(isForward(0) && isForward(4));
    EXPECT_FALSE(geom.EdgeList().GetEdge(0).IsBoundaryEdge()) << "an open edge is no silhouette here";

    VERTEX hosts[3] = {{0, 0, -5}, {0, 0, 1}, {0, 0, 1}};
    geom.SetUseExternalNormals(true);
    geom.SetExternalPolyNormals(hosts);
    geom.ComputeBackfacingToVertex(&above);
    EXPECT_FALSE(isForward(0));
    EXPECT_TRUE(isForward(4));
    EXPECT_EQ(hosts[0], (VERTEX{0, 0, -5}));

    // Our own array, made for fewer polygons, is not read as if it were the host's.
    VXGeom resized(g.get());
    resized.SetSizeFor(4, 50, 200, 0);
    resized.BuildEdgeList();
    resized.SetUseExternalNormals(true);
    resized.ComputeBackfacingToVertex(&above);
}

TEST(EdgeBuild, OneLongPolygonAmongShortOnesChangesNothing)
{
    // Corners are numbered in another way when the lengths of polygons differ widely.
    TestMesh mesh = Torus(12, 10);
    mesh.uvs.clear();
    std::vector<int> all(mesh.verts.size());
    std::iota(all.begin(), all.end(), 0);
    mesh.faces.insert(mesh.faces.begin() + 30, all);
    const GeomPtr g = mesh.Record();
    VXEdgeList built;
    ASSERT_TRUE(built.Build(*g));
    const VXEdgeList expected = AddedOneByOne(*g);
    EXPECT_EQ(RowsOf(built), RowsOf(expected));
    EXPECT_EQ(ChainsOf(built), ChainsOf(expected));
}
