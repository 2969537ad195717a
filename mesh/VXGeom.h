// VelmarBase: mesh processing.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"
#include "base/BMap.h"
#include "base/BPath.h"
#include "base/GEOM_Obj.h"
#include "base/MAT.h"
#include "mesh/VXEdgeList.h"
#include "mesh/VXSortedData.h"
#include "mesh/VXSubdivScheme.h"
#include "mesh/VXVertSmoothingList.h"

#include <cstdint>
#include <span>

/// Arrays of the caller that crease generation fills instead of the mesh's own. All are memory handles; null where the
/// caller does not want the array. Grown as needed and owned by the caller.
struct EDGELIST
{
    VERTEX* verts = nullptr;             ///< positions: record vertices, then crease vertices
    VERTEX* vertNormals = nullptr;       ///< normals in the same order
    T_VERTEX* uvsPerVertex = nullptr;    ///< one UV per vertex and crease vertex
    std::int32_t* sets = nullptr;        ///< vertex index of each polygon corner, crease corners redirected
    std::int32_t* origIndices = nullptr; ///< original vertex of each crease vertex
    std::int32_t numVerts = 0;           ///< record vertices
    std::int32_t numCreaseVerts = 0;
};

class BBitArray;
struct VXSubdivCache;
#ifdef VELMAR_WITH_TEXT
class VXFTFace;
typedef struct FT_LibraryRec_* FT_Library; // FreeType's own names for its handles
typedef struct FT_GlyphSlotRec_* FT_GlyphSlot;
#endif
namespace vx
{
struct CreaseMesh;
}

/// Bits of the wrapper's flag word.
enum class GeomFlag : std::uint32_t
{
    EdgesClassified = 1u << 0,       ///< crease and smooth flags of the edges are valid
    UseCreaseAngle = 1u << 1,        ///< crease by angle; on at start
    GeomChanged = 1u << 2,           ///< the record changed since the last derivation
    UseExternalNormals = 1u << 3,    ///< normal arrays are the host's: never allocated, changed or emptied here
    DataSorted = 1u << 4,            ///< sorted drawing data is valid
    TransparentParts = 1u << 5,      ///< some drawn polygon has a transparent material
    UseExternalCreaseInfo = 1u << 6, ///< crease arrays are the host's
    GenerateCreases = 1u << 7,       ///< crease vertices are generated; on at start
    IncludesLines = 1u << 8,         ///< there are drawable lines
    IncludesPoints = 1u << 9,        ///< there are drawable points
    DebugCreaseVerts = 1u << 10,     ///< write the crease dump
};

/// Which side a mirrored selection is copied from. Other values select nothing.
enum E_MirrorDirection : std::int32_t
{
    kMirrorFromPlusX = 0,
    kMirrorFromMinusX = 1,
    kMirrorFromPlusY = 2,
    kMirrorFromMinusY = 3,
    kMirrorFromPlusZ = 4,
    kMirrorFromMinusZ = 5,
};

/// What mirroring copies across.
enum E_MirrorFlags : std::int32_t
{
    kMirrorAdd = 1,    ///< what is selected
    kMirrorRemove = 2, ///< what is not
};

/// A mesh record with all that is derived from it: edge list, normals, crease vertices, sorted drawing data, and a
/// cursor that reads polygons one at a time. The record is the truth; derived data is dropped when it changes.
///
/// Vertex numbering: 0 .. NumVerts(false)-1 are the record's vertices; the NumbCreaseVerts() indices after them are
/// crease vertices, copies along hard edges. Arrays "per vertex" below have NumVerts(true) entries.
///
/// One thread at a time. Arrays handed in through SetExternal... and SetPreMunge... are borrowed and never freed.
class VELMAR_EXPORT VXGeom
{
public:
    // --- Construction, ownership, sizes: VXGeom.cpp
    VXGeom() = default;
    explicit VXGeom(const GEOM* geom);   ///< owns a copy; the caller keeps its record
    explicit VXGeom(const VXGeom* geom); ///< takes no record: only a wrapper like any new one
    virtual ~VXGeom();

    /// Shallow: record and arrays are shared with the source afterwards, and only one of the two may be used and
    /// destroyed. The library never copies wrappers; Clone is the deep copy.
    VXGeom(const VXGeom& other) = default;
    VXGeom& operator=(const VXGeom& other) = default;

