#include "draw/VXSceneDrawEngine.h"

#include "draw/VXAppToolInfo.h"
#include "draw/VXSceneDrawOptions.h"
#include "draw/detail/FrameScopes.h"
#include "engine/VXScene.h"
#include "engine/VXSceneDelegate.h"
#include "shader/VXShaderCompiler.h"
#include "shader/VXShaderEngine.h"

// --- Life and what the host shares

VXSceneDrawEngine::VXSceneDrawEngine() { MAT_Identity(mCamera); }

VXSceneDrawEngine::~VXSceneDrawEngine()
{
    DeleteShaderEngine();
    DeletePastedImage();
    DeleteOverlayImage();
    delete mGroupToolInfo;
}

void VXSceneDrawEngine::DeleteShaderEngine()
{
    if (mShaderEngine)
        delete mShaderEngine->ShaderCompiler();
    delete mShaderEngine;
    mShaderEngine = nullptr;
}

void VXSceneDrawEngine::SetShaderEngine(VXShaderEngine* engine)
{
    if (engine == mShaderEngine)
        return;
    DeleteShaderEngine();
    mShaderEngine = engine;
    mShaderEngineNeedsInit = true;
}

void VXSceneDrawEngine::SetGroupToolInfo(VXAppToolInfo* info)
{
    if (info == mGroupToolInfo)
        return;
    delete mGroupToolInfo;
    mGroupToolInfo = info;
}

bool VXSceneDrawEngine::GroupModeOn() const { return mGroupToolInfo && mGroupToolInfo->GroupModeOn(); }

void VXSceneDrawEngine::SetHostAppCameraData(BDependentProvider* provider)
{
    if (provider == mHostAppCameraData)
        return;
    if (mHostAppCameraData)
        mHostAppCameraData->RemoveDependent(this);
    mHostAppCameraData = provider;
    if (provider)
        provider->AddDependent(this);
}

void VXSceneDrawEngine::DeletingProvider(BDependentProvider* provider)
{
    if (provider == mHostAppCameraData)
        mHostAppCameraData = nullptr;
    BDependentProvider::DeletingProvider(provider);
}

void VXSceneDrawEngine::DeletePastedImage()
{
    delete mPastedImage;
    mPastedImage = nullptr;
}

void VXSceneDrawEngine::DeleteOverlayImage()
{
    delete mOverlayImage;
    mOverlayImage = nullptr;
}

// --- The frame

int VXSceneDrawEngine::DrawScene(VXScene* scene, float camera[4][4])
{
    if (!EnterFrame(scene, camera))
        return -1;
    const FrameState state(*this);
    if (mShaderEngine)
        mShaderEngine->PrepareForDrawScene();
    SetFrameMultisample(true);
    if (scene->SceneMaterial()->GetFlagPick())
        return DrawInStyledMode();

    KeepShadersCurrent();
    UpdateBoundingBoxes();
    PrepareScene(scene);
    MarkShadersStaleOnModeChange();
    if (mDrawPass == kNormalPass)
        DrawBackgroundLayer();
    DrawPolyPasses();
    SetFrameMultisample(false);
    DrawElementPasses();
    FinishEffect();
    DrawLateHaberlines(); // after everything solid, so that no polygon covers them
    if (mDrawPass == kNormalPass)
        DrawOverlayLayer();
    return 0;
}

int VXSceneDrawEngine::DrawInStyledMode()
{
    const DrawPassType before = mDrawPass;
    const int result = DrawStyledScene(mScene);
    mDrawPass = before;
    return result;
}

// False when there is nothing to draw, or another thread has the scene.
bool VXSceneDrawEngine::EnterFrame(VXScene* scene, float camera[4][4])
{
    mScene = scene;
    mCurrentMaterial = nullptr;
    mElementPass = 0;
    if (!scene || scene->ThreadLockedOut())
        return false;
    if (camera)
        MAT_Copy(camera, mCamera);
    VXShaderCompiler::ResetActivations();
    return true;
}

void VXSceneDrawEngine::KeepShadersCurrent()
{
    if (mShaderEngine && mShaderEngineNeedsInit)
    {
        InitShaderEngine();
        mShaderEngineNeedsInit = false;
    }
    if (mShaderEngine)
        SwitchShading();
    if (mDeleteShadersPending)
    {
        FreeTextures();
        if (mShaderEngine)
            mShaderEngine->DeleteShaders();
        mDeleteShadersPending = false;
    }
    if (mHWShadingAllowed && SceneWantsShading())
        UpdateShaders();
}

// While the view is being moved, shading is off unless the host allows it: frames come fast then.
void VXSceneDrawEngine::SwitchShading()
{
    const bool wanted = DrawOptions()->mHWShading && mHWShadingAllowed;
    if (wanted && (!mScene->CameraTrackingOn() || mAllowHWShadingInTracking))
        mShaderEngine->Enable();
    else
        mShaderEngine->Disable();
}

// The scene asks the draw engine that it was given for the options; one that has none cannot be asked.
bool VXSceneDrawEngine::SceneWantsShading() const
{
    return mShaderEngine && mShaderEngine->AppEnabled() && mScene && mScene->DrawEngine() && mScene->WantShader();
}

