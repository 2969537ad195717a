// VelmarBase: mesh processing.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"
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
    VXVertSmoothingList(const VXVertSmoothingList& other); ///< copies every list
    VXVertSmoothingList& operator=(const VXVertSmoothingList& other);

    void Clear();
    bool SetSize(std::int64_t count);               ///< `count` empty lists; false when memory ran out
    bool Add(std::int64_t vert, std::int32_t poly); ///< at the tail, unless it is there; false when memory ran out
    std::int64_t Count() const { return mHeads.Count(); }
    const Node* First(std::int64_t vert) const { return mHeads[vert]; } ///< null for an empty list

private:
    BArray<Node*> mHeads;
    BArray<Node*> mTails;
    BPlex<Node> mNodes;
};
