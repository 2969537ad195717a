// VelmarBase: text meshes.
#pragma once

#include "VelmarExport.h"
#include "base/BMap.h"
#include "base/BString.h"

class GEOM;

/// Extruded text drawn straight into the current OpenGL context (the fixed pipeline of a compatibility context),
/// without a mesh. For text as a mesh see VXGeom::BuildStrGlyphs. The thread of the context.
class VELMAR_EXPORT VXText
{
public:
    /// Draws a text in one colour of the context's own, front, back and sides, at the origin.
    ///
    /// A font is looked up by the name of its file and kept under the text that was drawn, so it is found again only by
    /// a file that is called like an earlier text; that is intended. Nothing is drawn when the file is no font, the
    /// text is not UTF-8, or the size, of which only the whole part counts, is below 1.
    /// @return null, always
    static GEOM* CreateTextGeom(const BString& text, const BString& fontFile, float size, float depth,
                                bool unused = false);
    static void ClearFontFileCache(); ///< deletes all kept fonts, while the context in which they drew is current

    static BMapStringToPtr mFontFileCache; ///< owns its FTGL extruded fonts
};
