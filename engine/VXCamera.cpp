// VelmarBase: engine and scene.
#include "engine/VXCamera.h"

VXCamera::VXCamera()
{
    MAT_Identity(mRotMat);
    MAT_Identity(mPerspectiveMat);
    MAT_Identity(mFullCameraMat);
    MAT_Identity(mWorldMat);
    MAT_Identity(mInverseViewMat);
}

VXCamera::~VXCamera() = default;

void VXCamera::SetFocal(float focalLength)
{
    mFocalLength = focalLength;
    mOrtho = focalLength == 0;
}

float VXCamera::FOV() const
{
    if (mFocalLength == 0)
        return 90;
    constexpr double kTwiceInDegrees = 114.591552734375; // 360 / pi as a float; hosts compare the angles bit for bit
    return float(MATH_atan2(1.0, 2.0 * double(mFocalLength)) * kTwiceInDegrees);
}

void VXCamera::CalcViewTransform(bool negate)
{
    Mat44 view, toOrigin;
    MAT_Identity(view);
    MAT_Translate(view, 0, 0, negate ? -mModelDistance : mModelDistance);
    MAT_Concat4x4(view, mRotMat, view);
    MAT_Identity(toOrigin);
    MAT_Translate(toOrigin, mLocalOrigin.x, mLocalOrigin.y, mLocalOrigin.z);
    MAT_Concat4x4(view, toOrigin, view);
    SetTransform(view);
}

void VXCamera::ScreenToWorld(const VERTEX* in, VERTEX* out) const
{
    if (!out)
        return;
    if (mFocalLength == 0)
    {
        const VERTEX origin;
        MAT_VertTransform(&origin, out, 1, mWorldMat);
        return;
    }
    Mat44 toWorld;
    MAT_Inverse(mFullCameraMat, toWorld, 4);
    const float w = MAT_VertTransformW(*in, toWorld);
    MAT_VertTransform(in, out, 1, toWorld);
    if (w != 0 && w != 1) // the transform itself is affine
        *out *= 1.0f / w;
}

void VXCamera::GetFocalPoint(VERTEX&) const {}
