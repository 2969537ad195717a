#include "base/MAT.h"
#include "engine/VXEngine.h"
#include "engine/VXSwitches.h"
#include "tests/support/EdgeMeshes.h"

#include <gtest/gtest.h>

#include <limits>

namespace
{
struct Tangents
{
    std::vector<VERTEX> tangents, binormals;
    friend bool operator==(const Tangents&, const Tangents&) = default;
};

Tangents TangentsOf(const VXGeom& geom)
{
    const VERTEX *const t = geom.VertTangents(), *const b = geom.VertBinormals();
    if (!t || !b)
        return {};
    return {{t, t + geom.NumVerts(true)}, {b, b + geom.NumVerts(true)}};
}

// Corner by corner in the order in which they are meant to write, one after the other.
Tangents WrittenOneByOne(const GEOM& g, int numVerts)
{
    Tangents out{std::vector<VERTEX>(std::size_t(numVerts), {1, 0, 0}),
                 std::vector<VERTEX>(std::size_t(numVerts), {0, 1, 0})};
    for (int p = 0; p < g.numPolys; ++p)
    {
        const ELEMENT& e = *g.Poly(p);
        const std::int32_t* const ring = g.sets + e.start;
        if (e.type == kElementLine || e.type == kElementPoint || e.length < 1)
            continue;
        if (e.length == 1)
        {
            out.tangents[std::size_t(ring[0])] = {1, 0, 0};
            out.binormals[std::size_t(ring[0])] = {0, 1, 0};
            continue;
        }
        if (p >= g.tex->numPolys || g.tex->polys[p].length != e.length)
            continue;
        const auto write = [&](int before, int k, int after)
        {
            const auto uv = [&](int corner) { return g.tex->verts[g.tex->sets[g.tex->polys[p].start + corner]]; };
            const VERTEX e1 = g.verts[ring[k]] - g.verts[ring[before]],
                         e2 = g.verts[ring[after]] - g.verts[ring[before]];
            const float du1 = uv(k).u - uv(before).u, dv1 = uv(k).v - uv(before).v;
            const float du2 = uv(after).u - uv(before).u, dv2 = uv(after).v - uv(before).v;
            const bool flat = dv2 * du1 - dv1 * du2 == 0;
            const VERTEX t = flat ? e1 : dv2 * e1 - dv1 * e2, b = flat ? e2 : du1 * e2 - du2 * e1;
            out.tangents[std::size_t(ring[k])] = t * MATH_FastSqrtInv(Dot(t, t));
            out.binormals[std::size_t(ring[k])] = b * MATH_FastSqrtInv(Dot(b, b));
        };
        for (int k = 1; k + 1 < e.length; ++k)
            write(k - 1, k, k + 1);
        write(e.length - 1, 0, 1);
        write(e.length - 2, e.length - 1, 0);
    }
    return out;
}

// Texture coordinates for most polygons: few different ones, so that some corners have no area in the texture, and some
// texture polygons of another length.
void AddRandomTexture(GEOM& g, std::mt19937& random)
{
    constexpr int kNumTexVerts = 7;
    g.SetSize(g.numPolys, g.numVerts, int(g.NumCorners()), 0, int(g.NumCorners()) + 2, kNumTexVerts);
    for (int i = 0; i < kNumTexVerts; ++i)
        g.tex->verts[i] = {float(random() % 3), float(random() % 3)};
    for (int c = 0; c < g.tex->numCorners; ++c)
        g.tex->sets[c] = std::int32_t(random() % kNumTexVerts);
    for (int p = 0; p < g.numPolys; ++p)
        g.tex->polys[p] = {g.Poly(p)->start, g.Poly(p)->length + (random() % 5 == 0 ? 1 : 0)};
    g.tex->numPolys -= g.numPolys / 8;
}

// A quad in the plane z = 0, stretched: u runs along x and v along y.
VXGeom& StretchedQuad(VXGeom& geom)
{
    TestMesh quad = Grid(1, 1);
    for (VERTEX& v : quad.verts)
        v = {3 * v.x, 2 * v.y, 0};
    geom.SetGeom(quad.Record().get(), true);
    return geom;
}
} // namespace

