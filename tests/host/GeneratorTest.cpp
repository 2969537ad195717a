#include "host/glsl/Generator.h"
#include "tests/support/Trees.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

using namespace vx;

namespace
{
int CountOf(const std::string& text, const std::string& what)
{
    int count = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++count;
    return count;
}

// A plain value other than the one that is there: the next word, another file, a number within the range.
void Change(TreeInput& input)
{
    const InputType& type = input.Type();
    const float* const v = input.Values();
    if (type.type == ValueType::File)
        input.SetFile(input.File() + "2");
    else if (type.type == ValueType::Choice)
        input.Set(float(ChoiceWord(type, input.Choice() + 1).empty() ? input.Choice() - 1 : input.Choice() + 1));
    else if (type.type == ValueType::Vector)
        input.Set(0.25f, 0.5f, 0.75f);
    else
        input.Set(v[0] + 1 <= type.high ? v[0] + 1 : v[0] * 0.5f, v[1] * 0.5f, v[2] * 0.5f);
}
} // namespace

TEST(Generator, WritesEveryTypeOfNode)
{
    for (const NodeType& type : NodeTypes())
    {
        SCOPED_TRACE(type.name);
        const auto tree = PlainTree(type.IsRoot() ? type.name : "PhysicalSurface");
        const GlslSource bare = GenerateGlsl(*tree);
        ASSERT_EQ(bare.problem, "");
        EXPECT_TRUE(bare.fragment.starts_with("#version 130\n"));
        EXPECT_TRUE(bare.textures.empty());
        if (type.IsRoot())
            continue;
        ShowNode(*tree, type.name);
        const GlslSource shown = GenerateGlsl(*tree);
        ASSERT_EQ(shown.problem, "");
        // A plain colour is written where it is used, and its standard is that of the surface; all else is a variable.
        const bool plain = type.name == std::string("simple_color");
        EXPECT_EQ(CountOf(shown.fragment, std::string(type.name) + "1_result ="), plain ? 0 : 1);
        EXPECT_EQ(shown.Hash() == bare.Hash(), plain);
        EXPECT_EQ(shown.vertex.find('%'), std::string::npos);
        EXPECT_EQ(shown.fragment.find('%'), std::string::npos);
    }
}

TEST(Generator, KeyChangesWithEveryValueThatHasAnEffectAndWithNoName)
{
    // What the surface shows only once something else is set, and what is not for shaders.
    const std::set<std::string> silent = {
        "Transparency_Falloff", "Ambient_Color", "Translucence_Color", "Bump",
        "Gradient_Bump",        "Bump_Strength", "Geometry_Edge_Dist", "Geometry_Edge_Color"};
    for (const NodeType& type : NodeTypes())
    {
        const auto make = [&](const char* name)
        {
            auto tree = PlainTree(type.IsRoot() ? type.name : "kelvo");
            if (!type.IsRoot())
                ShowNode(*tree, type.name, name);
            if (TreeInput* const stops = type.IsRoot() ? nullptr : tree->FindNode(name)->Find("Stops"))
                stops->Set(4);
            return tree;
        };
        EXPECT_EQ(GenerateGlsl(*make("a")).Hash(), GenerateGlsl(*make("b")).Hash()) << type.name;
        for (int i = 0; i < int(type.inputs.size()); ++i)
        {
            const auto before = make("a"), after = make("a");
            Change(after->Node(after->NumNodes() - 1)->At(i));
            const std::string name = type.inputs[std::size_t(i)].name;
            const bool changed = GenerateGlsl(*before).Hash() != GenerateGlsl(*after).Hash();
            EXPECT_EQ(changed, !silent.contains(name) && !name.ends_with("_5")) << type.name << " " << name;
        }
    }
}

TEST(Generator, KeyDependsOnTheLeastOpacityOfWhatIsClear)
{
    const auto tree = PlainTree();
    EXPECT_EQ(GenerateGlsl(*tree, {0.5f}).Hash(), GenerateGlsl(*tree, {0.25f}).Hash());
    tree->Root()->Find("Transparency_Max")->Set(0.5f);
    EXPECT_NE(GenerateGlsl(*tree, {0.5f}).Hash(), GenerateGlsl(*tree, {0.25f}).Hash());
}

TEST(Generator, WritesASharedNodeOnce)
{
    const auto tree = PlainTree();
    TreeNode* const noise = tree->AddNode("noise", "cloud");
    TreeNode* const blend = tree->AddNode("blender", "blend");
    for (const char* const input : {"Input_1", "Blending"})
        blend->Find(input)->Connect(noise);
    tree->Root()->Find("Diffuse_Color")->Connect(blend);
    tree->Root()->Find("Transparency_Max")->Connect(noise);
    const GlslSource source = GenerateGlsl(*tree);
    EXPECT_EQ(CountOf(source.fragment, "float noise1_result = "), 1);
    EXPECT_EQ(CountOf(source.fragment, "noise2_result"), 0);
    EXPECT_GE(CountOf(source.fragment, "noise1_result"), 4);
    EXPECT_LT(source.fragment.find("noise1_result ="), source.fragment.find("blender1_result ="));
}

