#include "host/text/TextMesh.h"

#include "base/BText.h"
#include "host/text/detail/GlyphPlate.h"
#include "mesh/VXGeom.h"
#include "text/VXFTFace.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <new>
#include <vector>

namespace vx
{
namespace
{
constexpr float kUnitsPerSize = 4608; // of a font, for the size that the library is asked for
constexpr float kBehind = 0.0001f;    // how far the back of a flat text lies behind its front, as in the library
constexpr float kHardTurn = 0.766f;   // cosine of 40 degrees: corners of the outline that turn more are creases

/// Smoothing words. Runs of a wall between hard corners alternate between two groups; the third ends an odd number. A
/// word is compared as a whole, so a run that belonged to both groups of its neighbours would not smooth with either.
enum Smoothing : std::uint32_t
{
    kFront = 1u << 0,
    kBack = 1u << 1,
    kWall = 1u << 2,
    kFrontBevel = 1u << 5,
    kBackBevel = 1u << 8,
};

/// One line of the text, flat, with its glyphs told apart.
struct Line
{
    VXGeom mesh;
    BArray<std::int32_t> glyphEnds;
    float x = 0, y = 0; ///< where it goes
};

/// A glyph as all its occurrences share it, where the first of them stands.
struct Shape
{
    GlyphPlate plate;
    RimOffsets offsets;       ///< only with a bevel
    VERTEX first = {0, 0, 0}; ///< the first vertex of its polygons
};

/// One height of the walls: z, and how much of the bevel's offset the rim has there.
struct Level
{
    float z, offset;
    float length;            ///< along the profile from the front rim
    std::uint32_t smoothing; ///< of the wall from here to the next level
};

/// Collects polygons; arrays grow as they come, and go into a record at the end.
class MeshWriter
{
public:
    std::int32_t AddPoint(float x, float y, float z)
    {
        mPoints.push_back({x, y, z});
        return std::int32_t(mPoints.size()) - 1;
    }
    std::int32_t AddUV(float u, float v)
    {
        mUVs.push_back({u, v});
        return std::int32_t(mUVs.size()) - 1;
    }
    struct Corner
    {
        std::int32_t point, uv;
    };
    void AddPolygon(std::initializer_list<Corner> corners, bool side, std::uint32_t smoothing)
    {
        mCorners.insert(mCorners.end(), corners);
        mPolygons.push_back({std::int32_t(corners.size()), smoothing, side});
    }
    RecordPtr Record(const TextMeshOptions& options, bool sides) const;

private:
    struct Polygon
    {
        std::int32_t length;
        std::uint32_t smoothing;
        bool side;
    };
    std::vector<VERTEX> mPoints;
    std::vector<T_VERTEX> mUVs;
    std::vector<Corner> mCorners;
    std::vector<Polygon> mPolygons;
};

RecordPtr MeshWriter::Record(const TextMeshOptions& options, bool sides) const
{
    RecordPtr record(GEOM_Alloc());
    const std::size_t most = std::max({mPoints.size(), mUVs.size(), mCorners.size()});
    if (!record || most > std::size_t(std::numeric_limits<std::int32_t>::max()) ||
        record->SetSize(int(mPolygons.size()), int(mPoints.size()), int(mCorners.size()), 0, int(mCorners.size()),
                        int(mUVs.size())) != 0)
        return nullptr;
    const int front = GEOM_AddMaterialName(record.get(), options.frontMaterial.CString());
    const int side = sides ? GEOM_AddMaterialName(record.get(), options.sideMaterial.CString()) : front;
    if (front < 0 || side < 0)
        return nullptr;
    std::copy(mPoints.begin(), mPoints.end(), record->verts);
    if (record->tex) // a text of spaces has none
        std::copy(mUVs.begin(), mUVs.end(), record->tex->verts);
    for (std::size_t i = 0; i < mCorners.size(); ++i)
    {
        record->sets[i] = mCorners[i].point;
        record->tex->sets[i] = mCorners[i].uv;
    }
    std::int32_t start = 0;
    for (std::size_t p = 0; p < mPolygons.size(); ++p)
    {
        const Polygon& polygon = mPolygons[p];
        ELEMENT& element = *record->Poly(std::int64_t(p));
        element.start = start;
        element.length = polygon.length;
        element.type = kElementFace;
        element.material = std::uint16_t(polygon.side ? side : front);
        element.SetGroupWord(0, polygon.smoothing);
        record->tex->polys[p] = {start, polygon.length};
        start += polygon.length;
    }
    return record;
}

/// Gives plates their thickness.
class Extruder
{
public:
    Extruder(const TextMeshOptions& options, float left, float bottom, float right, float top)
        : mOptions(options), mLeft(left), mBottom(bottom), mRight(right), mSpan(std::max(right - left, top - bottom))
    {
        if (!(mSpan > 0))
            mSpan = 1;
        const float depth = options.depth, bevel = std::min(options.bevel, depth / 2);
        mLevels.push_back({depth, 0, 0, kWall});
        if (bevel > 0)
        {
            const float slant = std::sqrt(2.0f) * bevel;
            mLevels.back().smoothing = kFrontBevel;
            if (bevel < depth / 2)
                mLevels.push_back({depth - bevel, 1, slant, kWall});
            mLevels.push_back({bevel, 1, slant + depth - 2 * bevel, kBackBevel});
            mLevels.push_back({0, 0, 2 * slant + depth - 2 * bevel, 0});
        }
        else
            mLevels.push_back({0, 0, depth, 0});
        mBevel = bevel;
    }

