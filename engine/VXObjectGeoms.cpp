// VelmarBase: engine and scene.
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "mesh/VXGeom.h"

#include <cassert>

int VXObject::SetGeom(VXGeom* geom, bool clone, bool /*unused*/)
{
    if (geom && geom == mGeom)
        return 0;
    if (!mGeomBorrowed)
        delete mGeom;
    mGeomBorrowed = !(clone && geom);
    mGeom = mGeomBorrowed ? geom : geom->Clone(true);
    if (geom && !mGeom)
        return -1;
    SetChanged(true);
    return 0;
}

VXGeom* VXObject::SubdivGeom(int level) const
{
    return level >= 0 && level < mSubdivGeoms.Count() ? mSubdivGeoms[level] : nullptr;
}

int VXObject::SetSubdivGeom(int level, VXGeom* geom)
{
    if (mSubdivGeoms[level] == geom)
        return 0;
    delete mSubdivGeoms[level];
    mSubdivGeoms[level] = geom;
    if (VXScene* const scene = VXScene::CurrentScene())
        scene->SetChanged(true);
    return 0;
}

void VXObject::SetCurSubDivLevel(int level)
{
    if (level == mCurSubDivLevel)
        return;
    mCurSubDivLevel = level;
    SetChanged(true);
}

VXGeom* VXObject::CurSubdivGeom(bool controlAtZero) const
{
    return controlAtZero && mCurSubDivLevel == 0 ? mGeom : SubdivGeom(mCurSubDivLevel);
}

VXGeom* VXObject::DrawGeom(E_DrawGeom kind) const
{
    const VXScene* const scene = VXScene::CurrentScene();
    assert(scene);
    switch (kind)
    {
    case kDrawGeomSurface:
        return scene->SurfaceVisible() && mCurSubDivLevel >= 1 ? SubdivGeom(mCurSubDivLevel) : nullptr;
    case kDrawGeomControl:
        return scene->ControlMeshVisible() ? mGeom : nullptr;
    default:
        return mGeom;
    }
}

bool VXObject::WantsLinesOnly(E_DrawGeom kind) const
{
    const VXScene* const scene = VXScene::CurrentScene();
    if (scene && scene->ControlMeshVisible() && !scene->SurfaceVisible())
        return false; // the control mesh is all that is shown, so it is shown filled
    return kind == kDrawGeomControl && mCurSubDivLevel >= 1 && SubdivGeom(mCurSubDivLevel);
}
