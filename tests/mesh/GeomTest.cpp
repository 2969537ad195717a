#include "mesh/VXGeom.h"
#include "tests/support/Meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace
{
/// A mesh with more than one of everything: two materials, a named group, texture coordinates.
GeomPtr RichRecord()
{
    GeomPtr g = Torus(8, 6).Record();
    const int other = GEOM_AddMaterialName(g.get(), "Other");
    for (int i = 0; i < g->numPolys; i += 3)
        g->Poly(i)->material = std::uint16_t(other);
    GEOM_GroupAddElem(g.get(), "every", 2);
    return g;
}

std::vector<VERTEX> Positions(const GEOM& g) { return {g.verts, g.verts + g.numVerts}; }

/// A file that is gone at the end of the test.
class TempFile
{
public:
    TempFile(const char* name, const std::string& text) : mPath(std::filesystem::temp_directory_path() / name)
    {
        std::ofstream(mPath, std::ios::binary) << text;
    }
    ~TempFile()
    {
        std::error_code ignored;
        std::filesystem::remove(mPath, ignored);
    }
    std::string Path() const { return mPath.string(); }

private:
    std::filesystem::path mPath;
};
} // namespace

TEST(Geom, MadeFromARecordOwnsACopyOfIt)
{
    const GeomPtr record = RichRecord();
    VXGeom geom(record.get());
    ASSERT_NE(geom.Geom(), nullptr);
    EXPECT_FALSE(geom.GeomIsGeom(record.get()));
    EXPECT_EQ(Positions(*geom.Geom()), Positions(*record));

    const VERTEX before = record->verts[0];
    geom.Verts()[0] = {7, 8, 9};
    EXPECT_EQ(record->verts[0], before);
    EXPECT_EQ(VXGeom(&geom).Geom(), nullptr) << "a wrapper made from a wrapper takes no record";
}

TEST(Geom, TakingTheBorrowedRecordAgainChangesNothing)
{
    const GeomPtr record = Cube().Record();
    VXGeom geom;
    ASSERT_EQ(geom.SetGeom(record.get(), false), 0);
    EXPECT_TRUE(geom.GeomIsGeom(record.get()));
    geom.EdgeList().GetEdge(3).SetAppFlagged(true);
    ASSERT_EQ(geom.SetGeom(record.get(), false), 0);
    EXPECT_TRUE(geom.EdgeList().GetEdge(3).IsAppFlagged()) << "the edges were built again";
}

TEST(Geom, CopyingTheRecordThatIsHeldMakesANewOne)
{
    VXGeom geom(RichRecord().get());
    const std::vector<VERTEX> before = Positions(*geom.Geom());
    for (int round = 0; round < 2; ++round)
    {
        geom.EdgeList().GetEdge(0).SetAppFlagged(true);
        ASSERT_EQ(geom.SetGeom(geom.Geom(), true), 0);
        EXPECT_EQ(Positions(*geom.Geom()), before);
        EXPECT_FALSE(geom.EdgeList().GetEdge(0).IsAppFlagged());
    }
}

TEST(Geom, ABorrowedRecordOutlivesItsWrapper)
{
    const GeomPtr record = Cube().Record();
    {
        VXGeom geom;
        ASSERT_EQ(geom.SetGeom(record.get(), false), 0);
    }
    EXPECT_EQ(record->numVerts, 8);
    EXPECT_EQ(record->verts[7], (VERTEX{1, 1, 1}));
}

TEST(Geom, NullEmptiesTheWrapper)
{
    VXGeom geom(RichRecord().get());
    geom.ComputePolyCenters();
    EXPECT_EQ(geom.SetGeom(nullptr, true), 0);
    EXPECT_EQ(geom.Geom(), nullptr);
    EXPECT_EQ(geom.NumPolys(), 0);
    EXPECT_EQ(geom.NumVerts(true), 0);
    EXPECT_EQ(geom.EdgeList().GetEdgeCount(), 0);
    EXPECT_EQ(geom.VertNormals(), nullptr);
    EXPECT_EQ(geom.PolyNormals(), nullptr);
    EXPECT_EQ(geom.PolyCenters(), nullptr);
    EXPECT_FALSE(geom.RebuildLists()) << "there is nothing to derive from";
}

