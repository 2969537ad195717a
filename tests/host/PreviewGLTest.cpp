#include "host/Preview.h"

#include "base/GEOM_Obj.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "host/gl/LoadGL.h"
#include "host/gl/VXGLDrawEngine.h"
#include "host/image/Png.h"
#include "mesh/VXGeom.h"
#include "tests/support/Meshes.h"
#include "tests/support/ObjText.h"
#include "tests/support/Tools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>

using namespace vx;

namespace
{
void Add(Preview& preview, const TestMesh& mesh, const ImportOptions& options = {})
{
    const std::string text = ObjText(mesh);
    ASSERT_TRUE(preview.LoadText(text.data(), text.size(), mesh.name.c_str(), BPath("."), options))
        << preview.Error().CString();
}

// A picture of plain things: flat white background, no shadow, seen from the front without perspective.
PreviewOptions Plain(DrawMode mode, int width = 120, int height = 120)
{
    PreviewOptions options;
    options.width = width;
    options.height = height;
    options.mode = mode;
    options.background = BackgroundStyle::Plain;
    options.backgroundTop = {1, 1, 1};
    options.shadows = false;
    options.view.azimuth = options.view.elevation = 0;
    options.view.ortho = true;
    return options;
}

PicturePtr Drawn(Preview& preview, const PreviewOptions& options)
{
    PicturePtr picture = preview.Render(options);
    EXPECT_TRUE(picture) << preview.Error().CString();
    EXPECT_EQ(PendingGLErrors(), "");
    return picture;
}

int Grey(const CPB_Offscreen& picture, int x, int y)
{
    const std::uint8_t* const p = picture.Row(y) + 4 * x;
    return (p[0] + p[1] + p[2]) / 3;
}

struct Bounds
{
    int left = 1 << 30, right = -1, top = 1 << 30, bottom = -1;
    std::int64_t pixels = 0;
};

// Where a picture is darker than its white background.
Bounds InkOf(const CPB_Offscreen& picture, int lighterThan = 200)
{
    Bounds ink;
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
            if (Grey(picture, x, y) < lighterThan)
            {
                ink.left = std::min(ink.left, x);
                ink.right = std::max(ink.right, x);
                ink.top = std::min(ink.top, y);
                ink.bottom = std::max(ink.bottom, y);
                ++ink.pixels;
            }
    return ink;
}

// Two by two squares in the plane z = 0, those on the left in the group "left"; behind them a wall in the group "back",
// which sticks out on the right by as much as the squares are wide.
const char* const kStage = "v -2 -2 0\nv 0 -2 0\nv 2 -2 0\nv -2 0 0\nv 0 0 0\nv 2 0 0\nv -2 2 0\nv 0 2 0\nv 2 2 0\n"
                           "v -2 -2 -1\nv 6 -2 -1\nv 6 2 -1\nv -2 2 -1\n"
                           "g left\nf 1 2 5 4\nf 4 5 8 7\ng right\nf 2 3 6 5\nf 5 6 9 8\ng back\nf 10 11 12 13\n";

void AddStage(Preview& preview) { ASSERT_TRUE(preview.LoadText(kStage, std::strlen(kStage), "stage", BPath("."), {})); }

// Pixels in which one channel is well above another, in each of four columns of equal width that the model fills.
struct Columns
{
    int count[4] = {};
    // All over these columns and nowhere else; the border that others share with them may stand out on their side.
    testing::AssertionResult Only(std::initializer_list<int> some) const
    {
        bool right = true;
        for (int c = 0; c < 4; ++c)
            right = right && (std::find(some.begin(), some.end(), c) != some.end() ? count[c] > 1500 : count[c] < 600);
        return (right ? testing::AssertionSuccess() : testing::AssertionFailure())
               << count[0] << ", " << count[1] << ", " << count[2] << ", " << count[3];
    }
};
Columns TintOf(const CPB_Offscreen& picture, int strong, int weak)
{
    const Bounds ink = InkOf(picture, 250);
    Columns columns;
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = ink.left; x <= ink.right; ++x)
        {
            const std::uint8_t* const p = picture.Row(y) + 4 * x;
            columns.count[4 * (x - ink.left) / (ink.right - ink.left + 1)] += p[strong] > p[weak] + 40;
        }
    return columns;
}

class PreviewGL : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!preview.PrepareContext())
            GTEST_SKIP() << preview.Error().CString();
    }
    Preview preview;
};
} // namespace

