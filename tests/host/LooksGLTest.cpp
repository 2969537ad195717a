#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "engine/VXSceneDelegate.h"
#include "host/Preview.h"
#include "host/gl/Framebuffer.h"
#include "host/gl/LoadGL.h"
#include "host/gl/VXGLDrawEngine.h"
#include "host/image/Png.h"
#include "host/window/OffscreenContext.h"
#include "mesh/VXGeom.h"
#include "tests/support/Meshes.h"
#include "tests/support/ObjText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <map>

// What draw styles, edge lines, fades, overlays and occlusion promise, measured on pictures of plain things.

using namespace vx;

namespace
{
struct Color
{
    int r, g, b;
    int Sum() const { return r + g + b; }
};
Color At(const CPB_Offscreen& picture, int x, int y)
{
    const std::uint8_t* const p = picture.Row(y) + 4 * x;
    return {p[0], p[1], p[2]};
}

double MeanGrey(const CPB_Offscreen& picture, const CPB_Rect& where)
{
    double sum = 0;
    for (int y = where.y1; y < where.y2; ++y)
        for (int x = where.x1; x < where.x2; ++x)
            sum += At(picture, x, y).Sum();
    return sum / (3.0 * (where.x2 - where.x1) * (where.y2 - where.y1));
}

bool SameBytes(const CPB_Offscreen& a, const CPB_Offscreen& b)
{
    return a.Height() == b.Height() && a.RowBytes() == b.RowBytes() &&
           std::memcmp(a.Pixels(), b.Pixels(), std::size_t(a.RowBytes()) * std::size_t(a.Height())) == 0;
}

struct LiftLimits
{
    ~LiftLimits() { Framebuffer::PretendLimits(1 << 20, 1 << 20); }
};

/// Edge lines stand off by what the test asks for.
class Distance : public VXSceneDelegate
{
public:
    float SceneGeometricEdgeDistance() override { return mDistance; }
    float mDistance = 0;
};

class LooksGL : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!preview.PrepareContext())
            GTEST_SKIP() << preview.Error().CString();
        options.width = 160;
        options.height = 120;
        options.background = BackgroundStyle::Plain;
        options.backgroundTop = {1, 1, 1};
        options.shadows = false;
        options.mode = DrawMode::Smooth;
        options.view.azimuth = options.view.elevation = 0;
        options.view.ortho = true;
    }
    void Add(const TestMesh& mesh)
    {
        const std::string text = ObjText(mesh);
        ASSERT_TRUE(preview.LoadText(text.data(), text.size(), mesh.name.c_str(), BPath("."), {}));
    }
    PicturePtr Drawn()
    {
        PicturePtr picture = preview.Render(options);
        EXPECT_TRUE(picture) << preview.Error().CString();
        EXPECT_EQ(PendingGLErrors(), "");
        return picture;
    }
    VXObject& Object(int i) { return *preview.Scene().Object(i); }

    Preview preview;
    PreviewOptions options;
};
} // namespace

// --- Draw styles

// By more than dithering changes a channel, in at least four of a thousand pixels.
TEST_F(LooksGL, NoTwoStylesOfASampleAreAlike)
{
    for (const char* const name : {"bracket", "teacup", "sailboat"})
    {
        SCOPED_TRACE(name);
        Preview sample;
        const std::string path = std::string(VELMAR_SOURCE_DIR) + "/samples/" + name + ".obj";
        ASSERT_TRUE(sample.Load(BPath(BString(path)))) << sample.Error().CString();
        PreviewOptions standard;
        standard.width = 200;
        standard.height = 150;
        std::vector<PicturePtr> pictures;
        for (int mode = 0; mode < kNumDrawModes; ++mode)
        {
            standard.mode = DrawMode(mode);
            pictures.push_back(sample.Render(standard));
            ASSERT_TRUE(pictures.back()) << sample.Error().CString();
            for (int other = 0; other < mode; ++other)
                EXPECT_GT(ComparePictures(*pictures.back(), *pictures[std::size_t(other)], 2).share, 0.004)
                    << PresetOf(DrawMode(mode)).name << " looks like " << PresetOf(DrawMode(other)).name;
        }
    }
}

