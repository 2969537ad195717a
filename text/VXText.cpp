#include "text/VXText.h"

#include "base/BText.h"

#include <FTGL/ftgl.h>

#include <memory>
#include <new>

BMapStringToPtr VXText::mFontFileCache;

static constexpr unsigned kDotsPerInch = 72;
static constexpr float kFrontOutset = 0, kBackOutset = 3;
static constexpr float kLargestSize = 32767; // what FreeType's 26.6 sizes hold, with room

static FTFont* CachedFont(const BString& key) { return static_cast<FTFont*>(VXText::mFontFileCache.Get(key)); }

// A font that the cache has taken, or null.
static FTFont* KeptFont(const BString& fontFile, const BString& text)
{
    auto font = std::unique_ptr<FTFont>(new (std::nothrow) FTExtrudeFont(fontFile.CString()));
    if (!font || font->Error() != 0)
        return nullptr;
    const std::unique_ptr<FTFont> replaced(CachedFont(text));
    if (VXText::mFontFileCache.Set(text, font.get()))
        return font.release();
    return nullptr;
}

GEOM* VXText::CreateTextGeom(const BString& text, const BString& fontFile, float size, float depth, bool /*unused*/)
{
    // FTGL reads past the end of what is not UTF-8.
    BArray<std::uint32_t> codes;
    const bool legal = ConvertUTF8toUTF32(text.CString(), text.Length(), codes) >= 0;
    if (!legal || !(size >= 1 && size <= kLargestSize))
        return nullptr;
    FTFont* font = CachedFont(fontFile);
    if (!font)
        font = KeptFont(fontFile, text);
    if (!font || !font->FaceSize(unsigned(size), kDotsPerInch))
        return nullptr;
    font->Depth(depth);
    font->Outset(kFrontOutset, kBackOutset);
    font->CharMap(FT_ENCODING_UNICODE);
    font->Render(text.CString(), -1, FTPoint(), FTPoint(), FTGL::RENDER_ALL);
    return nullptr;
}

void VXText::ClearFontFileCache()
{
    mFontFileCache.ForEach([](const BString&, void* font) { delete static_cast<FTFont*>(font); });
    mFontFileCache.Empty();
}
