#include "text/detail/GlyphShapes.h"

#include "text/detail/Glu.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vx
{
// As finely as outline fonts are cut up for drawing elsewhere; curves of one glyph then have equally many pieces.
static constexpr int kPiecesPerCurve = 5;
// FreeType puts the points between two off-curve points at their middle in whole units, so it is given halves.
static constexpr int kShift = 1;
static constexpr double kUnit = 1.0 / (1 << kShift);

GlyphScale::GlyphScale(FT_Face face, float size)
{
    constexpr int kPoints = 72, kDotsPerInch = 72;
    const bool sized = FT_Set_Char_Size(face, 0, kPoints * 64, kDotsPerInch, kDotsPerInch) == 0 && face->size;
    const int ppemX = sized ? face->size->metrics.x_ppem : 0, ppemY = sized ? face->size->metrics.y_ppem : 0;
    if (ppemX <= 0 || ppemY <= 0 || !std::isfinite(size))
        return;
    x = double(size) / (ppemX * 64);
    y = double(size) / (ppemY * 64);
}

GlyphShapes::GlyphShapes(FT_Face face, const GlyphScale& scale) : mFace(face), mScale(scale), mTessellator(gluNewTess())
{
}

GlyphShapes::~GlyphShapes()
{
    if (mTessellator)
        gluDeleteTess(mTessellator);
}

std::int32_t GlyphShapes::Find(FT_UInt glyph)
{
    if (const std::int64_t* const known = mShapeOf.Find(glyph))
        return std::int32_t(*known);
    GlyphShape shape;
    if (FT_Load_Glyph(mFace, glyph, FT_LOAD_NO_SCALE | FT_LOAD_NO_BITMAP) == 0)
    {
        shape.advance = mFace->glyph->advance.x;
        if (mFace->glyph->format == FT_GLYPH_FORMAT_OUTLINE)
            Make(shape);
    }
    const auto index = std::int32_t(mShapes.Count());
    if (mFailed || !mTessellator || !mShapes.Append(shape) || !mShapeOf.Set(glyph, index))
        return -1;
    return index;
}

// --- Contours

/// Reads an outline into flat contours. Curves end exactly in their end points, so contours stay closed.
struct GlyphShapes::Outline
{
    GlyphShapes& shapes;
    std::int32_t first = 0; ///< of the contour
    GlyphPoint pen{};

    static GlyphPoint Point(const FT_Vector* at) { return {double(at->x) * kUnit, double(at->y) * kUnit}; }

    bool Add(const GlyphPoint& point)
    {
        pen = point;
        const std::int64_t count = shapes.mOutline.Count();
        if (count > first && shapes.mOutline[count - 1] == point)
            return true;
        return shapes.mOutline.Append(point);
    }
    // A contour that does not come back to where it began is closed by the tessellator.
    bool Close()
    {
        std::int64_t count = shapes.mOutline.Count();
        while (count > first + 1 && shapes.mOutline[count - 1] == shapes.mOutline[first])
            shapes.mOutline.SetCount(--count);
        if (count == first)
            return true;
        first = std::int32_t(count);
        return shapes.mContourEnds.Append(first);
    }

    static int MoveTo(const FT_Vector* to, void* user)
    {
        Outline& self = *static_cast<Outline*>(user);
        return self.Close() && self.Add(Point(to)) ? 0 : 1;
    }
    static int LineTo(const FT_Vector* to, void* user) { return static_cast<Outline*>(user)->Add(Point(to)) ? 0 : 1; }
    static int ConicTo(const FT_Vector* control, const FT_Vector* to, void* user)
    {
        Outline& self = *static_cast<Outline*>(user);
        const GlyphPoint a = self.pen, b = Point(control), c = Point(to);
        for (int i = 1; i < kPiecesPerCurve; ++i)
        {
            const double t = double(i) / kPiecesPerCurve, s = 1 - t;
            const double wa = s * s, wb = 2 * s * t, wc = t * t;
            if (!self.Add({wa * a.x + wb * b.x + wc * c.x, wa * a.y + wb * b.y + wc * c.y}))
                return 1;
        }
        return self.Add(c) ? 0 : 1;
    }
    static int CubicTo(const FT_Vector* control1, const FT_Vector* control2, const FT_Vector* to, void* user)
    {
        Outline& self = *static_cast<Outline*>(user);
        const GlyphPoint a = self.pen, b = Point(control1), c = Point(control2), d = Point(to);
        for (int i = 1; i < kPiecesPerCurve; ++i)
        {
            const double t = double(i) / kPiecesPerCurve, s = 1 - t;
            const double wa = s * s * s, wb = 3 * s * s * t, wc = 3 * s * t * t, wd = t * t * t;
            if (!self.Add({wa * a.x + wb * b.x + wc * c.x + wd * d.x, wa * a.y + wb * b.y + wc * c.y + wd * d.y}))
                return 1;
        }
        return self.Add(d) ? 0 : 1;
    }
};

// False for an outline that is damaged or whose points do not fit into memory; the latter is remembered.
bool GlyphShapes::FlattenContours()
{
    mOutline.Empty();
    mContourEnds.Empty();
    Outline reader{*this};
    FT_Outline_Funcs calls{Outline::MoveTo, Outline::LineTo, Outline::ConicTo, Outline::CubicTo, kShift, 0};
    const int status = FT_Outline_Decompose(&mFace->glyph->outline, &calls, &reader);
    if (status == 0 && reader.Close())
        return true;
    mFailed = status == 0 || status == 1; // 1 is ours, the others are FreeType's
    return false;
}

// --- Triangles

/// What the tessellator calls. Points go through it as their numbers, one up, since it takes null for "none".
struct GlyphShapes::Calls
{
    static GlyphShapes& Of(void* user) { return *static_cast<GlyphShapes*>(user); }
    static void* Named(std::int64_t point) { return reinterpret_cast<void*>(std::intptr_t(point + 1)); }
    static std::int64_t Number(void* name) { return std::int64_t(reinterpret_cast<std::intptr_t>(name)) - 1; }

    static void VELMAR_GLU_CALL Begin(GLenum type, void* user)
    {
        GlyphShapes& self = Of(user);
        self.mRunSkipped = type != GL_TRIANGLES && type != GL_TRIANGLE_STRIP && type != GL_TRIANGLE_FAN;
        const TriangleRun kind = type == GL_TRIANGLE_STRIP ? TriangleRun::Strip
                                 : type == GL_TRIANGLE_FAN ? TriangleRun::Fan
                                                           : TriangleRun::List;
        if (!self.mRunSkipped && !self.mRuns.Append({kind, std::int32_t(self.mVerts.Count()), 0}))
            self.mFailed = true;
    }
    static void VELMAR_GLU_CALL Vertex(void* name, void* user)
    {
        GlyphShapes& self = Of(user);
        if (self.mFailed || self.mRunSkipped)
            return;
        const GlyphPoint& point = self.mOutline[Number(name)];
        const VERTEX vert{float(point.x * self.mScale.x), float(point.y * self.mScale.y), 0};
        self.mFailed = !self.mVerts.Append(vert);
    }
    static void VELMAR_GLU_CALL End(void* user)
    {
        GlyphShapes& self = Of(user);
        if (self.mFailed || self.mRunSkipped)
            return;
        Run& run = self.mRuns[self.mRuns.Count() - 1];
        run.numVerts = std::int32_t(self.mVerts.Count()) - run.firstVert;
    }
    static void VELMAR_GLU_CALL Combine(GLdouble at[3], void* /*data*/[4], GLfloat /*weight*/[4], void** out,
                                        void* user)
    {
        GlyphShapes& self = Of(user);
        // After a failure nothing of the glyph is used, but the tessellator still wants a name.
        if (!self.mFailed && !self.mOutline.Append({at[0], at[1]}))
            self.mFailed = true;
        *out = Named(self.mFailed ? 0 : self.mOutline.Count() - 1);
    }
    static void VELMAR_GLU_CALL Error(GLenum error, void* user)
    {
        if (error == GLU_OUT_OF_MEMORY)
            Of(user).mFailed = true;
    }
};

void GlyphShapes::Tessellate(bool evenOdd)
{
    using Call = GluCall;
    GLUtesselator* const tess = mTessellator;
    gluTessCallback(tess, GLU_TESS_BEGIN_DATA, reinterpret_cast<Call>(Calls::Begin));
    gluTessCallback(tess, GLU_TESS_VERTEX_DATA, reinterpret_cast<Call>(Calls::Vertex));
    gluTessCallback(tess, GLU_TESS_COMBINE_DATA, reinterpret_cast<Call>(Calls::Combine));
    gluTessCallback(tess, GLU_TESS_END_DATA, reinterpret_cast<Call>(Calls::End));
    gluTessCallback(tess, GLU_TESS_ERROR_DATA, reinterpret_cast<Call>(Calls::Error));
    gluTessProperty(tess, GLU_TESS_WINDING_RULE, evenOdd ? GLU_TESS_WINDING_ODD : GLU_TESS_WINDING_NONZERO);
    gluTessProperty(tess, GLU_TESS_TOLERANCE, 0);
    gluTessNormal(tess, 0, 0, 1);

    gluTessBeginPolygon(tess, this);
    std::int64_t point = 0;
    for (const std::int32_t end : mContourEnds)
    {
        gluTessBeginContour(tess);
        for (; point < end; ++point)
        {
            GLdouble at[3] = {mOutline[point].x, mOutline[point].y, 0};
            gluTessVertex(tess, at, Calls::Named(point));
        }
        gluTessEndContour(tess);
    }
    gluTessEndPolygon(tess);
}

// The tessellator's time and memory go by the crossings, of which a damaged outline can have the square of its points.
// Outlines that are drawn have next to none.
bool GlyphShapes::IsTangled() const
{
    constexpr std::int64_t kFewPoints = 400, kMostCrossingsPerPoint = 8, kMostPairs = 50000000;
    const std::int64_t count = mOutline.Count();
    if (count <= kFewPoints)
        return false;
    struct Piece
    {
        GlyphPoint a, b; // a left of b
    };
    BArray<Piece> pieces;
    std::int64_t first = 0;
    for (const std::int32_t end : mContourEnds)
    {
        for (std::int64_t i = first; i < end; ++i)
        {
            const GlyphPoint &a = mOutline[i], &b = mOutline[i + 1 < end ? i + 1 : first];
            if (!pieces.Append(a.x <= b.x ? Piece{a, b} : Piece{b, a}))
                return true;
        }
        first = end;
    }
    std::sort(pieces.begin(), pieces.end(), [](const Piece& a, const Piece& b) { return a.a.x < b.a.x; });
    const auto side = [](const Piece& p, const GlyphPoint& q)
    { return (p.b.x - p.a.x) * (q.y - p.a.y) - (p.b.y - p.a.y) * (q.x - p.a.x); };
    std::int64_t crossings = 0, pairs = 0;
    for (std::int64_t i = 0; i < count; ++i)
        for (std::int64_t k = i + 1; k < count && pieces[k].a.x < pieces[i].b.x; ++k)
        {
            const Piece &p = pieces[i], &q = pieces[k];
            if (++pairs > kMostPairs)
                return true;
            if (side(p, q.a) * side(p, q.b) < 0 && side(q, p.a) * side(q, p.b) < 0 &&
                ++crossings > kMostCrossingsPerPoint * count)
                return true;
        }
    return false;
}

// Each run's triangles, with its vertices counted from the shape's first.
bool GlyphShapes::AddTriangles(std::int32_t firstVert)
{
    for (const Run& run : mRuns)
    {
        const std::int32_t first = run.firstVert - firstVert;
        for (std::int32_t i = 2; i < run.numVerts; ++i)
        {
            if (run.kind == TriangleRun::List && i % 3 != 2)
                continue;
            std::int32_t* const corners = mCorners.AppendRaw(3);
            if (!corners)
                return false;
            // A strip turns its triangles round one after the other.
            const std::int32_t c = first + i, around[3] = {c, i % 2 == 0 ? c - 2 : c - 1, i % 2 == 0 ? c - 1 : c - 2};
            const std::int32_t other[3] = {run.kind == TriangleRun::Fan ? first : c - 2, c - 1, c};
            std::copy_n(run.kind == TriangleRun::Strip ? around : other, 3, corners);
        }
    }
    return true;
}

void GlyphShapes::Make(GlyphShape& shape)
{
    shape.firstVert = std::int32_t(mVerts.Count());
    shape.firstCorner = std::int32_t(mCorners.Count());
    if (!mScale.CanDraw() || !mTessellator || !FlattenContours() || mContourEnds.IsEmpty() || mOutline.Count() < 3 ||
        IsTangled())
        return;
    mRuns.Empty();
    Tessellate((mFace->glyph->outline.flags & FT_OUTLINE_EVEN_ODD_FILL) != 0);
    mFailed = mFailed || !AddTriangles(shape.firstVert);
    shape.numVerts = std::int32_t(mVerts.Count()) - shape.firstVert;
    shape.numPolys = (std::int32_t(mCorners.Count()) - shape.firstCorner) / 3;
}

// --- Into a record

// Whole polygon records in one copy each: the arrays of a page are too large to be cleared first.
void GlyphShapes::Write(const GlyphShape& shape, float dx, float dy, GEOM& to, GlyphCursor& at) const
{
    const VERTEX* const verts = mVerts.Data() + shape.firstVert;
    VERTEX* const vertsOut = to.verts + at.vert;
    for (std::int32_t v = 0; v < shape.numVerts; ++v)
        vertsOut[v] = {verts[v].x + dx, verts[v].y + dy, 0};

    const std::int32_t* const corners = mCorners.Data() + shape.firstCorner;
    const std::int32_t numCorners = 3 * shape.numPolys, firstVert = at.vert;
    std::int32_t* const cornersOut = to.sets + at.corner;
    for (std::int32_t c = 0; c < numCorners; ++c)
        cornersOut[c] = corners[c] + firstVert;

    ELEMENT face{};
    face.length = 3;
    face.type = kElementFace;
    const std::int64_t stride = to.PolyStride();
    std::uint8_t* poly = to.polys + at.poly * stride;
    for (std::int32_t p = 0; p < shape.numPolys; ++p, poly += stride)
    {
        face.start = at.corner + 3 * p;
        std::memcpy(poly, &face, sizeof face);
    }
    at.vert += shape.numVerts;
    at.corner += numCorners;
    at.poly += shape.numPolys;
}
} // namespace vx
