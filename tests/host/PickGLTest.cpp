#include "host/Preview.h"

#include "draw/VXPicker.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "host/gl/Framebuffer.h"
#include "host/gl/GeomBuffers.h"
#include "host/gl/LoadGL.h"
#include "host/gl/Triangulate.h"
#include "host/gl/VXGLDrawEngine.h"
#include "mesh/VXGeom.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

using namespace vx;

namespace
{
struct Vec
{
    double x = 0, y = 0, z = 0;
    friend Vec operator-(const Vec& a, const Vec& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
    friend Vec operator+(const Vec& a, const Vec& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
    friend Vec operator*(const Vec& a, double s) { return {a.x * s, a.y * s, a.z * s}; }
};
double Dot(const Vec& a, const Vec& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Vec Cross(const Vec& a, const Vec& b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }

/// Finds what a ray meets by trying every triangle, in double precision.
class Caster
{
public:
    struct Met
    {
        int object = -1, polygon = -1;
        Vec place;
        double away = INFINITY;
    };

    Caster(const VXScene& scene, const View& view, int width, int height) : mWidth(width), mHeight(height)
    {
        for (int o = 0; o < scene.NumObjects(); ++o)
            AddObject(*scene.Object(o), o);
        Mat44 toWorld;
        MAT_Inverse(view.toView, toWorld);
        for (int c = 0; c < 3; ++c)
        {
            mAxis[c] = {double(toWorld[c][0]), double(toWorld[c][1]), double(toWorld[c][2])};
        }
        for (int c = 0; c < 2; ++c)
            mTangent[c] = 1 / double(view.projection[c][c]);
        mEye = {double(toWorld[3][0]), double(toWorld[3][1]), double(toWorld[3][2])};
        mNear = double(view.nearest);
    }

    /// What stands at a place of the picture.
    Met At(double x, double y) const
    {
        const Vec way = mAxis[0] * ((2 * x / mWidth - 1) * mTangent[0]) +
                        mAxis[1] * ((1 - 2 * y / mHeight) * mTangent[1]) - mAxis[2];
        Met nearest;
        for (const Triangle& t : mTriangles)
        {
            const Vec ab = t.b - t.a, ac = t.c - t.a, p = Cross(way, ac);
            const double det = Dot(ab, p);
            const Vec from = mEye - t.a, q = Cross(from, ab);
            const double u = Dot(from, p) / det, v = Dot(way, q) / det, away = Dot(ac, q) / det;
            if (u >= 0 && v >= 0 && u + v <= 1 && away > mNear && away < nearest.away)
                nearest = {t.object, t.polygon, mEye + way * away, away};
        }
        return nearest;
    }

private:
    struct Triangle
    {
        Vec a, b, c;
        int object, polygon;
    };

    void AddObject(const VXObject& object, int index)
    {
        const VXGeom* const geom = object.CurSubdivGeom(true);
        const GEOM& record = *geom->Geom();
        Triangulator cutter;
        for (int p = 0; p < record.numPolys; ++p)
        {
            const ELEMENT& poly = *record.Poly(p);
            if (!poly.IsFace() || poly.IsHidden())
                continue;
            const std::int32_t* const ring = record.sets + poly.start;
            BArray<std::int32_t> corners;
            ASSERT_TRUE(
                cutter.Append({record.verts, std::size_t(record.numVerts)}, {ring, std::size_t(poly.length)}, corners));
            const auto corner = [&](std::int64_t i)
            {
                const VERTEX& v = record.verts[ring[corners[i]]];
                return Vec{double(v.x), double(v.y), double(v.z)};
            };
            for (std::int64_t i = 0; i + 2 < corners.Count(); i += 3)
                mTriangles.push_back({corner(i), corner(i + 1), corner(i + 2), index, p});
        }
    }

    std::vector<Triangle> mTriangles;
    Vec mEye, mAxis[3];
    double mTangent[2] = {}, mNear = 0;
    int mWidth, mHeight;
};

class PickGL : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!preview.PrepareContext())
            GTEST_SKIP() << preview.Error().CString();
        options.width = 320;
        options.height = 240;
        preview.Scene().SetPickPolys(true);
    }

