// Matrices and the fast inverse square root.
#include "base/MAT.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace
{
void Fill(Mat44 m, const float (&values)[16])
{
    for (int i = 0; i < 16; ++i)
        m[i / 4][i % 4] = values[i];
}

VERTEX Transformed(const VERTEX& p, const Mat44 m)
{
    VERTEX out;
    MAT_VertTransform(&p, &out, 1, m);
    return out;
}

void ExpectNear(const VERTEX& a, const VERTEX& b, float tolerance)
{
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
    EXPECT_NEAR(a.z, b.z, tolerance);
}

constexpr float kQuarterTurn = 1.57079632679f;
} // namespace

TEST(Matrix, RotatesCounterClockwiseSeenAgainstTheAxis)
{
    struct Row
    {
        void (*rotate)(Mat44, float);
        VERTEX from, to;
    };
    const Row rows[] = {
        {MAT_RotateX, {0, 1, 0}, {0, 0, 1}},
        {MAT_RotateY, {0, 0, 1}, {1, 0, 0}},
        {MAT_RotateZ, {1, 0, 0}, {0, 1, 0}},
    };
    for (const Row& row : rows)
    {
        Mat44 m;
        MAT_Identity(m);
        row.rotate(m, kQuarterTurn);
        ExpectNear(Transformed(row.from, m), row.to, 1e-7f);
    }
}

TEST(Matrix, AppliesStepsInTheOrderInWhichTheyAreWritten)
{
    Mat44 m;
    MAT_Identity(m);
    MAT_Scale(m, 2, 3, 4);
    MAT_RotateZ(m, kQuarterTurn);
    MAT_Translate(m, 10, 20, 30);
    // (1 1 1) scaled: (2 3 4), turned: (-3 2 4), moved: (7 22 34)
    ExpectNear(Transformed({1, 1, 1}, m), {7, 22, 34}, 1e-5f);
    EXPECT_EQ(m[3][0], 10);
    EXPECT_EQ(m[3][1], 20);
    EXPECT_EQ(m[3][2], 30);
}

