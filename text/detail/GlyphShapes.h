// VelmarBase: text meshes.
#pragma once

#include "base/BArray.h"
#include "base/BMap.h"
#include "base/GEOM.h"
#include "text/detail/FreeType.h"

#include <cstdint>

class GLUtesselator;

namespace vx
{
struct GlyphPoint
{
    double x = 0, y = 0; ///< font units

    friend bool operator==(const GlyphPoint&, const GlyphPoint&) = default;
};

/// How the points of one run make triangles, counter-clockwise all of them.
enum class TriangleRun : std::uint8_t
{
    List,
    Strip,
    Fan,
};

/// The area that one glyph fills: where its vertices and triangles lie among those of all shapes.
struct GlyphShape
{
    std::int32_t firstVert = 0, numVerts = 0;
    std::int32_t firstCorner = 0, numPolys = 0;
    std::int64_t advance = 0; ///< font units
};

/// From font units to mesh units.
struct GlyphScale
{
    double x = 0, y = 0; ///< 0 where nothing can be drawn

    /// Sets the face to 72 points at 72 dpi, as all layout here goes by, and takes the scale for a size from it.
    GlyphScale(FT_Face face, float size);
    bool CanDraw() const { return x != 0 && y != 0; }
};

/// Where the next glyph goes in a record that is being filled.
struct GlyphCursor
{
    std::int32_t vert = 0, corner = 0, poly = 0;
};

/// The shapes of a face's glyphs, each made when it is first asked for: outlines are decomposed by FreeType, curves cut
/// into five pieces, and the GLU tessellator makes triangles of what the outline's own fill rule fills.
class GlyphShapes
{
public:
    GlyphShapes(FT_Face face, const GlyphScale& scale); ///< without a scale no shape has triangles
    ~GlyphShapes();
    GlyphShapes(const GlyphShapes&) = delete;
    GlyphShapes& operator=(const GlyphShapes&) = delete;

    /// The shape of a glyph by its index; without triangles when it is no outline, has no area or cannot be loaded.
    /// Right after the first call for an index, the face's slot holds that glyph. @return an index, -1 when memory ran
    /// out
    std::int32_t Find(FT_UInt glyph);
    std::int32_t Count() const { return std::int32_t(mShapes.Count()); }
    const GlyphShape& operator[](std::int32_t shape) const { return mShapes[shape]; }

    /// Writes a glyph's vertices, moved by (dx, dy), and polygons into a record without groups that has room for them.
    void Write(const GlyphShape& shape, float dx, float dy, GEOM& to, GlyphCursor& at) const;

private:
    struct Run
    {
        TriangleRun kind;
        std::int32_t firstVert, numVerts;
    };
    struct Outline; // contours while they are read
    struct Calls;   // what the tessellator calls

    void Make(GlyphShape& shape);
    void Tessellate(bool evenOdd);
    bool FlattenContours();
    bool AddTriangles(std::int32_t firstVert);
    bool IsTangled() const;

    FT_Face mFace;
    GlyphScale mScale;
    GLUtesselator* mTessellator;
    BMapIntToInt mShapeOf; ///< by glyph index
    BArray<GlyphShape> mShapes;
    BArray<VERTEX> mVerts;         ///< of all shapes, in mesh units
    BArray<std::int32_t> mCorners; ///< three for each triangle, vertices counted within the shape

    // The glyph that is being made
    BArray<GlyphPoint> mOutline; ///< points of its contours, and those where contours cross
    BArray<std::int32_t> mContourEnds;
    BArray<Run> mRuns;    ///< as the tessellator gives them, over the shape's vertices
    bool mFailed = false; ///< memory ran out
    bool mRunSkipped = false;
};
} // namespace vx
