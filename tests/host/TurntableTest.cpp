#include "host/Turntable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace vx;

TEST(Turntable, KeepsWhatTurnsInThePictureAndFillsIt)
{
    const std::vector<VERTEX> points = {{5, 0, 1}, {5, 3, 1}, {7, 0, 1.5f}, {6, 1, 4}, {5.5f, 2.5f, 2}};
    for (const UpAxis up : {UpAxis::Y, UpAxis::Z})
        for (const bool ortho : {false, true})
        {
            ViewOptions options;
            options.up = up;
            options.ortho = ortho;
            options.azimuth = 50;
            const float aspect = 1.5f;
            const Turntable turntable(points, {}, aspect, options);
            double widest = 0;
            for (int degrees = 0; degrees < 360; degrees += 5)
            {
                const View view = turntable.At(float(degrees));
                const ViewAxes axes(options.azimuth + float(degrees), options.elevation, up);
                EXPECT_NEAR(view.toView[0][2], axes.back.x, 1e-5) << "from where its azimuth says";
                EXPECT_NEAR(view.toView[2][2], axes.back.z, 1e-5);
                Mat44 toClip;
                MAT_Concat4x4(view.toView, view.projection, toClip);
                for (const VERTEX& p : points)
                {
                    VERTEX clip;
                    MAT_VertTransform(&p, &clip, 1, toClip);
                    const double w = double(MAT_VertTransformW(p, toClip));
                    ASSERT_LE(std::fabs(double(clip.z)), w) << degrees;
                    widest = std::max({widest, std::fabs(clip.x / w), std::fabs(clip.y / w)});
                }
            }
            EXPECT_GT(widest, 0.95 * double(options.fill));
            EXPECT_LT(widest, 1.01 * double(options.fill));
        }
}