    void Load(const std::string& sample)
    {
        ASSERT_TRUE(preview.Load(BPath(BString(VELMAR_SOURCE_DIR "/samples/" + sample + ".obj")), import))
            << preview.Error().CString();
    }
    void LoadText(const char* text)
    {
        ASSERT_TRUE(preview.LoadText(text, std::strlen(text), "text", BPath("."), import));
    }

    PickResult PickAt(int x, int y)
    {
        PickResult result;
        EXPECT_TRUE(preview.Pick(options, preview.FitToScene(options), x, y, result)) << preview.Error().CString();
        EXPECT_EQ(PendingGLErrors(), "");
        return result;
    }

    Preview preview;
    PreviewOptions options;
    ImportOptions import;
};

// A square that turns its back to the viewer, before a larger one that shows its face.
const char* const kTwoSquares = "v -1 -1 1\nv -1 1 1\nv 1 1 1\nv 1 -1 1\nv -2 -2 0\nv 2 -2 0\nv 2 2 0\nv -2 2 0\n"
                                "f 1 2 3 4\nf 5 6 7 8\n";
} // namespace

// Where a ray passes within a hundredth of a pixel of an edge, either side of the edge is right; polygons there are
// rasterised by coordinates that the driver rounds to 1/256 of a pixel.
TEST_F(PickGL, AgreesWithRaysAtAThousandPixels)
{
    struct Row
    {
        const char* sample;
        int subdivision;
        float azimuth, zoom;
    };
    for (const Row& row : {Row{"teacup", 0, 35, 1}, Row{"bracket", 0, 200, 1.5f}, Row{"bracket", 2, 80, 1}})
    {
        SCOPED_TRACE(row.sample);
        preview.Scene().ClearObjects();
        import.separateLines = row.subdivision > 0;
        Load(row.sample);
        options.subdivision = row.subdivision;
        options.view.azimuth = row.azimuth;
        options.view.zoom = row.zoom;
        const View view = preview.FitToScene(options);
        const VXPickBuffer* const buffer = preview.PickRegion(options, view, 0, 0, options.width, options.height);
        ASSERT_TRUE(buffer) << preview.Error().CString();
        const VXPicker picker(*buffer, preview.Scene(), view.toView, view.projection, options.width, options.height);
        const Caster caster(preview.Scene(), view, options.width, options.height);
        std::mt19937 random(7);
        int met = 0, beside = 0;
        for (int i = 0; i < 1000; ++i)
        {
            const int x = int(random() % unsigned(options.width)), y = int(random() % unsigned(options.height));
            SCOPED_TRACE(testing::Message() << x << ", " << y);
            const VXPickHit hit = buffer->At(x, y);
            Caster::Met ray = caster.At(x + 0.5, y + 0.5);
            const auto same = [&] { return ray.object == hit.object && ray.polygon == hit.polygon; };
            for (int side = 0; side < 8 && !same(); ++side)
            {
                beside += side == 0;
                ray = caster.At(x + 0.5 + 0.01 * std::cos(0.785 * side), y + 0.5 + 0.01 * std::sin(0.785 * side));
            }
            EXPECT_TRUE(same()) << "polygon " << hit.polygon << " of " << hit.object;
            if (!hit)
                continue;
            ++met;
            const VERTEX place = picker.PositionOf(hit);
            const Vec off = Vec{double(place.x), double(place.y), double(place.z)} - ray.place;
            // A hundredth of a pixel aside on a surface that is seen at a slant.
            EXPECT_LT(std::sqrt(Dot(off, off)), 2e-4 * double(view.distance));
            EXPECT_NEAR(picker.DistanceOf(hit), ray.away, 2e-4 * ray.away);
        }
        EXPECT_GT(met, 200);
        EXPECT_LT(beside, 20);
    }
}

