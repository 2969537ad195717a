#include "host/gl/Framebuffer.h"
#include "host/gl/LoadGL.h"
#include "host/window/OffscreenContext.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

using namespace vx;

TEST(OffscreenContext, DrawsIntoAFramebufferOfItsOwn)
{
    OffscreenContext context;
    if (!context.Create())
        GTEST_SKIP() << context.Error().CString();
    EXPECT_NE(context.Description(), "");
    for (const int samples : {1, 4})
    {
        SCOPED_TRACE(samples);
        Framebuffer target;
        ASSERT_EQ(target.Create(37, 21, samples), "");
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
        glEnable(GL_SCISSOR_TEST);
        glScissor(0, 20, 37, 1); // OpenGL's last row is the picture's first
        glClearColor(0.5f, 0.25f, 0, 0.5f);
        glClear(GL_COLOR_BUFFER_BIT);
        glDisable(GL_SCISSOR_TEST);
        const PicturePtr picture = target.ReadBack(true);
        ASSERT_TRUE(picture);
        const std::uint8_t expected[4] = {255, 128, 0, 128}; // colours are divided by alpha
        for (int c = 0; c < 4; ++c)
        {
            EXPECT_NEAR(picture->Row(0)[4 * 36 + c], expected[c], 1) << c;
            EXPECT_EQ(picture->Row(1)[c], 0) << c;
        }
        EXPECT_EQ(target.ReadBack(false)->Row(1)[3], 255);
        EXPECT_NE(target.Create(0, 5, samples), "");
        EXPECT_NE(target.Create(1 << 20, 5, samples), "");
        EXPECT_EQ(PendingGLErrors(), "");
    }
}

TEST(OffscreenContext, OneOfTwoMayEndFirst)
{
    OffscreenContext first, second;
    if (!first.Create())
        GTEST_SKIP() << first.Error().CString();
    {
        OffscreenContext passing;
        ASSERT_TRUE(passing.Create());
    }
    ASSERT_TRUE(first.MakeCurrent());
    Framebuffer target;
    EXPECT_EQ(target.Create(8, 8, 4), "");
    target.Release();
    first.Release();
    EXPECT_TRUE(second.Create()) << second.Error().CString();
}
