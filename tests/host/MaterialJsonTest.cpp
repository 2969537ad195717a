// Materials as JSON: reading, writing, and what is said where a text is wrong.
#include "host/tree/MaterialJson.h"
#include "host/tree/NodeTypesText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

using namespace vx;

namespace
{
struct ReadBack
{
    bool ok = false;
    std::vector<NamedMaterial> materials;
    MaterialsReport report;

    explicit ReadBack(const std::string& text)
    {
        ok = ReadMaterials(text.data(), text.size(), "m.json", "/pictures", materials, report);
    }
    std::string Told() const
    {
        std::string all = report.error.Std();
        for (const BArray<BString>* const list : {&report.problems, &report.warnings})
            for (const BString& line : *list)
                all += (all.empty() ? "" : "\n") + line.Std();
        return all;
    }
};

std::string Material(const std::string& surface, const std::string& nodes = "{}", const std::string& name = "A")
{
    return "{\"name\": \"" + name + "\", \"surface\": " + surface + ", \"nodes\": " + nodes + "}";
}
std::string File(const std::string& materials) { return "{\"materials\": [" + materials + "]}"; }

// A text for an input that differs from its standard.
std::string OtherValue(const InputType& type)
{
    const float middle = type.low < -1e5f ? 7 : type.high > 1e5f ? 0.75f : type.low + 0.375f * (type.high - type.low);
    switch (type.type)
    {
    case ValueType::Float:
        return BString::Format("%.9g", double(middle)).Std();
    case ValueType::Color:
        return "[0.125, 0.25, 0.5]";
    case ValueType::Vector:
        return "[0.5, -0.25, 1]";
    case ValueType::File:
        return "\"a b/c.png\"";
    case ValueType::Choice:
        return "\"" + std::string(ChoiceWord(type, type.standard[0] == 0 ? 1 : 0)) + "\"";
    case ValueType::Surface:
        break;
    }
    return "null";
}

void ExpectSameTree(const ShaderTree& a, const ShaderTree& b)
{
    ASSERT_EQ(a.NumNodes(), b.NumNodes());
    for (std::size_t i = 0; i < a.NumNodes(); ++i)
    {
        const TreeNode& one = *a.Node(i);
        const TreeNode* const other = i == 0 ? b.Root() : b.FindNode(one.Name());
        ASSERT_TRUE(other) << one.Name().CString();
        ASSERT_EQ(&one.Type(), &other->Type());
        for (int k = 0; k < one.NumInputs(); ++k)
        {
            SCOPED_TRACE(one.Name().Std() + "." + one.At(k).Type().name);
            EXPECT_TRUE(std::equal(one.At(k).Values(), one.At(k).Values() + 3, other->At(k).Values()));
            EXPECT_EQ(one.At(k).File(), other->At(k).File());
            ASSERT_EQ(one.At(k).Node() != nullptr, other->At(k).Node() != nullptr);
            if (one.At(k).Node())
            {
                EXPECT_EQ(one.At(k).Node()->Name(), other->At(k).Node()->Name());
            }
        }
    }
}
} // namespace

TEST(NodeTypes, StandardsLieWithinTheirRangesAndChoices)
{
    for (const NodeType& type : NodeTypes())
        for (const InputType& input : type.inputs)
        {
            SCOPED_TRACE(std::string(type.name) + "." + input.name);
            EXPECT_EQ(&type.inputs[std::size_t(type.InputIndex(input.name))], &input) << "names are unique";
            EXPECT_EQ(input.choices != nullptr, input.type == ValueType::Choice);
            TreeInput made(input);
            EXPECT_TRUE(made.IsStandard());
            made.Set(input.standard[0], input.standard[1], input.standard[2]);
            EXPECT_TRUE(made.IsStandard()) << "the range holds the standard";
            if (input.type == ValueType::Choice)
            {
                EXPECT_EQ(ChoiceIndex(input, ChoiceWord(input, int(input.standard[0]))), int(input.standard[0]));
            }
        }
}

TEST(NodeTypes, AreDocumentedAsTheyAre)
{
    std::ostringstream page;
    page << std::ifstream(VELMAR_SOURCE_DIR "/docs/materials.md").rdbuf();
    EXPECT_NE(page.str().find(NodeTypesText().Std()), std::string::npos)
        << "docs/materials.md is stale: its last part is what 'velmar shader --nodes' prints";
}

