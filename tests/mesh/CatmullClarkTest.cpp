#include "base/MEM.h"
#include "mesh/VXGeom.h"
#include "tests/support/EdgeMeshes.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <set>

namespace
{
/// What subdivision leaves in a record, compared bit for bit.
struct Quads
{
    std::vector<VERTEX> verts;
    std::vector<T_VERTEX> texVerts;
    std::vector<std::array<int, 4>> corners, texCorners; ///< of the quads made, without empty slots
    std::vector<int> materials, parents, texLengths;
};

T_VERTEX Mean(const T_VERTEX& a, const T_VERTEX& b) { return {(a.u + b.u) * 0.5f, (a.v + b.v) * 0.5f}; }

// The rules one by one, by searching the chains of the edge list for every corner. Slow, and close to how they are
// told.
class Reference
{
public:
    explicit Reference(VXGeom& geom) : mGeom(geom), mRecord(*geom.Geom()), mList(geom.EdgeList())
    {
        mNumVerts = geom.NumVerts(true);
        mNumPolys = geom.NumPolys();
        mNumTex = mRecord.tex ? mRecord.tex->numVerts : 0;
        mCorners = 0;
        for (int p = 0; p < mNumPolys; ++p)
            mCorners += mRecord.Poly(p)->length;
        FacePoints();
        EdgePoints();
        VertexPoints();
        for (int p = 0; p < mNumPolys; ++p)
            Split(p);
    }
    Quads out;

private:
    void FacePoints()
    {
        out.verts.resize(std::size_t(mNumVerts + mNumPolys + mList.GetEdgeCount()));
        if (mNumTex > 0)
        {
            out.texVerts.resize(std::size_t(mNumTex + mNumPolys + 2 * mCorners));
            std::copy(mRecord.tex->verts, mRecord.tex->verts + mNumTex, out.texVerts.begin());
        }
        GEOM_CalcPolyCentroids(&mRecord, out.verts.data() + mNumVerts,
                               mNumTex > 0 ? out.texVerts.data() + mNumTex : nullptr);
    }

    VERTEX Face(int p) const { return out.verts[std::size_t(mNumVerts + p)]; }

    bool HasTexture(int p) const { return mRecord.PolyHasTexture(p) && mRecord.tex->polys[p].length > 0; }
    int TexCorner(int p, int rel) const
    {
        const bool has = HasTexture(p) && rel < mRecord.tex->polys[p].length;
        return has ? mRecord.tex->sets[mRecord.tex->polys[p].start + rel] : mNumTex + p;
    }
    T_VERTEX TexMean(int p, int rel1, int rel2) const
    {
        return Mean(out.texVerts[std::size_t(TexCorner(p, rel1))], out.texVerts[std::size_t(TexCorner(p, rel2))]);
    }

    void EdgePoints()
    {
        for (int e = 0; e < mList.GetEdgeCount(); ++e)
        {
            const VXEdge& edge = mList.GetEdge(e);
            const int a = edge.PolyIndex1(), b = edge.PolyIndex2();
            const VERTEX ends = mRecord.verts[edge.VertIndex1()] + mRecord.verts[edge.VertIndex2()];
            VERTEX& point = out.verts[std::size_t(mNumVerts + mNumPolys + e)];
            if (a >= 0 && b >= 0)
                point = (ends + Face(a) + Face(b)) * 0.25f;
            else if (a >= 0)
                point = ends * 0.5f;
            else if (b >= 0)
            {
                const VERTEX sum = ends + Face(b);
                point = {float(sum.x * 0.333333333), float(sum.y * 0.333333333), float(sum.z * 0.333333333)};
            }
            if (mNumTex == 0)
                continue;
            T_VERTEX* const slot = out.texVerts.data() + mNumTex + mNumPolys + 2 * e;
            if (a >= 0 && HasTexture(a))
                slot[0] = TexMean(a, edge.RelIndexP1V1(), edge.RelIndexP1V2());
            if (b >= 0 && HasTexture(b))
                slot[1] = TexMean(b, edge.RelIndexP2V1(), edge.RelIndexP2V2());
            else if (b < 0)
                slot[1] = slot[0];
        }
    }

    void VertexPoints()
    {
        for (int v = 0; v < mNumVerts; ++v)
        {
            double q[3] = {}, r[3] = {};
            int n = 0;
            bool border = false;
            const bool linked = v < mList.GetVertexLinkCount();
            for (int l = linked ? mList.GetFirstVertexLink(v) : -1; l >= 0; l = mList.GetNextVertexLink(l), ++n)
            {
                const VXEdge& edge = mList.GetEdge(mList.GetEdgefromVertexLink(l));
                border = border || edge.PolyIndex1() < 0 || edge.PolyIndex2() < 0;
                if (border)
                    break;
                const VERTEX faces = Face(edge.PolyIndex1()) + Face(edge.PolyIndex2());
                const VERTEX ends = mRecord.verts[edge.VertIndex1()] + mRecord.verts[edge.VertIndex2()];
                for (int i = 0; i < 3; ++i)
                {
                    q[i] += (&faces.x)[i];
                    r[i] += (&ends.x)[i];
                }
            }
            const VERTEX p = mRecord.verts[v];
            VERTEX& point = out.verts[std::size_t(v)];
            point = p;
            for (int i = 0; i < 3 && n > 0 && !border; ++i)
                (&point.x)[i] = float(
                    (q[i] * (1.0 / (2 * n)) + 2 * (r[i] * (1.0 / (2 * n))) + (double(n) - 3) * double((&p.x)[i])) *
                    (1.0 / n));
        }
    }

