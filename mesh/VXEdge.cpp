#include "mesh/VXEdge.h"

#include <new>
#include <utility>

VXCreaseVertexData::VXCreaseVertexData(const VXEdge* edge)
{
    if (!edge)
        return;
    p1v1 = edge->VertIndex1();
    p1v2 = edge->VertIndex2();
    if (!edge->IsOpenEdge())
    {
        p2v1 = edge->VertIndex1();
        p2v2 = edge->VertIndex2();
    }
}

void VXEdge::CopyPlain(const VXEdge& other)
{
    mPolyIndex1 = other.mPolyIndex1;
    mPolyIndex2 = other.mPolyIndex2;
    mVertIndex1 = other.mVertIndex1;
    mVertIndex2 = other.mVertIndex2;
    mRelP1V1 = other.mRelP1V1;
    mRelP1V2 = other.mRelP1V2;
    mRelP2V1 = other.mRelP2V1;
    mRelP2V2 = other.mRelP2V2;
    mFlags = other.mFlags;
    mEdgeIndex = other.mEdgeIndex;
}

VXEdge& VXEdge::operator=(const VXEdge& other)
{
    if (this == &other)
        return *this;
    delete mCreaseData;
    mCreaseData = other.mCreaseData ? new (std::nothrow) VXCreaseVertexData(*other.mCreaseData) : nullptr;
    CopyPlain(other);
    return *this;
}

VXEdge& VXEdge::operator=(VXEdge&& other) noexcept
{
    CopyPlain(other);
    std::swap(mCreaseData, other.mCreaseData);
    return *this;
}

VXCreaseVertexData* VXEdge::CreaseData()
{
    if (!mCreaseData)
        mCreaseData = new (std::nothrow) VXCreaseVertexData(this);
    return mCreaseData;
}

bool VXEdge::CreateCreaseData(std::int32_t p1v1, std::int32_t p1v2, std::int32_t p2v1, std::int32_t p2v2)
{
    VXCreaseVertexData* const data = CreaseData();
    if (!data)
        return false;
    data->p1v1 = p1v1;
    data->p1v2 = p1v2;
    data->p2v1 = p2v1;
    data->p2v2 = p2v2;
    return true;
}

bool VXEdge::SetCreaseDataP1V1(std::int32_t v)
{
    VXCreaseVertexData* const data = CreaseData();
    if (data)
        data->p1v1 = v;
    return data != nullptr;
}

bool VXEdge::SetCreaseDataP1V2(std::int32_t v)
{
    VXCreaseVertexData* const data = CreaseData();
    if (data)
        data->p1v2 = v;
    return data != nullptr;
}

bool VXEdge::SetCreaseDataP2V1(std::int32_t v)
{
    VXCreaseVertexData* const data = CreaseData();
    if (data)
        data->p2v1 = v;
    return data != nullptr;
}

bool VXEdge::SetCreaseDataP2V2(std::int32_t v)
{
    VXCreaseVertexData* const data = CreaseData();
    if (data)
        data->p2v2 = v;
    return data != nullptr;
}

void VXEdge::FreeCreaseData()
{
    delete mCreaseData;
    mCreaseData = nullptr;
}

std::int32_t VXEdge::CreaseVertexP1V1(bool useCrease) const
{
    return PlainWanted(useCrease) ? mVertIndex1 : mCreaseData->p1v1;
}

std::int32_t VXEdge::CreaseVertexP1V2(bool useCrease) const
{
    return PlainWanted(useCrease) ? mVertIndex2 : mCreaseData->p1v2;
}

std::int32_t VXEdge::CreaseVertexP2V1(bool useCrease) const
{
    return PlainWanted(useCrease) ? mVertIndex1 : mCreaseData->p2v1;
}

std::int32_t VXEdge::CreaseVertexP2V2(bool useCrease) const
{
    return PlainWanted(useCrease) ? mVertIndex2 : mCreaseData->p2v2;
}