TEST_F(PreviewGL, FillsFourFifthsOfTheShorterSide)
{
    Add(preview, Torus(48, 24));
    for (const auto& [width, height] : {std::pair(200, 120), std::pair(120, 200)})
        for (const float azimuth : {0.0f, 35.0f, 200.0f})
        {
            PreviewOptions options = Plain(DrawMode::Silhouette, width, height);
            options.view.ortho = false;
            options.view.azimuth = azimuth;
            options.view.elevation = 20;
            const Bounds ink = InkOf(*Drawn(preview, options));
            ASSERT_GT(ink.pixels, 500);
            const double wide = double(ink.right - ink.left + 1) / width,
                         high = double(ink.bottom - ink.top + 1) / height;
            EXPECT_GE(std::max(wide, high), 0.80);
            EXPECT_LE(std::max(wide, high), 0.86);
            EXPECT_NEAR(ink.left + ink.right, width - 1, 2);
            EXPECT_NEAR(ink.top + ink.bottom, height - 1, 2);
        }
}

TEST_F(PreviewGL, EveryStyleDrawsAndNoTwoAreAlike)
{
    Add(preview, Torus(16, 8));
    Add(preview, Moved(Cube(), {4, 0, 0}));
    preview.Models().Material(0)->SetTextureIndex(
        preview.Models().Textures().Add(PicturePtr(
                                            []
                                            {
                                                CPB_Offscreen* const picture = CPB_Offscreen::Create(2, 2);
                                                picture->Fill(40, 90, 200, 255);
                                                return picture;
                                            }()),
                                        "blue"));
    PreviewOptions options;
    options.width = 160;
    options.height = 120;
    std::vector<PicturePtr> pictures;
    for (int mode = 0; mode < kNumDrawModes; ++mode)
    {
        SCOPED_TRACE(PresetOf(DrawMode(mode)).name);
        options.mode = DrawMode(mode);
        pictures.push_back(Drawn(preview, options));
        ASSERT_TRUE(pictures.back());
        for (int other = 0; other < mode; ++other)
            EXPECT_GT(ComparePictures(*pictures.back(), *pictures[std::size_t(other)], 8).share, 0.002)
                << "looks like " << PresetOf(DrawMode(other)).name;
    }
}

TEST_F(PreviewGL, AStillSceneUploadsNothingAndAPoseOnlyPositionsAndNormals)
{
    Add(preview, Torus(24, 12));
    PreviewOptions options = Plain(DrawMode::SmoothLined);
    options.shadows = true;
    Drawn(preview, options);
    const auto uploads = [&](const char* what, std::int64_t least, std::int64_t most)
    {
        SCOPED_TRACE(what);
        const std::int64_t before = GpuArray::UploadedBytes();
        Drawn(preview, options);
        EXPECT_GE(GpuArray::UploadedBytes() - before, least);
        EXPECT_LE(GpuArray::UploadedBytes() - before, most);
    };
    uploads("the same again", 0, 0);
    for (const float azimuth : {80.0f, 170.0f, 260.0f}) // as a turntable goes
    {
        options.view.azimuth = azimuth;
        uploads("another view", 0, 0);
    }
    options.mode = DrawMode::Smooth;
    uploads("another style", 0, 0);

    VXObject& object = *preview.Scene().Object(0);
    VXGeom& mesh = *object.Geom();
    for (int v = 0; v < mesh.NumVerts(false); ++v)
        mesh.Verts()[v].y *= 1.25f;
    mesh.UpdateCreaseVerts();
    mesh.ComputeAllNormals();
    object.SetChanged(true);
    const std::int64_t vertices = std::int64_t(mesh.NumVerts(true)) * std::int64_t(sizeof(VERTEX));
    uploads("another pose", vertices, 2 * vertices);
}

TEST_F(PreviewGL, HiddenLinesAreHidden)
{
    // A wall in front of a fine grid: only the wall's own edges may be seen.
    const TestMesh wall = Moved(Scaled(Grid(1, 1), 4), {-2, -2, 1});
    for (const bool ortho : {true, false})
        for (const DrawMode mode : {DrawMode::HidLine, DrawMode::Outline})
        {
            SCOPED_TRACE(PresetOf(mode).name);
            Preview with;
            ASSERT_TRUE(with.PrepareContext());
            Add(with, wall);
            Add(with, Moved(Scaled(Grid(12, 12), 0.25f), {-1.5f, -1.5f, 0}));
            PreviewOptions options = Plain(mode);
            options.view.ortho = ortho;
            const PicturePtr both = Drawn(with, options);
            with.Scene().Object(1)->SetVisible(false);
            with.Scene().ResetDisplayLists();
            // The same camera in both pictures: the wall alone is framed like the two together.
            const PicturePtr one = Drawn(with, options);
            const Bounds ink = InkOf(*one, 128);
            ASSERT_GT(ink.pixels, 200) << "the wall's edges";
            for (int y = ink.top + 6; y < ink.bottom - 6; ++y)
                for (int x = ink.left + 6; x < ink.right - 6; ++x)
                    ASSERT_GT(Grey(*both, x, y), 245) << "ink behind the wall at " << x << ", " << y;
        }
}