    /// Takes a record and derives edge list and normals; what was held and derived before is dropped.
    /// @param geom null empties the wrapper
    /// @param copy true: an owned copy is taken, also of the record already held; false: the record itself is held and
    ///             stays the caller's, and the record already held changes nothing
    /// @return 0, or -1 on failure: without a record when no copy could be made, else with what could be derived
    int SetGeom(GEOM* geom, bool copy);
    bool RebuildLists(); ///< after a change of topology: repairs, edge list and normals anew; false on failure
    GEOM* Geom() const { return mGeom; }
    bool GeomIsGeom(const GEOM* geom) const { return geom == mGeom; }
    GEOM* StealGeom(); ///< the record, forgotten here and not freed; what was derived from it is dropped
    void SetGeomShared(bool shared) { mGeomShared = shared; } ///< shared: the record is not freed here
    /// A new wrapper of the same record, copied or borrowed, with the same flags and crease angle, derived anew. Null
    /// on failure; a wrapper without a record gives one without a record.
    VXGeom* Clone(bool copyRecord) const;
    void Empty(); ///< empties the record and drops all that is derived from it; the record itself stays

    /// Gives the record its sizes: `verts` vertices, `polys` polygons, `corners` corners and `texVerts` texture
    /// vertices (as many texture corners as corners when there are any; 0 drops texture coordinates). An owned record
    /// is made when there is none. Both normal arrays, unless external, and TransformedVerts(), where present, get
    /// `verts` entries: passes that write per polygon size their array themselves. Edge list and creases are out of
    /// date afterwards: RebuildLists. @return 0, or -1 when memory ran out
    int SetSizeFor(int verts, int polys, int corners, int texVerts);

    int NumPolys() const { return mGeom ? mGeom->numPolys : 0; }
    int NumVerts(bool creased) const { return mGeom ? mGeom->numVerts + (creased ? mNumbCreaseVerts : 0) : 0; }
    int NumQuads() const { return mSorted[int(VXElementKind::Quads)].count; }
    std::size_t MemoryUsed() const; ///< bytes held by record and derived data, capacities included

    // --- Reading the record
    VERTEX* Verts() const { return mGeom ? mGeom->verts : nullptr; }
    VERTEX* Vertex(int i) const { return mGeom && mGeom->verts ? mGeom->verts + i : nullptr; } ///< unchecked index
    VERTEX* VertNormal(int i) const { return mVertNormals ? mVertNormals + i : nullptr; }      ///< unchecked index
    std::int32_t* Sets(bool creased) const; ///< vertex index per corner; creased: crease corners redirected
    ELEMENT* Polygon(int i) const { return mGeom ? mGeom->Poly(i) : nullptr; } ///< unchecked index
    int PolyLength(int i) const { return mGeom && i < mGeom->numPolys ? mGeom->Poly(i)->length : 0; }
    VERTEX* PolyNormal(int i) const { return mPolyNormals ? mPolyNormals + i : nullptr; }
    VERTEX* PolyCenter(int i) const { return mPolyCenters ? mPolyCenters + i : nullptr; }
    std::uint32_t PolySmoothingGroup(int i) const; ///< word 0 of the polygon's group bits; 0 out of range
    // What a subdivision left here: for each polygon of this mesh the one that it came from, -1 for a slot of our own
    // scheme that no quad takes; for each vertex of the mesh that was subdivided the one of this mesh that it became.
    BArray<int>& SubdivPolyRemapTable() { return mSubdivPolyRemapTable; }
    BArray<int>& SubdivVertRemapTable() { return mSubdivVertRemapTable; }
    bool PolyIncludesVertex(int poly, int vert) const; ///< vert: of the record
    bool EdgeIncludesVertex(int edge, int vert) const; ///< vert: of the record

    // --- Polygon cursor: VXGeomCursor.cpp
    void SetCurrentPoly(int i);     ///< out of range: no polygon is current
    int BeginPolyVertexLoop(int i); ///< makes polygon i current before its first corner; its length, 0 for none
    VERTEX* NextPolyVert();         ///< next corner's position; null after the last, and then starts over
    VERTEX* CurPolyVert() const;
    VERTEX* CurPolyVertNormalPerVert() const;
    VERTEX* CurPolyVertexColorPerVert() const;
    int CurPolyVertIndex() const; ///< vertex index of the current corner; -1 without one
    int CurPolyUVIndex() const;   ///< texture vertex index of the current corner; -1 without one
    bool CurPolyIsFace() const { return mCurPoly && mCurPoly->IsFace(); }
    bool CurPolyIsLine() const { return mCurPoly && mCurPoly->type == kElementLine; }
    bool CurPolyIsPoint() const { return mCurPoly && mCurPoly->type == kElementPoint; }
    bool CurPolyIsHidden() const { return mCurPoly && mCurPoly->IsHidden(); }
    int CurPolyMaterialIndex() const { return mCurPoly ? mCurPoly->material : 0; }
    void* CurrentPolyMaterial() const; ///< the host's VXMaterial, null without one
    VERTEX* CurPolyNormal() const { return mCurPoly ? PolyNormal(mCurPolyIndex) : nullptr; }
    T_VERTEX* CurPolyTVerts() const; ///< texture coordinate of the first corner; null without texture coordinates
    T_VERTEX* CurPolyTVertex(int corner) const;
    bool CurPolyTexCoords(float* u, float* v, int corner) const; ///< false, and (0, 0), without texture coordinates
    bool CurPolyVertTexCoord(float& u, float& v) const;          ///< of the current corner
    int CurPolyIndex() const { return mCurPolyIndex; }
    int CurPolyLength() const { return mCurPolyLength; }
    std::int32_t* PolySetStart() const { return mPolySetStart; }
    std::int32_t* PolyUVSetStart() const { return mPolyUVSetStart; }
    std::int32_t* PolyNormalSetStart() const { return mPolyNormalSetStart; }

