// Trees that tests of materials and shaders build by hand.
#pragma once

#include "host/tree/ShaderTree.h"

#include <memory>

/// A tree with a root alone, of which all is as the type says.
inline std::unique_ptr<vx::ShaderTree> PlainTree(const char* root = "PhysicalSurface")
{
    auto tree = std::make_unique<vx::ShaderTree>();
    tree->AddNode(root, "root");
    return tree;
}

/// Adds a node of the type and connects it where a result of that kind shows on the surface: the diffuse colour, or
/// the normal.
inline vx::TreeNode* ShowNode(vx::ShaderTree& tree, const char* type, const char* name = "shown")
{
    vx::TreeNode* const node = tree.AddNode(type, name);
    const bool vector = node->Type().result == vx::ValueType::Vector;
    tree.Root()->Find(vector ? "Normal_Map" : "Diffuse_Color")->Connect(node);
    if (vx::TreeInput* const file = node->Find("File"))
        file->SetFile("picture.png");
    return node;
}
