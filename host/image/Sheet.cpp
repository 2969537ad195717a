#include "host/image/Sheet.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vx
{
static constexpr std::int64_t kLargestSide = 32768; // of a page: 4 GiB of pixels

namespace
{
struct Layout
{
    int columns, rows;
    int cellWidth, cellHeight; ///< of the pictures
    int strip;                 ///< below each, for its caption; 0 for none
    int margin;
    std::int64_t Width() const { return margin + std::int64_t(columns) * (cellWidth + margin); }
    std::int64_t Height() const { return margin + std::int64_t(rows) * (cellHeight + strip + margin); }
    int Left(std::size_t i) const { return margin + int(i) % columns * (cellWidth + margin); }
    int Top(std::size_t i) const { return margin + int(i) / columns * (cellHeight + strip + margin); }
};

std::uint8_t Byte(float part) { return std::uint8_t(std::lround(std::clamp(part, 0.0f, 1.0f) * 255)); }

// Puts `top` over a part of the page; rows and columns beyond `width` and `height` are left out.
void PutOver(CPB_Offscreen& page, const CPB_Offscreen& top, int left, int upper, int width, int height)
{
    const int columns = std::min(width, top.Width()), rows = std::min(height, top.Height());
    for (int y = 0; y < rows; ++y)
    {
        const std::uint8_t* from = top.Row(y);
        std::uint8_t* to = page.Row(upper + y) + 4 * std::size_t(left);
        if (!top.HasAlpha())
        {
            std::memcpy(to, from, 4 * std::size_t(columns));
            continue;
        }
        for (int x = 0; x < columns; ++x, from += 4, to += 4)
            for (int c = 0; c < 3; ++c)
                to[c] = std::uint8_t((from[c] * from[3] + to[c] * (255 - from[3]) + 127) / 255);
    }
}

BString CellProblem(std::span<const SheetCell> cells)
{
    for (const SheetCell& cell : cells)
        if (!cell.picture || cell.picture->BitsPerPixel() != 32 ||
            cell.picture->Width() != cells.front().picture->Width() ||
            cell.picture->Height() != cells.front().picture->Height())
            return "the pictures of a sheet must be there and of one size";
    return cells.empty() ? "a sheet needs a picture" : "";
}
} // namespace

Sheet ComposeSheet(std::span<const SheetCell> cells, const SheetLook& look)
{
    Sheet sheet;
    sheet.error = CellProblem(cells);
    if (!sheet.error.IsEmpty())
        return sheet;
    Layout layout{};
    layout.columns = std::clamp(look.columns, 1, int(std::min<std::size_t>(cells.size(), kLargestSide)));
    layout.rows = int((cells.size() + std::size_t(layout.columns) - 1) / std::size_t(layout.columns));
    layout.cellWidth = cells.front().picture->Width();
    layout.cellHeight = cells.front().picture->Height();
    layout.margin = std::clamp(look.margin, 0, 4096);
    sheet.captionProblem = "no font";
    if (layout.Width() > kLargestSide || layout.Height() > kLargestSide)
    {
        sheet.error = BString::Format("a sheet of %lld x %lld pixels cannot be made: up to %lld a side",
                                      static_cast<long long>(layout.Width()), static_cast<long long>(layout.Height()),
                                      static_cast<long long>(kLargestSide));
        return sheet;
    }
    sheet.picture.reset(CPB_Offscreen::Create(int(layout.Width()), int(layout.Height()), 32, true, false));
    if (!sheet.picture)
    {
        sheet.error = "the sheet does not fit into memory";
        return sheet;
    }
    sheet.picture->Fill(Byte(look.background.x), Byte(look.background.y), Byte(look.background.z), 255);
    for (std::size_t i = 0; i < cells.size(); ++i)
        PutOver(*sheet.picture, *cells[i].picture, layout.Left(i), layout.Top(i), layout.cellWidth, layout.cellHeight);
    return sheet;
}
} // namespace vx