    // --- Flags
    bool Flag(GeomFlag f) const { return (mFlags & std::uint32_t(f)) != 0; }
    void SetFlag(GeomFlag f, bool on) { mFlags = on ? mFlags | std::uint32_t(f) : mFlags & ~std::uint32_t(f); }
    std::uint32_t Flags() const { return mFlags; }
    bool EdgesClassified() const { return Flag(GeomFlag::EdgesClassified); }
    void SetEdgesClassified(bool on) { SetFlag(GeomFlag::EdgesClassified, on); }
    bool UseCreaseAngle() const { return Flag(GeomFlag::UseCreaseAngle); }
    void SetUseCreaseAngle(bool on) { SetFlag(GeomFlag::UseCreaseAngle, on); }
    bool GeomChanged() const { return Flag(GeomFlag::GeomChanged); }
    void SetGeomChanged(bool on) { SetFlag(GeomFlag::GeomChanged, on); }
    bool UseExternalNormals() const { return Flag(GeomFlag::UseExternalNormals); }
    void SetUseExternalNormals(bool on); ///< off also forgets the host's arrays, which may be no handles
    bool DataSorted() const { return Flag(GeomFlag::DataSorted); }
    void SetDataSorted(bool on) { SetFlag(GeomFlag::DataSorted, on); }
    bool TransparentParts() const { return Flag(GeomFlag::TransparentParts); }
    void SetTransparentParts(bool on) { SetFlag(GeomFlag::TransparentParts, on); }
    bool UseExternalCreaseInfo() const { return Flag(GeomFlag::UseExternalCreaseInfo); }
    void SetUseExternalCreaseInfo(bool on) { SetFlag(GeomFlag::UseExternalCreaseInfo, on); }
    bool GenerateCreases() const { return Flag(GeomFlag::GenerateCreases); }
    void SetGenerateCreases(bool on) { SetFlag(GeomFlag::GenerateCreases, on); }
    bool IncludesLines() const { return Flag(GeomFlag::IncludesLines); }
    void SetIncludesLines(bool on) { SetFlag(GeomFlag::IncludesLines, on); }
    bool IncludesPoints() const { return Flag(GeomFlag::IncludesPoints); }
    void SetIncludesPoints(bool on) { SetFlag(GeomFlag::IncludesPoints, on); }
    bool DebugCreaseVerts() const { return Flag(GeomFlag::DebugCreaseVerts); }
    void SetDebugCreaseVerts(bool on) { SetFlag(GeomFlag::DebugCreaseVerts, on); }

    // --- Edges: VXGeomEdges.cpp
    VXEdgeList& EdgeList() { return mEdgeList; }
    const VXEdgeList& EdgeList() const { return mEdgeList; }
    int BuildEdgeList();       ///< 0, or -1 without a record or when memory ran out
    void ClearEdgeSmoothing(); ///< drops all crease data

    /// Silhouette classification for a viewpoint in object space: sets FacingForward, BoundaryEdge and MtlBoundaryEdge
    /// of the edges. Unless normals are external, polygon normals become unnormalised Newell normals.
    void ComputeBackfacingToVertex(const VERTEX* viewpoint);

    /// The edge without AppFlagged whose midpoint is nearest to the point, the first of equals; -1 when there is none
    /// within about a million units.
    int FindClosestUnflaggedEdge(const VERTEX* point) const;

