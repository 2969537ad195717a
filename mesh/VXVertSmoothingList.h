// VelmarBase: mesh processing.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"
#include "base/BMap.h"
#include "base/BPlex.h"

#include <cstdint>

/// For each vertex and crease vertex the polygons that smooth into it, each once, in order of addition.
class VELMAR_EXPORT VXVertSmoothingList
{
public:
    struct Node
    {
        std::int32_t poly = -1;
        Node* next = nullptr;
    };

    VXVertSmoothingList() = default;
    VXVertSmoothingList(const VXVertSmoothingList& other) { *this = other; } ///< copies every list
    VXVertSmoothingList& operator=(const VXVertSmoothingList& other);

    void Clear();                     ///< no lists; storage is given back
    bool SetSize(std::int64_t count); ///< `count` empty lists; false when memory ran out, and then there are none

    /// Adds the polygon at the tail, unless it is there. Expected constant time, however long the list is.
    /// @return false when memory ran out, and then there are no lists any more
    bool Add(std::int64_t vert, std::int32_t poly);

    std::int64_t Count() const { return mLists.Count(); }
    std::int64_t Length(std::int64_t vert) const { return InRange(vert) ? mLists.Data()[vert].length : 0; }
    const Node* First(std::int64_t vert) const { return InRange(vert) ? mLists.Data()[vert].head : nullptr; }
    std::size_t MemoryUsed() const; ///< bytes, capacities included

private:
    struct List
    {
        Node* head = nullptr;
        Node* tail = nullptr;
        std::int32_t length = 0;
    };
    bool InRange(std::int64_t vert) const { return vert >= 0 && vert < mLists.Count(); }
    bool Contains(const List& list, std::int64_t vert, std::int32_t poly) const;
    bool Remember(const List& list, std::int64_t vert);

    BArray<List> mLists;
    BPlex<Node> mNodes;
    BMapIntToInt mLongLists; ///< (vertex, polygon) of the lists that are too long to be searched
};
