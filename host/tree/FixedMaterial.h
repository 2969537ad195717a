// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BString.h"

class VXMaterial;

namespace vx
{
class ShaderTree;
class TextureTable;

/// Sets what surfaces without programs are drawn by: Kd, Ks, Ns, Ka, transparency and texture. Plain values, colours
/// and pictures come over as they are; of what only a program can show, a stand-in that resembles it from afar.
/// @return empty; or why the tree's picture is not shown
VELMAR_HOST_EXPORT BString ApplyTree(const ShaderTree& tree, VXMaterial& material, TextureTable& textures);

/// Whether a material needs a program of its own, and why or why not, in words.
struct ShaderDecision
{
    bool needed = false;
    BString why;
};

/// The decision of VXShaderCompiler about a tree, where shaders are wanted and simple materials are left to fixed
/// drawing; and what this host adds to it.
/// @param tree of the base layer, which decides for all  @param numLayers of the material
VELMAR_HOST_EXPORT ShaderDecision DecideShader(const ShaderTree& tree, const BString& materialName,
                                               std::size_t numLayers = 1);

/// What fixed drawing cannot show of a tree that VXShaderCompiler takes for simple: relief, pictures elsewhere than in
/// Diffuse_Color, light of its own. Empty when it shows everything.
VELMAR_HOST_EXPORT BString LostWithoutShader(const ShaderTree& tree);
} // namespace vx
