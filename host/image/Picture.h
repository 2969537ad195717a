// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BPath.h"
#include "base/CPB_Offscreen.h"

#include <memory>

namespace vx
{
using PicturePtr = std::unique_ptr<CPB_Offscreen>;

/// Reads a PNG, JPEG, TGA, BMP or other common picture as 32-bit RGBA, top row first.
/// @param error out: empty on success, else what is wrong with the file, without its name
/// @return the picture, null on failure
VELMAR_HOST_EXPORT PicturePtr ReadPicture(const BPath& path, BString& error);

/// The same from memory.
VELMAR_HOST_EXPORT PicturePtr DecodePicture(const void* bytes, std::size_t count, BString& error);

/// Halves (factor 2) or otherwise reduces a 32-bit picture by averaging squares of factor x factor pixels, weighting
/// colours by alpha. The sides must be multiples of the factor. Null when memory ran out.
VELMAR_HOST_EXPORT PicturePtr ReducedPicture(const CPB_Offscreen& picture, int factor);

/// How far two pictures of one size are apart.
struct PictureDifference
{
    std::int64_t pixelsOff = 0; ///< pixels with a channel more than the tolerance apart
    int largest = 0;            ///< largest difference of any channel
    double share = 1;           ///< pixelsOff over all pixels; 1 when the sizes differ
};

/// Compares two 32-bit pictures. @param marked out, may be null: grey, with the pixels that are off in red
VELMAR_HOST_EXPORT PictureDifference ComparePictures(const CPB_Offscreen& a, const CPB_Offscreen& b, int tolerance,
                                                     PicturePtr* marked = nullptr);
} // namespace vx
