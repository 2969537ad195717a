// VelmarBase: engine and scene.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"
#include "base/BMutex.h"
#include "base/MAT.h"
#include "engine/BRenderEngines.h"
#include "engine/VXBBox.h"
#include "material/FlagWord.h"
#include "material/VXMaterial.h"

#include <cstdint>

class BThread;
class VXCamera;
class VXGeom;
class VXLight;
class VXObject;
class VXObject2D;
class VXSceneDelegate;
class VXSceneDrawEngine;

/// Bits of a scene's flag word.
enum class SceneFlag : std::uint32_t
{
    Changed = 1u << 0,
    PickPolys = 1u << 1,
    PickEdges = 1u << 2,
    PickVerts = 1u << 3,
    PickObject = 1u << 4, ///< on in a new scene
    PickAxes = 1u << 5,
    PickShadows = 1u << 6,
    ControlMeshVisible = 1u << 7, ///< on in a new scene
    SurfaceVisible = 1u << 8,     ///< on in a new scene; subdivided meshes are drawn
    DrawDropShadows = 1u << 9,
    DepthCueOn = 1u << 10,
    CameraTrackingOn = 1u << 11, ///< the view is being moved
    NeedsShadowRedraw = 1u << 12,
    PickZObjects = 1u << 13, ///< picking sees back faces of objects
};

inline constexpr FlagRow<SceneFlag> kSceneFlags[] = {
    {SceneFlag::Changed, "changed"},
    {SceneFlag::PickPolys, "pick-polys"},
    {SceneFlag::PickEdges, "pick-edges"},
    {SceneFlag::PickVerts, "pick-verts"},
    {SceneFlag::PickObject, "pick-object"},
    {SceneFlag::PickAxes, "pick-axes"},
    {SceneFlag::PickShadows, "pick-shadows"},
    {SceneFlag::ControlMeshVisible, "control-mesh-visible"},
    {SceneFlag::SurfaceVisible, "surface-visible"},
    {SceneFlag::DrawDropShadows, "draw-drop-shadows"},
    {SceneFlag::DepthCueOn, "depth-cue-on"},
    {SceneFlag::CameraTrackingOn, "camera-tracking-on"},
    {SceneFlag::NeedsShadowRedraw, "needs-shadow-redraw"},
    {SceneFlag::PickZObjects, "pick-z-objects"},
};
static_assert(FlagMask(kSceneFlags) == 0x3FFF && FlagsInOrder(kSceneFlags));

/// The container of everything that is drawn, the scene-wide draw style and pick state, and the entry of a frame.
///
/// Owns its objects, lights, 2D objects and cameras; what a Remove operation takes out belongs to the caller. Owns
/// neither materials nor the draw engine nor the delegate. Every structural change (anything added to or taken from the
/// lists of objects, lights and 2D objects, materials removed, welding) marks the scene changed and all shadows dirty.
///
/// A new scene becomes the process-wide current scene, which materials, objects and meshes ask instead of holding one.
/// All operations belong to the drawing thread; list changes during a frame are the host's to prevent.
class VELMAR_EXPORT VXScene
{
public:
    using Proc = int (*)(VXScene* scene, void* data);

    /// Number of tones that toon shading shows. Values without a name here are the host's to define.
    enum ToonToneStyleID : std::int32_t
    {
        kToonOneTone = 1,
        kToonTwoTones = 2,
        kToonThreeTones = 3,
        kToonFourTones = 4,
    };

    // --- Life, current scene: VXScene.cpp
    VXScene();
    virtual ~VXScene();
    VXScene(const VXScene&) = delete;
    VXScene& operator=(const VXScene&) = delete;
    static VXScene* CurrentScene() { return mCurrentScene; }
    static void SetCurrentScene(VXScene* scene) { mCurrentScene = scene; }

    // --- Lists: VXSceneLists.cpp. Add answers 0, or -1 for null; Remove answers 0, or -1 for what is not there. When
    // memory runs out while a list grows, its entries are lost (not deleted) and the answer is still 0.
    int AddObject(const VXObject* object); ///< the scene owns it from now on, const or not; likewise below
    int RemoveObject(const VXObject* object);
    void ClearObjects(); ///< deletes them; likewise below
    std::int64_t NumObjects() const { return mObjects.Count(); }
    VXObject* Object(int i) const { return mObjects[i]; } ///< i in 0..NumObjects()-1; likewise below

