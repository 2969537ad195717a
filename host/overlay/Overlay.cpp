#include "host/overlay/Overlay.h"

#include <SkCanvas.h>

namespace vx
{
void Overlay::Draw()
{
    const Size size = SkiaCanvas() ? Measure(mFrame) : Size();
    if (size.width > 0 && size.height > 0)
    {
        const CPB_Rect place = PlaceByPins(*this, size.width, size.height, mFrame);
        SkCanvas& canvas = *SkiaCanvas();
        canvas.save();
        canvas.translate(-mFrame.left, -mFrame.top);
        canvas.scale(mFrame.scale, mFrame.scale);
        canvas.translate(SkScalar(place.x1), SkScalar(place.y1));
        canvas.clipRect(SkRect::MakeIWH(size.width, size.height));
        Paint(canvas, mFrame, size);
        canvas.restore();
        canvas.flush();
    }
    VXSkiaObject2D::Draw();
}
} // namespace vx
