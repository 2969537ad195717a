// VelmarBase: engine and scene.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"
#include "base/BString.h"
#include "base/MAT.h"
#include "engine/VXBBox.h"
#include "material/FlagWord.h"
#include "material/VXMaterial.h"

#include <cstdint>

class VXGeom;
class VXObjectDelegate;
struct EDGELIST;

/// Bits of an object's flag word.
enum class ObjectFlag : std::uint32_t
{
    Changed = 1u << 0,
    Visible = 1u << 1,         ///< on in a new object
    SilhouetteDirty = 1u << 2, ///< the silhouette edges are stale
    CastsShadow = 1u << 3,
    TypeCurve = 1u << 4,
    IgnoreZBufferEdges = 1u << 5, ///< outlines are drawn without lighting
    TypeHair = 1u << 6,
    WorldvertsExternalSet = 1u << 7, ///< the host keeps world positions of its own
    TypeCamera = 1u << 8,
    TypeLight = 1u << 9,
    SubdivDirty = 1u << 10,  ///< the subdivision levels are stale; on in a new object
    UsesTangents = 1u << 11, ///< subdivision levels keep snapshots with tangents
    GroupMember = 1u << 12,  ///< belongs to the group that the grouping tool edits
};

inline constexpr FlagRow<ObjectFlag> kObjectFlags[] = {
    {ObjectFlag::Changed, "changed"},
    {ObjectFlag::Visible, "visible"},
    {ObjectFlag::SilhouetteDirty, "silhouette-dirty"},
    {ObjectFlag::CastsShadow, "casts-shadow"},
    {ObjectFlag::TypeCurve, "type-curve"},
    {ObjectFlag::IgnoreZBufferEdges, "ignore-z-buffer-edges"},
    {ObjectFlag::TypeHair, "type-hair"},
    {ObjectFlag::WorldvertsExternalSet, "worldverts-external-set"},
    {ObjectFlag::TypeCamera, "type-camera"},
    {ObjectFlag::TypeLight, "type-light"},
    {ObjectFlag::SubdivDirty, "subdiv-dirty"},
    {ObjectFlag::UsesTangents, "uses-tangents"},
    {ObjectFlag::GroupMember, "group-member"},
};
static_assert(FlagMask(kObjectFlags) == 0x1FFF && FlagsInOrder(kObjectFlags));

/// Which of an object's two geometries is drawn. Drawing walks them from the last to the first.
enum E_DrawGeom : int
{
    kDrawGeomSurface = 0, ///< the mesh of the current subdivision level, from level 1 on
    kDrawGeomControl = 1, ///< the control mesh
};

/// One drawable thing in the scene: a control mesh, the chain of its subdivided meshes, a draw style, a transform,
/// names and display-list handles for the draw engine.
///
/// Owns the subdivision meshes always, and the control mesh unless it was attached as borrowed. The scene that the
/// object is added to owns the object; the object does not take itself out of the scene. Drawing thread only.
class VELMAR_EXPORT VXObject
{
public:
    // --- Life, names, flags: VXObject.cpp
    VXObject();
    virtual ~VXObject();
    VXObject(const VXObject&) = delete;
    VXObject& operator=(const VXObject&) = delete;

