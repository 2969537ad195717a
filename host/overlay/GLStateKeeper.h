// VelmarBase: reference host.
#pragma once

#include <cstdint>
#include <vector>

namespace vx
{
/// Keeps the state of the current OpenGL context, compatibility profile, while code that knows nothing of it draws:
/// what is there at construction is there again after destruction. In between, no pixel buffer, sampler or array object
/// of the host is bound.
class GLStateKeeper
{
public:
    GLStateKeeper();
    ~GLStateKeeper();
    GLStateKeeper(const GLStateKeeper&) = delete;
    GLStateKeeper& operator=(const GLStateKeeper&) = delete;

private:
    struct Unit
    {
        std::int32_t buffer, rectangle, array, sampler; ///< bindings that attribute groups leave out
    };

    // What no attribute group holds
    std::int32_t mProgram, mVertexArray, mArrayBuffer, mElementBuffer, mUniformBuffer, mPackBuffer, mUnpackBuffer;
    std::int32_t mTextureBuffer, mDrawFramebuffer, mReadFramebuffer, mRenderbuffer, mActiveTexture;
    std::vector<Unit> mUnits;
};
} // namespace vx
