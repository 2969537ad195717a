// Selecting on a torus of a million quads. Ten steps of growth from one polygon in a thousand, each a call that knows
// the selection alone, as when a person grows it again and again; beside CGAL called likewise, and beside one call of
// CGAL for all ten, which looks at each step's newest faces only. Mirroring of vertices beside nanoflann,
// which only builds its tree and searches: selections are nobody's business.

#include "base/BBitArray.h"
#include "bench/BenchMeshes.h"
#include "mesh/VXGeom.h"

#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>
#include <CGAL/boost/graph/selection.h>
#include <benchmark/benchmark.h>
#include <nanoflann.hpp>

#include <array>
#include <iterator>
#include <random>
#include <vector>

namespace
{
constexpr int kSide = 1000;
constexpr int kNumPolys = kSide * kSide;
constexpr int kSteps = 10;
constexpr const char* kGroup = "picked";

VXGeom& Mesh()
{
    static VXGeom geom;
    if (!geom.Geom())
    {
        geom.SetGenerateCreases(false);
        geom.SetGeom(Torus(kSide, kSide, false).Record().get(), true);
        GEOM_GroupAddElem(geom.Geom(), kGroup, -1);
    }
    return geom;
}

BBitArray Picked(int count, unsigned oneIn)
{
    std::mt19937 random(11);
    BBitArray picked(count);
    for (int i = 0; i < count; ++i)
        picked.Set(i, random() % oneIn == 0);
    return picked;
}

void SetGroup(const BBitArray& polys)
{
    BBitArray all(kNumPolys);
    all.SetAll(true);
    Mesh().PolyGroupAddOrRemoveWithBitArray(kGroup, true, all);
    Mesh().PolyGroupAddOrRemoveWithBitArray(kGroup, false, polys);
}

// A sum over the selected polygons, by which the two libraries are compared.
std::uint64_t Weight(int poly) { return (std::uint64_t(poly) * 0x9E3779B97F4A7C15u) >> 20; }

std::uint64_t SelectedWeight()
{
    std::int32_t word = 0;
    std::uint32_t mask = 0;
    std::uint64_t sum = 0;
    GEOM_GetGroupBit(Mesh().Geom(), kGroup, &word, &mask);
    for (int p = 0; p < kNumPolys; ++p)
        if (Mesh().Polygon(p)->GroupWord(word) & mask)
            sum += Weight(p);
    return sum;
}

void OurGrowth(benchmark::State& state)
{
    const BBitArray seeds = Picked(kNumPolys, 1000);
    for (auto _ : state)
    {
        SetGroup(seeds);
        state.SetIterationTime(SecondsOf(
            []
            {
                for (int i = 0; i < kSteps; ++i)
                    Mesh().PolyGroupGrowSelection(kGroup);
            }));
    }
}

using CgalMesh = CGAL::Surface_mesh<CGAL::Simple_cartesian<float>::Point_3>;

CgalMesh CgalTorus()
{
    CgalMesh mesh;
    const GEOM& record = *Mesh().Geom();
    for (std::int32_t v = 0; v < record.numVerts; ++v)
        mesh.add_vertex({record.verts[v].x, record.verts[v].y, record.verts[v].z});
    for (std::int32_t p = 0; p < record.numPolys; ++p)
    {
        std::array<CgalMesh::Vertex_index, 4> corners;
        for (std::size_t k = 0; k < 4; ++k)
            corners[k] = CgalMesh::Vertex_index(std::uint32_t(record.sets[record.Poly(p)->start + int(k)]));
        mesh.add_face(corners);
    }
    return mesh;
}

// @param steps  how many each call does
void PeerGrowth(benchmark::State& state, int steps)
{
    static CgalMesh mesh = CgalTorus();
    const BBitArray seeds = Picked(kNumPolys, 1000);
    std::uint64_t sum = 0;
    for (auto _ : state)
    {
        auto selected = mesh.add_property_map<CgalMesh::Face_index, bool>("f:picked", false).first;
        std::vector<CgalMesh::Face_index> faces, added;
        sum = 0;
        for (std::int64_t p = seeds.NextSet(0); p >= 0; p = seeds.NextSet(p + 1))
        {
            faces.emplace_back(std::uint32_t(p));
            selected[faces.back()] = true;
        }
        state.SetIterationTime(SecondsOf(
            [&]
            {
                for (int i = 0; i < kSteps; i += steps)
                {
                    added.clear();
                    CGAL::expand_face_selection(faces, mesh, unsigned(steps), selected, std::back_inserter(added));
                    faces.insert(faces.end(), added.begin(), added.end());
                }
            }));
        for (const CgalMesh::Face_index face : faces)
            sum += Weight(int(face));
        mesh.remove_property_map(selected);
    }
    SetGroup(seeds);
    for (int i = 0; i < kSteps; ++i)
        Mesh().PolyGroupGrowSelection(kGroup);
    if (SelectedWeight() != sum)
        state.SkipWithError("another selection");
}

// --- Mirroring

/// Points as nanoflann reads them.
struct Cloud
{
    std::vector<VERTEX> points;
    std::size_t kdtree_get_point_count() const { return points.size(); }
    float kdtree_get_pt(std::size_t i, std::size_t axis) const { return (&points[i].x)[axis]; }
    template <class Box>
    bool kdtree_get_bbox(Box&) const
    {
        return false;
    }
};
using Tree = nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<float, Cloud>, Cloud, 3, std::uint32_t>;

// From the side where x is positive to all other vertices.
BBitArray MirroredByPeer(const BBitArray& picked)
{
    const GEOM& record = *Mesh().Geom();
    Cloud cloud;
    std::vector<std::int32_t> sources;
    for (std::int32_t v = 0; v < record.numVerts; ++v)
        if (record.verts[v].x > 0)
        {
            sources.push_back(v);
            cloud.points.push_back(record.verts[v]);
        }
    Tree tree(3, cloud);
    tree.buildIndex();
    BBitArray out = picked;
    for (std::int32_t v = 0; v < record.numVerts; ++v)
    {
        VERTEX image = record.verts[v];
        if (image.x > 0)
            continue;
        image.x = -image.x;
        std::uint32_t nearest = 0;
        float squared = 0;
        tree.knnSearch(&image.x, 1, &nearest, &squared);
        out.Set(v, picked[sources[nearest]]);
    }
    return out;
}

void OurMirror(benchmark::State& state)
{
    const BBitArray picked = Picked(Mesh().NumVerts(false), 3);
    BBitArray mirrored;
    for (auto _ : state)
    {
        mirrored = picked;
        state.SetIterationTime(SecondsOf(
            [&] { Mesh().VertexGroupMirrorSelection(mirrored, kMirrorFromPlusX, kMirrorAdd | kMirrorRemove); }));
    }
    if (!(mirrored == MirroredByPeer(picked)))
        state.SkipWithError("another selection");
}

void PeerMirror(benchmark::State& state)
{
    const BBitArray picked = Picked(Mesh().NumVerts(false), 3);
    for (auto _ : state)
    {
        BBitArray mirrored;
        state.SetIterationTime(SecondsOf([&] { mirrored = MirroredByPeer(picked); }));
        benchmark::DoNotOptimize(mirrored);
    }
}

BENCHMARK(OurGrowth)->Name("Select/velmar-grow")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK_CAPTURE(PeerGrowth, single, 1)->Name("Select/cgal-grow")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK_CAPTURE(PeerGrowth, at_once, kSteps)
    ->Name("Select/cgal-grow-at-once")
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();
BENCHMARK(OurMirror)->Name("Select/velmar-mirror")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(PeerMirror)->Name("Select/nanoflann-mirror")->Unit(benchmark::kMillisecond)->UseManualTime();
} // namespace
