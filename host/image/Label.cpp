#include "host/image/Label.h"

#include "base/BText.h"
#include "host/text/FontFolders.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <cstring>
#include <new>

namespace vx
{
namespace
{
constexpr std::uint32_t kEllipsis = 0x2026;

/// A face of a library of its own: labels leave the library's registry of fonts alone.
class LabelFont
{
public:
    LabelFont() = default;
    ~LabelFont()
    {
        if (mFace)
            FT_Done_Face(mFace);
        if (mLibrary)
            FT_Done_FreeType(mLibrary);
    }
    LabelFont(const LabelFont&) = delete;
    LabelFont& operator=(const LabelFont&) = delete;

    bool Open(int pixelsPerEm)
    {
        if (FT_Init_FreeType(&mLibrary) != 0)
        {
            mLibrary = nullptr;
            return false;
        }
        static const BArray<BPath> files = SystemSansFonts(); // all font folders are gone through for it
        return std::any_of(files.begin(), files.end(), [&](const BPath& file) { return OpenFile(file, pixelsPerEm); });
    }
    FT_Face Face() const { return mFace; }

    // Advance in 26.6 pixels, with the kerning between the two.
    FT_Pos Advance(FT_UInt previous, FT_UInt glyph) const
    {
        return FT_Load_Glyph(mFace, glyph, FT_LOAD_DEFAULT) == 0 ? Kerning(previous, glyph) + mFace->glyph->advance.x
                                                                 : 0;
    }
    FT_Pos Kerning(FT_UInt previous, FT_UInt glyph) const
    {
        FT_Vector kerning{0, 0};
        if (previous && glyph && FT_HAS_KERNING(mFace))
            FT_Get_Kerning(mFace, previous, glyph, FT_KERNING_DEFAULT, &kerning);
        return kerning.x;
    }

private:
    bool OpenFile(const BPath& file, int pixelsPerEm)
    {
        if (FT_New_Face(mLibrary, file.FullPath().CString(), 0, &mFace) != 0)
        {
            mFace = nullptr;
            return false;
        }
        if (FT_IS_SCALABLE(mFace) && FT_Set_Pixel_Sizes(mFace, 0, FT_UInt(pixelsPerEm)) == 0)
            return true;
        FT_Done_Face(mFace);
        mFace = nullptr;
        return false;
    }

    FT_Library mLibrary = nullptr;
    FT_Face mFace = nullptr;
};

/// The part of a picture that may be written.
struct Canvas
{
    CPB_PixelBucket& picture;
    CPB_Rect clip;

