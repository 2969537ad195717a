#include "tests/draw/Stage.h"

#include "draw/VXAppToolInfo.h"
#include "engine/VXSwitches.h"
#include "tests/support/RecordingCompiler.h"

#include <gtest/gtest.h>

TEST(Haberlines, RunInTheFirstHalfOrAfterEverythingSolid)
{
    struct Row
    {
        bool on, last;
        Lines expected;
    };
    const Row rows[] = {
        {false, false, {}},
        {false, true, {}},
        {true, false, {"DrawHaberlines cube"}},
        {true, true, {"DrawSceneHaberlines", "DrawHaberlines cube"}},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(testing::Message() << row.on << row.last);
        Stage stage;
        stage.Add("cube", Cube(), {stage.Material("red")});
        stage.scene.SetDrawDropShadows(true);
        stage.scene.Object(0)->SetCastsShadow(true);
        stage.engine.options.mHaberlinesOn = row.on;
        stage.engine.options.mHaberlinesDrawLast = row.last;
        EXPECT_EQ(stage.FrameOf({"DrawHaberlines", "DrawSceneHaberlines"}), row.expected) << "not in shadow passes";
    }
}

TEST(Haberlines, DrawnLastComeBetweenOutlinesAndOverlays)
{
    Stage stage;
    stage.engine.options.mHaberlinesOn = stage.engine.options.mHaberlinesDrawLast = true;
    const Lines lines = stage.FrameOf(
        {"PrepareArrayPass", "PrepareMainPass", "SetPassLighting", "DrawSceneHaberlines", "DrawCustomVerts"});
    EXPECT_EQ(Lines(lines.end() - 6, lines.end()),
              (Lines{"PrepareArrayPass scene", "PrepareMainPass scene", "PrepareMainPass scene", "SetPassLighting on",
                     "DrawSceneHaberlines", "DrawCustomVerts"}));
}

TEST(Haberlines, OfQuadsAndTrianglesOnlyWithTheirCounts)
{
    Stage stage;
    VXMaterial* const red = stage.Material("red");
    stage.engine.options.mHaberlinesOn = true;
    TestMesh mesh = Grid(3, 1);
    mesh.uvs.clear();
    mesh.faces[0].pop_back();
    stage.Add("mixed", mesh, {red});
    stage.Add("pentagon",
              TestMesh{"pentagon", {{0, 0, 0}, {1, 0, 0}, {2, 1, 0}, {1, 2, 0}, {0, 1, 0}}, {{0, 1, 2, 3, 4}}}, {red});
    stage.Add("no material", Cube());
    EXPECT_EQ(stage.FrameOf({"DrawHaberlineSets"}),
              (Lines{"DrawHaberlineSets red 1 of 3", "DrawHaberlineSets red 2 of 4"}))
        << "of one material the later kind comes first";
}

TEST(Haberlines, DrawEachLayerInFrontOfTheOneBefore)
{
    Stage stage;
    VXMaterial* const red = stage.Material("red");
    red->CreateNewLayer("a", "a");
    red->CreateNewLayer("b", "b");
    RecordingCompiler::Install(stage.engine)->GiveProgram(red, 1);
    stage.engine.options.mHaberlinesOn = true;
    stage.Add("cube", Cube(), {red});
    const Lines lines = stage.FrameOf({"DrawHaberlineSets", "SetPolygonOffset", "GetCullFace", "SetCullFace",
                                       "SetNormalArray", "StopBeingCurrent", "DrawHaberlines"});
    const Lines expected = {
        "SetNormalArray 24", // of the polygons
        "DrawHaberlines cube",
        "SetNormalArray off",
        "GetCullFace",
        "SetNormalArray 24",
        "DrawHaberlineSets red 6 of 4",
        "SetNormalArray 24",
        "SetPolygonOffset on 1 -1000",
        "SetCullFace on off",
        "SetNormalArray 24",
        "DrawHaberlineSets red 6 of 4",
        "SetNormalArray 24",
        "StopBeingCurrent red 1",
        "SetPolygonOffset on 1 -2000",
        "SetCullFace on off",
        "SetNormalArray 24",
        "DrawHaberlineSets red 6 of 4",
        "SetNormalArray 24",
        "SetPolygonOffset off 0 0",
        "SetCullFace on on",
    };
    EXPECT_EQ(lines, expected);
}

TEST(Haberlines, AreOffWhileSuppressedOrGrouping)
{
    Stage stage;
    stage.Add("cube", Cube(), {stage.Material("red")});
    stage.engine.options.mHaberlinesOn = stage.engine.options.mHaberlinesDrawLast = true;
    EXPECT_EQ(stage.FrameOf({"DrawHaberlineSets"}).size(), 1u);
    {
        const VXSwitches::Scoped quiet(VXSwitches::EdgeLinesSuppressed, VXSwitches::SetEdgeLinesSuppressed, true);
        EXPECT_EQ(stage.FrameOf({"DrawHaberlineSets"}).size(), 0u);
    }
    bool on = true, off = false;
    E_GroupModeSelectionType selection = kGroupSelectPolygons;
    int mode = 0;
    std::int32_t word = 0, closest = 0;
    std::uint32_t bits = 0;
    VERTEX magic;
    stage.engine.SetGroupToolInfo(
        new VXAppToolInfo(on, selection, off, off, mode, word, bits, off, magic, closest, off, off, off, off));
    EXPECT_EQ(stage.FrameOf({"DrawHaberlineSets"}).size(), 0u);
}

TEST(Haberlines, InStyledModeFollowWhatIsPicked)
{
    struct Row
    {
        bool styled, polys, object, shadows, drawn, last;
    };
    const Row rows[] = {
        {false, true, true, true, true, true},    {true, false, false, false, true, true},
        {true, true, false, false, false, false}, {true, false, true, false, true, false},
        {true, false, false, true, false, false},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(testing::Message() << row.styled << row.polys << row.object << row.shadows);
        Stage stage;
        stage.engine.SetScene(&stage.scene);
        stage.engine.options.mHaberlinesOn = stage.engine.options.mHaberlinesDrawLast = true;
        stage.scene.SceneMaterial()->SetFlagPick(row.styled);
        stage.scene.SetPickPolys(row.polys);
        stage.scene.SetPickObject(row.object);
        stage.scene.SetPickShadows(row.shadows);
        EXPECT_EQ(stage.engine.DoHaberlines(), row.drawn);
        EXPECT_EQ(stage.engine.HaberlinesDrawLast(), row.last);
        stage.engine.SetDrawPass(kDropShadowPass);
        EXPECT_FALSE(stage.engine.DoHaberlines());
        EXPECT_EQ(stage.engine.HaberlinesDrawLast(), row.last) << "whatever the pass";
    }
}