    void Split(int p)
    {
        const ELEMENT& element = *mRecord.Poly(p);
        const std::int32_t* const ring = mRecord.sets + element.start;
        if (element.length < 2)
            return;
        const int start = mList.FindEdge(ring[0], ring[1], p);
        for (int e = start, made = 0; e >= 0 && made < element.length; ++made)
        {
            const VXEdge& edge = mList.GetEdge(e);
            const bool sideA = edge.PolyIndex1() == p;
            const bool fromV1 = sideA || !edge.IsEdgeOrderedProperly();
            const int c = fromV1 ? edge.VertIndex1() : edge.VertIndex2();
            const int rel = sideA ? edge.RelIndexP1V1() : fromV1 ? edge.RelIndexP2V1() : edge.RelIndexP2V2();
            const int before = mList.NextEdgePoly(&edge, p, fromV1);
            const int uv = TexCorner(p, rel);
            const int firstTex = mNumTex + mNumPolys, firstEdge = mNumVerts + mNumPolys;
            const int beforeUV =
                before < 0 ? uv : firstTex + 2 * before + (mList.GetEdge(before).PolyIndex1() == p ? 0 : 1);
            out.corners.push_back({c, firstEdge + e, mNumVerts + p, before < 0 ? c : firstEdge + before});
            out.texCorners.push_back({uv, firstTex + 2 * e + (sideA ? 0 : 1), mNumTex + p, beforeUV});
            out.materials.push_back(element.material);
            out.parents.push_back(p);
            out.texLengths.push_back(HasTexture(p) ? 4 : 0);
            e = mList.NextEdgePoly(&edge, p, !fromV1);
            if (e == start)
                break;
        }
    }

