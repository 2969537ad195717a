#include "base/GEOM.h"

#include "base/MEM.h"

#include <algorithm>
#include <limits>
#include <new>
#include <string_view>

// Slots below this are smoothing groups, which have no names.
static constexpr std::int32_t kFirstNamedGroup = 32;

// Forgets the named groups from a slot on. Their bits in the last word that stays are cleared, or a group that gets the
// slot later would be born with members.
static void DropGroupsFrom(GEOM* g, std::int32_t slot)
{
    const std::int64_t named = std::max(slot - kFirstNamedGroup, 0);
    if (named < g->groupNames.Count())
        g->groupNames.SetCount(named);
    const std::int64_t word = slot / 32;
    if (word == 0)
        return;
    const std::uint32_t kept = (1u << (slot % 32)) - 1;
    for (std::int64_t i = 0; i < g->numPolys; ++i)
        g->Poly(i)->SetGroupWord(word, g->Poly(i)->GroupWord(word) & kept);
}

int GEOM_SetNumGroups(GEOM* g, int numGroups)
{
    if (!g || numGroups < 0)
        return -1;
    const std::int64_t oldStride = g->PolyStride();
    const std::int64_t newStride = 15 + 4 * (std::int64_t(numGroups) / 32 + 1);
    if (newStride != oldStride && g->polys)
    {
        const std::int64_t kept = std::min(oldStride, newStride);
        auto* const fresh = MEM_CallocArray<std::uint8_t>(std::size_t(g->numPolys * newStride));
        if (!fresh)
            return -1;
        for (std::int64_t i = 0; i < g->numPolys; ++i)
            std::memcpy(fresh + i * newStride, g->polys + i * oldStride, std::size_t(kept));
        MEM_Free(g->polys);
        g->polys = fresh;
    }
    const bool fewer = numGroups < g->numGroups;
    g->numGroups = numGroups;
    if (fewer)
        DropGroupsFrom(g, numGroups);
    return 0;
}

static std::int64_t FindGroup(const GEOM* g, std::string_view name)
{
    for (std::int64_t i = 0; i < g->groupNames.Count(); ++i)
        if (g->groupNames[i].Std() == name)
            return i;
    return -1;
}

bool GEOM_GetGroupBit(const GEOM* g, const char* name, std::int32_t* word, std::uint32_t* mask)
{
    const std::int64_t named = g && name ? FindGroup(g, name) : -1;
    if (named < 0)
        return false;
    const std::int64_t slot = kFirstNamedGroup + named;
    if (word)
        *word = std::int32_t(slot / 32);
    if (mask)
        *mask = 1u << (slot % 32);
    return true;
}

// The slot of a named group, created when it is new; -1 when memory ran out, with the groups as they were.
static std::int64_t GroupSlot(GEOM* g, const char* name)
{
    const std::int64_t found = FindGroup(g, name);
    if (found >= 0)
        return kFirstNamedGroup + found;
    const std::int64_t slot = kFirstNamedGroup + g->groupNames.Count();
    if (slot >= std::numeric_limits<std::int32_t>::max() || !g->groupNames.AppendOrKeep(BString(name)))
        return -1;
    if (GEOM_SetNumGroups(g, int(slot + 1)) == 0)
        return slot;
    g->groupNames.SetCount(g->groupNames.Count() - 1);
    return -1;
}

int GEOM_GroupAddElem(GEOM* g, const char* name, int poly)
{
    if (!g || !name || !*name || poly < -1 || poly >= g->numPolys)
        return -1;
    try
    {
        const std::int64_t slot = GroupSlot(g, name);
        if (slot < 0)
            return -1;
        if (poly >= 0)
        {
            ELEMENT* const element = g->Poly(poly);
            element->SetGroupWord(slot / 32, element->GroupWord(slot / 32) | 1u << (slot % 32));
        }
        return 0;
    }
    catch (const std::bad_alloc&)
    {
        return -1;
    }
}

int GEOM_AddMaterialName(GEOM* g, const char* name)
{
    if (!g || !name)
        return -1;
    for (std::int64_t i = 0; i < g->materials.Count(); ++i)
        if (g->materials[i].name == name)
            return int(i);
    // A polygon names its material with 16 bits.
    if (g->materials.Count() > std::numeric_limits<std::uint16_t>::max())
        return -1;
    try
    {
        return g->materials.Append({nullptr, BString(name)}) ? g->NumMaterials() - 1 : -1;
    }
    catch (const std::bad_alloc&)
    {
        return -1;
    }
}

int GEOM_MakeDefaultMaterial(GEOM* g)
{
    if (!g)
        return -1;
    g->materials.Empty();
    if (GEOM_AddMaterialName(g, "Default") < 0)
        return -1;
    for (std::int64_t i = 0; i < g->numPolys; ++i)
        g->Poly(i)->material = 0;
    return 0;
}

int GEOM_PurgeUnusedMaterials(GEOM* g)
{
    if (!g)
        return -1;
    const std::int64_t count = g->materials.Count();
    if (count == 0)
        return 0;
    BArray<std::int32_t> newIndex(count);
    if (!newIndex.SetCount(count))
        return -1;
    for (std::int64_t i = 0; i < g->numPolys; ++i)
        if (const std::uint16_t used = g->Poly(i)->material; used < count)
            newIndex[used] = 1;

    std::int64_t kept = 0;
    for (std::int64_t i = 0; i < count; ++i)
    {
        if (!newIndex[i])
            continue;
        newIndex[i] = std::int32_t(kept);
        if (kept != i)
            g->materials[kept] = std::move(g->materials[i]);
        ++kept;
    }
    if (kept == count)
        return 0;
    g->materials.SetCount(kept);
    for (std::int64_t i = 0; i < g->numPolys; ++i)
        if (ELEMENT* const poly = g->Poly(i); poly->material < count)
            poly->material = std::uint16_t(newIndex[poly->material]);
    return 0;
}
