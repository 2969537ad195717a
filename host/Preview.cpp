#include "host/Preview.h"

#include "base/BFile.h"
#include "draw/VXObject2D.h"
#include "draw/VXSceneDrawOptions.h"
#include "engine/VXCamera.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "engine/VXSceneDelegate.h"
#include "engine/VXSwitches.h"
#include "host/gl/Framebuffer.h"
#include "host/gl/LoadGL.h"
#include "host/gl/VXGLDrawEngine.h"
#include "host/glsl/GlslCompiler.h"
#include "host/import/ElementParts.h"
#include "host/tree/MaterialJson.h"
#include "host/window/OffscreenContext.h"
#include "mesh/VXGeom.h"
#include "shader/VXShaderDebug.h"

#include <algorithm>
#include <cstring>

namespace vx
{
// Larger pictures are drawn in tiles: a multisampled target of this side takes 128 MiB.
static constexpr int kTileSide = 2048;

/// Remembers which objects could not be subdivided, and knows what is asked about: the scene's size, the shaders.
class PreviewDelegate : public VXSceneDelegate
{
public:
    explicit PreviewDelegate(VXGLDrawEngine& engine) : mEngine(engine) {}
    void NotifyForFailedSubdivision(VXObject* object) override { failed.Append(object->ExternalName()); }
    float SceneGeometricEdgeDistance() override { return size; }
    bool WantsShaderDebugging() override { return shaderLog; }
    BRenderEngines::E_Renderer CurrentPreviewRootRenderType() override
    {
        return shaders ? BRenderEngines::kRenderTypeDefault : BRenderEngines::kRenderTypeNoShaders;
    }
    void ComputeShaderHash(VXMaterial* material, bool) override
    {
        ComputeTreeHashes(*material, GlslOptionsFor(mEngine));
    }

    BArray<BString> failed;
    float size = 1;
    bool shaders = false, shaderLog = false;

private:
    VXGLDrawEngine& mEngine;
};

struct Preview::Context
{
    OffscreenContext offscreen;
    Framebuffer target;
    PreviewDelegate delegate;

