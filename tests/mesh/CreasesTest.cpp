#include "tests/support/CreaseChecks.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <numeric>
#include <set>
#include <string>

namespace
{
int NumCreases(const VXGeom& geom)
{
    int count = 0;
    for (int e = 0; e < geom.EdgeList().GetEdgeCount(); ++e)
        count += geom.EdgeList().GetEdge(e).IsCreaseEdge() ? 1 : 0;
    return count;
}

/// Groups of polygon corners around each vertex, found from the faces alone: two corners at a vertex belong together
/// when their faces share an edge there that `joins` accepts.
using Groups = std::map<std::pair<int, int>, int>; // (face, vertex) to group

Groups GroupCorners(const TestMesh& mesh, const std::function<bool(int, int, int, int)>& joins)
{
    std::map<std::pair<int, int>, std::vector<int>> facesOf; // by edge
    Groups groups;
    for (std::size_t f = 0; f < mesh.faces.size(); ++f)
        for (std::size_t k = 0; k < mesh.faces[f].size(); ++k)
        {
            const int a = mesh.faces[f][k], b = mesh.faces[f][(k + 1) % mesh.faces[f].size()];
            facesOf[std::minmax(a, b)].push_back(int(f));
            const int next = int(groups.size());
            groups[{int(f), a}] = next;
        }
    for (bool changed = true; changed;)
    {
        changed = false;
        for (const auto& [ends, faces] : facesOf)
            for (std::size_t i = 1; i < faces.size(); ++i)
                for (const int v : {ends.first, ends.second})
                {
                    int &a = groups[{faces[0], v}], &b = groups[{faces[i], v}];
                    if (a != b && joins(faces[0], faces[i], ends.first, ends.second))
                    {
                        a = b = std::min(a, b);
                        changed = true;
                    }
                }
    }
    return groups;
}
} // namespace

TEST(Creases, EverySectorHasAVertexOfItsOwn)
{
    for (const bool mixedWinding : {false, true})
        for (unsigned seed = 1; seed <= 40; ++seed)
        {
            SCOPED_TRACE(seed);
            TestMesh mesh = RoughGrid(7, seed, 1.5f, mixedWinding);
            if (seed % 2)
                mesh = Shuffled(mesh, seed);
            const GeomPtr record = mesh.Record();
            const auto geom = CreasedGeom(*record, {50, true});
            ExpectConsistent(*geom);
            const auto soft = [&geom](int f, int g, int, int)
            { return std::acos(double(Dot(*geom->PolyNormal(f), *geom->PolyNormal(g)))) < 50 * 0.017453292; };
            const Groups sectors = GroupCorners(mesh, soft);
            std::map<int, int> vertexOf;                 // by sector
            std::map<int, std::pair<int, int>> sectorOf; // by vertex in use
            std::map<int, std::set<int>> sectorsAt;      // by record vertex
            std::map<int, bool> creaseAt;
            for (std::size_t f = 0; f < mesh.faces.size(); ++f)
                for (std::size_t k = 0; k < 4; ++k)
                {
                    const int v = mesh.faces[f][k], sector = sectors.at({int(f), v});
                    const int used = geom->CreaseSets()[4 * f + k];
                    sectorsAt[v].insert(sector);
                    EXPECT_EQ(vertexOf.try_emplace(sector, used).first->second, used) << "a sector with two vertices";
                    const auto owner = sectorOf.try_emplace(used, sector, v).first;
                    EXPECT_EQ(owner->second.first, sector) << "a vertex of two sectors"; // a grid has one fan each
                }
            // A crease that ends inside the fan splits off its only sector as well; otherwise one sector may keep the
            // original.
            int least = 0, most = 0;
            for (const auto& [v, those] : sectorsAt)
            {
                least += int(those.size()) - 1;
                most += int(those.size());
            }
            EXPECT_GE(geom->NumbCreaseVerts(), least);
            EXPECT_LE(geom->NumbCreaseVerts(), most);
            EXPECT_LE(geom->NumbCreaseVerts(), 2 * NumCreases(*geom));
        }
}

