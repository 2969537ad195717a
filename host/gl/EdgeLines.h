// VelmarBase: reference host.
#pragma once

#include "base/MAT.h"
#include "host/gl/GeomBuffers.h"

class VXGeom;

namespace vx
{
/// The edge lines of one geometry as segments on the graphics card: those of every view, and the silhouettes of one.
/// Every edge stands once, with the element that comes first in drawing order: both elements beside it have it marked,
/// and blended ink would show that. Along with them go the normals by which lines are pushed off the surface.
class VELMAR_HOST_EXPORT EdgeLines
{
public:
    void MarkStale() { mFresh = mFaced = false; }
    /// Brings lines and normals up to date. @param welded lines join at creases; else each follows the crease vertices
    /// of its element  @return false when memory ran out
    bool Update(VXGeom& geom, bool welded);
    /// The silhouettes as seen in this view, which costs a pass over the polygons when it is another than before.
    bool UpdateOutline(VXGeom& geom, const Mat44 modelView);

    const GpuArray& Pairs() const { return mPairs; }
    const GpuArray& OutlinePairs() const { return mOutlinePairs; }
    const GpuArray& Normals() const { return mNormals; }
    GeomBuffers::Range Lines(VXElementKind kind, std::int32_t first, std::int32_t count) const
    {
        return RangeOf(mFirst, kind, first, count);
    }
    GeomBuffers::Range Outline(VXElementKind kind, std::int32_t first, std::int32_t count) const
    {
        return RangeOf(mFirstOutline, kind, first, count);
    }

private:
    bool Gather(const VXGeom& geom, std::uint32_t firstBit, BArray<std::int32_t>& table, GpuArray& to) const;
    GeomBuffers::Range RangeOf(const BArray<std::int32_t>& table, VXElementKind kind, std::int32_t first,
                               std::int32_t count) const;

    bool mFresh = false, mFaced = false, mWelded = true;
    Mat44 mFacedView;
    std::int32_t mNumQuads = 0;
    BArray<std::int32_t> mFirst, mFirstOutline; ///< by rank among quads and triangles, and one more
    GpuArray mPairs{GpuArray::Texels::IntPairs}, mOutlinePairs{GpuArray::Texels::IntPairs};
    GpuArray mNormals{GpuArray::Texels::Floats};
};
} // namespace vx
