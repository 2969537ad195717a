// VelmarBase: materials.
#include "engine/VXSceneContext.h"
#include "material/VXMaterial.h"
#include "shader/BShaderTree.h"

void VXMaterial::ApplyPreset(DrawMode mode)
{
    const DrawPreset& preset = vx::PresetOf(mode);
    const bool wire = mode == DrawMode::Wire; // wires of back faces are seen through the mesh, whatever the options say
    if (VXSceneContext::HasScene())
    {
        TakeSceneColors(preset);
        if (!wire)
            SetFlagBackCull(!VXSceneContext::BackCullSuppressed());
    }
    if (wire)
        SetFlagBackCull(false);
    mFlags.Replace(kStyleBits, preset.bits);
}

void VXMaterial::TakeSceneColors(const DrawPreset& preset)
{
    const VXMaterialColor4& wireframe = *VXSceneContext::WireframeColor();
    mSilhouetteColor =
        preset.silhouette == DrawPreset::Silhouette::Wireframe ? wireframe : *VXSceneContext::BackgroundColor();
    const bool black = preset.lines == DrawPreset::Lines::Black;
    mLineColor = black ? VXMaterialColor4(0, 0, 0, 1) : wireframe;
    SetFlagBlackLines(black);
}

void VXMaterial::SetPickMode(bool on)
{
    SetFlagPick(on);
    SetFlagDrawPolys(true);
}

// The root that the current renderer shows of the base layer's tree, null without one.
BShaderNode* VXMaterial::RootNode() const
{
    const BShaderTree* const tree = ShaderTree(0);
    if (!tree)
        return nullptr;
    BShaderNode* const root = tree->RootNode(BRenderEngines::E_Renderer(VXSceneContext::RenderType()));
    return root && root->Kind() == BShaderNode::kNodeRoot ? root : nullptr;
}

float VXMaterial::HaberlineOffset() const
{
    if (!mHaberlineOffsetEnabled)
        return 0;
    const float scale = VXSceneContext::GeometricEdgeDistance();
    const BShaderNode* const root = RootNode();
    const BShaderInput* const input = root ? root->Input("Geometry_Edge_Dist") : nullptr;
    float distance = 0;
    if (input && input->GetFloat(distance))
        return distance * scale;
    constexpr double kDefaultDistance = 0.003; // model units, at scale 1
    return float(double(scale) * kDefaultDistance);
}

VXMaterialColor4 VXMaterial::HaberlineColor() const
{
    const BShaderNode* const root = RootNode();
    const BShaderInput* const input = root ? root->Input("Geometry_Edge_Color") : nullptr;
    VXMaterialColor4 color;
    if (!input || !input->GetColor(color))
        return {0, 0, 0, 1};
    color.SetBrightness(1);
    return color;
}
