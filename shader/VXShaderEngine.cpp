#include "shader/VXShaderEngine.h"

#include "draw/VXSceneDrawEngine.h"
#include "shader/VXShaderBinding.h"
#include "shader/VXShaderCompiler.h"
#include "shader/VXShaderDebug.h"
#include "shader/VXShaderProgram.h"

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

void VXShaderEngine::WarnWhenNotEnabled(const char* what) const
{
    if (!Enabled() && mVerbose)
        VXShaderDebug("%s without engine enabled...\n", what);
}

void VXShaderEngine::EnableShaders()
{
    WarnWhenNotEnabled("enabled");
    if (mShadersOn || !mCompiler)
        return;
    mShadersOn = true;
    mCompiler->BeginShading();
    ++mEnableCount;
}

void VXShaderEngine::DisableShaders()
{
    WarnWhenNotEnabled("Disabled");
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

// --- Textures

// Ids are the platform's ints: a failed load and whatever else is not positive is not bound.
static bool IsLoaded(const VXShaderBindingTexture& texture) { return std::int32_t(texture.TexID()) > 0; }

void VXShaderEngine::LoadImage(VXShaderBindingTexture& texture)
{
    const BString& file = texture.FileName();
    if (texture.TexID() != VXShaderBindingTexture::kNotLoaded || file.IsEmpty())
        return;
    int id = 0;
    mDrawEngine->LoadTextureForShader(file, id);
    texture.SetTexID(id != 0 ? id : int(VXShaderBindingTexture::kFailed));
    if (!IsLoaded(texture) && mFailedTextures.Find(file) < 0)
    {
        mFailedTextures.AppendOrKeep(file);
        VXShaderDebug("Texture %s could not be loaded\n", file.CString());
    }
}

std::uint32_t VXShaderEngine::LoadNoise()
{
    if (mNoiseTexture == 0)
        mNoiseTexture = std::uint32_t(mDrawEngine->CreateNoiseTexture());
    return mNoiseTexture;
}

void VXShaderEngine::LoadShaderTextures(VXMaterial* /*material*/, VXShaderProgram* program)
{
    if (!program || !mDrawEngine)
        return;
    for (VXShaderBindingTexture* const texture : program->Textures())
    {
        if (texture->Type() == "sampler2D")
            LoadImage(*texture);
        else if (texture->Type() == "sampler3D")
            texture->SetTexID(int(LoadNoise()));
        else
            texture->SetTexID(int(VXShaderBindingTexture::kNotLoaded));
    }
}

void VXShaderEngine::EnableShaderTextures(VXShaderProgram* program)
{
    if (!program || !mDrawEngine)
        return;
    const BArray<VXShaderBindingTexture*>& textures = program->Textures();
    for (std::int64_t i = 0; i < textures.Count(); ++i)
    {
        const VXShaderBindingTexture& texture = *textures[i];
        if (!IsLoaded(texture))
            continue;
        if (texture.Type() == "sampler3D")
        {
            mDrawEngine->DisableMultitexture2D();
            mDrawEngine->EnableMultitexture3D(int(texture.TexID()), 1);
        }
        else // the second image shares unit 0 with the first: intended
            mDrawEngine->EnableMultitexture2D(int(texture.TexID()), i == 1 ? 0 : int(i));
    }
}

void VXShaderEngine::ClearShaderTextures(VXMaterial* /*material*/, VXShaderProgram* /*program*/) {}
