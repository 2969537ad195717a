// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"

/// @file
/// Pieces of GLSL 1.30 that the fixed surfaces and the generated programs share, so that both look the same to the
/// last bit. Each is complete in itself but for the pieces and the variable named beside it; all but the first belong
/// into fragment stages.

namespace vx::text
{
VELMAR_HOST_EXPORT extern const char* const kFrame;   ///< the uniform block of the frame; its C++ side is FrameBlock.h
VELMAR_HOST_EXPORT extern const char* const kEncoded; ///< vec3 Encoded(vec3): linear to sRGB
VELMAR_HOST_EXPORT extern const char* const kDither;  ///< float Dither(), -0.5 to 0.5
VELMAR_HOST_EXPORT extern const char* const kBackground; ///< vec4 Background(), with its sampler. kFrame, kDither
VELMAR_HOST_EXPORT extern const char* const kCued;       ///< vec4 Cued(colour, depth): depth cue. kFrame, kBackground
/// vec3 Facing(vec3 normal): of unit length and on the seen side, also where a normal has no length. vPosition.
VELMAR_HOST_EXPORT extern const char* const kFacing;
VELMAR_HOST_EXPORT extern const char* const kToViewer; ///< vec3 ToViewer(). vPosition, kFrame
VELMAR_HOST_EXPORT extern const char* const
    kSided; ///< vec3 Sided(front, back, normal): of the side that is seen. kToViewer
VELMAR_HOST_EXPORT extern const char* const kToLight; ///< direction to a light and its strength. vPosition, kFrame
/// void AddFarLight(...), void AddLight(...): what one light adds to diffuse and specular light. kToLight, kToViewer
VELMAR_HOST_EXPORT extern const char* const kAddLight;
VELMAR_HOST_EXPORT extern const char* const kAmbient; ///< vec3 Ambient(vec3 normal), images included. kFrame
/// void GatherLight(normal, exponent, out diffuse, out specular): of all lights. kAddLight, kAmbient
VELMAR_HOST_EXPORT extern const char* const kGatherLight;
VELMAR_HOST_EXPORT extern const char* const kShoulder; ///< vec3 Shoulder(vec3): bright places keep their drawing
/// vec3 Toned(normal, colour, number of tones): bands of the first light. kToLight, kToViewer
VELMAR_HOST_EXPORT extern const char* const kToned;
/// float Alpha(normal, texel's alpha, transparency at the middle, at the rim, falloff, least opacity). kToViewer
VELMAR_HOST_EXPORT extern const char* const kAlpha;
} // namespace vx::text
