// VelmarBase: mesh processing.
#pragma once

#include "mesh/VXEdge.h"
#include "mesh/kernel/Polys.h"

#include <span>

/// @file
/// Vertex normals as sums of polygon normals. Sums run in the order of polygons and corners, so results do not depend
/// on anything else. All functions are linear in corners and allocate nothing. The record's indices are trusted.

namespace vx
{

/// Newell normals for the facing test: their length is twice the polygon's area, so that no root is taken. Points and
/// polygons with fewer than 3 corners get (0, 0, 1).
/// @param out polys.count entries
void FacingNormals(std::span<const VERTEX> points, const PolyView& polys, VERTEX* out);

/// Smooth vertex normals without creases: faces of more than 2 corners add their normal to their vertices; lines set
/// normals of their own, perpendicular to the line in its plane, in the order of polygons.
/// @param polyNormals polys.count entries
/// @param normals     out, one per point: unit length, or a direction a little off the z axis for a vertex that nothing
///                    or only what cancels out touches
void PlainNormals(std::span<const VERTEX> points, const PolyView& polys, const VERTEX* polyNormals,
                  std::span<VERTEX> normals);

/// GEOM_CalcPolyNormals and PlainNormals in one go over the polygons: the same result in two thirds of the time.
void PolyAndPlainNormals(const GEOM& geom, VERTEX* polyNormals, std::span<VERTEX> normals);

/// Starts the sums that AddCornerNormals or AddEdgeNormals adds to and NormaliseSums ends: an entry that nothing was
/// added to stays recognisable.
void ClearSums(std::span<VERTEX> sums);

/// Adds each polygon's normal to the vertices of its corners, once for every corner from which an edge starts.
void AddCornerNormals(const PolyView& polys, const VERTEX* polyNormals, std::span<VERTEX> sums);

/// The same by way of the edges, with the vertices that their crease data name: for corner arrays of a host, which may
/// know nothing of the crease data.
void AddEdgeNormals(std::span<const VXEdge> edges, std::span<const VERTEX> polyNormals, std::span<VERTEX> sums);

/// Makes sums unit normals: (0, 0, 1) where nothing was added, (0, 0, 0) where the sum is zero or not finite.
void NormaliseSums(std::span<VERTEX> sums);

/// Along a texture seam (an edge both crease and smooth) crease vertices take the normals of the plain vertices.
void CopySeamNormals(const VXEdge& edge, std::span<VERTEX> normals);

} // namespace vx
