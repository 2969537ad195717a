#include "host/text/TextMesh.h"
#include "mesh/VXGeom.h"
#include "tests/text/Fonts.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

using namespace vx;

namespace
{
class TextMeshes : public WithFonts
{
protected:
    RecordPtr Build(const BString& text, const TextMeshOptions& options = {}, const char* font = kSans)
    {
        VXFTFace face(font);
        return BuildTextMesh(text, face, options, mReport);
    }
    TextMeshReport mReport;
};

VERTEX Corner(const GEOM& g, int poly, int k)
{
    const ELEMENT& element = *g.Poly(poly);
    return g.verts[g.sets[element.start + k % element.length]];
}

// Of a fan of triangles from the first corner, in double as the sum is of large numbers of both signs.
double Volume(const GEOM& g)
{
    double sum = 0;
    for (int p = 0; p < g.numPolys; ++p)
        for (int k = 1; k + 1 < int(g.Poly(p)->length); ++k)
        {
            const VERTEX a = Corner(g, p, 0), b = Corner(g, p, k), c = Corner(g, p, k + 1);
            sum += double(a.x) * (double(b.y) * c.z - double(b.z) * c.y) +
                   double(a.y) * (double(b.z) * c.x - double(b.x) * c.z) +
                   double(a.z) * (double(b.x) * c.y - double(b.y) * c.x);
        }
    return sum / 6;
}

double AreaFacing(const GEOM& g, float z, bool front)
{
    double sum = 0;
    for (int p = 0; p < g.numPolys; ++p)
        if (Corner(g, p, 0).z == z && Corner(g, p, 1).z == z && Corner(g, p, 2).z == z)
            sum += double(Cross(Corner(g, p, 1) - Corner(g, p, 0), Corner(g, p, 2) - Corner(g, p, 0)).z) / 2;
    return front ? sum : -sum;
}

// Every edge is walked once each way.
bool IsClosed(const GEOM& g)
{
    std::vector<std::pair<int, int>> walks, back;
    for (int p = 0; p < g.numPolys; ++p)
        for (int k = 0; k < int(g.Poly(p)->length); ++k)
        {
            const ELEMENT& element = *g.Poly(p);
            const int a = g.sets[element.start + k], b = g.sets[element.start + (k + 1) % element.length];
            walks.push_back({a, b});
            back.push_back({b, a});
        }
    std::sort(walks.begin(), walks.end());
    std::sort(back.begin(), back.end());
    return walks == back && std::adjacent_find(walks.begin(), walks.end()) == walks.end();
}

// Polygons of a bevel whose outer edge runs against its edge at the front: the outer rim folds there.
int NumFolds(const GEOM& g, float depth)
{
    int folds = 0;
    for (int p = 0; p < g.numPolys; ++p)
        if (int(g.Poly(p)->length) == 4 && Corner(g, p, 0).z == depth)
            folds += Dot(Corner(g, p, 0) - Corner(g, p, 1), Corner(g, p, 3) - Corner(g, p, 2)) < 0 ? 1 : 0;
    return folds;
}

// All characters of a range in lines of 64.
BString Characters(unsigned first, unsigned end)
{
    std::string text;
    for (unsigned code = first; code < end; ++code)
    {
        if (code >= 0x800)
            text += {char(0xE0 | code >> 12), char(0x80 | (code >> 6 & 63)), char(0x80 | (code & 63))};
        else if (code >= 0x80)
            text += {char(0xC0 | code >> 6), char(0x80 | (code & 63))};
        else
            text += char(code);
        text += code % 64 == 63 ? "\n" : "";
    }
    return BString(text);
}
} // namespace

