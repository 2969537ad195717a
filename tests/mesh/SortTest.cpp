#include "material/VXMaterial.h"
#include "mesh/VXGeom.h"
#include "tests/support/Meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace
{
constexpr VXElementKind kKinds[] = {VXElementKind::Quads, VXElementKind::Triangles, VXElementKind::Polygons,
                                    VXElementKind::Lines, VXElementKind::Points};

/// A wrapper of a copy whose edges are as the caller wants them: creases by angle or none.
std::unique_ptr<VXGeom> Wrapped(const TestMesh& mesh, bool creases)
{
    auto geom = std::make_unique<VXGeom>();
    geom->SetUseCreaseAngle(creases);
    EXPECT_EQ(geom->SetGeom(mesh.Record().get(), true), 0);
    return geom;
}

/// How often each reason and each drawn edge stands in the words of quads and triangles.
struct EdgeCounts
{
    int drawn = 0, crease = 0, open = 0, material = 0;
};
EdgeCounts CountEdges(const VXGeom& geom)
{
    EdgeCounts counts;
    for (const VXElementKind kind : {VXElementKind::Quads, VXElementKind::Triangles})
        for (int i = 0; i < geom.Sorted(kind).count; ++i)
        {
            const std::uint32_t word = geom.Sorted(kind).edgeFlags[i];
            counts.drawn += std::popcount(word & 15u);
            counts.crease += (word & kElementEdgeCrease) != 0;
            counts.open += (word & kElementEdgeOpen) != 0;
            counts.material += (word & kElementEdgeMaterial) != 0;
        }
    return counts;
}
} // namespace

TEST(SortedData, PutsEachElementIntoTheBucketOfItsKind)
{
    struct Row
    {
        const char* name;
        int type, corners, flags;
        int bucket; ///< -1: none
    };
    const Row rows[] = {{"quad", 0, 4, 0, 0},
                        {"quad of the other face type", 2, 4, 0, 0},
                        {"triangle", 0, 3, 0, 1},
                        {"pentagon", 2, 5, 0, 2},
                        {"line", 1, 4, 0, 3},
                        {"shortest line", 1, 2, 0, 3},
                        {"points", 3, 3, 0, 4},
                        {"lone point", 3, 1, 0, -1},
                        {"face of two", 0, 2, 0, -1},
                        {"hidden quad", 0, 4, 0x20, -1},
                        {"hidden line", 1, 2, 0x3F, -1},
                        {"other flags", 0, 4, 0xDF, 0},
                        {"unknown type", 4, 4, 0, -1},
                        {"empty", 0, 0, 0, -1}};
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        TestMesh mesh{row.name, {{0, 0, 0}, {1, 0, 0}, {2, 1, 0}, {1, 2, 0}, {0, 1, 0}}, {{}}};
        for (int corner = 0; corner < row.corners; ++corner)
            mesh.faces[0].push_back(corner);
        const GeomPtr record = mesh.Record();
        record->Poly(0)->type = std::uint8_t(row.type);
        record->Poly(0)->flags = std::uint8_t(row.flags);
        VXGeom geom(record.get());
        geom.SetIncludesLines(true);
        geom.SetIncludesPoints(true);
        geom.SortGeomData();
        EXPECT_TRUE(geom.DataSorted());
        for (const VXElementKind kind : kKinds)
            EXPECT_EQ(geom.Sorted(kind).count, int(kind) == row.bucket) << int(kind);
        EXPECT_EQ(geom.NumQuads(), row.bucket == 0);
        EXPECT_EQ(geom.IncludesLines(), row.bucket == 3);
        EXPECT_EQ(geom.IncludesPoints(), row.bucket == 4);
    }
}

