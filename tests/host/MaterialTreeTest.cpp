// From imported materials to trees, and from trees to what fixed drawing shows.
#include "host/import/MaterialTree.h"
#include "engine/VXScene.h"
#include "host/image/ColorSpace.h"
#include "host/image/TextureTable.h"
#include "host/import/ModelStore.h"
#include "host/tree/FixedMaterial.h"
#include "host/tree/MaterialJson.h"
#include "material/VXMaterial.h"
#include "shader/VXShaderCompiler.h"
#include "tests/support/Trees.h"

#include <gtest/gtest.h>

using namespace vx;

namespace
{
void ExpectColor(const VXMaterialColor4& color, float red, float green, float blue)
{
    EXPECT_NEAR(color.TotalRed(), red, 1e-6f);
    EXPECT_NEAR(color.TotalGreen(), green, 1e-6f);
    EXPECT_NEAR(color.TotalBlue(), blue, 1e-6f);
}

struct DecidingCompiler : VXShaderCompiler
{
    using VXShaderCompiler::VXShaderCompiler;
    void Init() override {}
    void BeginShading() override {}
    void EndShading() override {}
    VXShaderProgram* BuildProgram(VXMaterial*, std::int64_t) override { return nullptr; }
};

std::vector<NamedMaterial> OneMaterial(const char* name, float red)
{
    std::vector<NamedMaterial> materials(1);
    materials[0].name = name;
    materials[0].layers.push_back({"Base", PlainTree()});
    materials[0].layers[0].tree->Root()->Find("Diffuse_Color")->Set(red, 0, 0);
    return materials;
}

// Two triangles of two materials.
constexpr const char* kModel = "v 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl a\nf 1 2 3\nusemtl b\nf 3 2 1\n";

struct Store
{
    ModelStore models; ///< outlives the scene
    VXScene scene;
    ImportReport report;

    Store() { EXPECT_TRUE(models.ImportObjText(scene, kModel, std::strlen(kModel), "m.obj", ".", {}, report)); }
    float RedOf(const char* name) { return scene.FindMaterial(name, false)->KdColor().Red(); }
};
} // namespace

TEST(ApplyTree, TakesPlainValuesAsTheyAre)
{
    const auto tree = PlainTree();
    const auto set = [&](const char* name, float a, float b = 0, float c = 0)
    { tree->Root()->Find(name)->Set(a, b, c); };
    set("Diffuse_Color", 0.1f, 0.6f, 0.9f);
    set("Highlight_Color", 0.3f, 0.2f, 0.1f);
    set("Highlight_Value", 1);
    set("Highlight_Size", 77);
    set("Transparency_Min", 0.25f);
    set("Transparency_Max", 0.75f);
    set("Transparency_Falloff", 3);
    VXMaterial material(0, nullptr);
    TextureTable textures;
    EXPECT_EQ(ApplyTree(*tree, material, textures), "");
    EXPECT_EQ(material.KdColor(), VXMaterialColor4(0.1f, 0.6f, 0.9f, 1));
    EXPECT_EQ(material.KsColor(), VXMaterialColor4(0.3f, 0.2f, 0.1f, 1));
    ExpectColor(material.KaColor(), 0, 0, 0);
    EXPECT_EQ(material.Ns(), 77);
    EXPECT_EQ(material.TMin(), 0.25f);
    EXPECT_EQ(material.TMax(), 0.75f);
    EXPECT_EQ(material.TExpo(), 3);
    EXPECT_EQ(material.TextureIndex(), -1);

    set("Diffuse_Value", 0.5f); // of linear light
    EXPECT_EQ(ApplyTree(*tree, material, textures), "");
    ExpectColor(material.KdColor(), EncodedOf(LinearOf(0.1f) / 2), EncodedOf(LinearOf(0.6f) / 2),
                EncodedOf(LinearOf(0.9f) / 2));
}

