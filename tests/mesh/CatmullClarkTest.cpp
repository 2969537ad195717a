#include "base/MEM.h"
#include "mesh/VXGeom.h"
#include "tests/support/EdgeMeshes.h"
#include "tests/support/Hull.h"
#include "tests/support/Models.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <random>
#include <set>

namespace
{
/// A quad: parent, material, its vertices, texture length, its texture vertices. All but the parent of an empty slot,
/// -1, is 0.
using QuadRow = std::array<int, 11>;

// The rules one by one, by searching the chains of the edge list for every corner. Slow, and close to how they are
// told.
class Told
{
public:
    explicit Told(VXGeom& geom)
        : mRecord(*geom.Geom()), mList(geom.EdgeList()), mNumVerts(geom.NumVerts(true)), mNumPolys(geom.NumPolys()),
          mNumTex(mRecord.tex ? mRecord.tex->numVerts : 0)
    {
        int numCorners = 0;
        for (int p = 0; p < mNumPolys; ++p)
            numCorners += mRecord.Poly(p)->length;
        verts.resize(std::size_t(mNumVerts + mNumPolys + mList.GetEdgeCount()));
        texVerts.resize(std::size_t(mNumTex > 0 ? mNumTex + mNumPolys + 2 * numCorners : 0));
        if (mNumTex > 0)
            std::copy_n(mRecord.tex->verts, mNumTex, texVerts.begin());
        GEOM_CalcPolyCentroids(&mRecord, verts.data() + mNumVerts, mNumTex > 0 ? texVerts.data() + mNumTex : nullptr);
        for (int e = 0; e < mList.GetEdgeCount(); ++e)
            EdgePoint(e, mList.GetEdge(e));
        for (int e = 0; e < mList.GetEdgeCount() && mNumTex > 0; ++e)
            EdgeTexPoints(mList.GetEdge(e), texVerts.data() + mNumTex + mNumPolys + 2 * e);
        for (int v = 0; v < mNumVerts; ++v)
            VertexPoint(v);
        for (int p = 0; p < mNumPolys; ++p)
            Split(p);
        quads.resize(std::size_t(numCorners), {-1});
    }

    std::vector<VERTEX> verts;
    std::vector<T_VERTEX> texVerts;
    std::vector<QuadRow> quads;

private:
    VERTEX Face(int p) const { return verts[std::size_t(mNumVerts + p)]; }
    VERTEX Ends(const VXEdge& e) const { return mRecord.verts[e.VertIndex1()] + mRecord.verts[e.VertIndex2()]; }
    bool HasTexture(int p) const { return mRecord.PolyHasTexture(p) && mRecord.tex->polys[p].length > 0; }
    int TexCorner(int p, int rel) const
    {
        const bool has = HasTexture(p) && rel < mRecord.tex->polys[p].length;
        return has ? mRecord.tex->sets[mRecord.tex->polys[p].start + rel] : mNumTex + p;
    }
    T_VERTEX TexMean(int p, int rel1, int rel2) const
    {
        const T_VERTEX a = texVerts[std::size_t(TexCorner(p, rel1))], b = texVerts[std::size_t(TexCorner(p, rel2))];
        return {(a.u + b.u) * 0.5f, (a.v + b.v) * 0.5f};
    }

    void EdgePoint(int e, const VXEdge& edge)
    {
        const int a = edge.PolyIndex1(), b = edge.PolyIndex2();
        VERTEX& point = verts[std::size_t(mNumVerts + mNumPolys + e)];
        if (a >= 0)
            point = b >= 0 ? (Ends(edge) + Face(a) + Face(b)) * 0.25f : Ends(edge) * 0.5f;
        else if (b >= 0)
        {
            const VERTEX sum = Ends(edge) + Face(b);
            point = {float(sum.x * 0.333333333), float(sum.y * 0.333333333), float(sum.z * 0.333333333)};
        }
    }

