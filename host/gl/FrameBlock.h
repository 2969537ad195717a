// VelmarBase: reference host.
#pragma once

#include "host/gl/VXGLDrawEngine.h"

/// Texture unit of the background picture in every program: the last that all drivers have, away from those of
/// materials.
inline constexpr int kBackPictureUnit = 15;

/// What every program of a frame reads: the uniform block "Frame" of the shader texts, in std140 layout.
struct VXGLDrawEngine::FrameBlock
{
    static constexpr int kMostLights = 8;
    float projection[16];
    float viewport[4];
    float up[4];
    float sky[4], floor[4];
    float backTop[4], backBottom[4];
    float tile[4];
    float depths[4];
    float cue[4];
    float picture[4];
    Light lights[kMostLights];
    float image[3][16]; ///< vx::AddImageLight
};
