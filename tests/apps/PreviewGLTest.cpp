// Pictures that velmar preview makes of good files.
#include "DrawingTest.h"

#include <algorithm>
#include <cstdlib>
#include <regex>
#include <set>
#include <utility>
#include <vector>

namespace
{

// A cube standing on the ground, with a roof of two more faces; nothing of it is symmetric in height.
const std::string kHouse = "v -1 0 1\nv 1 0 1\nv 1 0 -1\nv -1 0 -1\nv -1 2 1\nv 1 2 1\nv 1 2 -1\nv -1 2 -1\n"
                           "v 0 3 1\nv 0 3 -1\n"
                           "f 4 3 2 1\nf 1 2 6 9 5\nf 2 3 7 6\nf 3 4 8 10 7\nf 4 1 5 8\nf 6 7 10 9\nf 9 10 8 5\n";
// The same with z up: (x, y, z) becomes (x, -z, y).
const std::string kHouseZ = "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nv -1 -1 2\nv 1 -1 2\nv 1 1 2\nv -1 1 2\n"
                            "v 0 -1 3\nv 0 1 3\n"
                            "f 4 3 2 1\nf 1 2 6 9 5\nf 2 3 7 6\nf 3 4 8 10 7\nf 4 1 5 8\nf 6 7 10 9\nf 9 10 8 5\n";

class Preview : public DrawingTest
{
protected:
    void SetUp() override
    {
        DrawingTest::SetUp();
        mPlace.Write("house.obj", kHouse);
    }

    Outcome Run(std::vector<std::string> arguments, const std::string& input = "")
    {
        arguments.insert(arguments.begin(), "preview");
        return mPlace.Run(VELMAR_PROGRAM, arguments, input);
    }

    // A small picture of the house with these options.
    vx::PicturePtr Draw(std::vector<std::string> options, const std::string& model = "house.obj")
    {
        std::vector<std::string> arguments = {model, "-o", "drawn.png"};
        if (std::find(options.begin(), options.end(), "--size") == options.end())
            arguments.insert(arguments.end(), {"--size", "96x64"});
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(outcome.out, "drawn.png\n");
        return Opened("drawn.png");
    }
};

// Share of the pixels that differ between two pictures of one size.
double Difference(const CPB_Offscreen& a, const CPB_Offscreen& b) { return vx::ComparePictures(a, b, 5).share; }

/// Pixels of a colour that only lines of vectors have: that channel stands far out.
std::vector<std::pair<int, int>> PixelsOf(const CPB_Offscreen& picture, int channel)
{
    std::vector<std::pair<int, int>> pixels;
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
        {
            const std::uint8_t* const p = picture.Row(y) + 4 * x;
            if (p[channel] > p[(channel + 1) % 3] + 60 && p[channel] > p[(channel + 2) % 3] + 60)
                pixels.emplace_back(x, y);
        }
    return pixels;
}

/// Of the pixels, how many have their right (lower) neighbour among them.
std::ptrdiff_t InARow(const std::vector<std::pair<int, int>>& pixels, int dx, int dy)
{
    const std::set<std::pair<int, int>> all(pixels.begin(), pixels.end());
    return std::count_if(all.begin(), all.end(),
                         [&](const auto& p) {
                             return all.count({p.first + dx, p.second + dy}) > 0;
                         });
}

constexpr int kRed = 0, kGreen = 1, kBlue = 2;

} // namespace

TEST_F(Preview, DrawsTheBundledSampleWithoutArguments)
{
    const Outcome outcome = Run({});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "preview.png\n");
    const vx::PicturePtr picture = Opened("preview.png");
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->Width(), 1280);
    EXPECT_EQ(picture->Height(), 720);
    // Cobalt paint on the cup, some hundredth of the picture, is there only when materials and texture were found.
    std::int64_t blue = 0;
    for (int y = 0; y < picture->Height(); ++y)
        for (int x = 0; x < picture->Width(); ++x)
            blue += picture->Row(y)[4 * x + 2] > picture->Row(y)[4 * x] + 60;
    EXPECT_GT(blue, 5000);
}

