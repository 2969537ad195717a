#include "engine/VXCamera.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(Camera, FieldOfViewFollowsTheFocalLength)
{
    struct Row
    {
        float focal, degrees;
        bool ortho;
    };
    // 2 atan(1 / 2f), worked out apart.
    for (const Row& row : {Row{1, 53.130102f, false}, {0.5f, 90, false}, {0, 90, true}, {2, 28.072487f, false}})
    {
        VXCamera camera;
        camera.SetFocal(row.focal);
        EXPECT_FLOAT_EQ(camera.FOV(), row.degrees) << row.focal;
        EXPECT_EQ(camera.IsOrtho(), row.ortho) << row.focal;
    }
}

TEST(Camera, ViewTransformMovesAwayTurnsAndThenMovesToTheOrigin)
{
    VXCamera camera;
    Mat44 quarter;
    MAT_Identity(quarter);
    MAT_RotateY(quarter, 1.5707963f); // z becomes x
    camera.SetRotMat(quarter);
    camera.SetModelDistance(10);
    camera.SetLocalOrigin(1, 2, 3);
    struct Row
    {
        bool negate;
        VERTEX eye;
    };
    for (const Row& row : {Row{false, {11, 2, 3}}, {true, {-9, 2, 3}}})
    {
        camera.CalcViewTransform(row.negate);
        VERTEX eye;
        MAT_VertTransform(&eye, &eye, 1, camera.GetTransform());
        EXPECT_NEAR(Length(eye - row.eye), 0, 1e-5f);
    }
}

TEST(Camera, ScreenToWorldUndoesTheProjection)
{
    VXCamera camera;
    Mat44 full, projection;
    MAT_Identity(full);
    MAT_RotateY(full, 0.4f);
    MAT_Translate(full, 0, 0, -5);
    MAT_Perspective(projection, 0.9f, 1.5f, 0.5f, 50);
    MAT_Concat4x4(full, projection, full);
    camera.SetFullCameraMat(full);
    for (const VERTEX& world : {VERTEX{0, 0, 0}, {1, -0.5f, 0.25f}, {-2, 1, -3}})
    {
        VERTEX screen, back;
        MAT_VertTransform(&world, &screen, 1, full);
        screen *= 1.0f / MAT_VertTransformW(world, full);
        camera.ScreenToWorld(&screen, &back);
        EXPECT_NEAR(Length(back - world), 0, 1e-3f); // depth near 1 leaves some 12 bits of the float
    }
    camera.ScreenToWorld(nullptr, nullptr); // nowhere to put it
}

TEST(Camera, ScreenToWorldOfAnOrthographicCameraIsItsPlace)
{
    VXCamera camera;
    Mat44 world;
    MAT_Identity(world);
    MAT_Translate(world, 7, 8, 9);
    camera.SetWorldMat(world);
    camera.SetFocal(0);
    VERTEX out;
    for (const VERTEX& in : {VERTEX{0, 0, 0}, {0.5f, -0.5f, 1}})
    {
        camera.ScreenToWorld(&in, &out);
        EXPECT_EQ(out, (VERTEX{7, 8, 9}));
    }
}

TEST(Camera, FocalPointLeavesThePointAlone)
{
    VERTEX p = {1, 2, 3};
    VXCamera().GetFocalPoint(p);
    EXPECT_EQ(p, (VERTEX{1, 2, 3}));
}
