#include "host/gl/LoadGL.h"
#include "tests/host/NodeStage.h"
#include "tests/support/Trees.h"

#include <gtest/gtest.h>

using namespace vx;

// Of every text, Link says nothing: neither compiler nor linker does, and all that a program wants set is announced.

TEST(GeneratedProgram, CompilesForEveryTypeOfNodeAndEveryChoice)
{
    NodeStage stage;
    if (!stage.Create(1))
        GTEST_SKIP() << stage.Error().CString();
    EXPECT_EQ(stage.Link(GenerateGlsl(*PlainTree())), "");
    for (const NodeType& type : NodeTypes())
    {
        if (type.IsRoot())
            continue;
        const auto tree = PlainTree();
        TreeNode* const node = ShowNode(*tree, type.name);
        EXPECT_EQ(stage.Link(GenerateGlsl(*tree)), "") << type.name;
        for (int i = 0; i < node->NumInputs(); ++i)
            for (int word = 1; !ChoiceWord(node->At(i).Type(), word).empty(); ++word)
            {
                node->At(i).Set(float(word));
                const GlslSource source = GenerateGlsl(*tree);
                EXPECT_EQ(stage.Link(source), "")
                    << type.name << " " << ChoiceWord(node->At(i).Type(), word) << source.fragment;
            }
    }
}

TEST(GeneratedProgram, CompilesWithEveryInputConnectedAndAsManyNodesAsThereMayBe)
{
    NodeStage stage;
    if (!stage.Create(1))
        GTEST_SKIP() << stage.Error().CString();
    for (const char* const feeding : {"noise", "tiles"}) // a number and a colour
    {
        const auto all = PlainTree();
        TreeNode* const node = all->AddNode(feeding, "node");
        TreeNode* const normals = all->AddNode("normal_map", "normals");
        normals->Find("File")->SetFile("normals.png");
        for (int i = 0; i < all->Root()->NumInputs(); ++i)
        {
            TreeInput& input = all->Root()->At(i);
            if (input.Type().takesNode)
                input.Connect(input.Type().type == ValueType::Vector ? normals : node);
            else
                continue;
            const auto one = PlainTree();
            TreeNode* const other = one->AddNode(input.Node()->Type().name, "node");
            if (TreeInput* const file = other->Find("File"))
                file->SetFile("normals.png");
            one->Root()->At(i).Connect(other);
            EXPECT_EQ(stage.Link(GenerateGlsl(*one)), "") << feeding << " in " << input.Type().name;
        }
        const GlslSource source = GenerateGlsl(*all);
        EXPECT_EQ(stage.Link(source), "") << source.fragment;
    }
    const auto longest = PlainTree(); // a chain of as many nodes as there may be
    TreeInput* open = longest->Root()->Find("Diffuse_Value");
    for (int i = 0; i < kMostNodes; ++i)
    {
        TreeNode* const sum = longest->AddNode("math", "sum");
        sum->Find("Value_2")->Set(float(i));
        open->Connect(sum);
        open = sum->Find("Value_1");
    }
    EXPECT_EQ(GenerateGlsl(*longest).problem, "");
    EXPECT_EQ(stage.Link(GenerateGlsl(*longest)), "");
    EXPECT_EQ(PendingGLErrors(), "");
}