    // --- Normals: VXGeomNormals.cpp
    bool ComputeAllNormals(); ///< polygon and vertex normals (creases included); false when memory ran out
    int MakeVertexNormals(EDGELIST* unused = nullptr); ///< from the polygon normals; 0, or -1 without a record
    VERTEX* ComputeNonCreasedNormals();                ///< the vertex normals; null on failure
    /// Vertex normals with creases. @param normals, polyNormals arrays to use instead of the mesh's own, or null
    /// @param tangents compute tangents beside them, on a thread of their own, as VXSwitches::TangentsRequested() asks
    ///                 for too; neither does while VXEngine::TangentCalculationsEnabled() is off
    /// @return the vertex normals, null on failure
    VERTEX* ComputeCreasedNormals(VERTEX* normals = nullptr, VERTEX* polyNormals = nullptr, bool tangents = false);
    VERTEX* VertNormals() const { return mVertNormals; } ///< per vertex
    VERTEX* PolyNormals() const { return mPolyNormals; } ///< NumPolys() entries
    void CalculateWeldedNormals();
    VERTEX* WeldedNormals(
        bool compute = true); ///< per vertex: the normal it would have if coincident vertices were one
    void ClearWeldedNormals();
    VERTEX* PolyCenters() const { return mPolyCenters; }
    void ComputePolyCenters();
    void ComputePolyCentroids(VERTEX* out, T_VERTEX* texOut) const; ///< into the caller's arrays of NumPolys() entries
    void ClearPolyCenters();
    VXVertSmoothingList& VertSmoothingList() { return mVertSmoothingList; }
    const VXVertSmoothingList& VertSmoothingList() const { return mVertSmoothingList; }
    void BuildVertSmoothList();
    // The host's normals, with SetUseExternalNormals(true): before or after, an own array is freed. NumVerts(true) and
    // NumPolys() entries.
    void SetExternalVertexNormals(VERTEX* normals) { Lend(mVertNormals, mLentVertNormals, normals); }
    void SetExternalPolyNormals(VERTEX* normals) { Lend(mPolyNormals, mLentPolyNormals, normals); }
    void SetExternalVertexColors(VERTEX* colors) { mVertexColors = colors; }
    VERTEX* VertexColors() const { return mVertexColors; }

    // --- Creases: VXGeomCreases.cpp
    float CreaseAngle() const { return mCreaseAngle; } ///< degrees
    void SetCreaseAngle(float degrees) { mCreaseAngle = degrees; }
    int NumbCreaseVerts() const { return mNumbCreaseVerts; }
    std::int32_t* CreaseSets() const { return mCreaseSets; } ///< vertex index per corner, crease corners redirected
    T_VERTEX* UvsPerVertex() const { return mUvsPerVertex; } ///< per vertex
    std::int32_t OrigCreaseIndex(int k) const { return mOrigCreaseIndex[k]; } ///< record vertex of crease vertex k
    std::int32_t* OrigCreaseIndexTable() const { return mOrigCreaseIndex; }
    int OrigVertIndex(int i) const; ///< record vertex behind any vertex index; 0 when out of range

    /// Classifies edges as smooth or crease and gives every smooth sector around a vertex its own vertex, then computes
    /// normals. @param edges the caller's arrays to fill instead of the mesh's, or null  @return always false
    bool GenerateCreaseData(EDGELIST* edges = nullptr);
    void UpdateCreaseVerts(); ///< after the record's vertices moved: crease vertices follow
    /// Brings an array of record-vertex entries (a handle) to NumVerts(true) entries. @return the possibly moved handle
    VERTEX* UpdateArbVertArrayForCreases(VERTEX* array);
    void DumpCreaseData(EDGELIST* edges, double milliseconds); ///< a text file, when DebugCreaseVerts is on
    /// The host's own crease arrays: set them, SetUseExternalCreaseInfo(true) and SetEdgesClassified(true), or the next
    /// ComputeAllNormals replaces them. Own arrays are freed; the host's never are.
    void SetExternalCreaseSets(std::int32_t* sets) { Lend(mCreaseSets, mLentCreaseSets, sets); }
    void SetExternalOrigCreaseIndexes(std::int32_t* table) { Lend(mOrigCreaseIndex, mLentOrigCreaseIndex, table); }
    void SetExternalUvsPerVertex(T_VERTEX* uvs) { Lend(mUvsPerVertex, mLentUvsPerVertex, uvs); }
    void SetNumbCreaseVerts(int count) { mNumbCreaseVerts = count; }
    static bool ObeyNormals() { return mObeyNormals; } ///< corner normals of the record that differ make creases
    static void SetObeyNormals(bool obey) { mObeyNormals = obey; }
    /// How GenerateCreaseData finds the sectors. 0 (and any other value but 1 and 2) goes along the crease edges. 1 and
    /// 2 group the polygons around each vertex by CanGroupPolygons: 1 across the edges of the edge list, 2 also between
    /// the polygons at an edge that more than two share, where the list's pairs are accidental (each with the 16 before
    /// it). All set
    /// the same edge flags. On meshes without such edges they find the same sectors; crease vertices are then only
    /// numbered differently, along the creases in 0, vertex by vertex in 1 and 2.
    static int GenCreaseMethod() { return smGenCreaseMethod; }
    static void SetGenCreaseMethod(int method) { smGenCreaseMethod = method; }

    // --- Tangents: VXGeomTangents.cpp

    /// Tangents and binormals from positions and texture coordinates, at each vertex those of the last corner that uses
    /// it: nothing is averaged. Vertices without, and all crease vertices, get (1, 0, 0) and (0, 1, 0).
    /// @return 0, also without a record or when memory ran out; -1 when the record has no texture coordinates
    int ComputeTangents();
    // As many entries as there were vertices and crease vertices when they were computed; null until then, and again
    // when the lists are rebuilt.
    VERTEX* VertTangents() const { return mGeom ? mVertTangents : nullptr; }
    VERTEX* VertBinormals() const { return mGeom ? mVertBinormals : nullptr; }

