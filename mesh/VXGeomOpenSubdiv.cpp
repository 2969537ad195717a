#include "engine/VXSceneContext.h"
#include "mesh/VXGeom.h"
#include "mesh/detail/SubdivCache.h"
#include "mesh/kernel/Polys.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>
#include <utility>

namespace
{
constexpr int kMaxLevel = 15;

// Corners of a face, which are the faces around the point in its middle, and faces at a vertex. OpenSubdiv numbers a
// vertex's edges, up to two for each face, with 16 bits; it would refuse more, but not without printing something. It
// and the refiner square the number of faces in 32 bits, and its time grows with that square.
constexpr std::int32_t kMaxValence = 32767;

// Counts of a level are 32-bit numbers here as in OpenSubdiv, which has up to six entries for a face in one table.
constexpr std::int64_t kMaxFaces = INT32_MAX / 8;

// What a refined face takes in all: refiner, positions, record, edges and normals. A little less than measured.
constexpr std::int64_t kBytesPerFace = 400;

// --- Reading the control mesh

// Texture corners of a polygon, null when it has none.
const std::int32_t* TexRing(const GEOM& geom, std::int64_t poly, std::int32_t length)
{
    if (!geom.PolyHasTexture(poly))
        return nullptr;
    const GEOM_TexPoly run = geom.tex->polys[poly];
    const bool inside = run.start >= 0 && std::int64_t(run.start) + length <= geom.tex->numCorners;
    return inside && run.length >= length ? geom.tex->sets + run.start : nullptr;
}

bool InRange(const std::int32_t* indices, std::int32_t count, std::int32_t limit)
{
    for (std::int32_t k = 0; k < count; ++k)
        if (std::uint32_t(indices[k]) >= std::uint32_t(limit))
            return false;
    return true;
}

// The polygons of a control mesh in the flat arrays that a refiner is made of.
struct ControlArrays
{
    BArray<std::int32_t> lengths, corners, uvCorners;
    std::int32_t numUVs = 0;

