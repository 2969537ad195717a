#include "draw/VXFrameBits.h"
#include "draw/VXObject2D.h"
#include "draw/VXSceneDrawOptions.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <vector>

static int Remember(VXObject2D*, const int& width, const int& height, void* data)
{
    static_cast<std::vector<int>*>(data)->push_back(width * 100 + height);
    return 7;
}

TEST(Object2D, RunsItsProcsAtTheOutermostNestOnly)
{
    std::vector<int> begun, ended;
    VXObject2D panel;
    panel.SetPrepareProc(Remember, &begun);
    panel.SetEndProc(Remember, &ended);
    EXPECT_EQ(panel.PrepareForDrawing(3, 4), 7);
    EXPECT_EQ(panel.PrepareForDrawing(5, 6), 0);
    panel.EndDrawing(5, 6);
    EXPECT_TRUE(ended.empty());
    panel.EndDrawing(8, 9);
    EXPECT_EQ(begun, std::vector<int>{304});
    EXPECT_EQ(ended, std::vector<int>{809});
    EXPECT_EQ(panel.PrepareForDrawing(1, 2), 7) << "the nest opens anew";
}

TEST(Object2D, ReplacesItsBitmap)
{
    VXObject2D panel;
    panel.CreateOffscreen(4, 3);
    ASSERT_NE(panel.Offscreen(), nullptr);
    EXPECT_EQ(panel.Offscreen()->BitsPerPixel(), 32);
    EXPECT_TRUE(panel.Offscreen()->HasAlpha());
    panel.CreateOffscreen(0, 3); // cannot be made
    EXPECT_EQ(panel.Offscreen(), nullptr);
}

TEST(FrameBits, KeepWhatIsAlreadyHeldAndDoNotFreeOnAllocation)
{
    VXFrameBits bits;
    CPB_Offscreen* const first = bits.AllocateBitMap(2, 2, 32, 1, 1);
    CPB_Offscreen* const second = bits.AllocateBitMap(3, 3, 24, 1, 0);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(bits.BitMap(), second);
    EXPECT_EQ(first->Width(), 2) << "still there: it is the caller's now";
    bits.SetBitMap(second);
    EXPECT_EQ(bits.BitMap()->Width(), 3);
    bits.SetBitMap(first);
    EXPECT_EQ(bits.AllocateBitMap(UINT_MAX, 1, 32, 1, 1), nullptr);
    delete first;
}

TEST(Inset, KeepsTheContentsAspectCentredInTheFrame)
{
    struct Row
    {
        const char* name;
        CPB_Rect frame, content, expected;
    };
    const Row rows[] = {
        {"taller frame", {0, 0, 100, 200}, {0, 0, 10, 10}, {0, 50, 100, 150}},
        {"wider frame", {10, 20, 210, 120}, {5, 5, 25, 25}, {60, 20, 160, 120}},
        {"equal aspects keep x", {0, 0, 40, 30}, {0, 0, 4, 3}, {0, 0, 40, 30}},
        {"flat content counts as one high", {0, 0, 100, 50}, {0, 7, 10, 7}, {0, 20, 100, 30}},
        {"a half goes down", {0, 0, 5, 10}, {0, 0, 2, 1}, {0, 4, 5, 6}},                // 2.5 + 0.49 is 2
        {"a little more goes up", {0, 0, 100, 101}, {0, 0, 66, 100}, {16, 0, 83, 101}}, // 66.66 + 0.49 is 67
        {"frame without width", {3, 3, 3, 9}, {0, 0, 0, 4}, {3, 3, 3, 9}},
        {"the whole range", {INT_MIN, INT_MIN, INT_MAX, INT_MAX}, {0, 0, 1, 1}, {INT_MIN, INT_MIN, INT_MAX, INT_MAX}},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        CPB_Rect result;
        ComputeInset(row.frame, row.content, result);
        EXPECT_EQ(result.x1, row.expected.x1);
        EXPECT_EQ(result.y1, row.expected.y1);
        EXPECT_EQ(result.x2, row.expected.x2);
        EXPECT_EQ(result.y2, row.expected.y2);
    }
}

// --- Draw options

TEST(DrawOptions, CutSizesTowardZero)
{
    struct Row
    {
        float size;
        int pixels;
    };
    VXSceneDrawOptions options;
    for (const Row& row : {Row{640.9f, 640}, Row{-1.9f, -1}, Row{0, 0}, Row{NAN, 0}, Row{1e20f, 2147483520}})
    {
        options.SetSceneSize(row.size, -row.size);
        EXPECT_EQ(options.mSceneWidth, row.pixels);
        EXPECT_EQ(options.mSceneHeight, -row.pixels);
    }
}

TEST(DrawOptions, AnswerTheOpacityFloorWhileItIsOnOrForced)
{
    VXSceneDrawOptions options;
    EXPECT_FLOAT_EQ(options.MinOpacityDisplayGL(false), 0.1f);
    options.SetMinOpacityDisplayGL(0.25f);
    options.mUseMinOpacity = false;
    EXPECT_EQ(options.MinOpacityDisplayGL(false), 0.0f);
    EXPECT_EQ(options.MinOpacityDisplayGL(true), 0.25f);
    const VXSceneDrawOptions copy = options;
    options.SetDefaults();
    EXPECT_FLOAT_EQ(options.MinOpacityDisplayGL(false), 0.1f);
    EXPECT_EQ(copy.MinOpacityDisplayGL(true), 0.25f);
}
