// Selecting on the command line.
#include "Command.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <set>
#include <sstream>

using nlohmann::json;

namespace
{
// A flat square of six by six quads around the origin, numbered from 1 along x, then y. The first is in the group
// "corner", all others in "rest".
std::string Square()
{
    std::ostringstream text;
    for (int y = -3; y <= 3; ++y)
        for (int x = -3; x <= 3; ++x)
            text << "v " << x << ' ' << y << " 0\n";
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 6; ++x)
        {
            const int v = 7 * y + x + 1;
            text << (v == 1 ? "g corner\n" : v == 2 ? "g rest\n" : "");
            text << "f " << v << ' ' << v + 1 << ' ' << v + 8 << ' ' << v + 7 << '\n';
        }
    return text.str();
}

// Numbers of the polygons of a group in the text of a model.
std::set<int> MembersOf(const std::string& model, const std::string& group)
{
    std::set<int> members;
    bool in = false;
    int polygon = 0;
    std::istringstream lines(model);
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with("g"))
            in = (line + " ").find(" " + group + " ") != std::string::npos;
        else if (line.starts_with("f "))
        {
            ++polygon;
            if (in)
                members.insert(polygon);
        }
    return members;
}

class Select : public testing::Test
{
protected:
    void SetUp() override { mPlace.Write("square.obj", Square()); }

    Outcome Run(std::vector<std::string> steps)
    {
        steps.insert(steps.begin(), {"select", "square.obj", "-o", "out.obj"});
        return mPlace.Run(VELMAR_PROGRAM, steps);
    }

    Workplace mPlace;
};
} // namespace

TEST_F(Select, RunsItsStepsInTheOrderGiven)
{
    struct Row
    {
        std::vector<std::string> steps;
        const char* group;
        std::set<int> members;
    };
    const std::set<int> block = {1, 2, 7, 8};
    const Row rows[] = {
        {{"--group", "corner", "--grow"}, "corner", block},
        {{"--group", "corner", "--grow", "2", "--shrink", "--save", "new"}, "new", block},
        {{"--group", "corner", "--grow", "--shrink", "2", "--save", "new"}, "new", {}},
        {{"--group", "corner", "--grow", "--save", "new"}, "corner", {1}},
        {{"--group", "corner", "--mirror", "-x", "--mirror", "-y", "--save", "new"}, "new", {1, 6, 31, 36}},
        {{"--group", "corner", "--grow", "--mirror", "-x", "--save", "new"}, "new", {1, 2, 7, 8, 5, 6, 11, 12}},
        {{"--group", "corner", "--mirror", "-x", "--grow", "--save", "new"}, "new", {1, 2, 7, 8, 5, 6, 11, 12}},
        {{"--polygons", "1,6", "--mirror", "+x", "--save", "new"}, "new", {1, 6}},
        {{"--polygons", "1,4", "--mirror", "+x", "--save", "new"}, "new", {1, 3, 4}},
        {{"--polygons", "1,4", "--mirror-exact", "+x", "--save", "new"}, "new", {3, 4}},
        {{"--polygons", "15,16", "--grow-loop", "--save", "new"}, "new", {14, 15, 16, 17}},
        {{"--polygons", "14-17", "--shrink-loop", "--save", "new"}, "new", {15, 16}},
        {{"--group", "corner", "--vertices", "--grow", "--save", "new"}, "new", {1, 2, 7}},
        {{"--group", "corner", "--vertices", "--grow", "2", "--save", "new"}, "new", {1, 2, 3, 7, 8, 13}},
        {{"--group", "corner", "--save", "a", "--group", "a", "--grow", "--save", "new"}, "new", block},
        {{"--all", "--save", "corner"}, "rest", {2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19,
                                                 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36}},
    };
    for (const Row& row : rows)
    {
        std::string line;
        for (const std::string& word : row.steps)
            line += word + " ";
        SCOPED_TRACE(line);
        const Outcome outcome = Run(row.steps);
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(MembersOf(mPlace.Read("out.obj"), row.group), row.members);
    }
}

