// VelmarBase: reference host.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vx
{
/// A JSON text with the place of each of its values, for readers that have to say where something is wrong. Comments
/// in the manner of C++ are skipped. Holds a copy of nothing: the text must outlive it.
class JsonText
{
public:
    enum class Kind : std::uint8_t
    {
        Null,
        Boolean,
        Number,
        Text,
        List,
        Object,
        Key, ///< before each value of an object
    };

    /// Values stand in the order of the text, contents behind what contains them.
    struct Value
    {
        Kind kind;
        std::uint32_t at;   ///< byte of the text at which it begins
        std::uint32_t next; ///< index of the value behind this one and its contents
        union
        {
            double number;
            struct
            {
                std::uint32_t start, length; ///< in mStrings
            } text;
        };
    };
    struct Place
    {
        int line, column; ///< from 1; columns count characters
    };

    static constexpr int kMostNesting = 64;
    static constexpr std::size_t kMostBytes = std::size_t(1) << 30;

    /// Memory stays below 64 bytes for each of the text. @return false with Error() and ErrorAt()
    bool Read(std::string_view text);
    const std::string& Error() const { return mError; }
    std::size_t ErrorAt() const { return mErrorAt; }

    std::uint32_t Root() const { return 0; }
    const Value& At(std::uint32_t i) const { return mValues[i]; }
    Kind KindOf(std::uint32_t i) const { return mValues[i].kind; }
    std::string_view Text(std::uint32_t i) const ///< of a Text or Key
    {
        return std::string_view(mStrings).substr(mValues[i].text.start, mValues[i].text.length);
    }
    /// The first value within a list or object, and the index at which they end. Those of objects are keys, each with
    /// its value behind it.
    std::uint32_t First(std::uint32_t i) const { return i + 1; }
    std::uint32_t End(std::uint32_t i) const { return mValues[i].next; }
    std::uint32_t Next(std::uint32_t i) const { return mValues[i].next; }
    /// Value of a key of the object, 0 for none: the root is no value of an object.
    std::uint32_t Find(std::uint32_t object, std::string_view key) const;
    Place PlaceOf(std::size_t at) const;
    Place PlaceOf(const Value& value) const { return PlaceOf(value.at); }
    const char* NameOf(std::uint32_t i) const; ///< what a value is, for messages

private:
    friend struct JsonEvents;
    std::string_view mText;
    std::vector<Value> mValues;
    std::string mStrings;
    std::string mError;
    std::size_t mErrorAt = 0;
};
} // namespace vx
