#include "shader/FilteredNoise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

namespace
{
using Mode = FilteredNoise::NoiseMode;

FilteredNoise Seeded(int x, int y, int z)
{
    std::srand(4711);
    return FilteredNoise(x, y, z);
}

// Cubic convolution as it is written down in books: the weight of a sample at distance d.
double Weight(double d)
{
    constexpr double a = -0.75;
    d = std::fabs(d);
    if (d <= 1)
        return (a + 2) * d * d * d - (a + 3) * d * d + 1;
    return d < 2 ? a * d * d * d - 5 * a * d * d + 8 * a * d - 4 * a : 0;
}

double Reference(const FilteredNoise& noise, double x, double y, double z)
{
    const auto near = [](double v) { return int(std::floor(v)); };
    double sum = 0;
    for (int k = near(z) - 2; k <= near(z) + 3; ++k)
        for (int j = near(y) - 2; j <= near(y) + 3; ++j)
            for (int i = near(x) - 2; i <= near(x) + 3; ++i)
                sum += Weight(x - i) * Weight(y - j) * Weight(z - k) * double(noise.noise3D(i, j, k));
    return std::clamp(sum, -1.0, 1.0);
}

// One voxel by single values and the rule of its mode.
int Voxel(const FilteredNoise& noise, int x, int y, int z, int width, int height, float scale, float amplitude,
          Mode mode)
{
    const float sx = float(x) / scale - 0.5f, sy = float(y) / scale - 0.5f, sz = float(z) / scale - 0.5f;
    const float n = noise.bicubicNoise3D(sx, sy, sz);
    const float dx = sx / float(width) - 0.5f, dy = sy / float(height) - 0.5f;
    const float values[] = {(n + 1) * 0.5f, std::fabs(n), 1 - 2 * std::fabs(n),
                            (noise.noise3D(int(sx), int(sy), int(sz)) + 1) * 0.5f,
                            2 * std::sqrt(dx * dx + dy * dy + dy * dy)};
    return std::min(int(std::clamp(values[mode], 0.0f, 1.0f) * amplitude * 255), 255);
}
} // namespace

TEST(FilteredNoise, LatticeIsTheNextRandomNumbersAndWraps)
{
    const FilteredNoise noise = Seeded(8, 4, 2);
    std::srand(4711);
    for (int i = 0; i < 64; ++i)
        EXPECT_EQ(noise.noise3D(i % 8, i / 8 % 4, i / 32), 2.0f * float(std::rand() & 32767) / 32767.0f - 1.0f);
    EXPECT_EQ(noise.noise2D(-1, 0), noise.noise2D(7, 0));
    EXPECT_EQ(noise.noise3D(9, -3, 5), noise.noise3D(1, 1, 1));
    FilteredNoise copy(noise);
    copy = noise;
    copy = *&copy;
    EXPECT_EQ(copy.noise3D(3, 2, 1), noise.noise3D(3, 2, 1));
    for (const FilteredNoise& empty : {FilteredNoise(0, 4, 4), FilteredNoise(-2, -2, 4)})
        EXPECT_EQ(empty.noise3D(1, 1, 1) + empty.bicubicNoise2D(0.5f, 1) + empty.bicubicNoise3D(1, 2, 3), 0);
}

TEST(FilteredNoise, IsCubicConvolutionOfItsLattice)
{
    const FilteredNoise noise = Seeded(8, 16, 4);
    std::srand(1);
    const auto coordinate = [] { return float(std::rand() % 20000) / 500.0f - 20.0f; };
    for (int i = 0; i < 400; ++i)
    {
        const float x = coordinate(), y = coordinate(), z = coordinate();
        // Floats of 20 with 24 bits leave 1e-6 in a fraction; the kernel's slope is below 2, and 64 values add up.
        EXPECT_NEAR(noise.bicubicNoise3D(x, y, z), Reference(noise, double(x), double(y), double(z)), 2e-5);
        EXPECT_NEAR(noise.bicubicNoise2D(x, y), Reference(noise, double(x), double(y), 0), 2e-5);
        const int ix = int(x), iy = int(y), iz = int(z);
        EXPECT_EQ(noise.bicubicNoise2D(float(ix), float(iy)), noise.noise2D(ix, iy));
        EXPECT_EQ(noise.bicubicNoise3D(float(ix), float(iy), float(iz)), noise.noise3D(ix, iy, iz));
    }
    for (const float odd : {1e30f, -1e30f, 3e9f, std::numeric_limits<float>::infinity(), std::nanf("")})
        EXPECT_LE(std::fabs(noise.bicubicNoise3D(odd, 0.5f, odd)), 1) << odd;
}

