// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BString.h"

#include <memory>
#include <vector>

class VXObject2D;

namespace vx
{
/// What the host can draw over a picture.
enum class OverlayKind
{
    Stats, ///< objects, polygons, vertices, and how long the last frame took
    Title, ///< words in the upper middle
    Axes,  ///< the world's axes as the camera sees them
    Frame, ///< the picture that will be rendered: everything outside an aspect ratio darkened
    Logo,  ///< a picture in the lower right
};

struct OverlaySpec
{
    OverlayKind kind = OverlayKind::Stats;
    BString text;             ///< a title's words, a logo's file
    float aspect = 16.0f / 9; ///< of a frame: width / height

    bool operator==(const OverlaySpec& other) const = default;
};

/// False in a build without Skia: MakeOverlay then always fails.
VELMAR_HOST_EXPORT bool HaveOverlays();

/// Makes the 2D object that `spec` asks for, to be added to a scene. @return null with the reason in `problem`
VELMAR_HOST_EXPORT std::unique_ptr<VXObject2D> MakeOverlay(const OverlaySpec& spec, BString& problem);
} // namespace vx
