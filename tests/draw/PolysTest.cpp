#include "tests/draw/Stage.h"

#include "tests/support/RecordingCompiler.h"

#include <gtest/gtest.h>

#include <map>

TEST(ScenePolys, HandAGeometryToTheHooksInOneFixedShape)
{
    Stage stage;
    VXMaterial* const red = stage.Material("red");
    stage.Add("grid", Grid(2, 2), {red});
    stage.engine.Only({});
    stage.engine.Take();
    VXSceneDrawEngine& engine = stage.engine;
    engine.SetDrawPass(kShadowMapPass); // a pass of the host: nothing is left out, and nothing is shaded
    stage.scene.Object(0)->SetCastsShadow(true);
    engine.DrawScenePolys(&stage.scene);
    const Lines expected = {
        "DrawScenePolys pass 5 second",
        "BeginFrameState",
        "BeginObject grid",
        "DrawSortedElements grid",
        "EnableClientArrays",
        "SetVertexArray 9",
        "SetNormalArray 9",
        "SetColorArray off",
        "SetTexCoordArray off",
        "SetTangentArray off",
        "PrepareGeometry",
        "PrepareSceneLights",
        "BindMaterial red",
        "DrawElements quads 0 4 red",
        "DisableClientArrays",
        "EndObject grid",
    };
    EXPECT_EQ(stage.engine.Take(), expected);
    EXPECT_EQ(engine.CurrentObject(), nullptr);
    EXPECT_EQ(stage.scene.Object(0)->PreparationDepth(), 0);
}

// Quads and triangles of three materials in no order: each material is bound once, and every element drawn once.
TEST(ScenePolys, BindEachMaterialOnceAndDrawEachElementOnce)
{
    Stage stage;
    const std::vector<VXMaterial*> materials = {stage.Material("red"), stage.Material("green"), stage.Material("blue")};
    TestMesh mesh = Grid(6, 6);
    std::vector<std::uint16_t> slots;
    for (std::size_t i = 0; i < mesh.faces.size(); ++i)
    {
        if (i % 2 == 1)
            mesh.faces[i].pop_back(); // a triangle
        slots.push_back(std::uint16_t((i * i + i / 3) % 3));
    }
    mesh.uvs.clear();
    stage.Add("mixed", mesh, materials, slots);
    const Lines lines = stage.FrameOf({"BindMaterial", "DrawElements"});
    EXPECT_EQ(Of(lines, "BindMaterial").size(), 3u);
    std::map<std::string, int> drawn, next;
    for (const std::string& line : Of(lines, "DrawElements"))
    {
        char kind[16];
        int first = 0, count = 0;
        ASSERT_EQ(std::sscanf(line.c_str(), "DrawElements %15s %d %d", kind, &first, &count), 3) << line;
        EXPECT_EQ(first, next[kind]) << "ranges follow each other: " << line;
        next[kind] = first + count;
        drawn[kind] += count;
    }
    EXPECT_EQ(drawn, (std::map<std::string, int>{{"quads", 18}, {"triangles", 18}}));
}

TEST(ScenePolys, GiveTheCornersOfTheElementsInTheBatch)
{
    class CornerEngine : public RecordingEngine
    {
    public:
        void DrawElements(const VXElementBatch& batch) override
        {
            for (int e = 0; e < batch.count; ++e)
            {
                const ELEMENT* const poly = batch.geom->Polygon(batch.polys[e]);
                for (int k = 0; k < batch.cornersPerElement; ++k)
                    matching +=
                        batch.corners[e * batch.cornersPerElement + k] == batch.geom->Sets(true)[poly->start + k];
                corners += batch.cornersPerElement;
            }
        }
        int matching = 0, corners = 0;
    };
    Stage stage;
    VXMaterial* const red = stage.Material("red");
    VXMaterial* const blue = stage.Material("blue");
    stage.Add("cube", Cube(), {red, blue}, {0, 1, 1, 0, 1, 0}); // creased: corners of their own
    CornerEngine engine;
    engine.DrawScenePolys(&stage.scene);
    EXPECT_EQ(engine.corners, 0) << "the second half has nothing opaque";
    stage.scene.SetDrawEngine(&engine);
    Mat44 camera;
    MAT_Identity(camera);
    engine.DrawScene(&stage.scene, camera);
    EXPECT_EQ(engine.corners, 24);
    EXPECT_EQ(engine.matching, 24);
}

