// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "draw/VXPickBuffer.h"
#include "draw/VXSceneDrawEngine.h"
#include "draw/VXSceneDrawOptions.h"
#include "host/gl/EdgeLines.h"
#include "host/gl/GeomBuffers.h"
#include "host/gl/PickTarget.h"
#include "host/gl/PictureLook.h"
#include "host/gl/PictureTexture.h"
#include "host/gl/PolyMarks.h"
#include "host/gl/Program.h"
#include "host/gl/VectorLines.h"
#include "host/image/Picture.h"
#include "material/VXMaterialColor4.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

class VXObject2D;

namespace vx
{
class GlslProgram;
class OverlayPainter;
class TextureTable;
struct OverlayFrame;
} // namespace vx

/// The reference draw engine: OpenGL 3.3 with the compatibility profile, GLSL of its own for the look of the fixed
/// pipeline and better, nothing but the public hooks of VXSceneDrawEngine. Draws into whatever framebuffer and viewport
/// are current when a frame begins, and leaves the state of the context as it found it.
///
/// Meshes live in buffer objects that stay valid while the object's display lists are marked ready; a still scene
/// uploads nothing. Belongs to the context that was current at Init, which must be current for every frame and for
/// destruction.
class VELMAR_HOST_EXPORT VXGLDrawEngine : public VXSceneDrawEngine
{
public:
    VXGLDrawEngine();
    ~VXGLDrawEngine() override;

    /// Makes what every frame needs, the shader engine too. @return empty, or what the driver refused
    BString Init();
    /// Gives back all that lives in the context, the shader engine and all programs too; Init makes it anew.
    void ReleaseGL();

    VXSceneDrawOptions* DrawOptions() override { return &mOptions; }

    // --- Settings of the picture
    void SetBackground(const VXMaterialColor4& top, const VXMaterialColor4& bottom, float alpha);
    /// Behind everything, over the colours of the background. Null for none.
    void SetBackgroundPicture(std::shared_ptr<const CPB_Offscreen> picture, vx::PictureFit fit);
    void SetOcclusion(vx::OcclusionQuality quality) { mOcclusion = quality; } ///< ambient light is kept from corners
    void SetTextures(vx::TextureTable* table) { mTextures = table; }          ///< borrowed; null for no textures
    void SetUpAxis(const VERTEX& up) { mUp = up; }                            ///< world axis, y or z
    void SetBackFaceColor(const VXMaterialColor4& color) { mBackFaceColor = color; }
    /// Device pixels for one pixel of the finished picture: lines keep their width when a picture is drawn larger to be
    /// reduced.
    void SetPixelScale(float scale) { mPixelScale = scale; }
    /// Which part of the picture the viewport shows, for pictures drawn in tiles: 0..1, from the lower left.
    void SetTile(float x, float y, float width, float height);
    void SetShadowDensity(float density) { mShadowDensity = density; } ///< of the darkest place on the ground, 0..1
    void SetVectors(vx::VectorKind kind) { mVectors = kind; }          ///< drawn over the surfaces, hidden by them

    /// Groups that are shown on all surfaces that have them, over these and hidden by what stands before them.
    void SetHighlights(std::vector<vx::Highlight> highlights) { mHighlights = std::move(highlights); }

    // --- Shaders made of materials' trees: VXGLDrawEngineShaders.cpp. Off until DrawOptions()->mHWShading and
    // HWShadingAllowed are both on.
    void SetVetoDeepShaderTest(bool on) { mVetoDeepShaderTest = on; } ///< also for what the fixed surfaces can show
    /// What generated surfaces are drawn with from now on; null: the fixed ones. Called by programs, while a frame is
    /// drawn alone.
    void SetShaderProgram(vx::GlslProgram* program) { mShaderProgram = mFrameBegun ? program : nullptr; }
    bool InFrame() const { return mFrameBegun; }
    /// Takes what is left of a program that goes away, whatever context is current: it is deleted with the next frame.
    void Retire(vx::GlslProgram* going, std::unique_ptr<vx::Program> linked);
    /// Texture for samplers whose picture cannot be had: grey, or where bytes are numbers a flat normal.
    std::uint32_t StandInTexture(bool linear);
    /// Notes, in one line, what is not as it should be but keeps no picture from being drawn.
    void Warn(const BString& line);
    std::vector<BString> TakeWarnings() { return std::exchange(mWarnings, {}); } ///< those since the last call

