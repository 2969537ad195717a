#include "base/BText.h"
#include "tests/support/EdgeMeshes.h"
#include "tests/text/FilledArea.h"
#include "tests/text/Fonts.h"
#include "tests/text/TinyFont.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <set>
#include <vector>

namespace
{
constexpr float kFontUnits = 4608; // the size at which a mesh unit is a font unit

struct Triangle
{
    VERTEX a, b, c;

    double TwiceArea() const
    {
        return (double(b.x) - a.x) * (double(c.y) - a.y) - (double(b.y) - a.y) * (double(c.x) - a.x);
    }
    double LongestSide() const { return std::max({Length(b - a), Length(c - b), Length(a - c)}); }
};

std::vector<Triangle> TrianglesOf(const VXGeom& mesh)
{
    std::vector<Triangle> triangles;
    for (int p = 0; p < mesh.NumPolys(); ++p)
    {
        const std::int32_t* const corners = mesh.Geom()->sets + int(mesh.Polygon(p)->start);
        const VERTEX* const verts = mesh.Verts();
        EXPECT_EQ(int(mesh.Polygon(p)->length), 3);
        triangles.push_back({verts[corners[0]], verts[corners[1]], verts[corners[2]]});
    }
    return triangles;
}

std::vector<VERTEX> VertsOf(const VXGeom& mesh) { return {mesh.Verts(), mesh.Verts() + mesh.NumVerts(false)}; }

class Glyphs : public WithFonts
{
protected:
    void SetUp() override
    {
        WithFonts::SetUp();
        mFace = std::make_unique<VXFTFace>(kSans);
    }
    void TearDown() override
    {
        mFace.reset();
        WithFonts::TearDown();
    }
    void Build(VXGeom& mesh, const std::string& text, float size = 1, bool twoSided = false, bool leftAlign = false)
    {
        mesh.BuildStrGlyphs(text.c_str(), mFace.get(), size, "Text", twoSided, leftAlign);
    }
    std::unique_ptr<VXFTFace> mFace;
};
using Texts = Glyphs;
} // namespace

TEST_F(Glyphs, CoverWhatTheirContoursFill)
{
    std::set<FT_UInt> seen;
    FT_UInt glyph = 0;
    const FT_Face face = mFace->GetFTFace();
    for (FT_ULong code = FT_Get_First_Char(face, &glyph); glyph != 0; code = FT_Get_Next_Char(face, code, &glyph))
    {
        if (!seen.insert(glyph).second)
            continue;
        VXGeom mesh;
        FT_GlyphSlot slot = nullptr;
        mesh.BuildCharGlyph(unsigned(code), mFace.get(), kFontUnits, &slot, "Text");
        ASSERT_TRUE(slot && mesh.Geom());
        double area = 0;
        for (const Triangle& triangle : TrianglesOf(mesh))
        {
            // A corner that is rounded to a float by half of 1/4096 can turn a sliver by that much.
            EXPECT_GE(triangle.TwiceArea(), -triangle.LongestSide() / 4096) << "U+" << std::hex << code;
            area += triangle.TwiceArea() / 2;
        }
        const double filled = FilledArea(slot->outline, 5);
        EXPECT_NEAR(area, filled, 1e-4 * filled) << "U+" << std::hex << code;
    }
    EXPECT_GT(seen.size(), 5000u);
}

// Crossings upon crossings: the fill rule decides, not the direction of the contours. Thousands of points at random
// would cross millions of times, which is damage and not an outline.
TEST_F(Glyphs, OfWildOutlinesAreFilledByTheRuleOrLeftOut)
{
    std::mt19937 random(3);
    const auto wild = [&random](int points)
    {
        std::vector<std::pair<int, int>> contour;
        for (int i = 0; i < points; ++i)
            contour.push_back({int(random() % 8000), int(random() % 8000)});
        return contour;
    };
    for (const int points : {3, 4, 7, 20, 60})
    {
        VXFTFace face(Write("wild.ttf", TinyFont({wild(points), wild(5), wild(points)})).c_str());
        VXGeom mesh;
        FT_GlyphSlot slot = nullptr;
        mesh.BuildCharGlyph('A', &face, kFontUnits, &slot, "Text");
        ASSERT_TRUE(slot);
        EXPECT_EQ(slot->advance.x, 600);
        const double filled = FilledArea(slot->outline, 5);
        EXPECT_GT(filled, 1e4);
        double area = 0;
        for (const Triangle& triangle : TrianglesOf(mesh))
        {
            EXPECT_GE(triangle.TwiceArea(), -triangle.LongestSide() / 1024) << points;
            area += triangle.TwiceArea() / 2;
        }
        EXPECT_NEAR(area, filled, 1e-4 * filled) << points;
    }
    VXFTFace face(Write("tangled.ttf", TinyFont({wild(20000)})).c_str());
    VXGeom mesh;
    mesh.BuildStrGlyphs("AA", &face, 1, "Text", false, false); // the tessellator would not come to an end
    EXPECT_EQ(mesh.NumPolys(), 0);
}

