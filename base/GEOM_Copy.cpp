#include "base/GEOM.h"

#include "base/MEM.h"

#include <new>

// The first `count` entries, null staying null. Read through the pointer alone: while a temporary vertex array is
// installed the source need not be a memory handle.
template <class T>
static bool CopyEntries(const T* from, std::int64_t count, T*& to)
{
    if (!from)
        return true;
    T* const copy = MEM_AllocArray<T>(std::size_t(count));
    if (!copy)
        return false;
    if (count > 0)
        std::memcpy(copy, from, std::size_t(count) * sizeof(T));
    to = copy;
    return true;
}

static bool CopyTexture(const GEOM_Texture* from, GEOM* to)
{
    if (!from)
        return true;
    GEOM_Texture* const tex = new (std::nothrow) GEOM_Texture;
    to->tex = tex;
    if (!tex || !CopyEntries(from->verts, from->numVerts, tex->verts) ||
        !CopyEntries(from->sets, from->numCorners, tex->sets) || !CopyEntries(from->polys, from->numPolys, tex->polys))
        return false;
    tex->numVerts = from->numVerts;
    tex->numCorners = from->numCorners;
    tex->numPolys = from->numPolys;
    return true;
}

template <class T>
static bool CopyList(const BArray<T>& from, BArray<T>& to)
{
    to = from;
    return to.Count() == from.Count();
}

// The polygon records without named groups and materials. Smoothing is shape, so its word stays.
static bool CopyPlainPolys(const GEOM* from, GEOM* to)
{
    if (!from->polys)
        return true;
    to->polys = MEM_AllocArray<std::uint8_t>(std::size_t(from->numPolys * to->PolyStride()));
    if (!to->polys)
        return false;
    for (std::int64_t i = 0; i < from->numPolys; ++i)
    {
        std::memcpy(static_cast<void*>(to->Poly(i)), from->Poly(i), sizeof(ELEMENT));
        to->Poly(i)->material = 0;
    }
    return true;
}

static bool CopyPolysAndNames(const GEOM* from, GEOM* to)
{
    to->numGroups = from->numGroups;
    return CopyEntries(from->polys, from->numPolys * from->PolyStride(), to->polys) &&
           CopyList(from->materials, to->materials) && CopyList(from->groupNames, to->groupNames) &&
           CopyList(from->objectNames, to->objectNames) && CopyList(from->materialFiles, to->materialFiles);
}

// Fills an empty record. What was copied before a failure is left for the caller to drop.
static bool CopyInto(const GEOM* from, GEOM* to, int mode)
{
    const bool polys = mode == 1 ? CopyPlainPolys(from, to) : CopyPolysAndNames(from, to);
    if (!polys || !CopyEntries(from->verts, from->numVerts, to->verts) ||
        !CopyEntries(from->sets, from->NumCorners(), to->sets) ||
        !CopyEntries(from->vertColors, from->numVerts, to->vertColors) ||
        !CopyEntries(from->normalSets, std::int64_t(MEM_Count(from->normalSets)), to->normalSets) ||
        !CopyEntries(from->normals, from->numNormals, to->normals) || !CopyTexture(from->tex, to))
        return false;
    to->numVerts = from->numVerts;
    to->numPolys = from->numPolys;
    to->numNormals = from->numNormals;
    return true;
}

static bool CopyIntoOrEmpty(const GEOM* from, GEOM* to, int mode)
{
    try
    {
        if (CopyInto(from, to, mode))
            return true;
    }
    catch (const std::bad_alloc&) // a name
    {
    }
    to->Empty();
    return false;
}

GEOM* GEOM_Copy(const GEOM* g, int mode)
{
    GEOM* const copy = g ? GEOM_Alloc() : nullptr;
    if (copy && !CopyIntoOrEmpty(g, copy, mode))
    {
        GEOM_Free(copy);
        return nullptr;
    }
    return copy;
}

int GEOM_Clone(const GEOM* from, GEOM* to)
{
    if (!from || !to)
        return -1;
    if (from == to)
        return 0;
    to->Empty();
    return CopyIntoOrEmpty(from, to, 2) ? 0 : -1;
}
