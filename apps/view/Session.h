// VelmarBase: viewer.
#pragma once

#include "FileWatch.h"
#include "OrbitCamera.h"
#include "Selection.h"

#include "host/Preview.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace vx::view
{

/// All that a viewer has open, and how it is shown: models and the files that they came from, options, cameras, what is
/// selected. Knows no window: a window draws it, hands on what a hand does, and asks now and then whether files have
/// changed. What is drawn and picked goes by the OpenGL context that is current; all else works without one.
class Session
{
public:
    Session();
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // --- Models. Each answers empty, or one line that says what is wrong; everything is as before then.
    BString Open(const std::vector<BPath>& models); ///< in place of what is open
    BString Reload();                               ///< the same files again; view and selection stay
    BString SetTexture(const BPath& picture);       ///< for all materials that have none
    BString SetMaterials(const BPath& json);        ///< in place of those of the models with their names
    /// What a hand lets fall on the window: models take the place of what is open, a picture becomes the texture, a
    /// JSON file gives materials.
    BString Drop(const std::vector<BPath>& files);
    /// Reloads when a file has changed: a model, its materials, its textures. Tells what came of it.
    /// @return whether anything happened
    bool LookAtFiles();
    const std::vector<BPath>& Models() const { return mModels; }
    const std::vector<BPath>& WatchedFiles() const { return mWatch.Files(); }
    bool watching = true; ///< whether LookAtFiles looks
    VXScene& Scene() const { return mPreview->Scene(); }
    std::vector<std::string> Warnings() const;
    const std::vector<std::string>& Groups() const { return mGroups; } ///< of the models, by name

    // --- How it is shown
    void SetStart(const PreviewOptions& options, const ImportOptions& import); ///< before anything is open
    const PreviewOptions& Options() const { return mOptions; }
    PreviewOptions& Change() ///< to change an option; the picture is stale
    {
        mStale = true;
        return mOptions;
    }
    void SetSize(int width, int height); ///< of the picture, in pixels
    BString SetSubdivision(int levels, bool ownScheme);
    void SetCreases(bool on, float angle);
    const ImportOptions& Import() const { return mImport; }
    bool IsHighlighted(const std::string& group) const;
    void SetHighlighted(const std::string& group, bool on);

    // --- Cameras
    struct NamedCamera
    {
        std::string name;
        OrbitCamera camera;
    };
    const std::vector<NamedCamera>& Cameras() const { return mCameras; }
    int CameraIndex() const { return mCamera; }
    const OrbitCamera& Camera() const { return mCameras[std::size_t(mCamera)].camera; }
    OrbitCamera& MoveCamera(); ///< the picture is stale, and no longer fitted to the window
    void UseCamera(int index);
    void AddCamera(); ///< one that stands where the current one does, and becomes it
    void SetUp(UpAxis up);
    void FrameAll();
    void FrameSelected(); ///< all, when nothing is selected
    View ViewNow() const;

    // --- Selection
    const Selection& Selected() const { return mSelection; }
    Selection& ChangeSelection();
    struct Picked
    {
        int object = -1, poly = -1; ///< of the control mesh; -1 for none
    };
    Picked PickAt(float x, float y); ///< pixels from the upper left corner of the picture
    void SelectAt(float x, float y, bool toggle);

    // --- Drawing
    bool IsStale() const { return mStale; }
    void SetMoving(bool on); ///< while a hand moves the view, what takes long is drawn coarser
    void Touch() { mStale = true; }
    void Drawn() { mStale = false; } ///< also when it could not be: trying again would not help
    /// Into the framebuffer and viewport that are current. False when that failed, which has been told.
    bool Draw(float pixelScale);
    struct Statistics
    {
        int objects = 0;
        std::int64_t polygons = 0, vertices = 0; ///< of what is shown
        std::int64_t drawCalls = 0;
        double milliseconds = 0; ///< the last picture took
    };
    const Statistics& Counts() const { return mCounts; }
    void SetMilliseconds(double ms) { mCounts.milliseconds = ms; }
    const BString& ContextDescription() const { return mPreview->ContextDescription(); }
    BString PrepareContext(); ///< empty, or why nothing can be drawn in the current context

    // --- What there is to say
    void Tell(const BString& text, bool isError = false);
    struct Message
    {
        std::string text;
        bool isError = false;
        double secondsLeft = 0;
    };
    Message Telling() const; ///< empty when the last message has been seen long enough

private:
    BString Load(const std::vector<BPath>& models, bool keepView);
    BString ApplyFiles(Preview& preview); ///< materials and texture
    BString Adopt(BPath& place, const BPath& file);
    void Take(std::unique_ptr<Preview> preview, bool keepView);
    std::vector<BPath> FilesOf(Preview& preview, const std::vector<BPath>& models) const;
    void Gather(BArray<VERTEX>& points, BArray<VERTEX>& around);
    void FrameNow();
    void Derive();
    void Count();
    void SyncCameras();
    PreviewOptions Shown() const;
    float Aspect() const;
    std::span<const VERTEX> Content() const { return mContent; }

    std::unique_ptr<Preview> mPreview;
    std::vector<BPath> mModels;
    BPath mTexture, mMaterials;
    std::vector<std::string> mMaterialProblems; ///< of the file of materials
    FileWatch mWatch;
    std::vector<std::string> mGroups;
    PreviewOptions mOptions;
    ImportOptions mImport;
    std::vector<NamedCamera> mCameras;
    int mCamera = 0;
    bool mFitted = true;     ///< the camera is as framing left it: another window size frames anew
    float mStartZoom = 1;    ///< of the first framing
    bool mWantsFrame = true; ///< before the next picture
    Selection mSelection;
    std::vector<VERTEX> mContent; ///< corners of the box around all that is shown
    PreviewOptions mDerived;      ///< for which the content was gathered
    bool mDeriveStale = true;
    bool mStale = true;
    bool mMoving = false;
    Statistics mCounts;
    Message mMessage;
    std::chrono::steady_clock::time_point mToldAt;
};

/// The first of velmar-001.png, velmar-002.png... that is not there yet.
BPath NextScreenshot(const BPath& folder);

} // namespace vx::view
