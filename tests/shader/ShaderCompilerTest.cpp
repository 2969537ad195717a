#include "engine/VXSceneDelegate.h"
#include "tests/draw/Stage.h"
#include "tests/support/RecordingCompiler.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <limits>
#include <map>

namespace
{
constexpr std::array kRootInputs = {
    "Diffuse_Color",      "Diffuse_Value",    "Highlight_Color",   "Highlight_Value",      "Ambient_Color",
    "Ambient_Value",      "Transparency_Max", "Transparency_Min",  "Transparency_Falloff", "Translucence_Color",
    "Translucence_Value", "AlternateDiffuse", "AlternateSpecular", "Gradient_Bump",
};

/// A surface whose inputs are all plain, with nodes that a test may connect.
struct Surface : FakeTree
{
    Surface()
    {
        for (const char* const name : kRootInputs)
            root.inputs[name].number = 0.5f;
    }
    FakeInput& Input(const char* name) { return root.inputs[name]; }
    FakeNode map{"image_map"}, color{"simple_color"}, noise{"noise"};
};

/// Hashes trees by what the test wrote down for them.
struct HashingDelegate : VXSceneDelegate
{
    explicit HashingDelegate(RecordingEngine* engine) : log(engine) {}

    RecordingEngine* log;
    BRenderEngines::E_Renderer renderer = BRenderEngines::kRenderTypeDefault;
    std::map<const VXMaterial*, std::vector<const char*>> hashes; ///< of the layers

    BRenderEngines::E_Renderer CurrentPreviewRootRenderType() override { return renderer; }
    void SetBusyCursor(bool on) override { log->Log("SetBusyCursor", on ? "on" : "off"); }
    void ComputeShaderHash(VXMaterial* material, bool) override
    {
        for (std::int64_t i = 0; i < material->NumLayers(); ++i)
            material->Layer(i)->SetTreeHash(hashes[material][std::size_t(i)]);
    }
};

class ShaderCompilerTest : public testing::Test
{
protected:
    ShaderCompilerTest()
    {
        stage.scene.SetSceneDelegate(&delegate);
        stage.engine.options.mHWShading = true;
        stage.engine.SetHWShadingAllowed(true);
    }

    /// A material whose layers have these hashes; its trees need a program unless a test makes them plain.
    VXMaterial* Material(const char* name, const std::vector<const char*>& hashes)
    {
        VXMaterial* const material = stage.Material(name);
        while (material->NumLayers() < std::int64_t(hashes.size()))
            material->CreateNewLayer("Layer", "Layer");
        for (std::size_t i = 0; i < hashes.size(); ++i)
            surface.GiveTo(*material, std::int64_t(i));
        delegate.hashes[material] = hashes;
        surface.Input("Diffuse_Color").connected = &surface.noise;
        return material;
    }

    void ChangeTree(VXMaterial* material, const std::vector<const char*>& hashes)
    {
        delegate.hashes[material] = hashes;
        material->SetShaderTreeDirty(true);
    }

    Lines Update()
    {
        stage.engine.Take();
        compiler.UpdateShaders(stage.scene.Materials());
        return stage.engine.Take();
    }

    Surface surface; // outlives the stage, whose materials point at it
    Stage stage;
    RecordingCompiler& compiler = *RecordingCompiler::Install(stage.engine);
    HashingDelegate delegate{&stage.engine};
};
} // namespace

// --- Who needs a program

