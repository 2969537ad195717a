// The three ways in which smooth sectors are found. They agree wherever an edge has at most two polygons, also
// - where a crease ends inside a fan: the way around its end makes one sector of its two sides in all of them,
// - where fans only touch in a vertex: those with creases are split from each other, those without share the original.
// They may differ at edges of three and more polygons. There the edge list makes pairs in order of polygons, and
// methods 0 and 1 look across those pairs only; method 2 compares all polygons at the edge. So it can join what the
// others leave apart, never the other way round.

#include "tests/support/CreaseChecks.h"
#include "tests/support/Models.h"

#include <map>
#include <string>

namespace
{
class WithMethod
{
public:
    explicit WithMethod(int method) : mBefore(VXGeom::GenCreaseMethod()) { VXGeom::SetGenCreaseMethod(method); }
    ~WithMethod() { VXGeom::SetGenCreaseMethod(mBefore); }
    WithMethod(const WithMethod&) = delete;
    WithMethod& operator=(const WithMethod&) = delete;

private:
    int mBefore;
};

std::unique_ptr<VXGeom> CreasedBy(int method, const GEOM& record, const CreaseOptions& options)
{
    const WithMethod with(method);
    return CreasedGeom(record, options);
}

/// For each corner the first corner that uses the same vertex: the sectors, whatever their vertices are called.
std::vector<int> SectorsOf(const VXGeom& geom)
{
    std::map<int, int> firstOf;
    std::vector<int> sectors;
    for (int c = 0; c < int(geom.Geom()->NumCorners()); ++c)
        sectors.push_back(firstOf.try_emplace(geom.CreaseSets()[c], c).first->second);
    return sectors;
}

bool HasEdgesOfManyPolygons(const VXGeom& geom)
{
    std::set<std::pair<int, int>> ends;
    for (int e = 0; e < geom.EdgeList().GetEdgeCount(); ++e)
    {
        const VXEdge& edge = geom.EdgeList().GetEdge(e);
        if (!ends.insert(std::minmax(edge.VertIndex1(), edge.VertIndex2())).second)
            return true;
    }
    return false;
}

void ExpectMethodsAgree(const GEOM& record, const CreaseOptions& options)
{
    const auto plain = CreasedBy(0, record, options);
    const bool manifold = !HasEdgesOfManyPolygons(*plain);
    for (const int method : {1, 2})
    {
        SCOPED_TRACE("method " + std::to_string(method) + (manifold ? "" : ", edges of many polygons"));
        const auto grouped = CreasedBy(method, record, options);
        ExpectConsistent(*grouped);
        ASSERT_EQ(RowsOf(grouped->EdgeList()).size(), RowsOf(plain->EdgeList()).size());
        for (int e = 0; e < plain->EdgeList().GetEdgeCount(); ++e)
        {
            const VXEdge &a = plain->EdgeList().GetEdge(e), &b = grouped->EdgeList().GetEdge(e);
            ASSERT_EQ(a.IsCreaseEdge(), b.IsCreaseEdge()) << e;
            ASSERT_EQ(a.IsSmoothEdge(), b.IsSmoothEdge()) << e;
            ASSERT_TRUE(b.IsCreaseEdge() || b.IsOpenEdge() ||
                        (b.CreaseVertexP1V1(false) == b.CreaseVertexP2V1(false) &&
                         b.CreaseVertexP1V2(false) == b.CreaseVertexP2V2(false)))
                << e;
        }
        if (method == 2 && !manifold)
        {
            EXPECT_LE(grouped->NumbCreaseVerts(), plain->NumbCreaseVerts());
            continue;
        }
        EXPECT_EQ(grouped->NumbCreaseVerts(), plain->NumbCreaseVerts());
        ASSERT_EQ(SectorsOf(*grouped), SectorsOf(*plain));
        for (std::int64_t c = 0; c < record.NumCorners(); ++c)
        {
            const int a = plain->CreaseSets()[c], b = grouped->CreaseSets()[c];
            ASSERT_EQ(*plain->VertNormal(a), *grouped->VertNormal(b)) << "corner " << c;
            ASSERT_EQ(plain->UvsPerVertex()[a], grouped->UvsPerVertex()[b]) << "corner " << c;
        }
    }
}

/// Three quads at one edge: the outer two lie in a plane, the one between, numbered second, stands on it.
TestMesh Fin()
{
    return {"fin",
            {{0, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {-1, 1, 0}, {0, 0, 1}, {0, 1, 1}, {1, 0, 0}, {1, 1, 0}},
            {{2, 0, 1, 3}, {0, 4, 5, 1}, {0, 6, 7, 1}}};
}
} // namespace

TEST(CreaseMethods, AgreeOnAllSampleModels)
{
    std::vector<std::filesystem::path> models = SampleModels();
    EXPECT_GE(models.size(), 3u);
    const auto further = FurtherModels();
    models.insert(models.end(), further.begin(), further.end());
    for (const std::filesystem::path& path : models)
    {
        SCOPED_TRACE(path.filename().string());
        VXGeom model;
        ASSERT_EQ(model.ReadWavefront(path.string().c_str()), 0);
        for (const float angle : {80.0f, 20.0f})
            ExpectMethodsAgree(*model.Geom(), {angle, true});
    }
}

TEST(CreaseMethods, AgreeOnRoughSurfacesSeamsAndTouchingFans)
{
    for (unsigned seed = 1; seed <= 30; ++seed)
    {
        SCOPED_TRACE(seed);
        const TestMesh rough = RoughGrid(9, seed, 1.5f, seed % 2 != 0);
        const GeomPtr g = (seed % 3 ? rough : Shuffled(rough, seed)).Record();
        std::mt19937 random(seed);
        for (int p = 0; p < g->numPolys && seed % 4 == 0; ++p)
            g->Poly(p)->SetGroupWord(0, std::uint32_t(random() % 2));
        ExpectMethodsAgree(*g, {50, true});
    }
    ExpectMethodsAgree(*Torus(12, 8).Record(), {80, true});
    ExpectMethodsAgree(*MoebiusStrip(9).Record(), {20, true});
    // Four fans that meet in vertex 0: two with a crease each, one whose only sector a crease enters, one without any.
    const TestMesh touching{
        "touching",
        {{0, 0, 0},
         {1, 0, 0},
         {1, 1, 0},
         {0, 1, 1},
         {-1, 0, 0},
         {-1, -1, 0},
         {0, -1, -1},
         {1, 0, -2},
         {1, 1, -2},
         {1, 0.5, 3},
         {0, 2, 3},
         {2, 2, 3},
         {3, -1, -1},
         {3, -2, -1},
         {3, -2, 0}},
        {{0, 1, 2}, {0, 2, 3}, {0, 4, 5}, {0, 5, 6}, {0, 7, 8}, {0, 9, 10}, {0, 10, 11}, {0, 11, 9}}};
    for (unsigned keys = 0; keys < 256; ++keys)
    {
        const GeomPtr g = touching.Record();
        for (int p = 0; p < g->numPolys; ++p)
            g->Poly(p)->SetGroupWord(0, keys >> p & 1);
        ExpectMethodsAgree(*g, {180, false});
    }
}

TEST(CreaseMethods, SetTheSameFlagsByNormalsSmoothingAndTexture)
{
    const bool before = VXGeom::ObeyNormals();
    for (unsigned seed = 1; seed <= 20; ++seed)
    {
        SCOPED_TRACE(seed);
        const GeomPtr g = RoughGrid(6, seed, 0.8f).Record();
        std::mt19937 random(seed);
        g->numNormals = 3;
        g->normals = MEM_CallocArray<VERTEX>(3);
        g->normals[1] = {1, 0, 0};
        g->normalSets = MEM_CallocArray<std::int32_t>(std::size_t(g->NumCorners()));
        for (std::int64_t c = 0; c < g->NumCorners(); ++c)
        {
            g->normalSets[c] = random() % 8 ? 0 : std::int32_t(random() % 3);
            g->tex->verts[g->tex->sets[c]].u += random() % 8 ? 0.0f : 0.25f;
        }
        g->tex->numPolys = g->numPolys - 4; // the last are not covered
        VXGeom::SetObeyNormals(seed % 2 != 0);
        ExpectMethodsAgree(*g, {30, seed % 3 != 0});
        VXGeom::SetObeyNormals(before);
    }
}

TEST(CreaseMethods, GrowAsWillGroupPolygonsSays)
{
    for (unsigned seed = 1; seed <= 10; ++seed)
    {
        SCOPED_TRACE(seed);
        const GeomPtr g = RoughGrid(5, seed, 1.5f, seed % 2 != 0).Record();
        const auto geom = CreasedBy(1, *g, {45, true});
        std::map<int, std::vector<int>> cornersAt;
        for (int c = 0; c < int(g->NumCorners()); ++c)
            cornersAt[g->sets[c]].push_back(c);
        std::vector<int> sectors(std::size_t(g->NumCorners()));
        for (auto& [v, left] : cornersAt)
            while (!left.empty())
            {
                const int first = left.front();
                BArray<VXGeom::PolyLineVert> group;
                group.Append({first / 4, v});
                sectors[std::size_t(first)] = first;
                left.erase(left.begin());
                for (std::size_t i = 0; i < left.size();)
                {
                    if (!geom->WillGroupPolygons({left[i] / 4, v}, group))
                    {
                        ++i;
                        continue;
                    }
                    group.Append({left[i] / 4, v});
                    sectors[std::size_t(left[i])] = first;
                    left.erase(left.begin() + std::ptrdiff_t(i));
                    i = 0;
                }
            }
        EXPECT_EQ(SectorsOf(*geom), sectors);
        BArray<VXGeom::PolyLineVert> nobody;
        EXPECT_FALSE(geom->WillGroupPolygons({0, 0}, nobody));
    }
}

TEST(CreaseMethods, TheLastJoinsWhatGoesOnBeyondAFin)
{
    const GeomPtr g = Fin().Record();
    for (const int method : {0, 1, 2})
    {
        SCOPED_TRACE(method);
        const auto geom = CreasedBy(method, *g, {80, true});
        ExpectConsistent(*geom);
        const int left = geom->CreaseSets()[1], fin = geom->CreaseSets()[4], right = geom->CreaseSets()[8];
        EXPECT_NE(left, fin);
        EXPECT_EQ(left == right, method == 2);
        EXPECT_EQ(right == fin, method != 2); // the third polygon finds its edge taken, and no crease beside it
        EXPECT_EQ(std::fabs(geom->VertNormal(right)->z) > 0.999f, method == 2);
    }
}

TEST(CreaseMethods, MakeAnyMeshAtAllConsistent)
{
    std::mt19937 random(12);
    for (int round = 0; round < 200 && !testing::Test::HasFailure(); ++round)
    {
        SCOPED_TRACE(round);
        const int numVerts = 3 + int(random() % 20);
        const GeomPtr g = RecordOf(numVerts, RandomPolys(random, numVerts, 1 + int(random() % 60)));
        for (int v = 0; v < numVerts; ++v)
            g->verts[v] = {float(random() % 100), float(random() % 100), float(random() % 100)};
        for (int p = 0; p < g->numPolys; ++p)
            g->Poly(p)->SetGroupWord(0, std::uint32_t(random() % 2));
        ExpectMethodsAgree(*g, {80, true});
    }
}

TEST(CreaseMethods, TakeLinearTimeAroundOneVertexAndOneEdge)
{
    // Comparing all with all would take hours. In the fan every third edge is a crease; the pages of the book, each a
    // triangle, share an edge.
    constexpr int kMany = 99999;
    const GeomPtr fan = Fan(kMany).Record();
    TestMesh pages{"book", {{0, 0, 0}, {0, 1, 0}}, {}};
    for (int i = 0; i < kMany; ++i)
    {
        fan->Poly(i)->SetGroupWord(0, std::uint32_t(i / 3 % 2 + 1));
        pages.verts.push_back({std::cos(0.0001f * float(i)), 0, std::sin(0.0001f * float(i))});
        pages.faces.push_back({0, 1, i + 2});
    }
    const GeomPtr book = pages.Record();
    for (const int method : {0, 1, 2})
    {
        // The first and last run of the fan meet with the same key: 33333 runs, of which two are one.
        const auto geom = CreasedBy(method, *fan, {180, false});
        std::set<int> atHub;
        for (int i = 0; i < kMany; ++i)
            atHub.insert(geom->CreaseSets()[3 * i]);
        EXPECT_EQ(atHub.size(), std::size_t(kMany / 3 - 1)) << method;
        ExpectConsistent(*CreasedBy(method, *book, {80, true}));
    }
}

TEST(CreaseMethods, LeaveNoCreasesWhenMemoryRunsOut)
{
    const GeomPtr g = Cube().Record();
    for (const int method : {1, 2})
    {
        const WithMethod with(method);
        for (int n = 1, left = 0; left == 0; ++n)
        {
            const auto geom = CreasedGeom(*g);
            MEM_SetAllocationFailed(false);
            MEM_FailAfter(n);
            geom->GenerateCreaseData();
            MEM_FailAfter(0);
            left = geom->NumbCreaseVerts();
            EXPECT_TRUE(left == 16 || MEM_AllocationFailed()) << n;
            EXPECT_TRUE(left == 16 || left == 0) << n;
            for (int e = 0; e < geom->EdgeList().GetEdgeCount() && left == 0; ++e)
                EXPECT_FALSE(geom->EdgeList().GetEdge(e).HasCreaseData()) << n;
        }
    }
    MEM_SetAllocationFailed(false);
}