// The order against a plain comparison sort of the same keys, on faces of three kinds in random materials.
TEST(SortedData, IsOrderedByTransparencyThenMaterialThenPolygon)
{
    TestMesh mesh = Repeated(Cube(), 40, {3, 0, 0});
    std::mt19937 random(7);
    for (std::size_t i = 0; i < mesh.faces.size(); i += 2)
        mesh.faces[i].resize(3);
    const GeomPtr record = mesh.Record();

    struct Slot
    {
        int texture, transparency;
        float tMax;
    };
    const Slot slots[] = {{0, 3, 0},     {1, 2, 0.5f},   {2, 2, 0.5f},  {-1, -1, 0.5f},  {9, 1, 0.005f},
                          {9, 1, 0.02f}, {-1, -1, 0.0f}, {70000, 0, 1}, {0, 40000, 0.9f}};
    std::vector<std::unique_ptr<VXMaterial>> materials;
    for (int i = 1; i < 10; ++i)
        GEOM_AddMaterialName(record.get(), std::to_string(i).c_str());
    for (int i = 0; i < 9; ++i)
    {
        materials.push_back(std::make_unique<VXMaterial>(0, nullptr));
        materials.back()->SetTextureIndex(slots[i].texture);
        materials.back()->SetTransparencyIndex(slots[i].transparency);
        materials.back()->SetTMax(slots[i].tMax);
        record->SetMaterialPointer(i, materials.back().get());
    }
    for (int i = 0; i < record->numPolys; ++i)
        record->Poly(i)->material = std::uint16_t(random() % 10); // slot 9 has no material

    VXGeom geom(record.get());
    geom.SortGeomData();
    EXPECT_TRUE(geom.TransparentParts());
    int elements = 0;
    for (const VXElementKind kind : kKinds)
    {
        SCOPED_TRACE(int(kind));
        struct Element
        {
            std::uint32_t transparency, material;
            int poly;
        };
        std::vector<Element> expected;
        for (int i = 0; i < record->numPolys; ++i)
            if (int(record->Poly(i)->length == 3) == int(kind))
            {
                const int slot = record->Poly(i)->material;
                Element element{0, 0, i};
                if (slot < 9)
                {
                    const Slot& s = slots[slot];
                    element.material =
                        s.texture > 1 ? std::uint32_t(s.texture) << 16 | std::uint32_t(slot) : std::uint32_t(slot);
                    element.transparency = s.tMax > 0.01f ? std::uint32_t(s.transparency) << 16 : 0;
                }
                expected.push_back(element);
            }
        std::sort(expected.begin(), expected.end(),
                  [](const Element& a, const Element& b) {
                      return std::tuple(a.transparency, ~a.material, a.poly) <
                             std::tuple(b.transparency, ~b.material, b.poly);
                  });

        const VXSortedBucket& bucket = geom.Sorted(kind);
        ASSERT_EQ(bucket.count, int(expected.size()));
        elements += bucket.count;
        int at = 0;
        for (int run = 0; run < bucket.numRuns; ++run)
        {
            EXPECT_TRUE(run == 0 || bucket.runs[run].key != bucket.runs[run - 1].key);
            EXPECT_GT(bucket.runs[run].count, 0);
            for (int i = 0; i < bucket.runs[run].count; ++i, ++at)
            {
                ASSERT_LT(at, bucket.count);
                const Element& element = expected[std::size_t(at)];
                EXPECT_EQ(bucket.polys[at], element.poly);
                EXPECT_EQ(bucket.runs[run].TransparencyKey(), element.transparency);
                EXPECT_EQ(bucket.runs[run].MaterialKey(), element.material);
            }
        }
        EXPECT_EQ(at, bucket.count) << "the runs cover the elements";
    }
    EXPECT_EQ(elements, record->numPolys);
}

TEST(SortedData, OnlyDrawnTransparentElementsMakeTransparentParts)
{
    const GeomPtr record = Cube().Record();
    GEOM_AddMaterialName(record.get(), "Glass");
    VXMaterial glass(0, nullptr);
    glass.SetTMax(0.5f);
    glass.SetTransparencyIndex(4);
    VXGeom geom(record.get());
    geom.SortGeomData();
    ASSERT_TRUE(geom.DataSorted());
    geom.SetMaterialPointer(1, &glass);
    EXPECT_FALSE(geom.DataSorted()) << "another material may sort otherwise";
    geom.SortGeomData();
    EXPECT_FALSE(geom.TransparentParts()) << "no polygon uses the slot";
    geom.Polygon(2)->material = 1;
    geom.SortGeomData();
    EXPECT_TRUE(geom.TransparentParts());
    EXPECT_EQ(geom.Sorted(VXElementKind::Quads).polys[5], 2) << "transparent elements come last";
    glass.SetTMax(0);
    geom.SortGeomData();
    EXPECT_FALSE(geom.TransparentParts());
}