TEST(Creases, AnyMeshAtAllComesOutConsistent)
{
    std::mt19937 random(11);
    for (int round = 0; round < 300; ++round)
    {
        const int numVerts = 3 + int(random() % 20);
        const GeomPtr g = RecordOf(numVerts, RandomPolys(random, numVerts, 1 + int(random() % 60)));
        for (int v = 0; v < numVerts; ++v)
            g->verts[v] = {float(random() % 100), float(random() % 100), float(random() % 100)};
        for (int p = 0; p < g->numPolys; ++p)
            g->Poly(p)->SetGroupWord(0, std::uint32_t(random() % 3));
        const auto geom = CreasedGeom(*g);
        ExpectConsistent(*geom);
        if (HasFailure())
        {
            ADD_FAILURE() << "round " << round;
            return;
        }
    }
}

TEST(Creases, AnglesSmoothingGroupsNormalsAndSeams)
{
    struct Row
    {
        const char* name;
        CreaseOptions options;
        int smoothing; // of the second quad; the first has 1
        bool normalsDiffer, obey, seam;
        bool crease, smooth;
    };
    // Two unit quads that meet at a right angle.
    const Row rows[] = {
        {"below the angle", {91, true}, 1, false, false, false, false, true},
        {"exactly at the angle", {90, true}, 1, false, false, false, true, false},
        {"above the angle", {80, true}, 1, false, false, false, true, false},
        {"angle not used", {80, false}, 1, false, false, false, false, true},
        {"an angle that is no number", {NAN, true}, 1, false, false, false, false, true},
        {"angle 0", {0, true}, 1, false, false, false, true, false},
        {"an angle no edge has", {181, true}, 1, false, false, false, false, true},
        {"another smoothing group", {91, true}, 2, false, false, false, true, false},
        {"normals that nobody obeys", {91, true}, 1, true, false, false, false, true},
        {"normals that are obeyed", {91, true}, 1, true, true, false, true, false},
        {"a seam", {91, true}, 1, false, false, true, true, true},
        {"a seam along a hard edge", {80, true}, 1, false, false, true, true, false},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        TestMesh mesh{"angle",
                      {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {1, 0, 1}, {1, 1, 1}},
                      {{0, 1, 2, 3}, {1, 4, 5, 2}},
                      {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {1, 0}, {2, 0}, {2, 1}, {1, 1}}};
        if (row.seam)
            mesh.uvs[7] = {5, 5}; // the second quad's corner at vertex 2
        const GeomPtr g = mesh.Record();
        g->Poly(0)->SetGroupWord(0, 1);
        g->Poly(1)->SetGroupWord(0, std::uint32_t(row.smoothing));
        g->normals = MEM_CallocArray<VERTEX>(2);
        g->normals[1] = {1, 0, 0};
        g->numNormals = 2;
        g->normalSets = MEM_CallocArray<std::int32_t>(8);
        if (row.normalsDiffer)
            g->normalSets[7] = 1;
        VXGeom::SetObeyNormals(row.obey);
        const auto geom = CreasedGeom(*g, row.options);
        VXGeom::SetObeyNormals(false);
        const VXEdge& edge = geom->EdgeList().GetEdge(geom->EdgeList().FindEdge(1, 2, -1));
        EXPECT_EQ(edge.IsCreaseEdge(), row.crease);
        EXPECT_EQ(edge.IsSmoothEdge(), row.smooth);
        EXPECT_EQ(NumCreases(*geom), row.crease ? 1 : 0); // open edges stay smooth
        EXPECT_EQ(geom->NumbCreaseVerts(), row.crease ? 2 : 0);
        EXPECT_TRUE(geom->EdgesClassified());
        if (row.crease)
        {
            // Polygon 1 gets the copies, V1's first; polygon 2 keeps the originals.
            EXPECT_EQ(edge.CreaseVertexP1V1(false), 6);
            EXPECT_EQ(edge.CreaseVertexP1V2(false), 7);
            EXPECT_EQ(edge.CreaseVertexP2V1(false), 1);
            EXPECT_EQ(edge.CreaseVertexP2V2(false), 2);
            EXPECT_TRUE(edge.IsP1V1Classified() && edge.IsP1V2Classified() && edge.IsP2V1Classified() &&
                        edge.IsP2V2Classified());
            EXPECT_EQ(geom->OrigCreaseIndex(0), 1);
            EXPECT_EQ(geom->OrigCreaseIndex(1), 2);
        }
        ExpectConsistent(*geom);
    }
}

TEST(Creases, CoplanarFacesSplitAtTinyAnglesBecauseTheClampIsAsymmetric)
{
    const GeomPtr g = Grid(2, 1).Record();
    EXPECT_EQ(NumCreases(*CreasedGeom(*g, {0.81f, true})), 1);
    EXPECT_EQ(NumCreases(*CreasedGeom(*g, {0.82f, true})), 0);
}

