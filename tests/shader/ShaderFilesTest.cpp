#include "base/BText.h"
#include "engine/VXScene.h"
#include "engine/VXSceneDelegate.h"
#include "shader/VXShaderBinding.h"
#include "shader/VXShaderDebug.h"
#include "shader/VXShaderImplementation.h"
#include "tests/support/RecordingCompiler.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace
{
/// A folder of its own, removed at the end.
class Folder
{
public:
    Folder() : mPath(fs::path(testing::TempDir()) / ("velmar-" + MakeUuidString().Std()))
    {
        fs::create_directories(mPath);
    }
    ~Folder() { fs::remove_all(mPath); }
    BString File(const char* name) const { return (mPath / name).string(); }
    void Write(const char* name, const std::string& text) const
    {
        std::ofstream(mPath / name, std::ios::binary) << text;
    }
    std::string Read(const char* name) const
    {
        std::stringstream text;
        text << std::ifstream(mPath / name, std::ios::binary).rdbuf();
        return text.str();
    }

private:
    fs::path mPath;
};

struct FileDelegate : VXSceneDelegate
{
    BString folder;
    bool debugging = true;
    BString RuntimeShaderFolder() override { return folder; }
    bool WantsShaderDebugging() override { return debugging; }
};

class ShaderFiles : public testing::Test
{
protected:
    ShaderFiles()
    {
        scene.SetSceneDelegate(&delegate);
        VXShaderDebugSetLogFile(folder.File("log"));
    }
    std::string TakeLog()
    {
        const std::string text = folder.Read("log");
        folder.Write("log", "");
        return text;
    }

    Folder folder;
    FileDelegate delegate;
    VXScene scene;
};

const std::string kBanner(76, '=');
} // namespace

// --- Implementations

TEST(ShaderImplementation, CollectsTextAndRefusesDoubles)
{
    VXShaderImplementation piece("noise");
    VXShaderImplementationParam first("scale", "float", "1"), second;
    second = first;
    piece.AddImplCode("one;", false, false);
    piece.AddImplCode("two;", true, false);
    piece.AddBodyCode("nowhere", false, false);
    piece.AddBodyCode("vertex", true, false);
    piece.AddBodyCode("both", true, true);
    EXPECT_EQ(piece.GetFragmentImpl(), "one;two;");
    EXPECT_EQ(piece.VertexBody(), "vertexboth");
    EXPECT_EQ(piece.FragmentBody(), "both");
    EXPECT_TRUE(piece.AddInclude("b.h") && piece.AddInclude("a.h"));
    EXPECT_FALSE(piece.AddInclude("b.h"));
    for (int i = 0; i < 6; ++i)
        piece.AddInclude(BString::Format("%d.h", i));
    MEM_FailAfter(1);
    EXPECT_FALSE(piece.AddInclude("late.h"));
    MEM_FailAfter(0);
    ASSERT_EQ(piece.Includes().Count(), 8);
    EXPECT_EQ(piece.Includes()[0], "b.h");
    EXPECT_TRUE(piece.AddVertexParam(&first) && piece.AddVertexParam(&second)) << "told apart by address";
    EXPECT_FALSE(piece.AddVertexParam(&first) || piece.AddVertexParam(nullptr));
    EXPECT_TRUE(piece.AddFragmentParam(&first));
    EXPECT_EQ(piece.VertexParams()[0], &second) << "the newest stands first";
    EXPECT_EQ(piece.AddTexture("a.png"), "texture0");
    EXPECT_EQ(piece.AddTexture("a.png"), "texture1");
}

TEST_F(ShaderFiles, AreReadFromTheDelegatesFolderAsTheyAre)
{
    const std::string text("float a;\r\n\0\x1f\x8b%s", 14);
    folder.Write("noise.glsl", text);
    delegate.folder = folder.File("");
    EXPECT_EQ(VXShaderImplementation::LoadShaderFile("noise.glsl").Std(), text);
    EXPECT_EQ(VXShaderImplementation::LoadShaderFile("missing.glsl"), "");
    EXPECT_EQ(VXShaderImplementation::LoadShaderFile(""), "") << "a folder";

    RecordingEngine draw;
    RecordingCompiler& compiler = *RecordingCompiler::Install(draw);
    VXShaderImplementation* const piece = compiler.GetImplementation("noise.glsl");
    EXPECT_EQ(piece->GetUniversalImpl().Std(), text);
    EXPECT_EQ(compiler.GetImplementation("noise.glsl"), piece);
    delegate.folder = "no/such/folder/";
    EXPECT_EQ(compiler.GetImplementation("other.glsl")->GetUniversalImpl(), "");
}

