#include "base/BFile.h"
#include "engine/VXLight.h"
#include "engine/VXScene.h"
#include "host/Preview.h"
#include "host/gl/GeomBuffers.h"
#include "host/gl/LoadGL.h"
#include "host/gl/VXGLDrawEngine.h"
#include "host/glsl/GlslCompiler.h"
#include "host/image/Png.h"
#include "host/tree/FixedMaterial.h"
#include "host/tree/ShaderTree.h"
#include "material/VXMaterial.h"
#include "shader/VXShaderEngine.h"
#include "tests/support/ObjText.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

using namespace vx;

// Surfaces drawn by the programs of their materials' trees. What both can express must look as the fixed surfaces do.

namespace
{
constexpr int kTolerance = 1; // of 255: the same sums in another order, rounded after dithering

struct Look
{
    VERTEX kd{0.8f, 0.35f, 0.2f};
    float ks = 0.5f, ns = 24;
    float share = 1; // of both
    float clearMiddle = 0, clearRim = 0, falloff = 0;
    bool textured = false;
    const char* fed = nullptr; ///< an input, and the type of the node that feeds it
    const char* by = nullptr;
    const char* file = nullptr; ///< of that node
};

TestMesh Sphere()
{
    TestMesh mesh{"sphere", {}, {}};
    constexpr int kRound = 32, kHigh = 16;
    for (int j = 0; j <= kHigh; ++j)
        for (int i = 0; i < kRound; ++i)
        {
            const float a = 6.2831853f * float(i) / kRound, b = 3.1415927f * float(j) / kHigh;
            mesh.verts.push_back({std::sin(b) * std::sin(a), std::cos(b), std::sin(b) * std::cos(a)});
        }
    for (int j = 0; j < kHigh; ++j)
        for (int i = 0; i < kRound; ++i)
        {
            const int n = (i + 1) % kRound;
            mesh.faces.push_back({j * kRound + i, (j + 1) * kRound + i, (j + 1) * kRound + n, j * kRound + n});
            for (const auto& [u, v] :
                 {std::pair(i, j), std::pair(i, j + 1), std::pair(i + 1, j + 1), std::pair(i + 1, j)})
                mesh.uvs.push_back({float(u) / kRound, 1 - float(v) / kHigh});
        }
    return mesh;
}

class ShaderGL : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!preview.PrepareContext())
            GTEST_SKIP() << preview.Error().CString();
        options.width = options.height = 128;
        options.shadows = false;
    }

    void Add(const TestMesh& mesh, const char* material)
    {
        const std::string text = ObjText(mesh, material);
        ASSERT_TRUE(preview.LoadText(text.data(), text.size(), mesh.name.c_str(), BPath("."), {}))
            << preview.Error().CString();
    }

    VXMaterial& Material(const char* name) { return *preview.Models().MaterialNamed(preview.Scene(), name); }

    ShaderTree& TreeFor(VXMaterial& material)
    {
        trees.push_back(std::make_unique<ShaderTree>());
        ShaderTree& tree = *trees.back();
        tree.SetRoot(tree.AddNode("PhysicalSurface", "root"));
        material.SetOrmondShaderTree(0, static_cast<BShaderTree*>(&tree));
        material.SetShaderTreeDirty(true);
        return tree;
    }

    // A tree of the look, and the fixed surface that stands for it.
    ShaderTree& Dress(VXMaterial& material, const Look& look)
    {
        ShaderTree& tree = TreeFor(material);
        TreeNode& root = *tree.Root();
        root.Find("Diffuse_Color")->Set(look.kd.x, look.kd.y, look.kd.z);
        root.Find("Diffuse_Value")->Set(look.share);
        root.Find("Highlight_Color")->Set(look.ks, look.ks, look.ks);
        root.Find("Highlight_Value")->Set(look.share);
        root.Find("Highlight_Size")->Set(look.ns);
        root.Find("Transparency_Min")->Set(look.clearMiddle);
        root.Find("Transparency_Max")->Set(look.clearRim);
        root.Find("Transparency_Falloff")->Set(look.falloff);
        if (look.textured)
        {
            TreeNode* const image = tree.AddNode("image_map", "image");
            image->Find("File")->SetFile(VELMAR_SOURCE_DIR "/samples/sail.png");
            root.Find("Diffuse_Color")->Connect(image);
        }
        if (look.fed)
        {
            TreeNode* const node = tree.AddNode(look.by, "fed");
            root.Find(look.fed)->Connect(node);
            if (TreeInput* const color = node->Find("Color"))
                color->Set(0.2f, 0.8f, 0.5f);
            if (look.file)
                node->Find("File")->SetFile(look.file);
        }
        EXPECT_EQ(ApplyTree(tree, material, preview.Models().Textures()).IsEmpty(), !look.file);
        return tree;
    }

    PicturePtr Drawn(ShaderUse use)
    {
        options.shaders = use;
        PicturePtr picture = preview.Render(options);
        EXPECT_TRUE(picture) << preview.Error().CString();
        EXPECT_EQ(PendingGLErrors(), "");
        return picture;
    }

    GlslCompiler& Compiler() { return dynamic_cast<GlslCompiler&>(*preview.Engine().ShaderEngine()->ShaderCompiler()); }

    // Drawn both ways. @return the picture of the program
    PicturePtr ExpectAgreement(const std::string& name)
    {
        const PicturePtr fixed = Drawn(ShaderUse::Off);
        EXPECT_EQ(VXShaderCompiler::NumActivations(), 0);
        PicturePtr generated = Drawn(ShaderUse::On);
        EXPECT_GT(VXShaderCompiler::NumActivations(), 0) << "no program was used";
        PicturePtr marked;
        const PictureDifference found = ComparePictures(*fixed, *generated, kTolerance, &marked);
        EXPECT_EQ(found.pixelsOff, 0) << name << ": off by up to " << found.largest;
        if (found.pixelsOff > 0)
        {
            const std::filesystem::path folder = VELMAR_PICTURE_DIR;
            std::filesystem::create_directories(folder);
            for (const auto& [what, picture] :
                 {std::pair("fixed", fixed.get()), std::pair("generated", generated.get()),
                  std::pair("difference", marked.get())})
                WritePng(*picture, BPath(BString((folder / (name + "." + what + ".png")).string())));
        }
        return generated;
    }

    std::vector<std::unique_ptr<ShaderTree>> trees; // outlives the scene that refers to it
    Preview preview;
    PreviewOptions options;
};

