// velmar text and velmar fonts, as far as no picture is made.
#include "Command.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <regex>

using nlohmann::json;

namespace
{

constexpr const char* kSans = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

class TextVerb : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!std::filesystem::exists(kSans))
            GTEST_SKIP() << "DejaVu Sans (fonts-dejavu-core) is not installed";
    }
    Outcome Run(const std::vector<std::string>& arguments, const std::string& input = "")
    {
        return mPlace.Run(VELMAR_PROGRAM, arguments, input);
    }

    Workplace mPlace;
};

} // namespace

TEST_F(TextVerb, WritesAClosedModel)
{
    const Outcome outcome =
        Run({"text", "Hi \xC3\xB6", "-o", "hi.obj", "--size", "10", "--depth", "3", "--bevel", "0.2"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_TRUE(std::regex_match(outcome.out, std::regex("hi\\.obj: 4 glyphs, \\d+ polygons\n"))) << outcome.out;
    const std::string model = mPlace.Read("hi.obj");
    EXPECT_NE(model.find("usemtl Text\n"), std::string::npos);
    EXPECT_NE(model.find("usemtl Text side\n"), std::string::npos);
    const json info = json::parse(Run({"info", "--json", "hi.obj"}).out);
    EXPECT_EQ(info["edges"]["open"], 0);
    EXPECT_EQ(info["edges"]["nonManifold"], 0);
}

TEST_F(TextVerb, FindsFontsByNameAndByFile)
{
    Run({"text", "Hi", "-o", "file.obj", "--font", kSans});
    const std::string expected = mPlace.Read("file.obj");
    EXPECT_FALSE(expected.empty());
    mPlace.Write("own font.ttf", ReadWhole(kSans));
    for (const std::string name : {"DejaVuSans.ttf", "dejavusans", "own font.ttf"})
    {
        EXPECT_EQ(Run({"text", "Hi", "-o", name + ".obj", "--font", name}).exitCode, 0) << name;
        EXPECT_EQ(mPlace.Read(name + ".obj"), expected) << name;
    }

    const Outcome names = Run({"fonts"});
    EXPECT_NE(("\n" + names.out).find("\nDejaVuSans.ttf\n"), std::string::npos);
    const json list = json::parse(Run({"fonts", "--json"}).out);
    EXPECT_EQ(list.size(), std::size_t(std::count(names.out.begin(), names.out.end(), '\n')));
    EXPECT_TRUE(std::any_of(list.begin(), list.end(),
                            [](const json& font)
                            { return font["name"] == "DejaVuSans.ttf" && font["file"] == kSans; }));
}

TEST_F(TextVerb, ReadsAndWritesStreams)
{
    mPlace.Write("lines.txt", "\xEF\xBB\xBFone\r\ntwo\n");
    const Outcome model = Run({"text", "-", "-o", "-", "--json"}, "lines.txt");
    EXPECT_EQ(model.exitCode, 0);
    Run({"text", "one\ntwo", "-o", "same.obj"});
    EXPECT_EQ(model.out, mPlace.Read("same.obj"));
    const json facts = json::parse(model.err);
    EXPECT_EQ(facts["lines"], 2);
    EXPECT_EQ(facts["glyphs"], 6);
    EXPECT_EQ(facts["font"], kSans);
}

TEST_F(TextVerb, MakesFlatLettersAndWarnsOfMissingOnes)
{
    const auto polygons = [this](const std::vector<std::string>& options)
    {
        std::vector<std::string> arguments = {"text", "A", "-o", "a.obj", "--json"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return json::parse(Run(arguments).out)["polygons"].get<int>();
    };
    EXPECT_EQ(polygons({"--two-sided"}), 2 * polygons({"--depth", "0"}));
    EXPECT_GT(polygons({"--two-sided", "--depth", "1"}), polygons({"--two-sided"}));

    const Outcome lacking = Run({"text", "\xE4\xB8\x80", "-o", "box.obj"});
    EXPECT_EQ(lacking.exitCode, 0);
    EXPECT_TRUE(std::regex_match(lacking.err, std::regex("velmar: warning: .*DejaVuSans\\.ttf: .*U\\+4E00.*\n")))
        << lacking.err;
}

TEST_F(TextVerb, FailsInOneLineAndLeavesWhatWasThere)
{
    mPlace.Write("empty.ttf", "");
    mPlace.Write("zero.txt", std::string("a\0b", 3));
    mPlace.Write("old.obj", "an older model");
    struct Row
    {
        std::vector<std::string> arguments;
        int exitCode;
        const char* line;
        const char* input = "";
    };
    const Row rows[] = {
        {{"A", "--font", "empty.ttf"}, 1, "empty\\.ttf: .*no font.*"},
        {{"A", "--font", "gone/x.ttf"}, 1, "gone/x\\.ttf: no such file.*"},
        {{"A", "--font", "NoSuchFont"}, 1, ".*NoSuchFont.*velmar fonts.*"},
        {{""}, 1, ".*nothing to see.*"},
        {{"-"}, 1, ".*no text.*", "zero.txt"},
        {{"A", "--size", "0"}, 2, ".*--size.*"},
        {{"A", "--size", "-1"}, 2, ".*--size.*"},
        {{"A", "--size", "nan"}, 2, ".*--size.*"},
        {{"A", "--depth", "-1"}, 2, ".*--depth.*"},
        {{"A", "--bevel", "much"}, 2, ".*--bevel.*"},
        {{"A", "--align", "middle"}, 2, ".*left, centre or right.*"},
        {{}, 2, ".*TEXT.*"},
    };
    for (const Row& row : rows)
    {
        std::vector<std::string> arguments = {"text", "-o", "old.obj"};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        const std::vector<std::string> before = mPlace.Names();
        const Outcome outcome = Run(arguments, row.input);
        EXPECT_EQ(outcome.exitCode, row.exitCode) << outcome.err;
        EXPECT_TRUE(std::regex_match(outcome.err, std::regex(std::string("velmar: ") + row.line + "\n")))
            << outcome.err;
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(mPlace.Names(), before);
        EXPECT_EQ(mPlace.Read("old.obj"), "an older model");
    }
    EXPECT_EQ(Run({"text", "A", "-o", "a.png", "--json"}).exitCode, 2) << "there is no JSON of a picture";
}
