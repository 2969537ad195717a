#include "host/glsl/ImageLight.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace vx;

namespace
{
// The harmonics in the order of an image light's colours.
void Harmonics(const VERTEX& d, double (&y)[9])
{
    y[0] = 0.282095;
    y[1] = 0.488603 * d.y;
    y[2] = 0.488603 * d.z;
    y[3] = 0.488603 * d.x;
    y[4] = 1.092548 * d.x * d.y;
    y[5] = 1.092548 * d.y * d.z;
    y[6] = 0.315392 * (3 * d.z * d.z - 1);
    y[7] = 1.092548 * d.x * d.z;
    y[8] = 0.546274 * (d.x * d.x - d.y * d.y);
}

// What falls on a white surface, summed over directions all around.
double Gathered(const float* colors, int channel, const VERTEX& n)
{
    constexpr int kSteps = 200;
    constexpr double kPi = 3.141592653589793;
    double sum = 0;
    for (int i = 0; i < kSteps; ++i)
        for (int j = 0; j < 2 * kSteps; ++j)
        {
            const double z = 1 - 2 * (i + 0.5) / kSteps, around = kPi * (j + 0.5) / kSteps, r = std::sqrt(1 - z * z);
            const VERTEX d = {float(r * std::cos(around)), float(r * std::sin(around)), float(z)};
            double y[9], radiance = 0;
            Harmonics(d, y);
            for (int k = 0; k < 9; ++k)
                radiance += colors[3 * k + channel] * y[k];
            sum += radiance * std::max(Dot(n, d), 0.0f);
        }
    return sum * 4 * kPi / (2.0 * kSteps * kSteps) / kPi;
}

float Form(const float (&m)[16], const VERTEX& n)
{
    const float v[4] = {n.x, n.y, n.z, 1};
    float sum = 0;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            sum += v[i] * m[4 * i + j] * v[j];
    return sum;
}
} // namespace

TEST(ImageLight, IsWhatFallsInFromAllDirections)
{
    float colors[27];
    for (int i = 0; i < 27; ++i)
        colors[i] = 0.25f * float((i * 7) % 11) - 1;
    const VERTEX axes[3] = {{0, 0.6f, 0.8f}, {0, -0.8f, 0.6f}, {1, 0, 0}}; // of the light, as the viewer sees them
    const VERTEX normals[] = {{1, 0, 0}, {0, -1, 0}, {0, 0, 1}, {0.48f, 0.6f, 0.64f}};
    float forms[3][16] = {};
    AddImageLight(colors, axes, {1, 2, 0.5f}, forms);
    const double strength[3] = {1, 2, 0.5};
    for (const VERTEX& n : normals)
        for (int c = 0; c < 3; ++c)
        {
            const VERTEX inLight = {Dot(axes[0], n), Dot(axes[1], n), Dot(axes[2], n)};
            EXPECT_NEAR(Form(forms[c], n), strength[c] * Gathered(colors, c, inLight), 1e-3) << c;
        }

    // Another light adds to it: one of the same colour from everywhere.
    const float before = Form(forms[0], normals[3]);
    const float even[27] = {3.5449077f};
    AddImageLight(even, axes, {1, 1, 1}, forms);
    EXPECT_NEAR(Form(forms[0], normals[3]), before + 1, 1e-5);
}
