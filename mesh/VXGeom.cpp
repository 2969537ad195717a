#include "mesh/VXGeom.h"

#include <algorithm>
#include <new>

bool VXGeom::mObeyNormals = false;
int VXGeom::smGenCreaseMethod = 0;

VXGeom::VXGeom(const GEOM* geom)
{
    SetGeom(const_cast<GEOM*>(geom), true); // only read: a copy is taken
}

VXGeom::VXGeom(const VXGeom*) {}

VXGeom::~VXGeom()
{
    DropDerived();
    ClearEdgeSmoothing();
    Lend<VERTEX>(mVertNormals, mLentVertNormals, nullptr);
    Lend<VERTEX>(mPolyNormals, mLentPolyNormals, nullptr);
    MEM_Release(mTransformedVerts);
    DropSnapshot();
    PutVertsBack();
    if (!mGeomShared)
        GEOM_Free(mGeom);
}

// --- The record

int VXGeom::SetGeom(GEOM* geom, bool copy)
{
    if (!copy && geom == mGeom)
        return 0;

    DropDerived(); // before a copy takes its memory
    DropEdges();
    // The record to copy may be the one that is held, so that one is freed last.
    Hold(copy && geom ? GEOM_Copy(geom, 2) : geom, !copy);
    if (!mGeom)
        return geom ? -1 : 0;
    return RebuildLists() ? 0 : -1;
}

void VXGeom::Hold(GEOM* geom, bool shared)
{
    DropDerived();
    DropEdges();
    if (!UseExternalNormals())
    {
        MEM_Release(mVertNormals);
        MEM_Release(mPolyNormals);
    }
    MEM_Release(mTransformedVerts);
    DropSnapshot(); // of another rest state
    PutVertsBack();
    if (!mGeomShared)
        GEOM_Free(mGeom);
    mGeom = geom;
    mGeomShared = shared;
}

bool VXGeom::RebuildLists()
{
    DropDerived();
    // Before the edges are built, as well as after the normals: a borrowed record has not been looked at by anyone.
    return mGeom && GEOM_VerifyAndFix(mGeom) == 0 && BuildEdgeList() == 0 && ComputeAllNormals() &&
           GEOM_VerifyAndFix(mGeom) == 0;
}

GEOM* VXGeom::StealGeom()
{
    DropDerived();
    DropEdges();
    PutVertsBack();
    GEOM* const stolen = mGeom;
    mGeom = nullptr;
    mGeomShared = false;
    return stolen;
}

VXGeom* VXGeom::Clone(bool copyRecord) const
{
    VXGeom* const clone = new (std::nothrow) VXGeom;
    if (!clone)
        return nullptr;
    clone->mFlags = mFlags;
    clone->SetEdgesClassified(false);
    clone->SetDataSorted(false);
    clone->mCreaseAngle = mCreaseAngle;
    // SetGeom ends with the check and repair of the record that a clone is promised.
    if (clone->SetGeom(mGeom, copyRecord) != 0)
    {
        delete clone;
        return nullptr;
    }
    return clone;
}

void VXGeom::Empty()
{
    DropDerived();
    DropSnapshot();
    DropEdges();
    PutVertsBack();
    if (mGeom)
        mGeom->Empty();
    // The storage stays: a mesh that is emptied is mostly about to be filled again.
    MEM_Empty(mTransformedVerts);
    if (!UseExternalNormals())
    {
        MEM_Empty(mVertNormals);
        MEM_Empty(mPolyNormals);
    }
}

int VXGeom::SetSizeFor(int verts, int polys, int corners, int texVerts)
{
    if (!mGeom)
    {
        mGeom = GEOM_Alloc();
        mGeomShared = false;
    }
    SetCurrentPoly(-1);
    SetDataSorted(false);
    if (verts != NumVerts(false))
        DropSnapshot();
    if (!UseExternalCreaseInfo())
        ClearEdgeSmoothing(); // crease vertices lie behind the record's, where others are about to be
    mEdgeList.Begin(0);       // what refers to the old polygons is of no use
    mEdgeList.End();
    if (!mGeom || mGeom->SetSize(polys, verts, corners, 0, texVerts > 0 ? corners : 0, texVerts) != 0)
        return -1;
    if (texVerts == 0)
        GEOM_TexFree(mGeom);

    const std::size_t count = std::size_t(verts);
    if (mTransformedVerts && !MEM_SizeArray(mTransformedVerts, count))
        return -1;
    if (UseExternalNormals())
        return 0;
    return MEM_SizeArray(mVertNormals, count) && MEM_SizeArray(mPolyNormals, count) ? 0 : -1;
}

// --- What is derived, borrowed and held

void VXGeom::DropDerived()
{
    SetCurrentPoly(-1);
    ClearSortedData();
    ClearWeldedNormals();
    ClearPolyCenters();
    DropTangents();
    mVertSmoothingList.Clear();
    ClearSubdiv();
    mRefinedBy = 0;
}

void VXGeom::DropSnapshot()
{
    for (Snapshot* const part : {&mPreMungeVerts, &mPreMungeNormals, &mPreMungeTangents, &mPreMungeBinormals})
        part->Drop();
}

