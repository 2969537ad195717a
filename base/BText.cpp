// FenwickBase: foundation of the VelmarBase project.
#include "base/BText.h"
#include "base/platform/Platform.h"

#include <random>
#include <string>

namespace
{
// Sequence length and smallest code point of a lead byte; length 0 for bytes that cannot lead.
struct Lead
{
    int length;
    std::uint32_t bits;
    std::uint32_t smallest;
};

Lead ReadLead(std::uint8_t byte)
{
    if (byte < 0x80)
        return {1, byte, 0};
    if (byte >= 0xC2 && byte <= 0xDF) // C0 and C1 could only start overlong forms
        return {2, byte & 0x1Fu, 0x80};
    if (byte >= 0xE0 && byte <= 0xEF)
        return {3, byte & 0x0Fu, 0x800};
    if (byte >= 0xF0 && byte <= 0xF4)
        return {4, byte & 0x07u, 0x10000};
    return {0, 0, 0};
}

// The code point at `at`, whose length goes into `length`; length 0 for an illegal sequence.
std::uint32_t Decode(const std::uint8_t* at, std::int64_t left, int& length)
{
    const Lead lead = ReadLead(*at);
    length = 0;
    if (lead.length == 0 || lead.length > left)
        return 0;
    std::uint32_t code = lead.bits;
    for (int i = 1; i < lead.length; ++i)
    {
        if ((at[i] & 0xC0) != 0x80)
            return 0;
        code = code << 6 | (at[i] & 0x3Fu);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < lead.smallest || code > 0x10FFFF || surrogate)
        return 0;
    length = lead.length;
    return code;
}
} // namespace

BString MakeUuidString()
{
    std::uint8_t bytes[16];
    if (!vx::platform::RandomBytes(bytes, sizeof bytes))
    {
        std::random_device device;
        for (std::uint8_t& byte : bytes)
            byte = std::uint8_t(device());
    }
    bytes[6] = std::uint8_t((bytes[6] & 0x0F) | 0x40); // version 4: random
    bytes[8] = std::uint8_t((bytes[8] & 0x3F) | 0x80); // the variant of RFC 4122
    constexpr char kDigits[] = "0123456789abcdef";
    char text[37];
    char* out = text;
    for (int i = 0; i < 16; ++i)
    {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            *out++ = '-';
        *out++ = kDigits[bytes[i] >> 4];
        *out++ = kDigits[bytes[i] & 15];
    }
    *out = 0;
    return BString(text);
}

BString GroupedDigits(std::int64_t number)
{
    std::string text = std::to_string(number);
    const std::size_t first = number < 0 ? 1 : 0;
    for (std::size_t at = text.size(); at > first + 3;)
        text.insert(at -= 3, 1, ' ');
    return BString(text);
}

std::int64_t ConvertUTF8toUTF32(const char* utf8, std::int64_t bytes, BArray<std::uint32_t>& out)
{
    out.Empty();
    if (!utf8 || bytes <= 0)
        return 0;
    if (!out.SetCountForWriting(bytes)) // no sequence makes more code points than it has bytes
        return -1;
    const std::uint8_t* const text = reinterpret_cast<const std::uint8_t*>(utf8);
    std::int64_t count = 0, at = 0;
    while (at < bytes)
    {
        int length = 0;
        const std::uint32_t code = Decode(text + at, bytes - at, length);
        if (length == 0)
            break;
        out.Data()[count++] = code;
        at += length;
    }
    out.SetCountForWriting(count);
    return at < bytes ? -1 : count;
}
