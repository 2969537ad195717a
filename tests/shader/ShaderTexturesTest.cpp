#include "shader/VXShaderBinding.h"
#include "tests/support/RecordingCompiler.h"

#include <gtest/gtest.h>

using Lines = RecordingEngine::Lines;

namespace
{
struct Binding
{
    const char *type, *file;
};

void Bind(VXShaderProgram& program, std::initializer_list<Binding> bindings)
{
    for (const Binding& b : bindings)
        program.AddTexture(new VXShaderBindingTexture("sampler", b.type, b.file));
}

std::vector<std::int32_t> Ids(const VXShaderProgram& program)
{
    std::vector<std::int32_t> ids;
    for (const VXShaderBindingTexture* texture : program.Textures())
        ids.push_back(std::int32_t(texture->TexID()));
    return ids;
}
} // namespace

TEST(ShaderTextures, AreBoundByTheirPlaceAndTheNoiseByUnit1)
{
    RecordingEngine draw;
    draw.textures = {{"a", 11}, {"b", 12}, {"c", 13}, {"negative", -5}};
    VXShaderEngine engine(&draw);
    VXShaderProgram program;
    Bind(program, {{"sampler2D", "a"},
                   {"sampler2D", "b"},
                   {"sampler2D", "c"},
                   {"sampler3D", ""},
                   {"samplerCube", "a"},
                   {"sampler2D", ""},
                   {"sampler2D", "negative"},
                   {"sampler2D", "a"}});
    program.Textures()[4]->SetTexID(99);
    engine.LoadShaderTextures(nullptr, &program);
    EXPECT_EQ(Ids(program), (std::vector<std::int32_t>{11, 12, 13, 500, 0, 0, -5, 11}));
    draw.Take();
    engine.EnableShaderTextures(&program);
    EXPECT_EQ(draw.Take(), (Lines{"EnableMultitexture2D 11 0", "EnableMultitexture2D 12 0", "EnableMultitexture2D 13 2",
                                  "DisableMultitexture2D", "EnableMultitexture3D 500 1", "EnableMultitexture2D 11 7"}));
    engine.ClearShaderTextures(nullptr, &program);
    engine.LoadShaderTextures(nullptr, nullptr);
    engine.EnableShaderTextures(nullptr);
    EXPECT_EQ(draw.Take(), Lines{});
}

TEST(ShaderTextures, AreAskedForOnceWhateverBecomesOfThem)
{
    RecordingEngine draw;
    draw.textures = {{"there", 3}};
    VXShaderEngine engine(&draw);
    VXShaderProgram first, second;
    Bind(first, {{"sampler2D", "there"}, {"sampler2D", "missing"}, {"sampler3D", ""}});
    Bind(second, {{"sampler3D", ""}});
    engine.LoadShaderTextures(nullptr, &first);
    EXPECT_EQ(draw.Take(), (Lines{"LoadTextureForShader there", "LoadTextureForShader missing", "CreateNoiseTexture"}));
    draw.textures["missing"] = 4; // too late
    engine.LoadShaderTextures(nullptr, &first);
    engine.LoadShaderTextures(nullptr, &second);
    EXPECT_EQ(draw.Take(), Lines{});
    EXPECT_EQ(first.Textures()[1]->TexID(), VXShaderBindingTexture::kFailed);
    EXPECT_EQ(Ids(second), std::vector<std::int32_t>{500});
    EXPECT_EQ(engine.NoiseTexture(), 500u);
}

TEST(ShaderProgram, OwnsItsBindingsAndIsValidWithBothShaders)
{
    VXShaderProgram program;
    int vertex = 0, fragment = 0;
    EXPECT_FALSE(program.IsValid());
    program.SetShaders(&vertex, nullptr);
    EXPECT_FALSE(program.IsValid());
    program.SetShaders(&vertex, &fragment);
    EXPECT_TRUE(program.IsValid());
    EXPECT_FALSE(program.AddTexture(nullptr));
    for (int i = 0; i < 8; ++i)
        EXPECT_TRUE(program.AddUniform(new VXShaderBindingUniform("light", "vec3")));
    MEM_FailAfter(1);
    EXPECT_FALSE(program.AddUniform(new VXShaderBindingUniform("late", "vec3")));
    MEM_FailAfter(0);
    ASSERT_EQ(program.Uniforms().Count(), 8);
    EXPECT_EQ(program.Uniforms()[7]->Name(), "light");
}
