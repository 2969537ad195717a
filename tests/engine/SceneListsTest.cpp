#include "draw/VXObject2D.h"
#include "engine/VXCamera.h"
#include "engine/VXLight.h"
#include "engine/VXScene.h"
#include "tests/support/DrawEngineDouble.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace
{
// How often each kind of thing has been destroyed.
using Deaths = std::map<std::string, int>;

template <class Base>
struct Counted : Base
{
    template <class... Args>
    Counted(Deaths& count, std::string what, Args... args) : Base(args...), deaths(count), kind(std::move(what))
    {
    }
    ~Counted() override { ++deaths[kind]; }
    Deaths& deaths;
    std::string kind;
};

constexpr std::uint32_t kStructural = 0x1001;

void CleanFlags(VXScene& scene)
{
    scene.SetChanged(false);
    scene.SetNeedsShadowRedraw(false);
    for (std::int64_t i = 0; i < scene.NumLights(); ++i)
        scene.Light(int(i))->SetHWShadowDirty(false);
}

// What a structural change leaves: both flags, and every light's shadow dirty.
::testing::AssertionResult Structural(const VXScene& scene)
{
    if ((scene.Flags() & kStructural) != kStructural)
        return ::testing::AssertionFailure() << "flags " << scene.Flags();
    for (std::int64_t i = 0; i < scene.NumLights(); ++i)
        if (!scene.Light(int(i))->HWShadowDirty())
            return ::testing::AssertionFailure() << "light " << i << " is clean";
    return ::testing::AssertionSuccess();
}

bool Clean(const VXScene& scene) { return (scene.Flags() & kStructural) == 0; }
} // namespace

TEST(SceneLists, TheSceneDeletesWhatItOwnsExactlyOnceAndNoMaterial)
{
    for (const bool clearFirst : {false, true})
    {
        SCOPED_TRACE(clearFirst);
        Deaths deaths;
        Counted<VXMaterial> material(deaths, "material", 0, nullptr);
        {
            VXScene scene;
            for (int i = 0; i < 20; ++i) // past the first growth of the lists
            {
                scene.AddObject(new Counted<VXObject>(deaths, "object"));
                scene.AddLight(new Counted<VXLight>(deaths, "light"));
                scene.AddObject2D(new Counted<VXObject2D>(deaths, "2D object"));
                scene.AddCamera(new Counted<VXCamera>(deaths, "camera"));
            }
            scene.AddMaterial(&material);
            if (clearFirst)
            {
                scene.ClearScene();
                EXPECT_EQ(deaths, (Deaths{{"object", 20}, {"light", 20}, {"2D object", 20}}));
                EXPECT_EQ(scene.NumObjects() + scene.NumLights() + scene.NumObject2Ds() + scene.NumMaterials(), 0);
                EXPECT_EQ(scene.NumCameras(), 20); // cameras live until the scene dies
            }
        }
        EXPECT_EQ(deaths, (Deaths{{"object", 20}, {"light", 20}, {"2D object", 20}, {"camera", 20}}));
    }
}

TEST(SceneLists, WhatIsRemovedBelongsToTheCaller)
{
    Deaths deaths;
    auto* const object = new Counted<VXObject>(deaths, "object");
    auto* const light = new Counted<VXLight>(deaths, "light");
    auto* const flat = new Counted<VXObject2D>(deaths, "2D object");
    {
        VXScene scene;
        scene.AddObject(object);
        scene.AddLight(light);
        scene.AddObject2D(flat);
        EXPECT_EQ(scene.RemoveObject(object), 0);
        EXPECT_EQ(scene.RemoveLight(light), 0);
        EXPECT_EQ(scene.RemoveObject2D(flat), 0);
    }
    EXPECT_TRUE(deaths.empty());
    delete object;
    delete light;
    delete flat;
}

