#include "host/Preview.h"
#include "host/image/Png.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

using namespace vx;
namespace fs = std::filesystem;

// Pictures of the sample models against pictures that were looked at and accepted. To accept what is drawn now, run
// these tests with VELMAR_ACCEPT_PICTURES=1 and look at what changed in tests/host/references.

namespace
{
constexpr int kTolerance = 5;           // of 255, in any channel
constexpr double kShareAllowed = 0.001; // of the pixels

const fs::path kReferences = fs::path(VELMAR_SOURCE_DIR) / "tests/host/references";

struct Case
{
    const char* name;
    const char* model;
    DrawMode mode;
    std::function<void(PreviewOptions&)> change = [](PreviewOptions&) {};
};

// Dithered gradients make large files: one background colour where the background is not the point.
void OnPlain(PreviewOptions& options)
{
    options.background = BackgroundStyle::Plain;
    options.backgroundTop = {0.72f, 0.74f, 0.77f};
}

const Case kCases[] = {
    {"bracket-edges", "bracket", DrawMode::Smooth, [](PreviewOptions& o) { OnPlain(o), o.edgeLines = true; }},
    {"bracket-flat-lined", "bracket", DrawMode::FlatLined, OnPlain},
    {"bracket-hidden-line", "bracket", DrawMode::HidLine},
    {"bracket-normals", "bracket", DrawMode::Normals},
    {"bracket-parallel", "bracket", DrawMode::Wire, [](PreviewOptions& o) { OnPlain(o), o.view.ortho = true; }},
    {"sailboat-textured", "sailboat", DrawMode::SmoothTextured},
    {"sailboat-toon", "sailboat", DrawMode::ToonShadedOutlined,
     [](PreviewOptions& o) { OnPlain(o), o.view.azimuth = -50; }},
    {"teacup-clear", "teacup", DrawMode::SmoothTextured,
     [](PreviewOptions& o) { o.background = BackgroundStyle::Clear; }},
    {"teacup-depth", "teacup", DrawMode::Depth},
    {"teacup-ground", "teacup", DrawMode::SmoothTextured, [](PreviewOptions& o) { o.ground = true; }},
    {"teacup-lit-wire", "teacup", DrawMode::LitWire, OnPlain},
    {"teacup-outline", "teacup", DrawMode::Outline, OnPlain},
};

std::string Rasteriser(const Preview& preview)
{
    const BString& description = preview.ContextDescription();
    return description.Mid(description.Find(": ") + 2).Std();
}

std::string FirstLine(const fs::path& path)
{
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

std::string FirstWord(const std::string& text) { return text.substr(0, text.find_first_of(" ,")); }

BPath Path(const fs::path& path) { return BPath(BString(path.string())); }

class Reference : public testing::TestWithParam<Case>
{
};
} // namespace

TEST_P(Reference, IsDrawnAsAccepted)
{
    const Case& row = GetParam();
    Preview preview;
    if (!preview.PrepareContext())
        GTEST_SKIP() << preview.Error().CString();
    const char* const wish = std::getenv("VELMAR_ACCEPT_PICTURES");
    const bool accept = wish && std::string(wish) == "1";
    const std::string rasteriser = Rasteriser(preview), recorded = FirstLine(kReferences / "rasteriser.txt");
    if (!accept && FirstWord(rasteriser) != FirstWord(recorded))
        GTEST_SKIP() << "the references were drawn by " << recorded << ", this is " << rasteriser;

    const fs::path model = fs::path(VELMAR_SOURCE_DIR) / "samples" / (std::string(row.model) + ".obj");
    ASSERT_TRUE(preview.Load(Path(model))) << preview.Error().CString();
    EXPECT_EQ(preview.Warnings().Count(), 0);
    PreviewOptions options;
    options.width = 288;
    options.height = 216;
    options.mode = row.mode;
    row.change(options);
    const PicturePtr drawn = preview.Render(options);
    ASSERT_TRUE(drawn) << preview.Error().CString();

    const fs::path reference = kReferences / (std::string(row.name) + ".png");
    if (accept)
    {
        fs::create_directories(kReferences);
        ASSERT_EQ(WritePng(*drawn, Path(reference)), "");
        std::ofstream(kReferences / "rasteriser.txt") << rasteriser << "\n";
        return;
    }
    BString why;
    const PicturePtr accepted = ReadPicture(Path(reference), why);
    ASSERT_TRUE(accepted) << reference << ": " << why.CString();
    PicturePtr marked;
    const PictureDifference found = ComparePictures(*drawn, *accepted, kTolerance, &marked);
    if (found.share <= kShareAllowed)
        return;
    const fs::path folder = VELMAR_PICTURE_DIR;
    fs::create_directories(folder);
    WritePng(*drawn, Path(folder / (std::string(row.name) + ".actual.png")));
    if (marked)
        WritePng(*marked, Path(folder / (std::string(row.name) + ".difference.png")));
    ADD_FAILURE() << found.pixelsOff << " pixels are off by up to " << found.largest << "; see " << folder
                  << " (drawn by " << rasteriser << ", reference by " << recorded << ")";
}

INSTANTIATE_TEST_SUITE_P(Samples, Reference, testing::ValuesIn(kCases),
                         [](const auto& row)
                         {
                             std::string name = row.param.name;
                             for (char& c : name)
                                 c = c == '-' ? '_' : c;
                             return name;
                         });
