// VelmarBase: engine and scene.
#include "base/BThread.h"
#include "draw/VXSceneDrawEngine.h"
#include "engine/VXCamera.h"
#include "engine/VXLight.h"
#include "engine/VXScene.h"
#include "engine/VXSceneDelegate.h"

#include <algorithm>
#include <cfloat>

// --- Frame

void VXScene::Draw(float mat[4][4])
{
    if (mSceneDelegate && mSceneDelegate->RedrawOff())
        return;
    if (ThreadLockedOut() || !mDrawEngine)
        return;

    PrepareForDrawing(); // what the host answers is for those who call it themselves
    for (VXLight* const light : mLights)
        if (light)
            light->SetChanged(false);
    PrepareObjects(mat);
    mFlags.Set(SceneFlag::Changed, false);
    mDrawEngine->DrawScene(this, mat);
    if (mEndProc)
        mEndProc(this, mPrepareProcData); // the prepare proc's data; hosts rely on it
}

bool VXScene::PrepareForDrawing() { return !mPrepareProc || mPrepareProc(this, mPrepareProcData) != 0; }

// Every object is prepared, hidden ones too; outlines are found for those that show one.
void VXScene::PrepareObjects(const Mat44 mat)
{
    for (VXObject* const object : mObjects)
    {
        if (!object)
            continue;
        if (object->PrepareForDrawing() == 0 && object->Visible() && WantsOutline(*object))
            object->ComputeSilhouette(mat);
        object->EndDrawing();
    }
}

bool VXScene::WantsOutline(const VXObject& object) const
{
    const VXMaterial& own = *object.DefaultMaterial();
    return own.GetFlagInheritStyleFromScene() ? mSceneMaterial.GetFlagOutline() : own.GetFlagOutline();
}

void VXScene::PickPolygonsAndMore(float mat[4][4])
{
    if (!mDrawEngine)
        return;
    const std::uint32_t style = mSceneMaterial.Flags();
    SetPickMode(true);
    mDrawEngine->DrawScene(this, mat);
    SetPickMode(false); // the engine's options are asked once more here, as after any picking
    mSceneMaterial.SetFlags(style);
}

void VXScene::ComputeBackfacing(const Mat44 mat)
{
    for (VXObject* const object : mObjects)
        if (object)
            object->ComputeSilhouette(mat);
}

// --- Camera

// The union of the bounds of what is visible, or a box about the origin when nothing is.
VXBBox VXScene::BoundsOfVisible() const
{
    VERTEX min = {FLT_MAX, FLT_MAX, FLT_MAX}, max = {-FLT_MAX, -FLT_MAX, -FLT_MAX};
    for (const VXObject* const object : mObjects)
    {
        VERTEX lo, hi, middle;
        if (!object || !object->Visible() ||
            !object->GetBounds(&lo.x, &lo.y, &lo.z, &hi.x, &hi.y, &hi.z, &middle.x, &middle.y, &middle.z))
            continue;
        min = {std::min(min.x, lo.x), std::min(min.y, lo.y), std::min(min.z, lo.z)};
        max = {std::max(max.x, hi.x), std::max(max.y, hi.y), std::max(max.z, hi.z)};
    }
    if (min.x == FLT_MAX || min.y == FLT_MAX || min.z == FLT_MAX)
        return {{-1, -1, -1}, {1, 1, 1}};
    return {min, max};
}

void VXScene::AutoScaleCamera(int index)
{
    if (index < 0 || index >= NumCameras() || NumObjects() == 0)
        return;
    VXCamera* const camera = Camera(index);
    if (!camera)
        return;
    const VXBBox bounds = BoundsOfVisible();
    const VERTEX centre = (bounds.Min() + bounds.Max()) * 0.5f;
    const VERTEX size = bounds.Max() - bounds.Min();
    const float extent = std::max({size.x, size.y, size.z});
    const float distance = 1.75f * extent; // the default lens then shows the box with some room around it

    Mat44 m;
    MAT_Identity(m);
    MAT_Translate(m, centre.x, centre.y, centre.z + distance);
    camera->SetTransform(m);
    camera->SetLocalOrigin(centre.x, centre.y, centre.z);
    camera->SetModelDistance(distance);
    StructuralChange();
}

// --- Threads

void VXScene::SetOnlyThread(BThread* thread)
{
    const BMutexLock lock(mMutex);
    mOnlyThread = thread;
}

bool VXScene::ThreadLockedOut() const { return mOnlyThread && !mOnlyThread->IsCurrentThread(); }
