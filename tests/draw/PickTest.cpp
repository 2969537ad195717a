#include "draw/VXPickBuffer.h"

#include "Stage.h"
#include "base/MEM.h"
#include "draw/VXPicker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

namespace
{
/// A part of a picture with splashes of names in it; which name belongs to what is known.
struct Splashed
{
    VXPickBuffer buffer;
    std::vector<VXPickHit> things; ///< by name, from 1

    Splashed(int left, int top, int width, int height, unsigned seed)
    {
        EXPECT_TRUE(buffer.Reset(left, top, width, height));
        AddRun(VXPickKind::Polygon, 4, 1, 30);
        AddRun(VXPickKind::Object, 9, 0, 1);
        AddRun(VXPickKind::Polygon, 4, 0, 1);
        AddRun(VXPickKind::Polygon, 7, 0, 50);
        std::mt19937 random(seed);
        for (int i = 0; i < width * height; ++i)
            if (random() % 3 == 0)
            {
                buffer.Names()[i] = std::uint32_t(random() % things.size()) + 1;
                buffer.Depths()[i] = float(random() % 8) / 8; // few values, so that some are equal
            }
    }

    void AddRun(VXPickKind kind, int object, int drawGeom, int count)
    {
        EXPECT_EQ(buffer.AddNames(kind, object, drawGeom, count), things.size() + 1);
        for (int i = 0; i < count; ++i)
        {
            VXPickHit thing;
            thing.kind = kind;
            thing.object = object;
            thing.drawGeom = kind == VXPickKind::Object ? -1 : drawGeom;
            thing.polygon = kind == VXPickKind::Object ? -1 : i;
            things.push_back(thing);
        }
    }

    /// Whether the hit says what this pixel holds.
    testing::AssertionResult Says(const VXPickHit& hit, int x, int y) const
    {
        const std::uint32_t name = buffer.NameAt(x, y);
        if (name == 0)
            return !hit ? testing::AssertionSuccess() : testing::AssertionFailure() << "nothing is there";
        const VXPickHit& thing = things[name - 1];
        const bool right = hit.kind == thing.kind && hit.object == thing.object && hit.drawGeom == thing.drawGeom &&
                           hit.polygon == thing.polygon && hit.x == float(x) + 0.5f && hit.y == float(y) + 0.5f &&
                           hit.depth == buffer.DepthAt(x, y);
        return right ? testing::AssertionSuccess()
                     : testing::AssertionFailure() << "name " << name << " is at " << x << ", " << y;
    }
};
} // namespace

TEST(PickBuffer, AnswersEveryPixelOfItsPartAndNothingOutside)
{
    const Splashed part(-3, 5, 23, 17, 1);
    for (int y = 0; y < 30; ++y)
        for (int x = -10; x < 30; ++x)
        {
            const bool inside = x >= -3 && x < 20 && y >= 5 && y < 22;
            EXPECT_TRUE(inside ? part.Says(part.buffer.At(x, y), x, y)
                               : testing::AssertionResult(!part.buffer.At(x, y)))
                << x << ", " << y;
        }
    EXPECT_FALSE(part.buffer.At(INT32_MIN, INT32_MAX) || part.buffer.At(INT32_MAX, 5));
}

TEST(PickBuffer, FindsTheSameAsLookingAtAllPixels)
{
    const Splashed part(10, 20, 31, 29, 2);
    const VXPickBuffer& buffer = part.buffer;
    std::mt19937 random(3);
    for (int round = 0; round < 300; ++round)
    {
        const int x = 5 + int(random() % 45), y = 15 + int(random() % 45);
        const float radius = float(random() % 100) / 10;
        double best = INFINITY;
        int bestX = 0, bestY = 0;
        for (int py = 20; py < 49; ++py)
            for (int px = 10; px < 41; ++px)
            {
                const double distance = std::hypot(px - x, py - y);
                const auto key = [&](double d, int kx, int ky)
                { return std::tuple(d, buffer.DepthAt(kx, ky), buffer.NameAt(kx, ky)); };
                if (buffer.NameAt(px, py) && distance <= double(radius) &&
                    (best == INFINITY || key(distance, px, py) < key(best, bestX, bestY)))
                {
                    best = distance;
                    bestX = px;
                    bestY = py;
                }
            }
        const VXPickHit hit = buffer.Nearest(x, y, radius);
        EXPECT_EQ(bool(hit), best < INFINITY);
        if (hit)
        {
            EXPECT_TRUE(part.Says(hit, bestX, bestY)) << x << ", " << y << " within " << radius;
        }

        const int right = x + int(random() % 20), bottom = y + int(random() % 20);
        std::set<std::uint32_t> names;
        for (int py = y; py < bottom; ++py)
            for (int px = x; px < right; ++px)
                names.insert(buffer.NameAt(px, py));
        names.erase(0);
        BArray<VXPickHit> hits;
        ASSERT_TRUE(buffer.InRectangle(x, y, right, bottom, hits));
        ASSERT_EQ(std::size_t(hits.Count()), names.size());
        auto name = names.begin();
        for (const VXPickHit& found : hits)
        {
            const int fx = int(found.x), fy = int(found.y);
            EXPECT_EQ(buffer.NameAt(fx, fy), *name++) << "in the order of names";
            EXPECT_TRUE(part.Says(found, fx, fy));
            EXPECT_TRUE(fx >= x && fx < right && fy >= y && fy < bottom);
            for (int py = y; py < bottom; ++py)
                for (int px = x; px < right; ++px)
                    if (buffer.NameAt(px, py) == buffer.NameAt(fx, fy))
                    {
                        EXPECT_GE(buffer.DepthAt(px, py), found.depth);
                    }
        }
    }
    for (const float radius : {-1.0f, -INFINITY, NAN})
        EXPECT_FALSE(buffer.Nearest(20, 30, radius)) << radius;
    EXPECT_TRUE(buffer.Nearest(20, 30, INFINITY));
}