    /// What part of what picture a pick pass looks at, in pixels from its upper left corner.
    struct PickRegion
    {
        int pictureWidth = 0, pictureHeight = 0; ///< 0: the size of the current viewport
        int left = 0, top = 0;
        int width = 0, height = 0; ///< 0: the whole picture
    };
    void SetPickRegion(const PickRegion& region) { mPickRegion = region; }
    /// How long the frame before took, for 2D objects that show it; 0 when that is not known.
    void SetFrameMilliseconds(float milliseconds) { mFrameMilliseconds = milliseconds; }

    // --- After a frame
    const BString& Error() const { return mError; }                  ///< of the last frame; empty when all went well
    std::int64_t NumDrawCalls() const { return mNumDrawCalls; }      ///< of the last frame
    std::size_t NumGeometries() const { return mGeometries.size(); } ///< held in buffers

    /// What the last pick pass saw: VXScene::PickPolygonsAndMore draws one, into a target of its own. Where the scene's
    /// flags let polygons, edges or vertices be picked, polygons have names, else objects. The ground has one only
    /// where shadows can be picked.
    const VXPickBuffer& Picked() const { return mPicked; }

    // --- Hooks: VXGLDrawEngine.cpp
    void BeginFrameState() override;
    void EndFrameState() override;
    void PrepareScene(VXScene* scene) override;
    void BeginObject(VXObject* object) override;
    void EndObject(VXObject* object) override;
    void EnableClientArrays() override;
    void DisableClientArrays() override;
    void SetVertexArray(VERTEX* verts, int count) override;
    void SetNormalArray(VERTEX* normals, int count) override;
    void SetColorArray(VERTEX* colors, int count) override;
    void PrepareGeometry(VXGeom* geom) override;
    bool WantsToonUVS() override { return false; }

    // --- Hooks: VXGLDrawEngineState.cpp
    void PrepareMainPass(VXMaterial* drawMode) override;
    void PrepareObjectPass(VXMaterial* drawMode) override;
    void PrepareLinePass(VXMaterial* drawMode) override;
    void PrepareArrayPass(VXMaterial* drawMode, int reserved) override;
    void SetPassLighting(bool on) override { mPassLighting = on; }
    void SetLineWidth(float pixels) override { mLineWidth = pixels; }
    void SetFrameMultisample(bool on) override;
    void SetPolygonOffset(bool on, int factor, int units) override;
    void GetCullFace(bool& cull, bool& back) override;
    void SetCullFace(bool cull, bool back) override;
    void DrawBackgroundPicture(VXScene* scene) override;

    // --- Hooks: VXGLDrawEnginePick.cpp
    int DrawStyledScene(VXScene* scene) override;
    void SetPickName(int name) override { mPickName = name; }

    // --- Hooks: VXGLDrawEngineSurfaces.cpp
    void BindMaterial(VXMaterial* material) override { mMaterial = material; }
    void DrawElements(const VXElementBatch& batch) override;

    // --- Hooks: VXGLDrawEngineShaders.cpp
    void InitShaderEngine() override;
    void FreeTextures() override;
    void UpdateShadersNow(VXScene* scene) override;
    void UpdateShadersLater() override;
    bool ShaderRecompiled() override { return mShaderRecompiled; } ///< a program was built in the last frame
    void SetShaderRecompiled(bool on) override { mShaderRecompiled = on; }
    bool VetoDeepShaderTest() override { return mVetoDeepShaderTest; }
    /// Reads the picture through the texture table. A name that ends in GlslSource::kLinearMark stands for a picture of
    /// numbers, which are taken as they are written. One that cannot be read is warned of once and never tried again.
    int LoadTextureForShader(const BString& path, int& id) override;
    int CreateNoiseTexture() override;
    void FreeTextureForShader(int id) override;
    void EnableMultitexture2D(int id, int unit) override;
    void DisableMultitexture2D() override;
    void EnableMultitexture3D(int id, int unit) override;
    void DisableMultitexture3D() override;
    void UnbindTexture() override;

    // --- Hooks: VXGLDrawEngineLines.cpp
    void DrawPolygon(VXGeom* geom, const VXEdge& edge) override;
    void DrawHaberlineSets(VXMaterial* material, int count, const std::uint32_t* indices,
                           const std::uint32_t* edgeFlags, int corners) override;
    void DrawCustomLines(VXScene* scene) override; ///< the vectors

