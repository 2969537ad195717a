// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"

#include <cstdint>

/// A rectangle in whole pixels; x2 and y2 are one past the last.
struct CPB_Rect
{
    std::int32_t x1 = 0, y1 = 0, x2 = 0, y2 = 0;
};

/// Pixels that someone holds: the common face of bitmaps handed between host and library.
class FENWICK_EXPORT CPB_PixelBucket
{
public:
    virtual ~CPB_PixelBucket() = default;
    virtual int Width() const = 0;
    virtual int Height() const = 0;
    virtual int BitsPerPixel() const = 0;
    virtual int RowBytes() const = 0;
    virtual std::uint8_t* Pixels() = 0; ///< top row first, bytes in the order R, G, B, A; null when there are none
    virtual const std::uint8_t* Pixels() const = 0;
};

/// A bitmap in memory that owns its pixels, zeroed at creation.
class FENWICK_EXPORT CPB_Offscreen : public CPB_PixelBucket
{
public:
    /// Null when memory ran out, a side is not positive, or bits is not 8, 24 or 32.
    /// @param alignRows rows start at multiples of 4 bytes  @param hasAlpha the fourth byte is meant
    static CPB_Offscreen* Create(int width, int height, int bits = 32, bool alignRows = true, bool hasAlpha = true);
    ~CPB_Offscreen() override;
    CPB_Offscreen(const CPB_Offscreen&) = delete;
    CPB_Offscreen& operator=(const CPB_Offscreen&) = delete;

    int Width() const override { return mWidth; }
    int Height() const override { return mHeight; }
    int BitsPerPixel() const override { return mBits; }
    int RowBytes() const override { return mRowBytes; }
    bool HasAlpha() const { return mHasAlpha; }
    std::uint8_t* Pixels() override { return mPixels; }
    const std::uint8_t* Pixels() const override { return mPixels; }
    std::uint8_t* Row(int y) { return mPixels + std::int64_t(y) * mRowBytes; }
    const std::uint8_t* Row(int y) const { return mPixels + std::int64_t(y) * mRowBytes; }
    void Fill(std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint8_t a);
    CPB_Offscreen* Clone() const; ///< null when memory ran out

private:
    CPB_Offscreen() = default;
    std::uint8_t* mPixels = nullptr; ///< a memory handle
    int mWidth = 0, mHeight = 0, mBits = 0, mRowBytes = 0;
    bool mHasAlpha = true;
};