// Tones are what most pixels of a toon picture have; between two there is an edge of about a pixel.
TEST_F(LooksGL, ToonHasAsManyCleanBandsAsItsStyleSays)
{
    Add(Torus(64, 32));
    options.mode = DrawMode::ToonShaded;
    options.view.elevation = 40;
    for (const int tones : {1, 2, 3})
    {
        SCOPED_TRACE(tones);
        preview.Scene().SetToonToneStyle(VXScene::ToonToneStyleID(tones));
        const PicturePtr picture = Drawn();
        std::map<int, int> greys;
        int inside = 0;
        for (int y = 0; y < picture->Height(); ++y)
            for (int x = 0; x < picture->Width(); ++x)
                if (const Color c = At(*picture, x, y); c.Sum() < 3 * 254)
                {
                    ++greys[c.Sum() / 9]; // dither moves a channel by one
                    ++inside;
                }
        int bands = 0, banded = 0;
        for (auto grey = greys.begin(); grey != greys.end(); ++grey)
        {
            const auto next = std::next(grey);
            const int count = grey->second + (next != greys.end() && next->first == grey->first + 1 ? next->second : 0);
            if (count * 40 < inside)
                continue;
            ++bands;
            banded += count;
            if (count != grey->second)
                grey = next; // one tone on both sides of a step
        }
        EXPECT_EQ(bands, tones);
        EXPECT_GT(banded, inside * 8 / 10);
    }
}

// --- Edge lines

TEST_F(LooksGL, EdgeLinesAreHiddenBehindSurfaces)
{
    Add(Moved(Scaled(Grid(1, 1), 4), {-2, -2, 1}));
    Add(Moved(Cube(), {-0.5f, -0.5f, -2}));
    options.edgeLines = true;
    for (const bool ortho : {true, false})
    {
        options.view.ortho = ortho;
        Object(1).SetVisible(true);
        const PicturePtr both = Drawn();
        Object(1).SetVisible(false);
        const PicturePtr one = Drawn();
        EXPECT_LE(ComparePictures(*both, *one, 2).share, 0.0) << "something of the cube is seen through the wall";
    }
}

TEST_F(LooksGL, EdgeLinesAreDrawnInEveryWay)
{
    Add(Moved(Cube(), {-0.5f, -0.5f, -0.5f}));
    options.view.azimuth = options.view.elevation = 30;
    VXSceneDrawOptions& draw = *preview.Engine().DrawOptions();
    const PicturePtr bare = Drawn();
    options.edgeLines = true;
    const PicturePtr lined = Drawn();
    EXPECT_GT(ComparePictures(*lined, *bare, 60).share, 0.015);
    for (bool VXSceneDrawOptions::*const way :
         {&VXSceneDrawOptions::mHaberlinesDrawLast, &VXSceneDrawOptions::mHaberlinesWelded})
    {
        draw.*way = false; // with each object's surfaces, and along crease vertices, which stand where welded ones do
        EXPECT_LT(ComparePictures(*lined, *Drawn(), 60).share, 0.005);
        draw.*way = true;
    }
    for (const DrawMode mode : {DrawMode::Depth, DrawMode::Normals})
    {
        options.mode = mode;
        options.edgeLines = false;
        const PicturePtr data = Drawn();
        options.edgeLines = true;
        EXPECT_TRUE(SameBytes(*data, *Drawn())) << "data stays data";
    }
}

TEST_F(LooksGL, EdgeLinesStandOffByTheScenesDistance)
{
    Add(Moved(Cube(), {-0.5f, -0.5f, -0.5f}));
    Distance delegate;
    preview.Scene().SetSceneDelegate(&delegate);
    options.edgeLines = true;
    options.width = 320;
    options.height = 240;
    const auto width = [&](float distance)
    {
        delegate.mDistance = distance;
        const PicturePtr picture = Drawn();
        int left = 1000, right = 0;
        for (int x = 0; x < picture->Width(); ++x)
            if (At(*picture, x, picture->Height() / 2).Sum() < 300)
                left = std::min(left, x), right = std::max(right, x);
        return right - left;
    };
    // The welded normals of a cube's corners lie along its diagonals; 0.003 of the distance is the offset. Farther out
    // the lines would meet the near plane, which fits the surface.
    constexpr float kFar = 11;
    const double pixels = width(0), pushed = 0.003 * double(kFar) / std::sqrt(3.0);
    EXPECT_NEAR(pixels, 0.83 * options.height, 4);
    EXPECT_NEAR(width(kFar), pixels * (1 + pushed), 2); // the cube is two units wide
    preview.Models().Material(0)->SetHaberlineOffsetEnabled(false);
    EXPECT_EQ(width(kFar), int(pixels));
    preview.Scene().SetSceneDelegate(nullptr);
}