double MeanOf(const CPB_Offscreen& picture)
{
    double sum = 0;
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < 4 * picture.Width(); ++x)
            sum += x % 4 < 3 ? picture.Row(y)[x] : 0;
    return sum / (3.0 * picture.Width() * picture.Height());
}
} // namespace

TEST_F(ShaderGL, ProgramsAgreeWithTheFixedSurfaces)
{
    const struct
    {
        const char* name;
        Look look;
        bool culled = false;
    } looks[] = {{"opaque", {}, true},
                 {"dull", {.kd = {0.3f, 0.6f, 0.9f}, .ks = 0, .ns = 1}},
                 {"half as strong", {.share = 0.5f}},
                 {"clear", {.clearMiddle = 0.7f, .clearRim = 0.7f}},
                 {"clear in the middle", {.clearMiddle = 0.9f, .clearRim = 0.1f, .falloff = 2}, true},
                 {"clearer than shown", {.clearMiddle = 1, .clearRim = 1}},
                 {"textured", {.textured = true}},
                 {"textured and clear", {.share = 0.6f, .clearMiddle = 0.5f, .clearRim = 0.5f, .textured = true}},
                 {"colour as a factor", {.fed = "Diffuse_Value", .by = "simple_color"}},
                 {"colour as clearness", {.clearMiddle = 0.7f, .fed = "Transparency_Max", .by = "simple_color"}},
                 {"picture without a file", {.share = 0.5f, .fed = "Diffuse_Color", .by = "image_map"}},
                 {"picture that is missing", {.fed = "Diffuse_Color", .by = "image_map", .file = "nothing.png"}}};
    Add(Sphere(), "skin");
    Add(Moved(Scaled(Grid(1, 1), 3), {-1.5f, -1.5f, -1.5f}), "skin");
    for (const auto& [name, look, culled] : looks)
    {
        SCOPED_TRACE(name);
        Dress(Material("skin"), look);
        options.backFaces = !culled;
        options.depthCue = culled;
        options.view.azimuth = culled ? 200 : 35; // the plane from behind too
        ExpectAgreement(name);
    }
}

