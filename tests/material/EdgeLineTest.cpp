#include "engine/VXScene.h"
#include "engine/VXSceneDelegate.h"
#include "tests/support/FakeShaderTree.h"

#include <gtest/gtest.h>

namespace
{
struct ScalingDelegate : VXSceneDelegate
{
    float scale = 1;
    BRenderEngines::E_Renderer renderer = BRenderEngines::kRenderTypeDefault;

    float SceneGeometricEdgeDistance() override { return scale; }
    BRenderEngines::E_Renderer CurrentPreviewRootRenderType() override { return renderer; }
};

struct MaterialWithTree
{
    MaterialWithTree() { tree.GiveTo(material); }
    FakeTree tree;
    FakeInput& distance = tree.root.inputs["Geometry_Edge_Dist"];
    FakeInput& color = tree.root.inputs["Geometry_Edge_Color"];
    VXMaterial material{0, nullptr};
};
} // namespace

TEST(EdgeLineOffset, IsTheTreesValueOrTheDefaultTimesTheScenesScale)
{
    MaterialWithTree m;
    EXPECT_FLOAT_EQ(m.material.HaberlineOffset(), 0.003f); // nobody scales, the input yields nothing
    m.distance.number = 0.25f;
    EXPECT_EQ(m.material.HaberlineOffset(), 0.25f);

    VXScene scene;
    EXPECT_EQ(m.material.HaberlineOffset(), 0.25f);
    ScalingDelegate delegate;
    delegate.scale = 4;
    scene.SetSceneDelegate(&delegate);
    EXPECT_EQ(m.material.HaberlineOffset(), 1);
    m.tree.root.inputs.clear();
    EXPECT_EQ(m.material.HaberlineOffset(), float(4 * 0.003));

    VXSceneDelegate plain; // scales by 0
    scene.SetSceneDelegate(&plain);
    EXPECT_EQ(m.material.HaberlineOffset(), 0);

    scene.SetSceneDelegate(&delegate);
    m.material.SetHaberlineOffsetEnabled(false);
    EXPECT_EQ(m.material.HaberlineOffset(), 0);
}

TEST(EdgeLineOffset, OfAMaterialWithoutLayersOrRootIsTheDefault)
{
    MaterialWithTree m;
    m.distance.number = 0.25f;
    m.tree.root.kind = BShaderNode::kNodeOrdinary;
    EXPECT_FLOAT_EQ(m.material.HaberlineOffset(), 0.003f);
    m.tree.root.kind = BShaderNode::kNodeRoot;
    m.material.ClearLayers();
    EXPECT_FLOAT_EQ(m.material.HaberlineOffset(), 0.003f);
}

TEST(EdgeLineColour, IsTheTreesAtFullBrightnessOrBlack)
{
    const VXMaterialColor4 black(0, 0, 0, 1);
    MaterialWithTree m;
    EXPECT_EQ(m.material.HaberlineColor(), black);
    m.color.color = VXMaterialColor4(0.1f, 0.2f, 0.3f, 0.4f);
    EXPECT_EQ(m.material.HaberlineColor(), VXMaterialColor4(0.1f, 0.2f, 0.3f, 1));
    EXPECT_EQ(VXMaterial(0, nullptr).HaberlineColor(), black);

    VXScene scene; // the root of the renderer that the scene shows is the one that is read
    ScalingDelegate delegate;
    delegate.renderer = BRenderEngines::E_Renderer(3);
    scene.SetSceneDelegate(&delegate);
    EXPECT_EQ(m.material.HaberlineColor(), black);
    m.tree.shownFor = BRenderEngines::E_Renderer(3);
    EXPECT_EQ(m.material.HaberlineColor(), VXMaterialColor4(0.1f, 0.2f, 0.3f, 1));
}