TEST_F(PickGL, OfOnePixelIsAsOfTheWholePicture)
{
    Load("teacup");
    const View view = preview.FitToScene(options);
    for (const VXPickKind kind : {VXPickKind::Object, VXPickKind::Polygon, VXPickKind::Edge, VXPickKind::Vertex})
    {
        VXScene& scene = preview.Scene();
        scene.SetPickObject(kind == VXPickKind::Object);
        scene.SetPickPolys(kind == VXPickKind::Polygon);
        scene.SetPickEdges(kind == VXPickKind::Edge);
        scene.SetPickVerts(kind == VXPickKind::Vertex);
        const VXPickBuffer* const drawn = preview.PickRegion(options, view, 0, 0, options.width, options.height);
        ASSERT_TRUE(drawn);
        const VXPickBuffer whole(*drawn);
        const VXPicker picker(whole, scene, view.toView, view.projection, options.width, options.height);
        int found = 0;
        for (int i = 0; i < 40; ++i)
        {
            const int x = 3 + 8 * i, y = 7 * (i * 13 % 34);
            PickResult one;
            ASSERT_TRUE(preview.Pick(options, view, x, y, one));
            const VXPickHit all = picker.At(x, y, 8);
            EXPECT_EQ(one.hit.kind, all.kind);
            EXPECT_EQ(one.hit.object, all.object);
            EXPECT_EQ(one.hit.edge, all.edge);
            EXPECT_EQ(one.hit.verts[0], all.verts[0]);
            EXPECT_TRUE(!one.hit || one.hit.kind == kind);
            if (kind == VXPickKind::Polygon)
            {
                EXPECT_EQ(one.hit.polygon, all.polygon);
            }
            found += one.hit ? 1 : 0;
        }
        EXPECT_GT(found, 8);
    }
    for (const auto& [x, y] : {std::pair{options.width + 30, -40}, {INT32_MIN, INT32_MAX}})
    {
        PickResult outside;
        EXPECT_TRUE(preview.Pick(options, view, x, y, outside));
        EXPECT_FALSE(outside.hit);
    }
}

TEST_F(PickGL, GoesThroughWhatIsNotShown)
{
    LoadText(kTwoSquares);
    options.view.azimuth = options.view.elevation = 0;
    VXObject* const object = preview.Scene().Object(0);
    const int x = options.width / 2, y = options.height / 2;
    EXPECT_EQ(PickAt(x, y).hit.polygon, 0);
    EXPECT_NEAR(PickAt(x, y).position.z, 1, 1e-3);

    preview.Scene().SetPickObject(true);
    options.backFaces = false;
    EXPECT_EQ(PickAt(x, y).hit.polygon, 1) << "back faces are culled";
    options.backFaces = true;

    object->Geom()->Geom()->Poly(0)->flags |= kElementHidden;
    object->SetChanged(true);
    object->Geom()->SetDataSorted(false);
    EXPECT_EQ(PickAt(x, y).hit.polygon, 1) << "the polygon is hidden";

    object->SetVisible(false);
    EXPECT_FALSE(PickAt(x, y).hit);
    object->SetVisible(true);

    // The ground is hit only where shadows are picked.
    options.view.elevation = 30;
    options.ground = true;
    ASSERT_TRUE(preview.Render(options));
    EXPECT_FALSE(PickAt(x, options.height - 2).hit);
    preview.Scene().SetPickShadows(true);
    EXPECT_EQ(PickAt(x, options.height - 2).object, preview.Scene().GroundObject());
}

TEST_F(PickGL, LeavesPictureAndTargetAsTheyAre)
{
    Load("teacup");
    options.samples = 1;
    const PicturePtr before = preview.Render(options);
    ASSERT_TRUE(before);
    const std::int64_t uploaded = GpuArray::UploadedBytes();
    Framebuffer target;
    ASSERT_EQ(target.Create(options.width, options.height, 1), "");
    ASSERT_TRUE(preview.DrawFrame(options, preview.FitToScene(options)));
    EXPECT_TRUE(PickAt(160, 120).hit);
    const PicturePtr after = target.ReadBack(false);
    ASSERT_TRUE(after);
    EXPECT_EQ(ComparePictures(*before, *after, 0).pixelsOff, 0);
    EXPECT_EQ(GpuArray::UploadedBytes(), uploaded) << "of meshes that were drawn";
}
