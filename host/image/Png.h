// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BArray.h"
#include "base/BPath.h"
#include "base/CPB_Offscreen.h"

/// @file
/// Writing pictures as PNG, marked as sRGB. 32-bit bitmaps keep their fourth byte as alpha when it is meant, 24-bit
/// ones are RGB, 8-bit ones grey.

namespace vx
{
/// Appends the encoded picture to `out`. @return empty, or what went wrong
VELMAR_HOST_EXPORT BString EncodePng(const CPB_Offscreen& picture, BArray<std::uint8_t>& out);

/// Writes the file under a temporary name and renames it, so that no failed run leaves half a picture or destroys an
/// old one. @return empty, or what went wrong
VELMAR_HOST_EXPORT BString WritePng(const CPB_Offscreen& picture, const BPath& path);

/// Writes to standard output, as bytes on every system. @return empty, or what went wrong
VELMAR_HOST_EXPORT BString WritePngToStdout(const CPB_Offscreen& picture);
} // namespace vx