TEST(Creases, OppositeSectorsOfOneFanDoNotShareAVertex)
{
    // Four walls around an axis, numbered so that the two that are walked second lie opposite each other: both would
    // keep the original if one did not yield.
    const TestMesh mesh{"crossing",
                        {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {0, -1, 0}},
                        {{0, 1, 2}, {0, 3, 4}, {0, 2, 3}, {0, 4, 1}}};
    const GeomPtr g = mesh.Record();
    for (int p = 0; p < 4; ++p)
        g->Poly(p)->SetGroupWord(0, 1u << p);
    const auto geom = CreasedGeom(*g);
    std::set<int> atAxis;
    for (int f = 0; f < 4; ++f)
        atAxis.insert(geom->CreaseSets()[3 * f]);
    EXPECT_EQ(atAxis.size(), 4u);
    EXPECT_TRUE(atAxis.contains(0));
    ExpectConsistent(*geom);
}

TEST(Creases, FansThatOnlyTouchDoNotShareAVertexEither)
{
    // Two pairs of hard-edged triangles that meet in vertex 0 alone.
    const TestMesh mesh{"touching",
                        {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 1}, {-1, 0, 0}, {-1, -1, 0}, {0, -1, -1}},
                        {{0, 1, 2}, {0, 2, 3}, {0, 4, 5}, {0, 5, 6}}};
    const GeomPtr g = mesh.Record();
    for (int p = 0; p < 4; ++p)
        g->Poly(p)->SetGroupWord(0, 1u << p);
    const auto geom = CreasedGeom(*g);
    std::set<int> atTip;
    for (int f = 0; f < 4; ++f)
        atTip.insert(geom->CreaseSets()[3 * f]);
    EXPECT_EQ(atTip.size(), 4u);
    ExpectConsistent(*geom);
}

TEST(Creases, SeamsSplitTextureCoordinatesAndKeepNormals)
{
    const TestMesh mesh = Torus(12, 8);
    const GeomPtr g = mesh.Record();
    const auto geom = CreasedGeom(*g, {80, false});
    EXPECT_EQ(NumCreases(*geom), 12 + 8);
    EXPECT_EQ(geom->NumbCreaseVerts(), 11 + 7 + 3); // one on each seam, three where they cross
    ExpectConsistent(*geom);
    for (std::size_t f = 0; f < mesh.faces.size(); ++f)
        for (std::size_t k = 0; k < 4; ++k)
            EXPECT_EQ(geom->UvsPerVertex()[geom->CreaseSets()[4 * f + k]], mesh.uvs[4 * f + k]) << f;
    for (int e = 0; e < geom->EdgeList().GetEdgeCount(); ++e)
    {
        const VXEdge& edge = geom->EdgeList().GetEdge(e);
        if (!edge.IsCreaseEdge())
            continue;
        EXPECT_TRUE(edge.IsSmoothEdge());
        EXPECT_EQ(*geom->VertNormal(edge.CreaseVertexP1V1(false)), *geom->VertNormal(edge.VertIndex1()));
        EXPECT_EQ(*geom->VertNormal(edge.CreaseVertexP2V2(false)), *geom->VertNormal(edge.VertIndex2()));
    }
}

TEST(Creases, TextureCoordinatesAreThoseThatTheEdgesWriteLast)
{
    // Differences below the seam tolerance leave the vertex whole: the last edge's last polygon decides.
    TestMesh mesh = Grid(3, 3);
    for (std::size_t c = 0; c < mesh.uvs.size(); ++c)
        mesh.uvs[c].u += 4e-7f * float(c % 2);
    const GeomPtr g = mesh.Record();
    const auto geom = CreasedGeom(*g);
    std::map<int, T_VERTEX> last;
    for (int e = 0; e < geom->EdgeList().GetEdgeCount(); ++e)
    {
        const VXEdge& edge = geom->EdgeList().GetEdge(e);
        const auto write = [&](int poly, int rel, int v) { last[v] = mesh.uvs[std::size_t(4 * poly + rel)]; };
        write(edge.PolyIndex1(), edge.RelIndexP1V1(), edge.CreaseVertexP1V1(false));
        write(edge.PolyIndex1(), edge.RelIndexP1V2(), edge.CreaseVertexP1V2(false));
        if (edge.IsOpenEdge())
            continue;
        write(edge.PolyIndex2(), edge.RelIndexP2V1(), edge.CreaseVertexP2V1(false));
        write(edge.PolyIndex2(), edge.RelIndexP2V2(), edge.CreaseVertexP2V2(false));
    }
    for (const auto& [v, uv] : last)
        EXPECT_EQ(geom->UvsPerVertex()[v], uv) << v;
}

