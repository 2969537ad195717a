// VelmarBase: engine and scene.
#include "engine/VXObject.h"

#include "engine/VXScene.h"
#include "mesh/VXGeom.h"

VXObject::VXObject() : mDefaultMaterial(0, nullptr), mSilhouetteEdges(8, 128)
{
    MAT_Identity(mTransform);
    MAT_Identity(mBBoxTransform);
    mDefaultMaterial.SetSmoothLinedMode();
    mDefaultMaterial.SetFlagInheritStyleFromScene(true);
    mSubdivGeoms.SetCount(1); // level 0, not made yet
}

VXObject::~VXObject()
{
    ClearSubdivStructures();
    if (!mGeomBorrowed)
        delete mGeom;
}

bool VXObject::Visible() const
{
    const VXScene* const scene = VXScene::CurrentScene();
    const VXObject* const isolated = scene ? scene->IsolationObject() : nullptr;
    return (!isolated || isolated == this) && mFlags.Get(ObjectFlag::Visible);
}

void VXObject::SetChanged(bool on)
{
    mFlags.Set(ObjectFlag::Changed, on);
    if (!on)
        return;
    SetSilhouetteDirty(true);
    if (VXScene* const scene = VXScene::CurrentScene())
        scene->SetChanged(true);
    for (int drawGeom = 0; drawGeom < NumbDrawGeoms(); ++drawGeom) // the ids stay: the draw engine reuses its lists
        mPolyLists[drawGeom].ready = mLineLists[drawGeom].ready = false;
}

void VXObject::SetIgnoreZBufferEdges(bool on)
{
    constexpr ObjectFlag kFlag = ObjectFlag::IgnoreZBufferEdges;
    if (on)
        mFlags.Set(kFlag, true);
    else
        mFlags = FlagWord<ObjectFlag>(mFlags.Word() & std::uint32_t(kFlag)); // drops all others; intended
}

bool VXObject::GetBounds(float* minX, float* minY, float* minZ, float* maxX, float* maxY, float* maxZ, float* midX,
                         float* midY, float* midZ) const
{
    return mGeom && mGeom->GetBounds(minX, minY, minZ, maxX, maxY, maxZ, midX, midY, midZ);
}

void VXObject::Weld(float tolerance)
{
    if (mGeom)
        mGeom->Weld(tolerance);
}

// --- Display lists

static bool IsDrawGeom(int i) { return i == kDrawGeomSurface || i == kDrawGeomControl; }

std::uint32_t VXObject::PolyDisplayListID(int drawGeom) const
{
    return IsDrawGeom(drawGeom) ? mPolyLists[drawGeom].id : 0;
}

void VXObject::SetPolyDisplayListID(std::uint32_t id, int drawGeom)
{
    if (IsDrawGeom(drawGeom))
        mPolyLists[drawGeom].id = id;
}

bool VXObject::PolyDisplayListReady(int drawGeom) const { return IsDrawGeom(drawGeom) && mPolyLists[drawGeom].ready; }

void VXObject::SetPolyDisplayListReady(bool ready, int drawGeom)
{
    if (IsDrawGeom(drawGeom))
        mPolyLists[drawGeom].ready = ready;
}

std::uint32_t VXObject::LineDisplayListID(int drawGeom) const
{
    return IsDrawGeom(drawGeom) ? mLineLists[drawGeom].id : 0;
}

void VXObject::SetLineDisplayListID(std::uint32_t id, int drawGeom)
{
    if (IsDrawGeom(drawGeom))
        mLineLists[drawGeom].id = id;
}

bool VXObject::LineDisplayListReady(int drawGeom) const { return IsDrawGeom(drawGeom) && mLineLists[drawGeom].ready; }

void VXObject::SetLineDisplayListReady(bool ready, int drawGeom)
{
    if (IsDrawGeom(drawGeom))
        mLineLists[drawGeom].ready = ready;
}
