// Polygon and vertex normals, edges built and creases off, beside OpenMesh's update_normals and beside the plainest
// loop over flat arrays that gives the same.

#include "bench/BenchMeshes.h"
#include "mesh/VXGeom.h"

#include <OpenMesh/Core/Mesh/PolyMesh_ArrayKernelT.hh>
#include <benchmark/benchmark.h>

#include <vector>

namespace
{
void OurNormals(benchmark::State& state)
{
    VXGeom geom;
    geom.SetGenerateCreases(false);
    geom.SetGeom(const_cast<GEOM*>(&TorusRecord(1000, 1000)), false);
    for (auto _ : state)
    {
        state.SetIterationTime(SecondsOf([&] { geom.ComputeAllNormals(); }));
        benchmark::DoNotOptimize(geom.VertNormals());
    }
    state.SetItemsProcessed(geom.NumPolys() * std::int64_t(state.iterations()));
}

struct BareMesh
{
    std::vector<VERTEX> verts, faceNormals, vertNormals;
    std::vector<std::int32_t> quads;
};

void BareLoop(BareMesh& mesh)
{
    std::fill(mesh.vertNormals.begin(), mesh.vertNormals.end(), VERTEX{});
    for (std::size_t f = 0; f < mesh.faceNormals.size(); ++f)
    {
        const std::int32_t* const q = mesh.quads.data() + 4 * f;
        const VERTEX* const p = mesh.verts.data();
        const VERTEX n = Cross(p[q[2]] - p[q[0]], p[q[3]] - p[q[1]]);
        mesh.faceNormals[f] = n * (1 / Length(n));
        for (int k = 0; k < 4; ++k)
            mesh.vertNormals[std::size_t(q[k])] += mesh.faceNormals[f];
    }
    for (VERTEX& n : mesh.vertNormals)
        n *= 1 / Length(n);
}

void BareNormals(benchmark::State& state)
{
    const GEOM& geom = TorusRecord(1000, 1000);
    BareMesh mesh;
    mesh.verts.assign(geom.verts, geom.verts + geom.numVerts);
    mesh.quads.assign(geom.sets, geom.sets + geom.NumCorners());
    mesh.faceNormals.resize(std::size_t(geom.numPolys));
    mesh.vertNormals.resize(mesh.verts.size());
    for (auto _ : state)
    {
        state.SetIterationTime(SecondsOf([&] { BareLoop(mesh); }));
        benchmark::DoNotOptimize(mesh.vertNormals.data());
    }
    VXGeom ours;
    ours.SetGenerateCreases(false);
    ours.SetGeom(const_cast<GEOM*>(&geom), false);
    for (std::size_t v = 0; v < mesh.vertNormals.size(); ++v)
        if (Length(mesh.vertNormals[v] - *ours.VertNormal(int(v))) > 1e-5f)
            state.SkipWithError("the two loops disagree");
    state.SetItemsProcessed(geom.numPolys * std::int64_t(state.iterations()));
}

void PeerNormals(benchmark::State& state)
{
    using HalfEdgeMesh = OpenMesh::PolyMesh_ArrayKernelT<>;
    const GEOM& geom = TorusRecord(1000, 1000);
    HalfEdgeMesh mesh;
    std::vector<HalfEdgeMesh::VertexHandle> verts, face(4);
    for (std::int32_t v = 0; v < geom.numVerts; ++v)
        verts.push_back(mesh.add_vertex({geom.verts[v].x, geom.verts[v].y, geom.verts[v].z}));
    for (std::int64_t c = 0; c < geom.NumCorners(); c += 4)
    {
        for (std::int64_t k = 0; k < 4; ++k)
            face[std::size_t(k)] = verts[std::size_t(geom.sets[c + k])];
        mesh.add_face(face);
    }
    mesh.request_face_normals();
    mesh.request_vertex_normals();
    for (auto _ : state)
        state.SetIterationTime(SecondsOf([&] { mesh.update_normals(); }));
    state.SetItemsProcessed(geom.numPolys * std::int64_t(state.iterations()));
}

BENCHMARK(OurNormals)->Name("Normals/velmar")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(BareNormals)->Name("Normals/bare-loop")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(PeerNormals)->Name("Normals/openmesh")->Unit(benchmark::kMillisecond)->UseManualTime();
} // namespace