// Where it is seen face-on, in parallel, the cosine is 1 or, by rounding, more than that.
TEST_F(ShaderGL, ClearnessWithoutFalloffHoldsFaceOn)
{
    Add(Grid(1, 1), "skin");
    Dress(Material("skin"), {.clearRim = 0.8f});
    options.view.ortho = true;
    options.view.azimuth = options.view.elevation = 0;
    options.background = BackgroundStyle::Clear;
    for (const ShaderUse use : {ShaderUse::Off, ShaderUse::On})
        EXPECT_NEAR(Drawn(use)->Row(64)[4 * 60 + 3], 255 * 0.2, 2);
}

// Red under green: covered, half covered, and the base alone.
TEST_F(ShaderGL, LayersLieOverTheirBaseOrAreNotShown)
{
    Add(Grid(1, 1), "skin");
    VXMaterial& material = Material("skin");
    Dress(material, {.kd = {1, 0, 0}, .ks = 0});
    trees.push_back(std::make_unique<ShaderTree>());
    ShaderTree& coat = *trees.back();
    coat.SetRoot(coat.AddNode("PhysicalSurface", "root"));
    coat.Root()->Find("Diffuse_Color")->Set(0, 1, 0);
    coat.Root()->Find("Highlight_Value")->Set(0);
    ASSERT_GE(material.CreateNewLayer("coat", "coat"), 0);
    material.SetOrmondShaderTree(1, static_cast<BShaderTree*>(&coat));
    options.view.azimuth = options.view.elevation = 0;
    for (const float clear : {0.0f, 0.5f})
    {
        coat.Root()->Find("Transparency_Min")->Set(clear);
        coat.Root()->Find("Transparency_Max")->Set(clear);
        material.SetShaderTreeDirty(true);
        const PicturePtr shown = Drawn(ShaderUse::Auto);
        EXPECT_NEAR(shown->Row(64)[4 * 60], 245 * clear, 8);
        EXPECT_NEAR(shown->Row(64)[4 * 60 + 1], 245 * (1 - clear), 8);
        EXPECT_EQ(ComparePictures(*shown, *Drawn(ShaderUse::On), 0).pixelsOff, 0);
    }
    EXPECT_LT(Drawn(ShaderUse::Off)->Row(64)[4 * 60 + 1], 10);
}

// In styles with lines, surfaces stand back alike.
TEST_F(ShaderGL, ProgramsAgreeInEveryStyleThatUsesThem)
{
    Add(Sphere(), "skin");
    Add(Moved(Cube(), {2, 0, 0}), "glass");
    Dress(Material("skin"), {});
    Dress(Material("glass"), {.clearMiddle = 0.5f, .clearRim = 0.5f});
    int used = 0;
    for (int mode = 0; mode < kNumDrawModes; ++mode)
    {
        SCOPED_TRACE(PresetOf(DrawMode(mode)).name);
        options.mode = DrawMode(mode);
        options.edgeLines = mode % 2 == 0;
        const PicturePtr generated = Drawn(ShaderUse::On);
        if (VXShaderCompiler::NumActivations() == 0)
            continue;
        ++used;
        EXPECT_EQ(ComparePictures(*Drawn(ShaderUse::Off), *generated, kTolerance).pixelsOff, 0);
    }
    EXPECT_GE(used, 4);
}

