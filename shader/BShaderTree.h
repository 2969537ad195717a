// VelmarBase: shader generation.
#pragma once

#include "engine/BRenderEngines.h"

class BString;
class BShaderNode;
class VXMaterialColor4;

/// @file
/// What the library asks of a host's node trees. A tree describes one layer of a material; the host implements, owns
/// and deletes trees, nodes and inputs. Nothing here is called after the tree has been taken out of its layer.

/// One input of a node: a plain value, or a connection to the node that computes it.
class BShaderInput
{
public:
    virtual ~BShaderInput() = default;

    virtual BShaderNode* ConnectedNode() const = 0; ///< null when the input holds a plain value

    /// The input's plain value. @return true when the input yields one; otherwise `value` is unchanged
    virtual bool GetFloat(float& value) const = 0;
    virtual bool GetColor(VXMaterialColor4& color) const = 0;

    float FloatOr(float otherwise) const ///< the value, or `otherwise` when the input yields none
    {
        GetFloat(otherwise);
        return otherwise;
    }
};

/// One node of a tree.
class BShaderNode
{
public:
    /// What a node is to its tree. Values beyond these are the host's.
    enum E_Kind : int
    {
        kNodeOrdinary = 0,
        kNodeRoot = 1, ///< the surface or light that the tree computes
    };

    virtual ~BShaderNode() = default;
    virtual int Kind() const = 0;
    virtual BString TypeName() const = 0;                    ///< such as "PhysicalSurface" or "image_map"
    virtual BShaderInput* Input(const char* name) const = 0; ///< by its exact name; null when the node lacks it
};

/// The node tree of one material layer.
class BShaderTree
{
public:
    virtual ~BShaderTree() = default;

    /// The root whose surface the given renderer shows; null when the tree has none for it. For kRenderTypeNoShaders
    /// the root that the fixed pipeline takes its values from.
    virtual BShaderNode* RootNode(BRenderEngines::E_Renderer renderer) const = 0;
};
