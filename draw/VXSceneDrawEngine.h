// VelmarBase: drawing.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"
#include "base/BDependentProvider.h"
#include "base/BString.h"
#include "base/BSubject.h"
#include "base/CPB_Offscreen.h"
#include "base/MAT.h"
#include "draw/VXElementBatch.h"

#include <cstdint>

class VXAppToolInfo;
class VXEdge;
class VXGeom;
class VXLight;
class VXMaterial;
class VXObject;
class VXScene;
class VXSceneDrawOptions;
class VXShaderEngine;

/// What is being drawn. DrawScene walks through 3, 0, 1 and 4 by itself; a host sets 2 before it lets the engine draw
/// for picking, and 5 to 8 around passes of its own.
enum DrawPassType : std::int32_t
{
    kNormalPass = 0,       ///< first half of the polygons: what is opaque
    kNormalSecondPass = 1, ///< second half: what is transparent
    kPickPass = 2,
    kDropShadowPass = 3,      ///< polygons flattened onto the ground
    kDropShadowLinesPass = 4, ///< lines and points flattened onto the ground
    kShadowMapPass = 5,
    kDropShadowExtraPass = 6,
    kAmbientOcclusionPass = 7,
    kAmbientOcclusionLatePass = 8,
};

/// What GetHWLightInfo is asked for; a platform that knows more adds its own after these.
enum LightInfoType : std::int32_t
{
    kLightInfoPosition = 0,
    kLightInfoDirection = 1,
    kLightInfoColor = 2,
};

/// The frame driver: decides which passes run over which objects, geometries and materials, in which order, and keeps
/// the shader engine in step with the materials. It draws nothing itself. All that touches graphics state is a hook, a
/// virtual function that a platform subclass implements; hooks without a meaningful default in an empty frame are empty
/// here, so a subclass that only wants to watch a frame stays short. Only DrawOptions() must be there.
///
/// A subclass can rely on this shape of every pass that visits objects:
///
///     Prepare...Pass(mode)                   the pass and its draw mode, before the first object
///     BeginObject(object)                    load the object's transform
///       EnableClientArrays()                 once for each geometry
///       SetVertexArray, SetNormalArray ...   what is not there comes as (null, 0)
///       PrepareGeometry(geom), PrepareSceneLights(scene)
///       BindMaterial(material)               only when it differs from the one bound, never null
///       DrawElements(batch) ...              or DrawPolygon(geom, edge) in the array pass
///       DisableClientArrays()
///     EndObject(object)
///
/// Each object is prepared before BeginObject and ended after EndObject (VXObject::PrepareForDrawing, EndDrawing).
///
/// Ownership: the engine owns its shader engine, that engine's compiler, the tool info and the two images. It borrows
/// the scene, and the host that attaches it to a scene deletes it. One thread: the one with the OpenGL context.
class VELMAR_EXPORT VXSceneDrawEngine : public BSubject, public BDependentProvider
{
public:
    VXSceneDrawEngine();
    ~VXSceneDrawEngine() override; ///< hooks called from here on are those of this class: they do nothing

    // --- The frame: VXSceneDrawEngine.cpp

    /// Draws one frame. @param camera world to view: the eye stands at the origin of what it leads to
    /// @return 0, or what DrawStyledScene answered; -1 without a scene, or while another thread has the scene
    virtual int DrawScene(VXScene* scene, float camera[4][4]);

    /// The scene's bounding box from the boxes of its visible objects. One named "GROUND" never enlarges it.
    void UpdateBoundingBoxes();

    /// The settings of the frame: never null, read anew at each step.
    virtual VXSceneDrawOptions* DrawOptions() = 0;

    // --- Polygons: VXSceneDrawEnginePolys.cpp

    /// Draws the polygons of all visible objects for the current draw pass. In the normal passes the first half
    /// (SilhouetteToggle() true) visits what is opaque in list order, the second what is transparent, farthest object
    /// first. The pick pass draws both at once, each object under its index as pick name; the drop-shadow passes only
    /// objects that cast a shadow: 3 all their polygons, 4 their lines and points.
    virtual void DrawScenePolys(VXScene* scene);