TEST_F(ShaderGL, ProgramsAgreeUnderEveryLight)
{
    using Type = VXLight;
    const struct
    {
        const char* name;
        VXLight::VXLightType type;
        VXLight::VXLightAttenType attenuation;
        float start, end;
    } rows[] = {{"infinite", Type::kLightInfinite, Type::kAttenConstant, 0, 0},
                {"point", Type::kLightPoint, Type::kAttenConstant, 0, 0},
                {"point that ends", Type::kLightPoint, Type::kAttenConstant, 1, 3},
                {"point, squared", Type::kLightPoint, Type::kAttenInverseSquare, 2, 0},
                {"point, linear", Type::kLightPoint, Type::kAttenInverseLinear, 2, 0},
                {"spot", Type::kLightSpot, Type::kAttenConstant, 0, 0},
                {"area", Type::kLightArea, Type::kAttenConstant, 0, 0},
                {"image", Type::kLightImage, Type::kAttenConstant, 0, 0}};
    Add(Sphere(), "skin");
    Add(Moved(Scaled(Grid(1, 1), 3), {-1.5f, -1.5f, -1.2f}), "skin");
    Dress(Material("skin"), {});
    Drawn(ShaderUse::Off); // makes the standard lights, which are then switched off
    VXScene& scene = preview.Scene();
    for (std::int64_t i = 0; i < scene.NumLights(); ++i)
        scene.Light(int(i))->SetOn(false);
    const double dark = MeanOf(*ExpectAgreement("dark"));

    VXLight* const light = new VXLight; // the scene's
    scene.AddLight(light);
    Mat44 place;
    MAT_Identity(place);
    MAT_Translate(place, 0.5f, 0.4f, 2.5f);
    light->SetTransform(place);
    light->SetLightColor(0.9f, 0.8f, 0.7f, 1);
    light->SetFalloffStart(15);
    light->SetFalloffEnd(40);
    const float image[9][3] = {{1.5f, 1.2f, 1.0f},  {0.4f, 0.3f, 0.1f}, {0.5f, 0.5f, 0.9f},
                               {-0.3f, 0.2f, 0.1f}, {0.2f, 0, 0},       {0, 0.2f, 0},
                               {0, 0, 0.2f},        {0.1f, 0.1f, 0},    {0, 0.1f, 0.1f}};
    light->SetIBLColors(image);
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        light->SetLightType(row.type);
        light->SetAttenType(row.attenuation);
        light->SetAttenStart(row.start);
        light->SetAttenEnd(row.end);
        EXPECT_GT(MeanOf(*ExpectAgreement(std::string("light, ") + row.name)), dark + 2);
    }
}

TEST_F(ShaderGL, OneProgramForEqualTreesAndOneMoreForAChange)
{
    Add(Sphere(), "left");
    Add(Moved(Cube(), {3, 0, 0}), "right");
    Dress(Material("left"), {});
    ShaderTree& tree = Dress(Material("right"), {});
    Drawn(ShaderUse::On);
    EXPECT_EQ(Compiler().NumBuilt(), 1);
    EXPECT_TRUE(preview.Engine().ShaderRecompiled());
    EXPECT_EQ(Material("left").TreeHash(0), Material("right").TreeHash(0));

    const std::int64_t uploaded = GpuArray::UploadedBytes();
    const PicturePtr before = Drawn(ShaderUse::On);
    EXPECT_EQ(Compiler().NumBuilt(), 1);
    EXPECT_FALSE(preview.Engine().ShaderRecompiled());
    EXPECT_EQ(GpuArray::UploadedBytes(), uploaded);

    tree.Root()->Find("Diffuse_Color")->Set(0.1f, 0.2f, 0.9f);
    EXPECT_EQ(ApplyTree(tree, Material("right"), preview.Models().Textures()), "");
    Material("right").SetShaderTreeDirty(true);
    const PicturePtr after = Drawn(ShaderUse::On);
    EXPECT_EQ(Compiler().NumBuilt(), 2);
    EXPECT_GT(ComparePictures(*before, *after, 20).share, 0.05);
    EXPECT_EQ(GpuArray::UploadedBytes(), uploaded);

    // Depth cue, and a while without shaders, need none that is new.
    options.depthCue = true;
    ExpectAgreement("depth cue");
    EXPECT_EQ(Compiler().NumBuilt(), 2);

    // What the fixed surfaces can show needs no program when nobody asks for one.
    Drawn(ShaderUse::Auto);
    EXPECT_EQ(VXShaderCompiler::NumActivations(), 0);
    EXPECT_EQ(Compiler().NumBuilt(), 2);
    EXPECT_EQ(preview.Warnings().Count(), 0);
}