    const BString& InternalName() const { return mInternalName; } ///< what scenes look up
    void SetInternalName(const char* name) { mInternalName = name; }
    const BString& ExternalName() const { return mExternalName; } ///< what users read
    void SetExternalName(const char* name) { mExternalName = name; }
    VXMaterial* DefaultMaterial() { return &mDefaultMaterial; } ///< the draw style, never null
    const VXMaterial* DefaultMaterial() const { return &mDefaultMaterial; }
    VXObjectDelegate* Delegate() const { return mDelegate; }
    void SetDelegate(VXObjectDelegate* delegate) { mDelegate = delegate; } ///< not owned
    VXObject* ParentObject() const { return mParentObject; }
    void SetParentObject(VXObject* parent) { mParentObject = parent; } ///< not owned
    bool CollisionOn() const { return mCollisionOn; }
    void SetCollisionOn(bool on) { mCollisionOn = on; }
    std::uint32_t Flags() const { return mFlags.Word(); }
    bool Changed() const { return mFlags.Get(ObjectFlag::Changed); }
    /// On: display lists and silhouette are stale too, and the current scene is changed and needs its shadows again.
    /// Off: the flag alone.
    void SetChanged(bool on);
    bool Visible() const; ///< the flag, and no other object is isolated
    void SetVisible(bool on) { mFlags.Set(ObjectFlag::Visible, on); }
    bool SilhouetteDirty() const { return mFlags.Get(ObjectFlag::SilhouetteDirty); }
    void SetSilhouetteDirty(bool on) { mFlags.Set(ObjectFlag::SilhouetteDirty, on); }
    bool CastsShadow() const { return mFlags.Get(ObjectFlag::CastsShadow); }
    void SetCastsShadow(bool on) { mFlags.Set(ObjectFlag::CastsShadow, on); }
    bool TypeCurve() const { return mFlags.Get(ObjectFlag::TypeCurve); }
    void SetTypeCurve(bool on) { mFlags.Set(ObjectFlag::TypeCurve, on); }
    bool IgnoreZBufferEdges() const { return mFlags.Get(ObjectFlag::IgnoreZBufferEdges); }
    void SetIgnoreZBufferEdges(bool on); ///< off clears every other flag and keeps this one's value; intended
    bool TypeHair() const { return mFlags.Get(ObjectFlag::TypeHair); }
    void SetTypeHair(bool on) { mFlags.Set(ObjectFlag::TypeHair, on); }
    bool WorldvertsExternalSet() const { return mFlags.Get(ObjectFlag::WorldvertsExternalSet); }
    void SetWorldvertsExternalSet(bool on) { mFlags.Set(ObjectFlag::WorldvertsExternalSet, on); }
    bool TypeCamera() const { return mFlags.Get(ObjectFlag::TypeCamera); }
    void SetTypeCamera(bool on) { mFlags.Set(ObjectFlag::TypeCamera, on); }
    bool TypeLight() const { return mFlags.Get(ObjectFlag::TypeLight); }
    void SetTypeLight(bool on) { mFlags.Set(ObjectFlag::TypeLight, on); }
    bool SubdivDirty() const { return mFlags.Get(ObjectFlag::SubdivDirty); }
    void SetSubdivDirty(bool on) { mFlags.Set(ObjectFlag::SubdivDirty, on); }
    bool UsesTangents() const { return mFlags.Get(ObjectFlag::UsesTangents); }
    void SetUsesTangents(bool on) { mFlags.Set(ObjectFlag::UsesTangents, on); }
    bool GroupMember() const { return mFlags.Get(ObjectFlag::GroupMember); }
    void SetGroupMember(bool on) { mFlags.Set(ObjectFlag::GroupMember, on); }

    // --- Placement
    Mat44& GetTransform() { return mTransform; } ///< object to world
    const Mat44& GetTransform() const { return mTransform; }
    void SetTransform(const Mat44 m) { MAT_Copy(m, mTransform); }
    Mat44& GetBBoxTransform() { return mBBoxTransform; }
    const Mat44& GetBBoxTransform() const { return mBBoxTransform; }
    void SetBBoxTransform(const Mat44 m) { MAT_Copy(m, mBBoxTransform); }
    VERTEX& Origin() { return mOrigin; }
    const VERTEX& Origin() const { return mOrigin; }
    VXBBox& BoundingBox() { return mBoundingBox; } ///< object space; filled by VXScene::UpdateDerivedData or the host
    const VXBBox& BoundingBox() const { return mBoundingBox; }
    /// Bounds of the control mesh in object space. Outputs may be null. False, and outputs as they were, without one.
    bool GetBounds(float* minX, float* minY, float* minZ, float* maxX, float* maxY, float* maxZ, float* midX,
                   float* midY, float* midZ) const;

    // --- Geometries: VXObjectGeoms.cpp
    VXGeom* Geom() const { return mGeom; } ///< the control mesh
    VXGeom* ControlMeshGeom() const { return mGeom; }
    bool GeomBorrowed() const { return mGeom && mGeomBorrowed; }

    /// Attaches a control mesh in place of the present one, which is deleted when it was owned.
    /// @param clone true: an owned copy is attached; false: the mesh itself, borrowed and never deleted here
    /// @param unused no meaning  @return 0 (also when the mesh is attached already), -1 when the copy failed
    int SetGeom(VXGeom* geom, bool clone, bool unused = false);

    std::int64_t NumSubdivGeoms() const { return mSubdivGeoms.Count(); }
    VXGeom* SubdivGeom(int level) const; ///< null out of range
    /// Stores an owned mesh in a slot that exists, deleting the one before; the current scene is changed. Always 0.
    int SetSubdivGeom(int level, VXGeom* geom);
    int CurSubDivLevel() const { return mCurSubDivLevel; }
    void SetCurSubDivLevel(int level);
    VXGeom* CurSubdivGeom(bool controlAtZero) const; ///< of the current level; null when the list is too short
    int NumbDrawGeoms() const { return 2; }