TEST(PickBuffer, GivesNamesOf32BitsAndNoMore)
{
    VXPickBuffer buffer;
    ASSERT_TRUE(buffer.Reset(0, 0, 1, 1));
    EXPECT_EQ(buffer.AddNames(VXPickKind::Polygon, 0, 0, INT32_MAX), 1u);
    EXPECT_EQ(buffer.AddNames(VXPickKind::Polygon, 1, 0, INT32_MAX), 0x80000000u);
    EXPECT_EQ(buffer.AddNames(VXPickKind::Object, 2, 0, 1), 0u);
    buffer.Names()[0] = 0xFFFFFFFE;
    EXPECT_EQ(buffer.At(0, 0).object, 1);
    EXPECT_EQ(buffer.At(0, 0).polygon, INT32_MAX - 1);
    buffer.Names()[0] = 0xFFFFFFFF; // nobody's
    EXPECT_FALSE(buffer.At(0, 0));

    EXPECT_FALSE(buffer.Reset(0, 0, 0, 5));
    MEM_FailAfter(1);
    EXPECT_FALSE(buffer.Reset(0, 0, 300, 300));
    MEM_FailAfter(0);
    EXPECT_FALSE(buffer.At(0, 0));
    MEM_SetAllocationFailed(false);
}

namespace
{
/// Two objects in parallel projection, drawn by the test: a wall of 4 x 4 squares from -4 to 4 and, before it, a shield
/// that hides the upper right quarter. A unit is 10 pixels.
class Wall : public testing::Test
{
protected:
    static constexpr int kSide = 100;

    void SetUp() override
    {
        mStage.Add("wall", Moved(Scaled(Grid(4, 4), 2), {-4, -4, -2}));
        mStage.Add("shield", Moved(Scaled(Grid(1, 1), 4), {0.3f, 0.3f, 0}));
        mStage.scene.UpdateDerivedData();
        MAT_Identity(mToView);
        MAT_Translate(mToView, 0, 0, -5);
        MAT_Ortho(mProjection, 5, 5, 1, 9);
        ASSERT_TRUE(mBuffer.Reset(0, 0, kSide, kSide));
        for (int object = 0; object < 2; ++object)
            Draw(object);
    }

    // Rectangles that face the viewer, far ones first.
    void Draw(int object)
    {
        const GEOM& record = *mStage.scene.Object(object)->Geom()->Geom();
        const std::uint32_t first = mBuffer.AddNames(VXPickKind::Polygon, object, 1, record.numPolys);
        for (int p = 0; p < record.numPolys; ++p)
        {
            const std::int32_t* const corners = record.sets + record.Poly(p)->start;
            const VERTEX a = record.verts[corners[0]], b = record.verts[corners[2]];
            for (int y = 0; y < kSide; ++y)
                for (int x = 0; x < kSide; ++x)
                {
                    const float wx = (float(x) + 0.5f) / 10 - 5, wy = 5 - (float(y) + 0.5f) / 10;
                    if (wx < std::min(a.x, b.x) || wx > std::max(a.x, b.x) || wy < std::min(a.y, b.y) ||
                        wy > std::max(a.y, b.y))
                        continue;
                    mBuffer.Names()[y * kSide + x] = first + std::uint32_t(p);
                    mBuffer.Depths()[y * kSide + x] = (5 - a.z - 1) / 8;
                }
        }
    }

    VXPicker Picker() const { return {mBuffer, mStage.scene, mToView, mProjection, kSide, kSide}; }