    /// False when some polygon is not a face of at least three corners, an index is out of range, or memory ran out.
    bool Gather(const GEOM& geom);
    bool ValencesFit(std::int32_t numVerts) const; ///< also false when memory ran out
    vx::ControlTopology Topology(std::int32_t numVerts) const
    {
        const auto all = [](const BArray<std::int32_t>& array)
        { return std::span<const std::int32_t>(array.Data(), std::size_t(array.Count())); };
        return {numVerts, all(lengths), all(corners), numUVs, all(uvCorners)};
    }
};

bool ControlArrays::Gather(const GEOM& geom)
{
    const vx::PolyView polys = vx::PolysOf(geom);
    std::int64_t total = 0;
    bool textured = false;
    if (!lengths.SetCountForWriting(polys.count))
        return false;
    for (std::int64_t p = 0; p < polys.count; ++p)
    {
        const std::int32_t length = polys.Length(polys[p]);
        if (!polys[p].IsFace() || length < 3 || length > kMaxValence)
            return false;
        lengths.Data()[p] = length;
        total += length;
        textured = textured || TexRing(geom, p, length);
    }
    const std::int32_t texVerts = textured ? geom.tex->numVerts : 0;
    textured = texVerts > 0;
    if (total > kMaxFaces || texVerts == INT32_MAX || !corners.SetCountForWriting(total) ||
        !uvCorners.SetCountForWriting(textured ? total : 0))
        return false;

    bool bare = false; // some polygon has no texture coordinates
    std::int64_t at = 0;
    for (std::int64_t p = 0; p < polys.count; at += lengths.Data()[p++])
    {
        const std::int32_t length = lengths.Data()[p];
        const std::int32_t* const ring = polys.sets + polys[p].start;
        if (!InRange(ring, length, geom.numVerts))
            return false;
        std::copy_n(ring, length, corners.Data() + at);
        if (!textured)
            continue;
        const std::int32_t* const texRing = TexRing(geom, p, length);
        if (texRing && !InRange(texRing, length, texVerts))
            return false;
        // Polygons without texture coordinates share a value that no other polygon uses.
        if (texRing)
            std::copy_n(texRing, length, uvCorners.Data() + at);
        else
            std::fill_n(uvCorners.Data() + at, length, texVerts);
        bare = bare || !texRing;
    }
    if (textured)
        numUVs = std::max(texVerts + std::int32_t(bare), std::int32_t(total));
    return total > 0;
}

bool ControlArrays::ValencesFit(std::int32_t numVerts) const
{
    if (corners.Count() <= kMaxValence)
        return true;
    BArray<std::int32_t> faces;
    if (!faces.SetCount(numVerts))
        return false;
    std::int32_t most = 0;
    for (const std::int32_t v : corners)
        most = std::max(most, ++faces.Data()[v]);
    return most <= kMaxValence;
}

// Whether `corners` corners can be refined so far. Beyond what 32 bits count, the system is asked for the memory first:
// it refuses what it could never give, which the many small requests of a refinement would find out too late.
bool CanRefine(std::int64_t corners, int level)
{
    std::int64_t faces = corners;
    for (int i = 1; i < level && faces <= kMaxFaces; ++i)
        faces *= 4;
    if (faces > kMaxFaces)
        return false;
    const std::size_t bytes = std::size_t(faces * kBytesPerFace);
    void* const probe = MEM_RawAlloc(bytes);
    MEM_RawFree(probe, bytes);
    return probe != nullptr;
}

// --- Writing the refined mesh

// Positions to a mesh. What is not a number becomes 0, as every check of a record would make it.
void CopyPositions(const VERTEX* from, std::int32_t count, VERTEX* to)
{
    const auto number = [](float x) { return x == x ? x : 0.0f; };
    for (std::int32_t i = 0; i < count; ++i)
        to[i] = {number(from[i].x), number(from[i].y), number(from[i].z)};
}

// One record per refined face: its parent's, with its own corners.
bool FillPolys(const GEOM& control, const std::int32_t* parents, GEOM& out)
{
    const std::int64_t stride = control.PolyStride();
    if (!MEM_SizeArrayForWriting(out.polys, std::size_t(out.numPolys * stride)))
        return false;
    std::uint8_t* at = out.polys;
    for (std::int32_t f = 0; f < out.numPolys; ++f, at += stride)
    {
        const std::int32_t run[2] = {4 * f, 4};
        const std::uint8_t* const parent = control.polys + parents[f] * stride;
        std::memcpy(at, run, sizeof run);
        std::memcpy(at + sizeof run, parent + sizeof run, sizeof(ELEMENT) - sizeof run);
        if (stride > std::int64_t(sizeof(ELEMENT)))
            std::memcpy(at + sizeof(ELEMENT), parent + sizeof(ELEMENT), std::size_t(stride) - sizeof(ELEMENT));
    }
    return true;
}

bool FillTexture(const GEOM& control, const vx::Refiner& refiner, const std::int32_t* parents, GEOM& out)
{
    GEOM_Texture* const tex = out.tex = new (std::nothrow) GEOM_Texture;
    const std::size_t faces = std::size_t(out.numPolys);
    if (!tex || !MEM_SizeArrayForWriting(tex->verts, std::size_t(refiner.NumUVs())) ||
        !MEM_SizeArrayForWriting(tex->sets, 4 * faces) || !MEM_SizeArrayForWriting(tex->polys, faces))
        return false;
    refiner.UVCorners(tex->sets);
    std::int32_t length = 0;
    for (std::int32_t f = 0; f < out.numPolys; ++f)
    {
        if (f == 0 || parents[f] != parents[f - 1])
            length = TexRing(control, parents[f], control.Poly(parents[f])->length) ? 4 : 0;
        tex->polys[f] = {4 * f, length};
    }
    tex->numVerts = refiner.NumUVs();
    tex->numCorners = 4 * out.numPolys;
    tex->numPolys = out.numPolys;
    return true;
}

// Named objects start at the first child of the polygon at which they started.
bool CopyNames(const GEOM& control, const std::int32_t* parents, GEOM& out)
{
    out.materials = control.materials;
    out.groupNames = control.groupNames;
    out.materialFiles = control.materialFiles;
    out.objectNames = control.objectNames;
    for (GEOM_ObjectName& object : out.objectNames)
        object.firstPoly = std::int32_t(std::lower_bound(parents, parents + out.numPolys, object.firstPoly) - parents);
    return out.materials.Count() == control.materials.Count() && out.groupNames.Count() == control.groupNames.Count() &&
           out.materialFiles.Count() == control.materialFiles.Count() &&
           out.objectNames.Count() == control.objectNames.Count() &&
           (!out.materials.IsEmpty() || GEOM_MakeDefaultMaterial(&out) == 0);
}

// Fills an empty record with topology, attributes and texture topology of the last level.
bool FillRecord(const GEOM& control, const vx::Refiner& refiner, const std::int32_t* parents, GEOM& out)
{
    out.numPolys = refiner.NumFaces();
    out.numVerts = refiner.NumVerts();
    out.numGroups = control.numGroups;
    if (!MEM_SizeArrayForWriting(out.verts, std::size_t(out.numVerts)) ||
        !MEM_SizeArrayForWriting(out.sets, std::size_t(out.numPolys) * 4))
        return false;
    refiner.Corners(out.sets);
    return FillPolys(control, parents, out) && CopyNames(control, parents, out) &&
           (refiner.NumUVs() == 0 || FillTexture(control, refiner, parents, out));
}

// Exchanges all that two records hold; the records themselves stay where hosts know them.
void SwapContents(GEOM& a, GEOM& b)
{
    std::swap(a.verts, b.verts);
    std::swap(a.numVerts, b.numVerts);
    std::swap(a.sets, b.sets);
    std::swap(a.polys, b.polys);
    std::swap(a.numPolys, b.numPolys);
    std::swap(a.tex, b.tex);
    std::swap(a.numGroups, b.numGroups);
    std::swap(a.numNormals, b.numNormals);
    std::swap(a.normalSets, b.normalSets);
    std::swap(a.normals, b.normals);
    std::swap(a.vertColors, b.vertColors);
    a.materials.Swap(b.materials);
    a.groupNames.Swap(b.groupNames);
    a.objectNames.Swap(b.objectNames);
    a.materialFiles.Swap(b.materialFiles);
}
} // namespace

