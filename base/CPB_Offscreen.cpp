// FenwickBase: foundation of the VelmarBase project.
#include "base/CPB_Offscreen.h"
#include "base/MEM.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <new>

CPB_Offscreen* CPB_Offscreen::Create(int width, int height, int bits, bool alignRows, bool hasAlpha)
{
    if (width <= 0 || height <= 0 || (bits != 8 && bits != 24 && bits != 32))
        return nullptr;
    std::int64_t rowBytes = std::int64_t(width) * (bits / 8);
    if (alignRows)
        rowBytes = (rowBytes + 3) / 4 * 4;
    if (rowBytes > INT_MAX)
        return nullptr;
    std::unique_ptr<CPB_Offscreen> made(new (std::nothrow) CPB_Offscreen);
    if (!made)
        return nullptr;
    made->mPixels = static_cast<std::uint8_t*>(MEM_Calloc(std::size_t(rowBytes), std::size_t(height)));
    made->mWidth = width;
    made->mHeight = height;
    made->mBits = bits;
    made->mRowBytes = int(rowBytes);
    made->mHasAlpha = hasAlpha && bits == 32;
    return made->mPixels ? made.release() : nullptr;
}

CPB_Offscreen::~CPB_Offscreen() { MEM_Free(mPixels); }

void CPB_Offscreen::Fill(std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint8_t a)
{
    const std::uint8_t colour[4] = {r, g, b, a};
    const int pixelBytes = mBits / 8;
    for (int x = 0; x < mWidth; ++x)
        std::memcpy(mPixels + std::int64_t(x) * pixelBytes, colour, std::size_t(pixelBytes));
    const std::size_t used = std::size_t(mWidth) * std::size_t(pixelBytes); // the padding of a row stays zero
    for (int y = 1; y < mHeight; ++y)
        std::memcpy(Row(y), mPixels, used);
}

CPB_Offscreen* CPB_Offscreen::Clone() const
{
    std::unique_ptr<CPB_Offscreen> copy(new (std::nothrow) CPB_Offscreen);
    if (!copy)
        return nullptr;
    copy->mPixels = static_cast<std::uint8_t*>(MEM_Copy(mPixels));
    copy->mWidth = mWidth;
    copy->mHeight = mHeight;
    copy->mBits = mBits;
    copy->mRowBytes = mRowBytes;
    copy->mHasAlpha = mHasAlpha;
    return copy->mPixels ? copy.release() : nullptr;
}
