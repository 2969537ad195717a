// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BPath.h"
#include "draw/VXPickBuffer.h"
#include "host/PreviewSetup.h"
#include "host/gl/PictureLook.h"
#include "host/gl/PolyMarks.h"
#include "host/gl/VectorLines.h"
#include "host/image/Picture.h"
#include "host/import/ModelStore.h"
#include "host/overlay/Overlays.h"
#include "material/VXDrawPresets.h"

#include <memory>
#include <vector>

class VXGLDrawEngine;
class VXObject2D;

namespace vx
{
enum class BackgroundStyle
{
    Gradient, ///< from backgroundTop to backgroundBottom
    Plain,    ///< backgroundTop all over
    Clear,    ///< transparent
};

/// Which surfaces are drawn by shaders made of their materials' trees, in smooth styles.
enum class ShaderUse
{
    Auto, ///< those whose look the fixed surfaces lack
    On,   ///< all that have a tree
    Off,
};

/// How a picture of a scene is drawn.
struct PreviewOptions
{
    int width = 1280, height = 720;
    DrawMode mode = DrawMode::SmoothTextured;
    ViewOptions view;
    BackgroundStyle background = BackgroundStyle::Gradient;
    VERTEX backgroundTop{0.54f, 0.58f, 0.63f}; ///< as colours are written, 0..1
    VERTEX backgroundBottom{0.87f, 0.88f, 0.89f};
    bool ground = false;                                ///< a plane under the model
    bool shadows = true;                                ///< a soft shadow on the ground, with or without the plane
    bool edgeLines = false;                             ///< creases and borders drawn as lines over the surfaces
    bool depthCue = false;                              ///< what is far fades into the background
    OcclusionQuality occlusion = OcclusionQuality::Off; ///< corners and contacts are darker
    BPath backgroundPicture;                            ///< a file, shown over the background's colours; empty for none
    PictureFit backgroundFit = PictureFit::Crop;
    BString watermark;                    ///< a line of text in the lower right corner
    float productionFrame = 0;            ///< width over height; what is outside of this frame is darkened; 0 for none
    VectorKind vectors = VectorKind::Off; ///< drawn as short lines over the surfaces
    std::vector<Highlight> highlights;    ///< groups shown on the surfaces that have them
    bool backFaces = true;                ///< shown, in a colour of their own; off: culled
    int samples = 4;                      ///< for each pixel: 1, 2, 4, or 16, which draws at twice the size with 4
    int subdivision = 0;    ///< level at which objects are shown, up to kMostSubdivision; 0 is the mesh as it is
    bool ownScheme = false; ///< subdivides by the library's own Catmull-Clark scheme even where there is OpenSubdiv
    bool cage = false;      ///< control meshes as wires over their subdivided surfaces
    ShaderUse shaders = ShaderUse::Auto;
    std::vector<OverlaySpec> overlays; ///< drawn over the picture in this order; needs a build with Skia
};
inline constexpr int kMostSubdivision = 6; ///< levels; each has four times the polygons of the one before

/// What was picked.
struct PickResult
{
    VXPickHit hit; ///< of kind Nothing when there was nothing to pick
    VXObject* object = nullptr;
    VXGeom* geom = nullptr; ///< the geometry that is shown, in whose record the indices count; null for objects
    VERTEX position;        ///< in the world
    float depth = 0;        ///< in front of the eye, along the view
};

/// Models from files as pictures: what a small program needs of this library, in one class. Owns scene, engine, models
/// and, unless one is lent, an OpenGL context without a window. One thread.
class VELMAR_HOST_EXPORT Preview
{
public:
    Preview();
    ~Preview();
    Preview(const Preview&) = delete;
    Preview& operator=(const Preview&) = delete;

    // --- Models
    bool Load(const BPath& obj, const ImportOptions& options = {});
    bool LoadText(const char* text, std::size_t size, const BString& name, const BPath& folder,
                  const ImportOptions& options = {});
    bool Take(GEOM* record, const BString& name, const ImportOptions& options = {}); ///< the record is taken
    bool SetDefaultTexture(const BPath& picture); ///< for all materials that have none
    /// Gives materials to the models that are there: ModelStore::ApplyMaterials. What is odd stands in Warnings().
    void ApplyMaterials(std::vector<NamedMaterial> materials);