// --- Subdividing

int VXGeom::SubdivideOpenSubDiv(VXGeom* dest, int level, E_SubdivScheme scheme, bool forceRebuild, bool /*unused*/)
{
    if (!mSubdivCache)
        mSubdivCache = new (std::nothrow) VXSubdivCache;
    if (mSubdivCache)
        mSubdivCache->nonDefaultScheme = scheme != kSubdivSchemeDefault;
    if (!dest)
        return 0;
    if (!mSubdivCache || !mGeom || dest == this || dest->mGeom == mGeom || level < 1 || level > kMaxLevel)
        return -1;

    VXSubdivCache& cache = *mSubdivCache;
    const bool changed = cache.numVerts != mGeom->numVerts || cache.numPolys != mGeom->numPolys || cache.level != level;
    cache.numVerts = mGeom->numVerts;
    cache.numPolys = mGeom->numPolys;
    cache.level = level;
    const bool rebuild = forceRebuild || changed || !cache.refiner;
    if (rebuild)
    {
        VXSceneContext::SubdivisionWillRebuild(true, mGeom->numVerts, scheme);
        if (!MakeRefiner())
            return -1;
    }
    if (mGeom->numVerts > 0)
        std::memcpy(cache.positions, mGeom->verts, std::size_t(mGeom->numVerts) * sizeof(VERTEX));
    cache.refiner->Interpolate(cache.positions);
    if (!rebuild && dest->IsRefinedBy(cache))
    {
        dest->TakeRefinedPositions(cache);
        return 0;
    }
    return BuildRefined(*dest) ? 0 : -1;
}