// The words and the library's decision agree wherever the host adds nothing of its own.
TEST(DecideShader, AgreesWithTheCompiler)
{
    struct Row
    {
        const char* input;
        const char* node;    ///< null: plain
        const char* setting; ///< of the node
        float value;
        bool needed;
        const char* why;
    };
    const Row rows[] = {
        {"Diffuse_Color", nullptr, nullptr, 0.5f, false, "plain"},
        {"Diffuse_Color", "simple_color", nullptr, 0, false, "plain"},
        {"Diffuse_Color", "image_map", "U_Scale", 1.0000005f, false, "plain"},
        {"Diffuse_Color", "image_map", "U_Scale", 1.00001f, true, "U_Scale"},
        {"Diffuse_Color", "image_map", "V_Offset", 0.9e-5f, false, "plain"},
        {"Diffuse_Color", "image_map", "V_Offset", 1e-5f, true, "V_Offset"},
        {"Diffuse_Color", "image_map", "V_Offset", -0.5f, true, "V_Offset"},
        {"Transparency_Max", "facing", nullptr, 0, true, "of type facing"},
        {"Gradient_Bump", "noise", nullptr, 0, true, "of type noise"},
    };
    DecidingCompiler compiler(nullptr, nullptr);
    VXMaterial material(0, nullptr);
    for (const Row& row : rows)
    {
        SCOPED_TRACE(testing::Message() << row.input << " " << (row.setting ? row.setting : "") << " " << row.value);
        const auto tree = PlainTree();
        if (row.node)
        {
            TreeNode* const node = tree->AddNode(row.node, "fed");
            tree->Root()->Find(row.input)->Connect(node);
            if (row.setting)
                node->Find(row.setting)->Set(row.value);
        }
        const ShaderDecision decision = DecideShader(*tree, "m");
        EXPECT_EQ(decision.needed, row.needed) << decision.why.CString();
        EXPECT_GE(decision.why.Find(row.why), 0) << decision.why.CString();
        EXPECT_EQ(compiler.NeedsShaderNode(tree->Root(), &material, 0), row.needed);
        EXPECT_FALSE(DecideShader(*tree, "Camera").needed);
    }
}

TEST(DecideShader, KnowsWhatFixedDrawingWouldLose)
{
    struct Row
    {
        const char* input;
        const char* node; ///< null: a plain 1
        const char* lost;
    };
    for (const Row& row :
         {Row{"Bump", "noise", "relief from Bump"}, Row{"Normal_Map", "normal_map", "relief"},
          Row{"Normal_Map", nullptr, "relief"}, Row{"Highlight_Color", "image_map", "picture in Highlight_Color"},
          Row{"Ambient_Value", nullptr, "light of Ambient_Color"},
          Row{"Translucence_Value", nullptr, "light of Translucence_Color"},
          Row{"AlternateSpecular", nullptr, "light of AlternateSpecular"}})
    {
        const auto tree = PlainTree();
        EXPECT_EQ(LostWithoutShader(*tree), "");
        if (TreeNode* const node = row.node ? tree->AddNode(row.node, "fed") : nullptr)
        {
            tree->Root()->Find(row.input)->Connect(node);
            if (TreeInput* const file = node->Find("File"))
            {
                EXPECT_EQ(LostWithoutShader(*tree), "") << "without a picture";
                file->SetFile("picture.png");
            }
        }
        else
            tree->Root()->Find(row.input)->Set(1, 1, 1);
        EXPECT_GE(LostWithoutShader(*tree).Find(row.lost), 0) << LostWithoutShader(*tree).CString();
        EXPECT_TRUE(DecideShader(*tree, "m").needed);
        tree->Root()->Find("Bump_Strength")->Set(0);
        EXPECT_EQ(LostWithoutShader(*tree).IsEmpty(), row.input == std::string("Bump"));
    }
    EXPECT_TRUE(DecideShader(*PlainTree(), "m", 2).needed) << "a layer above the base";
}

