// VelmarBase: drawing.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"

#include <cstdint>

/// What something that was picked is.
enum class VXPickKind : std::uint8_t
{
    Nothing,
    Object,
    Polygon,
    Edge,
    Vertex
};

/// What is seen at a place.
struct VXPickHit
{
    VXPickKind kind = VXPickKind::Nothing;
    std::int32_t object = -1;         ///< index in the scene's list
    std::int32_t drawGeom = -1;       ///< which geometry of the object (E_DrawGeom); -1 where objects alone have names
    std::int32_t polygon = -1;        ///< index in the geometry's record; -1 where objects alone have names
    std::int32_t edge = -1;           ///< index in the geometry's edge list; -1 when it has none, too
    std::int32_t verts[2] = {-1, -1}; ///< an edge's two vertices, the lower first, or a vertex: indices in the record
    float x = 0, y = 0; ///< where, in pixels from the picture's upper left corner: the first pixel's middle is (.5, .5)
    float depth = 1;    ///< of the depth buffer: 0 nearest, 1 farthest

    explicit operator bool() const { return kind != VXPickKind::Nothing; }
};

/// A picture of names: for each pixel the 32-bit name of the object or polygon that is seen there, and its depth. A
/// draw engine fills it in a pick pass, handing out a run of names for each object or geometry that it draws; 0 names
/// nothing. It may hold a part of the picture only; pixels are counted in the whole one, from its upper left corner,
/// and nothing is found outside the part.
///
/// No OpenGL and no scene: who reads it knows what the indices mean. VXPicker finds edges and vertices with it.
class VELMAR_EXPORT VXPickBuffer
{
public:
    static constexpr int kFarthest = 1 << 30;

    // --- Filling

    /// Starts over with a part of the picture in which nothing is seen. False when memory ran out, or a side is
    /// below 1, or the part reaches farther than kFarthest from the corner.
    bool Reset(int left, int top, int width, int height);

    /// Names for what is drawn next: one for an object as a whole, or one for each of its `count` polygons in order.
    /// @param kind Object or Polygon
    /// @return the first name; 0 when there are not so many of the 2^32 - 2 left, or memory ran out
    std::uint32_t AddNames(VXPickKind kind, std::int32_t object, std::int32_t drawGeom, std::int32_t count);

    std::uint32_t* Names() { return mNames.Data(); } ///< Width() x Height(), top row first
    float* Depths() { return mDepths.Data(); }       ///< likewise

    // --- Reading
    int Left() const { return mLeft; }
    int Top() const { return mTop; }
    int Width() const { return mWidth; }
    int Height() const { return mHeight; }
    bool Contains(int x, int y) const;
    std::uint32_t NameAt(int x, int y) const { return Contains(x, y) ? mNames[IndexOf(x, y)] : 0; }
    float DepthAt(int x, int y) const { return Contains(x, y) ? mDepths[IndexOf(x, y)] : 1.0f; }

    VXPickHit At(int x, int y) const; ///< what pixel (x, y) shows

    /// What pixels [left, right) x [top, bottom) show, each name once, in the order in which names were given, where it
    /// comes nearest to the viewer. `hits` is replaced. False when memory ran out.
    bool InRectangle(int left, int top, int right, int bottom, BArray<VXPickHit>& hits) const;

    /// What is seen closest to pixel (x, y), no farther from its middle than `radius` pixels; of what is equally close,
    /// what is nearer to the viewer, then what was named first. The pixel itself comes before all others.
    VXPickHit Nearest(int x, int y, float radius) const;

private:
    /// Names [first, first + count), which a search finds by the first.
    struct Run
    {
        std::uint32_t first;
        VXPickKind kind;
        std::int32_t object, drawGeom;
    };
    std::int64_t IndexOf(int x, int y) const { return std::int64_t(y - mTop) * mWidth + (x - mLeft); }
    VXPickHit HitOf(int x, int y) const;

    int mLeft = 0, mTop = 0, mWidth = 0, mHeight = 0;
    BArray<std::uint32_t> mNames;
    BArray<float> mDepths;
    BArray<Run> mRuns; ///< by first name
    std::uint32_t mNextName = 1;
};