TEST_F(PreviewGL, LinesHaveTheirWidthWhateverTheScale)
{
    // A square's two upright sides: the ink on a scan line, as pixels fully covered, is the width of two lines.
    Add(preview, Grid(1, 1));
    struct Row
    {
        DrawMode mode;
        double least, most;
    };
    const Row rows[] = {{DrawMode::HidLine, 1.1, 1.5}, {DrawMode::Outline, 2.0, 2.5}};
    for (const Row& row : rows)
        for (const int side : {64, 160})
            for (const int samples : {1, 4, 16})
            {
                SCOPED_TRACE(testing::Message()
                             << PresetOf(row.mode).name << ", " << side << " pixels, " << samples << " samples");
                PreviewOptions options = Plain(row.mode, side, side);
                options.samples = samples;
                const PicturePtr picture = Drawn(preview, options);
                const VXMaterialColor4& ink = preview.Scene().WireframeColor();
                const double dark = 255.0 * double(ink.MixedValue());
                for (const int y : {side / 3, side / 2})
                {
                    double covered = 0;
                    for (int x = 0; x < side; ++x)
                        covered += (255 - Grey(*picture, x, y)) / (255 - dark);
                    EXPECT_GE(covered / 2, row.least);
                    EXPECT_LE(covered / 2, row.most);
                }
            }
}

TEST_F(PreviewGL, ConcavePolygonsAreFilledRight)
{
    const TestMesh shape = ConcaveL(); // one polygon in the plane z = 0
    Add(preview, shape);
    const PreviewOptions options = Plain(DrawMode::Silhouette, 200, 200);
    const PicturePtr picture = Drawn(preview, options);
    double area = 0;
    VERTEX low = shape.verts[0], high = low;
    const std::vector<int>& ring = shape.faces[0];
    for (std::size_t k = 0; k < ring.size(); ++k)
    {
        const VERTEX a = shape.verts[std::size_t(ring[k])], b = shape.verts[std::size_t(ring[(k + 1) % ring.size()])];
        area += (double(a.x) * b.y - double(a.y) * b.x) / 2;
        low = {std::min(low.x, a.x), std::min(low.y, a.y), 0};
        high = {std::max(high.x, a.x), std::max(high.y, a.y), 0};
    }
    const double scale = 0.83 * 200 / std::max(high.x - low.x, high.y - low.y);
    EXPECT_NEAR(double(InkOf(*picture, 128).pixels), std::fabs(area) * scale * scale, 0.015 * 200 * 200);
}

TEST_F(PreviewGL, BackFacesHaveAColourOfTheirOwnUnlessCulled)
{
    Add(preview, Grid(1, 1));
    PreviewOptions options = Plain(DrawMode::Smooth);
    const PicturePtr front = Drawn(preview, options);
    options.view.azimuth = 180;
    const PicturePtr back = Drawn(preview, options);
    options.backFaces = false;
    const PicturePtr culled = Drawn(preview, options);
    const std::uint8_t* const f = front->Row(60) + 4 * 60;
    const std::uint8_t* const b = back->Row(60) + 4 * 60;
    EXPECT_NEAR(f[0], f[2], 20) << "grey";
    EXPECT_GT(b[0], b[2] + 25) << "reddish";
    EXPECT_EQ(Grey(*culled, 60, 60), 255) << "nothing there";
}

