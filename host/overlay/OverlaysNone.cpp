#include "draw/VXObject2D.h"
#include "host/overlay/OverlayPainter.h"
#include "host/overlay/Overlays.h"

namespace vx
{
struct OverlayPainter::Impl
{
};
OverlayPainter::OverlayPainter() = default;
OverlayPainter::~OverlayPainter() = default;
bool OverlayPainter::Draws(const VXObject2D&) { return false; }
bool OverlayPainter::Draw(VXObject2D&, const OverlayFrame&) { return false; }

bool HaveOverlays() { return false; }

std::unique_ptr<VXObject2D> MakeOverlay(const OverlaySpec&, BString& problem)
{
    problem = "overlays need a build with Skia";
    return nullptr;
}
} // namespace vx
