// The mesh record: sizes, copies, repairs, measures, groups, materials, merging.
#include "tests/base/GeomText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

std::vector<TestMesh> Meshes()
{
    return {Cube(),     OpenBox(),  Fan(7), ConcaveL(), BentQuad(), MoebiusStrip(9), TwoCubesSharingAnEdge(),
            Grid(3, 2), Torus(8, 6)};
}

// A record with everything that a record can hold.
GeomPtr FullRecord()
{
    return ReadObj("mtllib a.mtl\no one\nv 0 0 0 1 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 1\nvn 0 0 1\n"
                   "g a\ns 2\nusemtl red\nf 1/1/1 2/2/1 3/1/1\ng b c\nusemtl blue\nf 1//1 3//1 4//1\no two\nl 1 2\n");
}

// --- Test meshes: the others rest on them

TEST(TestMeshes, CanBeMovedMirroredShuffledAndKeepTheirShape)
{
    for (const TestMesh& mesh : Meshes())
    {
        const auto area = [](const TestMesh& of)
        {
            const GeomPtr g = of.Record();
            VERTEX sum;
            for (std::size_t i = 0; i < of.faces.size(); ++i)
                for (std::size_t k = 0; k < of.faces[i].size(); ++k)
                    sum += Cross(of.verts[std::size_t(of.faces[i][k])],
                                 of.verts[std::size_t(of.faces[i][(k + 1) % of.faces[i].size()])]);
            return sum;
        };
        const VERTEX here = area(mesh), mirrored = area(Mirrored(mesh)), shuffled = area(Shuffled(mesh, 3));
        EXPECT_NEAR(Length(shuffled - here), 0, 1e-4f) << mesh.name;
        EXPECT_NEAR(Length(mirrored - VERTEX{-here.x, here.y, here.z}), 0, 1e-4f) << mesh.name;
        EXPECT_EQ(Shuffled(mesh, 3).verts, Shuffled(mesh, 3).verts);
        const GeomPtr repeated = Repeated(mesh, 3, {9, 0, 0}).Record();
        int repairs = 0;
        EXPECT_EQ(GEOM_VerifyAndFix(repeated.get(), &repairs), 0);
        EXPECT_EQ(repairs, 0) << mesh.name;
        EXPECT_EQ(repeated->numPolys, 3 * int(mesh.faces.size()));
    }
}

// --- Sizes and copies

TEST(GeomSize, KeepsEntriesAndClearsNewOnes)
{
    const GeomPtr g = Grid(3, 3).Record();
    const std::string before = PolyText(g.get(), 2);
    ASSERT_EQ(g->SetSize(12, 20, 50, 0, 40, 17), 0);
    EXPECT_EQ(PolyText(g.get(), 2), before);
    EXPECT_EQ(std::int32_t(g->Poly(11)->length), 0); // a copy: packed fields have no address to bind
    EXPECT_EQ(g->verts[19], VERTEX{});
    EXPECT_EQ(g->NumCorners(), 50);
    EXPECT_EQ(g->tex->numPolys, 12);
    EXPECT_EQ(g->tex->numCorners, 40);
    ASSERT_EQ(g->SetSize(1, 4, 4, 0, 0, 0), 0);
    EXPECT_EQ(g->tex->numCorners, 40) << "texture data is left as it is";
    EXPECT_EQ(PolyText(g.get(), 0), "f 0/0 1/1 5/2 4/3 m0 s0");
    EXPECT_EQ(g->SetSize(-1, 0, 0, 0, 0, 0), -1);
    EXPECT_EQ(g->numPolys, 1);
}

TEST(GeomSize, FailsWithoutChange)
{
    for (int n = 1; n <= 8; ++n)
    {
        const GeomPtr g = FullRecord();
        const std::string before = RecordText(g.get());
        MEM_FailAfter(n);
        const int result = g->SetSize(100000, 100000, 100000, 0, 100000, 100000);
        MEM_FailAfter(0);
        EXPECT_EQ(result, -1) << n;
        EXPECT_EQ(RecordText(g.get()), before) << n;
        EXPECT_EQ(g->NumCorners(), 8) << n;
    }
}

TEST(GeomCopy, IsDeepAndEqual)
{
    const GeomPtr g = FullRecord();
    const std::string before = RecordText(g.get());
    for (const int mode : {0, 2})
    {
        const GeomPtr copy(GEOM_Copy(g.get(), mode));
        ASSERT_TRUE(copy);
        EXPECT_EQ(RecordText(copy.get()), before);
        copy->verts[0] = {9, 9, 9};
        copy->Poly(0)->length = 0;
        copy->tex->sets[0] = 1;
        copy->materials[0].name = "other";
        EXPECT_EQ(RecordText(g.get()), before);
    }
    EXPECT_FALSE(GEOM_Copy(nullptr, 2));
}