void VXGeom::ClearSubdiv()
{
    delete mSubdivCache;
    mSubdivCache = nullptr;
}

std::size_t VXGeom::SubdivMemoryUsed() const { return mSubdivCache ? mSubdivCache->MemoryUsed() : 0; }

// Makes the refiner of the cache anew, and the buffers that go with it. False, and then there is none, when it cannot
// be made.
bool VXGeom::MakeRefiner()
{
    VXSubdivCache& cache = *mSubdivCache;
    cache.DropRefiner();
    ControlArrays control;
    if (!control.Gather(*mGeom) || !control.ValencesFit(mGeom->numVerts) ||
        !CanRefine(control.corners.Count(), cache.level))
        return false;
    cache.refiner = vx::Refiner::Make(control.Topology(mGeom->numVerts), cache.level);
    if (!cache.refiner)
        return false;
    static std::atomic<std::uint64_t> last = 0;
    cache.number = ++last;
    cache.positions = MEM_AllocArray<VERTEX>(std::size_t(cache.refiner->NumVertsTotal()));
    if (const std::int32_t numUVs = cache.refiner->NumUVsTotal(); numUVs > 0)
        cache.uvs = MEM_AllocArray<T_VERTEX>(std::size_t(numUVs));
    if (!cache.positions || (cache.refiner->NumUVs() > 0 && !cache.uvs))
        cache.DropRefiner();
    return cache.refiner != nullptr;
}

// Sizes alone would not do: our own scheme gives as many vertices and polygons, in another order.
bool VXGeom::IsRefinedBy(const VXSubdivCache& cache) const
{
    return mGeom && mRefinedBy == cache.number && mGeom->numVerts == cache.refiner->NumVerts() &&
           mGeom->numPolys == cache.refiner->NumFaces();
}

// The pose alone. Polygons stay, crease vertices follow, and normals are for whoever has deformed the vertices, too.
void VXGeom::TakeRefinedPositions(const VXSubdivCache& cache)
{
    const std::int32_t count = cache.refiner->NumVerts();
    const VERTEX* const last = cache.positions + (cache.refiner->NumVertsTotal() - count);
    for (VERTEX* const array : {mGeom->verts, mSavedVerts})
        if (array)
            CopyPositions(last, count, array);
    UpdateCreaseVerts();
    mSavedVerts = UpdateArbVertArrayForCreases(mSavedVerts);
    if (MEM_Count(mTransformedVerts) >= std::size_t(count))
    {
        CopyPositions(last, count, mTransformedVerts);
        mTransformedVerts = UpdateArbVertArrayForCreases(mTransformedVerts);
    }
    SetIncludesLines(false);
    SetIncludesPoints(false);
}