TEST_F(ShaderCompilerTest, AsksForAProgramWhereTheFixedPipelineCannotDraw)
{
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    VXMaterial* const red = Material("red", {"h"});
    struct Row
    {
        const char* what;
        bool deep, needs;
        std::function<void()> change;
    };
    const auto map = [&](const char* input, float value)
    {
        return [this, input, value]
        {
            surface.Input("Ambient_Value").connected = &surface.map;
            surface.map.inputs[input].number = value;
        };
    };
    const std::vector<Row> rows = {
        {"plain values", true, false, [] {}},
        {"plain values, shallow", false, true, [] {}},
        {"no tree", false, false, [&] { red->SetOrmondShaderTree(0, nullptr); }},
        {"a camera", false, false, [&] { red->SetInternalName("Camera"); }},
        {"no camera", false, true, [&] { red->SetInternalName("camera"); }},
        {"no delegate", false, false, [&] { stage.scene.SetSceneDelegate(nullptr); }},
        {"no shaders", false, false, [&] { delegate.renderer = BRenderEngines::kRenderTypeNoShaders; }},
        {"no root for the mode", false, false, [&] { delegate.renderer = BRenderEngines::E_Renderer(2); }},
        {"a light", false, false, [&] { surface.root.type = "light"; }},
        {"another root", false, false, [&] { surface.root.type = "physicalsurface"; }},
        {"kelvo", false, true, [&] { surface.root.type = "kelvo"; }},
        {"CyclesSurface", false, true, [&] { surface.root.type = "CyclesSurface"; }},
        {"noise", true, true, [&] { surface.Input("Gradient_Bump").connected = &surface.noise; }},
        {"a colour", true, false, [&] { surface.Input("Diffuse_Color").connected = &surface.color; }},
        {"a map", true, false, map("Filter", 3)},
        {"hardly scaled", true, false, map("U_Scale", 1.0000005f)},
        {"scaled up", true, true, map("U_Scale", 1.00001f)},
        {"scaled down", true, true, map("V_Scale", 0.99999f)},
        {"scaled by not-a-number", true, false, map("V_Scale", kNan)},
        {"hardly moved", true, false, map("U_Offset", -9.9e-6f)},
        {"moved by the limit", true, true, map("U_Offset", 1e-5f)},
        {"moved back by the limit", true, true, map("V_Offset", -1e-5f)},
        {"moved by not-a-number", true, true, map("V_Offset", kNan)},
    };
    const auto reset = [&]
    {
        for (const char* const name : kRootInputs)
            surface.Input(name).connected = nullptr;
        surface.map.inputs.clear();
        surface.root.type = "PhysicalSurface";
        surface.GiveTo(*red);
        red->SetInternalName("red");
        delegate.renderer = BRenderEngines::kRenderTypeDefault;
        stage.scene.SetSceneDelegate(&delegate);
    };
    for (const Row& row : rows)
    {
        reset();
        row.change();
        EXPECT_EQ(compiler.NeedsShader(red, row.deep), row.needs) << row.what;
    }
    reset();
    for (const char* const name : kRootInputs)
    {
        const auto input = surface.root.inputs.extract(name);
        EXPECT_TRUE(compiler.NeedsShader(red, true)) << "without " << name;
        surface.Input(name).number = 1;
    }
    EXPECT_FALSE(compiler.NeedsShader(red, true));
    EXPECT_TRUE(compiler.NeedsShaderNode(&surface.root, red, 1)) << "below the root";
    EXPECT_TRUE(compiler.NeedsShaderNode(nullptr, red, 0));
    EXPECT_TRUE(compiler.NeedsShaderInput(nullptr, red, 0));
    EXPECT_TRUE(compiler.NeedsShaderInput(&surface.Input("Diffuse_Color"), nullptr, 0));
    EXPECT_FALSE(compiler.NeedsShader(nullptr, false));
}

TEST_F(ShaderCompilerTest, LooksAtInputsWhenTheOptionsSaySo)
{
    Material("red", {"h"});
    surface.Input("Diffuse_Color").connected = nullptr; // plain now
    struct Row
    {
        bool deep, batch, veto, built;
    };
    for (const Row& row : {Row{true, false, false, false}, Row{false, false, false, true}, Row{true, true, false, true},
                           Row{true, false, true, true}})
    {
        VXShaderCompiler::ClearProgramCache();
        stage.engine.options.mDeepShaderTest = row.deep;
        stage.engine.options.mShaderBatch = row.batch;
        stage.engine.vetoDeepTest = row.veto;
        EXPECT_EQ(Of(Update(), "BuildProgram").size(), row.built ? 1u : 0u) << row.deep << row.batch;
    }
}