    int AddCamera(const VXCamera* camera); ///< cameras live as long as the scene; no structural change
    std::int64_t NumCameras() const { return mCameras.Count(); }
    VXCamera* Camera(int i) const { return mCameras[i]; }

    int AddMaterial(VXMaterial* material);     ///< not owned; names may repeat; no structural change
    void RemoveMaterial(VXMaterial* material); ///< nothing when it is not there
    void ClearMaterials();                     ///< deletes none
    std::int64_t NumMaterials() const { return mMaterials.Count(); }
    VXMaterial* Material(int i) const { return mMaterials[i]; }
    BArray<VXMaterial*>& Materials() { return mMaterials; }

    int AddLight(const VXLight* light);
    int RemoveLight(const VXLight* light); ///< the draw engine is told
    void ClearLights();
    std::int64_t NumLights() const { return mLights.Count(); }
    VXLight* Light(int i) const { return mLights[i]; }

    int AddObject2D(const VXObject2D* object);
    int RemoveObject2D(const VXObject2D* object);
    void ClearObject2Ds();
    std::int64_t NumObject2Ds() const { return mObject2Ds.Count(); }
    VXObject2D* Object2D(int i) const { return mObject2Ds[i]; }

    void ClearScene(); ///< everything but the cameras

    /// The first material of that internal name. With `create`, one is made when there is none and appended to the
    /// list; nobody deletes it unless the host does. Null for a null or empty name.
    VXMaterial* FindMaterial(const char* name, bool create);
    VXObject* ObjectByInternalName(const char* name) const; ///< the first; null for none; `name` must not be null

    // --- Building: VXSceneBuild.cpp
    void InitDefaultCameras(); ///< one perspective camera

    /// Reads a Wavefront file into a new object. The object borrows the mesh, which the scene keeps until it dies.
    /// @param creases the mesh generates crease vertices  @return 0, also after a failed read, which adds an object
    ///        with an empty mesh; -1 when no mesh could be made
    int AddWavefront(const char* path, bool creases);

    /// Gives the material slots of every object's control mesh, and of its current subdivision level, the materials of
    /// their names, created where missing.
    void AttachAllMaterials();
    void WeldAll(); ///< every object, at 0.00001

    /// What a host does before a frame, best in the prepare proc: rebuilds subdivision levels marked stale, lets meshes
    /// whose record changed derive their data anew, and fills every object's bounding box from its bounds.
    void UpdateDerivedData();

    // --- Current items
    VXObject* CurrentObject() const { return mCurrentObject; }
    void SetCurrentObject(VXObject* object) { mCurrentObject = object; }
    void SetCurrentObjectByInternalName(const char* name);         ///< null, or a name that is not there, stores null
    VXObject* EditGroupObject() const { return mEditGroupObject; } ///< remembered for the controls
    void SetEditGroupObject(const char* name);
    VXObject* GroundObject() const { return mGroundObject; }
    void SetGroundObject(VXObject* object) { mGroundObject = object; }
    VXObject* IsolationObject() const { return mIsolationObject; } ///< the only visible object; null: all are
    void SetIsolationObject(VXObject* object) { mIsolationObject = object; }
    VXObject* MouseoverObject() const { return mMouseoverObject; }
    void SetMouseoverObject(VXObject* object) { mMouseoverObject = object; }
    VXObject* PickingSubPartObject() const { return mPickingSubPartObject; }
    void SetPickingSubPartObject(VXObject* object) { mPickingSubPartObject = object; }
    std::int32_t CurGeom() const { return mCurGeom; } ///< -1 for none; likewise below
    void SetCurGeom(std::int32_t i) { mCurGeom = i; }
    std::int32_t CurPoly() const { return mCurPoly; }
    void SetCurPoly(std::int32_t i) { mCurPoly = i; }
    std::int32_t CurEdge() const { return mCurEdge; }
    void SetCurEdge(std::int32_t i) { mCurEdge = i; }
    std::int32_t CurVert() const { return mCurVert; }
    void SetCurVert(std::int32_t i) { mCurVert = i; }
    std::int32_t CurCameraIndex() const { return mCurCameraIndex; }
    void SetCurCamera(int i) { mCurCameraIndex = i; }
    void SetCurCamera(VXCamera* camera);                              ///< -1 when it is not in the list
    VXCamera* CurCamera() const { return mCameras[mCurCameraIndex]; } ///< the index must be valid

