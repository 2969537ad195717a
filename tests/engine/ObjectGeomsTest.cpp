#include "engine/VXObject.h"
#include "engine/VXObjectDelegate.h"
#include "engine/VXScene.h"
#include "mesh/VXGeom.h"
#include "tests/support/Meshes.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{
struct CountedGeom : VXGeom
{
    explicit CountedGeom(int& count) : deaths(count) {}
    ~CountedGeom() override { ++deaths; }
    int& deaths;
};

std::unique_ptr<VXGeom> GeomOf(const TestMesh& mesh)
{
    const GeomPtr record = mesh.Record();
    return std::make_unique<VXGeom>(record.get());
}
} // namespace

TEST(ObjectGeoms, ABorrowedMeshIsNeverDeleted)
{
    int deaths = 0;
    CountedGeom first(deaths), second(deaths);
    {
        VXObject object;
        EXPECT_EQ(object.SetGeom(&first, false), 0);
        object.SetChanged(false);
        EXPECT_EQ(object.SetGeom(&first, false), 0); // attached already
        EXPECT_FALSE(object.Changed());
        EXPECT_EQ(object.SetGeom(&second, false), 0);
        EXPECT_TRUE(object.Changed());
        EXPECT_EQ(object.Geom(), &second);
        EXPECT_EQ(object.SetGeom(nullptr, false), 0);
        EXPECT_EQ(object.SetGeom(&first, false), 0);
    }
    EXPECT_EQ(deaths, 0);
}

TEST(ObjectGeoms, AClonedMeshIsOwnedAndApart)
{
    const auto cube = GeomOf(Cube());
    VXObject object; // the leak checker sees to the clones
    EXPECT_EQ(object.SetGeom(cube.get(), true), 0);
    ASSERT_NE(object.Geom(), cube.get());
    EXPECT_FALSE(object.GeomBorrowed());
    EXPECT_EQ(object.Geom()->NumPolys(), 6);
    object.Geom()->Verts()[0].x = 42;
    EXPECT_NE(cube->Verts()[0].x, 42);
    EXPECT_EQ(object.SetGeom(cube.get(), true), 0); // deletes the first clone
    EXPECT_EQ(object.SetGeom(nullptr, true), 0);
    EXPECT_EQ(object.Geom(), nullptr);
}

TEST(ObjectGeoms, SubdivisionMeshesAreAlwaysOwned)
{
    int deaths = 0;
    VXScene scene;
    {
        VXObject object;
        CountedGeom* const geom = new CountedGeom(deaths);
        scene.SetChanged(false);
        EXPECT_EQ(object.SetSubdivGeom(0, geom), 0);
        EXPECT_TRUE(scene.Changed());
        scene.SetChanged(false);
        object.SetSubdivGeom(0, geom); // the same one: nothing
        EXPECT_FALSE(scene.Changed());
        EXPECT_EQ(deaths, 0);
        object.SetSubdivGeom(0, new CountedGeom(deaths));
        EXPECT_EQ(deaths, 1);
        EXPECT_EQ(object.SubdivGeom(-1), nullptr);
        EXPECT_EQ(object.SubdivGeom(1), nullptr);
        object.ClearSubdivStructures();
        EXPECT_EQ(deaths, 2);
        EXPECT_EQ(object.NumSubdivGeoms(), 0);
    }
    EXPECT_EQ(deaths, 2);
}

