// VelmarBase: mesh processing.
#pragma once

#include "VelmarExport.h"
#include "mesh/VXSortedData.h"

class VXGeom;

/// Walks the sorted runs of a geometry's quads, triangles and larger polygons so that all runs of one material and
/// transparency follow each other, opaque ones first: what draws in this order binds each material once. Reads the
/// geometry's sorted data, which must not change meanwhile.
class VELMAR_EXPORT VXSetIterator
{
public:
    explicit VXSetIterator(const VXGeom* geom);

    const VXSortedSet* Next(); ///< null at the end, and at once without a geometry

    // --- Of the run that Next answered last
    VXElementKind Kind() const { return VXElementKind(mType); }
    std::int32_t First() const { return mFirst[mType]; } ///< its first element among those of its kind

private:
    static constexpr int kNumTypes = 3;

    const VXSortedSet* Take(int type, std::int32_t position);
    const VXSortedSet* Head(int type) const;
    std::int32_t FindAhead(int type, std::uint64_t key) const;

    const VXSortedBucket* mBuckets[kNumTypes] = {};
    std::int32_t mPosition[kNumTypes] = {-1, -1, -1}; ///< of the run answered last, kind by kind
    std::int32_t mFirst[kNumTypes] = {};
    int mType = 0;
    const VXSortedSet* mCurrent = nullptr;
};
