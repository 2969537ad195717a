// VelmarBase: materials.
#pragma once

#include "VelmarExport.h"
#include "material/VXMaterialColor4.h"

class VXMaterial;

/// A snapshot of a material's Kd and Ks that can be exchanged with the material's own. The material is not owned and
/// must outlive the snapshot.
class VELMAR_EXPORT VXMaterialUndoData
{
public:
    VXMaterialUndoData() = default;
    explicit VXMaterialUndoData(VXMaterial* material) { SetFromMaterial(material); }
    virtual ~VXMaterialUndoData();

    void Init() { mMaterial = nullptr; }
    void SetFromMaterial(VXMaterial* material); ///< takes its colours; null keeps those held
    virtual void SwapValues();                  ///< nothing without a material; twice restores both sides

    VXMaterial* Material() const { return mMaterial; }
    const VXMaterialColor4& KdColor() const { return mKd; }
    const VXMaterialColor4& KsColor() const { return mKs; }

private:
    VXMaterial* mMaterial = nullptr;
    VXMaterialColor4 mKd;
    VXMaterialColor4 mKs;
};
