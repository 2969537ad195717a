// OBJ text to record beside tinyobjloader: a torus of quads with texture coordinates, two groups and two materials, as
// an exporter writes it, read from memory.

#include "base/GEOM_Obj.h"
#include "bench/BenchMeshes.h"

#include <benchmark/benchmark.h>
#include <tiny_obj_loader.h>

#include <cmath>
#include <sstream>

namespace
{
bool LoadWithTinyObj(const ObjText& torus, tinyobj::attrib_t& attrib, std::vector<tinyobj::shape_t>& shapes)
{
    std::istringstream stream(torus.text);
    std::vector<tinyobj::material_t> materials;
    std::string warning, error;
    return tinyobj::LoadObj(&attrib, &shapes, &materials, &warning, &error, &stream, nullptr, false);
}

// Both readers must have read the same mesh: indices exactly, positions up to the last place, since the peer does not
// round correctly.
bool SameMesh(const GEOM* g, const ObjText& torus)
{
    tinyobj::attrib_t attrib;
    std::vector<tinyobj::shape_t> shapes;
    if (!g || !LoadWithTinyObj(torus, attrib, shapes) || attrib.vertices.size() != std::size_t(g->numVerts) * 3 ||
        attrib.texcoords.size() != std::size_t(g->tex->numVerts) * 2)
        return false;
    for (std::int32_t i = 0; i < g->numVerts; ++i)
    {
        const float* const p = attrib.vertices.data() + 3 * std::size_t(i);
        if (std::abs(p[0] - g->verts[i].x) > 1e-6f || std::abs(p[1] - g->verts[i].y) > 1e-6f ||
            std::abs(p[2] - g->verts[i].z) > 1e-6f)
            return false;
    }
    std::int64_t corner = 0;
    for (const tinyobj::shape_t& shape : shapes)
        for (const tinyobj::index_t& index : shape.mesh.indices)
        {
            if (corner >= g->NumCorners() || index.vertex_index != g->sets[corner] ||
                index.texcoord_index != g->tex->sets[corner])
                return false;
            ++corner;
        }
    return corner == g->NumCorners() && g->numPolys == torus.quads && g->numGroups == 34;
}

void ReadOurs(benchmark::State& state, int nu, int nv)
{
    const ObjText& torus = TorusText(nu, nv);
    if (!SameMesh(GeomPtr(GEOM_ReadObjText(torus.text.data(), torus.text.size())).get(), torus))
        state.SkipWithError("the two readers disagree");
    std::size_t held = 0;
    for (auto _ : state)
    {
        const GeomPtr g(GEOM_ReadObjText(torus.text.data(), torus.text.size()));
        benchmark::DoNotOptimize(g->verts);
        held = GEOM_MemoryUsed(g.get());
    }
    state.counters["bytes held per quad"] = double(held) / torus.quads;
    state.SetBytesProcessed(std::int64_t(torus.text.size()) * std::int64_t(state.iterations()));
    state.SetItemsProcessed(torus.quads * std::int64_t(state.iterations()));
}

void ReadPeer(benchmark::State& state)
{
    const ObjText& torus = TorusText(1000, 1000);
    for (auto _ : state)
    {
        tinyobj::attrib_t attrib;
        std::vector<tinyobj::shape_t> shapes;
        if (!LoadWithTinyObj(torus, attrib, shapes))
            state.SkipWithError("not read");
        benchmark::DoNotOptimize(shapes.data());
    }
    state.SetBytesProcessed(std::int64_t(torus.text.size()) * std::int64_t(state.iterations()));
    state.SetItemsProcessed(torus.quads * std::int64_t(state.iterations()));
}

BENCHMARK_CAPTURE(ReadOurs, velmar, 1000, 1000)->Name("ObjRead/velmar")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ReadPeer)->Name("ObjRead/tinyobjloader")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK_CAPTURE(ReadOurs, n, 500, 1000)->Name("ObjRead/linear/n")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(ReadOurs, twice, 1000, 1000)->Name("ObjRead/linear/2n")->Unit(benchmark::kMillisecond)->UseRealTime();
} // namespace