// --- The life of programs

TEST_F(ShaderCompilerTest, EqualTreesShareAProgramAndAChangedOneRebuildsOne)
{
    VXMaterial* const a = Material("a", {"same"});
    VXMaterial* const b = Material("b", {"same"});
    VXMaterial* const c = Material("c", {"first", "dirt"});
    EXPECT_EQ(Update(), (Lines{"SetBusyCursor on", "BuildProgram a 0", "BuildProgram c 0", "BuildProgram c 1",
                               "SetBusyCursor off"}));
    EXPECT_TRUE(compiler.HasShader(a, 0) && compiler.HasShader(b, 0) && compiler.HasShader(c, 1));
    EXPECT_FALSE(compiler.HasShader(nullptr, 0));
    EXPECT_EQ(compiler.GetVertexShaderSource("dirt"), "vertex c 1");
    EXPECT_EQ(Update(), Lines{}) << "nothing has changed";

    ChangeTree(c, {"second", "dirt"});
    EXPECT_EQ(Update(), (Lines{"DeleteProgram c 0", "SetBusyCursor on", "BuildProgram c 0", "SetBusyCursor off"}));
    EXPECT_FALSE(c->ShaderTreeDirty());

    stage.scene.RemoveMaterial(a);
    EXPECT_EQ(Update(), Lines{}) << "b still uses it";
    stage.scene.RemoveMaterial(b);
    EXPECT_EQ(Update(), Lines{"DeleteProgram a 0"});
    compiler.DeleteShaders();
    EXPECT_EQ(stage.engine.Take(), (Lines{"DeleteProgram c 1", "DeleteProgram c 0"})) << "dirt, second";
    EXPECT_EQ(Of(Update(), "BuildProgram").size(), 2u);
}

TEST_F(ShaderCompilerTest, AnAnswerStandsUntilTheHashChanges)
{
    VXMaterial* const red = Material("red", {"plain"});
    surface.Input("Diffuse_Color").connected = nullptr;
    Update();
    surface.Input("Diffuse_Color").connected = &surface.noise;
    EXPECT_EQ(Update(), Lines{}) << "looked at already";
    compiler.ClearShader(red); // entries without a program stay
    EXPECT_EQ(Update(), Lines{});
    ChangeTree(red, {"noisy"});
    EXPECT_EQ(Of(Update(), "BuildProgram").size(), 1u);

    EXPECT_TRUE(compiler.DeleteShader("noisy"));
    EXPECT_FALSE(compiler.DeleteShader("noisy"));
    EXPECT_FALSE(compiler.DeleteShader("plain")) << "swept away";
    EXPECT_EQ(Update(), Lines{}) << "its entry has stayed";
    compiler.AddShader(red, 0);
    EXPECT_TRUE(compiler.HasShader(red, 0));
    compiler.ClearShader(red);
    EXPECT_EQ(Of(Update(), "BuildProgram").size(), 1u) << "the entry had gone too";
}

TEST_F(ShaderCompilerTest, AProgramThatFailsIsNotTriedAgain)
{
    VXMaterial* const red = Material("red", {"bad"});
    VXMaterial* const blue = Material("blue", {"good"});
    compiler.failing = "red";
    EXPECT_EQ(Of(Update(), "BuildProgram").size(), 2u);
    EXPECT_EQ(compiler.GetErrors(), "0(1): no such function") << "whatever came out well after it";
    EXPECT_TRUE(!compiler.HasShader(red, 0) && compiler.HasShader(blue, 0));
    EXPECT_EQ(Update(), Lines{});
    EXPECT_TRUE(compiler.HasErrors()) << "nothing was built since";
    compiler.failing.Empty();
    ChangeTree(red, {"mended"});
    EXPECT_EQ(Of(Update(), "BuildProgram"), Lines{"BuildProgram red 0"});
    EXPECT_FALSE(compiler.HasErrors());
}

