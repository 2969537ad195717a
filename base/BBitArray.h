// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"
#include "base/BArray.h"

#include <cstdint>
#include <utility>

/// A growing set of bits. Reading beyond the end gives clear bits; setting beyond the end grows the array.
class FENWICK_EXPORT BBitArray
{
public:
    BBitArray() = default;
    explicit BBitArray(std::int64_t count) { SetCount(count); }
    /// A copy for which memory ran out is empty. What was moved from is empty too.
    BBitArray(const BBitArray& other) : mWords(other.mWords)
    {
        mCount = mWords.Count() == other.mWords.Count() ? other.mCount : 0;
    }
    BBitArray(BBitArray&& other) noexcept { Swap(other); }
    BBitArray& operator=(BBitArray other) noexcept
    {
        Swap(other);
        return *this;
    }
    ~BBitArray() = default;

    std::int64_t Count() const { return mCount; }
    bool SetCount(std::int64_t count); ///< new bits are clear; false when memory ran out (the array is then empty)
    bool Get(std::int64_t i) const { return i >= 0 && i < mCount && ((mWords.Data()[i >> 6] >> (i & 63)) & 1) != 0; }
    bool operator[](std::int64_t i) const { return Get(i); }
    void Set(std::int64_t i, bool on = true) ///< negative indices and clearing beyond the end do nothing
    {
        if (i >= 0 && (i < mCount || (on && GrowTo(i))))
        {
            const std::uint64_t bit = std::uint64_t(1) << (i & 63);
            std::uint64_t& word = mWords.Data()[i >> 6];
            word = on ? word | bit : word & ~bit;
        }
    }
    void SetAll(bool on);
    void ClearAll() { SetAll(false); }
    std::int64_t NumSet() const;
    std::int64_t NextSet(std::int64_t from) const; ///< first set bit at or after `from`, -1 for none

    friend bool operator==(const BBitArray& a, const BBitArray& b); ///< same count, same bits

private:
    void Swap(BBitArray& other) noexcept
    {
        std::swap(mCount, other.mCount);
        std::swap(mWords, other.mWords);
    }
    bool GrowTo(std::int64_t i);

    std::int64_t mCount = 0;
    BArray<std::uint64_t> mWords; ///< bits beyond mCount are clear
};

FENWICK_EXPORT bool operator==(const BBitArray& a, const BBitArray& b);
