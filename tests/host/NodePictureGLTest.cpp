#include "shader/FilteredNoise.h"
#include "tests/host/NodeStage.h"
#include "tests/support/Trees.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <set>
#include <string>
#include <vector>

using namespace vx;

// What each type of node looks like on a plane or a sphere, against what it is meant to compute. Light is half of the
// colour, from all sides, so that nothing is bright enough for the shoulder.

namespace
{
constexpr int kSide = 64;
constexpr float kTolerance = 0.012f; // a step of 8 bits and the dither, where they are coarsest in linear light

class NodePicture : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!stage.Create(kSide))
            GTEST_SKIP() << stage.Error().CString();
    }

    // A surface of one node, set up by `setUp`, on the plane.
    void DrawNode(const char* type, const std::function<void(TreeNode&, ShaderTree&)>& setUp = nullptr)
    {
        const auto tree = PlainTree();
        TreeNode* const node = ShowNode(*tree, type);
        if (setUp)
            setUp(*node, *tree);
        Draw(*tree);
    }

    void Draw(const ShaderTree& tree, const StageMesh& mesh = StagePlane())
    {
        const GlslSource source = GenerateGlsl(tree);
        ASSERT_EQ(source.problem, "");
        stage.Draw(source, mesh);
    }

    // Linear light of the surface itself.
    VERTEX Color(int x, int y) const { return stage.At(x, y) * 2; }
    void ExpectColor(int x, int y, const VERTEX& expected, float tolerance = 2 * kTolerance) const
    {
        const VERTEX found = Color(x, y);
        EXPECT_NEAR(found.x, expected.x, tolerance) << "red at " << x << ", " << y;
        EXPECT_NEAR(found.y, expected.y, tolerance) << "green at " << x << ", " << y;
        EXPECT_NEAR(found.z, expected.z, tolerance) << "blue at " << x << ", " << y;
    }
    void ExpectGrey(int x, int y, float expected, float tolerance = 2 * kTolerance) const
    {
        ExpectColor(x, y, {expected, expected, expected}, tolerance);
    }

    static float Along(int pixel) { return (float(pixel) + 0.5f) / kSide; } // texture coordinate

    NodeStage stage;
};

void Pick(TreeNode& node, const char* input, const char* word)
{
    TreeInput& in = *node.Find(input);
    in.Set(float(ChoiceIndex(in.Type(), word)));
}
} // namespace

TEST_F(NodePicture, PlainColorsComeOutAsTheyAreWritten)
{
    stage.ambient = {1, 1, 1}; // 0.8 is below the shoulder in linear light
    const auto tree = PlainTree();
    tree->Root()->Find("Diffuse_Color")->Set(0.8f, 0.5f, 0.1f);
    tree->Root()->Find("Diffuse_Value")->Set(0.5f);
    Draw(*tree);
    const float red = std::pow((0.8f + 0.055f) / 1.055f, 2.4f), green = std::pow((0.5f + 0.055f) / 1.055f, 2.4f);
    EXPECT_LT(Length(stage.At(20, 20) - VERTEX{red, green, 0.01f} * 0.5f), kTolerance); // half the light
    DrawNode("simple_color", [](TreeNode& n, ShaderTree&) { n.Find("Color")->Set(0.8f, 0.5f, 0.1f); });
    EXPECT_LT(Length(stage.At(20, 20) - VERTEX{red, green, 0.01f}), kTolerance);
}