    /// Draws one geometry from its sorted lists, run by run: material bound, then for each layer one batch. Layers
    /// above 0 are drawn only with a shader of their own, as without one they would only repeat layer 0.
    virtual void DrawSortedElements(VXGeom* geom, VXMaterial* objectMode, VXMaterial* sceneMode, VXScene* scene);
    /// The same for line and point elements; never shaded, layer 0 alone.
    virtual void DrawSortedLines(VXGeom* geom, VXMaterial* objectMode, VXMaterial* sceneMode, VXScene* scene);

    /// The draw mode in force: the scene's when the object's says so (InheritStyleFromScene) or is null.
    static VXMaterial* EffectiveMode(VXMaterial* objectMode, VXMaterial* sceneMode);

    /// Whether drawing (shaderMaterial, layer) in this draw mode uses its generated shader.
    bool WantsShaderForMaterial(VXMaterial* drawMaterial, VXMaterial* shaderMaterial, std::int64_t layer);

    /// Texture coordinates into a tone ramp, one for each normal (object space of the current object): u is how much
    /// the surface faces the toon light, 0 turned away to 1 facing; v how much it faces the viewer, 0 at the outline.
    /// @return the engine's scratch array, valid until the next call; null without normals or memory
    T_VERTEX* GenerateToonUVS(VERTEX* normals, int count);
    /// Direction from the surface to the light, view space (x right, y up, z to the viewer), any length.
    void SetToonLightDirection(const VERTEX& toLight) { mToonLight = toLight; }

    // --- Edge lines: VXSceneDrawEngineLines.cpp
    virtual void DrawSceneHaberlines(VXScene* scene);
    virtual void DrawHaberlines(VXGeom* geom, VXMaterial* objectMode, VXMaterial* sceneMode, VXScene* scene);
    bool DoHaberlines();       ///< edge lines are drawn in this draw pass
    bool HaberlinesDrawLast(); ///< in a pass of their own, after all polygons
    bool HaberlinesWelded();

    // --- Where the frame stands, for hooks
    VXScene* Scene() const { return mScene; }
    void SetScene(VXScene* scene) { mScene = scene; }
    DrawPassType GetDrawPass() const { return mDrawPass; }
    DrawPassType DrawPass() const { return mDrawPass; }
    void SetDrawPass(DrawPassType pass) { mDrawPass = pass; }
    int ElementPass() const { return mElementPass; }            ///< 0 polygons, 1 wires of objects, 2 lines, 3 outlines
    bool SilhouetteToggle() const { return mSilhouetteToggle; } ///< the first of the two polygon halves
    VXObject* CurrentObject() const { return mCurrentObject; }  ///< between BeginObject and EndObject, else null
    int CurrentDrawGeom() const { return mCurrentDrawGeom; }    ///< which of the object's draw geometries: 0 or 1
    VXGeom* CurrentGeom() const { return mCurrentGeom; }
    VXMaterial* CurrentMaterial() const { return mCurrentMaterial; } ///< bound in the current geometry; null at first
    const Mat44& Camera() const { return mCamera; } ///< as given to DrawScene; the identity before the first frame
    bool DoingDropShadow() const { return mDrawPass >= kDropShadowPass && mDrawPass <= kDropShadowExtraPass; }
    bool DoingDropShadowLines() const { return mDrawPass == kDropShadowLinesPass; }
    bool DoingShadowMapgGeneration() const { return mDrawPass == kShadowMapPass; }
    bool DoingAO() const { return mDrawPass == kAmbientOcclusionPass || mDrawPass == kAmbientOcclusionLatePass; }

    // --- Shaders
    VXShaderEngine* ShaderEngine() const { return mShaderEngine; }
    void SetShaderEngine(VXShaderEngine* engine); ///< takes it and its compiler; deletes those held before
    bool ShaderEngineInitialized() const { return mShaderEngine && !mShaderEngineNeedsInit; }
    bool HWShadingAllowed() const { return mHWShadingAllowed; } ///< the host's gate before every shader step; off
    void SetHWShadingAllowed(bool on) { mHWShadingAllowed = on; }
    bool DeleteShadersPending() const { return mDeleteShadersPending; }
    void SetDeleteShadersPending(bool on) { mDeleteShadersPending = on; }       ///< the next frame drops all programs
    bool AllowHWShadingInTracking() const { return mAllowHWShadingInTracking; } ///< also while the camera moves; on
    void SetAllowHWShadingInTracking(bool on) { mAllowHWShadingInTracking = on; }
    int DelegateShaderMode() const { return mDelegateShaderMode; } ///< the render type of the last frame

