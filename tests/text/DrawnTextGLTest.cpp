#include "host/gl/Framebuffer.h"
#include "host/window/OffscreenContext.h"
#include "tests/text/Fonts.h"
#include "text/VXText.h"

#include <cmath>

#ifdef _WIN32
#include <windows.h>
#endif
#include <GL/gl.h>

using namespace vx;

namespace
{
class DrawnText : public WithFonts
{
protected:
    void SetUp() override
    {
        WithFonts::SetUp();
        if (!IsSkipped() && !mContext.Create())
            GTEST_SKIP() << "no OpenGL: " << mContext.Error().CString();
    }
    void TearDown() override
    {
        VXText::ClearFontFileCache();
        WithFonts::TearDown();
    }

    // Share of pixels that a text covers, of a picture 100 units wide and high about the origin.
    double Coverage(const BString& text, const BString& file, float size, float depth = 5)
    {
        Framebuffer target;
        EXPECT_EQ(target.Create(100, 100, 1), "");
        target.Bind();
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-50, 50, -50, 50, -200, 200);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glColor3f(1, 1, 1);
        EXPECT_EQ(VXText::CreateTextGeom(text, file, size, depth), nullptr);
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
        const PicturePtr picture = target.ReadBack(false);
        int lit = 0;
        for (int y = 0; y < 100; ++y)
            for (int x = 0; x < 100; ++x)
                lit += picture->Row(y)[4 * x] > 0 ? 1 : 0;
        return lit / 10000.0;
    }

    OffscreenContext mContext;
};
} // namespace

// The back is 3 units wider than the letter all around. The letter I is a bar of 201 by 1493 of 2048 font units.
TEST_F(DrawnText, CoversTheLetterAndItsWiderBack)
{
    const double wide = 40 * 201 / 2048.0 + 6, high = 40 * 1493 / 2048.0 + 6;
    EXPECT_NEAR(Coverage("I", kSans, 40), wide * high / 10000, 0.15 * wide * high / 10000);
}

TEST_F(DrawnText, IsKeptUnderTheTextAndLookedUpByTheFile)
{
    Coverage("I", kSans, 20);
    Coverage("I", kSans, 20);
    EXPECT_EQ(VXText::mFontFileCache.Count(), 1) << "not found by its file, made anew, kept under the same text";
    Coverage("L", kSans, 20);
    EXPECT_EQ(VXText::mFontFileCache.Count(), 2);
    EXPECT_GT(Coverage("H", "I", 20), 0) << "a file that is called like an earlier text";
    EXPECT_EQ(VXText::mFontFileCache.Count(), 2);
    VXText::ClearFontFileCache();
    EXPECT_EQ(VXText::mFontFileCache.Count(), 0);
    EXPECT_EQ(Coverage("H", "I", 20), 0);
}

TEST_F(DrawnText, IsNothingWhereThereIsNothingToDraw)
{
    const BString empty = Write("empty.ttf", "").c_str();
    EXPECT_EQ(Coverage("", kSans, 20), 0);
    EXPECT_EQ(Coverage("I\xC3", kSans, 20), 0);
    EXPECT_EQ(Coverage("I", empty, 20), 0);
    EXPECT_EQ(Coverage("I", "/nowhere.ttf", 20), 0);
    for (const float size : {0.0f, 0.9f, -20.0f, std::nanf(""), 1e9f})
        EXPECT_EQ(Coverage("I", kSans, size), 0) << size;
    EXPECT_GT(Coverage("I", kSans, 20, std::nanf("")), 0) << "the front still stands";
}
