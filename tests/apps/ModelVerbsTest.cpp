// The verbs that make a model out of others.
#include "Command.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <iterator>
#include <regex>

using nlohmann::json;

namespace
{

// Two squares side by side. Their common edge is there twice, once a millionth of a unit away, so that welding makes
// six vertices of eight, or, of equal positions alone, seven.
const std::string kCut = "mtllib paint.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 1 0 0.000001\nv 2 0 0\nv 2 1 0\n"
                         "v 1 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvn 0 0 1\no Strip\ng left both\nusemtl red\ns 1\n"
                         "f 1/1/1 2/2/1 3/3/1 4/4/1\ng both\nusemtl blue\ns off\nf 5//1 6//1 7//1 8//1\n";

// Four squares in the places of the two, in one group of their own.
const std::string kFine = "v 0 0 0\nv 0.5 0 0\nv 1 0 0\nv 1.5 0 0\nv 2 0 0\nv 0 1 0\nv 0.5 1 0\nv 1 1 0\nv 1.5 1 0\n"
                          "v 2 1 0\ng fine\nf 1 2 7 6\nf 2 3 8 7\ng\nf 3 4 9 8\nf 4 5 10 9\n";

class ModelVerbs : public testing::Test
{
protected:
    void SetUp() override
    {
        mPlace.Write("cut.obj", kCut);
        mPlace.Write("fine.obj", kFine);
    }

    Outcome Run(const std::vector<std::string>& arguments, const std::string& input = "")
    {
        return mPlace.Run(VELMAR_PROGRAM, arguments, input);
    }

    json Info(const std::string& model)
    {
        const Outcome outcome = Run({"info", "--json", model});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        return outcome.exitCode == 0 ? json::parse(outcome.out) : json();
    }

    std::int64_t PolygonsIn(const json& info, const char* list, const std::string& name)
    {
        for (const json& entry : info[list])
            if (entry["name"] == name)
                return entry["polygons"];
        return -1;
    }

    Workplace mPlace;
};

} // namespace

TEST_F(ModelVerbs, WeldMergesWithinTheTolerance)
{
    struct Row
    {
        const char* tolerance; ///< null: not given
        int vertices;
    };
    for (const Row& row : {Row{nullptr, 6}, Row{"0.00001", 6}, Row{"0", 7}, Row{"1.1", 3}, Row{"100", 1}})
    {
        SCOPED_TRACE(row.tolerance ? row.tolerance : "standard");
        std::vector<std::string> arguments = {"weld", "cut.obj", "-o", "out.obj"};
        if (row.tolerance)
            arguments.insert(arguments.end(), {"--tolerance", row.tolerance});
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(outcome.out, "out.obj: 8 vertices before, " + std::to_string(row.vertices) + " after\n");
        EXPECT_EQ(Info("out.obj")["vertices"], row.vertices);
        EXPECT_EQ(Info("out.obj")["polygons"]["quads"], 2);
    }
}

TEST_F(ModelVerbs, WeldKeepsEverythingButTheVertices)
{
    ASSERT_EQ(Run({"weld", "cut.obj", "-o", "out.obj"}).exitCode, 0);
    json before = Info("cut.obj"), after = Info("out.obj");
    for (const char* const differing : {"file", "vertices", "edges", "bounds", "memory"})
    {
        before.erase(differing);
        after.erase(differing);
    }
    EXPECT_EQ(before, after);
    EXPECT_NE(mPlace.Read("out.obj").find("f 1/1/1 2/2/1 3/3/1 4/4/1\n"), std::string::npos);
    EXPECT_NE(mPlace.Read("out.obj").find("f 2//1 5//1 6//1 3//1\n"), std::string::npos);
}

// A cube in one smoothing group has hard edges only: drawing it needs 24 vertices, its file 8.
TEST_F(ModelVerbs, WeldWritesNoCreaseVertices)
{
    mPlace.Write("cube.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0 0 1\nv 1 0 1\nv 1 1 1\nv 0 1 1\ns 1\n"
                             "f 4 3 2 1\nf 5 6 7 8\nf 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n");
    ASSERT_EQ(Run({"weld", "cube.obj", "-o", "out.obj"}).out, "out.obj: 8 vertices before, 8 after\n");
    EXPECT_EQ(mPlace.Read("out.obj"), mPlace.Read("cube.obj"));
}

