#include "host/import/ElementParts.h"

#include "base/GEOM.h"

#include <algorithm>
#include <cstring>

namespace vx
{
static bool IsIn(const ELEMENT& poly, ElementPart part)
{
    return (poly.IsFace() && poly.length >= 3) == (part == ElementPart::Faces);
}

bool HasElements(const GEOM& record, ElementPart part)
{
    for (std::int64_t i = 0; i < record.numPolys; ++i)
        if (IsIn(*record.Poly(i), part))
            return true;
    return false;
}

// Moves the polygons of the part to the front, with their corners in a row. The copy is as long as the record, so that
// all there is to do is to write what is kept over it.
static void KeepPolys(const GEOM& from, ElementPart part, GEOM& to)
{
    std::int32_t corners = 0, texCorners = 0, objects = 0;
    to.numPolys = 0;
    for (std::int32_t i = 0; i < from.numPolys; ++i)
    {
        for (; objects < from.objectNames.Count() && from.objectNames[objects].firstPoly <= i; ++objects)
            to.objectNames[objects].firstPoly = to.numPolys;
        const ELEMENT& poly = *from.Poly(i);
        if (!IsIn(poly, part))
            continue;
        std::memcpy(to.Poly(to.numPolys), &poly, std::size_t(from.PolyStride()));
        std::copy_n(from.sets + poly.start, poly.length, to.sets + corners);
        if (from.normalSets)
            std::copy_n(from.normalSets + poly.start, poly.length, to.normalSets + corners);
        if (from.PolyHasTexture(i))
        {
            const GEOM_TexPoly& tex = from.tex->polys[i];
            std::copy_n(from.tex->sets + tex.start, tex.length, to.tex->sets + texCorners);
            to.tex->polys[to.numPolys] = {texCorners, tex.length};
            texCorners += tex.length;
        }
        else if (from.tex && to.numPolys < from.tex->numPolys)
            to.tex->polys[to.numPolys] = {0, 0};
        to.Poly(to.numPolys++)->start = corners;
        corners += poly.length;
    }
    for (; objects < from.objectNames.Count(); ++objects)
        to.objectNames[objects].firstPoly = to.numPolys;
    to.SetSize(to.numPolys, to.numVerts, corners, 0, from.tex ? texCorners : 0, from.tex ? from.tex->numVerts : 0);
}

static bool DropVertsOfOthers(const GEOM& from, GEOM& to)
{
    enum : std::uint8_t
    {
        kFree,
        kOthers,
        kKept
    };
    BArray<std::uint8_t> use;
    BArray<std::int32_t> place;
    if (!use.SetCountForWriting(from.numVerts) || !place.SetCountForWriting(from.numVerts))
        return false;
    std::fill(use.begin(), use.end(), std::uint8_t(kFree));
    for (std::int64_t c = 0; c < from.NumCorners(); ++c)
        use[from.sets[c]] = kOthers;
    for (std::int64_t c = 0; c < to.NumCorners(); ++c)
        use[to.sets[c]] = kKept;
    std::int32_t count = 0;
    for (std::int32_t v = 0; v < from.numVerts; ++v)
    {
        place[v] = count;
        if (use[v] == kOthers)
            continue;
        to.verts[count] = from.verts[v];
        if (from.vertColors)
            to.vertColors[count] = from.vertColors[v];
        ++count;
    }
    for (std::int64_t c = 0; c < to.NumCorners(); ++c)
        to.sets[c] = place[to.sets[c]];
    return to.SetSize(to.numPolys, count, int(to.NumCorners()), 0, to.tex ? to.tex->numCorners : 0,
                      to.tex ? to.tex->numVerts : 0) == 0;
}

GEOM* CopyOfElements(const GEOM& record, ElementPart part)
{
    GEOM* const copy = GEOM_Copy(&record, 2);
    if (!copy)
        return nullptr;
    KeepPolys(record, part, *copy);
    if (DropVertsOfOthers(record, *copy))
        return copy;
    GEOM_Free(copy);
    return nullptr;
}
} // namespace vx
