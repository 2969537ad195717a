#include "base/GEOM.h"

#include "base/MEM.h"

#include <algorithm>
#include <cmath>

// Almost every record that is checked is sound, so each array is first read with a loop that only collects whether
// anything is wrong (which the compiler vectorises), and gone through again with care when something is.

static bool ReachesCount(const void* handle, std::int64_t count)
{
    return count >= 0 && std::int64_t(MEM_Count(handle)) >= count;
}

static bool ArraysReachCounts(const GEOM* g)
{
    if (g->numGroups < 0 || !ReachesCount(g->verts, g->numVerts) || g->numPolys < 0 ||
        !ReachesCount(g->polys, g->numPolys * g->PolyStride()) || !ReachesCount(g->normals, g->numNormals))
        return false;
    if (g->vertColors && !ReachesCount(g->vertColors, g->numVerts))
        return false;
    if (g->normalSets && !ReachesCount(g->normalSets, g->NumCorners()))
        return false;
    const GEOM_Texture* const tex = g->tex;
    return !tex || (ReachesCount(tex->verts, tex->numVerts) && ReachesCount(tex->sets, tex->numCorners) &&
                    ReachesCount(tex->polys, tex->numPolys));
}

// Indices outside 0 .. limit-1 become 0.
static std::int64_t FixIndices(std::int32_t* indices, std::int64_t count, std::int32_t limit)
{
    std::uint32_t wrong = 0;
    for (std::int64_t i = 0; i < count; ++i)
        wrong |= std::uint32_t(std::uint32_t(indices[i]) >= std::uint32_t(limit));
    if (!wrong)
        return 0;
    std::int64_t fixed = 0;
    for (std::int64_t i = 0; i < count; ++i)
        if (indices[i] != 0 && std::uint32_t(indices[i]) >= std::uint32_t(limit))
        {
            indices[i] = 0;
            ++fixed;
        }
    return fixed;
}

static std::int64_t FixPositions(VERTEX* verts, std::int64_t count)
{
    std::uint32_t wrong = 0;
    for (std::int64_t i = 0; i < count; ++i)
        wrong |= std::uint32_t(verts[i].x != verts[i].x) | std::uint32_t(verts[i].y != verts[i].y) |
                 std::uint32_t(verts[i].z != verts[i].z);
    if (!wrong)
        return 0;
    std::int64_t fixed = 0;
    for (std::int64_t i = 0; i < count; ++i)
        for (float* const component : {&verts[i].x, &verts[i].y, &verts[i].z})
            if (std::isnan(*component))
            {
                *component = 0;
                ++fixed;
            }
    return fixed;
}

static bool RunIsSound(std::int32_t start, std::int32_t length, std::int64_t corners)
{
    return start >= 0 && length >= 0 && std::int64_t(start) + length <= corners;
}

static std::int64_t FixPolys(GEOM* g)
{
    const std::int64_t corners = g->NumCorners();
    const std::int64_t materials = g->materials.Count();
    std::int64_t fixed = 0;
    for (std::int64_t i = 0; i < g->numPolys; ++i)
    {
        ELEMENT* const poly = g->Poly(i);
        const bool noVertex = g->numVerts == 0 && poly->length != 0;
        if (noVertex || !RunIsSound(poly->start, poly->length, corners))
        {
            poly->start = poly->length = 0;
            ++fixed;
        }
        if (poly->material >= materials && materials > 0)
        {
            poly->material = 0;
            ++fixed;
        }
    }
    return fixed;
}

static std::int64_t FixTexture(const GEOM* g, GEOM_Texture* tex)
{
    std::int64_t fixed = 0;
    for (std::int64_t i = 0; i < tex->numPolys; ++i)
    {
        GEOM_TexPoly& run = tex->polys[i];
        const bool noVertex = tex->numVerts == 0 && run.length != 0;
        // A run that is shorter than its polygon would be read past its end.
        const bool tooShort = i < g->numPolys && run.length != 0 && run.length < g->Poly(i)->length;
        if (noVertex || tooShort || !RunIsSound(run.start, run.length, tex->numCorners))
        {
            run = {0, 0};
            ++fixed;
        }
    }
    return fixed + FixIndices(tex->sets, tex->numCorners, tex->numVerts);
}

int GEOM_VerifyAndFix(GEOM* g, int* repairs)
{
    if (repairs)
        *repairs = 0;
    if (!g || !ArraysReachCounts(g))
        return -1;
    std::int64_t fixed = FixPolys(g);
    fixed += FixIndices(g->sets, g->NumCorners(), g->numVerts);
    fixed += FixPositions(g->verts, g->numVerts);
    if (g->tex)
        fixed += FixTexture(g, g->tex);
    if (g->normalSets && g->numNormals == 0)
    {
        MEM_Release(g->normalSets);
        ++fixed;
    }
    else if (g->normalSets)
        fixed += FixIndices(g->normalSets, g->NumCorners(), g->numNormals);
    if (repairs)
        *repairs = int(std::min<std::int64_t>(fixed, INT32_MAX));
    return 0;
}
