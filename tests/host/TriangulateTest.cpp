#include "host/gl/Triangulate.h"

#include "base/MAT.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numbers>
#include <numeric>
#include <string>
#include <vector>

using namespace vx;

namespace
{
struct Polygon
{
    std::string name;
    std::vector<VERTEX> points; ///< counter-clockwise in the plane z = 0
};

double RingArea(const std::vector<VERTEX>& p)
{
    double sum = 0;
    for (std::size_t k = 0; k < p.size(); ++k)
    {
        const VERTEX &a = p[k], &b = p[(k + 1) % p.size()];
        sum += double(a.x) * b.y - double(a.y) * b.x;
    }
    return sum / 2;
}

std::vector<std::int32_t> Ring(std::size_t n)
{
    std::vector<std::int32_t> ring(n);
    std::iota(ring.begin(), ring.end(), 0);
    return ring;
}

BArray<std::int32_t> Cut(const std::vector<VERTEX>& points, const std::vector<std::int32_t>& ring)
{
    Triangulator triangulator;
    BArray<std::int32_t> corners;
    EXPECT_TRUE(triangulator.Append(points, ring, corners));
    return corners;
}

Polygon Regular(int n)
{
    Polygon polygon{"regular " + std::to_string(n), {}};
    for (int k = 0; k < n; ++k)
        polygon.points.push_back(
            {float(std::cos(2 * std::numbers::pi * k / n)), float(std::sin(2 * std::numbers::pi * k / n)), 0});
    return polygon;
}

Polygon Star(int spikes, double inner = 0.3)
{
    Polygon polygon{"star " + std::to_string(spikes), {}};
    for (int k = 0; k < 2 * spikes; ++k)
    {
        const double r = k % 2 ? inner : 1, angle = std::numbers::pi * k / spikes;
        polygon.points.push_back({float(r * std::cos(angle)), float(r * std::sin(angle)), 0});
    }
    return polygon;
}

// Teeth upwards from a bar: long, thin, and every second corner bent inwards.
Polygon Comb(int teeth)
{
    Polygon polygon{"comb " + std::to_string(teeth), {{0, -1, 0}, {float(2 * teeth - 1), -1, 0}}};
    for (int k = 2 * teeth - 1; k > 0; k -= 2)
    {
        polygon.points.push_back({float(k), 50, 0});
        polygon.points.push_back({float(k - 1), 50, 0});
        if (k > 1)
        {
            polygon.points.push_back({float(k - 1), 0, 0});
            polygon.points.push_back({float(k - 2), 0, 0});
        }
    }
    return polygon;
}

std::vector<Polygon> Simple()
{
    std::vector<Polygon> all = {
        {"triangle", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}},
        {"quad", {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}}},
        {"arrow, bent at corner 0", {{1, 0, 0}, {0, 2, 0}, {-4, 0, 0}, {0, -2, 0}}},
        {"arrow head", {{0, 0.5f, 0}, {-1, -1, 0}, {0, 2, 0}, {1, -1, 0}}},
        {"L", {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {1, 1, 0}, {1, 2, 0}, {0, 2, 0}}},
        {"corner in the middle of an edge", {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}}},
        {"square with a hole, joined by a bridge",
         {{0, 0, 0},
          {4, 0, 0},
          {4, 4, 0},
          {0, 4, 0},
          {0, 0, 0},
          {1, 1, 0},
          {1, 3, 0},
          {3, 3, 0},
          {3, 1, 0},
          {1, 1, 0}}},
    };
    std::rotate(all[3].points.begin(), all[3].points.begin() + 1, all[3].points.end());
    for (int n : {5, 8, 100})
        all.push_back(Regular(n));
    for (int n : {5, 12, 300})
        all.push_back(Star(n));
    for (int n : {3, 10, 200})
        all.push_back(Comb(n));
    for (Polygon& polygon : all)
        if (RingArea(polygon.points) < 0)
            std::reverse(polygon.points.begin(), polygon.points.end());
    return all;
}
} // namespace

