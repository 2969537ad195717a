#include "host/image/Sheet.h"

#include <gtest/gtest.h>

#include <vector>

using namespace vx;

namespace
{
PicturePtr Filled(int width, int height, std::uint8_t grey, std::uint8_t alpha = 255)
{
    PicturePtr picture(CPB_Offscreen::Create(width, height));
    picture->Fill(grey, grey, grey, alpha);
    return picture;
}

std::int64_t PixelsOf(const CPB_Offscreen& picture, int grey, int top, int bottom)
{
    std::int64_t count = 0;
    for (int y = top; y < bottom; ++y)
        for (int x = 0; x < picture.Width(); ++x)
            count += picture.Row(y)[4 * x] == grey && picture.Row(y)[4 * x + 3] == 255;
    return count;
}
} // namespace

TEST(Sheet, PutsPicturesInRows)
{
    SheetLook look;
    look.columns = 3;
    look.margin = 5;
    look.background = {1, 1, 1};
    std::vector<PicturePtr> pictures;
    std::vector<SheetCell> cells;
    for (int i = 0; i < 5; ++i)
    {
        pictures.push_back(Filled(40, 30, std::uint8_t(10 + 20 * i), i == 4 ? 0 : 255));
        cells.push_back({pictures.back().get(), ""});
    }
    const Sheet sheet = ComposeSheet(cells, look);
    ASSERT_TRUE(sheet.picture) << sheet.error.CString();
    EXPECT_EQ(sheet.captionProblem, "");
    EXPECT_EQ(sheet.picture->Width(), 3 * 45 + 5);
    EXPECT_EQ(sheet.picture->Height(), 2 * 35 + 5);
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_EQ(PixelsOf(*sheet.picture, 10 + 20 * i, 0, 75), 40 * 30) << i;
        EXPECT_EQ(sheet.picture->Row(5 + i / 3 * 35)[4 * (5 + i % 3 * 45)], 10 + 20 * i) << "its corner";
    }
    EXPECT_EQ(PixelsOf(*sheet.picture, 255, 0, 75), 140 * 75 - 4 * 40 * 30) << "a clear picture shows the page";
}

TEST(Sheet, WritesCaptionsBelow)
{
    const PicturePtr picture = Filled(80, 30, 255);
    SheetLook look;
    look.background = {1, 1, 1};
    const SheetCell cells[] = {{picture.get(), "wire"}, {picture.get(), ""}};
    const Sheet sheet = ComposeSheet(cells, look);
    ASSERT_TRUE(sheet.picture);
    const int below = look.margin + 30;
    if (!sheet.captionProblem.IsEmpty())
    {
        EXPECT_EQ(sheet.picture->Height(), below + look.margin) << "no room for captions that there cannot be";
        GTEST_SKIP() << sheet.captionProblem.CString();
    }
    EXPECT_EQ(PixelsOf(*sheet.picture, 255, 0, below), std::int64_t(sheet.picture->Width()) * below);
    std::int64_t ink[2] = {};
    for (int y = below; y < sheet.picture->Height(); ++y)
        for (int x = 0; x < sheet.picture->Width(); ++x)
            ink[x > look.margin + 80] += sheet.picture->Row(y)[4 * x] < 128;
    EXPECT_GT(ink[0], 30);
    EXPECT_EQ(ink[1], 0) << "the second has none";
}

TEST(Sheet, RefusesWhatMakesNoPage)
{
    const PicturePtr small = Filled(10, 10, 0), other = Filled(11, 10, 0), wide = Filled(20000, 1, 0);
    const std::vector<std::vector<SheetCell>> rows = {{},
                                                      {{small.get(), ""}, {other.get(), ""}},
                                                      {{small.get(), ""}, {nullptr, ""}},
                                                      {{wide.get(), ""}, {wide.get(), ""}}};
    for (const std::vector<SheetCell>& cells : rows)
    {
        const Sheet sheet = ComposeSheet(cells);
        EXPECT_FALSE(sheet.picture);
        EXPECT_FALSE(sheet.error.IsEmpty());
    }
}
