// Strings, UTF-8 and identifiers.
#include "base/BString.h"
#include "base/BText.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace
{
std::string Encoded(std::uint32_t code)
{
    const auto tail = [&](int shift) { return char(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80)
        return {char(code)};
    if (code < 0x800)
        return {char(0xC0 | code >> 6), tail(0)};
    if (code < 0x10000)
        return {char(0xE0 | code >> 12), tail(6), tail(0)};
    return {char(0xF0 | code >> 18), tail(12), tail(6), tail(0)};
}
} // namespace

TEST(String, ComparesBytesOrIgnoresAsciiCase)
{
    struct Row
    {
        const char *a, *b;
        bool bytes, noCase;
    };
    const Row rows[] = {
        {"ttf", "TTF", false, true},
        {"ttf", "ttf", true, true},
        {"ttf", "ttff", false, false},
        {"", "", true, true},
        {"[", "{", false, false},               // 32 apart, but no letters
        {"\xC3\xA4", "\xC3\x84", false, false}, // a and A with dots: no ASCII letters
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(BString(row.a).IsSameAs(row.b), row.bytes) << row.a << " " << row.b;
        EXPECT_EQ(BString(row.a).IsSameAs(row.b, 0), row.noCase) << row.a << " " << row.b;
    }
    EXPECT_TRUE(BString(static_cast<const char*>(nullptr)) == "");
}

TEST(String, CountsOnlyDigitsAsAnInteger)
{
    for (const char* yes : {"0", "007", "99999999999999999999"})
        EXPECT_TRUE(BString(yes).IsInteger()) << yes;
    for (const char* no : {"", "-1", "+1", " 1", "1 ", "1.0", "0x1", "\xD9\xA1"})
        EXPECT_FALSE(BString(no).IsInteger()) << no;
}

TEST(String, TakesPartsWithinTheText)
{
    struct Row
    {
        std::int64_t from, count;
        const char* expected;
    };
    const Row rows[] = {
        {0, 3, "abc"},
        {2, 2, "cd"},
        {4, 100, "e"},
        {5, 1, ""},
        {100, 1, ""},
        {0, INT64_MAX, "abcde"},
        {3, -1, ""},
        {-2, 4, "ab"},
        {-2, 2, ""},
        {-1, INT64_MAX, "abcde"},
        {INT64_MIN, 5, ""},
        {2, 0, ""},
        {INT64_MAX, INT64_MAX, ""},
        {-3, INT64_MIN, ""},
    };
    for (const Row& row : rows)
        EXPECT_EQ(BString("abcde").Mid(row.from, row.count), row.expected) << row.from << " " << row.count;
    EXPECT_EQ(BString("abab").Find("ab", 1), 2);
    EXPECT_EQ(BString("abab").Find("ab", 3), -1);
    EXPECT_EQ(BString("abab").FindLast("ab"), 2);
    EXPECT_EQ(BString("abab").Find("ab", -7), 0);
    EXPECT_EQ(BString(" \t a b\r\n").Trimmed(), "a b");
    EXPECT_EQ(BString(" \n").Trimmed(), "");
}

TEST(String, ReplacesWithoutLookingAtWhatItWrote)
{
    struct Row
    {
        const char *text, *what, *with, *expected;
    };
    const Row rows[] = {
        {"a%b%", "%", "%%", "a%%b%%"}, {"aaa", "aa", "b", "ba"}, {"abc", "abc", "", ""},
        {"abc", "", "x", "abc"},       {"abc", "d", "x", "abc"}, {"", "a", "b", ""},
    };
    for (const Row& row : rows)
    {
        BString text(row.text);
        text.ReplaceAll(row.what, row.with);
        EXPECT_EQ(text, row.expected) << row.text << " " << row.what;
    }
}

TEST(String, FormatsTextsOfAnyLength)
{
    for (const int length : {0, 1, 255, 256, 257, 100000})
    {
        const std::string filler(std::size_t(length), 'x');
        EXPECT_EQ(BString::Format("%s|%d|%.2f", filler.c_str(), -5, 0.25).Std(), filler + "|-5|0.25") << length;
    }
}

TEST(String, GroupsDigitsByThree)
{
    for (const auto& [number, text] : {std::pair<std::int64_t, const char*>{0, "0"},
                                       {-123, "-123"},
                                       {1000, "1 000"},
                                       {-1234567, "-1 234 567"},
                                       {INT64_MAX, "9 223 372 036 854 775 807"}})
        EXPECT_EQ(GroupedDigits(number), text);
}

TEST(Utf8, DecodesEveryCodePoint)
{
    std::string text;
    std::vector<std::uint32_t> expected;
    for (std::uint32_t code = 0; code <= 0x10FFFF; ++code)
    {
        if (code >= 0xD800 && code <= 0xDFFF)
            continue;
        text += Encoded(code);
        expected.push_back(code);
    }
    BArray<std::uint32_t> codes;
    ASSERT_EQ(ConvertUTF8toUTF32(text.data(), std::int64_t(text.size()), codes), std::int64_t(expected.size()));
    EXPECT_TRUE(std::equal(codes.begin(), codes.end(), expected.begin(), expected.end()));
}

TEST(Utf8, StopsAtIllegalSequences)
{
    struct Row
    {
        const char* name;
        std::string bytes;
    };
    const Row rows[] = {
        {"tail alone", "\x80"},
        {"overlong slash", "\xC0\xAF"},
        {"overlong in three", "\xE0\x9F\xBF"},
        {"overlong in four", "\xF0\x8F\xBF\xBF"},
        {"low surrogate limit", "\xED\xA0\x80"},
        {"high surrogate limit", "\xED\xBF\xBF"},
        {"one beyond the last", "\xF4\x90\x80\x80"},
        {"lead of five", "\xF8\x88\x80\x80\x80"},
        {"FF", "\xFF"},
        {"cut in two", "\xC3"},
        {"cut in three", "\xE2\x82"},
        {"cut in four", "\xF0\x9F\x98"},
        {"letter for a tail", "\xE2\x82z"},
        {"lead for a tail", "\xC3\xC3\xA4"},
    };
    for (const Row& row : rows)
        for (const char* tail : {"", "z\x80"})
        {
            SCOPED_TRACE(row.name);
            const std::string text = "\xC3\xA4y" + row.bytes + tail;
            BArray<std::uint32_t> codes;
            EXPECT_EQ(ConvertUTF8toUTF32(text.data(), std::int64_t(text.size()), codes), -1);
            ASSERT_EQ(codes.Count(), 2); // what came before
            EXPECT_EQ(codes[0], 0xE4u);
            EXPECT_EQ(codes[1], std::uint32_t('y'));
        }
    BArray<std::uint32_t> codes;
    codes.Append(1);
    EXPECT_EQ(ConvertUTF8toUTF32(nullptr, 0, codes), 0);
    EXPECT_TRUE(codes.IsEmpty());
    EXPECT_EQ(ConvertUTF8toUTF32("a\0b", 3, codes), 3) << "a zero byte is a code point like others";
}

TEST(Uuid, IsRandomOfVersionFour)
{
    std::set<std::string> seen;
    int bitsSeen[16] = {};
    for (int i = 0; i < 500; ++i)
    {
        const std::string uuid = MakeUuidString().Std();
        ASSERT_EQ(uuid.size(), 36u);
        for (std::size_t at = 0; at < uuid.size(); ++at)
        {
            const bool dash = at == 8 || at == 13 || at == 18 || at == 23;
            ASSERT_TRUE(dash ? uuid[at] == '-' : std::string("0123456789abcdef").find(uuid[at]) != std::string::npos)
                << uuid;
        }
        EXPECT_EQ(uuid[14], '4') << uuid;
        EXPECT_NE(std::string("89ab").find(uuid[19]), std::string::npos) << uuid;
        ++bitsSeen[std::stoi(uuid.substr(0, 1), nullptr, 16)];
        seen.insert(uuid);
    }
    EXPECT_EQ(seen.size(), 500u);
    for (const int times : bitsSeen)
        EXPECT_GT(times, 0); // one of the 16 digits missing in 500 draws: once in 10^13 runs
}