// By FreeType's own measures, whatever the direction of the writing.
TEST_F(Texts, AreLaidOutGlyphByGlyph)
{
    const char* const texts[] = {"AVATAR To fi",
                                 "e\xCC\x81t\xCC\xA3",
                                 "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D",
                                 "a\xE4\xB8\x80"
                                 "b\tc",
                                 "one\nAV\rTo\r\nfour\n\nsix",
                                 "  x  "};
    const FT_Face face = mFace->GetFTFace();
    for (const bool unscaled : {false, true})
        for (const char* const text : texts)
        {
            SCOPED_TRACE(text);
            VXGeom::SetUnscaledKerning(unscaled);
            VXGeom whole;
            Build(whole, text, kFontUnits);
            VXGeom::SetUnscaledKerning(false);

            BArray<std::uint32_t> codes;
            ConvertUTF8toUTF32(text, std::int64_t(std::strlen(text)), codes);
            std::vector<VERTEX> expected;
            FT_Pos x = 0, y = 0;
            FT_UInt previous = 0;
            for (std::int64_t i = 0; i < codes.Count(); ++i)
            {
                if (codes[i] == '\n' && i > 0 && codes[i - 1] == '\r')
                    continue;
                if (codes[i] == '\n' || codes[i] == '\r')
                {
                    x = 0;
                    y -= face->height;
                    previous = 0;
                    continue;
                }
                const FT_UInt glyph = FT_Get_Char_Index(face, codes[i]);
                FT_Vector kerning{0, 0};
                if (previous && glyph)
                    FT_Get_Kerning(face, previous, glyph, unscaled ? FT_KERNING_UNSCALED : FT_KERNING_DEFAULT,
                                   &kerning);
                x += kerning.x;
                VXGeom one;
                FT_GlyphSlot slot = nullptr;
                one.BuildCharGlyph(codes[i], mFace.get(), kFontUnits, &slot, "Text");
                for (const VERTEX& vert : VertsOf(one))
                    expected.push_back(vert + VERTEX{float(x), float(y), 0});
                x += slot->advance.x;
                previous = glyph;
            }
            EXPECT_EQ(VertsOf(whole), expected);
        }
}

TEST_F(Texts, HaveOneMaterialAndNormalsOfThePlaneWithoutCreases)
{
    VXGeom mesh;
    BArray<std::int32_t> ends;
    Build(mesh, "before");
    mesh.BuildStrGlyphs("a b", mFace.get(), 2, mesh.MaterialName(0), false, false, &ends);
    ASSERT_EQ(mesh.NumGeomMaterials(), 1);
    EXPECT_STREQ(mesh.MaterialName(0), "Text") << "the name lay in what was emptied";
    EXPECT_EQ(mesh.NumbCreaseVerts(), 0);
    EXPECT_TRUE(mesh.EdgesClassified());
    EXPECT_TRUE(mesh.EdgeList().GetEdge(0).IsSmoothEdge());
    for (int p = 0; p < mesh.NumPolys(); ++p)
        EXPECT_EQ(*mesh.PolyNormal(p), (VERTEX{0, 0, 1}));
    for (int v = 0; v < mesh.NumVerts(true); ++v)
        EXPECT_EQ(*mesh.VertNormal(v), (VERTEX{0, 0, 1}));
    ASSERT_EQ(ends.Count(), 3);
    EXPECT_EQ(ends[0], ends[1]) << "a space has no polygons";
    EXPECT_EQ(ends[2], mesh.NumPolys());
}

// Put together of the glyphs' edges, and yet those of the whole.
TEST_F(Texts, HaveTheEdgesThatTheirRecordsHave)
{
    for (const char* const text : {"", " ", "A", "Af a\n&\xD7\xA9 ffA", "%8@"})
        for (const bool twoSided : {false, true})
        {
            VXGeom mesh;
            mesh.SetGenerateCreases(false);
            Build(mesh, text, 1, twoSided);
            VXEdgeList whole;
            ASSERT_TRUE(whole.Build(*mesh.Geom()));
            EXPECT_EQ(RowsOf(mesh.EdgeList()), RowsOf(whole)) << text;
            EXPECT_EQ(ChainsOf(mesh.EdgeList()), ChainsOf(whole)) << text;
            EXPECT_EQ(mesh.EdgeList().Links().size(), whole.Links().size());
        }
}

