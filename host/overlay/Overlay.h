// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "draw/VXSkiaObject2D.h"
#include "host/overlay/OverlayPainter.h"

namespace vx
{
/// A 2D object that knows how large it is and paints itself: what OverlayPainter puts at its pins. Painting is clipped
/// to the item's rectangle.
class VELMAR_HOST_EXPORT Overlay : public VXSkiaObject2D
{
public:
    void SetFrame(const OverlayFrame& frame) { mFrame = frame; } ///< before each Draw
    void Draw() final;

protected:
    struct Size
    {
        int width = 0, height = 0;
    };

    /// The item's size in pixels of the picture; nothing is painted where a side is below 1.
    virtual Size Measure(const OverlayFrame& frame) = 0;
    /// Paints with (0, 0) at the item's upper left and pixels of the picture as units.
    virtual void Paint(SkCanvas& canvas, const OverlayFrame& frame, const Size& size) = 0;

private:
    OverlayFrame mFrame;
};
} // namespace vx
