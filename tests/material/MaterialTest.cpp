#include "base/MEM.h"
#include "engine/VXScene.h"
#include "material/VXMaterial.h"

#include <gtest/gtest.h>

#include <memory>

TEST(Material, IntegerChoosesTheTextureIndices)
{
    for (const int with : {0, 1, 7})
    {
        const VXMaterial m(with, nullptr);
        const int expected = with ? 1 : -1;
        EXPECT_EQ(m.TextureIndex(), expected);
        EXPECT_EQ(m.AmbientTextureIndex(), expected);
        EXPECT_EQ(m.ReflectionIndex(), expected);
        EXPECT_EQ(m.TransparencyIndex(), expected);
        EXPECT_EQ(m.BumpIndex(), expected);
        EXPECT_EQ(m.NormaMapIndex(), expected);
        EXPECT_EQ(m.SpecularIndex(), expected);
    }
}

TEST(Material, StartsWithTheDocumentedSurface)
{
    const VXMaterial m(0, nullptr);
    EXPECT_EQ(m.InternalName(), "Default");
    EXPECT_EQ(m.ExternalName(), "Default");
    EXPECT_EQ(m.KdColor(), VXMaterialColor4(0.5f, 0.5f, 0.5f, 1));
    EXPECT_EQ(m.KsColor(), VXMaterialColor4(0.15f, 0.15f, 0.15f, 0)); // brightness 0 is meant
    EXPECT_EQ(m.KaColor(), VXMaterialColor4(0, 0, 0, 1));
    EXPECT_EQ(m.TextureColor(), VXMaterialColor4(1, 1, 1, 1));
    EXPECT_EQ(m.Ns(), 50);
    EXPECT_EQ(m.TMin(), 0);
    EXPECT_EQ(m.TMax(), 0);
    EXPECT_EQ(m.NormaMapType(), VXMaterial::kNormalMapTangent);
    EXPECT_EQ(int(m.NormaMapType()), 2);
    EXPECT_TRUE(m.ShaderTreeDirty());
    EXPECT_EQ(m.PreviewTextureID(), 0);
}

TEST(Material, EachHasAnIdentifierOfItsOwn)
{
    const VXMaterial a(0, nullptr), b(0, nullptr);
    EXPECT_EQ(a.Uuid().Length(), 36);
    EXPECT_NE(a.Uuid().Std(), b.Uuid().Std());
    EXPECT_EQ(a.Uuid(), a.Uuid());
}

TEST(Material, ForgetsASupervisorThatDies)
{
    auto supervisor = std::make_unique<BDependentProvider>();
    VXMaterial material(0, supervisor.get());
    EXPECT_EQ(material.Supervisor(), supervisor.get());
    EXPECT_TRUE(supervisor->HasDependent(&material));
    supervisor.reset();
    EXPECT_EQ(material.Supervisor(), nullptr);
}

TEST(Material, AReplacedSupervisorIsNotTold)
{
    BDependentProvider first, second;
    VXMaterial material(0, &first);
    material.SetSupervisor(&second);
    EXPECT_EQ(material.Supervisor(), &second);
    EXPECT_TRUE(first.HasDependent(&material));
    EXPECT_TRUE(second.HasDependent(&material));
    material.SetSupervisor(nullptr);
    EXPECT_EQ(material.Supervisor(), nullptr);
}

TEST(Material, TakesItselfOutOfTheCurrentScenesListAtItsDeath)
{
    VXScene scene;
    VXMaterial stays(0, nullptr);
    {
        VXMaterial goes(0, nullptr);
        scene.AddMaterial(&goes);
        scene.AddMaterial(&stays);
        scene.SetChanged(false);
    }
    ASSERT_EQ(scene.NumMaterials(), 1);
    EXPECT_EQ(scene.Material(0), &stays);
    EXPECT_TRUE(scene.Changed());

    scene.SetChanged(false);
    {
        VXMaterial unlisted(0, nullptr);
    }
    EXPECT_FALSE(scene.Changed());
}

TEST(Material, FreesTheBuffersThatHangOnIt)
{
    VXMaterial material(0, nullptr); // the leak checker is the judge
    for (int i = 0; i < VXMaterial::kNumShaderBuffers; ++i)
        material.SetShaderBuffer(i, MEM_Alloc(4, 16));
    EXPECT_NE(material.ShaderBuffer(VXMaterial::kNumShaderBuffers - 1), nullptr);
}

TEST(Material, AsksNobodyForSourcesAndHashesWithoutAScene)
{
    ASSERT_EQ(VXScene::CurrentScene(), nullptr);
    VXMaterial material(0, nullptr);
    material.ComputeShaderHash(true);
    EXPECT_EQ(material.GetVertexShaderSource(0), "");
    EXPECT_EQ(material.GetFragmentShaderSource(0), "");
}