TEST(Tangents, FollowTheTexture)
{
    VXGeom geom;
    StretchedQuad(geom);
    ASSERT_EQ(geom.ComputeTangents(), 0);
    for (int v = 0; v < 4; ++v)
    {
        EXPECT_LT(Distance(geom.VertTangents()[v], {1, 0, 0}), 1e-6f) << v;
        EXPECT_LT(Distance(geom.VertBinormals()[v], {0, 1, 0}), 1e-6f) << v;
    }
}

TEST(Tangents, AreThoseOfTheLastCornerThatWrites)
{
    std::mt19937 random(11);
    for (int round = 0; round < 200; ++round)
    {
        const int numVerts = 1 + int(random() % 12);
        const GeomPtr g = RecordOf(numVerts, RandomPolys(random, numVerts, 1 + int(random() % 20)));
        for (int v = 0; v < numVerts; ++v)
            g->verts[v] = {float(random() % 5), float(random() % 5), float(random() % 5)};
        AddRandomTexture(*g, random);
        VXGeom geom;
        geom.SetGenerateCreases(round % 2 == 0);
        ASSERT_EQ(geom.SetGeom(g.get(), true), 0);
        ASSERT_EQ(geom.ComputeTangents(), 0);
        // What a crease vertex has is the default, since the record's own corners are walked.
        EXPECT_EQ(TangentsOf(geom), WrittenOneByOne(*geom.Geom(), geom.NumVerts(true))) << round;
    }
}

TEST(Tangents, WithoutTextureAreTheDefault)
{
    VXGeom geom(Cube().Record().get());
    ASSERT_GT(geom.NumbCreaseVerts(), 0);
    EXPECT_EQ(geom.VertTangents(), nullptr);
    EXPECT_EQ(geom.ComputeTangents(), -1);
    const Tangents expected{std::vector<VERTEX>(24, {1, 0, 0}), std::vector<VERTEX>(24, {0, 1, 0})};
    EXPECT_EQ(TangentsOf(geom), expected);
    geom.SetGeom(nullptr, false);
    EXPECT_EQ(geom.ComputeTangents(), 0);
    EXPECT_EQ(geom.VertTangents(), nullptr);
}

TEST(Tangents, AreFiniteWhateverThePositions)
{
    for (const float odd : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 3e38f})
    {
        VXGeom geom(Torus(9, 6).Record().get());
        for (int v = 0; v < geom.NumVerts(false); v += 5) // taking the record would have mended it
            geom.Vertex(v)->y = odd;
        geom.ComputeAndSavePreMunge();
        for (int v = 0; v < geom.NumVerts(false); ++v)
            for (const VERTEX* const array : {geom.VertTangents(), geom.VertBinormals(), geom.PreMungeNormals(),
                                              geom.PreMungeTangents(), geom.PreMungeBinormals()})
                ASSERT_TRUE(IsFinite(array[v])) << odd << " at " << v;
    }
}

TEST(TangentThread, RunsBesideTheCreasedNormalsWhenAskedFor)
{
    VXGeom geom(Torus(40, 30).Record().get());
    ASSERT_GT(geom.NumbCreaseVerts(), 0);
    geom.ComputeTangents();
    const Tangents expected = TangentsOf(geom);
    const VERTEX* const normals = geom.VertNormals();
    const std::vector<VERTEX> expectedNormals(normals, normals + geom.NumVerts(true));
    const auto wipe = [&] { std::fill_n(geom.VertTangents(), geom.NumVerts(true), VERTEX{7, 7, 7}); };

    struct Case
    {
        bool enabled, requested, argument, computed;
    };
    for (const Case& c : {Case{true, false, false, false},
                          {true, true, false, true},
                          {true, false, true, true},
                          {false, true, true, false}})
    {
        wipe();
        VXEngine::EnableTangentCalculations(c.enabled);
        const VXSwitches::Scoped request(VXSwitches::TangentsRequested, VXSwitches::SetTangentsRequested, c.requested);
        ASSERT_NE(geom.ComputeCreasedNormals(nullptr, nullptr, c.argument), nullptr);
        VXEngine::EnableTangentCalculations(true);
        EXPECT_EQ(TangentsOf(geom) == expected, c.computed);
        EXPECT_EQ(geom.VertTangents()[0] == (VERTEX{7, 7, 7}), !c.computed) << "otherwise they keep their values";
        EXPECT_TRUE(std::equal(expectedNormals.begin(), expectedNormals.end(), geom.VertNormals()));
    }
}

