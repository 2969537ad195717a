// The viewer: its parts without a window, and the program under a display of its own.
#include "Command.h"

#include "apps/view/Script.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "host/image/Picture.h"
#include "host/window/OffscreenContext.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <thread>

namespace
{

using vx::view::Controls;
using vx::view::OrbitCamera;
using vx::view::Session;

// A grid of n x n squares in the plane z = 0, from -1 to 1; square (i, j) is polygon j * n + i.
std::string Grid(int n)
{
    std::string text;
    for (int j = 0; j <= n; ++j)
        for (int i = 0; i <= n; ++i)
            text += "v " + std::to_string(2.0 * i / n - 1) + " " + std::to_string(2.0 * j / n - 1) + " 0\n";
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i)
        {
            const int v = j * (n + 1) + i + 1;
            for (const int corner : {v, v + 1, v + n + 2, v + n + 1})
                text += (corner == v ? "f " : " ") + std::to_string(corner);
            text += "\n";
        }
    return text;
}

BPath In(const Workplace& place, const char* name) { return BPath(BString((place.Folder() / name).string())); }

// A session that looks straight at the grid.
class Viewer : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!mContext.Create())
            GTEST_SKIP() << "no OpenGL: " << mContext.Error().Std();
    }
    void Open(int n)
    {
        mPlace.Write("grid.obj", Grid(n));
        mSession.SetSize(200, 100);
        ASSERT_EQ(mSession.Open({In(mPlace, "grid.obj")}).Std(), "");
        mSession.MoveCamera().SetDirection(0, 0);
        mSession.FrameAll();
    }

    // Pixel at which a point of the plane z = 0 is seen.
    std::pair<float, float> PixelOf(float x, float y) const
    {
        const vx::View view = mSession.ViewNow();
        VERTEX p{x, y, 0};
        Mat44 m;
        MAT_Concat4x4(view.toView, view.projection, m);
        const float w = x * m[0][3] + y * m[1][3] + m[3][3];
        p = {(x * m[0][0] + y * m[1][0] + m[3][0]) / w, (x * m[0][1] + y * m[1][1] + m[3][1]) / w, 0};
        return {100 * (1 + p.x), 50 * (1 - p.y)};
    }

    Workplace mPlace;
    vx::OffscreenContext mContext;
    Session mSession;
};

} // namespace

TEST_F(Viewer, PicksThePolygonUnderThePixelSubdividedOrNot)
{
    Open(8);
    for (const bool ownScheme : {false, true})
        for (int level = 0; level <= 2; ++level)
        {
            SCOPED_TRACE(testing::Message() << level << (ownScheme ? " own" : ""));
            ASSERT_EQ(mSession.SetSubdivision(level, ownScheme).Std(), "");
            for (int poly = 9; poly < 63; poly += 5) // not in the corners, which subdivision rounds off
            {
                const auto [x, y] = PixelOf((float(poly % 8) + 0.4f) / 4 - 1, (float(poly / 8) + 0.6f) / 4 - 1);
                EXPECT_EQ(mSession.PickAt(x, y).poly, poly);
            }
            EXPECT_EQ(mSession.PickAt(PixelOf(1.2f, 0).first, 50).poly, -1);
            EXPECT_EQ(mSession.PickAt(1e30f, -1e30f).poly, -1);
        }
}

TEST_F(Viewer, ShowsTheSelectionOnSubdividedSurfaces)
{
    Open(8);
    const VXObject& object = *mSession.Scene().Object(0);
    for (const bool ownScheme : {false, true})
    {
        ASSERT_EQ(mSession.SetSubdivision(2, ownScheme).Std(), "");
        mSession.ChangeSelection().SelectOnly(0, 27);
        mSession.ChangeSelection().Apply(vx::view::Selection::Step::Grow);
        EXPECT_EQ(mSession.Selected().Count(), 9);
        mSession.PickAt(0, 0); // derives
        mSession.ChangeSelection().UpdateSurfaces();
        std::vector<VERTEX> points;
        mSession.Selected().AppendPoints(points);
        EXPECT_EQ(points.size(), 9 * 16 * 4u);
        for (const VERTEX& p : points) // polygon 27 is in column 3 and row 3
            EXPECT_TRUE(std::fabs(p.x + 0.125f) < 0.376f && std::fabs(p.y + 0.125f) < 0.376f) << p.x << " " << p.y;
    }
    EXPECT_EQ(object.CurSubdivGeom(true)->NumPolys(), 64 * 16);
}