    /// Writes what becomes of shaders to a file, emptied first, with the text of those that fail. A file that cannot be
    /// written is warned about.
    void SetShaderLog(const BPath& file);

    // --- Pictures

    /// Uses the OpenGL context that is current on this thread instead of making one. Before anything is drawn.
    void UseCurrentContext() { mOwnContext = false; }
    /// Makes the context now instead of with the first picture. False where there is no OpenGL.
    bool PrepareContext();
    bool HasContext() const { return mEngineReady; }
    const BString& ContextDescription() const { return mContextDescription; }

    /// @return the picture, 32-bit RGBA; null with Error() when it could not be drawn
    PicturePtr Render(const PreviewOptions& options);
    PicturePtr Render(const PreviewOptions& options, const View& view); ///< its own view instead of the options'

    /// Draws into the framebuffer and viewport that are current, for windows. `view` comes from FitToScene or
    /// elsewhere.
    bool DrawFrame(const PreviewOptions& options, const View& view, float pixelScale = 1);
    View FitToScene(const PreviewOptions& options);
    /// Derives the scene and gathers what a view has to enclose, in world space.
    /// @param points what must be seen  @param around the ground, where some of it is
    void GatherContent(const PreviewOptions& options, BArray<VERTEX>& points, BArray<VERTEX>& around);

    // --- Picking: PreviewPick.cpp. In the picture that Render or DrawFrame make with the same options and view, pixels
    // counted from its upper left corner. The scene's flags say what can be picked; what the options show can be hit.

    /// What stands at a pixel. Only the pixels around it are drawn. @param radius of pixels in which edges and vertices
    /// are looked for  @return false with Error() when it could not be told
    bool Pick(const PreviewOptions& options, const View& view, int x, int y, PickResult& result, float radius = 8);
    /// What stands in a part of the picture, for many questions at once. Lent until the next is asked for.
    /// @return null with Error() when it could not be told
    const VXPickBuffer* PickRegion(const PreviewOptions& options, const View& view, int left, int top, int width,
                                   int height);

    // --- Afterwards
    const BString& Error() const { return mError; } ///< of the last call, one line
    const BArray<BString>& Warnings() const { return mReport.warnings; }
    VXScene& Scene() { return *mScene; }
    VXGLDrawEngine& Engine() { return *mEngine; }
    ModelStore& Models() { return mModels; }

private:
    struct Context;
    bool Fail(const BString& problem);
    bool Took(const VXObject* object);
    bool ApplyBackgroundPicture(const PreviewOptions& options);
    void ApplyStyle(const PreviewOptions& options);
    void ApplyShaders(const PreviewOptions& options);
    void ApplyGround(const PreviewOptions& options);
    bool ApplyOverlays(const PreviewOptions& options);
    void Derive(const PreviewOptions& options);
    void ApplySubdivision(const PreviewOptions& options);
    void TellOfFailures();
    void TellOfWarnings();
    PicturePtr RenderTiles(const PreviewOptions& options, const View& view, int scale, int samples);
    bool DrawScene(const View& view);

    ModelStore mModels; ///< outlives the scene, which points into it
    std::unique_ptr<VXGLDrawEngine> mEngine;
    std::unique_ptr<Context> mContext;
    std::unique_ptr<VXScene> mScene;
    ImportReport mReport;
    BString mError, mContextDescription;
    bool mOwnContext = true, mEngineReady = false;
    bool mStyled = false, mGroundStale = true;
    bool mOwnScheme = false; ///< by which the levels there are were made
    PreviewOptions mApplied; ///< what the scene is styled for
    BPath mBackgroundFile;   ///< that the engine shows
    std::shared_ptr<const CPB_Offscreen> mBackground;
    std::vector<VXObject2D*> mOverlays; ///< the scene's
};
} // namespace vx