    void EdgeTexPoints(const VXEdge& edge, T_VERTEX* slots) const
    {
        const int a = edge.PolyIndex1(), b = edge.PolyIndex2();
        if (a >= 0 && HasTexture(a))
            slots[0] = TexMean(a, edge.RelIndexP1V1(), edge.RelIndexP1V2());
        if (b < 0)
            slots[1] = slots[0];
        else if (HasTexture(b))
            slots[1] = TexMean(b, edge.RelIndexP2V1(), edge.RelIndexP2V2());
    }

    void VertexPoint(int v)
    {
        double q[3] = {}, r[3] = {};
        int n = 0;
        VERTEX& point = verts[std::size_t(v)];
        point = mRecord.verts[v];
        const bool linked = v < mList.GetVertexLinkCount();
        for (int l = linked ? mList.GetFirstVertexLink(v) : -1; l >= 0; l = mList.GetNextVertexLink(l), ++n)
        {
            const VXEdge& edge = mList.GetEdge(mList.GetEdgefromVertexLink(l));
            if (edge.PolyIndex1() < 0 || edge.PolyIndex2() < 0)
                return;
            const VERTEX faces = Face(edge.PolyIndex1()) + Face(edge.PolyIndex2()), ends = Ends(edge);
            for (int i = 0; i < 3; ++i)
            {
                q[i] += (&faces.x)[i];
                r[i] += (&ends.x)[i];
            }
        }
        const double half = n > 0 ? 1.0 / (2 * n) : 0;
        for (int i = 0; i < 3 && n > 0; ++i)
            (&point.x)[i] =
                float((q[i] * half + 2 * (r[i] * half) + (double(n) - 3) * double((&point.x)[i])) * (1.0 / n));
    }

    void Split(int p)
    {
        const ELEMENT& element = *mRecord.Poly(p);
        const std::int32_t* const ring = mRecord.sets + element.start;
        if (element.length < 2)
            return;
        const int firstEdge = mNumVerts + mNumPolys, firstTex = mNumTex + mNumPolys;
        const int start = mList.FindEdge(ring[0], ring[1], p);
        for (int e = start, made = 0; e >= 0 && made < element.length; ++made)
        {
            const VXEdge& edge = mList.GetEdge(e);
            const bool sideA = edge.PolyIndex1() == p, fromV1 = sideA || !edge.IsEdgeOrderedProperly();
            const int c = fromV1 ? edge.VertIndex1() : edge.VertIndex2();
            const int rel = sideA ? edge.RelIndexP1V1() : fromV1 ? edge.RelIndexP2V1() : edge.RelIndexP2V2();
            const int before = mList.NextEdgePoly(&edge, p, fromV1), uv = TexCorner(p, rel);
            const int side = before >= 0 && mList.GetEdge(before).PolyIndex1() != p ? 1 : 0;
            QuadRow row{p, element.material, c, firstEdge + e, mNumVerts + p, before < 0 ? c : firstEdge + before};
            if (mNumTex > 0)
                std::ranges::copy(std::array{HasTexture(p) ? 4 : 0, uv, firstTex + 2 * e + (sideA ? 0 : 1), mNumTex + p,
                                             before < 0 ? uv : firstTex + 2 * before + side},
                                  row.begin() + 6);
            quads.push_back(row);
            e = mList.NextEdgePoly(&edge, p, !fromV1);
            if (e == start)
                break;
        }
    }