TEST_F(Viewer, ZoomsAboutThePointerAndPansWithIt)
{
    Open(4);
    for (const bool ortho : {false, true})
    {
        mSession.MoveCamera().SetOrtho(ortho);
        const auto before = PixelOf(0.5f, 0.25f);
        const float half = mSession.Camera().HalfHeight();
        Controls controls(mSession);
        controls.Wheel(3, {}, before.first, before.second);
        const auto after = PixelOf(0.5f, 0.25f);
        EXPECT_NEAR(after.first, before.first, 0.01f);
        EXPECT_NEAR(after.second, before.second, 0.01f);
        EXPECT_LT(mSession.Camera().HalfHeight(), 0.8f * half);
        controls.Press(Controls::Button::Middle, {}, 10, 10);
        controls.Move(30, 4);
        controls.Release(Controls::Button::Middle);
        EXPECT_NEAR(PixelOf(0.5f, 0.25f).first, after.first + 20, 0.05f);
        EXPECT_NEAR(PixelOf(0.5f, 0.25f).second, after.second - 6, 0.05f);
    }
}

TEST_F(Viewer, TakesAPressThatStaysForAClickAndOneThatMovesForADrag)
{
    Open(4);
    Controls controls(mSession);
    const auto [x, y] = PixelOf(0.25f, 0.25f);
    controls.Press(Controls::Button::Left, {}, x, y);
    controls.Move(x + 2, y);
    controls.Release(Controls::Button::Left);
    EXPECT_EQ(mSession.Selected().Count(), 1);
    EXPECT_TRUE(mSession.Selected().Has(0, 10));
    EXPECT_FLOAT_EQ(mSession.Camera().Look().azimuth, 0);

    controls.Wheel(1, {.control = true}, x, y);
    EXPECT_EQ(mSession.Selected().Count(), 9);
    controls.Press(Controls::Button::Left, {.control = true}, x, y);
    controls.Release(Controls::Button::Left);
    EXPECT_EQ(mSession.Selected().Count(), 8);

    controls.Press(Controls::Button::Left, {}, x, y);
    controls.Move(x + 30, y);
    controls.Release(Controls::Button::Left);
    EXPECT_EQ(mSession.Selected().Count(), 8);
    EXPECT_LT(mSession.Camera().Look().azimuth, -10);
}

TEST_F(Viewer, ReloadsWhatHasChangedAndKeepsViewAndSelection)
{
    Open(4);
    mSession.MoveCamera().Orbit(20, 10);
    mSession.ChangeSelection().SelectOnly(0, 5);
    const float half = mSession.Camera().HalfHeight();
    EXPECT_FALSE(mSession.LookAtFiles());

    const auto change = [&](const std::string& text, const char* file = "grid.obj")
    {
        mPlace.Write(file, text); // of another length, so that the clock's grain does not matter
        EXPECT_FALSE(mSession.LookAtFiles()) << "while it is being written";
        EXPECT_TRUE(mSession.LookAtFiles());
    };
    change(Grid(4) + "f 1 2 3\n");
    EXPECT_EQ(mSession.Scene().Object(0)->Geom()->NumPolys(), 17);
    EXPECT_TRUE(mSession.Selected().IsEmpty()); // numbers mean other polygons now
    mSession.ChangeSelection().SelectOnly(0, 5);
    change("# moved\n" + Grid(4) + "f 1 2 3\n");
    EXPECT_TRUE(mSession.Selected().Has(0, 5));
    EXPECT_FLOAT_EQ(mSession.Camera().HalfHeight(), half);
    EXPECT_FLOAT_EQ(mSession.Camera().Look().azimuth, 20);

    change("v 0 0 0\nf 1 2 3\n");
    EXPECT_TRUE(mSession.Telling().isError);
    EXPECT_NE(mSession.Telling().text.find("grid.obj:2"), std::string::npos) << mSession.Telling().text;
    EXPECT_EQ(mSession.Scene().Object(0)->Geom()->NumPolys(), 17);

    change(Grid(4));
    EXPECT_EQ(mSession.Telling().text, "reloaded");
    ASSERT_EQ(mSession.SetSubdivision(2, false).Std(), "");
    std::string fan = "v 0 0 0\nv 1 0 0\nv 0 1 0\n"; // more polygons around a vertex than can be subdivided
    for (int i = 0; i < 33000; ++i)
        fan += "f 1 2 3\n";
    change(fan);
    EXPECT_EQ(mSession.Options().subdivision, VELMAR_HAS_OPENSUBDIV ? 0 : 2);
    EXPECT_EQ(mSession.Telling().isError, bool(VELMAR_HAS_OPENSUBDIV)) << mSession.Telling().text;
    change(Grid(4));
    const std::string red = R"({"materials": [{"name": "Red", "surface": {"Diffuse_Color": [1, 0, 0]}}]})";
    mPlace.Write("red.json", red);
    ASSERT_EQ(mSession.SetMaterials(In(mPlace, "red.json")).Std(), "");
    change(red + "\n", "red.json");
    EXPECT_EQ(mSession.Telling().text, "reloaded");
    change(red + "}", "red.json");
    EXPECT_NE(mSession.Telling().text.find("red.json:1"), std::string::npos) << mSession.Telling().text;
}