// The whole refined mesh with all that is derived from it, made beside the destination and put into its place when
// nothing can fail any more.
bool VXGeom::BuildRefined(VXGeom& dest)
{
    VXSubdivCache& cache = *mSubdivCache;
    const vx::Refiner& refiner = *cache.refiner;
    if (cache.uvs && !FillUVs())
        return false;
    VXGeom fresh;
    fresh.mFlags = dest.mFlags;
    fresh.mCreaseAngle = dest.mCreaseAngle;
    fresh.mGeom = GEOM_Alloc();
    BArray<int>& parents = fresh.mSubdivPolyRemapTable;
    BArray<int>& children = fresh.mSubdivVertRemapTable;
    if (!fresh.mGeom || !parents.SetCountForWriting(refiner.NumFaces()) ||
        !children.SetCountForWriting(mGeom->numVerts))
        return false;
    refiner.FaceParents(parents.Data());
    refiner.VertChildren(children.Data());
    try
    {
        if (!FillRecord(*mGeom, refiner, parents.Data(), *fresh.mGeom))
            return false;
    }
    catch (const std::bad_alloc&) // a name
    {
        return false;
    }
    const std::int32_t count = refiner.NumVerts();
    CopyPositions(cache.positions + (refiner.NumVertsTotal() - count), count, fresh.mGeom->verts);
    if (cache.uvs)
        std::memcpy(static_cast<void*>(fresh.mGeom->tex->verts), cache.uvs + (refiner.NumUVsTotal() - refiner.NumUVs()),
                    std::size_t(refiner.NumUVs()) * sizeof(T_VERTEX));
    if (!fresh.DeriveRefined())
        return false;
    if (dest.mTransformedVerts) // with the crease vertices, which are there now
    {
        if (!fresh.AllocTransformedVerts())
            return false;
        std::copy_n(fresh.mGeom->verts, fresh.NumVerts(true), fresh.mTransformedVerts);
    }
    dest.TakeRefined(fresh);
    dest.mRefinedBy = cache.number;
    return true;
}

// The texture vertices of all levels. Those that the refiner was made for and the mesh does not have are (0, 0). False
// when memory ran out.
bool VXGeom::FillUVs()
{
    const VXSubdivCache& cache = *mSubdivCache;
    const std::int32_t own = mGeom->tex ? mGeom->tex->numVerts : 0, total = cache.refiner->NumUVsTotal();
    const std::int32_t given = std::min(own, total);
    if (given > 0)
        std::copy_n(mGeom->tex->verts, given, cache.uvs);
    std::fill(cache.uvs + given, cache.uvs + total, T_VERTEX{});
    return cache.refiner->InterpolateUVs(cache.uvs);
}

bool VXGeom::DeriveRefined()
{
    SetDataSorted(false);
    SetTransparentParts(false);
    SetEdgesClassified(false);
    if (GEOM_VerifyAndFix(mGeom) != 0 || BuildEdgeList() != 0)
        return false;
    SetIncludesLines(false);
    SetIncludesPoints(false);
    const bool creases = VXSceneContext::AllowCreaseVertsForSubdiv();
    if (creases)
    {
        SetGenerateCreases(true);
        SetUseCreaseAngle(false);
        GenerateCreaseData(nullptr);
    }
    else if (!ComputeAllNormals())
        return false;
    return UseExternalNormals() ? !creases || EdgesClassified()
                                : mVertNormals && mPolyNormals && (!GenerateCreases() || EdgesClassified());
}

// Takes over what a fresh wrapper holds, and leaves it what was held here. Cannot fail.
void VXGeom::TakeRefined(VXGeom& fresh)
{
    DropDerived();
    DropEdges();
    PutVertsBack();
    if (mGeom)
        SwapContents(*mGeom, *fresh.mGeom);
    else
    {
        std::swap(mGeom, fresh.mGeom);
        mGeomShared = false;
    }
    mFlags = fresh.mFlags;
    if (!UseExternalNormals())
    {
        std::swap(mVertNormals, fresh.mVertNormals);
        std::swap(mPolyNormals, fresh.mPolyNormals);
    }
    std::swap(mTransformedVerts, fresh.mTransformedVerts);
    std::swap(mEdgeList, fresh.mEdgeList);
    std::swap(mCreaseSets, fresh.mCreaseSets);
    std::swap(mUvsPerVertex, fresh.mUvsPerVertex);
    std::swap(mOrigCreaseIndex, fresh.mOrigCreaseIndex);
    std::swap(mNumbCreaseVerts, fresh.mNumbCreaseVerts);
    mSeamEdges.Swap(fresh.mSeamEdges);
    mSubdivPolyRemapTable.Swap(fresh.mSubdivPolyRemapTable);
    mSubdivVertRemapTable.Swap(fresh.mSubdivVertRemapTable);
}