// Everything that the table has, plain and connected, is read, written, and read back the same.
TEST(Materials, ReadBackWhatWasWritten)
{
    for (const NodeType& type : NodeTypes())
    {
        SCOPED_TRACE(type.name);
        std::string inputs = std::string("\"type\": \"") + type.name + "\"", connected = inputs;
        for (const InputType& input : type.inputs)
        {
            inputs += std::string(", \"") + input.name + "\": " + OtherValue(input);
            if (input.takesNode)
                connected += std::string(", \"") + input.name + "\": {\"node\": \"" +
                             (input.type == ValueType::Vector ? "n" : "c") + "\"}";
        }
        const std::string feeds = "\"c\": {\"type\": \"simple_color\"}, \"n\": {\"type\": \"normal_map\"}";
        const std::string text =
            type.IsRoot() ? File(Material("{" + inputs + "}", "{" + feeds + "}") + "," +
                                 Material("{" + connected + "}", "{" + feeds + "}", "B"))
                          : File(Material(type.result == ValueType::Vector ? "{\"Normal_Map\": {\"node\": \"x\"}}"
                                                                           : "{\"Diffuse_Color\": {\"node\": \"x\"}}",
                                          "{\"x\": {" + inputs + "}, \"y\": {" + connected + "}, " + feeds + "}"));
        ReadBack first(text);
        ASSERT_TRUE(first.ok && first.report.problems.IsEmpty()) << first.Told();
        ASSERT_EQ(first.materials.size(), type.IsRoot() ? 2u : 1u);
        const TreeNode* const node = type.IsRoot() ? first.materials[0].layers[0].tree->Root()
                                                   : first.materials[0].layers[0].tree->FindNode("x");
        for (int i = 0; i < node->NumInputs(); ++i)
            EXPECT_FALSE(node->At(i).IsStandard()) << node->At(i).Type().name;

        const ReadBack second(WriteMaterials(first.materials, "/pictures"));
        ASSERT_TRUE(second.ok && second.report.problems.IsEmpty()) << second.Told();
        ASSERT_EQ(second.materials.size(), first.materials.size());
        for (std::size_t i = 0; i < first.materials.size(); ++i)
        {
            EXPECT_EQ(second.materials[i].name, first.materials[i].name);
            ExpectSameTree(*first.materials[i].layers[0].tree, *second.materials[i].layers[0].tree);
        }
    }
}

TEST(Materials, KeepTheirLayersAndTheirFolders)
{
    const ReadBack read("{\"materials\": [{\"name\": \"A\", \"surface\": {}, \"layers\": [{\"name\": \"Coat\", "
                        "\"surface\": {\"type\": \"kelvo\", \"Diffuse_Color\": {\"type\": \"image_map\", \"File\": "
                        "\"sub\\\\p.png\"}}}]}]}");
    ASSERT_TRUE(read.ok && read.materials.size() == 1 && read.materials[0].layers.size() == 2) << read.Told();
    const NamedMaterial::Layer& coat = read.materials[0].layers[1];
    EXPECT_EQ(coat.name, "Coat");
    EXPECT_EQ(coat.tree->Root()->TypeName(), "kelvo");
    EXPECT_EQ(coat.tree->Node(1)->Find("File")->File(), "/pictures/sub/p.png");
    const std::string moved = WriteMaterials(read.materials, "/elsewhere");
    EXPECT_NE(moved.find("\"../pictures/sub/p.png\""), std::string::npos) << moved;
}