TEST(Matrix, ConcatenatesIntoEitherOfItsInputs)
{
    Mat44 a, b, expected;
    Fill(a, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
    Fill(b, {2, 0, 1, 0, 0, 1, 0, 3, 1, 0, 0, 0, 0, 4, 0, 1});
    Fill(expected, {5, 18, 1, 10, 17, 38, 5, 26, 29, 58, 9, 42, 41, 78, 13, 58}); // by hand
    Mat44 out, intoA, intoB;
    MAT_Copy(a, intoA);
    MAT_Copy(b, intoB);
    MAT_Concat4x4(a, b, out);
    MAT_Concat4x4(intoA, b, intoA);
    MAT_Concat4x4(a, intoB, intoB);
    for (int i = 0; i < 16; ++i)
    {
        EXPECT_EQ(out[i / 4][i % 4], expected[i / 4][i % 4]) << i;
        EXPECT_EQ(intoA[i / 4][i % 4], expected[i / 4][i % 4]) << i;
        EXPECT_EQ(intoB[i / 4][i % 4], expected[i / 4][i % 4]) << i;
    }
    MAT_Transpose(a, a);
    EXPECT_EQ(a[0][3], 13);
    EXPECT_EQ(a[3][0], 4);
}

TEST(Matrix, InverseUndoesWhateverTheScale)
{
    std::mt19937 random(5);
    std::uniform_real_distribution<float> number(-1, 1);
    for (const float scale : {1e-12f, 1.0f, 1e9f})
        for (int round = 0; round < 50; ++round)
        {
            Mat44 m, inverse;
            MAT_Identity(m);
            MAT_Scale(m, scale, scale * 3, scale / 7);
            MAT_RotateX(m, 3 * number(random));
            MAT_RotateY(m, 3 * number(random));
            MAT_Translate(m, number(random), 1e3f * number(random), number(random));
            if (round % 2)
                m[0][3] = scale / 4; // no longer affine
            ASSERT_TRUE(MAT_Inverse(m, inverse)) << scale;
            for (int row = 0; row < 4; ++row)
                for (int column = 0; column < 4; ++column)
                {
                    double sum = 0, size = 0;
                    for (int k = 0; k < 4; ++k)
                    {
                        sum += double(m[row][k]) * double(inverse[k][column]);
                        size += std::abs(double(m[row][k]) * double(inverse[k][column]));
                    }
                    // The inverse is rounded to float, half a unit of 2^-24 of what is summed; where all of it cancels,
                    // what the elimination in double leaves shows instead.
                    ASSERT_NEAR(sum, row == column ? 1 : 0, 6.1e-8 * size + 1e-14) << scale << " " << round;
                }
            MAT_Inverse(m, m);
            EXPECT_EQ(m[1][2], inverse[1][2]) << "in place";
        }
}

TEST(Matrix, SingularOnesBecomeTheIdentity)
{
    const float rows[][16] = {
        {0},                                              // nothing
        {1, 2, 3, 4, 2, 4, 6, 8, 0, 0, 1, 0, 0, 0, 0, 1}, // proportional rows
        {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 0, 0, 0, 1}, // arithmetic progression: rank 2, not obvious in floats
        {0.1f, 0.2f, 0.3f, 0, 0.2f, 0.4f, 0.6f, 0, 1, 0, 1, 0, 0, 0, 0, 1},
        {1, 0, 0, 0, 0, std::numeric_limits<float>::quiet_NaN(), 0, 0, 0, 0, 1, 0, 0, 0, 0, 1},
        {1e-45f, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, // its inverse does not fit a float
    };
    for (const auto& values : rows)
    {
        SCOPED_TRACE(&values - rows);
        Mat44 m, out;
        Fill(m, values);
        EXPECT_FALSE(MAT_Inverse(m, out));
        for (int i = 0; i < 16; ++i)
            EXPECT_EQ(out[i / 4][i % 4], i % 5 == 0 ? 1.0f : 0.0f);
    }
}

TEST(Matrix, InverseOfTheUpperPartLeavesTheRest)
{
    Mat44 m, out;
    Fill(m, {0, 2, 0, 5, 4, 0, 0, 6, 0, 0, 8, 7, 9, 10, 11, 0});
    ASSERT_TRUE(MAT_Inverse(m, out, 3)); // the 4x4 matrix is none of its business
    const float expected[16] = {0, 0.25f, 0, 5, 0.5f, 0, 0, 6, 0, 0, 0.125f, 7, 9, 10, 11, 0};
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(out[i / 4][i % 4], expected[i]) << i;
}

TEST(Matrix, ProjectionsMapTheViewVolumeToTheClipCube)
{
    Mat44 m;
    MAT_Perspective(m, kQuarterTurn, 2, 1, 101); // at distance d: half as high as d, so d high and 2 d wide
    struct Row
    {
        VERTEX p, clip;
    };
    for (const Row& row : {Row{{2, 1, -1}, {1, 1, -1}}, Row{{-202, 101, -101}, {-1, 1, 1}}})
    {
        const float w = MAT_VertTransformW(row.p, m);
        ExpectNear(Transformed(row.p, m) * (1 / w), row.clip, 1e-5f);
    }
    MAT_Ortho(m, 4, 3, 2, 12);
    ExpectNear(Transformed({4, 3, -2}, m), {1, 1, -1}, 1e-6f);
    ExpectNear(Transformed({-4, -3, -12}, m), {-1, -1, 1}, 1e-6f);
    EXPECT_EQ(MAT_VertTransformW({4, 3, -2}, m), 1);
}

TEST(FastSqrtInv, IsCloseEverywhere)
{
    // Every exponent with mantissas that step evenly: the error of the guess depends on the mantissa and the
    // exponent's last bit only.
    double worst = 0;
    for (std::uint32_t bits = 0x00800000; bits < 0x7F800000; bits += 9973)
    {
        const float x = std::bit_cast<float>(bits);
        worst = std::max(worst, std::abs(double(MATH_FastSqrtInv(x)) * std::sqrt(double(x)) - 1));
    }
    EXPECT_LT(worst, 3e-7);
    EXPECT_TRUE(std::isfinite(MATH_FastSqrtInv(0)));
    EXPECT_TRUE(std::isfinite(MATH_FastSqrtInv(std::numeric_limits<float>::denorm_min())));
    EXPECT_EQ(0 * MATH_FastSqrtInv(0), 0);
    EXPECT_TRUE(std::isnan(MATH_FastSqrtInv(std::numeric_limits<float>::quiet_NaN())));
}
