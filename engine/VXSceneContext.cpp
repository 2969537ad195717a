// VelmarBase: what mesh and material code may ask of the current scene.
#include "engine/VXSceneContext.h"

#include "base/BString.h"
#include "draw/VXSceneDrawEngine.h"
#include "draw/VXSceneDrawOptions.h"
#include "engine/VXScene.h"
#include "engine/VXSceneDelegate.h"
#include "shader/VXShaderEngine.h"

bool VXSceneContext::HasScene() { return VXScene::CurrentScene() != nullptr; }

VXSceneDrawEngine* VXSceneContext::DrawEngine()
{
    const VXScene* const scene = VXScene::CurrentScene();
    return scene ? scene->DrawEngine() : nullptr;
}

VXSceneDrawOptions* VXSceneContext::DrawOptions()
{
    VXSceneDrawEngine* const engine = DrawEngine();
    return engine ? engine->DrawOptions() : nullptr;
}

VXShaderEngine* VXSceneContext::ShaderEngine()
{
    const VXSceneDrawEngine* const engine = DrawEngine();
    return engine ? engine->ShaderEngine() : nullptr;
}

bool VXSceneContext::WantShader()
{
    const VXScene* const scene = VXScene::CurrentScene();
    return scene && scene->DrawEngine() && scene->WantShader();
}

bool VXSceneContext::BackCullSuppressed()
{
    const VXSceneDrawOptions* const options = DrawOptions();
    return options && options->mSuppressBackCull;
}

VXSceneDelegate* VXSceneContext::Delegate()
{
    const VXScene* const scene = VXScene::CurrentScene();
    return scene ? scene->SceneDelegate() : nullptr;
}

int VXSceneContext::RenderType()
{
    const VXScene* const scene = VXScene::CurrentScene();
    return scene ? scene->CurrentPreviewRootRenderType() : BRenderEngines::kRenderTypeDefault;
}

const VXMaterialColor4* VXSceneContext::BackgroundColor()
{
    const VXScene* const scene = VXScene::CurrentScene();
    return scene ? &scene->BackgroundColor() : nullptr;
}

const VXMaterialColor4* VXSceneContext::WireframeColor()
{
    const VXScene* const scene = VXScene::CurrentScene();
    return scene ? &scene->WireframeColor() : nullptr;
}

bool VXSceneContext::HaberlinesWelded()
{
    VXSceneDrawEngine* const engine = DrawEngine();
    return !engine || engine->HaberlinesWelded();
}

BString VXSceneContext::VertexShaderSource(VXMaterial* material, std::int64_t layer)
{
    const VXShaderEngine* const engine = ShaderEngine();
    return engine && engine->HasShader(material, layer) ? engine->GetVertexShaderSource(material->TreeHash(layer))
                                                        : BString();
}

BString VXSceneContext::FragmentShaderSource(VXMaterial* material, std::int64_t layer)
{
    const VXShaderEngine* const engine = ShaderEngine();
    return engine && engine->HasShader(material, layer) ? engine->GetFragmentShaderSource(material->TreeHash(layer))
                                                        : BString();
}

void VXSceneContext::ComputeShaderHash(VXMaterial* material, bool flag)
{
    if (VXSceneDelegate* const delegate = Delegate())
        delegate->ComputeShaderHash(material, flag);
}

float VXSceneContext::GeometricEdgeDistance()
{
    VXSceneDelegate* const delegate = Delegate();
    return delegate ? delegate->SceneGeometricEdgeDistance() : 1.0f;
}

bool VXSceneContext::AllowCreaseVertsForSubdiv()
{
    VXSceneDelegate* const delegate = Delegate();
    return delegate && delegate->AllowCreaseVertsForSubdiv();
}

void VXSceneContext::SubdivisionWillRebuild(bool rebuild, int controlVerts, E_SubdivScheme scheme)
{
    if (VXSceneDelegate* const delegate = Delegate())
        delegate->SubdivisionWillRebuild(rebuild, controlVerts, scheme);
}

void VXSceneContext::MarkShadowsForRedraw()
{
    if (VXScene* const scene = VXScene::CurrentScene())
        scene->SetNeedsShadowRedraw(true);
}

void VXSceneContext::RemoveMaterial(VXMaterial* material)
{
    if (VXScene* const scene = VXScene::CurrentScene())
        scene->RemoveMaterial(material);
}
