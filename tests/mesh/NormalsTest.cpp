#include "base/MAT.h"
#include "tests/support/EdgeMeshes.h"

#include <gtest/gtest.h>

namespace
{
constexpr VERTEX kUntouched = {0.0000137f, 0.000071f, 1.0f};

std::unique_ptr<VXGeom> GeomOf(const TestMesh& mesh, bool creases)
{
    auto geom = std::make_unique<VXGeom>();
    geom->SetGenerateCreases(creases);
    EXPECT_EQ(geom->SetGeom(mesh.Record().get(), true), 0);
    return geom;
}

std::unique_ptr<VXGeom> PlainGeomOf(int numVerts, const std::vector<TestPoly>& polys, const std::vector<VERTEX>& verts)
{
    const GeomPtr g = RecordOf(numVerts, polys);
    std::copy(verts.begin(), verts.end(), g->verts);
    auto geom = std::make_unique<VXGeom>();
    geom->SetGenerateCreases(false);
    EXPECT_EQ(geom->SetGeom(g.get(), true), 0);
    return geom;
}
} // namespace

TEST(Normals, AreTheUnitSumOfThePolygonsAroundAVertex)
{
    for (const TestMesh& mesh : {Cube(), OpenBox(), RoughGrid(6, 1, 1.5f), Torus(9, 6)})
    {
        SCOPED_TRACE(mesh.name);
        const auto geom = GeomOf(mesh, false);
        std::vector<VERTEX> sums(mesh.verts.size());
        for (std::size_t f = 0; f < mesh.faces.size(); ++f)
            for (const int v : mesh.faces[f])
                sums[std::size_t(v)] += *geom->PolyNormal(int(f));
        for (std::size_t v = 0; v < sums.size(); ++v)
        {
            const VERTEX n = *geom->VertNormal(int(v));
            EXPECT_NEAR(Length(n), 1, 1e-6f) << v;
            EXPECT_LT(Distance(n, sums[v] * (1 / Length(sums[v]))), 1e-5f) << v;
        }
    }
}

TEST(Normals, TurnWithTheMesh)
{
    Mat44 turn;
    MAT_Identity(turn);
    MAT_RotateX(turn, 0.7f);
    MAT_RotateZ(turn, -1.3f);
    for (const bool creases : {false, true})
    {
        TestMesh mesh = RoughGrid(8, 2, 2.0f), turned = mesh;
        MAT_VertTransform(mesh.verts.data(), turned.verts.data(), int(mesh.verts.size()), turn);
        const auto before = GeomOf(mesh, creases), after = GeomOf(turned, creases);
        ASSERT_EQ(before->NumVerts(true), after->NumVerts(true));
        const std::int32_t* const sets = before->Sets(true);
        for (std::int64_t c = 0; c < before->Geom()->NumCorners(); ++c) // a vertex without corners has a fixed normal
        {
            const int v = sets[c];
            VERTEX expected;
            MAT_VertTransform(before->VertNormal(v), &expected, 1, turn);
            EXPECT_LT(Distance(expected, *after->VertNormal(v)), 2e-6f) << v; // a few roundings of unit vectors
        }
    }
}

TEST(Normals, OfACreasedCubeAreThoseOfItsFaces)
{
    const auto geom = GeomOf(Cube(), true);
    EXPECT_EQ(geom->NumVerts(true), 24);
    for (int f = 0; f < 6; ++f)
        for (int k = 0; k < 4; ++k)
            EXPECT_LT(Distance(*geom->VertNormal(geom->Sets(true)[4 * f + k]), *geom->PolyNormal(f)), 1e-6f);
}

TEST(Normals, WhereNothingCountsADefaultStands)
{
    // Vertex 3 has no face; vertices 0 to 2 have a face and its mirror image, which cancel out.
    const std::vector<TestPoly> both = {{0, {0, 1, 2}}, {0, {0, 2, 1}}};
    const std::vector<VERTEX> corner = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {5, 5, 5}};
    const auto plain = PlainGeomOf(4, both, corner);
    for (int v = 0; v < 4; ++v)
        EXPECT_EQ(*plain->VertNormal(v), kUntouched) << v;

    const auto creased = PlainGeomOf(4, both, corner);
    creased->SetNumbCreaseVerts(1); // as with external crease data: no edge uses the extra vertex
    ASSERT_NE(creased->ComputeCreasedNormals(), nullptr);
    EXPECT_EQ(*creased->VertNormal(0), VERTEX());
    EXPECT_EQ(*creased->VertNormal(3), (VERTEX{0, 0, 1}));
    EXPECT_EQ(*creased->VertNormal(4), (VERTEX{0, 0, 1}));
    creased->SetNumbCreaseVerts(0);
}

