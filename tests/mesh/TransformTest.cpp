#include "mesh/VXGeom.h"
#include "tests/support/Meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

namespace
{
/// A cube at a corner of the origin, with a crease vertex for nearly every corner.
VXGeom* MovedCube()
{
    auto* const geom = new VXGeom(Moved(Cube(), {5, 3, 1}).Record().get());
    EXPECT_GT(geom->NumbCreaseVerts(), 0);
    return geom;
}

void ExpectCreaseVertsFollow(const VXGeom& geom)
{
    for (int i = geom.NumVerts(false); i < geom.NumVerts(true); ++i)
        EXPECT_EQ(*geom.Vertex(i), *geom.Vertex(geom.OrigVertIndex(i))) << i;
}
} // namespace

TEST(GeomTransforms, TransformFillsItsOwnArrayCreaseVerticesIncluded)
{
    const std::unique_ptr<VXGeom> geom(MovedCube());
    const std::vector<VERTEX> before(geom->Verts(), geom->Verts() + geom->NumVerts(true));
    Mat44 m;
    MAT_Identity(m);
    MAT_Translate(m, 1, 2, 4);
    MAT_Scale(m, 2, 2, 2); // after the translation
    geom->Transform(m);
    ASSERT_EQ(MEM_Count(geom->TransformedVerts()), before.size());
    for (std::size_t i = 0; i < before.size(); ++i)
    {
        EXPECT_EQ(geom->Verts()[i], before[i]);
        EXPECT_EQ(geom->TransformedVerts()[i], (before[i] + VERTEX{1, 2, 4}) * 2);
    }
    VXGeom none;
    none.Transform(m);
    EXPECT_EQ(MEM_Count(none.TransformedVerts()), 0u);
}

TEST(GeomTransforms, CenterAndScaleMoveTheRecordAndItsCreaseVertices)
{
    const std::unique_ptr<VXGeom> geom(MovedCube());
    geom->Center();
    EXPECT_TRUE(geom->GeomChanged());
    EXPECT_EQ(*geom->Vertex(0), (VERTEX{-1, -1, -1}));
    ExpectCreaseVertsFollow(*geom);

    geom->SetGeomChanged(false);
    geom->Scale(-3);
    EXPECT_TRUE(geom->GeomChanged());
    EXPECT_EQ(*geom->Vertex(0), (VERTEX{3, 3, 3}));
    ExpectCreaseVertsFollow(*geom);

    VXGeom none;
    none.Center();
    none.Scale(2);
    EXPECT_FALSE(none.GeomChanged());
}

TEST(GeomTransforms, BoundsAreZeroWithoutARecordAndSkipNullOutputs)
{
    float b[9];
    std::fill(b, b + 9, 99.0f);
    EXPECT_FALSE(VXGeom().GetBounds(b, b + 1, b + 2, b + 3, b + 4, b + 5, b + 6, b + 7, b + 8));
    for (const float value : b)
        EXPECT_EQ(value, 0);
    EXPECT_FALSE(VXGeom().GetBounds(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));

    const std::unique_ptr<VXGeom> geom(MovedCube());
    EXPECT_TRUE(geom->GetBounds(b, b + 1, b + 2, b + 3, b + 4, b + 5, b + 6, b + 7, nullptr));
    const float expected[9] = {4, 2, 0, 6, 4, 2, 5, 3, 0};
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(b[i], expected[i]) << i;
}

TEST(TemporaryVerts, StandInUntilTheFirstRestore)
{
    const GeomPtr record = Cube().Record();
    VXGeom geom(record.get());
    VERTEX* const own = geom.Verts();
    std::vector<VERTEX> first(std::size_t(geom.NumVerts(true))), second(first.size());

    const auto lockedOut = [&]
    {
        bool locked = true;
        std::thread(
            [&]
            {
                locked = geom.Geom()->accessMutex.TryLock();
                if (locked)
                    geom.Geom()->accessMutex.Unlock();
            })
            .join();
        return !locked;
    };

    geom.SetTemporaryVertArray(first.data());
    EXPECT_EQ(geom.Vertex(1), &first[1]);
    geom.SetTemporaryVertArray(second.data());
    EXPECT_EQ(geom.Vertex(1), &second[1]);
    EXPECT_TRUE(lockedOut());
    geom.RestoreOrigVertArray();
    EXPECT_EQ(geom.Verts(), own) << "the first saved array comes back at once";
    EXPECT_TRUE(lockedOut()) << "the outer pair still holds the record";
    geom.RestoreOrigVertArray();
    EXPECT_EQ(geom.Verts(), own);
    EXPECT_FALSE(lockedOut());
    geom.RestoreOrigVertArray(); // unpaired: nothing to do
    EXPECT_EQ(geom.Verts(), own);
}