    const GEOM& mRecord;
    const VXEdgeList& mList;
    int mNumVerts, mNumPolys, mNumTex;
};

template <class T>
bool SameBits(const T* a, const std::vector<T>& b)
{
    return b.empty() || std::memcmp(a, b.data(), b.size() * sizeof(T)) == 0;
}

void ExpectAsTold(VXGeom& source, const char* name)
{
    SCOPED_TRACE(name);
    const Told told(source);
    VXGeom dest;
    dest.SetGenerateCreases(false);
    source.SubdivideCatmullClark(&dest);
    const GEOM& g = *dest.Geom();
    ASSERT_EQ(std::size_t(g.numVerts), told.verts.size());
    EXPECT_TRUE(SameBits(g.verts, told.verts));
    ASSERT_EQ(g.tex ? std::size_t(g.tex->numVerts) : 0, told.texVerts.size());
    EXPECT_TRUE(!g.tex || SameBits(g.tex->verts, told.texVerts));
    ASSERT_EQ(std::size_t(g.numPolys), told.quads.size());
    for (int q = 0; q < g.numPolys; ++q)
    {
        const ELEMENT& quad = *g.Poly(q);
        const bool made = told.quads[std::size_t(q)][0] >= 0;
        QuadRow row{dest.SubdivPolyRemapTable()[q], quad.material};
        std::copy_n(g.sets + 4 * q, 4, row.begin() + 2);
        if (g.tex && g.tex->polys)
        {
            row[6] = g.tex->polys[q].length;
            std::copy_n(g.tex->sets + 4 * q, 4, row.begin() + 7);
        }
        EXPECT_EQ(row, told.quads[std::size_t(q)]) << q;
        EXPECT_TRUE(quad.length == (made ? 4 : 0) && quad.start == (made ? 4 * q : 0)) << q;
        EXPECT_EQ(quad.type + quad.flags + quad.GroupWord(0), 0u) << q;
    }
    ASSERT_EQ(dest.SubdivVertRemapTable().Count(), source.NumVerts(true));
    for (int v = 0; v < source.NumVerts(true); ++v)
        EXPECT_EQ(dest.SubdivVertRemapTable()[v], v);
}

std::unique_ptr<VXGeom> GeomOf(const GEOM& record, bool creases = false)
{
    auto geom = std::make_unique<VXGeom>();
    geom->SetGenerateCreases(creases);
    geom->SetGeom(const_cast<GEOM*>(&record), true);
    return geom;
}

// Random texture runs: none, too short, or as long as the polygon; then fewer texture polygons than polygons.
void TextureAtRandom(GEOM& g, std::mt19937& random)
{
    const int corners = int(g.NumCorners());
    g.SetSize(g.numPolys, g.numVerts, corners, 0, std::max(corners, 1), 20);
    for (int i = 0; i < 20; ++i)
        g.tex->verts[i] = {float(random() % 100) / 16, float(random() % 100) / 16};
    for (int i = 0; i < corners; ++i)
        g.tex->sets[i] = int(random() % 20);
    for (int p = 0; p < g.numPolys; ++p)
    {
        const ELEMENT& e = *g.Poly(p);
        const int length = random() % 3 ? e.length : int(random() % unsigned(e.length + 1));
        g.tex->polys[p] = {length > 0 ? e.start : 0, length};
    }
    g.tex->numPolys -= int(random() % 3);
}

bool OnlyFaces(const VXGeom& geom)
{
    for (int p = 0; p < geom.NumPolys(); ++p)
        if (!geom.Polygon(p)->IsFace() || geom.PolyLength(p) < 3)
            return false;
    return geom.NumPolys() > 0;
}

// Vertices in the middle of one closed fan of polygons wound alike.
std::vector<bool> InsideOf(VXGeom& geom)
{
    VXEdgeList& list = geom.EdgeList();
    std::vector<bool> inside(std::size_t(geom.NumVerts(false)), true);
    for (int v = 0; v < geom.NumVerts(false); ++v)
    {
        int walked = 0;
        VertLinkEdgeWalker walker(v, &list, nullptr, -1, false);
        for (int e = walker.NextEdgeIndex(); e >= 0; e = walker.NextEdgeIndex(), ++walked)
            if (list.GetEdge(e).IsOpenEdge() || !list.GetEdge(e).IsEdgeOrderedProperly())
                inside[std::size_t(v)] = false;
        if (walked != list.GetVertexLinkCountVertex(v))
            inside[std::size_t(v)] = false;
    }
    return inside;
}

// Compares one step where the two schemes are the same: inside. Elsewhere they differ by design: OpenSubdiv moves
// borders along themselves and makes everything that is no surface sharp. Crease vertices, which would count as
// vertices of their own here, must be off. False without OpenSubdiv.
bool EqualsOpenSubdivInside(VXGeom& source, const char* name)
{
    SCOPED_TRACE(name);
    VXGeom ours, theirs;
    ours.SetGenerateCreases(false);
    theirs.SetGenerateCreases(false);
    source.SubdivideCatmullClark(&ours);
    if (source.SubdivideOpenSubDiv(&theirs, 1, kSubdivSchemeOther, true) != 0)
        return false;
    EXPECT_EQ(ours.NumPolys(), theirs.NumPolys());
    float box[9];
    GEOM_Stats(source.Geom(), box);
    const float tolerance = 1e-5f * Length(VERTEX{box[3] - box[0], box[4] - box[1], box[5] - box[2]});
    const std::vector<bool> inside = InsideOf(source);
    const std::int32_t *quad = ours.Sets(false), *peer = theirs.Sets(false);
    int inner = 0, apart = 0;
    for (int q = 0; q < ours.NumPolys(); ++q, quad += 4, peer += 4)
    {
        // Both have the children of a polygon in the order of its corners, each from a corner of its own.
        const std::ptrdiff_t turn = std::find(peer, peer + 4, theirs.SubdivVertRemapTable()[quad[0]]) - peer;
        inner += inside[std::size_t(quad[0])];
        for (int k = inside[std::size_t(quad[0])] ? 0 : 1; k < 4; ++k)
            apart += Distance(*ours.Vertex(quad[k]), *theirs.Vertex(peer[(turn + k) % 4])) <= tolerance ? 0 : 1;
        apart += turn < 4 ? 0 : 1;
    }
    EXPECT_EQ(apart, 0);
    EXPECT_GT(inner, 0);
    return true;
}

int UsedVerts(const VXGeom& geom)
{
    const GEOM& g = *geom.Geom();
    return int(std::set<std::int32_t>(g.sets, g.sets + g.NumCorners()).size());
}
} // namespace