// Six faces of a cube, each with a texel of its own: every vertex needs three texture coordinates.
TEST_F(PreviewGL, TexturesFitWithAndWithoutCreases)
{
    TestMesh cube = Cube();
    for (std::size_t f = 0; f < cube.faces.size(); ++f)
        for (std::size_t k = 0; k < cube.faces[f].size(); ++k)
            cube.uvs.push_back({(float(f) + 0.5f) / 6, 0.5f});
    PicturePtr stripes(CPB_Offscreen::Create(6, 1));
    const std::uint8_t colours[6][3] = {{200, 0, 0},   {0, 200, 0},   {0, 0, 200},
                                        {200, 200, 0}, {0, 200, 200}, {200, 0, 200}};
    for (int f = 0; f < 6; ++f)
        for (int c = 0; c < 4; ++c)
            stripes->Row(0)[4 * f + c] = c < 3 ? colours[f][c] : 255;
    const struct
    {
        float azimuth, elevation;
        VERTEX normal;
    } sides[] = {{0, 0, {0, 0, 1}},    {90, 0, {1, 0, 0}}, {180, 0, {0, 0, -1}},
                 {270, 0, {-1, 0, 0}}, {0, 90, {0, 1, 0}}, {0, -90, {0, -1, 0}}};
    for (const bool creases : {true, false})
    {
        Preview shown;
        ASSERT_TRUE(shown.PrepareContext());
        ImportOptions options;
        options.creases = creases;
        Add(shown, cube, options);
        shown.Models().Material(0)->SetTextureIndex(
            shown.Models().Textures().Add(PicturePtr(stripes->Clone()), "stripes"));
        const VXGeom& mesh = *shown.Scene().Object(0)->Geom();
        for (const auto& side : sides)
        {
            SCOPED_TRACE(testing::Message() << (creases ? "creases" : "no creases") << ", azimuth " << side.azimuth
                                            << ", elevation " << side.elevation);
            PreviewOptions picture = Plain(DrawMode::SmoothTextured, 60, 60);
            picture.view.azimuth = side.azimuth;
            picture.view.elevation = side.elevation;
            const PicturePtr seen = Drawn(shown, picture);
            int face = -1;
            for (int f = 0; f < 6; ++f)
                if (Dot(mesh.PolyNormals()[f], side.normal) > 0.9f)
                    face = f;
            ASSERT_GE(face, 0);
            const std::uint8_t* const p = seen->Row(30) + 4 * 30;
            for (int c = 0; c < 3; ++c)
                EXPECT_EQ(p[c] > 100, colours[face][c] > 0) << "channel " << c << " is " << int(p[c]);
        }
    }
}

TEST_F(PreviewGL, TransparentMaterialsLetThroughWhatIsBehind)
{
    Add(preview, Scaled(Grid(1, 1), 2));
    Add(preview, Moved(Grid(1, 1), {0.5f, 0.5f, -1}));
    PreviewOptions options = Plain(DrawMode::Smooth);
    const PicturePtr opaque = Drawn(preview, options);
    VXMaterial* const material = preview.Models().Material(0);
    material->SetTMin(0.5f);
    material->SetTMax(0.5f);
    preview.Scene().Object(0)->Geom()->SetDataSorted(false);
    preview.Scene().ResetDisplayLists();
    const PicturePtr clear = Drawn(preview, options);
    EXPECT_GT(Grey(*clear, 20, 60), Grey(*opaque, 20, 60) + 8) << "the white behind";
    options.mode = DrawMode::HidLine;
    options.view.azimuth = 0;
    EXPECT_GT(Grey(*Drawn(preview, options), 60, 60), 245) << "styles that hide do so whatever the material";
}

TEST_F(PreviewGL, GroundShadowIsSoftAndBelow)
{
    Add(preview, Cube());
    PreviewOptions options;
    options.width = options.height = 160;
    options.background = BackgroundStyle::Plain;
    options.backgroundTop = {0.8f, 0.8f, 0.8f};
    const PicturePtr with = Drawn(preview, options);
    options.shadows = false;
    const PicturePtr without = Drawn(preview, options);
    int darkest = 0, touched = 0, highest = 160;
    for (int y = 0; y < 160; ++y)
        for (int x = 0; x < 160; ++x)
        {
            const int darker = Grey(*without, x, y) - Grey(*with, x, y);
            darkest = std::max(darkest, darker);
            if (darker > 3)
            {
                ++touched;
                highest = std::min(highest, y);
            }
        }
    const double density = darkest / 204.0; // of a background of 0.8
    EXPECT_GE(density, 0.18);
    EXPECT_LE(density, 0.36);
    EXPECT_GT(touched, 400);
    EXPECT_GT(highest, 60) << "on the ground, not on the wall";
    options.shadows = true;
    options.view.elevation = -20;
    EXPECT_LT(ComparePictures(
                  *Drawn(preview, options),
                  *[&]
                  {
                      options.shadows = false;
                      return Drawn(preview, options);
                  }(),
                  3)
                  .share,
              0.001)
        << "from below, the ground hides nothing";
}

