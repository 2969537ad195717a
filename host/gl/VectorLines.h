// VelmarBase: reference host.
#pragma once

#include "host/gl/GeomBuffers.h"

class VXGeom;

namespace vx
{
/// Which vectors of a mesh are drawn as short lines that start at its vertices.
enum class VectorKind
{
    Off,
    Normals,  ///< of all vertices, crease vertices included, so that split normals show along hard edges
    Tangents, ///< tangents and binormals of the record's vertices, and the normals as above
};

/// The vectors of one geometry as segments on the graphics card. A crease vertex has no tangent of its own, only a unit
/// axis in its place, and neither has a vertex without texture coordinates: both are left out. Only vertices of faces
/// count.
class VELMAR_HOST_EXPORT VectorLines
{
public:
    enum Axis
    {
        kTangent,
        kBinormal,
        kNormal,
        kNumAxes
    };

    void MarkStale() { mMadeFor = VectorKind::Off; }
    /// Computes tangents when they are asked for. False when there is nothing to draw or memory ran out.
    bool Update(VXGeom& geom, VectorKind kind);

    const GpuArray& Positions() const { return mPositions; }
    const GpuArray& Pairs() const { return mPairs; }
    GeomBuffers::Range Segments(Axis axis) const { return mSegments[axis]; }
    float Opacity() const { return mOpacity; }

private:
    VectorKind mMadeFor = VectorKind::Off;
    GpuArray mPositions{GpuArray::Texels::Floats}, mPairs{GpuArray::Texels::IntPairs};
    GeomBuffers::Range mSegments[kNumAxes];
    float mOpacity = 1;
};
} // namespace vx