TEST(LocalBases, StandOnTheNormalAndTheNewestEdge)
{
    TestMesh mesh = RoughGrid(5, 4, 1);
    mesh.verts.push_back({9, 9, 9}); // no edge
    VXGeom geom(mesh.Record().get());
    std::vector<BASIS3D> bases(mesh.verts.size());
    geom.ComputeVertLocalBases(bases.data(), true, true);
    for (std::size_t v = 0; v + 1 < bases.size(); ++v)
    {
        const auto& [n, u, w] = bases[v];
        const VXEdgeList& list = geom.EdgeList();
        const VXEdge& edge = list.GetEdge(list.GetEdgefromVertexLink(list.GetFirstVertexLink(int(v))));
        const int other = edge.VertIndex1() == int(v) ? edge.VertIndex2() : edge.VertIndex1();
        EXPECT_EQ(n, *geom.VertNormal(int(v)));
        EXPECT_NEAR(Dot(w, n), 0, 1e-6f);
        EXPECT_NEAR(Dot(w, mesh.verts[std::size_t(other)] - mesh.verts[v]), 0, 1e-5f);
        EXPECT_LT(Distance(u, Cross(n, w)), 1e-6f);
    }
    std::vector<BASIS3D> again(bases.size());
    geom.ComputeVertLocalBases(again.data(), false, false);
    EXPECT_TRUE(std::equal(bases.begin(), bases.end(), again.begin(),
                           [](const BASIS3D& a, const BASIS3D& b) { return a.n == b.n && a.u == b.u && a.w == b.w; }));
    const BASIS3D& lone = bases.back();
    EXPECT_TRUE(lone.n == (VERTEX{1, 0, 0}) && lone.u == (VERTEX{0, 1, 0}) && lone.w == (VERTEX{0, 0, 1}));
}

TEST(TangentSpace, ThereAndBackIsTheIdentity)
{
    VXGeom geom(RoughGrid(6, 3, 0.7f).Record().get());
    VERTEX d{0.25f, -1, 0.5f};
    geom.BasisTransformDeltaFromTangentSpace(0, 2, 2, 2, d);
    EXPECT_EQ(d, (VERTEX{0.25f, -1, 0.5f})) << "without a snapshot nothing happens";

    geom.ComputeAndSavePreMunge();
    for (int v = 0; v < geom.NumVerts(false); ++v)
    {
        VERTEX there = d;
        geom.BasisTransformDeltaFromTangentSpace(v, 2, 0.5f, -3, there);
        const VERTEX expected =
            d.x * geom.PreMungeNormals()[v] + d.y * geom.PreMungeTangents()[v] + d.z * geom.PreMungeBinormals()[v];
        EXPECT_LT(Distance(there, {2 * expected.x, 0.5f * expected.y, -3 * expected.z}), 1e-5f) << v;
        geom.BasisTransformDeltaToTangentSpace(v, 2, 0.5f, -3, there);
        EXPECT_LT(Distance(there, d), 1e-4f) << v;
    }
    VERTEX flat[] = {{1, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    geom.SetPreMungeNormals(&flat[0]);
    geom.SetPreMungeTangents(&flat[1]);
    geom.SetPreMungeBinormals(&flat[2]);
    geom.BasisTransformDeltaToTangentSpace(0, 1, 1, 1, d);
    EXPECT_EQ(d, VERTEX{}) << "a flat frame";
}