    void Add(const Shape& shape, float dx, float dy);
    float Bevel() const { return mBevel; }
    MeshWriter& Writer() { return mWriter; }

private:
    using Point = GlyphPlate::Point;
    struct RimCut // where the runs of a wall begin
    {
        std::size_t start = 0;
        std::vector<std::uint32_t> run; ///< of each edge from `start` on: 0, 1 or 2
    };

    void AddFlat(const GlyphPlate& plate, float dx, float dy);
    void AddCaps(const GlyphPlate& plate, float dx, float dy);
    void AddWall(const Shape& shape, std::size_t first, std::size_t end);
    static RimCut CutRim(const GlyphPlate& plate, std::size_t first, std::size_t end);

    const TextMeshOptions& mOptions;
    float mLeft, mBottom, mRight, mSpan, mBevel = 0;
    std::vector<Level> mLevels;
    MeshWriter mWriter;
    std::vector<std::int32_t> mFrontOf, mBackOf; ///< of each point of the plate
    float mDx = 0, mDy = 0;
};

void Extruder::Add(const Shape& shape, float dx, float dy)
{
    const GlyphPlate& plate = shape.plate;
    mDx = dx;
    mDy = dy;
    if (!(mOptions.depth > 0))
    {
        AddFlat(plate, dx, dy);
        return;
    }
    AddCaps(plate, dx, dy);
    std::size_t first = 0;
    for (const std::int32_t end : plate.rimEnds)
    {
        AddWall(shape, first, std::size_t(end));
        first = std::size_t(end);
    }
}

// The back is the front turned about the middle of the text, so that it reads the right way round.
void Extruder::AddFlat(const GlyphPlate& plate, float dx, float dy)
{
    for (const bool back : {false, true})
    {
        if (back && !mOptions.twoSided)
            return;
        std::int32_t firstPoint = -1, firstUV = -1;
        for (const Point& point : plate.points)
        {
            const float x = point.x + dx, y = point.y + dy;
            const std::int32_t p = back ? mWriter.AddPoint(mLeft + mRight - x, y, -kBehind) : mWriter.AddPoint(x, y, 0);
            const std::int32_t uv = mWriter.AddUV((x - mLeft) / mSpan, (y - mBottom) / mSpan);
            firstPoint = firstPoint < 0 ? p : firstPoint;
            firstUV = firstUV < 0 ? uv : firstUV;
        }
        for (std::size_t i = 0; i < plate.corners.size(); i += 3)
        {
            const std::int32_t a = plate.corners[i], b = plate.corners[i + 1], c = plate.corners[i + 2];
            mWriter.AddPolygon(
                {{firstPoint + a, firstUV + a}, {firstPoint + b, firstUV + b}, {firstPoint + c, firstUV + c}}, false,
                back ? kBack : kFront);
        }
    }
}

void Extruder::AddCaps(const GlyphPlate& plate, float dx, float dy)
{
    mFrontOf.clear();
    mBackOf.clear();
    std::int32_t firstUV = -1;
    for (const Point& point : plate.points)
    {
        const float x = point.x + dx, y = point.y + dy;
        mFrontOf.push_back(mWriter.AddPoint(x, y, mOptions.depth));
        mBackOf.push_back(mWriter.AddPoint(x, y, 0));
        const std::int32_t uv = mWriter.AddUV((x - mLeft) / mSpan, (y - mBottom) / mSpan);
        mWriter.AddUV((mRight - x) / mSpan, (y - mBottom) / mSpan); // as seen from behind
        firstUV = firstUV < 0 ? uv : firstUV;
    }
    for (std::size_t i = 0; i < plate.corners.size(); i += 3)
    {
        const std::int32_t a = plate.corners[i], b = plate.corners[i + 1], c = plate.corners[i + 2];
        const auto corner = [firstUV](const std::vector<std::int32_t>& points, std::int32_t k, int back) {
            return MeshWriter::Corner{points[std::size_t(k)], firstUV + 2 * k + back};
        };
        mWriter.AddPolygon({corner(mFrontOf, a, 0), corner(mFrontOf, b, 0), corner(mFrontOf, c, 0)}, false, kFront);
        mWriter.AddPolygon({corner(mBackOf, a, 1), corner(mBackOf, c, 1), corner(mBackOf, b, 1)}, false, kBack);
    }
}

// The rim starts at a hard corner, where the seam of its texture coordinates does not show, when it has one. One hard
// corner alone needs a second place where its two sides change groups: the sharpest of the soft corners.
Extruder::RimCut Extruder::CutRim(const GlyphPlate& plate, std::size_t first, std::size_t end)
{
    const std::size_t count = end - first;
    const auto at = [&](std::size_t i) { return plate.points[std::size_t(plate.rims[first + i % count])]; };
    std::vector<bool> cuts(count);
    RimCut cut;
    std::size_t numCuts = 0, sharpest = 0;
    float leastCosine = 2;
    for (std::size_t i = count; i-- > 0;)
    {
        const Point before = at(i + count - 1), here = at(i), after = at(i + 1);
        const float ax = here.x - before.x, ay = here.y - before.y, bx = after.x - here.x, by = after.y - here.y;
        const float lengths = std::hypot(ax, ay) * std::hypot(bx, by), cosine = (ax * bx + ay * by) / lengths;
        cuts[i] = cosine < kHardTurn; // not so where a point lies on the next
        numCuts += cuts[i] ? 1u : 0u;
        cut.start = cuts[i] ? i : cut.start;
        if (!cuts[i] && cosine < leastCosine)
        {
            sharpest = i;
            leastCosine = cosine;
        }
    }
    if (numCuts == 1 && leastCosine <= 1)
    {
        cuts[sharpest] = true;
        ++numCuts;
    }
    std::uint32_t run = 0;
    std::size_t met = 0;
    for (std::size_t i = 0; i < count; ++i)
    {
        const bool begins = cuts[(cut.start + i) % count];
        met += begins ? 1u : 0u;
        if (begins && i > 0)
            run = met == numCuts && numCuts % 2 == 1 ? 2u : 1u - run;
        cut.run.push_back(run);
    }
    return cut;
}

void Extruder::AddWall(const Shape& shape, std::size_t first, std::size_t end)
{
    const GlyphPlate& plate = shape.plate;
    const std::size_t count = end - first, levels = mLevels.size();
    const RimCut cut = CutRim(plate, first, end);
    const auto entry = [&](std::size_t i) { return first + (cut.start + i) % count; };

    // Points of the rim level by level; the first and the last level are those of the caps.
    std::vector<std::int32_t> points(levels * count);
    std::int32_t firstUV = -1;
    float along = 0;
    for (std::size_t i = 0; i <= count; ++i)
    {
        const std::size_t e = entry(i);
        const auto point = std::size_t(plate.rims[e]);
        const Point at = plate.points[point];
        for (std::size_t l = 0; l < levels; ++l)
        {
            const std::int32_t uv = mWriter.AddUV(along / mSpan, -mLevels[l].length / mSpan);
            firstUV = firstUV < 0 ? uv : firstUV;
            if (i == count)
                continue;
            const Point move = mLevels[l].offset > 0 ? shape.offsets.moves[e] : Point{0, 0};
            points[i * levels + l] = l == 0 ? mFrontOf[point]
                                     : l + 1 == levels
                                         ? mBackOf[point]
                                         : mWriter.AddPoint(at.x + move.x + mDx, at.y + move.y + mDy, mLevels[l].z);
        }
        const Point next = plate.points[std::size_t(plate.rims[entry(i + 1)])];
        along += std::hypot(next.x - at.x, next.y - at.y);
    }
    for (std::size_t i = 0; i < count; ++i)
        for (std::size_t l = 0; l + 1 < levels; ++l)
        {
            const std::size_t k = (i + 1) % count;
            const auto uv = [&](std::size_t column, std::size_t level)
            { return firstUV + std::int32_t(column * levels + level); };
            mWriter.AddPolygon({{points[k * levels + l], uv(i + 1, l)},
                                {points[i * levels + l], uv(i, l)},
                                {points[i * levels + l + 1], uv(i, l + 1)},
                                {points[k * levels + l + 1], uv(i + 1, l + 1)}},
                               true, mLevels[l].smoothing << cut.run[i]);
        }
}

// --- Lines

std::vector<BString> LinesOf(const BString& text)
{
    std::vector<BString> lines(1);
    const std::int64_t length = text.Length();
    for (std::int64_t i = 0; i < length; ++i)
    {
        if (text[i] != '\r' && text[i] != '\n')
        {
            lines.back().Append(std::string_view(text.CString() + i, 1));
            continue;
        }
        i += text[i] == '\r' && i + 1 < length && text[i + 1] == '\n' ? 1 : 0;
        lines.emplace_back();
    }
    return lines;
}

struct Bounds
{
    float left = std::numeric_limits<float>::max(), right = -left, bottom = left, top = -left;

