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
    engine.EnableShaders(); // on an engine that is not active: no refusal
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

TEST(ShaderEngine, ForwardsToItsCompilerWhenItHasOne)
{
    RecordingEngine draw;
    VXMaterial material(0, nullptr);
    material.SetInternalName("red");
    VXShaderEngine alone(nullptr);
    const auto ask = [&](VXShaderEngine& engine)
    {
        BArray<VXMaterial*> none;
        engine.Init();
        engine.PrepareForDrawScene();
        engine.EnableShader(&material, 0);
        engine.DisableShader(&material, 0);
        engine.DeleteShaders();
        engine.AddShader(&material, 0);
        engine.UpdateShaders(none);
        engine.SetVerboseMode(true);
        return draw.Take();
    };
    RecordingCompiler* const compiler = RecordingCompiler::Install(draw);
    VXShaderEngine& engine = *draw.ShaderEngine();
    compiler->GiveProgram(&material, 0);
    EXPECT_TRUE(engine.HasShader(&material, 0) && !engine.HasShader(nullptr, 0) && !alone.HasShader(&material, 0));
    EXPECT_EQ(engine.GetVertexShaderSource("red 0"), BString("vertex red 0"));
    EXPECT_EQ(engine.GetFragmentShaderSource("red 0"), BString("fragment red 0"));
    EXPECT_EQ(ask(alone), Lines{});
    EXPECT_FALSE(alone.DeleteShader("red 0") || compiler->VerboseMode());
    EXPECT_EQ(ask(engine),
              (Lines{"Init", "PrepareForDrawScene", "BeginShading", "MakeCurrent red 0", "StopBeingCurrent red 0",
                     "DisableMultitexture2D", "EndShading", "DeleteProgram red 0"}));
    EXPECT_TRUE(compiler->VerboseMode());
    compiler->GiveProgram(&material, 0);
    EXPECT_TRUE(engine.DeleteShader("red 0") && !engine.HasShader(&material, 0));
}
