// VelmarBase: reference host.
#pragma once

#include "base/BBitArray.h"
#include "base/BString.h"
#include "host/gl/GeomBuffers.h"
#include "material/VXMaterialColor4.h"

class VXGeom;

namespace vx
{
/// A named group to be shown on a picture: its polygons tinted and outlined, or the vertices at their corners as dots.
struct Highlight
{
    BString group;
    VXMaterialColor4 color{0.98f, 0.45f, 0.05f, 1};
    bool vertices = false;
};

/// Some polygons of one geometry, as drawing them needs it on the graphics card. Hidden ones are never among them.
/// Looked at anew in every frame, since a tool may change what it selects without telling anybody; what is the same as
/// before is not uploaded again.
class VELMAR_HOST_EXPORT PolyMarks
{
public:
    /// @param marked one bit for each polygon  @return false when there is nothing to draw or memory ran out
    bool UpdatePolys(const VXGeom& geom, const BBitArray& marked);
    bool UpdateVerts(const VXGeom& geom, const BBitArray& marked); ///< the vertices of these polygons

    const GpuArray& Polys() const { return mPolys; } ///< one number for each polygon, 1 when it is marked
    /// Pairs of vertices: the edges between a marked polygon and one that is not, or none.
    const GpuArray& Border() const { return mBorder; }
    GeomBuffers::Range BorderRange() const { return {0, std::int32_t(mBorder.Bytes() / 8)}; }
    const GpuArray& Verts() const { return mVerts; }
    GeomBuffers::Range VertRange() const { return {0, std::int32_t(mVerts.Bytes() / 4)}; }
    float MeanEdge() const { return mMeanEdge; } ///< length of the edges between the vertices

private:
    GpuArray mPolys{GpuArray::Texels::Ints}, mBorder{GpuArray::Texels::IntPairs}, mVerts{GpuArray::Texels::Ints};
    float mMeanEdge = 0;
};
} // namespace vx
