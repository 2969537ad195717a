#include "base/BThread.h"
#include "engine/VXCamera.h"
#include "engine/VXLight.h"
#include "engine/VXObjectDelegate.h"
#include "engine/VXScene.h"
#include "engine/VXSceneDelegate.h"
#include "mesh/VXGeom.h"
#include "tests/support/DrawEngineDouble.h"
#include "tests/support/Meshes.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace
{
using Log = std::vector<std::string>;

struct LoggingDelegate : VXObjectDelegate
{
    LoggingDelegate(Log& l, std::string n, int a = 0) : log(l), name(std::move(n)), answer(a) {}
    int PrepareForDrawing(VXObject*) override
    {
        log.push_back("prepare " + name);
        return answer;
    }
    int EndPrepareForDrawing(VXObject*) override
    {
        log.push_back("end " + name);
        return 0;
    }
    Log& log;
    std::string name;
    int answer;
};

struct SwitchedDelegate : VXSceneDelegate
{
    bool off = false;
    bool RedrawOff() override { return off; }
};

// A scene with two objects, a light, both procs and a draw engine that write down what happens to them.
struct LoggedScene
{
    LoggedScene()
    {
        VXObject* const a = new VXObject;
        VXObject* const b = new VXObject;
        a->SetDelegate(&first);
        b->SetDelegate(&second);
        b->SetVisible(false); // prepared all the same
        scene.AddObject(a);
        scene.AddObject(b);
        scene.AddLight(light);
        scene.SetPrepareProc(
            [](VXScene*, void* data)
            {
                static_cast<LoggedScene*>(data)->log.push_back("prepare proc");
                return 0; // a frame goes on whatever the proc answers
            },
            this);
        current = this;
        scene.SetEndProc(
            [](VXScene*, void* data)
            {
                current->log.push_back(data == current ? "end proc" : "end proc with other data");
                return 0;
            },
            &unrelated);
        engine.onFrame = [this](VXScene* drawn)
        {
            log.push_back(drawn == &scene ? "draw" : "draw another");
            log.push_back(scene.Changed() ? "scene changed" : "scene clean");
            log.push_back(light->Changed() ? "light changed" : "light clean");
        };
        scene.SetDrawEngine(&engine);
        scene.SetChanged(true);
        light->SetChanged(true);
        MAT_Identity(view);
    }

    Log log;
    LoggingDelegate first{log, "a"}, second{log, "b"};
    DrawEngineDouble engine;
    VXScene scene;
    VXLight* light = new VXLight;
    int unrelated = 0; ///< the end proc's own data, which it never sees
    static inline LoggedScene* current = nullptr;
    Mat44 view;
};

const Log kWholeFrame = {"prepare proc", "prepare a",   "end a",       "prepare b", "end b",
                         "draw",         "scene clean", "light clean", "end proc"};

VXObject* NewObject(const TestMesh& mesh)
{
    const GeomPtr record = mesh.Record();
    VXGeom source(record.get());
    VXObject* const object = new VXObject;
    object->SetGeom(&source, true);
    return object;
}
} // namespace

TEST(SceneFrame, RunsItsStepsInOrderAndGivesTheEndProcThePrepareData)
{
    LoggedScene s;
    s.scene.Draw(s.view);
    EXPECT_EQ(s.log, kWholeFrame);
    EXPECT_TRUE(s.scene.NeedsShadowRedraw()); // only the draw engine knows when shadows are done
}

TEST(SceneFrame, DoesNothingWhileRedrawIsOff)
{
    LoggedScene s;
    SwitchedDelegate delegate;
    s.scene.SetSceneDelegate(&delegate);
    delegate.off = true;
    s.scene.Draw(s.view);
    EXPECT_TRUE(s.log.empty());
    EXPECT_TRUE(s.scene.Changed());
    delegate.off = false;
    s.scene.Draw(s.view);
    EXPECT_EQ(s.log, kWholeFrame);
}

TEST(SceneFrame, DoesNothingWithoutADrawEngine)
{
    LoggedScene s;
    s.scene.SetDrawEngine(nullptr);
    s.scene.Draw(s.view);
    EXPECT_TRUE(s.log.empty());
    EXPECT_TRUE(s.light->Changed());
}

TEST(SceneFrame, IsRefusedToEveryThreadButTheOnlyOne)
{
    LoggedScene s;
    BThread here(false, 0, false), elsewhere(false, 0, false);
    here.AdoptCurrentThread();
    s.scene.SetOnlyThread(&elsewhere);
    EXPECT_TRUE(s.scene.ThreadLockedOut());
    s.scene.Draw(s.view);
    EXPECT_TRUE(s.log.empty());
    s.scene.SetOnlyThread(&here);
    EXPECT_FALSE(s.scene.ThreadLockedOut());
    s.scene.Draw(s.view);
    EXPECT_EQ(s.log, kWholeFrame);
    s.scene.SetOnlyThread(nullptr);
    EXPECT_FALSE(s.scene.ThreadLockedOut());
}