// The stand-ins are on the stack, so a record that frees or empties one of them does not go unnoticed.
TEST(TemporaryVerts, AreNeverTakenForTheRecordsOwn)
{
    VERTEX mine[40];
    {
        VXGeom geom(Cube().Record().get());
        geom.SetTemporaryVertArray(mine);
        geom.Empty();
        EXPECT_EQ(geom.NumVerts(true), 0);
        geom.RestoreOrigVertArray();
        geom.SetTemporaryVertArray(mine); // a record without vertices
        geom.RestoreOrigVertArray();
        EXPECT_NE(geom.Verts(), mine);
    }
    VXGeom geom(Cube().Record().get());
    geom.SetTemporaryVertArray(mine);
    geom.SetGeom(nullptr, false);
    EXPECT_EQ(geom.Verts(), nullptr);
}

TEST(Weld, MergesVerticesAndDerivesEverythingAnew)
{
    // Six quads with four vertices each: the cube as an exporter without shared vertices writes it.
    TestMesh loose = Cube();
    std::vector<VERTEX> verts;
    for (std::vector<int>& face : loose.faces)
        for (int& corner : face)
        {
            verts.push_back(loose.verts[std::size_t(corner)]);
            corner = int(verts.size()) - 1;
        }
    loose.verts = verts;
    VXGeom geom(loose.Record().get());
    ASSERT_EQ(geom.EdgeList().GetEdgeCount(), 24);
    geom.SortGeomData();

    const float before = GEOM_WeldTolerance();
    geom.Weld(0.125f);
    EXPECT_EQ(GEOM_WeldTolerance(), 0.125f) << "it stays set";
    GEOM_SetWeldTolerance(before);
    EXPECT_EQ(geom.NumVerts(false), 8);
    EXPECT_EQ(geom.NumPolys(), 6);
    EXPECT_EQ(geom.EdgeList().GetEdgeCount(), 12);
    for (int i = 0; i < 12; ++i)
        EXPECT_FALSE(geom.EdgeList().GetEdge(i).IsOpenEdge());
    EXPECT_TRUE(geom.GeomChanged());
    EXPECT_FALSE(geom.DataSorted());
    ASSERT_EQ(MEM_Count(geom.VertNormals()), std::size_t(geom.NumVerts(true)));
}

TEST(Weld, MergesCopiesAloneAtAToleranceThatIsNone)
{
    const float before = GEOM_WeldTolerance();
    TestMesh pair{
        "pair", {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 0, 0}, {2, 0, 0}, {1.01f, 1, 0}}, {{0, 1, 2}, {3, 4, 5}}};
    for (const float tolerance : {0.0f, -1.0f, std::numeric_limits<float>::quiet_NaN()})
    {
        VXGeom geom(pair.Record().get());
        geom.SavePreMunge();
        geom.Weld(tolerance);
        EXPECT_EQ(geom.NumVerts(false), 5) << tolerance;
        EXPECT_EQ(geom.PreMungeVerts(), nullptr) << "the snapshot was of other vertices";
    }
    VXGeom geom(pair.Record().get());
    MEM_FailAfter(1);
    geom.Weld(1);
    MEM_FailAfter(0);
    EXPECT_EQ(geom.NumVerts(false), 6) << "without memory nothing changes";
    VERTEX mine[8] = {};
    geom.SetTemporaryVertArray(mine);
    geom.Weld(1);
    geom.RestoreOrigVertArray();
    EXPECT_EQ(geom.NumVerts(false), 6) << "nor while a temporary array stands in";
    GEOM_SetWeldTolerance(before);
}

TEST(RefPoints, AreReplacedByAsManyAsGiven)
{
    const VERTEX points[] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    const float floats[] = {9, 8, 7, 6, 5, 4};
    VXGeom geom;
    geom.FillRefPoints(points, 3);
    ASSERT_EQ(geom.RefPoints().Count(), 3);
    EXPECT_EQ(geom.RefPoints()[2], points[2]);
    geom.FillRefPointsFromFloatBuffer(floats, 2);
    ASSERT_EQ(geom.RefPoints().Count(), 2);
    EXPECT_EQ(geom.RefPoints()[1], (VERTEX{6, 5, 4}));
    geom.FillRefPoints(nullptr, 4);
    ASSERT_EQ(geom.RefPoints().Count(), 4);
    EXPECT_EQ(geom.RefPoints()[3], VERTEX());
    geom.FillRefPoints(points, -1);
    EXPECT_EQ(geom.RefPoints().Count(), 0);
}