    // --- What the host shares
    VXAppToolInfo* GroupToolInfo() const { return mGroupToolInfo; }
    void SetGroupToolInfo(VXAppToolInfo* info); ///< takes it; a different one held before is deleted
    bool GroupModeOn() const;                   ///< false without tool info
    bool AllowHilightControl() const { return mAllowHilightControl; }
    void SetAllowHilightControl(bool on) { mAllowHilightControl = on; }
    bool ControlsOn() const { return mControlsRequested && mControlsOn; }
    void SetControlsOn(bool on) { mControlsOn = on; }
    void SetControlsRequested(bool on) { mControlsRequested = on; }
    bool WaterMarkOn() const { return mWaterMarkOn; }
    void SetWaterMarkOn(bool on) { mWaterMarkOn = on; }
    const BString& WatermarkString() const { return mWatermarkString; }
    void SetWatermarkString(const BString& text) { mWatermarkString = text; }
    bool NormalsOff() const { return mNormalsOff; } ///< no vertex normals are set; off
    void SetNormalsOff(bool off) { mNormalsOff = off; }

    /// The provider of the host's camera: the engine becomes its dependent, and forgets it when it dies.
    void SetHostAppCameraData(BDependentProvider* provider);
    BDependentProvider* HostAppCameraData() const { return mHostAppCameraData; }
    void DeletingProvider(BDependentProvider* provider) override;
    using CameraMxProc = void (*)(void* camera, void* matrix);
    void SetCameraMxProc(CameraMxProc proc) { mCameraMxProc = proc; } ///< the host's camera matrix, for the subclass
    CameraMxProc GetCameraMxProc() const { return mCameraMxProc; }

    CPB_Offscreen** GetPastedImage() { return &mPastedImage; } ///< where the pointer stands; the engine owns the image
    CPB_Offscreen** GetOverlayImage() { return &mOverlayImage; }
    void DeletePastedImage();
    void DeleteOverlayImage();

    // =================================================================================================================
    // Hooks, in the order in which a frame calls them. Empty here, or answering false or 0, unless it says otherwise.

    // --- Around a frame

    /// Saves graphics state and sets what drawing expects. Called at the start of a frame and again by DrawScenePolys
    /// and DrawSceneHaberlines, which a host may call by themselves: a call while begun must change nothing.
    virtual void BeginFrameState() {}
    /// Restores it: once, at the end of every frame that began.
    virtual void EndFrameState() {}
    virtual void SetFrameMultisample(bool /*on*/) {} ///< on with the frame, off before wires and lines
    /// The whole of a frame in styled mode (the scene style has Pick): set pass 2 and call DrawScenePolys. The draw
    /// pass is put back afterwards.
    /// @return what DrawScene answers
    virtual int DrawStyledScene(VXScene* /*scene*/) { return 0; }
    virtual void PrepareScene(VXScene* /*scene*/) {} ///< boxes are current: set projection, fog, lights, shadow maps

    // --- Shaders and textures

    virtual void InitShaderEngine() {} ///< in the first frame with a shader engine: call VXShaderEngine::Init
    virtual void FreeTextures() {}     ///< all textures loaded for shaders; programs are deleted right after
    virtual void UpdateShadersNow(VXScene* /*scene*/) {} ///< in batch mode: compile all that is missing at once
    virtual void UpdateShadersLater() {}                 ///< otherwise: a program at a time, as the frame goes
    virtual bool ShaderRecompiled() { return false; }    ///< a flag of the subclass
    virtual void SetShaderRecompiled(bool /*on*/) {}     ///< false before each upkeep
    virtual bool VetoDeepShaderTest() { return false; }  ///< true gives a shader to every material with a known root
    /// Loads an image file. @param id 0 on entry, the texture's name on success  @return not looked at
    virtual int LoadTextureForShader(const BString& /*path*/, int& /*id*/) { return 0; }
    virtual int CreateNoiseTexture() { return 0; } ///< name of a 3D noise texture
    virtual void FreeTextureForShader(int /*id*/) {}
    virtual void EnableMultitexture2D(int /*id*/, int /*unit*/) {} ///< binds and enables it
    virtual void DisableMultitexture2D() {} ///< all units, and the texture-release hook of shaders
    virtual void EnableMultitexture3D(int /*id*/, int /*unit*/) {}
    virtual void DisableMultitexture3D() {}
    virtual void UnbindTexture() {}
    /// Around the passes when the options name an effect and shaders are allowed. A pick pass calls EndEffect alone,
    /// and a scene style that shows vertex colours only BeginEffect alone.
    virtual void BeginEffect(const BString& /*name*/) {}
    virtual void EndEffect(const BString& /*name*/) {}

