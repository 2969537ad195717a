// VelmarBase: reference host.
#pragma once

#include "host/glsl/Generator.h"
#include "host/tree/ShaderTree.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// @file
/// How the text of one tree comes about, for use inside host/glsl alone.

namespace vx::glsl
{
/// Functions and variables that nodes need beside their own lines. Written when asked for, in this order.
enum class Piece : std::uint32_t
{
    UV,      ///< vec2 vUV
    Place,   ///< vec3 vPlace: the position in the model's own units
    Tangent, ///< vec3 vTangent, vBinormal in view space; zero where there is none
    Alpha,   ///< of surfaces that can be clear, with uAlphaPass
    Volume,  ///< the sampler of noise
    Noise,
    Cell,
    SmoothNoise,
    AbsoluteNoise,
    RidgedNoise,
    LatticeNoise,
    RadialNoise,
    NearestTexel,
    Tiles,
    Fresnel,
    Illumination,
    Power,
    Divide,
    DivideColor,
    Modulo,
    Mapped,
    Bumped,
};

/// A value in the text: a name, a literal or a call, so that it may stand beside any operator.
struct Term
{
    std::string text;          ///< numbers float, colours vec3 of linear light, vectors vec3
    bool constant = false;     ///< `value` says what it is
    float value[3] = {};       ///< a number in [0]; a colour as it is written
    std::string alpha = "1.0"; ///< of pictures: how opaque they are
};

std::string Literal(float value);                  ///< shortest that reads back as the same float; 0.0 for a NaN
std::string Literal(const float value[3]);         ///< vec3
std::string LinearLiteral(const float written[3]); ///< vec3, of a colour as it is written
std::string VarName(std::string_view a, std::string_view b); ///< as VXShaderCompiler names variables

class Emitter
{
public:
    // --- Inputs of a node that is being written
    std::string Float(const TreeNode& node, const char* input);
    std::string Color(const TreeNode& node, const char* input);
    std::string Vector(const TreeNode& node, const char* input);
    Term Value(const TreeNode& node, const char* input) const;   ///< as it comes, not converted
    static float Plain(const TreeNode& node, const char* input); ///< of inputs that take no node
    static std::string_view Choice(const TreeNode& node, const char* input);
    static bool IsPlain(const TreeNode& node, const char* input, float value); ///< not connected, and all so

    // --- Lines
    void Line(const std::string& text);
    /// A variable of the node: its name is the node's with `what` behind it.
    std::string Declare(const TreeNode& node, const char* type, const char* what, const std::string& value);
    const std::string& Name(const TreeNode& node); ///< by its type and the order of first use

    // --- What the lines need
    void Use(Piece piece);
    bool Uses(Piece piece) const { return (mPieces >> int(piece) & 1) != 0; }
    std::string Sampler(const BString& file, bool linear); ///< of a picture
    std::string Coordinates(const TreeNode& node);         ///< of its U_Scale, V_Scale, U_Offset and V_Offset

    // --- Nodes
    /// Writes all that the inputs of `node` need and that is not written yet. False with problem set.
    bool Prepare(const TreeNode& node, std::initializer_list<const char*> inputs);

    std::string body;
    std::vector<GlslSource::Texture> textures;
    BString problem;

private:
    bool Fits(const TreeInput& input, const TreeNode& node); ///< false with problem set
    bool Write(const TreeNode& first);
    bool WriteOne(const TreeNode& node);

    std::uint32_t mPieces = 0;
    std::unordered_map<const TreeNode*, Term> mResults;
    std::unordered_map<const TreeNode*, std::string> mNames;
    std::map<std::string, int> mCounts; ///< of names, by type
};

/// How a type of node is written. @return its result: declared by the caller unless it is constant
using EmitNode = Term (*)(Emitter& emitter, const TreeNode& node);
struct NodeEmitter
{
    const char* type;
    EmitNode emit;
    bool (*uses)(const TreeNode& node, const char* input) = nullptr; ///< null: all inputs
};
const NodeEmitter* FindEmitter(std::string_view type); ///< null for none and for roots

// --- By concern, each in the file of that name
Term EmitSimpleColor(Emitter& emitter, const TreeNode& node); // EmitPictures.cpp
Term EmitImageMap(Emitter& emitter, const TreeNode& node);
Term EmitNormalMap(Emitter& emitter, const TreeNode& node);
Term EmitNoise(Emitter& emitter, const TreeNode& node); // EmitPatterns.cpp
Term EmitTiles(Emitter& emitter, const TreeNode& node);
Term EmitUv(Emitter& emitter, const TreeNode& node);
Term EmitPosition(Emitter& emitter, const TreeNode& node);
Term EmitFresnel(Emitter& emitter, const TreeNode& node);
Term EmitFacing(Emitter& emitter, const TreeNode& node);
Term EmitIllumination(Emitter& emitter, const TreeNode& node);
Term EmitMath(Emitter& emitter, const TreeNode& node); // EmitMath.cpp
Term EmitColorMath(Emitter& emitter, const TreeNode& node);
Term EmitBlender(Emitter& emitter, const TreeNode& node);
Term EmitClamp(Emitter& emitter, const TreeNode& node);
Term EmitRamp(Emitter& emitter, const TreeNode& node);
bool UsesMathInput(const TreeNode& node, const char* input);
bool UsesRampInput(const TreeNode& node, const char* input);

/// Writes the lines from a root's inputs to the colour of the fragment. EmitSurface.cpp
void EmitSurface(Emitter& emitter, const TreeNode& root, const GlslOptions& options);

std::string PieceText(const Emitter& emitter); ///< of all pieces in use. NodeText.cpp
} // namespace vx::glsl