TEST_F(ModelVerbs, ReadAndWriteStreamsAndGzip)
{
    ASSERT_EQ(Run({"weld", "cut.obj", "-o", "out.obj"}).exitCode, 0);
    const std::string welded = mPlace.Read("out.obj");
    const Outcome piped = Run({"weld", "-", "-o", "-"}, "cut.obj");
    EXPECT_EQ(piped.exitCode, 0);
    EXPECT_EQ(piped.err, "");
    EXPECT_EQ(piped.out, welded) << "nothing but the model goes to standard output";
    const Outcome told = Run({"weld", "cut.obj", "-o", "-", "--json"});
    EXPECT_EQ(told.out, welded);
    EXPECT_EQ(told.err, "{\"file\":\"<stdout>\",\"verticesBefore\":8,\"verticesAfter\":6}\n");

    mPlace.Write("cut.obj.gz", Gzipped(kCut));
    const Outcome packed = Run({"weld", "cut.obj.gz", "-o", "out.obj.gz", "--json"});
    EXPECT_EQ(packed.out, "{\"file\":\"out.obj.gz\",\"verticesBefore\":8,\"verticesAfter\":6}\n");
    EXPECT_EQ(mPlace.Read("out.obj.gz").substr(0, 2), "\x1f\x8b");
    ASSERT_EQ(Run({"weld", "out.obj.gz", "-o", "again.obj"}).exitCode, 0);
    EXPECT_EQ(mPlace.Read("again.obj"), welded);
}

