#include "base/MEM.h"
#include "engine/VXEngine.h"
#include "engine/VXSwitches.h"
#include "mesh/kernel/Tangents.h"
#include "tests/support/EdgeMeshes.h"

#include <gtest/gtest.h>

#include <thread>

namespace
{
constexpr VERTEX kX{1, 0, 0}, kY{0, 1, 0}, kZ{0, 0, 1};

bool Parallel(const VERTEX& a, const VERTEX& b) { return std::fabs(std::fabs(Dot(a, b)) - 1) <= 0.000001f; }

void ExpectUsable(const VERTEX& n, const VERTEX& t, const VERTEX& b)
{
    EXPECT_NEAR(Length(t), 1, 1e-5f);
    EXPECT_NEAR(Length(b), 1, 1e-5f);
    EXPECT_FALSE(Parallel(n, t) || Parallel(n, b) || Parallel(t, b));
}

} // namespace

TEST(FrameRepair, LeavesAUsableFrameWhateverWasParallel)
{
    struct Case
    {
        const char* name;
        VERTEX n, t, b, expectedT, expectedB;
    };
    // Two directions that are parallel to x within the tolerance, but not to each other.
    const VERTEX aside{0.99999905f, 0.0013784f, 0}, aside2{0.99999905f, -0.0013784f, 0};
    const Case cases[] = {
        {"nothing", kZ, kX, kY, kX, kY},
        {"skewed but sound", kZ, kX, {0.6f, 0.8f, 0}, kX, {0.6f, 0.8f, 0}},
        {"normal and tangent", kZ, kZ, kY, kX, kY},
        {"normal and tangent, opposite", kZ, -kZ, kX, -kY, kX},
        {"normal and binormal", kZ, kX, kZ, kX, kY},
        {"tangent and binormal", kZ, kX, kX, kX, kY},
        {"tangent and binormal, opposite", kZ, kX, -kX, kX, kY},
        {"all three", kX, kX, kX, -kZ, kY},
        {"all three along z", kZ, kZ, -kZ, kX, kY},
        {"two pairs at the normal", kX, aside, aside2, -kZ, kY},
        {"two pairs at the tangent", aside, kX, aside2, -kZ, {-0.0013784f, 0.99999905f, 0}},
        {"two pairs at the binormal", aside, aside2, kX, -kZ, {-0.0013784f, 0.99999905f, 0}},
        {"short axes of a tiny mesh", kZ, {0, 0, 0.9f}, {0, 0.8f, 0}, kX, kY},
        {"no tangent", kZ, {}, kY, kX, kY},
        {"no binormal", kZ, kX, {}, kX, kY},
        {"neither", kX, {}, {}, -kZ, kY},
    };
    for (Case c : cases)
    {
        SCOPED_TRACE(c.name);
        vx::RepairFrames({&c.n, 1}, {&c.t, 1}, {&c.b, 1});
        EXPECT_LT(Distance(c.t, c.expectedT), 1e-6f) << c.t.x << " " << c.t.y << " " << c.t.z;
        EXPECT_LT(Distance(c.b, c.expectedB), 1e-6f) << c.b.x << " " << c.b.y << " " << c.b.z;
        ExpectUsable(c.n, c.t, c.b);
    }
}

TEST(FrameRepair, BuildsNothingOnAZeroNormal)
{
    VERTEX n, t, b;
    vx::RepairFrames({&n, 1}, {&t, 1}, {&b, 1});
    EXPECT_TRUE(n == VERTEX{} && t == VERTEX{} && b == VERTEX{});
}

TEST(Snapshot, HasUsableFramesOnEveryMesh)
{
    TestMesh flatTexture = Torus(9, 6); // all coordinates on a line
    for (T_VERTEX& uv : flatTexture.uvs)
        uv.v = uv.u;
    for (const TestMesh& mesh :
         {Cube(), OpenBox(), Grid(3, 3), Torus(9, 6), flatTexture, Sliver(), MoebiusStrip(9), RoughGrid(6, 2, 1, true)})
        for (const bool creases : {false, true})
            for (const bool pending : {false, true})
            {
                SCOPED_TRACE(mesh.name + (creases ? ", creased" : "") + (pending ? ", pending" : ""));
                VXGeom geom;
                geom.SetGenerateCreases(creases);
                ASSERT_EQ(geom.SetGeom(mesh.Record().get(), true), 0);
                if (pending)
                    geom.BuildEdgeList(); // drops the creases: the pass makes them anew
                geom.ComputeAndSavePreMunge();
                ASSERT_TRUE(geom.PreMungeNormals() && geom.PreMungeTangents() && geom.PreMungeBinormals());
                for (int v = 0; v < geom.NumVerts(false); ++v)
                {
                    EXPECT_EQ(geom.PreMungeVerts()[v], *geom.Vertex(v));
                    EXPECT_EQ(geom.PreMungeNormals()[v], *geom.VertNormal(v));
                    if (Length(geom.PreMungeNormals()[v]) > 0)
                        ExpectUsable(geom.PreMungeNormals()[v], geom.PreMungeTangents()[v],
                                     geom.PreMungeBinormals()[v]);
                }
            }
}

