#include "text/VXText.h"

#include "base/BText.h"

#include <FTGL/ftgl.h>

#include <memory>
#include <new>
#include <vector>

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
    std::vector<std::unique_ptr<FTFont>> lost; // a map that cannot grow forgets its entries
    lost.reserve(std::size_t(VXText::mFontFileCache.Count()));
    if (!replaced)
        VXText::mFontFileCache.ForEach([&lost](const BString&, void* kept)
                                       { lost.emplace_back(static_cast<FTFont*>(kept)); });
    if (!VXText::mFontFileCache.Set(text, font.get()))
        return nullptr;
    for (std::unique_ptr<FTFont>& kept : lost)
        static_cast<void>(kept.release());
    return font.release();
}

static void DrawText(const BString& text, const BString& fontFile, float size, float depth)
{
    // FTGL reads past the end of what is not UTF-8.
    BArray<std::uint32_t> codes;
    const bool legal = ConvertUTF8toUTF32(text.CString(), text.Length(), codes) >= 0;
    if (!legal || !(size >= 1 && size <= kLargestSize))
        return;
    FTFont* font = CachedFont(fontFile);
    if (!font)
        font = KeptFont(fontFile, text);
    if (!font || !font->FaceSize(unsigned(size), kDotsPerInch))
        return;
    font->Depth(depth);
    font->Outset(kFrontOutset, kBackOutset);
    font->CharMap(FT_ENCODING_UNICODE);
    font->Render(text.CString(), -1, FTPoint(), FTPoint(), FTGL::RENDER_ALL);
}

GEOM* VXText::CreateTextGeom(const BString& text, const BString& fontFile, float size, float depth, bool /*unused*/)
{
    try
    {
        DrawText(text, fontFile, size, depth);
    }
    catch (const std::bad_alloc&)
    {
        // FTGL's lists; what was drawn so far stands
    }
    return nullptr;
}

void VXText::ClearFontFileCache()
{
    mFontFileCache.ForEach([](const BString&, void* font) { delete static_cast<FTFont*>(font); });
    mFontFileCache.Empty();
}