// A generator that writes a fragment shader which no driver takes.
class BrokenCompiler : public GlslCompiler
{
public:
    using GlslCompiler::GlslCompiler;

private:
    GlslSource Generate(const ShaderTree& tree) override
    {
        GlslSource source = GlslCompiler::Generate(tree);
        source.fragment += "\n100 % wrong\n";
        return source;
    }
};

TEST_F(ShaderGL, ABrokenProgramIsToldOfAndLeavesTheFixedSurface)
{
    Add(Sphere(), "skin");
    Dress(Material("skin"), {});
    const std::filesystem::path log = std::filesystem::path(testing::TempDir()) / "broken-shader.log";
    for (const bool readOnly : {false, true})
    {
        VXShaderEngine* const shaders = new VXShaderEngine(&preview.Engine());
        shaders->SetShaderCompiler(new BrokenCompiler(shaders, &preview.Engine()));
        preview.Engine().SetShaderEngine(shaders);
        preview.Engine().SetDeleteShadersPending(true);
        preview.SetShaderLog(readOnly ? BPath("/proc/no/such/folder.log") : BPath(BString(log.string())));
        const std::int64_t warned = preview.Warnings().Count();
        const PicturePtr fixed = Drawn(ShaderUse::Off);
        const PicturePtr drawn = Drawn(ShaderUse::On);
        Drawn(ShaderUse::On);
        EXPECT_EQ(ComparePictures(*fixed, *drawn, 0).pixelsOff, 0);
        EXPECT_EQ(Compiler().NumBuilt(), 1) << "tried again";
        EXPECT_TRUE(Compiler().HasErrors());
        EXPECT_GE(Compiler().GetErrors().Find("fragment shader"), 0) << Compiler().GetErrors().CString();
        ASSERT_EQ(preview.Warnings().Count(), warned + 1);
        EXPECT_GE(preview.Warnings()[warned].Find("skin"), 0);
        EXPECT_LT(preview.Warnings()[warned].Find("\n"), 0);
    }
    BFile file(BPath(BString(log.string())));
    ASSERT_EQ(file.Open(BFile::Mode::Read), 0);
    char* const text = file.ReadAll();
    EXPECT_NE(std::string(text, MEM_Count(text)).find("  100 % wrong\n"), std::string::npos);
    EXPECT_NE(std::string(text, MEM_Count(text)).find("\n  12  "), std::string::npos) << "lines are numbered";
    MEM_Free(text);
    std::filesystem::remove(log);
}

TEST_F(ShaderGL, AnUnreadableTextureIsToldOfOnce)
{
    Add(Sphere(), "left");
    Add(Moved(Sphere(), {3, 0, 0}), "right");
    for (const char* name : {"left", "right"})
    {
        ShaderTree& tree = Dress(Material(name), {});
        TreeNode* const image = tree.AddNode("image_map", "image");
        image->Find("File")->SetFile("nowhere/nothing.png");
        image->Find("U_Scale")->Set(name[0] == 'l' ? 2.0f : 3.0f); // two programs
        tree.Root()->Find("Diffuse_Color")->Connect(image);
    }
    PicturePtr last;
    for (int frame = 0; frame < 3; ++frame)
        last = Drawn(ShaderUse::Auto);
    EXPECT_GT(last->Row(64)[4 * 40], 60) << "grey, not black";
    EXPECT_EQ(Compiler().NumBuilt(), 2);
    ASSERT_EQ(preview.Warnings().Count(), 1);
    EXPECT_GE(preview.Warnings()[0].Find("nothing.png"), 0);
}

