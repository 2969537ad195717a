// VelmarBase: engine and scene.
#include "engine/VXScene.h"

#include "engine/VXCamera.h"
#include "engine/VXLight.h"
#include "mesh/VXGeom.h"

VXScene* VXScene::mCurrentScene = nullptr;

VXScene::VXScene() : mSceneMaterial(0, nullptr), mControlMeshMaterial(0, nullptr)
{
    mCurrentScene = this; // first, since the presets take their colours from the current scene
    mSceneMaterial.SetSmoothMode();
    mControlMeshMaterial.SetWireMode();
}

VXScene::~VXScene()
{
    ClearObjects();
    ClearLights();
    ClearObject2Ds();
    for (VXCamera* const camera : mCameras)
        delete camera;
    mCameras.Empty();
    ClearMaterials();
    for (VXGeom* const geom : mReadGeoms) // after the objects that borrowed them
        delete geom;
    mDrawEngine = nullptr;
    if (mCurrentScene == this)
        mCurrentScene = nullptr;
}

void VXScene::SetChanged(bool on)
{
    mFlags.Set(SceneFlag::Changed, on);
    if (on)
        SetNeedsShadowRedraw(true);
}

void VXScene::SetNeedsShadowRedraw(bool on)
{
    mFlags.Set(SceneFlag::NeedsShadowRedraw, on);
    if (on)
        DirtyLightShadows();
}

void VXScene::DirtyLightShadows()
{
    for (VXLight* const light : mLights)
        if (light)
            light->SetHWShadowDirty(true);
}

// What every change of the lists leaves behind.
void VXScene::StructuralChange()
{
    mFlags.Set(SceneFlag::Changed, true);
    mFlags.Set(SceneFlag::NeedsShadowRedraw, true);
    DirtyLightShadows();
}

void VXScene::SetCurrentObjectByInternalName(const char* name)
{
    mCurrentObject = name ? ObjectByInternalName(name) : nullptr;
}

void VXScene::SetEditGroupObject(const char* name) { mEditGroupObject = name ? ObjectByInternalName(name) : nullptr; }

void VXScene::SetCurCamera(VXCamera* camera) { mCurCameraIndex = std::int32_t(mCameras.Find(camera)); }

void VXScene::SetPrepareProc(Proc proc, void* data)
{
    mPrepareProc = proc;
    mPrepareProcData = data;
}

void VXScene::SetEndProc(Proc proc, void* data)
{
    mEndProc = proc;
    mEndProcData = data;
}
