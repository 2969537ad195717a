#include "host/overlay/GLStateKeeper.h"

#include <GL/glew.h>

#include <algorithm>

namespace vx
{
// Units that drawing here ever uses; asking for all of a driver's would cost more than the drawing.
static constexpr int kMostUnits = 16;

static std::int32_t Get(GLenum what)
{
    GLint value = 0;
    glGetIntegerv(what, &value);
    return value;
}

GLStateKeeper::GLStateKeeper()
    : mProgram(Get(GL_CURRENT_PROGRAM)), mVertexArray(Get(GL_VERTEX_ARRAY_BINDING)),
      mArrayBuffer(Get(GL_ARRAY_BUFFER_BINDING)), mElementBuffer(Get(GL_ELEMENT_ARRAY_BUFFER_BINDING)),
      mUniformBuffer(Get(GL_UNIFORM_BUFFER_BINDING)), mPackBuffer(Get(GL_PIXEL_PACK_BUFFER_BINDING)),
      mUnpackBuffer(Get(GL_PIXEL_UNPACK_BUFFER_BINDING)), mTextureBuffer(Get(GL_TEXTURE_BUFFER)),
      mDrawFramebuffer(Get(GL_DRAW_FRAMEBUFFER_BINDING)), mReadFramebuffer(Get(GL_READ_FRAMEBUFFER_BINDING)),
      mRenderbuffer(Get(GL_RENDERBUFFER_BINDING)), mActiveTexture(Get(GL_ACTIVE_TEXTURE))
{
    // The default array object, whose state the client attributes hold: what the guest enables and points to there
    // stays out of the host's object.
    glBindVertexArray(0);
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
    mUnits.resize(std::size_t(std::clamp(Get(GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS), 1, kMostUnits)));
    for (std::size_t i = 0; i < mUnits.size(); ++i)
    {
        glActiveTexture(GLenum(GL_TEXTURE0 + i));
        mUnits[i] = {Get(GL_TEXTURE_BINDING_BUFFER), Get(GL_TEXTURE_BINDING_RECTANGLE),
                     Get(GL_TEXTURE_BINDING_2D_ARRAY), Get(GL_SAMPLER_BINDING)};
        glBindSampler(GLuint(i), 0);
    }
    glActiveTexture(GLenum(mActiveTexture));
    // What a guest that sets its own state takes for granted.
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    for (const GLenum skip : {GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS, GL_PACK_SKIP_ROWS, GL_PACK_SKIP_PIXELS})
        glPixelStorei(skip, 0);
}

GLStateKeeper::~GLStateKeeper()
{
    glBindVertexArray(0);
    glPopClientAttrib();
    for (std::size_t i = 0; i < mUnits.size(); ++i)
    {
        const Unit& unit = mUnits[i];
        glActiveTexture(GLenum(GL_TEXTURE0 + i));
        glBindTexture(GL_TEXTURE_BUFFER, GLuint(unit.buffer));
        glBindTexture(GL_TEXTURE_RECTANGLE, GLuint(unit.rectangle));
        glBindTexture(GL_TEXTURE_2D_ARRAY, GLuint(unit.array));
        glBindSampler(GLuint(i), GLuint(unit.sampler));
    }
    // Before the attributes, which hold the buffers that these framebuffers draw to and read from.
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, GLuint(mDrawFramebuffer));
    glBindFramebuffer(GL_READ_FRAMEBUFFER, GLuint(mReadFramebuffer));
    glPopAttrib();
    glBindRenderbuffer(GL_RENDERBUFFER, GLuint(mRenderbuffer));
    glUseProgram(GLuint(mProgram));
    glBindVertexArray(GLuint(mVertexArray));
    if (mVertexArray == 0)
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, GLuint(mElementBuffer));
    glBindBuffer(GL_ARRAY_BUFFER, GLuint(mArrayBuffer));
    glBindBuffer(GL_UNIFORM_BUFFER, GLuint(mUniformBuffer));
    glBindBuffer(GL_PIXEL_PACK_BUFFER, GLuint(mPackBuffer));
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, GLuint(mUnpackBuffer));
    glBindBuffer(GL_TEXTURE_BUFFER, GLuint(mTextureBuffer));
    glActiveTexture(GLenum(mActiveTexture));
}
} // namespace vx
