// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BString.h"
#include "host/image/Picture.h"

#include <cstdint>

namespace vx
{
/// A drawing target of its own: colour with alpha and depth, multisampled where the driver can, and a plain copy that
/// is read back. Belongs to the context that was current at Create, which must be current for every call.
class VELMAR_HOST_EXPORT Framebuffer
{
public:
    Framebuffer() = default;
    ~Framebuffer() { Release(); }
    Framebuffer(const Framebuffer&) = delete;
    Framebuffer& operator=(const Framebuffer&) = delete;

    /// Gives the target its size. Keeps what is there when nothing changed. @param samples 1 for none; taken down to
    /// what the driver offers  @return empty, or what went wrong
    BString Create(int width, int height, int samples);
    void Release();

    void Bind(); ///< makes it the target of drawing and sets the viewport
    /// Averages the samples and reads the pixels, top row first. Null when memory ran out.
    /// @param keepAlpha true: colours are divided by alpha, as picture files want them; false: every pixel is opaque
    PicturePtr ReadBack(bool keepAlpha);
    /// Copies the averaged pixels into the window's own framebuffer, which is bound for drawing afterwards. Averages
    /// only once for what was drawn since Bind.
    /// @param x, y where the lower left corner goes, from that of the window
    void CopyToWindow(int x, int y);

    /// The same of the window's own framebuffer, after drawing and before its buffers are swapped.
    static PicturePtr ReadWindow(int width, int height);

    int Width() const { return mWidth; }
    int Height() const { return mHeight; }
    int Samples() const { return mSamples; } ///< what the driver gave
    static int LargestSide();                ///< pixels that a target may have on a side
    static int MostSamples();                ///< of a pixel, 1 where there is no multisampling
    /// For tests: as if the driver offered no more than this. Large numbers lift the limits.
    static void PretendLimits(int side, int samples);

private:
    void Average(); // into the plain copy, which is bound for reading
    std::uint32_t mDrawBuffer = 0, mReadBuffer = 0;
    std::uint32_t mColour = 0, mDepth = 0, mResolved = 0;
    int mWidth = 0, mHeight = 0, mSamples = 0, mWishedSamples = 0;
    bool mAveraged = false; ///< since Bind
};
} // namespace vx
