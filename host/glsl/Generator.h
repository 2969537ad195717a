// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BString.h"

#include <string>
#include <vector>

namespace vx
{
class ShaderTree;

/// The shader text of one tree, and what has to be bound to it. Needs no OpenGL.
struct GlslSource
{
    /// A sampler of the fragment text. The list stands in the order in which the shader engine binds textures, whose
    /// units follow from the place: see Generator.cpp.
    struct Texture
    {
        std::string sampler;
        std::string type; ///< "sampler2D", "sampler3D" for the noise volume, "none" for a place that stays empty
        BString file;
        int unit = 0;
    };
    struct Uniform
    {
        std::string name, type;
    };

    std::string vertex, fragment;
    std::vector<Texture> textures;
    std::vector<Uniform> uniforms;
    bool usesTangents = false; ///< of the vertices: normal maps in tangent space
    BString problem;           ///< why there is no text; empty when there is

    /// Key of the program: equal exactly for equal texts and textures, on every machine and in every run.
    BString Hash() const;
};

/// What the text depends on besides the tree.
struct GlslOptions
{
    float minOpacity = 0.9f; ///< transparency never falls below it: VXShaderCompiler::GetMinOpacity
};

/// Writes the programs of a tree: GLSL 1.30 for the compatibility profile, lit per pixel like the fixed surfaces.
VELMAR_HOST_EXPORT GlslSource GenerateGlsl(const ShaderTree& tree, const GlslOptions& options = {});
} // namespace vx
