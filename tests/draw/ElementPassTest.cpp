#include "tests/draw/Stage.h"

#include "engine/VXObjectDelegate.h"
#include "engine/VXSwitches.h"
#include "tests/support/Tools.h"

#include <gtest/gtest.h>

// --- Preparation

class CountingDelegate : public VXObjectDelegate
{
public:
    int answer = 0, prepared = 0, ended = 0;
    int PrepareForDrawing(VXObject*) override
    {
        ++prepared;
        return answer;
    }
    int EndPrepareForDrawing(VXObject*) override
    {
        ++ended;
        return 0;
    }
};

TEST(ElementPasses, EndWhatTheyPrepareAndClearChangedOnlyOfWhatWasReady)
{
    for (const int answer : {0, 1})
    {
        SCOPED_TRACE(answer);
        CountingDelegate delegate;
        delegate.answer = answer;
        Stage stage;
        VXObject* const cube = stage.Add("cube", Cube());
        cube->SetDelegate(&delegate);
        cube->SetChanged(true);
        const Lines begun = stage.FrameOf({"BeginObject", "EndObject"});
        EXPECT_EQ(cube->PreparationDepth(), 0);
        EXPECT_EQ(delegate.prepared, delegate.ended);
        EXPECT_EQ(delegate.prepared, 6) << "bounds, two polygon halves, three element passes";
        EXPECT_EQ(cube->Changed(), answer != 0);
        EXPECT_EQ(begun.size(), answer == 0 ? 10u : 0u);
    }
}

// --- Pass 1

// An object at level 1 whose surface is a copy of its control mesh: enough for a pass that only visits.
static VXObject* AddSubdivided(Stage& stage, const char* name)
{
    VXObject* const object = stage.Add(name, Cube());
    object->SetCurSubDivLevel(1);
    object->RebuildSubDiv(); // makes room for the level, whatever the scheme answers
    object->SetSubdivGeom(1, object->Geom()->Clone(true));
    return object;
}

TEST(WirePass, ShowsTheCageOfASubdividedObjectInItsOwnStyle)
{
    Stage stage;
    AddSubdivided(stage, "ball");
    stage.scene.SetWireMode();
    stage.engine.options.mLineWidth = 0.75f;
    const auto drawn = [&] { return stage.FrameOf({"PrepareObjectPass", "SetLineWidth", "DrawSortedElements"}); };
    EXPECT_EQ(drawn(),
              (Lines{"PrepareObjectPass scene", "PrepareObjectPass cage", "SetLineWidth 0.75",
                     "DrawSortedElements ball", "PrepareObjectPass scene", "DrawSortedElements ball surface"}));
    const VXSwitches::Scoped noCage(VXSwitches::SubdividedDrawing, VXSwitches::SetSubdividedDrawing, true);
    EXPECT_EQ(drawn(), (Lines{"PrepareObjectPass scene", "DrawSortedElements ball surface"}));
    stage.scene.SetSmoothMode(); // the surface has no wires now
    EXPECT_EQ(Of(drawn(), "DrawSortedElements"),
              (Lines{"DrawSortedElements ball surface", "DrawSortedElements ball surface"}))
        << "the two polygon halves alone";
}

TEST(WirePass, ShowsTheCageOverASurfaceWithoutWires)
{
    Stage stage;
    AddSubdivided(stage, "ball");
    const Lines lines = stage.FrameOf({"PrepareObjectPass", "DrawSortedElements"});
    EXPECT_EQ(Lines(lines.end() - std::min<std::ptrdiff_t>(std::ssize(lines), 4), lines.end()),
              (Lines{"PrepareObjectPass scene", "PrepareObjectPass cage", "DrawSortedElements ball",
                     "PrepareObjectPass scene"}));
}

TEST(WirePass, DrawsWhatAToolWorksOnInItsOwnWay)
{
    // The scene has the objects "current" and "member"; wires are black where the line says so.
    struct Row
    {
        const char* name;
        bool group, morph, displayMembers, forceOpaque, lightLines;
        Lines expected;
    };
    const Lines plain = {"DrawSortedElements current", "DrawSortedElements member"};
    const Lines allBlack = {"DrawSortedElements current black", "DrawSortedElements member black"};
    const Lines grouped = {"DrawGroupToolObject current", "DrawSortedElements member black"};
    const Lines shown = {"DrawSortedElements current", "DrawGroupToolMember member"};
    const Row rows[] = {
        // clang-format off
        // name                    group  morph  members opaque lit
        {"no tool",                false, false, false,  false, false, plain},
        {"grouping",               true,  false, false,  false, false, grouped},
        {"grouping, hidden line",  true,  false, false,  true,  false, allBlack},
        {"grouping, lit wires",    true,  false, false,  true,  true,  grouped},
        {"morphing",               false, true,  false,  false, false, allBlack},
        {"members shown",          false, false, true,   false, false, shown},
        {"grouping comes first",   true,  true,  true,   false, false, grouped},
        // clang-format on
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        Tools tools;
        Stage stage;
        stage.Add("current", Cube());
        VXObject* const member = stage.Add("member", Cube());
        member->SetGroupMember(true);
        member->DefaultMaterial()->KdColor().Set(0.1f, 0.2f, 0.3f, 0.4f);
        stage.scene.SetCurrentObjectByInternalName("current");
        stage.scene.SetWireMode();
        stage.scene.SceneMaterial()->SetFlagForceOpaque(row.forceOpaque);
        stage.scene.SceneMaterial()->SetFlagLightLines(row.lightLines);
        tools.group = row.group;
        tools.morph = row.morph;
        tools.cd1 = tools.cd2 = row.displayMembers;
        stage.engine.SetGroupToolInfo(tools.Info());
        EXPECT_EQ(stage.FrameOf({"DrawSortedElements", "DrawGroupToolObject", "DrawGroupToolMember"}), row.expected);
        EXPECT_EQ(member->DefaultMaterial()->KdColor(), VXMaterialColor4(0.1f, 0.2f, 0.3f, 0.4f));
    }
}

