// VelmarBase: engine and scene.
#include "draw/VXObject2D.h"
#include "draw/VXSceneDrawEngine.h"
#include "engine/VXCamera.h"
#include "engine/VXLight.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"

#include <new>

namespace
{
// The lists take const pointers, as hosts hold them, of items that they own.
template <class T>
int AddTo(BArray<T*>& list, const T* item)
{
    if (!item)
        return -1;
    list.Append(const_cast<T*>(item));
    return 0;
}

template <class T>
bool TakeFrom(BArray<T*>& list, const T* item)
{
    return item && list.Remove(const_cast<T*>(item));
}

// Entries are nulled before the next is deleted, so that a destructor that walks the list meets no dead one.
template <class T>
void DeleteAll(BArray<T*>& list)
{
    for (T*& entry : list)
    {
        T* const dying = entry;
        entry = nullptr;
        delete dying;
    }
    list.Empty();
}
} // namespace

// --- Objects

int VXScene::AddObject(const VXObject* object)
{
    if (AddTo(mObjects, object) != 0)
        return -1;
    StructuralChange();
    return 0;
}

int VXScene::RemoveObject(const VXObject* object)
{
    if (!TakeFrom(mObjects, object))
        return -1;
    StructuralChange();
    return 0;
}

void VXScene::ClearObjects()
{
    DeleteAll(mObjects);
    StructuralChange();
}

VXObject* VXScene::ObjectByInternalName(const char* name) const
{
    for (VXObject* const object : mObjects)
        if (object && object->InternalName() == name)
            return object;
    return nullptr;
}

// --- Cameras

int VXScene::AddCamera(const VXCamera* camera) { return AddTo(mCameras, camera); }

// --- Materials

int VXScene::AddMaterial(VXMaterial* material) { return AddTo(mMaterials, material); }

void VXScene::RemoveMaterial(VXMaterial* material)
{
    if (TakeFrom(mMaterials, material))
        StructuralChange();
}

void VXScene::ClearMaterials()
{
    mMaterials.Empty();
    StructuralChange();
}

VXMaterial* VXScene::FindMaterial(const char* name, bool create)
{
    if (!name || !*name)
        return nullptr;
    for (VXMaterial* const material : mMaterials)
        if (material && material->InternalName() == name)
            return material;
    return create ? MakeMaterial(name) : nullptr;
}

VXMaterial* VXScene::MakeMaterial(const char* name)
{
    VXMaterial* const material = new (std::nothrow) VXMaterial(0, nullptr);
    if (!material)
        return nullptr;
    material->SetInternalName(name);
    material->SetExternalName(name);
    AddMaterial(material);
    return material;
}

// --- Lights

int VXScene::AddLight(const VXLight* light)
{
    if (AddTo(mLights, light) != 0)
        return -1;
    StructuralChange();
    return 0;
}

int VXScene::RemoveLight(const VXLight* light)
{
    if (!TakeFrom(mLights, light))
        return -1;
    if (mDrawEngine)
        mDrawEngine->LightRemoved(const_cast<VXLight*>(light));
    StructuralChange();
    return 0;
}

void VXScene::ClearLights()
{
    DeleteAll(mLights);
    StructuralChange();
}

// --- 2D objects

int VXScene::AddObject2D(const VXObject2D* object)
{
    if (AddTo(mObject2Ds, object) != 0)
        return -1;
    StructuralChange();
    return 0;
}

int VXScene::RemoveObject2D(const VXObject2D* object)
{
    if (!TakeFrom(mObject2Ds, object))
        return -1;
    StructuralChange();
    return 0;
}

void VXScene::ClearObject2Ds()
{
    DeleteAll(mObject2Ds);
    StructuralChange();
}

// --- Everything

void VXScene::ClearScene()
{
    ClearObjects();
    ClearLights();
    ClearObject2Ds();
    ClearMaterials();
}