TEST(CatmullClark, DoesWhatSearchingForEachCornerWouldDo)
{
    TestMesh flipped = Torus(5, 4);
    for (std::size_t f = 0; f < flipped.faces.size(); f += 2)
    {
        std::reverse(flipped.faces[f].begin(), flipped.faces[f].end());
        std::reverse(flipped.uvs.begin() + std::ptrdiff_t(4 * f), flipped.uvs.begin() + std::ptrdiff_t(4 * f + 4));
    }
    for (const TestMesh& mesh :
         {Cube(), OpenBox(), Fan(7), ConcaveL(), BentQuad(), MoebiusStrip(6), TwoCubesSharingAnEdge(), Sliver(),
          EmptyMesh(), Grid(3, 2), Torus(6, 5), flipped, RoughGrid(6, 1, 1, true), Shuffled(Torus(7, 6), 3)})
        ExpectAsTold(*GeomOf(*mesh.Record()), mesh.name.c_str());
}

TEST(CatmullClark, DoesSoForOddPolygonsToo)
{
    const struct
    {
        const char* name;
        std::vector<TestPoly> polys;
    } rows[] = {
        {"one and two corners", {{0, {0}}, {0, {1, 2}}, {0, {0, 1, 2}}, {0, {2, 1}}, {0, {}}}},
        {"bow-tie of two fans", {{0, {0, 1, 2}}, {0, {0, 3, 4}}}},
        {"a face through a vertex twice", {{0, {0, 1, 2, 0, 3, 4}}, {0, {2, 1, 5}}}},
        {"a face along an edge twice", {{0, {0, 1, 2, 1, 0, 3}}, {0, {1, 0, 4}}}},
        {"corners repeated in a row", {{0, {0, 0, 1, 2}}, {0, {2, 1, 1, 3, 3}}, {0, {4, 4}}}},
        {"lines and points among faces",
         {{1, {0, 1, 2}}, {0, {0, 1, 2, 3}}, {3, {3, 4}}, {1, {3, 2, 1, 3}}, {4, {0, 1}}}},
        {"four faces on one edge", {{0, {0, 1, 2}}, {0, {1, 0, 3}}, {0, {0, 1, 4}}, {0, {1, 0, 5}}}},
        {"the same face three times", {{0, {0, 1, 2}}, {0, {0, 1, 2}}, {0, {0, 2, 1}}}},
    };
    for (const auto& row : rows)
    {
        const GeomPtr record = RecordOf(6, row.polys);
        for (int v = 0; v < 6; ++v)
            record->verts[v] = {float(v * v), float(v % 3), float(v % 2)};
        ExpectAsTold(*GeomOf(*record), row.name);
    }
    for (unsigned seed = 0; seed < 300; ++seed)
    {
        std::mt19937 random(seed);
        const GeomPtr record = RecordOf(9, RandomPolys(random, 9, 1 + int(seed % 12)));
        for (int v = 0; v < 9; ++v)
            record->verts[v] = {float(random() % 64) / 8, float(random() % 64) / 8, float(random() % 64) / 8};
        for (int m = 0; m < 3; ++m)
            GEOM_AddMaterialName(record.get(), std::string(1, char('a' + m)).c_str());
        for (int p = 0; p < record->numPolys; ++p)
            record->Poly(p)->material = std::uint16_t(random() % 3);
        if (seed % 2)
            TextureAtRandom(*record, random);
        ExpectAsTold(*GeomOf(*record), std::to_string(seed).c_str());
    }
}

