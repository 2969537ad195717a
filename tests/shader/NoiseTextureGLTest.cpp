#include "host/gl/LoadGL.h"
#include "host/window/OffscreenContext.h"
#include "shader/FilteredNoise.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <vector>

TEST(NoiseTexture, HoldsTheVolumeUnderItsOneName)
{
    vx::OffscreenContext context;
    if (!context.Create())
        GTEST_SKIP() << context.Error().CString();
    FilteredNoise noise(8, 8, 8);
    for (const int size : {16, 7}) // the second takes the place of the first; its rows are not aligned
    {
        const auto mode = FilteredNoise::NoiseSmooth;
        ASSERT_EQ(noise.createNoiseTexture3D(size, size, size, 2, 1, mode), FilteredNoise::kTextureName);
        EXPECT_EQ(noise.texture(), FilteredNoise::kTextureName);
        BArray<std::uint8_t> expected;
        ASSERT_TRUE(noise.noiseVolume3D(size, size, size, 2, 1, mode, expected));
        GLint width = 0, depth = 0, wrap = 0;
        glBindTexture(GL_TEXTURE_3D, FilteredNoise::kTextureName);
        glGetTexLevelParameteriv(GL_TEXTURE_3D, 0, GL_TEXTURE_WIDTH, &width);
        glGetTexLevelParameteriv(GL_TEXTURE_3D, 0, GL_TEXTURE_DEPTH, &depth);
        glGetTexParameteriv(GL_TEXTURE_3D, GL_TEXTURE_WRAP_R, &wrap);
        EXPECT_EQ(width, size);
        EXPECT_EQ(depth, size);
        EXPECT_EQ(wrap, GL_REPEAT);
        std::vector<std::uint8_t> bytes(std::size_t(expected.Count()));
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glGetTexImage(GL_TEXTURE_3D, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, bytes.data());
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), expected.begin()));
        EXPECT_EQ(vx::PendingGLErrors(), "");
    }
}