    void Blend(int x, int y, int coverage, const LabelStyle& style) const
    {
        if (x < clip.x1 || x >= clip.x2 || y < clip.y1 || y >= clip.y2)
            return;
        const int bytes = picture.BitsPerPixel() / 8, alpha = coverage * style.alpha / 255;
        std::uint8_t* const pixel = picture.Pixels() + std::int64_t(y) * picture.RowBytes() + x * bytes;
        const std::uint8_t grey = std::uint8_t((style.red * 77 + style.green * 151 + style.blue * 28) >> 8);
        const std::uint8_t color[3] = {bytes == 1 ? grey : style.red, style.green, style.blue};
        const int below = bytes == 4 ? pixel[3] * (255 - alpha) / 255 : 255 - alpha, sum = alpha + below;
        for (int c = 0; c < std::min(bytes, 3) && sum > 0; ++c)
            pixel[c] = std::uint8_t((color[c] * alpha + pixel[c] * below + sum / 2) / sum);
        if (bytes == 4)
            pixel[3] = std::uint8_t(sum);
    }
};

/// One line of glyphs that fits into a width.
struct Line
{
    BArray<FT_UInt> glyphs;
    FT_Pos width = 0; ///< 26.6 pixels
};

bool FillLine(const LabelFont& font, const BArray<std::uint32_t>& codes, FT_Pos room, Line& line)
{
    const FT_UInt dots = FT_Get_Char_Index(font.Face(), kEllipsis);
    const FT_Pos dotsWidth = font.Advance(0, dots);
    BArray<FT_Pos> ends; // the pen behind each glyph
    for (const std::uint32_t code : codes)
    {
        const FT_UInt glyph = FT_Get_Char_Index(font.Face(), code);
        line.width += font.Advance(line.glyphs.IsEmpty() ? 0 : line.glyphs[line.glyphs.Count() - 1], glyph);
        if (!line.glyphs.Append(glyph) || !ends.Append(line.width))
            return false;
        if (line.width > room) // the rest cannot fit either
            break;
    }
    if (line.width <= room)
        return true;
    std::int64_t kept = ends.Count();
    while (kept > 0 && ends[kept - 1] + dotsWidth > room)
        --kept;
    line.width = (kept > 0 ? ends[kept - 1] : 0) + dotsWidth;
    return line.glyphs.SetCount(kept) && line.glyphs.Append(dots);
}

void DrawGlyph(const FT_GlyphSlotRec& slot, int penX, int baseline, const Canvas& canvas, const LabelStyle& style)
{
    const FT_Bitmap& bitmap = slot.bitmap;
    for (unsigned row = 0; bitmap.pixel_mode == FT_PIXEL_MODE_GRAY && row < bitmap.rows; ++row)
        for (unsigned column = 0; column < bitmap.width; ++column)
            if (const int coverage = bitmap.buffer[std::ptrdiff_t(row) * bitmap.pitch + std::ptrdiff_t(column)])
                canvas.Blend(penX + slot.bitmap_left + int(column), baseline - slot.bitmap_top + int(row), coverage,
                             style);
}

bool Draw(CPB_PixelBucket& picture, const CPB_Rect& where, const char* utf8, const LabelStyle& style)
{
    BArray<std::uint32_t> codes;
    const std::int64_t bytes = utf8 ? std::int64_t(std::strlen(utf8)) : 0;
    if (bytes > 0 && ConvertUTF8toUTF32(utf8, bytes, codes) < 0)
        return false;
    LabelFont font;
    Line line;
    if (!picture.Pixels() || !font.Open(std::clamp(style.height, 4, 512)) ||
        !FillLine(font, codes, FT_Pos(std::max(where.x2 - where.x1, 0)) * 64, line))
        return false;

    // The font's own height is centred, not the ink, so that labels beside each other stand on one line.
    const FT_Size_Metrics& metrics = font.Face()->size->metrics;
    const int ascent = int(metrics.ascender >> 6), descent = int(-metrics.descender >> 6);
    const int baseline = where.y1 + (where.y2 - where.y1 - ascent - descent) / 2 + ascent;
    const FT_Pos spare = FT_Pos(where.x2 - where.x1) * 64 - line.width;
    FT_Pos pen = FT_Pos(where.x1) * 64 + (style.align == LabelAlign::Centre ? std::max<FT_Pos>(spare, 0) / 2 : 0);
    const Canvas canvas{picture,
                        {std::max(where.x1, 0), std::max(where.y1, 0), std::min(where.x2, picture.Width()),
                         std::min(where.y2, picture.Height())}};
    FT_UInt previous = 0;
    for (const FT_UInt glyph : line.glyphs)
    {
        pen += font.Kerning(previous, glyph);
        previous = glyph;
        if (FT_Load_Glyph(font.Face(), glyph, FT_LOAD_RENDER) != 0)
            continue;
        DrawGlyph(*font.Face()->glyph, int((pen + 32) >> 6), baseline, canvas, style);
        pen += font.Face()->glyph->advance.x;
    }
    return true;
}
} // namespace

bool DrawLabel(CPB_PixelBucket& picture, const CPB_Rect& where, const char* utf8, const LabelStyle& style)
{
    try
    {
        return Draw(picture, where, utf8, style);
    }
    catch (const std::bad_alloc&)
    {
        return false; // from the search for fonts, before anything was drawn
    }
}
} // namespace vx