TEST(CatmullClark, AnEdgeWithoutItsFirstPolygonGetsAThird)
{
    const GeomPtr record = BentQuad().Record();
    const auto geom = GeomOf(*record);
    for (int e = 0; e < 4; ++e)
    {
        VXEdge& edge = geom->EdgeList().GetEdge(e);
        edge.SetPolyIndex1(-1);
        edge.Close(0, e, (e + 1) % 4, true);
    }
    ExpectAsTold(*geom, "all on the second side");
    VXGeom dest;
    geom->SubdivideCatmullClark(&dest);
    const VERTEX third = (*dest.Vertex(0) + *dest.Vertex(1) + *dest.Vertex(4)) * (1 / 3.0f);
    EXPECT_LE(Distance(*dest.Vertex(5), third), 1e-6f);
}

TEST(CatmullClark, TheCubeIsTheOneWorkedByHand)
{
    VXGeom dest;
    GeomOf(*Cube().Record())->SubdivideCatmullClark(&dest);
    ASSERT_EQ(dest.NumPolys(), 24);
    ASSERT_EQ(dest.NumVerts(false), 26);
    for (int v = 0; v < 26; ++v)
    {
        // Corners go to 5/9 of where they were, faces have their middle at 1, edges at (0, 3/4, 3/4).
        const float wanted = v < 8 ? 5 / 9.0f * std::sqrt(3.0f) : v < 14 ? 1 : 0.75f * std::sqrt(2.0f);
        EXPECT_NEAR(Length(*dest.Vertex(v)), wanted, 1e-6f) << v;
    }
}

