#include "base/GEOM.h"

#include "base/MEM.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <iterator>

// Survivors lie in a hash grid. A cell is many tolerances wide, so that nearly every vertex has its possible partners
// in its own cell; only one that lies within the tolerance of a cell's side looks into the neighbour too. The table
// keeps no cells, only chains of survivors: one that got into a chain by a collision of the hash costs a distance and
// changes nothing. Wide cells would hold too much where survivors lie a tolerance or two apart; a count of the
// distances taken notices that, and the weld starts over with narrower cells. In the narrowest ones a chain is bounded,
// because survivors keep their distance from each other. The result does not depend on the width.

static std::atomic<float> sWeldTolerance{0.00001f};

float GEOM_WeldTolerance() { return sWeldTolerance; }

void GEOM_SetWeldTolerance(float tolerance) { sWeldTolerance = tolerance; }

namespace
{
constexpr std::int32_t kEnd = -1;
constexpr double kCellWidths[] = {64, 12, 2.5};  // in tolerances; above 2, or a vertex could be near two sides
constexpr std::int64_t kDistancesPerVertex = 24; // before narrower cells are tried
// Floats whose cell has a number from here on lie further apart than the tolerance: each is a cell of its own.
constexpr double kOneFloatCells = 16777216;
constexpr std::int32_t kAhead = 16; // a power of two

/// A survivor: its position, and the next one in its chain.
struct Node
{
    VERTEX p;
    std::int32_t next;
};

struct Axis
{
    std::int64_t cell = 0;
    std::int32_t neighbour = 0; ///< -1, 0 or 1: the cell beside this one that can hold partners too
};

/// Where a vertex lies in the grid.
struct Place
{
    VERTEX p;
    Axis x, y, z;
    std::size_t home = 0;
};

inline void Prefetch([[maybe_unused]] const void* at)
{
#if defined(__GNUC__)
    __builtin_prefetch(at);
#endif
}

class Welder
{
public:
    Welder(const VERTEX* verts, std::int32_t numVerts, float tolerance, std::int32_t* remap)
        : mVerts(verts), mNumVerts(numVerts), mRemap(remap)
    {
        // An infinite tolerance is read as one longer than the space of all floats.
        mTolerance = tolerance > 0 ? std::min(double(tolerance), 1e40) : 0.0;
        mOneFloatCells = mTolerance > 0 ? kOneFloatCells : 0;
    }
    ~Welder()
    {
        MEM_Free(mHeads);
        MEM_Free(mNodes);
    }
    Welder(const Welder&) = delete;
    Welder& operator=(const Welder&) = delete;

    /// Number of survivors, -1 when memory ran out.
    std::int32_t Weld()
    {
        mHashBits = int(std::bit_width(std::uint32_t(mNumVerts) | 255u));
        mHeads = MEM_AllocArray<std::int32_t>(std::size_t(1) << mHashBits);
        mNodes = MEM_AllocArray<Node>(std::size_t(mNumVerts));
        if (!mHeads || !mNodes)
            return -1;
        const std::int64_t budget = kDistancesPerVertex * mNumVerts + 4096;
        for (const double width : kCellWidths)
            if (Run(width, width == kCellWidths[std::size(kCellWidths) - 1] ? INT64_MAX : budget))
                break;
        return mNumNodes;
    }

private:
    Axis AxisOf(float x) const
    {
        const double at = x * mCellsPerUnit;
        if (!(std::fabs(at) < mOneFloatCells))
            return {std::bit_cast<std::int64_t>(at), 0};
        auto cell = std::int64_t(at);
        cell -= at < double(cell); // towards minus infinity
        const double inside = at - double(cell);
        return {cell, inside < mMargin ? -1 : inside > 1 - mMargin ? 1 : 0};
    }

    std::size_t Bucket(std::int64_t x, std::int64_t y, std::int64_t z) const
    {
        std::uint64_t hash = std::uint64_t(x) * 0x9E3779B97F4A7C15u + std::uint64_t(y) * 0xC2B2AE3D27D4EB4Fu +
                             std::uint64_t(z) * 0x165667B19E3779F9u;
        hash = (hash ^ (hash >> 32)) * 0xD6E8FEB86659FD93u;
        return std::size_t(hash >> (64 - mHashBits));
    }

    // The lowest survivor of a chain that is near enough, if it is lower than `best`.
    std::int32_t Nearer(std::size_t bucket, const VERTEX& p, std::int32_t best)
    {
        for (std::int32_t at = mHeads[bucket]; at != kEnd; at = mNodes[at].next)
        {
            const VERTEX& q = mNodes[at].p;
            const double x = double(p.x) - q.x, y = double(p.y) - q.y, z = double(p.z) - q.z;
            if (at < best && x * x + y * y + z * z <= mTolerance * mTolerance)
                best = at;
            ++mDistances;
        }
        return best;
    }