TEST_F(LooksGL, SilhouettesFollowTheViewAndCostNothingWhileItStands)
{
    Add(Torus(32, 16));
    options.edgeLines = true;
    const PicturePtr front = Drawn();
    options.edgeLines = false;
    EXPECT_GT(ComparePictures(*front, *Drawn(), 60).share, 0.01) << "a smooth body has silhouettes alone";
    options.edgeLines = true;
    for (const DrawMode mode : {DrawMode::Smooth, DrawMode::SmoothLined, DrawMode::SmoothOutlined})
    {
        SCOPED_TRACE(PresetOf(mode).name);
        options.mode = mode;
        options.view.azimuth = 30;
        Drawn();
        const std::int64_t before = GpuArray::UploadedBytes();
        Drawn();
        EXPECT_EQ(GpuArray::UploadedBytes(), before) << "a still view";
        options.view.azimuth = 70;
        Drawn();
        EXPECT_LT(GpuArray::UploadedBytes() - before, 32 * 16 * 8) << "silhouettes, not all edges";
        EXPECT_GT(GpuArray::UploadedBytes() - before, 0);
    }
}

// --- Depth and transparency

TEST_F(LooksGL, DepthCueFadesWhatIsFar)
{
    Add(Moved(Scaled(Grid(1, 1), 2), {-3, -1, 0}));
    Add(Moved(Scaled(Grid(1, 1), 2), {1, -1, -4}));
    for (const DrawMode mode : {DrawMode::Smooth, DrawMode::Wire, DrawMode::Silhouette})
    {
        SCOPED_TRACE(PresetOf(mode).name);
        options.mode = mode;
        options.depthCue = false;
        const PicturePtr plain = Drawn();
        options.depthCue = true;
        const PicturePtr faded = Drawn();
        const CPB_Rect nearHalf = {0, 0, 80, 120}, farHalf = {80, 0, 160, 120};
        EXPECT_NEAR(MeanGrey(*faded, nearHalf), MeanGrey(*plain, nearHalf), 0.5);
        // Three quarters of the way to white at the far end of the content.
        EXPECT_NEAR(255 - MeanGrey(*faded, farHalf), 0.25 * (255 - MeanGrey(*plain, farHalf)), 0.8);
    }
}