TEST_F(ShaderFiles, WithoutADelegateAreReadBelowTheWorkingDirectory)
{
    scene.SetSceneDelegate(nullptr);
    const fs::path before = fs::current_path();
    fs::create_directories(folder.File("Runtime/Cg").Std());
    folder.Write("Runtime/Cg/a", "here");
    fs::current_path(folder.File("").Std());
    EXPECT_EQ(VXShaderImplementation::LoadShaderFile("a"), "here");
    fs::current_path(before);
}

// --- The debug log

TEST_F(ShaderFiles, TheLogIsWrittenWhenTheHostWantsIt)
{
    VXShaderDebug("%s %d\n", "one", 1);
    delegate.debugging = false;
    VXShaderDebug("two\n");
    VXShaderFileDebug("three\n");
    scene.SetSceneDelegate(nullptr);
    VXShaderDebug("four\n");
    EXPECT_EQ(TakeLog(), "one 1\nthree\n");
    VXShaderDebugSetLogFile(folder.File("no/such/folder/log")); // cannot be written: ignored
    VXShaderFileDebug("five");
    VXShaderFileDebugReset();
    EXPECT_EQ(TakeLog(), "");
}

TEST_F(ShaderFiles, TheLogTakesLongTextsWholeAndLongFormatsRaw)
{
    const std::string longText(5000, 'x');
    VXShaderDebug("%s", longText.c_str());
    EXPECT_EQ(TakeLog(), longText);
    for (const int length : {1024, 1025})
    {
        const std::string format = "%%" + std::string(std::size_t(length) - 2, 'f');
        VXShaderDebugLong(format.c_str(), 0);
        EXPECT_EQ(TakeLog(), length == 1024 ? format.substr(1) : format + "\n" + kBanner + "\n") << length;
    }
}

TEST_F(ShaderFiles, TheLogTakesTextsInPieces)
{
    struct Row
    {
        std::string text;
        int chunk;
    };
    for (const Row& row : {Row{std::string(2500, 'p'), 1000}, Row{"", 5}, Row{"100% of %s %d%%", 4}, Row{"%%%%%%", 1},
                           Row{std::string(1023, 'a') + "%b", 1024}, Row{"short", 1000}, Row{"whole", -1}})
    {
        BString doubled = row.text;
        doubled.ReplaceAll("%", "%%");
        VXShaderDebugLong(doubled.CString(), row.chunk);
        EXPECT_EQ(TakeLog(), row.text) << row.chunk;
    }
    // A piece above 1024 bytes is a long format and ends in a banner, so banners count pieces.
    VXShaderDebugLong(std::string(2500, 'p').c_str(), 1200);
    EXPECT_EQ(TakeLog(), std::string(1200, 'p') + "\n" + kBanner + "\n" + std::string(1200, 'p') + "\n" + kBanner +
                             "\n" + std::string(100, 'p'));
}

TEST_F(ShaderFiles, TheLogStartsWithItsHeading)
{
    VXShaderFileDebug("old");
    const std::string before = VXShaderFileDebugTime().Std();
    VXShaderFileDebugReset();
    const std::string after = VXShaderFileDebugTime().Std();
    EXPECT_EQ(before.size(), 25u) << before;
    EXPECT_EQ(before.back(), '\n');
    const std::string log = TakeLog(), head = "shader preview log file of kelvo session started at ";
    EXPECT_TRUE(log == head + before + kBanner + "\n" || log == head + after + kBanner + "\n") << log;
}

TEST_F(ShaderFiles, TheLogNamesATextureThatFailsOnce)
{
    RecordingEngine draw;
    draw.textures = {{"good.png", 1}};
    VXShaderEngine engine(&draw);
    VXShaderProgram programs[2];
    for (VXShaderProgram& program : programs)
    {
        for (const char* const file : {"bad.png", "good.png"})
            program.AddTexture(new VXShaderBindingTexture("map", "sampler2D", file));
        engine.LoadShaderTextures(nullptr, &program);
    }
    EXPECT_EQ(TakeLog(), "Texture bad.png could not be loaded\n");
}

TEST_F(ShaderFiles, TheEngineWarnsOfUseWhileItIsNotEnabled)
{
    RecordingEngine draw;
    RecordingCompiler& compiler = *RecordingCompiler::Install(draw);
    VXShaderEngine& engine = *draw.ShaderEngine();
    engine.EnableShaders();
    engine.DisableShaders();
    EXPECT_EQ(TakeLog(), "enabled without engine enabled...\nDisabled without engine enabled...\n");
    engine.EnableEngine();
    engine.EnableShaders();
    engine.DisableShaders();
    engine.DisableEngine();
    engine.SetVerboseMode(false);
    engine.EnableShaders();
    EXPECT_EQ(TakeLog(), "");

    engine.SetVerboseMode(true);
    VXMaterial red(0, nullptr);
    red.SetInternalName("100%d");
    FakeTree tree;
    tree.GiveTo(red);
    compiler.AddShader(&red, 0);
    EXPECT_EQ(TakeLog(), "Adding shader for material 100%d (id:" + red.Uuid().Std() + ")\n");
}