TEST(Generator, PlacesTexturesWhereTheShaderEngineBindsThem)
{
    const auto tree = PlainTree();
    const char* const inputs[] = {"Diffuse_Color", "Highlight_Color", "Ambient_Value"};
    for (int i = 0; i < 3; ++i)
    {
        TreeNode* const map = tree->AddNode("image_map", "map");
        map->Find("File")->SetFile(i == 1 ? "b.png" : "a.png");
        if (i == 2)
            map->Find("Gamma")->Set(1); // the same file again, as numbers
        tree->Root()->Find(inputs[i])->Connect(map);
    }
    GlslSource source = GenerateGlsl(*tree);
    const auto row = [&](std::size_t i)
    {
        const GlslSource::Texture& t = source.textures[i];
        return t.sampler + " " + t.type + " " + t.BindingFile().Std() + " " + std::to_string(t.unit);
    };
    ASSERT_EQ(source.textures.size(), 4u);
    EXPECT_EQ(row(0), "texture0 none  0");
    EXPECT_EQ(row(1), "texture1 sampler2D a.png 0");
    EXPECT_EQ(row(2), "texture2 sampler2D b.png 2");
    EXPECT_EQ(row(3), "texture3 sampler2D a.png\nlinear 3");

    // A volume takes the first place, also when it is asked for last.
    tree->Root()->Find("Transparency_Max")->Connect(tree->AddNode("noise", "n"));
    source = GenerateGlsl(*tree);
    ASSERT_EQ(source.textures.size(), 4u);
    EXPECT_EQ(source.textures[0].type, "sampler3D");
    EXPECT_EQ(source.textures[0].unit, 1);
    EXPECT_EQ(row(1), "texture1 sampler2D a.png 0");
}

// A chain of color_math nodes over as many pictures.
static std::unique_ptr<ShaderTree> ChainOfPictures(int count)
{
    auto tree = PlainTree();
    TreeInput* open = tree->Root()->Find("Diffuse_Color");
    for (int i = 0; i < count; ++i)
    {
        TreeNode* const sum = tree->AddNode("color_math", "sum");
        TreeNode* const map = tree->AddNode("image_map", "map");
        map->Find("File")->SetFile(BString::Format("%d.png", i));
        open->Connect(sum);
        sum->Find("Color_2")->Connect(map);
        open = sum->Find("Color_1");
    }
    return tree;
}

TEST(Generator, SaysWhyThereIsNoProgram)
{
    ShaderTree empty;
    EXPECT_EQ(GenerateGlsl(empty).problem, "the tree has no root");
    EXPECT_EQ(GenerateGlsl(*ChainOfPictures(14)).problem, "");
    EXPECT_EQ(GenerateGlsl(*ChainOfPictures(15)).problem, "more than 14 pictures");

    const auto noSurface = PlainTree();
    noSurface->SetRoot(noSurface->AddNode("math", "sum"));
    EXPECT_EQ(GenerateGlsl(*noSurface).problem, "a node of type math is no surface");

    const auto cycle = PlainTree();
    TreeNode* const first = ShowNode(*cycle, "math", "first");
    TreeNode* const second = cycle->AddNode("math", "second");
    first->Find("Value_1")->Connect(second);
    second->Find("Value_2")->Connect(first);
    EXPECT_EQ(GenerateGlsl(*cycle).problem, "a cycle of nodes goes through \"first\"");

    const auto wrong = PlainTree();
    wrong->Root()->Find("Diffuse_Color")->Connect(wrong->AddNode("normal_map", "map"));
    EXPECT_EQ(GenerateGlsl(*wrong).problem,
              "a vector of a node normal_map feeds the input Diffuse_Color of a node PhysicalSurface");

    const auto deep = PlainTree(); // neither recursion nor a program that a driver would choke on
    TreeInput* open = deep->Root()->Find("Diffuse_Value");
    for (int i = 0; i < 100000; ++i)
    {
        TreeNode* const node = deep->AddNode("math", "m");
        open->Connect(node);
        open = node->Find("Value_1");
    }
    EXPECT_EQ(GenerateGlsl(*deep).problem, "more than 256 nodes");
    for (const ShaderTree* tree : {&empty, noSurface.get(), cycle.get(), wrong.get(), deep.get()})
        EXPECT_TRUE(GenerateGlsl(*tree).fragment.empty());
}

TEST(Generator, LeavesOutWhatDoesNotCount)
{
    const auto tree = PlainTree();
    TreeNode* const ramp = ShowNode(*tree, "ramp");
    const BString before = GenerateGlsl(*tree).Hash();
    ramp->Find("Color_3")->Connect(tree->AddNode("noise", "unused")); // two stops
    EXPECT_EQ(GenerateGlsl(*tree).Hash(), before);
    ramp->Find("Stops")->Set(3);
    EXPECT_EQ(GenerateGlsl(*tree).textures.size(), 1u);
}
