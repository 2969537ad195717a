#include "engine/VXScene.h"
#include "engine/VXSceneDelegate.h"
#include "engine/VXSwitches.h"
#include "mesh/VXGeom.h"
#include "tests/support/DirectSubdivision.h"
#include "tests/support/Hull.h"
#include "tests/support/Meshes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace
{
template <class A, class B>
void ExpectSame(const A* ours, const B* theirs, std::int64_t count, const char* what)
{
    static_assert(sizeof(A) == sizeof(B));
    for (std::int64_t i = 0; i < count; ++i)
        ASSERT_EQ(std::memcmp(ours + i, theirs + i, sizeof(A)), 0) << what << ' ' << i;
}

void ExpectEqual(VXGeom& dest, const DirectSubdivision& direct)
{
    const auto& last = direct.Last();
    const GEOM_Texture* const tex = dest.Geom()->tex;
    ASSERT_EQ(dest.NumVerts(false), last.GetNumVertices());
    ASSERT_EQ(dest.NumPolys(), last.GetNumFaces());
    ASSERT_EQ(tex == nullptr, direct.uvs.empty());
    ExpectSame(dest.Verts(), direct.LastPoints(), last.GetNumVertices(), "point");
    if (tex)
    {
        ASSERT_EQ(tex->numVerts, last.GetNumFVarValues());
        ExpectSame(tex->verts, direct.LastUVs(), tex->numVerts, "UV");
    }
    for (int f = 0; f < last.GetNumFaces(); ++f)
    {
        ExpectSame(dest.Sets(false) + 4 * f, last.GetFaceVertices(f).begin(), 4, "corner");
        if (tex)
            ExpectSame(tex->sets + 4 * f, last.GetFaceFVarValues(f).begin(), 4, "UV corner");
        int parent = f;
        for (int i = direct.refiner->GetMaxLevel(); i > 0; --i)
            parent = direct.refiner->GetLevel(i).GetFaceParentFace(parent);
        ASSERT_EQ(dest.SubdivPolyRemapTable()[f], parent);
    }
    const int numControl = direct.refiner->GetLevel(0).GetNumVertices();
    ASSERT_EQ(dest.SubdivVertRemapTable().Count(), numControl);
    for (int v = 0; v < numControl; ++v)
    {
        int child = v;
        for (int i = 0; i < direct.refiner->GetMaxLevel(); ++i)
            child = direct.refiner->GetLevel(i).GetVertexChildVertex(child);
        ASSERT_EQ(dest.SubdivVertRemapTable()[v], child);
    }
}

/// Everything about a mesh that a failure must leave alone.
std::string Bytes(const VXGeom& mesh)
{
    std::string bytes;
    const auto add = [&bytes](const void* data, std::size_t size)
    { bytes.append(static_cast<const char*>(data), data ? size : 0); };
    const GEOM* const geom = const_cast<VXGeom&>(mesh).Geom();
    if (!geom)
        return bytes;
    add(geom->verts, std::size_t(mesh.NumVerts(true)) * sizeof(VERTEX));
    add(geom->sets, std::size_t(geom->NumCorners()) * 4);
    add(geom->polys, std::size_t(geom->numPolys * geom->PolyStride()));
    add(mesh.VertNormals(), MEM_TotalSize(mesh.VertNormals()));
    add(mesh.PolyNormals(), MEM_TotalSize(mesh.PolyNormals()));
    add(mesh.CreaseSets(), MEM_TotalSize(mesh.CreaseSets()));
    add(mesh.UvsPerVertex(), MEM_TotalSize(mesh.UvsPerVertex()));
    if (const GEOM_Texture* const tex = geom->tex)
    {
        add(tex->verts, std::size_t(tex->numVerts) * sizeof(T_VERTEX));
        add(tex->sets, std::size_t(tex->numCorners) * 4);
        add(tex->polys, std::size_t(tex->numPolys) * sizeof(GEOM_TexPoly));
    }
    const std::int32_t counts[] = {mesh.EdgeList().GetEdgeCount(), mesh.NumbCreaseVerts(), std::int32_t(mesh.Flags()),
                                   geom->NumMaterials()};
    add(counts, sizeof counts);
    return bytes;
}

TestMesh Ngon(int n)
{
    TestMesh mesh{std::to_string(n) + "-gon", {}, {{}}};
    for (int i = 0; i < n; ++i)
    {
        mesh.verts.push_back(
            {std::cos(6.2831853f * float(i) / float(n)), std::sin(6.2831853f * float(i) / float(n)), 0});
        mesh.faces[0].push_back(i);
    }
    return mesh;
}

std::vector<TestMesh> AllMeshes()
{
    const std::vector<VERTEX> some = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 1, 1}, {2, 0, 1}};
    std::vector<TestMesh> meshes = {Cube(),
                                    OpenBox(),
                                    Fan(5),
                                    ConcaveL(),
                                    BentQuad(),
                                    Grid(3, 2),
                                    Torus(6, 5),
                                    Torus(5, 4, false),
                                    Ngon(1000),
                                    MoebiusStrip(7),
                                    TwoCubesSharingAnEdge(),
                                    Sliver()};
    for (const TestMesh& row :
         std::vector<TestMesh>{{"an isolated vertex", some, {{0, 1, 2, 3}, {2, 1, 5}}},
                               {"bow tie", some, {{0, 1, 2}, {2, 4, 5}}},
                               {"opposite winding", some, {{0, 1, 2, 3}, {1, 2, 4, 5}}},
                               {"the same face three times", some, {{0, 1, 2, 3}, {0, 1, 2, 3}, {0, 1, 2, 3}}},
                               {"back to back", some, {{0, 1, 2, 3}, {3, 2, 1, 0}}},
                               {"repeated corner", some, {{0, 1, 1, 2}, {0, 2, 3}, {3, 3, 3}}},
                               {"a vertex twice", some, {{0, 1, 2, 0, 4, 5}, {2, 4, 1, 2, 4}}},
                               {"an edge twice", some, {{0, 1, 0, 1}, {1, 0, 1, 2}}}})
        meshes.push_back(row);
    return meshes;
}