    /// A frame at every record vertex from its normal and its newest edge: u = n x w, w = n x edge. Unit axes where
    /// a vertex has no edge. @param out NumVerts(false) entries, the caller's
    void ComputeVertLocalBases(BASIS3D* out, bool recomputeNormals, bool rebuildEdges);

    // Displacements of a vertex between object space and the frame (normal, tangent, binormal) of its snapshot, with a
    // scale per axis of object space. From tangent space, d stays as it is without a snapshot. To tangent space, the
    // snapshot must have been taken; a flat frame gives (0, 0, 0).
    void BasisTransformDeltaFromTangentSpace(int vert, float sx, float sy, float sz, VERTEX& d) const;
    void BasisTransformDeltaToTangentSpace(int vert, float sx, float sy, float sz, VERTEX& d) const;

    // --- Snapshots of the rest state, for posing: VXGeomSnapshots.cpp

    /// Copies positions, normals, tangents and binormals of the record's vertices to the snapshot. An array that is not
    /// there leaves zeroed entries.
    void SavePreMunge();
    /// Computes normals and tangents, makes every vertex's frame usable (see VXGeomSnapshots.cpp), and copies.
    void ComputeAndSavePreMunge();
    VERTEX* PreMungeVerts() const { return mPreMungeVerts.array; } ///< NumVerts(false) entries, as the next three
    VERTEX* PreMungeNormals() const { return mPreMungeNormals.array; }
    VERTEX* PreMungeTangents() const { return mPreMungeTangents.array; }
    VERTEX* PreMungeBinormals() const { return mPreMungeBinormals.array; }
    // The host's own snapshot, borrowed: SavePreMunge makes arrays of its own again.
    void SetPreMungeVerts(VERTEX* verts) { mPreMungeVerts.Lend(verts); }
    void SetPreMungeNormals(VERTEX* normals) { mPreMungeNormals.Lend(normals); }
    void SetPreMungeTangents(VERTEX* tangents) { mPreMungeTangents.Lend(tangents); }
    void SetPreMungeBinormals(VERTEX* binormals) { mPreMungeBinormals.Lend(binormals); }

    // --- Transforms, bounds, transformed vertices, welding: VXGeomTransforms.cpp
    void Center();
    void Scale(float factor);
    void Transform(const Mat44 m);                                 ///< into TransformedVerts(); the record is unchanged
    VERTEX* TransformedVerts() const { return mTransformedVerts; } ///< per vertex
    bool AllocTransformedVerts(); ///< gives it NumVerts(true) entries; false when memory ran out

    /// Lets an array of NumVerts(true) entries stand in for the record's vertices until the matching
    /// RestoreOrigVertArray. The record's access mutex is held in between, so other threads that do the same wait.
    /// Pairs may nest: the first saved array is the one that comes back, with the first restore. A null array
    /// only locks. In between the record must not be resized, replaced or stolen, and `verts` stays the caller's.
    void SetTemporaryVertArray(VERTEX* verts);
    void RestoreOrigVertArray();

    bool GetBounds(float* minX, float* minY, float* minZ, float* maxX, float* maxY, float* maxZ, float* midX,
                   float* midY, float* midZ) const; ///< false, and zeros, without a record
    void Weld(float tolerance); ///< merges vertices and derives everything anew; the tolerance stays set
    BArray<VERTEX>& RefPoints() { return mRefPoints; }
    void FillRefPoints(const VERTEX* points, int count); ///< null: count points, those that are new at the origin
    void FillRefPointsFromFloatBuffer(const float* xyz, int count); ///< the same from count packed triples

    // --- Materials: VXGeomMaterials.cpp
    int NumGeomMaterials() const { return mGeom ? mGeom->NumMaterials() : 0; }
    void* MaterialPointer(int i) const;    ///< the slot's VXMaterial, stored untyped; null out of range
    const char* MaterialName(int i) const; ///< null out of range
    void SetMaterialPointer(int i, void* material);
    bool VerifyGeomMaterials() const { return mGeom != nullptr; }
    /// Gives `to` the material pointers of `from`, slot by slot where both have one.
    static void CopyMaterialPointersSynced(const VXGeom* from, VXGeom* to);

    // --- Grouping: VXGeomGroups.cpp

    /// Takes over materials (the names of their files too) and named groups of a mesh with the same polygons. @return
    /// 0; -1, with nothing changed, when a mesh is missing, the polygon counts differ or memory ran out
    int CopyGroupsAndMaterials(const VXGeom* source);
    /// Puts every polygon into the named groups of the source polygon whose centre is nearest, the first of equals.
    /// @return 0, or -1 when a mesh is missing or memory ran out
    int CreateGroupsByProximity(const VXGeom* source);