TEST(ScenePolys, DrawOpaqueFirstAndThenTransparentFarthestFirst)
{
    Stage stage;
    VXMaterial* const wood = stage.Material("wood");
    VXMaterial* const glass = stage.Material("glass", 0.5f);
    const std::vector<std::uint16_t> slots = {0, 1, 0, 1, 0, 1};
    const float depth[] = {-5, -20, 10, -1};
    for (int i = 0; i < 4; ++i)
        Stage::MoveTo(stage.Add(std::string(1, char('a' + i)).c_str(), Cube(), {wood, glass}, slots), 0, 0, depth[i]);
    stage.scene.UpdateDerivedData();
    const Lines lines = stage.FrameOf({"DrawScenePolys", "BeginObject", "DrawElements", "PrepareObjectPass"});
    const Lines expected = {
        "DrawScenePolys pass 0 first",
        "BeginObject a",
        "DrawElements quads 0 3 wood",
        "BeginObject b",
        "DrawElements quads 0 3 wood",
        "BeginObject c",
        "DrawElements quads 0 3 wood",
        "BeginObject d",
        "DrawElements quads 0 3 wood",
        "DrawScenePolys pass 1 second",
        "BeginObject b",
        "DrawElements quads 3 3 glass transparent",
        "BeginObject c",
        "DrawElements quads 3 3 glass transparent",
        "BeginObject a",
        "DrawElements quads 3 3 glass transparent",
        "BeginObject d",
        "DrawElements quads 3 3 glass transparent",
    };
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + std::min<std::ptrdiff_t>(18, std::ssize(lines))), expected);
}

TEST(ScenePolys, AreAllOpaqueWhereTheStyleForcesIt)
{
    Stage stage;
    stage.Add("cube", Cube(), {stage.Material("glass", 0.5f)});
    stage.scene.SceneMaterial()->SetFlagForceOpaque(true);
    EXPECT_EQ(stage.FrameOf({"DrawScenePolys", "DrawElements"}),
              (Lines{"DrawScenePolys pass 0 first", "DrawElements quads 0 6 glass", "DrawScenePolys pass 1 second"}));
}

TEST(ScenePolys, OfAStyleWithoutPolygonsAreNotDrawn)
{
    Stage stage;
    VXObject* const own = stage.Add("own style", Cube());
    own->DefaultMaterial()->SetFlagInheritStyleFromScene(false);
    own->DefaultMaterial()->SetWireMode();
    stage.Add("scene style", Cube());
    stage.scene.SetFlatMode();
    EXPECT_EQ(
        Of(stage.FrameOf({"DrawSortedElements", "PrepareObjectPass"}), "DrawSortedElements"),
        (Lines{"DrawSortedElements scene style", "DrawSortedElements scene style", "DrawSortedElements own style"}))
        << "both halves visit the one, element pass 1 the other";
}

TEST(ScenePolys, SetNormalsAsTheStyleWantsThem)
{
    Stage stage;
    stage.Add("cube", Cube()); // creased: 24 vertices
    EXPECT_EQ(stage.FrameOf({"SetNormalArray"}), (Lines{"SetNormalArray 24"}));
    stage.scene.SetFlatMode();
    EXPECT_EQ(stage.FrameOf({"SetNormalArray"}), (Lines{"SetNormalArray off"}));
    stage.scene.SetSmoothMode();
    stage.engine.SetNormalsOff(true);
    EXPECT_EQ(stage.FrameOf({"SetNormalArray"}), (Lines{"SetNormalArray off"}));
}