    VXGeom& mGeom;
    const GEOM& mRecord;
    const VXEdgeList& mList;
    int mNumVerts, mNumPolys, mNumTex, mCorners;
};

template <class T>
bool SameBits(const T* a, const T* b, std::size_t count)
{
    return count == 0 || std::memcmp(a, b, count * sizeof(T)) == 0;
}

void ExpectAsTold(VXGeom& source, const char* name)
{
    SCOPED_TRACE(name);
    const Quads told = Reference(source).out;
    VXGeom dest;
    dest.SetGenerateCreases(false);
    source.SubdivideCatmullClark(&dest);
    const GEOM& g = *dest.Geom();
    ASSERT_EQ(std::size_t(g.numVerts), told.verts.size());
    EXPECT_TRUE(SameBits(g.verts, told.verts.data(), told.verts.size()));
    ASSERT_EQ(g.tex ? std::size_t(g.tex->numVerts) : 0, told.texVerts.size());
    EXPECT_TRUE(!g.tex || SameBits(g.tex->verts, told.texVerts.data(), told.texVerts.size()));
    const std::size_t numQuads = told.corners.size();
    ASSERT_LE(numQuads, std::size_t(g.numPolys));
    EXPECT_TRUE(SameBits(g.sets, told.corners.data()->data(), 4 * numQuads));
    EXPECT_TRUE(!g.tex || SameBits(g.tex->sets, told.texCorners.data()->data(), 4 * numQuads));
    for (int q = 0; q < g.numPolys; ++q)
    {
        const bool made = std::size_t(q) < numQuads;
        const ELEMENT& quad = *g.Poly(q);
        EXPECT_EQ(quad.length, made ? 4 : 0) << q;
        EXPECT_EQ(quad.start, made ? 4 * q : 0) << q;
        EXPECT_EQ(quad.material, made ? told.materials[std::size_t(q)] : 0) << q;
        EXPECT_EQ(quad.type + quad.flags + quad.GroupWord(0), 0u) << q;
        EXPECT_EQ(dest.SubdivPolyRemapTable()[q], made ? told.parents[std::size_t(q)] : -1) << q;
        EXPECT_TRUE(!g.tex || g.tex->polys[q].length == (made ? told.texLengths[std::size_t(q)] : 0)) << q;
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

VXGeom* Subdivided(VXGeom& source, VXGeom& dest, int levels)
{
    source.SubdivideCatmullClark(&dest);
    for (; levels > 1; --levels)
    {
        const std::unique_ptr<VXGeom> last(dest.Clone(true));
        last->SubdivideCatmullClark(&dest);
    }
    return &dest;
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

bool IsClosed(const VXGeom& geom)
{
    for (int e = 0; e < geom.EdgeList().GetEdgeCount(); ++e)
        if (geom.EdgeList().GetEdge(e).IsOpenEdge())
            return false;
    return true;
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
        VXGeom dest;
        dest.SetGenerateCreases(false);
        Subdivided(*source, dest, 2);
        for (int q = 0; q < dest.NumPolys(); ++q)
            ASSERT_EQ(dest.PolyLength(q), 4);
        const auto euler = [](const VXGeom& g) { return UsedVerts(g) - g.EdgeList().GetEdgeCount() + g.NumPolys(); };
        EXPECT_EQ(euler(dest), euler(*source));
        EXPECT_EQ(IsClosed(dest), IsClosed(*source));
        for (int e = 0; e < dest.EdgeList().GetEdgeCount() && mesh.name != MoebiusStrip(5).name; ++e)
            EXPECT_TRUE(dest.EdgeList().GetEdge(e).IsOpenEdge() || dest.EdgeList().GetEdge(e).IsEdgeOrderedProperly());
        float low[9], high[9];
        GEOM_Stats(source->Geom(), low);
        GEOM_Stats(dest.Geom(), high);
        for (int i = 0; i < 3; ++i)
        {
            EXPECT_GE(high[i], low[i] - 1e-6f);
            EXPECT_LE(high[3 + i], low[3 + i] + 1e-6f);
        }
    }
}

// Where the two schemes are the same: closed fans of polygons all wound one way. Elsewhere they differ by design:
// OpenSubdiv moves borders along themselves and makes everything that is no surface sharp.
TEST(CatmullClark, EqualsOpenSubdivInside)
{
    const auto expectEqual = [](VXGeom& source, const char* name)
    {
        SCOPED_TRACE(name);
        VXGeom ours, theirs;
        ours.SetGenerateCreases(false);
        theirs.SetGenerateCreases(false);
        source.SubdivideCatmullClark(&ours);
        ASSERT_EQ(source.SubdivideOpenSubDiv(&theirs, 1, kSubdivSchemeOther, true), 0);
        ASSERT_EQ(ours.NumPolys(), theirs.NumPolys());
        float box[9];
        GEOM_Stats(source.Geom(), box);
        const float tolerance = 1e-5f * Length(VERTEX{box[3] - box[0], box[4] - box[1], box[5] - box[2]});
        const std::vector<bool> inside = InsideOf(source);
        const std::int32_t* const quads = ours.Sets(false);
        const std::int32_t* const peers = theirs.Sets(false);
        int compared = 0;
        for (int q = 0; q < ours.NumPolys(); ++q)
        {
            // Both have the children of a polygon in the order of its corners, each from a corner of its own.
            const int corner = quads[4 * q], child = theirs.SubdivVertRemapTable()[corner];
            const std::ptrdiff_t turn = std::find(peers + 4 * q, peers + 4 * q + 4, child) - (peers + 4 * q);
            ASSERT_LT(turn, 4) << q;
            for (int k = inside[std::size_t(corner)] ? 0 : 1; k < 4; ++k, ++compared)
                ASSERT_LE(Distance(*ours.Vertex(quads[4 * q + k]), *theirs.Vertex(peers[4 * q + (turn + k) % 4])),
                          tolerance)
                    << q << ' ' << k;
        }
        EXPECT_GT(compared, 3 * ours.NumPolys());
    };
    VXGeom probe;
    if (GeomOf(*Cube().Record())->SubdivideOpenSubDiv(&probe, 1, kSubdivSchemeOther, true) != 0)
        GTEST_SKIP() << "built without OpenSubdiv";
    for (const TestMesh& mesh :
         {Cube(), Torus(9, 7, false), Moved(Torus(30, 20, false), {5, 6, 7}), RoughGrid(12, 3, 1)})
        expectEqual(*GeomOf(*mesh.Record()), mesh.name.c_str());

    // Public models, where the developer's machine has some.
    const char* const named = std::getenv("VELMAR_MODELS");
    const std::filesystem::path folder = named ? named : VELMAR_SOURCE_DIR "/../shared/models";
    if (!std::filesystem::is_directory(folder))
        GTEST_SKIP() << "no models in " << folder;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
    {
        VXGeom model;
        model.SetGenerateCreases(false);
        if (entry.path().extension() == ".obj" && model.ReadWavefront(entry.path().string().c_str()) == 0 &&
            OnlyFaces(model))
            expectEqual(model, entry.path().filename().string().c_str());
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
        EXPECT_EQ(dest.Polygon(q)->material, q / 4 == 2 ? 1 : 0);
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
        const bool reached = MEM_AllocArray<int>(1) == nullptr;
        MEM_FailAfter(0);
        failures += reached ? 0 : 1;
        const int verts = dest.NumVerts(false);
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
        switch (e % 5)
        {
        case 0:
            edge.SetPolyIndex2(1000);
            break;
        case 1:
            edge.SetVertIndex1(-1);
            break;
        case 2:
            edge.SetRelIndexP1V1(99);
            break;
        case 3:
            edge.SetVertIndex2(1 << 30);
            break;
        default:
            break;
        }
    }
    source->SubdivideCatmullClark(&dest);
    EXPECT_EQ(dest.NumVerts(false), 48);
}

TEST(CatmullClark, LargePolygonsAndManyEdgesAtAVertexTakeLinearTime)
{
    // Each of these would take minutes if every corner walked along what is there.
    constexpr int kMany = 200000;
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
