// VelmarBase: materials.
#include "material/VXMaterialUndoData.h"

#include "material/VXMaterial.h"

#include <utility>

VXMaterialUndoData::~VXMaterialUndoData() = default;

void VXMaterialUndoData::SetFromMaterial(VXMaterial* material)
{
    mMaterial = material;
    if (!material)
        return;
    mKd = material->KdColor();
    mKs = material->KsColor();
}

void VXMaterialUndoData::SwapValues()
{
    if (!mMaterial)
        return;
    std::swap(mKd, mMaterial->KdColor());
    std::swap(mKs, mMaterial->KsColor());
}
