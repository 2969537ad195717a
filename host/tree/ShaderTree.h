// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BString.h"
#include "host/tree/NodeTypes.h"
#include "material/VXMaterialColor4.h"
#include "shader/BShaderTree.h"

#include <memory>
#include <vector>

namespace vx
{
class TreeNode;

/// Most nodes of a tree that is read or becomes a program: far more than a material needs. Drivers take seconds for
/// some hundreds of nodes, with the square of their number.
inline constexpr int kMostNodes = 256;

/// One input of a node: a plain value of its type, or the node that computes it.
class VELMAR_HOST_EXPORT TreeInput : public BShaderInput
{
public:
    explicit TreeInput(const InputType& type);

    const InputType& Type() const { return *mType; }
    BShaderNode* ConnectedNode() const override;
    TreeNode* Node() const { return mNode; }               ///< the same, typed
    bool GetFloat(float& value) const override;            ///< of plain numbers, colours (luminance) and choices
    bool GetColor(VXMaterialColor4& color) const override; ///< of plain colours and numbers (grey); brightness 1

    const float* Values() const { return mValues; } ///< three: number, colour or vector
    int Choice() const { return int(mValues[0]); }  ///< index of the chosen word
    const BString& File() const { return mFile; }   ///< as it is to be opened; empty for none
    bool IsStandard() const;                        ///< not connected, and the value is that of the type
    void Set(float a, float b = 0, float c = 0);    ///< a plain value takes the connection's place; into the range
    void SetFile(const BString& file) { mFile = file; }
    void Connect(TreeNode* node) { mNode = node; } ///< null: back to the plain value

private:
    const InputType* mType;
    TreeNode* mNode = nullptr;
    float mValues[3];
    BString mFile;
};

/// One node: its inputs in the order of its type's table.
class VELMAR_HOST_EXPORT TreeNode : public BShaderNode
{
public:
    TreeNode(const NodeType& type, const BString& name);

    const NodeType& Type() const { return *mType; }
    const BString& Name() const { return mName; } ///< by which texts refer to it; no part of what it computes
    int Kind() const override;
    BString TypeName() const override { return mType->name; }
    BShaderInput* Input(const char* name) const override; ///< null when this type lacks it
    TreeInput& At(int i) { return mInputs[std::size_t(i)]; }
    const TreeInput& At(int i) const { return mInputs[std::size_t(i)]; }
    TreeInput* Find(const char* name) const; ///< the same as Input, typed
    int NumInputs() const { return int(mInputs.size()); }

private:
    const NodeType* mType;
    BString mName;
    mutable std::vector<TreeInput> mInputs; ///< never grows; mutable as Input answers what may be changed
};

/// The node tree of one material layer: owns its nodes. A node may feed several inputs; cycles are not made by the
/// readers and are found by CycleProblem.
class VELMAR_HOST_EXPORT ShaderTree : public BShaderTree
{
public:
    /// One root serves all renderers; kRenderTypeNoShaders too.
    BShaderNode* RootNode(BRenderEngines::E_Renderer renderer) const override;
    TreeNode* Root() const { return mRoot; }
    void SetRoot(TreeNode* root) { mRoot = root; }

    TreeNode* AddNode(const char* type, const BString& name); ///< null for an unknown type
    TreeNode* FindNode(const BString& name) const;
    std::size_t NumNodes() const { return mNodes.size(); }
    TreeNode* Node(std::size_t i) const { return mNodes[i].get(); }

    /// @return empty; or which nodes form a cycle: "a -> b -> a". Linear in inputs; no recursion.
    BString CycleProblem() const;

private:
    std::vector<std::unique_ptr<TreeNode>> mNodes;
    TreeNode* mRoot = nullptr;
};
} // namespace vx