// Two polygons that run over vertex 0 and one edge more than once, for which OpenSubdiv has no rule, beside `fan`
// triangles around a vertex of their own. Each vertex has one texture vertex.
TestMesh RunsOverAVertex(int fan)
{
    TestMesh mesh{"runs over a vertex, beside " + std::to_string(fan), {}, {}};
    for (int i = 0; i < fan; ++i)
        mesh.faces.push_back({0, 1 + i, 1 + (i + 1) % fan});
    const int first = fan > 0 ? fan + 1 : 0;
    for (const std::vector<int>& face : {std::vector<int>{5, 3, 0}, std::vector<int>{5, 0, 3, 6, 0, 4}})
        for (int k = (mesh.faces.emplace_back(), 0); k < int(face.size()); ++k)
            mesh.faces.back().push_back(first + face[std::size_t(k)]);
    for (int v = 0; v < first + 7; ++v)
        mesh.verts.push_back({float((v - first) % 3), float((v - first) * (v - first) % 5), float((v - first) % 4)});
    for (const std::vector<int>& face : mesh.faces)
        for (const int v : face)
            mesh.uvs.push_back({float(v - first), float((v - first) * (v - first) % 7)});
    return mesh;
}

float Size(VXGeom& mesh)
{
    float box[9];
    GEOM_Stats(mesh.Geom(), box);
    return Length({box[3] - box[0], box[4] - box[1], box[5] - box[2]});
}

std::vector<VERTEX> TexturePoints(VXGeom& mesh) // those that corners use
{
    std::vector<VERTEX> points;
    const GEOM_Texture& tex = *mesh.Geom()->tex;
    for (int c = 0; c < tex.numCorners; ++c)
        points.push_back({tex.verts[tex.sets[c]].u, tex.verts[tex.sets[c]].v, 0});
    return points;
}
} // namespace

