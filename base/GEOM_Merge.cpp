#include "base/GEOM.h"

#include "base/MEM.h"

#include <algorithm>
#include <limits>
#include <new>
#include <vector>

namespace
{
/// What all parts have together. 64 bits, so that sums of 32-bit counts cannot wrap.
struct Totals
{
    std::int64_t polys = 0, verts = 0, corners = 0, texCorners = 0, texVerts = 0, normals = 0;
    bool hasNormals = false, hasColors = false;

    bool Fit() const
    {
        return std::max({polys, verts, corners, texCorners, texVerts, normals}) <=
               std::numeric_limits<std::int32_t>::max();
    }
};

/// Builds one record from parts, each of which is copied behind the ones before it.
class Merger
{
public:
    Merger(const GEOM* const* geoms, int count)
    {
        for (int i = 0; i < count; ++i)
            if (geoms[i])
                mParts.push_back(geoms[i]);
    }

    /// False when memory ran out or a count has no room in 32 bits.
    bool Merge(GEOM* to);

private:
    void Count();
    bool CollectNames(GEOM* to);
    bool Size(GEOM* to) const;
    void CopyShape(const GEOM* from, GEOM* to);
    void CopyNormals(const GEOM* from, GEOM* to);
    void CopyTexture(const GEOM* from, GEOM* to);
    void CopyPolys(const GEOM* from, GEOM* to, std::size_t part);

    std::vector<const GEOM*> mParts;
    std::vector<std::vector<std::int32_t>> mMaterialOf; ///< per part: new material of each old one
    std::vector<std::vector<std::int64_t>> mSlotOf;     ///< per part: new group slot of each named group
    Totals mTotals;
    Totals mDone; ///< what has been copied so far: where the next part begins
};
} // namespace

static bool HasNormals(const GEOM* g) { return g->normalSets && g->numNormals > 0; }

void Merger::Count()
{
    Totals& all = mTotals;
    for (const GEOM* g : mParts)
    {
        all.polys += g->numPolys;
        all.verts += g->numVerts;
        all.corners += g->NumCorners();
        all.hasNormals = all.hasNormals || HasNormals(g);
        all.hasColors = all.hasColors || g->vertColors;
        if (!g->tex)
            continue;
        all.texCorners += g->tex->numCorners;
        all.texVerts += g->tex->numVerts;
    }
    // A part without corner normals gets one for each polygon, the flat one.
    for (const GEOM* g : mParts)
        if (all.hasNormals)
            all.normals += HasNormals(g) ? g->numNormals : g->numPolys;
}

bool Merger::CollectNames(GEOM* to)
{
    for (const GEOM* g : mParts)
    {
        std::vector<std::int32_t> materials;
        for (const GEOM_Material& material : g->materials)
        {
            const int slot = GEOM_AddMaterialName(to, material.name.CString());
            if (slot < 0)
                return false;
            if (!to->materials[slot].material)
                to->materials[slot].material = material.material;
            materials.push_back(slot);
        }
        mMaterialOf.push_back(std::move(materials));

        std::vector<std::int64_t> slots;
        for (const BString& name : g->groupNames)
        {
            std::int64_t at = to->groupNames.Find(name);
            if (at < 0 && !to->groupNames.Append(name))
                return false;
            at = at < 0 ? to->groupNames.Count() - 1 : at;
            slots.push_back(32 + at);
        }
        mSlotOf.push_back(std::move(slots));

        for (const BString& file : g->materialFiles)
            if (to->materialFiles.Find(file) < 0 && !to->materialFiles.Append(file))
                return false;
    }
    to->numGroups = to->groupNames.IsEmpty() ? 0 : std::int32_t(32 + to->groupNames.Count());
    return true;
}

bool Merger::Size(GEOM* to) const
{
    const Totals& all = mTotals;
    if (all.hasColors && !(to->vertColors = MEM_AllocArray<VERTEX>(std::size_t(all.verts))))
        return false;
    if (all.hasNormals)
    {
        to->normals = MEM_AllocArray<VERTEX>(std::size_t(all.normals));
        to->normalSets = MEM_CallocArray<std::int32_t>(std::size_t(all.corners));
        if (!to->normals || !to->normalSets)
            return false;
        to->numNormals = std::int32_t(all.normals);
    }
    if (to->SetSize(int(all.polys), int(all.verts), int(all.corners), 0, int(all.texCorners), int(all.texVerts)) != 0)
        return false;
    return true;
}

