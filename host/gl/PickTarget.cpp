#include "host/gl/PickTarget.h"

#include "host/gl/Framebuffer.h"

#include <GL/glew.h>

#include <algorithm>

namespace vx
{
BString PickTarget::Create(int width, int height)
{
    if (mFrame && width == mWidth && height == mHeight)
        return {};
    Release();
    if (width < 1 || height < 1 || std::max(width, height) > Framebuffer::LargestSide())
        return BString::Format("%d x %d pixels cannot be picked from at once: 1 to %d a side", width, height,
                               Framebuffer::LargestSide());
    mWidth = width;
    mHeight = height;
    glGenFramebuffers(1, &mFrame);
    glBindFramebuffer(GL_FRAMEBUFFER, mFrame);
    const auto attach = [&](GLenum place, GLenum format, std::uint32_t& buffer)
    {
        glGenRenderbuffers(1, &buffer);
        glBindRenderbuffer(GL_RENDERBUFFER, buffer);
        glRenderbufferStorage(GL_RENDERBUFFER, format, width, height);
        glBindRenderbuffer(GL_RENDERBUFFER, 0);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, place, GL_RENDERBUFFER, buffer);
    };
    attach(GL_COLOR_ATTACHMENT0, GL_R32UI, mNames);
    attach(GL_DEPTH_ATTACHMENT, GL_DEPTH_COMPONENT32F, mDepths);
    const bool complete = glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    if (glGetError() != GL_OUT_OF_MEMORY && complete)
        return {};
    Release();
    return BString::Format("no graphics memory to pick from %d x %d pixels", width, height);
}

void PickTarget::Release()
{
    if (mFrame)
    {
        const GLuint buffers[] = {mNames, mDepths};
        glDeleteFramebuffers(1, &mFrame);
        glDeleteRenderbuffers(2, buffers);
    }
    mFrame = mNames = mDepths = 0;
    mWidth = mHeight = 0;
}

void PickTarget::Begin()
{
    glBindFramebuffer(GL_FRAMEBUFFER, mFrame);
    glViewport(0, 0, mWidth, mHeight);
    const GLuint nothing[4] = {};
    const GLfloat farthest = 1;
    glClearBufferuiv(GL_COLOR, 0, nothing);
    glClearBufferfv(GL_DEPTH, 0, &farthest);
}

bool PickTarget::Read(VXPickBuffer& buffer)
{
    const std::int64_t pixels = std::int64_t(mWidth) * mHeight;
    BArray<std::uint32_t> names; // OpenGL's first row is the lowest
    BArray<float> depths;
    if (!names.SetCountForWriting(pixels) || !depths.SetCountForWriting(pixels))
        return false;
    glBindFramebuffer(GL_READ_FRAMEBUFFER, mFrame);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, mWidth, mHeight, GL_RED_INTEGER, GL_UNSIGNED_INT, names.Data());
    glReadPixels(0, 0, mWidth, mHeight, GL_DEPTH_COMPONENT, GL_FLOAT, depths.Data());
    for (int y = 0; y < mHeight; ++y)
    {
        const std::int64_t from = std::int64_t(mHeight - 1 - y) * mWidth, to = std::int64_t(y) * mWidth;
        std::copy_n(names.Data() + from, mWidth, buffer.Names() + to);
        std::copy_n(depths.Data() + from, mWidth, buffer.Depths() + to);
    }
    return true;
}
} // namespace vx