// Meshes for which a direct use reads what nobody has set are left out.
TEST(OpenSubdiv, EqualsADirectUseOfItsClasses)
{
    for (const TestMesh& mesh : AllMeshes())
        for (int level = 1; level <= 3; ++level)
        {
            SCOPED_TRACE(mesh.name + ", level " + std::to_string(level));
            const GeomPtr record = mesh.Record();
            VXGeom control(record.get()), dest;
            ASSERT_EQ(control.SubdivideOpenSubDiv(&dest, level, kSubdivSchemeOther, false), 0);
            ExpectEqual(dest, DirectSubdivision(*record, level, true));
        }
}

TEST(OpenSubdiv, WhereItHasNoRuleAVertexStaysWhateverLiesBeside)
{
    for (const int fan : {3, 4, 9, 30}) // each leaves other weights behind
        for (int level = 1; level <= 3; ++level)
        {
            SCOPED_TRACE(std::to_string(fan) + ", level " + std::to_string(level));
            VXGeom alone(RunsOverAVertex(0).Record().get()), beside(RunsOverAVertex(fan).Record().get()), a, b;
            ASSERT_EQ(alone.SubdivideOpenSubDiv(&a, level, kSubdivSchemeOther, false), 0);
            ASSERT_EQ(beside.SubdivideOpenSubDiv(&b, level, kSubdivSchemeOther, false), 0);
            EXPECT_EQ(*a.Vertex(a.SubdivVertRemapTable()[0]), *alone.Vertex(0));
            for (int f = 0, skipped = b.NumPolys() - a.NumPolys(); f < a.NumPolys(); ++f)
                for (int k = (a.SetCurrentPoly(f), b.SetCurrentPoly(skipped + f), 0); k < 4; ++k)
                {
                    const int corner = 4 * f + k;
                    const T_VERTEX uvA = *a.CurPolyTVertex(k), uvB = *b.CurPolyTVertex(k);
                    EXPECT_TRUE(uvA.u == uvB.u && uvA.v == uvB.v) << corner;
                    EXPECT_EQ(a.Verts()[a.Sets(false)[corner]], b.Verts()[b.Sets(false)[4 * skipped + corner]]);
                }
        }
}

TEST(OpenSubdiv, StaysWithinTheHullOfTheControlMesh)
{
    std::vector<TestMesh> meshes = AllMeshes();
    for (const int fan : {0, 9})
        meshes.push_back(RunsOverAVertex(fan));
    meshes.push_back(Ngon(32767));
    std::minstd_rand random(7);
    const auto below = [&random](int limit) { return int(random() % unsigned(limit)); };
    for (int i = 0; i < 2000; ++i) // polygons that run over few vertices in any order
    {
        TestMesh& mesh = meshes.emplace_back(TestMesh{"random " + std::to_string(i), {}, {}, {}});
        for (int v = 3 + below(8); v > 0; --v)
            mesh.verts.push_back({float(below(99)), float(below(99)), float(below(99))});
        for (int f = 1 + below(8); f > 0; --f)
            for (int k = (mesh.faces.emplace_back(), 3 + below(5)); k > 0; --k)
            {
                mesh.faces.back().push_back(below(int(mesh.verts.size())));
                if (const float v = float(mesh.faces.back().back()); i % 4 == 1)
                    mesh.uvs.push_back({v, float(int(v * v) % 7)}); // the same for all corners at a vertex
                else if (i % 4 == 3)
                    mesh.uvs.push_back({float(below(5)), float(below(5))});
            }
    }
    for (const TestMesh& mesh : meshes)
    {
        SCOPED_TRACE(mesh.name);
        VXGeom control(mesh.Record().get()), dest;
        const int level = control.NumVerts(false) > 2000 ? 1 : 3;
        ASSERT_EQ(control.SubdivideOpenSubDiv(&dest, level, kSubdivSchemeDefault, false), 0);
        const auto points = [](VXGeom& g) { return std::span(g.Verts(), std::size_t(g.NumVerts(false))); };
        EXPECT_LE(BeyondHull(points(dest), points(control)), 1e-6f * Size(control));
        if (control.Geom()->tex)
        {
            EXPECT_LE(BeyondHull(TexturePoints(dest), TexturePoints(control)), 1e-4f);
        }
    }
}