    /// One corner of a polygon, as seen from the vertex that it shares with other polygons.
    struct PolyLineVert
    {
        std::int32_t poly = -1;
        std::int32_t vert = -1;              ///< of the record
        std::uint32_t smoothing = 0;         ///< key that must match: the polygon's smoothing word
        std::int32_t normals[2] = {0, 0};    ///< corner normals of the record; 0 also means none
        std::int32_t texVerts[2] = {-1, -1}; ///< texture vertices, -1 for none
    };

    /// Whether two polygons that meet may share one vertex normal and texture vertex.
    /// @param split    out: the vertex must be split  @param canShare out: their smoothing keys match
    /// @param uvSplit  out: texture coordinates differ
    bool CanGroupPolygons(const PolyLineVert& a, const PolyLineVert& b, bool& split, bool& canShare,
                          bool& uvSplit) const;
    /// Whether a corner can join those already in a list: some edge at its vertex leads from its polygon to the polygon
    /// of one of them, and the two sides of that edge can be grouped.
    bool WillGroupPolygons(const PolyLineVert& corner, const BArray<PolyLineVert>& group) const;

    // --- Selections: VXGeomSelection.cpp
    // Polygons are selected by a named group, vertices by bits. Each call is one step, whatever the order of elements;
    // it needs the edge list. A group that does not exist, or memory that ran out, leaves everything as it is. Bits
    // beyond the mesh are ignored, missing ones are clear.

    void PolyGroupAddOrRemoveWithBitArray(const char* group, bool remove, const BBitArray& polys);
    void PolyGroupGrowSelection(const char* group);           ///< by all polygons that share a vertex
    void PolyGroupShrinkSelection(const char* group);         ///< by those at unselected ones; borders take nothing
    void PolyGroupGrowSelectionEdgeLoop(const char* group);   ///< strips, at their ends
    void PolyGroupShrinkSelectionEdgeLoop(const char* group); ///< strips, at their ends; lone polygons go too
    /// Copies membership across a coordinate plane, by the nearest polygon centre on the source side.
    /// @param flags E_MirrorFlags
    void PolyGroupMirrorSelection(const char* group, E_MirrorDirection direction, std::int32_t flags);

    void VertexGroupGrowSelection(BBitArray& verts) const;
    void VertexGroupShrinkSelection(BBitArray& verts) const;
    void VertexGroupGrowSelectionEdgeLoop(BBitArray& verts) const;
    void VertexGroupShrinkSelectionEdgeLoop(BBitArray& verts) const; ///< a lone vertex stays
    void VertexGroupMirrorSelection(BBitArray& verts, E_MirrorDirection direction, std::int32_t flags) const;
    /// Selects the vertices of a group's polygons, hidden ones left out. @param verts out, NumVerts(false) bits
    /// @return false, and no bit set, when the mesh, the group or memory is missing
    bool SetVertGroupFromPolyGroup(BBitArray& verts, const char* group) const;

    // --- Subdivision: VXGeomSubdivide.cpp (our own scheme), VXGeomOpenSubdiv.cpp (the adapter)

    /// One Catmull-Clark step into `dest`, whose contents are replaced; every polygon of n corners becomes n quads.
    /// Border vertices never move, and crease vertices stay where they are. Quads are of no group. Lines become quads
    /// along the line, one for each edge; slots that polygons with fewer edges than corners leave over are empty
    /// polygons at the end, of parent -1. Children of polygons without texture coordinates have texture runs of length
    /// 0. Needs this mesh's edge list. Nothing without a record, or when dest is null, this mesh or a wrapper of the
    /// same record. When memory or numbers of 32 bits run out, dest is empty.
    void SubdivideCatmullClark(VXGeom* dest);
    /// The mesh refined uniformly to `level` (1 to 15) into `dest`, whose contents are replaced: positions and texture
    /// coordinates, with materials, groups, types and flags of the parents, and derived data as in any other mesh.
    ///
    /// The refiner is kept here. A later call with the same level, vertex count and polygon count takes it that only
    /// positions have changed: they alone are interpolated anew and copied, with the same result, and normals are left
    /// to the caller. After any other change of the polygons or of texture coordinates ask for a rebuild.
    /// @param unused ignored
    /// @return 0, also for a null dest. -1, with dest as it was: a polygon that is no face or has fewer than three
    /// corners, an index out of range, a level out of range, dest being this mesh, more than memory or 32 bits hold,
    /// or what OpenSubdiv refuses (more than 32,767 corners, or faces at a vertex); and always without it
    int SubdivideOpenSubDiv(VXGeom* dest, int level, E_SubdivScheme scheme, bool forceRebuild, bool unused = false);
    void ClearSubdiv(); ///< drops the kept refiner and its buffers; so does whatever replaces the record

