// Edges of a record beside OpenMesh, which builds half-edges face by face. Only the building is timed: the record and
// OpenMesh's vertices are there before, and both results are dropped outside the clock.

#include "bench/BenchMeshes.h"
#include "mesh/VXEdgeList.h"

#include <OpenMesh/Core/Mesh/PolyMesh_ArrayKernelT.hh>
#include <benchmark/benchmark.h>

namespace
{
using HalfEdgeMesh = OpenMesh::PolyMesh_ArrayKernelT<>;

void OurEdges(benchmark::State& state, bool shuffled)
{
    const GEOM& geom = shuffled ? ShuffledTorusRecord(1000, 1000) : TorusRecord(1000, 1000);
    for (auto _ : state)
    {
        VXEdgeList list;
        state.SetIterationTime(SecondsOf([&] { list.Build(geom); }));
        if (list.GetEdgeCount() != 2 * geom.numPolys)
            state.SkipWithError("a torus has two edges for each quad");
    }
    state.SetItemsProcessed(geom.numPolys * std::int64_t(state.iterations()));
}

void PeerHalfEdges(benchmark::State& state, bool shuffled)
{
    const GEOM& geom = shuffled ? ShuffledTorusRecord(1000, 1000) : TorusRecord(1000, 1000);
    for (auto _ : state)
    {
        HalfEdgeMesh mesh;
        mesh.reserve(std::size_t(geom.numVerts), 2 * std::size_t(geom.numPolys), std::size_t(geom.numPolys));
        std::vector<HalfEdgeMesh::VertexHandle> verts, face(4);
        for (std::int32_t v = 0; v < geom.numVerts; ++v)
            verts.push_back(mesh.add_vertex({geom.verts[v].x, geom.verts[v].y, geom.verts[v].z}));
        const auto addFaces = [&]
        {
            for (std::int32_t p = 0; p < geom.numPolys; ++p)
            {
                const std::int32_t* const ring = geom.sets + geom.Poly(p)->start;
                for (std::size_t k = 0; k < 4; ++k)
                    face[k] = verts[std::size_t(ring[k])];
                mesh.add_face(face);
            }
        };
        state.SetIterationTime(SecondsOf(addFaces));
        // In random order OpenMesh refuses a few faces where fans meet before they are joined; that costs it no time.
        if (mesh.n_faces() < std::size_t(geom.numPolys) * 9 / 10)
            state.SkipWithError("faces are missing");
    }
    state.SetItemsProcessed(geom.numPolys * std::int64_t(state.iterations()));
}

BENCHMARK_CAPTURE(OurEdges, ordered, false)->Name("Edges/velmar")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK_CAPTURE(PeerHalfEdges, ordered, false)
    ->Name("Edges/openmesh")
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);
BENCHMARK_CAPTURE(OurEdges, shuffled, true)
    ->Name("Edges/velmar-shuffled")
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();
BENCHMARK_CAPTURE(PeerHalfEdges, shuffled, true)
    ->Name("Edges/openmesh-shuffled")
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);
} // namespace