TEST(SceneLists, NullAndAbsentItemsAreRefusedWithoutATrace)
{
    VXScene scene;
    VXObject absentObject;
    VXLight absentLight;
    VXObject2D absentFlat;
    VXMaterial absentMaterial(0, nullptr);
    CleanFlags(scene);
    EXPECT_EQ(scene.AddObject(nullptr), -1);
    EXPECT_EQ(scene.AddCamera(nullptr), -1);
    EXPECT_EQ(scene.AddMaterial(nullptr), -1);
    EXPECT_EQ(scene.AddLight(nullptr), -1);
    EXPECT_EQ(scene.AddObject2D(nullptr), -1);
    EXPECT_EQ(scene.RemoveObject(nullptr), -1);
    EXPECT_EQ(scene.RemoveObject(&absentObject), -1);
    EXPECT_EQ(scene.RemoveLight(nullptr), -1);
    EXPECT_EQ(scene.RemoveLight(&absentLight), -1);
    EXPECT_EQ(scene.RemoveObject2D(nullptr), -1);
    EXPECT_EQ(scene.RemoveObject2D(&absentFlat), -1);
    scene.RemoveMaterial(nullptr);
    scene.RemoveMaterial(&absentMaterial);
    EXPECT_TRUE(Clean(scene));
}

TEST(SceneLists, StructuralChangesMarkTheSceneAndEveryShadow)
{
    VXScene scene;
    scene.AddLight(new VXLight);
    scene.AddLight(new VXLight);
    VXObject* const object = new VXObject;
    VXLight* const light = new VXLight;
    VXObject2D* const flat = new VXObject2D;
    VXMaterial material(0, nullptr);
    struct Row
    {
        const char* what;
        std::function<void()> act;
        bool structural;
    };
    const Row rows[] = {
        {"add object", [&] { scene.AddObject(object); }, true},
        {"remove object", [&] { scene.RemoveObject(object); }, true},
        {"add light", [&] { scene.AddLight(light); }, true},
        {"remove light", [&] { scene.RemoveLight(light); }, true},
        {"add 2D object", [&] { scene.AddObject2D(flat); }, true},
        {"remove 2D object", [&] { scene.RemoveObject2D(flat); }, true},
        {"add camera", [&] { scene.AddCamera(new VXCamera); }, false},
        {"add material", [&] { scene.AddMaterial(&material); }, false},
        {"remove material", [&] { scene.RemoveMaterial(&material); }, true},
        {"clear materials", [&] { scene.ClearMaterials(); }, true},
        {"clear objects", [&] { scene.ClearObjects(); }, true},
        {"clear 2D objects", [&] { scene.ClearObject2Ds(); }, true},
        {"weld", [&] { scene.WeldAll(); }, true},
        {"clear lights", [&] { scene.ClearLights(); }, true},
        {"clear scene", [&] { scene.ClearScene(); }, true},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.what);
        CleanFlags(scene);
        row.act();
        if (row.structural)
            EXPECT_TRUE(Structural(scene));
        else
            EXPECT_TRUE(Clean(scene));
    }
    delete object;
    delete light;
    delete flat;
}

TEST(SceneLists, RemovingKeepsTheOrderAndTakesTheFirstOfEquals)
{
    VXScene scene;
    VXMaterial a(0, nullptr), b(0, nullptr);
    for (VXMaterial* const m : {&a, &b, &a, &b})
        scene.AddMaterial(m);
    scene.RemoveMaterial(&a);
    ASSERT_EQ(scene.NumMaterials(), 3);
    EXPECT_EQ(scene.Material(0), &b);
    EXPECT_EQ(scene.Material(1), &a);
    EXPECT_EQ(scene.Material(2), &b);
    scene.ClearMaterials(); // both die before the scene
}

TEST(SceneLists, TheDrawEngineHearsOfALightThatWasThere)
{
    VXScene scene;
    DrawEngineDouble engine;
    scene.SetDrawEngine(&engine);
    VXLight light;
    scene.RemoveLight(&light);
    EXPECT_TRUE(engine.removedLights.empty());
    scene.AddLight(&light);
    scene.RemoveLight(&light);
    EXPECT_EQ(engine.removedLights, std::vector<VXLight*>{&light});
}