TEST_F(NodePicture, ImageMapsLieByTheirCoordinates)
{
    // Red and green below, blue and white above; 128 is half as a number and 0.216 as a colour.
    stage.SetPicture("picture.png", 2, 2, {128, 0, 0, 255, 0, 128, 0, 255, 0, 0, 128, 255, 128, 128, 128, 255});
    const auto nearest = [](TreeNode& n, ShaderTree&) { Pick(n, "Filtering", "nearest"); };
    constexpr float kGrey = 0.2158605f;
    DrawNode("image_map", nearest);
    ExpectColor(10, 10, {kGrey, 0, 0});
    ExpectColor(50, 10, {0, kGrey, 0});
    ExpectColor(10, 50, {0, 0, kGrey});
    DrawNode("image_map",
             [&](TreeNode& n, ShaderTree& t)
             {
                 nearest(n, t);
                 n.Find("U_Scale")->Set(2);
                 n.Find("V_Offset")->Set(0.5f);
                 n.Find("Gamma")->Set(1);
             });
    for (const int x : {5, 37}) // repeated along u, moved by half along v
    {
        ExpectColor(x, 10, {0, 0, 0.502f});
        ExpectColor(x + 16, 10, {0.502f, 0.502f, 0.502f});
    }
    DrawNode("image_map",
             [&](TreeNode& n, ShaderTree& t)
             {
                 nearest(n, t);
                 n.Find("Gamma")->Set(2);
             });
    ExpectColor(10, 10, {0.252f, 0, 0});
    DrawNode("image_map"); // smooth: the middle is the mean, in linear light
    ExpectColor(31, 31, {kGrey / 2, kGrey / 2, kGrey / 2});
}

TEST_F(NodePicture, PicturesCutOutWhereTheyAreClear)
{
    stage.SetPicture("picture.png", 2, 1, {255, 255, 255, 100, 255, 255, 255, 200});
    DrawNode("image_map", [](TreeNode& n, ShaderTree&) { Pick(n, "Filtering", "nearest"); });
    EXPECT_EQ(stage.Alpha(10, 10), 0);
    EXPECT_EQ(stage.Alpha(50, 10), 1);
}

TEST_F(NodePicture, NoiseIsThatOfTheVolume)
{
    std::srand(7);
    const FilteredNoise noise(NoiseVolume::kLattice, NoiseVolume::kLattice, NoiseVolume::kLattice);
    BArray<std::uint8_t> volume;
    ASSERT_TRUE(noise.noiseVolume3D(NoiseVolume::kSize, NoiseVolume::kSize, NoiseVolume::kSize, NoiseVolume::kScale,
                                    NoiseVolume::kAmplitude, FilteredNoise::NoiseSmooth, volume));
    stage.SetNoise({volume.Data(), volume.Data() + volume.Count()});
    // With half a cell for each pixel, pixels fall on the middle of texels.
    const auto place = [](int pixel) { return (float(pixel) + 0.5f) / 2; };
    const auto cubic = [&](int x, int y) { return noise.bicubicNoise3D(place(x), place(y), 0); };
    const struct
    {
        const char* mode;
        std::function<float(int, int)> expected;
    } rows[] = {
        {"smooth", [&](int x, int y) { return 0.5f + 0.5f * cubic(x, y); }},
        {"absolute", [&](int x, int y) { return std::abs(cubic(x, y)); }},
        {"ridged", [&](int x, int y) { return std::max(1 - 2 * std::abs(cubic(x, y)), 0.0f); }},
        {"lattice", [&](int x, int y) { return 0.5f + 0.5f * noise.noise3D(int(place(x)), int(place(y)), 0); }},
        {"radial",
         [&](int x, int y)
         {
             const float away = std::hypot(place(x), place(y)) + 0.5f * cubic(x, y);
             return 0.5f - 0.5f * std::cos(6.2831853f * away);
         }},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.mode);
        DrawNode("noise",
                 [&](TreeNode& n, ShaderTree&)
                 {
                     Pick(n, "Mode", row.mode);
                     Pick(n, "Coordinates", "uv");
                     n.Find("Scale")->Set(kSide / 2);
                     n.Find("Octaves")->Set(1);
                 });
        for (int y = 0; y < kSide; y += 7)
            for (int x = 0; x < kSide; x += 5)
                ExpectGrey(x, y, row.expected(x, y), row.mode == std::string("radial") ? 0.06f : 0.03f);
    }

    // More layers make it finer. Where nothing is said, the place in the model is what counts.
    const auto turns = [&](float octaves)
    {
        DrawNode("noise",
                 [&](TreeNode& n, ShaderTree&)
                 {
                     n.Find("Scale")->Set(2);
                     n.Find("Octaves")->Set(octaves);
                 });
        int count = 0;
        for (int y = 8; y < kSide; y += 16)
            for (int x = 2; x < kSide; ++x)
                count += (Color(x, y).x - Color(x - 1, y).x) * (Color(x - 1, y).x - Color(x - 2, y).x) < 0;
        return count;
    };
    EXPECT_GT(turns(5), 2 * turns(1));
}

