// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"

class GEOM;

namespace vx
{
/// A part of a mesh's polygons.
enum class ElementPart
{
    Faces, ///< of three corners and more: what subdivision takes
    Rest,  ///< lines, points, and faces of fewer corners
};

VELMAR_HOST_EXPORT bool HasElements(const GEOM& record, ElementPart part);

/// A copy of a record with that part of its polygons alone, and without the vertices that only the others use. Names
/// and texture vertices are all there. The caller's; null when memory ran out.
VELMAR_HOST_EXPORT GEOM* CopyOfElements(const GEOM& record, ElementPart part);
} // namespace vx
