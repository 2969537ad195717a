#include "tests/support/RecordingCompiler.h"

#include <gtest/gtest.h>

using Lines = RecordingEngine::Lines;

TEST(ShaderEngine, CanBeActiveOnlyWhileItIsAllowed)
{
    VXShaderEngine engine(nullptr);
    EXPECT_FALSE(engine.Enabled());
    engine.EnableEngine();
    EXPECT_TRUE(engine.Enabled());
    engine.Disable();
    engine.DisableEngine(); // without effect now
    EXPECT_FALSE(engine.Enabled());
    EXPECT_TRUE(engine.IsActive());
    engine.Enable();
    EXPECT_TRUE(engine.Enabled());
    engine.DisableEngine();
    engine.Disable();
    engine.EnableEngine();
    EXPECT_FALSE(engine.IsActive());
}

TEST(ShaderEngine, SwitchesShadingOnceHoweverOftenItIsAsked)
{
    RecordingEngine draw;
    RecordingCompiler::Install(draw);
    VXShaderEngine& engine = *draw.ShaderEngine();
    engine.DisableShaders();
    engine.EnableShaders(); // on an engine that is not active: a warning, no refusal
    engine.EnableShaders();
    EXPECT_FALSE(engine.ShadersEnabled());
    engine.EnableEngine();
    EXPECT_TRUE(engine.ShadersEnabled());
    engine.DisableShaders();
    engine.DisableShaders();
    EXPECT_EQ(draw.Take(), (Lines{"BeginShading", "EndShading", "DisableMultitexture2D"}));
    EXPECT_EQ(engine.EnableCount(), 1);
    EXPECT_EQ(engine.DisableCount(), 1);
}

TEST(ShaderEngine, WithoutACompilerDoesNothing)
{
    VXShaderEngine engine(nullptr);
    VXMaterial material(0, nullptr);
    BArray<VXMaterial*> materials;
    engine.Init();
    engine.PrepareForDrawScene();
    engine.AddShader(&material, 0);
    engine.EnableShader(&material, 0);
    engine.DisableShader(&material, 0);
    engine.UpdateShaders(materials);
    engine.EnableShaders();
    engine.DeleteShaders();
    EXPECT_FALSE(engine.HasShader(&material, 0));
    EXPECT_FALSE(engine.DeleteShader("key"));
    EXPECT_TRUE(engine.GetVertexShaderSource("key").IsEmpty());
    EXPECT_TRUE(engine.GetFragmentShaderSource("key").IsEmpty());
    EXPECT_EQ(engine.EnableCount(), 0);
}

TEST(ShaderEngine, ForwardsToItsCompiler)
{
    RecordingEngine draw;
    RecordingCompiler* const compiler = RecordingCompiler::Install(draw);
    VXShaderEngine& engine = *draw.ShaderEngine();
    VXMaterial material(0, nullptr);
    material.SetInternalName("red");
    EXPECT_FALSE(engine.HasShader(&material, 0));
    compiler->GiveProgram(&material, 0);
    EXPECT_TRUE(engine.HasShader(&material, 0));
    EXPECT_FALSE(engine.HasShader(nullptr, 0));
    EXPECT_EQ(engine.GetVertexShaderSource("red 0"), BString("vertex red 0"));
    EXPECT_EQ(engine.GetFragmentShaderSource("red 0"), BString("fragment red 0"));
    EXPECT_TRUE(engine.DeleteShader("red 0"));
    EXPECT_FALSE(engine.HasShader(&material, 0));
    engine.SetVerboseMode(true);
    EXPECT_TRUE(compiler->VerboseMode());
    engine.SetVerboseMode(false);
    EXPECT_FALSE(compiler->VerboseMode() || engine.VerboseMode());
}