TEST(OpenSubdiv, APoseEqualsAFreshRebuildBitForBit)
{
    for (const TestMesh& mesh : AllMeshes())
        for (const float odd : {0.375f, std::numeric_limits<float>::quiet_NaN()})
        {
            SCOPED_TRACE(mesh.name);
            VXGeom control(mesh.Record().get()), posed, fresh;
            ASSERT_EQ(control.SubdivideOpenSubDiv(&posed, 2, kSubdivSchemeOther, false), 0);
            ASSERT_TRUE(posed.AllocTransformedVerts());
            for (int i = 0; i < control.NumVerts(false); ++i)
                control.Vertex(i)->z += 0.25f * std::sin(float(i));
            control.Vertex(1)->x = odd;
            ASSERT_EQ(control.SubdivideOpenSubDiv(&posed, 2, kSubdivSchemeOther, false), 0);
            ASSERT_EQ(control.SubdivideOpenSubDiv(&fresh, 2, kSubdivSchemeOther, true), 0);
            const std::size_t bytes = std::size_t(fresh.NumVerts(false)) * sizeof(VERTEX);
            EXPECT_EQ(std::memcmp(posed.Verts(), fresh.Verts(), bytes), 0);
            for (int i = posed.NumVerts(false); i < posed.NumVerts(true); ++i)
                EXPECT_EQ(*posed.Vertex(i), *posed.Vertex(posed.OrigVertIndex(i)));
            const auto transformedAsOwn = [](VXGeom& g)
            {
                const std::size_t count = std::size_t(g.NumVerts(true));
                return MEM_Count(g.TransformedVerts()) == count &&
                       std::memcmp(g.TransformedVerts(), g.Verts(), count * sizeof(VERTEX)) == 0;
            };
            EXPECT_TRUE(transformedAsOwn(posed));
            ASSERT_TRUE(fresh.AllocTransformedVerts());
            ASSERT_EQ(control.SubdivideOpenSubDiv(&fresh, 2, kSubdivSchemeOther, true), 0);
            EXPECT_TRUE(transformedAsOwn(fresh));
            for (VXGeom* const geom : {&posed, &fresh})
            {
                geom->SetEdgesClassified(false); // sharp edges follow the pose too
                geom->ComputeAllNormals();
            }
            EXPECT_EQ(Bytes(posed), Bytes(fresh));
        }
}

