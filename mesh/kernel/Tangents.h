// VelmarBase: mesh processing.
#pragma once

#include "base/BArray.h"
#include "mesh/kernel/Polys.h"

#include <span>

/// @file
/// Frames along the texture: at each vertex those of the last polygon corner that uses it, and the repair of frames
/// that cannot carry a displacement. The record's indices are trusted.

namespace vx
{

inline constexpr VERTEX kDefaultTangent{1, 0, 0}, kDefaultBinormal{0, 1, 0};

/// Tangent and binormal of each vertex along the texture's u and v. Each corner writes those of its vertex, in the
/// order of polygons, in each polygon the second corner to the last but one, then the first, then the last: the last
/// writing stands, and nothing is averaged. Lines, points and polygons whose texture polygon has another length write
/// nothing; a polygon of one corner writes the default. Vertices that nothing was written to, or something not finite,
/// have the default. Linear in corners.
/// @param tex      of the same record
/// @param tangents, binormals out: one entry for each vertex that the polygons name, or more
/// @return false when memory ran out
bool CornerTangents(std::span<const VERTEX> points, const PolyView& polys, const GEOM_Texture& tex,
                    std::span<VERTEX> tangents, std::span<VERTEX> binormals);

/// Rebuilds the frames in which two axes are parallel (dot product within 0.000001 of 1 or -1) or a tangent or binormal
/// has no length, so that afterwards both have unit length and no two axes are parallel. Normals stay as they are;
/// where a normal is zero there is nothing to build on, and the rebuilt axes are zero.
void RepairFrames(std::span<const VERTEX> normals, std::span<VERTEX> tangents, std::span<VERTEX> binormals);

} // namespace vx
