#include "host/PreviewSetup.h"

#include "engine/VXCamera.h"
#include "engine/VXLight.h"
#include "engine/VXScene.h"
#include "mesh/VXGeom.h"
#include "tests/support/Meshes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace vx;

namespace
{
struct Cloud
{
    const char* name;
    std::vector<VERTEX> points;
};

std::vector<VERTEX> Scattered(float sx, float sy, float sz, const VERTEX& by, unsigned seed)
{
    std::mt19937 random(seed);
    const auto unit = [&] { return float(random() % 2001) / 1000 - 1; };
    std::vector<VERTEX> points(500);
    for (VERTEX& p : points)
        p = VERTEX{sx * unit(), sy * unit(), sz * unit()} + by;
    return points;
}

std::vector<Cloud> Clouds()
{
    return {{"round", Scattered(1, 1, 1, {0, 0, 0}, 1)},
            {"long and far away", Scattered(10, 1, 1, {300, -20, 50}, 2)},
            {"tall and tiny", Scattered(0.001f, 0.01f, 0.001f, {0, 0, 0}, 3)},
            {"flat", Scattered(5, 0, 5, {0, 7, 0}, 4)},
            {"a stick", {{-500, -500, -500}, {500, 500, 500}}},
            {"two thousand kilometres", Scattered(1e6f, 1e6f, 2e5f, {1e6f, 0, 0}, 5)}};
}

struct Frame
{
    double left = INFINITY, right = -INFINITY, bottom = INFINITY, top = -INFINITY, nearest = INFINITY,
           farthest = -INFINITY;
    double Width() const { return (right - left) / 2; }
    double Height() const { return (top - bottom) / 2; }
};

// What the points take of clip space, in shares of the picture.
Frame Projected(const std::vector<VERTEX>& points, const View& view)
{
    Frame frame;
    for (const VERTEX& p : points)
    {
        Mat44 m;
        MAT_Concat4x4(view.toView, view.projection, m);
        const double in[4] = {p.x, p.y, p.z, 1};
        double out[4] = {};
        for (int c = 0; c < 4; ++c)
            for (int r = 0; r < 4; ++r)
                out[c] += in[r] * double(m[r][c]);
        EXPECT_GT(out[3], 0) << "behind the camera";
        frame.left = std::min(frame.left, out[0] / out[3]);
        frame.right = std::max(frame.right, out[0] / out[3]);
        frame.bottom = std::min(frame.bottom, out[1] / out[3]);
        frame.top = std::max(frame.top, out[1] / out[3]);
        frame.nearest = std::min(frame.nearest, out[2] / out[3]);
        frame.farthest = std::max(frame.farthest, out[2] / out[3]);
    }
    return frame;
}
} // namespace

TEST(FitView, FillsThePictureCentredFromAnywhere)
{
    const std::vector<Cloud> clouds = Clouds();
    for (const Cloud& cloud : clouds)
        for (const float aspect : {1.0f, 16.0f / 9, 0.5f})
            for (const float elevation : {-40.0f, 0.0f, 20.0f, 89.0f})
                for (const bool ortho : {false, true})
                {
                    SCOPED_TRACE(testing::Message() << cloud.name << ", aspect " << aspect << ", elevation "
                                                    << elevation << (ortho ? ", parallel" : ""));
                    ViewOptions options;
                    options.elevation = elevation;
                    options.ortho = ortho;
                    for (const UpAxis up : {UpAxis::Y, UpAxis::Z})
                    {
                        options.up = up;
                        const View view = FitView(cloud.points, {}, aspect, options);
                        const Frame frame = Projected(cloud.points, view);
                        EXPECT_NEAR(std::max(frame.Width(), frame.Height()), 0.83, 0.006);
                        EXPECT_NEAR(frame.left + frame.right, 0, 0.006);
                        EXPECT_NEAR(frame.bottom + frame.top, 0, 0.006);
                        EXPECT_GT(frame.nearest, -1);
                        EXPECT_LT(frame.farthest, 1);
                        // Depth has digits to spare only when the planes are close to the content.
                        if (&cloud.points == &clouds[0].points)
                        {
                            EXPECT_GT(frame.farthest - frame.nearest, 1.2);
                        }
                    }
                }
}

TEST(FitView, KeepsTheGroundBetweenThePlanes)
{
    const std::vector<VERTEX> model = Scattered(1, 1, 1, {0, 1, 0}, 7);
    const std::vector<VERTEX> ground = {{-3, 0, -3}, {3, 0, -3}, {-3, 0, 3}, {3, 0, 3}};
    const View view = FitView(model, ground, 1.5f, {});
    const Frame frame = Projected(ground, view);
    EXPECT_GE(frame.nearest, -1);
    EXPECT_LE(frame.farthest, 1);
    EXPECT_NEAR(Projected(model, view).Height(), 0.83, 0.006) << "the ground does not change the frame";
}

TEST(FitView, ZoomEnlargesAboutTheMiddle)
{
    const std::vector<VERTEX> points = Scattered(1, 1, 1, {0, 0, 0}, 9);
    ViewOptions options;
    const Frame one = Projected(points, FitView(points, {}, 1, options));
    options.zoom = 2;
    const Frame two = Projected(points, FitView(points, {}, 1, options));
    EXPECT_NEAR(two.Width(), 2 * one.Width(), 0.01);
    EXPECT_NEAR(two.Height(), 2 * one.Height(), 0.01);
}