TEST(OpenSubdiv, RefinesAnewOnlyWhenItMust)
{
    struct Host : VXSceneDelegate
    {
        int rebuilds = 0, verts = 0;
        void SubdivisionWillRebuild(bool rebuild, int controlVerts, E_SubdivScheme) override
        {
            rebuilds += rebuild;
            verts = controlVerts;
        }
    } host;
    VXScene scene;
    scene.SetSceneDelegate(&host);
    VXGeom control(Cube().Record().get()), dest, other(Grid(2, 2).Record().get());
    const GeomPtr grid = Grid(4, 2).Record();
    VXGeom ofEqualSizes(Grid(2, 4).Record().get());
    const auto nothing = [] {};
    const struct
    {
        const char* name;
        std::function<void()> before;
        VXGeom* dest;
        int level;
        bool force;
        int rebuilds;
        VXGeom* source = nullptr; // null: control
    } kRows[] = {
        {"first", nothing, &dest, 1, false, 1},
        {"again", nothing, &dest, 1, false, 1},
        {"moved", [&] { control.Scale(2); }, &dest, 1, false, 1},
        // filled from the kept refiner:
        {"another destination", nothing, &other, 1, false, 1},
        {"emptied destination", [&] { dest.Empty(); }, &dest, 1, false, 1},
        {"own scheme in between", [&] { control.SubdivideCatmullClark(&dest); }, &dest, 1, false, 1},
        {"another level", nothing, &dest, 3, false, 2},
        {"forced", nothing, &dest, 3, true, 3},
        {"dropped", [&] { control.ClearSubdiv(); }, &dest, 3, false, 4},
        {"another mesh", [&] { control.SetGeom(grid.get(), true); }, &dest, 3, false, 5},
        {"another source of equal sizes", nothing, &dest, 3, false, 6, &ofEqualSizes},
        {"and back", nothing, &dest, 3, false, 6},
        {"failure", nothing, &control, 3, false, 6},
    };
    for (const auto& row : kRows)
    {
        row.before();
        VXGeom& source = row.source ? *row.source : control;
        const int result = source.SubdivideOpenSubDiv(row.dest, row.level, kSubdivSchemeOther, row.force);
        EXPECT_EQ(host.rebuilds, row.rebuilds) << row.name;
        if (row.dest == &control)
        {
            EXPECT_EQ(result, -1);
            continue;
        }
        ASSERT_EQ(result, 0) << row.name;
        SCOPED_TRACE(row.name);
        ExpectEqual(*row.dest, DirectSubdivision(*source.Geom(), row.level));
    }
    EXPECT_EQ(host.verts, 15);
}

TEST(OpenSubdiv, ChildrenInheritWhatTheirPolygonIs)
{
    const GeomPtr record = Grid(3, 1).Record();
    ASSERT_EQ(GEOM_AddMaterialName(record.get(), "second"), 1);
    for (int i = 0; i < 40; ++i) // more groups than fit one word
        ASSERT_EQ(GEOM_GroupAddElem(record.get(), ("group" + std::to_string(i)).c_str(), i % 3), 0);
    record->Poly(1)->material = 1;
    record->Poly(1)->flags = kElementHidden;
    record->Poly(1)->type = kElementFaceAlso;
    record->Poly(2)->SetGroupWord(0, 5);
    record->objectNames.Append({0, "front"});
    record->objectNames.Append({2, "back"});
    record->materialFiles.Append("some.mtl");

    VXGeom control(record.get()), dest;
    ASSERT_EQ(control.SubdivideOpenSubDiv(&dest, 2, kSubdivSchemeOther, false), 0);
    const GEOM& fine = *dest.Geom();
    ASSERT_EQ(fine.numGroups, record->numGroups);
    ASSERT_EQ(fine.groupNames.Count(), 40);
    EXPECT_EQ(fine.groupNames[39], record->groupNames[39]);
    EXPECT_STREQ(dest.MaterialName(1), "second");
    EXPECT_EQ(fine.materialFiles.Count(), 1);
    ASSERT_EQ(fine.objectNames.Count(), 2);
    EXPECT_EQ(fine.objectNames[1].firstPoly, 32);
    for (int f = 0; f < fine.numPolys; ++f)
    {
        ELEMENT* const child = dest.Polygon(f);
        EXPECT_EQ(std::int32_t(child->start), 4 * f);
        EXPECT_EQ(std::int32_t(child->length), 4);
        const std::size_t rest = std::size_t(fine.PolyStride()) - 8;
        EXPECT_EQ(std::memcmp(&child->flags, &record->Poly(f / 16)->flags, rest), 0) << f;
    }
}

TEST(OpenSubdiv, TextureSeamsStaySeams)
{
    VXGeom control(Torus(8, 6).Record().get()), dest;
    ASSERT_EQ(control.SubdivideOpenSubDiv(&dest, 2, kSubdivSchemeOther, false), 0);
    for (int f = 0; f < dest.NumPolys(); ++f) // none reaches from one end of the texture to the other
    {
        dest.SetCurrentPoly(f);
        for (int k = 1; k < 4; ++k)
        {
            EXPECT_LT(std::abs(dest.CurPolyTVertex(k)->u - dest.CurPolyTVertex(0)->u), 0.2f) << f;
            EXPECT_LT(std::abs(dest.CurPolyTVertex(k)->v - dest.CurPolyTVertex(0)->v), 0.2f) << f;
        }
    }
}