TEST(Creases, AreMadeAnewWithoutTracesOfTheRunBefore)
{
    const GeomPtr g = RoughGrid(8, 3, 1.5f).Record();
    const auto twice = CreasedGeom(*g, {20, true}), once = CreasedGeom(*g, {60, true});
    ASSERT_GT(twice->NumbCreaseVerts(), once->NumbCreaseVerts());
    twice->SetCreaseAngle(60);
    EXPECT_FALSE(twice->GenerateCreaseData());
    ASSERT_EQ(twice->NumVerts(true), once->NumVerts(true));
    for (int v = 0; v < once->NumVerts(true); ++v)
        EXPECT_EQ(*twice->VertNormal(v), *once->VertNormal(v)) << v;
    for (int e = 0; e < once->EdgeList().GetEdgeCount(); ++e)
    {
        const VXEdge &a = once->EdgeList().GetEdge(e), &b = twice->EdgeList().GetEdge(e);
        EXPECT_EQ(RowOf(a), RowOf(b));
        EXPECT_EQ(a.HasCreaseData(), b.HasCreaseData()) << e;
    }
    ExpectConsistent(*twice);
    twice->ClearEdgeSmoothing();
    EXPECT_EQ(twice->NumbCreaseVerts(), 0);
    EXPECT_EQ(twice->CreaseSets(), nullptr);
    for (int e = 0; e < twice->EdgeList().GetEdgeCount(); ++e)
        EXPECT_FALSE(twice->EdgeList().GetEdge(e).HasCreaseData());
}

TEST(Creases, VerticesFollowTheirOriginals)
{
    const auto geom = CreasedGeom(*Cube().Record());
    for (int v = 0; v < 8; ++v)
        geom->Verts()[v] = {float(v), 1, 2};
    geom->UpdateCreaseVerts();
    VERTEX* other = MEM_CallocArray<VERTEX>(8);
    for (int v = 0; v < 8; ++v)
        other[v] = {0, float(v), 0};
    other = geom->UpdateArbVertArrayForCreases(other);
    ASSERT_EQ(MEM_Count(other), 24u);
    for (int v = 8; v < 24; ++v)
    {
        EXPECT_EQ(*geom->Vertex(v), (VERTEX{float(geom->OrigVertIndex(v)), 1, 2}));
        EXPECT_EQ(other[v], (VERTEX{0, float(geom->OrigVertIndex(v)), 0}));
    }
    MEM_Free(other);
    EXPECT_EQ(geom->OrigVertIndex(24), 0);
    EXPECT_EQ(geom->UpdateArbVertArrayForCreases(nullptr), nullptr);
}

TEST(Creases, GoIntoTheCallersArraysWhenThereAreSome)
{
    const GeomPtr g = Cube().Record();
    const auto own = CreasedGeom(*g), geom = CreasedGeom(*g);
    EDGELIST lists;
    lists.verts = MEM_CallocArray<VERTEX>(8);
    std::copy(g->verts, g->verts + 8, lists.verts);
    lists.sets = MEM_CallocArray<std::int32_t>(0);
    lists.origIndices = MEM_CallocArray<std::int32_t>(0);
    geom->GenerateCreaseData(&lists);
    EXPECT_EQ(lists.numVerts, 8);
    ASSERT_EQ(lists.numCreaseVerts, 16);
    EXPECT_EQ(lists.uvsPerVertex, nullptr); // not wanted
    EXPECT_EQ(std::vector<std::int32_t>(lists.sets, lists.sets + 24),
              std::vector<std::int32_t>(own->CreaseSets(), own->CreaseSets() + 24));
    for (int k = 0; k < 16; ++k)
    {
        EXPECT_EQ(lists.origIndices[k], own->OrigCreaseIndex(k));
        EXPECT_EQ(lists.verts[8 + k], g->verts[lists.origIndices[k]]);
    }
    EXPECT_EQ(geom->CreaseSets(), nullptr);
    for (int v = 0; v < 24; ++v)
        EXPECT_LT(Distance(*geom->VertNormal(v), *own->VertNormal(v)), 1e-6f) << v;
    MEM_Free(lists.verts);
    MEM_Free(lists.sets);
    MEM_Free(lists.origIndices);
}