    // --- Start of a pass

    virtual void PrepareMainPass(VXMaterial* /*drawMode*/) {} ///< polygons: depth, culling, fill, shading of the style
    virtual void PrepareObjectPass(VXMaterial* /*drawMode*/) {} ///< wires; also at each change between surface and cage
    virtual void PrepareLinePass(VXMaterial* /*drawMode*/) {}   ///< line and point elements
    /// Outlines; also at each change of draw mode. @param reserved 0
    virtual void PrepareArrayPass(VXMaterial* /*drawMode*/, int /*reserved*/) {}
    virtual void SetPassLighting(bool /*on*/) {}
    virtual void SetLineWidth(float /*pixels*/) {} ///< for cages shown over their surface; the next pass starts anew

    // --- Drop shadows: drawn with DrawPass() 3 and 4

    virtual void BeginDropShadow() {} ///< flatten what follows onto the ground, in the scene's drop-shadow colour
    virtual void EndDropShadow() {}
    virtual void SkipDropShadow() {} ///< instead, in a frame without drop shadows

    // --- An object

    virtual void BeginObject(VXObject* /*object*/) {} ///< load its transform; CurrentObject() is set
    virtual void EndObject(VXObject* /*object*/) {}
    virtual void SetPickName(int /*name*/) {} ///< pick pass, before BeginObject: the object's index in the scene's list

    // --- A geometry: arrays of `count` entries that belong to the mesh; (null, 0) switches an array off

    virtual void EnableClientArrays() {}
    virtual void DisableClientArrays() {}
    virtual void SetVertexArray(VERTEX* /*verts*/, int /*count*/) {}
    /// Off where the draw mode is flat: the subclass then shades each polygon with VXGeom::PolyNormals.
    virtual void SetNormalArray(VERTEX* /*normals*/, int /*count*/) {}
    virtual void SetColorArray(VERTEX* /*colors*/, int /*count*/) {}
    /// Per vertex: off in a mesh whose vertices have no texture coordinates of their own. A textured mesh without
    /// crease vertices has them per corner, in the record (GEOM::tex), reached by the batch's polygon indices. In toon
    /// styles these are coordinates into a tone ramp (GenerateToonUVS).
    virtual void SetTexCoordArray(T_VERTEX* /*uvs*/, int /*count*/) {}
    virtual void SetTangentArray(VERTEX* /*tangents*/, int /*count*/) {}
    virtual void UseTangentArrays(void* /*tangents*/, void* /*binormals*/, int /*count*/) {}
    virtual bool WantsToonUVS() { return true; }           ///< false spares the work where shaders compute tones
    virtual void PrepareGeometry(VXGeom* /*geom*/) {}      ///< arrays are set: default look, buffers of this mesh
    virtual void PrepareSceneLights(VXScene* /*scene*/) {} ///< lights as they fall on the current geometry

    // --- Materials and elements