// In each text an @, which the reader does not see, stands where the message has to point.
TEST(Materials, SayWhereAndWhatWasExpected)
{
    struct Row
    {
        std::string text;
        const char* told; ///< how the message begins behind the place
    };
    const Row rows[] = {
        {"@", "while parsing value - unexpected end of input"},
        {"{\"materials\": [\n  1 @2]}", "while parsing array - unexpected number literal; expected ']'"},
        {"{\"materials\":\n\t[@1e999]}", "number overflow"},
        {"{\"materials\": [{}, \n @]}", "a comma stands before ']'"},
        {"@[]", "expected an object with a list of materials"},
        {"{\"materials\": @{}}", "expected an object with a list of materials"},
        {"// ü\n/* two\nlines ü */ {\"materials\": [ @7 ]}", "expected a material as an object, found a number"},
        {File("@{}"), "expected a name for the material"},
        {File("@{\"name\": \"A\"}"), "expected a surface"},
        {File("{\"name\": \"A\", \"surface\": {}, @\"nods\": {}}"), "unknown key 'nods', expected nodes"},
        {File(Material("{\"type\": @\"PhysicalSurfaces\"}")),
         "unknown node type 'PhysicalSurfaces', expected PhysicalSurface"},
        {File(Material("{\"type\": @\"noise\"}")), "'noise' is no surface, expected"},
        {File(Material("{@\"Difuse_Color\": 1}")),
         "unknown input 'Difuse_Color' of PhysicalSurface, expected Diffuse_Color; material 'A' is left out"},
        {File(Material("{\"Diffuse_Color\": @\"red\"}")), "expected a colour, [red, green, blue], \"#RRGGBB\""},
        {File(Material("{\"Diffuse_Color\": @[1, 2]}")), "expected a colour"},
        {File(Material("{\"Diffuse_Color\": [1, @true, 2]}")), "expected a number, found true or false"},
        {File(Material("{\"Diffuse_Value\": @\"1\"}")), "expected a number or a node, found a text"},
        {File(Material("{\"Highlight_Size\": @{\"type\": \"noise\"}}")), "expected a number, found an object"},
        {File(Material("{\"Bump\": @{\"Scale\": 1}}")), "expected a node: {\"node\":"},
        {File(Material("{\"Bump\": {\"type\": \"noise\", \"Mode\": @\"rigid\"}}")),
         "unknown Mode 'rigid', expected ridged"},
        {File(Material("{\"Bump\": @{\"type\": \"normal_map\"}}")),
         "expected a node that gives a number, normal_map gives a vector"},
        {File(Material("{\"Bump\": {\"node\": @\"x\"}}", "{\"y\": {\"type\": \"noise\"}}")),
         "there is no node 'x' in the material's \"nodes\", expected y"},
        {File(Material("{\"Normal_Map\": {\"node\": @\"x\"}}", "{\"x\": {\"type\": \"noise\"}}")),
         "expected a node that gives a vector, 'x' gives a number"},
        {File(Material("{}", "@{\"x\": {\"type\": \"clamp\", \"Value\": {\"node\": \"y\"}}, "
                             "\"y\": {\"type\": \"clamp\", \"Value\": {\"node\": \"x\"}}}")),
         "nodes feed themselves: x -> y -> x"},
        {File(Material("{}", "{\"x\": {\"type\": \"uv\"}, @\"x\": {\"type\": \"uv\"}}")),
         "'x' stands here for the second time"},
        {File(Material("{}") + ",\n{\"surface\": {}, \"name\": @\"A\"}"), "the name was given before, in line 1"},
        {File(Material("{\"Highlight_Size\": @5000}")), "5000 is brought into the range of Highlight_Size"},
        {File(Material("{}", "{\"x\": @{\"type\": \"uv\"}}")), "node 'x' feeds nothing"},
    };
    for (const Row& row : rows)
    {
        const std::size_t at = row.text.find('@');
        const std::string before = row.text.substr(0, at), line = before.substr(before.rfind('\n') + 1);
        const auto letters = std::count_if(line.begin(), line.end(), [](char c) { return (c & 0xC0) != 0x80; });
        const std::string place = "m.json:" + std::to_string(1 + std::count(before.begin(), before.end(), '\n')) + ":" +
                                  std::to_string(1 + letters) + ": ";
        const std::string told = ReadBack(before + row.text.substr(at + 1)).Told();
        EXPECT_TRUE(told.starts_with(place + row.told)) << row.text << "\n" << place << "\n" << told;
    }
}

TEST(Materials, LeaveOutTheBadOnesAlone)
{
    const ReadBack read(File(Material("{}", "{}", "good") + "," + Material("{\"x\": 1, \"y\": 2}", "{}", "bad") + "," +
                             Material("{\"Diffuse_Value\": 2}", "{}", "other") + "," + Material("[]", "{}", "worse")));
    EXPECT_TRUE(read.ok);
    ASSERT_EQ(read.materials.size(), 2u);
    EXPECT_EQ(read.materials[0].name, "good");
    EXPECT_EQ(read.materials[1].name, "other");
    EXPECT_EQ(read.report.problems.Count(), 2);
}

TEST(Materials, HaveLimits)
{
    std::string nodes, nested = "1";
    for (int i = 0; i < 300; ++i)
        nodes += (i ? ", \"n" : "\"n") + std::to_string(i) + "\": {\"type\": \"uv\"}";
    EXPECT_NE(ReadBack(File(Material("{}", "{" + nodes + "}"))).Told().find("more than 256 nodes"), std::string::npos);
    for (int i = 0; i < 100; ++i)
        nested = "{\"type\": \"clamp\", \"Value\": " + nested + "}";
    EXPECT_NE(ReadBack(File(Material("{\"Bump\": " + nested + "}"))).Told().find("more than 64 deep"),
              std::string::npos);
    EXPECT_NE(ReadBack(std::string(1'000'000, '[')).Told().find(":1:65: "), std::string::npos);
    std::string wrong;
    for (int i = 0; i < 1000; ++i)
        wrong += "1,";
    EXPECT_LT(ReadBack(File(wrong + "1")).report.problems.Count(), 100) << "one line each, but not without end";
}