TEST(GeomCopy, ModeOneKeepsShapeAlone)
{
    const GeomPtr g = FullRecord();
    const GeomPtr copy(GEOM_Copy(g.get(), 1));
    ASSERT_TRUE(copy);
    EXPECT_EQ(PolysText(copy.get()), "f 0/0/0 1/1/0 2/0/0 m0 s2\nf 0//0 2//0 3//0 m0 s2\nl 0//1 1//1 m0 s2\n");
    EXPECT_EQ(copy->numGroups, 0);
    EXPECT_EQ(copy->NumMaterials(), 0);
    EXPECT_TRUE(copy->objectNames.IsEmpty());
}

TEST(GeomClone, ReplacesWhatWasThere)
{
    const GeomPtr from = FullRecord(), to = Cube().Record();
    const VERTEX* const verts = from->verts;
    EXPECT_EQ(GEOM_Clone(from.get(), from.get()), 0);
    EXPECT_EQ(from->verts, verts);
    ASSERT_EQ(GEOM_Clone(from.get(), to.get()), 0);
    EXPECT_EQ(RecordText(to.get()), RecordText(from.get()));
    EXPECT_EQ(GEOM_Clone(nullptr, to.get()), -1);
}

TEST(GeomCopy, EveryFailureLeavesNothingBehind)
{
    const GeomPtr from = FullRecord();
    bool done = false;
    for (int n = 1; n < 40 && !done; ++n)
    {
        const GeomPtr to = Cube().Record();
        MEM_FailAfter(n);
        done = GEOM_Clone(from.get(), to.get()) == 0;
        MEM_FailAfter(0);
        EXPECT_EQ(RecordText(to.get()),
                  done ? RecordText(from.get()) : RecordText(EmptyMesh().Record().get()).substr(0, 9))
            << n;
    }
    EXPECT_TRUE(done);
}

// --- Repairs

struct Damage
{
    const char* name;
    void (*damage)(GEOM* g);
    int repairs; ///< -1: cannot be repaired
};

const Damage kDamages[] = {
    {"none", [](GEOM*) {}, 0},
    {"negative start", [](GEOM* g) { g->Poly(0)->start = -1; }, 1},
    {"negative length", [](GEOM* g) { g->Poly(1)->length = -4; }, 1},
    {"run past the corners", [](GEOM* g) { g->Poly(1)->start = 6; }, 1},
    {"run past 32 bits", [](GEOM* g) { g->Poly(1)->start = INT32_MAX; }, 1},
    {"corner too large", [](GEOM* g) { g->sets[3] = 4; }, 1},
    {"corner negative", [](GEOM* g) { g->sets[3] = -1; }, 1},
    {"texture run", [](GEOM* g) { g->tex->polys[0].start = 2; }, 1},
    {"texture run shorter than its polygon", [](GEOM* g) { g->tex->polys[0].length = 2; }, 1},
    {"texture corner", [](GEOM* g) { g->tex->sets[1] = 99; }, 1},
    {"normal index", [](GEOM* g) { g->normalSets[0] = -7; }, 1},
    {"normals gone", [](GEOM* g) { g->numNormals = 0; }, 1},
    {"material", [](GEOM* g) { g->Poly(0)->material = 2; }, 1},
    {"not a number",
     [](GEOM* g) {
         g->verts[2] = {kNan, 1, kNan};
     },
     2},
    {"several",
     [](GEOM* g)
     {
         g->sets[0] = g->sets[1] = 77;
         g->Poly(2)->length = 1000;
     },
     3},
    {"no vertices",
     [](GEOM* g)
     {
         g->numVerts = 0;
         MEM_Empty(g->verts);
         MEM_Empty(g->vertColors);
     },
     8},
    {"vertex count", [](GEOM* g) { g->numVerts = 5; }, -1},
    {"polygon count", [](GEOM* g) { g->numPolys = 4; }, -1},
    {"negative count", [](GEOM* g) { g->numPolys = -1; }, -1},
    {"normal sets too short", [](GEOM* g) { MEM_SizeArray(g->normalSets, 3); }, -1},
    {"texture count", [](GEOM* g) { g->tex->numVerts = 3; }, -1},
};

