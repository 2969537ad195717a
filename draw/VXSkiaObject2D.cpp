#include "draw/VXSkiaObject2D.h"

#include "base/platform/Platform.h"
#include "draw/detail/LoadGL.h"

#include <GL/glew.h>

#include <GrContext.h>
#include <GrTextureProvider.h>
#include <GrTypes.h>
#include <SkCanvas.h>
#include <SkSurface.h>
#include <gl/GrGLAssembleInterface.h>
#include <gl/GrGLInterface.h>

// --- The interface of the current context

static GrGLFuncPtr FindFunction(void*, const char name[])
{
    return reinterpret_cast<GrGLFuncPtr>(vx::platform::FindGLFunction(name));
}

// Skia leaves this function to whoever knows the window system: its default interface is the one made here.
const GrGLInterface* GrGLCreateNativeInterface() { return GrGLAssembleInterface(nullptr, FindFunction); }

// --- Life

VXSkiaObject2D::VXSkiaObject2D()
{
    SetPrepareProc(Prepare, this);
    SetEndProc(End, this);
}

VXSkiaObject2D::~VXSkiaObject2D() { ClearSkia(); }

// The new reference is taken first: the two may be the same object.
template <typename T>
static void Replace(T*& held, T* other)
{
    SkSafeRef(other);
    SkSafeUnref(held);
    held = other;
}

void VXSkiaObject2D::SetSkiaSurface(SkSurface* surface) { Replace(mSurface, surface); }
void VXSkiaObject2D::SetRenderTarget(GrRenderTarget* target) { Replace(mRenderTarget, target); }
void VXSkiaObject2D::SetCurContext(GrContext* context) { Replace(mContext, context); }
void VXSkiaObject2D::SetGlInterface(const GrGLInterface* interface) { Replace(mInterface, interface); }

void VXSkiaObject2D::ClearRenderTarget() { SkSafeUnref(mRenderTarget); }

void VXSkiaObject2D::ClearSkia()
{
    mCanvas = nullptr; // goes with its surface
    SetSkiaSurface(nullptr);
    SetRenderTarget(nullptr);
    SetCurContext(nullptr);
    SetGlInterface(nullptr);
    if (mTexture)
        glDeleteTextures(1, &mTexture);
    if ((mFramebuffer || mRenderbuffer) && vx::LoadGLFunctions())
    {
        glDeleteFramebuffers(1, &mFramebuffer); // zeros are ignored
        glDeleteRenderbuffers(1, &mRenderbuffer);
    }
    mTexture = mFramebuffer = mRenderbuffer = 0;
}

// --- Drawing

bool VXSkiaObject2D::MakeSkia()
{
    SkSafeUnref(mInterface);
    mInterface = GrGLDefaultInterface();
    mContext =
        mInterface ? GrContext::Create(kOpenGL_GrBackend, reinterpret_cast<GrBackendContext>(mInterface)) : nullptr;
    if (!mContext)
        return false;
    GrBackendRenderTargetDesc target;
    target.fWidth = mWidth;
    target.fHeight = mHeight;
    target.fConfig = kBGRA_8888_GrPixelConfig;
    target.fOrigin = kBottomLeft_GrSurfaceOrigin;
    target.fSampleCnt = 0;
    target.fStencilBits = 8;
    target.fRenderTargetHandle = 0;
    SkSafeUnref(mRenderTarget);
    mRenderTarget = mContext->textureProvider()->wrapBackendRenderTarget(target);
    if (!mRenderTarget)
        return false;
    const SkSurfaceProps properties(SkSurfaceProps::kLegacyFontHost_InitType);
    SkSafeUnref(mSurface);
    mSurface = SkSurface::NewRenderTargetDirect(mRenderTarget, &properties);
    mCanvas = mSurface ? mSurface->getCanvas() : nullptr;
    return mCanvas != nullptr;
}

int VXSkiaObject2D::Prepare(VXObject2D* object, const int& width, const int& height, void* /*data*/)
{
    VXSkiaObject2D* const self = static_cast<VXSkiaObject2D*>(object);
    if (!self)
        return 0;
    const bool lost = self->mContext && self->mContext->abandoned();
    if (lost || width != self->mWidth || height != self->mHeight)
    {
        self->ClearSkia();
        self->mWidth = width;
        self->mHeight = height;
    }
    glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS); // the end proc pops, whatever comes of the rest
    if (width < 1 || height < 1 || !vx::LoadGLFunctions())
        return 0;
    if (self->mContext)
        self->mContext->resetContext(kAll_GrBackendState);
    else if (!self->MakeSkia())
    {
        self->ClearSkia();
        return 0;
    }
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    return 1;
}

int VXSkiaObject2D::End(VXObject2D*, const int&, const int&, void*)
{
    glPopClientAttrib();
    return 0;
}

void VXSkiaObject2D::Draw()
{
    if (!mCanvas)
        return;
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
    glPopClientAttrib();
    if (vx::LoadGLFunctions())
        glUseProgram(0);
}

bool VXSkiaObject2D::WantsAnimatedDrawing() { return false; }