TEST(Snapshot, TakesWhatIsThere)
{
    VXGeom geom(Cube().Record().get());
    geom.SavePreMunge();
    ASSERT_EQ(MEM_Count(geom.PreMungeTangents()), 8u);
    EXPECT_EQ(geom.PreMungeVerts()[3], *geom.Vertex(3));
    EXPECT_EQ(geom.PreMungeTangents()[3], VERTEX{}) << "no tangents yet";

    VXEngine::EnableTangentCalculations(false);
    geom.ComputeAndSavePreMunge();
    VXEngine::EnableTangentCalculations(true);
    EXPECT_EQ(geom.VertTangents(), nullptr) << "the engine's switch holds here too";

    // The host's normals do not keep the tangents away, crease vertices or not.
    ASSERT_GT(geom.NumbCreaseVerts(), 0);
    std::vector<VERTEX> normals(geom.VertNormals(), geom.VertNormals() + geom.NumVerts(true));
    geom.SetUseExternalNormals(true);
    geom.SetExternalVertexNormals(normals.data());
    for (const bool requested : {false, true})
    {
        const VXSwitches::Scoped request(VXSwitches::TangentsRequested, VXSwitches::SetTangentsRequested, requested);
        geom.ComputeAndSavePreMunge();
        EXPECT_EQ(VXSwitches::TangentsRequested(), requested) << "it is as it was";
    }
    ExpectUsable(geom.PreMungeNormals()[3], geom.PreMungeTangents()[3], geom.PreMungeBinormals()[3]);
    geom.SetUseExternalNormals(false);
    geom.ComputeAllNormals();

    // Posing moves the mesh and leaves the snapshot; the host's own arrays stay the host's.
    const VERTEX rest = geom.PreMungeVerts()[0];
    geom.Vertex(0)->x += 5;
    EXPECT_EQ(geom.PreMungeVerts()[0], rest);
    VERTEX hosts[8] = {};
    geom.SetPreMungeVerts(hosts);
    EXPECT_EQ(geom.PreMungeVerts(), hosts);
    geom.SavePreMunge();
    EXPECT_NE(geom.PreMungeVerts(), hosts);
    EXPECT_EQ(geom.PreMungeVerts()[0], *geom.Vertex(0));
    geom.SetPreMungeNormals(hosts);
    geom.SetGeom(nullptr, false);
    EXPECT_EQ(geom.PreMungeVerts(), nullptr) << "a snapshot belongs to its record";
    EXPECT_EQ(geom.PreMungeNormals(), hosts);
}

TEST(Snapshot, SurvivesEveryAllocationThatFails)
{
    for (int n = 1; n < 200; ++n)
    {
        VXGeom geom(Torus(9, 6).Record().get());
        geom.BuildEdgeList();
        MEM_SetAllocationFailed(false);
        MEM_FailAfter(n);
        geom.ComputeAndSavePreMunge();
        const bool failed = MEM_AllocationFailed();
        MEM_FailAfter(0);
        MEM_SetAllocationFailed(false);
        EXPECT_FALSE(VXSwitches::TangentsRequested());
        for (const VERTEX* const part :
             {geom.PreMungeVerts(), geom.PreMungeNormals(), geom.PreMungeTangents(), geom.PreMungeBinormals()})
            EXPECT_TRUE(!part || MEM_Count(part) == std::size_t(geom.NumVerts(false))) << n;
        if (!failed && geom.NumbCreaseVerts() > 0)
        {
            ExpectUsable(geom.PreMungeNormals()[0], geom.PreMungeTangents()[0], geom.PreMungeBinormals()[0]);
            return; // past the last one
        }
    }
    FAIL() << "it never succeeded";
}

TEST(TemporaryVerts, TwoThreadsTakeTurns)
{
    VXGeom geom(Torus(20, 10).Record().get());
    const int count = geom.NumVerts(true);
    VERTEX* const own = geom.Verts();
    int mixed[2] = {};
    const auto pose = [&](int me)
    {
        std::vector<VERTEX> mine(std::size_t(count), VERTEX{float(me), 0, 0});
        for (int round = 0; round < 300; ++round)
        {
            geom.SetTemporaryVertArray(mine.data());
            for (int v = 0; v < count; ++v)
                mixed[me] += geom.Verts()[v].x != float(me);
            geom.RestoreOrigVertArray();
        }
    };
    std::thread other(pose, 1);
    pose(0);
    other.join();
    EXPECT_EQ(mixed[0], 0);
    EXPECT_EQ(mixed[1], 0);
    EXPECT_EQ(geom.Verts(), own);
}

TEST(ClosestEdge, IsTheFirstOfTheNearestThatAreNotFlagged)
{
    VXGeom geom(Cube().Record().get());
    const VERTEX point{0.125f, 2, 3}; // nearest to the middle of the edge between top and front
    const auto middle = [&](int e)
    {
        const VXEdge& edge = geom.EdgeList().GetEdge(e);
        return 0.5f * (*geom.Vertex(edge.VertIndex1()) + *geom.Vertex(edge.VertIndex2()));
    };
    float last = 0;
    for (int found = 0; found < 12; ++found) // from the nearest to the farthest
    {
        const int e = geom.FindClosestUnflaggedEdge(&point);
        ASSERT_GE(e, 0);
        const float distance = Distance(middle(e), point);
        EXPECT_GE(distance, last);
        for (int other = 0; other < 12; ++other)
        {
            const float theirs = Distance(middle(other), point);
            const bool flagged = geom.EdgeList().GetEdge(other).IsAppFlagged();
            EXPECT_TRUE(flagged || theirs > distance || (theirs == distance && other >= e)) << other;
        }
        last = distance;
        geom.EdgeList().GetEdge(e).SetAppFlagged(true);
    }
    EXPECT_EQ(geom.FindClosestUnflaggedEdge(&point), -1);
    geom.EdgeList().GetEdge(0).SetAppFlagged(false);
    const VERTEX faraway{2e6f, 0, 0};
    EXPECT_EQ(geom.FindClosestUnflaggedEdge(&faraway), -1) << "further than the search begins with";
    EXPECT_EQ(geom.FindClosestUnflaggedEdge(nullptr), -1);
}
