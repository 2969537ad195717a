// Welding beside a radius search in nanoflann's tree, and beside meshoptimizer's table of exact positions, which is the
// least that merging copies can cost, on a mesh whose polygons all have corners of their own; and on vertices of which
// none merge.

#include "bench/BenchMeshes.h"

#include <benchmark/benchmark.h>
#include <meshoptimizer.h>
#include <nanoflann.hpp>

#include <algorithm>
#include <utility>
#include <vector>

namespace
{
// The torus with four vertices for each quad: every position occurs four times.
const std::vector<VERTEX>& CornersOfTorus(int nu, int nv)
{
    static std::vector<VERTEX> corners;
    static int made = 0;
    if (made == nu * nv)
        return corners;
    corners.clear();
    const TestMesh torus = Torus(nu, nv, false);
    for (const std::vector<int>& face : torus.faces)
        for (const int corner : face)
            corners.push_back(torus.verts[std::size_t(corner)]);
    made = nu * nv;
    return corners;
}

GeomPtr Points(const std::vector<VERTEX>& points)
{
    GeomPtr g(GEOM_Alloc());
    if (g->SetSize(0, int(points.size()), 0, 0, 0, 0) == 0)
        std::copy(points.begin(), points.end(), g->verts);
    return g;
}

void WeldOurs(benchmark::State& state, const std::vector<VERTEX>& points, std::int32_t expected)
{
    std::vector<std::int32_t> remap(points.size());
    for (auto _ : state)
    {
        const GeomPtr g = Points(points);
        int status = -1;
        state.SetIterationTime(SecondsOf([&] { status = GEOM_Weld(g.get(), remap.data()); }));
        if (status != 0 || g->numVerts != expected)
            state.SkipWithError("another number of vertices");
    }
    state.SetItemsProcessed(std::int64_t(points.size()) * std::int64_t(state.iterations()));
}

/// Positions as nanoflann reads them.
struct PointCloud
{
    const std::vector<VERTEX>& points;
    std::size_t kdtree_get_point_count() const { return points.size(); }
    float kdtree_get_pt(std::size_t i, std::size_t axis) const { return (&points[i].x)[axis]; }
    template <class Box>
    bool kdtree_get_bbox(Box&) const
    {
        return false;
    }
};
using KdTree =
    nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<float, PointCloud>, PointCloud, 3, std::int32_t>;

// A tree over all vertices, and one search for each that has not been merged yet: what it finds goes to it.
std::int32_t RadiusRemap(const std::vector<VERTEX>& points, std::vector<std::int32_t>& remap)
{
    const PointCloud cloud{points};
    const KdTree tree(3, cloud, nanoflann::KDTreeSingleIndexAdaptorParams(16));
    nanoflann::SearchParams unsorted;
    unsorted.sorted = false;
    std::vector<std::pair<std::int32_t, float>> found;
    const float tolerance = GEOM_WeldTolerance();
    std::fill(remap.begin(), remap.end(), -1);
    std::int32_t survivors = 0;
    for (std::size_t i = 0; i < points.size(); ++i)
    {
        if (remap[i] >= 0)
            continue;
        tree.radiusSearch(&points[i].x, tolerance * tolerance, found, unsorted);
        for (const auto& [at, distance] : found)
            if (remap[std::size_t(at)] < 0)
                remap[std::size_t(at)] = survivors;
        ++survivors;
    }
    return survivors;
}

unsigned ExactRemap(const std::vector<VERTEX>& points, std::vector<std::int32_t>& remap)
{
    return unsigned(meshopt_generateVertexRemap(reinterpret_cast<unsigned*>(remap.data()), nullptr, points.size(),
                                                points.data(), points.size(), sizeof(VERTEX)));
}

template <class Remap>
void WeldTheirs(benchmark::State& state, Remap remapOf)
{
    const std::vector<VERTEX>& points = CornersOfTorus(1000, 1000);
    std::vector<std::int32_t> remap(points.size());
    for (auto _ : state)
    {
        std::int64_t survivors = 0;
        state.SetIterationTime(SecondsOf([&] { survivors = std::int64_t(remapOf(points, remap)); }));
        if (survivors != 1000000)
            state.SkipWithError("another number of vertices");
    }
    state.SetItemsProcessed(std::int64_t(points.size()) * std::int64_t(state.iterations()));
}

void WeldCopies(benchmark::State& state, int nu, int nv) { WeldOurs(state, CornersOfTorus(nu, nv), nu * nv); }

void WeldDistinct(benchmark::State& state)
{
    static const std::vector<VERTEX> points = Torus(1000, 1000, false).verts;
    WeldOurs(state, points, 1000000);
}

BENCHMARK_CAPTURE(WeldCopies, velmar, 1000, 1000)->Name("Weld/velmar")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK_CAPTURE(WeldTheirs, nanoflann, RadiusRemap)
    ->Name("Weld/nanoflann")
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);
BENCHMARK_CAPTURE(WeldTheirs, meshoptimizer, ExactRemap)
    ->Name("Weld/meshoptimizer")
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();
BENCHMARK(WeldDistinct)->Name("Weld/velmar-distinct")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK_CAPTURE(WeldCopies, n, 500, 1000)->Name("Weld/linear/n")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK_CAPTURE(WeldCopies, twice, 1000, 1000)
    ->Name("Weld/linear/2n")
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();
} // namespace
