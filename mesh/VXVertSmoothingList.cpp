#include "mesh/VXVertSmoothingList.h"

// Lists up to this length are searched node by node: nearly all vertices have fewer polygons, and a short chain is
// faster than a hash. The polygons of longer ones are looked up in a map, so that a vertex in 100,000 polygons does not
// take 100,000 times as long.
static constexpr std::int32_t kSearchedLength = 24;

static std::int64_t MapKey(std::int64_t vert, std::int32_t poly)
{
    return std::int64_t(std::uint64_t(vert) << 32 | std::uint32_t(poly));
}

VXVertSmoothingList& VXVertSmoothingList::operator=(const VXVertSmoothingList& other)
{
    if (this == &other || !SetSize(other.Count()))
        return *this;
    for (std::int64_t vert = 0; vert < other.Count(); ++vert)
        for (const Node* node = other.First(vert); node; node = node->next)
            if (!Add(vert, node->poly))
                return *this;
    return *this;
}

void VXVertSmoothingList::Clear()
{
    mLists.Release();
    mNodes.FreeAll();
    mLongLists = BMapIntToInt();
}

bool VXVertSmoothingList::SetSize(std::int64_t count)
{
    Clear();
    return mLists.Reserve(count) && mLists.SetCount(count);
}

bool VXVertSmoothingList::Contains(const List& list, std::int64_t vert, std::int32_t poly) const
{
    if (list.length > kSearchedLength)
        return mLongLists.Contains(MapKey(vert, poly));
    for (const Node* node = list.head; node; node = node->next)
        if (node->poly == poly)
            return true;
    return false;
}

// Puts the newest polygon of a long list into the map, and with it all earlier ones when the list has just become long.
bool VXVertSmoothingList::Remember(const List& list, std::int64_t vert)
{
    for (const Node* node = list.length == kSearchedLength + 1 ? list.head : list.tail; node; node = node->next)
        if (!mLongLists.Set(MapKey(vert, node->poly), 0))
            return false;
    return true;
}

bool VXVertSmoothingList::Add(std::int64_t vert, std::int32_t poly)
{
    if (!InRange(vert))
        return true;
    List& list = mLists[vert];
    if (Contains(list, vert, poly))
        return true;
    Node* const node = mNodes.New();
    if (!node)
    {
        Clear();
        return false;
    }
    node->poly = poly;
    (list.tail ? list.tail->next : list.head) = node;
    list.tail = node;
    if (++list.length > kSearchedLength && !Remember(list, vert))
    {
        Clear(); // without the map, polygons could enter a list twice
        return false;
    }
    return true;
}

std::size_t VXVertSmoothingList::MemoryUsed() const
{
    return std::size_t(mLists.Capacity()) * sizeof(List) + mNodes.MemoryUsed() + mLongLists.MemoryUsed();
}
