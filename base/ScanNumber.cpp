#include "base/detail/ScanNumber.h"

#include <charconv>
#include <cmath>

namespace vx::detail
{
static bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Where a number out of the range of float lies: true below its smallest, false above its largest value. [p, end) is a
// well-formed decimal number.
static bool IsTiny(const char* p, const char* end)
{
    // Position of the leading digit: 0 for units, 1 for tens, -1 for tenths...
    std::int64_t leading = -1, place = 0;
    bool found = false, inFraction = false;
    for (; p < end && (IsDigit(*p) || *p == '.'); ++p)
    {
        if (*p == '.')
            inFraction = true;
        else if (inFraction)
        {
            --place;
            if (!found && *p != '0')
                found = true, leading = place;
        }
        else if (found || *p != '0')
        {
            leading += 1;
            found = true;
        }
    }
    std::int64_t exponent = 0;
    if (p < end)
    {
        const bool negative = p[1] == '-';
        for (p += 1 + (negative || p[1] == '+'); p < end; ++p)
            exponent = exponent < 100000000000 ? exponent * 10 + (*p - '0') : exponent;
        exponent = negative ? -exponent : exponent;
    }
    return leading + exponent < 0;
}

const char* ScanFloatSlowly(const char* p, const char* end, float& value)
{
    const bool negative = *p == '-';
    p += negative || *p == '+';
    if (!IsDigit(*p) && *p != '.') // a second sign, and the names of what is not finite
        return nullptr;
    float magnitude = 0;
    const auto [after, error] = std::from_chars(p, end, magnitude);
    if (error == std::errc::invalid_argument)
        return nullptr;
    if (error == std::errc::result_out_of_range && !IsTiny(p, after))
        return nullptr;
    if (!std::isfinite(magnitude))
        return nullptr;
    value = negative ? -magnitude : magnitude;
    return after;
}
} // namespace vx::detail
