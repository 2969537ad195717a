#include "host/overlay/OverlayPainter.h"

#include "draw/VXSkiaObject2D.h"
#include "engine/VXScene.h"
#include "host/overlay/GLStateKeeper.h"
#include "host/overlay/Overlay.h"

#include <GL/glew.h>

#include <GrContext.h>
#include <GrTextureProvider.h>
#include <SkCanvas.h>
#include <SkSurface.h>
#include <gl/GrGLInterface.h>

#include <algorithm>
#include <cmath>
#include <new>

namespace vx
{
CPB_Rect PlaceByPins(const VXObject2D& item, int width, int height, const OverlayFrame& frame)
{
    static constexpr std::int64_t kFar = 1 << 24; // outside of any picture
    const auto place = [](int pin, int room, int offset)
    {
        const std::int64_t anchor = pin == 0 ? 0 : pin == 1 ? room / 2 : room;
        return int(std::clamp(anchor + offset, -kFar, kFar));
    };
    const int x = place(item.PinX(), frame.width - width, item.OffsetX());
    const int y = place(item.PinY(), frame.height - height, item.OffsetY());
    return {x, y, x + width, y + height};
}

struct OverlayPainter::Impl
{
    sk_sp<const GrGLInterface> interface;
    sk_sp<GrContext> context;
    sk_sp<GrRenderTarget> target;
    sk_sp<SkSurface> surface;
    int width = 0, height = 0, framebuffer = -1, samples = 0;

    bool MakeContext();
    bool MakeSurface(const OverlayFrame& frame);
    void Lend(VXSkiaObject2D& item) const;
};

OverlayPainter::OverlayPainter() : mImpl(std::make_unique<Impl>()) {}

// Items may live on with what they were lent: it must not reach for OpenGL any more.
OverlayPainter::~OverlayPainter()
{
    if (!mImpl->context)
        return;
    const GLStateKeeper keeper;
    mImpl->surface.reset();
    mImpl->target.reset();
    mImpl->context->releaseResourcesAndAbandonContext();
}

bool OverlayPainter::Impl::MakeContext()
{
    if (context)
    {
        context->resetContext();
        return true;
    }
    interface.reset(GrGLDefaultInterface());
    if (interface)
        context.reset(GrContext::Create(kOpenGL_GrBackend, reinterpret_cast<GrBackendContext>(interface.get())));
    return context != nullptr;
}

// For the framebuffer that is current, as long as it and its size stay.
bool OverlayPainter::Impl::MakeSurface(const OverlayFrame& frame)
{
    GLint current = 0, sampleCount = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &current);
    glGetIntegerv(GL_SAMPLES, &sampleCount);
    if (surface && width == frame.viewWidth && height == frame.viewHeight && framebuffer == current &&
        samples == sampleCount)
        return true;
    surface.reset();
    GrBackendRenderTargetDesc description;
    description.fWidth = width = frame.viewWidth;
    description.fHeight = height = frame.viewHeight;
    description.fConfig = kRGBA_8888_GrPixelConfig;
    description.fOrigin = kBottomLeft_GrSurfaceOrigin;
    description.fSampleCnt = samples = sampleCount;
    description.fStencilBits = 8;
    description.fRenderTargetHandle = framebuffer = current;
    target.reset(context->textureProvider()->wrapBackendRenderTarget(description));
    if (target)
        surface = SkSurface::MakeRenderTargetDirect(target.get(), nullptr);
    return surface != nullptr;
}

// With a context of its own kept, an item makes none when it is prepared.
void OverlayPainter::Impl::Lend(VXSkiaObject2D& item) const
{
    if (item.CurContext() == context.get() && item.SkiaSurface() == surface.get())
        return;
    item.SetGlInterface(interface.get());
    item.SetCurContext(context.get());
    item.SetRenderTarget(target.get());
    item.SetSkiaSurface(surface.get());
    item.SetSkiaCanvas(surface->getCanvas());
    item.SetWidth(width);
    item.SetHeight(height);
}

bool OverlayPainter::Draws(const VXObject2D& item) { return dynamic_cast<const VXSkiaObject2D*>(&item) != nullptr; }

// Items share the canvas: what one leaves on it is taken back before the next.
static bool DrawOn(SkCanvas& canvas, VXSkiaObject2D& item)
{
    const int depth = canvas.save();
    bool drawn = true;
    try
    {
        item.Draw();
    }
    catch (const std::bad_alloc&)
    {
        drawn = false;
    }
    canvas.restoreToCount(depth);
    canvas.flush();
    return drawn;
}

bool OverlayPainter::Draw(VXObject2D& object, const OverlayFrame& frame)
{
    VXSkiaObject2D* const item = dynamic_cast<VXSkiaObject2D*>(&object);
    if (!item || frame.viewWidth < 1 || frame.viewHeight < 1)
        return false;
    const GLStateKeeper keeper;
    if (!mImpl->MakeContext() || !mImpl->MakeSurface(frame))
        return false;
    mImpl->Lend(*item);
    if (Overlay* const overlay = dynamic_cast<Overlay*>(item))
        overlay->SetFrame(frame);
    item->PrepareForDrawing(frame.viewWidth, frame.viewHeight);
    glBindFramebuffer(GL_FRAMEBUFFER, GLuint(mImpl->framebuffer)); // preparing binds the window's
    const bool drawn = DrawOn(*mImpl->surface->getCanvas(), *item);
    item->EndDrawing(frame.viewWidth, frame.viewHeight);
    return drawn;
}
} // namespace vx