TEST_F(ShaderCompilerTest, BuildsOnlyWhileTheFrameMayShade)
{
    VXMaterial* const red = Material("red", {"h"});
    const std::vector<std::function<void(bool)>> gates = {
        [&](bool on) { stage.engine.options.mHWShading = on; },
        [&](bool on) { stage.engine.SetHWShadingAllowed(on); },
        [&](bool on) { on ? stage.engine.ShaderEngine()->Enable() : stage.engine.ShaderEngine()->Disable(); },
        [&](bool on) { on ? stage.scene.SetSmoothTexturedMode() : stage.scene.SetToonShadedMode(); },
        [&](bool on) { stage.scene.SetDrawEngine(on ? &stage.engine : nullptr); },
    };
    for (std::size_t i = 0; i < gates.size(); ++i)
    {
        gates[i](false);
        red->SetShaderTreeDirty(true);
        EXPECT_EQ(Update(), Lines{}) << i;
        EXPECT_FALSE(red->ShaderTreeDirty()) << "its hash is computed all the same";
        gates[i](true);
    }
    EXPECT_EQ(Of(Update(), "BuildProgram").size(), 1u);
}

// --- Use

TEST_F(ShaderCompilerTest, MakesAProgramCurrentAndTakesItBack)
{
    VXMaterial* const red = Material("red", {"h", "no tree"});
    red->SetOrmondShaderTree(1, nullptr);
    EXPECT_EQ(Of(Update(), "BuildProgram"), Lines{"BuildProgram red 0"});
    VXShaderCompiler::ResetActivations();
    compiler.EnableShader(red, 1);
    compiler.EnableShader(red, 0);
    compiler.DisableShader(red, 0);
    EXPECT_EQ(stage.engine.Take(), (Lines{"BeginShading", "MakeCurrent red 0", "StopBeingCurrent red 0",
                                          "DisableMultitexture2D", "EndShading"}));
    EXPECT_EQ(VXShaderCompiler::NumActivations(), 1);
    compiler.EnableShader(nullptr, 0);
    compiler.DisableShader(nullptr, 0);
    EXPECT_EQ(stage.engine.Take(), Lines{"EndShading"});
}

TEST_F(ShaderCompilerTest, BindsThePreviewTextureWhereThereIsNoProgram)
{
    VXMaterial* const red = Material("red", {"h"});
    red->SetPreviewTexturePath("skin.png");
    stage.engine.textures = {{"skin.png", 7}};
    surface.Input("Diffuse_Color").connected = nullptr;
    EXPECT_EQ(Of(Update(), "LoadTextureForShader"), Lines{"LoadTextureForShader skin.png"});
    compiler.EnableShader(red, 0);
    EXPECT_EQ(stage.engine.Take(), Lines{"EnableMultitexture2D 7 0"});
    red->SetPreviewTextureID(0);
    compiler.EnableShader(red, 0);
    EXPECT_EQ(stage.engine.Take(), Lines{});
}

// --- For generators

TEST_F(ShaderCompilerTest, NamesWhatIsGenerated)
{
    EXPECT_EQ(compiler.CodeVarName("Diffuse", "Color"), "Diffuse_Color");
    EXPECT_EQ(compiler.CodeInputName("Diffuse"), "Diffuse_input");
    EXPECT_EQ(compiler.CodeResultName("Diffuse"), "Diffuse_result");
    EXPECT_EQ(compiler.CodeMultiply("a", "b"), "a * b");
    EXPECT_EQ(compiler.CodeAdd("a", "b"), "a + b");
    VXMaterialColor4 color(0.1f, 0.2f, 0.3f, 0.4f);
    EXPECT_TRUE(VXShaderCompiler::IsOptimizedColorResult(color));
    VXShaderCompiler::SetInvalidColorResult(color);
    EXPECT_FALSE(VXShaderCompiler::IsOptimizedColorResult(color));
    EXPECT_EQ(color, VXMaterialColor4(-1337, 0.2f, 0.3f, 0.4f));
    color.SetRed(-1336);
    EXPECT_TRUE(VXShaderCompiler::IsOptimizedColorResult(color));
}
