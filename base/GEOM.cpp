#include "base/GEOM.h"

#include "base/MEM.h"

#include <array>
#include <cstdint>
#include <new>

GEOM::GEOM() : materials(4, 4), groupNames(4, 4), objectNames(4, 4), materialFiles(1, 2) {}

GEOM::~GEOM()
{
    MEM_Free(verts);
    MEM_Free(sets);
    MEM_Free(polys);
    MEM_Free(normalSets);
    MEM_Free(normals);
    MEM_Free(vertColors);
    GEOM_TexFree(this);
}

namespace
{
/// Several handles that change their count together: all of them, or none.
class Resizer
{
public:
    template <class T>
    void Add(T*& handle, std::int64_t count)
    {
        if (mFailed)
            return;
        const std::size_t oldCount = MEM_Count(handle);
        T* const old = handle;
        mFailed = !MEM_SizeArray(handle, std::size_t(count));
        if (!mFailed)
            mDone[mNumDone++] = {reinterpret_cast<void**>(&handle), oldCount, old == nullptr};
    }

    /// True when every handle has its count. Otherwise all have their old counts again: shrinking cannot fail.
    bool Finish()
    {
        if (!mFailed)
            return true;
        for (std::size_t i = 0; i < mNumDone; ++i)
        {
            Change& change = mDone[i];
            if (change.wasNull)
            {
                MEM_Free(*change.handle);
                *change.handle = nullptr;
            }
            else
                *change.handle = MEM_Resize(*change.handle, change.oldCount);
        }
        return false;
    }

private:
    struct Change
    {
        void** handle;
        std::size_t oldCount;
        bool wasNull;
    };
    std::array<Change, 8> mDone;
    std::size_t mNumDone = 0;
    bool mFailed = false;
};
} // namespace

int GEOM::SetSize(int newPolys, int newVerts, int newCorners, int, int texCorners, int texVerts)
{
    if (newPolys < 0 || newVerts < 0 || newCorners < 0 || texCorners < 0 || texVerts < 0)
        return -1;
    const bool newTex = !tex && (texCorners > 0 || texVerts > 0);
    if (newTex && !(tex = new (std::nothrow) GEOM_Texture))
        return -1;

    Resizer resizer;
    resizer.Add(verts, newVerts);
    resizer.Add(sets, newCorners);
    resizer.Add(polys, newPolys * PolyStride());
    if (normalSets)
        resizer.Add(normalSets, newCorners);
    if (vertColors)
        resizer.Add(vertColors, newVerts);
    if (texCorners > 0 || texVerts > 0)
    {
        resizer.Add(tex->verts, texVerts);
        resizer.Add(tex->sets, texCorners);
        if (texCorners > 0)
            resizer.Add(tex->polys, newPolys);
    }
    if (!resizer.Finish())
    {
        if (newTex)
            GEOM_TexFree(this);
        return -1;
    }

    numPolys = newPolys;
    numVerts = newVerts;
    if (texCorners > 0 || texVerts > 0)
    {
        tex->numVerts = texVerts;
        tex->numCorners = texCorners;
        if (texCorners > 0)
            tex->numPolys = newPolys;
    }
    return 0;
}

void GEOM::Empty()
{
    MEM_Release(verts);
    MEM_Release(sets);
    MEM_Release(polys);
    MEM_Release(normalSets);
    MEM_Release(normals);
    MEM_Release(vertColors);
    GEOM_TexFree(this);
    numVerts = numPolys = numGroups = numNormals = 0;
    materials.Release();
    groupNames.Release();
    objectNames.Release();
    materialFiles.Release();
}

void GEOM::SetMaterialPointer(int i, void* material)
{
    if (i >= 0 && i < NumMaterials())
        materials[i].material = material;
}

GEOM* GEOM_Alloc() { return new (std::nothrow) GEOM; }

void GEOM_Free(GEOM* g) { delete g; }

void GEOM_TexFree(GEOM* g)
{
    if (!g || !g->tex)
        return;
    MEM_Free(g->tex->verts);
    MEM_Free(g->tex->sets);
    MEM_Free(g->tex->polys);
    delete g->tex;
    g->tex = nullptr;
}

static std::size_t HandleBytes(const void* handle) { return MEM_Capacity(handle) * MEM_EntrySize(handle); }

std::size_t GEOM_MemoryUsed(const GEOM* g)
{
    if (!g)
        return 0;
    std::size_t bytes = sizeof(GEOM);
    for (const void* handle : {static_cast<const void*>(g->verts), static_cast<const void*>(g->sets),
                               static_cast<const void*>(g->polys), static_cast<const void*>(g->normalSets),
                               static_cast<const void*>(g->normals), static_cast<const void*>(g->vertColors)})
        bytes += HandleBytes(handle);
    if (g->tex)
        bytes +=
            sizeof(GEOM_Texture) + HandleBytes(g->tex->verts) + HandleBytes(g->tex->sets) + HandleBytes(g->tex->polys);
    bytes += std::size_t(g->materials.Capacity()) * sizeof(GEOM_Material) +
             std::size_t(g->groupNames.Capacity()) * sizeof(BString) +
             std::size_t(g->objectNames.Capacity()) * sizeof(GEOM_ObjectName) +
             std::size_t(g->materialFiles.Capacity()) * sizeof(BString);
    return bytes;
}