TEST(Normals, OfLinesFollowTheirOwnRule)
{
    // In the plane z = 0 with normal (0, 0, 1) or (0, 0, -1): d becomes (-d.y n.z, n.z d.x', 0) with d.x' the new x.
    const std::vector<VERTEX> verts = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    const auto geom = PlainGeomOf(4, {{1, {0, 1, 2, 3}}}, verts);
    const float nz = geom->PolyNormal(0)->z;
    ASSERT_NEAR(std::fabs(nz), 1, 1e-6f);
    // Segments 0-1: d = (-1, 0, 0) gives x = 0, y = n.z * 0 = 0: zero. 1-2: d = (0, -1, 0) gives x = n.z, y = 1.
    // 2-3: d = (1, 0, 0) gives zero. Vertex 3 copies vertex 2's zero; then vertex 1 adds vertex 0's zero to its own,
    // and vertex 2 adds what vertex 1 had.
    const float s = std::sqrt(0.5f);
    EXPECT_EQ(*geom->VertNormal(0), kUntouched);
    EXPECT_LT(Distance(*geom->VertNormal(1), {nz * s, s, 0}), 1e-6f);
    EXPECT_LT(Distance(*geom->VertNormal(2), {nz * s, s, 0}), 1e-6f);
    EXPECT_EQ(*geom->VertNormal(3), kUntouched);
}

TEST(Normals, AOneCornerLineDoesNotCount)
{
    const std::vector<VERTEX> verts = {{0, 0, 0}, {1, 0, 0}, {0, 0, 1}};
    struct Row
    {
        const char* name;
        std::vector<TestPoly> polys;
        VERTEX expected; // of vertex 0
    };
    const Row rows[] = {
        {"alone", {{1, {0}}}, kUntouched},
        {"after a face it takes the vertex over", {{0, {0, 1, 2}}, {1, {0}}}, kUntouched},
        {"a later face adds to it", {{1, {0}}, {0, {0, 1, 2}}}, {0, -std::sqrt(0.5f), std::sqrt(0.5f)}},
    };
    for (const Row& row : rows)
        EXPECT_LT(Distance(*PlainGeomOf(3, row.polys, verts)->VertNormal(0), row.expected), 1e-6f) << row.name;
}

TEST(Normals, SumsOverCornersEqualThoseOverEdges)
{
    for (const TestMesh& mesh :
         {Torus(8, 6), RoughGrid(9, 4, 1.2f), RoughGrid(9, 5, 1.2f, true), TwoCubesSharingAnEdge()})
    {
        SCOPED_TRACE(mesh.name);
        const auto geom = GeomOf(mesh, true);
        ASSERT_GT(geom->NumbCreaseVerts(), 0);
        // The rule in its own words: every polygon counts once at the start of each of its edges; along seams for the
        // plain vertex, and then the crease vertices there take the plain vertices' normals.
        std::vector<VERTEX> sums(std::size_t(geom->NumVerts(true)));
        VXEdgeList& edges = geom->EdgeList();
        for (int e = 0; e < edges.GetEdgeCount(); ++e)
        {
            const VXEdge& edge = edges.GetEdge(e);
            sums[std::size_t(edge.CreaseVertexP1V1(true))] += *geom->PolyNormal(edge.PolyIndex1());
            if (edge.IsOpenEdge())
                continue;
            const int b = edge.IsEdgeOrderedProperly() ? edge.CreaseVertexP2V2(true) : edge.CreaseVertexP2V1(true);
            sums[std::size_t(b)] += *geom->PolyNormal(edge.PolyIndex2());
        }
        for (VERTEX& sum : sums)
            sum = Length(sum) > 0 ? sum * (1 / Length(sum)) : VERTEX{0, 0, 1}; // no sum cancels out in these meshes
        for (int e = 0; e < edges.GetEdgeCount(); ++e)
        {
            const VXEdge& edge = edges.GetEdge(e);
            if (!edge.IsCreaseEdge() || !edge.IsSmoothEdge())
                continue;
            sums[std::size_t(edge.CreaseVertexP1V1(false))] = sums[std::size_t(edge.VertIndex1())];
            sums[std::size_t(edge.CreaseVertexP1V2(false))] = sums[std::size_t(edge.VertIndex2())];
            sums[std::size_t(edge.CreaseVertexP2V1(false))] = sums[std::size_t(edge.VertIndex1())];
            sums[std::size_t(edge.CreaseVertexP2V2(false))] = sums[std::size_t(edge.VertIndex2())];
        }
        const std::vector<std::int32_t> sets(geom->CreaseSets(), geom->CreaseSets() + geom->Geom()->NumCorners());
        for (int pass = 0; pass < 2; ++pass, geom->ComputeCreasedNormals())
            for (std::size_t v = 0; v < sums.size(); ++v)
                EXPECT_LT(Distance(sums[v], *geom->VertNormal(int(v))), 1e-5f) << v;
        EXPECT_EQ(sets, std::vector<std::int32_t>(geom->CreaseSets(), geom->CreaseSets() + sets.size()));
    }
}

