// Tangents beside assimp's tangent step, and what they cost a pass of creased normals that they run beside.

#include "bench/AssimpTorus.h"
#include "engine/VXSwitches.h"
#include "mesh/VXGeom.h"

#include <assimp/postprocess.h>
#include <benchmark/benchmark.h>

namespace
{
VXGeom& CreasedTorus()
{
    static VXGeom geom(&TorusRecord(1000, 1000));
    return geom;
}

void OurTangents(benchmark::State& state)
{
    VXGeom& geom = CreasedTorus();
    for (auto _ : state)
        state.SetIterationTime(SecondsOf([&] { geom.ComputeTangents(); }));
    state.SetItemsProcessed(geom.NumPolys() * std::int64_t(state.iterations()));
}

void PeerTangents(benchmark::State& state)
{
    for (auto _ : state)
    {
        Assimp::Importer importer;
        if (!ReadTorus(importer, CreasedTorus().VertNormals()))
            state.SkipWithError(importer.GetErrorString());
        const aiScene* scene = nullptr;
        state.SetIterationTime(SecondsOf([&] { scene = importer.ApplyPostProcessing(aiProcess_CalcTangentSpace); }));
        if (!scene || !scene->mMeshes[0]->mTangents)
            state.SkipWithError("no tangents were computed");
    }
}

// Two threads at work: the clock on the wall is what counts.
void CreasedPass(benchmark::State& state, bool tangents)
{
    VXGeom& geom = CreasedTorus();
    if (geom.NumbCreaseVerts() == 0)
        state.SkipWithError("the torus has no creases");
    for (auto _ : state)
        benchmark::DoNotOptimize(geom.ComputeCreasedNormals(nullptr, nullptr, tangents));
}

// The same for a host that derives a creased mesh anew: edges classified, vertices split, all normals.
void Derive(benchmark::State& state, bool tangents)
{
    VXGeom& geom = CreasedTorus();
    const VXSwitches::Scoped request(VXSwitches::TangentsRequested, VXSwitches::SetTangentsRequested, tangents);
    for (auto _ : state)
    {
        geom.SetEdgesClassified(false);
        if (!geom.ComputeAllNormals())
            state.SkipWithError("out of memory");
    }
}

BENCHMARK(OurTangents)->Name("Tangents/velmar")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(PeerTangents)->Name("Tangents/assimp")->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(CreasedPass, alone, false)->Name("CreasedPass/alone")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(Derive, alone, false)->Name("Derive/alone")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(Derive, tangents, true)->Name("Derive/with-tangents")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(CreasedPass, tangents, true)
    ->Name("CreasedPass/with-tangents")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
} // namespace