TEST_F(Select, TellsWhatIsSelected)
{
    EXPECT_EQ(Run({"--group", "corner", "--grow"}).out,
              "out.obj: 4 of 36 polygons selected, 4 polygons in group corner\n");
    EXPECT_EQ(Run({"--group", "corner", "--vertices", "--shrink", "--save", "none"}).out,
              "out.obj: 1 of 49 vertices selected, nothing in group none\n");
    const Outcome outcome = Run({"--json", "--all", "--save", "a", "--polygons", "2", "--save", "b"});
    EXPECT_EQ(outcome.out, "{\"file\":\"out.obj\",\"kind\":\"polygons\",\"selected\":1,\"of\":36,\"groups\":"
                           "[{\"name\":\"a\",\"polygons\":36},{\"name\":\"b\",\"polygons\":1}]}\n");
    const json info = json::parse(mPlace.Run(VELMAR_PROGRAM, {"info", "--json", "out.obj"}).out);
    EXPECT_EQ(info["groups"].size(), 4u) << "nothing stays of what the steps worked with";
}

TEST_F(Select, SaysWhatMakesNoSense)
{
    struct Row
    {
        std::vector<std::string> steps;
        int code;
        const char* line;
    };
    const Row rows[] = {
        {{"--group", "hed", "--save", "a"}, 1, "square.obj: has no group 'hed', expected corner or rest"},
        {{"--group", "selection"}, 1, "square.obj: has no group 'selection', expected corner or rest"},
        {{"--polygons", "30-37", "--save", "a"}, 1, "square.obj: has no polygon 37, the last is 36"},
        {{}, 2, "nothing is selected, expected --group, --polygons or --all and what to do with it"},
        {{"--grow", "--group", "corner"},
         2,
         "--grow has nothing to work on, expected --group, --polygons or --all before it"},
        {{"--all", "--grow"}, 2, "no --save, expected one that names the group to make"},
        {{"--all", "--save", "a", "--grow"}, 2, "--grow comes after the last --save, expected another --save after it"},
        {{"--all", "--mirror", "x", "--save", "a"}, 2, "--mirror: 'x' is no side, expected +x, -x, +y, -y, +z or -z"},
        {{"--all", "--grow", "0", "--save", "a"}, 2, "--grow: '0' is no number of steps, expected 1 to 10000"},
        {{"--polygons", "0", "--save", "a"},
         2,
         "--polygons: '0' names no polygons, expected numbers from 1 up such as 3,7,10-19"},
        {{"--polygons", "3-2", "--save", "a"},
         2,
         "--polygons: '3-2' names no polygons, expected numbers from 1 up such as 3,7,10-19"},
        {{"--all", "--save", "a b"},
         2,
         "--save: 'a b' is no name of a group, expected one without white space, # and \\"},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        const Outcome outcome = Run(row.steps);
        EXPECT_EQ(outcome.exitCode, row.code);
        EXPECT_EQ(outcome.out, "");
        const std::string help = row.code == 2 ? ", see 'velmar select --help'" : "";
        EXPECT_EQ(outcome.err, std::string("velmar: ") + row.line + help + "\n");
        EXPECT_FALSE(mPlace.Has("out.obj"));
    }
}

TEST_F(Select, OnlyGroupsThatAreThereCanBeHighlighted)
{
    const Outcome outcome = mPlace.Run(VELMAR_PROGRAM, {"preview", "square.obj", "-o", "out.png", "--highlight",
                                                        "corner", "--highlight-vertices", "hed"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.err, "velmar: no model has a group 'hed', expected corner or rest\n");
    EXPECT_FALSE(mPlace.Has("out.png"));
    const std::vector<std::vector<std::string>> together = {
        {"--highlight", "corner", "--subdivide", "1", "--scheme", "catmull-clark"},
        {"--highlight", "corner", "--mode", "depth"},
        {"--show", "normals", "--mode", "normals"},
    };
    for (std::vector<std::string> arguments : together)
    {
        arguments.insert(arguments.begin(), {"preview", "square.obj", "-o", "out.png"});
        EXPECT_EQ(mPlace.Run(VELMAR_PROGRAM, arguments).exitCode, 2) << arguments[5];
        EXPECT_FALSE(mPlace.Has("out.png"));
    }
}
