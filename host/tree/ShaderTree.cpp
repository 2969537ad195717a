#include "host/tree/ShaderTree.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace vx
{
// --- Inputs

TreeInput::TreeInput(const InputType& type) : mType(&type)
{
    std::copy(std::begin(type.standard), std::end(type.standard), mValues);
}

BShaderNode* TreeInput::ConnectedNode() const { return mNode; }

bool TreeInput::GetFloat(float& value) const
{
    if (mNode)
        return false;
    switch (mType->type)
    {
    case ValueType::Color:
        // By the weights of Rec. 709, on the colour as it is written: exact for greys, which is what numbers become.
        value = mValues[0] == mValues[1] && mValues[1] == mValues[2]
                    ? mValues[0]
                    : 0.2126f * mValues[0] + 0.7152f * mValues[1] + 0.0722f * mValues[2];
        return true;
    case ValueType::Float:
    case ValueType::Choice:
        value = mValues[0];
        return true;
    default:
        return false;
    }
}

bool TreeInput::GetColor(VXMaterialColor4& color) const
{
    if (mNode)
        return false;
    if (mType->type == ValueType::Color)
        color.Set(mValues[0], mValues[1], mValues[2], 1);
    else if (mType->type == ValueType::Float)
        color.Set(mValues[0], mValues[0], mValues[0], 1);
    else
        return false;
    return true;
}

bool TreeInput::IsStandard() const
{
    return !mNode && mFile.IsEmpty() && std::equal(std::begin(mValues), std::end(mValues), mType->standard);
}

void TreeInput::Set(float a, float b, float c)
{
    const float given[3] = {a, b, c};
    const int used = mType->type == ValueType::Float || mType->type == ValueType::Choice ? 1 : 3;
    for (int i = 0; i < used; ++i)
        mValues[i] = std::isnan(given[i]) ? mType->standard[i] : std::clamp(given[i], mType->low, mType->high);
    mNode = nullptr;
}

// --- Nodes

TreeNode::TreeNode(const NodeType& type, const BString& name) : mType(&type), mName(name)
{
    mInputs.reserve(type.inputs.size());
    for (const InputType& input : type.inputs)
        mInputs.emplace_back(input);
}

int TreeNode::Kind() const { return mType->IsRoot() ? kNodeRoot : kNodeOrdinary; }

BShaderInput* TreeNode::Input(const char* name) const { return Find(name); }

TreeInput* TreeNode::Find(const char* name) const
{
    const int i = name ? mType->InputIndex(name) : -1;
    return i < 0 ? nullptr : &mInputs[std::size_t(i)];
}

// --- Trees

BShaderNode* ShaderTree::RootNode(BRenderEngines::E_Renderer) const { return mRoot; }

TreeNode* ShaderTree::AddNode(const char* type, const BString& name)
{
    const NodeType* const found = type ? FindNodeType(type) : nullptr;
    if (!found)
        return nullptr;
    mNodes.push_back(std::make_unique<TreeNode>(*found, name));
    if (found->IsRoot() && !mRoot)
        mRoot = mNodes.back().get();
    return mNodes.back().get();
}

TreeNode* ShaderTree::FindNode(const BString& name) const
{
    for (const auto& node : mNodes)
        if (node->Name() == name)
            return node.get();
    return nullptr;
}

// Depth first, by a stack of its own: chains of nodes come from files and may be as long as these.
BString ShaderTree::CycleProblem() const
{
    struct Step
    {
        TreeNode* node;
        int nextInput;
    };
    enum class State
    {
        Unseen,
        Open, ///< on the way from where the search began
        Done,
    };
    std::unordered_map<const TreeNode*, State> states;
    std::vector<Step> way;
    for (const auto& start : mNodes)
    {
        if (states[start.get()] != State::Unseen)
            continue;
        way.push_back({start.get(), 0});
        states[start.get()] = State::Open;
        while (!way.empty())
        {
            Step& step = way.back();
            if (step.nextInput == step.node->NumInputs())
            {
                states[step.node] = State::Done;
                way.pop_back();
                continue;
            }
            TreeNode* const next = step.node->At(step.nextInput++).Node();
            if (!next || states[next] == State::Done)
                continue;
            if (states[next] == State::Unseen)
            {
                states[next] = State::Open;
                way.push_back({next, 0});
                continue;
            }
            auto first = way.begin();
            while (first->node != next)
                ++first;
            // The middle of a long cycle tells nobody anything.
            BString told;
            const std::ptrdiff_t length = way.end() - first;
            for (std::ptrdiff_t i = 0; i < length; ++i)
                if (i < 8 || i == length - 1)
                    told += first[i].node->Name() + (i == 7 && length > 9 ? " -> ... -> " : " -> ");
            return told + next->Name();
        }
    }
    return {};
}
} // namespace vx
