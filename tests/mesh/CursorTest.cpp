#include "mesh/VXGeom.h"
#include "tests/support/Meshes.h"

#include <gtest/gtest.h>

#include <vector>

TEST(PolyCursor, WalksEachPolygonAsItStandsInTheRecord)
{
    for (const TestMesh& mesh : {Cube(), ConcaveL(), BentQuad(), MoebiusStrip(5), Fan(7), Grid(3, 2), EmptyMesh()})
    {
        SCOPED_TRACE(mesh.name);
        VXGeom geom;
        geom.SetGenerateCreases(false);
        ASSERT_EQ(geom.SetGeom(mesh.Record().get(), true), 0);
        for (int poly = 0; poly < int(mesh.faces.size()); ++poly)
        {
            const std::vector<int>& face = mesh.faces[std::size_t(poly)];
            ASSERT_EQ(geom.BeginPolyVertexLoop(poly), int(face.size()));
            EXPECT_EQ(geom.CurPolyVert(), nullptr) << "before the first corner";
            for (int round = 0; round < 2; ++round) // after the end it starts over
            {
                for (const int vert : face)
                {
                    ASSERT_EQ(geom.NextPolyVert(), geom.Vertex(vert));
                    EXPECT_EQ(geom.CurPolyVertIndex(), vert);
                    EXPECT_EQ(geom.CurPolyVert(), geom.Vertex(vert));
                    EXPECT_EQ(geom.CurPolyVertNormalPerVert(), geom.VertNormal(vert));
                }
                EXPECT_EQ(geom.NextPolyVert(), nullptr);
                EXPECT_EQ(geom.CurPolyVertIndex(), -1);
            }
            EXPECT_EQ(geom.CurPolyIndex(), poly);
            EXPECT_EQ(geom.CurPolyNormal(), geom.PolyNormal(poly));
        }
    }
}

TEST(PolyCursor, OutOfRangeNothingIsCurrent)
{
    VXGeom none, cube(Cube().Record().get());
    struct Row
    {
        const char* name;
        VXGeom* geom;
        int poly;
    };
    for (const Row& row :
         {Row{"negative", &cube, -1}, Row{"past the end", &cube, 6}, Row{"without a record", &none, 0}})
    {
        SCOPED_TRACE(row.name);
        VXGeom& geom = *row.geom;
        geom.BeginPolyVertexLoop(2);
        geom.NextPolyVert();
        EXPECT_EQ(geom.BeginPolyVertexLoop(row.poly), 0);
        EXPECT_EQ(geom.NextPolyVert(), nullptr);
        EXPECT_EQ(geom.CurPolyVertNormalPerVert(), nullptr);
        EXPECT_EQ(geom.CurPolyVertexColorPerVert(), nullptr);
        EXPECT_EQ(geom.CurPolyVertIndex(), -1);
        EXPECT_EQ(geom.CurPolyUVIndex(), -1);
        EXPECT_EQ(geom.CurPolyNormal(), nullptr);
        EXPECT_EQ(geom.CurPolyTVerts(), nullptr);
        EXPECT_EQ(geom.CurrentPolyMaterial(), nullptr);
        EXPECT_EQ(geom.PolySetStart(), nullptr);
        EXPECT_EQ(geom.PolyUVSetStart(), nullptr);
        EXPECT_EQ(geom.PolyNormalSetStart(), nullptr);
        EXPECT_EQ(geom.CurPolyIndex(), 0);
        EXPECT_EQ(geom.CurPolyLength(), 0);
        EXPECT_FALSE(geom.CurPolyIsFace() || geom.CurPolyIsLine() || geom.CurPolyIsPoint() || geom.CurPolyIsHidden());
    }
}

TEST(PolyCursor, TellsKindsApart)
{
    struct Row
    {
        int type, flags;
        bool face, line, point, hidden;
    };
    const Row rows[] = {{0, 0, true, false, false, false},
                        {1, 0, false, true, false, false},
                        {2, 0x20, true, false, false, true},
                        {3, 0xFF, false, false, true, true},
                        {4, 0xDF, false, false, false, false}};
    const GeomPtr record = Cube().Record();
    for (int i = 0; i < 5; ++i)
    {
        record->Poly(i)->type = std::uint8_t(rows[i].type);
        record->Poly(i)->flags = std::uint8_t(rows[i].flags);
    }
    VXGeom geom(record.get());
    for (int i = 0; i < 5; ++i)
    {
        SCOPED_TRACE(rows[i].type);
        geom.SetCurrentPoly(i);
        EXPECT_EQ(geom.CurPolyIsFace(), rows[i].face);
        EXPECT_EQ(geom.CurPolyIsLine(), rows[i].line);
        EXPECT_EQ(geom.CurPolyIsPoint(), rows[i].point);
        EXPECT_EQ(geom.CurPolyIsHidden(), rows[i].hidden);
    }
}