TEST(SceneLists, FindMaterialTakesTheFirstOfTheNameByteForByte)
{
    VXScene scene;
    VXMaterial first(0, nullptr), second(0, nullptr);
    first.SetInternalName("skin");
    second.SetInternalName("skin");
    scene.AddMaterial(&first);
    scene.AddMaterial(&second);
    EXPECT_EQ(scene.NumMaterials(), 2);
    EXPECT_EQ(scene.FindMaterial("skin", true), &first);
    EXPECT_EQ(scene.FindMaterial("Skin", false), nullptr);
    EXPECT_EQ(scene.FindMaterial("skin ", false), nullptr);
    for (const char* nothing : {"", static_cast<const char*>(nullptr)})
        EXPECT_EQ(scene.FindMaterial(nothing, true), nullptr);
    EXPECT_EQ(scene.NumMaterials(), 2);

    VXMaterial* const made = scene.FindMaterial("hair", true);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->InternalName(), "hair");
    EXPECT_EQ(made->ExternalName(), "hair");
    EXPECT_EQ(scene.FindMaterial("hair", true), made);
    EXPECT_EQ(scene.NumMaterials(), 3);
    delete made; // nobody else does
    EXPECT_EQ(scene.NumMaterials(), 2);
}

TEST(SceneLists, ObjectsAreFoundByInternalName)
{
    VXScene scene;
    VXObject* const unnamed = new VXObject;
    VXObject* const first = new VXObject;
    VXObject* const second = new VXObject;
    first->SetInternalName("a");
    second->SetInternalName("a");
    for (VXObject* const object : {unnamed, first, second})
        scene.AddObject(object);
    EXPECT_EQ(scene.ObjectByInternalName("a"), first);
    EXPECT_EQ(scene.ObjectByInternalName("A"), nullptr);
    EXPECT_EQ(scene.ObjectByInternalName(""), unnamed);

    scene.SetCurrentObjectByInternalName("a");
    scene.SetEditGroupObject("a");
    EXPECT_EQ(scene.CurrentObject(), first);
    EXPECT_EQ(scene.EditGroupObject(), first);
    scene.SetCurrentObjectByInternalName("b");
    scene.SetEditGroupObject(nullptr);
    EXPECT_EQ(scene.CurrentObject(), nullptr);
    EXPECT_EQ(scene.EditGroupObject(), nullptr);
}

TEST(SceneLists, CurrentCameraByPointerIsItsIndexOrMinusOne)
{
    VXScene scene;
    VXCamera* const first = new VXCamera;
    VXCamera* const second = new VXCamera;
    VXCamera absent;
    scene.SetCurCamera(second);
    EXPECT_EQ(scene.CurCameraIndex(), -1);
    scene.AddCamera(first);
    scene.AddCamera(second);
    scene.SetCurCamera(second);
    EXPECT_EQ(scene.CurCameraIndex(), 1);
    EXPECT_EQ(scene.CurCamera(), second);
    scene.SetCurCamera(&absent);
    EXPECT_EQ(scene.CurCameraIndex(), -1);
}

TEST(SceneLists, FailedGrowthLosesTheEntriesAndStillAnswersZero)
{
    VXScene scene;
    VXMaterial material(0, nullptr);
    for (int i = 0; i < 8; ++i) // as many as fit before the list grows
        scene.AddMaterial(&material);
    MEM_FailAfter(1);
    EXPECT_EQ(scene.AddMaterial(&material), 0);
    MEM_FailAfter(0);
    EXPECT_EQ(scene.NumMaterials(), 0);
    EXPECT_EQ(scene.AddMaterial(&material), 0);
    EXPECT_EQ(scene.NumMaterials(), 1);
}

TEST(CurrentScene, IsTheNewestUntilItDies)
{
    EXPECT_EQ(VXScene::CurrentScene(), nullptr);
    auto first = std::make_unique<VXScene>();
    EXPECT_EQ(VXScene::CurrentScene(), first.get());
    auto second = std::make_unique<VXScene>();
    EXPECT_EQ(VXScene::CurrentScene(), second.get());
    first.reset();
    EXPECT_EQ(VXScene::CurrentScene(), second.get());
    second.reset();
    EXPECT_EQ(VXScene::CurrentScene(), nullptr);
}
