// Writing OBJ text: what was written reads back as the same record.
#include "tests/base/GeomText.h"

#include "base/BFile.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <random>

namespace
{
/// A file name of this test that goes away with it.
class ScratchFile
{
public:
    explicit ScratchFile(const char* extension)
        : mPath(Cat(testing::TempDir(), "velmar-", std::to_string(std::random_device()()), extension))
    {
    }
    ~ScratchFile() { std::filesystem::remove(mPath); }
    BPath Path() const { return BPath(mPath.c_str()); }

private:
    std::string mPath;
};

int Write(const GEOM* g, const BPath& path, bool compressed = false)
{
    BFile file(path);
    file.SetCompression(compressed);
    return file.Open(BFile::Mode::Write) == 0 && GEOM_WriteObjFile(g, file) == 0 && file.Close() == 0 ? 0 : -1;
}

GeomPtr Read(const BPath& path, GEOM_ReadReport* report = nullptr)
{
    BFile file(path);
    return GeomPtr(file.Open(BFile::Mode::Read) == 0 ? GEOM_ReadObjFile(file, nullptr, report) : nullptr);
}

std::string WrittenAndReadBack(const GEOM* g)
{
    const ScratchFile scratch(".obj");
    GEOM_ReadReport report;
    if (Write(g, scratch.Path()) != 0)
        return "not written";
    const GeomPtr back = Read(scratch.Path(), &report);
    return back ? RecordText(back.get()) : Cat("not read back: ", report.error);
}

struct TextCase
{
    const char* name;
    const char* text;
};

class ObjRoundTrip : public testing::TestWithParam<TextCase>
{
};

TEST_P(ObjRoundTrip, ReadsBackTheSame)
{
    GEOM_ReadReport report;
    const GeomPtr g = ReadObj(GetParam().text, &report);
    ASSERT_TRUE(g) << report.error.Std();
    EXPECT_EQ(WrittenAndReadBack(g.get()), RecordText(g.get()));
}

#define TRIANGLE "v 0 0 0\nv 1 0 0\nv 0 1 0\n"

const TextCase kTextCases[] = {
    {"Triangle", TRIANGLE "f 1 2 3\n"},
    {"VerticesAlone", TRIANGLE "vt 1 2\nvn 0 0 1\n"},
    {"Colours", "v 0 0 0 1 .5 .25\nv 1 0 0\n"},
    {"AllKinds", TRIANGLE "vt .1 .2\nvn 0 0 1\nl 1 2\np 3 1\nf 1/1/1 2/1/1 3/1/1\nf 1 2 3\nl 1/1 2/1\n"},
    {"NormalsOfSomeCorners", TRIANGLE "vn 0 1 0\nf 1 2 3\nf 1//1 2 3//1\nl 1 2\n"},
    {"StatesThatEndAndBegin",
     TRIANGLE "f 1 2 3\ng a b\nusemtl m\ns 3\nf 1 2 3\ng\ns off\nf 1 2 3\ns 1 2 32\ng b\nf 3 2 1\n"},
    {"NamesOutOfOrder",
     TRIANGLE "g z\nusemtl unused\ng a\nusemtl m\nusemtl n\nf 1 2 3\ng z\nusemtl m\nf 1 2 3\ng last\n"},
    {"MaterialFromTheMiddleOn", TRIANGLE "f 1 2 3\nusemtl m\nf 1 2 3\n"},
    {"ObjectsEverywhere", TRIANGLE "o a\nf 1 2\no b\nf 1 2 3\no c\no d\nf 1 2 3\no a\n"},
    {"OddNames", TRIANGLE "mtllib a b.mtl c.mtl\nmtllib back\\ \no x#y \\ z\nusemtl back\\ \ng #\ng a#b \\ c\\ \nf 1 2 "
                          "3\nusemtl\nf 1 2 3\n"},
    {"Bytes", TRIANGLE "usemtl \x80\xff\x01\ng \xc3\xa9 \x7f\nf 1 2 3\n"},
    {"FortyGroups",
     TRIANGLE "g 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23 24 25 26 27 28 29 30 31 32 33 34 35 36 "
              "37 38 39 40\nf 1 2 3\ng 33\nf 1 2 3\ng 32 40\nf 1 2 3\n"},
};

INSTANTIATE_TEST_SUITE_P(All, ObjRoundTrip, testing::ValuesIn(kTextCases),
                         [](const auto& row) { return row.param.name; });

int Below(std::mt19937& random, int limit) { return int(random() % unsigned(limit)); }

float RandomFloat(std::mt19937& random)
{
    const float any = std::bit_cast<float>(std::uint32_t(random()));
    return std::isfinite(any) ? any : 0.5f;
}

VERTEX RandomVertex(std::mt19937& random) { return {RandomFloat(random), RandomFloat(random), RandomFloat(random)}; }

// A record with any of what a file can carry, each with a chance of its own.
GeomPtr RandomRecord(std::mt19937& random)
{
    const auto chance = [&](int n) { return Below(random, n) == 0; };
    const int verts = 1 + Below(random, 20), texVerts = chance(2) ? 0 : 1 + Below(random, 9);
    const int polys = Below(random, 30);
    std::vector<int> lengths;
    int corners = 0;
    for (int i = 0; i < polys; ++i)
        corners += lengths.emplace_back(3 + Below(random, 4));
    GeomPtr g(GEOM_Alloc());
    EXPECT_EQ(g->SetSize(polys, verts, corners, 0, texVerts > 0 ? corners : 0, texVerts), 0);
    if (chance(2))
        MEM_SizeArray(g->vertColors, std::size_t(verts));
    if (chance(2))
    {
        g->numNormals = 1 + Below(random, 5);
        MEM_SizeArray(g->normals, std::size_t(g->numNormals));
        MEM_SizeArray(g->normalSets, std::size_t(corners));
    }
    for (int i = 0; i < verts; ++i)
    {
        g->verts[i] = RandomVertex(random);
        if (g->vertColors)
            g->vertColors[i] = RandomVertex(random);
    }
    for (int i = 0; i < g->numNormals; ++i)
        g->normals[i] = RandomVertex(random);
    for (int i = 0; i < texVerts; ++i)
        g->tex->verts[i] = {RandomFloat(random), RandomFloat(random)};
    int start = 0, texStart = 0;
    for (int i = 0; i < polys; ++i)
    {
        ELEMENT* const poly = g->Poly(i);
        poly->start = start;
        poly->length = lengths[std::size_t(i)];
        poly->type = chance(5) ? kElementLine : chance(5) ? kElementPoint : kElementFace;
        poly->SetGroupWord(0, chance(2) ? 0 : std::uint32_t(1) << random() % 32);
        for (int k = 0; k < poly->length; ++k)
            g->sets[start + k] = Below(random, verts);
        for (int k = 0; k < poly->length && g->normalSets; ++k)
            g->normalSets[start + k] = Below(random, g->numNormals);
        start += poly->length;
        if (texVerts > 0 && !chance(4))
        {
            g->tex->polys[i] = {texStart, poly->length};
            for (int k = 0; k < poly->length; ++k)
                g->tex->sets[texStart++] = Below(random, texVerts);
        }
    }
    for (int i = 0, materials = Below(random, 4); i < materials; ++i)
        GEOM_AddMaterialName(g.get(), Named("m ", Below(random, 100)).c_str());
    for (int i = 0; i < polys && g->NumMaterials() > 0; ++i)
        g->Poly(i)->material = std::uint16_t(Below(random, g->NumMaterials()));
    for (int i = 0, members = Below(random, 60); i < members; ++i)
        GEOM_GroupAddElem(g.get(), Named("g", Below(random, 40)).c_str(), Below(random, polys + 1) - 1);
    for (int at = 0; at <= polys; ++at)
        if (chance(8))
            g->objectNames.Append({at, BString(Named("o", Below(random, 9)))});
    return g;
}

TEST(ObjWrite, RandomRecordsReadBackTheSame)
{
    std::mt19937 random(11);
    for (int i = 0; i < 300; ++i)
    {
        const GeomPtr g = RandomRecord(random);
        ASSERT_EQ(WrittenAndReadBack(g.get()), RecordText(g.get())) << "record " << i;
    }
}

// What a host can put into names, but no line can hold.
TEST(ObjWrite, NamesCannotBreakTheFile)
{
    for (const std::string name : {"a\nf 9 9 9", "# no", "x #y", "  blanks  ", "end\\", "tab\tin", "cr\r\nlf", ""})
    {
        GeomPtr g = Cube().Record();
        g->materials[0].name = BString(name);
        g->groupNames.Append(BString(Cat("one ", name)));
        g->groupNames.Append(BString(Cat("#two", name)));
        ASSERT_EQ(GEOM_SetNumGroups(g.get(), 34), 0);
        g->objectNames.Append({0, BString(name)});
        g->materialFiles.Append(BString(name));
        const ScratchFile scratch(".obj");
        ASSERT_EQ(Write(g.get(), scratch.Path()), 0);
        const GeomPtr back = Read(scratch.Path());
        ASSERT_TRUE(back) << name;
        EXPECT_EQ(back->numPolys, 6) << name;
        EXPECT_EQ(back->groupNames.Count(), 2) << name;
        EXPECT_EQ(back->NumMaterials(), 1) << name;
        EXPECT_EQ(RecordText(back.get()), WrittenAndReadBack(back.get())) << name;
    }
}

TEST(ObjWrite, LeavesOutWhatCannotBeRead)
{
    GeomPtr g = Cube().Record();
    g->Poly(1)->length = 2;
    g->Poly(2)->type = 4;
    g->Poly(3)->type = kElementFaceAlso;
    ASSERT_EQ(GEOM_GroupAddElem(g.get(), "left out", 2), 0);
    ASSERT_EQ(GEOM_GroupAddElem(g.get(), "written", 3), 0);
    ASSERT_EQ(GEOM_GroupAddElem(g.get(), "left out", 3), 0);
    const ScratchFile scratch(".obj");
    ASSERT_EQ(Write(g.get(), scratch.Path()), 0);
    GEOM_ReadReport report;
    const GeomPtr back = Read(scratch.Path(), &report);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->numPolys, 4);
    EXPECT_EQ(report.shortFaces, 0);
    EXPECT_EQ(back->groupNames[0], "left_out");
    EXPECT_EQ(back->groupNames[1], "written");
}

TEST(ObjWrite, RefusesNumbersThatAreNotFinite)
{
    const ScratchFile scratch(".obj");
    GeomPtr g = Cube().Record();
    g->verts[3].y = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(Write(g.get(), scratch.Path()), -1);
    EXPECT_EQ(Write(nullptr, scratch.Path()), -1);
}

TEST(ObjWrite, CompressedFilesReadAlike)
{
    const GeomPtr g = Torus(40, 30).Record();
    const ScratchFile plain(".obj"), packed(".obj.gz");
    ASSERT_EQ(Write(g.get(), plain.Path()), 0);
    ASSERT_EQ(Write(g.get(), packed.Path(), true), 0);
    EXPECT_LT(std::filesystem::file_size(packed.Path().Std()) * 2, std::filesystem::file_size(plain.Path().Std()));
    EXPECT_EQ(RecordText(Read(packed.Path()).get()), RecordText(Read(plain.Path()).get()));

    std::filesystem::resize_file(packed.Path().Std(), std::filesystem::file_size(packed.Path().Std()) / 2);
    GEOM_ReadReport report;
    EXPECT_FALSE(Read(packed.Path(), &report));
    EXPECT_FALSE(report.error.IsEmpty());
}
} // namespace