    /// Colours, textures, transparency of a material in the current draw pass; never null.
    virtual void BindMaterial(VXMaterial* /*material*/) {}
    /// Fill, or in element pass 1 outline, a range of elements. See VXElementBatch for what comes along.
    virtual void DrawElements(const VXElementBatch& /*batch*/) {}
    /// Element pass 3: one edge of a geometry, to be drawn or not by its flags (silhouette, border, material boundary).
    virtual void DrawPolygon(VXGeom* /*geom*/, const VXEdge& /*edge*/) {}
    /// Edge lines of quads or triangles. @param count elements  @param indices `corners` vertex indices for each
    /// @param edgeFlags a word of VXElementEdgeFlag for each  @param corners 4 or 3
    virtual void DrawHaberlineSets(VXMaterial* /*material*/, int /*count*/, const std::uint32_t* /*indices*/,
                                   const std::uint32_t* /*edgeFlags*/, int /*corners*/)
    {
    }
    virtual void SetPolygonOffset(bool /*on*/, int /*factor*/, int /*units*/) {} ///< negative units: to the viewer
    virtual void GetCullFace(bool& /*cull*/, bool& /*back*/) {}                  ///< leaves both alone here
    virtual void SetCullFace(bool /*cull*/, bool /*back*/) {} ///< is given what GetCullFace answered, to restore it

    // --- Tools

    virtual void PrepareGroupTool(VXScene* /*scene*/) {} ///< grouping mode 1, before the polygons of a normal frame
    /// Element pass 1, group tool on: the current object, in place of its wires.
    virtual void DrawGroupToolObject(VXGeom* /*geom*/, VXMaterial* /*objectMode*/, VXMaterial* /*sceneMode*/,
                                     VXScene* /*scene*/)
    {
    }
    /// Element pass 1: an object of a group whose members are shown, in place of its wires.
    virtual void DrawGroupToolMember(VXGeom* /*geom*/, VXMaterial* /*objectMode*/, VXMaterial* /*sceneMode*/,
                                     VXObject* /*object*/)
    {
    }
    virtual void DrawPickedControls(VXScene* /*scene*/, int /*reserved*/) {}

    // --- Background and overlays of a normal frame, in this order. DrawPickedverts runs twice: behind everything, so
    // that points show through what is transparent, and first of the overlays.

    virtual void DrawBackgroundPicture(VXScene* /*scene*/) {}
    virtual void DrawBackgroundMovie(VXScene* /*scene*/) {}
    virtual void DrawPickedverts(VXScene* /*scene*/) {}
    virtual void DrawCustomVerts(VXScene* /*scene*/) {}
    virtual void DrawCustomLines(VXScene* /*scene*/) {}
    virtual void DrawOverlayPicture(VXScene* /*scene*/) {}
    virtual void DrawWaterMark(VXScene* /*scene*/) {}
    virtual void DrawBitMaps(VXScene* /*scene*/) {} ///< the place to draw the scene's 2D objects

    // --- For hosts: the library calls LightRemoved alone, the rest is common ground of hosts and platforms

    virtual void LightRemoved(VXLight* /*light*/) {} ///< the scene has just dropped it
    virtual void EnableAOPrepShader() {}
    virtual void EnableDPSMShader() {}
    virtual void PreliteAxis(int /*axis*/) {}
    virtual void PrintPolyVerts(VXGeom* /*geom*/, int /*poly*/) {}
    virtual void PushAllAttrib() {}
    virtual void PopAttrib() {}
    virtual void SetLightingOn(bool /*on*/) {}
    virtual void SetMultisampleOnOff(bool /*on*/) {}
    virtual void UpdateHWLightShadowInfo(int /*light*/, void* /*info*/) {}
    virtual bool CanDoRealtimeShadows() { return false; }
    virtual bool GetHWLightInfo(int /*light*/, LightInfoType /*what*/, float* /*out*/) { return false; }
    virtual bool HardwareShadowEnabled() { return false; }
    virtual bool IsLightEnabled(std::int32_t /*light*/) { return false; }
    virtual bool LoadShaderExtensions() { return false; }
    virtual bool WantsAnotherRedraw() { return false; }

protected:
    /// Deletes the shader engine and its compiler. A subclass whose programs need its context, or whose compiler calls
    /// its hooks, does so in its own destructor.
    void DeleteShaderEngine();

    BArray<float> mTransformStack{1024, 8}; ///< scratch of the subclass, for one frame

private:
    // The steps of a frame, in order: VXSceneDrawEngine.cpp
    bool EnterFrame(VXScene* scene, float camera[4][4]);
    int DrawInStyledMode();
    void KeepShadersCurrent();
    void SwitchShading();
    bool SceneWantsShading() const;
    void UpdateShaders();
    void MarkShadersStaleOnModeChange();
    bool EffectOn();
    void DrawBackgroundLayer();
    void DrawPolyPasses();
    void DrawPolyPass(DrawPassType pass, bool silhouette, bool dropShadow);
    void DrawElementPasses();
    void FinishEffect();
    void DrawLateHaberlines();
    void DrawOverlayLayer();