TEST_F(PreviewGL, AClearBackgroundHasNoColour)
{
    Add(preview, Cube());
    PreviewOptions options;
    options.width = options.height = 80;
    options.background = BackgroundStyle::Clear;
    const PicturePtr picture = Drawn(preview, options);
    EXPECT_TRUE(picture->HasAlpha());
    EXPECT_EQ(picture->Row(0)[3], 0);
    EXPECT_EQ(picture->Row(40)[4 * 40 + 3], 255);
    options.background = BackgroundStyle::Gradient;
    const PicturePtr solid = Drawn(preview, options);
    EXPECT_EQ(solid->Row(0)[3], 255);
    EXPECT_LT(Grey(*solid, 0, 0) + 20, Grey(*solid, 0, 79)) << "darker above";
}

TEST_F(PreviewGL, TilesMakeOnePicture)
{
    // Wider than a tile, with a model that crosses the seam.
    Add(preview, Grid(64, 1));
    PreviewOptions options = Plain(DrawMode::Silhouette, 2400, 60);
    options.backgroundTop = {1, 1, 1};
    const PicturePtr picture = Drawn(preview, options);
    const Bounds ink = InkOf(*picture, 128);
    EXPECT_GT(ink.right, 2048);
    EXPECT_NEAR(ink.left + ink.right, 2399, 1);
    EXPECT_EQ(ink.pixels, std::int64_t(ink.right - ink.left + 1) * (ink.bottom - ink.top + 1)) << "no gap at the seam";
    options.background = BackgroundStyle::Gradient;
    options.backgroundTop = {0.2f, 0.2f, 0.2f};
    const PicturePtr gradient = Drawn(preview, options);
    for (int y = 0; y < 12; ++y)
        for (const int x : {0, 2047, 2048, 2399})
            EXPECT_NEAR(Grey(*gradient, x, y), Grey(*gradient, 1, y), 1);
}

TEST_F(PreviewGL, EdgeLinesFollowCreasesOnce)
{
    Add(preview, Cube());
    PreviewOptions options = Plain(DrawMode::Smooth, 100, 100);
    options.view.azimuth = 35;
    options.view.elevation = 25;
    const PicturePtr without = Drawn(preview, options);
    options.edgeLines = true;
    const PicturePtr with = Drawn(preview, options);
    int inked = 0;
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x)
            inked += Grey(*without, x, y) - Grey(*with, x, y) > 60;
    EXPECT_GT(inked, 250);
    EXPECT_LT(inked, 1400) << "nine edges are seen, faces are not inked";
}

TEST_F(PreviewGL, OddMeshesLeaveNoError)
{
    float place = 0;
    for (const TestMesh& mesh : {OpenBox(), BentQuad(), MoebiusStrip(9), TwoCubesSharingAnEdge(), Sliver(), Fan(50)})
        Add(preview, Moved(mesh, {place += 4, 0, 0}));
    for (const DrawMode mode : {DrawMode::FlatLined, DrawMode::SmoothOutlined, DrawMode::Wire})
        Drawn(preview, Plain(mode, 128, 64));
    const char* const lines = "v 0 0 0\nv 1 1 0\nv 2 0 0\nv 1 -1 1\nl 1 2 3 4\np 1 2\np 4\n";
    Preview shown;
    ASSERT_TRUE(shown.PrepareContext());
    ASSERT_TRUE(shown.LoadText(lines, std::strlen(lines), "lines", BPath("."))) << shown.Error().CString();
    const Bounds ink = InkOf(*Drawn(shown, Plain(DrawMode::Smooth)), 250);
    EXPECT_GT(ink.pixels, 100) << "three segments and three points";
}

TEST_F(PreviewGL, AnswersInWordsForPicturesThatCannotBe)
{
    Add(preview, Cube());
    PreviewOptions options;
    options.width = 0;
    EXPECT_FALSE(preview.Render(options));
    EXPECT_NE(preview.Error(), "");
    options.width = 16;
    options.height = 16;
    EXPECT_TRUE(preview.Render(options)) << preview.Error().CString();
    EXPECT_EQ(preview.Error(), "");
}