    void Extend(const GEOM& record, float dx, float dy)
    {
        for (std::int32_t v = 0; v < record.numVerts; ++v)
        {
            left = std::min(left, record.verts[v].x + dx);
            right = std::max(right, record.verts[v].x + dx);
            bottom = std::min(bottom, record.verts[v].y + dy);
            top = std::max(top, record.verts[v].y + dy);
        }
    }
};

float ShiftOf(const GEOM& record, TextAlign align)
{
    Bounds ink;
    ink.Extend(record, 0, 0);
    if (record.numVerts == 0)
        return 0;
    return align == TextAlign::Left ? -ink.left : align == TextAlign::Right ? -ink.right : -(ink.left + ink.right) / 2;
}

/// The library kerns too strongly unless it is told otherwise; put back for whoever else builds text.
class FontKerning
{
public:
    FontKerning() : mWas(VXGeom::UnscaledKerning()) { VXGeom::SetUnscaledKerning(true); }
    ~FontKerning() { VXGeom::SetUnscaledKerning(mWas); }
    FontKerning(const FontKerning&) = delete;
    FontKerning& operator=(const FontKerning&) = delete;

private:
    bool mWas;
};

BString Problem(const TextMeshOptions& options)
{
    constexpr float kLargest = 1e6f;
    if (!(options.size > 0 && options.size <= kLargest))
        return "a size that makes no sense, expected a number above 0";
    if (!(options.depth >= 0 && options.depth <= kLargest) || !(options.bevel >= 0 && options.bevel <= kLargest))
        return "a depth or bevel that makes no sense, expected 0 or more";
    return {};
}

bool CountMissing(const BString& text, FT_Face face, TextMeshReport& report)
{
    BArray<std::uint32_t> codes;
    if (text.Length() > 0 && ConvertUTF8toUTF32(text.CString(), text.Length(), codes) < 0)
        return false;
    for (const std::uint32_t code : codes)
        if (code != '\r' && code != '\n' && FT_Get_Char_Index(face, code) == 0)
        {
            report.firstMissing = report.missing == 0 ? code : report.firstMissing;
            ++report.missing;
        }
    return true;
}

RecordPtr Build(const BString& text, VXFTFace& face, FT_Face opened, const TextMeshOptions& options,
                TextMeshReport& report)
{
    const FontKerning kerning;
    const float size = options.size * kUnitsPerSize / float(opened->units_per_EM);
    const float lineHeight = options.size * float(opened->height) / float(opened->units_per_EM);
    const std::vector<BString> texts = LinesOf(text);
    std::vector<Line> lines(texts.size());
    Bounds ink;
    for (std::size_t i = 0; i < lines.size(); ++i)
    {
        Line& line = lines[i];
        line.mesh.SetGenerateCreases(false); // only the triangles are used
        line.mesh.BuildStrGlyphs(texts[i].CString(), &face, size, "", false, false, &line.glyphEnds);
        if (!line.mesh.Geom())
            return nullptr;
        line.x = ShiftOf(*line.mesh.Geom(), options.align);
        line.y = -lineHeight * float(i);
        ink.Extend(*line.mesh.Geom(), line.x, line.y);
        report.glyphs += std::int32_t(line.glyphEnds.Count());
    }
    report.lines = std::int32_t(lines.size());

    Extruder extruder(options, ink.left, ink.bottom, ink.right, ink.top);
    std::map<FT_UInt, Shape> shapes;
    for (std::size_t i = 0; i < lines.size(); ++i)
    {
        const Line& line = lines[i];
        const GEOM& flat = *line.mesh.Geom();
        BArray<std::uint32_t> codes; // one for each glyph
        if (!texts[i].IsEmpty() && ConvertUTF8toUTF32(texts[i].CString(), texts[i].Length(), codes) < 0)
            return nullptr;
        std::int32_t first = 0;
        for (std::int64_t k = 0; k < line.glyphEnds.Count(); first = line.glyphEnds[k++])
        {
            if (line.glyphEnds[k] == first)
                continue;
            const VERTEX at = flat.verts[flat.sets[flat.Poly(first)->start]];
            const auto [found, isNew] = shapes.try_emplace(FT_Get_Char_Index(opened, codes[k]));
            Shape& shape = found->second;
            if (isNew)
            {
                shape.plate.Take(flat, first, line.glyphEnds[k]);
                shape.first = at;
                if (extruder.Bevel() > 0)
                    shape.offsets.Compute(shape.plate, extruder.Bevel());
            }
            extruder.Add(shape, line.x + (at.x - shape.first.x), line.y);
        }
    }
    return extruder.Writer().Record(options, options.depth > 0);
}
} // namespace

RecordPtr BuildTextMesh(const BString& text, VXFTFace& face, const TextMeshOptions& options, TextMeshReport& report)
{
    report = TextMeshReport();
    using Blames = TextMeshReport::Blames;
    const auto fail = [&report](Blames blames, const BString& error)
    {
        report.error = error;
        report.blames = blames;
        return nullptr;
    };
    if (const BString problem = Problem(options); !problem.IsEmpty())
        return fail(Blames::Options, problem);
    VXGeom::SetupFreeType();
    const FT_Face opened = face.GetFTFace();
    if (!opened)
        return fail(Blames::Font, face.Path().Exists() ? "is no font that can be read" : "no such file");
    if (!FT_IS_SCALABLE(opened) || opened->units_per_EM == 0)
        return fail(Blames::Font, "is a font of bitmaps, expected one with outlines");
    if (!CountMissing(text, opened, report))
        return fail(Blames::Text, "the text is not UTF-8");
    try
    {
        RecordPtr record = Build(text, face, opened, options, report);
        if (record && record->numPolys > 0)
            return record;
        return record ? fail(Blames::Text, "the text has nothing to see") : fail(Blames::Nothing, "out of memory");
    }
    catch (const std::bad_alloc&)
    {
        return fail(Blames::Nothing, "out of memory");
    }
}
} // namespace vx
