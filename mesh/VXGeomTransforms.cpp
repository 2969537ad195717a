#include "engine/VXSceneContext.h"
#include "mesh/VXGeom.h"

#include <algorithm>
#include <cstring>

// --- Placing

void VXGeom::Center()
{
    if (!mGeom)
        return;
    GEOM_Center(mGeom);
    UpdateCreaseVerts();
    SetGeomChanged(true);
    VXSceneContext::MarkShadowsForRedraw();
}

void VXGeom::Scale(float factor)
{
    if (!mGeom)
        return;
    GEOM_Scale(mGeom, factor);
    UpdateCreaseVerts();
    SetGeomChanged(true);
    VXSceneContext::MarkShadowsForRedraw();
}

bool VXGeom::GetBounds(float* minX, float* minY, float* minZ, float* maxX, float* maxY, float* maxZ, float* midX,
                       float* midY, float* midZ) const
{
    if (mGeom)
    {
        GEOM_Bounds(mGeom, minX, minY, minZ, maxX, maxY, maxZ, midX, midY, midZ, true);
        return true;
    }
    for (float* const out : {minX, minY, minZ, maxX, maxY, maxZ, midX, midY, midZ})
        if (out)
            *out = 0;
    return false;
}

// --- Vertices that stand in for the record's

bool VXGeom::AllocTransformedVerts() { return MEM_SizeArray(mTransformedVerts, std::size_t(NumVerts(true))); }

void VXGeom::Transform(const Mat44 m)
{
    if (AllocTransformedVerts() && NumVerts(true) > 0)
        MAT_VertTransform(mGeom->verts, mTransformedVerts, NumVerts(true), m);
}

void VXGeom::SetTemporaryVertArray(VERTEX* verts)
{
    if (!mGeom)
        return;
    mGeom->accessMutex.Lock();
    // A record without vertices has nothing to save, so an array put into it would never be taken out again.
    if (!mGeom->verts || !verts)
        return;
    if (!mSavedVerts)
        mSavedVerts = mGeom->verts;
    mGeom->verts = verts;
}

void VXGeom::RestoreOrigVertArray()
{
    if (!mGeom)
        return;
    PutVertsBack();
    mGeom->accessMutex.Unlock();
}

// --- Welding

void VXGeom::Weld(float tolerance)
{
    if (!mGeom || mSavedVerts) // what stands in for the vertices is the caller's and cannot shrink
        return;
    GEOM_SetWeldTolerance(tolerance);
    const std::int32_t before = mGeom->numVerts;
    // A borrowed record has not been looked at by anyone.
    if (GEOM_VerifyAndFix(mGeom) != 0 || GEOM_Weld(mGeom, nullptr) != 0)
        return; // out of memory: no vertex has changed
    if (mGeom->numVerts != before)
        DropSnapshot();
    RebuildLists();
    SetGeomChanged(true);
    VXSceneContext::MarkShadowsForRedraw();
}

// --- Reference points

void VXGeom::FillRefPoints(const VERTEX* points, int count)
{
    FillRefPointsFromFloatBuffer(reinterpret_cast<const float*>(points), count);
}

void VXGeom::FillRefPointsFromFloatBuffer(const float* xyz, int count)
{
    count = std::max(count, 0);
    if (!mRefPoints.Reserve(count) || !mRefPoints.SetCount(count))
        return; // out of memory: left empty
    if (xyz && count > 0)
        std::memcpy(static_cast<void*>(mRefPoints.Data()), xyz, std::size_t(count) * sizeof(VERTEX));
}
