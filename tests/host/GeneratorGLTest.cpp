#include "host/gl/LoadGL.h"
#include "host/glsl/Generator.h"
#include "host/window/OffscreenContext.h"
#include "tests/support/Trees.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

using namespace vx;

namespace
{
// Compiler's and linker's words; empty when all went well.
std::string Link(const GlslSource& source)
{
    const GLuint program = glCreateProgram();
    std::string words;
    const auto stage = [&](GLenum kind, const std::string& text)
    {
        const GLuint shader = glCreateShader(kind);
        const char* const pointer = text.c_str();
        glShaderSource(shader, 1, &pointer, nullptr);
        glCompileShader(shader);
        GLint done = 0;
        glGetShaderiv(shader, GL_COMPILE_STATUS, &done);
        char log[2000] = "";
        glGetShaderInfoLog(shader, sizeof log, nullptr, log);
        if (!done || *log) // warnings too
            words += log;
        glAttachShader(program, shader);
        glDeleteShader(shader);
    };
    stage(GL_VERTEX_SHADER, source.vertex);
    stage(GL_FRAGMENT_SHADER, source.fragment);
    for (GLuint i = 0; i < std::size(kGlslAttributes); ++i)
        glBindAttribLocation(program, i, kGlslAttributes[i]);
    glLinkProgram(program);
    GLint done = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &done);
    char log[2000] = "";
    glGetProgramInfoLog(program, sizeof log, nullptr, log);
    if (!done)
        words += std::string("linking: ") + log;
    // What the program wants set is announced. Compilers may drop what is announced and cannot matter.
    std::set<std::string> announced;
    for (const GlslSource::Uniform& uniform : source.uniforms)
        announced.insert(uniform.name);
    for (const GlslSource::Texture& texture : source.textures)
        announced.insert(texture.type == "none" ? "" : texture.sampler);
    GLint count = 0;
    glGetProgramiv(program, GL_ACTIVE_UNIFORMS, &count);
    for (GLuint i = 0; i < GLuint(count); ++i)
    {
        char name[100] = "";
        GLint inBlock = -1;
        glGetActiveUniformName(program, i, sizeof name, nullptr, name);
        glGetActiveUniformsiv(program, 1, &i, GL_UNIFORM_BLOCK_INDEX, &inBlock);
        if (inBlock < 0 && !announced.contains(name))
            words += std::string(name) + " is not announced\n";
    }
    glDeleteProgram(program);
    return words;
}
} // namespace

TEST(GeneratedProgram, CompilesForEveryTypeOfNodeAndEveryChoice)
{
    OffscreenContext context;
    if (!context.Create())
        GTEST_SKIP() << context.Error().CString();
    EXPECT_EQ(Link(GenerateGlsl(*PlainTree())), "");
    for (const NodeType& type : NodeTypes())
    {
        if (type.IsRoot())
            continue;
        const auto tree = PlainTree();
        TreeNode* const node = ShowNode(*tree, type.name);
        EXPECT_EQ(Link(GenerateGlsl(*tree)), "") << type.name;
        for (int i = 0; i < node->NumInputs(); ++i)
            for (int word = 1; !ChoiceWord(node->At(i).Type(), word).empty(); ++word)
            {
                node->At(i).Set(float(word));
                const GlslSource source = GenerateGlsl(*tree);
                EXPECT_EQ(Link(source), "")
                    << type.name << " " << ChoiceWord(node->At(i).Type(), word) << source.fragment;
            }
    }
}

TEST(GeneratedProgram, CompilesWithEveryInputConnectedAndAsManyNodesAsThereMayBe)
{
    OffscreenContext context;
    if (!context.Create())
        GTEST_SKIP() << context.Error().CString();
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
            EXPECT_EQ(Link(GenerateGlsl(*one)), "") << feeding << " in " << input.Type().name;
        }
        const GlslSource source = GenerateGlsl(*all);
        EXPECT_EQ(Link(source), "") << source.fragment;
    }
    const auto longest = PlainTree(); // a chain of as many nodes as there may be
    TreeInput* open = longest->Root()->Find("Diffuse_Value");
    for (int i = 0; i < 256; ++i)
    {
        TreeNode* const sum = longest->AddNode("math", "sum");
        sum->Find("Value_2")->Set(float(i));
        open->Connect(sum);
        open = sum->Find("Value_1");
    }
    EXPECT_EQ(GenerateGlsl(*longest).problem, "");
    EXPECT_EQ(Link(GenerateGlsl(*longest)), "");
    EXPECT_EQ(PendingGLErrors(), "");
}
