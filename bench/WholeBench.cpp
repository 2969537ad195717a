// From OBJ text to a mesh that can be drawn: read, wrap, edges, creases, normals. Beside it stands the sum of what
// tinyobjloader and OpenMesh take for less. Also counts the memory of one quad, held and at the peak.

#include "base/GEOM_Obj.h"
#include "bench/BenchMeshes.h"
#include "mesh/VXGeom.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <fstream>

namespace
{
/// A line of /proc/self/status in bytes; 0 where there is no such file.
double StatusBytes(const std::string& key)
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (word == key)
        {
            double kilobytes = 0;
            status >> kilobytes;
            return kilobytes * 1024;
        }
    return 0;
}

void ForgetPeak() { std::ofstream("/proc/self/clear_refs") << 5; }

void Whole(benchmark::State& state)
{
    const ObjText& torus = TorusText(1000, 1000);
    double held = 0, peak = 0;
    for (auto _ : state)
    {
        ForgetPeak();
        const double before = StatusBytes("VmRSS:");
        VXGeom geom;
        const auto start = std::chrono::steady_clock::now(); // reading may use more than one thread
        geom.SetGeom(GEOM_ReadObjText(torus.text.data(), torus.text.size()), false);
        geom.SetGeomShared(false);
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        if (geom.EdgeList().GetEdgeCount() != 2 * torus.quads || geom.NumbCreaseVerts() != 2001)
            state.SkipWithError("this is not the torus");
        held = double(geom.MemoryUsed());
        peak = StatusBytes("VmHWM:") - before;
    }
    state.counters["bytes held per quad"] = held / torus.quads;
    state.counters["bytes at the peak per quad"] = peak / torus.quads;
    state.SetItemsProcessed(torus.quads * std::int64_t(state.iterations()));
}

BENCHMARK(Whole)->Name("Whole/velmar")->Unit(benchmark::kMillisecond)->UseManualTime();
} // namespace
