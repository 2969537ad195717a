// VelmarBase: materials.
#include "material/VXMaterial.h"

#include "base/BText.h"
#include "base/MEM.h"
#include "base/XMLStringRes.h"
#include "engine/VXSceneContext.h"

namespace
{
constexpr int kMaterialStrings = 3026; // table of the string resources
constexpr int kDefaultNameEntry = 1;
constexpr std::int32_t kNoTexture = -1;
constexpr std::int32_t kFirstTexture = 1;
} // namespace

VXMaterial::VXMaterial(int withTextures, BDependentProvider* supervisor)
    : mUuid(MakeUuidString()), mInternalName("Default"),
      mExternalName(XMLStringRes::Get(kMaterialStrings, kDefaultNameEntry, "Default"))
{
    mTextureIndex = withTextures ? kFirstTexture : kNoTexture;
    mAmbientTextureIndex = mReflectionIndex = mTransparencyIndex = mTextureIndex;
    mBumpIndex = mNormalMapIndex = mSpecularIndex = mTextureIndex;
    CreateNewLayer("Base", "Base");
    SetSupervisor(supervisor);
}

VXMaterial::~VXMaterial()
{
    ClearLayers();
    for (void*& buffer : mShaderBuffers)
        MEM_Release(buffer);
    VXSceneContext::RemoveMaterial(this);
}

void VXMaterial::SetSupervisor(BDependentProvider* supervisor)
{
    if (supervisor)
        supervisor->AddDependent(this);
    mSupervisor = supervisor;
}

void VXMaterial::DeletingProvider(BDependentProvider* provider)
{
    if (provider == mSupervisor)
        mSupervisor = nullptr;
    BDependentProvider::DeletingProvider(provider);
}

void VXMaterial::RememberForUndo()
{
    mUndoKdColor = mKdColor;
    mUndoKsColor = mKsColor;
}

void VXMaterial::Undo()
{
    mKdColor = mUndoKdColor;
    mKsColor = mUndoKsColor;
}

void VXMaterial::ComputeShaderHash(bool flag) { VXSceneContext::ComputeShaderHash(this, flag); }

BString VXMaterial::GetVertexShaderSource(std::int64_t layer) const
{
    return VXSceneContext::VertexShaderSource(const_cast<VXMaterial*>(this), layer);
}

BString VXMaterial::GetFragmentShaderSource(std::int64_t layer) const
{
    return VXSceneContext::FragmentShaderSource(const_cast<VXMaterial*>(this), layer);
}