TEST_F(Texts, AreSeenFromBehindWhenTwoSided)
{
    for (const bool left : {false, true})
    {
        VXGeom front, both;
        Build(front, "Fg", 10);
        Build(both, "Fg", 10, true, left);
        float stats[9];
        GEOM_Stats(front.Geom(), stats);
        const int count = front.NumVerts(false);
        ASSERT_EQ(both.NumPolys(), 2 * front.NumPolys());
        ASSERT_EQ(both.NumVerts(false), 2 * count);
        EXPECT_EQ(both.NumGeomMaterials(), 1);
        const float shift = left ? -stats[0] : 0;
        for (int v = 0; v < count; ++v)
        {
            const VERTEX here = *front.Vertex(v);
            // A half turn about the y axis through the middle of the text where it was before it was moved.
            EXPECT_NEAR(Length(*both.Vertex(v) - VERTEX{here.x + shift, here.y, 0.0001f}), 0, 1e-5f);
            const VERTEX turned{2 * stats[6] - here.x - shift, here.y, -0.0001f};
            EXPECT_NEAR(Length(*both.Vertex(count + v) - turned), 0, 1e-5f);
        }
        EXPECT_LT(both.PolyNormal(both.NumPolys() - 1)->z, -0.99f);
    }
}

TEST_F(Texts, HaveNoPolygonsWhereThereIsNothingToDraw)
{
    struct Row
    {
        const char* text;
        float size;
    };
    const float nan = std::numeric_limits<float>::quiet_NaN(), infinite = std::numeric_limits<float>::infinity();
    for (const Row& row : {Row{"", 1}, Row{nullptr, 1}, Row{"   \n ", 1}, Row{"a\xC3", 1}, Row{"\xED\xA0\x80", 1},
                           Row{"A", 0}, Row{"A", nan}, Row{"A", infinite}})
    {
        VXGeom mesh;
        Build(mesh, "before");
        mesh.BuildStrGlyphs(row.text, mFace.get(), row.size, "Text", true, true);
        EXPECT_EQ(mesh.NumPolys(), 0) << (row.text ? row.text : "null") << ' ' << row.size;
        EXPECT_EQ(mesh.EdgeList().GetEdgeCount(), 0);
    }
    VXFTFace bitmaps(Write("bits.bdf", kBitmapFont).c_str());
    ASSERT_TRUE(bitmaps.GetFTFace());
    VXGeom mesh;
    mesh.BuildStrGlyphs("AA", &bitmaps, 1, "Text", false, false);
    EXPECT_EQ(mesh.NumPolys(), 0);
    for (VXFTFace* const face : {mFace.get(), &bitmaps})
    {
        mesh.BuildCharGlyph('A', face, face == &bitmaps ? 1 : nan, nullptr, nullptr);
        EXPECT_EQ(mesh.NumPolys(), 0);
    }
    Build(mesh, "upside down", -1);
    for (const Triangle& triangle : TrianglesOf(mesh))
        EXPECT_GE(triangle.TwiceArea(), -1e-6) << "a negative size turns the text about its origin";
}

TEST_F(Texts, LeaveTheWrapperAsStatedWithoutAFace)
{
    VXFTFace missing("/nowhere.ttf");
    VXGeom mesh;
    Build(mesh, "Ab");
    const int polys = mesh.NumPolys();
    mesh.BuildStrGlyphs("Cd", &missing, 1, "Text", false, false);
    EXPECT_EQ(mesh.NumPolys(), polys) << "emptied only once there is a face";
    FT_GlyphSlot slot = nullptr;
    mesh.BuildCharGlyph('A', nullptr, 1, &slot, "Text");
    EXPECT_EQ(mesh.NumPolys(), 0);
    EXPECT_FALSE(slot);

    GEOM* const hosts = GEOM_Alloc();
    hosts->SetSize(0, 5, 0, 0, 0, 0);
    VXGeom borrower;
    borrower.SetGeom(hosts, false);
    Build(borrower, "Ab");
    EXPECT_EQ(borrower.NumPolys(), polys);
    EXPECT_EQ(hosts->numVerts, 5) << "a borrowed record is the host's";
    GEOM_Free(hosts);
}

TEST_F(Texts, AreWholeOrEmptyWhenMemoryRunsOut)
{
    VXGeom whole;
    Build(whole, "A&a", 1, true);
    int wholes = 0, empties = 0;
    for (std::int64_t n = 1; wholes < 60; ++n) // some failures cost only what is derived; then none is left to happen
    {
        VXGeom mesh;
        MEM_FailAfter(n);
        Build(mesh, "A&a", 1, true);
        MEM_FailAfter(0);
        ASSERT_TRUE(mesh.NumPolys() == 0 || mesh.NumPolys() == whole.NumPolys()) << n;
        wholes = mesh.NumPolys() > 0 ? wholes + 1 : 0;
        empties += mesh.NumPolys() > 0 ? 0 : 1;
    }
    EXPECT_GT(empties, 10);
    MEM_SetAllocationFailed(false);
}
