// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/CPB_Offscreen.h"

namespace vx
{
enum class LabelAlign
{
    Left,
    Centre,
};

/// How a line of text is drawn into a picture.
struct LabelStyle
{
    int height = 16; ///< pixels per em; from 4 to 512, anything else is brought there
    LabelAlign align = LabelAlign::Left;
    std::uint8_t red = 30, green = 32, blue = 36, alpha = 255;
};

/// Draws one line of UTF-8 text, antialiased, in the first usable sans font of the system (DejaVu Sans where it is
/// there), looked for at the first call. It is centred in the rectangle from top to bottom and stays inside it: what is
/// too long ends in an ellipsis. Characters that the font lacks, control characters and line breaks are drawn as its
/// missing glyph.
/// @return false, with the picture as it was: no font on this system, illegal UTF-8, or memory ran out. Always false in
/// a build without text
VELMAR_HOST_EXPORT bool DrawLabel(CPB_PixelBucket& picture, const CPB_Rect& where, const char* utf8,
                                  const LabelStyle& style = {});
} // namespace vx
