#include "base/BString.h"
#include "engine/VXScene.h"
#include "engine/VXSceneDelegate.h"
#include "material/VXMaterial.h"
#include "shader/BShaderTree.h"

#include <gtest/gtest.h>

#include <cstring>
#include <optional>

namespace
{
struct FakeInput : BShaderInput
{
    std::optional<float> number;
    std::optional<VXMaterialColor4> color;

    BShaderNode* ConnectedNode() const override { return nullptr; }
    bool GetFloat(float& value) const override
    {
        value = number.value_or(value);
        return number.has_value();
    }
    bool GetColor(VXMaterialColor4& value) const override
    {
        value = color.value_or(value);
        return color.has_value();
    }
};

struct FakeRoot : BShaderNode
{
    FakeInput distance, color;
    bool hasInputs = true;
    int kind = kNodeRoot;

    int Kind() const override { return kind; }
    BString TypeName() const override { return "PhysicalSurface"; }
    BShaderInput* Input(const char* name) const override
    {
        if (hasInputs && !std::strcmp(name, "Geometry_Edge_Dist"))
            return const_cast<FakeInput*>(&distance);
        if (hasInputs && !std::strcmp(name, "Geometry_Edge_Color"))
            return const_cast<FakeInput*>(&color);
        return nullptr;
    }
};

struct FakeTree : BShaderTree
{
    FakeRoot root;
    BRenderEngines::E_Renderer shownFor = BRenderEngines::kRenderTypeDefault;

    BShaderNode* RootNode(BRenderEngines::E_Renderer renderer) const override
    {
        return renderer == shownFor ? const_cast<FakeRoot*>(&root) : nullptr;
    }
};

struct ScalingDelegate : VXSceneDelegate
{
    float scale = 1;
    BRenderEngines::E_Renderer renderer = BRenderEngines::kRenderTypeDefault;

    float SceneGeometricEdgeDistance() override { return scale; }
    BRenderEngines::E_Renderer CurrentPreviewRootRenderType() override { return renderer; }
};

struct MaterialWithTree
{
    MaterialWithTree() { material.SetOrmondShaderTree(0, static_cast<BShaderTree*>(&tree)); }
    FakeTree tree;
    VXMaterial material{0, nullptr};
};
} // namespace

TEST(EdgeLineOffset, IsTheTreesValueOrTheDefaultTimesTheScenesScale)
{
    MaterialWithTree m;
    EXPECT_FLOAT_EQ(m.material.HaberlineOffset(), 0.003f); // nobody scales, the input yields nothing
    m.tree.root.distance.number = 0.25f;
    EXPECT_EQ(m.material.HaberlineOffset(), 0.25f);

    VXScene scene;
    EXPECT_EQ(m.material.HaberlineOffset(), 0.25f);
    ScalingDelegate delegate;
    delegate.scale = 4;
    scene.SetSceneDelegate(&delegate);
    EXPECT_EQ(m.material.HaberlineOffset(), 1);
    m.tree.root.hasInputs = false;
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
    m.tree.root.distance.number = 0.25f;
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
    m.tree.root.color.color = VXMaterialColor4(0.1f, 0.2f, 0.3f, 0.4f);
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