TEST_F(Viewer, KeepsTheModelWhenNonsenseIsDropped)
{
    Open(4);
    mPlace.Write("noise.bin", std::string("\0\1\2\xff nonsense\n", 14));
    mPlace.Write("picture.png", "no picture");
    mPlace.Write("other.obj", Grid(2));
    mPlace.Write("broken.json", "{");
    for (const char* const name : {"noise.bin", "picture.png", "broken.json", "missing.obj", "."})
    {
        const BString problem = mSession.Drop({In(mPlace, name)});
        EXPECT_NE(problem.Std(), "") << name;
        EXPECT_EQ(mSession.Scene().Object(0)->Geom()->NumPolys(), 16) << name;
        EXPECT_EQ(mSession.Reload().Std(), "") << name << " is forgotten";
    }
    EXPECT_EQ(mSession.Drop({In(mPlace, "other.obj")}).Std(), "");
    EXPECT_EQ(mSession.Scene().Object(0)->Geom()->NumPolys(), 4);
}

TEST(ViewScript, NamesTheLineThatIsWrong)
{
    const struct
    {
        const char *text, *error;
    } kRows[] = {
        {"# nothing\n\nstyle wire\nstlye wire\n", "s:4: unknown command 'stlye', expected open"},
        {"style wires", "s:1: 'wires' makes no sense here, expected depth"},
        {"orbit 10", "s:1: 'orbit' has 1 arguments, expected orbit DX DY"},
        {"\npick 10 nan", "s:2: 'nan' makes no sense here, expected a number"},
        {"size 0x10", "s:1: '0x10' makes no sense here, expected WIDTHxHEIGHT"},
        {"open \"a b", "s:1: a double quote is not closed"},
    };
    for (const auto& [text, error] : kRows)
    {
        vx::view::Script script;
        EXPECT_FALSE(script.Read(text, "s")) << text;
        EXPECT_EQ(script.Error().Std().substr(0, std::string(error).size()), error);
    }
    vx::view::Script script;
    EXPECT_TRUE(script.Read("open \"a b.obj\" # comment\r\n grow\ncamera\nsubdivide 2", "s")) << script.Error().Std();
}

// --- The program

#ifndef _WIN32
namespace
{

// A display of a test's own, which nobody sees.
class VirtualDisplay
{
public:
    explicit VirtualDisplay(const Workplace& place)
    {
        const std::string beside = place.Folder().string() + ".display";
        const std::string run = "Xvfb -displayfd 1 -screen 0 1400x1000x24 -nolisten tcp > '" + beside +
                                "' 2> /dev/null & echo $! > '" + beside + ".pid'";
        if (std::system("command -v Xvfb > /dev/null") != 0 || std::system(run.c_str()) != 0)
            return;
        for (int i = 0; i < 200 && mName.empty(); ++i)
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            const std::string number = ReadWhole(beside);
            if (number.find('\n') != std::string::npos)
                mName = ":" + number.substr(0, number.find('\n'));
        }
        std::ifstream(beside + ".pid") >> mProcess;
        std::filesystem::remove(beside);
        std::filesystem::remove(beside + ".pid");
    }
    ~VirtualDisplay()
    {
        if (!mProcess.empty())
            (void)!std::system(("kill " + mProcess).c_str());
    }
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;
    const std::string& Name() const { return mName; } ///< empty when there is none

private:
    std::string mName, mProcess;
};