void VXSceneDrawEngine::UpdateShaders()
{
    if (DrawOptions()->mShaderBatch)
    {
        const ActiveShading active(mShaderEngine, true);
        UpdateShadersNow(mScene);
    }
    else
        UpdateShadersLater();
    SetShaderRecompiled(false);
    mShaderEngine->UpdateShaders(mScene->Materials());
}

void VXSceneDrawEngine::UpdateBoundingBoxes()
{
    if (!mScene)
        return;
    VXBBox all;
    for (std::int64_t i = 0; i < mScene->NumObjects(); ++i)
    {
        VXObject* const object = mScene->Object(int(i));
        if (!object || !object->Visible() || object->InternalName() == "GROUND")
            continue;
        object->PrepareForDrawing(); // the delegate may set the transform
        Mat44 transform;
        MAT_Copy(object->GetTransform(), transform);
        VXBBox box = object->BoundingBox();
        box.Transform(transform);
        all.Extend(box);
        object->EndDrawing();
    }
    mScene->BoundingBox() = all;
}

// The render type chooses the root of a material's shader tree, so another type makes every hash stale. Upkeep has run
// for this frame by now: the next one acts on it.
void VXSceneDrawEngine::MarkShadersStaleOnModeChange()
{
    const VXScene* const current = VXScene::CurrentScene();
    if (!current || !current->SceneDelegate())
        return;
    const int mode = current->SceneDelegate()->CurrentPreviewRootRenderType();
    if (mode == mDelegateShaderMode)
        return;
    for (VXMaterial* const material : mScene->Materials())
        if (material)
            material->SetShaderTreeDirty(true);
    mDelegateShaderMode = mode;
}

bool VXSceneDrawEngine::EffectOn()
{
    return !DrawOptions()->mEffectName.IsEmpty() && mHWShadingAllowed && mShaderEngine;
}

void VXSceneDrawEngine::DrawBackgroundLayer()
{
    if (EffectOn())
        BeginEffect(DrawOptions()->mEffectName);
    DrawBackgroundPicture(mScene);
    DrawBackgroundMovie(mScene);
    DrawPickedverts(mScene);
    if (GroupModeOn() && mGroupToolInfo->CurGroupingMode() == 1)
        PrepareGroupTool(mScene);
}

namespace
{
struct PolyPass
{
    DrawPassType pass;
    bool silhouette, dropShadow;
};

constexpr PolyPass kPolyPasses[] = {
    // clang-format off
    // pass                  silhouette  drop shadow
    {kDropShadowPass,        false,      true },
    {kNormalPass,            true,       false},
    {kNormalSecondPass,      false,      false},
    {kDropShadowLinesPass,   true,       true },
    // clang-format on
};
} // namespace

void VXSceneDrawEngine::DrawPolyPasses()
{
    mElementPass = 0;
    PrepareMainPass(mScene->SceneMaterial());
    if (!DrawOptions()->mDrawPolygons || mDrawPass == kPickPass)
        return;
    const bool dropShadows = mScene->DrawDropShadows();
    if (!dropShadows)
        SkipDropShadow();
    for (const PolyPass& row : kPolyPasses)
        if (!row.dropShadow || dropShadows)
            DrawPolyPass(row.pass, row.silhouette, row.dropShadow);
    mDrawPass = kNormalPass;
}

void VXSceneDrawEngine::DrawPolyPass(DrawPassType pass, bool silhouette, bool dropShadow)
{
    mDrawPass = pass;
    if (dropShadow)
        BeginDropShadow();
    else
        PrepareMainPass(mScene->SceneMaterial());
    SetPassLighting(true);
    mSilhouetteToggle = silhouette;
    DrawScenePolys(mScene);
    if (dropShadow)
        EndDropShadow();
}

void VXSceneDrawEngine::DrawElementPasses()
{
    const VXMaterial& style = *mScene->SceneMaterial();
    if (style.GetFlagNormalsOnly() || style.GetFlagVertexColorsOnly())
        return;
    DrawObjectWires();
    DrawLineElements();
    DrawOutlines();
}

void VXSceneDrawEngine::FinishEffect()
{
    if (EffectOn() && !mScene->SceneMaterial()->GetFlagVertexColorsOnly())
        EndEffect(DrawOptions()->mEffectName);
}

void VXSceneDrawEngine::DrawLateHaberlines()
{
    if (mDrawPass == kPickPass || mScene->SceneMaterial()->GetFlagVertexColorsOnly())
        return;
    if (!DoHaberlines() || !HaberlinesDrawLast())
        return;
    const DrawPassType drawPass = mDrawPass;
    const int elementPass = mElementPass;
    mElementPass = 0;
    PrepareMainPass(mScene->SceneMaterial());
    if (DrawOptions()->mDrawPolygons)
    {
        mDrawPass = kNormalPass;
        PrepareMainPass(mScene->SceneMaterial());
        SetPassLighting(true);
        mSilhouetteToggle = true;
        DrawSceneHaberlines(mScene);
    }
    mDrawPass = drawPass;
    mElementPass = elementPass;
}

void VXSceneDrawEngine::DrawOverlayLayer()
{
    if (ControlsOn() && mScene->WantsCurrentObjectHilight() && mScene->CurrentObject() != mScene->EditGroupObject())
        DrawPickedControls(mScene, 0);
    DrawPickedverts(mScene);
    DrawCustomVerts(mScene);
    DrawCustomLines(mScene);
    DrawOverlayPicture(mScene);
    DrawWaterMark(mScene);
    DrawBitMaps(mScene);
}
