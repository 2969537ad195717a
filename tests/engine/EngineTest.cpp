#include "engine/VXEngine.h"
#include "engine/VXScene.h"

#include <gtest/gtest.h>

namespace
{
struct CountedScene : VXScene
{
    explicit CountedScene(int& count) : deaths(count) {}
    ~CountedScene() override { ++deaths; }
    int& deaths;
};
} // namespace

TEST(Engine, OwnsTheSceneItHoldsAndNoOther)
{
    int firstDeaths = 0, secondDeaths = 0;
    CountedScene* const first = new CountedScene(firstDeaths);
    {
        VXEngine engine;
        EXPECT_EQ(engine.Scene(), nullptr);
        engine.SetScene(first);
        engine.SetScene(new CountedScene(secondDeaths)); // the first is the host's again
        EXPECT_EQ(firstDeaths, 0);
        EXPECT_EQ(engine.InitScene(), 0);
        EXPECT_EQ(secondDeaths, 1);
        EXPECT_EQ(VXScene::CurrentScene(), engine.Scene());
    }
    EXPECT_EQ(firstDeaths, 0);
    EXPECT_EQ(VXScene::CurrentScene(), nullptr);
    delete first;
}

TEST(Engine, ModellingCommandsAreInert)
{
    VXEngine engine;
    EXPECT_EQ(engine.PythonEngine(), nullptr);
    EXPECT_EQ(engine.InitPython(true), 0);
    EXPECT_EQ(engine.AddModellingCommand(1, nullptr, nullptr, nullptr), 0);
    engine.AddModellingCommands();
    EXPECT_EQ(engine.FindAndRunPythonCmd(1), -1);
}

TEST(Engine, TangentSwitchIsProcessWideAndStartsOn)
{
    EXPECT_TRUE(VXEngine::TangentCalculationsEnabled());
    VXEngine::EnableTangentCalculations(false);
    EXPECT_FALSE(VXEngine::TangentCalculationsEnabled());
    VXEngine::EnableTangentCalculations(true);
}