TEST(FitView, AnglesTurnAsSaid)
{
    const VERTEX origin[1] = {{0, 0, 0}};
    struct Row
    {
        float azimuth, elevation;
        UpAxis up;
        VERTEX eye; ///< direction in which the camera stands
    };
    const Row rows[] = {
        {0, 0, UpAxis::Y, {0, 0, 1}},    {90, 0, UpAxis::Y, {1, 0, 0}}, {0, 90, UpAxis::Y, {0, 1, 0}},
        {0, 0, UpAxis::Z, {0, -1, 0}},   {90, 0, UpAxis::Z, {1, 0, 0}}, {0, 90, UpAxis::Z, {0, 0, 1}},
        {180, 0, UpAxis::Y, {0, 0, -1}},
    };
    for (const Row& row : rows)
    {
        ViewOptions options;
        options.azimuth = row.azimuth;
        options.elevation = row.elevation;
        options.up = row.up;
        const View view = FitView(origin, {}, 1, options);
        Mat44 toWorld;
        MAT_Inverse(view.toView, toWorld);
        const VERTEX eye = {toWorld[3][0], toWorld[3][1], toWorld[3][2]};
        EXPECT_NEAR(Length(eye * (1 / Length(eye)) - row.eye), 0, 1e-3f) << row.azimuth << ", " << row.elevation;
    }
}

TEST(FitView, FramesSomethingWhateverItIsGiven)
{
    const float nan = std::nanf("");
    const std::vector<VERTEX> clouds[] = {{}, {{nan, 0, 0}}, {{1, 2, 3}}, {{INFINITY, 0, 0}, {1, 1, 1}, {2, 2, 2}}};
    for (const std::vector<VERTEX>& points : clouds)
    {
        const View view = FitView(points, {}, 1.5f, {});
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c)
            {
                EXPECT_TRUE(std::isfinite(view.toView[r][c]));
                EXPECT_TRUE(std::isfinite(view.projection[r][c]));
            }
        EXPECT_GT(view.nearest, 0);
        EXPECT_GT(view.farthest, view.nearest);
    }
}

TEST(PlaceLights, FollowTheCameraAndAreMadeOnce)
{
    VXScene scene;
    const VERTEX points[] = {{-1, -1, -1}, {1, 1, 1}};
    std::vector<VERTEX> seen[2];
    for (int turn = 0; turn < 2; ++turn)
    {
        ViewOptions options;
        options.azimuth = 35.0f + 100.0f * float(turn);
        const View view = FitView(points, {}, 1, options);
        PlaceCamera(scene, view);
        PlaceLights(scene, view);
        ASSERT_EQ(scene.NumLights(), 3);
        Mat44 turned;
        MAT_Copy(view.toView, turned);
        turned[3][0] = turned[3][1] = turned[3][2] = 0;
        for (int i = 0; i < 3; ++i)
        {
            VERTEX direction = scene.Light(i)->GetDirection();
            MAT_VertTransform(&direction, &direction, 1, turned);
            seen[turn].push_back(direction);
        }
    }
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(Length(seen[0][i] - seen[1][i]), 0, 1e-5f);
    EXPECT_LT(seen[0][0].x, 0) << "the key light stands on the left";
    EXPECT_GT(seen[0][0].y, 0) << "and above";
    const auto strength = [&](int i) { return scene.Light(i)->LightColor().MixedValue(); };
    EXPECT_NEAR(strength(0) / strength(1), 3, 0.8);
    EXPECT_NEAR(strength(0) / strength(2), 3, 0.8);
    EXPECT_GT(scene.Light(0)->LightColor().Red(), scene.Light(0)->LightColor().Blue()) << "the key light is warm";
}

TEST(AddGround, LiesUnderTheModelAndOutOfTheFrame)
{
    for (const UpAxis up : {UpAxis::Y, UpAxis::Z})
    {
        VXScene scene;
        const GeomPtr record = Moved(Cube(), {5, 6, 7}).Record();
        VXObject* const object = new VXObject;
        VXGeom mesh(record.get());
        object->SetGeom(&mesh, true);
        scene.AddObject(object);
        ASSERT_TRUE(AddGround(scene, up));
        ASSERT_TRUE(AddGround(scene, up)) << "takes the place of the first";
        EXPECT_EQ(scene.NumObjects(), 2);
        const VXObject* const ground = scene.GroundObject();
        ASSERT_TRUE(ground);
        EXPECT_EQ(ground->InternalName(), "GROUND");
        const GEOM& plane = *ground->Geom()->Geom();
        for (int v = 0; v < plane.numVerts; ++v)
            EXPECT_FLOAT_EQ(up == UpAxis::Y ? plane.verts[v].y : plane.verts[v].z, up == UpAxis::Y ? 5.0f : 6.0f);
        const VERTEX normal = *ground->Geom()->PolyNormal(0);
        EXPECT_GT(Dot(normal, UpOf(up)), 0.99f) << "faces upwards";
        BArray<VERTEX> points;
        ASSERT_TRUE(VisiblePoints(scene, points));
        EXPECT_EQ(points.Count(), 8) << "the cube's corners alone";
        RemoveGround(scene);
        EXPECT_EQ(scene.NumObjects(), 1);
        EXPECT_FALSE(scene.GroundObject());
    }
}