TEST(SortedData, CornersAreThoseThatTheCursorReads)
{
    for (const TestMesh& mesh : {Cube(), Torus(9, 7), Fan(8), TwoCubesSharingAnEdge()})
    {
        SCOPED_TRACE(mesh.name);
        const std::unique_ptr<VXGeom> geom = Wrapped(mesh, true);
        geom->SortGeomData();
        for (const VXElementKind kind : {VXElementKind::Quads, VXElementKind::Triangles})
        {
            const VXSortedBucket& bucket = geom->Sorted(kind);
            const int corners = kind == VXElementKind::Quads ? 4 : 3;
            for (int i = 0; i < bucket.count; ++i)
            {
                ASSERT_EQ(geom->BeginPolyVertexLoop(bucket.polys[i]), corners);
                for (int corner = 0; corner < corners; ++corner)
                {
                    geom->NextPolyVert();
                    EXPECT_EQ(bucket.corners[i * corners + corner], geom->CurPolyVertIndex());
                }
            }
        }
    }
    EXPECT_GT(Wrapped(Cube(), true)->NumbCreaseVerts(), 0) << "the cube must have had crease corners to read";
}

TEST(SortedData, MarksCreasesOpenEdgesAndMaterialBoundariesOnBothSides)
{
    // Cube: all 12 edges are creases, and each is drawn by two quads.
    std::unique_ptr<VXGeom> geom = Wrapped(Cube(), true);
    geom->SortGeomData();
    EdgeCounts counts = CountEdges(*geom);
    EXPECT_EQ(counts.drawn, 24);
    EXPECT_EQ(counts.crease, 6);
    EXPECT_EQ(counts.open, 0);

    // Without creases nothing of the cube is drawn.
    geom = Wrapped(Cube(), false);
    geom->SortGeomData();
    EXPECT_EQ(CountEdges(*geom).drawn, 0);

    // Open box without creases: the four edges at the rim of its four walls, top side only.
    geom = Wrapped(OpenBox(), false);
    geom->SortGeomData();
    counts = CountEdges(*geom);
    EXPECT_EQ(counts.drawn, 4);
    EXPECT_EQ(counts.open, 4);
    const VXSortedBucket& quads = geom->Sorted(VXElementKind::Quads);
    for (int i = 0; i < quads.count; ++i)
        for (int corner = 0; corner < 4; ++corner)
        {
            const bool rim = geom->Vertex(quads.corners[4 * i + corner])->z == 1 &&
                             geom->Vertex(quads.corners[4 * i + (corner + 1) % 4])->z == 1;
            EXPECT_EQ((quads.edgeFlags[i] >> corner & 1) != 0, rim) << i << " " << corner;
        }

    // A flat 4 x 3 grid whose right half has another material: three edges between the halves, seen from both.
    const GeomPtr record = Grid(4, 3).Record();
    GEOM_AddMaterialName(record.get(), "Right");
    for (int i = 0; i < record->numPolys; ++i)
        record->Poly(i)->material = record->verts[record->sets[record->Poly(i)->start]].x >= 2;
    VXGeom halves;
    halves.SetUseCreaseAngle(false);
    ASSERT_EQ(halves.SetGeom(record.get(), true), 0);
    halves.SortGeomData();
    counts = CountEdges(halves);
    EXPECT_EQ(counts.material, 6);
    EXPECT_EQ(counts.drawn, 6 + 14) << "and the outline";
}

TEST(SortedData, DrawsNoLinesAlongTextureSeams)
{
    const std::unique_ptr<VXGeom> geom = Wrapped(Torus(12, 9, true), false);
    int seams = 0;
    for (int i = 0; i < geom->EdgeList().GetEdgeCount(); ++i)
        seams += geom->EdgeList().GetEdge(i).IsCreaseEdge();
    ASSERT_EQ(seams, 12 + 9) << "the torus must have its two seams";
    geom->SortGeomData();
    EXPECT_EQ(CountEdges(*geom).drawn, 0);
}

