#include "host/image/Sheet.h"

#include "host/image/Label.h"

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

// Puts a picture on the page.
void PutOver(CPB_Offscreen& page, const CPB_Offscreen& picture, int left, int top)
{
    for (int y = 0; y < picture.Height(); ++y)
    {
        const std::uint8_t* from = picture.Row(y);
        std::uint8_t* to = page.Row(top + y) + 4 * std::size_t(left);
        if (!picture.HasAlpha())
        {
            std::memcpy(to, from, 4 * std::size_t(picture.Width()));
            continue;
        }
        for (int x = 0; x < picture.Width(); ++x, from += 4, to += 4)
            for (int c = 0; c < 3; ++c)
                to[c] = std::uint8_t((from[c] * from[3] + to[c] * (255 - from[3]) + 127) / 255);
    }
}

LabelStyle StyleOf(const SheetLook& look)
{
    return {look.captionSize, LabelAlign::Centre, Byte(look.ink.x), Byte(look.ink.y), Byte(look.ink.z), 255};
}

bool CanLabel(const SheetLook& look)
{
    const PicturePtr scratch(CPB_Offscreen::Create(16, 16));
    return scratch && DrawLabel(*scratch, {0, 0, 16, 16}, "x", StyleOf(look));
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
    const bool wished =
        std::any_of(cells.begin(), cells.end(), [](const SheetCell& cell) { return !cell.caption.IsEmpty(); });
    if (wished && !CanLabel(look))
        sheet.captionProblem = "this system has no font for them, or this program was built without text";
    else if (wished)
        layout.strip = std::clamp(look.captionSize, 4, 512) * 3 / 2;
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
    {
        const int left = layout.Left(i), top = layout.Top(i), below = top + layout.cellHeight;
        PutOver(*sheet.picture, *cells[i].picture, left, top);
        if (layout.strip > 0 && !cells[i].caption.IsEmpty() &&
            !DrawLabel(*sheet.picture, {left, below, left + layout.cellWidth, below + layout.strip},
                       cells[i].caption.CString(), StyleOf(look)))
            sheet.captionProblem = "one of them is no UTF-8, or does not fit into memory";
    }
    return sheet;
}
} // namespace vx