    /// How far in pixels the closest point of what is seen of an edge or vertex lies from the middle of a pixel; the
    /// shield stands before what lies right of and above its corner.
    static bool Hidden(const VERTEX& p) { return p.z < 0 && p.x > 0.3f && p.y > 0.3f; }
    static double Away(const VERTEX& p, int x, int y)
    {
        return std::hypot(10.0 * (double(p.x) + 5) - x - 0.5, 10.0 * (5 - double(p.y)) - y - 0.5);
    }

    Stage mStage;
    VXPickBuffer mBuffer;
    Mat44 mToView, mProjection;
};
} // namespace

TEST_F(Wall, ItsNearestSeenVertexAndEdgeAreFound)
{
    struct Line
    {
        VERTEX a, b;
    };
    std::vector<VERTEX> verts;
    std::vector<Line> lines;
    for (int object = 0; object < 2; ++object)
    {
        const VXGeom& geom = *mStage.scene.Object(object)->Geom();
        verts.insert(verts.end(), geom.Verts(), geom.Verts() + geom.NumVerts(false));
        for (int e = 0; e < geom.EdgeList().GetEdgeCount(); ++e)
            lines.push_back({geom.Verts()[geom.EdgeList().GetEdge(e).VertIndex1()],
                             geom.Verts()[geom.EdgeList().GetEdge(e).VertIndex2()]});
    }
    const VXPicker picker = Picker();
    int vertices = 0, edges = 0;
    for (int y = 0; y < kSide; y += 5)
        for (int x = 0; x < kSide; x += 5)
        {
            SCOPED_TRACE(testing::Message() << x << ", " << y);
            double best = INFINITY;
            for (const VERTEX& v : verts)
                if (!Hidden(v))
                    best = std::min(best, Away(v, x, y));
            const VXPickHit vertex = picker.VertexAt(x, y, 7);
            EXPECT_EQ(bool(vertex), best <= 7);
            if (vertex)
            {
                ++vertices;
                const VERTEX place = picker.PositionOf(vertex);
                EXPECT_EQ(place, picker.GeomOf(vertex)->Verts()[vertex.verts[0]]);
                EXPECT_FALSE(Hidden(place));
                EXPECT_NEAR(Away(place, x, y), best, 1e-3);
            }

            best = INFINITY;
            for (const Line& line : lines)
                for (int step = 0; step <= 200; ++step)
                {
                    const float t = float(step) / 200;
                    const VERTEX p = line.a + (line.b - line.a) * t;
                    if (!Hidden(p))
                        best = std::min(best, Away(p, x, y));
                }
            const VXPickHit edge = picker.EdgeAt(x, y, 5);
            // Steps are up to 0.2 pixels long, and an edge that goes under the shield ends at a pixel, more or less.
            if (std::fabs(best - 5) > 1.5)
            {
                EXPECT_EQ(bool(edge), best < 5);
            }
            if (edge)
            {
                ++edges;
                const VXEdge& found = picker.GeomOf(edge)->EdgeList().GetEdge(edge.edge);
                EXPECT_EQ(std::minmax(found.VertIndex1(), found.VertIndex2()),
                          std::minmax(edge.verts[0], edge.verts[1]));
                const VERTEX place = picker.PositionOf(edge);
                EXPECT_NEAR(Away(place, x, y), best, 1.5);
                EXPECT_TRUE(!Hidden(place) || std::min(place.x, place.y) < 0.45f);
                EXPECT_NEAR(place.z, edge.object == 0 ? -2 : 0, 1e-4);
            }
        }
    EXPECT_GT(vertices, 25);
    EXPECT_GT(edges, 100);
}

TEST_F(Wall, FlagsOfTheSceneSayWhatIsPicked)
{
    struct Row
    {
        const char* name;
        bool verts, edges, polys, object;
        VXPickKind near, between; ///< beside a vertex of the wall, and in the middle of a square
    };
    using enum VXPickKind;
    const Row rows[] = {
        {"all", true, true, true, true, Vertex, Polygon},
        {"edges and object", false, true, false, true, Edge, Object},
        {"vertices alone", true, false, false, false, Vertex, Nothing},
        {"polygons before objects", false, false, true, true, Polygon, Polygon},
        {"object", false, false, false, true, Object, Object},
        {"none", false, false, false, false, Nothing, Nothing},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        mStage.scene.SetPickVerts(row.verts);
        mStage.scene.SetPickEdges(row.edges);
        mStage.scene.SetPickPolys(row.polys);
        mStage.scene.SetPickObject(row.object);
        EXPECT_EQ(Picker().At(32, 67, 5).kind, row.near);
        EXPECT_EQ(Picker().At(40, 60, 5).kind, row.between);
        EXPECT_FALSE(Picker().At(2, 2, 5));
    }
}