    // --- Hooks: VXGLDrawEngineMarks.cpp
    void DrawCustomVerts(VXScene* scene) override; ///< the highlights
    /// The current group over the object's surface, tinted or as dots; what the tool's checks find in other colours.
    void DrawGroupToolObject(VXGeom* geom, VXMaterial* objectMode, VXMaterial* sceneMode, VXScene* scene) override;
    void DrawGroupToolMember(VXGeom* geom, VXMaterial* objectMode, VXMaterial* sceneMode, VXObject* object) override;

    // --- Hooks: VXGLDrawEngineOverlays.cpp
    void DrawOverlayPicture(VXScene* scene) override; ///< the overlay image, fitted, and the production frame
    void DrawWaterMark(VXScene* scene) override;

    // --- Hooks: VXGLDrawEngineOcclusion.cpp
    void EnableAOPrepShader() override; ///< begins the pass that draws normals and distances

    // --- Hooks: VXGLDrawEngineItems.cpp
    /// The scene's 2D objects, each at its pins: those that draw with Skia, in a build that has it, and the bitmaps of
    /// others.
    void DrawBitMaps(VXScene* scene) override;

    // --- Hooks: VXGLDrawEngineShadow.cpp
    void BeginDropShadow() override;
    void EndDropShadow() override;
    void SkipDropShadow() override {}

private:
    using Range = vx::GeomBuffers::Range;

    /// How the current object stands to the viewer.
    struct Placement
    {
        Mat44 modelView, toClip;
        float normal[9];
        bool mirrored; ///< the transform turns left into right, so that front faces wind the other way
    };
    struct Light
    {
        float position[4], color[4], axis[4], range[4];
    };
    struct FrameBlock;
    /// How far lines stand before their surface, in normalised depth. The planes are fitted to the content, so this is
    /// a share of its size.
    static constexpr float kLineBias = 4e-4f;
    static constexpr float kSilhouetteBias = 2 * kLineBias; ///< half of one lies on the surface that turns away there
    struct LineStyle
    {
        float width = 1; ///< pixels of the finished picture
        VXMaterialColor4 color;
        float alpha = 1;
        float bias = 0; ///< of normalised depth
        float fadeBelow = 0, fadeTo = 1, fadeFar = 0;
        bool lit = false;
        VXMaterialColor4 kd;
        const vx::GpuArray* pushed = nullptr; ///< normals of the vertices, along which lines are pushed off the surface
        float offset = 0;                     ///< by this much, object units
    };
    struct Geometry
    {
        VXGeom* geom = nullptr;
        std::int64_t lastFrame = 0;
        vx::GeomBuffers buffers;
        vx::VectorLines vectors;
        vx::EdgeLines edgeLines;
        std::map<int, vx::PolyMarks> marks;
    };

    // Programs: VXGLDrawEngine.cpp
    vx::Program* Variant(std::uint32_t key, const char* name, const std::string& defines, const char* vertexText,
                         const char* fragmentText);
    void Fail(const BString& problem);
    Geometry& GeometryOf(VXObject* object, int drawGeom, VXGeom* geom);
    void VisitSurfaces(const std::function<void(VXObject&, Geometry&)>& step);
    void DropUnusedGeometries();

    // VXGLDrawEngineDepths.cpp
    void FindDepths(float depths[2]) const;
    void FindBoxDepths(float depths[2]) const;
    void FindDepthCue(float cue[4]) const;

    // VXGLDrawEngineState.cpp
    void FillFrameBlock();
    int FillLights(Light* lights, int most);
    bool FillImageLight(float forms[3][16]);
    Placement PlacementOf(const VXObject& object) const;
    void SetDepthState(bool test, bool write);
    void SetBlend(bool on);
    void SetSurfaceOffset(bool on);
    bool DrawsLinesOver(const VXMaterial* mode) const;
    void SetCulling(const VXMaterial* mode, bool mirrored);
    static bool ShowsData(const VXMaterial* mode); ///< depth or normals instead of a look