// Of a wall that is straight, the volume is the front's area times the depth, whatever the outline.
TEST_F(TextMeshes, WithDepthAreClosedAndWoundOutwards)
{
    const std::pair<unsigned, unsigned> ranges[] = {{0x20, 0x250}, {0x250, 0x600}, {0x1E00, 0x2200}, {0x2500, 0x2800}};
    for (const auto& [first, end] : ranges)
        for (const float bevel : {0.0f, 0.02f})
        {
            SCOPED_TRACE(testing::Message() << std::hex << first << " bevel " << bevel);
            TextMeshOptions options;
            options.bevel = bevel;
            const RecordPtr mesh = Build(Characters(first, end), options);
            ASSERT_TRUE(mesh) << mReport.error.CString();
            EXPECT_TRUE(IsClosed(*mesh));
            const double straight = AreaFacing(*mesh, options.depth, true) * options.depth, volume = Volume(*mesh);
            if (bevel == 0)
                EXPECT_NEAR(volume, straight, 1e-3 * straight);
            else
            {
                EXPECT_GT(volume, straight) << "a bevel stands out";
                EXPECT_LT(volume, 2 * straight);
                EXPECT_EQ(NumFolds(*mesh, options.depth), 0);
            }
            EXPECT_NEAR(AreaFacing(*mesh, 0, false), AreaFacing(*mesh, options.depth, true), 1e-3 * straight);
        }
}

TEST_F(TextMeshes, HaveCreasesAtTheirRimsAndTextureCoordinates)
{
    for (const float bevel : {0.0f, 0.02f, 1.0f})
    {
        TextMeshOptions options;
        options.bevel = bevel;
        const RecordPtr record = Build("oH8a", options); // the outer rim of the a has one hard corner
        ASSERT_TRUE(record);
        ASSERT_TRUE(record->tex);
        EXPECT_EQ(record->NumMaterials(), 2);
        float stats[9];
        GEOM_Stats(record.get(), stats);
        const float span = std::max(stats[3] - stats[0], stats[4] - stats[1]);
        for (int p = 0; p < record->numPolys; ++p)
        {
            const GEOM_TexPoly run = record->tex->polys[p];
            ASSERT_EQ(run.length, int(record->Poly(p)->length));
            for (int k = 0; bevel == 0 && k < run.length; ++k) // a bevel that is narrowed is a little shorter
            {
                const VERTEX side = Corner(*record, p, k + 1) - Corner(*record, p, k);
                const T_VERTEX a = record->tex->verts[record->tex->sets[run.start + k]];
                const T_VERTEX b = record->tex->verts[record->tex->sets[run.start + (k + 1) % run.length]];
                EXPECT_NEAR(std::hypot(b.u - a.u, b.v - a.v) * span, Length(side), 1e-5f);
            }
        }
        VXGeom mesh;
        mesh.SetUseCreaseAngle(false);
        mesh.SetGeom(record.get(), false);
        // Where a wall's polygon goes along the front's rim; zero elsewhere.
        const auto along = [&](int p)
        {
            const VERTEX a = Corner(*record, p, 0), b = Corner(*record, p, 1);
            return a.z == options.depth && b.z == options.depth ? a - b : VERTEX{0, 0, 0};
        };
        int rims = 0, corners = 0;
        for (int e = 0; e < mesh.EdgeList().GetEdgeCount(); ++e)
        {
            const VXEdge& edge = mesh.EdgeList().GetEdge(e);
            ASSERT_GE(edge.PolyIndex2(), 0);
            const bool side1 = int(mesh.Polygon(edge.PolyIndex1())->material) == 1,
                       side2 = int(mesh.Polygon(edge.PolyIndex2())->material) == 1;
            if (side1 && side2)
            {
                const VERTEX a = along(edge.PolyIndex1()), b = along(edge.PolyIndex2());
                if (Dot(a, b) < 0.76f * Length(a) * Length(b))
                {
                    ++corners;
                    EXPECT_TRUE(edge.IsCreaseEdge() && !edge.IsSmoothEdge());
                }
            }
            if (side1 == side2)
                continue;
            ++rims;
            EXPECT_TRUE(edge.IsCreaseEdge());
            EXPECT_FALSE(edge.IsSmoothEdge());
        }
        EXPECT_GT(rims, 100);
        EXPECT_GE(corners, 13) << "twelve of the H";
    }
}

