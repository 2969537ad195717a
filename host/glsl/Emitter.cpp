#include "host/glsl/Emitter.h"

#include "host/image/ColorSpace.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace vx::glsl
{
namespace
{
// One unit of 16, which all drivers have, belongs to the background.
constexpr std::size_t kMostTextures = 15;

constexpr NodeEmitter kEmitters[] = {
    {"simple_color", EmitSimpleColor},
    {"image_map", EmitImageMap},
    {"normal_map", EmitNormalMap},
    {"noise", EmitNoise},
    {"tiles", EmitTiles},
    {"uv", EmitUv},
    {"position", EmitPosition},
    {"fresnel", EmitFresnel},
    {"facing", EmitFacing},
    {"illumination", EmitIllumination},
    {"math", EmitMath, UsesMathInput},
    {"color_math", EmitColorMath},
    {"blender", EmitBlender},
    {"clamp", EmitClamp},
    {"ramp", EmitRamp, UsesRampInput},
};

const char* GlslType(ValueType type) { return type == ValueType::Float ? "float" : "vec3"; }

// Input by a name that the table of node types has.
const TreeInput& In(const TreeNode& node, const char* name) { return *node.Find(name); }
} // namespace

const NodeEmitter* FindEmitter(std::string_view type)
{
    const auto found =
        std::find_if(std::begin(kEmitters), std::end(kEmitters), [&](const NodeEmitter& e) { return type == e.type; });
    return found == std::end(kEmitters) ? nullptr : found;
}

// --- Words

std::string Literal(float value)
{
    if (std::isnan(value) || value == 0)
        return "0.0"; // a negative zero too
    value = std::clamp(value, -3e38f, 3e38f);
    char text[64];
    const std::to_chars_result end = std::to_chars(std::begin(text), std::end(text), value, std::chars_format::fixed);
    std::string out(text, end.ptr);
    return out.find('.') == std::string::npos ? out + ".0" : out;
}

std::string Literal(const float value[3])
{
    if (value[0] == value[1] && value[1] == value[2])
        return "vec3(" + Literal(value[0]) + ")";
    return "vec3(" + Literal(value[0]) + ", " + Literal(value[1]) + ", " + Literal(value[2]) + ")";
}

std::string LinearLiteral(const float written[3])
{
    const float linear[3] = {LinearOf(written[0]), LinearOf(written[1]), LinearOf(written[2])};
    return Literal(linear);
}

std::string VarName(std::string_view a, std::string_view b) { return std::string(a) + "_" + std::string(b); }

// --- Inputs

Term Emitter::Value(const TreeNode& node, const char* name) const
{
    const TreeInput& input = In(node, name);
    if (input.Node())
        return mResults.at(input.Node());
    Term term;
    std::copy_n(input.Values(), 3, term.value);
    term.constant = true;
    switch (input.Type().type)
    {
    case ValueType::Float:
        term.text = Literal(term.value[0]);
        break;
    case ValueType::Color:
        term.text = LinearLiteral(term.value);
        break;
    default:
        term.text = Literal(term.value);
    }
    return term;
}

static ValueType TypeOf(const TreeNode& node, const char* name)
{
    const TreeInput& input = In(node, name);
    return input.Node() ? input.Node()->Type().result : input.Type().type;
}

std::string Emitter::Float(const TreeNode& node, const char* input)
{
    const std::string text = Value(node, input).text;
    return TypeOf(node, input) == ValueType::Color ? "dot(" + text + ", vec3(0.2126, 0.7152, 0.0722))" : text;
}

std::string Emitter::Color(const TreeNode& node, const char* input)
{
    const std::string text = Value(node, input).text;
    return TypeOf(node, input) == ValueType::Float ? "vec3(" + text + ")" : text;
}

std::string Emitter::Vector(const TreeNode& node, const char* input) { return Value(node, input).text; }

float Emitter::Plain(const TreeNode& node, const char* input) { return In(node, input).Values()[0]; }

std::string_view Emitter::Choice(const TreeNode& node, const char* input)
{
    const TreeInput& in = In(node, input);
    return ChoiceWord(in.Type(), in.Choice());
}

bool Emitter::IsPlain(const TreeNode& node, const char* name, float value)
{
    const TreeInput& input = In(node, name);
    const int count = input.Type().type == ValueType::Float ? 1 : 3;
    return !input.Node() && std::count(input.Values(), input.Values() + count, value) == count;
}

// --- Lines

void Emitter::Line(const std::string& text) { body += "    " + text + "\n"; }

std::string Emitter::Declare(const TreeNode& node, const char* type, const char* what, const std::string& value)
{
    const std::string name = VarName(Name(node), what);
    Line(std::string(type) + " " + name + " = " + value + ";");
    return name;
}

const std::string& Emitter::Name(const TreeNode& node)
{
    std::string& name = mNames[&node];
    if (name.empty())
        name = node.Type().name + std::to_string(++mCounts[node.Type().name]);
    return name;
}

// --- What the lines need

void Emitter::Use(Piece piece)
{
    if (Uses(piece))
        return;
    mPieces |= 1u << int(piece);
    switch (piece)
    {
    case Piece::Volume: // always the first place
        if (textures.empty())
            textures.emplace_back();
        textures[0] = {"texture0", "sampler3D", BString(), 1, true};
        break;
    case Piece::SmoothNoise:
    case Piece::AbsoluteNoise:
    case Piece::RidgedNoise:
        Use(Piece::Noise);
        break;
    case Piece::LatticeNoise:
        Use(Piece::Cell);
        break;
    case Piece::Noise:
    case Piece::Cell:
        Use(Piece::Volume);
        break;
    case Piece::RadialNoise:
        Use(Piece::SmoothNoise);
        break;
    case Piece::Mapped:
        Use(Piece::UV);
        Use(Piece::Tangent);
        break;
    default:
        break;
    }
}

// The shader engine binds the texture in place i on unit i, but the one in place 1 on unit 0, like the one in place 0;
// and before it binds the noise volume, on unit 1, it lets go of all pictures. So the volume, or nothing, stands in
// place 0, and pictures follow on units 0, 2, 3...
std::string Emitter::Sampler(const BString& file, bool linear)
{
    for (const GlslSource::Texture& texture : textures)
        if (texture.type == "sampler2D" && texture.file == file && texture.linear == linear)
            return texture.sampler;
    if (textures.empty())
        textures.push_back({"texture0", "none", BString(), 0, false});
    const int place = int(textures.size());
    if (textures.size() == kMostTextures)
        problem = BString::Format("more than %d pictures", int(kMostTextures) - 1);
    else
        textures.push_back({"texture" + std::to_string(place), "sampler2D", file, place == 1 ? 0 : place, linear});
    return textures.back().sampler;
}

std::string Emitter::Coordinates(const TreeNode& node)
{
    Use(Piece::UV);
    const float scale[2] = {Plain(node, "U_Scale"), Plain(node, "V_Scale")};
    const float offset[2] = {Plain(node, "U_Offset"), Plain(node, "V_Offset")};
    const auto pair = [](const float v[2]) { return "vec2(" + Literal(v[0]) + ", " + Literal(v[1]) + ")"; };
    std::string text = "vUV";
    if (scale[0] != 1 || scale[1] != 1)
        text += " * " + pair(scale);
    if (offset[0] != 0 || offset[1] != 0)
        text += " + " + pair(offset);
    return text;
}

// --- Nodes

bool Emitter::Prepare(const TreeNode& node, std::initializer_list<const char*> inputs)
{
    for (const char* const name : inputs)
    {
        const TreeInput& input = In(node, name);
        if (input.Node() && !(Fits(input, node) && Write(*input.Node())))
            return false;
    }
    return true;
}

bool Emitter::Fits(const TreeInput& input, const TreeNode& node)
{
    const TreeNode& from = *input.Node();
    if (CanFeed(from.Type().result, input.Type().type))
        return true;
    problem = BString::Format("a %s of a node %s feeds the input %s of a node %s", NameOf(from.Type().result),
                              from.Type().name, input.Type().name, node.Type().name);
    return false;
}

// Depth first, by a stack of its own, so that each node stands behind what it needs and is written once.
bool Emitter::Write(const TreeNode& first)
{
    struct Step
    {
        const TreeNode* node;
        int nextInput;
    };
    if (mResults.contains(&first))
        return true;
    std::vector<Step> way = {{&first, 0}};
    std::unordered_map<const TreeNode*, bool> open = {{&first, true}};
    while (!way.empty())
    {
        Step& step = way.back();
        const TreeNode& node = *step.node;
        if (step.nextInput == node.NumInputs())
        {
            if (!WriteOne(node))
                return false;
            open[&node] = false;
            way.pop_back();
            continue;
        }
        const TreeInput& input = node.At(step.nextInput++);
        const NodeEmitter* const emitter = FindEmitter(node.Type().name);
        const TreeNode* const next = input.Node();
        if (!next || mResults.contains(next) || (emitter && emitter->uses && !emitter->uses(node, input.Type().name)))
            continue;
        if (open[next])
        {
            problem = BString("a cycle of nodes goes through \"") + next->Name() + "\"";
            return false;
        }
        if (!Fits(input, node))
            return false;
        open[next] = true;
        way.push_back({next, 0});
    }
    return true;
}

bool Emitter::WriteOne(const TreeNode& node)
{
    const NodeEmitter* const emitter = FindEmitter(node.Type().name);
    if (!emitter)
        problem = BString("nodes of type ") + node.Type().name + " have no shader text";
    else if (mResults.size() == std::size_t(kMostNodes))
        problem = BString::Format("more than %d nodes", kMostNodes);
    if (!problem.IsEmpty())
        return false;
    Term term = emitter->emit(*this, node);
    if (!term.constant)
        term.text = Declare(node, GlslType(node.Type().result), "result", term.text);
    mResults[&node] = term;
    return problem.IsEmpty();
}
} // namespace vx::glsl
