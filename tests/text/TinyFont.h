// Font files made by hand, for outlines that no real font has.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// A TrueType font of 1000 units per em with a missing glyph that is empty and one for U+0041, whose contours these
/// are, of straight edges. Advance 600, no kerning.
inline std::string TinyFont(const std::vector<std::vector<std::pair<int, int>>>& contours)
{
    const auto put = [](std::string& to, std::uint32_t value, int bytes)
    {
        for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
            to += char(value >> shift & 255);
    };
    const auto row = [&put](std::initializer_list<int> shorts)
    {
        std::string bytes;
        for (const int value : shorts)
            put(bytes, std::uint32_t(value), 2);
        return bytes;
    };

    std::string glyph = row({int(contours.size()), -32768, -32768, 32767, 32767}), flags, xs, ys;
    int count = 0, x = 0, y = 0;
    for (const auto& contour : contours)
    {
        for (const auto& [px, py] : contour)
        {
            flags += char(1); // on the curve, both distances in two bytes
            put(xs, std::uint32_t(px - x), 2);
            put(ys, std::uint32_t(py - y), 2);
            x = px;
            y = py;
        }
        count += int(contour.size());
        put(glyph, std::uint32_t(count - 1), 2);
    }
    glyph += row({0}) + flags + xs + ys;
    glyph.resize((glyph.size() + 3) / 4 * 4);

    std::string loca;
    for (const std::size_t offset : {std::size_t(0), std::size_t(0), glyph.size()})
        put(loca, std::uint32_t(offset), 4);
    std::string cmap = row({0, 1, 3, 10, 0, 12, 12, 0, 0, 28, 0, 0, 0, 1}); // one table of one group
    for (const std::uint32_t value : {0x41u, 0x41u, 1u})
        put(cmap, value, 4);
    const std::pair<const char*, std::string> tables[] = {
        {"cmap", cmap},
        {"glyf", glyph},
        {"head", row({1, 0, 1, 0, 0,      0,      0x5F0F, 0x3CF5, 0, 1000, 0, 0, 0, 0,
                      0, 0, 0, 0, -32768, -32768, 32767,  32767,  0, 8,    2, 1, 0})},
        {"hhea", row({1, 0, 800, -200, 100, 600, 0, 0, 600, 1, 0, 0, 0, 0, 0, 0, 0, 2})},
        {"hmtx", row({600, 0, 600, 0})},
        {"loca", loca},
        {"maxp", row({1, 0, 2, count, int(contours.size()), 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0})},
    };
    std::string font = row({1, 0, int(std::size(tables)), 64, 2, 48}), body;
    for (const auto& [name, bytes] : tables)
    {
        font += name;
        for (const std::size_t value : {std::size_t(0), 12 + 16 * std::size(tables) + body.size(), bytes.size()})
            put(font, std::uint32_t(value), 4);
        body += bytes;
        body.resize((body.size() + 3) / 4 * 4);
    }
    return font + body;
}
