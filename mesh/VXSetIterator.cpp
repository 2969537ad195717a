#include "mesh/VXSetIterator.h"

#include "mesh/VXGeom.h"

static_assert(int(VXElementKind::Quads) == 0 && int(VXElementKind::Polygons) == 2, "kinds index the buckets");

VXSetIterator::VXSetIterator(const VXGeom* geom)
{
    if (!geom)
        return;
    for (int type = 0; type < kNumTypes; ++type)
        mBuckets[type] = &geom->Sorted(VXElementKind(type));
}

const VXSortedSet* VXSetIterator::Take(int type, std::int32_t position)
{
    const VXSortedSet* const runs = mBuckets[type]->runs;
    for (std::int32_t i = mPosition[type]; i < position; ++i)
        if (i >= 0)
            mFirst[type] += runs[i].count;
    mPosition[type] = position;
    mType = type;
    return mCurrent = runs + position;
}

const VXSortedSet* VXSetIterator::Head(int type) const
{
    const std::int32_t next = mPosition[type] + 1;
    return next < mBuckets[type]->numRuns ? mBuckets[type]->runs + next : nullptr;
}

// Opaque before transparent, and within that by descending material: the order in which the runs are sorted.
static bool ComesFirst(const VXSortedSet& a, const VXSortedSet& b)
{
    if (a.TransparencyKey() != b.TransparencyKey())
        return a.TransparencyKey() < b.TransparencyKey();
    return a.MaterialKey() > b.MaterialKey();
}

// Position of the run with this key among those that the kind has left, -1 for none. Runs are sorted, so the search
// ends where the key would have stood.
std::int32_t VXSetIterator::FindAhead(int type, std::uint64_t key) const
{
    const VXSortedSet wanted{0, key};
    for (std::int32_t i = mPosition[type] + 1; i < mBuckets[type]->numRuns; ++i)
    {
        const VXSortedSet& run = mBuckets[type]->runs[i];
        if (run.key == key)
            return i;
        if (ComesFirst(wanted, run))
            break;
    }
    return -1;
}

const VXSortedSet* VXSetIterator::Next()
{
    if (!mBuckets[0])
        return nullptr;
    if (mCurrent)
    {
        // The next kind may continue with what has just been bound.
        const int type = (mType + 1) % kNumTypes;
        const std::int32_t found = FindAhead(type, mCurrent->key);
        if (found >= 0)
            return Take(type, found);
    }
    int best = -1;
    for (int type = 0; type < kNumTypes; ++type)
        if (Head(type) && (best < 0 || !ComesFirst(*Head(best), *Head(type)))) // on a tie the later kind
            best = type;
    return best < 0 ? nullptr : Take(best, mPosition[best] + 1);
}
