#include "mesh/VXGeom.h"

#include "mesh/kernel/Corners.h"
#include "mesh/kernel/NearestPoint.h"

#include <algorithm>
#include <bit>
#include <new>
#include <utility>

// --- Taking over groups

namespace
{
constexpr std::int64_t kFirstNamedGroup = 32; // slots below are smoothing groups, which are not taken over

// Puts polygons of one record into the groups that polygons of another are in, by name. Groups that are new here are
// made in the order in which a first member is met, as adding polygon by polygon would; but all at once and with each
// name looked up once, since every new word of group bits rewrites all polygon records.
class GroupTransfer
{
public:
    GroupTransfer(const GEOM& from, GEOM& to) : mFrom(from), mTo(to) {}

    /// @param sourceOf the source polygon of each polygon  @return false, with nothing changed, when memory ran out
    bool Run(std::span<const std::int32_t> sourceOf)
    {
        if (!mSlots.SetCount(mFrom.groupNames.Count()) || !MakeGroups(sourceOf))
            return false;
        for (std::size_t p = 0; p < sourceOf.size(); ++p)
            VisitGroups(sourceOf[p],
                        [this, poly = mTo.Poly(std::int64_t(p))](std::int64_t group)
                        {
                            const std::int64_t slot = mSlots[group];
                            poly->SetGroupWord(slot / 32, poly->GroupWord(slot / 32) | 1u << (slot % 32));
                        });
        return true;
    }

private:
    // Calls visit(index of the name) for each named group of a source polygon, in order of slots.
    template <class Visit>
    void VisitGroups(std::int32_t poly, Visit&& visit) const
    {
        const ELEMENT& element = *mFrom.Poly(poly);
        for (std::int64_t w = 1; w < mFrom.GroupWords(); ++w)
            for (std::uint32_t bits = element.GroupWord(w); bits != 0; bits &= bits - 1)
            {
                const std::int64_t group = 32 * w + std::countr_zero(bits) - kFirstNamedGroup;
                if (group < mFrom.groupNames.Count() && mFrom.groupNames[group].Length() > 0)
                    visit(group);
            }
    }

    bool MakeGroups(std::span<const std::int32_t> sourceOf)
    {
        BMap<BString, std::int64_t> slotOf;
        BArray<BString> names = mTo.groupNames;
        if (names.Count() != mTo.groupNames.Count())
            return false;
        for (std::int64_t i = 0; i < names.Count(); ++i)
            if (!slotOf.Contains(names[i]) && !slotOf.Set(names[i], kFirstNamedGroup + i)) // the first of a name counts
                return false;
        bool done = true;
        for (const std::int32_t poly : sourceOf)
            VisitGroups(poly,
                        [&](std::int64_t group)
                        {
                            std::int64_t& slot = mSlots[group];
                            if (slot != 0 || !done)
                                return;
                            const BString& name = mFrom.groupNames[group];
                            slot = slotOf.Get(name, kFirstNamedGroup + names.Count());
                            if (slot == kFirstNamedGroup + names.Count())
                                done = names.Append(name) && slotOf.Set(name, slot);
                        });
        if (!done || names.Count() == mTo.groupNames.Count())
            return done;
        if (GEOM_SetNumGroups(&mTo, int(kFirstNamedGroup + names.Count())) != 0)
            return false;
        mTo.groupNames = std::move(names);
        return true;
    }

    const GEOM& mFrom;
    GEOM& mTo;
    BArray<std::int64_t> mSlots; // in the target, of each named group of the source; 0 while it has no member
};

// For each polygon the source polygon with the nearest centre.
bool NearestPolys(std::span<const VERTEX> centers, std::span<const VERTEX> sources, std::int32_t* nearest)
{
    constexpr float kTooFar = 1e8f; // squared; from there on it is polygon 0
    vx::NearestPoint search;
    if (!search.Build(sources))
        return false;
    std::int32_t found = -1;
    for (std::size_t p = 0; p < centers.size(); ++p)
    {
        // Many polygons in one place, and sources all equally far from it, would each time look at all of them.
        if (p == 0 || !(centers[p] == centers[p - 1]))
            found = search.Find(centers[p], kTooFar);
        nearest[p] = std::max(found, 0);
    }
    return true;
}
} // namespace