TEST(SceneFrame, ScenePreparationAnswersForTheProc)
{
    VXScene scene;
    EXPECT_TRUE(scene.PrepareForDrawing());
    int answer = 0;
    scene.SetPrepareProc([](VXScene*, void* data) { return *static_cast<int*>(data); }, &answer);
    EXPECT_FALSE(scene.PrepareForDrawing());
    answer = -2;
    EXPECT_TRUE(scene.PrepareForDrawing());
}

TEST(SceneFrame, FindsSilhouettesWhereAnOutlineShows)
{
    struct Row
    {
        const char* what;
        bool inherits, sceneOutline, ownOutline, visible;
        int refuses;
        bool found;
    };
    for (const Row& row : {
             Row{"scene's style with outline", true, true, false, true, 0, true},
             {"scene's style without", true, false, true, true, 0, false},
             {"own style with outline", false, false, true, true, 0, true},
             {"own style without", false, true, false, true, 0, false},
             {"hidden", true, true, true, false, 0, false},
             {"delegate refuses", true, true, true, true, 1, false},
         })
    {
        SCOPED_TRACE(row.what);
        Log log;
        LoggingDelegate delegate(log, "cube", row.refuses);
        DrawEngineDouble engine;
        VXScene scene;
        scene.SetDrawEngine(&engine);
        VXObject* const object = NewObject(Cube());
        object->SetDelegate(&delegate);
        object->SetVisible(row.visible);
        object->DefaultMaterial()->SetFlagInheritStyleFromScene(row.inherits);
        object->DefaultMaterial()->SetFlagOutline(row.ownOutline);
        scene.SceneMaterial()->SetFlagOutline(row.sceneOutline);
        scene.AddObject(object);
        object->SetSilhouetteDirty(true);
        Mat44 view;
        MAT_Identity(view);
        MAT_Translate(view, 0, 0, -10);
        scene.Draw(view);
        EXPECT_EQ(!object->SilhouetteDirty(), row.found);
        EXPECT_EQ(object->SilhouetteEdges().Count() > 0, row.found);
        EXPECT_EQ(object->PreparationDepth(), 0);
    }
}

TEST(SceneFrame, PickingDrawsOneFrameInPickModeAndRestoresTheStyle)
{
    VXScene scene;
    DrawEngineDouble engine;
    Mat44 view;
    MAT_Identity(view);
    scene.PickPolygonsAndMore(view); // nothing without an engine
    scene.SetDrawEngine(&engine);
    scene.SetWireMode();
    const std::uint32_t before = scene.SceneMaterial()->Flags();
    std::uint32_t during = 0;
    engine.onFrame = [&during](VXScene* s) { during = s->SceneMaterial()->Flags(); };
    engine.optionQueries = 0;
    scene.PickPolygonsAndMore(view);
    EXPECT_EQ(engine.frames, 1);
    EXPECT_EQ(during, before | 0x214u); // pick, polygons, culled
    EXPECT_EQ(scene.SceneMaterial()->Flags(), before);
    EXPECT_EQ(engine.optionQueries, 1);
}

TEST(AutoScaleCamera, FramesTheUnionOfWhatIsVisible)
{
    struct Row
    {
        const char* what;
        bool firstVisible, secondVisible;
        VERTEX centre;
        float extent;
    };
    for (const Row& row : {
             Row{"both", true, true, {5, 0, 0}, 12}, // a cube at 0 and one at 10, both of side 2
             {"the first", true, false, {0, 0, 0}, 2},
             {"the second", false, true, {10, 0, 0}, 2},
             {"none", false, false, {0, 0, 0}, 2}, // a box from -1 to 1 stands in
         })
    {
        SCOPED_TRACE(row.what);
        VXScene scene;
        VXObject* const first = NewObject(Cube());
        VXObject* const second = NewObject(Moved(Cube(), {10, 0, 0}));
        Mat44 elsewhere;
        MAT_Identity(elsewhere);
        MAT_Translate(elsewhere, 100, 100, 100);
        second->SetTransform(elsewhere); // does not count
        first->SetVisible(row.firstVisible);
        second->SetVisible(row.secondVisible);
        scene.AddObject(first);
        scene.AddObject(new VXObject); // visible, without bounds
        scene.AddObject(second);
        VXCamera* const camera = new VXCamera;
        scene.AddCamera(camera);
        scene.SetChanged(false);
        scene.AutoScaleCamera(0);
        const float distance = 1.75f * row.extent;
        EXPECT_EQ(camera->LocalOrigin(), row.centre);
        EXPECT_EQ(camera->ModelDistance(), distance);
        VERTEX eye;
        MAT_VertTransform(&eye, &eye, 1, camera->GetTransform());
        EXPECT_EQ(eye, row.centre + VERTEX({0, 0, distance}));
        EXPECT_TRUE(scene.Changed());
    }
}

TEST(AutoScaleCamera, LeavesEverythingWithoutAnObjectOrACamera)
{
    VXScene scene;
    VXCamera* const camera = new VXCamera;
    scene.AddCamera(camera);
    scene.SetChanged(false);
    scene.AutoScaleCamera(0);
    scene.AddObject(new VXObject);
    scene.SetChanged(false);
    scene.AutoScaleCamera(-1);
    scene.AutoScaleCamera(1);
    EXPECT_FALSE(scene.Changed());
    EXPECT_EQ(camera->ModelDistance(), 1);
}