    // --- Sorted drawing data: VXGeomSort.cpp

    /// Sorts what is drawn (not hidden, at least two corners, faces at least three) by kind and material. Afterwards
    /// DataSorted() is true; when memory ran out it is false and every bucket empty.
    void SortGeomData();
    const VXSortedBucket& Sorted(VXElementKind kind) const { return mSorted[int(kind)]; }
    void ClearSortedData();

#ifdef VELMAR_WITH_TEXT
    // --- Text: text/VXGeomText.cpp; FreeType itself: text/VXFTFace.cpp
    // Meshes of triangles in the plane z = 0, counter-clockwise, smoothing off. 4608 font units become `size` mesh
    // units, whatever the units per em.

    /// Sets FreeType up and registers the fonts of the search folders; nothing when it is set up already. Done by the
    /// builders themselves when nobody did it before.
    static void SetupFreeType();
    static void TearDownFreeType();                        ///< all faces go with it
    static FT_Library* FTLibrary() { return smFTLibrary; } ///< null when FreeType is not set up

    /// The mesh of one character, without normals or edges. No polygons for a glyph that is no outline or has no area,
    /// a size that is 0 or not finite, and a face without outline sizes; what the font lacks is its missing glyph.
    /// @param slot  out, may be null: the face's glyph slot, for advance and bearings; null when nothing could be built
    void BuildCharGlyph(unsigned int code, VXFTFace* face, float size, FT_GlyphSlot* slot, const char* material);
    /// The mesh of a text with line breaks (CR, LF or both) and kerning, edges and normals included; flat as it is, it
    /// has no creases. Each glyph is tessellated once, so a page costs little more than its distinct glyphs. Without
    /// polygons where BuildCharGlyph builds none; emptied when the text is not UTF-8 or memory ran out.
    /// @param twoSided   with a copy that faces the other way, 0.0001 behind
    /// @param leftAlign  the mesh starts at x = 0 instead of the first glyph's origin
    /// @param glyphEnds  out, may be null: for each glyph in order the number of front polygons up to its end
    void BuildStrGlyphs(const char* utf8, VXFTFace* face, float size, const char* material, bool twoSided,
                        bool leftAlign, BArray<std::int32_t>* glyphEnds = nullptr);
    static bool UnscaledKerning() { return smUnscaledKerning; }
    /// Off, as at start: pairs are kerned by what FreeType gives at 72 pixels per em, taken for font units, which draws
    /// them too close. On: by the font's own distances.
    static void SetUnscaledKerning(bool on) { smUnscaledKerning = on; }
#endif

    // --- Files: VXGeom.cpp
    /// Reads a Wavefront file, plain or gzip. @return 0, or -1; `report` says why
    int ReadWavefront(const char* path, GEOM_ProgressProc progress = nullptr, GEOM_ReadReport* report = nullptr);

private:
    void DropDerived(); // what no rebuild of edges and normals replaces by itself
    void DropEdges();
    bool MakeRefiner(); // OpenSubdiv, in the order of its steps
    bool IsRefinedBy(const VXSubdivCache& cache) const;
    void TakeRefinedPositions(const VXSubdivCache& cache);
    bool BuildRefined(VXGeom& dest);
    bool FillUVs();
    bool DeriveRefined();
    void TakeRefined(VXGeom& fresh);
    std::size_t SubdivMemoryUsed() const;
    bool FillSortedData(); // false when memory ran out
    void RefreshSilhouetteFlags();
    void PutVertsBack(); // ends the stand-in of a temporary vertex array
    /// The host's array takes the place of what was held; that is freed when it is ours.
    template <class T>
    static void Lend(T*& held, T*& lent, T* hostArray)
    {
        if (held != lent && held != hostArray)
            MEM_Free(held);
        held = lent = hostArray;
    }
    /// One array of the snapshot: ours, or the host's.
    void Hold(GEOM* geom, bool shared); // instead of what was held, with nothing derived
    struct Snapshot
    {
        VERTEX* array = nullptr;
        bool lent = false;
        void Lend(VERTEX* hostArray);
        void Drop();                                                                 // the host's stays
        bool Save(const VERTEX* source, std::size_t sourceCount, std::size_t count); // false when memory ran out
    };
    const GEOM_TexPoly* CurTexPoly(int corner) const;
    void DropTangents();
    void DropSnapshot();
    void RepairFrames();
    void FollowPolyRecords(); // the cursor, after the records have moved
    bool WantsCreases() const;
    bool HasAllPolyNormals() const;
    bool ComputePlainTogether();
    void SumCreasedNormals(const VERTEX* polyNormals, std::span<VERTEX> sums);
    void SmoothAcross(const VXEdge& edge);   // puts an edge's polygons on the smoothing list
    bool FillSubdivided(VXGeom& dest) const; // record and remap tables, nothing derived; false when memory ran out
    bool TakeMaterials(const GEOM& from);    // a table of materials, into the record; false when memory ran out
    bool FinishSubdivided();                 // after the record was filled by a scheme: false when memory ran out
    bool SplitCreases(EDGELIST* caller);     // classifies and splits, without normals; false when memory ran out
    bool FillCreaseData(EDGELIST* caller);   // the part of it that needs memory
    bool AllocateCreaseMemory();             // the corners, not redirected yet
    unsigned GroupingDifferences(const PolyLineVert& a, const PolyLineVert& b) const;
    PolyLineVert SideOf(const VXEdge& edge, bool second) const; // with the corners at both ends
    bool SplitSectors(const vx::CreaseMesh& mesh, BArray<std::int32_t>& creases, BArray<std::int32_t>& originals,
                      BArray<std::uint8_t>& split);
    bool ClassifyByGrouping(BArray<std::int32_t>& creases);
    bool SplitByGrouping(const vx::CreaseMesh& mesh, std::span<const std::int32_t> creases,
                         BArray<std::int32_t>& originals, BArray<std::uint8_t>& split);
    bool GenerateCreaseData_AddPolyVert(std::int32_t corner, std::int32_t group, bool keepsVertex,
                                        BMapIntToInt& vertOfGroup, BArray<std::int32_t>& originals);
    void DropCreaseData();
    void ReleaseCreaseArrays();

