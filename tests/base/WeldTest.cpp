// Welding: the rule of the docstring, applied to every pair of vertices, against the grid.
#include "base/GEOM.h"
#include "tests/support/Meshes.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <random>

namespace
{
GeomPtr RecordOf(const std::vector<VERTEX>& points)
{
    TestMesh mesh{"points", points, {}};
    for (int i = 0; i + 2 < int(points.size()); i += 3)
        mesh.faces.push_back({i, i + 1, i + 2});
    return mesh.Record();
}

/// Sets the tolerance, which is the whole process's, for one scope.
class Tolerance
{
public:
    explicit Tolerance(float tolerance) : mBefore(GEOM_WeldTolerance()) { GEOM_SetWeldTolerance(tolerance); }
    ~Tolerance() { GEOM_SetWeldTolerance(mBefore); }
    Tolerance(const Tolerance&) = delete;
    Tolerance& operator=(const Tolerance&) = delete;

private:
    float mBefore;
};

std::vector<std::int32_t> Weld(GEOM* g)
{
    std::vector<std::int32_t> remap(std::size_t(g->numVerts));
    EXPECT_EQ(GEOM_Weld(g, remap.data()), 0);
    return remap;
}

// Each vertex joins the first survivor that is near enough.
std::vector<std::int32_t> WeldByTheRule(const std::vector<VERTEX>& points, float tolerance)
{
    std::vector<VERTEX> survivors;
    std::vector<std::int32_t> remap;
    const double limit = tolerance > 0 ? double(tolerance) * tolerance : 0;
    for (const VERTEX& p : points)
    {
        std::size_t at = 0;
        for (; at < survivors.size(); ++at)
        {
            const double x = double(p.x) - survivors[at].x, y = double(p.y) - survivors[at].y,
                         z = double(p.z) - survivors[at].z;
            if (IsFinite(p) && x * x + y * y + z * z <= limit)
                break;
        }
        if (at == survivors.size())
            survivors.push_back(p);
        remap.push_back(std::int32_t(at));
    }
    return remap;
}

struct Cloud
{
    const char* name;
    float size, step; ///< coordinates are multiples of step in -size .. size
    float tolerance;
};

TEST(Weld, FollowsTheRuleOnEveryCloud)
{
    const Cloud clouds[] = {{"sparse", 1, 1.0f / 65536, 1e-3f},
                            {"dense", 0.125f, 1.0f / 65536, 0.01f},
                            {"lattice at the tolerance", 4, 1, 1},
                            {"lattice under the tolerance", 4, 1, 0.99f},
                            {"lattice of neighbours", 8, 1, 1.5f},
                            {"all in one", 1, 0.25f, 100},
                            {"equal positions only", 2, 0.5f, 0},
                            {"negative tolerance", 2, 0.5f, -1},
                            {"far from the origin", 1, 0.25f, 1e-30f},
                            {"everything", 1e30f, 1e29f, std::numeric_limits<float>::infinity()},
                            {"huge", 3e38f, 1e37f, 2e37f},
                            {"tiny", 1e-38f, 1e-40f, 3e-39f},
                            {"not a tolerance", 2, 0.5f, std::numeric_limits<float>::quiet_NaN()}};
    std::mt19937 random(5);
    for (const Cloud& cloud : clouds)
    {
        const auto steps = std::uint32_t(cloud.size / cloud.step);
        const auto coordinate = [&] { return (float(random() % (2 * steps + 1)) - float(steps)) * cloud.step; };
        std::vector<VERTEX> points;
        for (int i = 0; i < 3000; ++i)
            points.push_back({coordinate(), coordinate(), i % 3 == 0 ? 0 : coordinate()});
        points[17].x = std::numeric_limits<float>::quiet_NaN();
        points[18].y = points[19].y = std::numeric_limits<float>::infinity();
        points[20] = {0.0f, 0.0f, 0.0f};
        points[21] = {-0.0f, 0.0f, -0.0f};
        const Tolerance scoped(cloud.tolerance);
        const GeomPtr g = RecordOf(points);
        const std::vector<std::int32_t> remap = Weld(g.get());
        EXPECT_EQ(remap, WeldByTheRule(points, cloud.tolerance)) << cloud.name;
    }
}

TEST(Weld, KeepsPolygonsAndFirstPositions)
{
    TestMesh mesh = Repeated(Cube(), 3, {0, 0, 0}); // three cubes in one place
    mesh.verts.insert(mesh.verts.begin(), {5, 5, 5});
    for (std::vector<int>& face : mesh.faces)
        for (int& corner : face)
            ++corner;
    const GeomPtr g = mesh.Record();
    ASSERT_TRUE(MEM_SizeArray(g->vertColors, std::size_t(g->numVerts)));
    for (std::int32_t i = 0; i < g->numVerts; ++i)
        g->vertColors[i] = {float(i), 0, 0};
    const std::vector<std::int32_t> remap = Weld(g.get());
    ASSERT_EQ(g->numVerts, 9);
    EXPECT_EQ(g->numPolys, 18);
    EXPECT_EQ(MEM_Count(g->verts), 9u);
    for (std::size_t i = 0; i < remap.size(); ++i)
        EXPECT_EQ(g->verts[remap[i]], mesh.verts[i]);
    for (std::int32_t i = 0; i < 9; ++i)
        EXPECT_EQ(g->vertColors[i].x, float(i));
    int corner = 0;
    for (const std::vector<int>& face : mesh.faces)
        for (const int vertex : face)
            EXPECT_EQ(g->sets[corner++], remap[std::size_t(vertex)]);
}

TEST(Weld, ChangesNothingWhenMemoryRunsOut)
{
    for (int n = 1; n <= 3; ++n)
    {
        const GeomPtr g = Repeated(Cube(), 2, {0, 0, 0}).Record();
        MEM_FailAfter(n);
        const int result = GEOM_Weld(g.get(), nullptr);
        MEM_FailAfter(0);
        EXPECT_EQ(result, -1) << n;
        EXPECT_EQ(g->numVerts, 16);
        EXPECT_EQ(g->sets[g->Poly(6)->start], 8);
    }
    EXPECT_EQ(GEOM_Weld(nullptr, nullptr), -1);
}

double WeldSeconds(const std::vector<VERTEX>& points)
{
    const GeomPtr g = RecordOf(points);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(GEOM_Weld(g.get(), nullptr), 0);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - before).count();
}

// Clusters a tolerance or two apart, in a mesh that is much larger than they are: the worst for a grid that takes its
// cells from the size of the whole. The bar is far above linear and far below quadratic, which would be 64.
TEST(Weld, DenseClustersStayLinear)
{
    const Tolerance scoped(1e-3f);
    const auto cluster = [](int side)
    {
        std::vector<VERTEX> points = {{1e6f, 0, 0}};
        for (int i = 0; i < side * side * side; ++i)
            points.push_back(
                {float(i % side) * 1.01e-3f, float(i / side % side) * 1.01e-3f, float(i / side / side) * 1.01e-3f});
        return points;
    };
    WeldSeconds(cluster(20));
    EXPECT_LT(WeldSeconds(cluster(80)), 30 * (WeldSeconds(cluster(40)) + 0.005));
}
} // namespace
