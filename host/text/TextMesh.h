// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BString.h"
#include "base/GEOM.h"

#include <cstdint>
#include <memory>

class VXFTFace;

namespace vx
{
enum class TextAlign
{
    Left,
    Centre,
    Right,
};

/// How a text becomes a mesh. Lengths are in model units.
struct TextMeshOptions
{
    float size = 1;     ///< of an em: what the font takes as its height
    float depth = 0.2f; ///< 0: a flat text in the plane z = 0
    float bevel = 0;    ///< how far the edges are cut off, and the sides stand out; at most half the depth
    TextAlign align = TextAlign::Left; ///< of each line's ink, about x = 0
    bool twoSided = false;             ///< a flat text is seen from behind as well, where it reads like from the front
    BString frontMaterial = "Text";
    BString sideMaterial = "Text side"; ///< of sides and bevels; the back has the front's
};

/// What there is to say about a text mesh.
struct TextMeshReport
{
    enum class Blames
    {
        Nothing,
        Font,
        Text,
        Options,
    };
    BString error;                   ///< empty when the mesh was made
    Blames blames = Blames::Nothing; ///< what the error is about
    std::int32_t glyphs = 0, lines = 0;
    std::int32_t missing = 0;       ///< characters that the font lacks, drawn as its missing glyph
    std::uint32_t firstMissing = 0; ///< the first of them
};

struct FreeRecord
{
    void operator()(GEOM* record) const { GEOM_Free(record); }
};
using RecordPtr = std::unique_ptr<GEOM, FreeRecord>;

/// A text as a mesh: flat, or with depth from z = 0 to z = depth, its baseline at y = 0. With depth every edge has
/// exactly two polygons and all are wound outwards; the rims of front and back are creases (other smoothing groups), as
/// are sharp corners of the outline. Texture coordinates: 1 is the longer side of the text; front and back are mapped
/// straight on, walls by the length along the outline. Lines end with CR, LF or both.
/// @return the record; null, with report.error, when the text is not UTF-8 or has nothing to see, the font cannot be
/// used, a length makes no sense, or memory ran out
VELMAR_HOST_EXPORT RecordPtr BuildTextMesh(const BString& text, VXFTFace& face, const TextMeshOptions& options,
                                           TextMeshReport& report);
} // namespace vx
