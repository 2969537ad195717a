// Groups by the nearest polygon centre between two meshes of 100,000 polygons, beside nanoflann, a k-d tree library,
// which only builds and searches: centres are at hand for it and groups are nobody's business.

#include "bench/BenchMeshes.h"
#include "mesh/VXGeom.h"

#include <benchmark/benchmark.h>
#include <nanoflann.hpp>

#include <random>

namespace
{
constexpr int kAround = 400, kAcross = 250, kNumGroups = 8;

/// A torus and the same one turned a little, every vertex moved by up to a third of an edge. Moved points make ties
/// unlikely enough to compare two libraries that break them differently.
struct Pair
{
    VXGeom from, to;
    std::vector<VERTEX> fromCenters, toCenters;

    Pair()
    {
        const TestMesh torus = Torus(kAround, kAcross, false);
        TestMesh turned = torus;
        std::mt19937 random(5);
        const auto jitter = [&random] { return 0.005f * (float(random() % 2001) / 1000 - 1); };
        for (VERTEX& v : turned.verts)
            v = {v.x * 0.9f - v.y * 0.43589f + jitter(), v.x * 0.43589f + v.y * 0.9f + jitter(), v.z + jitter()};
        from.SetGeom(torus.Record().get(), true);
        to.SetGeom(turned.Record().get(), true);
        for (int p = 0; p < from.NumPolys(); ++p)
            GEOM_GroupAddElem(from.Geom(), ("group" + std::to_string(p % kNumGroups)).c_str(), p);
        fromCenters.resize(std::size_t(from.NumPolys()));
        toCenters.resize(std::size_t(to.NumPolys()));
        from.ComputePolyCentroids(fromCenters.data(), nullptr);
        to.ComputePolyCentroids(toCenters.data(), nullptr);
    }
};

Pair& Meshes()
{
    static Pair pair;
    return pair;
}

/// What nanoflann asks of a set of points.
struct Cloud
{
    const std::vector<VERTEX>& points;

    std::size_t kdtree_get_point_count() const { return points.size(); }
    float kdtree_get_pt(std::size_t i, std::size_t axis) const
    {
        return axis == 0 ? points[i].x : axis == 1 ? points[i].y : points[i].z;
    }
    template <class Box>
    bool kdtree_get_bbox(Box&) const
    {
        return false;
    }
};
using Tree = nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<float, Cloud>, Cloud, 3, std::uint32_t>;

std::vector<std::uint32_t> NearestByPeer()
{
    const Cloud cloud{Meshes().fromCenters};
    Tree tree(3, cloud);
    tree.buildIndex();
    std::vector<std::uint32_t> nearest(Meshes().toCenters.size());
    for (std::size_t p = 0; p < nearest.size(); ++p)
    {
        float squared = 0;
        tree.knnSearch(&Meshes().toCenters[p].x, 1, &nearest[p], &squared);
    }
    return nearest;
}

void OurGroups(benchmark::State& state)
{
    Pair& pair = Meshes();
    for (auto _ : state)
    {
        GEOM_SetNumGroups(pair.to.Geom(), 0);
        state.SetIterationTime(SecondsOf([&] { pair.to.CreateGroupsByProximity(&pair.from); }));
    }
    const std::vector<std::uint32_t> expected = NearestByPeer();
    for (int p = 0; p < pair.to.NumPolys(); ++p)
    {
        std::int32_t word = 0;
        std::uint32_t mask = 0;
        const std::string name = "group" + std::to_string(expected[std::size_t(p)] % kNumGroups);
        if (!GEOM_GetGroupBit(pair.to.Geom(), name.c_str(), &word, &mask) ||
            pair.to.Polygon(p)->GroupWord(word) != mask)
            return state.SkipWithError("another polygon is nearest");
    }
    state.SetItemsProcessed(pair.to.NumPolys() * std::int64_t(state.iterations()));
}

void PeerGroups(benchmark::State& state)
{
    Meshes();
    for (auto _ : state)
    {
        std::vector<std::uint32_t> nearest;
        state.SetIterationTime(SecondsOf([&] { nearest = NearestByPeer(); }));
        benchmark::DoNotOptimize(nearest.data());
    }
}

BENCHMARK(OurGroups)->Name("Groups/velmar")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(PeerGroups)->Name("Groups/nanoflann")->Unit(benchmark::kMillisecond)->UseManualTime();
} // namespace
