#include "engine/VXBBox.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace
{
std::vector<VERTEX> Corners(const VXBBox& box)
{
    std::vector<VERTEX> corners;
    for (int k = 0; k < 8; ++k)
        corners.push_back(
            {k & 1 ? box.Max().x : box.Min().x, k & 2 ? box.Max().y : box.Min().y, k & 4 ? box.Max().z : box.Min().z});
    return corners;
}

void ExpectSame(const VXBBox& a, const VXBBox& b, float tolerance)
{
    EXPECT_EQ(a.Initialized(), b.Initialized());
    EXPECT_NEAR(Length(a.Min() - b.Min()), 0, tolerance);
    EXPECT_NEAR(Length(a.Max() - b.Max()), 0, tolerance);
}
} // namespace

TEST(BBox, AnEmptyBoxStaysEmptyUntilSomethingIsPutIn)
{
    VXBBox box;
    Mat44 m;
    MAT_Identity(m);
    box.Offset(1, 2, 3);
    box.Scale(2, 2, 2);
    box.Transform(m);
    box.Extend(VXBBox());
    box.Extend(nullptr, 0);
    EXPECT_FALSE(box.Initialized());
    box.Extend(VERTEX{1, 2, 3});
    ExpectSame(box, VXBBox({1, 2, 3}, {1, 2, 3}), 0);
}

TEST(BBox, ExtendIsTheSameByPointsByArrayAndByBoxes)
{
    const VERTEX points[] = {{1, -2, 3}, {-4, 5, 0}, {0, 0, -6}, {1, 1, 1}};
    VXBBox one, all, boxes;
    for (const VERTEX& p : points)
        one.Extend(p);
    all.Extend(points, 4);
    boxes.Extend(VXBBox({-4, -2, 0}, {1, 5, 3}));
    boxes.Extend(VXBBox({0, 0, -6}, {1, 1, 1}));
    ExpectSame(one, VXBBox({-4, -2, -6}, {1, 5, 3}), 0);
    ExpectSame(all, one, 0);
    ExpectSame(boxes, one, 0);
    one.Extend(one);
    ExpectSame(one, all, 0);
}

TEST(BBox, ScalesAboutItsCentreAndSwapsCornersForANegativeFactor)
{
    VXBBox box({0, 0, 0}, {2, 4, 8});
    box.Scale(2, 0.5f, -1);
    ExpectSame(box, VXBBox({-1, 1, 8}, {3, 3, 0}), 0);
    box.Offset(1, -1, 0);
    ExpectSame(box, VXBBox({0, 0, 8}, {4, 2, 0}), 0);
}

TEST(BBox, TransformIsTheBoxOfTheTransformedCorners)
{
    const VXBBox box({-1, -2, -3}, {4, 5, 6});
    for (const float angle : {0.0f, 0.3f, 1.6f, 3.5f})
    {
        SCOPED_TRACE(angle);
        Mat44 m;
        MAT_Identity(m);
        MAT_Scale(m, 2, -1, 0.5f);
        MAT_RotateX(m, angle);
        MAT_RotateZ(m, 2 * angle);
        MAT_Translate(m, 10, -20, 30);
        VXBBox transformed = box, expected;
        transformed.Transform(m);
        for (VERTEX corner : Corners(box))
        {
            MAT_VertTransform(&corner, &corner, 1, m);
            expected.Extend(corner);
        }
        ExpectSame(transformed, expected, 1e-5f); // sums of four products of size up to 30, in another order
    }
}

TEST(BBox, RaysHitOrMissWithTheirEntryAndExit)
{
    struct Row
    {
        const char* what;
        VERTEX dir, origin;
        bool hit;
        float tNear, tFar; // where it hits
    };
    const VXBBox box({-1, -2, -3}, {1, 2, 3});
    const float far = std::numeric_limits<float>::max();
    for (const Row& row : {
             Row{"along x", {1, 0, 0}, {-5, 0, 0}, true, 4, 6},
             {"against x", {-1, 0, 0}, {5, 0, 0}, true, 4, 6},
             {"along y, twice as fast", {0, 2, 0}, {0, -6, 0}, true, 2, 4},
             {"along z", {0, 0, 1}, {0, 0, -4}, true, 1, 7},
             {"beside in y", {1, 0, 0}, {-5, 2.5f, 0}, false, 0, 0},
             {"on the face", {1, 0, 0}, {-5, 2, 0}, true, 4, 6},
             {"diagonal", {1, 2, 3}, {-2, -4, -6}, true, 1, 3},
             {"past a corner", {1, 1, 0}, {-5, 0, 0}, false, 0, 0},
             {"almost parallel counts as parallel", {1, 1e-7f, 0}, {-5, 3, 0}, false, 0, 0},
         })
    {
        SCOPED_TRACE(row.what);
        float tNear = 0, tFar = far;
        EXPECT_EQ(box.Intersect(row.dir, row.origin, tNear, tFar), row.hit);
        if (row.hit)
        {
            EXPECT_FLOAT_EQ(tNear, row.tNear);
            EXPECT_FLOAT_EQ(tFar, row.tFar);
        }
    }
}

TEST(BBox, ABoxBehindTheOriginIsMissed)
{
    const VXBBox box({-1, -1, -1}, {1, 1, 1});
    float tNear = 0, tFar = 100;
    EXPECT_FALSE(box.Intersect({1, 0, 0}, {5, 0, 0}, tNear, tFar));
    tNear = -100; // a start before the origin fails as soon as an axis is entered there
    tFar = 100;
    EXPECT_FALSE(box.Intersect({1, 0, 0}, {5, 0, 0}, tNear, tFar));
}
