// The checked-in samples and the examples.
#include "Command.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <regex>

namespace fs = std::filesystem;
using nlohmann::json;

static const fs::path kSamples = fs::path(VELMAR_SOURCE_DIR) / "samples";

TEST(Samples, AreWhatTheGeneratorWrites)
{
    Workplace place;
    ASSERT_EQ(place.Run(VELMAR_SAMPLES_PROGRAM, {"."}).exitCode, 0);
    EXPECT_GE(place.Names().size(), 8u);
    for (const std::string& name : place.Names())
    {
        if (fs::is_directory(kSamples / name))
            continue;
        EXPECT_TRUE(place.Read(name) == ReadWhole(kSamples / name)) << name << " differs";
        EXPECT_LT(fs::file_size(kSamples / name), 200u * 1024) << name;
    }
}

TEST(Samples, ShowWhatReadersMustHandle)
{
    Workplace place;
    std::int64_t ngons = 0, lines = 0, points = 0, textures = 0;
    for (const std::string name : {"teacup", "bracket", "sailboat"})
    {
        SCOPED_TRACE(name);
        const Outcome outcome = place.Run(VELMAR_PROGRAM, {"info", "--json", (kSamples / (name + ".obj")).string()});
        ASSERT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.err, "");
        const json info = json::parse(outcome.out);
        EXPECT_GE(info["materials"].size(), 2u);
        EXPECT_GE(info["groups"].size(), 3u);
        EXPECT_GE(info["smoothingGroups"], 3);
        EXPECT_EQ(info["edges"]["nonManifold"], 0);
        // All shells are closed; the surface of the tea is the one polygon that ends at another shell.
        EXPECT_EQ(info["edges"]["open"], name == "teacup" ? 48 : 0);
        ngons += info["polygons"]["ngons"].get<int>();
        lines += info["polygons"]["lines"].get<int>();
        points += info["polygons"]["points"].get<int>();
        const std::string materials = ReadWhole(kSamples / (name + ".mtl"));
        for (const json& material : info["materials"])
            EXPECT_NE(materials.find("newmtl " + material["name"].get<std::string>() + "\n"), std::string::npos);
        textures += materials.find("map_Kd ") != std::string::npos;
    }
    EXPECT_GE(ngons, 10);
    EXPECT_GE(lines, 5);
    EXPECT_GE(points, 1);
    EXPECT_GE(textures, 1);
}

TEST(Examples, MeshToolMeasuresACube)
{
    Workplace place;
    place.Write("cube.obj", "v 0 0 0\nv 2 0 0\nv 2 2 0\nv 0 2 0\nv 0 0 2\nv 2 0 2\nv 2 2 2\nv 0 2 2\n"
                            "f 4 3 2 1\nf 5 6 7 8\nf 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n");
    EXPECT_EQ(place.Run(VELMAR_MESH_TOOL, {"cube.obj"}).out, "polygons 6, area 24.0000\n"
                                                             "edges 12, open 0, creases 12 of length 24.0000\n"
                                                             "vertices 8, and 16 more where creases part them\n");
    EXPECT_EQ(place.Run(VELMAR_MESH_TOOL, {"cube.obj", "120"}).out, "polygons 6, area 24.0000\n"
                                                                    "edges 12, open 0, creases 0 of length 0.0000\n"
                                                                    "vertices 8, and 0 more where creases part them\n");
    EXPECT_EQ(place.Run(VELMAR_MESH_TOOL, {"none.obj"}).exitCode, 1);
}

TEST(Examples, PosingCountsFrames)
{
    Workplace place;
    place.Write("tent.obj",
                "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0.5 0.5 1\nf 1 2 5\nf 2 3 5\nf 3 4 5\nf 4 1 5\nf 4 3 2 1\n");
    const Outcome outcome = place.Run(VELMAR_POSING, {"tent.obj", "5"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(
        std::regex_match(outcome.out, std::regex("5 polygons, subdivided twice 64\n[1-9][0-9]* frames per second\n")))
        << outcome.out;
}

TEST(Examples, LoggingEngineSeesOneFrame)
{
    Workplace place;
    const Outcome outcome = place.Run(VELMAR_LOGGING_ENGINE, {});
    EXPECT_EQ(outcome.exitCode, 0);
    // State around everything, polygons before wires, outlines after, overlays last.
    EXPECT_TRUE(std::regex_search(outcome.out, std::regex("^begin frame state\n[^]*prepare scene: \\(-1 0 -1\\) to "
                                                          "\\(1 1\\.5 1\\)\n[^]*polygons[^]*object pyramid[^]*draw 1 "
                                                          "quads\n[^]*draw 4 triangles\n[^]*overlays\n[^]*end frame "
                                                          "state\n$")))
        << outcome.out;
}
