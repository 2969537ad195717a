// VelmarBase: materials.
#pragma once

#include "VelmarExport.h"
#include "base/BString.h"

class BShaderTree;
class VXMaterial;

/// One shader layer of a material: its names, its node tree and the tree's hash. The tree is the host's and not owned;
/// it is stored untyped and is always a converted BShaderTree*.
class VELMAR_EXPORT VXMaterialLayer
{
public:
    VXMaterialLayer() = default;
    virtual ~VXMaterialLayer();
    VXMaterialLayer(const VXMaterialLayer&) = delete;
    VXMaterialLayer& operator=(const VXMaterialLayer&) = delete;

    void Init(); ///< forgets material and tree; the names and the hash stay

    const BString& TreeHash() const { return mTreeHash; } ///< key of the layer's program; changes when its text would
    void SetTreeHash(const char* hash) { mTreeHash = hash; }
    const BString& InternalName() const { return mInternalName; }
    void SetInternalName(const char* name) { mInternalName = name; }
    const BString& ExternalName() const { return mExternalName; }
    void SetExternalName(const char* name) { mExternalName = name; }
    VXMaterial* Material() const { return mMaterial; }
    void SetMaterial(VXMaterial* material) { mMaterial = material; }
    void* OrmondShaderTree() const { return mShaderTree; }
    void SetOrmondShaderTree(void* tree) { mShaderTree = tree; }
    BShaderTree* ShaderTree() const { return static_cast<BShaderTree*>(mShaderTree); } ///< the same, typed

private:
    BString mTreeHash;
    BString mInternalName;
    BString mExternalName;
    VXMaterial* mMaterial = nullptr;
    void* mShaderTree = nullptr;
};