void Merger::CopyShape(const GEOM* from, GEOM* to)
{
    std::copy_n(from->verts, from->numVerts, to->verts + mDone.verts);
    if (to->vertColors && from->vertColors)
        std::copy_n(from->vertColors, from->numVerts, to->vertColors + mDone.verts);
    else if (to->vertColors)
        std::fill_n(to->vertColors + mDone.verts, from->numVerts, VERTEX{1, 1, 1}); // white leaves the material's look
    for (std::int64_t i = 0; i < from->NumCorners(); ++i)
        to->sets[mDone.corners + i] = from->sets[i] + std::int32_t(mDone.verts);
}

void Merger::CopyNormals(const GEOM* from, GEOM* to)
{
    if (!mTotals.hasNormals)
        return;
    const auto base = std::int32_t(mDone.normals);
    if (HasNormals(from))
    {
        std::copy_n(from->normals, from->numNormals, to->normals + base);
        for (std::int64_t i = 0; i < from->NumCorners(); ++i)
            to->normalSets[mDone.corners + i] = from->normalSets[i] + base;
        mDone.normals += from->numNormals;
        return;
    }
    GEOM_CalcPolyNormals(from, to->normals + base);
    for (std::int32_t i = 0; i < from->numPolys; ++i)
        std::fill_n(to->normalSets + mDone.corners + from->Poly(i)->start, from->Poly(i)->length, base + i);
    mDone.normals += from->numPolys;
}

void Merger::CopyTexture(const GEOM* from, GEOM* to)
{
    const GEOM_Texture* const tex = from->tex;
    if (!tex || !to->tex)
        return;
    std::copy_n(tex->verts, tex->numVerts, to->tex->verts + mDone.texVerts);
    for (std::int32_t i = 0; i < tex->numCorners; ++i)
        to->tex->sets[mDone.texCorners + i] = tex->sets[i] + std::int32_t(mDone.texVerts);
    // Runs beyond the polygons belong to nothing. The table is zeroed, so polygons without a run have an empty one.
    for (std::int32_t i = 0; to->tex->polys && i < std::min(tex->numPolys, from->numPolys); ++i)
        to->tex->polys[mDone.polys + i] = {tex->polys[i].start + std::int32_t(mDone.texCorners), tex->polys[i].length};
    mDone.texCorners += tex->numCorners;
    mDone.texVerts += tex->numVerts;
}

void Merger::CopyPolys(const GEOM* from, GEOM* to, std::size_t part)
{
    const std::vector<std::int32_t>& materials = mMaterialOf[part];
    const std::vector<std::int64_t>& slots = mSlotOf[part];
    for (std::int32_t i = 0; i < from->numPolys; ++i)
    {
        const ELEMENT* const old = from->Poly(i);
        ELEMENT* const poly = to->Poly(mDone.polys + i);
        std::memcpy(static_cast<void*>(poly), old, sizeof(ELEMENT)); // with word 0, the smoothing groups
        poly->start += std::int32_t(mDone.corners);
        poly->material = old->material < materials.size() ? std::uint16_t(materials[old->material]) : std::uint16_t(0);
        for (std::size_t k = 0; k < slots.size(); ++k)
        {
            const auto oldSlot = std::int64_t(32 + k);
            if (oldSlot < from->numGroups && (old->GroupWord(oldSlot / 32) >> (oldSlot % 32) & 1))
                poly->SetGroupWord(slots[k] / 32, poly->GroupWord(slots[k] / 32) | 1u << (slots[k] % 32));
        }
    }
}

bool Merger::Merge(GEOM* to)
{
    Count();
    if (!mTotals.Fit() || !CollectNames(to) || !Size(to))
        return false;
    for (std::size_t part = 0; part < mParts.size(); ++part)
    {
        const GEOM* const from = mParts[part];
        CopyShape(from, to);
        CopyNormals(from, to);
        CopyTexture(from, to);
        CopyPolys(from, to, part);
        for (const GEOM_ObjectName& object : from->objectNames)
            if (!to->objectNames.Append({object.firstPoly + std::int32_t(mDone.polys), object.name}))
                return false;
        mDone.polys += from->numPolys;
        mDone.verts += from->numVerts;
        mDone.corners += from->NumCorners();
    }
    return true;
}

GEOM* GEOM_CreateUniMesh(const GEOM* const* geoms, int count)
{
    GEOM* merged = geoms && count >= 0 ? GEOM_Alloc() : nullptr;
    if (!merged)
        return nullptr;
    try
    {
        if (Merger(geoms, count).Merge(merged))
            return merged;
    }
    catch (const std::bad_alloc&)
    {
    }
    GEOM_Free(merged);
    return nullptr;
}