TEST(GeomVerify, RepairsWhatItSays)
{
    for (const Damage& row : kDamages)
    {
        const GeomPtr g = FullRecord();
        row.damage(g.get());
        int repairs = -5;
        const int result = GEOM_VerifyAndFix(g.get(), &repairs);
        EXPECT_EQ(result, row.repairs < 0 ? -1 : 0) << row.name;
        EXPECT_EQ(repairs, std::max(row.repairs, 0)) << row.name;
        EXPECT_EQ(GEOM_VerifyAndFix(g.get(), &repairs), result) << row.name;
        EXPECT_EQ(repairs, 0) << row.name << " was not repaired at once";
    }
    EXPECT_EQ(GEOM_VerifyAndFix(nullptr), -1);
}

// --- Measures

TEST(GeomBounds, IgnoresWhatIsNotFinite)
{
    TestMesh mesh = Cube();
    mesh.verts.push_back({kNan, 5, kInfinity}); // used by no polygon
    mesh.verts[0].x = -kInfinity;
    const GeomPtr g = mesh.Record();
    float all[9], used[9];
    GEOM_Stats(g.get(), all);
    GEOM_Bounds(g.get(), used, used + 1, used + 2, used + 3, used + 4, used + 5, used + 6, used + 7, used + 8, false);
    const float expectedAll[9] = {-1, -1, -1, 1, 5, 1, 0, 2, 0}, expectedUsed[9] = {-1, -1, -1, 1, 1, 1, 0, 0, 0};
    for (int i = 0; i < 9; ++i)
    {
        EXPECT_EQ(all[i], expectedAll[i]) << i;
        EXPECT_EQ(used[i], expectedUsed[i]) << i;
    }
    GEOM_Bounds(nullptr, all, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, all + 8, true);
    EXPECT_EQ(all[0], 0);
    EXPECT_EQ(all[8], 0);
}

TEST(GeomPlacing, CentresScalesAndMoves)
{
    const GeomPtr g = Moved(Scaled(Cube(), 2), {3, 4, 5}).Record();
    float stats[9];
    GEOM_Center(g.get());
    GEOM_Scale(g.get(), 0.25f);
    GEOM_Offset(g.get(), 1, 0, -1);
    GEOM_Stats(g.get(), stats);
    const float expected[9] = {0.5f, -0.5f, -1.5f, 1.5f, 0.5f, -0.5f, 1, 0, -1};
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(stats[i], expected[i]) << i;
}

std::vector<VERTEX> NormalsOf(const TestMesh& mesh)
{
    std::vector<VERTEX> normals(mesh.faces.size());
    EXPECT_EQ(GEOM_CalcPolyNormals(mesh.Record().get(), normals.data()), 0);
    return normals;
}

TEST(GeomPolyNormals, AreUnitAndDependOnShapeAlone)
{
    for (const TestMesh& mesh : {Cube(), ConcaveL(), BentQuad(), Grid(2, 2), Fan(6)})
    {
        const std::vector<VERTEX> here = NormalsOf(mesh);
        const std::vector<VERTEX> moved = NormalsOf(Moved(mesh, {1024, -512, 256}));
        const std::vector<VERTEX> large = NormalsOf(Scaled(mesh, 0x1p60f)), small = NormalsOf(Scaled(mesh, 0x1p-60f));
        const std::vector<VERTEX> mirrored = NormalsOf(Mirrored(mesh));
        const bool exact = mesh.name != "fan"; // its coordinates do not survive the move
        for (std::size_t i = 0; i < here.size(); ++i)
        {
            EXPECT_NEAR(Length(here[i]), 1, 1e-6f) << mesh.name;
            EXPECT_NEAR(Length(here[i] - moved[i]), 0, exact ? 1e-6f : 1e-3f) << mesh.name;
            EXPECT_NEAR(Length(here[i] - large[i]), 0, 1e-6f) << mesh.name;
            EXPECT_NEAR(Length(here[i] - small[i]), 0, 1e-6f) << mesh.name;
            EXPECT_NEAR(Length(VERTEX{-here[i].x, here[i].y, here[i].z} - mirrored[i]), 0, 1e-6f) << mesh.name;
        }
    }
    EXPECT_EQ(NormalsOf(Cube())[0], (VERTEX{0, 0, -1}));
    EXPECT_EQ(NormalsOf(ConcaveL())[0], (VERTEX{0, 0, 1}));
}

