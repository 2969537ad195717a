// VelmarBase: engine and scene.
#include "draw/VXSceneDrawEngine.h"
#include "draw/VXSceneDrawOptions.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "engine/VXSceneDelegate.h"

void VXScene::ApplyPreset(DrawMode mode)
{
    mSceneMaterial.ApplyPreset(mode);
    ResetDisplayLists();
}

void VXScene::ResetDisplayLists()
{
    for (VXObject* const object : mObjects)
        if (object)
            object->SetChanged(true);
}

void VXScene::SetPickMode(bool on)
{
    mSceneMaterial.SetPickMode(on);
    if (on)
        mSceneMaterial.SetFlagBackCull(PickObject() && !PickZObjects());
    else
        mSceneMaterial.SetFlagBackCull(!(mDrawEngine && mDrawEngine->DrawOptions()->mSuppressBackCull));
}

bool VXScene::WantShader() const
{
    const VXSceneDrawOptions& options = *mDrawEngine->DrawOptions();
    if (!options.mHWShading)
        return false;
    const VXMaterial& style = mSceneMaterial;
    if (!style.GetFlagDrawPolys() || !style.GetFlagSmooth() || style.GetFlagToon())
        return false;
    return style.GetFlagTexture() || options.mShadeUntextured;
}

BRenderEngines::E_Renderer VXScene::CurrentPreviewRootRenderType() const
{
    return mSceneDelegate ? mSceneDelegate->CurrentPreviewRootRenderType() : BRenderEngines::kRenderTypeDefault;
}