TEST(CatmullClark, KeepsWhatASurfaceIs)
{
    for (const TestMesh& mesh : {Cube(), OpenBox(), Fan(5), ConcaveL(), MoebiusStrip(5), Torus(6, 5), Grid(4, 3)})
    {
        SCOPED_TRACE(mesh.name);
        const auto source = GeomOf(*mesh.Record());
        VXGeom once, dest;
        once.SetGenerateCreases(false);
        dest.SetGenerateCreases(false);
        source->SubdivideCatmullClark(&once);
        once.SubdivideCatmullClark(&dest);
        for (int q = 0; q < dest.NumPolys(); ++q)
            ASSERT_EQ(dest.PolyLength(q), 4);
        const auto euler = [](const VXGeom& g) { return UsedVerts(g) - g.EdgeList().GetEdgeCount() + g.NumPolys(); };
        EXPECT_EQ(euler(dest), euler(*source));
        const auto edgesWith = [](const VXGeom& g, EdgeFlag flag)
        {
            const VXEdge* const edges = g.EdgeList().Edges();
            return std::count_if(edges, edges + g.EdgeList().GetEdgeCount(),
                                 [flag](const VXEdge& e) { return e.Flag(flag); });
        };
        EXPECT_EQ(edgesWith(dest, EdgeFlag::OpenEdge), 4 * edgesWith(*source, EdgeFlag::OpenEdge));
        const auto badlyWound = [&](const VXGeom& g)
        {
            return g.EdgeList().GetEdgeCount() - edgesWith(g, EdgeFlag::OpenEdge) -
                   edgesWith(g, EdgeFlag::EdgeOrderedProperly);
        };
        EXPECT_EQ(badlyWound(dest), 4 * badlyWound(*source));
        const auto points = [](VXGeom& g) { return std::span(g.Verts(), std::size_t(g.NumVerts(false))); };
        EXPECT_LE(BeyondHull(points(dest), points(*source)), 2e-6f);
    }
}

TEST(CatmullClark, EqualsOpenSubdivInside)
{
    for (const TestMesh& mesh :
         {Cube(), Torus(9, 7, false), Moved(Torus(30, 20, false), {5, 6, 7}), RoughGrid(12, 3, 1)})
        if (!EqualsOpenSubdivInside(*GeomOf(*mesh.Record()), mesh.name.c_str()))
            GTEST_SKIP() << "built without OpenSubdiv";
}

TEST(CatmullClark, EqualsOpenSubdivInsideOfPublicModels)
{
    const auto models = FurtherModels();
    if (models.empty())
        GTEST_SKIP() << "VELMAR_MODELS names no folder of models";
    for (const std::filesystem::path& path : models)
    {
        VXGeom model;
        model.SetGenerateCreases(false);
        ASSERT_EQ(model.ReadWavefront(path.string().c_str()), 0) << path;
        if (OnlyFaces(model) && !EqualsOpenSubdivInside(model, path.filename().string().c_str()))
            GTEST_SKIP() << "built without OpenSubdiv";
    }
}

TEST(CatmullClark, CarriesMaterialsAndDerivesNormals)
{
    const GeomPtr record = Cube().Record();
    GEOM_AddMaterialName(record.get(), "red");
    record->Poly(2)->material = 1;
    int host = 0;
    record->SetMaterialPointer(1, &host);
    VXGeom dest;
    GeomOf(*record)->SubdivideCatmullClark(&dest);
    ASSERT_EQ(dest.NumGeomMaterials(), 2);
    EXPECT_EQ(dest.MaterialPointer(1), &host);
    EXPECT_STREQ(dest.MaterialName(1), "red");
    for (int q = 0; q < 24; ++q)
        EXPECT_EQ(int(dest.Polygon(q)->material), q / 4 == 2 ? 1 : 0);
    for (int v = 0; v < 26; ++v)
        EXPECT_GT(Dot(*dest.VertNormal(v), *dest.Vertex(v)), 0.9f) << v; // outwards
    EXPECT_EQ(dest.EdgeList().GetEdgeCount(), 48);
}

TEST(CatmullClark, CreaseVerticesStayAndNoQuadUsesThem)
{
    const auto source = GeomOf(*Cube().Record(), true);
    ASSERT_EQ(source->NumVerts(true), 24);
    VXGeom dest;
    dest.SetGenerateCreases(false);
    source->SubdivideCatmullClark(&dest);
    EXPECT_EQ(dest.NumVerts(false), 24 + 6 + 12);
    EXPECT_EQ(UsedVerts(dest), 26);
    for (int v = 8; v < 24; ++v)
        EXPECT_EQ(*dest.Vertex(v), *source->Vertex(v));
}

