#include "draw/VXFrameBits.h"

#include <climits>

VXFrameBits::~VXFrameBits() { FreeBitMap(); }

CPB_Offscreen* VXFrameBits::AllocateBitMap(std::uint32_t width, std::uint32_t height, std::uint32_t depth,
                                           std::uint8_t alignRows, std::uint8_t hasAlpha)
{
    const bool fits = width <= INT_MAX && height <= INT_MAX && depth <= INT_MAX;
    mBitMap =
        fits ? CPB_Offscreen::Create(int(width), int(height), int(depth), alignRows != 0, hasAlpha != 0) : nullptr;
    return mBitMap;
}

void VXFrameBits::SetBitMap(CPB_Offscreen* bitmap)
{
    if (bitmap == mBitMap)
        return;
    FreeBitMap();
    mBitMap = bitmap;
}

void VXFrameBits::FreeBitMap()
{
    delete mBitMap;
    mBitMap = nullptr;
}
