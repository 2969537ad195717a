// Time must grow with the size of the mesh and with nothing else: edges, creases, normals, walks and the smoothing list
// on the shapes that make a careless algorithm quadratic, at one size and at twice that size.

#include "bench/BenchMeshes.h"
#include "mesh/VXGeom.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <numeric>

namespace
{
TestMesh Gon(int n)
{
    TestMesh mesh = Fan(n);
    mesh.faces.assign(1, std::vector<int>(std::size_t(n)));
    std::iota(mesh.faces[0].begin(), mesh.faces[0].end(), 1);
    return mesh;
}

TestMesh Shells(int n)
{
    return Repeated(TestMesh{"triangle", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}}}, n, {2, 0, 0});
}

TestMesh Collapsed(int n)
{
    TestMesh mesh = Grid(n / 100, 100);
    std::fill(mesh.verts.begin(), mesh.verts.end(), VERTEX{1, 2, 3});
    return mesh;
}

/// A fan around a tip so high that every edge is hard: one vertex splits into as many as it has polygons.
TestMesh Spikes(int n)
{
    TestMesh mesh = Fan(n);
    for (std::size_t v = 1; v < mesh.verts.size(); ++v)
        mesh.verts[v].z = v % 2 ? 50.0f : -50.0f;
    return mesh;
}

void Derive(benchmark::State& state, const TestMesh& mesh)
{
    const GeomPtr record = mesh.Record();
    for (auto _ : state)
    {
        VXGeom geom;
        geom.SetGeom(record.get(), true);
        geom.BuildVertSmoothList();
        geom.WeldedNormals();
        benchmark::DoNotOptimize(geom.VertNormals());
    }
    state.SetItemsProcessed(record->numPolys * std::int64_t(state.iterations()));
}

struct Shape
{
    const char* name;
    TestMesh (*make)(int);
};

constexpr Shape kShapes[] = {
    {"one vertex in n polygons", [](int n) { return Fan(n); }},
    {"the same, hard edges", Spikes},
    {"the same, random order", [](int n) { return Shuffled(Fan(n), 1); }},
    {"one n-gon", Gon},
    {"n shells", Shells},
    {"all vertices in one point", Collapsed},
    {"torus", [](int n) { return Torus(n / 200, 200); }},
};

const bool kRegistered = []
{
    for (const Shape& shape : kShapes)
        for (const bool twice : {false, true})
            benchmark::RegisterBenchmark((std::string("Derive ") + shape.name + (twice ? "/2n" : "/n")).c_str(),
                                         [make = shape.make, twice](benchmark::State& state)
                                         { Derive(state, make(twice ? 200000 : 100000)); })
                ->Unit(benchmark::kMillisecond);
    return true;
}();
} // namespace