    // VXGLDrawEngineSurfaces.cpp
    std::uint32_t SurfaceVariant(const VXElementBatch& batch);
    vx::Program* SurfaceProgram(std::uint32_t variant);
    void DrawSurface(const VXElementBatch& batch);
    vx::Program* UseFixed(const VXElementBatch& batch, std::uint32_t variant);
    bool IsBlended(const VXElementBatch& batch) const;
    void DrawFilled(const VXElementBatch& batch, const Range& range);
    void SetMaterialUniforms(vx::Program& program, const VXElementBatch& batch, std::uint32_t variant);
    /// Which arrays a program of surfaces reads, beside positions.
    struct SurfaceArrays
    {
        bool normals = false, uvs = false, colors = false, tangents = false;
    };
    void BindSurfaceArrays(std::uint32_t variant);
    void BindArrays(const SurfaceArrays& wanted);
    void DrawTriangles(const Range& range);
    void DrawUnderLines(const VXMaterial* mode, const Range& range);
    vx::Program* MarkProgram();
    void BindMarkArrays(const vx::PolyMarks& marks);
    std::uint32_t TextureOf(std::int32_t index, bool linear = false);
    bool IsGround(const VXObject* object) const;
    void DrawDepthOfScene();

    // VXGLDrawEngineShaders.cpp
    vx::Program* UseGenerated(const VXElementBatch& batch);
    void ClaimPrograms();
    void ReleaseShaders();
    void BindTexture(std::uint32_t target, int id, int unit);

    // VXGLDrawEngineLines.cpp
    void DrawWires(const VXElementBatch& batch);
    void DrawLineElements(const VXElementBatch& batch);
    void DrawSegments(const vx::GpuArray& pairs, const Range& range, const LineStyle& style, bool points = false);
    void DrawSegmentsBetween(const vx::GpuArray& positions, const vx::GpuArray& pairs, const Range& range,
                             const LineStyle& style, bool points);
    void FlushOutline();
    bool ReserveSegments(std::int32_t count);
    LineStyle WireStyle(const VXMaterial* mode) const;

    // VXGLDrawEngineMarks.cpp
    void DrawTint(const vx::PolyMarks& marks, const VXMaterial* mode, const VXMaterialColor4& color, float alpha);
    void DrawPolyMarks(Geometry& geometry, int slot, const BBitArray& marked, const VXMaterial* mode,
                       const VXMaterialColor4& color, float alpha);
    void DrawVertMarks(Geometry& geometry, int slot, const BBitArray& marked, const VXMaterialColor4& color);
    bool ToolColorsWires() const;

    // VXGLDrawEngineOverlays.cpp
    void WholeSize(float size[2]) const;
    void PlaceBackPicture(FrameBlock& block);
    void PrepareOverlay();
    void DrawPictureAt(const vx::PictureTexture& picture, float x, float y, float width, float height, float opacity);
    void DrawProductionFrame(float aspect);

    // VXGLDrawEngineOcclusion.cpp
    bool WantsOcclusion() const;
    bool MakeOcclusionMaps(int width, int height);
    void ReleaseOcclusion();
    void DrawOcclusion();
    float OcclusionRadius() const;
    void FindOpenness(const float padding[2], int margin);
    void ComposeOcclusion(int reduced, int margin);

    // VXGLDrawEnginePick.cpp
    bool BeginPicking(const VXScene& scene);
    std::uint32_t PickNameOf(const VXElementBatch& batch, bool elements);
    void DrawPickSurface(const VXElementBatch& batch);
    void BindPickArrays();

    // VXGLDrawEngineItems.cpp
    vx::OverlayFrame ItemFrame(const VXScene& scene) const;
    void DrawBitmapItem(const VXObject2D& item, vx::PictureTexture& texture, const vx::OverlayFrame& frame);

    // VXGLDrawEngineShadow.cpp
    bool MakeShadowMap();
    void BlurShadowMap();
    void CompositeShadow();

    VXSceneDrawOptions mOptions;
    vx::TextureTable* mTextures = nullptr;
    VXMaterialColor4 mBackTop{0.36f, 0.40f, 0.45f, 1}, mBackBottom{0.72f, 0.74f, 0.76f, 1};
    float mBackAlpha = 1;
    VXMaterialColor4 mBackFaceColor{0.62f, 0.42f, 0.36f, 1};
    VERTEX mUp{0, 1, 0};
    float mPixelScale = 1;
    float mTile[4] = {1, 1, 0, 0};
    float mShadowDensity = 0.32f;
    float mFrameMilliseconds = 0;
    vx::VectorKind mVectors = vx::VectorKind::Off;
    std::vector<vx::Highlight> mHighlights;
    std::shared_ptr<const CPB_Offscreen> mBackPicture;
    vx::PictureFit mBackFit = vx::PictureFit::Crop;
    vx::OcclusionQuality mOcclusion = vx::OcclusionQuality::Off;
    bool mMemberWires = false; ///< while the wires of a shown group member are drawn

