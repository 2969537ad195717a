// VelmarBase: shaders.
#pragma once

#include <cstdint>

/// @file
/// What noise volumes ask of OpenGL. A library built without it does nothing here.
namespace vx
{
void LoadVolumeFunctions(); ///< nothing when somebody has loaded OpenGL's functions already
void UploadNoiseVolume(std::uint32_t texture, int width, int height, int depth, const std::uint8_t* bytes);
} // namespace vx