TEST_F(Preview, DrawsEachModeInItsOwnWay)
{
    const char* const modes[] = {
        "depth",          "flat-lined", "flat",          "hidden-line", "lit-wire",        "normals",
        "outline",        "silhouette", "smooth-lined",  "smooth",      "smooth-outlined", "smooth-textured",
        "textured-lined", "toon",       "toon-outlined", "wire"};
    const vx::PicturePtr background = Draw({"--zoom", "0.01", "--no-shadows"});
    for (const std::string mode : modes)
    {
        SCOPED_TRACE(mode);
        const vx::PicturePtr picture = Draw({"--mode", mode, "--no-shadows"});
        ASSERT_TRUE(picture);
        const double covered = Difference(*picture, *background);
        // Lines alone cover a few per cent, surfaces a third; data modes also have a background of their own.
        const bool lines =
            mode == "wire" || mode == "lit-wire" || mode == "outline" || mode == "silhouette" || mode == "hidden-line";
        EXPECT_GT(covered, lines ? 0.02 : 0.15);
        EXPECT_LT(covered, mode == "depth" || mode == "normals" ? 1.1 : 0.6);
    }
}

TEST_F(Preview, IsTheSameFromFileGzipStandardInputAndTwice)
{
    mPlace.Write("house.obj.gz", Gzipped(kHouse));
    ASSERT_TRUE(Draw({}));
    const std::string drawn = mPlace.Read("drawn.png");
    ASSERT_TRUE(Draw({}));
    EXPECT_TRUE(mPlace.Read("drawn.png") == drawn) << "a second run differs";
    ASSERT_TRUE(Draw({}, "house.obj.gz"));
    EXPECT_TRUE(mPlace.Read("drawn.png") == drawn) << "gzip differs";
    for (const std::string input : {"house.obj", "house.obj.gz"})
    {
        const Outcome piped = Run({"-", "-o", "-", "--size", "96x64"}, input);
        EXPECT_EQ(piped.exitCode, 0) << piped.err;
        EXPECT_TRUE(piped.out == drawn) << input << " by standard input differs";
    }
}

TEST_F(Preview, ObeysItsOptions)
{
    const vx::PicturePtr plain = Draw({});
    ASSERT_TRUE(plain);
    struct Row
    {
        std::vector<std::string> options;
        double atLeast; ///< share of the pixels that must change
    };
    const Row rows[] = {
        {{"--azimuth", "-60"}, 0.1},  {{"--elevation", "70"}, 0.1},
        {{"--zoom", "0.5"}, 0.1},     {{"--fov", "90"}, 0.01},
        {{"--ortho"}, 0.01},          {{"--background", "ff0000"}, 0.4},
        {{"--ground"}, 0.1},          {{"--no-shadows"}, 0.01},
        {{"--no-creases"}, 0.1},      {{"--crease-angle", "120"}, 0.1},
        {{"--up", "z"}, 0.1},         {{"--samples", "1"}, 0.002},
        {{"--samples", "16"}, 0.001},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.options[0] + " " + row.options.back());
        const vx::PicturePtr other = Draw(row.options);
        ASSERT_TRUE(other);
        EXPECT_GE(Difference(*plain, *other), row.atLeast);
    }
    // On a mesh without odd places every method splits vertices into the same sectors.
    for (const char* const method : {"1", "2"})
        EXPECT_EQ(Difference(*plain, *Draw({"--crease-method", method})), 0) << "crease method " << method;
    const vx::PicturePtr shadows = Draw({"--shadows"});
    EXPECT_EQ(Difference(*plain, *shadows), 0) << "shadows are on anyway";
    const vx::PicturePtr tall = Draw({"--size", "37x91"});
    ASSERT_TRUE(tall);
    EXPECT_EQ(tall->Width(), 37);
    EXPECT_EQ(tall->Height(), 91);
}

