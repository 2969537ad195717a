// VelmarBase: reference host.
#pragma once

#include "base/Vertex.h"

namespace vx
{
/// One light of the standard set: where it comes from as the viewer sees it (x right, y up, z to the viewer), and its
/// linear colour.
struct RigLight
{
    const char* name;
    VERTEX toLight;
    VERTEX color;
};

/// Three lights that go with the camera, about 3 : 1 : 1 in strength: a slightly warm key from up left, a cooler fill
/// from the right, and one from behind that draws the rim.
inline constexpr RigLight kLightRig[] = {
    {"Key", {-0.50f, 0.72f, 0.62f}, {1.36f, 1.29f, 1.18f}},
    {"Fill", {0.85f, 0.12f, 0.55f}, {0.33f, 0.36f, 0.40f}},
    {"Rim", {0.28f, 0.62f, -0.78f}, {0.42f, 0.42f, 0.44f}},
};
} // namespace vx
