// Subdivision through OpenSubdiv beside the plainest use of its own classes, on a cage of 10,000 quads with texture
// coordinates: building anew, and posing what was built. What we derive beside it, edge list and normals, is measured
// apart and taken off the rebuilds; the pose is also measured with its normals, alone and as an object poses.

#include "bench/BenchMeshes.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "mesh/VXGeom.h"

#include <benchmark/benchmark.h>
#include <opensubdiv/far/primvarRefiner.h>
#include <opensubdiv/far/topologyDescriptor.h>
#include <opensubdiv/far/topologyRefinerFactory.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace
{
namespace Far = OpenSubdiv::Far;

const GEOM& Cage() { return TorusRecord(100, 100); }

template <int N>
struct Floats
{
    float f[N];
    void Clear() { std::fill(f, f + N, 0.0f); }
    void AddWithWeight(const Floats& from, float weight)
    {
        for (int i = 0; i < N; ++i)
            f[i] += from.f[i] * weight;
    }
};

/// A refiner with its buffers, all levels in a row.
struct Direct
{
    std::unique_ptr<Far::TopologyRefiner> refiner;
    std::vector<Floats<3>> points;
    std::vector<Floats<2>> uvs;

    explicit Direct(int level)
    {
        const GEOM& cage = Cage();
        const std::vector<int> lengths(std::size_t(cage.numPolys), 4);
        Far::TopologyDescriptor descriptor;
        descriptor.numVertices = cage.numVerts;
        descriptor.numFaces = cage.numPolys;
        descriptor.numVertsPerFace = lengths.data();
        descriptor.vertIndicesPerFace = cage.sets;
        Far::TopologyDescriptor::FVarChannel channel;
        channel.numValues = cage.tex->numVerts;
        channel.valueIndices = cage.tex->sets;
        descriptor.numFVarChannels = 1;
        descriptor.fvarChannels = &channel;
        OpenSubdiv::Sdc::Options rules;
        rules.SetVtxBoundaryInterpolation(OpenSubdiv::Sdc::Options::VTX_BOUNDARY_EDGE_AND_CORNER);
        rules.SetFVarLinearInterpolation(OpenSubdiv::Sdc::Options::FVAR_LINEAR_NONE);
        using Factory = Far::TopologyRefinerFactory<Far::TopologyDescriptor>;
        refiner.reset(Factory::Create(descriptor, Factory::Options(OpenSubdiv::Sdc::SCHEME_CATMARK, rules)));
        refiner->RefineUniform(Far::TopologyRefiner::UniformOptions(level));
        points.resize(std::size_t(refiner->GetNumVerticesTotal()));
        uvs.resize(std::size_t(refiner->GetNumFVarValuesTotal()));
    }

    void Pose(const VERTEX* verts)
    {
        for (std::size_t v = 0; v < std::size_t(Cage().numVerts); ++v)
            points[v] = {{verts[v].x, verts[v].y, verts[v].z}};
        const Far::PrimvarRefiner primvars(*refiner);
        Floats<3>* from = points.data();
        for (int i = 1; i <= refiner->GetMaxLevel(); ++i)
        {
            Floats<3>* to = from + refiner->GetLevel(i - 1).GetNumVertices();
            primvars.Interpolate(i, from, to);
            from = to;
        }
    }

    void Texture()
    {
        for (std::size_t v = 0; v < std::size_t(Cage().tex->numVerts); ++v)
            uvs[v] = {{Cage().tex->verts[v].u, Cage().tex->verts[v].v}};
        const Far::PrimvarRefiner primvars(*refiner);
        Floats<2>* from = uvs.data();
        for (int i = 1; i <= refiner->GetMaxLevel(); ++i)
        {
            Floats<2>* to = from + refiner->GetLevel(i - 1).GetNumFVarValues();
            primvars.InterpolateFaceVarying(i, from, to);
            from = to;
        }
    }
};

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
    void Derive()
    {
        GEOM_VerifyAndFix(dest.Geom());
        dest.BuildEdgeList();
        dest.ComputeAllNormals();
    }
};

void OurRebuild(benchmark::State& state)
{
    Subdivided mesh(int(state.range(0)));
    for (auto _ : state)
    {
        const double whole = SecondsOf([&] { mesh.Build(); });
        state.SetIterationTime(std::max(whole - SecondsOf([&] { mesh.Derive(); }), 1e-6));
    }
    const double faces = mesh.dest.NumPolys();
    const std::size_t with = mesh.control.MemoryUsed();
    mesh.control.ClearSubdiv();
    state.counters["bytes kept per face"] = double(with - mesh.control.MemoryUsed()) / faces;
    state.counters["bytes of the result per face"] = double(mesh.dest.MemoryUsed()) / faces;
}

void OurDerivation(benchmark::State& state)
{
    Subdivided mesh(2);
    for (auto _ : state)
        state.SetIterationTime(SecondsOf([&] { mesh.Derive(); }));
}

void PeerRebuild(benchmark::State& state)
{
    for (auto _ : state)
        state.SetIterationTime(SecondsOf(
            [&]
            {
                Direct direct(int(state.range(0)));
                direct.Pose(Cage().verts);
                direct.Texture();
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
    Direct direct(2);
    direct.Pose(mesh.control.Verts());
    const Floats<3>* const last = &direct.points.back() + 1 - mesh.dest.NumVerts(false);
    if (std::memcmp(last, mesh.dest.Verts(), std::size_t(mesh.dest.NumVerts(false)) * sizeof(VERTEX)) != 0)
        state.SkipWithError("the two poses differ");
}

void PeerPose(benchmark::State& state)
{
    Direct direct(2);
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
BENCHMARK(OurDerivation)->Name("OpenSubdiv/derived-2")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(OurPose)->Name("OpenSubdiv/pose")->Arg(0)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(PeerPose)->Name("OpenSubdiv/bare-pose")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(OurPose)->Name("OpenSubdiv/pose-and-normals")->Arg(1)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(ObjectPose)->Name("OpenSubdiv/object-pose")->Unit(benchmark::kMillisecond)->UseManualTime();
} // namespace