TEST(ScenePolys, CastShadowsOnlyOfObjectsThatDo)
{
    Stage stage;
    stage.scene.SetDrawDropShadows(true);
    stage.Add("caster", Cube(), {stage.Material("glass", 0.5f)})->SetCastsShadow(true);
    stage.Add("other", Cube());
    stage.Add("hair", *MeshWithLine())->SetCastsShadow(true);
    const Lines lines = stage.FrameOf({"DrawScenePolys", "BeginObject", "DrawElements", "PrepareObjectPass"});
    const Lines shadowOnly = {"DrawScenePolys pass 3 second", "BeginObject caster",
                              "DrawElements quads 0 6 glass transparent", "BeginObject hair",
                              "DrawScenePolys pass 0 first"};
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 5), shadowOnly) << "opaque or not";
    const auto linesPass = std::find(lines.begin(), lines.end(), "DrawScenePolys pass 4 first");
    ASSERT_GE(lines.end() - linesPass, 5);
    EXPECT_EQ(Lines(linesPass + 1, linesPass + 5),
              (Lines{"BeginObject caster", "BeginObject hair", "DrawElements lines 0 1", "PrepareObjectPass scene"}));
}

TEST(ScenePolys, ForPickingCarryTheirIndexAndSkipSetupParts)
{
    Stage stage;
    stage.Add("first", Cube(), {stage.Material("glass", 0.5f)});
    stage.Add("arm_SETUP_1", Cube());
    stage.Add("hidden", Cube())->SetVisible(false);
    stage.Add("last", Cube());
    stage.scene.SceneMaterial()->SetPickMode(true);
    stage.engine.drawsStyled = true;
    EXPECT_EQ(stage.FrameOf({"SetPickName", "BeginObject", "DrawElements"}),
              (Lines{"SetPickName 0", "BeginObject first", "DrawElements quads 0 6 glass transparent", "SetPickName 3",
                     "BeginObject last", "DrawElements quads 0 6"}));
    EXPECT_EQ(stage.engine.DrawPass(), kNormalPass);
}

// --- Layers and shaders

TEST(ScenePolys, DrawALayerOnlyWithItsShader)
{
    Stage stage;
    VXMaterial* const skin = stage.Material("skin");
    skin->CreateNewLayer("Dirt", "Dirt");
    skin->CreateNewLayer("Sweat", "Sweat");
    stage.Add("cube", Cube(), {skin});
    RecordingCompiler* const compiler = RecordingCompiler::Install(stage.engine);
    compiler->GiveProgram(skin, 0);
    compiler->GiveProgram(skin, 2);
    stage.engine.options.mHWShading = true;
    const auto drawn = [&] {
        return stage.FrameOf({"BindMaterial", "MakeCurrent", "DrawElements", "StopBeingCurrent", "SetPolygonOffset"});
    };
    EXPECT_EQ(drawn(), (Lines{"BindMaterial skin", "DrawElements quads 0 6 skin"})) << "shading is not allowed";
    stage.engine.SetHWShadingAllowed(true);
    EXPECT_EQ(drawn(),
              (Lines{"BindMaterial skin", "MakeCurrent skin 0", "DrawElements quads 0 6 skin",
                     "StopBeingCurrent skin 0", "SetPolygonOffset on 0 -2", "MakeCurrent skin 2",
                     "DrawElements quads 0 6 skin layer 2", "StopBeingCurrent skin 2", "SetPolygonOffset off 0 0"}));
    EXPECT_EQ(VXShaderCompiler::NumActivations(), 2);
    EXPECT_FALSE(stage.engine.ShaderEngine()->IsActive());
}