TEST(Normals, OfTheHostAreLeftAlone)
{
    const auto geom = GeomOf(Cube(), false);
    std::vector<VERTEX> verts(8, VERTEX{3, 2, 1}), polys(6, VERTEX{1, 2, 3});
    geom->SetUseExternalNormals(true);
    geom->SetExternalVertexNormals(verts.data());
    geom->SetExternalPolyNormals(polys.data());
    EXPECT_TRUE(geom->ComputeAllNormals());
    EXPECT_EQ(geom->ComputeNonCreasedNormals(), verts.data());
    EXPECT_EQ(geom->ComputeCreasedNormals(), verts.data());
    EXPECT_EQ(geom->MakeVertexNormals(), 0);
    EXPECT_EQ(verts, std::vector<VERTEX>(8, VERTEX{3, 2, 1}));
    EXPECT_EQ(polys, std::vector<VERTEX>(6, VERTEX{1, 2, 3}));
}

TEST(Normals, WeldedOnesIgnoreThatVerticesAreDoubled)
{
    // Each face of the cube with vertices of its own; welded, it has the normals of the joined cube again.
    TestMesh apart{"faces apart", {}, {}};
    const TestMesh cube = Cube();
    for (const std::vector<int>& face : cube.faces)
    {
        apart.faces.emplace_back();
        for (const int v : face)
        {
            apart.faces.back().push_back(int(apart.verts.size()));
            apart.verts.push_back(cube.verts[std::size_t(v)]);
        }
    }
    for (const TestMesh& mesh : {apart, cube})
    {
        SCOPED_TRACE(mesh.name);
        const auto geom = GeomOf(mesh, true);
        EXPECT_EQ(geom->WeldedNormals(false), geom->VertNormals()); // not there yet, and not asked for
        const float tolerance = GEOM_WeldTolerance();
        VERTEX* const welded = geom->WeldedNormals();
        EXPECT_EQ(GEOM_WeldTolerance(), tolerance);
        ASSERT_NE(welded, geom->VertNormals());
        for (int v = 0; v < geom->NumVerts(true); ++v)
        {
            const VERTEX p = *geom->Vertex(geom->OrigVertIndex(v));
            EXPECT_LT(Distance(welded[v], p * (1 / Length(p))), 1e-6f) << v; // outwards along the diagonal
        }
    }
}

TEST(Normals, WithoutMemoryNothingIsTorn)
{
    for (const bool creases : {false, true})
        for (int n = 1;; ++n)
        {
            ASSERT_LT(n, 200);
            const auto geom = GeomOf(Cube(), creases);
            geom->BuildEdgeList();
            MEM_SetAllocationFailed(false);
            MEM_FailAfter(n);
            const bool done = geom->ComputeAllNormals();
            MEM_FailAfter(0);
            if (done && !MEM_AllocationFailed())
            {
                EXPECT_EQ(geom->NumVerts(true), creases ? 24 : 8);
                break;
            }
            for (int e = 0; e < 12; ++e) // no edge names a vertex that is not there
            {
                EXPECT_LT(geom->EdgeList().GetEdge(e).CreaseVertexP1V1(false), geom->NumVerts(true));
            }
        }
    MEM_SetAllocationFailed(false);
}

TEST(Normals, CentresAreTheMeanOfTheCorners)
{
    const auto geom = GeomOf(Cube(), true);
    EXPECT_EQ(geom->PolyCenters(), nullptr);
    geom->ComputePolyCenters();
    for (int f = 0; f < 6; ++f)
        EXPECT_LT(Distance(*geom->PolyCenter(f), *geom->PolyNormal(f)), 1e-6f); // side 2 about the origin
    geom->ClearPolyCenters();
    EXPECT_EQ(geom->PolyCenters(), nullptr);
}

TEST(Normals, OfAPolygonDoNotDependOnItsNeighbours)
{
    // Several are computed at once where that is possible; quads, triangles, larger, flat and huge polygons in a row.
    TestMesh mesh = RoughGrid(9, 6, 2.0f);
    for (std::size_t f = 0; f < mesh.faces.size(); ++f)
        if (f % 5 == 1)
            mesh.faces[f].pop_back();
    mesh.faces[40] = {0, 1, 2, 12, 22, 21, 20};
    mesh.faces[50] = {0, 0, 1};
    mesh.verts[95] = {1e20f, 0, 3};
    mesh.uvs.clear();
    std::vector<VERTEX> together(mesh.faces.size());
    ASSERT_EQ(GEOM_CalcPolyNormals(mesh.Record().get(), together.data()), 0);
    for (std::size_t f = 0; f < mesh.faces.size(); ++f)
    {
        const TestMesh alone{"alone", mesh.verts, {mesh.faces[f]}};
        VERTEX normal;
        GEOM_CalcPolyNormals(alone.Record().get(), &normal);
        EXPECT_EQ(together[f], normal) << f;
    }
    // The two ways to vertex normals, with the polygon normals in one go and one after the other.
    const auto geom = GeomOf(mesh, false);
    const std::vector<VERTEX> oneGo(geom->VertNormals(), geom->VertNormals() + geom->NumVerts(false));
    geom->ComputeNonCreasedNormals();
    EXPECT_EQ(oneGo, std::vector<VERTEX>(geom->VertNormals(), geom->VertNormals() + geom->NumVerts(false)));
}