TEST(Geom, RepairsWildIndicesOfABorrowedRecordBeforeReadingThem)
{
    const GeomPtr record = Cube().Record();
    record->sets[5] = 1 << 30;
    record->sets[6] = -4;
    record->Poly(3)->start = 22;
    VXGeom geom;
    ASSERT_EQ(geom.SetGeom(record.get(), false), 0);
    EXPECT_EQ(geom.NumPolys(), 6);
    EXPECT_EQ(geom.PolyLength(3), 0);
    for (int i = 0; i < geom.EdgeList().GetEdgeCount(); ++i)
    {
        EXPECT_LT(std::uint32_t(geom.EdgeList().GetEdge(i).VertIndex1()), 8u);
        EXPECT_LT(std::uint32_t(geom.EdgeList().GetEdge(i).VertIndex2()), 8u);
    }
}

TEST(Geom, EveryFailedAllocationWhileTakingARecordIsReportedAndSurvived)
{
    const GeomPtr record = RichRecord();
    bool done = false;
    for (int n = 1; n < 500 && !done; ++n)
    {
        SCOPED_TRACE(n);
        VXGeom geom;
        MEM_FailAfter(n);
        const int status = geom.SetGeom(record.get(), true);
        // A pass that only raises the library's flag is allowed to answer 0.
        done = status == 0 && !MEM_AllocationFailed() && n > 20;
        MEM_FailAfter(0);
        MEM_SetAllocationFailed(false);
        geom.SortGeomData();
        for (int poly = 0; poly < geom.NumPolys(); ++poly)
            for (int left = geom.BeginPolyVertexLoop(poly); left > 0; --left)
                ASSERT_NE(geom.NextPolyVert(), nullptr);
        EXPECT_EQ(geom.SetGeom(record.get(), true), 0) << "the wrapper can still be used";
        EXPECT_EQ(geom.NumPolys(), record->numPolys);
    }
    EXPECT_TRUE(done) << "the last round must get through without a failure";
}

TEST(Geom, CloneKeepsFlagsAndAngleAndDerivesTheRest)
{
    VXGeom geom(Cube().Record().get());
    geom.SetCreaseAngle(33);
    geom.SetUseCreaseAngle(false);
    geom.SetGeomChanged(true);
    geom.SortGeomData();
    for (const bool copy : {true, false})
    {
        SCOPED_TRACE(copy);
        const std::unique_ptr<VXGeom> clone(geom.Clone(copy));
        ASSERT_NE(clone, nullptr);
        EXPECT_EQ(clone->GeomIsGeom(geom.Geom()), !copy);
        EXPECT_EQ(clone->CreaseAngle(), 33);
        EXPECT_FALSE(clone->UseCreaseAngle());
        EXPECT_TRUE(clone->GeomChanged());
        EXPECT_FALSE(clone->DataSorted());
        EXPECT_EQ(clone->NumQuads(), 0);
        EXPECT_EQ(clone->EdgeList().GetEdgeCount(), 12);
        ASSERT_NE(clone->PolyNormals(), nullptr);
        EXPECT_NE(clone->PolyNormals(), geom.PolyNormals());
    }
    const std::unique_ptr<VXGeom> nothing(VXGeom().Clone(true));
    ASSERT_NE(nothing, nullptr);
    EXPECT_EQ(nothing->Geom(), nullptr);
}

TEST(Geom, EmptyKeepsTheRecordAndNothingInIt)
{
    VXGeom geom(RichRecord().get());
    const GEOM* const record = geom.Geom();
    ASSERT_TRUE(geom.AllocTransformedVerts());
    geom.SortGeomData();
    geom.SetCurrentPoly(2);
    geom.Empty();
    EXPECT_TRUE(geom.GeomIsGeom(record));
    EXPECT_EQ(geom.NumPolys(), 0);
    EXPECT_EQ(geom.NumVerts(true), 0);
    EXPECT_EQ(geom.NumGeomMaterials(), 0);
    EXPECT_EQ(geom.NumQuads(), 0);
    EXPECT_EQ(geom.EdgeList().GetEdgeCount(), 0);
    EXPECT_EQ(geom.CurPolyLength(), 0);
    EXPECT_EQ(MEM_Count(geom.TransformedVerts()), 0u);
    EXPECT_EQ(MEM_Count(geom.VertNormals()), 0u);
    EXPECT_EQ(MEM_Count(geom.PolyNormals()), 0u);
}

