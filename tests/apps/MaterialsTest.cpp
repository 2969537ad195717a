// Material files on the command line.
#include "Command.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;

namespace fs = std::filesystem;

namespace
{
const char* const kTwo = "{\"materials\": [\n"
                         "  {\"name\": \"plain\", \"surface\": {}},\n"
                         "  {\"name\": \"cloudy\", \"surface\": {\"Diffuse_Color\": {\"type\": \"noise\"}}}\n"
                         "]}\n";

json Listed(const Outcome& outcome)
{
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    return outcome.exitCode == 0 ? json::parse(outcome.out) : json::array();
}
} // namespace

TEST(ShaderVerb, PrintsSourcesAndTheDecision)
{
    Workplace place;
    place.Write("two.json", kTwo);
    const json list = Listed(place.Run(VELMAR_PROGRAM, {"shader", "two.json", "--json"}));
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0]["needed"], false);
    EXPECT_EQ(list[1]["needed"], true);
    EXPECT_NE(list[1]["why"].get<std::string>().find("Diffuse_Color"), std::string::npos);
    EXPECT_NE(list[0]["hash"], list[1]["hash"]);

    const Outcome one = place.Run(VELMAR_PROGRAM, {"shader", "two.json", "--material", "cloudy"});
    EXPECT_EQ(one.exitCode, 0) << one.err;
    EXPECT_EQ(one.out.find("material plain"), std::string::npos);
    for (const char* const source : {"vertex", "fragment"})
        EXPECT_NE(one.out.find(list[1][source].get<std::string>()), std::string::npos) << source;
    const Outcome again = place.Run(VELMAR_PROGRAM, {"shader", "-", "--material", "cloudy"}, "two.json");
    EXPECT_EQ(again.out, one.out) << "the same bytes in every run";
}

TEST(ShaderVerb, SaysWhatIsWrong)
{
    struct Row
    {
        const char* text;
        std::vector<std::string> arguments;
        int exitCode;
        const char* told;
    };
    const Row rows[] = {
        {kTwo,
         {"--material", "clody"},
         1,
         "velmar: m.json: there is no material 'clody' in it, expected plain or cloudy\n"},
        {"{\"materials\": [\n {\"name\": \"a\", \"surface\": {\"Bump\": {\"type\": \"nose\"}}}]}",
         {},
         1,
         "velmar: warning: m.json:2:45: unknown node type 'nose', expected noise; material 'a' is left out\n"},
        {"{\"materials\": [}", {}, 1, "velmar: warning: m.json:1:16: while parsing value - unexpected '}'"},
        {"{}", {"--nodes"}, 2, "velmar: INPUT excludes --nodes"},
    };
    for (const Row& row : rows)
    {
        Workplace place;
        place.Write("m.json", row.text);
        std::vector<std::string> arguments = {"shader", "m.json"};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        const Outcome outcome = place.Run(VELMAR_PROGRAM, arguments);
        EXPECT_EQ(outcome.exitCode, row.exitCode) << outcome.err;
        EXPECT_EQ(outcome.err.substr(0, std::string(row.told).size()), row.told);
        EXPECT_EQ(outcome.out, "");
    }
    Workplace place;
    EXPECT_EQ(place.Run(VELMAR_PROGRAM, {"shader"}).exitCode, 2);
    EXPECT_EQ(place.Run(VELMAR_PROGRAM, {"shader", "absent.json"}).exitCode, 1);
}

// The gallery: a dozen materials that read without a word, name pictures that are there, and become shaders.
TEST(SampleMaterials, BecomeShaders)
{
    Workplace place;
    int count = 0, needed = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(VELMAR_SOURCE_DIR) / "samples/materials"))
    {
        if (entry.path().extension() != ".json")
            continue;
        SCOPED_TRACE(entry.path().filename());
        const Outcome outcome = place.Run(VELMAR_PROGRAM, {"shader", "--json", entry.path().string()});
        EXPECT_EQ(outcome.err, "");
        for (const json& material : Listed(outcome))
        {
            ++count;
            needed += material["needed"].get<bool>();
            EXPECT_FALSE(material.contains("problem"));
            for (const json& texture : material["textures"])
                if (texture["file"] != "")
                {
                    EXPECT_TRUE(fs::exists(texture["file"].get<std::string>())) << texture["file"];
                }
        }
    }
    EXPECT_GE(count, 12);
    EXPECT_GE(needed, 6);
}
