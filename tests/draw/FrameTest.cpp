#include "tests/draw/Stage.h"

#include "base/BThread.h"
#include "draw/VXAppToolInfo.h"
#include "engine/VXSceneDelegate.h"
#include "tests/support/RecordingCompiler.h"

#include <gtest/gtest.h>

TEST(Frame, CallsItsStepsInTheStatedOrder)
{
    Stage stage;
    stage.engine.options.mEffectName = "Ripple";
    stage.engine.SetHWShadingAllowed(true);
    RecordingCompiler::Install(stage.engine);
    stage.scene.SetDrawDropShadows(true);
    EXPECT_EQ(stage.Frame(), 0);
    const Lines expected = {
        "BeginFrameState",
        "PrepareForDrawScene",
        "SetFrameMultisample on",
        "InitShaderEngine",
        "PrepareScene",
        "BeginEffect Ripple",
        "DrawBackgroundPicture",
        "DrawBackgroundMovie",
        "DrawPickedverts",
        "PrepareMainPass scene",
        "BeginDropShadow",
        "SetPassLighting on",
        "DrawScenePolys pass 3 second",
        "BeginFrameState",
        "EndDropShadow",
        "PrepareMainPass scene",
        "SetPassLighting on",
        "DrawScenePolys pass 0 first",
        "BeginFrameState",
        "PrepareMainPass scene",
        "SetPassLighting on",
        "DrawScenePolys pass 1 second",
        "BeginFrameState",
        "BeginDropShadow",
        "SetPassLighting on",
        "DrawScenePolys pass 4 first",
        "BeginFrameState",
        "EndDropShadow",
        "SetFrameMultisample off",
        "PrepareObjectPass scene",
        "PrepareLinePass scene",
        "PrepareArrayPass scene",
        "EndEffect Ripple",
        "DrawPickedverts",
        "DrawCustomVerts",
        "DrawCustomLines",
        "DrawOverlayPicture",
        "DrawWaterMark",
        "DrawBitMaps",
        "EndFrameState",
    };
    EXPECT_EQ(stage.engine.Take(), expected);
    EXPECT_EQ(stage.engine.DrawPass(), kNormalPass);
}

TEST(Frame, DrawsNoShadowPassWithoutDropShadows)
{
    Stage stage;
    EXPECT_EQ(stage.FrameOf({"BeginDropShadow", "EndDropShadow", "SkipDropShadow", "DrawScenePolys"}),
              (Lines{"SkipDropShadow", "DrawScenePolys pass 0 first", "DrawScenePolys pass 1 second"}));
}

TEST(Frame, OfNoSceneIsRefused)
{
    RecordingEngine engine;
    Mat44 camera = {};
    EXPECT_EQ(engine.DrawScene(nullptr, camera), -1);
    EXPECT_EQ(engine.Take(), Lines());
}

TEST(Frame, IsRefusedWhileAnotherThreadHasTheScene)
{
    Stage stage;
    BThread other(false, 0, false);
    stage.scene.SetOnlyThread(&other);
    EXPECT_EQ(stage.Frame(), -1);
    EXPECT_EQ(stage.engine.Take(), Lines()) << "not even BeginFrameState";
    stage.scene.SetOnlyThread(nullptr);
    EXPECT_EQ(stage.Frame(), 0);
}

TEST(Frame, InPickPassRunsElementPassesAlone)
{
    Stage stage;
    stage.engine.SetDrawPass(kPickPass);
    EXPECT_EQ(stage.Frame(), 0);
    const Lines expected = {
        "BeginFrameState",       "SetFrameMultisample on",  "PrepareScene",
        "PrepareMainPass scene", "SetFrameMultisample off", "PrepareObjectPass scene",
        "PrepareLinePass scene", "PrepareArrayPass scene",  "EndFrameState",
    };
    EXPECT_EQ(stage.engine.Take(), expected);
    EXPECT_EQ(stage.engine.DrawPass(), kPickPass) << "what the host set stays set";
}

TEST(Frame, InStyledModeIsTheHooksAlone)
{
    Stage stage;
    stage.scene.SceneMaterial()->SetFlagPick(true);
    stage.engine.styledAnswer = 7;
    EXPECT_EQ(stage.Frame(), 7);
    EXPECT_EQ(stage.engine.Take(),
              (Lines{"BeginFrameState", "SetFrameMultisample on", "DrawStyledScene", "EndFrameState"}));
}