TEST_F(ShaderGL, ProgramsLiveAndDieWithTheirContext)
{
    Add(Sphere(), "skin");
    ShaderTree& tree = Dress(Material("skin"), {.textured = true});
    TreeNode* const noise = tree.AddNode("noise", "noise");
    tree.Root()->Find("Highlight_Color")->Connect(noise);
    const PicturePtr first = Drawn(ShaderUse::Auto);

    // Another context, whose programs have the same names, takes turns with it.
    Preview other;
    ASSERT_TRUE(other.PrepareContext());
    const std::string text = ObjText(Sphere(), "skin");
    ASSERT_TRUE(other.LoadText(text.data(), text.size(), "other", BPath("."), {}));
    VXMaterial& same = *other.Models().MaterialNamed(other.Scene(), "skin");
    same.SetOrmondShaderTree(0, static_cast<BShaderTree*>(&tree));
    for (int turn = 0; turn < 2; ++turn)
    {
        const PicturePtr there = other.Render(options);
        ASSERT_TRUE(there) << other.Error().CString();
        EXPECT_EQ(ComparePictures(*first, *there, kTolerance).pixelsOff, 0);
        EXPECT_EQ(ComparePictures(*first, *Drawn(ShaderUse::Auto), 0).pixelsOff, 0);
    }
    ASSERT_EQ(preview.Engine().Init(), ""); // gives back everything first
    EXPECT_EQ(ComparePictures(*first, *Drawn(ShaderUse::Auto), 0).pixelsOff, 0);
    EXPECT_EQ(other.Warnings().Count() + preview.Warnings().Count(), 0);
}

// A map that leans all normals towards the right of the texture, on a box whose faces all have the texture upright:
// seen from the front of each face, with lights that go along, all look the same. Edges and seams split its vertices.
TEST_F(ShaderGL, NormalMapsLeanTheSameWayOnEveryFace)
{
    TestMesh box{"box",
                 {{-1, -1, 1}, {1, -1, 1}, {1, 1, 1}, {-1, 1, 1}, {-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1}},
                 {{0, 1, 2, 3}, {1, 5, 6, 2}, {5, 4, 7, 6}, {4, 0, 3, 7}}};
    for (int face = 0; face < 4; ++face)
        box.uvs.insert(box.uvs.end(), {{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    Add(box, "skin");
    const std::filesystem::path file = std::filesystem::path(testing::TempDir()) / "leaning.png";
    PicturePtr lean(CPB_Offscreen::Create(4, 4));
    lean->Fill(217, 128, 218, 255); // (0.7, 0, 0.7)
    ASSERT_EQ(WritePng(*lean, BPath(BString(file.string()))), "");
    Dress(Material("skin"), {.ks = 0});
    options.view.elevation = 0;
    options.view.ortho = true;
    options.view.azimuth = 0;
    const PicturePtr straight = Drawn(ShaderUse::On);
    ShaderTree& tree = *trees.back();
    TreeNode* const map = tree.AddNode("normal_map", "map");
    map->Find("File")->SetFile(BString(file.string()));
    tree.Root()->Find("Normal_Map")->Connect(map);
    Material("skin").SetShaderTreeDirty(true);
    const PicturePtr front = Drawn(ShaderUse::On);
    EXPECT_GT(ComparePictures(*straight, *front, 10).share, 0.3);
    for (const float azimuth : {90.0f, 180.0f, 270.0f})
    {
        options.view.azimuth = azimuth;
        EXPECT_LT(ComparePictures(*front, *Drawn(ShaderUse::On), 2).share, 0.03) << azimuth; // but for the rim
    }
    std::filesystem::remove(file);
}