// Three panes in one place seen from both sides: the one in front counts most, in whatever order the scene has them.
TEST_F(LooksGL, TransparentObjectsAreDrawnFarthestFirst)
{
    const float kColors[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    for (const auto& order : {std::array{0, 1, 2}, std::array{2, 0, 1}, std::array{1, 2, 0}})
    {
        Preview panes;
        for (const int z : order)
        {
            const std::string text = ObjText(Moved(Scaled(Grid(1, 1), 2), {-1, -1, float(z)}));
            ASSERT_TRUE(panes.LoadText(text.data(), text.size(), std::to_string(z).c_str(), BPath("."), {}));
            VXObject& pane = *panes.Scene().Object(int(panes.Scene().NumObjects()) - 1);
            VXGeom& geom = *pane.Geom();
            auto* const material = new VXMaterial(0, nullptr);
            material->KdColor().Set(kColors[z][0], kColors[z][1], kColors[z][2], 1);
            material->SetTMin(0.5f);
            material->SetTMax(0.5f);
            geom.SetMaterialPointer(0, material); // the scene's: it lives as long as the test
            pane.SetChanged(true);
        }
        for (const float azimuth : {0.0f, 180.0f})
        {
            options.view.azimuth = azimuth;
            const PicturePtr picture = panes.Render(options);
            ASSERT_TRUE(picture) << panes.Error().CString();
            const Color c = At(*picture, 80, 60);
            const int parts[3] = {c.r, c.g, c.b};
            const int nearest = azimuth == 0 ? 2 : 0;
            EXPECT_GT(parts[nearest], parts[1] + 20);
            EXPECT_GT(parts[1], parts[2 - nearest] + 5);
        }
    }
}

// --- Behind and over the picture

TEST_F(LooksGL, ABackgroundPictureIsCroppedOrFittedAndSeenThroughHiddenLines)
{
    namespace fs = std::filesystem;
    const fs::path file = fs::path(testing::TempDir()) / "velmar-halves.png";
    PicturePtr halves(CPB_Offscreen::Create(40, 20)); // left red, right blue; the picture drawn is less wide
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 40; ++x)
        {
            const std::uint8_t pixel[4] = {std::uint8_t(x < 20 ? 200 : 10), 20, std::uint8_t(x < 20 ? 10 : 200), 255};
            std::copy_n(pixel, 4, halves->Row(y) + 4 * x);
        }
    ASSERT_EQ(WritePng(*halves, BPath(BString(file.string()))), "");
    options.backgroundPicture = BPath(BString(file.string()));
    Add(Cube());
    options.mode = DrawMode::HidLine;
    const auto red = [](Color c) { return c.r > 180 && c.b < 40; };
    const auto blue = [](Color c) { return c.b > 180 && c.r < 40; };
    const PicturePtr cropped = Drawn();
    EXPECT_TRUE(red(At(*cropped, 1, 1)) && red(At(*cropped, 74, 60))) << "through the cube too";
    EXPECT_TRUE(blue(At(*cropped, 158, 118)) && blue(At(*cropped, 86, 60)));
    fs::remove(file); // it has been read
    options.backgroundFit = PictureFit::Fit;
    const PicturePtr fitted = Drawn();
    EXPECT_EQ(At(*fitted, 5, 5).Sum(), 3 * 255) << "80 of 120 rows are the picture's";
    EXPECT_TRUE(red(At(*fitted, 5, 60)) && blue(At(*fitted, 155, 60)));
    EXPECT_EQ(At(*fitted, 80, 115).Sum(), 3 * 255);

    options.backgroundPicture = BPath("no/such/file.png");
    EXPECT_FALSE(preview.Render(options));
    EXPECT_NE(preview.Error().Find("no/such/file.png"), -1);
}

TEST_F(LooksGL, TheWatermarkStandsInItsCorner)
{
    Add(Cube());
    options.backgroundTop = {0.5f, 0.5f, 0.5f};
    options.width = 320;
    options.height = 240;
    const PicturePtr plain = Drawn();
    options.watermark = "Draft";
    const PicturePtr marked = preview.Render(options);
    if (!marked && preview.Error().Find("font") >= 0)
        GTEST_SKIP() << preview.Error().CString();
    ASSERT_TRUE(marked) << preview.Error().CString();
    int light = 0, elsewhere = 0;
    for (int y = 0; y < 240; ++y)
        for (int x = 0; x < 320; ++x)
        {
            const int off = At(*marked, x, y).Sum() - At(*plain, x, y).Sum();
            const bool corner = x > 240 && x < 316 && y > 215;
            light += corner && off > 150;
            elsewhere += !corner && off != 0;
        }
    EXPECT_GT(light, 30);
    EXPECT_EQ(elsewhere, 0);
    options.watermark = "";
    EXPECT_TRUE(SameBytes(*Drawn(), *plain));
}

TEST_F(LooksGL, TheProductionFrameDarkensWhatIsOutside)
{
    Add(Cube());
    const PicturePtr plain = Drawn();
    options.productionFrame = 1; // 120 x 120 of 160 x 120
    const PicturePtr framed = Drawn();
    EXPECT_NEAR(At(*framed, 10, 60).r, 128, 1);
    EXPECT_NEAR(At(*framed, 150, 10).r, 128, 1);
    for (int x = 25; x < 135; x += 5)
        EXPECT_EQ(At(*framed, x, 60).Sum(), At(*plain, x, 60).Sum()) << x;

    preview.Scene().ClearObjects();
    options.width = 180; // shares of it that tiles of 50 take are no floats
    options.productionFrame = 2.5f;
    const PicturePtr whole = Drawn();
    const LiftLimits lift;
    Framebuffer::PretendLimits(50, 4);
    EXPECT_EQ(ComparePictures(*whole, *Drawn(), 3).pixelsOff, 0) << "the frame's lines meet where tiles do";
}

// --- Ambient occlusion

