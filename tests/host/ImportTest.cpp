#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "host/image/Png.h"
#include "host/import/MaterialFile.h"
#include "host/import/ModelStore.h"
#include "material/VXMaterial.h"
#include "mesh/VXGeom.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

using namespace vx;
namespace fs = std::filesystem;

namespace
{
constexpr const char* kTriangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 0 1\n";

struct Folder
{
    fs::path path = fs::path(testing::TempDir()) / "velmar_import";
    Folder()
    {
        fs::remove_all(path);
        fs::create_directories(path);
    }
    ~Folder() { fs::remove_all(path); }
    void Write(const char* name, const std::string& text) const
    {
        fs::create_directories((path / name).parent_path());
        std::ofstream(path / name, std::ios::binary) << text;
    }
    BPath At(const char* name) const { return BPath(BString((path / name).string())); }
};

struct Imported
{
    ModelStore store; ///< outlives the scene
    VXScene scene;
    ImportReport report;
    VXObject* object = nullptr;

    explicit Imported(const BPath& path) { object = store.ImportObj(scene, path, {}, report); }
    BString AllWarnings() const
    {
        BString all;
        for (const BString& warning : report.warnings)
            all += warning + "\n";
        return all;
    }
};

std::vector<MaterialRecord> Records(const std::string& text, BArray<BString>* warned = nullptr)
{
    BArray<MaterialRecord> records;
    BArray<BString> warnings;
    ReadMaterialText(text.data(), text.size(), "m.mtl", records, warnings);
    if (warned)
        *warned = warnings;
    return {records.begin(), records.end()};
}
} // namespace

TEST(ReadMaterialText, TakesWhatThePreviewShows)
{
    const auto records = Records("newmtl red\r\nKd 0.8 0.1 0.2\nKs 0.5 0.5 0.5\nNs 96\nd 0.25\n"
                                 "newmtl glass\nTr 0.75\nmap_Kd pictures\\a b.png\n");
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].name, "red");
    EXPECT_FLOAT_EQ(records[0].kd.x, 0.8f);
    EXPECT_FLOAT_EQ(records[0].ks.z, 0.5f);
    EXPECT_FLOAT_EQ(records[0].ns, 96);
    EXPECT_FLOAT_EQ(records[0].opacity, 0.25f);
    EXPECT_FLOAT_EQ(records[1].opacity, 0.25f) << "Tr is clearness";
    EXPECT_EQ(records[1].kdMap.file, "pictures\\a b.png");
}

TEST(ReadMaterialText, AnyBytesEndInAList)
{
    const std::string hard[] = {"",
                                "newmtl",
                                "newmtl \n",
                                "Kd 1 1 1\n",
                                "newmtl a\nKd nan inf -1e999\nNs -5\nd 7\n",
                                std::string("newmtl a\0b\nKd 1\0", 16),
                                "newmtl a\nmap_Kd\nmap_Kd -s\nmap_Kd -bm -o -t\nmap_Kd -clamp on",
                                "\xEF\xBB\xBFnewmtl a\nKd",
                                std::string(100000, 'x') + "\nnewmtl a"};
    for (const std::string& text : hard)
        for (const MaterialRecord& record : Records(text))
            for (const float value : {record.kd.x, record.kd.y, record.kd.z, record.ks.x, record.opacity})
                EXPECT_TRUE(value >= 0 && value <= 1) << text.substr(0, 40);
    // Damage at random places of a good file.
    const std::string good =
        "newmtl a\nKd 0.5 0.5 0.5\nmap_Kd -o 1 2 3 -s 1 1 1 -mm 0 1 picture.png\nNs 10\nillum 2\nd 0.5\n";
    std::mt19937 random(5);
    for (int round = 0; round < 3000; ++round)
    {
        std::string text = good;
        for (unsigned k = 0; k < 1 + random() % 4; ++k)
            text[random() % text.size()] = char(random() % 256);
        text.resize(random() % 3 ? text.size() : random() % text.size());
        Records(text);
    }
}