// The three ways through: triangles, quads and the sum over any number of corners must agree where they meet.
TEST(GeomPolyNormals, AgreeForTheSameShapeWithMoreCorners)
{
    TestMesh mesh{"quad with a corner on an edge",
                  {{0, 0, 0}, {2, 0, 0.5f}, {2, 2, 0}, {0, 2, 0.25f}, {1, 0, 0.25f}, {1, 1, 0}},
                  {{0, 1, 2, 3}, {0, 4, 1, 2, 3}, {0, 1, 2}, {0, 4, 1, 2}}};
    const std::vector<VERTEX> normals = NormalsOf(mesh);
    EXPECT_NEAR(Length(normals[0] - normals[1]), 0, 1e-6f);
    EXPECT_NEAR(Length(normals[2] - normals[3]), 0, 1e-6f);
}

TEST(GeomPolyNormals, AreZeroWithoutAnArea)
{
    TestMesh mesh = Sliver();
    mesh.verts.insert(mesh.verts.end(), {{kNan, 0, 0}, {0, kInfinity, 0}});
    mesh.faces.insert(mesh.faces.end(), {{0, 1, 4}, {0, 1, 2, 5}, {0, 1}, {}, {0, 0, 0, 0, 0}, {0, 1, 1, 0}});
    const std::vector<VERTEX> normals = NormalsOf(mesh);
    EXPECT_EQ(normals[0], (VERTEX{0, 0, 1}));
    for (std::size_t i = 1; i < normals.size(); ++i)
        EXPECT_EQ(normals[i], VERTEX{}) << i;
}

TEST(GeomPolyCentroids, AreMeansOfCorners)
{
    const GeomPtr g = FullRecord();
    VERTEX centres[3];
    T_VERTEX texCentres[3];
    ASSERT_EQ(GEOM_CalcPolyCentroids(g.get(), centres, texCentres), 0);
    EXPECT_NEAR(Length(centres[0] - VERTEX{2.0f / 3, 1.0f / 3, 0}), 0, 1e-7f);
    EXPECT_NEAR(texCentres[0].u, 1.0f / 3, 1e-7f);
    EXPECT_EQ(texCentres[1], T_VERTEX{});
    EXPECT_EQ(centres[2], (VERTEX{0.5f, 0, 0}));
}

// --- Groups and materials

TEST(GeomGroups, KeepTheirMembersWhileRecordsWiden)
{
    const GeomPtr g = Grid(10, 10).Record();
    for (int i = 0; i < 100; ++i)
        g->Poly(i)->SetGroupWord(0, std::uint32_t(i) * 0x01000193u);
    for (int group = 0; group < 70; ++group)
        for (int poly = group % 7; poly < 100; poly += 7)
            ASSERT_EQ(GEOM_GroupAddElem(g.get(), Named("g", group).c_str(), poly), 0);
    EXPECT_EQ(g->numGroups, 102);
    EXPECT_EQ(g->PolyStride(), 15 + 4 * 4);
    for (int poly = 0; poly < 100; ++poly)
    {
        EXPECT_EQ(g->Poly(poly)->GroupWord(0), std::uint32_t(poly) * 0x01000193u);
        for (int group = 0; group < 70; ++group)
        {
            std::int32_t word;
            std::uint32_t mask;
            ASSERT_TRUE(GEOM_GetGroupBit(g.get(), Named("g", group).c_str(), &word, &mask));
            ASSERT_GE(word, 1);
            ASSERT_EQ((g->Poly(poly)->GroupWord(word) & mask) != 0, poly % 7 == group % 7);
        }
    }
    EXPECT_FALSE(GEOM_GetGroupBit(g.get(), "none", nullptr, nullptr));
    EXPECT_EQ(GEOM_GroupAddElem(g.get(), "", 0), -1);
    EXPECT_EQ(GEOM_GroupAddElem(g.get(), "x", 100), -1);
    EXPECT_EQ(g->numGroups, 102);
    EXPECT_EQ(GEOM_GroupAddElem(g.get(), "x", -1), 0);
    EXPECT_EQ(g->numGroups, 103);
}

TEST(GeomGroups, EveryFailureLeavesThemAsTheyWere)
{
    const GeomPtr g = Grid(3, 1).Record();
    for (int group = 0; group < 40; ++group) // past the first word of bits, and past the room for names
        for (int n = 1, result = -1; result != 0; ++n)
        {
            MEM_FailAfter(n);
            result = GEOM_GroupAddElem(g.get(), Named("g", group).c_str(), group % 3);
            MEM_FailAfter(0);
            const int named = group + (result == 0);
            ASSERT_EQ(g->groupNames.Count(), named);
            ASSERT_EQ(g->numGroups, named > 0 ? 32 + named : 0);
            for (int poly = 0; poly < 3; ++poly)
                ASSERT_EQ(std::int32_t(g->Poly(poly)->start), 4 * poly);
        }
}

