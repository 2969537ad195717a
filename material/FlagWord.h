// VelmarBase: materials.
#pragma once

#include <cstdint>
#include <initializer_list>

/// A 32-bit set of one enum's bits. Bit: an enum class of single-bit masks.
template <class Bit>
class FlagWord
{
public:
    constexpr FlagWord() = default;
    constexpr FlagWord(std::initializer_list<Bit> bits)
    {
        for (Bit b : bits)
            mWord |= std::uint32_t(b);
    }
    constexpr explicit FlagWord(std::uint32_t word) : mWord(word) {}

    constexpr bool Get(Bit b) const { return (mWord & std::uint32_t(b)) != 0; }
    constexpr void Set(Bit b, bool on) { mWord = on ? mWord | std::uint32_t(b) : mWord & ~std::uint32_t(b); }

    /// The bits of `within` become those of `by`; all others keep their value.
    constexpr void Replace(FlagWord within, FlagWord by) { mWord = (mWord & ~within.mWord) | by.mWord; }

    constexpr std::uint32_t Word() const { return mWord; } ///< the stored and compared form
    friend constexpr bool operator==(FlagWord, FlagWord) = default;

private:
    std::uint32_t mWord = 0;
};

/// One row of a flag word's name table.
template <class Bit>
struct FlagRow
{
    Bit bit;
    const char* name; ///< kebab-case, as dumps and the command line print it
};

/// All bits of a name table, to compare with the word's mask: static_assert(FlagMask(kTable) == 0x...).
template <class Bit, std::size_t N>
constexpr std::uint32_t FlagMask(const FlagRow<Bit> (&table)[N])
{
    std::uint32_t mask = 0;
    for (const FlagRow<Bit>& row : table)
        mask |= std::uint32_t(row.bit);
    return mask;
}

/// True when row i of a table is bit i: no bit is missing, doubled or out of order.
template <class Bit, std::size_t N>
constexpr bool FlagsInOrder(const FlagRow<Bit> (&table)[N])
{
    for (std::size_t i = 0; i < N; ++i)
        if (std::uint32_t(table[i].bit) != 1u << i)
            return false;
    return true;
}