TEST_F(PreviewGL, HighlightsShowWhereTheirPolygonsAreSeen)
{
    AddStage(preview);
    const VXMaterialColor4 orange{1, 0.4f, 0, 1}, blue{0, 0.3f, 1, 1};
    for (const DrawMode mode : {DrawMode::Smooth, DrawMode::FlatLined, DrawMode::HidLine, DrawMode::ToonShadedOutlined})
    {
        SCOPED_TRACE(PresetOf(mode).name);
        PreviewOptions options = Plain(mode, 200, 120);
        const auto tint = [&](std::vector<Highlight> highlights, int strong, int weak)
        {
            options.highlights = std::move(highlights);
            return TintOf(*Drawn(preview, options), strong, weak);
        };
        EXPECT_TRUE(tint({}, 0, 2).Only({}));
        EXPECT_TRUE(tint({{"left", orange}}, 0, 2).Only({0}));
        EXPECT_TRUE(tint({{"back", orange}}, 0, 2).Only({2, 3})) << "the rest of it is hidden";
        EXPECT_TRUE(tint({{"left", orange}, {"right", blue}}, 0, 2).Only({0}));
        EXPECT_TRUE(tint({{"left", orange}, {"right", blue}}, 2, 0).Only({1}));
        EXPECT_TRUE(tint({{"nobody", orange}}, 0, 2).Only({}));

        const Columns dots = tint({{"right", orange, true}}, 0, 2);
        EXPECT_GT(dots.count[1], 50) << "six vertices on both sides of the second column";
        EXPECT_LT(dots.count[1], 400) << "dots, no surface";
        EXPECT_EQ(dots.count[3], 0);
    }
}

TEST_F(PreviewGL, ToolsShowWhatTheyWorkOn)
{
    Tools tools; // before the engine loses its info
    AddStage(preview);
    AddStage(preview);
    VXObject* const stage = preview.Scene().Object(0);
    VXObject* const other = preview.Scene().Object(1);
    stage->SetInternalName("current");
    MAT_Translate(other->GetTransform(), 0, -5, 0);
    preview.Scene().SetCurrentObjectByInternalName("current");
    preview.Engine().SetGroupToolInfo(tools.Info());
    const PreviewOptions options = Plain(DrawMode::FlatLined, 200, 240);
    const auto tint = [&](int strong, int weak) { return TintOf(*Drawn(preview, options), strong, weak); };
    const auto select = [&](const char* group)
    { GEOM_GetGroupBit(stage->Geom()->Geom(), group, &tools.word, &tools.bits); };
    const VXMaterialColor4 color = stage->DefaultMaterial()->KdColor();

    select("left");
    EXPECT_TRUE(tint(0, 2).Only({})) << "the tool is off";
    tools.group = true;
    EXPECT_TRUE(tint(0, 2).Only({0}));
    select("right"); // nothing is told of it
    EXPECT_TRUE(tint(0, 2).Only({1}));
    tools.selection = kGroupSelectVertices;
    const Columns dots = tint(0, 2);
    EXPECT_GT(dots.count[1], 30);
    EXPECT_LT(dots.count[1], 600);
    tools.bits = 0;
    tools.none = true;
    stage->Geom()->PolyGroupShrinkSelectionEdgeLoop("back"); // a lone polygon: it is in no group now
    EXPECT_TRUE(tint(2, 0).Only({2, 3}));
    tools.multi = true;
    GEOM_GroupAddElem(stage->Geom()->Geom(), "left", 2);
    GEOM_GroupAddElem(stage->Geom()->Geom(), "left", 3);
    EXPECT_TRUE(tint(0, 1).Only({1})) << "those in two groups";

    // The lines of the object that the tool leaves alone are black, those of its own are not.
    const PicturePtr picture = Drawn(preview, options);
    int blue[2] = {}, black[2] = {};
    for (int y = 0; y < picture->Height(); ++y)
        for (int x = 0; x < picture->Width(); ++x)
        {
            const std::uint8_t* const p = picture->Row(y) + 4 * x;
            const int half = 2 * y / picture->Height();
            blue[half] += p[2] > p[0] + 40;
            black[half] += p[0] < 60 && p[2] < 60;
        }
    EXPECT_GT(blue[0], 100);
    EXPECT_EQ(blue[1], 0);
    EXPECT_EQ(black[0], 0);
    EXPECT_GT(black[1], 100);

    tools.group = tools.none = tools.multi = false;
    tools.cd1 = tools.cd2 = true;
    other->SetGroupMember(true);
    const Columns member = tint(1, 0);
    EXPECT_TRUE(member.Only({0, 1, 2, 3})) << "all of the member";
    tools.cd2 = false;
    EXPECT_TRUE(tint(1, 0).Only({}));
    EXPECT_EQ(stage->DefaultMaterial()->KdColor(), color);
}