    std::int32_t Find(const Place& place)
    {
        std::int32_t best = Nearer(place.home, place.p, INT32_MAX);
        const Axis &x = place.x, &y = place.y, &z = place.z;
        const unsigned sides =
            (x.neighbour != 0 ? 1u : 0u) | (y.neighbour != 0 ? 2u : 0u) | (z.neighbour != 0 ? 4u : 0u);
        for (unsigned set = sides; set != 0; set = (set - 1) & sides) // every choice of sides but none
        {
            const std::size_t bucket =
                Bucket(x.cell + (set & 1 ? x.neighbour : 0), y.cell + (set & 2 ? y.neighbour : 0),
                       z.cell + (set & 4 ? z.neighbour : 0));
            best = Nearer(bucket, place.p, best);
        }
        return best;
    }

    void Locate(std::int32_t i, Place& place) const
    {
        place.p = mVerts[i] + VERTEX{}; // adding zero turns -0 into 0, which is the same position
        place.x = AxisOf(place.p.x);
        place.y = AxisOf(place.p.y);
        place.z = AxisOf(place.p.z);
        place.home = Bucket(place.x.cell, place.y.cell, place.z.cell);
        Prefetch(mHeads + place.home);
    }

    void Join(std::int32_t i, const Place& place)
    {
        const bool finite = IsFinite(place.p);
        const std::int32_t partner = finite ? Find(place) : INT32_MAX;
        if (partner != INT32_MAX)
        {
            mRemap[i] = partner;
            return;
        }
        if (finite) [[likely]]
        {
            mNodes[mNumNodes] = {place.p, mHeads[place.home]};
            mHeads[place.home] = mNumNodes;
        }
        mRemap[i] = mNumNodes++;
    }

    // False when the distances went over the budget. Table entries are asked for kAhead vertices early and the nodes
    // half as early: on large meshes waiting for memory is nearly all there is to do.
    bool Run(double cellWidth, std::int64_t budget)
    {
        std::fill_n(mHeads, std::size_t(1) << mHashBits, kEnd);
        mNumNodes = 0;
        mDistances = 0;
        mCellsPerUnit = mTolerance > 0 ? 1 / (mTolerance * cellWidth) : 1;
        mMargin = 1 / cellWidth + 1e-6; // the rest covers rounding of cell numbers
        Place ahead[kAhead];
        for (std::int32_t i = 0; i < std::min(kAhead, mNumVerts); ++i)
            Locate(i, ahead[i]);
        for (std::int32_t i = 0; i < mNumVerts; ++i)
        {
            if (const std::int32_t head = mHeads[ahead[(i + kAhead / 2) % kAhead].home]; head != kEnd)
                Prefetch(mNodes + head);
            Join(i, ahead[i % kAhead]);
            if (mDistances > budget)
                return false;
            if (i + kAhead < mNumVerts)
                Locate(i + kAhead, ahead[i % kAhead]);
        }
        return true;
    }

    const VERTEX* mVerts;
    std::int32_t mNumVerts;
    double mTolerance;
    double mOneFloatCells, mCellsPerUnit = 1, mMargin = 0;
    int mHashBits = 8;
    std::int32_t* mHeads = nullptr; ///< newest survivor of each chain
    Node* mNodes = nullptr;         ///< one for each survivor, in order: its number is its index in the welded record
    std::int32_t mNumNodes = 0;
    std::int64_t mDistances = 0;
    std::int32_t* mRemap;
};
} // namespace

// Moves the survivors together; each is the first vertex that has its number.
template <class T>
static void Compact(T* entries, const std::int32_t* remap, std::int32_t count)
{
    std::int32_t next = 0;
    for (std::int32_t i = 0; i < count; ++i)
        if (remap[i] == next)
            entries[next++] = entries[i];
}

int GEOM_Weld(GEOM* g, std::int32_t* remap)
{
    if (!g)
        return -1;
    std::int32_t* const own = remap ? nullptr : MEM_AllocArray<std::int32_t>(std::size_t(g->numVerts));
    std::int32_t* const table = remap ? remap : own;
    const std::int32_t numVerts = g->numVerts;
    const std::int32_t survivors =
        table ? Welder(g->verts, numVerts, GEOM_WeldTolerance(), table).Weld() : std::int32_t(-1);
    if (survivors >= 0 && survivors < numVerts)
    {
        Compact(g->verts, table, numVerts);
        g->verts = static_cast<VERTEX*>(MEM_Resize(g->verts, std::size_t(survivors)));
        if (g->vertColors)
        {
            Compact(g->vertColors, table, numVerts);
            g->vertColors = static_cast<VERTEX*>(MEM_Resize(g->vertColors, std::size_t(survivors)));
        }
        g->numVerts = survivors;
        for (std::int64_t i = 0; i < g->NumCorners(); ++i)
            g->sets[i] = table[g->sets[i]];
    }
    MEM_Free(own);
    return survivors >= 0 ? 0 : -1;
}