TEST_F(Preview, PaintsTheBackgroundThatWasAskedFor)
{
    struct Row
    {
        const char* value;
        int top[4], bottom[4]; ///< -1: any
    };
    const Row rows[] = {
        {"ff8000", {255, 128, 0, 255}, {255, 128, 0, 255}},    {"#204060", {32, 64, 96, 255}, {32, 64, 96, 255}},
        {"white", {255, 255, 255, 255}, {255, 255, 255, 255}}, {"000000,ffffff", {0, 0, 0, 255}, {255, 255, 255, 255}},
        {"transparent", {-1, -1, -1, 0}, {-1, -1, -1, 0}},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.value);
        const vx::PicturePtr picture = Draw({"--background", row.value, "--no-shadows"});
        ASSERT_TRUE(picture);
        for (int k = 0; k < 4; ++k)
        {
            const int top = picture->Row(0)[k], bottom = picture->Row(picture->Height() - 1)[k];
            EXPECT_NEAR(top, row.top[k] < 0 ? top : row.top[k], 4) << k; // half a row of a gradient
            EXPECT_NEAR(bottom, row.bottom[k] < 0 ? bottom : row.bottom[k], 4) << k;
        }
    }
}

TEST_F(Preview, ShowsAModelWithZUpLikeOneWithYUp)
{
    mPlace.Write("house z.obj", kHouseZ);
    const vx::PicturePtr y = Draw({}), z = Draw({"--up", "z"}, "house z.obj");
    ASSERT_TRUE(y && z);
    EXPECT_LT(Difference(*y, *z), 0.002);
}

TEST_F(Preview, TakesNoModelForItsGround)
{
    mPlace.Write("m.mtl", "newmtl Ground\nKd 0.8 0.1 0.1\n");
    const std::string house = "mtllib m.mtl\nusemtl Ground\n" + kHouse;
    mPlace.Write("house.obj", house);
    mPlace.Write("GROUND.obj", house);
    ASSERT_EQ(Run({"house.obj", "--ground", "--size", "64x64", "-o", "house.png"}).exitCode, 0);
    ASSERT_EQ(Run({"GROUND.obj", "--ground", "--size", "64x64", "-o", "ground.png"}).exitCode, 0);
    EXPECT_EQ(Difference(*Opened("house.png"), *Opened("ground.png")), 0);
    EXPECT_GT(PixelsOf(*Opened("house.png"), kRed).size(), 200u) << "the house is opaque";
}

TEST_F(Preview, WarnsOfWhatIsMissingAndDraws)
{
    struct Row
    {
        const char* name;
        std::string model, materials;
        const char* warning;
    };
    const Row rows[] = {
        {"no material file", "mtllib none.mtl\nusemtl a\n" + kHouse, "",
         "velmar: warning: (.*/)?none\\.mtl: .*no such file\n"},
        {"no texture", "mtllib m.mtl\nusemtl a\n" + kHouse, "newmtl a\nKd 1 0 0\nmap_Kd none.png\n",
         "velmar: warning: (.*/)?m\\.mtl: .*none\\.png.*\n"},
        {"a texture that is none", "mtllib m.mtl\nusemtl a\n" + kHouse, "newmtl a\nKd 1 0 0\nmap_Kd model.obj\n",
         "velmar: warning: (.*/)?m\\.mtl: .*model\\.obj.*\n"},
        {"short faces", kHouse + "f 1 2\nf 3\nf 1 2\n", "",
         "velmar: warning: model\\.obj:18: .*fewer than 3 corners.*: 3\n"},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        mPlace.Write("model.obj", row.model);
        mPlace.Write("m.mtl", row.materials);
        const Outcome outcome = Run({"model.obj", "--size", "64x64", "-o", "out.png"});
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_TRUE(std::regex_match(outcome.err, std::regex(row.warning))) << outcome.err;
        EXPECT_TRUE(Opened("out.png"));
    }
}