TEST(CatmullClark, DoesNothingWithoutTwoMeshes)
{
    const auto cube = GeomOf(*Cube().Record());
    cube->SubdivideCatmullClark(nullptr);
    cube->SubdivideCatmullClark(cube.get());
    VXGeom borrower;
    borrower.SetGeom(cube->Geom(), false);
    cube->SubdivideCatmullClark(&borrower);
    EXPECT_EQ(cube->NumPolys(), 6);
    VXGeom none;
    none.SubdivideCatmullClark(cube.get());
    EXPECT_EQ(cube->NumPolys(), 6);
}

TEST(CatmullClark, WithoutMemoryTheResultIsWholeOrEmpty)
{
    const GeomPtr record = Torus(4, 3).Record(), before = ConcaveL().Record();
    const auto source = GeomOf(*record);
    int failures = 0;
    for (std::int64_t n = 1; n < 200; ++n)
    {
        VXGeom dest;
        dest.SetGeom(before.get(), true);
        MEM_FailAfter(n);
        source->SubdivideCatmullClark(&dest);
        MEM_FailAfter(0);
        const int verts = dest.NumVerts(false);
        failures += verts == 0 ? 1 : 0;
        EXPECT_TRUE(verts == 0 || verts == 12 + 12 + 24) << n;
        EXPECT_EQ(dest.SubdivVertRemapTable().Count(), verts > 0 ? 12 : 0) << n;
    }
    MEM_SetAllocationFailed(false);
    EXPECT_GT(failures, 5);
}

TEST(CatmullClark, TakesHostilePositionsAndStaleEdges)
{
    const GeomPtr record = Torus(4, 3).Record();
    const auto source = GeomOf(*record);
    source->Verts()[5] = {NAN, INFINITY, -INFINITY};
    VXGeom dest;
    source->SubdivideCatmullClark(&dest);
    EXPECT_EQ(dest.NumPolys(), 48);
    for (int e = 0; e < source->EdgeList().GetEdgeCount(); ++e)
    {
        VXEdge& edge = source->EdgeList().GetEdge(e);
        edge.SetPolyIndex2(e % 5 == 0 ? 1000 : edge.PolyIndex2());
        edge.SetVertIndex1(e % 5 == 1 ? -1 : edge.VertIndex1());
        edge.SetRelIndexP1V1(e % 5 == 2 ? 99 : edge.RelIndexP1V1());
        edge.SetVertIndex2(e % 5 == 3 ? 1 << 30 : edge.VertIndex2());
    }
    source->SubdivideCatmullClark(&dest);
    EXPECT_EQ(dest.NumVerts(false), 48);
}

TEST(CatmullClark, LargePolygonsAndManyEdgesAtAVertexTakeLinearTime)
{
    // Each of these would take far too long if every corner walked along what is there.
    constexpr int kMany = 100000;
    std::vector<int> ring(kMany), star;
    for (int v = 0; v < kMany; ++v)
        ring[std::size_t(v)] = v;
    for (int v = 1; v < kMany; ++v)
        star.insert(star.end(), {0, v});
    const struct
    {
        const char* name;
        GeomPtr record;
        int quads;
    } rows[] = {
        {"one face", RecordOf(kMany, {{0, ring}}), kMany},
        {"one line", RecordOf(kMany, {{1, ring}}), kMany - 1},
        {"a face that comes back to a vertex", RecordOf(kMany, {{0, star}}), 2 * (kMany - 1)},
        {"a fan", Fan(kMany).Record(), 3 * kMany},
    };
    for (const auto& row : rows)
    {
        const auto source = GeomOf(*row.record);
        VXGeom dest;
        dest.SetGenerateCreases(false);
        source->SubdivideCatmullClark(&dest);
        int quads = 0;
        for (int q = 0; q < dest.NumPolys(); ++q)
            quads += dest.PolyLength(q) == 4 ? 1 : 0;
        EXPECT_EQ(quads, row.quads) << row.name;
    }
}
