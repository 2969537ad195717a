// VelmarBase: drawing.
#pragma once

#include "VelmarExport.h"
#include "base/CPB_Offscreen.h"

#include <cstdint>

/// Holds one bitmap for the host, beside five header values whose meaning is the host's.
class VELMAR_EXPORT VXFrameBits
{
public:
    VXFrameBits() = default;
    /// Copies are shallow, the bitmap's pointer included: only one of the two may keep it (SetBitMap, FreeBitMap).
    VXFrameBits(const VXFrameBits& other) = default;
    VXFrameBits& operator=(const VXFrameBits& other) = default;
    virtual ~VXFrameBits();

    /// Makes a bitmap and holds it. A bitmap held before is not freed: whoever took BitMap() has it then.
    /// @return the bitmap, null when it could not be made
    CPB_Offscreen* AllocateBitMap(std::uint32_t width, std::uint32_t height, std::uint32_t depth,
                                  std::uint8_t alignRows, std::uint8_t hasAlpha);
    CPB_Offscreen* BitMap() const { return mBitMap; }
    void SetBitMap(CPB_Offscreen* bitmap); ///< takes ownership; the one held before is freed unless it is the same
    void FreeBitMap();

    std::int32_t mHeader1 = 0;
    std::int32_t mHeader2 = 0;
    std::int32_t mHeader3 = -1;
    std::int32_t mHeader4 = 8;
    std::int64_t mHeader5 = 0;

private:
    CPB_Offscreen* mBitMap = nullptr; ///< owned
};
