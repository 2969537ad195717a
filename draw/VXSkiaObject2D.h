// VelmarBase: drawing.
#pragma once

#include "draw/VXObject2D.h"

class GrContext;
class GrRenderTarget;
class SkCanvas;
class SkSurface;
struct GrGLInterface;

/// A flat item that is drawn with Skia into the OpenGL framebuffer of the window, framebuffer 0. Between
/// PrepareForDrawing and EndDrawing the host draws on SkiaCanvas() and then flushes it; Draw() puts the OpenGL state
/// that Skia leaves into a form that the fixed pipeline can go on with.
///
/// The Skia objects are made by the first PrepareForDrawing at a size, made anew at another size, and released by
/// ClearSkia or destruction. They belong to the OpenGL context that was current then: an item that is to be drawn in
/// another context is cleared in the first. PrepareForDrawing always binds framebuffer 0; a host that draws elsewhere
/// binds its own framebuffer again afterwards, or hands in a surface of its own (SetCurContext, SetSkiaSurface,
/// SetSkiaCanvas), which is then kept. Without stencil bits in framebuffer 0 drawing goes on, but clipping by a path
/// without antialiasing takes the path's bounding rectangle.
///
/// Each pointer that is held counts as one reference; setters take a reference of their own. Not copied: the callbacks
/// hold the object itself.
class VELMAR_EXPORT VXSkiaObject2D : public VXObject2D
{
public:
    /// Installs the callbacks that prepare and end drawing. PrepareForDrawing answers 1 when it opened the outermost
    /// nest and can draw; 0 in inner nests, for a width or height below 1, and where Skia cannot be set up.
    VXSkiaObject2D();
    ~VXSkiaObject2D() override;
    VXSkiaObject2D(const VXSkiaObject2D&) = delete;
    VXSkiaObject2D& operator=(const VXSkiaObject2D&) = delete;

    /// With a canvas: fills polygons on both faces and unbinds the shader program. What is on the canvas is the host's.
    void Draw() override;
    bool WantsAnimatedDrawing() override; ///< false
    void BlitFramebuffer() {}             ///< nothing here
    void DrawSkiaSamples() {}             ///< nothing here

    /// Releases all that was made for a size, and deletes the OpenGL objects that the host made.
    void ClearSkia();
    /// Releases one reference of the render target and keeps the pointer. Every later change of the target, ClearSkia
    /// and destruction release once more: only for a caller who holds a further reference and gives it up this way.
    void ClearRenderTarget();

    SkSurface* SkiaSurface() const { return mSurface; }
    void SetSkiaSurface(SkSurface* surface);
    SkCanvas* SkiaCanvas() const { return mCanvas; } ///< of the surface, which owns it; null before the first prepare
    void SetSkiaCanvas(SkCanvas* canvas) { mCanvas = canvas; }
    GrRenderTarget* RenderTarget() const { return mRenderTarget; }
    void SetRenderTarget(GrRenderTarget* target);
    GrContext* CurContext() const { return mContext; }
    void SetCurContext(GrContext* context);
    const GrGLInterface* GlInterface() const { return mInterface; }
    void SetGlInterface(const GrGLInterface* interface);

    // OpenGL objects that the host may make; ClearSkia deletes them. 0 for none.
    std::uint32_t GetFBOID() const { return mFramebuffer; }
    void SetFBOID(std::uint32_t name) { mFramebuffer = name; }
    std::uint32_t TextureID() const { return mTexture; }
    void SetTextureID(std::uint32_t name) { mTexture = name; }
    std::uint32_t RenderbufferID() const { return mRenderbuffer; }
    void SetRenderbufferID(std::uint32_t name) { mRenderbuffer = name; }

    int Width() const { return mWidth; } ///< for which the Skia objects were made
    int Height() const { return mHeight; }
    void SetWidth(const int& width) { mWidth = width; }
    void SetHeight(const int& height) { mHeight = height; }

private:
    static int Prepare(VXObject2D* object, const int& width, const int& height, void* data);
    static int End(VXObject2D* object, const int& width, const int& height, void* data);
    bool MakeSkia();

    SkSurface* mSurface = nullptr;
    SkCanvas* mCanvas = nullptr; ///< not referenced
    GrRenderTarget* mRenderTarget = nullptr;
    GrContext* mContext = nullptr;
    const GrGLInterface* mInterface = nullptr;
    std::uint32_t mFramebuffer = 0;
    std::uint32_t mTexture = 0;
    std::int32_t mWidth = 0;
    std::int32_t mHeight = 0;
    std::uint32_t mRenderbuffer = 0;
};