TEST(TreeOf, CarriesWhatTheRecordHas)
{
    const std::string text =
        "newmtl plain\nKd 0.8 0.1 0.2\nKs 0.5 0.4 0.3\nNs 96\nd 0.25\nKe 0 1 0\n"
        "newmtl dull\nKd 1 1 1\nKs 1 1 1\nNs 0\n"
        "newmtl mapped\nKd 1 1 1\nNs 20\nKs 1 1 1\nmap_Kd -s 2 3 1 -o 0.5 0 0 d.png\nmap_Ks sub\\s.png\n"
        "map_Bump -bm 2 b.png\nnorm n.png\n"
        "newmtl tinted\nKd 1 0.5 0.5\nmap_Kd d.png\n";
    BArray<MaterialRecord> records;
    BArray<BString> warnings;
    ReadMaterialText(text.data(), text.size(), "m.mtl", records, warnings);
    ASSERT_EQ(records.Count(), 4);
    TextureTable textures;
    VXMaterial material(0, nullptr);

    const auto plain = TreeOf(records[0], "/f", 10);
    ApplyTree(*plain, material, textures);
    EXPECT_EQ(material.KdColor(), VXMaterialColor4(0.8f, 0.1f, 0.2f, 1));
    EXPECT_EQ(material.KsColor(), VXMaterialColor4(0.5f, 0.4f, 0.3f, 1));
    ExpectColor(material.KaColor(), 0, 1, 0);
    EXPECT_EQ(material.Ns(), 96);
    EXPECT_EQ(material.TMax(), 0.75f);
    EXPECT_EQ(LostWithoutShader(*TreeOf(records[1], "/f", 10)), "");
    ApplyTree(*TreeOf(records[1], "/f", 10), material, textures);
    ExpectColor(material.KsColor(), 0, 0, 0);

    const auto mapped = TreeOf(records[2], "/f", 10);
    const TreeNode& root = *mapped->Root();
    const TreeNode* const diffuse = root.Find("Diffuse_Color")->Node();
    ASSERT_TRUE(diffuse && root.Find("Highlight_Color")->Node() && root.Find("Bump")->Node());
    EXPECT_EQ(diffuse->Find("File")->File(), "/f/d.png");
    EXPECT_EQ(diffuse->Find("V_Scale")->Values()[0], 3);
    EXPECT_EQ(diffuse->Find("U_Offset")->Values()[0], 0.5f);
    EXPECT_EQ(root.Find("Highlight_Color")->Node()->Find("File")->File(), "/f/sub/s.png");
    EXPECT_EQ(root.Find("Bump")->Node()->Find("Gamma")->Values()[0], 1);
    EXPECT_FLOAT_EQ(root.Find("Bump_Strength")->Values()[0], 0.2f) << "two times a hundredth of the model";
    EXPECT_EQ(root.Find("Normal_Map")->Node()->TypeName(), "normal_map");
    EXPECT_EQ(TreeOf(records[3], "/f", 10)->Root()->Find("Diffuse_Color")->Node()->TypeName(), "color_math");
}

TEST(ModelStore, GivesMaterialsToThoseOfTheirNames)
{
    Store store;
    const float before = store.RedOf("b");
    std::vector<NamedMaterial> two = OneMaterial("a", 0.25f);
    two.push_back(std::move(OneMaterial("nobody", 0.5f)[0]));
    two[0].layers.push_back({"Coat", PlainTree()});
    store.models.ApplyMaterials(std::move(two), store.report);
    EXPECT_EQ(store.RedOf("a"), 0.25f);
    EXPECT_EQ(store.RedOf("b"), before);
    ASSERT_EQ(store.report.warnings.Count(), 1);
    EXPECT_GE(store.report.warnings[0].Find("'nobody'"), 0);
    const VXMaterial& a = *store.scene.FindMaterial("a", false);
    ASSERT_EQ(a.NumLayers(), 2);
    EXPECT_TRUE(a.ShaderTree(0) && a.ShaderTree(1) && a.ShaderTreeDirty());

    store.models.ApplyMaterials(OneMaterial("anything", 0.75f), store.report);
    EXPECT_EQ(store.RedOf("a"), 0.75f);
    EXPECT_EQ(store.RedOf("b"), 0.75f);
    EXPECT_EQ(a.NumLayers(), 1) << "of the material before nothing is left";
    EXPECT_EQ(store.report.warnings.Count(), 1);
}
