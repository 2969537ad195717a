#include "engine/VXObject.h"
#include "engine/VXObjectDelegate.h"
#include "engine/VXScene.h"
#include "mesh/VXGeom.h"
#include "tests/support/Meshes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
struct Listener : VXObjectDelegate
{
    std::vector<std::string> heard;
    int answer = 0;
    int PrepareForDrawing(VXObject*) override { return Hear("draw"); }
    int EndPrepareForDrawing(VXObject*) override { return Hear("end draw"); }
    int PrepareForPicking(VXObject*) override { return Hear("pick"); }
    int EndPrepareForPicking(VXObject*) override { return Hear("end pick"); }
    int Hear(const char* what)
    {
        heard.push_back(what);
        return answer;
    }
};
using Heard = std::vector<std::string>;
} // namespace

TEST(Object, NestedPreparationsReachTheDelegateOnce)
{
    VXObject object;
    Listener listener;
    object.SetDelegate(&listener);
    listener.answer = 7;
    EXPECT_EQ(object.PrepareForDrawing(), 7);
    EXPECT_EQ(object.PrepareForDrawing(), 0);
    EXPECT_EQ(object.PrepareForPicking(), 0);
    object.EndPicking();
    object.EndDrawing();
    EXPECT_EQ(listener.heard, Heard{"draw"});
    object.EndDrawing();
    EXPECT_EQ(listener.heard, (Heard{"draw", "end draw"}));

    listener.heard.clear();
    EXPECT_EQ(object.PrepareForPicking(), 7);
    object.EndPicking();
    EXPECT_EQ(listener.heard, (Heard{"pick", "end pick"}));
    EXPECT_EQ(object.PreparationDepth(), 0);
}

TEST(Object, SetChangedMakesListsAndSilhouetteStaleAndTellsTheScene)
{
    VXScene scene;
    VXObject object;
    for (const int geom : {0, 1})
    {
        object.SetPolyDisplayListID(10 + std::uint32_t(geom), geom);
        object.SetLineDisplayListID(20 + std::uint32_t(geom), geom);
        object.SetPolyDisplayListReady(true, geom);
        object.SetLineDisplayListReady(true, geom);
    }
    scene.SetChanged(false);
    scene.SetNeedsShadowRedraw(false);
    object.SetChanged(true);
    EXPECT_TRUE(object.Changed());
    EXPECT_TRUE(object.SilhouetteDirty());
    EXPECT_TRUE(scene.Changed());
    EXPECT_TRUE(scene.NeedsShadowRedraw());
    for (const int geom : {0, 1})
    {
        EXPECT_FALSE(object.PolyDisplayListReady(geom));
        EXPECT_FALSE(object.LineDisplayListReady(geom));
        EXPECT_EQ(object.PolyDisplayListID(geom), 10u + std::uint32_t(geom));
        EXPECT_EQ(object.LineDisplayListID(geom), 20u + std::uint32_t(geom));
    }
    object.SetChanged(false);
    EXPECT_FALSE(object.Changed());
    EXPECT_TRUE(object.SilhouetteDirty());
    EXPECT_TRUE(scene.Changed());
}

TEST(Object, DisplayListsOfOtherGeometriesAreIgnored)
{
    VXObject object;
    for (const int geom : {-1, 2})
    {
        object.SetPolyDisplayListID(5, geom);
        object.SetLineDisplayListReady(true, geom);
        EXPECT_EQ(object.PolyDisplayListID(geom), 0u);
        EXPECT_FALSE(object.LineDisplayListReady(geom));
    }
    EXPECT_EQ(object.PolyDisplayListID(0) + object.PolyDisplayListID(1), 0u);
}

TEST(Object, SwitchingZBufferEdgesOffDropsAllOtherFlags)
{
    for (const bool on : {true, false})
    {
        VXObject object; // visible, subdivision dirty
        object.SetCastsShadow(true);
        object.SetIgnoreZBufferEdges(true);
        EXPECT_EQ(object.Flags(), 0x42Au);
        object.SetIgnoreZBufferEdges(on);
        EXPECT_EQ(object.Flags(), on ? 0x42Au : 0x020u);
    }
    VXObject without;
    without.SetIgnoreZBufferEdges(false);
    EXPECT_EQ(without.Flags(), 0u);
}

TEST(Object, IsolationHidesAllOthers)
{
    VXObject shown, other;
    EXPECT_TRUE(other.Visible()); // no scene, no isolation
    VXScene scene;
    scene.SetIsolationObject(&shown);
    EXPECT_TRUE(shown.Visible());
    EXPECT_FALSE(other.Visible());
    shown.SetVisible(false);
    EXPECT_FALSE(shown.Visible());
    scene.SetIsolationObject(nullptr);
    EXPECT_TRUE(other.Visible());
}

TEST(Object, InheritsItsStyleFromTheSceneAtFirst)
{
    const VXObject object;
    EXPECT_EQ(object.DefaultMaterial()->Flags(), 0x14001Du); // smooth-lined, and inheriting from scene and object
    EXPECT_EQ(object.NumSubdivGeoms(), 1);
    EXPECT_EQ(object.SubdivGeom(0), nullptr);
}

TEST(Object, SilhouetteOfACubeSeenFrontOnIsItsFrontSquare)
{
    VXScene scene;
    const GeomPtr record = Cube().Record();
    VXGeom cube(record.get());
    VXObject object;
    object.SetGeom(&cube, false);
    Mat44 turned, view;
    MAT_Identity(turned);
    MAT_Translate(turned, 3, 0, 0); // the object's place and the view both count
    object.SetTransform(turned);
    MAT_Identity(view);
    MAT_Translate(view, -3, 0, -10);
    object.ComputeSilhouette(view);
    EXPECT_FALSE(object.SilhouetteDirty());
    ASSERT_EQ(object.SilhouetteEdges().Count(), 4);
    for (const int index : object.SilhouetteEdges())
    {
        const VXEdge& edge = cube.EdgeList().GetEdge(index);
        EXPECT_EQ(cube.Vertex(edge.VertIndex1())->z, 1); // only the front face looks at an eye this far ahead of it
        EXPECT_EQ(cube.Vertex(edge.VertIndex2())->z, 1);
    }
}

TEST(Object, SilhouetteTakesOpenEdgesThatFaceTheViewer)
{
    VXScene scene;
    const GeomPtr record = Grid(1, 1).Record();
    VXGeom quad(record.get());
    VXObject object;
    object.SetGeom(&quad, false);
    Mat44 view;
    MAT_Identity(view);
    MAT_Translate(view, 0, 0, -10);
    object.ComputeSilhouette(view);
    const std::int64_t front = object.SilhouetteEdges().Count();
    MAT_Identity(view);
    MAT_Translate(view, 0, 0, 10); // from behind
    object.ComputeSilhouette(view);
    const std::int64_t back = object.SilhouetteEdges().Count();
    EXPECT_EQ(front, 4);
    EXPECT_EQ(back, 0);
}

TEST(Object, SilhouetteNeedsASceneAndAMesh)
{
    Mat44 view;
    MAT_Identity(view);
    VXObject object;
    object.SetSilhouetteDirty(true);
    object.ComputeSilhouette(view);
    const GeomPtr record = Cube().Record();
    VXGeom cube(record.get());
    object.SetGeom(&cube, false);
    object.ComputeSilhouette(view); // no scene
    EXPECT_TRUE(object.SilhouetteDirty());
}