TEST_F(ModelVerbs, TransferGroupsByProximity)
{
    const Outcome outcome = Run({"transfer-groups", "cut.obj", "fine.obj", "-o", "out.obj"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, "out.obj: 4 of 4 polygons in 3 groups\n");
    const json info = Info("out.obj");
    EXPECT_EQ(PolygonsIn(info, "groups", "left"), 2);
    EXPECT_EQ(PolygonsIn(info, "groups", "both"), 4);
    EXPECT_EQ(PolygonsIn(info, "groups", "fine"), 2) << "what was there stays";
    EXPECT_EQ(PolygonsIn(info, "materials", "red"), -1) << "materials come by polygon only";
}

TEST_F(ModelVerbs, TransferGroupsByPolygonBringsMaterialsAndTheirFiles)
{
    mPlace.Write("bare.obj", std::regex_replace(kCut, std::regex("(mtllib|g|usemtl|s|o) .*\n"), ""));
    ASSERT_TRUE(Info("bare.obj")["groups"].empty());
    const Outcome outcome =
        Run({"transfer-groups", "cut.obj", "bare.obj", "-o", "out.obj", "--by", "polygon", "--json"});
    EXPECT_EQ(outcome.out, "{\"file\":\"out.obj\",\"polygons\":2,\"polygonsInGroups\":2,\"groups\":2}\n")
        << outcome.err;
    const json from = Info("cut.obj"), to = Info("out.obj");
    for (const char* const list : {"groups", "materials", "materialFiles"})
        EXPECT_EQ(to[list], from[list]) << list;
    EXPECT_EQ(to["smoothingGroups"], 0) << "smoothing is the model's own";

    // A source without materials takes none away.
    mPlace.Write("plain.obj", std::regex_replace(kCut, std::regex("(mtllib|usemtl) .*\n"), ""));
    ASSERT_EQ(Run({"transfer-groups", "plain.obj", "cut.obj", "-o", "kept.obj", "--by", "polygon"}).exitCode, 0);
    for (const char* const list : {"groups", "materials", "materialFiles"})
        EXPECT_EQ(Info("kept.obj")[list], from[list]) << list;
}

TEST_F(ModelVerbs, NamesOfMaterialFilesGoByTheFolderOfTheOutput)
{
    mPlace.Write("below/other.obj", kFine);
    ASSERT_EQ(Run({"weld", "cut.obj", "-o", "below/out.obj"}).exitCode, 0);
    EXPECT_EQ(Info("below/out.obj")["materialFiles"], json({"../paint.mtl"}));
    ASSERT_EQ(Run({"weld", "below/out.obj", "-o", "back.obj"}).exitCode, 0);
    EXPECT_EQ(Info("back.obj")["materialFiles"], json({"paint.mtl"}));
}

TEST_F(ModelVerbs, TransferGroupsSaysWhatItLacks)
{
    mPlace.Write("nothing.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    mPlace.Write("points.obj", "v 0 0 0\nv 1 0 0\n");
    struct Row
    {
        std::vector<std::string> arguments;
        const char* line;
    };
    const Row rows[] = {
        {{"nothing.obj", "fine.obj"}, "nothing.obj: has no named groups, expected some to transfer"},
        {{"nothing.obj", "nothing.obj", "--by", "polygon"},
         "nothing.obj: has no named groups and no materials, expected some to transfer"},
        {{"cut.obj", "fine.obj", "--by", "polygon"},
         "fine.obj: has 4 polygons, expected 2 as in cut.obj to go by polygon"},
        {{"cut.obj", "points.obj"}, "points.obj: has no polygons, expected some to put into groups"},
        {{"cut.obj", "none.obj"}, "none.obj: no such file, expected a Wavefront OBJ file"},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        std::vector<std::string> arguments = {"transfer-groups", "-o", "out.obj"};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, std::string("velmar: ") + row.line + "\n");
        EXPECT_FALSE(mPlace.Has("out.obj"));
    }
}

TEST_F(ModelVerbs, SubdivideKeepsGroupsMaterialsAndTexture)
{
    ASSERT_EQ(Run({"weld", "cut.obj", "-o", "whole.obj"}).exitCode, 0);
    for (const std::string scheme : {"opensubdiv", "catmull-clark"})
    {
        SCOPED_TRACE(scheme);
        const Outcome outcome =
            Run({"subdivide", "whole.obj", "-o", "out.obj", "--levels", "2", "--scheme", scheme, "--json"});
        if (scheme == "opensubdiv" && !VELMAR_HAS_OPENSUBDIV)
        {
            EXPECT_NE(outcome.err.find("built without OpenSubdiv, expected catmull-clark"), std::string::npos);
            continue;
        }
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(outcome.out, "{\"file\":\"out.obj\",\"polygonsBefore\":2,\"polygonsAfter\":32,\"levels\":2,"
                               "\"scheme\":\"" +
                                   scheme + "\"}\n");
        const json control = Info("whole.obj"), info = Info("out.obj");
        EXPECT_EQ(info["polygons"]["quads"], 32);
        EXPECT_EQ(info["vertices"], 9 * 5) << "both halves share their border";
        for (const char* const list : {"objects", "groups", "materials"})
            for (const json& entry : control[list])
                EXPECT_EQ(PolygonsIn(info, list, entry["name"]), 16 * entry["polygons"].get<int>()) << entry["name"];
        EXPECT_EQ(info["materialFiles"], control["materialFiles"]);
        EXPECT_EQ(info["smoothingGroups"], 1);
        // The first square has texture coordinates, from (0, 0) to (1, 1); the second has none.
        EXPECT_GE(info["textureVertices"], 25);
        EXPECT_LE(info["textureVertices"], 4 * 16) << "none that no polygon uses";
        const std::string text = mPlace.Read("out.obj");
        const std::regex textured("\nf [0-9]+/[0-9]+ [0-9]+/[0-9]+ [0-9]+/[0-9]+ [0-9]+/[0-9]+(?=\n)");
        EXPECT_EQ(std::distance(std::sregex_iterator(text.begin(), text.end(), textured), {}), 16);
    }
}

TEST_F(ModelVerbs, SubdivideTakesFacesAndSaysWhatItLeavesOut)
{
    mPlace.Write("mixed.obj", "v 9 9 9\nv 0 0 0\nv 1 0 0\nv 1 1 0\nl 1 2\nf 2 3 4\np 1\n");
    const Outcome outcome = Run({"subdivide", "-", "-o", "-"}, "mixed.obj");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.err, "velmar: warning: <stdin>: lines and points are left out\n");
    mPlace.Write("three.obj", outcome.out);
    EXPECT_EQ(Info("three.obj")["vertices"], 7) << "the point's vertex is gone";
    EXPECT_EQ(Info("three.obj")["polygons"]["quads"], 3);

    mPlace.Write("points.obj", "v 0 0 0\np 1\n");
    // Two fans that meet in a vertex, three faces on an edge, a face that comes back to a vertex, and no area at all.
    mPlace.Write("odd.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv -1 0 0\nv 0 -1 0\nv 0 0 1\nv 5 5 5\nf 1 2 3\nf 1 4 5\n"
                            "f 1 2 6\nf 2 1 5\nf 1 2 3 1 4\nf 1 1 1\n");
    for (const std::string scheme : {"opensubdiv", "catmull-clark"})
    {
        const Outcome odd = Run({"subdivide", "odd.obj", "-o", "odd-out.obj", "--levels", "3", "--scheme", scheme});
        EXPECT_EQ(odd.exitCode, 0) << odd.err;
        const Outcome none = Run({"subdivide", "points.obj", "-o", "out.obj", "--scheme", scheme});
        EXPECT_EQ(none.exitCode, 1);
        EXPECT_EQ(none.err, "velmar: points.obj: has no faces, expected some to subdivide\n");
        const Outcome deep = Run({"subdivide", "fine.obj", "-o", "out.obj", "--levels", "15", "--scheme", scheme});
        EXPECT_EQ(deep.exitCode, 1);
        EXPECT_EQ(deep.err, "velmar: fine.obj: level 15 would make more than 268435455 polygons, expected a level up "
                            "to 12\n");
        EXPECT_FALSE(mPlace.Has("out.obj"));
    }
}
