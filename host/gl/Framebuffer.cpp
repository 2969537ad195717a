#include "host/gl/Framebuffer.h"

#include <GL/glew.h>

#include <algorithm>
#include <climits>

namespace vx
{
static GLuint NewStorage(GLenum format, int width, int height, int samples)
{
    GLuint buffer = 0;
    glGenRenderbuffers(1, &buffer);
    glBindRenderbuffer(GL_RENDERBUFFER, buffer);
    if (samples > 1)
        glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, format, width, height);
    else
        glRenderbufferStorage(GL_RENDERBUFFER, format, width, height);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    return buffer;
}

static int sPretendedSide = INT_MAX, sPretendedSamples = INT_MAX;

void Framebuffer::PretendLimits(int side, int samples)
{
    sPretendedSide = side;
    sPretendedSamples = samples;
}

int Framebuffer::MostSamples()
{
    GLint most = 0;
    glGetIntegerv(GL_MAX_SAMPLES, &most);
    return std::clamp(int(most), 1, sPretendedSamples);
}

int Framebuffer::LargestSide()
{
    GLint side = 0, viewport[2] = {};
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &side);
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    return std::min({int(side), int(viewport[0]), int(viewport[1]), sPretendedSide});
}

BString Framebuffer::Create(int width, int height, int samples)
{
    if (mDrawBuffer && width == mWidth && height == mHeight && samples == mWishedSamples)
        return {};
    Release();
    if (width < 1 || height < 1 || width > LargestSide() || height > LargestSide())
        return BString::Format("a picture of %d x %d pixels cannot be drawn here: 1 to %d a side", width, height,
                               LargestSide());
    mWidth = width;
    mHeight = height;
    mWishedSamples = samples;
    mSamples = std::clamp(samples, 1, MostSamples());
    mColour = NewStorage(GL_RGBA8, width, height, mSamples);
    mDepth = NewStorage(GL_DEPTH24_STENCIL8, width, height, mSamples);
    glGenFramebuffers(1, &mDrawBuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, mDrawBuffer);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, mColour);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER, mDepth);
    bool complete = glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    if (mSamples > 1)
    {
        mResolved = NewStorage(GL_RGBA8, width, height, 1);
        glGenFramebuffers(1, &mReadBuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, mReadBuffer);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, mResolved);
        complete = complete && glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    }
    if (glGetError() == GL_OUT_OF_MEMORY || !complete)
    {
        Release();
        return BString::Format("no graphics memory for a picture of %d x %d pixels", width, height);
    }
    Bind();
    return {};
}

void Framebuffer::Release()
{
    if (mDrawBuffer)
    {
        const GLuint frames[] = {mDrawBuffer, mReadBuffer};
        const GLuint buffers[] = {mColour, mDepth, mResolved};
        glDeleteFramebuffers(2, frames); // zeros are skipped
        glDeleteRenderbuffers(3, buffers);
    }
    mDrawBuffer = mReadBuffer = mColour = mDepth = mResolved = 0;
    mWidth = mHeight = mSamples = mWishedSamples = 0;
}

void Framebuffer::Bind()
{
    glBindFramebuffer(GL_FRAMEBUFFER, mDrawBuffer);
    glViewport(0, 0, mWidth, mHeight);
    mAveraged = false;
}

// Drawing blends into a transparent target, which leaves colours multiplied by alpha; files want them divided.
static void DivideByAlpha(std::uint8_t* pixel)
{
    const unsigned alpha = pixel[3];
    if (alpha == 255)
        return;
    for (int c = 0; c < 3; ++c)
        pixel[c] = alpha ? std::uint8_t(std::min(255u, (pixel[c] * 255u + alpha / 2) / alpha)) : std::uint8_t(0);
}

void Framebuffer::Average()
{
    glBindFramebuffer(GL_READ_FRAMEBUFFER, mDrawBuffer);
    if (!mReadBuffer)
        return;
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, mReadBuffer);
    glBlitFramebuffer(0, 0, mWidth, mHeight, 0, 0, mWidth, mHeight, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, mReadBuffer);
    mAveraged = true;
}

void Framebuffer::CopyToWindow(int x, int y)
{
    if (mAveraged)
        glBindFramebuffer(GL_READ_FRAMEBUFFER, mReadBuffer);
    else
        Average();
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
    glBlitFramebuffer(0, 0, mWidth, mHeight, x, y, x + mWidth, y + mHeight, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
}

// Of the framebuffer that is bound for reading, top row first.
static PicturePtr ReadPixels(int width, int height, bool keepAlpha)
{
    PicturePtr picture(CPB_Offscreen::Create(width, height, 32, true, keepAlpha));
    if (!picture)
        return nullptr;
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, picture->Pixels());
    for (int y = 0; y < height / 2; ++y) // OpenGL's first row is the lowest
        std::swap_ranges(picture->Row(y), picture->Row(y) + picture->RowBytes(), picture->Row(height - 1 - y));
    for (int y = 0; y < height; ++y)
    {
        std::uint8_t* pixel = picture->Row(y);
        for (int x = 0; x < width; ++x, pixel += 4)
        {
            if (keepAlpha)
                DivideByAlpha(pixel);
            else
                pixel[3] = 255;
        }
    }
    return picture;
}

PicturePtr Framebuffer::ReadBack(bool keepAlpha)
{
    Average();
    PicturePtr picture = ReadPixels(mWidth, mHeight, keepAlpha);
    glBindFramebuffer(GL_FRAMEBUFFER, mDrawBuffer);
    return picture;
}

PicturePtr Framebuffer::ReadWindow(int width, int height)
{
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    return ReadPixels(width, height, false);
}
} // namespace vx
