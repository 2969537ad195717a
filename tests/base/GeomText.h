// Mesh records as text, so that tests compare whole records and a difference can be read.
#pragma once

#include "base/GEOM_Obj.h"
#include "tests/support/Meshes.h"

#include <charconv>
#include <string>
#include <string_view>

inline std::string NumberText(float value)
{
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}

/// The pieces in a row. GCC 12 warns about memory when a sum of texts begins with a literal or a temporary.
template <class... Pieces>
std::string Cat(const Pieces&... pieces)
{
    std::string text;
    (text.append(std::string_view(pieces)), ...);
    return text;
}

inline std::string PointText(const VERTEX& p)
{
    return Cat(NumberText(p.x), " ", NumberText(p.y), " ", NumberText(p.z));
}

/// "stem7"
inline std::string Named(std::string_view stem, std::int64_t number)
{
    std::string text(stem);
    return text += std::to_string(number);
}

/// One polygon: kind, corners as vertex/texture/normal counted from 0, material, smoothing word, groups.
/// "f 0/0 1/1 2/2 m0 s1 a b"
inline std::string PolyText(const GEOM* g, std::int32_t i)
{
    const ELEMENT* const poly = g->Poly(i);
    std::string text = poly->type == kElementLine ? "l" : poly->type == kElementPoint ? "p" : "f";
    const bool textured = g->PolyHasTexture(i) && g->tex->polys[i].length > 0;
    for (std::int32_t k = 0; k < poly->length; ++k)
    {
        text += Named(" ", g->sets[poly->start + k]);
        if (textured)
            text += Named("/", g->tex->sets[g->tex->polys[i].start + k]);
        if (g->normalSets)
            text += Named(textured ? "/" : "//", g->normalSets[poly->start + k]);
    }
    text += Cat(Named(" m", poly->material), Named(" s", poly->GroupWord(0)));
    for (const BString& name : g->groupNames)
    {
        std::int32_t word;
        std::uint32_t mask;
        if (GEOM_GetGroupBit(g, name.CString(), &word, &mask) && (poly->GroupWord(word) & mask))
            text.append(" ").append(name.Std());
    }
    return text;
}

inline std::string PolysText(const GEOM* g)
{
    std::string text;
    for (std::int32_t i = 0; i < g->numPolys; ++i)
        text += Cat(PolyText(g, i), "\n");
    return text;
}

/// Everything in the record that a file can carry.
inline std::string RecordText(const GEOM* g)
{
    if (!g)
        return "no record";
    std::string text;
    for (std::int32_t i = 0; i < g->numVerts; ++i)
        text += Cat("v ", PointText(g->verts[i]), g->vertColors ? " " : "",
                    g->vertColors ? PointText(g->vertColors[i]) : "", "\n");
    for (std::int32_t i = 0; g->tex && i < g->tex->numVerts; ++i)
        text += Cat("vt ", NumberText(g->tex->verts[i].u), " ", NumberText(g->tex->verts[i].v), "\n");
    for (std::int32_t i = 0; i < g->numNormals; ++i)
        text += Cat("vn ", PointText(g->normals[i]), "\n");
    text += Cat(PolysText(g), Named("groups ", g->numGroups));
    for (const BString& name : g->groupNames)
        text += Cat(" [", name, "]");
    for (const GEOM_Material& material : g->materials)
        text += Cat("\nmaterial [", material.name, "]");
    for (const BString& file : g->materialFiles)
        text += Cat("\nfile [", file, "]");
    for (const GEOM_ObjectName& object : g->objectNames)
        text += Cat(Named("\nobject ", object.firstPoly), " [", object.name, "]");
    return text += '\n';
}

inline GeomPtr ReadObj(std::string_view text, GEOM_ReadReport* report = nullptr)
{
    return GeomPtr(GEOM_ReadObjText(text.data(), text.size(), nullptr, report));
}
