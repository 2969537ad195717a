// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// @file
/// Decimal numbers in text, for readers that spend most of their time on them. The text must hold a line feed at or
/// after the place where reading starts, and kReadAhead bytes of any kind behind that line feed: the line feed ends
/// every number, and digits are fetched eight at a time, so that no loop has to look for the end of the text.

namespace vx::detail
{
inline constexpr std::size_t kReadAhead = 8;

/// The number that up to eight digits at p make; any number when there are none. @param count out: how many there are
inline std::uint32_t ScanDigits(const char* p, int& count)
{
    if constexpr (std::endian::native == std::endian::little)
    {
        std::uint64_t bytes;
        std::memcpy(&bytes, p, 8);
        bytes ^= 0x3030303030303030; // digits become 0..9
        const std::uint64_t others = ((bytes + 0x7676767676767676) | bytes) & 0x8080808080808080;
        count = std::countr_zero(others) / 8; // 8 when there are no others
        bytes <<= (64 - 8 * count) & 63;      // leading zeros
        bytes = bytes * 10 + (bytes >> 8);
        // Pairs of digits now stand in every second byte; two products bring them together.
        constexpr std::uint64_t kPairs = 0x000000FF000000FF;
        return std::uint32_t(
            ((bytes & kPairs) * (100 + (1000000ull << 32)) + ((bytes >> 16) & kPairs) * (1 + (10000ull << 32))) >> 32);
    }
    std::uint32_t value = 0;
    for (count = 0; count < 8 && p[count] >= '0' && p[count] <= '9'; ++count)
        value = value * 10 + std::uint32_t(p[count] - '0');
    return value;
}

/// Reads what the quick way below leaves: long, very large, very small and halfway numbers.
const char* ScanFloatSlowly(const char* p, const char* end, float& value);

/// Reads a finite decimal number (with or without sign, fraction, exponent) as the float nearest to it.
/// @return behind the number; null when there is none, or it is not finite
inline const char* ScanFloat(const char* const start, const char* end, float& value)
{
    static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8, 1e9,
                                         1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18};
    static constexpr std::uint32_t kWholePowers[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};
    const char* p = start;
    const bool negative = *p == '-';
    p += negative;

    // The whole part is short as a rule: a loop whose length the processor guesses beats eight digits at once.
    std::uint64_t digits = 0;
    int whole = 0, fraction = 0;
    for (; *p >= '0' && *p <= '9' && whole < 9; ++p, ++whole)
        digits = digits * 10 + std::uint64_t(*p - '0');
    if (*p == '.')
    {
        int count;
        std::uint32_t next = ScanDigits(++p, count);
        if (count == 8)
        {
            digits = digits * kWholePowers[8] + next;
            fraction = 8;
            next = ScanDigits(p += 8, count);
        }
        if (count > 0)
            digits = digits * kWholePowers[count] + next;
        fraction += count;
        p += count;
    }
    // Up to 18 digits fit into 63 bits. A whole part or a fraction that goes on here is longer than that.
    const int all = whole + fraction;
    const bool goesOn = *p >= '0' && *p <= '9';
    if (all == 0 || all > 18 || goesOn || (*p | 0x20) == 'e')
        return ScanFloatSlowly(start, end, value);

    // The quotient is off by at most two units of the last place. Rounding it to float gives the nearest float unless
    // the exact number could lie on the other side of the middle between two floats.
    const double nearby = double(std::int64_t(digits)) / kPowers[fraction];
    const std::uint32_t below = std::uint32_t(std::bit_cast<std::uint64_t>(nearby)) & 0x1FFFFFFF;
    if (below - 0x0FFFFFF8 <= 16)
        return ScanFloatSlowly(start, end, value);
    value = float(negative ? -nearby : nearby);
    return p;
}

/// Reads a whole number with or without a sign. Numbers beyond 18 digits give 10^18, which no count reaches.
/// @return behind the number; null when there is none
inline const char* ScanInteger(const char* p, std::int64_t& value)
{
    const bool negative = *p == '-';
    p += negative || *p == '+';
    if (*p < '0' || *p > '9')
        return nullptr;
    std::int64_t digits = 0;
    for (; *p >= '0' && *p <= '9'; ++p)
        digits = digits < 100000000000000000 ? digits * 10 + (*p - '0') : 1000000000000000000;
    value = negative ? -digits : digits;
    return p;
}
} // namespace vx::detail