TEST_F(Preview, PutsATextureOnModelsThatHaveNone)
{
    const std::string sail = std::string(VELMAR_SOURCE_DIR) + "/samples/sail.png";
    mPlace.Write("square.obj", "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
                               "f 1/1 2/2 3/3 4/4\n");
    const vx::PicturePtr plain = Draw({"--azimuth", "0"}, "square.obj");
    const vx::PicturePtr painted = Draw({"--azimuth", "0", "--texture", sail}, "square.obj");
    ASSERT_TRUE(plain && painted);
    EXPECT_GT(Difference(*plain, *painted), 0.2);
    const Outcome missing = Run({"square.obj", "--texture", "none.png", "-o", "out.png"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_TRUE(std::regex_match(missing.err, std::regex("velmar: none\\.png: .*expected a picture\n"))) << missing.err;
}

TEST_F(Preview, ShowsNormalsSplitAlongHardEdges)
{
    const auto normals = [&](std::vector<std::string> options)
    {
        options.insert(options.end(), {"--size", "240x240"});
        const vx::PicturePtr picture = Draw(options);
        return picture ? PixelsOf(*picture, kBlue).size() : 0;
    };
    EXPECT_EQ(normals({}), 0u);
    const std::size_t smooth = normals({"--show", "normals", "--no-creases"});
    EXPECT_GT(smooth, 60u);
    EXPECT_GT(normals({"--show", "normals"}), 2 * smooth) << "each side of a hard edge has normals of its own";
    EXPECT_GT(normals({"--show", "normals", "--mode", "wire"}), smooth);

    // Behind the surface that they point away from, normals are hidden.
    mPlace.Write("house.obj", "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nf 1 2 3 4\n");
    EXPECT_GT(normals({"--show", "normals", "--azimuth", "40"}), 20u);
    EXPECT_LT(normals({"--show", "normals", "--azimuth", "180", "--elevation", "0"}), 8u);
}

TEST_F(Preview, ShowsTangentsAlongTheTexture)
{
    const std::vector<std::string> options = {"--azimuth", "0",       "--elevation", "0",
                                              "--size",    "240x240", "--show",      "tangents"};
    mPlace.Write("square.obj", "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
                               "f 1/1 2/2 3/3 4/4\n");
    const vx::PicturePtr upright = Draw(options, "square.obj");
    mPlace.Write("turned.obj", "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nvt 0 1\nvt 0 0\nvt 1 0\nvt 1 1\n"
                               "f 1/1 2/2 3/3 4/4\n");
    const vx::PicturePtr turned = Draw(options, "turned.obj");
    ASSERT_TRUE(upright && turned);
    const auto tangents = PixelsOf(*upright, kRed), binormals = PixelsOf(*upright, kGreen);
    EXPECT_GT(InARow(tangents, 1, 0), 2 * InARow(tangents, 0, 1)) << "u runs to the right";
    EXPECT_GT(InARow(binormals, 0, 1), 2 * InARow(binormals, 1, 0)) << "v runs upwards";
    EXPECT_GT(InARow(PixelsOf(*turned, kRed), 0, 1), 2 * InARow(PixelsOf(*turned, kRed), 1, 0));

    const Outcome bare = Run({"house.obj", "--show", "tangents", "-o", "bare.png"});
    EXPECT_EQ(bare.exitCode, 0);
    EXPECT_EQ(bare.err, "velmar: warning: house.obj: has no texture coordinates, so no tangents are shown\n");
    const vx::PicturePtr picture = Opened("bare.png");
    ASSERT_TRUE(picture);
    EXPECT_TRUE(PixelsOf(*picture, kRed).empty());
    EXPECT_FALSE(PixelsOf(*picture, kBlue).empty()) << "normals are there anyway";
}

TEST_F(Preview, ShowsTheSubdividedSurfaceAndItsCage)
{
    const std::vector<std::string> view = {"--azimuth", "20", "--no-shadows", "--background", "000000"};
    const auto lit = [&](std::vector<std::string> options)
    {
        options.insert(options.end(), view.begin(), view.end());
        const vx::PicturePtr picture = Draw(options);
        std::int64_t count = 0;
        for (int y = 0; picture && y < picture->Height(); ++y)
            for (int x = 0; x < picture->Width(); ++x)
                count += picture->Row(y)[4 * x] > 40;
        return count;
    };
    // The surface lies inside its cage; with the cage, both are fitted into the picture, and the surface is smaller.
    const std::int64_t control = lit({}), surface = lit({"--subdivide", "2", "--zoom", "0.5"});
    const std::int64_t caged = lit({"--subdivide", "2", "--cage"});
    EXPECT_GT(4 * surface, control / 2);
    EXPECT_LT(caged, 4 * surface) << "smaller, in spite of its wires";
    const vx::PicturePtr one = Draw({"--subdivide", "2"}), with = Draw({"--subdivide", "2", "--cage"});
    ASSERT_TRUE(one && with);
    EXPECT_GT(Difference(*one, *with), 0.05);
    // On a closed mesh the schemes agree.
    const vx::PicturePtr own = Draw({"--subdivide", "2", "--scheme", "catmull-clark"});
    ASSERT_TRUE(own);
    EXPECT_LT(Difference(*one, *own), 0.001);

    // What cannot be subdivided is still shown.
    mPlace.Write("house.obj", kHouse + "l 5 9\nv 0 5 0\nl 9 11\n");
    const vx::PicturePtr mast = Draw({"--subdivide", "2"});
    ASSERT_TRUE(mast);
    EXPECT_GT(Difference(*one, *mast), 0.05) << "the line reaches above the house";
}

TEST_F(Preview, ShowsSeveralModelsTogether)
{
    mPlace.Write("far.obj", "v 8 0 0\nv 9 0 0\nv 9 1 0\nf 1 2 3\n");
    const Outcome outcome = Run({"house.obj", "far.obj", "--size", "96x64", "-o", "two.png"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    const vx::PicturePtr one = Draw({}), two = Opened("two.png");
    ASSERT_TRUE(one && two);
    EXPECT_GT(Difference(*one, *two), 0.1); // the house is smaller, as more has to fit
}

TEST_F(Preview, ReplacesAnOlderPicture)
{
    mPlace.Write("drawn.png", "an older picture");
    EXPECT_TRUE(Draw({}));
    EXPECT_EQ(mPlace.Names(), (std::vector<std::string>{"drawn.png", "house.obj"}));
}

TEST_F(Preview, SaysWithVerboseHowItDraws)
{
    const Outcome outcome = Run({"house.obj", "-v", "--size", "64x64"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(std::regex_search(outcome.err, std::regex("velmar: drawing without a window.*: .*\n"))) << outcome.err;
    EXPECT_EQ(outcome.out, "preview.png\n");
}

// A dark and a bright half of the house, split by a node; without its shader it is of one colour.
TEST_F(Preview, DrawsMaterialsAsTheFileSays)
{
    const std::string split = "{\"materials\": [{\"name\": \"any\", \"surface\": {\"Highlight_Value\": 0, "
                              "\"Diffuse_Color\": {\"type\": \"math\", \"Operation\": \"step\", \"Value_2\": 1, "
                              "\"Value_1\": {\"type\": \"position\"}}}}";
    mPlace.Write("split.json", split + "]}");
    mPlace.Write("part.json", split + ",\n {\"name\": \"bad\", \"surface\": []}]}");
    mPlace.Write("broken.json", split);

    const std::vector<std::string> front = {"--no-shadows", "--azimuth", "0", "--elevation", "0"};
    const auto with = [&](std::vector<std::string> more)
    {
        more.insert(more.end(), front.begin(), front.end());
        return more;
    };
    const auto brightness = [](const CPB_Offscreen& picture, int y) { return int(picture.Row(y)[4 * 48 + 1]); };
    const vx::PicturePtr drawn = Draw(with({"--materials", "split.json"}));
    const vx::PicturePtr flat = Draw(with({"--materials", "split.json", "--shaders", "off"}));
    ASSERT_TRUE(drawn && flat);
    EXPECT_GT(brightness(*drawn, 32), brightness(*drawn, 54) + 100) << "bright above the middle of the wall";
    EXPECT_NEAR(brightness(*flat, 32), brightness(*flat, 54), 30);

    const vx::PicturePtr plain = Draw(front);
    for (const auto& [file, told] : {std::pair("part.json", "velmar: warning: part.json:2:29: expected the surface"),
                                     std::pair("broken.json", "velmar: warning: broken.json:1:")})
    {
        const Outcome outcome = Run(with({"house.obj", "-o", "rest.png", "--size", "96x64", "--materials", file}));
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.err.substr(0, std::string(told).size()), told);
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        const vx::PicturePtr rest = Opened("rest.png");
        ASSERT_TRUE(rest && plain);
        EXPECT_EQ(Difference(*rest, *plain) < 0.01, std::string(file) == "broken.json") << "the rest is drawn";
    }
    EXPECT_EQ(Run({"house.obj", "-o", "none.png", "--materials", "absent.json"}).exitCode, 1);
    EXPECT_FALSE(mPlace.Has("none.png"));
}

TEST_F(Preview, WithoutOpenGLEndsWithCode3)
{
#ifdef _WIN32
    GTEST_SKIP() << "drivers are not chosen by the environment";
#else
    // A vendor file that names no driver leaves EGL with none.
    mPlace.Write("none.json", "{\"file_format_version\": \"1.0.0\", \"ICD\": {\"library_path\": \"none.so\"}}");
    setenv("__EGL_VENDOR_LIBRARY_FILENAMES", (mPlace.Folder() / "none.json").c_str(), 1);
    const Outcome outcome = Run({"house.obj", "-o", "out.png"});
    unsetenv("__EGL_VENDOR_LIBRARY_FILENAMES");
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    EXPECT_EQ(outcome.err.substr(0, 26), "velmar: no OpenGL to be ha") << outcome.err;
    EXPECT_FALSE(mPlace.Has("out.png"));
#endif
}

TEST_F(Preview, IsWhatTheSmallestHostDoesToo)
{
    const Outcome outcome = mPlace.Run(VELMAR_MINIMAL_HOST, {"small.png"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    const vx::PicturePtr picture = Opened("small.png");
    ASSERT_TRUE(picture);
    // The material's green in the middle, in several shades: lit faces at angles to each other.
    std::set<int> greens;
    for (int x = 160; x < 480; x += 4)
    {
        const std::uint8_t* const pixel = picture->Row(240) + 4 * x;
        if (pixel[1] > pixel[0] + 10)
            greens.insert(pixel[1]);
    }
    EXPECT_GE(greens.size(), 2u);
}

#ifdef VELMAR_WITH_TEXT
// Front and sides have colours of their own: the sides are bluer than anything in a picture of the front alone.
TEST_F(Preview, OfATextShowsFrontAndSides)
{
    const auto bluest = [this](const std::vector<std::string>& options)
    {
        std::vector<std::string> arguments = {"text", "HE", "-o", "text.png", "--width", "200"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = mPlace.Run(VELMAR_PROGRAM, arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        EXPECT_EQ(outcome.out, "text.png\n");
        int most = -255;
        if (const vx::PicturePtr picture = Opened("text.png"))
            for (int i = 0; i < picture->Width() * picture->Height(); ++i)
                most = std::max(most, picture->Pixels()[4 * i + 2] - picture->Pixels()[4 * i]);
        return most;
    };
    EXPECT_GT(bluest({"--depth", "0.3"}), bluest({"--depth", "0"}) + 20);
}
#endif
