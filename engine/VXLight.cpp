// VelmarBase: engine and scene.
#include "engine/VXLight.h"

#include <cstring>

VXLight::VXLight()
{
    MAT_Identity(mTransform);
    MAT_Identity(mLightView);
}

VXLight::~VXLight() = default;

void VXLight::SetLightType(VXLightType type)
{
    if (type != mLightType)
        SetTypeChanged(true);
    mLightType = type;
    SetChanged(true);
}

VERTEX VXLight::GetPosition() const
{
    VERTEX p;
    MAT_VertTransform(&p, &p, 1, mTransform);
    return p;
}

VERTEX VXLight::GetDirection() const
{
    VERTEX axis[2] = {{0, 0, 0}, {0, 0, 1}};
    MAT_VertTransform(axis, axis, 2, mTransform);
    const VERTEX d = axis[1] - axis[0];
    return d * MATH_FastSqrtInv(Dot(d, d)); // zero stays zero under a transform without extent
}

void VXLight::SetLightColor(float red, float green, float blue, float brightness)
{
    mLightColor.Set(red, green, blue, brightness);
    SetChanged(true);
}

void VXLight::SetAttenType(VXLightAttenType type)
{
    mAttenType = type;
    SetChanged(true);
}

void VXLight::SetAttenStart(float distance)
{
    mAttenStart = distance;
    SetChanged(true);
}

void VXLight::SetAttenEnd(float distance)
{
    mAttenEnd = distance;
    SetChanged(true);
}

void VXLight::SetFalloffStart(float value)
{
    SetChanged(value != mFalloffStart); // clears it for an equal value; intended
    mFalloffStart = value;
}

void VXLight::SetFalloffEnd(float value)
{
    SetChanged(value != mFalloffEnd);
    mFalloffEnd = value;
}

void VXLight::SetDistanceRange(float nearest, float farthest)
{
    mDistanceRange[0] = nearest;
    mDistanceRange[1] = farthest;
}

void VXLight::SetIBLColors(const float (*colors)[3])
{
    if (colors)
        std::memcpy(mIBLColors, colors, sizeof(mIBLColors));
}

void VXLight::SetShadowStrength(float strength)
{
    mShadowStrength = strength;
    SetChanged(true);
}

void VXLight::SetPrepareProc(Proc proc, void* data)
{
    mPrepareProc = proc;
    mPrepareData = data;
}

void VXLight::SetEndProc(Proc proc, void* data)
{
    mEndProc = proc;
    mEndData = data;
}

void VXLight::PrepareForDrawing()
{
    if (mPrepareProc)
        mPrepareProc(this, mPrepareData);
}

void VXLight::EndDrawing()
{
    if (mEndProc)
        mEndProc(this, mEndData);
}
