#include "mesh/VXGeom.h"

#include <algorithm>

void* VXGeom::MaterialPointer(int i) const
{
    return i >= 0 && i < NumGeomMaterials() ? mGeom->Materials()[i].material : nullptr;
}

const char* VXGeom::MaterialName(int i) const
{
    return i >= 0 && i < NumGeomMaterials() ? mGeom->Materials()[i].name.CString() : nullptr;
}

void VXGeom::SetMaterialPointer(int i, void* material)
{
    if (i < 0 || i >= NumGeomMaterials() || MaterialPointer(i) == material)
        return;
    mGeom->SetMaterialPointer(i, material);
    SetDataSorted(false); // the order follows the materials' textures and transparency
}

void VXGeom::CopyMaterialPointersSynced(const VXGeom* from, VXGeom* to)
{
    if (!from || !to)
        return;
    const int count = std::min(from->NumGeomMaterials(), to->NumGeomMaterials());
    for (int i = 0; i < count; ++i)
        to->SetMaterialPointer(i, from->MaterialPointer(i));
}
