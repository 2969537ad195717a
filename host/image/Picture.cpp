#include "host/image/Picture.h"

#include "base/BFile.h"
#include "base/MEM.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_NO_STDIO
#define STBI_NO_HDR
#define STBI_NO_LINEAR
// A bomb of a picture must not take all memory: 16,384 squared RGBA is one gigabyte.
#define STBI_MAX_DIMENSIONS 16384
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#endif
#include <stb/stb_image.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

namespace vx
{
PicturePtr DecodePicture(const void* bytes, std::size_t count, BString& error)
{
    error.Empty();
    if (count == 0 || count > INT_MAX)
    {
        error = count ? "is too large for a picture" : "is empty";
        return nullptr;
    }
    int width = 0, height = 0, channels = 0;
    stbi_uc* const pixels =
        stbi_load_from_memory(static_cast<const stbi_uc*>(bytes), int(count), &width, &height, &channels, 4);
    if (!pixels)
    {
        error = BString("is no picture that can be read (") + stbi_failure_reason() + ")";
        return nullptr;
    }
    PicturePtr picture(CPB_Offscreen::Create(width, height, 32, true, channels == 2 || channels == 4));
    if (picture)
        for (int y = 0; y < height; ++y)
            std::memcpy(picture->Row(y), pixels + std::size_t(y) * std::size_t(width) * 4, std::size_t(width) * 4);
    else
        error = "does not fit into memory";
    stbi_image_free(pixels);
    return picture;
}

PicturePtr ReadPicture(const BPath& path, BString& error)
{
    BFile file(path);
    file.SetCompression(false);
    char* const bytes = file.Open(BFile::Mode::Read) ? nullptr : file.ReadAll();
    if (!bytes)
    {
        error = "cannot be read: " + file.LastError();
        return nullptr;
    }
    PicturePtr picture = DecodePicture(bytes, MEM_Count(bytes), error);
    MEM_Free(bytes);
    return picture;
}

PicturePtr ReducedPicture(const CPB_Offscreen& picture, int factor)
{
    const int width = picture.Width() / factor, height = picture.Height() / factor;
    PicturePtr out(CPB_Offscreen::Create(width, height, 32, true, picture.HasAlpha()));
    if (!out)
        return nullptr;
    const unsigned samples = unsigned(factor * factor);
    for (int y = 0; y < height; ++y)
    {
        std::uint8_t* to = out->Row(y);
        for (int x = 0; x < width; ++x, to += 4)
        {
            unsigned sum[3] = {}, alpha = 0;
            for (int sy = 0; sy < factor; ++sy)
            {
                const std::uint8_t* from = picture.Row(y * factor + sy) + std::int64_t(x) * factor * 4;
                for (int sx = 0; sx < factor; ++sx, from += 4)
                {
                    for (int c = 0; c < 3; ++c)
                        sum[c] += unsigned(from[c]) * from[3];
                    alpha += from[3];
                }
            }
            for (int c = 0; c < 3; ++c)
                to[c] = alpha ? std::uint8_t((sum[c] + alpha / 2) / alpha) : std::uint8_t(0);
            to[3] = std::uint8_t((alpha + samples / 2) / samples);
        }
    }
    return out;
}

PictureDifference ComparePictures(const CPB_Offscreen& a, const CPB_Offscreen& b, int tolerance, PicturePtr* marked)
{
    PictureDifference found;
    if (a.Width() != b.Width() || a.Height() != b.Height() || a.BitsPerPixel() != 32 || b.BitsPerPixel() != 32)
    {
        found.largest = 255;
        return found;
    }
    if (marked)
        marked->reset(CPB_Offscreen::Create(a.Width(), a.Height(), 32, true, false));
    for (int y = 0; y < a.Height(); ++y)
    {
        const std::uint8_t *pa = a.Row(y), *pb = b.Row(y);
        for (int x = 0; x < a.Width(); ++x, pa += 4, pb += 4)
        {
            int off = 0;
            for (int c = 0; c < 4; ++c)
                off = std::max(off, std::abs(pa[c] - pb[c]));
            found.largest = std::max(found.largest, off);
            found.pixelsOff += off > tolerance;
            if (marked && *marked)
            {
                std::uint8_t* const to = (*marked)->Row(y) + std::int64_t(x) * 4;
                const std::uint8_t grey = std::uint8_t((pa[0] + pa[1] + pa[2]) / 6);
                to[0] = off > tolerance ? 255 : grey;
                to[1] = to[2] = off > tolerance ? 0 : grey;
                to[3] = 255;
            }
        }
    }
    found.share = double(found.pixelsOff) / (double(a.Width()) * a.Height());
    return found;
}
} // namespace vx