    GEOM* mGeom = nullptr; ///< owned unless mGeomShared
    ELEMENT* mCurPoly = nullptr;
    GEOM_TexPoly* mCurTexPoly = nullptr; ///< null when the current polygon has no texture coordinates
    VERTEX* mSavedVerts = nullptr;       ///< the record's own vertices while a temporary array stands in
    VERTEX* mTransformedVerts = nullptr;
    VERTEX* mVertNormals = nullptr;     ///< ours, or the same as mLentVertNormals
    VERTEX* mPolyNormals = nullptr;     ///< ours, or the same as mLentPolyNormals
    VERTEX* mLentVertNormals = nullptr; ///< the host's
    VERTEX* mLentPolyNormals = nullptr; ///< the host's
    VERTEX* mVertTangents = nullptr;
    VERTEX* mVertBinormals = nullptr;
    Snapshot mPreMungeVerts, mPreMungeNormals, mPreMungeTangents, mPreMungeBinormals;
    VERTEX* mPolyCenters = nullptr;
    VERTEX* mVertexColors = nullptr; ///< borrowed
    BArray<VERTEX> mRefPoints;
    VERTEX* mWeldedNormals = nullptr;
    std::int32_t* mPolySetStart = nullptr;
    std::int32_t* mPolyNormalSetStart = nullptr;
    std::int32_t* mPolyUVSetStart = nullptr;
    std::int32_t mCurPolyIndex = 0;
    std::uint32_t mFlags = std::uint32_t(GeomFlag::UseCreaseAngle) | std::uint32_t(GeomFlag::GenerateCreases);
    float mCreaseAngle = 80; ///< degrees
    VXEdgeList mEdgeList;
    std::int32_t mCurCorner = -1; ///< -1: loop not started or ended
    std::int32_t mCurPolyLength = 0;
    bool mGeomShared = false;
    VXSubdivCache* mSubdivCache = nullptr; ///< owned; null until OpenSubdiv was used
    std::uint64_t mRefinedBy = 0;          ///< number of the refiner whose last level this mesh is; 0 for none
    BArray<int> mSubdivPolyRemapTable;
    BArray<int> mSubdivVertRemapTable;
    VXVertSmoothingList mVertSmoothingList;
    VXSortedBucket mSorted[kNumElementKinds];
    T_VERTEX* mUvsPerVertex = nullptr; ///< ours, or the same as mLentUvsPerVertex; likewise the next two
    std::int32_t* mCreaseSets = nullptr;
    std::int32_t* mOrigCreaseIndex = nullptr;
    T_VERTEX* mLentUvsPerVertex = nullptr;        ///< the host's
    std::int32_t* mLentCreaseSets = nullptr;      ///< the host's
    std::int32_t* mLentOrigCreaseIndex = nullptr; ///< the host's
    std::int32_t mNumbCreaseVerts = 0;
    BArray<std::int32_t> mSeamEdges; ///< edges both crease and smooth, as the last generation of creases left them

    static bool mObeyNormals;
    static int smGenCreaseMethod;
#ifdef VELMAR_WITH_TEXT
    void EmptyForText();
    bool TakeText(GEOM* record, const char* material, VXEdgeList& edges, int sides);

    static FT_Library* smFTLibrary; ///< a cell of its own; null when FreeType is not set up
    static bool smUnscaledKerning;
#endif
};
