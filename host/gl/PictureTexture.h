// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BString.h"
#include "base/CPB_Offscreen.h"

#include <cstdint>

namespace vx
{
/// A picture as a texture for backgrounds and overlays: colours multiplied by alpha, reduced copies for small pictures,
/// nothing beyond its edges. Its top row stands at v = 1. Belongs to the context that was current at Upload. Handing it
/// the same picture again uploads nothing.
class VELMAR_HOST_EXPORT PictureTexture
{
public:
    PictureTexture() = default;
    ~PictureTexture() { Release(); }
    PictureTexture(const PictureTexture&) = delete;
    PictureTexture& operator=(const PictureTexture&) = delete;

    BString Upload(const CPB_Offscreen& picture); ///< 32 bits a pixel  @return empty, or what went wrong
    void Release();
    void Bind(int unit) const;

    bool IsThere() const { return mTexture != 0; }
    int Width() const { return mWidth; }
    int Height() const { return mHeight; }

private:
    std::uint32_t mTexture = 0;
    int mWidth = 0, mHeight = 0;
    std::uint64_t mHash = 0;
};
} // namespace vx
