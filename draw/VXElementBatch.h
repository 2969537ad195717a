// VelmarBase: drawing.
#pragma once

#include "mesh/VXSortedData.h"

#include <cstdint>

class VXGeom;
class VXMaterial;

/// Elements of one kind, one material and one transparency of a geometry: what VXSceneDrawEngine::DrawElements draws.
/// The elements are [first, first + count) of geom->Sorted(kind), so a buffer filled once in sorted order is drawn by
/// range; the pointers already stand at `first`.
struct VXElementBatch
{
    VXGeom* geom = nullptr;
    VXElementKind kind = VXElementKind::Quads;
    std::int32_t first = 0;
    std::int32_t count = 0;
    const std::int32_t* polys = nullptr;      ///< count polygon indices, all kinds: the way to corners of any number
    const std::int32_t* corners = nullptr;    ///< quads and triangles: cornersPerElement vertex indices each, else null
    const std::uint32_t* edgeFlags = nullptr; ///< quads and triangles: a word of VXElementEdgeFlag each, else null
    int cornersPerElement = 0;                ///< 4 for quads, 3 for triangles, 0 when it differs between elements
    VXMaterial* material = nullptr; ///< already bound; null for a slot without one, and then nothing was bound
    VXMaterial* drawMode = nullptr; ///< in force, object's or scene's: flat or smooth, textured, toon ...
    std::int64_t layer = 0;         ///< material layer; above 0 only while that layer's shader is current
    bool transparent = false;       ///< a run of the second half; never set where the mode forces opaque
};