TEST(Triangulator, TrianglesCoverASimplePolygonOnceAndKeepItsWinding)
{
    for (const Polygon& polygon : Simple())
        for (const std::size_t start : {std::size_t(0), polygon.points.size() / 2})
        {
            SCOPED_TRACE(polygon.name + " from corner " + std::to_string(start));
            std::vector<std::int32_t> ring = Ring(polygon.points.size());
            std::rotate(ring.begin(), ring.begin() + std::ptrdiff_t(start), ring.end());
            const BArray<std::int32_t> corners = Cut(polygon.points, ring);
            if (polygon.name.find("hole") == std::string::npos)
            {
                EXPECT_EQ(corners.Count(), 3 * (std::int64_t(ring.size()) - 2));
            }
            double area = 0;
            for (std::int64_t t = 0; t + 2 < corners.Count(); t += 3)
            {
                std::vector<VERTEX> triangle;
                for (int c = 0; c < 3; ++c)
                    triangle.push_back(polygon.points[std::size_t(ring[std::size_t(corners[t + c])])]);
                const double one = RingArea(triangle);
                EXPECT_GE(one, -1e-6) << "triangle " << t / 3 << " is wound the other way";
                area += one;
            }
            // No triangle is negative, so an equal sum means that none overlaps another.
            EXPECT_NEAR(area, RingArea(polygon.points), 1e-4 * RingArea(polygon.points));
        }
}

TEST(Triangulator, WorksInAnyPlaneAndKeepsItsAnswerWhenMirrored)
{
    const Polygon star = Star(9);
    const std::vector<std::int32_t> ring = Ring(star.points.size());
    for (int turn = 0; turn < 12; ++turn)
    {
        SCOPED_TRACE(turn);
        Mat44 m;
        MAT_Identity(m);
        MAT_RotateX(m, float(turn) * 0.55f);
        MAT_RotateY(m, float(turn) * 0.37f);
        MAT_Translate(m, 3, -2, 7);
        std::vector<VERTEX> points(star.points.size());
        MAT_VertTransform(star.points.data(), points.data(), int(points.size()), m);
        const VERTEX axis[2] = {{0, 0, 0}, {0, 0, 1}};
        VERTEX moved[2];
        MAT_VertTransform(axis, moved, 2, m);
        const BArray<std::int32_t> corners = Cut(points, ring);
        ASSERT_EQ(corners.Count(), 3 * (std::int64_t(ring.size()) - 2));
        for (std::int64_t t = 0; t < corners.Count(); t += 3)
        {
            const VERTEX a = points[std::size_t(corners[t])], b = points[std::size_t(corners[t + 1])];
            const VERTEX c = points[std::size_t(corners[t + 2])];
            EXPECT_GT(Dot(Cross(b - a, c - a), moved[1] - moved[0]), -1e-6f);
        }
    }
}

TEST(Triangulator, EndsOnAnythingAndUsesOnlyGivenCorners)
{
    const float nan = std::nanf("");
    const Polygon odd[] = {
        {"one point", {{1, 1, 1}}},
        {"two points", {{1, 1, 1}, {2, 2, 2}}},
        {"all in one point", std::vector<VERTEX>(70, VERTEX{1, 2, 3})},
        {"on a line", {{0, 0, 0}, {1, 0, 0}, {3, 0, 0}, {2, 0, 0}, {5, 0, 0}}},
        {"bow tie", {{0, 0, 0}, {1, 1, 0}, {1, 0, 0}, {0, 1, 0}}},
        {"pentagram", {{0, 1, 0}, {-0.6f, -0.8f, 0}, {0.95f, 0.3f, 0}, {-0.95f, 0.3f, 0}, {0.6f, -0.8f, 0}}},
        {"not a number", {{0, 0, 0}, {nan, 1, 0}, {1, 0, 0}, {2, 2, 0}, {0, 5, nan}}},
        {"huge", {{0, 0, 0}, {3e38f, 0, 0}, {3e38f, 3e38f, 0}, {1e38f, 1e38f, 0}, {0, 3e38f, 0}}},
    };
    for (const Polygon& polygon : odd)
    {
        SCOPED_TRACE(polygon.name);
        const BArray<std::int32_t> corners = Cut(polygon.points, Ring(polygon.points.size()));
        EXPECT_EQ(corners.Count() % 3, 0);
        if (polygon.points.size() < 3)
        {
            EXPECT_EQ(corners.Count(), 0);
        }
        for (const std::int32_t corner : corners)
            EXPECT_TRUE(corner >= 0 && corner < std::int32_t(polygon.points.size()));
    }
}

TEST(Triangulator, LargePolygonsTakeNoQuadraticTime)
{
    using Clock = std::chrono::steady_clock;
    const auto seconds = [](const Polygon& polygon)
    {
        const std::vector<std::int32_t> ring = Ring(polygon.points.size());
        double best = 1e9;
        for (int k = 0; k < 2; ++k)
        {
            const Clock::time_point start = Clock::now();
            Cut(polygon.points, ring);
            best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count());
        }
        return best;
    };
    // Eight times the corners; a quadratic method takes 64 times as long.
    EXPECT_LT(seconds(Star(40000, 0.9)), 30 * seconds(Star(5000, 0.9)) + 0.05);
    EXPECT_LT(seconds(Comb(20000)), 30 * seconds(Comb(2500)) + 0.05);
}
