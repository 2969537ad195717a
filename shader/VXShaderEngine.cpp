#include "shader/VXShaderEngine.h"

#include "draw/VXSceneDrawEngine.h"
#include "shader/VXShaderCompiler.h"

VXShaderEngine::~VXShaderEngine() = default;

// --- Switches

void VXShaderEngine::EnableEngine()
{
    if (mAppEnabled)
        mIsActive = true;
}

void VXShaderEngine::DisableEngine()
{
    if (mAppEnabled)
        mIsActive = false;
}

void VXShaderEngine::EnableShaders()
{
    if (mShadersOn || !mCompiler)
        return;
    mShadersOn = true;
    mCompiler->BeginShading();
    ++mEnableCount;
}

void VXShaderEngine::DisableShaders()
{
    if (!mShadersOn || !mCompiler)
        return;
    mShadersOn = false;
    mCompiler->EndShading();
    if (mDrawEngine)
        mDrawEngine->DisableMultitexture2D();
    ++mDisableCount;
}

void VXShaderEngine::SetVerboseMode(bool on)
{
    mVerbose = on;
    if (mCompiler)
        mCompiler->SetVerboseMode(on);
}

// --- Forwarders

void VXShaderEngine::Init()
{
    if (mCompiler)
        mCompiler->Init();
}

void VXShaderEngine::PrepareForDrawScene()
{
    if (mCompiler)
        mCompiler->PrepareForDrawScene();
}

void VXShaderEngine::AddShader(VXMaterial* material, std::int64_t layer)
{
    if (mCompiler)
        mCompiler->AddShader(material, layer);
}

bool VXShaderEngine::HasShader(VXMaterial* material, std::int64_t layer) const
{
    return mCompiler && material && mCompiler->HasShader(material, layer);
}

void VXShaderEngine::EnableShader(VXMaterial* material, std::int64_t layer)
{
    if (mCompiler)
        mCompiler->EnableShader(material, layer);
}

void VXShaderEngine::DisableShader(VXMaterial* material, std::int64_t layer)
{
    if (mCompiler)
        mCompiler->DisableShader(material, layer);
}

bool VXShaderEngine::DeleteShader(const BString& key) { return mCompiler && mCompiler->DeleteShader(key); }

void VXShaderEngine::DeleteShaders()
{
    if (mCompiler)
        mCompiler->DeleteShaders();
}

void VXShaderEngine::UpdateShaders(BArray<VXMaterial*>& materials)
{
    if (mCompiler)
        mCompiler->UpdateShaders(materials);
}

BString VXShaderEngine::GetVertexShaderSource(const BString& key) const
{
    return mCompiler ? mCompiler->GetVertexShaderSource(key) : BString();
}

BString VXShaderEngine::GetFragmentShaderSource(const BString& key) const
{
    return mCompiler ? mCompiler->GetFragmentShaderSource(key) : BString();
}