TEST(ImportObj, GivesMeshesTheirMaterialsAndTextures)
{
    const Folder folder;
    folder.Write("a.obj", std::string("mtllib m/a.mtl\n") + kTriangle + "usemtl red\nf 1/1 2/2 3/3\n");
    folder.Write("m/a.mtl", "newmtl red\nKd 0.9 0.2 0.1\nmap_Kd ..\\p.png\n");
    const PicturePtr picture(CPB_Offscreen::Create(2, 2));
    ASSERT_EQ(WritePng(*picture, folder.At("p.png")), "");

    const Imported in(folder.At("a.obj"));
    ASSERT_TRUE(in.object) << in.report.error.CString();
    EXPECT_EQ(in.AllWarnings(), "");
    const auto* const material = static_cast<const VXMaterial*>(in.object->Geom()->MaterialPointer(0));
    ASSERT_TRUE(material);
    EXPECT_EQ(material->InternalName(), "red");
    EXPECT_FLOAT_EQ(material->KdColor().Red(), 0.9f);
    EXPECT_TRUE(const_cast<ModelStore&>(in.store).Textures().Picture(material->TextureIndex()));
    EXPECT_FALSE(in.object->Geom()->Flag(GeomFlag::TransparentParts));
    EXPECT_EQ(in.scene.NumObjects(), 1);
    EXPECT_TRUE(in.object->CastsShadow());
}

TEST(ImportObj, MissingMaterialsAndTexturesAreWarningsWithFileNames)
{
    const Folder folder;
    folder.Write("a.obj", std::string("mtllib missing.mtl a.mtl\n") + kTriangle + "usemtl red\nf 1/1 2/2 3/3\n");
    folder.Write("a.mtl", "newmtl red\nKd 1 0 0\nmap_Kd nowhere.png\n");
    const Imported in(folder.At("a.obj"));
    ASSERT_TRUE(in.object) << in.report.error.CString();
    const BString warnings = in.AllWarnings();
    EXPECT_EQ(in.report.warnings.Count(), 2) << warnings.CString();
    EXPECT_GE(warnings.Find("missing.mtl"), 0) << warnings.CString();
    EXPECT_GE(warnings.Find("nowhere.png"), 0) << warnings.CString();
    for (const BString& warning : in.report.warnings)
        EXPECT_LT(warning.Find("\n"), 0) << "one line each";
    const auto* const material = static_cast<const VXMaterial*>(in.object->Geom()->MaterialPointer(0));
    EXPECT_EQ(material->TextureIndex(), -1);
    EXPECT_FLOAT_EQ(material->KdColor().Green(), 0);
}

TEST(ImportObj, WhatCannotBeUsedIsAnErrorWithFileAndLine)
{
    const Folder folder;
    folder.Write("bad.obj", "v 0 0 0\nv 1 0 0\nf 1 2 9\n");
    folder.Write("empty.obj", "# nothing\n");
    folder.Write("points.obj", "v 0 0 0\nv 1 1 1\n");
    struct Row
    {
        const char* file;
        const char* told;
    };
    const Row rows[] = {{"bad.obj", "bad.obj:3: "},
                        {"empty.obj", "empty.obj"},
                        {"points.obj", "points.obj"},
                        {"no-such-file.obj", "no-such-file.obj"}};
    for (const Row& row : rows)
    {
        const Imported in(folder.At(row.file));
        EXPECT_FALSE(in.object) << row.file;
        EXPECT_GE(in.report.error.Find(row.told), 0) << in.report.error.CString();
        EXPECT_EQ(in.scene.NumObjects(), 0) << row.file;
    }
}

TEST(ImportObj, UnknownMaterialsAreNeutralGrey)
{
    ModelStore store;
    VXScene scene;
    ImportReport report;
    const std::string text = std::string(kTriangle) + "usemtl a\nf 1 2 3\nusemtl b\nf 3 2 1\n";
    VXObject* const object = store.ImportObjText(scene, text.data(), text.size(), "text", BPath("."), {}, report);
    ASSERT_TRUE(object) << report.error.CString();
    ASSERT_EQ(object->Geom()->NumGeomMaterials(), 2);
    for (int i = 0; i < 2; ++i)
    {
        const auto* const material = static_cast<const VXMaterial*>(object->Geom()->MaterialPointer(i));
        EXPECT_GE(material->KdColor().Red(), 0.65f);
        EXPECT_LE(material->KdColor().Red(), 0.8f);
        EXPECT_EQ(material->KdColor().Red(), material->KdColor().Blue());
    }
}
