#include "text/detail/TextPage.h"

#include "text/detail/GlyphShapes.h"

#include <algorithm>
#include <limits>

namespace vx
{
namespace
{
/// A glyph on the page; the pen in font units.
struct PlacedGlyph
{
    std::int32_t shape;
    std::int64_t penX, penY;
};

/// Lays a text out, line by line from the origin down.
class Typesetter
{
public:
    Typesetter(FT_Face face, GlyphShapes& shapes, bool unscaledKerning)
        : mFace(face), mShapes(shapes), mKerns(FT_HAS_KERNING(face)), mUnscaled(unscaledKerning)
    {
    }

    /// False when memory ran out.
    bool Set(const BArray<std::uint32_t>& codes)
    {
        constexpr std::uint32_t kLineFeed = 10, kReturn = 13;
        if (!mGlyphs.Reserve(codes.Count()))
            return false;
        for (std::int64_t i = 0; i < codes.Count(); ++i)
        {
            const bool pair = codes[i] == kReturn && i + 1 < codes.Count() && codes[i + 1] == kLineFeed;
            if (codes[i] == kReturn || codes[i] == kLineFeed)
                BreakLine();
            else if (!Place(FT_Get_Char_Index(mFace, codes[i])))
                return false;
            i += pair ? 1 : 0;
        }
        return true;
    }
    const BArray<PlacedGlyph>& Glyphs() const { return mGlyphs; }

private:
    void BreakLine()
    {
        mPenX = 0;
        mPenY -= mFace->height;
        mPrevious = 0;
    }
    bool Place(FT_UInt glyph)
    {
        FT_Vector kerning{0, 0};
        const FT_UInt mode = mUnscaled ? FT_KERNING_UNSCALED : FT_KERNING_DEFAULT;
        if (mKerns && mPrevious && glyph && FT_Get_Kerning(mFace, mPrevious, glyph, mode, &kerning) == 0)
            mPenX += kerning.x;
        const std::int32_t shape = mShapes.Find(glyph);
        if (shape < 0 || !mGlyphs.Append({shape, mPenX, mPenY}))
            return false;
        mPenX += mShapes[shape].advance;
        mPrevious = glyph;
        return true;
    }

    FT_Face mFace;
    GlyphShapes& mShapes;
    BArray<PlacedGlyph> mGlyphs;
    std::int64_t mPenX = 0, mPenY = 0;
    FT_UInt mPrevious = 0;
    bool mKerns, mUnscaled;
};

// A record for triangles, its entries yet to be written. Null when memory ran out or 32 bits are too few.
PagePtr RecordFor(std::int64_t verts, std::int64_t polys)
{
    PagePtr record(GEOM_Alloc());
    if (!record || std::max(verts, 3 * polys) > std::numeric_limits<std::int32_t>::max())
        return nullptr;
    // Arrays that have their size already are not cleared by SetSize.
    record->verts = MEM_AllocArray<VERTEX>(std::size_t(verts));
    record->sets = MEM_AllocArray<std::int32_t>(std::size_t(3 * polys));
    record->polys = MEM_AllocArray<std::uint8_t>(std::size_t(polys * record->PolyStride()));
    if (!record->verts || !record->sets || !record->polys ||
        record->SetSize(int(polys), int(verts), int(3 * polys), 0, 0, 0) != 0)
        return nullptr;
    return record;
}

bool BuildEdges(const GlyphShapes& shapes, const GlyphShape& shape, bool smooth, VXEdgeList& edges)
{
    const PagePtr alone = RecordFor(shape.numVerts, shape.numPolys);
    if (!alone)
        return false;
    GlyphCursor at;
    shapes.Write(shape, 0, 0, *alone, at);
    if (!edges.Build(*alone))
        return false;
    for (std::int32_t e = 0; smooth && e < edges.GetEdgeCount(); ++e)
        edges.GetEdge(e).SetSmoothEdge(true);
    return true;
}

// Glyphs share no vertices, and edges are numbered as polygons walk them: those of a page are those of its glyphs, one
// glyph after the other. False when memory ran out.
bool WriteEdges(const BArray<PlacedGlyph>& glyphs, const GlyphShapes& shapes, TextEdges& whole)
{
    BArray<VXEdgeList> parts;
    if (!parts.SetCount(shapes.Count()))
        return false;
    for (std::int32_t i = 0; i < shapes.Count(); ++i)
        if (!BuildEdges(shapes, shapes[i], whole.smooth, parts[i]))
            return false;
    std::int64_t verts = 0, edges = 0;
    for (const PlacedGlyph& glyph : glyphs)
    {
        verts += parts[glyph.shape].GetVertexLinkCount();
        edges += parts[glyph.shape].GetEdgeCount();
    }
    if (!whole.list.BeginParts(whole.sides * verts, whole.sides * edges))
        return false;
    std::int32_t firstPoly = 0;
    for (int side = 0; side < whole.sides; ++side)
        for (const PlacedGlyph& glyph : glyphs)
        {
            if (!whole.list.AppendPart(parts[glyph.shape], firstPoly))
                return false;
            firstPoly += shapes[glyph.shape].numPolys;
        }
    return true;
}
} // namespace

static PagePtr WriteGlyphs(const BArray<PlacedGlyph>& glyphs, const GlyphShapes& shapes, const GlyphScale& scale,
                           BArray<std::int32_t>* ends)
{
    std::int64_t verts = 0, polys = 0;
    for (const PlacedGlyph& glyph : glyphs)
    {
        verts += shapes[glyph.shape].numVerts;
        polys += shapes[glyph.shape].numPolys;
    }
    PagePtr record = RecordFor(verts, polys);
    if (!record)
        return nullptr;
    GlyphCursor at;
    for (const PlacedGlyph& glyph : glyphs)
    {
        shapes.Write(shapes[glyph.shape], float(double(glyph.penX) * scale.x), float(double(glyph.penY) * scale.y),
                     *record, at);
        if (ends && !ends->Append(at.poly))
            return nullptr;
    }
    return record;
}

PagePtr WriteTextPage(const BArray<std::uint32_t>& codes, FT_Face face, float size, bool unscaledKerning,
                      BArray<std::int32_t>* ends, TextEdges* edges)
{
    const GlyphScale scale(face, size); // first, as it sizes the face that kerning goes by
    GlyphShapes shapes(face, scale);
    Typesetter text(face, shapes, unscaledKerning);
    if (!text.Set(codes))
        return nullptr;
    PagePtr record = WriteGlyphs(text.Glyphs(), shapes, scale, ends);
    if (record && edges && !WriteEdges(text.Glyphs(), shapes, *edges))
        return nullptr;
    return record;
}
} // namespace vx