TEST(Geom, SetSizeForSizesBothNormalArraysByVertices)
{
    struct Row
    {
        const char* name;
        int verts, polys, corners, texVerts;
        bool texture;
    };
    for (const Row& row : {Row{"with texture", 10, 4, 16, 12, true}, Row{"without texture", 5, 7, 28, 0, false},
                           Row{"nothing", 0, 0, 0, 0, false}})
        for (const bool fresh : {true, false})
        {
            SCOPED_TRACE(row.name);
            SCOPED_TRACE(fresh ? "no record before" : "torus before");
            VXGeom geom;
            if (!fresh)
            {
                ASSERT_EQ(geom.SetGeom(RichRecord().get(), true), 0);
                ASSERT_TRUE(geom.AllocTransformedVerts());
            }
            ASSERT_EQ(geom.SetSizeFor(row.verts, row.polys, row.corners, row.texVerts), 0);
            ASSERT_NE(geom.Geom(), nullptr);
            EXPECT_EQ(geom.NumVerts(true), row.verts);
            EXPECT_EQ(geom.NumPolys(), row.polys);
            EXPECT_EQ(geom.Geom()->NumCorners(), row.corners);
            EXPECT_EQ(geom.Geom()->tex != nullptr, row.texture);
            if (row.texture)
            {
                EXPECT_EQ(geom.Geom()->tex->numVerts, row.texVerts);
                EXPECT_EQ(geom.Geom()->tex->numCorners, row.corners);
            }
            EXPECT_EQ(MEM_Count(geom.VertNormals()), std::size_t(row.verts));
            EXPECT_EQ(MEM_Count(geom.PolyNormals()), std::size_t(row.verts));
            EXPECT_EQ(geom.TransformedVerts() != nullptr, !fresh);
            EXPECT_EQ(MEM_Count(geom.TransformedVerts()), std::size_t(fresh ? 0 : row.verts));
        }
    EXPECT_EQ(VXGeom().SetSizeFor(-1, 1, 1, 0), -1);
}

TEST(Geom, AStolenRecordBelongsToTheThief)
{
    GeomPtr stolen;
    {
        VXGeom geom(Cube().Record().get());
        stolen.reset(geom.StealGeom());
        EXPECT_EQ(geom.Geom(), nullptr);
        EXPECT_EQ(geom.NumVerts(true), 0);
    }
    ASSERT_NE(stolen, nullptr);
    EXPECT_EQ(stolen->numPolys, 6);
}

// The host's arrays stand on the stack here: freeing or resizing them as handles would not go unnoticed.
TEST(Geom, NormalsOfTheHostAreNeitherComputedNorFreed)
{
    VERTEX vertNormals[8], polyNormals[6];
    for (const bool flagFirst : {true, false})
    {
        SCOPED_TRACE(flagFirst);
        VXGeom geom(Cube().Record().get());
        if (flagFirst)
            geom.SetUseExternalNormals(true);
        geom.SetExternalVertexNormals(vertNormals);
        geom.SetExternalPolyNormals(polyNormals);
        geom.SetUseExternalNormals(true);
        EXPECT_TRUE(geom.RebuildLists());
        geom.Empty();
        EXPECT_EQ(geom.SetGeom(Cube().Record().get(), true), 0);
        EXPECT_EQ(geom.VertNormal(2), vertNormals + 2);
        EXPECT_EQ(geom.PolyNormal(1), polyNormals + 1);
        EXPECT_EQ(vertNormals[2], VERTEX());
        if (flagFirst)
        {
            geom.SetUseExternalNormals(false);
            EXPECT_TRUE(geom.ComputeAllNormals());
            EXPECT_NE(geom.PolyNormals(), polyNormals);
        }
    }
}

TEST(Geom, ReadsOfSinglePolygonsTolerateAnyIndex)
{
    const GeomPtr record = Cube().Record();
    record->Poly(4)->SetGroupWord(0, 0x80000001u);
    VXGeom none, cube(record.get());
    struct Row
    {
        const char* name;
        VXGeom* geom;
        int poly;
        int length;
        std::uint32_t smoothing;
        bool hasVert4;
    };
    for (const Row& row : {Row{"first", &cube, 0, 4, 0, false}, Row{"last but one", &cube, 4, 4, 0x80000001u, true},
                           Row{"past the end", &cube, 6, 0, 0, false}, Row{"without a record", &none, 0, 0, 0, false}})
    {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.geom->PolyLength(row.poly), row.length);
        EXPECT_EQ(row.geom->PolySmoothingGroup(row.poly), row.smoothing);
        EXPECT_EQ(row.geom->PolyIncludesVertex(row.poly, 4), row.hasVert4);
    }
    EXPECT_FALSE(cube.PolyIncludesVertex(-1, 4));
    EXPECT_TRUE(cube.EdgeIncludesVertex(0, 0)); // the first face starts at vertex 0
    EXPECT_TRUE(cube.EdgeIncludesVertex(0, 2));
    EXPECT_FALSE(cube.EdgeIncludesVertex(0, 3));
    EXPECT_FALSE(cube.EdgeIncludesVertex(12, 0));
    EXPECT_FALSE(none.EdgeIncludesVertex(0, 0));
}

