// FenwickBase: foundation of the VelmarBase project.
#include "base/BString.h"
#include "base/BMap.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace
{
constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

// ASCII only and without a locale: the result must not depend on where the program runs.
constexpr char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? char(c + ('a' - 'A')) : c; }
} // namespace

BString BString::Format(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    char small[256];
    const int length = std::vsnprintf(small, sizeof small, format, arguments);
    va_end(arguments);
    BString text;
    if (length > 0 && std::size_t(length) < sizeof small)
        text.mText.assign(small, std::size_t(length));
    else if (length > 0)
    {
        text.mText.resize(std::size_t(length));
        std::vsnprintf(text.mText.data(), text.mText.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

bool BString::IsSameAs(std::string_view other, int flag) const
{
    if (flag != 0)
        return mText == other;
    return std::equal(mText.begin(), mText.end(), other.begin(), other.end(),
                      [](char a, char b) { return LowerAscii(a) == LowerAscii(b); });
}

bool BString::IsInteger() const
{
    return !mText.empty() && std::all_of(mText.begin(), mText.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::int64_t BString::Find(std::string_view what, std::int64_t from) const
{
    const std::size_t at = mText.find(what, std::size_t(std::max<std::int64_t>(from, 0)));
    return at == std::string::npos ? -1 : std::int64_t(at);
}

std::int64_t BString::FindLast(std::string_view what) const
{
    const std::size_t at = mText.rfind(what);
    return at == std::string::npos ? -1 : std::int64_t(at);
}

BString BString::Mid(std::int64_t from, std::int64_t count) const
{
    // A part of the range that lies before the beginning of the text is missing from the result.
    std::int64_t first = from, wanted = count;
    if (first < 0)
    {
        wanted = wanted == INT64_MAX ? wanted : std::max(wanted, -INT64_MAX - first) + first;
        first = 0;
    }
    if (first >= Length() || wanted <= 0)
        return {};
    return BString(mText.substr(std::size_t(first), std::size_t(wanted)));
}

BString BString::Lower() const
{
    BString lower(mText);
    std::transform(lower.mText.begin(), lower.mText.end(), lower.mText.begin(), LowerAscii);
    return lower;
}

BString BString::Trimmed() const
{
    const std::size_t first = mText.find_first_not_of(kWhiteSpace);
    if (first == std::string::npos)
        return {};
    return BString(mText.substr(first, mText.find_last_not_of(kWhiteSpace) - first + 1));
}

void BString::ReplaceAll(std::string_view what, std::string_view with)
{
    if (what.empty())
        return;
    std::string replaced; // built anew, since shifting the rest at every match takes quadratic time
    std::size_t done = 0;
    for (std::size_t at = mText.find(what); at != std::string::npos; at = mText.find(what, done))
    {
        replaced.append(mText, done, at - done).append(with);
        done = at + what.size();
    }
    if (done == 0)
        return;
    replaced.append(mText, done);
    mText = std::move(replaced);
}

std::uint64_t BMapHash<BString>::Of(const BString& key)
{
    std::uint64_t hash = 0xCBF29CE484222325u;
    for (const char c : key.Std())
        hash = (hash ^ std::uint8_t(c)) * 0x100000001B3u;
    return hash;
}
