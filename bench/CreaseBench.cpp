// Crease vertices and creased normals at 80 degrees beside assimp, which makes smooth normals by angle over separate
// corners and then joins what came out equal. The scene reaches assimp through a loader of our own, outside the clock.

#include "bench/AssimpTorus.h"
#include "mesh/VXGeom.h"

#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <benchmark/benchmark.h>

namespace
{
void OurCreases(benchmark::State& state)
{
    VXGeom geom;
    geom.SetGeom(const_cast<GEOM*>(&TorusRecord(1000, 1000)), true);
    for (auto _ : state)
    {
        geom.ClearEdgeSmoothing();
        state.SetIterationTime(SecondsOf([&] { geom.GenerateCreaseData(); }));
        if (geom.NumbCreaseVerts() != 1000 + 1000 + 1)
            state.SkipWithError("a torus has one seam around and one along");
    }
    state.SetItemsProcessed(geom.NumPolys() * std::int64_t(state.iterations()));
}

void PeerCreases(benchmark::State& state)
{
    for (auto _ : state)
    {
        Assimp::Importer importer;
        importer.SetPropertyFloat(AI_CONFIG_PP_GSN_MAX_SMOOTHING_ANGLE, 80);
        if (!ReadTorus(importer))
            state.SkipWithError(importer.GetErrorString());
        const aiScene* scene = nullptr;
        const auto process = [&]
        { scene = importer.ApplyPostProcessing(aiProcess_GenSmoothNormals | aiProcess_JoinIdenticalVertices); };
        state.SetIterationTime(SecondsOf(process));
        if (!scene || scene->mMeshes[0]->mNumVertices >= 4u * 1000 * 1000)
            state.SkipWithError("nothing was joined");
    }
}

BENCHMARK(OurCreases)->Name("Creases/velmar")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(PeerCreases)->Name("Creases/assimp")->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);
} // namespace
