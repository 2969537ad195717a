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

inline std::string PointText(const VERTEX& p)
{
    return NumberText(p.x) + ' ' + NumberText(p.y) + ' ' + NumberText(p.z);
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
        text += ' ' + std::to_string(g->sets[poly->start + k]);
        if (textured)
            text += '/' + std::to_string(g->tex->sets[g->tex->polys[i].start + k]);
        if (g->normalSets)
            text += (textured ? "/" : "//") + std::to_string(g->normalSets[poly->start + k]);
    }
    text += " m" + std::to_string(poly->material) + " s" + std::to_string(poly->GroupWord(0));
    for (const BString& name : g->groupNames)
    {
        std::int32_t word;
        std::uint32_t mask;
        if (GEOM_GetGroupBit(g, name.CString(), &word, &mask) && (poly->GroupWord(word) & mask))
            text += ' ' + name.Std();
    }
    return text;
}

inline std::string PolysText(const GEOM* g)
{
    std::string text;
    for (std::int32_t i = 0; i < g->numPolys; ++i)
        text += PolyText(g, i) + '\n';
    return text;
}

/// Everything in the record that a file can carry.
inline std::string RecordText(const GEOM* g)
{
    if (!g)
        return "no record";
    std::string text;
    for (std::int32_t i = 0; i < g->numVerts; ++i)
        text += "v " + PointText(g->verts[i]) + (g->vertColors ? " " + PointText(g->vertColors[i]) : "") + '\n';
    for (std::int32_t i = 0; g->tex && i < g->tex->numVerts; ++i)
        text += "vt " + NumberText(g->tex->verts[i].u) + ' ' + NumberText(g->tex->verts[i].v) + '\n';
    for (std::int32_t i = 0; i < g->numNormals; ++i)
        text += "vn " + PointText(g->normals[i]) + '\n';
    text += PolysText(g) + "groups " + std::to_string(g->numGroups);
    for (const BString& name : g->groupNames)
        text += " [" + name.Std() + ']';
    for (const GEOM_Material& material : g->materials)
        text += "\nmaterial [" + material.name.Std() + ']';
    for (const BString& file : g->materialFiles)
        text += "\nfile [" + file.Std() + ']';
    for (const GEOM_ObjectName& object : g->objectNames)
        text += "\nobject " + std::to_string(object.firstPoly) + " [" + object.name.Std() + ']';
    return text + '\n';
}

inline GeomPtr ReadObj(std::string_view text, GEOM_ReadReport* report = nullptr)
{
    return GeomPtr(GEOM_ReadObjText(text.data(), text.size(), nullptr, report));
}
