#include "tests/text/Fonts.h"

#include <ft2build.h>
#include FT_FREETYPE_H

using FontFaces = WithFonts;

TEST_F(FontFaces, AreListedByNameWithoutBeingOpened)
{
    VXGeom::TearDownFreeType();
    const std::int64_t before = VXFTFace::NumFaces();
    std::filesystem::create_directories(mFolder / "one/below.ttf");
    std::filesystem::create_directories(mFolder / "two");
    for (const char* const name : {"one/b.OTF", "one/a.ttf", "one/c.pfb", "two/a.ttf", "one/below.ttf/hidden.ttf"})
        Write(name, "no font");
    VXFTFace::AddFontSearchPath((mFolder / "one").string().c_str());
    VXFTFace::AddFontSearchPath((mFolder / "nowhere").string().c_str());
    VXFTFace::AddFontSearchPath((mFolder / "two").string().c_str());
    VXGeom::SetupFreeType();

    std::string names;
    for (std::int64_t i = before; i < VXFTFace::NumFaces(); ++i)
        names += VXFTFace::GetFace(i)->Name().Std() + " ";
    EXPECT_EQ(names, "a.ttf b.OTF below.ttf a.ttf ") << "a folder may be called like a font; nothing is opened";
    VXFTFace* const first = VXFTFace::GetFaceByName("a.ttf");
    ASSERT_TRUE(first);
    EXPECT_EQ(first->Path().Parent().FileName(), "one") << "of two of one name, that of the folder added first";
    EXPECT_FALSE(VXFTFace::GetFaceByName("A.ttf"));
    EXPECT_FALSE(first->GetFTFace());

    const std::int64_t count = VXFTFace::NumFaces();
    Write("one/late.ttf", "");
    VXGeom::SetupFreeType();
    EXPECT_EQ(VXFTFace::NumFaces(), count) << "set up already";
    VXGeom::TearDownFreeType();
    EXPECT_EQ(VXFTFace::NumFaces(), count) << "the length stays";
    EXPECT_FALSE(VXFTFace::GetFace(count - 1));
    EXPECT_FALSE(VXFTFace::GetFaceByName("a.ttf"));
    EXPECT_FALSE(VXGeom::FTLibrary());
    VXGeom::SetupFreeType();
    EXPECT_GT(VXFTFace::NumFaces(), count) << "appended";
    EXPECT_TRUE(VXFTFace::GetFaceByName("late.ttf"));
}

TEST_F(FontFaces, TakeWhatAFileHoldsAndNeverLookForAMissingOneAgain)
{
    const std::string sans = SansBytes();
    VXFTFace good(kSans);
    EXPECT_TRUE(good.GetFTFace());
    struct Row
    {
        const char* name;
        std::string bytes;
    };
    for (const Row& row : {Row{"empty.ttf", ""}, Row{"text.ttf", "this is no font"},
                           Row{"head.ttf", sans.substr(0, 12)}, Row{"tables.ttf", sans.substr(0, 300)}})
        EXPECT_FALSE(VXFTFace(Write(row.name, row.bytes).c_str()).GetFTFace()) << row.name;

    VXFTFace vanished(Write("vanished.ttf", sans).c_str());
    std::filesystem::remove(mFolder / "vanished.ttf");
    EXPECT_FALSE(vanished.GetFTFace());
    Write("vanished.ttf", sans);
    EXPECT_FALSE(vanished.GetFTFace()) << "missing for good";
}

TEST_F(FontFaces, AreSharedByCopiesAndDieWithTheLibrary)
{
    VXFTFace face(kSans), other(kSans);
    const FT_Face opened = face.GetFTFace();
    {
        const VXFTFace copy(face);
        other = copy;
    }
    EXPECT_EQ(other.GetFTFace(), opened);
    {
        VXFTFace moved(face);
        face = VXFTFace("/nowhere.ttf");
    }
    EXPECT_GT(FT_Get_Char_Index(other.GetFTFace(), 'A'), 0u) << "still open for the other holder";
    VXGeom::TearDownFreeType();
    EXPECT_FALSE(other.GetFTFace());
    VXGeom::SetupFreeType();
    EXPECT_TRUE(other.GetFTFace()) << "opened anew";
}

// Anything may happen to a font but a crash: some glyphs of damaged fonts can still be drawn.
TEST_F(FontFaces, SurviveDamage)
{
    const std::string sans = SansBytes();
    unsigned random = 7;
    for (int round = 0; round < 12; ++round)
    {
        std::string bytes = sans.substr(0, round % 3 == 0 ? sans.size() / std::size_t(round + 2) : sans.size());
        for (int hit = 0; hit < 2000; ++hit)
        {
            random = random * 1664525u + 1013904223u;
            bytes[(random >> 4) % bytes.size()] = char(random >> 24);
        }
        VXFTFace face(Write("damaged.ttf", bytes).c_str());
        VXGeom mesh;
        mesh.BuildStrGlyphs("The quick brown fox \xC3\xA9\xCE\xA9", &face, 1, "Text", true, true);
        if (mesh.Geom())
        {
            int repairs = -1;
            EXPECT_EQ(GEOM_VerifyAndFix(mesh.Geom(), &repairs), 0);
            EXPECT_EQ(repairs, 0);
        }
    }
}