TEST(GroupTool, IsPreparedInGroupingModeOneOnly)
{
    struct Row
    {
        bool on;
        int mode;
        std::size_t times;
    };
    for (const Row& row : {Row{true, 1, 1}, Row{true, 0, 0}, Row{false, 1, 0}})
    {
        Tools tools;
        Stage stage;
        stage.engine.SetGroupToolInfo(tools.Info());
        tools.group = row.on; // the info holds references: what the tool does later counts
        tools.mode = row.mode;
        EXPECT_EQ(stage.engine.GroupModeOn(), row.on);
        EXPECT_EQ(stage.FrameOf({"PrepareGroupTool"}).size(), row.times);
    }
}

// --- Pass 2

TEST(LinePass, VisitsGeometriesWithLinesAlone)
{
    Stage stage;
    stage.Add("cube", Cube());
    stage.Add("hair", *MeshWithLine());
    EXPECT_EQ(stage.FrameOf({"DrawSortedLines", "DrawElements", "DrawScenePolys"}),
              (Lines{"DrawScenePolys pass 0 first", "DrawElements quads 0 6", "DrawScenePolys pass 1 second",
                     "DrawSortedLines hair", "DrawElements lines 0 1"}));
}

// --- Pass 3

TEST(OutlinePass, DrawsEdgesOfVisiblePolygonsAndBindsMaterialsAsTheyChange)
{
    Stage stage;
    VXMaterial* const red = stage.Material("red");
    VXMaterial* const blue = stage.Material("blue");
    VXObject* const strip = stage.Add("strip", Grid(3, 1), {red, blue}, {0, 1, 1});
    strip->Geom()->Polygon(2)->flags |= kElementHidden;
    stage.scene.SetOutlineMode();
    const Lines lines = stage.FrameOf({"BindMaterial", "DrawPolygon"});
    EXPECT_EQ(Of(lines, "BindMaterial"), (Lines{"BindMaterial red", "BindMaterial blue"}));
    const VXEdgeList& edges = strip->Geom()->EdgeList();
    Lines expected;
    for (std::int32_t i = 0; i < edges.GetEdgeCount(); ++i)
        if (edges.GetEdge(i).PolyIndex1() != 2)
            expected.push_back(BString::Format("DrawPolygon %d", i).Std());
    EXPECT_EQ(Of(lines, "DrawPolygon"), expected);
    EXPECT_EQ(expected.size(), 7u); // ten edges; polygon 2 has three of its own
}

TEST(OutlinePass, AppliesAStyleOfTheObjectsOwnAndThenTheScenesAgain)
{
    Stage stage;
    VXObject* const own = stage.Add("own", Cube());
    own->DefaultMaterial()->SetFlagInheritStyleFromScene(false);
    own->DefaultMaterial()->SetFlagOutline(true);
    own->SetIgnoreZBufferEdges(true);
    stage.Add("plain", Cube());
    stage.Add("also plain", Cube());
    stage.scene.SetOutlineMode();
    EXPECT_EQ(stage.FrameOf({"PrepareArrayPass", "BeginObject", "SetPassLighting", "PrepareLinePass"}),
              (Lines{"SetPassLighting on",     "BeginObject own",        "BeginObject plain",
                     "BeginObject also plain", "SetPassLighting on",     "BeginObject own",
                     "BeginObject plain",      "BeginObject also plain", "BeginObject own",
                     "BeginObject plain",      "BeginObject also plain", "PrepareLinePass scene",
                     "BeginObject own",        "BeginObject plain",      "BeginObject also plain",
                     "PrepareArrayPass scene", "BeginObject own",        "PrepareArrayPass style of own",
                     "SetPassLighting off",    "SetPassLighting on",     "BeginObject plain",
                     "PrepareArrayPass scene", "BeginObject also plain"}));
}

TEST(OutlinePass, SkipsASubdividedObjectWithoutItsLevel)
{
    Stage stage;
    VXObject* const cube = stage.Add("cube", Cube());
    stage.scene.SetOutlineMode();
    EXPECT_GT(stage.FrameOf({"DrawPolygon"}).size(), 0u);
    cube->SetCurSubDivLevel(2);
    EXPECT_EQ(stage.FrameOf({"DrawPolygon"}).size(), 0u);
}
