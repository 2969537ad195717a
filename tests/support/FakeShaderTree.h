// Node trees made by hand, for tests of what the library reads from a host's trees.
#pragma once

#include "base/BString.h"
#include "material/VXMaterial.h"
#include "shader/BShaderTree.h"

#include <map>
#include <optional>
#include <string>

struct FakeInput : BShaderInput
{
    std::optional<float> number;
    std::optional<VXMaterialColor4> color;
    BShaderNode* connected = nullptr;

    BShaderNode* ConnectedNode() const override { return connected; }
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

struct FakeNode : BShaderNode
{
    explicit FakeNode(const char* typeName, int nodeKind = kNodeOrdinary) : type(typeName), kind(nodeKind) {}

    BString type;
    int kind;
    mutable std::map<std::string, FakeInput> inputs;

    int Kind() const override { return kind; }
    BString TypeName() const override { return type; }
    BShaderInput* Input(const char* name) const override
    {
        const auto found = inputs.find(name);
        return found == inputs.end() ? nullptr : &found->second;
    }
};

/// A tree that shows its root for one renderer alone.
struct FakeTree : BShaderTree
{
    mutable FakeNode root{"PhysicalSurface", BShaderNode::kNodeRoot};
    BRenderEngines::E_Renderer shownFor = BRenderEngines::kRenderTypeDefault;

    BShaderNode* RootNode(BRenderEngines::E_Renderer renderer) const override
    {
        return renderer == shownFor ? &root : nullptr;
    }
    void GiveTo(VXMaterial& material, std::int64_t layer = 0)
    {
        material.SetOrmondShaderTree(layer, static_cast<BShaderTree*>(this));
    }
};
