// One level of Catmull-Clark on a closed torus of quads, beside OpenSubdiv, OpenMesh and CGAL: positions and topology,
// with texture coordinates for OpenSubdiv and for us. Each starts from its own connected mesh and ends with the
// positions of the finer mesh; nothing that is derived from them is timed. In the rows "velmar" and "opensubdiv" the
// edge list of the one and the base level of the other are there when the clock starts; in "velmar-from-record" and
// "opensubdiv-from-record" it runs while they are made.

#include "bench/BenchMeshes.h"
#include "mesh/VXEdgeList.h"
#include "mesh/kernel/CatmullClark.h"

#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>
#include <CGAL/subdivision_method_3.h>
#include <OpenMesh/Core/Mesh/PolyMesh_ArrayKernelT.hh>
#include <OpenMesh/Tools/Subdivider/Uniform/CatmullClarkT.hh>
#include <benchmark/benchmark.h>
#include <opensubdiv/far/primvarRefiner.h>
#include <opensubdiv/far/topologyDescriptor.h>

#include <array>
#include <cmath>
#include <vector>

namespace
{
constexpr int kAcross = 500; // 250,000 quads

const GEOM& Source() { return TorusRecord(kAcross, kAcross); }

// All schemes number the finer vertices in ways of their own, so what they make is compared by a sum over them.
class Check
{
public:
    void Add(double x, double y, double z)
    {
        mSum += std::abs(x) + 2 * std::abs(y) + 3 * std::abs(z);
        ++mCount;
    }
    void Against(benchmark::State& state) const
    {
        static double wanted = 0; // of whichever ran first
        const double mean = mSum / double(mCount);
        if (wanted == 0)
            wanted = mean;
        if (mCount != 4 * kAcross * kAcross || std::abs(mean - wanted) > 1e-6)
            state.SkipWithError("the schemes disagree");
    }

private:
    double mSum = 0;
    std::int64_t mCount = 0;
};

void Count(benchmark::State& state)
{
    state.SetItemsProcessed(4 * kAcross * kAcross * std::int64_t(state.iterations()));
}

void OurStep(const GEOM& from, const VXEdgeList& edges, GEOM& to, BArray<std::int32_t>& parents)
{
    const vx::CatmullSource source(from, from.numVerts, {edges.Edges(), std::size_t(edges.GetEdgeCount())});
    vx::CatmullScratch scratch;
    vx::PrepareCatmullClark(source, scratch);
    const vx::CatmullSizes sizes = vx::CatmullSizesOf(source, scratch);
    to.SetSize(sizes.polys, sizes.verts, sizes.corners, 0, sizes.corners, sizes.texVerts);
    parents.SetCountForWriting(sizes.polys);
    vx::CatmullClark(source, {to, parents.Data()}, scratch);
}

void OurSubdivision(benchmark::State& state)
{
    const bool fromRecord = state.range(0) != 0;
    VXEdgeList kept;
    kept.Build(Source());
    for (auto _ : state)
    {
        VXEdgeList made;
        const auto subdivide = [&](GEOM& to, BArray<std::int32_t>& parents)
        {
            if (fromRecord)
                made.Build(Source());
            OurStep(Source(), fromRecord ? made : kept, to, parents);
        };
        const GeomPtr result(GEOM_Alloc());
        BArray<std::int32_t> parents;
        state.SetIterationTime(SecondsOf([&] { subdivide(*result, parents); }));
        Check check;
        for (std::int32_t v = 0; v < result->numVerts; ++v)
            check.Add(double(result->verts[v].x), double(result->verts[v].y), double(result->verts[v].z));
        check.Against(state);
    }
    Count(state);
}

template <int N>
struct Floats
{
    std::array<float, N> at{};
    void Clear(void* = nullptr) { at.fill(0); }
    void AddWithWeight(const Floats& other, float weight)
    {
        for (std::size_t i = 0; i < N; ++i)
            at[i] += other.at[i] * weight;
    }
};

void PeerOpenSubdiv(benchmark::State& state)
{
    using namespace OpenSubdiv;
    const bool fromRecord = state.range(0) != 0;
    const GEOM& geom = Source();
    const std::vector<int> lengths(std::size_t(geom.numPolys), 4);
    Far::TopologyDescriptor::FVarChannel channel;
    channel.numValues = geom.tex->numVerts;
    channel.valueIndices = geom.tex->sets;
    Far::TopologyDescriptor descriptor;
    descriptor.numVertices = geom.numVerts;
    descriptor.numFaces = geom.numPolys;
    descriptor.numVertsPerFace = lengths.data();
    descriptor.vertIndicesPerFace = geom.sets;
    descriptor.numFVarChannels = 1;
    descriptor.fvarChannels = &channel;
    Sdc::Options options;
    options.SetVtxBoundaryInterpolation(Sdc::Options::VTX_BOUNDARY_EDGE_AND_CORNER);
    options.SetFVarLinearInterpolation(Sdc::Options::FVAR_LINEAR_ALL); // as our texture coordinates are interpolated
    using Factory = Far::TopologyRefinerFactory<Far::TopologyDescriptor>;
    for (auto _ : state)
    {
        std::vector<Floats<3>> fine;
        std::vector<Floats<2>> fineUVs;
        std::unique_ptr<Far::TopologyRefiner> refiner;
        const auto makeBase = [&]
        { refiner.reset(Factory::Create(descriptor, Factory::Options(Sdc::SCHEME_CATMARK, options))); };
        if (!fromRecord)
            makeBase();
        const auto refine = [&]
        {
            if (fromRecord)
                makeBase();
            refiner->RefineUniform(Far::TopologyRefiner::UniformOptions(1));
            fine.resize(std::size_t(refiner->GetLevel(1).GetNumVertices()));
            fineUVs.resize(std::size_t(refiner->GetLevel(1).GetNumFVarValues(0)));
            const Far::PrimvarRefiner primvars(*refiner);
            const Floats<3>* const coarse = reinterpret_cast<const Floats<3>*>(geom.verts);
            const Floats<2>* const coarseUVs = reinterpret_cast<const Floats<2>*>(geom.tex->verts);
            auto* to = fine.data();
            auto* toUVs = fineUVs.data();
            primvars.Interpolate(1, coarse, to);
            primvars.InterpolateFaceVarying(1, coarseUVs, toUVs);
        };
        state.SetIterationTime(SecondsOf(refine));
        Check check;
        for (const Floats<3>& p : fine)
            check.Add(double(p.at[0]), double(p.at[1]), double(p.at[2]));
        check.Against(state);
    }
    Count(state);
}

void PeerOpenMesh(benchmark::State& state)
{
    using HalfEdgeMesh = OpenMesh::PolyMesh_ArrayKernelT<>;
    const GEOM& geom = Source();
    HalfEdgeMesh control;
    std::vector<HalfEdgeMesh::VertexHandle> verts, face(4);
    for (std::int32_t v = 0; v < geom.numVerts; ++v)
        verts.push_back(control.add_vertex({geom.verts[v].x, geom.verts[v].y, geom.verts[v].z}));
    for (std::int64_t c = 0; c < geom.NumCorners(); c += 4)
    {
        for (std::int64_t k = 0; k < 4; ++k)
            face[std::size_t(k)] = verts[std::size_t(geom.sets[c + k])];
        control.add_face(face);
    }
    for (auto _ : state)
    {
        HalfEdgeMesh mesh = control;
        OpenMesh::Subdivider::Uniform::CatmullClarkT<HalfEdgeMesh> subdivider;
        subdivider.attach(mesh);
        state.SetIterationTime(SecondsOf([&] { subdivider(1); }));
        subdivider.detach();
        Check check;
        for (const auto v : mesh.vertices())
            check.Add(double(mesh.point(v)[0]), double(mesh.point(v)[1]), double(mesh.point(v)[2]));
        check.Against(state);
    }
    Count(state);
}

void PeerCgal(benchmark::State& state)
{
    using Kernel = CGAL::Simple_cartesian<float>;
    using Mesh = CGAL::Surface_mesh<Kernel::Point_3>;
    const GEOM& geom = Source();
    Mesh control;
    for (std::int32_t v = 0; v < geom.numVerts; ++v)
        control.add_vertex({geom.verts[v].x, geom.verts[v].y, geom.verts[v].z});
    for (std::int64_t c = 0; c < geom.NumCorners(); c += 4)
    {
        const auto corner = [&](std::int64_t k) { return Mesh::Vertex_index(std::uint32_t(geom.sets[c + k])); };
        control.add_face(corner(0), corner(1), corner(2), corner(3));
    }
    for (auto _ : state)
    {
        Mesh mesh = control;
        const auto subdivide = [&]
        { CGAL::Subdivision_method_3::CatmullClark_subdivision(mesh, CGAL::parameters::number_of_iterations(1)); };
        state.SetIterationTime(SecondsOf(subdivide));
        Check check;
        for (const auto v : mesh.vertices())
            check.Add(double(mesh.point(v).x()), double(mesh.point(v).y()), double(mesh.point(v).z()));
        check.Against(state);
    }
    Count(state);
}

BENCHMARK(OurSubdivision)->Name("Subdiv/velmar")->Arg(0)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(PeerOpenSubdiv)->Name("Subdiv/opensubdiv")->Arg(0)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(OurSubdivision)->Name("Subdiv/velmar-from-record")->Arg(1)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(PeerOpenSubdiv)
    ->Name("Subdiv/opensubdiv-from-record")
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();
BENCHMARK(PeerOpenMesh)->Name("Subdiv/openmesh")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(PeerCgal)->Name("Subdiv/cgal")->Unit(benchmark::kMillisecond)->UseManualTime();
} // namespace