TEST(GeomGroups, ShrinkingForgetsMembers)
{
    const GeomPtr g = Cube().Record();
    for (const char* name : {"a", "b", "c"})
        ASSERT_EQ(GEOM_GroupAddElem(g.get(), name, 2), 0);
    ASSERT_EQ(GEOM_SetNumGroups(g.get(), 33), 0);
    ASSERT_EQ(GEOM_GroupAddElem(g.get(), "new", 1), 0);
    EXPECT_EQ(PolyText(g.get(), 2).substr(13), "s0 a");
    EXPECT_EQ(PolyText(g.get(), 1).substr(13), "s0 new");
    EXPECT_EQ(GEOM_SetNumGroups(g.get(), 0), 0);
    EXPECT_EQ(g->PolyStride(), 19);
    EXPECT_TRUE(g->groupNames.IsEmpty());
}

TEST(GeomMaterials, PurgeKeepsOrderAndPointers)
{
    const GeomPtr g = Cube().Record();
    int marks[4];
    for (int i = 0; i < 4; ++i)
    {
        ASSERT_EQ(GEOM_AddMaterialName(g.get(), Named("m", i).c_str()), i + 1);
        g->SetMaterialPointer(i + 1, marks + i);
    }
    EXPECT_EQ(GEOM_AddMaterialName(g.get(), "m2"), 3);
    for (int i = 0; i < 6; ++i)
        g->Poly(i)->material = i % 2 ? 4 : 2;
    ASSERT_EQ(GEOM_PurgeUnusedMaterials(g.get()), 0);
    ASSERT_EQ(g->NumMaterials(), 2);
    EXPECT_EQ(g->materials[0].name, "m1");
    EXPECT_EQ(g->materials[1].material, marks + 3);
    EXPECT_EQ(int(g->Poly(4)->material), 0);
    EXPECT_EQ(int(g->Poly(5)->material), 1);
}

TEST(GeomMaterials, CannotBeMoreThanAnIndexCanName)
{
    GeomPtr g(GEOM_Alloc());
    ASSERT_TRUE(g->materials.SetCount(65536));
    EXPECT_EQ(GEOM_AddMaterialName(g.get(), "one more"), -1);
}

// --- Merging

TEST(GeomMerge, AppendsPartsAndJoinsNames)
{
    const GeomPtr a = FullRecord(), b = Cube().Record(), c = FullRecord();
    ASSERT_EQ(GEOM_GroupAddElem(c.get(), "late", 0), 0);
    const GEOM* const parts[] = {a.get(), nullptr, b.get(), c.get()};
    const GeomPtr all(GEOM_CreateUniMesh(parts, 4));
    ASSERT_TRUE(all);
    int repairs = 0;
    EXPECT_EQ(GEOM_VerifyAndFix(all.get(), &repairs), 0);
    EXPECT_EQ(repairs, 0);
    EXPECT_EQ(all->numVerts, 16);
    EXPECT_EQ(all->NumMaterials(), 3); // red, blue, Default
    EXPECT_EQ(all->numGroups, 36);
    EXPECT_EQ(PolyText(all.get(), 0), PolyText(a.get(), 0));
    EXPECT_EQ(PolyText(all.get(), 3), "f 4//2 6//2 7//2 5//2 m2 s0");
    EXPECT_EQ(PolyText(all.get(), 9), "f 12/2/8 13/3/8 14/2/8 m0 s2 a late");
    EXPECT_EQ(all->normals[2], (VERTEX{0, 0, -1})) << "the flat normal of the cube's first face";
    EXPECT_EQ(all->vertColors[5], (VERTEX{1, 1, 1}));
    EXPECT_EQ(all->objectNames.Count(), 4);
    EXPECT_EQ(all->objectNames[3].firstPoly, 11);
    EXPECT_EQ(all->materialFiles.Count(), 1);
}

TEST(GeomMerge, EveryFailureIsNull)
{
    const GeomPtr a = FullRecord(), b = Cube().Record();
    const GEOM* const parts[] = {a.get(), b.get()};
    bool done = false;
    for (int n = 1; n < 60 && !done; ++n)
    {
        MEM_FailAfter(n);
        const GeomPtr all(GEOM_CreateUniMesh(parts, 2));
        MEM_FailAfter(0);
        done = all != nullptr;
        EXPECT_TRUE(!done || all->numPolys == 9);
    }
    EXPECT_TRUE(done);
    EXPECT_TRUE(GeomPtr(GEOM_CreateUniMesh(nullptr, 0)) == nullptr);
}
} // namespace
