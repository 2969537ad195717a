#include "draw/VXSceneDrawOptions.h"

#include <algorithm>

void VXSceneDrawOptions::SetDefaults()
{
    mDrawPolygons = true;
    mReserved2 = true;
    mSuppressBackCull = false;
    mReserved4 = true;
    mReserved5 = 0.01f;
    mReserved6 = 0.5f;
    mLineWidth = 0.5f;
    mReserved8 = 1.5f;
    mReserved9 = 0.5f;
    mReserved10 = false;
    mShadeUntextured = true;
    mHWShading = false;
    mDeepShaderTest = true;
    mReserved14 = false;
    mReserved15 = false;
    mReserved16 = false;
    mReserved17 = false;
    mReserved18 = false;
    mShaderBatch = false;
    mReserved20 = true;
    mReserved21 = true;
    mReserved22 = 1.0f;
    mReserved23 = 5;
    mReserved24 = 0.4f;
    mReserved25 = false;
    mReserved26 = 1.0f;
    mReserved27 = 0.0f;
    mReserved28 = 1.0f;
    mReserved29 = 1.6f;
    mReserved30 = false;
    mUseMinOpacity = true;
    mReserved32 = false;
    mReserved33 = true;
    mEffectName.Empty();
    mReserved35 = 0.9f;
    mReserved36 = 1;
    mHaberlinesOn = false;
    mHaberlinesWelded = true;
    mHaberlinesDrawLast = false;
    mSceneWidth = 0;
    mSceneHeight = 0;
    mMinOpacity = 0.1f;
}

// Conversion of a float that does not fit is undefined, and a window toolkit may well hand in one.
static std::int32_t WholePixels(float size)
{
    constexpr float kMost = 2147483520.0f; // the largest float below 2^31
    return size == size ? std::int32_t(std::clamp(size, -kMost, kMost)) : 0;
}

void VXSceneDrawOptions::SetSceneSize(float width, float height)
{
    mSceneWidth = WholePixels(width);
    mSceneHeight = WholePixels(height);
}
