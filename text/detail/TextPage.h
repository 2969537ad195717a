// VelmarBase: text meshes.
#pragma once

#include "base/BArray.h"
#include "base/GEOM.h"
#include "mesh/VXEdgeList.h"
#include "text/detail/FreeType.h"

#include <cstdint>
#include <memory>

namespace vx
{
struct GeomFreer
{
    void operator()(GEOM* g) const { GEOM_Free(g); }
};
using PagePtr = std::unique_ptr<GEOM, GeomFreer>;

/// The edges of a text that is to be made.
struct TextEdges
{
    VXEdgeList list;
    int sides = 1;       ///< 2: the list covers a second copy of the record as well, whose vertices and polygons follow
    bool smooth = false; ///< all edges are marked as smooth ones
};

/// A text as one record of triangles, its glyphs in the order of the text, each tessellated once. Lines end with CR, LF
/// or both. No polygons where the size or the face allows none; see VXGeom::BuildStrGlyphs for the rest.
/// @param unscaledKerning  see VXGeom::SetUnscaledKerning
/// @param ends  out, may be null: for each glyph the number of polygons up to its end
/// @param edges out, may be null: what VXEdgeList::Build makes of the record, put together of the glyphs' edges
/// @return null when memory ran out or the page is more than 32 bits can count
PagePtr WriteTextPage(const BArray<std::uint32_t>& codes, FT_Face face, float size, bool unscaledKerning,
                      BArray<std::int32_t>* ends, TextEdges* edges);
} // namespace vx