TEST(Geom, MemoryUsedFollowsTheMesh)
{
    const GeomPtr small = Torus(20, 20).Record(), large = Torus(200, 200).Record();
    VXGeom few(small.get()), many(large.get());
    few.SortGeomData();
    many.SortGeomData();
    const double ratio = double(many.MemoryUsed()) / double(few.MemoryUsed());
    EXPECT_GT(ratio, 75) << "100 times the quads";
    EXPECT_LT(ratio, 125);
    const std::size_t normals = MEM_TotalSize(many.VertNormals()) + MEM_TotalSize(many.PolyNormals());
    EXPECT_GT(many.MemoryUsed(), GEOM_MemoryUsed(many.Geom()) + many.EdgeList().MemoryUsed() + normals);
    const std::size_t sorted = many.MemoryUsed();
    many.ClearSortedData();
    EXPECT_EQ(sorted - many.MemoryUsed(), 40000 * (1 + 4 + 1) * sizeof(std::int32_t) + sizeof(VXSortedSet));
}

TEST(Geom, ReadsWavefrontFilesIntoARecordOfItsOwn)
{
    const TempFile plain("velmar geom test plain.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4\n");
    const TempFile named("velmar geom test named.obj",
                         "v 0 0 0\nv 1 0 0\nv 1 1 0\nusemtl unused\nusemtl red\nf 1 2 3\n");
    const TempFile broken("velmar geom test broken.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 9\n");
    VXGeom geom;
    ASSERT_EQ(geom.ReadWavefront(plain.Path().c_str()), 0);
    EXPECT_EQ(geom.NumPolys(), 1);
    ASSERT_EQ(geom.NumGeomMaterials(), 1);
    EXPECT_STREQ(geom.MaterialName(0), "Default");
    EXPECT_EQ(geom.EdgeList().GetEdgeCount(), 4);

    ASSERT_EQ(geom.ReadWavefront(named.Path().c_str()), 0);
    ASSERT_EQ(geom.NumGeomMaterials(), 1) << "only the material that a polygon uses";
    EXPECT_STREQ(geom.MaterialName(0), "red");

    GEOM_ReadReport report;
    const GEOM* const before = geom.Geom();
    EXPECT_EQ(geom.ReadWavefront("no such folder/no such file.obj", nullptr, &report), -1);
    EXPECT_FALSE(report.error.IsEmpty());
    EXPECT_EQ(geom.ReadWavefront(broken.Path().c_str(), nullptr, &report), -1);
    EXPECT_EQ(report.errorLine, 4);
    EXPECT_TRUE(geom.GeomIsGeom(before)) << "what was there before stays";
}

TEST(VertSmoothingList, HoldsEachPolygonOnceInOrderOfAddition)
{
    for (const int polys : {0, 1, 5, 24, 25, 26, 5000}) // about and far beyond where long lists begin
    {
        SCOPED_TRACE(polys);
        VXVertSmoothingList list;
        ASSERT_TRUE(list.SetSize(3));
        for (int round = 0; round < 3; ++round)
            for (int i = 0; i < polys; ++i)
            {
                ASSERT_TRUE(list.Add(1, (i * 7 + round) % polys));
                ASSERT_TRUE(list.Add(2, i % 3));
            }
        const VXVertSmoothingList copy = list;
        for (const VXVertSmoothingList* each : {&std::as_const(list), &copy})
        {
            std::vector<int> found;
            for (const VXVertSmoothingList::Node* node = each->First(1); node; node = node->next)
                found.push_back(node->poly);
            EXPECT_EQ(found.size(), std::size_t(polys));
            EXPECT_EQ(std::set<int>(found.begin(), found.end()).size(), found.size());
            for (std::size_t i = 0; i < found.size(); ++i)
                EXPECT_EQ(found[i], int(i) * 7 % polys);
            EXPECT_EQ(each->Length(1), polys);
            EXPECT_EQ(each->Length(2), std::min(polys, 3));
            EXPECT_EQ(each->First(0), nullptr);
        }
    }
}

TEST(VertSmoothingList, IsEmptyAfterFailedAllocations)
{
    for (int n = 1; n < 30; ++n)
    {
        SCOPED_TRACE(n);
        VXVertSmoothingList list;
        MEM_FailAfter(n);
        bool good = list.SetSize(2);
        for (int i = 0; i < 3000 && good; ++i)
            good = list.Add(1, i);
        MEM_FailAfter(0);
        EXPECT_EQ(list.Count(), good ? 2 : 0);
        EXPECT_EQ(list.First(1) != nullptr, good);
    }
}