TEST_F(NodePicture, TilesAreWhereTheyAreExpected)
{
    DrawNode("tiles",
             [](TreeNode& n, ShaderTree&)
             {
                 n.Find("Tile_Color")->Set(1, 0, 0);
                 n.Find("Grout_Color")->Set(0, 0, 1);
                 n.Find("U_Count")->Set(2);
                 n.Find("V_Count")->Set(2);
                 n.Find("Gap")->Set(0.5f);
                 n.Find("Shift")->Set(0.5f);
             });
    for (const int x : {16, 48}) // middles of the first row; the second is shifted by half a tile
    {
        ExpectColor(x, 16, {1, 0, 0});
        ExpectColor(x, 48, {0, 0, 1});
        ExpectColor(x - 16, 48, {1, 0, 0});
        ExpectColor(x, 32, {0, 0, 1});
        ExpectColor(x - 16, 16, {0, 0, 1});
    }
}

TEST_F(NodePicture, VariablesRunAsTheyAreNamed)
{
    for (const char* const component : {"u", "v"})
    {
        DrawNode("uv",
                 [&](TreeNode& n, ShaderTree&)
                 {
                     Pick(n, "Component", component);
                     n.Find("Scale")->Set(0.5f);
                     n.Find("Offset")->Set(0.25f);
                 });
        for (const int at : {3, 30, 60})
            ExpectGrey(component[0] == 'u' ? at : 20, component[0] == 'u' ? 20 : at, 0.5f * Along(at) + 0.25f);
    }
    for (const char* const component : {"x", "y", "z"})
    {
        DrawNode("position",
                 [&](TreeNode& n, ShaderTree&)
                 {
                     Pick(n, "Component", component);
                     n.Find("Offset")->Set(0.25f);
                 });
        const float x = 2 * Along(40) - 1, y = 2 * Along(50) - 1;
        ExpectGrey(40, 50, 0.25f + (component[0] == 'x' ? x : component[0] == 'y' ? y : 0));
    }
}

TEST_F(NodePicture, ViewAndLightCount)
{
    const auto onSphere = [&](const char* type, float power)
    {
        const auto tree = PlainTree();
        TreeNode* const node = ShowNode(*tree, type);
        if (TreeInput* const input = node->Find("Power"))
            input->Set(power);
        Draw(*tree, StageSphere());
    };
    const auto cosine = [](int x) { return std::sqrt(1 - std::pow(2 * Along(x) - 1, 2.0f)); };
    const float f0 = std::pow(0.45f / 2.45f, 2.0f);
    const auto expect = [&](const std::function<float(float)>& of)
    {
        for (const int x : {32, 44, 56})
            ExpectGrey(x, 32, of(cosine(x)), 0.03f);
    };
    onSphere("facing", 1);
    expect([](float c) { return c; });
    onSphere("facing", 3);
    expect([](float c) { return c * c * c; });
    onSphere("fresnel", 0);
    expect([&](float c) { return f0 + (1 - f0) * std::pow(1 - c, 5.0f); });
    // The light from all sides is half, a light from the right adds its share.
    stage.ambient = {0.25f, 0.25f, 0.25f};
    stage.lights = {{1, 0, 0}};
    const auto tree = PlainTree();
    tree->Root()->Find("Diffuse_Value")->Set(0);
    tree->Root()->Find("Highlight_Value")->Set(0);
    tree->Root()->Find("AlternateDiffuse")->Connect(tree->AddNode("illumination", "light"));
    Draw(*tree, StageSphere());
    EXPECT_NEAR(stage.At(44, 32).x, 0.25f + 2 * Along(44) - 1, 2 * kTolerance);
    EXPECT_NEAR(stage.At(20, 32).x, 0.25f, kTolerance);
}