// Two quads side by side that share the edge between vertices 1 and 4. The right one is given crease vertices 6 and 7.
class CreasedCursor : public testing::Test
{
protected:
    void SetUp() override
    {
        const GeomPtr record = Grid(2, 1).Record();
        mGeom.SetGenerateCreases(false);
        ASSERT_EQ(mGeom.SetGeom(record.get(), true), 0);
        GEOM& g = *mGeom.Geom();
        ASSERT_EQ(g.numVerts, 6);
        ASSERT_TRUE(MEM_SizeArray(g.verts, 8));
        for (int corner = 0; corner < 8; ++corner)
        {
            mSets[corner] = g.sets[corner];
            const bool shared = g.verts[g.sets[corner]].x == 1;
            if (corner >= 4 && shared)
                mSets[corner] = g.verts[g.sets[corner]].y == 0 ? 6 : 7;
            if (mSets[corner] >= 6)
            {
                mOrig[mSets[corner] - 6] = g.sets[corner];
                g.verts[mSets[corner]] = g.verts[g.sets[corner]];
            }
        }
        for (int i = 0; i < 8; ++i)
            mUvs[i] = {float(i), 0.5f};
        mGeom.SetExternalCreaseSets(mSets);
        mGeom.SetExternalOrigCreaseIndexes(mOrig);
        mGeom.SetExternalUvsPerVertex(mUvs);
        mGeom.SetNumbCreaseVerts(2);
        mGeom.SetUseExternalCreaseInfo(true);
    }

    VXGeom mGeom;
    std::int32_t mSets[8] = {}, mOrig[2] = {};
    T_VERTEX mUvs[8];
};

TEST_F(CreasedCursor, ReadsCreaseCornersAndTheirTextureCoordinates)
{
    int creased = 0;
    for (int poly = 0; poly < 2; ++poly)
    {
        mGeom.BeginPolyVertexLoop(poly);
        for (int corner = 0; corner < 4; ++corner)
        {
            const int vert = mSets[poly * 4 + corner];
            EXPECT_EQ(mGeom.NextPolyVert(), mGeom.Verts() + vert);
            EXPECT_EQ(mGeom.CurPolyVertIndex(), vert);
            EXPECT_EQ(mGeom.CurPolyTVertex(corner), mUvs + vert);
            float u = -1, v = -1;
            EXPECT_TRUE(mGeom.CurPolyVertTexCoord(u, v));
            EXPECT_EQ(u, float(vert));
            creased += vert >= 6;
        }
        EXPECT_EQ(mGeom.CurPolyTVerts(), mUvs + mSets[poly * 4]);
        EXPECT_EQ(mGeom.CurPolyTVertex(4), nullptr);
    }
    EXPECT_EQ(creased, 2);
    EXPECT_EQ(mGeom.Sets(true), mSets);
    EXPECT_EQ(mGeom.Sets(false), mGeom.Geom()->sets);
}

TEST_F(CreasedCursor, WithoutTextureCoordinatesInTheRecordThereAreNone)
{
    mGeom.Geom()->tex->numPolys = 1;
    mGeom.SetCurrentPoly(0);
    EXPECT_NE(mGeom.CurPolyTVerts(), nullptr);
    mGeom.SetCurrentPoly(1);
    EXPECT_EQ(mGeom.CurPolyTVerts(), nullptr);
    EXPECT_EQ(mGeom.PolyUVSetStart(), nullptr);
    float u = 5, v = 5;
    EXPECT_FALSE(mGeom.CurPolyTexCoords(&u, &v, 0));
    EXPECT_EQ(u, 0);
    EXPECT_EQ(v, 0);
}

TEST(PolyCursor, TextureCornersAreBoundedByTheTexturePolygon)
{
    struct Row
    {
        const char* name;
        GEOM_TexPoly texPoly;
        int uvStart;  ///< where PolyUVSetStart points to in the texture corners
        int readable; ///< corners that have a texture coordinate
    };
    for (const Row& row : {Row{"as long as the polygon", {4, 4}, 4, 4}, Row{"shorter", {5, 3}, 5, 3},
                           Row{"empty, any start", {7, 0}, 0, 0}, Row{"empty, wild start", {-12, 0}, 0, 0},
                           Row{"start at the end", {8, 0}, 0, 0}})
    {
        SCOPED_TRACE(row.name);
        VXGeom geom;
        geom.SetGenerateCreases(false);
        ASSERT_EQ(geom.SetGeom(Grid(2, 1).Record().get(), true), 0);
        GEOM_Texture& tex = *geom.Geom()->tex;
        ASSERT_EQ(tex.numCorners, 8);
        tex.polys[1] = row.texPoly;
        geom.BeginPolyVertexLoop(1);
        EXPECT_EQ(geom.PolyUVSetStart(), tex.sets + row.uvStart);
        for (int corner = 0; corner < 4; ++corner)
        {
            geom.NextPolyVert();
            const bool readable = corner < row.readable;
            EXPECT_EQ(geom.CurPolyUVIndex(), readable ? tex.sets[row.uvStart + corner] : -1);
            EXPECT_EQ(geom.CurPolyTVertex(corner), readable ? tex.verts + tex.sets[row.uvStart + corner] : nullptr);
        }
        EXPECT_EQ(geom.CurPolyTVerts(), row.readable > 0 ? tex.verts + tex.sets[row.uvStart] : nullptr);
    }
}

TEST(PolyCursor, ReadsColorsAndCornerNormalsOfTheCurrentCorner)
{
    const GeomPtr record = Cube().Record();
    ASSERT_TRUE(MEM_SizeArray(record->normalSets, 24));
    ASSERT_TRUE(MEM_SizeArray(record->normals, 1));
    record->numNormals = 1;
    VXGeom geom(record.get());
    VERTEX colors[8 + 24];
    geom.SetExternalVertexColors(colors);
    geom.BeginPolyVertexLoop(5);
    EXPECT_EQ(geom.PolyNormalSetStart(), geom.Geom()->normalSets + 20);
    geom.NextPolyVert();
    EXPECT_EQ(geom.CurPolyVertexColorPerVert(), colors + geom.CurPolyVertIndex());
}