int VXGeom::CopyGroupsAndMaterials(const VXGeom* source)
{
    if (!source || !source->mGeom || !mGeom || source->NumPolys() != NumPolys())
        return -1;
    if (source->mGeom == mGeom)
        return 0;
    GEOM& from = *source->mGeom;
    try
    {
        BArray<GEOM_Material> table;
        BArray<BString> files = from.materialFiles;
        BArray<std::int32_t> sourceOf;
        if (!table.Assign(from.Materials(), from.NumMaterials()) || files.Count() != from.materialFiles.Count() ||
            !sourceOf.SetCountForWriting(NumPolys()))
            return -1;
        for (std::int32_t p = 0; p < NumPolys(); ++p)
            sourceOf[p] = p;
        if (!GroupTransfer(from, *mGeom).Run({sourceOf.Data(), std::size_t(NumPolys())}))
            return -1;
        mGeom->materials = std::move(table);
        mGeom->materialFiles = std::move(files);
    }
    catch (const std::bad_alloc&) // names
    {
        return -1;
    }
    for (std::int32_t p = 0; p < NumPolys(); ++p)
        mGeom->Poly(p)->material = from.Poly(p)->material;
    FollowPolyRecords();
    SetDataSorted(false); // what is drawn together follows the materials
    return 0;
}

int VXGeom::CreateGroupsByProximity(const VXGeom* source)
{
    if (!source || !source->mGeom || !mGeom)
        return -1;
    const std::size_t numPolys = std::size_t(NumPolys()), numSources = std::size_t(source->NumPolys());
    ClearPolyCenters();
    if (numPolys == 0 || numSources == 0)
        return 0;
    // The source stays as it is: its centres lie in an array of our own.
    BArray<VERTEX> sourceCenters;
    BArray<std::int32_t> sourceOf;
    ComputePolyCenters();
    bool done = mPolyCenters && sourceCenters.SetCountForWriting(std::int64_t(numSources)) &&
                sourceOf.SetCountForWriting(std::int64_t(numPolys));
    if (done)
    {
        source->ComputePolyCentroids(sourceCenters.Data(), nullptr);
        done = NearestPolys({mPolyCenters, numPolys}, {sourceCenters.Data(), numSources}, sourceOf.Data());
    }
    ClearPolyCenters();
    try
    {
        done = done && GroupTransfer(*source->mGeom, *mGeom).Run({sourceOf.Data(), numPolys});
    }
    catch (const std::bad_alloc&) // names
    {
        done = false;
    }
    FollowPolyRecords();
    return done ? 0 : -1;
}

// A new group can widen the polygon records; the cursor stays where it is.
void VXGeom::FollowPolyRecords()
{
    if (mCurPoly)
        mCurPoly = mGeom->Poly(mCurPolyIndex);
}

// --- Grouping polygons

namespace
{
enum : unsigned
{
    kSmoothingDiffers = 1,
    kNormalsDiffer = 2,
    kAngleReached = 4,
    kUVsDiffer = 8,
};

// Entry of a table, or zeros without one.
template <class T>
T EntryOf(const T* table, std::int32_t count, std::int32_t index)
{
    return table && index >= 0 && index < count ? table[index] : T{};
}
} // namespace

