#include "base/XMLStringRes.h"
#include "engine/VXCamera.h"
#include "engine/VXScene.h"
#include "mesh/VXGeom.h"
#include "tests/support/Meshes.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>

namespace
{
// A file in the temporary folder that goes away with its test.
struct TempFile
{
    TempFile(const char* name, const char* text) : path((std::filesystem::temp_directory_path() / name).string())
    {
        std::ofstream(path, std::ios::binary) << text;
    }
    ~TempFile() { std::filesystem::remove(path); }
    std::string path;
};

constexpr const char* kTwoMaterials = "v 0 0 0\nv 2 0 0\nv 2 4 0\nv 0 4 0\n"
                                      "usemtl red\nf 1 2 3\nusemtl blue\nf 1 3 4\n";

std::unique_ptr<VXGeom> GeomOf(const TestMesh& mesh)
{
    const GeomPtr record = mesh.Record();
    return std::make_unique<VXGeom>(record.get());
}
} // namespace

TEST(SceneBuild, DefaultCamerasAreOnePerspectiveCamera)
{
    VXScene scene;
    scene.InitDefaultCameras();
    ASSERT_EQ(scene.NumCameras(), 1);
    EXPECT_EQ(scene.Camera(0)->InternalName(), "Perspective Camera");
    EXPECT_EQ(scene.Camera(0)->ExternalName(), "Perspective Camera");
    EXPECT_EQ(scene.Camera(0)->FocalLength(), 1);
    EXPECT_FALSE(scene.Camera(0)->IsOrtho());
}

TEST(SceneBuild, UsersReadTheNamesOfTheStringResources)
{
    const TempFile file("velmar_strings_test.xml",
                        "<strings><table id=\"82\"><entry id=\"561\">Perspektive</entry></table>"
                        "<table id=\"3026\"><entry id=\"1\">Vorgabe</entry></table></strings>");
    ASSERT_EQ(XMLStringRes::Load(BPath(file.path.c_str())), 0);
    VXScene scene;
    scene.InitDefaultCameras();
    const VXMaterial material(0, nullptr);
    XMLStringRes::Unload();
    EXPECT_EQ(scene.Camera(0)->ExternalName(), "Perspektive");
    EXPECT_EQ(scene.Camera(0)->InternalName(), "Perspective Camera"); // what the host looks up is not translated
    EXPECT_EQ(material.ExternalName(), "Vorgabe");
    EXPECT_EQ(material.InternalName(), "Default");
}

TEST(SceneBuild, AddWavefrontGivesAnObjectThatBorrowsTheMesh)
{
    const TempFile file("velmar scene tëst.obj", kTwoMaterials);
    VXScene scene;
    for (const bool creases : {true, false})
    {
        EXPECT_EQ(scene.AddWavefront(file.path.c_str(), creases), 0);
        const VXObject* const object = scene.Object(int(scene.NumObjects() - 1));
        ASSERT_NE(object->Geom(), nullptr);
        EXPECT_TRUE(object->GeomBorrowed());
        EXPECT_EQ(object->Geom()->NumPolys(), 2);
        EXPECT_EQ(object->Geom()->GenerateCreases(), creases);
    }
    EXPECT_EQ(scene.NumObjects(), 2); // that the meshes die once, with the scene, is for the leak checker
}

TEST(SceneBuild, AddWavefrontOfAMissingFileAddsAnEmptyObject)
{
    VXScene scene;
    EXPECT_EQ(scene.AddWavefront("/nowhere/at all.obj", true), 0);
    ASSERT_EQ(scene.NumObjects(), 1);
    ASSERT_NE(scene.Object(0)->Geom(), nullptr);
    EXPECT_EQ(scene.Object(0)->Geom()->NumPolys(), 0);
    scene.UpdateDerivedData();
    EXPECT_FALSE(scene.Object(0)->BoundingBox().Initialized());
}

TEST(SceneBuild, AttachingGivesSlotsTheMaterialsOfTheirNames)
{
    const TempFile file("velmar_attach_test.obj", kTwoMaterials);
    VXScene scene;
    VXMaterial red(0, nullptr), redAgain(0, nullptr);
    red.SetInternalName("red");
    redAgain.SetInternalName("red");
    scene.AddMaterial(&red);
    scene.AddMaterial(&redAgain);
    scene.AddWavefront(file.path.c_str(), false);
    scene.AddWavefront(file.path.c_str(), false);
    scene.AddObject(new VXObject); // without a mesh
    scene.Object(1)->SetCurSubDivLevel(1);
    scene.Object(1)->RebuildSubDiv();
    scene.AttachAllMaterials();

    ASSERT_EQ(scene.NumMaterials(), 3); // blue was made, once
    VXMaterial* const blue = scene.Material(2);
    EXPECT_EQ(blue->InternalName(), "blue");
    for (const VXGeom* geom : {scene.Object(0)->Geom(), scene.Object(1)->Geom(), scene.Object(1)->SubdivGeom(1)})
    {
        ASSERT_EQ(geom->NumGeomMaterials(), 2);
        for (int slot = 0; slot < 2; ++slot)
        {
            const bool isRed = std::string(geom->MaterialName(slot)) == "red";
            EXPECT_EQ(geom->MaterialPointer(slot), isRed ? &red : blue);
        }
    }
    delete blue;
}

TEST(SceneBuild, UpdateFillsTheBoxesOfWhatHasVertices)
{
    VXScene scene;
    const auto cube = GeomOf(Moved(Cube(), {1, 2, 3})), empty = GeomOf(EmptyMesh());
    for (VXGeom* const geom : {cube.get(), empty.get(), static_cast<VXGeom*>(nullptr)})
    {
        VXObject* const object = new VXObject;
        object->SetGeom(geom, false);
        object->BoundingBox().Set(-9, -9, -9, 9, 9, 9); // of an earlier mesh
        scene.AddObject(object);
    }
    scene.UpdateDerivedData();
    EXPECT_EQ(scene.Object(0)->BoundingBox().Min(), (VERTEX{0, 1, 2}));
    EXPECT_EQ(scene.Object(0)->BoundingBox().Max(), (VERTEX{2, 3, 4}));
    EXPECT_FALSE(scene.Object(1)->BoundingBox().Initialized());
    EXPECT_FALSE(scene.Object(2)->BoundingBox().Initialized());
    EXPECT_FALSE(scene.Object(0)->SubdivDirty());
}

TEST(SceneBuild, UpdateDerivesAMeshAnewWhoseRecordChanged)
{
    VXScene scene;
    const auto cube = GeomOf(Cube());
    VXObject* const object = new VXObject;
    object->SetGeom(cube.get(), false);
    scene.AddObject(object);
    scene.UpdateDerivedData();
    object->SetChanged(false);

    scene.UpdateDerivedData();
    EXPECT_FALSE(object->Changed()); // nothing was stale

    const VERTEX up = *cube->PolyNormal(0);
    for (int i = 0; i < cube->NumVerts(false); ++i) // mirrored through the origin: every face turns about
        cube->Verts()[i] = -cube->Verts()[i];
    cube->SetGeomChanged(true);
    scene.UpdateDerivedData();
    EXPECT_FALSE(cube->GeomChanged());
    EXPECT_TRUE(object->Changed());
    EXPECT_NEAR(Length(*cube->PolyNormal(0) + up), 2, 1e-6f); // a mirrored face looks along the same axis
}