TEST(FilteredNoise, VolumesHaveTheBytesOfSingleValues)
{
    struct Row
    {
        int lattice[3], size[3];
        float scale, amplitude;
    };
    for (const Row& row : {Row{{16, 16, 16}, {24, 20, 28}, 4, 1}, Row{{16, 8, 4}, {17, 9, 23}, 0.3f, 0.5f},
                           Row{{4, 4, 4}, {16, 16, 16}, 1, 1.7f}, Row{{2, 1, 2}, {9, 9, 9}, 2.5f, 1},
                           Row{{6, 5, 7}, {11, 12, 13}, -1.5f, 1}, Row{{8, 8, 8}, {1, 1, 1}, 1, 1}})
    {
        SCOPED_TRACE(testing::Message() << row.scale << " " << row.size[0]);
        const FilteredNoise noise = Seeded(row.lattice[0], row.lattice[1], row.lattice[2]);
        const auto [width, height, depth] = row.size;
        for (int mode = 0; mode < 5; ++mode)
        {
            BArray<std::uint8_t> volume;
            ASSERT_TRUE(noise.noiseVolume3D(width, height, depth, row.scale, row.amplitude, Mode(mode), volume));
            ASSERT_EQ(volume.Count(), std::int64_t(width) * height * depth);
            int wrong = 0;
            for (int i = 0; i < volume.Count(); ++i)
                wrong += volume[i] != Voxel(noise, i % width, i / width % height, i / width / height, width, height,
                                            row.scale, row.amplitude, Mode(mode));
            EXPECT_EQ(wrong, 0) << "mode " << mode;
        }
    }
}

TEST(FilteredNoise, RefusesWhatMakesNoVolume)
{
    FilteredNoise noise = Seeded(4, 4, 4);
    BArray<std::uint8_t> volume;
    EXPECT_FALSE(noise.noiseVolume3D(0, 4, 4, 1, 1, FilteredNoise::NoiseSmooth, volume));
    EXPECT_FALSE(noise.noiseVolume3D(4, 4, 4, 0, 1, FilteredNoise::NoiseSmooth, volume));
    EXPECT_FALSE(noise.noiseVolume3D(4, 4, 4, std::nanf(""), 1, FilteredNoise::NoiseSmooth, volume));
    EXPECT_FALSE(noise.noiseVolume3D(1 << 30, 1 << 30, 1 << 30, 1, 1, FilteredNoise::NoiseRadial, volume));
    EXPECT_EQ(noise.createNoiseTexture3D(4, 4, -1, 1, 1, FilteredNoise::NoiseSmooth), 0u);
    testing::internal::CaptureStderr();
    EXPECT_EQ(noise.createNoiseTexture3D(4, 4, 4, 1, 1, Mode(5)), 0u);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Noise mode not supported\n");
    EXPECT_EQ(noise.texture(), 0u);
    for (const float amplitude : {std::nanf(""), -1.0f, 0.0f}) // nothing below 0 or undefined gets into a byte
    {
        ASSERT_TRUE(noise.noiseVolume3D(4, 4, 4, 1, amplitude, FilteredNoise::NoiseSmooth, volume));
        EXPECT_EQ(*std::max_element(volume.begin(), volume.end()), 0) << amplitude;
    }
    ASSERT_TRUE(FilteredNoise(0, 0, 0).noiseVolume3D(2, 2, 2, 1, 1, FilteredNoise::NoiseSmooth, volume));
    EXPECT_EQ(volume[7], 127) << "an empty lattice is flat";
}

TEST(FilteredNoise, SeedsAfterItsLatticeWasFilled)
{
    FilteredNoise noise = Seeded(4, 4, 4);
    noise.createNoiseTexture3D(0, 0, 0, 1, 1, FilteredNoise::NoiseSmooth);
    const int next = std::rand();
    std::srand(250673);
    EXPECT_EQ(next, std::rand());
}
