#include "host/image/Label.h"
#include "host/image/Picture.h"
#include "host/text/FontFolders.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

using namespace vx;

namespace
{
struct Label : testing::Test
{
    void SetUp() override
    {
        if (SystemSansFonts().IsEmpty())
            GTEST_SKIP() << "no sans font is installed";
    }
};

struct Ink
{
    int left = 1 << 20, right = -1, top = 1 << 20, bottom = -1;
    long long sum = 0; // of what was taken from the white
};

PicturePtr White(int bits)
{
    PicturePtr picture(CPB_Offscreen::Create(200, 60, bits));
    std::memset(picture->Pixels(), 255, std::size_t(picture->RowBytes()) * std::size_t(picture->Height()));
    return picture;
}

Ink InkOf(const CPB_Offscreen& picture)
{
    Ink ink;
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
            if (const int taken = 255 - picture.Row(y)[x * picture.BitsPerPixel() / 8]; taken > 0)
            {
                ink.left = std::min(ink.left, x);
                ink.right = std::max(ink.right, x);
                ink.top = std::min(ink.top, y);
                ink.bottom = std::max(ink.bottom, y);
                ink.sum += taken;
            }
    return ink;
}
} // namespace

TEST_F(Label, StaysInItsRectangleAndIsCentred)
{
    const CPB_Rect where{20, 10, 180, 50};
    for (const int bits : {8, 24, 32})
        for (const char* const text : {"HOH", "a text that is far too long to fit into this", "\xC3\x96g"})
        {
            SCOPED_TRACE(testing::Message() << bits << ' ' << text);
            const PicturePtr picture = White(bits);
            ASSERT_TRUE(DrawLabel(*picture, where, text, {20, LabelAlign::Centre, 0, 0, 0, 255}));
            const Ink ink = InkOf(*picture);
            EXPECT_GE(ink.left, where.x1);
            EXPECT_LT(ink.right, where.x2);
            EXPECT_GE(ink.top, where.y1);
            EXPECT_LT(ink.bottom, where.y2);
            EXPECT_NEAR((ink.left + ink.right) / 2.0, 99.5, 6) << "side bearings, and what an ellipsis leaves over";
        }
}

TEST_F(Label, BeginsAtTheLeftAndCoversMoreWhenLarger)
{
    const PicturePtr small = White(32), large = White(32);
    ASSERT_TRUE(DrawLabel(*small, {50, 0, 200, 60}, "HH", {10, LabelAlign::Left, 0, 0, 0, 255}));
    ASSERT_TRUE(DrawLabel(*large, {50, 0, 200, 60}, "HH", {20, LabelAlign::Left, 0, 0, 0, 255}));
    EXPECT_NEAR(InkOf(*small).left, 51, 1);
    EXPECT_NEAR(double(InkOf(*large).sum) / double(InkOf(*small).sum), 4, 0.8)
        << "hinting moves stems by part of a pixel";
}

TEST_F(Label, LeavesThePictureAloneWhereThereIsNothingToDraw)
{
    const PicturePtr picture = White(32);
    EXPECT_FALSE(DrawLabel(*picture, {0, 0, 200, 60}, "\xFF", {}));
    EXPECT_TRUE(DrawLabel(*picture, {0, 0, 200, 60}, "", {}));
    EXPECT_TRUE(DrawLabel(*picture, {0, 0, 200, 60}, nullptr, {}));
    EXPECT_TRUE(DrawLabel(*picture, {300, 0, 400, 60}, "outside", {}));
    EXPECT_TRUE(DrawLabel(*picture, {50, 0, 40, 60}, "inside out", {}));
    EXPECT_EQ(InkOf(*picture).sum, 0);
}