TEST(Frame, SkipsElementPassesWhereAPictureShowsNormalsOrVertexColours)
{
    for (const MaterialFlag flag : {MaterialFlag::NormalsOnly, MaterialFlag::VertexColorsOnly})
    {
        Stage stage;
        stage.scene.SceneMaterial()->SetFlag(flag, true);
        EXPECT_EQ(stage.FrameOf({"PrepareObjectPass", "PrepareLinePass", "PrepareArrayPass"}), Lines());
    }
}

TEST(Frame, WithPolygonsOffDrawsNoGeometry)
{
    Stage stage;
    stage.Add("cube", Cube());
    stage.scene.SetSmoothOutlinedMode();
    stage.engine.options.mDrawPolygons = false;
    stage.engine.options.mHaberlinesOn = stage.engine.options.mHaberlinesDrawLast = true;
    EXPECT_EQ(stage.FrameOf({"DrawScenePolys", "DrawElements", "DrawPolygon", "DrawHaberlineSets"}), Lines());
}

TEST(Frame, DrawsPickedControlsOnlyWhenAllAgree)
{
    // Each row switches one condition off.
    struct Row
    {
        const char* name;
        bool requested, on, highlight, otherObject;
        std::size_t times;
    };
    for (const Row& row :
         {Row{"all agree", true, true, true, true, 1}, Row{"not requested", false, true, true, true, 0},
          Row{"off", true, false, true, true, 0}, Row{"no highlight", true, true, false, true, 0},
          Row{"the edited object", true, true, true, false, 0}})
    {
        SCOPED_TRACE(row.name);
        Stage stage;
        stage.Add("current", Cube());
        stage.Add("edited", Cube());
        stage.scene.SetEditGroupObject("edited");
        stage.scene.SetCurrentObjectByInternalName(row.otherObject ? "current" : "edited");
        stage.scene.SetWantsCurrentObjectHilight(row.highlight);
        stage.engine.SetControlsRequested(row.requested);
        stage.engine.SetControlsOn(row.on);
        EXPECT_EQ(stage.FrameOf({"DrawPickedControls"}).size(), row.times);
    }
}

// --- Bounding boxes

TEST(FrameBounds, CoverVisibleObjectsWhereTheyStandAndLeaveTheGroundOut)
{
    Stage stage;
    stage.scene.UpdateDerivedData();
    VXObject* const cube = stage.Add("cube", Cube()); // side 2 about the origin
    Stage::MoveTo(cube, 10, 0, 0);
    stage.Add("GROUND", Scaled(Cube(), 100));
    stage.Add("hidden", Scaled(Cube(), 50))->SetVisible(false);
    stage.Add("ground", Cube()); // another name: compared with case
    stage.scene.UpdateDerivedData();
    stage.scene.BoundingBox().Set(-1000, -1000, -1000, 1000, 1000, 1000);
    stage.Frame();
    EXPECT_EQ(stage.scene.BoundingBox().Min(), (VERTEX{-1, -1, -1}));
    EXPECT_EQ(stage.scene.BoundingBox().Max(), (VERTEX{11, 1, 1}));
    EXPECT_EQ(cube->BoundingBox().Max(), (VERTEX{1, 1, 1})) << "the object's own box stays in object space";
}

TEST(FrameBounds, OfNothingVisibleAreEmpty)
{
    Stage stage;
    stage.scene.BoundingBox().Set(0, 0, 0, 1, 1, 1);
    stage.Frame();
    EXPECT_FALSE(stage.scene.BoundingBox().Initialized());
}

// --- Shader upkeep

TEST(FrameShaders, AreAllowedByOptionsHostAndTracking)
{
    struct Row
    {
        bool option, host, tracking, inTracking, enabled;
    };
    for (const Row& row :
         {Row{true, true, false, false, true}, Row{true, true, true, true, true}, Row{true, true, true, false, false},
          Row{false, true, false, true, false}, Row{true, false, false, true, false}})
    {
        SCOPED_TRACE(testing::Message() << row.option << row.host << row.tracking << row.inTracking);
        Stage stage;
        RecordingCompiler::Install(stage.engine);
        stage.engine.options.mHWShading = row.option;
        stage.engine.SetHWShadingAllowed(row.host);
        stage.scene.SetCameraTrackingOn(row.tracking);
        stage.engine.SetAllowHWShadingInTracking(row.inTracking);
        VXMaterial* const red = stage.Material("red");
        stage.Frame();
        EXPECT_EQ(stage.engine.ShaderEngine()->AppEnabled(), row.enabled);
        EXPECT_EQ(red->ShaderTreeDirty(), !row.enabled) << "upkeep asks for the hash";
    }
}

