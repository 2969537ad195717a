#include "mesh/kernel/NearestPoint.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace
{
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// What a search has to answer: a plain loop.
std::int32_t NearestByLoop(const std::vector<VERTEX>& points, const VERTEX& at, float best)
{
    std::int32_t nearest = -1;
    for (std::size_t i = 0; i < points.size(); ++i)
    {
        const float dx = at.x - points[i].x, dy = at.y - points[i].y, dz = at.z - points[i].z;
        if (dx * dx + dy * dy + dz * dz < best)
        {
            best = dx * dx + dy * dy + dz * dz;
            nearest = std::int32_t(i);
        }
    }
    return nearest;
}

struct PointSet
{
    const char* name;
    std::vector<VERTEX> points;
};

template <class Make>
PointSet Set(const char* name, int count, Make make)
{
    PointSet set{name, {}};
    for (int i = 0; i < count; ++i)
        set.points.push_back(make(i));
    return set;
}

std::vector<PointSet> AllKinds()
{
    std::mt19937 random(3);
    const auto real = [&random] { return float(random() % 100000) / 1000 - 50; };
    const auto small = [&random] { return float(random() % 6); };
    return {
        Set("none", 0, [](int) { return VERTEX{}; }),
        Set("one", 1,
            [](int) {
                return VERTEX{1, 2, 3};
            }),
        Set("anywhere", 700,
            [&](int) {
                return VERTEX{real(), real(), real()};
            }),
        Set("lattice, each place several times", 700,
            [&](int) {
                return VERTEX{small(), small(), small()};
            }),
        Set("all in one place", 500,
            [](int) {
                return VERTEX{1, 1, 1};
            }),
        Set("a line, backwards", 500,
            [](int i) {
                return VERTEX{float(500 - i), 0, 0};
            }),
        Set("a plane with noise", 500,
            [&](int) {
                return VERTEX{real(), real(), 1e-6f * real()};
            }),
        Set("a cluster and one far away", 500,
            [&](int i) {
                return i == 77 ? VERTEX{1e6f, 0, 0} : VERTEX{1e-3f * small(), 1e-3f * real(), 0};
            }),
        Set("clusters", 600,
            [&](int i) {
                return VERTEX{float(i % 5) * 1000 + 1e-3f * small(), float(i % 3) * 1000, 1e-2f * real()};
            }),
        Set("differences that vanish when squared", 300,
            [&](int) {
                return VERTEX{1e-30f * small(), 1e-30f * small(), 0};
            }),
        Set("differences that overflow", 300,
            [&](int i) {
                return VERTEX{i % 2 ? 3e38f : -3e38f, small(), small()};
            }),
        Set("some that are no numbers", 400,
            [&](int i) {
                return VERTEX{i % 3 ? small() : NAN, i % 7 ? small() : kInfinity, small()};
            }),
    };
}
} // namespace

TEST(NearestPoint, AnswersWhatThePlainLoopAnswers)
{
    std::mt19937 random(8);
    const auto half = [&random] { return float(int(random() % 14) - 1) / 2; };
    for (const PointSet& set : AllKinds())
    {
        SCOPED_TRACE(set.name);
        vx::NearestPoint search;
        ASSERT_TRUE(search.Build(set.points));
        std::vector<VERTEX> queries = {{0, 0, 0}, {NAN, 0, 0}, {0, kInfinity, 0}, {-3e38f, 0, 0}, {1e4f, 0, 0}};
        for (std::size_t i = 0; i < set.points.size(); i += 5)
            queries.push_back(set.points[i]);
        for (int i = 0; i < 200; ++i) // between the places of a lattice, where many are equally far
            queries.push_back({half(), half(), half()});
        for (const VERTEX& at : queries)
            for (const float limit : {1e8f, 3.0f, 0.25f, 0.0f, kInfinity, NAN})
                ASSERT_EQ(search.Find(at, limit), NearestByLoop(set.points, at, limit))
                    << at.x << " " << at.y << " " << at.z << " within " << limit;
    }
}

TEST(NearestPoint, ManyPointsInOnePlaceTakeNoLongerThanAnyOthers)
{
    // Looking at all of them each time would take minutes.
    const std::vector<VERTEX> points(300000, VERTEX{1, 1, 1});
    vx::NearestPoint search;
    ASSERT_TRUE(search.Build(points));
    for (int i = 0; i < 300000; ++i)
        ASSERT_EQ(search.Find({float(i % 100), 2, 3}, 1e8f), 0);
}

TEST(NearestPoint, SaysWhenMemoryRanOut)
{
    const std::vector<VERTEX> points(1000);
    for (int n = 1; n <= 2; ++n)
    {
        vx::NearestPoint search;
        MEM_FailAfter(n);
        EXPECT_FALSE(search.Build(points)) << n;
        EXPECT_EQ(search.Find({0, 0, 0}, 1), -1);
    }
    MEM_FailAfter(0);
}
