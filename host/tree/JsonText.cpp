#include "host/tree/detail/JsonText.h"

#include <nlohmann/json.hpp>

#include <cstring>
#include <iterator>

namespace vx
{
namespace
{
// Tells how far the parser has read, which is how events get their places.
struct CountedChars
{
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    const char* at;
    const char** farthest;

    reference operator*() const { return *at; }
    CountedChars& operator++()
    {
        *farthest = ++at;
        return *this;
    }
    CountedChars operator++(int)
    {
        CountedChars before = *this;
        ++*this;
        return before;
    }
    friend bool operator==(const CountedChars& a, const CountedChars& b) { return a.at == b.at; }
    friend bool operator!=(const CountedChars& a, const CountedChars& b) { return a.at != b.at; }
};

// What the parser's own words come to without place, number of the exception, and the text read last, which can be
// as long as the file.
std::string Plainly(std::string_view what)
{
    for (const char* const head : {"] ", "syntax error "})
        if (const std::size_t i = what.find(head); i != std::string_view::npos)
            what.remove_prefix(i + std::string_view(head).size());
    std::string told(what);
    const std::size_t last = told.find("; last read: '");
    if (last != std::string::npos)
    {
        const std::size_t tail = told.rfind("'; expected ");
        told.erase(last, (tail == std::string::npos || tail < last ? told.size() : tail + 1) - last);
    }
    return told.substr(0, 200);
}
} // namespace

struct JsonEvents : nlohmann::json_sax<nlohmann::json>
{
    explicit JsonEvents(JsonText& to) : mTo(to), mFarthest(to.mText.data()) {}

    const char** Farthest() { return &mFarthest; }

    bool null() override { return Add(JsonText::Kind::Null); }
    bool boolean(bool value) override { return Add(JsonText::Kind::Boolean, value ? 1 : 0); }
    bool number_integer(number_integer_t value) override { return AddNumber(double(value)); }
    bool number_unsigned(number_unsigned_t value) override { return AddNumber(double(value)); }
    bool number_float(number_float_t value, const string_t&) override { return AddNumber(value); }
    bool string(string_t& value) override { return AddText(JsonText::Kind::Text, value); }
    bool key(string_t& value) override { return AddText(JsonText::Kind::Key, value); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return Begin(JsonText::Kind::Object); }
    bool start_array(std::size_t) override { return Begin(JsonText::Kind::List); }
    bool end_object() override { return Finish(); }
    bool end_array() override { return Finish(); }

    bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception& error) override
    {
        const std::size_t read = Consumed();
        const std::size_t start = TokenStart();
        mTo.mErrorAt = start == mTo.mText.size() ? start : std::min(start, read > 0 ? read - 1 : 0);
        mTo.mError = StrayComma() ? std::string("a comma stands before '") + mTo.mText[mTo.mErrorAt] +
                                        "', expected none or another value"
                                  : Plainly(error.what());
        return false;
    }

private:
    // Whether the error is the end of a list or object behind a comma, which other formats allow.
    bool StrayComma() const
    {
        const std::string_view before = std::string_view(mTo.mText).substr(0, mTo.mErrorAt);
        const std::size_t last = before.find_last_not_of(" \t\r\n");
        return mTo.mErrorAt < mTo.mText.size() && std::strchr("]}", mTo.mText[mTo.mErrorAt]) &&
               last != std::string_view::npos && before[last] == ',';
    }

    std::size_t Consumed() const { return std::size_t(mFarthest - mTo.mText.data()); }

    // Where the token begins that ends where the parser is.
    std::size_t TokenStart()
    {
        const std::string_view text = mTo.mText;
        std::size_t i = mTokenEnd;
        if (i == 0 && text.starts_with("\xEF\xBB\xBF"))
            i = 3;
        for (;;)
        {
            i = std::min(text.find_first_not_of(" \t\r\n,:", i), text.size());
            if (text.substr(i, 2) == "//")
                i = std::min(text.find('\n', i), text.size());
            else if (text.substr(i, 2) == "/*")
                i = std::min(text.find("*/", i + 2), text.size() - 2) + 2;
            else
                return i;
        }
    }

    bool Add(JsonText::Kind kind, double number = 0)
    {
        JsonText::Value value{};
        value.kind = kind;
        value.at = std::uint32_t(TokenStart());
        value.number = number;
        value.next = std::uint32_t(mTo.mValues.size()) + 1;
        mTo.mValues.push_back(value);
        mTokenEnd = Consumed();
        return true;
    }
    bool AddNumber(double number)
    {
        Add(JsonText::Kind::Number, number);
        // The parser looks one character ahead to see a number's end.
        const char last = mTokenEnd > 0 ? mTo.mText[mTokenEnd - 1] : '0';
        if (std::string_view("+-.0123456789eE").find(last) == std::string_view::npos)
            --mTokenEnd;
        return true;
    }
    bool AddText(JsonText::Kind kind, const std::string& text)
    {
        Add(kind);
        mTo.mValues.back().text = {std::uint32_t(mTo.mStrings.size()), std::uint32_t(text.size())};
        mTo.mStrings += text;
        return true;
    }
    bool Begin(JsonText::Kind kind)
    {
        Add(kind);
        if (mOpen.size() == std::size_t(JsonText::kMostNesting))
        {
            mTo.mErrorAt = mTo.mValues.back().at;
            mTo.mError =
                "lists and objects within each other more than " + std::to_string(JsonText::kMostNesting) + " deep";
            return false;
        }
        mOpen.push_back(std::uint32_t(mTo.mValues.size()) - 1);
        return true;
    }
    bool Finish()
    {
        mTo.mValues[mOpen.back()].next = std::uint32_t(mTo.mValues.size());
        mOpen.pop_back();
        mTokenEnd = Consumed();
        return true;
    }

    JsonText& mTo;
    const char* mFarthest;
    std::size_t mTokenEnd = 0;
    std::vector<std::uint32_t> mOpen;
};

bool JsonText::Read(std::string_view text)
{
    mText = text;
    mValues.clear();
    mStrings.clear();
    mError.clear();
    mErrorAt = 0;
    if (text.size() > kMostBytes)
    {
        mError = "larger than 1 GiB";
        return false;
    }
    JsonEvents events(*this);
    const CountedChars begin{text.data(), events.Farthest()}, end{text.data() + text.size(), events.Farthest()};
    return nlohmann::json::sax_parse(begin, end, &events, nlohmann::json::input_format_t::json, true, true);
}

std::uint32_t JsonText::Find(std::uint32_t object, std::string_view key) const
{
    for (std::uint32_t i = First(object); i < End(object); i = Next(i + 1))
        if (Text(i) == key)
            return i + 1;
    return 0;
}

JsonText::Place JsonText::PlaceOf(std::size_t at) const
{
    const std::string_view before = mText.substr(0, at);
    Place place{1, 1};
    std::size_t line = 0; // where it begins
    for (std::size_t i = before.find('\n'); i != std::string_view::npos; i = before.find('\n', line))
    {
        line = i + 1;
        ++place.line;
    }
    for (const char c : before.substr(line))
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80)
            ++place.column;
    return place;
}

const char* JsonText::NameOf(std::uint32_t i) const
{
    constexpr const char* kNames[] = {"null", "true or false", "a number", "a text", "a list", "an object", "a key"};
    return kNames[int(KindOf(i))];
}
} // namespace vx
