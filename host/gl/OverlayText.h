// VelmarBase: reference host.
#pragma once

/// @file
/// GLSL of what the reference engine lays over a picture, for use inside host/gl alone.

namespace vx::text
{
extern const char* const kPictureVertex;           ///< a rectangle of the picture
extern const char* const kPictureFragment;         ///< a picture in it
extern const char* const kProductionFrameFragment; ///< darkens what is outside of a rectangle; kScreenVertex
extern const char* const kOcclusionFragment;       ///< how open the surroundings of each point are; kScreenVertex
extern const char* const kOcclusionLateFragment;   ///< smoothed, as ink over the picture; kScreenVertex
} // namespace vx::text