TEST(Creases, ArraysOfTheHostAreNeverFreedOrResized)
{
    const GeomPtr g = Cube().Record();
    const auto geom = CreasedGeom(*g);
    std::vector<std::int32_t> sets(geom->CreaseSets(), geom->CreaseSets() + 24), originals(16, 3);
    std::vector<T_VERTEX> uvs(24);
    geom->SetExternalCreaseSets(sets.data()); // the own arrays go; the leak checker watches
    geom->SetExternalOrigCreaseIndexes(originals.data());
    geom->SetExternalUvsPerVertex(uvs.data());
    geom->SetUseExternalCreaseInfo(true);
    geom->SetEdgesClassified(true);
    EXPECT_TRUE(geom->ComputeAllNormals());
    EXPECT_EQ(geom->CreaseSets(), sets.data());
    EXPECT_EQ(geom->OrigVertIndex(10), 3);
    geom->GenerateCreaseData();
    EXPECT_FALSE(geom->UseExternalCreaseInfo());
    EXPECT_NE(geom->CreaseSets(), sets.data());
    EXPECT_EQ(originals, std::vector<std::int32_t>(16, 3));
    ExpectConsistent(*geom);
}

TEST(Creases, NothingToSplitIsNoFailure)
{
    MEM_SetAllocationFailed(false);
    const GeomPtr record(GEOM_Alloc());
    VXGeom geom(record.get());
    geom.GenerateCreaseData();
    EXPECT_EQ(geom.MakeVertexNormals(), 0);
    EXPECT_FALSE(MEM_AllocationFailed());
    EXPECT_TRUE(geom.EdgesClassified());
}

TEST(Creases, PolygonNormalsThatAreTooFewAreNotRead)
{
    const GeomPtr fan = Fan(12).Record(); // 13 vertices, 12 triangles
    VXGeom geom;
    geom.SetGeom(fan.get(), false);
    ASSERT_EQ(GEOM_GroupAddElem(fan.get(), "all", 0), 0);
    ASSERT_EQ(geom.SetSizeFor(13, 40, 120, 0), 0); // 13 polygon normals for 40 polygons, until they are computed
    geom.GenerateCreaseData();
    EXPECT_TRUE(geom.RebuildLists());
    EXPECT_EQ(MEM_Count(geom.PolyNormals()), 40u);
}

TEST(Creases, TheDumpSaysWhatWasDone)
{
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "velmar_crease_dump";
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    std::filesystem::current_path(folder);
    const auto geom = CreasedGeom(*Grid(6, 6).Record());
    geom->GenerateCreaseData();
    EXPECT_TRUE(std::filesystem::is_empty(folder)); // only when it is asked for
    geom->SetDebugCreaseVerts(true);
    char name[64];
    std::snprintf(name, sizeof name, "debugCreaseData_%8.8lx_0.txt",
                  static_cast<unsigned long>(std::uintptr_t(geom->Geom()) & 0xFFFFFFFFu));
    ASSERT_TRUE(geom->RebuildLists());
    EXPECT_TRUE(std::filesystem::remove(folder / name)); // also when creases come with the normals
    geom->GenerateCreaseData();
    std::ifstream file(folder / name);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    std::filesystem::current_path(before);
    std::filesystem::remove_all(folder);
    // 36 quads: polygon 35 is there. 84 edges, 49 vertices, no creases.
    ASSERT_EQ(lines.size(), 3u + 84 + 1 + 49 + 1);
    EXPECT_TRUE(lines[0].starts_with("Time for method 0: ") && lines[0].ends_with(" seconds for 49 verts")) << lines[0];
    EXPECT_EQ(lines[1], "Polygon 35:");
    EXPECT_TRUE(
        lines[2].starts_with("\tVerts:40/40:(5.000000, 5.000000, 0.000000)/(0.833333, 0.833333)/(0.833333 0.833333)"))
        << lines[2];
    EXPECT_EQ(lines[3], "Edge 0: P1(0/0), P2(-1/0), V1(0), V2(1), false, true");
    EXPECT_EQ(lines[3 + 84], "Num Verts: 49");
    EXPECT_EQ(lines.back(), "Num Crease Verts: 0");
}
