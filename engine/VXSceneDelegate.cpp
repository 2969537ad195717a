// VelmarBase: engine and scene.
#include "engine/VXSceneDelegate.h"

#include "engine/VXSwitches.h"

VXSceneDelegate::~VXSceneDelegate() = default;

int VXSceneDelegate::AddHostMapFile(BString&) { return 0; }
VXLight* VXSceneDelegate::GetCurrentLight() { return nullptr; }
bool VXSceneDelegate::RedrawOff() { return false; }
int VXSceneDelegate::FrameNumber() { return 1; }
void VXSceneDelegate::GetClientNameFromObjectName(const char* name, BString& out) { out = name; }
int VXSceneDelegate::GetTextureBucketByID(int, CPB_PixelBucket**) { return -1; }
bool VXSceneDelegate::CheckValidTexturePath(int) { return true; }
float VXSceneDelegate::GammaForTexture(const BString&) { return 0; }
bool VXSceneDelegate::PickDrawCheckPrepareBeforeVisible() { return false; }
bool VXSceneDelegate::SetRedrawOff(bool) { return false; }
BString VXSceneDelegate::RuntimeShaderFolder() { return "Runtime/Cg/"; }
bool VXSceneDelegate::WantsShaderDebugging() { return false; }
bool VXSceneDelegate::WantsShaderLog() { return false; }
void VXSceneDelegate::NotifyForFailedSubdivision(VXObject*) {}
bool VXSceneDelegate::AbortOnBadSubdivSourceData() { return VXSwitches::AbortOnBadSubdivSource(); }
void VXSceneDelegate::MaterialTreeChanged(VXMaterial*, BShaderTree*) {}
void VXSceneDelegate::PrintDebugString(BString&) {}
float VXSceneDelegate::SceneGeometricEdgeDistance() { return 0; }
void VXSceneDelegate::SetBusyCursor(bool) {}
void VXSceneDelegate::SetCurrentPreviewRootRenderType(BRenderEngines::E_Renderer) {}
void VXSceneDelegate::ComputeShaderHash(VXMaterial*, bool) {}
bool VXSceneDelegate::AllowCreaseVertsForSubdiv() { return false; }
void VXSceneDelegate::SubdivisionWillRebuild(bool, int, E_SubdivScheme) {}

BRenderEngines::E_Renderer VXSceneDelegate::CurrentPreviewRootRenderType()
{
    return BRenderEngines::kRenderTypeDefault;
}