// The second polygon of an edge may walk it either way, so its corner is found by the edge's order.
TEST(SortedData, MarksTheRightCornersWhateverTheWinding)
{
    for (const TestMesh& mesh : {MoebiusStrip(9), TwoCubesSharingAnEdge(), Mirrored(Cube())})
    {
        SCOPED_TRACE(mesh.name);
        const std::unique_ptr<VXGeom> geom = Wrapped(mesh, false);
        for (int i = 0; i < geom->EdgeList().GetEdgeCount(); i += 3) // a third of the edges, by hand
        {
            geom->EdgeList().GetEdge(i).SetCreaseEdge(true);
            geom->EdgeList().GetEdge(i).SetSmoothEdge(false);
        }
        geom->SortGeomData();
        const VXSortedBucket& quads = geom->Sorted(VXElementKind::Quads);
        for (int i = 0; i < quads.count; ++i)
            for (int corner = 0; corner < 4; ++corner)
            {
                const int from = geom->OrigVertIndex(quads.corners[4 * i + corner]);
                const int to = geom->OrigVertIndex(quads.corners[4 * i + (corner + 1) % 4]);
                const int edge = geom->EdgeList().FindEdge(from, to, quads.polys[i]);
                ASSERT_GE(edge, 0);
                const bool drawn = geom->EdgeList().GetEdge(edge).IsOpenEdge() || edge % 3 == 0;
                EXPECT_EQ((quads.edgeFlags[i] >> corner & 1) != 0, drawn) << i << " " << corner;
            }
    }
}

TEST(SortedData, IsEmptyAndNotSortedWhenMemoryRunsOut)
{
    const std::unique_ptr<VXGeom> geom = Wrapped(Cube(), true);
    bool done = false;
    int failures = 0;
    for (int n = 1; n < 100 && !done; ++n)
    {
        SCOPED_TRACE(n);
        MEM_FailAfter(n);
        geom->SortGeomData();
        MEM_FailAfter(0);
        done = geom->DataSorted();
        failures += !done;
        EXPECT_EQ(geom->NumQuads(), done ? 6 : 0);
        EXPECT_EQ(geom->Sorted(VXElementKind::Quads).edgeFlags != nullptr, done);
    }
    EXPECT_TRUE(done);
    EXPECT_GE(failures, 5) << "keys, table, runs, indices and flags each need memory";
}

// Silhouettes follow the viewpoint, whether sorting comes before looking or after; all other bits stay.
TEST(SortedData, MarksSilhouettesOfTheLastViewpoint)
{
    for (const TestMesh& mesh : {Torus(12, 9), MoebiusStrip(9), Cube(), Mirrored(Cube())})
    {
        SCOPED_TRACE(mesh.name);
        const std::unique_ptr<VXGeom> geom = Wrapped(mesh, true);
        geom->SortGeomData();
        const VXSortedBucket& quads = geom->Sorted(VXElementKind::Quads);
        const auto words = [&] { return std::vector<std::uint32_t>(quads.edgeFlags, quads.edgeFlags + quads.count); };
        const std::vector<std::uint32_t> unseen = words();
        std::vector<std::uint32_t> before;
        for (const VERTEX& eye : {VERTEX{9, 2, 3}, VERTEX{-3, 8, -7}})
        {
            geom->ComputeBackfacingToVertex(&eye);
            int marked = 0;
            for (int i = 0; i < quads.count; ++i)
            {
                EXPECT_EQ(quads.edgeFlags[i] & 0x70Fu, unseen[std::size_t(i)] & 0x70Fu);
                EXPECT_EQ((quads.edgeFlags[i] & 0xF0u) != 0, (quads.edgeFlags[i] & kElementEdgeSilhouette) != 0);
                for (int corner = 0; corner < 4; ++corner)
                {
                    const int from = geom->OrigVertIndex(quads.corners[4 * i + corner]);
                    const int to = geom->OrigVertIndex(quads.corners[4 * i + (corner + 1) % 4]);
                    const VXEdge& edge = geom->EdgeList().GetEdge(geom->EdgeList().FindEdge(from, to, quads.polys[i]));
                    const bool drawn = (quads.edgeFlags[i] & kElementEdgeOutline << corner) != 0;
                    EXPECT_EQ(drawn, edge.IsBoundaryEdge()) << i << " " << corner;
                    marked += drawn;
                }
            }
            EXPECT_GE(marked, 2);
            EXPECT_NE(words(), before);
            before = words();
            geom->SortGeomData();
            EXPECT_EQ(words(), before) << "sorted after looking";
        }
    }
}
