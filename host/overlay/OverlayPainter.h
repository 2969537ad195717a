// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/CPB_Offscreen.h"
#include "base/MAT.h"

#include <cstdint>
#include <memory>

class VXObject2D;
class VXScene;

namespace vx
{
/// One frame as overlays see it.
struct OverlayFrame
{
    const VXScene* scene = nullptr;
    Mat44 camera;                      ///< world to view
    int width = 1, height = 1;         ///< of the whole picture, in pixels of it
    float milliseconds = 0;            ///< that the frame before took; 0 when that is not known
    int viewWidth = 1, viewHeight = 1; ///< of the viewport, in device pixels
    float scale = 1;                   ///< device pixels for one of the picture
    float left = 0, top = 0;           ///< of the viewport within the picture, in device pixels
};

/// Where an item of this size stands in the picture: by its pins, moved by its offsets, which count to the right and
/// down. In pixels of the picture, y down.
VELMAR_HOST_EXPORT CPB_Rect PlaceByPins(const VXObject2D& item, int width, int height, const OverlayFrame& frame);

/// Draws 2D objects with Skia into the framebuffer that is current, whichever it is: lends each item the one Skia
/// context and surface that it keeps, and leaves the state of OpenGL as it found it. Belongs to the OpenGL context in
/// which it first draws.
class OverlayPainter
{
public:
    OverlayPainter();
    ~OverlayPainter(); ///< with the OpenGL context current
    OverlayPainter(const OverlayPainter&) = delete;
    OverlayPainter& operator=(const OverlayPainter&) = delete;

    static bool Draws(const VXObject2D& item); ///< it draws with Skia
    /// Prepares, draws and ends such an item.
    /// @return false, with nothing done, where Skia cannot be set up; or the item failed for lack of memory
    bool Draw(VXObject2D& item, const OverlayFrame& frame);

private:
    struct Impl;
    std::unique_ptr<Impl> mImpl;
};
} // namespace vx
