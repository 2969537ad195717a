#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "material/VXMaterial.h"
#include "tests/support/DrawEngineDouble.h"

#include <gtest/gtest.h>

namespace
{
enum class Silh
{
    Back,
    Wire
};
enum class Line
{
    Wire,
    Black
};

struct Row
{
    void (VXMaterial::*preset)();
    void (VXScene::*scenePreset)();
    const char* name;
    std::uint32_t cleared, set;
    Silh silhouette;
    Line line;
};

#define PRESET(name) &VXMaterial::Set##name##Mode, &VXScene::Set##name##Mode
// The masks as hosts have them in their own tables.
const Row kRows[] = {
    {PRESET(Depth), "depth", 0x20003EA, 0x1200005, Silh::Wire, Line::Wire},
    {PRESET(FlatLined), "flat-lined", 0x32003E3, 0xC, Silh::Back, Line::Black},
    {PRESET(Flat), "flat", 0x32003EB, 0x4, Silh::Back, Line::Wire},
    {PRESET(HidLine), "hidden-line", 0x30003E1, 0x20000E, Silh::Back, Line::Wire},
    {PRESET(LitWire), "lit-wire", 0x30003C0, 0x20002F, Silh::Back, Line::Wire},
    {PRESET(Normals), "normals", 0x10003EA, 0x2200005, Silh::Wire, Line::Wire},
    {PRESET(Outline), "outline", 0x32002ED, 0x102, Silh::Back, Line::Wire},
    {PRESET(Silhouette), "silhouette", 0x30003E9, 0x200006, Silh::Wire, Line::Wire},
    {PRESET(SmoothLined), "smooth-lined", 0x32003E2, 0xD, Silh::Back, Line::Black},
    {PRESET(Smooth), "smooth", 0x32003EA, 0x5, Silh::Back, Line::Wire},
    {PRESET(SmoothOutlined), "smooth-outlined", 0x32002EA, 0x105, Silh::Back, Line::Black},
    {PRESET(SmoothTextured), "smooth-textured", 0x32003AA, 0x45, Silh::Back, Line::Black},
    {PRESET(TexturedLined), "textured-lined", 0x32003A2, 0x4D, Silh::Back, Line::Black},
    {PRESET(ToonShaded), "toon", 0x320036A, 0x85, Silh::Back, Line::Wire},
    {PRESET(ToonShadedOutlined), "toon-outlined", 0x320026A, 0x185, Silh::Back, Line::Black},
    {PRESET(Wire), "wire", 0x32003F7, 0x8, Silh::Back, Line::Wire},
};
static_assert(std::size(kRows) == kNumDrawModes);

constexpr std::uint32_t kBackCull = 0x10, kBlackLines = 0x800000;
const VXMaterialColor4 kBack(0.1f, 0.2f, 0.3f, 0.4f), kWire(0.5f, 0.6f, 0.7f, 0.8f), kBlack(0, 0, 0, 1);

bool IsWire(const Row& row) { return row.set == 0x8; }

// A scene whose colours differ from each other and from every default.
struct ColouredScene
{
    ColouredScene()
    {
        scene.SetBackgroundColor(0.1f, 0.2f, 0.3f, 0.4f);
        scene.SetWireframeColor(0.5f, 0.6f, 0.7f, 0.8f);
    }
    VXScene scene;
};
} // namespace

TEST(DrawPreset, WithoutASceneChangesTheStyleBitsAlone)
{
    ASSERT_EQ(VXScene::CurrentScene(), nullptr);
    for (const Row& row : kRows)
        for (const std::uint32_t start : {0u, 0xFFFFFFFFu, 0xA5A5A5A5u})
        {
            SCOPED_TRACE(row.name);
            VXMaterial material(0, nullptr);
            material.SetFlags(start);
            (material.*row.preset)();
            EXPECT_EQ(material.Flags(), (start & ~row.cleared) | row.set);
            EXPECT_EQ(material.SilhouetteColor(), kBlack);
            EXPECT_EQ(material.LineColor(), VXMaterialColor4(1, 1, 1, 1));
        }
}

TEST(DrawPreset, TakesColoursAndCullingFromTheCurrentScene)
{
    ColouredScene current;
    DrawEngineDouble engine;
    struct Case
    {
        const char* name;
        VXSceneDrawEngine* engine;
        bool suppressed;
    };
    for (const Case& c :
         {Case{"no engine", nullptr, false}, {"culling", &engine, false}, {"no culling", &engine, true}})
        for (const Row& row : kRows)
            for (const std::uint32_t start : {0u, 0xFFFFFFFFu})
            {
                SCOPED_TRACE(std::string(row.name) + ", " + c.name);
                current.scene.SetDrawEngine(c.engine);
                engine.options.mSuppressBackCull = c.suppressed;
                VXMaterial material(0, nullptr);
                material.SetFlags(start);
                (material.*row.preset)();

                const bool black = row.line == Line::Black;
                std::uint32_t expected = (start & ~row.cleared & ~kBackCull & ~kBlackLines) | row.set;
                if (!IsWire(row) && !c.suppressed)
                    expected |= kBackCull;
                if (black)
                    expected |= kBlackLines;
                EXPECT_EQ(material.Flags(), expected);
                EXPECT_EQ(material.SilhouetteColor(), row.silhouette == Silh::Wire ? kWire : kBack);
                EXPECT_EQ(material.LineColor(), black ? kBlack : kWire);
            }
}

TEST(DrawPreset, IsFoundByItsNameAndNoOther)
{
    for (int i = 0; i < kNumDrawModes; ++i)
    {
        const DrawPreset* const found = vx::FindPreset(kRows[i].name);
        ASSERT_NE(found, nullptr) << kRows[i].name;
        EXPECT_EQ(found->mode, DrawMode(i));
        EXPECT_EQ(found, &vx::PresetOf(DrawMode(i)));
        EXPECT_EQ(found->bits.Word(), kRows[i].set);
    }
    for (const char* name : {"", "Smooth", "smooth ", "smooth_lined", "toonn", "too"})
        EXPECT_EQ(vx::FindPreset(name), nullptr) << name;
}

TEST(DrawPreset, OfASceneRestylesItsMaterialAndMarksObjectsChanged)
{
    ColouredScene current;
    VXScene& scene = current.scene;
    VXObject* const object = new VXObject;
    scene.AddObject(object);
    VXMaterial listed(0, nullptr);
    scene.AddMaterial(&listed);
    for (const Row& row : kRows)
    {
        SCOPED_TRACE(row.name);
        const std::uint32_t own = object->DefaultMaterial()->Flags(), other = listed.Flags(),
                            control = scene.ControlMeshMaterial()->Flags();
        object->SetChanged(false);
        object->SetPolyDisplayListReady(true, 1);
        (scene.*row.scenePreset)();
        EXPECT_EQ(scene.SceneMaterial()->Flags() & kStyleBits.Word(), row.set);
        EXPECT_TRUE(object->Changed());
        EXPECT_FALSE(object->PolyDisplayListReady(1));
        EXPECT_EQ(object->DefaultMaterial()->Flags(), own);
        EXPECT_EQ(listed.Flags(), other);
        EXPECT_EQ(scene.ControlMeshMaterial()->Flags(), control);
    }
}

TEST(PickMode, OfAMaterialAlwaysLeavesPolygonsOn)
{
    VXMaterial material(0, nullptr);
    material.SetWireMode();
    material.SetPickMode(true);
    EXPECT_EQ(material.Flags() & 0x204u, 0x204u);
    material.SetPickMode(false);
    EXPECT_EQ(material.Flags() & 0x204u, 0x004u);
}