TEST_F(NodePicture, CalculationsGiveTheirResults)
{
    const struct
    {
        const char* operation;
        float a, b, expected;
    } rows[] = {
        {"add", 0.25f, 0.5f, 0.75f},
        {"subtract", 0.75f, 0.5f, 0.25f},
        {"multiply", 0.5f, 0.5f, 0.25f},
        {"divide", 0.25f, 0.5f, 0.5f},
        {"divide", 0.25f, 0, 0},
        {"power", 0.5f, 2, 0.25f},
        {"power", -0.5f, 2, 0.25f},
        {"power", -2, -2, 0.25f},
        {"power", -0.5f, 0.5f, 0},
        {"power", -0.5f, 3, 0},
        {"power", 0, 0, 1},
        {"minimum", 0.25f, 0.5f, 0.25f},
        {"maximum", 0.25f, 0.5f, 0.5f},
        {"modulo", 1.75f, 0.5f, 0.25f},
        {"modulo", -0.25f, 1, 0.75f},
        {"modulo", 1, 0, 0},
        {"step", 0.5f, 0.5f, 1},
        {"step", 0.25f, 0.5f, 0},
        {"sine", 0.5235988f, 0, 0.5f},
        {"wave", 0.25f, 0, 1},
        {"wave", 0, 0, 0.5f},
        {"absolute", -0.25f, 0, 0.25f},
        {"fraction", 3.25f, 0, 0.25f},
        {"floor", 1.75f, 0, 1},
        {"root", 0.25f, 0, 0.5f},
        {"root", -1, 0, 0},
    };
    // Three in each program, one for each colour: programs take longer to compile than to run.
    std::set<std::string> tried;
    constexpr std::size_t kRows = std::size(rows);
    for (std::size_t first = 0; first < kRows; first += 3)
    {
        const auto tree = PlainTree();
        TreeInput* open = tree->Root()->Find("Diffuse_Color");
        float expected[3] = {};
        for (std::size_t i = first; i < std::min(first + 3, kRows); ++i)
        {
            tried.insert(rows[i].operation);
            expected[i - first] = rows[i].expected;
            TreeNode* const sum = tree->AddNode("color_math", "sum");
            TreeNode* const channel = tree->AddNode("color_math", "channel");
            TreeNode* const math = tree->AddNode("math", "math");
            Pick(*sum, "Operation", "add");
            Pick(*math, "Operation", rows[i].operation);
            math->Find("Value_1")->Set(rows[i].a);
            math->Find("Value_2")->Set(rows[i].b);
            channel->Find("Color_1")->Connect(math);
            channel->Find("Color_2")->Set(i % 3 == 0, i % 3 == 1, i % 3 == 2);
            open->Connect(sum);
            sum->Find("Color_2")->Connect(channel);
            open = sum->Find("Color_1");
            open->Set(0, 0, 0);
        }
        Draw(*tree);
        SCOPED_TRACE(first);
        ExpectColor(20, 20, {expected[0], expected[1], expected[2]});
    }
    const InputType& words = FindNodeType("math")->inputs[0];
    for (int i = 0; !ChoiceWord(words, i).empty(); ++i)
        EXPECT_TRUE(tried.contains(std::string(ChoiceWord(words, i)))) << ChoiceWord(words, i);
}

TEST_F(NodePicture, ColorsAreCalculatedInLinearLight)
{
    // Written as 0.5 and 0.735: 0.214 and 0.5 in linear light.
    constexpr float kA = 0.2140411f, kB = 0.5f;
    const struct
    {
        const char* operation;
        float expected;
    } rows[] = {
        {"add", kA + kB},
        {"subtract", 0},
        {"multiply", kA * kB},
        {"divide", kA / kB},
        {"minimum", kA},
        {"maximum", kB},
        {"screen", 1 - (1 - kA) * (1 - kB)},
        {"difference", kB - kA},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.operation);
        DrawNode("color_math",
                 [&](TreeNode& n, ShaderTree&)
                 {
                     Pick(n, "Operation", row.operation);
                     n.Find("Color_1")->Set(0.5f, 0.5f, 0);
                     n.Find("Color_2")->Set(0.7353569f, 0.7353569f, 0);
                 });
        ExpectColor(20, 20, {row.expected, row.expected, 0});
    }
    DrawNode("blender",
             [](TreeNode& n, ShaderTree&)
             {
                 n.Find("Input_1")->Set(1, 0, 0);
                 n.Find("Input_2")->Set(0, 0, 1);
                 n.Find("Blending")->Set(0.25f);
             });
    ExpectColor(20, 20, {0.75f, 0, 0.25f});
}