    explicit Context(VXGLDrawEngine& engine) : delegate(engine) {}
};

static int DeriveBeforeFrame(VXScene* scene, void*)
{
    scene->UpdateDerivedData();
    return 1;
}

Preview::Preview()
    : mEngine(std::make_unique<VXGLDrawEngine>()), mContext(std::make_unique<Context>(*mEngine)),
      mScene(std::make_unique<VXScene>())
{
    mScene->InitDefaultCameras();
    mScene->SetDrawEngine(mEngine.get());
    mScene->SetPrepareProc(DeriveBeforeFrame, nullptr);
    mScene->SetSceneDelegate(&mContext->delegate);
    mEngine->SetTextures(&mModels.Textures());
    mEngine->DrawOptions()->mHaberlinesDrawLast = true;
}

Preview::~Preview()
{
    if (mEngineReady && mOwnContext)
        mContext->offscreen.MakeCurrent();
    mScene.reset();
    mEngine.reset();
    mContext->target.Release();
}

bool Preview::Fail(const BString& problem)
{
    mError = problem;
    return false;
}

// --- Models

bool Preview::Took(const VXObject* object)
{
    mGroundStale = true;
    mStyled = false;
    mError = mReport.error;
    return object != nullptr;
}

bool Preview::Load(const BPath& obj, const ImportOptions& options)
{
    VXScene::SetCurrentScene(mScene.get());
    mReport.error.Empty();
    return Took(mModels.ImportObj(*mScene, obj, options, mReport));
}

bool Preview::LoadText(const char* text, std::size_t size, const BString& name, const BPath& folder,
                       const ImportOptions& options)
{
    VXScene::SetCurrentScene(mScene.get());
    mReport.error.Empty();
    return Took(mModels.ImportObjText(*mScene, text, size, name, folder, options, mReport));
}

bool Preview::Take(GEOM* record, const BString& name, const ImportOptions& options)
{
    VXScene::SetCurrentScene(mScene.get());
    mReport.error.Empty();
    return Took(mModels.TakeRecord(*mScene, record, name, BPath("."), options, mReport));
}

bool Preview::SetDefaultTexture(const BPath& picture)
{
    mError = mModels.SetDefaultTexture(picture);
    return mError.IsEmpty();
}

void Preview::SetShaderLog(const BPath& file)
{
    BFile log(file);
    if (log.Open(BFile::Mode::Append) != 0)
        mReport.warnings.Append(file.FullPath() + ": there is no shader log: " + log.LastError());
    log.Close();
    VXShaderDebugSetLogFile(file);
    mContext->delegate.shaderLog = true;
    VXShaderFileDebugReset();
}

void Preview::ApplyMaterials(std::vector<NamedMaterial> materials)
{
    VXScene::SetCurrentScene(mScene.get());
    mModels.ApplyMaterials(std::move(materials), mReport);
}

// --- Context

bool Preview::PrepareContext()
{
    if (mEngineReady)
        return ((!mOwnContext || mContext->offscreen.MakeCurrent()) && ContextIsAlive()) ||
               Fail("the OpenGL context is lost");
    if (mOwnContext && !mContext->offscreen.Create())
        return Fail(mContext->offscreen.Error());
    if (!ContextIsAlive())
        return Fail("no OpenGL context is current on this thread");
    mContextDescription = mOwnContext ? mContext->offscreen.Description() : "window: " + DescribeGL();
    const BString problem = mEngine->Init();
    if (!problem.IsEmpty())
        return Fail("the draw engine cannot start: " + problem);
    mEngineReady = true;
    return true;
}

// --- What a picture needs of the scene

// Read once, and again only when another file is asked for.
bool Preview::ApplyBackgroundPicture(const PreviewOptions& options)
{
    if (options.backgroundPicture != mBackgroundFile)
    {
        PicturePtr picture;
        BString why;
        if (!options.backgroundPicture.IsEmpty() && !(picture = ReadPicture(options.backgroundPicture, why)))
            return Fail(options.backgroundPicture.FullPath() + ": " + why);
        mBackground = std::move(picture);
        mBackgroundFile = options.backgroundPicture;
    }
    mEngine->SetBackgroundPicture(mBackground, options.backgroundFit);
    return true;
}

void Preview::ApplyStyle(const PreviewOptions& options)
{
    const bool plain = options.background != BackgroundStyle::Gradient;
    const VERTEX top = options.backgroundTop, bottom = plain ? top : options.backgroundBottom;
    const float alpha = options.background == BackgroundStyle::Clear ? 0.0f : 1.0f;
    mEngine->SetBackground({top.x, top.y, top.z, 1}, {bottom.x, bottom.y, bottom.z, 1}, alpha);
    mEngine->SetUpAxis(UpOf(options.view.up));
    mEngine->SetVectors(options.vectors);
    mEngine->SetHighlights(options.highlights);
    VXSceneDrawOptions& draw = *mEngine->DrawOptions();
    draw.mSuppressBackCull = options.backFaces;
    draw.mHaberlinesOn = options.edgeLines;
    const bool data = options.mode == DrawMode::Depth || options.mode == DrawMode::Normals;
    mScene->SetDrawDropShadows(options.shadows && !data);
    mScene->SetDepthCueOn(options.depthCue);
    mScene->SetDepthCueRange(0, 0); // that of the content
    mScene->SetShowProdutionFrame(options.productionFrame > 0);
    mScene->SetProductionFrameAspectRatio(options.productionFrame);
    mEngine->SetOcclusion(options.occlusion);
    mEngine->SetWaterMarkOn(!options.watermark.IsEmpty());
    mEngine->SetWatermarkString(options.watermark);

    // A preset marks every object changed, so it is set only when something about it is new.
    if (mStyled && options.mode == mApplied.mode && options.backFaces == mApplied.backFaces &&
        options.backgroundTop == mApplied.backgroundTop && options.backgroundBottom == mApplied.backgroundBottom &&
        options.background == mApplied.background)
        return;
    SetStandardColors(*mScene, top, bottom);
    mScene->ApplyPreset(options.mode);
}

// Which materials get a program is decided when their trees are met for the first time: another use decides anew.
void Preview::ApplyShaders(const PreviewOptions& options)
{
    const bool used = options.shaders != ShaderUse::Off, all = options.shaders == ShaderUse::On;
    if (used && all != mEngine->VetoDeepShaderTest())
    {
        mEngine->SetDeleteShadersPending(true);
        mEngine->SetVetoDeepShaderTest(all);
    }
    mEngine->SetHWShadingAllowed(used);
    mEngine->DrawOptions()->mHWShading = used;
    mContext->delegate.shaders = used;
}

// Where one cannot be made, those that are there stay.
bool Preview::ApplyOverlays(const PreviewOptions& options)
{
    if (options.overlays == mApplied.overlays)
        return true;
    std::vector<std::unique_ptr<VXObject2D>> made;
    for (const OverlaySpec& spec : options.overlays)
    {
        made.push_back(MakeOverlay(spec, mError));
        if (!made.back())
            return false;
    }
    for (const VXObject2D* const old : mOverlays)
        mScene->RemoveObject2D(old);
    mOverlays.clear();
    for (std::unique_ptr<VXObject2D>& item : made)
    {
        mOverlays.push_back(item.release());
        mScene->AddObject2D(mOverlays.back());
    }
    return true;
}

void Preview::ApplyGround(const PreviewOptions& options)
{
    if (mStyled && !mGroundStale && options.ground == mApplied.ground && options.view.up == mApplied.view.up &&
        options.subdivision == mApplied.subdivision && options.ownScheme == mApplied.ownScheme)
        return;
    mScene->SetNeedsShadowRedraw(true);
    RemoveGround(*mScene);
    VXObject* const ground = options.ground ? AddGround(*mScene, options.view.up) : nullptr;
    if (ground)
    {
        // A name that no file can hold: a model's own material may be called so too.
        VXMaterial* const material = mModels.MaterialNamed(*mScene, "Ground\n");
        if (!material)
            return;
        material->KdColor().Set(0.80f, 0.80f, 0.79f, 1);
        material->SetTMax(1); // clear at its rim, so it is drawn with what is transparent
        ground->Geom()->SetMaterialPointer(0, material);
    }
    mGroundStale = false;
}

// Objects without faces, and the ground, stay as they are: their control meshes are drawn, so control meshes are
// visible to the scene, and a switch keeps those of subdivided objects from being drawn as cages.
void Preview::ApplySubdivision(const PreviewOptions& options)
{
    const int wanted = std::clamp(options.subdivision, 0, kMostSubdivision);
    const bool otherScheme = options.ownScheme != mOwnScheme;
    mOwnScheme = options.ownScheme;
    for (std::int64_t i = 0; i < mScene->NumObjects(); ++i)
    {
        VXObject* const object = mScene->Object(int(i));
        if (!object || !object->Geom() || !object->Geom()->Geom() || object->InternalName() == "GROUND")
            continue;
        const bool faces = wanted == 0 || HasElements(*object->Geom()->Geom(), ElementPart::Faces);
        const int level = faces ? wanted : 0;
        if (object->CurSubDivLevel() == level && !(otherScheme && level > 0))
            continue;
        if (otherScheme)
            object->ClearSubdivStructures();
        object->SetCurSubDivLevel(level);
        object->SetSubdivDirty(true);
    }
}

// A quarter of the diagonal of what is there: edge lines then stand off by about half a pixel when it fills a picture.
static float EdgeDistanceOf(const VXScene& scene)
{
    VXBBox all;
    for (std::int64_t i = 0; i < scene.NumObjects(); ++i)
        if (const VXObject* const object = scene.Object(int(i)); object && object->InternalName() != "GROUND")
        {
            VXBBox box = object->BoundingBox();
            box.Transform(object->GetTransform());
            all.Extend(box);
        }
    return all.Initialized() ? 0.25f * Length(all.Max() - all.Min()) : 0.0f;
}

void Preview::Derive(const PreviewOptions& options)
{
    const VXSwitches::Scoped scheme(VXSwitches::OpenSubdivOn, VXSwitches::SetOpenSubdivOn,
                                    VXSwitches::OpenSubdivOn() && !options.ownScheme);
    ApplySubdivision(options);
    mScene->UpdateDerivedData();
    TellOfFailures();
    mContext->delegate.size = EdgeDistanceOf(*mScene);
}

void Preview::TellOfFailures()
{
    for (const BString& name : mContext->delegate.failed)
        mReport.warnings.Append(name + ": could not be subdivided as far as asked for");
    mContext->delegate.failed.Empty();
}

void Preview::TellOfWarnings()
{
    for (const BString& warning : mEngine->TakeWarnings())
        mReport.warnings.Append(warning);
}

void Preview::GatherContent(const PreviewOptions& options, BArray<VERTEX>& points, BArray<VERTEX>& around)
{
    VXScene::SetCurrentScene(mScene.get());
    Derive(options);
    VisiblePoints(*mScene, points, options.cage);
    around.Empty();
    VXBBox box;
    box.Extend(points.Data(), int(points.Count()));
    if (!box.Initialized() || !(options.shadows || options.ground))
        return;
    // The ground that is seen around the model: twice its size for a shadow, more for the plane.
    const VERTEX size = box.Max() - box.Min(), middle = (box.Max() + box.Min()) * 0.5f;
    const float reach = (options.ground ? 2.4f : 1.0f) * std::max({size.x, size.y, size.z});
    for (int corner = 0; corner < 4; ++corner)
    {
        const float a = corner & 1 ? reach : -reach, b = corner & 2 ? reach : -reach;
        around.Append(options.view.up == UpAxis::Z ? VERTEX{middle.x + a, middle.y + b, box.Min().z}
                                                   : VERTEX{middle.x + a, box.Min().y, middle.z + b});
    }
}

View Preview::FitToScene(const PreviewOptions& options)
{
    BArray<VERTEX> points, around;
    GatherContent(options, points, around);
    const float aspect = float(std::max(options.width, 1)) / float(std::max(options.height, 1));
    return FitView({points.Data(), std::size_t(points.Count())}, {around.Data(), std::size_t(around.Count())}, aspect,
                   options.view);
}

// --- Pictures

bool Preview::DrawScene(const View& view)
{
    VXScene::SetCurrentScene(mScene.get());
    Mat44 camera;
    MAT_Copy(view.toView, camera);
    mScene->Draw(camera);
    TellOfWarnings();
    return mEngine->Error().IsEmpty() || Fail(mEngine->Error());
}

bool Preview::DrawFrame(const PreviewOptions& options, const View& view, float pixelScale)
{
    mError.Empty();
    if (!PrepareContext())
        return false;
    VXScene::SetCurrentScene(mScene.get());
    Derive(options);
    if (!ApplyBackgroundPicture(options) || !ApplyOverlays(options))
        return false;
    ApplyStyle(options);
    ApplyShaders(options);
    ApplyGround(options);
    mStyled = true;
    mApplied = options;
    PlaceCamera(*mScene, view);
    PlaceLights(*mScene, view);
    mEngine->SetPixelScale(pixelScale);
    const VXSwitches::Scoped noCages(VXSwitches::SubdividedDrawing, VXSwitches::SetSubdividedDrawing, !options.cage);
    return DrawScene(view);
}

PicturePtr Preview::Render(const PreviewOptions& options)
{
    mError.Empty();
    return PrepareContext() ? Render(options, FitToScene(options)) : nullptr;
}

PicturePtr Preview::Render(const PreviewOptions& options, const View& view)
{
    mError.Empty();
    if (!PrepareContext())
        return nullptr;
    constexpr int kLargest = 32768;
    if (options.width < 1 || options.height < 1 || options.width > kLargest || options.height > kLargest)
    {
        Fail(BString::Format("a picture of %d x %d pixels cannot be drawn: 1 to %d a side", options.width,
                             options.height, kLargest));
        return nullptr;
    }
    // Where there is no multisampling, four pixels for each one of the picture take its place.
    const bool multisampled = Framebuffer::MostSamples() > 1;
    const int scale = options.samples > (multisampled ? 8 : 1) ? 2 : 1;
    const int samples = !multisampled ? 1 : scale == 2 ? 4 : std::max(options.samples, 1);
    return RenderTiles(options, view, scale, samples);
}

PicturePtr Preview::RenderTiles(const PreviewOptions& options, const View& view, int scale, int samples)
{
    const bool keepAlpha = options.background == BackgroundStyle::Clear;
    PicturePtr picture(CPB_Offscreen::Create(options.width, options.height, 32, true, keepAlpha));
    if (!picture)
    {
        Fail(BString::Format("a picture of %d x %d pixels does not fit into memory", options.width, options.height));
        return nullptr;
    }
    const int side = std::min(kTileSide, Framebuffer::LargestSide()) / scale;
    for (int top = 0; top < options.height; top += side)
        for (int left = 0; left < options.width; left += side)
        {
            const int width = std::min(side, options.width - left), height = std::min(side, options.height - top);
            const BString problem = mContext->target.Create(width * scale, height * scale, samples);
            if (!problem.IsEmpty())
            {
                Fail(problem);
                return nullptr;
            }
            mContext->target.Bind();
            const float w = float(options.width), h = float(options.height);
            const float x = float(left) / w, y = 1 - float(top + height) / h;
            View part = view;
            TileProjection(view.projection, x, y, float(width) / w, float(height) / h, part.projection);
            mEngine->SetTile(x, y, float(width) / w, float(height) / h);
            const bool drawn = DrawFrame(options, part, float(scale));
            mEngine->SetTile(0, 0, 1, 1);
            PicturePtr tile = drawn ? mContext->target.ReadBack(keepAlpha) : nullptr;
            if (tile && scale > 1)
                tile = ReducedPicture(*tile, scale);
            if (!tile)
            {
                if (mError.IsEmpty())
                    Fail("the picture does not fit into memory");
                return nullptr;
            }
            for (int row = 0; row < height; ++row)
                std::memcpy(picture->Row(top + row) + 4 * std::size_t(left), tile->Row(row), 4 * std::size_t(width));
        }
    return picture;
}
} // namespace vx
