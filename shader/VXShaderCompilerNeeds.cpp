// Which materials need a generated program, and the mark of colours that are no constants.
#include "shader/VXShaderCompiler.h"

#include "engine/VXSceneContext.h"
#include "engine/VXSceneDelegate.h"
#include "material/VXMaterial.h"
#include "shader/BShaderTree.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace
{
constexpr const char* kSurfaceRoots[] = {"kelvo", "PhysicalSurface", "CyclesSurface"};
constexpr const char* kFixedNodes[] = {"image_map", "simple_color"}; ///< what the fixed pipeline can draw by itself

/// The root's inputs that can ask for a program. A root that lacks one is not of the kind that the fixed pipeline
/// knows.
constexpr const char* kRootInputs[] = {
    "Diffuse_Color",      "Diffuse_Value",    "Highlight_Color",   "Highlight_Value",      "Ambient_Color",
    "Ambient_Value",      "Transparency_Max", "Transparency_Min",  "Transparency_Falloff", "Translucence_Color",
    "Translucence_Value", "AlternateDiffuse", "AlternateSpecular", "Gradient_Bump",
};

constexpr float kScaleTolerance = 1e-6f;
constexpr float kOffsetTolerance = 1e-5f;
constexpr float kInvalidRed = -1337.0f;

template <std::size_t count>
bool IsOneOf(const BString& type, const char* const (&types)[count])
{
    return std::any_of(std::begin(types), std::end(types), [&type](const char* known) { return type == known; });
}

bool IsScaled(const BShaderInput* input) { return input && std::fabs(input->FloatOr(1) - 1) > kScaleTolerance; }

// The limits themselves count as moved, and so does what is not a number.
bool IsMoved(const BShaderInput* input) { return input && !(std::fabs(input->FloatOr(0)) < kOffsetTolerance); }
} // namespace

bool VXShaderCompiler::NeedsShader(VXMaterial* material, bool deep) const
{
    const BShaderTree* const tree = material ? material->ShaderTree(0) : nullptr;
    if (!tree || material->InternalName() == "Camera")
        return false;
    VXSceneDelegate* const delegate = VXSceneContext::Delegate();
    if (!delegate)
        return false;
    const BRenderEngines::E_Renderer renderer = delegate->CurrentPreviewRootRenderType();
    if (renderer == BRenderEngines::kRenderTypeNoShaders)
        return false;
    BShaderNode* const root = tree->RootNode(renderer);
    if (!root || !IsOneOf(root->TypeName(), kSurfaceRoots)) // a light is not drawn
        return false;
    return !deep || NeedsShaderNode(root, material, 0);
}

bool VXShaderCompiler::NeedsShaderNode(BShaderNode* node, VXMaterial* material, int depth) const
{
    if (depth > 0 || !node)
        return true;
    return std::any_of(std::begin(kRootInputs), std::end(kRootInputs),
                       [&](const char* name) { return NeedsShaderInput(node->Input(name), material, depth); });
}

bool VXShaderCompiler::NeedsShaderInput(BShaderInput* input, VXMaterial* material, int /*depth*/) const
{
    if (!input || !material)
        return true;
    const BShaderNode* const node = input->ConnectedNode();
    if (!node)
        return false;
    if (!IsOneOf(node->TypeName(), kFixedNodes))
        return true;
    return IsScaled(node->Input("U_Scale")) || IsScaled(node->Input("V_Scale")) || IsMoved(node->Input("U_Offset")) ||
           IsMoved(node->Input("V_Offset"));
}

void VXShaderCompiler::SetInvalidColorResult(VXMaterialColor4& color) { color.SetRed(kInvalidRed); }

bool VXShaderCompiler::IsOptimizedColorResult(const VXMaterialColor4& color) { return color.Red() != kInvalidRed; }