TEST_F(NodePicture, ClampAndRampGoByTheirBounds)
{
    const auto alongU = [](TreeNode& n, ShaderTree& t) { n.Find("Value")->Connect(t.AddNode("uv", "u")); };
    DrawNode("clamp",
             [&](TreeNode& n, ShaderTree& t)
             {
                 alongU(n, t);
                 n.Find("Minimum")->Set(0.25f);
                 n.Find("Maximum")->Set(0.5f);
             });
    for (const int x : {2, 20, 28, 60})
        ExpectGrey(x, 20, std::clamp(Along(x), 0.25f, 0.5f));
    for (const char* const kind : {"linear", "smooth", "steps"})
    {
        SCOPED_TRACE(kind);
        DrawNode("ramp",
                 [&](TreeNode& n, ShaderTree& t)
                 {
                     alongU(n, t);
                     Pick(n, "Interpolation", kind);
                     n.Find("Stops")->Set(3);
                     n.Find("Color_1")->Set(1, 0, 0);
                     n.Find("Color_2")->Set(0, 1, 0);
                     n.Find("Color_3")->Set(0, 0, 1);
                     n.Find("Position_1")->Set(0.25f);
                     n.Find("Position_2")->Set(0.75f);
                     n.Find("Position_3")->Set(0.5f); // counts as where its predecessor stands
                 });
        ExpectColor(8, 20, {1, 0, 0});
        ExpectColor(56, 20, {0, 0, 1});
        const float t = (Along(24) - 0.25f) * 2;
        const float share = kind[0] == 'l' ? t : kind[1] == 'm' ? t * t * (3 - 2 * t) : 0;
        ExpectColor(24, 20, {1 - share, share, 0});
    }
}

// --- The normal

TEST_F(NodePicture, NormalMapsTurnTheNormalByTangentsOrCoordinates)
{
    stage.SetPicture("picture.png", 1, 1, {218, 128, 218, 255}); // tilted by 45 degrees towards u
    stage.ambient = {};
    const auto tree = PlainTree();
    ShowNode(*tree, "normal_map");
    tree->Root()->Find("Highlight_Value")->Set(0);
    tree->Root()->Find("Diffuse_Color")->Set(0.7f, 0.7f, 0.7f);
    // Coordinates turned by a right angle, and mirrored ones.
    StageMesh turned = StagePlane(), mirrored = StagePlane();
    for (std::size_t i = 0; i < 4; ++i)
    {
        StageVertex &a = turned.vertices[i], &b = mirrored.vertices[i];
        a.u = a.position.y;
        a.v = -a.position.x;
        a.tangent = {0, 1, 0};
        a.binormal = {-1, 0, 0};
        b.u = b.position.y;
        b.v = b.position.x;
        b.tangent = {0, 1, 0};
        b.binormal = {1, 0, 0};
    }
    const float kd = std::pow((0.7f + 0.055f) / 1.055f, 2.4f), tilt = std::sqrt(0.5f);
    for (StageMesh mesh : {turned, mirrored})
        for (const bool withFrames : {true, false})
        {
            if (!withFrames)
                for (StageVertex& v : mesh.vertices)
                    v.tangent = v.binormal = {};
            const struct
            {
                VERTEX light;
                float expected;
            } rows[] = {{{0, 1, 0}, tilt}, {{0, -1, 0}, 0}, {{1, 0, 0}, 0}, {{-1, 0, 0}, 0}, {{0, 0, 1}, tilt}};
            for (const auto& row : rows)
            {
                stage.lights = {row.light};
                Draw(*tree, mesh);
                EXPECT_NEAR(stage.At(20, 20).x, kd * row.expected, kTolerance)
                    << withFrames << " light " << row.light.x << " " << row.light.y << " " << row.light.z;
            }
        }
}

