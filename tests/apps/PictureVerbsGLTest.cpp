// What velmar styles, turntable and pick make of good files.
#include "DrawingTest.h"

#include <nlohmann/json.hpp>

namespace
{
// A square of two halves by two pieces, with names for what is left and right; seen from the front it is 199 x 199
// pixels of a picture of 240 x 240, about the middle.
const std::string kSquare = "v -1 -1 0\nv 0 -1 0\nv 1 -1 0\nv -1 1 0\nv 0 1 0\nv 1 1 0\n"
                            "usemtl paint\ng left\nf 1 2 5 4\ng right other\nf 2 3 6 5\n";

class PictureVerbs : public DrawingTest
{
protected:
    void SetUp() override
    {
        DrawingTest::SetUp();
        mPlace.Write("square.obj", kSquare);
    }

    Outcome Run(const std::vector<std::string>& arguments)
    {
        const Outcome outcome = mPlace.Run(VELMAR_PROGRAM, arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        return outcome;
    }

    Outcome PickAt(const std::string& at, std::vector<std::string> options = {})
    {
        options.insert(options.begin(), {"pick", "square.obj", "--size", "240x240", "--azimuth", "0", "--elevation",
                                         "0", "--ortho", "--at", at});
        return Run(options);
    }
    nlohmann::json Picked(const std::string& at, const std::string& kind)
    {
        return nlohmann::json::parse(PickAt(at, {"--kind", kind, "--json"}).out);
    }
};
} // namespace

TEST_F(PictureVerbs, StylesDrawsAllModesOnOneSheet)
{
    EXPECT_EQ(Run({"styles", "square.obj", "-o", "all.png", "--size", "40x30", "--columns", "8", "--no-shadows"}).out,
              "all.png\n");
    const vx::PicturePtr sheet = Opened("all.png");
    ASSERT_TRUE(sheet);
    EXPECT_EQ(sheet->Width(), 8 * 52 + 12);
    const int rowHeight = (sheet->Height() - 12) / 2;
    EXPECT_TRUE(rowHeight == 42 || rowHeight == 63) << "with captions or without";
}

TEST_F(PictureVerbs, TurntableDrawsEveryFrame)
{
    const Outcome outcome = Run({"turntable", "square.obj", "-o", "turn %03d.png", "--frames", "4", "--size", "60x40"});
    EXPECT_EQ(outcome.out, "turn 001.png to turn 004.png\n");
    EXPECT_EQ(outcome.err, "") << "there is no terminal to count on";
    EXPECT_EQ(mPlace.Names().size(), 5u);
    const vx::PicturePtr first = Opened("turn 001.png"), second = Opened("turn 002.png");
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->Width(), 60);
    EXPECT_GT(vx::ComparePictures(*first, *second, 5).share, 0.02);
    EXPECT_EQ(Run({"turntable", "square.obj", "-o", "%d.png", "--frames", "1", "--size", "60x40"}).out,
              "1.png to 1.png\n");
}

TEST_F(PictureVerbs, PickTellsWhatStandsAtThePixel)
{
    const nlohmann::json left = Picked("70,120", "polygon"), right = Picked("170,120", "polygon");
    EXPECT_EQ(left["kind"], "polygon");
    EXPECT_EQ(left["object"], "square.obj");
    EXPECT_EQ(left["polygon"], 1);
    EXPECT_EQ(left["corners"], (nlohmann::json{1, 2, 5, 4}));
    EXPECT_EQ(left["groups"], (nlohmann::json{"left"}));
    EXPECT_EQ(left["material"], "paint");
    EXPECT_EQ(right["polygon"], 2);
    EXPECT_EQ(right["groups"].size(), 2u);
    // 0.83 of 240 pixels are 2 units.
    EXPECT_NEAR(left["position"][0].get<double>(), (70.5 - 120) / (0.83 * 120), 1e-4);
    EXPECT_NEAR(left["position"][1].get<double>(), -0.5 / (0.83 * 120), 1e-4);
    EXPECT_NEAR(left["position"][2].get<double>(), 0, 1e-4);

    EXPECT_EQ(Picked("116,60", "edge")["vertices"], (nlohmann::json{2, 5}));
    EXPECT_EQ(Picked("124,24", "vertex")["vertices"], (nlohmann::json{5}));
    EXPECT_EQ(Picked("90,60", "vertex"), (nlohmann::json{{"kind", "nothing"}})) << "none is within 8 pixels";
    const nlohmann::json object = Picked("70,120", "object");
    EXPECT_EQ(object["object"], "square.obj");
    EXPECT_FALSE(object.contains("polygon"));

    EXPECT_EQ(PickAt("3,3").out, "nothing\n");
    const std::string text = PickAt("70,120").out;
    EXPECT_EQ(text.substr(0, text.find("  depth")),
              "polygon\n  object    square.obj\n  polygon   1\n  corners   1 2 5 4\n"
              "  groups    left\n  material  paint\n");
}