    // Lives in the context
    std::unique_ptr<vx::OverlayPainter> mPainter;
    bool mReady = false;
    std::uint32_t mVertexArray = 0, mFrameBuffer = 0;
    std::map<std::uint32_t, std::unique_ptr<vx::Program>> mPrograms;
    std::map<std::uint32_t, std::unique_ptr<Geometry>> mGeometries; ///< by display list id
    std::uint32_t mNextGeometry = 1;
    std::map<std::pair<std::int32_t, bool>, std::uint32_t> mTextureNames; ///< by index in the host's table, and linear
    std::vector<std::unique_ptr<vx::Program>> mRetired;                   ///< to be deleted when the context is current
    std::int32_t mNumUnits = 0;
    std::uint32_t mNoiseName = 0;
    std::uint32_t mStandIns[2] = {}; ///< one texel each: grey, and a flat normal; 0 until one is needed
    std::uint32_t mSegmentIndices = 0;
    std::int32_t mNumSegments = 0;
    std::uint32_t mShadowFrame = 0, mShadowDepth = 0, mShadowMaps[2] = {};
    vx::PictureTexture mBackTexture, mOverlayTexture, mWatermarkTexture;
    std::map<int, vx::PictureTexture> mItemTextures; ///< of bitmaps of 2D objects, by index
    BString mWatermarkText;                          ///< that the texture shows, of this size
    int mWatermarkPixels = 0, mWatermarkWidest = 0;
    std::uint32_t mOcclusionFrame = 0, mOcclusionDepth = 0, mOcclusionMaps[2] = {};
    int mOcclusionWidth = 0, mOcclusionHeight = 0;
    bool mOcclusionRefused = false; ///< by the driver

    // Of generated surfaces
    bool mVetoDeepShaderTest = false;
    bool mShaderRecompiled = false;
    vx::GlslProgram* mShaderProgram = nullptr;
    std::uint64_t mUnits2D = 0, mUnits3D = 0; ///< a bit for each unit that holds a texture of a shader
    std::vector<BString> mWarnings;

    // Of the frame
    bool mFrameBegun = false;
    std::int64_t mFrame = 0;
    std::int64_t mNumDrawCalls = 0;
    BString mError;
    std::int32_t mTargetFrame = 0, mTargetViewport[4] = {};
    Mat44 mProjection;
    Mat44 mPaddedProjection; ///< of the ambient-occlusion pass, with a margin around the picture
    bool mOrtho = false;
    int mNumFarLights = 0; ///< 0 when some light is near
    bool mPassLighting = true;
    VXMaterial* mPassMode = nullptr;
    float mLineWidth = 0; ///< 0: the style's own
    bool mCull = false, mCullBack = true, mSurfaceOffset = false;
    bool mDepthDrawn = false; ///< of styles that hide lines behind surfaces they do not draw

    // Of the object and geometry
    Placement mPlacement;
    VERTEX* mVertexArrayData = nullptr;
    int mVertexCount = 0;
    VERTEX* mNormalData = nullptr;
    VERTEX* mColorData = nullptr;
    VXMaterial* mMaterial = nullptr;
    Geometry* mGeometry = nullptr;
    vx::GeomBuffers* mBuffers = nullptr; ///< of that geometry
    vx::GpuArray mColors;
    BArray<std::int32_t> mOutlinePairs;

    // Of picking
    PickRegion mPickRegion;
    vx::PickTarget mPickTarget;
    VXPickBuffer mPicked;
    int mPickName = 0;                 ///< index of the object that is drawn
    const VXGeom* mPickGeom = nullptr; ///< with the next, what mPickFirst is the first name of
    int mPickNamed = -1;
    std::uint32_t mPickFirst = 0;

    // Of the drop shadow
    bool mDrawingShadowMap = false;
    bool mShadowMapValid = false;
    VERTEX mShadowCorner, mShadowSideA, mShadowSideB;
    float mShadowGround = 0;
    Mat44 mShadowView, mShadowToClip; ///< world to ground coordinates in map sizes, and to the map's clip space
};
