// VelmarBase: reference host.
#pragma once

#include <cmath>

namespace vx
{
/// sRGB to linear, of one component; above 1 the curve goes on. Computed with doubles, so that the float that comes
/// out, and with it the text of a shader, is the same whatever the machine's powers of floats are.
inline float LinearOf(float encoded)
{
    const double e = double(encoded);
    return float(e <= 0.04045 ? e / 12.92 : std::pow((e + 0.055) / 1.055, 2.4));
}

/// And back.
inline float EncodedOf(float linear)
{
    return linear <= 0.0031308f ? 12.92f * linear : 1.055f * std::pow(linear, 1 / 2.4f) - 0.055f;
}
} // namespace vx