TEST(FrameShaders, AreKeptCurrentByOneOfTwoHooks)
{
    Stage stage;
    RecordingCompiler* const compiler = RecordingCompiler::Install(stage.engine);
    stage.engine.options.mHWShading = true;
    stage.engine.SetHWShadingAllowed(true);
    compiler->GiveProgram(stage.Material("red"), 0);
    const auto upkeep = [&]
    {
        return stage.FrameOf({"InitShaderEngine", "FreeTextures", "DeleteProgram", "UpdateShadersNow",
                              "UpdateShadersLater", "SetShaderRecompiled"});
    };
    EXPECT_EQ(upkeep(), (Lines{"InitShaderEngine", "UpdateShadersLater", "SetShaderRecompiled off"}));
    EXPECT_TRUE(stage.engine.ShaderEngineInitialized());
    stage.engine.options.mShaderBatch = true;
    EXPECT_EQ(upkeep(), (Lines{"UpdateShadersNow active", "SetShaderRecompiled off"}));
    EXPECT_FALSE(stage.engine.ShaderEngine()->IsActive());
    stage.scene.SetToonShadedMode(); // a style that no shader can draw
    stage.engine.SetDeleteShadersPending(true);
    EXPECT_EQ(upkeep(), (Lines{"FreeTextures", "DeleteProgram red 0"}));
    EXPECT_FALSE(stage.engine.DeleteShadersPending());
}

class ModeDelegate : public VXSceneDelegate
{
public:
    int mode = 5;
    BRenderEngines::E_Renderer CurrentPreviewRootRenderType() override { return BRenderEngines::E_Renderer(mode); }
};

TEST(FrameShaders, BecomeStaleWhenTheRenderTypeChanges)
{
    ModeDelegate delegate;
    Stage stage;
    stage.scene.SetSceneDelegate(&delegate);
    VXMaterial* const red = stage.Material("red");
    VXMaterial* const blue = stage.Material("blue");
    const auto staleAfter = [&](int mode)
    {
        red->SetShaderTreeDirty(false);
        blue->SetShaderTreeDirty(false);
        delegate.mode = mode;
        stage.Frame();
        EXPECT_EQ(red->ShaderTreeDirty(), blue->ShaderTreeDirty());
        return red->ShaderTreeDirty();
    };
    EXPECT_FALSE(staleAfter(5)) << "the engine starts with 5";
    EXPECT_TRUE(staleAfter(1));
    EXPECT_FALSE(staleAfter(1));
    EXPECT_TRUE(staleAfter(5));
    EXPECT_EQ(stage.engine.DelegateShaderMode(), 5);
}

TEST(FrameShaders, ActivationsAreCountedAnewInEachFrame)
{
    Stage stage;
    VXShaderCompiler::CountActivation();
    stage.Frame();
    EXPECT_EQ(VXShaderCompiler::NumActivations(), 0);
}

TEST(FrameShaders, DieWithTheDrawEngine)
{
    RecordingCompiler::deaths = 0;
    {
        RecordingEngine engine;
        RecordingCompiler::Install(engine);
        RecordingCompiler::Install(engine); // the first is deleted here
        EXPECT_EQ(RecordingCompiler::deaths, 1);
    }
    EXPECT_EQ(RecordingCompiler::deaths, 2);
}

// --- The host's camera

TEST(DrawEngine, ForgetsACameraProviderThatDies)
{
    RecordingEngine engine;
    {
        BDependentProvider camera;
        engine.SetHostAppCameraData(&camera);
        EXPECT_TRUE(camera.HasDependent(&engine));
    }
    EXPECT_EQ(engine.HostAppCameraData(), nullptr);
    BDependentProvider first, second;
    engine.SetHostAppCameraData(&first);
    engine.SetHostAppCameraData(&second);
    EXPECT_FALSE(first.HasDependent(&engine));
}

TEST(DrawEngine, KnowsTheFamilyOfEachPass)
{
    RecordingEngine engine;
    std::string families;
    for (int pass = 0; pass <= 8; ++pass)
    {
        engine.SetDrawPass(DrawPassType(pass));
        families += engine.DoingDropShadow() ? 'D' : '-';
        families += engine.DoingDropShadowLines() ? 'L' : '-';
        families += engine.DoingShadowMapgGeneration() ? 'M' : '-';
        families += engine.DoingAO() ? 'A' : '-';
        families += ' ';
    }
    EXPECT_EQ(families, "---- ---- ---- D--- DL-- D-M- D--- ---A ---A ");
}
