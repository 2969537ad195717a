// Welding beside a plain hash table of exact positions, which is the least that merging copies can cost, on a mesh
// whose polygons all have corners of their own; and on vertices of which none merge.

#include "base/GEOM.h"
#include "tests/support/Meshes.h"

#include <benchmark/benchmark.h>

#include <bit>
#include <cstring>

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
        state.PauseTiming();
        GeomPtr g = Points(points);
        state.ResumeTiming();
        if (GEOM_Weld(g.get(), remap.data()) != 0 || g->numVerts != expected)
            state.SkipWithError("another number of vertices");
        state.PauseTiming();
        g.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(std::int64_t(points.size()) * std::int64_t(state.iterations()));
}

std::int32_t ExactRemap(const std::vector<VERTEX>& points, std::vector<std::int32_t>& remap,
                        std::vector<VERTEX>& survivors)
{
    const std::size_t slots = std::bit_ceil(points.size() * 5 / 4);
    std::vector<std::int32_t> table(slots, -1);
    survivors.clear();
    for (std::size_t i = 0; i < points.size(); ++i)
    {
        std::uint32_t bits[3];
        std::memcpy(bits, &points[i], sizeof bits);
        std::uint64_t hash =
            bits[0] * 0x9E3779B97F4A7C15u ^ bits[1] * 0xC2B2AE3D27D4EB4Fu ^ bits[2] * 0x165667B19E3779F9u;
        hash ^= hash >> 32;
        std::size_t slot = hash & (slots - 1);
        while (table[slot] >= 0 && !(survivors[std::size_t(table[slot])] == points[i]))
            slot = (slot + 1) & (slots - 1);
        if (table[slot] < 0)
        {
            table[slot] = std::int32_t(survivors.size());
            survivors.push_back(points[i]);
        }
        remap[i] = table[slot];
    }
    return std::int32_t(survivors.size());
}

void WeldExactly(benchmark::State& state)
{
    const std::vector<VERTEX>& points = CornersOfTorus(1000, 1000);
    std::vector<std::int32_t> remap(points.size());
    std::vector<VERTEX> survivors;
    survivors.reserve(points.size());
    for (auto _ : state)
        if (ExactRemap(points, remap, survivors) != 1000000)
            state.SkipWithError("another number of vertices");
    state.SetItemsProcessed(std::int64_t(points.size()) * std::int64_t(state.iterations()));
}

void WeldCopies(benchmark::State& state, int nu, int nv) { WeldOurs(state, CornersOfTorus(nu, nv), nu * nv); }

void WeldDistinct(benchmark::State& state)
{
    static const std::vector<VERTEX> points = Torus(1000, 1000, false).verts;
    WeldOurs(state, points, 1000000);
}

BENCHMARK_CAPTURE(WeldCopies, velmar, 1000, 1000)->Name("Weld/velmar")->Unit(benchmark::kMillisecond);
BENCHMARK(WeldExactly)->Name("Weld/exact-hash")->Unit(benchmark::kMillisecond);
BENCHMARK(WeldDistinct)->Name("Weld/velmar-distinct")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WeldCopies, n, 500, 1000)->Name("Weld/linear/n")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WeldCopies, twice, 1000, 1000)->Name("Weld/linear/2n")->Unit(benchmark::kMillisecond);
} // namespace