TEST_F(TextMeshes, StandAsTheyAreAligned)
{
    constexpr std::pair<TextAlign, float> kRows[] = {
        {TextAlign::Left, 0.0f}, {TextAlign::Centre, 0.5f}, {TextAlign::Right, 1.0f}};
    for (const auto& [align, share] : kRows)
    {
        TextMeshOptions options;
        options.align = align;
        const RecordPtr mesh = Build("wide line\r\ni", options);
        float left[2] = {1e9f, 1e9f}, right[2] = {-1e9f, -1e9f}; // of both lines
        for (int v = 0; v < mesh->numVerts; ++v)
        {
            const int line = mesh->verts[v].y < -0.35f ? 1 : 0;
            left[line] = std::min(left[line], mesh->verts[v].x);
            right[line] = std::max(right[line], mesh->verts[v].x);
        }
        for (const int line : {0, 1})
            EXPECT_NEAR(left[line] + share * (right[line] - left[line]), 0, 1e-5f);
        EXPECT_NEAR(right[0] - left[0], 4, 1) << "an em is as high as asked for";
    }
}

TEST_F(TextMeshes, WithoutDepthAreFlatAndReadFromBehindWhenTwoSided)
{
    TextMeshOptions options;
    options.depth = 0;
    const RecordPtr one = Build("Lg", options);
    options.twoSided = true;
    const RecordPtr two = Build("Lg", options);
    ASSERT_TRUE(one && two);
    EXPECT_EQ(two->numPolys, 2 * one->numPolys);
    EXPECT_EQ(two->NumMaterials(), 1);
    EXPECT_NEAR(AreaFacing(*two, -0.0001f, false), AreaFacing(*one, 0, true), 1e-4);
    float a[9], b[9];
    GEOM_Stats(one.get(), a);
    GEOM_Stats(two.get(), b);
    EXPECT_NEAR(a[0], b[0], 1e-5f);
    EXPECT_NEAR(a[3], b[3], 1e-5f);
}

TEST_F(TextMeshes, SayWhatIsWrong)
{
    using Blames = TextMeshReport::Blames;
    TextMeshOptions none, deep, bevelled;
    none.size = std::nanf("");
    deep.depth = -1;
    bevelled.bevel = INFINITY;
    const std::string empty = Write("empty.ttf", ""), bitmaps = Write("bits.bdf", kBitmapFont);
    struct Row
    {
        const char* text;
        TextMeshOptions options;
        std::string font;
        Blames blames;
    };
    for (const Row& row :
         {Row{"A", none, kSans, Blames::Options}, Row{"A", deep, kSans, Blames::Options},
          Row{"A", bevelled, kSans, Blames::Options}, Row{"A", {}, empty, Blames::Font},
          Row{"A", {}, bitmaps, Blames::Font}, Row{"A", {}, "/nowhere.ttf", Blames::Font},
          Row{"\xFF", {}, kSans, Blames::Text}, Row{" \n ", {}, kSans, Blames::Text}, Row{"", {}, kSans, Blames::Text}})
    {
        EXPECT_FALSE(Build(row.text, row.options, row.font.c_str()));
        EXPECT_EQ(mReport.blames, row.blames) << mReport.error.CString();
        EXPECT_FALSE(mReport.error.IsEmpty());
    }
    EXPECT_TRUE(Build("a\xE4\xB8\x80\n\xE4\xB8\x80"));
    EXPECT_EQ(mReport.missing, 2);
    EXPECT_EQ(mReport.firstMissing, 0x4E00u);
    EXPECT_EQ(mReport.lines, 2);
    EXPECT_EQ(mReport.glyphs, 3);
}
