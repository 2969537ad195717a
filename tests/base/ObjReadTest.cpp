// Reading OBJ text: what each form of a statement becomes, what is refused and where, and that no text does harm.
#include "tests/base/GeomText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <random>

namespace
{
const std::string kSquare = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";

struct PolyCase
{
    const char* name;
    std::string text; ///< read behind the square
    std::string polys;
};

class ObjPolygons : public testing::TestWithParam<PolyCase>
{
};

TEST_P(ObjPolygons, AreReadAs)
{
    GEOM_ReadReport report;
    const GeomPtr g = ReadObj(kSquare + GetParam().text, &report);
    ASSERT_TRUE(g) << report.error.Std();
    EXPECT_EQ(PolysText(g.get()), GetParam().polys);
    int repairs = 0;
    EXPECT_EQ(GEOM_VerifyAndFix(g.get(), &repairs), 0);
    EXPECT_EQ(repairs, 0);
}

const std::string kUvs = "vt 0 0\nvt 1 0\nvt 1 1\n", kNormals = "vn 0 0 1\nvn 0 1 0\n";

const PolyCase kPolyCases[] = {
    {"Plain", "f 1 2 3 4\n", "f 0 1 2 3 m0 s0\n"},
    {"NoLineFeedAtTheEnd", "f 1 2 3", "f 0 1 2 m0 s0\n"},
    {"NegativeIndices", "f -4 -3 -1\n", "f 0 1 3 m0 s0\n"},
    {"Textured", kUvs + "f 1/1 2/2 3/3\n", "f 0/0 1/1 2/2 m0 s0\n"},
    {"WithNormals", kNormals + "f 1//1 2//2 3//-2\n", "f 0//0 1//1 2//0 m0 s0\n"},
    {"WithAll", kUvs + kNormals + "f 1/3/1 2/2/1 3/1/2\n", "f 0/2/0 1/1/0 2/0/1 m0 s0\n"},
    {"SomeCornersTextured", kUvs + "f 1/1 2 3/3\nf 1/1 2/2 3/3\n", "f 0 1 2 m0 s0\nf 0/0 1/1 2/2 m0 s0\n"},
    {"FlatNormalsWhereTheyLack", kNormals + "f 1 2 3\nf 1//1 2//2 3\n",
     "f 0//2 1//2 2//2 m0 s0\nf 0//0 1//1 2//3 m0 s0\n"},
    {"VerticesThatComeLater", "f 1 2 5\nv 0 0 1\n", "f 0 1 4 m0 s0\n"},
    {"RepeatedCorners", "f 1 1 2 2\n", "f 0 0 1 1 m0 s0\n"},
    {"ShortFacesLeftOut", "f\nf 1\nf 1/1 2/1\nvt 0 0\nf 1 2 3\n", "f 0 1 2 m0 s0\n"},
    {"LinesAndPoints", "l 1 2 3\np 1 2\nl 4\n", "l 0 1 2 m0 s0\np 0 1 m0 s0\nl 3 m0 s0\n"},
    {"FreeForm", "  f\t1   2 \v 3 \r\n\r\n \t\nf 1 2 4 # why\n", "f 0 1 2 m0 s0\nf 0 1 3 m0 s0\n"},
    {"Continuation", "f 1 \\\n2 \\\r\n 3\\\n\nf 1 2 \\\n4", "f 0 1 2 m0 s0\nf 0 1 3 m0 s0\n"},
    {"ContinuationIntoTheEnd", "f 1 2 4\\\n", "f 0 1 3 m0 s0\n"},
    {"BackslashAtTheEnd", "f 1 2 4 \\", "f 0 1 3 m0 s0\n"},
    {"CommentsDoNotGoOn", "# C:\\tmp\\\nf 1 2 3\n", "f 0 1 2 m0 s0\n"},
    {"UnknownStatements", "vp 1 2\ncurv \\\nf 1 2 4\nfoo\nf 1 2 3\n\x01\x02\n", "f 0 1 2 m0 s0\n"},
    {"Smoothing", "f 1 2 3\ns 1\nf 1 2 3\ns 32\nf 1 2 3\ns 33\nf 1 2 3\ns off\nf 1 2 3\ns 1 3\nf 1 2 3\ns 0\nf 1 2 3\n",
     "f 0 1 2 m0 s0\nf 0 1 2 m0 s1\nf 0 1 2 m0 s2147483648\nf 0 1 2 m0 s1\nf 0 1 2 m0 s0\nf 0 1 2 m0 s5\n"
     "f 0 1 2 m0 s0\n"},
    {"Groups", "f 1 2 3\ng a b\nf 1 2 3\ng b\nf 1 2 3\ng\nf 1 2 3\n",
     "f 0 1 2 m0 s0\nf 0 1 2 m0 s0 a b\nf 0 1 2 m0 s0 b\nf 0 1 2 m0 s0\n"},
    {"Materials", "f 1 2 3\nusemtl red\nf 1 2 3\nusemtl blue\nf 1 2 3\nusemtl red\nf 1 2 3\n",
     "f 0 1 2 m0 s0\nf 0 1 2 m1 s0\nf 0 1 2 m2 s0\nf 0 1 2 m1 s0\n"},
};

INSTANTIATE_TEST_SUITE_P(All, ObjPolygons, testing::ValuesIn(kPolyCases),
                         [](const auto& row) { return row.param.name; });

struct RefusedCase
{
    const char* name;
    std::string text;
    std::int64_t line;
    const char* reason; ///< part of the message
};

class ObjRefused : public testing::TestWithParam<RefusedCase>
{
};

TEST_P(ObjRefused, NamesLineAndReason)
{
    GEOM_ReadReport report;
    EXPECT_FALSE(ReadObj(GetParam().text, &report));
    EXPECT_NE(report.error.Find(GetParam().reason), -1) << report.error.Std();
    EXPECT_EQ(report.errorLine, GetParam().line) << report.error.Std();
    EXPECT_FALSE(ReadObj(GetParam().text)) << "a report must not be needed";
}

const RefusedCase kRefusedCases[] = {
    {"Empty", "", 0, "empty"},
    {"OnlyComments", "# nothing\n\n", 0, "no vertices"},
    {"BinaryNoise",
     std::string("\x7f"
                 "ELF\x02\0\0\n\n\xff\xfe\0v\0",
                 14),
     0, "no vertices"},
    {"IndexTooLarge", kSquare + "f 1 2 4\nf 1 2 5\n", 6,
     "index 5 of a vertex is out of range, expected 1 to 4 or -4 to -1"},
    {"IndexTooLargeBeforeTheEnd", "v 0 0 0\nf 1 1 3\nv 0 0 0\n", 2, "expected 1 to 2"},
    {"IndexZero", kSquare + "\nf 1 0 2\n", 6, "index 0"},
    {"IndexTooNegative", kSquare + "f -1 -2 -5\n", 5, "index -5"},
    {"IndexBeyondAllCounts", kSquare + "f 1 2 99999999999999999999999999\n", 5, "out of range"},
    {"TextureIndexTooLarge", kSquare + "vt 0 0\nf 1/1 2/2 3/1\n", 6, "index 2 of a texture vertex"},
    {"NormalIndexTooLarge", kSquare + "vn 0 0 1\n# c\nf 1//1 2//1 3//2\n", 7, "index 2 of a normal"},
    {"LeftOutFaceOutOfRange", kSquare + "f 1 -9\n", 5, "index -9"},
    {"NotANumber", "v 0 0 0\nv 0 zero 0\n", 2, "malformed number \"zero\""},
    {"TwoPoints", "v 0 1.5.5 0\n", 1, "malformed number \"1.5.5\""},
    {"Comma", "v 0 1,5 0\n", 1, "malformed number \"1,5\""},
    {"LoneExponent", "v 0 1e 0\n", 1, "malformed"},
    {"LonePoint", "v 0 . 0\n", 1, "malformed"},
    {"LoneSign", "v 0 - 0\n", 1, "malformed"},
    {"TwoSigns", "v 0 +-1 0\n", 1, "malformed"},
    {"Nan", "v 0 0 0\nv nan 0 0\n", 2, "not finite"},
    {"Infinite", "v 0 -inf 0\n", 1, "not finite"},
    {"TooLarge", "v 0 0 1e39\n", 1, "not finite"},
    {"NanInTexture", "v 0 0 0\nvt NaN 0\n", 2, "not finite"},
    {"TwoNumbers", "v 0 0 0\nv 1 2\n", 2, "ends after 2 numbers, expected 3"},
    {"TwoNumbersAtTheEnd", "v 0 0 0\nv 1 2", 2, "ends after 2 numbers"},
    {"NoNumbers", "v", 1, "ends after 0 numbers"},
    {"NormalOfTwo", "v 0 0 0\nvn 1 2 # 3\n", 2, "ends after 2 numbers"},
    {"CornerCutOff", kSquare + "vt 0 0\nf 1/1 2/", 6, "truncated"},
    {"CornerWithoutNormal", kSquare + "f 1// 2// 3//\n", 5, "truncated"},
    {"FourIndices", kSquare + "vt 0 0\nvn 0 0 1\nf 1/1/1/1 2 3\n", 7, "malformed corner"},
    {"IndexNotANumber", kSquare + "f 1 two 3\n", 5, "malformed index of a vertex: \"two\""},
    {"IndexWithFraction", kSquare + "f 1 2.0 3\n", 5, "malformed corner \"2.0\""},
    {"LineWithoutCorners", kSquare + "l\n", 5, "truncated"},
    {"SmoothingName", kSquare + "s soft\n", 5, "malformed smoothing group \"soft\""},
    {"SmoothingCutOff", kSquare + "s\n", 5, "truncated"},
    {"ErrorBehindContinuation", "v 0 \\\n0 \\\nx\n", 3, "malformed number \"x\""},
};

INSTANTIATE_TEST_SUITE_P(All, ObjRefused, testing::ValuesIn(kRefusedCases),
                         [](const auto& row) { return row.param.name; });

TEST(ObjRead, NamesKeepTheirBlanksAndOrder)
{
    const GeomPtr g =
        ReadObj("mtllib a.mtl my file.MTL\r\nmtllib  b c \nmtllib a.mtl\no  the  left one # says he\n" + kSquare +
                "g x#1 y\nusemtl deep red\nf 1 2 3\no second \\\nhalf\ng unused\nusemtl\nf 1 2 3\no\n");
    ASSERT_TRUE(g);
    const std::string text = RecordText(g.get());
    EXPECT_EQ(
        text.substr(text.find("groups")),
        "groups 35 [x#1] [y] [unused]\nmaterial [deep red]\nmaterial []\nfile [a.mtl]\nfile [my file.MTL]\nfile [b c]\n"
        "object 0 [the  left one]\nobject 1 [second  half]\nobject 2 []\n");
}

TEST(ObjRead, ColoursAndWeights)
{
    const GeomPtr g = ReadObj("v 1 2 3\nv 1 2 3 0.5\nv 1 2 3 .25 .5 .75\nv 1 2 3 9 0 0 1\nv 1 2 3\n");
    ASSERT_TRUE(g);
    EXPECT_EQ(RecordText(g.get()),
              "v 1 2 3 1 1 1\nv 1 2 3 1 1 1\nv 1 2 3 0.25 0.5 0.75\nv 1 2 3 0 0 1\nv 1 2 3 1 1 1\ngroups 0\n");
}

TEST(ObjRead, TextureVerticesOfOneTwoAndThreeNumbers)
{
    const GeomPtr g = ReadObj("\xEF\xBB\xBFv 0 0 0\nvt 1\nvt 1 2 # w\nvt 1 2 3\n");
    ASSERT_TRUE(g);
    EXPECT_EQ(RecordText(g.get()), "v 0 0 0\nvt 1 0\nvt 1 2\nvt 1 2\ngroups 0\n");
}

TEST(ObjRead, CountsShortFacesAndLines)
{
    GEOM_ReadReport report;
    ASSERT_TRUE(ReadObj(kSquare + "f 1 2 3\nf 1 2\n\nf\nf 1", &report));
    EXPECT_EQ(report.shortFaces, 3);
    EXPECT_EQ(report.shortFaceLine, 6);
    EXPECT_EQ(report.lines, 9);
}

// Every way of writing floats that exporters have, and decimals right beside the middle of two floats: each must give
// what the C library makes of it.
TEST(ObjRead, NumbersAreTheNearestFloats)
{
    std::mt19937 random(7);
    std::vector<std::string> numbers = {"0",
                                        "-0",
                                        "-0.0",
                                        "1.",
                                        ".5",
                                        "+.5",
                                        "-.5e-3",
                                        "1E+5",
                                        "16777217",
                                        "16777217.0000001",
                                        "0.000000000000000000000000000001",
                                        "1e-46",
                                        "-1e-400",
                                        "3.4028235e38",
                                        "3.40282356e38",
                                        "1.17549429e-38",
                                        "7.0064923216240854e-46",
                                        "7.1e-46",
                                        "123456789012345678901234567890",
                                        "0.1e1",
                                        "00000000000000000000000001.5",
                                        Cat("1", std::string(37, '0'), ".0"),
                                        Cat("0.", std::string(500, '0'), "1e500")};
    for (int i = 0; i < 20000; ++i)
    {
        const float f = std::bit_cast<float>(std::uint32_t(random()));
        if (!std::isfinite(f))
            continue;
        const float small = float(int(random() % 2000001) - 1000000) / 65536;
        const float next = std::nextafter(small, 1e9f);
        char text[96];
        for (const auto& [format, value] : {std::pair("%.6f", double(small)),
                                            {"%.9g", double(f)},
                                            {"%.17g", double(small) / 3},
                                            {"%.8e", double(f)},
                                            {"%.12f", double(small) / 1000},
                                            {"%.17f", (double(small) + double(next)) / 2},
                                            {"%.3f", double(small)}})
        {
            std::snprintf(text, sizeof text, format, value);
            numbers.push_back(text);
        }
    }
    std::string text;
    for (const std::string& number : numbers)
        text += Cat("v ", number, " 0 0\n");
    GEOM_ReadReport report;
    const GeomPtr g = ReadObj(text, &report);
    ASSERT_TRUE(g) << report.error.Std() << " in line " << report.errorLine;
    for (std::size_t i = 0; i < numbers.size(); ++i)
        ASSERT_EQ(std::bit_cast<std::uint32_t>(g->verts[i].x),
                  std::bit_cast<std::uint32_t>(std::strtof(numbers[i].c_str(), nullptr)))
            << numbers[i];
}

const std::string kEverything =
    "mtllib a.mtl\no one\n" + kSquare + "v 0 0 1 1 0 0\n" + kUvs + kNormals +
    "g a\ns 1\nusemtl red\nf 1/1/1 2/2/1 3/3/2\nl 1 2\ng a b \\\n c\nf -1 -2 -3\np 1\ns off\n";

// The text lies in a block of its exact size, so that reading past the end is seen by the sanitizer.
TEST(ObjRead, EveryBeginningOfAFileIsAnAnswer)
{
    for (std::size_t size = 0; size <= kEverything.size(); ++size)
    {
        const std::vector<char> text(kEverything.begin(), kEverything.begin() + std::ptrdiff_t(size));
        GEOM_ReadReport report;
        const GeomPtr g(GEOM_ReadObjText(text.data(), size, nullptr, &report));
        ASSERT_EQ(g == nullptr, !report.error.IsEmpty()) << size;
        ASSERT_LE(report.errorLine, std::count(text.begin(), text.end(), 0x0A) + 1);
    }
}

TEST(ObjRead, EveryDamagedByteIsAnAnswer)
{
    for (std::size_t at = 0; at < kEverything.size(); ++at)
        for (const char c : {'\0', '\n', '\\', '/', '-', '#', ' ', '9', '\xff'})
        {
            std::vector<char> text(kEverything.begin(), kEverything.end());
            text[at] = c;
            GEOM_ReadReport report;
            const GeomPtr g(GEOM_ReadObjText(text.data(), text.size(), nullptr, &report));
            ASSERT_EQ(g == nullptr, !report.error.IsEmpty()) << at;
            int repairs = 0;
            ASSERT_TRUE(!g || (GEOM_VerifyAndFix(g.get(), &repairs) == 0 && repairs == 0)) << at;
        }
}

std::string Times(std::string_view piece, std::size_t bytes)
{
    std::string text;
    while (text.size() < bytes)
        text += piece;
    return text;
}

// Anything quadratic would run into the time limit of the test.
TEST(ObjRead, TenMegabytesInALine)
{
    constexpr std::size_t kLong = 10 << 20;
    struct
    {
        const char* name;
        std::string text;
        bool good;
    } const cases[] = {
        {"comment", Cat(kSquare, "#", std::string(kLong, 'x')), true},
        {"unknown", Cat(kSquare, std::string(kLong, 'x')), true},
        {"zero bytes", std::string(kLong, '\0'), false},
        {"blanks", Cat(kSquare, "f", std::string(kLong, ' '), "1 2 3"), true},
        {"polygon", Cat(kSquare, "f", Times(" 1 2 3", kLong)), true},
        {"points", Cat(kSquare, "p", Times(" -1", kLong)), true},
        {"continuations", Cat(kSquare, "f 1 2 3", Times("\\\n", kLong)), true},
        {"continued polygon", Cat(kSquare, "f", Times(" 1\\\r\n", kLong)), true},
        {"digits", Cat("v 0 0 ", std::string(kLong, '9')), false},
        {"zeros", Cat("v 0 0 0.", std::string(kLong, '0'), "1"), true},
        {"numbers", Cat("v", Times(" 1", kLong)), true},
        {"index", Cat(kSquare, "f 1 2 ", std::string(kLong, '1')), false},
        {"material", Cat(kSquare, "usemtl ", std::string(kLong, 'm'), "\nf 1 2 3\n"), true},
        {"groups", Cat(kSquare, "g", Times(" g", kLong), "\nf 1 2 3\n"), true},
        {"carriage returns", Cat(kSquare, "f 1 2 3", std::string(kLong, '\r')), true},
        {"backslashes", Cat(kSquare, "g ", Times("\\\r", kLong)), true},
    };
    for (const auto& row : cases)
    {
        GEOM_ReadReport report;
        EXPECT_EQ(ReadObj(row.text, &report) != nullptr, row.good) << row.name << ": " << report.error.Std();
        EXPECT_LE(report.error.Length(), 120) << row.name;
    }
}

// A bit for each of n groups in each of n polygons grows with the square of the file.
TEST(ObjRead, AGroupForEveryPolygonStaysSmall)
{
    std::string text = kSquare;
    for (int i = 0; i < 60000; ++i)
        text += Cat(Named("g part", i), "\nf 1 2 3\n");
    GEOM_ReadReport report;
    const GeomPtr g = ReadObj(text, &report);
    ASSERT_TRUE(g);
    EXPECT_EQ(g->numPolys, 60000);
    EXPECT_GT(report.groupsLeftOut, 0);
    EXPECT_EQ(report.groupsLeftOut + g->groupNames.Count(), 60000);
    EXPECT_LE(GEOM_MemoryUsed(g.get()), 80 * text.size());
    EXPECT_EQ(PolyText(g.get(), 77), "f 0 1 2 m0 s0 part77");
    EXPECT_EQ(PolyText(g.get(), 59999), "f 0 1 2 m0 s0");
}

TEST(ObjRead, RunningOutOfMemoryIsAnError)
{
    const std::string before = RecordText(ReadObj(kEverything).get());
    bool read = false;
    for (int n = 1; n < 200 && !read; ++n)
    {
        GEOM_ReadReport report;
        MEM_FailAfter(n);
        const GeomPtr g = ReadObj(kEverything, &report);
        MEM_FailAfter(0);
        read = g != nullptr;
        ASSERT_EQ(report.error, read ? "" : "out of memory") << n;
        ASSERT_TRUE(!read || RecordText(g.get()) == before);
    }
    EXPECT_TRUE(read);
}

std::vector<float> gFractions;

TEST(ObjRead, ProgressRisesAndCancels)
{
    const std::string text = kSquare + Times("f 1 2 3\n", 5 << 20);
    gFractions.clear();
    const auto note = [](float fraction)
    {
        gFractions.push_back(fraction);
        return 0;
    };
    EXPECT_TRUE(GeomPtr(GEOM_ReadObjText(text.data(), text.size(), note)));
    EXPECT_GE(gFractions.size(), 5u);
    EXPECT_TRUE(std::is_sorted(gFractions.begin(), gFractions.end()));
    EXPECT_LE(gFractions.back(), 1);

    GEOM_ReadReport report;
    EXPECT_FALSE(GeomPtr(GEOM_ReadObjText(
        text.data(), text.size(), [](float fraction) { return int(fraction > 0.5f); }, &report)));
    EXPECT_NE(report.error.Find("cancelled"), -1);
}
} // namespace
