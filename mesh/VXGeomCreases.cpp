#include "mesh/VXGeom.h"

#include "mesh/kernel/CreaseGroups.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <utility>

// --- Generation

bool VXGeom::GenerateCreaseData(EDGELIST* edges)
{
    if (!mGeom)
    {
        mNumbCreaseVerts = 0;
        return false;
    }
    // A temporary vertex array is the caller's and cannot grow by the crease vertices.
    if (!GenerateCreases() || mSavedVerts)
        return false;
    const auto start = std::chrono::steady_clock::now();
    if (!SplitCreases(edges))
        return false;
    if (edges && UseExternalNormals() && edges->vertNormals &&
        MEM_SizeArray(edges->vertNormals, std::size_t(NumVerts(true))))
        ComputeCreasedNormals(edges->vertNormals);
    if (edges)
        MakeVertexNormals(edges);
    else
        ComputeAllNormals();
    DumpCreaseData(edges, std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    return false;
}

bool VXGeom::SplitCreases(EDGELIST* caller)
{
    // The host's arrays are dropped, never resized; our own are filled again.
    if (mUvsPerVertex == mLentUvsPerVertex)
        mUvsPerVertex = nullptr;
    if (mCreaseSets == mLentCreaseSets)
        mCreaseSets = nullptr;
    if (mOrigCreaseIndex == mLentOrigCreaseIndex)
        mOrigCreaseIndex = nullptr;
    mLentUvsPerVertex = nullptr;
    mLentCreaseSets = mLentOrigCreaseIndex = nullptr;
    SetUseExternalCreaseInfo(false);
    SetDataSorted(false); // the corners to draw change with the crease vertices
    mNumbCreaseVerts = 0;
    if (FillCreaseData(caller))
    {
        SetEdgesClassified(true);
        return true;
    }
    MEM_SetAllocationFailed(true);
    DropCreaseData();
    return false;
}

// After a failure: no crease vertices, and no edge that names one.
void VXGeom::DropCreaseData()
{
    for (std::int32_t e = 0; e < mEdgeList.GetEdgeCount(); ++e)
        mEdgeList.GetEdge(e).FreeCreaseData();
    mNumbCreaseVerts = 0;
    ClearEdgeSmoothing();
}

namespace
{
// Gives the caller's array, where there is one, the values of ours.
template <class T>
bool HandOver(T*& callers, const T* values, std::size_t count)
{
    if (!callers)
        return true;
    if (!MEM_SizeArrayForWriting(callers, count))
        return false;
    std::memcpy(callers, values, count * sizeof(T));
    return true;
}

// Crease vertices lie behind the record's vertices, at the places of their originals.
bool AppendPositions(VERTEX*& verts, std::size_t numVerts, std::span<const std::int32_t> originals)
{
    if (!verts)
        return originals.empty(); // a record without vertices has nothing to copy
    void* const grown = MEM_Reserve(verts, numVerts + originals.size());
    if (!grown)
        return false;
    verts = static_cast<VERTEX*>(MEM_Resize(grown, numVerts + originals.size()));
    for (std::size_t k = 0; k < originals.size(); ++k)
        verts[numVerts + k] = verts[originals[k]];
    return true;
}
} // namespace

// Values of smGenCreaseMethod; any other goes along the crease edges.
static constexpr int kGroupAcrossEdges = 1, kGroupAtEdges = 2;

// Finds the crease edges and gives each sector beside them its vertices, by the method that is set.
bool VXGeom::SplitSectors(const vx::CreaseMesh& mesh, BArray<std::int32_t>& creases, BArray<std::int32_t>& originals,
                          BArray<std::uint8_t>& split)
{
    const auto found = [&creases]
    { return std::span<const std::int32_t>(creases.Data(), std::size_t(creases.Count())); };
    if (!AllocateCreaseMemory())
        return false;
    if (smGenCreaseMethod == kGroupAcrossEdges || smGenCreaseMethod == kGroupAtEdges)
        return ClassifyByGrouping(creases) && SplitByGrouping(mesh, found(), originals, split);

    vx::CreaseRules rules;
    rules.polyNormals = UseCreaseAngle() && HasAllPolyNormals() ? mPolyNormals : nullptr;
    rules.angle = mCreaseAngle;
    if (mObeyNormals && mGeom->normalSets && mGeom->normals && mGeom->numNormals >= 2)
    {
        rules.cornerNormals = mGeom->normals;
        rules.normalSets = mGeom->normalSets;
    }
    return vx::ClassifyEdges(mesh, rules, creases) && vx::SplitSectors(mesh, found(), mCreaseSets, originals, split);
}

bool VXGeom::FillCreaseData(EDGELIST* caller)
{
    vx::CreaseMesh mesh;
    mesh.polys = vx::PolysOf(*mGeom);
    mesh.edges = {mEdgeList.Edges(), std::size_t(mEdgeList.GetEdgeCount())};
    mesh.links = mEdgeList.Links();
    mesh.firstLink = mEdgeList.FirstLinks();
    mesh.tex = mGeom->tex;
    BArray<std::int32_t> creases, originals;
    BArray<std::uint8_t> split;
    if (!SplitSectors(mesh, creases, originals, split))
        return false;

    const std::size_t numCorners = MEM_Count(mGeom->sets), numVerts = std::size_t(mGeom->numVerts);
    const std::size_t numCopies = std::size_t(originals.Count()), count = numVerts + numCopies;
    const std::span<const std::int32_t> copies(originals.Data(), numCopies);
    if (!MEM_SizeArrayForWriting(mUvsPerVertex, count) || !MEM_SizeArrayForWriting(mOrigCreaseIndex, numCopies) ||
        !AppendPositions(mGeom->verts, numVerts, copies))
        return false;
    if (numCopies > 0)
        std::memcpy(mOrigCreaseIndex, originals.Data(), numCopies * sizeof(std::int32_t));
    vx::CornerUVs(mesh, mCreaseSets, {split.Data(), std::size_t(split.Count())}, {mUvsPerVertex, count});

    mSeamEdges.Empty();
    for (const std::int32_t e : creases)
        if (mEdgeList.GetEdge(e).IsSmoothEdge() && !mSeamEdges.Append(e))
            return false;
    mNumbCreaseVerts = std::int32_t(numCopies);
    if (!caller)
        return true;

    caller->numVerts = mGeom->numVerts;
    caller->numCreaseVerts = mNumbCreaseVerts;
    // The caller's arrays hold the crease data then, and the mesh's own are not there. Only the positions also lie
    // behind the record's, since whatever is sized by NumVerts(true) reads as far.
    const bool handed = HandOver(caller->sets, mCreaseSets, numCorners) &&
                        HandOver(caller->uvsPerVertex, mUvsPerVertex, count) &&
                        HandOver(caller->origIndices, mOrigCreaseIndex, numCopies) &&
                        (!caller->verts || AppendPositions(caller->verts, numVerts, copies));
    if (!handed)
        caller->numCreaseVerts = 0;
    ReleaseCreaseArrays();
    return handed;
}

bool VXGeom::AllocateCreaseMemory()
{
    const std::size_t numCorners = MEM_Count(mGeom->sets);
    if (!MEM_SizeArrayForWriting(mCreaseSets, numCorners))
        return false;
    if (numCorners > 0)
        std::memcpy(mCreaseSets, mGeom->sets, numCorners * sizeof(std::int32_t));
    return true;
}

// Groups the corners around every vertex at which a crease ends, in order of vertices.
bool VXGeom::SplitByGrouping(const vx::CreaseMesh& mesh, std::span<const std::int32_t> creases,
                             BArray<std::int32_t>& originals, BArray<std::uint8_t>& split)
{
    if (!split.SetCount(mGeom->numVerts))
        return false;
    if (creases.empty())
        return true;
    for (const std::int32_t e : creases)
        for (const std::int32_t v : {mEdgeList.GetEdge(e).VertIndex1(), mEdgeList.GetEdge(e).VertIndex2()})
            split.Data()[v] = 1;

    vx::CornerGrouper::CanJoin canJoin;
    if (smGenCreaseMethod == kGroupAtEdges)
        canJoin = [this](const VXEdge& pair)
        { return GroupingDifferences(SideOf(pair, false), SideOf(pair, true)) == 0; };
    vx::CornerGrouper grouper(mesh, std::move(canJoin));
    BMapIntToInt vertOfGroup(std::int64_t(creases.size()));
    if (!grouper.Init())
        return false;
    for (std::int32_t v = 0; v < mGeom->numVerts; ++v)
    {
        if (!split.Data()[v])
            continue;
        if (!grouper.Group(v))
            return false;
        for (const vx::CornerGrouper::Corner& corner : grouper.Corners())
            if (!GenerateCreaseData_AddPolyVert(corner.index, corner.group, corner.keepsVertex, vertOfGroup, originals))
                return false;
    }
    for (std::int32_t v = 0; v < mGeom->numVerts; ++v)
        if (split.Data()[v] && !vx::WriteCreaseData(mesh, v, mCreaseSets))
            return false;
    return true;
}

// Gives a polygon corner the vertex of its group, made when the group's first corner comes.
bool VXGeom::GenerateCreaseData_AddPolyVert(std::int32_t corner, std::int32_t group, bool keepsVertex,
                                            BMapIntToInt& vertOfGroup, BArray<std::int32_t>& originals)
{
    if (keepsVertex)
        return true;
    if (const std::int64_t* const vert = vertOfGroup.Find(group))
    {
        mCreaseSets[corner] = std::int32_t(*vert);
        return true;
    }
    const std::int64_t vert = mGeom->numVerts + originals.Count();
    mCreaseSets[corner] = std::int32_t(vert);
    return originals.Append(mGeom->sets[corner]) && vertOfGroup.Set(group, vert);
}

// --- Reading and following

int VXGeom::OrigVertIndex(int i) const
{
    if (i < 0 || i >= NumVerts(true))
        return 0;
    const int numVerts = mGeom->numVerts;
    return i < numVerts ? i : mOrigCreaseIndex ? mOrigCreaseIndex[i - numVerts] : 0;
}

void VXGeom::UpdateCreaseVerts()
{
    if (!mGeom || !mOrigCreaseIndex)
        return;
    VERTEX* const verts = mGeom->verts;
    for (std::int32_t k = 0; k < mNumbCreaseVerts; ++k)
        verts[mGeom->numVerts + k] = verts[mOrigCreaseIndex[k]];
}

VERTEX* VXGeom::UpdateArbVertArrayForCreases(VERTEX* array)
{
    if (!array || !mGeom || mGeom->numVerts < 1 || mNumbCreaseVerts < 1 || !mOrigCreaseIndex)
        return array;
    const std::size_t numVerts = std::size_t(mGeom->numVerts);
    AppendPositions(array, numVerts, {mOrigCreaseIndex, std::size_t(mNumbCreaseVerts)});
    return array;
}

// --- Debugging output

namespace
{
// Texture coordinate at a corner of the record, (0, 0) without one.
T_VERTEX CornerUV(const GEOM& geom, std::int32_t poly, std::int32_t k)
{
    if (!geom.PolyHasTexture(poly) || k >= geom.tex->polys[poly].length)
        return {};
    return geom.tex->verts[geom.tex->sets[geom.tex->polys[poly].start + k]];
}
} // namespace

void VXGeom::DumpCreaseData(EDGELIST* edges, double milliseconds)
{
    if (!DebugCreaseVerts() || !mGeom)
        return;
    const std::uintptr_t address = edges ? std::uintptr_t(edges) : std::uintptr_t(mGeom);
    char name[64];
    std::snprintf(name, sizeof name, "debugCreaseData_%8.8lx_%d.txt", static_cast<unsigned long>(address & 0xFFFFFFFFu),
                  smGenCreaseMethod);
    std::FILE* const file = std::fopen(name, "wt");
    if (!file)
        return;

    std::fprintf(file, "Time for method %d: %f seconds for %d verts\n", smGenCreaseMethod, milliseconds / 1000,
                 mGeom->numVerts);
    constexpr std::int32_t kShownPoly = 35; // one is enough to compare runs by, and it is this one
    const VERTEX* const verts = mGeom->verts;
    const std::int32_t* const creased = edges && edges->sets ? edges->sets : mCreaseSets;
    const T_VERTEX* const uvs = edges && edges->uvsPerVertex ? edges->uvsPerVertex : mUvsPerVertex;
    const auto uvOf = [uvs](std::int32_t v) { return uvs ? uvs[v] : T_VERTEX{}; };
    if (mGeom->numPolys > kShownPoly)
    {
        std::fprintf(file, "Polygon %d:\n\tVerts:", kShownPoly);
        const ELEMENT& element = *mGeom->Poly(kShownPoly);
        for (std::int32_t k = 0; k < element.length; ++k)
        {
            const std::int32_t v = mGeom->sets[element.start + k];
            const std::int32_t c = creased ? creased[element.start + k] : v;
            const T_VERTEX uv = CornerUV(*mGeom, kShownPoly, k), creaseUV = uvOf(c);
            std::fprintf(file, "%d/%d:(%f, %f, %f)/(%f, %f)", v, c, double(verts[v].x), double(verts[v].y),
                         double(verts[v].z), double(uv.u), double(uv.v));
            std::fprintf(file, "/(%f %f)", double(creaseUV.u), double(creaseUV.v));
        }
        std::fprintf(file, "\n");
    }
    for (std::int32_t e = 0; e < mEdgeList.GetEdgeCount(); ++e)
    {
        const VXEdge& edge = mEdgeList.GetEdge(e);
        std::fprintf(file, "Edge %d: P1(%d/%lu), P2(%d/%lu), V1(%d), V2(%d), %s, %s\n", e, edge.PolyIndex1(),
                     static_cast<unsigned long>(PolySmoothingGroup(edge.PolyIndex1())), edge.PolyIndex2(),
                     static_cast<unsigned long>(PolySmoothingGroup(edge.PolyIndex2())), edge.VertIndex1(),
                     edge.VertIndex2(), edge.IsCreaseEdge() ? "true" : "false", edge.IsSmoothEdge() ? "true" : "false");
    }
    const auto printVerts = [&](const char* format, std::int32_t from, std::int32_t count)
    {
        for (std::int32_t v = from; v < from + count; ++v)
            std::fprintf(file, format, v - from, double(verts[v].x), double(verts[v].y), double(verts[v].z),
                         double(uvOf(v).u), double(uvOf(v).v));
    };
    std::fprintf(file, "Num Verts: %d\n", mGeom->numVerts);
    printVerts("\tVert %d: (%f, %f, %f) - (%f, %f)\n", 0, mGeom->numVerts);
    std::fprintf(file, "Num Crease Verts: %d\n", mNumbCreaseVerts);
    printVerts("\tCrease Vert %d: (%f, %f, %f) - (%f, %f)\n", mGeom->numVerts, mNumbCreaseVerts);
    std::fclose(file);
}
