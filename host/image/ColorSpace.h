// VelmarBase: reference host.
#pragma once

#include <cmath>

namespace vx
{
/// sRGB to linear, of one component; above 1 the curve goes on.
inline float LinearOf(float encoded)
{
    return encoded <= 0.04045f ? encoded / 12.92f : std::pow((encoded + 0.055f) / 1.055f, 2.4f);
}

/// And back.
inline float EncodedOf(float linear)
{
    return linear <= 0.0031308f ? 12.92f * linear : 1.055f * std::pow(linear, 1 / 2.4f) - 0.055f;
}
} // namespace vx
