// What velmar info tells of good files, and what the grammar promises everywhere.
#include "Command.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <regex>

using nlohmann::json;

// A unit cube without its left face, two triangles on its edge 2-3, where four faces meet, and a pentagon by itself.
static const std::string kModel = R"(# comment
mtllib none.mtl
v 0 0 0
v 1 0 0
v 1 1 0
v 0 1 0
v 0 0 1
v 1 0 1
v 1 1 1
v 0 1 1
v 2 0 -1
v 2 0.5 -2
v 5 0 0
v 6 0 0
v 6 1 0
v 5.5 2 0
v 5 1 0
vt 0 0
vt 1 0
vt 1 1
o First
g box bottom
usemtl red
s 1
f 4 3 2 1
g box
usemtl blue
f 5 6 7 8
f 1 2 6 5
f 2 3 7 6
f 3/1 4/2 8/3 7/3
g box wing
s off
f 2 3 9
f 2 3 10
o Second
f 11 12 13 14 15
l 1 2 3
l 5 6
p 1
f 1 2
)";

TEST(Info, CountsWhatIsInTheFile)
{
    Workplace place;
    place.Write("box.obj", kModel);
    const Outcome outcome = place.Run(VELMAR_PROGRAM, {"info", "--json", "box.obj"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const json info = json::parse(outcome.out);
    EXPECT_EQ(info["file"], "box.obj");
    EXPECT_EQ(info["vertices"], 15);
    EXPECT_EQ(info["textureVertices"], 3);
    EXPECT_EQ(info["normals"], 0);
    EXPECT_EQ(info["polygons"], json::parse(R"({"total": 11, "triangles": 2, "quads": 5, "ngons": 1, "lines": 2,
                                               "points": 1, "mostCorners": 5})"));
    // The box has 12 edges, 4 of them around the hole; the triangles add 2 each, the pentagon 5.
    EXPECT_EQ(info["edges"]["total"], 12 + 4 + 5);
    EXPECT_EQ(info["edges"]["open"], 4 + 4 + 5);
    EXPECT_EQ(info["edges"]["nonManifold"], 1);
    EXPECT_EQ(info["bounds"]["min"], json::parse("[0.0, 0.0, -2.0]"));
    EXPECT_EQ(info["bounds"]["max"], json::parse("[6.0, 2.0, 1.0]"));
    EXPECT_EQ(info["bounds"]["centre"], json::parse("[3.0, 1.0, -0.5]"));
    EXPECT_EQ(info["materials"], json::parse(R"([{"name": "red", "polygons": 1}, {"name": "blue", "polygons": 10}])"));
    EXPECT_EQ(info["groups"], json::parse(R"([{"name": "box", "polygons": 11}, {"name": "bottom", "polygons": 1},
                                             {"name": "wing", "polygons": 6}])"));
    EXPECT_EQ(info["objects"], json::parse(R"([{"name": "First", "polygons": 7}, {"name": "Second", "polygons": 4}])"));
    EXPECT_EQ(info["materialFiles"], json::parse(R"(["none.mtl"])"));
    EXPECT_EQ(info["smoothingGroups"], 1);
    EXPECT_GT(info["memory"], 15 * 12); // at least the positions
    EXPECT_TRUE(
        std::regex_match(outcome.err, std::regex("velmar: warning: box\\.obj:41: .*fewer than 3 corners.*: 1\n")))
        << outcome.err;
}

TEST(Info, TellsEdgesApart)
{
    struct Row
    {
        const char* name;
        const char* obj;
        int total, open, crease, nonManifold;
    };
    const char* const kTent = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0.5 0 1\nv 0.5 1 1\n";
    const Row rows[] = {
        {"one quad", "f 1 2 3 4\n", 4, 4, 0, 0},
        {"two quads folded by more than 40 degrees", "f 1 4 6 5\nf 5 6 3 2\n", 7, 6, 1, 0},
        {"a third quad on that edge, back to back with the first", "f 1 4 6 5\nf 5 6 3 2\nf 5 6 4 1\n", 7, 3, 3, 1},
        {"a line is no edge of a surface", "f 1 2 3 4\nl 1 3\n", 4, 4, 0, 0},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        Workplace place;
        place.Write("m.obj", std::string(kTent) + row.obj);
        const Outcome outcome = place.Run(VELMAR_PROGRAM, {"info", "--json", "m.obj"});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
        const json edges = json::parse(outcome.out)["edges"];
        EXPECT_EQ(edges["total"], row.total);
        EXPECT_EQ(edges["open"], row.open);
        EXPECT_EQ(edges["crease"], row.crease);
        EXPECT_EQ(edges["nonManifold"], row.nonManifold);
    }
}

TEST(Info, IsTheSameFromFileGzipAndStandardInput)
{
    Workplace place;
    place.Write("box.obj", kModel);
    place.Write("box.obj.gz", Gzipped(kModel));
    const auto facts = [&](const std::string& name, const std::string& input)
    {
        const Outcome outcome = place.Run(VELMAR_PROGRAM, {"info", "--json", name}, input);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        json info = json::parse(outcome.out, nullptr, false);
        info.erase("file");
        return info;
    };
    const json plain = facts("box.obj", "");
    EXPECT_EQ(facts("box.obj.gz", ""), plain);
    EXPECT_EQ(facts("-", "box.obj"), plain);
    EXPECT_EQ(facts("-", "box.obj.gz"), plain);
}

TEST(Info, AnswersEachInputInOrder)
{
    Workplace place;
    place.Write("a.obj", "v 0 0 0\np 1\n");
    place.Write("b.obj", "v 0 0 0\nv 1 0 0\nl 1 2\n");
    const Outcome lines = place.Run(VELMAR_PROGRAM, {"info", "--json", "b.obj", "a.obj"});
    EXPECT_TRUE(
        std::regex_search(lines.out, std::regex("^\\{\"file\":\"b\\.obj\".*\\}\n\\{\"file\":\"a\\.obj\".*\\}\n$")))
        << lines.out;
    const Outcome text = place.Run(VELMAR_PROGRAM, {"info", "b.obj", "a.obj"});
    EXPECT_EQ(text.exitCode, 0);
    EXPECT_LT(text.out.find("b.obj\n"), text.out.find("a.obj\n"));
    EXPECT_NE(text.out.find("1 line,"), std::string::npos) << text.out;
}

TEST(Grammar, HelpAndVersionAreEverywhere)
{
    Workplace place;
    for (const std::vector<std::string>& verb : {std::vector<std::string>{}, {"info"}, {"preview"}})
    {
        std::vector<std::string> help = verb, version = verb;
        help.push_back("--help");
        version.push_back("--version");
        const Outcome helped = place.Run(VELMAR_PROGRAM, help), versioned = place.Run(VELMAR_PROGRAM, version);
        EXPECT_EQ(helped.exitCode, 0);
        EXPECT_EQ(helped.err, "");
        EXPECT_NE(helped.out.find(verb.empty() ? "preview" : "--verbose"), std::string::npos) << helped.out;
        EXPECT_EQ(versioned.exitCode, 0);
        EXPECT_EQ(versioned.out, "velmar " VELMAR_VERSION "\n");
    }
}
