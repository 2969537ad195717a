// VelmarBase: engine and scene.
#include "base/BMap.h"
#include "base/XMLStringRes.h"
#include "engine/VXCamera.h"
#include "engine/VXScene.h"
#include "mesh/VXGeom.h"

#include <new>

void VXScene::InitDefaultCameras()
{
    VXCamera* const camera = new (std::nothrow) VXCamera;
    if (!camera)
        return;
    constexpr int kCameraStrings = 82, kNameEntry = 561; // string resources
    camera->SetFocal(1);
    camera->SetInternalName("Perspective Camera");
    camera->SetExternalName(XMLStringRes::Get(kCameraStrings, kNameEntry, "Perspective Camera").CString());
    AddCamera(camera);
}

int VXScene::AddWavefront(const char* path, bool creases)
{
    VXGeom* const geom = new (std::nothrow) VXGeom;
    if (!geom)
        return -1;
    geom->SetGenerateCreases(creases);
    geom->ReadWavefront(path, nullptr);
    if (!mReadGeoms.Append(geom)) // meshes read before are leaked rather than freed, as their objects still draw them
    {
        delete geom;
        return -1;
    }
    if (VXObject* const object = new (std::nothrow) VXObject)
    {
        object->SetGeom(geom, false, creases);
        object->RebuildSubDiv();
        AddObject(object);
    }
    StructuralChange();
    return 0;
}

void VXScene::AttachAllMaterials()
{
    // Names are looked up once for all meshes: with thousands of materials, a walk through the list for each slot would
    // take longer than reading the meshes.
    BMapStringToPtr byName;
    for (VXMaterial* const material : mMaterials)
        if (material && !byName.Contains(material->InternalName()))
            byName.Set(material->InternalName(), material);

    const auto attach = [this, &byName](VXGeom& geom)
    {
        for (int slot = 0; slot < geom.NumGeomMaterials(); ++slot)
        {
            const char* const name = geom.MaterialName(slot);
            if (!name || !*name)
                continue;
            void* material = byName.Get(name);
            if (!material)
            {
                material = FindMaterial(name, true);
                byName.Set(name, material);
            }
            geom.SetMaterialPointer(slot, material);
        }
    };
    for (VXObject* const object : mObjects)
    {
        if (!object)
            continue;
        if (object->Geom())
            attach(*object->Geom());
        if (VXGeom* const surface = object->SubdivGeom(object->CurSubDivLevel()))
            attach(*surface);
    }
}

void VXScene::WeldAll()
{
    for (VXObject* const object : mObjects)
        if (object)
            object->Weld(0.00001f);
    StructuralChange();
}

void VXScene::UpdateDerivedData()
{
    for (VXObject* const object : mObjects)
    {
        if (!object)
            continue;
        VXGeom* const geom = object->Geom();
        if (geom && geom->GeomChanged())
        {
            geom->RebuildLists();
            geom->SetGeomChanged(false);
            object->SetSubdivDirty(true); // its levels are made of what has changed
            object->SetChanged(true);
        }
        if (object->SubdivDirty() && object->CurSubDivLevel() >= 1)
            object->SetChanged(true); // another surface is drawn from now on
        object->Subdivide();

        VXBBox box; // stays empty without vertices: an empty mesh has no place in the scene
        float min[3], max[3], middle[3];
        if (geom && geom->NumVerts(false) > 0 &&
            object->GetBounds(&min[0], &min[1], &min[2], &max[0], &max[1], &max[2], &middle[0], &middle[1], &middle[2]))
            box.Set(min[0], min[1], min[2], max[0], max[1], max[2]);
        object->BoundingBox() = box;
    }
}
