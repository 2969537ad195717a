// VelmarBase: viewer.
#include "Session.h"

#include "apps/Groups.h"
#include "apps/Subdivision.h"
#include "engine/VXCamera.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "engine/VXSwitches.h"
#include "host/gl/VXGLDrawEngine.h"
#include "host/tree/MaterialJson.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vx::view
{

static constexpr double kSecondsToRead = 6, kSecondsToReadError = 15;
static const VXMaterialColor4 kSelectionColor{1.0f, 0.55f, 0.0f, 1};

static std::unique_ptr<Preview> NewPreview()
{
    auto preview = std::make_unique<Preview>();
    preview->UseCurrentContext();
    return preview;
}

Session::Session() : mPreview(NewPreview())
{
    mImport.separateLines = true; // so that faces can be subdivided at any time
    mCameras.push_back({mPreview->Scene().Camera(0)->ExternalName().Std(), {}});
}

Session::~Session() = default;

// --- Models

BString Session::Open(const std::vector<BPath>& models) { return Load(models, false); }

BString Session::Reload() { return mModels.empty() ? BString() : Load(mModels, true); }

BString Session::Load(const std::vector<BPath>& models, bool keepView)
{
    std::unique_ptr<Preview> preview = NewPreview();
    // Files are looked at before they are read: what is written meanwhile is read again later.
    FileWatch watch;
    watch.Watch(keepView ? mWatch.Files() : models);
    for (const BPath& model : models)
        if (!preview->Load(model, mImport))
            return preview->Error();
    if (BString problem = ApplyFiles(*preview); !problem.IsEmpty())
        return problem;
    mModels = models;
    watch.Watch(FilesOf(*preview, models));
    mWatch = watch;
    Take(std::move(preview), keepView);
    return {};
}

// Materials with a fault of their own are left out; a text that cannot be read at all keeps what is shown.
BString Session::ApplyFiles(Preview& preview)
{
    std::vector<NamedMaterial> materials;
    MaterialsReport report;
    if (!mMaterials.IsEmpty())
    {
        if (!ReadMaterialsFile(mMaterials, materials, report))
            return report.error;
        preview.ApplyMaterials(std::move(materials));
    }
    if (!mTexture.IsEmpty() && !preview.SetDefaultTexture(mTexture))
        return preview.Error() + ", expected a picture";
    mMaterialProblems.clear();
    for (const BArray<BString>* const list : {&report.problems, &report.warnings})
        for (const BString& line : *list)
            mMaterialProblems.push_back(line.Std());
    return {};
}

void Session::Take(std::unique_ptr<Preview> preview, bool keepView)
{
    const std::vector<BBitArray> selected = keepView ? mSelection.Bits() : std::vector<BBitArray>();
    mPreview = std::move(preview);
    mGroups = cli::GroupNames(mPreview->Scene());
    if (!mSelection.Attach(mPreview->Scene()))
        Tell("out of memory: nothing can be selected", true);
    mSelection.TakeBits(selected);
    const BString tooMuch = cli::SubdivisionProblem(Scene(), keepView ? mOptions.subdivision : 0, mOptions.ownScheme);
    if (!keepView || !tooMuch.IsEmpty())
        mOptions.subdivision = 0;
    if (!keepView)
    {
        // Only what the models have is shown of the groups that were asked for.
        std::erase_if(mOptions.highlights, [this](const Highlight& highlight)
                      { return std::find(mGroups.begin(), mGroups.end(), highlight.group.Std()) == mGroups.end(); });
        mWantsFrame = true;
    }
    mDeriveStale = mStale = true;
    if (const std::vector<std::string> warnings = Warnings(); !warnings.empty())
        Tell(BString(warnings.front()) +
             (warnings.size() > 1 ? BString::Format(" (and %d more)", int(warnings.size()) - 1) : BString()));
    if (!tooMuch.IsEmpty())
        Tell("no longer subdivided: " + tooMuch, true);
}

// Names of materials' files and textures are relative to where they are named.
std::vector<BPath> Session::FilesOf(Preview& preview, const std::vector<BPath>& models) const
{
    std::vector<BPath> files = models;
    const auto add = [&files](const BPath& file)
    {
        if (std::find(files.begin(), files.end(), file) == files.end())
            files.push_back(file);
    };
    for (const BPath& model : models)
        for (std::int64_t i = 0; i < preview.Scene().NumObjects(); ++i)
            if (const VXObject* const object = preview.Scene().Object(int(i));
                object && object->Geom() && object->ExternalName() == model.FileName())
                for (BString name : object->Geom()->Geom()->materialFiles)
                {
                    name.ReplaceAll("\\", "/");
                    add(model.Parent().Joined(name));
                }
    for (std::int64_t i = 0; i < preview.Models().NumMaterials(); ++i)
        if (const BString& texture = preview.Models().Material(i)->PreviewTexturePath(); !texture.IsEmpty())
            add(texture);
    for (const BPath& file : {mTexture, mMaterials})
        if (!file.IsEmpty())
            add(file);
    return files;
}

BString Session::SetTexture(const BPath& picture) { return Adopt(mTexture, picture); }
BString Session::SetMaterials(const BPath& json) { return Adopt(mMaterials, json); }

// Models are read anew: what they had of the file before is gone then.
BString Session::Adopt(BPath& place, const BPath& file)
{
    const BPath before = std::exchange(place, file);
    BString problem = mModels.empty() ? ApplyFiles(*mPreview) : Reload();
    if (!problem.IsEmpty())
        place = before;
    return problem;
}

BString Session::Drop(const std::vector<BPath>& files)
{
    std::vector<BPath> models;
    BString problem;
    for (const BPath& file : files)
    {
        const BString ending = file.Extension().Lower();
        const bool picture =
            ending == "png" || ending == "jpg" || ending == "jpeg" || ending == "tga" || ending == "bmp";
        const bool materials = ending == "json";
        if (!picture && !materials)
            models.push_back(file);
        else if (BString why = picture ? SetTexture(file) : SetMaterials(file); problem.IsEmpty())
            problem = why;
    }
    if (!models.empty())
        if (BString why = Open(models); problem.IsEmpty())
            problem = why;
    return problem;
}

bool Session::LookAtFiles()
{
    if (!watching || mModels.empty() || !mWatch.Changed())
        return false;
    Tell(""); // what was wrong before may be right now
    const BString problem = Reload();
    if (!problem.IsEmpty())
        Tell("not reloaded: " + problem, true);
    else if (Telling().text.empty())
        Tell("reloaded");
    return true;
}

std::vector<std::string> Session::Warnings() const
{
    std::vector<std::string> warnings = mMaterialProblems;
    for (const BString& warning : mPreview->Warnings())
        warnings.push_back(warning.Std());
    return warnings;
}

// --- How it is shown

void Session::SetStart(const PreviewOptions& options, const ImportOptions& import)
{
    mOptions = options;
    mOptions.subdivision = 0;
    mImport = import;
    mImport.separateLines = true;
    mStartZoom = options.view.zoom;
    mCameras.front().camera.SetLook(options.view);
    mDeriveStale = mStale = true;
}

void Session::SetSize(int width, int height)
{
    if (width == mOptions.width && height == mOptions.height)
        return;
    mOptions.width = width;
    mOptions.height = height;
    mWantsFrame = mWantsFrame || mFitted;
    mStale = true;
}

BString Session::SetSubdivision(int levels, bool ownScheme)
{
    if (BString problem = cli::SubdivisionProblem(Scene(), levels, ownScheme); !problem.IsEmpty())
        return problem;
    mOptions.subdivision = std::clamp(levels, 0, kMostSubdivision);
    mOptions.ownScheme = ownScheme;
    mDeriveStale = mStale = true;
    return {};
}

void Session::SetCreases(bool on, float angle)
{
    mImport.creases = on;
    mImport.creaseAngle = angle;
    for (std::int64_t i = 0; i < Scene().NumObjects(); ++i)
    {
        VXObject* const object = Scene().Object(int(i));
        if (!object || !object->Geom() || object->InternalName() == "GROUND")
            continue;
        object->Geom()->SetCreaseAngle(angle);
        object->Geom()->SetGenerateCreases(on);
        object->Geom()->SetEdgesClassified(false);
        object->Geom()->SetGeomChanged(true); // derived anew before the next picture
        object->ClearSubdivStructures();
    }
    mDeriveStale = mStale = true;
}

bool Session::IsHighlighted(const std::string& group) const
{
    return std::any_of(mOptions.highlights.begin(), mOptions.highlights.end(),
                       [&](const Highlight& highlight) { return highlight.group.Std() == group; });
}

// Each group has a colour of its own, whichever others are shown.
void Session::SetHighlighted(const std::string& group, bool on)
{
    std::erase_if(mOptions.highlights, [&](const Highlight& highlight) { return highlight.group.Std() == group; });
    const auto place = std::find(mGroups.begin(), mGroups.end(), group);
    if (on && place != mGroups.end())
        mOptions.highlights.push_back({BString(group), cli::HighlightColor(std::size_t(place - mGroups.begin()) + 1)});
    mStale = true;
}

// What is drawn: data stays data, and what is selected lies over other groups.
PreviewOptions Session::Shown() const
{
    PreviewOptions shown = mOptions;
    shown.view = Camera().Look();
    if (mMoving && shown.occlusion == OcclusionQuality::Full)
        shown.occlusion = OcclusionQuality::Half;
    const bool data = shown.mode == DrawMode::Depth || shown.mode == DrawMode::Normals;
    if (data)
    {
        shown.highlights.clear();
        shown.vectors = VectorKind::Off;
    }
    else if (!mSelection.IsEmpty())
        shown.highlights.push_back({BString(mSelection.Group()), kSelectionColor});
    return shown;
}

// --- Cameras

float Session::Aspect() const { return float(std::max(mOptions.width, 1)) / float(std::max(mOptions.height, 1)); }

OrbitCamera& Session::MoveCamera()
{
    if (mWantsFrame) // what was asked for first is done first
        FrameNow();
    mStale = true;
    mFitted = false;
    return mCameras[std::size_t(mCamera)].camera;
}

void Session::UseCamera(int index)
{
    if (index < 0 || index >= int(mCameras.size()))
        return;
    MoveCamera();
    mCamera = index;
}

void Session::AddCamera()
{
    mCameras.push_back({"Camera " + std::to_string(mCameras.size() + 1), Camera()});
    UseCamera(int(mCameras.size()) - 1);
}

void Session::SetUp(UpAxis up)
{
    for (NamedCamera& each : mCameras)
        each.camera.SetUp(up);
    mOptions.view.up = up;
    mWantsFrame = mDeriveStale = mStale = true;
}

// Cameras live as long as their scene, and a scene as long as its models: the list here outlives both.
void Session::SyncCameras()
{
    VXScene& scene = Scene();
    for (std::size_t i = std::size_t(scene.NumCameras()); i < mCameras.size(); ++i)
    {
        VXCamera* const camera = new VXCamera;
        camera->SetInternalName(mCameras[i].name.c_str());
        camera->SetExternalName(mCameras[i].name.c_str());
        scene.AddCamera(camera);
    }
    scene.SetCurCamera(mCamera);
}

// Meshes that are derived anew are so by the method that they were read with, which is a setting of the whole process.
void Session::Gather(BArray<VERTEX>& points, BArray<VERTEX>& around)
{
    const VXSwitches::Scoped method(VXGeom::GenCreaseMethod, VXGeom::SetGenCreaseMethod, mImport.creaseMethod);
    mOptions.view = Camera().Look();
    mPreview->GatherContent(mOptions, points, around);
}

void Session::FrameNow()
{
    BArray<VERTEX> points, around;
    Gather(points, around);
    OrbitCamera& camera = mCameras[std::size_t(mCamera)].camera;
    camera.Frame({points.Data(), std::size_t(points.Count())}, {around.Data(), std::size_t(around.Count())}, Aspect());
    camera.Zoom(mStartZoom);
    mWantsFrame = false;
    mFitted = mStale = true;
}

void Session::FrameAll()
{
    mStartZoom = 1;
    FrameNow();
}

void Session::FrameSelected()
{
    if (mSelection.IsEmpty())
        return FrameAll();
    Derive();
    std::vector<VERTEX> points;
    mSelection.AppendPoints(points);
    MoveCamera().Frame(points, {}, Aspect());
}

View Session::ViewNow() const { return Camera().ViewOf(Content(), Aspect()); }

// --- Selection

Selection& Session::ChangeSelection()
{
    mStale = true;
    return mSelection;
}

// By the names that the graphics card draws, to the pixel.
Session::Picked Session::PickAt(float x, float y)
{
    Derive();
    SyncCameras();
    Scene().SetPickPolys(true);
    const auto pixel = [](float at, int most) { return int(std::floor(std::clamp(at, -1.0f, float(most)))); };
    PickResult result;
    if (!mPreview->Pick(Shown(), ViewNow(), pixel(x, mOptions.width), pixel(y, mOptions.height), result))
        Tell("nothing can be picked: " + mPreview->Error(), true);
    const VXPickHit& hit = result.hit;
    if (hit.kind != VXPickKind::Polygon)
        return {};
    const bool plain = result.geom == result.object->Geom(); // shown as it is, without levels
    const int control = plain ? hit.polygon : mSelection.ControlPoly(hit.object, hit.polygon);
    return control < 0 ? Picked() : Picked{hit.object, control};
}

void Session::SelectAt(float x, float y, bool toggle)
{
    const Picked picked = PickAt(x, y);
    if (toggle)
        ChangeSelection().Toggle(picked.object, picked.poly);
    else
        ChangeSelection().SelectOnly(picked.object, picked.poly);
}

// --- Drawing

// Everything that depends on the meshes as they are shown. Only what is stale is made anew.
void Session::Derive()
{
    VXScene::SetCurrentScene(&Scene());
    const bool groundMoved =
        mOptions.ground != mDerived.ground || mOptions.shadows != mDerived.shadows || mOptions.cage != mDerived.cage;
    if (!mDeriveStale && !groundMoved)
        return;
    BArray<VERTEX> points, around;
    Gather(points, around);
    VXBBox box;
    box.Extend(points.Data(), int(points.Count()));
    box.Extend(around.Data(), int(around.Count()));
    mContent.clear();
    for (int corner = 0; box.Initialized() && corner < 8; ++corner)
        mContent.push_back({corner & 1 ? box.Max().x : box.Min().x, corner & 2 ? box.Max().y : box.Min().y,
                            corner & 4 ? box.Max().z : box.Min().z});
    mDerived = mOptions;
    mDeriveStale = false;
    mSelection.SurfacesWereMade();
    Count();
}

void Session::Count()
{
    Statistics counts;
    counts.milliseconds = mCounts.milliseconds;
    for (std::int64_t i = 0; i < Scene().NumObjects(); ++i)
    {
        const VXObject* const object = Scene().Object(int(i));
        const VXGeom* const shown =
            object && object->InternalName() != "GROUND" ? object->CurSubdivGeom(true) : nullptr;
        if (!shown)
            continue;
        ++counts.objects;
        counts.polygons += shown->NumPolys();
        counts.vertices += shown->NumVerts(false);
    }
    mCounts = counts;
}

BString Session::PrepareContext() { return mPreview->PrepareContext() ? BString() : mPreview->Error(); }

void Session::SetMoving(bool on)
{
    mStale = mStale || (on != mMoving && mOptions.occlusion != OcclusionQuality::Off);
    mMoving = on;
}

bool Session::Draw(float pixelScale)
{
    if (mWantsFrame)
        FrameNow();
    mStale = false;
    Derive();
    mSelection.UpdateSurfaces();
    SyncCameras();
    mPreview->Engine().SetFrameMilliseconds(float(mCounts.milliseconds));
    const bool drawn = mPreview->DrawFrame(Shown(), ViewNow(), pixelScale);
    mCounts.drawCalls = mPreview->Engine().NumDrawCalls();
    if (!drawn)
        Tell("the picture could not be drawn: " + mPreview->Error(), true);
    return drawn;
}

// --- What there is to say

void Session::Tell(const BString& text, bool isError)
{
    mMessage = {text.Std(), isError, 0};
    mToldAt = std::chrono::steady_clock::now();
}

Session::Message Session::Telling() const
{
    Message message = mMessage;
    const double passed = std::chrono::duration<double>(std::chrono::steady_clock::now() - mToldAt).count();
    message.secondsLeft = (message.isError ? kSecondsToReadError : kSecondsToRead) - passed;
    return message.text.empty() || message.secondsLeft <= 0 ? Message() : message;
}

BPath NextScreenshot(const BPath& folder)
{
    for (int i = 1;; ++i)
        if (const BPath path = folder.Joined(BString::Format("velmar-%03d.png", i)); !path.Exists())
            return path;
}

} // namespace vx::view