void VXGeom::DropEdges()
{
    ClearEdgeSmoothing();
    mEdgeList.Begin(0);
    mEdgeList.End();
}

void VXGeom::PutVertsBack()
{
    if (mGeom && mSavedVerts)
        mGeom->verts = mSavedVerts;
    mSavedVerts = nullptr;
}

void VXGeom::SetUseExternalNormals(bool on)
{
    SetFlag(GeomFlag::UseExternalNormals, on);
    if (on)
        return;
    if (mVertNormals == mLentVertNormals)
        mVertNormals = nullptr;
    if (mPolyNormals == mLentPolyNormals)
        mPolyNormals = nullptr;
    mLentVertNormals = mLentPolyNormals = nullptr;
}

static std::size_t HandleBytes(const void* handle) { return MEM_Capacity(handle) * MEM_EntrySize(handle); }

std::size_t VXGeom::MemoryUsed() const
{
    std::size_t bytes =
        sizeof *this + GEOM_MemoryUsed(mGeom) + mEdgeList.MemoryUsed() + mVertSmoothingList.MemoryUsed();
    bytes += HandleBytes(mTransformedVerts) + HandleBytes(mPolyCenters) + HandleBytes(mWeldedNormals) +
             HandleBytes(mVertTangents) + HandleBytes(mVertBinormals);
    for (const Snapshot* const part : {&mPreMungeVerts, &mPreMungeNormals, &mPreMungeTangents, &mPreMungeBinormals})
        bytes += part->lent ? 0 : HandleBytes(part->array);
    if (mVertNormals != mLentVertNormals)
        bytes += HandleBytes(mVertNormals);
    if (mPolyNormals != mLentPolyNormals)
        bytes += HandleBytes(mPolyNormals);
    bytes += mUvsPerVertex != mLentUvsPerVertex ? HandleBytes(mUvsPerVertex) : 0;
    bytes += mCreaseSets != mLentCreaseSets ? HandleBytes(mCreaseSets) : 0;
    bytes += mOrigCreaseIndex != mLentOrigCreaseIndex ? HandleBytes(mOrigCreaseIndex) : 0;
    bytes += std::size_t(mSeamEdges.Capacity()) * sizeof(std::int32_t);
    for (const VXSortedBucket& bucket : mSorted)
        bytes += HandleBytes(bucket.polys) + HandleBytes(bucket.corners) + HandleBytes(bucket.edgeFlags) +
                 HandleBytes(bucket.runs);
    bytes += SubdivMemoryUsed();
    bytes += std::size_t(mRefPoints.Capacity()) * sizeof(VERTEX);
    bytes += std::size_t(mSubdivPolyRemapTable.Capacity() + mSubdivVertRemapTable.Capacity()) * sizeof(int);
    return bytes;
}

// --- Reading the record

std::int32_t* VXGeom::Sets(bool creased) const
{
    if (!mGeom)
        return nullptr;
    return creased && mNumbCreaseVerts > 0 && mCreaseSets ? mCreaseSets : mGeom->sets;
}

std::uint32_t VXGeom::PolySmoothingGroup(int i) const
{
    return i >= 0 && i < NumPolys() ? mGeom->Poly(i)->GroupWord(0) : 0;
}

bool VXGeom::PolyIncludesVertex(int poly, int vert) const
{
    if (poly < 0 || poly >= NumPolys() || !mGeom->sets)
        return false;
    const ELEMENT& element = *mGeom->Poly(poly);
    const std::int32_t* const first = mGeom->sets + element.start;
    const std::int32_t* const end = first + element.length;
    return std::find(first, end, vert) != end;
}

bool VXGeom::EdgeIncludesVertex(int edge, int vert) const
{
    if (edge < 0 || edge >= mEdgeList.GetEdgeCount())
        return false;
    const VXEdge& e = mEdgeList.GetEdge(edge);
    return e.VertIndex1() == vert || e.VertIndex2() == vert;
}

// --- Files

int VXGeom::ReadWavefront(const char* path, GEOM_ProgressProc progress, GEOM_ReadReport* report)
{
    GEOM_ReadReport ownReport;
    GEOM_ReadReport& result = report ? *report : ownReport;
    result = GEOM_ReadReport();

    BFile file{BPath(path)};
    file.SetCompression(true);
    if (file.Open(BFile::Mode::Read) != 0)
    {
        result.error = file.LastError();
        return -1;
    }
    GEOM* const geom = GEOM_ReadObjFile(file, progress, &result);
    file.Close();
    if (!geom)
        return -1;

    const bool hasMaterials = geom->NumMaterials() > 0 || GEOM_MakeDefaultMaterial(geom) == 0;
    if (!hasMaterials || GEOM_PurgeUnusedMaterials(geom) != 0)
    {
        GEOM_Free(geom);
        result.error = "out of memory";
        return -1;
    }
    const int status = SetGeom(geom, false);
    mGeomShared = false; // nobody else knows this record
    if (status != 0)
        result.error = "out of memory";
    return status;
}
