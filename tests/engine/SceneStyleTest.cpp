#include "engine/VXLight.h"
#include "engine/VXScene.h"
#include "engine/VXSceneDelegate.h"
#include "tests/support/DrawEngineDouble.h"

#include <gtest/gtest.h>

TEST(SceneStyle, StartsSmoothWithWiredControlMeshesInItsOwnColours)
{
    const VXScene scene;
    EXPECT_EQ(scene.SceneMaterial()->Flags(), 0x40015u); // smooth, polygons, culled, inheriting from the object
    EXPECT_EQ(scene.ControlMeshMaterial()->Flags(), 0x40008u);
    EXPECT_EQ(scene.SceneMaterial()->InternalName(), "Default");
    EXPECT_EQ(scene.SceneMaterial()->SilhouetteColor(), VXMaterialColor4(0.8f, 0.3f, 0.3f, 1)); // the background
    EXPECT_EQ(scene.BackgroundColor(), VXMaterialColor4(0.8f, 0.3f, 0.3f, 1));
    EXPECT_EQ(scene.DropShadowColor(), VXMaterialColor4(0.6f, 0.6f, 0.6f, 1));
    EXPECT_FALSE(scene.BoundingBox().Initialized());
    EXPECT_EQ(int(scene.ToonToneStyle()), 3);
    EXPECT_EQ(scene.DepthBufferOffset(), 4);
    EXPECT_EQ(scene.CurPoly(), -1);
}

TEST(SceneStyle, ChangedAndShadowFlagsHaveOneWaySideEffects)
{
    VXScene scene;
    VXLight* const light = new VXLight;
    scene.AddLight(light);
    scene.SetChanged(false);
    EXPECT_FALSE(scene.Changed());
    EXPECT_TRUE(scene.NeedsShadowRedraw()); // kept
    scene.SetNeedsShadowRedraw(false);
    EXPECT_TRUE(light->HWShadowDirty()); // kept

    light->SetHWShadowDirty(false);
    scene.SetChanged(true);
    EXPECT_TRUE(scene.NeedsShadowRedraw());
    EXPECT_TRUE(light->HWShadowDirty());

    scene.SetChanged(false);
    light->SetHWShadowDirty(false);
    scene.SetNeedsShadowRedraw(true);
    EXPECT_FALSE(scene.Changed());
    EXPECT_TRUE(light->HWShadowDirty());
}

TEST(SceneStyle, PickModeCullsByWhatIsPickedAndAfterwardsByTheOptions)
{
    struct Row
    {
        bool pickObject, pickZObjects, cullsWhilePicking;
    };
    for (const Row& row : {Row{true, false, true}, {true, true, false}, {false, false, false}, {false, true, false}})
        for (const bool suppressed : {false, true})
        {
            VXScene scene;
            DrawEngineDouble engine;
            engine.options.mSuppressBackCull = suppressed;
            scene.SetDrawEngine(&engine);
            scene.SetWireMode(); // no polygons, no culling
            scene.SetPickObject(row.pickObject);
            scene.SetPickZObjects(row.pickZObjects);
            scene.SetPickMode(true);
            const VXMaterial& style = *scene.SceneMaterial();
            EXPECT_TRUE(style.GetFlagPick());
            EXPECT_TRUE(style.GetFlagDrawPolys());
            EXPECT_EQ(style.GetFlagBackCull(), row.cullsWhilePicking);
            scene.SetPickMode(false);
            EXPECT_FALSE(style.GetFlagPick());
            EXPECT_TRUE(style.GetFlagDrawPolys());
            EXPECT_EQ(style.GetFlagBackCull(), !suppressed);
            scene.SetDrawEngine(nullptr);
            scene.SetPickMode(false);
            EXPECT_TRUE(style.GetFlagBackCull());
        }
}

TEST(SceneStyle, ShadersAreWantedForSmoothPolygons)
{
    struct Row
    {
        DrawMode mode;
        bool allowed, untextured, wanted;
    };
    VXScene scene;
    DrawEngineDouble engine;
    scene.SetDrawEngine(&engine);
    for (const Row& row : {
             Row{DrawMode::Smooth, true, true, true},
             {DrawMode::Smooth, true, false, false},
             {DrawMode::Smooth, false, true, false},
             {DrawMode::SmoothTextured, true, false, true},
             {DrawMode::SmoothTextured, false, false, false},
             {DrawMode::SmoothLined, true, true, true},
             {DrawMode::Flat, true, true, false},
             {DrawMode::Wire, true, true, false},
             {DrawMode::ToonShaded, true, true, false},
         })
    {
        engine.options.mHWShading = row.allowed;
        engine.options.mShadeUntextured = row.untextured;
        scene.ApplyPreset(row.mode);
        EXPECT_EQ(scene.WantShader(), row.wanted) << vx::PresetOf(row.mode).name;
    }
}

TEST(SceneStyle, RenderTypeIsTheDelegatesOrOne)
{
    struct Delegate : VXSceneDelegate
    {
        BRenderEngines::E_Renderer CurrentPreviewRootRenderType() override
        {
            return BRenderEngines::kRenderTypeNoShaders;
        }
    } delegate;
    VXScene scene;
    EXPECT_EQ(int(scene.CurrentPreviewRootRenderType()), 1);
    scene.SetSceneDelegate(&delegate);
    EXPECT_EQ(int(scene.CurrentPreviewRootRenderType()), 5);
}