TEST(DrawEngine, WantsAShaderInSmoothFilledStylesOnly)
{
    Stage stage;
    VXMaterial* const red = stage.Material("red");
    RecordingCompiler* const compiler = RecordingCompiler::Install(stage.engine);
    compiler->GiveProgram(red, 0);
    stage.engine.SetScene(&stage.scene);
    VXMaterial mode(0, nullptr);
    struct Row
    {
        std::uint32_t flags;
        bool wanted;
    };
    for (const Row& row : {Row{0x5, true}, Row{0x45, true}, Row{0x4, false}, Row{0x1, false}, Row{0x85, false},
                           Row{0x105, false}, Row{0x100080, true}})
    {
        mode.SetFlags(row.flags); // the last row inherits the scene's style, which is smooth
        EXPECT_EQ(stage.engine.WantsShaderForMaterial(&mode, red, 0), row.wanted) << row.flags;
        EXPECT_FALSE(stage.engine.WantsShaderForMaterial(&mode, red, 1)) << "no program";
        EXPECT_FALSE(stage.engine.WantsShaderForMaterial(&mode, nullptr, 0));
    }
}

// --- Toon shading

TEST(ToonUVs, FollowLightAndViewerAndTurnWithTheObject)
{
    RecordingEngine engine;
    engine.SetToonLightDirection({0, 2, 0});
    VERTEX normals[] = {{0, 1, 0}, {0, -1, 0}, {1, 0, 0}, {0, 0, 1}, {0, 0, -1}, {0, NAN, 0}};
    const T_VERTEX expected[] = {{1, 0}, {0, 0}, {0.5f, 0}, {0.5f, 1}, {0.5f, 0}, {0, 0}};
    const T_VERTEX* const uvs = engine.GenerateToonUVS(normals, 6);
    ASSERT_NE(uvs, nullptr);
    for (int i = 0; i < 6; ++i)
    {
        EXPECT_FLOAT_EQ(uvs[i].u, expected[i].u) << i;
        EXPECT_FLOAT_EQ(uvs[i].v, expected[i].v) << i;
    }
    EXPECT_EQ(engine.GenerateToonUVS(nullptr, 6), nullptr);
    EXPECT_EQ(engine.GenerateToonUVS(normals, 0), nullptr);
}

TEST(ToonUVs, OfAnObjectSeenFromTheSideAreThoseOfItsTurnedNormals)
{
    class ToneEngine : public RecordingEngine
    {
    public:
        void SetTexCoordArray(T_VERTEX* uvs, int count) override
        {
            if (uvs)
                tones.assign(uvs, uvs + count);
        }
        std::vector<T_VERTEX> tones;
    };
    Stage stage;
    stage.scene.SetToonShadedMode();
    VXObject* const torus = stage.Add("torus", Torus(8, 6, false));
    ToneEngine engine;
    engine.SetToonLightDirection({0, 1, 0});
    MAT_RotateX(torus->GetTransform(), 0.5f);
    Mat44 camera;
    MAT_Identity(camera);
    MAT_RotateZ(camera, 0.3f);
    MAT_Translate(camera, 1, 2, -3); // moves, which directions do not
    engine.DrawScene(&stage.scene, camera);
    const VXGeom* const geom = torus->Geom();
    ASSERT_EQ(engine.tones.size(), std::size_t(geom->NumVerts(true)));
    Mat44 toView;
    MAT_Concat4x4(torus->GetTransform(), camera, toView);
    for (int i = 0; i < geom->NumVerts(true); ++i)
    {
        const VERTEX ends[2] = {{0, 0, 0}, *geom->VertNormal(i)};
        VERTEX seen[2];
        MAT_VertTransform(ends, seen, 2, toView);
        const VERTEX normal = seen[1] - seen[0];
        EXPECT_NEAR(engine.tones[std::size_t(i)].u, 0.5f + 0.5f * normal.y, 1e-5f)
            << i; // a few roundings of unit values
        EXPECT_NEAR(engine.tones[std::size_t(i)].v, std::max(normal.z, 0.0f), 1e-5f) << i;
    }
}