TEST(OpenSubdiv, PolygonsWithoutTextureCoordinatesHaveChildrenWithout)
{
    for (const int keep : {0, 1, 2}) // how many of the three polygons have some
    {
        const GeomPtr record = Grid(3, 1).Record();
        for (int p = keep; p < 3; ++p)
            record->tex->polys[p].length = p == 1 ? 3 : 0; // too few is none
        VXGeom control, dest;
        control.SetGeom(record.get(), false);
        ASSERT_EQ(control.SubdivideOpenSubDiv(&dest, 1, kSubdivSchemeOther, false), 0);
        ASSERT_EQ(dest.Geom()->tex != nullptr, keep > 0);
        for (int f = 0; keep > 0 && f < 12; ++f)
        {
            const GEOM_TexPoly& run = dest.Geom()->tex->polys[f];
            EXPECT_EQ(run.length, f < 4 * keep ? 4 : 0) << f;
            for (int k = 0; k < run.length; ++k) // nothing of the polygons without reaches the others
                EXPECT_LE(dest.Geom()->tex->verts[dest.Geom()->tex->sets[run.start + k]].u, float(keep) / 3 + 1e-6f);
        }
    }
}

TEST(OpenSubdiv, CreasesAreMadeWhereTheHostAllowsThem)
{
    struct Host : VXSceneDelegate
    {
        bool AllowCreaseVertsForSubdiv() override { return true; }
    } host;
    VXScene scene;
    scene.SetSceneDelegate(&host);
    VXGeom control(Torus(6, 5).Record().get()), dest;
    dest.SetGenerateCreases(false);
    ASSERT_EQ(control.SubdivideOpenSubDiv(&dest, 1, kSubdivSchemeOther, false), 0);
    EXPECT_TRUE(dest.GenerateCreases());
    EXPECT_FALSE(dest.UseCreaseAngle());
    EXPECT_TRUE(dest.EdgesClassified());
    EXPECT_GT(dest.NumbCreaseVerts(), 0); // along the seams of the texture
}

TEST(OpenSubdiv, RefusesWithTheDestinationAsItWas)
{
    const auto quads = [](auto change)
    {
        GeomPtr record = Grid(4, 4).Record();
        change(*record);
        return record;
    };
    TestMesh crowd{"a vertex in 32,768 faces", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {}};
    crowd.faces.assign(32768, {0, 1, 2});
    const struct
    {
        const char* name;
        GeomPtr record;
        int level;
    } kRows[] = {
        {"level 0", Cube().Record(), 0},
        {"level -1", Cube().Record(), -1},
        {"level 16", Cube().Record(), 16},
        {"more faces than 32 bits count", Cube().Record(), 15},
        {"no record", nullptr, 1},
        {"no polygons", quads([](GEOM& g) { g.SetSize(0, 25, 0, 0, 0, 0); }), 1},
        {"a line", quads([](GEOM& g) { g.Poly(3)->type = kElementLine; }), 1},
        {"a point", quads([](GEOM& g) { g.Poly(0)->type = kElementPoint; }), 1},
        {"two corners", quads([](GEOM& g) { g.Poly(15)->length = 2; }), 1},
        {"no corners", quads([](GEOM& g) { g.Poly(15)->length = 0; }), 1},
        {"corners past the end", quads([](GEOM& g) { g.Poly(15)->start = 61; }), 1},
        {"no such vertex", quads([](GEOM& g) { g.sets[7] = 25; }), 1},
        {"no such texture vertex", quads([](GEOM& g) { g.tex->sets[7] = -1; }), 1},
        {"a 32,768-gon", Ngon(32768).Record(), 1},
        {"a vertex in 32,768 faces", crowd.Record(), 1},
    };
    VXGeom dest(Torus(4, 4).Record().get());
    const std::string before = Bytes(dest);
    for (const auto& row : kRows)
    {
        GeomPtr sound = Grid(4, 4).Record(); // the wrapper is not to repair the fault: it comes in afterwards
        VXGeom control;
        control.SetGeom(row.record ? sound.get() : nullptr, false);
        if (row.record)
        {
            std::swap(sound->verts, row.record->verts);
            std::swap(sound->numVerts, row.record->numVerts);
            std::swap(sound->sets, row.record->sets);
            std::swap(sound->polys, row.record->polys);
            std::swap(sound->numPolys, row.record->numPolys);
            std::swap(sound->tex, row.record->tex);
        }
        EXPECT_EQ(control.SubdivideOpenSubDiv(&dest, row.level, kSubdivSchemeOther, false), -1) << row.name;
        EXPECT_EQ(Bytes(dest), before) << row.name;
        EXPECT_EQ(control.SubdivideOpenSubDiv(nullptr, row.level, kSubdivSchemeOther, false), 0) << row.name;
    }
    VXGeom sharing;
    sharing.SetGeom(dest.Geom(), false);
    EXPECT_EQ(dest.SubdivideOpenSubDiv(&dest, 1, kSubdivSchemeOther, false), -1);
    EXPECT_EQ(dest.SubdivideOpenSubDiv(&sharing, 1, kSubdivSchemeOther, false), -1);
    EXPECT_EQ(Bytes(dest), before);
}