    /// The mesh to draw under the visibility switches of the current scene, which must exist. The surface is null at
    /// level 0, where the control mesh is all there is.
    VXGeom* DrawGeom(E_DrawGeom kind) const;
    bool WantsLinesOnly(E_DrawGeom kind) const; ///< the control mesh of a subdivided object shows its wires alone
    void Weld(float tolerance);                 ///< of the control mesh

    // --- Subdivision: VXObjectSubdivide.cpp

    /// Rebuilds the levels when SubdivDirty is on, and clears it. A failure is told to the current scene's delegate.
    void Subdivide();

    /// Brings levels 0 to the current one up to date with the control mesh. Level 0 is a copy of the control mesh that
    /// delegates may deform; when its vertex or polygon count no longer fits, all levels are dropped and made anew.
    /// A control mesh with the same counts but other polygons, flags, groups or texture coordinates is not noticed:
    /// ClearSubdivStructures first. The scheme is OpenSubdiv's where VXSwitches::OpenSubdivOn, else our own.
    /// @return 0; -2 without a control mesh or when a level could not be made; otherwise the scheme's failure. -1 from
    ///         the scheme keeps that level's mesh as it is (a delegate then deforms what it has deformed before), goes
    ///         on with the next, and is returned at the end. -1 also above level 15, and then nothing is built
    int RebuildSubDiv();
    void ClearSubdivStructures(); ///< deletes all levels

    // --- Preparation: VXObjectPrepare.cpp. Every Prepare is followed by its End, whatever it answered.
    int PrepareForDrawing();
    int PrepareForPicking();
    void EndDrawing();
    void EndPicking();
    int PreparationDepth() const { return mPreparationDepth; }

    /// Generates crease data of the control mesh into the caller's arrays, prepared like for drawing.
    /// @return true without a control mesh, when the delegate refused, and when generation went well
    bool PrepareCreaseEdgesFromDisplayList(EDGELIST* edges);

    /// Finds the silhouette edges as seen through object transform times `mat`: boundary and open edges that face the
    /// viewer. A current scene must exist, or nothing happens.
    void ComputeSilhouette(const Mat44 mat);
    BArray<int>& SilhouetteEdges() { return mSilhouetteEdges; } ///< edge indices of the drawn mesh
    const BArray<int>& SilhouetteEdges() const { return mSilhouetteEdges; }

    // --- Display lists of the draw engine, for draw geometry 0 and 1; any other reads 0 and false and is ignored
    std::uint32_t PolyDisplayListID(int drawGeom) const;
    void SetPolyDisplayListID(std::uint32_t id, int drawGeom);
    bool PolyDisplayListReady(int drawGeom) const;
    void SetPolyDisplayListReady(bool ready, int drawGeom);
    std::uint32_t LineDisplayListID(int drawGeom) const;
    void SetLineDisplayListID(std::uint32_t id, int drawGeom);
    bool LineDisplayListReady(int drawGeom) const;
    void SetLineDisplayListReady(bool ready, int drawGeom);

private:
    struct DisplayList
    {
        std::uint32_t id = 0;
        bool ready = false;
    };

    bool MakeLevel(int level, const VXGeom* source);
    void RefreshLevelZero();
    int RunScheme(VXGeom* source, VXGeom* destination);
    void FinishLevel(int level, bool subdivided);
    void DeformLevel(int level);

    bool mGeomBorrowed = false;
    bool mCollisionOn = false;
    VXGeom* mGeom = nullptr;
    BArray<VXGeom*> mSubdivGeoms; ///< owned; index is the level
    VXBBox mBoundingBox;
    Mat44 mBBoxTransform;
    Mat44 mTransform;
    VERTEX mOrigin;
    BString mInternalName;
    BString mExternalName;
    DisplayList mPolyLists[2]; ///< by draw geometry
    DisplayList mLineLists[2];
    FlagWord<ObjectFlag> mFlags = {ObjectFlag::Visible, ObjectFlag::SubdivDirty};
    int mCurSubDivLevel = 0;
    VXObjectDelegate* mDelegate = nullptr;
    VXMaterial mDefaultMaterial;
    VXObject* mParentObject = nullptr;
    BArray<int> mSilhouetteEdges;
    int mPreparationDepth = 0;
};