class ViewProgram : public testing::Test
{
protected:
    void SetUp() override
    {
        mPlace.Write("grid.obj", Grid(8));
        mDisplay = std::make_unique<VirtualDisplay>(mPlace);
        if (mDisplay->Name().empty())
            GTEST_SKIP() << "no virtual display: Xvfb is not there";
    }
    Outcome Run(const std::string& script, std::vector<std::string> arguments = {})
    {
        mPlace.Write("script.txt", script);
        std::vector<std::string> words = {"120",      "env",       "DISPLAY=" + mDisplay->Name(), VELMAR_VIEW_PROGRAM,
                                          "--script", "script.txt"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return mPlace.Run("timeout", words);
    }
    vx::PicturePtr Opened(const char* name)
    {
        BString error;
        vx::PicturePtr picture = vx::ReadPicture(In(mPlace, name), error);
        EXPECT_TRUE(picture) << name << ": " << error.Std();
        return picture;
    }

    Workplace mPlace;
    std::unique_ptr<VirtualDisplay> mDisplay;
};

// Share of the pixels in the colour of what is selected.
double Orange(const CPB_Offscreen& picture)
{
    std::int64_t count = 0;
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
        {
            const std::uint8_t* const p = picture.Row(y) + 4 * x;
            count += p[0] > p[2] + 60;
        }
    return double(count) / (double(picture.Width()) * picture.Height());
}

} // namespace

TEST_F(ViewProgram, IsDrivenByAScript)
{
    const Outcome outcome = Run("open grid.obj\nsize 320x240\nview front\nframe all\nscreenshot smooth.png\n"
                                "style wire\nscreenshot wire.png\nstyle smooth\n"
                                "pick 160 115\nscreenshot picked.png\ngrow\ncounts\nscreenshot grown.png\n"
                                "subdivide 1\nscreenshot fine.png\nwindow-shot window.png\ndrop missing.obj\nquit\n");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out.rfind("1 objects, 64 polygons, 81 vertices, 9 selected, ", 0), 0u) << outcome.out;

    const vx::PicturePtr smooth = Opened("smooth.png"), wire = Opened("wire.png"), picked = Opened("picked.png"),
                         grown = Opened("grown.png"), fine = Opened("fine.png"), window = Opened("window.png");
    ASSERT_TRUE(smooth && wire && picked && grown && fine && window);
    EXPECT_EQ(smooth->Width(), 320);
    EXPECT_EQ(smooth->Height(), 240);
    EXPECT_GT(vx::ComparePictures(*smooth, *wire, 8).share, 0.3); // the grid fills more than half of the picture
    EXPECT_EQ(Orange(*smooth), 0);
    // The grid is 0.83 of the height: a square of it about 1/64 of 0.69 of three quarters of the picture.
    const double square = 0.83 * 0.83 * 0.75 / 64;
    EXPECT_NEAR(Orange(*picked), square, 0.5 * square); // the border is drawn around it
    EXPECT_NEAR(Orange(*grown), 9 * square, 2 * square);
    EXPECT_NEAR(Orange(*fine), 9 * square, 2 * square);
    EXPECT_GT(window->Width(), 320); // the panel stands beside the picture

    const Outcome first =
        Run("pick 165 125\ncounts\nquit\n", {"grid.obj", "--size", "320x240", "--azimuth", "0", "--elevation", "0"});
    EXPECT_NE(first.out.find(", 1 selected, "), std::string::npos) << first.out << first.err;
}

TEST_F(ViewProgram, SaysWhatIsWrongInOneLine)
{
    const struct
    {
        const char* script;
        std::vector<std::string> arguments;
        int code;
        const char* message;
    } kRows[] = {
        {"open missing.obj\n", {}, 1, "velmar-view: script.txt:1: missing.obj: "},
        {"wait\nselect head\n", {"grid.obj"}, 1, "velmar-view: script.txt:2: no model has a group 'head'"},
        {"jump\n", {}, 1, "velmar-view: script.txt:1: unknown command 'jump'"},
        {"quit\n", {"missing.obj"}, 1, "velmar-view: missing.obj: "},
        {"quit\n", {"--mode", "wires"}, 2, "velmar-view: --mode: 'wires' is no draw mode"},
        {"quit\n", {"grid.obj", "--background-picture", "script.txt"}, 1, "velmar-view: "},
        {"screenshot no/such/folder.png\n", {"grid.obj"}, 1, "velmar-view: script.txt:1: no/such/folder.png: "},
    };
    for (const auto& [script, arguments, code, message] : kRows)
    {
        const Outcome outcome = Run(script, arguments);
        EXPECT_EQ(outcome.exitCode, code) << message;
        EXPECT_EQ(outcome.err.rfind(message, 0), 0u) << outcome.err;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    }
}

TEST(ViewProgramAlone, AsksForADisplay)
{
    const Workplace place;
    place.Write("grid.obj", Grid(2));
    const Outcome outcome =
        place.Run("env", {"-u", "DISPLAY", "-u", "WAYLAND_DISPLAY", VELMAR_VIEW_PROGRAM, "grid.obj"});
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_EQ(outcome.err.rfind("velmar-view: no display to open a window on: ", 0), 0u) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
}
#endif