TEST(ObjectGeoms, WhatIsDrawnFollowsLevelAndVisibility)
{
    struct Row
    {
        int level;
        bool control, surface;           // visible in the scene
        bool drawsSurface, drawsControl; // draw geometries 0 and 1
        bool linesOnlySurface, linesOnlyControl;
    };
    const auto cube = GeomOf(Cube());
    for (const Row& row : {
             Row{0, true, true, false, true, false, false},
             {0, false, true, false, false, false, false},
             {0, true, false, false, true, false, false},
             {1, true, true, true, true, false, true},
             {1, false, true, true, false, false, true},
             {1, true, false, false, true, false, false}, // the control mesh alone is shown filled
             {1, false, false, false, false, false, true},
             {2, true, true, false, true, false, false}, // a level that nobody has built
         })
    {
        VXScene scene;
        VXObject object;
        object.SetGeom(cube.get(), false);
        object.SetCurSubDivLevel(1);
        object.RebuildSubDiv();
        object.SetCurSubDivLevel(row.level);
        scene.SetControlMeshVisible(row.control);
        scene.SetSurfaceVisible(row.surface);
        SCOPED_TRACE(testing::Message() << row.level << row.control << row.surface);
        EXPECT_EQ(object.DrawGeom(kDrawGeomSurface), row.drawsSurface ? object.SubdivGeom(1) : nullptr);
        EXPECT_EQ(object.DrawGeom(kDrawGeomControl), row.drawsControl ? cube.get() : nullptr);
        EXPECT_EQ(object.DrawGeom(E_DrawGeom(2)), cube.get());
        EXPECT_EQ(object.WantsLinesOnly(kDrawGeomSurface), row.linesOnlySurface);
        EXPECT_EQ(object.WantsLinesOnly(kDrawGeomControl), row.linesOnlyControl);
        EXPECT_EQ(object.CurSubdivGeom(true), row.level == 0 ? cube.get() : object.SubdivGeom(row.level));
        EXPECT_EQ(object.CurSubdivGeom(false), object.SubdivGeom(row.level));
    }
}

TEST(ObjectGeoms, AnotherLevelIsAChange)
{
    VXObject object;
    object.SetCurSubDivLevel(0);
    EXPECT_FALSE(object.Changed());
    object.SetCurSubDivLevel(2);
    EXPECT_TRUE(object.Changed());
}

TEST(ObjectGeoms, BoundsAreThoseOfTheControlMesh)
{
    VXObject object;
    float b[9];
    const auto bounds = [&] { return object.GetBounds(b, b + 1, b + 2, b + 3, b + 4, b + 5, b + 6, b + 7, b + 8); };
    EXPECT_FALSE(bounds());
    const auto cube = GeomOf(Moved(Cube(), {1, 2, 3}));
    object.SetGeom(cube.get(), false);
    ASSERT_TRUE(bounds());
    const float expected[9] = {0, 1, 2, 2, 3, 4, 1, 2, 3}; // min, max, centre
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(b[i], expected[i]) << i;
}

TEST(ObjectGeoms, CreaseEdgesForACallerArePreparedLikeForDrawing)
{
    struct Refusing : VXObjectDelegate
    {
        int answer = 0, prepared = 0, ended = 0;
        int PrepareForDrawing(VXObject*) override
        {
            ++prepared;
            return answer;
        }
        int EndPrepareForDrawing(VXObject*) override
        {
            ++ended;
            return 0;
        }
    } delegate;
    VXObject object;
    EXPECT_TRUE(object.PrepareCreaseEdgesFromDisplayList(nullptr)); // no mesh
    const auto cube = GeomOf(Cube());
    object.SetGeom(cube.get(), false);
    object.SetDelegate(&delegate);
    EXPECT_TRUE(object.PrepareCreaseEdgesFromDisplayList(nullptr));
    EXPECT_GT(cube->NumbCreaseVerts(), 0);
    delegate.answer = 1;
    EXPECT_TRUE(object.PrepareCreaseEdgesFromDisplayList(nullptr));
    EXPECT_EQ(cube->NumbCreaseVerts(), 0); // refused after the old creases were dropped
    EXPECT_EQ(delegate.prepared, 2);
    EXPECT_EQ(delegate.ended, 2);
    object.PrepareForDrawing();
    EXPECT_TRUE(object.PrepareCreaseEdgesFromDisplayList(nullptr)); // prepared already: not asked again
    EXPECT_GT(cube->NumbCreaseVerts(), 0);
    object.EndDrawing();
    EXPECT_EQ(delegate.prepared, 3);
    EXPECT_EQ(object.PreparationDepth(), 0);
}
