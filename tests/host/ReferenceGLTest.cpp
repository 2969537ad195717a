#include "host/Preview.h"
#include "host/image/Png.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

using namespace vx;
namespace fs = std::filesystem;

// Pictures of the sample models against pictures that were looked at and accepted. To accept what is drawn now, run
// these tests with VELMAR_ACCEPT_PICTURES=1 and look at what changed in tests/host/references.

namespace
{
constexpr int kTolerance = 5;           // of 255, in any channel
constexpr int kStep = 4;                // of accepted channels: what dithers hardly gets smaller in a file
constexpr double kShareAllowed = 0.001; // of the pixels

const fs::path kReferences = fs::path(VELMAR_SOURCE_DIR) / "tests/host/references";

struct Case
{
    std::string name;
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

const Case kSpecialCases[] = {
    {"bracket-edges", "bracket", DrawMode::Smooth, [](PreviewOptions& o) { OnPlain(o), o.edgeLines = true; }},
    {"bracket-occlusion", "bracket", DrawMode::Smooth,
     [](PreviewOptions& o) { OnPlain(o), o.occlusion = OcclusionQuality::Full; }},
    {"bracket-parallel", "bracket", DrawMode::Wire, [](PreviewOptions& o) { OnPlain(o), o.view.ortho = true; }},
    {"sailboat-textured", "sailboat", DrawMode::SmoothTextured},
    {"sailboat-toon", "sailboat", DrawMode::ToonShadedOutlined,
     [](PreviewOptions& o) { OnPlain(o), o.view.azimuth = -50; }},
    {"teacup-clear", "teacup", DrawMode::SmoothTextured,
     [](PreviewOptions& o) { o.background = BackgroundStyle::Clear; }},
    {"teacup-faded", "teacup", DrawMode::FlatLined,
     [](PreviewOptions& o) { OnPlain(o), o.depthCue = true, o.productionFrame = 1; }},
    {"teacup-ground", "teacup", DrawMode::SmoothTextured, [](PreviewOptions& o) { OnPlain(o), o.ground = true; }},
};

// Every draw style of two models, and what else there is to see.
std::vector<Case> Cases()
{
    std::vector<Case> cases;
    for (const char* const model : {"bracket", "teacup"})
        for (int mode = 0; mode < kNumDrawModes; ++mode)
            cases.push_back({std::string(model) + "-" + PresetOf(DrawMode(mode)).name, model, DrawMode(mode), OnPlain});
    cases.insert(cases.end(), std::begin(kSpecialCases), std::end(kSpecialCases));
    return cases;
}

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
    options.width = 320;
    options.height = 240;
    options.mode = row.mode;
    row.change(options);
    const PicturePtr drawn = preview.Render(options);
    ASSERT_TRUE(drawn) << preview.Error().CString();

    const fs::path reference = kReferences / (row.name + ".png");
    if (accept)
    {
        fs::create_directories(kReferences);
        std::for_each_n(drawn->Row(0), drawn->Height() * drawn->RowBytes(),
                        [](std::uint8_t& channel)
                        { channel = std::uint8_t(std::min((channel + kStep / 2) / kStep * kStep, 255)); });
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
    WritePng(*drawn, Path(folder / (row.name + ".actual.png")));
    if (marked)
        WritePng(*marked, Path(folder / (row.name + ".difference.png")));
    ADD_FAILURE() << found.pixelsOff << " pixels are off by up to " << found.largest << "; see " << folder
                  << " (drawn by " << rasteriser << ", reference by " << recorded << ")";
}

INSTANTIATE_TEST_SUITE_P(Samples, Reference, testing::ValuesIn(Cases()),
                         [](const auto& row)
                         {
                             std::string name = row.param.name;
                             for (char& c : name)
                                 c = c == '-' ? '_' : c;
                             return name;
                         });
