// VelmarBase: reference host.
#pragma once

#include <string>

/// @file
/// GLSL of the reference engine, for use inside host/gl alone. Matrices arrive as the library keeps them: row vectors
/// in rows are, read column by column as GLSL does, column vectors in columns.

namespace vx::text
{
std::string Common(); ///< before every other text: the uniform block of the frame, colour functions

// Surfaces. Defines: FLAT (polygon normals), TEXTURE, VERTEX_COLORS, CLEAR (transparency), FAR_LIGHTS (their
// number, when all lights are far away), and one of SHADE_LIT, SHADE_TOON, SHADE_FILL,
// SHADE_DEPTH, SHADE_NORMALS, SHADE_HEIGHT, SHADE_GROUND,
// SHADE_MARK, SHADE_OCCLUSION.
extern const char* const kSurfaceVertex;
const std::string& SurfaceFragment();

// Names of objects and polygons as 32-bit numbers.
extern const char* const kPickVertex;
extern const char* const kPickFragment;

// Lines and points as screen-space quads. Define POINTS for points, LIT for lines that take light.
extern const char* const kLineVertex;
extern const char* const kLineFragment;

extern const char* const kScreenVertex;       ///< one triangle over the whole target
extern const char* const kBackgroundFragment; ///< vertical gradient
extern const char* const kBlurFragment;       ///< one direction of the shadow's blur
extern const char* const kShadowVertex;       ///< the ground under the shadow
extern const char* const kShadowFragment;
} // namespace vx::text