TEST_F(NodePicture, HeightsTurnTheNormalByTheirSlope)
{
    stage.ambient = {};
    stage.scale = 0.5f; // heights are in the units of the model, whatever its scale
    for (const char* const input : {"Bump", "Gradient_Bump"})
    {
        const auto tree = PlainTree();
        TreeNode* const height = tree->AddNode("position", "height");
        Pick(*height, "Component", "x");
        tree->Root()->Find(input)->Connect(height);
        tree->Root()->Find("Bump_Strength")->Set(1); // a slope of 1 along x
        tree->Root()->Find("Highlight_Value")->Set(0);
        tree->Root()->Find("Diffuse_Color")->Set(0.7f, 0.7f, 0.7f);
        const float kd = std::pow((0.7f + 0.055f) / 1.055f, 2.4f);
        for (const float x : {-1.0f, 1.0f})
        {
            stage.lights = {{x, 0, 0}};
            Draw(*tree);
            EXPECT_NEAR(stage.At(20, 20).x, x < 0 ? kd * std::sqrt(0.5f) : 0, kTolerance) << input;
        }
    }
}

// --- The surface

TEST_F(NodePicture, ClearSurfacesKeepTheirLeastOpacity)
{
    const auto tree = PlainTree();
    tree->Root()->Find("Transparency_Min")->Set(0.25f);
    tree->Root()->Find("Transparency_Max")->Set(1);
    tree->Root()->Find("Transparency_Falloff")->Set(1);
    stage.alphaPass = 1;
    stage.Draw(GenerateGlsl(*tree, {0.125f}), StageSphere());
    EXPECT_NEAR(stage.Alpha(32, 32), 0.75f, 0.01f);
    EXPECT_NEAR(stage.Alpha(63, 32), 0.125f, 0.05f); // where it would be all but clear
    stage.Draw(GenerateGlsl(*tree, {0.9f}), StageSphere());
    EXPECT_NEAR(stage.Alpha(32, 32), 0.9f, 0.01f);
    stage.alphaPass = 0;
    stage.Draw(GenerateGlsl(*tree, {0.125f}), StageSphere());
    EXPECT_EQ(stage.Alpha(32, 32), 1);
}

TEST_F(NodePicture, BackFacesHaveTheirColorInPlaceOfThePlainOne)
{
    StageMesh plane = StagePlane();
    plane.indices = {0, 2, 1, 2, 3, 1};
    stage.back = {0.5f, 0.25f, 0};
    const auto tree = PlainTree();
    Draw(*tree, plane);
    ExpectColor(20, 20, {0.5f, 0.25f, 0});
    ShowNode(*tree, "uv"); // a pattern stays
    Draw(*tree, plane);
    ExpectColor(40, 20, {0.5f * Along(40), 0.25f * Along(40), 0});
}

TEST_F(NodePicture, TonesAreAsManyAsAreAskedFor)
{
    stage.lights = {{1, 0, 0}};
    stage.tones = 3;
    Draw(*PlainTree(), StageSphere());
    std::vector<float> tones;
    for (int x = 2; x < kSide - 2; ++x)
        if (std::abs(stage.At(x, 32).x - stage.At(x + 1, 32).x) < 0.015f) // not an edge between two
            tones.push_back(stage.At(x, 32).x);
    std::sort(tones.begin(), tones.end());
    tones.erase(std::unique(tones.begin(), tones.end(), [](float a, float b) { return std::abs(a - b) < 0.05f; }),
                tones.end());
    EXPECT_EQ(tones.size(), 3u);
}

TEST_F(NodePicture, GlowAndLightFromBehindAreAdded)
{
    stage.ambient = {};
    stage.lights = {{0, 0, -1}};
    const auto tree = PlainTree();
    tree->Root()->Find("Ambient_Color")->Set(0, 0.5f, 0);
    tree->Root()->Find("Ambient_Value")->Set(1);
    tree->Root()->Find("Translucence_Color")->Set(0.5f, 0, 0);
    tree->Root()->Find("Translucence_Value")->Set(1);
    tree->Root()->Find("AlternateSpecular")->Set(0, 0, 0.5f);
    Draw(*tree);
    EXPECT_LT(Length(stage.At(20, 20) - VERTEX{0.214f, 0.214f, 0.214f}), 2 * kTolerance);
}
