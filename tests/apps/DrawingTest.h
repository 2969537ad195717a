// Tests of verbs that draw.
#pragma once

#include "Command.h"

#include "host/image/Picture.h"
#include "host/window/OffscreenContext.h"

#include <gtest/gtest.h>

/// Skips, saying so, where there is no OpenGL.
class DrawingTest : public testing::Test
{
protected:
    void SetUp() override
    {
        vx::OffscreenContext context;
        if (!context.Create())
            GTEST_SKIP() << "no OpenGL: " << context.Error().Std();
        context.Release();
    }

    vx::PicturePtr Opened(const std::string& name)
    {
        BString error;
        vx::PicturePtr picture = vx::ReadPicture(BPath(BString((mPlace.Folder() / name).string())), error);
        EXPECT_TRUE(picture) << name << ": " << error.Std();
        return picture;
    }

    Workplace mPlace;
};
