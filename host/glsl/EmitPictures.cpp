#include "host/glsl/Emitter.h"

namespace vx::glsl
{
Term EmitSimpleColor(Emitter& emitter, const TreeNode& node) { return emitter.Value(node, "Color"); }

// A picture's texel at the node's coordinates.
static std::string Texel(Emitter& emitter, const TreeNode& node, bool linear, bool nearest)
{
    const std::string sampler = emitter.Sampler(node.Find("File")->File(), linear);
    const std::string at = emitter.Coordinates(node);
    if (!nearest)
        return "texture2D(" + sampler + ", " + at + ")";
    emitter.Use(Piece::NearestTexel);
    return "NearestTexel(" + sampler + ", " + at + ")";
}

// Colours arrive decoded from sRGB by the hardware, filtered in linear light as in the fixed surfaces; other gammas are
// computed here.
Term EmitImageMap(Emitter& emitter, const TreeNode& node)
{
    if (node.Find("File")->File().IsEmpty())
        return {"vec3(1.0)", true, {1, 1, 1}};
    const float gamma = Emitter::Plain(node, "Gamma");
    const bool standard = gamma == 2.2f;
    const bool nearest = Emitter::Choice(node, "Filtering") == "nearest";
    const std::string texel = emitter.Declare(node, "vec4", "texel", Texel(emitter, node, !standard, nearest));
    Term term;
    term.text = texel + ".rgb";
    if (!standard && gamma != 1)
        term.text = "pow(" + term.text + ", vec3(" + Literal(gamma) + "))";
    term.alpha = texel + ".a";
    return term;
}

// Of 8 bits, 128 is zero: flat pictures turn nothing.
Term EmitNormalMap(Emitter& emitter, const TreeNode& node)
{
    if (node.Find("File")->File().IsEmpty())
        return {"vec3(0.0, 0.0, 1.0)", true, {0, 0, 1}};
    const std::string texel = emitter.Declare(node, "vec3", "texel", Texel(emitter, node, true, false) + ".rgb");
    const float strength = Emitter::Plain(node, "Strength");
    const bool down = Emitter::Choice(node, "Green") == "down";
    const float factor[3] = {strength, down ? -strength : strength, 1};
    Term term;
    term.text = texel + " * (255.0 / 127.0) - 128.0 / 127.0";
    if (strength != 1 || down)
        term.text = "(" + term.text + ") * " + Literal(factor);
    return term;
}
} // namespace vx::glsl