    // --- Flags, in bit order
    std::uint32_t Flags() const { return mFlags.Word(); }
    bool Changed() const { return mFlags.Get(SceneFlag::Changed); }
    void SetChanged(bool on); ///< on: shadows need redrawing too; off: the bit alone
    bool PickPolys() const { return mFlags.Get(SceneFlag::PickPolys); }
    void SetPickPolys(bool on) { mFlags.Set(SceneFlag::PickPolys, on); }
    bool PickEdges() const { return mFlags.Get(SceneFlag::PickEdges); }
    void SetPickEdges(bool on) { mFlags.Set(SceneFlag::PickEdges, on); }
    bool PickVerts() const { return mFlags.Get(SceneFlag::PickVerts); }
    void SetPickVerts(bool on) { mFlags.Set(SceneFlag::PickVerts, on); }
    bool PickObject() const { return mFlags.Get(SceneFlag::PickObject); }
    void SetPickObject(bool on) { mFlags.Set(SceneFlag::PickObject, on); }
    bool PickAxes() const { return mFlags.Get(SceneFlag::PickAxes); }
    void SetPickAxes(bool on) { mFlags.Set(SceneFlag::PickAxes, on); }
    bool PickShadows() const { return mFlags.Get(SceneFlag::PickShadows); }
    void SetPickShadows(bool on) { mFlags.Set(SceneFlag::PickShadows, on); }
    bool ControlMeshVisible() const { return mFlags.Get(SceneFlag::ControlMeshVisible); }
    void SetControlMeshVisible(bool on) { mFlags.Set(SceneFlag::ControlMeshVisible, on); }
    bool SurfaceVisible() const { return mFlags.Get(SceneFlag::SurfaceVisible); }
    void SetSurfaceVisible(bool on) { mFlags.Set(SceneFlag::SurfaceVisible, on); }
    bool DrawDropShadows() const { return mFlags.Get(SceneFlag::DrawDropShadows); }
    void SetDrawDropShadows(bool on) { mFlags.Set(SceneFlag::DrawDropShadows, on); }
    bool DepthCueOn() const { return mFlags.Get(SceneFlag::DepthCueOn); }
    void SetDepthCueOn(bool on) { mFlags.Set(SceneFlag::DepthCueOn, on); }
    bool CameraTrackingOn() const { return mFlags.Get(SceneFlag::CameraTrackingOn); }
    void SetCameraTrackingOn(bool on) { mFlags.Set(SceneFlag::CameraTrackingOn, on); }
    bool NeedsShadowRedraw() const { return mFlags.Get(SceneFlag::NeedsShadowRedraw); }
    void SetNeedsShadowRedraw(bool on); ///< on: every light's shadow becomes dirty; off: the bit alone
    bool PickZObjects() const { return mFlags.Get(SceneFlag::PickZObjects); }
    void SetPickZObjects(bool on) { mFlags.Set(SceneFlag::PickZObjects, on); }

    // --- Draw style: VXSceneStyle.cpp
    VXMaterial* SceneMaterial() { return &mSceneMaterial; }
    const VXMaterial* SceneMaterial() const { return &mSceneMaterial; }
    VXMaterial* ControlMeshMaterial() { return &mControlMeshMaterial; } ///< how wires of control meshes are drawn
    const VXMaterial* ControlMeshMaterial() const { return &mControlMeshMaterial; }

