#include "host/image/Picture.h"
#include "host/image/Png.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

using namespace vx;

namespace
{
struct Format
{
    const char* name;
    int width, height, bits;
    bool alpha;
};

// Every byte depends on its place, so that a lost row, a swapped channel or a slipped stride shows.
PicturePtr Pattern(const Format& format)
{
    PicturePtr picture(CPB_Offscreen::Create(format.width, format.height, format.bits, true, format.alpha));
    const int bytes = format.bits / 8;
    for (int y = 0; y < format.height; ++y)
        for (int x = 0; x < format.width; ++x)
            for (int c = 0; c < bytes; ++c)
                picture->Row(y)[x * bytes + c] = std::uint8_t(17 * x + 31 * y + 71 * c + 1);
    return picture;
}

std::filesystem::path Scratch(const char* name) { return std::filesystem::path(testing::TempDir()) / name; }
} // namespace

TEST(Png, ComesBackAsItWas)
{
    const Format formats[] = {
        {"rgba", 5, 3, 32, true}, {"rgb in four bytes", 5, 3, 32, false}, {"rgb", 3, 7, 24, false},
        {"grey", 7, 2, 8, false}, {"one pixel", 1, 1, 32, true},          {"wide", 1023, 1, 32, true},
    };
    for (const Format& format : formats)
    {
        SCOPED_TRACE(format.name);
        const PicturePtr picture = Pattern(format);
        BArray<std::uint8_t> bytes;
        ASSERT_EQ(EncodePng(*picture, bytes), "");
        BString error;
        const PicturePtr back = DecodePicture(bytes.Data(), std::size_t(bytes.Count()), error);
        ASSERT_TRUE(back) << error.CString();
        ASSERT_EQ(back->Width(), format.width);
        ASSERT_EQ(back->Height(), format.height);
        EXPECT_EQ(back->HasAlpha(), format.alpha);
        const int bytesPerPixel = format.bits / 8;
        for (int y = 0; y < format.height; ++y)
            for (int x = 0; x < format.width; ++x)
            {
                const std::uint8_t* const from = picture->Row(y) + x * bytesPerPixel;
                const std::uint8_t* const to = back->Row(y) + x * 4;
                for (int c = 0; c < 3; ++c)
                    ASSERT_EQ(to[c], from[bytesPerPixel == 1 ? 0 : c]) << x << ", " << y << ", channel " << c;
                ASSERT_EQ(to[3], format.alpha ? from[3] : 255);
            }
    }
}

TEST(Png, AFailedWriteLeavesTheOldFileAlone)
{
    const PicturePtr picture = Pattern({"", 4, 4, 32, true});
    const std::filesystem::path path = Scratch("velmar_png_target.png");
    std::ofstream(path) << "old";
    EXPECT_EQ(WritePng(*picture, BPath(path.c_str())), "");
    BString error;
    EXPECT_TRUE(ReadPicture(BPath(path.c_str()), error)) << error.CString();
    std::filesystem::remove(path);

    const std::filesystem::path nowhere = Scratch("velmar_no_such_folder") / "a.png";
    const BString problem = WritePng(*picture, BPath(nowhere.c_str()));
    EXPECT_GE(problem.Find("a.png"), 0) << problem.CString();
    EXPECT_FALSE(std::filesystem::exists(nowhere));
}

TEST(ReadPicture, SaysWhatIsWrong)
{
    const PicturePtr picture = Pattern({"", 16, 16, 32, true});
    BArray<std::uint8_t> bytes;
    ASSERT_EQ(EncodePng(*picture, bytes), "");
    BString error;
    EXPECT_FALSE(DecodePicture(bytes.Data(), std::size_t(bytes.Count()) / 2, error)) << "half a file";
    EXPECT_NE(error, "");
    EXPECT_FALSE(DecodePicture("no picture at all", 17, error));
    EXPECT_NE(error, "");
    EXPECT_FALSE(DecodePicture("", 0, error));
    EXPECT_EQ(error, "is empty");
    EXPECT_FALSE(ReadPicture(BPath("no/such/picture.png"), error));
    EXPECT_GE(error.Find("cannot be read"), 0) << error.CString();
}

TEST(ReducedPicture, AveragesColoursByAlpha)
{
    PicturePtr picture(CPB_Offscreen::Create(2, 2));
    const std::uint8_t pixels[4][4] = {{200, 100, 0, 255}, {100, 100, 0, 255}, {9, 9, 9, 0}, {9, 9, 9, 0}};
    for (int k = 0; k < 4; ++k)
        std::memcpy(picture->Row(k / 2) + (k % 2) * 4, pixels[k], 4);
    const PicturePtr half = ReducedPicture(*picture, 2);
    ASSERT_TRUE(half);
    const std::uint8_t expected[4] = {150, 100, 0, 128}; // the clear pixels give no colour, only clearness
    for (int c = 0; c < 4; ++c)
        EXPECT_EQ(half->Row(0)[c], expected[c]) << c;
}

TEST(ComparePictures, CountsPixelsBeyondTheTolerance)
{
    const PicturePtr a = Pattern({"", 10, 10, 32, true});
    const PicturePtr b(a->Clone());
    EXPECT_EQ(ComparePictures(*a, *b, 0).pixelsOff, 0);
    b->Row(3)[4 * 4] = std::uint8_t(b->Row(3)[4 * 4] + 5);
    b->Row(4)[4 * 4] = std::uint8_t(b->Row(4)[4 * 4] - 6);
    EXPECT_EQ(ComparePictures(*a, *b, 5).pixelsOff, 1);
    EXPECT_EQ(ComparePictures(*a, *b, 5).largest, 6);
    PicturePtr marked;
    EXPECT_DOUBLE_EQ(ComparePictures(*a, *b, 4, &marked).share, 0.02);
    ASSERT_TRUE(marked);
    EXPECT_EQ(marked->Row(3)[4 * 4], 255);
    const PicturePtr other = Pattern({"", 10, 9, 32, true});
    EXPECT_DOUBLE_EQ(ComparePictures(*a, *other, 255).share, 1);
}
