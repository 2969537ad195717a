// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BString.h"
#include "base/Vertex.h"
#include "host/image/Picture.h"

#include <span>

namespace vx
{
/// One picture of a sheet, borrowed, and the line below it.
struct SheetCell
{
    const CPB_Offscreen* picture = nullptr;
    BString caption; ///< UTF-8; empty for none
};

/// How a sheet is laid out. Lengths in pixels.
struct SheetLook
{
    int columns = 4; ///< the last row may have fewer pictures
    int margin = 12; ///< around the sheet and between its pictures
    int captionSize = 14;
    VERTEX background{0.96f, 0.96f, 0.96f}; ///< as colours are written, 0..1
    VERTEX ink{0.10f, 0.11f, 0.13f};
};

/// A sheet as it came out.
struct Sheet
{
    PicturePtr picture; ///< 32-bit RGBA, opaque; null with `error` when it could not be made
    BString error;
    /// Why there are no captions, or not all of them; empty when all that were wished for are there.
    BString captionProblem;
};

/// Puts 32-bit pictures of one size into rows of a page, each with its caption below it, left to right and top to
/// bottom. Clear parts of pictures show the page. Captions that are wider than their picture end in an ellipsis.
/// Without a font the page has no room for captions.
VELMAR_HOST_EXPORT Sheet ComposeSheet(std::span<const SheetCell> cells, const SheetLook& look = {});
} // namespace vx