TEST_F(LooksGL, OcclusionDarkensCornersAloneAndIsAlwaysTheSame)
{
    const char* const kRoom = "v -2 0 2\nv 2 0 2\nv 2 0 -2\nv -2 0 -2\nv -2 3 -2\nv 2 3 -2\nf 1 2 3 4\nf 4 3 6 5\n";
    ASSERT_TRUE(preview.LoadText(kRoom, std::strlen(kRoom), "room", BPath("."), {}));
    options.view.elevation = 35;
    const PicturePtr plain = Drawn();
    options.occlusion = OcclusionQuality::Full;
    const PicturePtr full = Drawn();
    EXPECT_TRUE(SameBytes(*full, *Drawn()));
    // Along the middle column: where wall and floor meet it is darkest, and far from there nothing has changed.
    int darkest = 0, most = 0;
    for (int y = 15; y < 105; ++y)
        if (const int darker = At(*plain, 80, y).Sum() - At(*full, 80, y).Sum(); darker > most)
            most = darker, darkest = y;
    EXPECT_GT(most, 3 * 25);
    EXPECT_GT(darkest, 30);
    EXPECT_LT(darkest, 90);
    EXPECT_LE(std::abs(At(*plain, 80, darkest - 25).Sum() - At(*full, 80, darkest - 25).Sum()), 6);
    EXPECT_LE(std::abs(At(*plain, 80, darkest + 20).Sum() - At(*full, 80, darkest + 20).Sum()), 6);

    options.occlusion = OcclusionQuality::Half;
    EXPECT_LT(ComparePictures(*full, *Drawn(), 16).share, 0.02) << "half the resolution is nearly the same";
    const LiftLimits lift;
    Framebuffer::PretendLimits(64, 4);
    options.occlusion = OcclusionQuality::Full;
    EXPECT_LT(ComparePictures(*full, *Drawn(), 6).share, 0.005) << "tiles show no seams";
}

// --- What an OpenGL may lack

TEST_F(LooksGL, PicturesAreWholeWhateverTheDriverOffers)
{
    Add(Torus(24, 12));
    options.view.elevation = 30;
    options.view.ortho = false;
    options.background = BackgroundStyle::Gradient;
    options.backgroundTop = {0.3f, 0.3f, 0.5f};
    options.mode = DrawMode::SmoothLined;
    options.edgeLines = true;
    options.watermark = "w";
    options.productionFrame = 1.5f;
    const PicturePtr standard = preview.Render(options);
    if (!standard && preview.Error().Find("font") >= 0)
        GTEST_SKIP() << preview.Error().CString();
    ASSERT_TRUE(standard) << preview.Error().CString();
    const LiftLimits lift;
    Framebuffer::PretendLimits(50, 4);
    EXPECT_LT(ComparePictures(*standard, *Drawn(), 5).share, 0.002) << "targets of 50 pixels a side";
    const std::int64_t uploaded = GpuArray::UploadedBytes();
    Drawn();
    EXPECT_EQ(GpuArray::UploadedBytes(), uploaded) << "the watermark is made once for all tiles";
    Framebuffer::PretendLimits(1 << 20, 1);
    EXPECT_LT(ComparePictures(*standard, *Drawn(), 60).share, 0.02) << "no multisampling, yet smooth";
    options.mode = DrawMode::Silhouette;
    options.edgeLines = false;
    options.watermark = "";
    const PicturePtr smooth = Drawn();
    int between = 0;
    for (int x = 0; x < 160; ++x)
        between += At(*smooth, x, 60).Sum() > 120 && At(*smooth, x, 60).Sum() < 240;
    EXPECT_GE(between, 1) << "an edge of the silhouette is antialiased";
}

TEST(LooksGLContext, ThatIsLostIsToldInOneLine)
{
    OffscreenContext context;
    if (!context.Create())
        GTEST_SKIP() << context.Error().CString();
    context.Release();
    Preview lent;
    lent.UseCurrentContext();
    EXPECT_FALSE(lent.PrepareContext());
    EXPECT_EQ(lent.Error(), "no OpenGL context is current on this thread");
    ASSERT_TRUE(context.MakeCurrent());
    PreviewOptions small;
    small.width = small.height = 32;
    EXPECT_TRUE(lent.Render(small)) << "a scene with nothing to draw is a background";
    context.Release();
    EXPECT_FALSE(lent.Render(small));
    EXPECT_EQ(lent.Error(), "the OpenGL context is lost");
    context.MakeCurrent(); // what was made in it is given back in it
}
