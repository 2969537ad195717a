#include "host/glsl/Emitter.h"

#include <algorithm>
#include <array>

namespace vx::glsl
{
namespace
{
struct Operation
{
    const char* name;
    const char* text; ///< A and B stand for the inputs
    int needs = -1;   ///< a Piece
};

constexpr Operation kMath[] = {
    {"add", "A + B"},
    {"subtract", "A - B"},
    {"multiply", "A * B"},
    {"divide", "Divide(A, B)", int(Piece::Divide)},
    {"power", "Power(A, B)", int(Piece::Power)},
    {"minimum", "min(A, B)"},
    {"maximum", "max(A, B)"},
    {"modulo", "Modulo(A, B)", int(Piece::Modulo)},
    {"step", "step(B, A)"},
    {"sine", "sin(A)"},
    {"wave", "0.5 + 0.5 * sin(6.2831853 * A)"},
    {"absolute", "abs(A)"},
    {"fraction", "fract(A)"},
    {"floor", "floor(A)"},
    {"root", "sqrt(max(A, 0.0))"},
};

constexpr Operation kColorMath[] = {
    {"add", "A + B"},
    {"subtract", "A - B"},
    {"multiply", "A * B"},
    {"divide", "DivideColor(A, B)", int(Piece::DivideColor)},
    {"minimum", "min(A, B)"},
    {"maximum", "max(A, B)"},
    {"screen", "1.0 - (1.0 - A) * (1.0 - B)"},
    {"difference", "abs(A - B)"},
};

template <std::size_t N>
const Operation& Find(const Operation (&operations)[N], const TreeNode& node)
{
    const std::string_view name = Emitter::Choice(node, "Operation");
    const auto found = std::find_if(std::begin(operations), std::end(operations),
                                    [&](const Operation& operation) { return name == operation.name; });
    return found == std::end(operations) ? operations[0] : *found;
}

Term Apply(Emitter& emitter, const Operation& operation, const std::string& a, const std::string& b)
{
    if (operation.needs >= 0)
        emitter.Use(Piece(operation.needs));
    Term term;
    for (const char* c = operation.text; *c; ++c)
        term.text += *c == 'A' ? a : *c == 'B' ? b : std::string(1, *c);
    return term;
}
} // namespace

bool UsesMathInput(const TreeNode& node, const char* input)
{
    return std::string_view(input) != "Value_2" ||
           std::string_view(Find(kMath, node).text).find('B') != std::string_view::npos;
}

Term EmitMath(Emitter& emitter, const TreeNode& node)
{
    return Apply(emitter, Find(kMath, node), emitter.Float(node, "Value_1"),
                 UsesMathInput(node, "Value_2") ? emitter.Float(node, "Value_2") : "");
}

Term EmitColorMath(Emitter& emitter, const TreeNode& node)
{
    return Apply(emitter, Find(kColorMath, node), emitter.Color(node, "Color_1"), emitter.Color(node, "Color_2"));
}

Term EmitBlender(Emitter& emitter, const TreeNode& node)
{
    Term term;
    term.text = "mix(" + emitter.Color(node, "Input_1") + ", " + emitter.Color(node, "Input_2") + ", clamp(" +
                emitter.Float(node, "Blending") + ", 0.0, 1.0))";
    return term;
}

Term EmitClamp(Emitter& emitter, const TreeNode& node)
{
    Term term;
    term.text = "min(max(" + emitter.Float(node, "Value") + ", " + emitter.Float(node, "Minimum") + "), " +
                emitter.Float(node, "Maximum") + ")";
    return term;
}

// --- Ramps

static int NumStops(const TreeNode& node) { return std::clamp(int(Emitter::Plain(node, "Stops")), 2, 5); }

static std::string OfStop(const char* what, int stop) { return VarName(what, std::to_string(stop)); }

bool UsesRampInput(const TreeNode& node, const char* input)
{
    const std::string_view name = input;
    return !name.starts_with("Color_") || name.back() - '0' <= NumStops(node);
}

// Each stop takes over from the one before between their places.
Term EmitRamp(Emitter& emitter, const TreeNode& node)
{
    const std::string_view kind = Emitter::Choice(node, "Interpolation");
    const std::string at = emitter.Declare(node, "float", "at", emitter.Float(node, "Value"));
    float before = Emitter::Plain(node, "Position_1");
    std::string color = emitter.Color(node, "Color_1");
    const int stops = NumStops(node);
    for (int stop = 2; stop <= stops; ++stop)
    {
        const float place = std::max(Emitter::Plain(node, OfStop("Position", stop).c_str()), before);
        std::string share = "step(" + Literal(place) + ", " + at + ")";
        if (kind != "steps" && place > before)
            share = kind == "smooth"
                        ? "smoothstep(" + Literal(before) + ", " + Literal(place) + ", " + at + ")"
                        : "clamp((" + at + " - " + Literal(before) + ") / " + Literal(place - before) + ", 0.0, 1.0)";
        color = "mix(" + color + ", " + emitter.Color(node, OfStop("Color", stop).c_str()) + ", " + share + ")";
        if (stop < stops)
            color = emitter.Declare(node, "vec3", OfStop("to", stop).c_str(), color);
        before = place;
    }
    Term term;
    term.text = color;
    return term;
}
} // namespace vx::glsl
