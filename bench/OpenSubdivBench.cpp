// Subdivision through OpenSubdiv beside the plainest use of its own classes, on a cage of 10,000 quads with texture
// coordinates: building anew, and posing what was built. What we derive beside it, edge list and normals, is measured
// apart and taken off the rebuilds; the pose is also measured with its normals, alone and as an object poses.

#include "bench/BenchMeshes.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "mesh/VXEdgeList.h"
#include "mesh/VXGeom.h"
#include "tests/support/DirectSubdivision.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace
{
const GEOM& Cage() { return TorusRecord(100, 100); }

/// The cage and its subdivision, creases off as objects have them.
struct Subdivided
{
    VXGeom control, dest;
    int level;

    explicit Subdivided(int to) : level(to)
    {
        control.SetGeom(const_cast<GEOM*>(&Cage()), true);
        dest.SetGenerateCreases(false);
        Build();
    }
    void Build() { control.SubdivideOpenSubDiv(&dest, level, kSubdivSchemeOther, true); }
    void Bend(int frame)
    {
        for (int v = 0; v < control.NumVerts(false); ++v)
            control.Vertex(v)->z = Cage().verts[v].z + 0.1f * std::sin(float(frame) + Cage().verts[v].x);
    }
    void Pose() { control.SubdivideOpenSubDiv(&dest, level, kSubdivSchemeOther, false); }
    /// Seconds that edge list and normals of the result take, in memory that is as fresh as that of a rebuild. The
    /// check of the record is no part of them: it stays with the rebuild.
    double Derive()
    {
        VXEdgeList edges;
        VXGeom fresh;
        fresh.SetGenerateCreases(false);
        fresh.SetUseExternalNormals(true); // none of its own for now
        fresh.SetGeom(dest.Geom(), false);
        fresh.SetUseExternalNormals(false);
        return SecondsOf(
            [&]
            {
                edges.Build(*dest.Geom());
                fresh.ComputeAllNormals();
            });
    }
};

void OurRebuild(benchmark::State& state)
{
    Subdivided mesh(int(state.range(0)));
    for (auto _ : state)
    {
        const double whole = SecondsOf([&] { mesh.Build(); });
        state.SetIterationTime(std::max(whole - mesh.Derive(), 1e-6));
    }
    const double faces = mesh.dest.NumPolys();
    const std::size_t with = mesh.control.MemoryUsed();
    mesh.control.ClearSubdiv();
    state.counters["bytes kept per face"] = double(with - mesh.control.MemoryUsed()) / faces;
    state.counters["bytes of the result per face"] = double(mesh.dest.MemoryUsed()) / faces;
}

void OurDerivation(benchmark::State& state)
{
    Subdivided mesh(int(state.range(0)));
    for (auto _ : state)
        state.SetIterationTime(mesh.Derive());
}

void PeerRebuild(benchmark::State& state)
{
    for (auto _ : state)
        state.SetIterationTime(SecondsOf(
            [&]
            {
                const DirectSubdivision direct(Cage(), int(state.range(0)));
                benchmark::DoNotOptimize(direct.points.data());
            }));
}

void OurPose(benchmark::State& state)
{
    const bool normals = state.range(0) != 0;
    Subdivided mesh(2);
    int frame = 0;
    for (auto _ : state)
    {
        mesh.Bend(++frame);
        const auto pose = [&]
        {
            mesh.Pose();
            if (normals)
                mesh.dest.ComputeAllNormals();
        };
        state.SetIterationTime(SecondsOf(pose));
    }
    const DirectSubdivision direct(*mesh.control.Geom(), 2);
    const std::size_t bytes = std::size_t(mesh.dest.NumVerts(false)) * sizeof(VERTEX);
    if (std::memcmp(direct.LastPoints(), mesh.dest.Verts(), bytes) != 0)
        state.SkipWithError("the two poses differ");
}

void PeerPose(benchmark::State& state)
{
    DirectSubdivision direct(Cage(), 2);
    for (auto _ : state)
        state.SetIterationTime(SecondsOf([&] { direct.Pose(Cage().verts); }));
}

// Level 2 from level 1 from the cage, with normals of all three.
void ObjectPose(benchmark::State& state)
{
    VXScene scene;
    Subdivided mesh(1);
    VXObject object;
    object.SetGeom(&mesh.control, false);
    object.SetCurSubDivLevel(2);
    object.RebuildSubDiv();
    int frame = 0;
    for (auto _ : state)
    {
        mesh.Bend(++frame);
        state.SetIterationTime(SecondsOf([&] { object.RebuildSubDiv(); }));
    }
}

BENCHMARK(OurRebuild)->Name("OpenSubdiv/velmar-1")->Arg(1)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(PeerRebuild)->Name("OpenSubdiv/direct-1")->Arg(1)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(OurRebuild)->Name("OpenSubdiv/velmar-2")->Arg(2)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(PeerRebuild)->Name("OpenSubdiv/direct-2")->Arg(2)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(OurRebuild)->Name("OpenSubdiv/velmar-3")->Arg(3)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(PeerRebuild)->Name("OpenSubdiv/direct-3")->Arg(3)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(OurDerivation)->Name("OpenSubdiv/derived-1")->Arg(1)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(OurDerivation)->Name("OpenSubdiv/derived-2")->Arg(2)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(OurDerivation)->Name("OpenSubdiv/derived-3")->Arg(3)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(OurPose)->Name("OpenSubdiv/pose")->Arg(0)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(PeerPose)->Name("OpenSubdiv/bare-pose")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(OurPose)->Name("OpenSubdiv/pose-and-normals")->Arg(1)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(ObjectPose)->Name("OpenSubdiv/object-pose")->Unit(benchmark::kMillisecond)->UseManualTime();
} // namespace