    /// Restyles the scene material and marks every object changed, so that display lists are rebuilt.
    void ApplyPreset(DrawMode mode);
    void SetDepthMode() { ApplyPreset(DrawMode::Depth); }
    void SetFlatLinedMode() { ApplyPreset(DrawMode::FlatLined); }
    void SetFlatMode() { ApplyPreset(DrawMode::Flat); }
    void SetHidLineMode() { ApplyPreset(DrawMode::HidLine); }
    void SetLitWireMode() { ApplyPreset(DrawMode::LitWire); }
    void SetNormalsMode() { ApplyPreset(DrawMode::Normals); }
    void SetOutlineMode() { ApplyPreset(DrawMode::Outline); }
    void SetSilhouetteMode() { ApplyPreset(DrawMode::Silhouette); }
    void SetSmoothLinedMode() { ApplyPreset(DrawMode::SmoothLined); }
    void SetSmoothMode() { ApplyPreset(DrawMode::Smooth); }
    void SetSmoothOutlinedMode() { ApplyPreset(DrawMode::SmoothOutlined); }
    void SetSmoothTexturedMode() { ApplyPreset(DrawMode::SmoothTextured); }
    void SetTexturedLinedMode() { ApplyPreset(DrawMode::TexturedLined); }
    void SetToonShadedMode() { ApplyPreset(DrawMode::ToonShaded); }
    void SetToonShadedOutlinedMode() { ApplyPreset(DrawMode::ToonShadedOutlined); }
    void SetWireMode() { ApplyPreset(DrawMode::Wire); }
    void SetPickMode(bool on);
    bool WantShader() const;  ///< the style can be drawn with shader programs; a draw engine must be set
    void ResetDisplayLists(); ///< marks every object changed
    BRenderEngines::E_Renderer CurrentPreviewRootRenderType() const; ///< the delegate's; 1 without one

    // --- Colours and drawing settings
    VXMaterialColor4& BackgroundColor() { return mBackgroundColor; }
    const VXMaterialColor4& BackgroundColor() const { return mBackgroundColor; }
    void SetBackgroundColor(float red, float green, float blue, float brightness)
    {
        mBackgroundColor.Set(red, green, blue, brightness);
    }
    VXMaterialColor4& WireframeColor() { return mWireframeColor; }
    const VXMaterialColor4& WireframeColor() const { return mWireframeColor; }
    void SetWireframeColor(float red, float green, float blue, float brightness)
    {
        mWireframeColor.Set(red, green, blue, brightness);
    }
    VXMaterialColor4& DropShadowColor() { return mDropShadowColor; }
    const VXMaterialColor4& DropShadowColor() const { return mDropShadowColor; }
    void SetDropShadowColor(float red, float green, float blue, float brightness)
    {
        mDropShadowColor.Set(red, green, blue, brightness);
    }
    float DepthCueStart() const { return mDepthCueStart; }
    float DepthCueEnd() const { return mDepthCueEnd; }
    void SetDepthCueRange(float start, float end)
    {
        mDepthCueStart = start;
        mDepthCueEnd = end;
    }
    float DepthBufferOffset() const { return mDepthBufferOffset; }
    void SetDepthBufferOffset(float offset) { mDepthBufferOffset = offset; }
    ToonToneStyleID ToonToneStyle() const { return mToonToneStyle; }
    void SetToonToneStyle(ToonToneStyleID style) { mToonToneStyle = style; }
    float ProductionFrameAspectRatio() const { return mProductionFrameAspectRatio; } ///< width / height
    void SetProductionFrameAspectRatio(float ratio) { mProductionFrameAspectRatio = ratio; }
    bool WantsProductionFrame() const { return mShowProductionFrame; }
    void SetShowProdutionFrame(bool on) { mShowProductionFrame = on; }
    bool WantsCurrentObjectHilight() const { return mWantsCurrentObjectHilight; }
    void SetWantsCurrentObjectHilight(bool on) { mWantsCurrentObjectHilight = on; }
    bool WantsFastPrelite() const { return mWantsFastPrelite; }
    void SetWantsFastPrelite(bool on) { mWantsFastPrelite = on; }
    bool WantsFrameBufferPrelite() const { return mWantsFrameBufferPrelite; }
    void SetWantsFrameBufferPrelite(bool on) { mWantsFrameBufferPrelite = on; }
    VXBBox& BoundingBox() { return mBoundingBox; } ///< world space, of the visible objects; the draw engine fills it
    const VXBBox& BoundingBox() const { return mBoundingBox; }

