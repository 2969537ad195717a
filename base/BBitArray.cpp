// FenwickBase: foundation of the VelmarBase project.
#include "base/BBitArray.h"

#include <algorithm>
#include <bit>

namespace
{
constexpr std::int64_t WordsFor(std::int64_t bits) { return bits / 64 + (bits % 64 != 0 ? 1 : 0); }

// The bits of the last word that are within the count.
constexpr std::uint64_t LastWordMask(std::int64_t count)
{
    return count % 64 == 0 ? ~std::uint64_t(0) : (std::uint64_t(1) << (count % 64)) - 1;
}
} // namespace

bool BBitArray::SetCount(std::int64_t count)
{
    count = std::max<std::int64_t>(count, 0);
    if (!mWords.SetCount(WordsFor(count)))
    {
        mCount = 0;
        return false;
    }
    if (count < mCount && count > 0) // so that bits are clear when the array grows again
        mWords[mWords.Count() - 1] &= LastWordMask(count);
    mCount = count;
    return true;
}

bool BBitArray::GrowTo(std::int64_t i) { return i < INT64_MAX && SetCount(i + 1); }

void BBitArray::SetAll(bool on)
{
    std::fill(mWords.begin(), mWords.end(), on ? ~std::uint64_t(0) : 0);
    if (on && mCount > 0)
        mWords[mWords.Count() - 1] &= LastWordMask(mCount);
}

std::int64_t BBitArray::NumSet() const
{
    std::int64_t number = 0;
    for (const std::uint64_t word : mWords)
        number += std::popcount(word);
    return number;
}

std::int64_t BBitArray::NextSet(std::int64_t from) const
{
    from = std::max<std::int64_t>(from, 0);
    if (from >= mCount)
        return -1;
    std::int64_t at = from >> 6;
    std::uint64_t word = mWords[at] & (~std::uint64_t(0) << (from & 63));
    while (word == 0)
    {
        if (++at == mWords.Count())
            return -1;
        word = mWords[at];
    }
    return at * 64 + std::countr_zero(word);
}

bool operator==(const BBitArray& a, const BBitArray& b)
{
    return a.mCount == b.mCount && std::equal(a.mWords.begin(), a.mWords.end(), b.mWords.begin(), b.mWords.end());
}
