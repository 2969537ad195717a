#include "host/glsl/Emitter.h"

#include <algorithm>

namespace vx::glsl
{
// Name of one of several components, scaled and moved.
static Term Variable(const TreeNode& node, const std::string& vector)
{
    const float scale = Emitter::Plain(node, "Scale"), offset = Emitter::Plain(node, "Offset");
    Term term;
    const std::string_view component = Emitter::Choice(node, "Component");
    term.text = vector + "." + (component == "u" ? "x" : component == "v" ? "y" : std::string(component));
    if (scale != 1)
        term.text += " * " + Literal(scale);
    if (offset != 0)
        term.text += " + " + Literal(offset);
    return term;
}

Term EmitUv(Emitter& emitter, const TreeNode& node)
{
    emitter.Use(Piece::UV);
    return Variable(node, "vUV");
}

Term EmitPosition(Emitter& emitter, const TreeNode& node)
{
    emitter.Use(Piece::Place);
    return Variable(node, "vPlace");
}

Term EmitNoise(Emitter& emitter, const TreeNode& node)
{
    constexpr struct
    {
        const char* mode;
        Piece piece;
        const char* function;
    } kModes[] = {{"smooth", Piece::SmoothNoise, "SmoothNoise"},
                  {"absolute", Piece::AbsoluteNoise, "AbsoluteNoise"},
                  {"ridged", Piece::RidgedNoise, "RidgedNoise"},
                  {"lattice", Piece::LatticeNoise, "LatticeNoise"},
                  {"radial", Piece::RadialNoise, "RadialNoise"}};
    const bool onUV = Emitter::Choice(node, "Coordinates") == "uv";
    const float scale = Emitter::Plain(node, "Scale");
    const float scales[3] = {scale * Emitter::Plain(node, "X_Scale"), scale * Emitter::Plain(node, "Y_Scale"),
                             scale * Emitter::Plain(node, "Z_Scale")};
    emitter.Use(onUV ? Piece::UV : Piece::Place);
    const std::string place = emitter.Declare(
        node, "vec3", "place", std::string(onUV ? "vec3(vUV, 0.0)" : "vPlace") + " * " + Literal(scales));
    const auto* mode = std::find_if(std::begin(kModes), std::end(kModes),
                                    [&](const auto& m) { return Emitter::Choice(node, "Mode") == m.mode; });
    if (mode == std::end(kModes))
        mode = kModes;
    emitter.Use(mode->piece);
    Term term;
    term.text = std::string(mode->function) + "(" + place + ", " +
                std::to_string(int(Emitter::Plain(node, "Octaves"))) + ", " + Literal(Emitter::Plain(node, "Gain")) +
                ")";
    return term;
}

Term EmitTiles(Emitter& emitter, const TreeNode& node)
{
    emitter.Use(Piece::UV);
    emitter.Use(Piece::Tiles);
    const auto plain = [&](const char* input) { return Literal(Emitter::Plain(node, input)); };
    const std::string tile = emitter.Declare(node, "float", "tile",
                                             "Tiles(vUV * vec2(" + plain("U_Count") + ", " + plain("V_Count") + "), " +
                                                 plain("Gap") + ", " + plain("Softness") + ", " + plain("Shift") + ")");
    Term term;
    term.text =
        "mix(" + emitter.Color(node, "Grout_Color") + ", " + emitter.Color(node, "Tile_Color") + ", " + tile + ")";
    return term;
}

// --- How the surface stands to the viewer and to the lights

Term EmitFresnel(Emitter& emitter, const TreeNode& node)
{
    emitter.Use(Piece::Fresnel);
    const float index = Emitter::Plain(node, "Index"), root = (index - 1) / (index + 1);
    Term term;
    term.text = "Fresnel(normal, " + Literal(root * root) + ")";
    return term;
}

Term EmitFacing(Emitter&, const TreeNode& node)
{
    const float power = Emitter::Plain(node, "Power");
    Term term;
    term.text = "abs(dot(normal, ToViewer()))";
    if (power != 1)
        term.text = "pow(" + term.text + ", " + Literal(power) + ")";
    return term;
}

Term EmitIllumination(Emitter& emitter, const TreeNode&)
{
    emitter.Use(Piece::Illumination);
    Term term;
    term.text = "Illumination(normal)";
    return term;
}
} // namespace vx::glsl