    // --- Host: none of them is owned
    VXSceneDrawEngine* DrawEngine() const { return mDrawEngine; }
    void SetDrawEngine(VXSceneDrawEngine* engine) { mDrawEngine = engine; }
    VXSceneDelegate* SceneDelegate() const { return mSceneDelegate; }
    void SetSceneDelegate(VXSceneDelegate* delegate) { mSceneDelegate = delegate; }
    void SetPrepareProc(Proc proc, void* data);
    void SetEndProc(Proc proc, void* data); ///< the proc is called with the prepare proc's data, not with `data`

    // --- Frame: VXSceneDraw.cpp

    /// One frame through the draw engine, as the current camera's matrix shows it. Nothing happens while the delegate
    /// answers RedrawOff, when another thread is the only thread, or without a draw engine.
    void Draw(float mat[4][4]);
    bool PrepareForDrawing(); ///< calls the prepare proc: whether it answered non-zero; true without one
    void PickPolygonsAndMore(float mat[4][4]); ///< one frame in pick mode; the style is restored afterwards
    void ComputeBackfacing(const Mat44 mat);   ///< silhouettes of all objects

    /// Frames everything visible: moves the camera so that it looks at the middle of the bounds from 1.75 times their
    /// largest extent. Bounds are those of the meshes; transforms of objects are not applied.
    void AutoScaleCamera(int index);
    void Idle() {}

    // --- Threads: VXSceneDraw.cpp
    void LockSceneMutex() { mMutex.Lock(); } ///< waits without time limit
    void UnlockSceneMutex() { mMutex.Unlock(); }
    BMutex& SceneMutex() { return mMutex; }
    void SetOnlyThread(BThread* thread); ///< frames of other threads are refused; null lets all in
    bool ThreadLockedOut() const;        ///< another thread is the only thread

private:
    void StructuralChange();
    void DirtyLightShadows();
    VXMaterial* MakeMaterial(const char* name);
    void PrepareObjects(const Mat44 mat);
    bool WantsOutline(const VXObject& object) const;
    VXBBox BoundsOfVisible() const;

    static VXScene* mCurrentScene;

    BArray<VXObject*> mObjects;
    BArray<VXCamera*> mCameras;
    BArray<VXMaterial*> mMaterials;
    BArray<VXLight*> mLights;
    BArray<VXObject2D*> mObject2Ds;
    VXSceneDrawEngine* mDrawEngine = nullptr;
    VXMaterial mSceneMaterial;
    VXMaterial mControlMeshMaterial;
    VXMaterialColor4 mBackgroundColor{0.8f, 0.3f, 0.3f, 1};
    VXMaterialColor4 mWireframeColor{1, 1, 1, 1};
    VXMaterialColor4 mDropShadowColor{0.6f, 0.6f, 0.6f, 1};
    VXBBox mBoundingBox;
    VXObject* mGroundObject = nullptr;
    FlagWord<SceneFlag> mFlags = {SceneFlag::PickObject, SceneFlag::ControlMeshVisible, SceneFlag::SurfaceVisible};
    std::int32_t mCurGeom = -1, mCurPoly = -1, mCurEdge = -1, mCurVert = -1;
    std::int32_t mCurCameraIndex = 0;
    VXObject* mPickingSubPartObject = nullptr;
    void* mPrepareProcData = nullptr;
    void* mEndProcData = nullptr; ///< kept, never passed
    Proc mPrepareProc = nullptr;
    Proc mEndProc = nullptr;
    VXObject* mEditGroupObject = nullptr;
    VXObject* mCurrentObject = nullptr;
    VXObject* mMouseoverObject = nullptr;
    VXObject* mIsolationObject = nullptr;
    float mDepthCueStart = 0, mDepthCueEnd = 0;
    ToonToneStyleID mToonToneStyle = kToonThreeTones;
    bool mWantsCurrentObjectHilight = false;
    bool mShowProductionFrame = false;
    float mProductionFrameAspectRatio = 1.33f;
    bool mWantsFastPrelite = true;
    bool mWantsFrameBufferPrelite = true;
    VXSceneDelegate* mSceneDelegate = nullptr;
    float mDepthBufferOffset = 4;
    BMutex mMutex;
    BThread* mOnlyThread = nullptr;
    BArray<VXGeom*> mReadGeoms; ///< meshes of AddWavefront, owned; objects borrow them
};