TEST(OpenSubdiv, LeavesTheDestinationAsItWasWhenMemoryRunsOut)
{
    const GeomPtr record = Torus(6, 5).Record();
    ASSERT_EQ(GEOM_GroupAddElem(record.get(), "group", 1), 0);
    VXGeom control(record.get()), dest(Cube().Record().get()), wanted;
    ASSERT_TRUE(dest.AllocTransformedVerts());
    ASSERT_EQ(control.SubdivideOpenSubDiv(&wanted, 1, kSubdivSchemeOther, true), 0);
    const std::string before = Bytes(dest);
    int n = 1, result = -1;
    for (; result != 0 && n < 1000; ++n)
    {
        MEM_FailAfter(n);
        result = control.SubdivideOpenSubDiv(&dest, 1, kSubdivSchemeOther, true);
        MEM_FailAfter(0);
        MEM_SetAllocationFailed(false);
        ASSERT_EQ(Bytes(dest), result == 0 ? Bytes(wanted) : before) << n;
    }
    EXPECT_EQ(result, 0);
    EXPECT_GT(n, 20); // it did fail on the way
}

TEST(OpenSubdiv, KeepsLittleAndGivesItBack)
{
    for (const bool uvs : {false, true})
    {
        VXGeom control(Torus(60, 50, uvs).Record().get()), dest;
        const std::size_t bare = control.MemoryUsed();
        ASSERT_EQ(control.SubdivideOpenSubDiv(&dest, 2, kSubdivSchemeOther, false), 0);
        const std::size_t kept = control.MemoryUsed() - bare;
        EXPECT_GT(kept, std::size_t(dest.NumVerts(false)) * sizeof(VERTEX));
        EXPECT_LT(double(kept), 1.5 * double(dest.MemoryUsed()));
        control.ClearSubdiv();
        EXPECT_EQ(control.MemoryUsed(), bare);
    }
}

TEST(OpenSubdiv, LeavesNormalsOfTheHostAlone)
{
    VXGeom control(Cube().Record().get()), dest;
    std::vector<VERTEX> normals(26, VERTEX{1, 2, 3});
    dest.SetUseExternalNormals(true);
    dest.SetExternalVertexNormals(normals.data());
    ASSERT_EQ(control.SubdivideOpenSubDiv(&dest, 1, kSubdivSchemeOther, false), 0);
    EXPECT_EQ(dest.VertNormals(), normals.data());
    EXPECT_EQ(normals[25], (VERTEX{1, 2, 3}));
    EXPECT_TRUE(VXSwitches::OpenSubdivOn());
}