    // Objects: every pass visits them the same way, and draws each by its own step
    using ObjectStep = void (VXSceneDrawEngine::*)(VXObject& object);
    void VisitObjects(ObjectStep step);
    void VisitFarthestFirst(ObjectStep step);
    void VisitObject(int index, ObjectStep step);
    bool TakesPart(const VXObject& object) const;
    float DistanceFromEye(const VXObject& object) const;
    bool TakeGeom(const VXObject& object, int index);

    // Polygons
    void DrawPolysOfObject(VXObject& object);
    bool HasWantedRun(VXElementBatch& batch) const;
    bool FillBatch(VXElementBatch& batch, const VXSortedSet& run, VXElementKind kind, std::int32_t first) const;
    void SetElementArrays(VXGeom* geom, const VXMaterial& mode);
    void BindIfChanged(VXMaterial* material);
    bool ShadingActive() const;
    void DrawRun(VXElementBatch& batch);
    void DrawShaded(const VXElementBatch& batch);
    VERTEX ToObjectSpace(const VERTEX& direction) const;

    // Element passes: VXSceneDrawEngineElements.cpp
    void DrawObjectWires();
    void ApplyWireStyle(bool cage);
    void DrawWiresOfObject(VXObject& object);
    bool HiddenLineMode() const;
    void DrawWireGeometry(VXObject& object, VXGeom& geom);
    void DrawLineElements();
    void DrawLinesOfObject(VXObject& object);
    void DrawOutlines();
    bool ApplyOutlineMode(VXObject& object);
    void DrawOutlinesOfObject(VXObject& object);
    void DrawOutlineEdges(const VXObject& object, VXGeom& geom);

    // Edge lines: VXSceneDrawEngineLines.cpp
    void DrawHaberlinesOfObject(VXObject& object);
    void DrawHaberlineLayers(VXGeom& geom, VXMaterial& material, const VXSortedSet& run, VXElementKind kind,
                             std::int32_t first);
    void DrawHaberlineRun(VXGeom& geom, VXMaterial& material, const VXSortedSet& run, VXElementKind kind,
                          std::int32_t first);

    bool mHWShadingAllowed = false;
    [[maybe_unused]] std::int32_t mReserved = 0;
    bool mDeleteShadersPending = false;
    VXMaterial* mCurrentMaterial = nullptr;
    VXScene* mScene = nullptr;
    VXAppToolInfo* mGroupToolInfo = nullptr; ///< owned
    std::int32_t mElementPass = 0;
    VXGeom* mCurrentGeom = nullptr;
    bool mSilhouetteToggle = false;
    BString mWatermarkString;
    bool mWaterMarkOn = false;
    bool mAllowHilightControl = false;
    bool mControlsRequested = false;
    bool mControlsOn = true;
    bool mAllowHWShadingInTracking = true;
    bool mNormalsOff = false;
    CPB_Offscreen* mPastedImage = nullptr;   ///< owned
    CPB_Offscreen* mOverlayImage = nullptr;  ///< owned
    VXShaderEngine* mShaderEngine = nullptr; ///< owned, with its compiler
    bool mShaderEngineNeedsInit = true;
    std::int32_t mDelegateShaderMode = 5; ///< no shaders
    DrawPassType mDrawPass = kNormalPass;
    CameraMxProc mCameraMxProc = nullptr;
    BDependentProvider* mHostAppCameraData = nullptr;
    VXObject* mCurrentObject = nullptr;
    std::int32_t mCurrentDrawGeom = 0;
    bool mCageStyleOn = false;          ///< element pass 1: the style of control meshes is in force
    VXMaterial* mOutlineMode = nullptr; ///< element pass 3: the draw mode in force
    Mat44 mCamera;
    VERTEX mToonLight{-0.45f, 0.6f, 0.66f}; ///< the key light of a three-light set-up: up and to the left
    BArray<T_VERTEX> mToonUVs;              ///< scratch of GenerateToonUVS
};