// The tests that make creases, for two corners at each of an edge's ends.
unsigned VXGeom::GroupingDifferences(const PolyLineVert& a, const PolyLineVert& b) const
{
    unsigned differences = a.smoothing != b.smoothing ? unsigned(kSmoothingDiffers) : 0u;
    if (!mGeom)
        return differences;
    if (mObeyNormals && mGeom->numNormals >= 2)
        for (int end = 0; end < 2; ++end)
            if (vx::CornersDiffer(EntryOf(mGeom->normals, mGeom->numNormals, a.normals[end]),
                                  EntryOf(mGeom->normals, mGeom->numNormals, b.normals[end])))
                differences |= kNormalsDiffer;
    if (UseCreaseAngle() && HasAllPolyNormals() && std::min(a.poly, b.poly) >= 0 &&
        std::max(a.poly, b.poly) < mGeom->numPolys &&
        vx::ReachesAngle(Dot(mPolyNormals[a.poly], mPolyNormals[b.poly]), mCreaseAngle))
        differences |= kAngleReached;
    if (mGeom->tex)
        for (int end = 0; end < 2; ++end)
            if (vx::CornersDiffer(EntryOf(mGeom->tex->verts, mGeom->tex->numVerts, a.texVerts[end]),
                                  EntryOf(mGeom->tex->verts, mGeom->tex->numVerts, b.texVerts[end])))
                differences |= kUVsDiffer;
    return differences;
}

bool VXGeom::CanGroupPolygons(const PolyLineVert& a, const PolyLineVert& b, bool& split, bool& canShare,
                              bool& uvSplit) const
{
    const unsigned differences = GroupingDifferences(a, b);
    split = differences != 0;
    canShare = (differences & kSmoothingDiffers) == 0;
    uvSplit = (differences & kUVsDiffer) != 0;
    return !split;
}

bool VXGeom::WillGroupPolygons(const PolyLineVert& corner, const BArray<PolyLineVert>& group) const
{
    if (corner.vert < 0 || corner.vert >= mEdgeList.GetVertexLinkCount())
        return false;
    // Only the edges of the corner's own polygon lead anywhere from it. They are taken from the vertex's chain: walking
    // around the fan would meet only one of them where the fan is open.
    for (std::int32_t l = mEdgeList.GetFirstVertexLink(corner.vert); l >= 0; l = mEdgeList.GetNextVertexLink(l))
    {
        const VXEdge& edge = mEdgeList.GetEdge(mEdgeList.GetEdgefromVertexLink(l));
        const bool first = edge.PolyIndex1() == corner.poly;
        if (edge.IsOpenEdge() || (!first && edge.PolyIndex2() != corner.poly))
            continue;
        const std::int32_t across = first ? edge.PolyIndex2() : edge.PolyIndex1();
        for (const PolyLineVert& member : group)
            if (member.poly == across && GroupingDifferences(SideOf(edge, !first), SideOf(edge, first)) == 0)
                return true;
    }
    return false;
}

VXGeom::PolyLineVert VXGeom::SideOf(const VXEdge& edge, bool second) const
{
    const std::int32_t poly = second ? edge.PolyIndex2() : edge.PolyIndex1();
    const std::int32_t rels[2] = {second ? edge.RelIndexP2V1() : edge.RelIndexP1V1(),
                                  second ? edge.RelIndexP2V2() : edge.RelIndexP1V2()};
    PolyLineVert side;
    side.poly = poly;
    side.vert = edge.VertIndex1();
    side.smoothing = PolySmoothingGroup(poly);
    for (int end = 0; end < 2; ++end)
    {
        if (mGeom->normalSets)
            side.normals[end] = mGeom->normalSets[mGeom->Poly(poly)->start + rels[end]];
        if (mGeom->PolyHasTexture(poly))
            side.texVerts[end] = vx::TexVertex(*mGeom->tex, poly, rels[end]);
    }
    return side;
}

// Asks each edge once what the vertices at both of its ends need to know, and keeps the answer in its flags.
bool VXGeom::ClassifyByGrouping(BArray<std::int32_t>& creases)
{
    for (std::int32_t e = 0; e < mEdgeList.GetEdgeCount(); ++e)
    {
        VXEdge& edge = mEdgeList.GetEdge(e);
        edge.FreeCreaseData();
        vx::SetKind(edge, false, true);
        if (edge.PolyIndex2() < 0)
            continue;
        const unsigned differences = GroupingDifferences(SideOf(edge, false), SideOf(edge, true));
        if (differences == 0)
            continue;
        vx::SetKind(edge, true, differences == kUVsDiffer); // a seam parts texture coordinates only
        if (!creases.Append(e))
            return false;
    }
    return true;
}
