#include "host/tree/FixedMaterial.h"

#include "base/Vertex.h"
#include "host/image/ColorSpace.h"
#include "host/image/TextureTable.h"
#include "host/tree/ShaderTree.h"
#include "material/VXMaterial.h"

#include <algorithm>
#include <cmath>

namespace vx
{
namespace
{
// --- Stand-ins. What feeds an input is followed a few nodes deep, which bounds the work on trees whose nodes feed many
// inputs.

constexpr int kDeepest = 4;
constexpr float kGrey = 0.5f; // of patterns, and of pictures that are not shown: their mean is not known

VERTEX Linear(const TreeInput& input, int depth = 0);
float Number(const TreeInput& input, int depth = 0);

// One component of color_math, as its operation says.
float Calculated(std::string_view operation, float a, float b)
{
    if (operation == "add")
        return a + b;
    if (operation == "subtract")
        return a - b;
    if (operation == "divide")
        return b != 0 ? a / b : 0;
    if (operation == "minimum")
        return std::min(a, b);
    if (operation == "maximum")
        return std::max(a, b);
    if (operation == "screen")
        return 1 - (1 - a) * (1 - b);
    if (operation == "difference")
        return std::abs(a - b);
    return a * b;
}

const BString& FileOf(const TreeNode& picture) { return picture.Find("File")->File(); }

VERTEX Linear(const TreeNode& node, int depth)
{
    const std::string_view type = node.Type().name;
    const auto of = [&](const char* input) { return Linear(*node.Find(input), depth + 1); };
    if (depth > kDeepest)
        return {kGrey, kGrey, kGrey};
    if (type == "simple_color")
        return of("Color");
    if (type == "image_map" && FileOf(node).IsEmpty())
        return {1, 1, 1};
    if (type == "tiles")
        return of("Tile_Color");
    if (type == "blender")
    {
        const float share = std::clamp(Number(*node.Find("Blending"), depth + 1), 0.0f, 1.0f);
        return of("Input_1") * (1 - share) + of("Input_2") * share;
    }
    if (type == "color_math")
    {
        const VERTEX a = of("Color_1"), b = of("Color_2");
        const TreeInput& operation = *node.Find("Operation");
        const std::string_view word = ChoiceWord(operation.Type(), operation.Choice());
        return {Calculated(word, a.x, b.x), Calculated(word, a.y, b.y), Calculated(word, a.z, b.z)};
    }
    if (type == "ramp")
    {
        VERTEX sum;
        const int stops = int(node.Find("Stops")->Values()[0]), first = node.Type().InputIndex("Color_1");
        for (int i = 0; i < stops; ++i)
            sum = sum + Linear(node.At(first + i), depth + 1);
        return sum * (1 / float(stops));
    }
    return {kGrey, kGrey, kGrey};
}

// What an input comes to in linear light; numbers are as they are.
VERTEX Linear(const TreeInput& input, int depth)
{
    if (input.Node())
        return Linear(*input.Node(), depth);
    const float* const v = input.Values();
    if (input.Type().type == ValueType::Float)
        return {v[0], v[0], v[0]};
    return {LinearOf(v[0]), LinearOf(v[1]), LinearOf(v[2])};
}

// What it counts as where a number is wanted: of colours their luminance, by Rec. 709.
float Number(const TreeInput& input, int depth)
{
    const VERTEX c = Linear(input, depth);
    return c.x == c.y && c.y == c.z ? c.x : 0.2126f * c.x + 0.7152f * c.y + 0.0722f * c.z;
}

class Surface
{
public:
    explicit Surface(const TreeNode& root) : mRoot(root) {}

    const TreeInput& At(const char* name) const { return *mRoot.Find(name); }
    bool Connected(const char* name) const { return At(name).Node() != nullptr; }
    float Number(const char* name) const { return vx::Number(At(name)); }
    VERTEX Scaled(const char* color, const char* value) const { return Linear(At(color)) * Number(value); }

private:
    const TreeNode& mRoot;
};

// Differences can be below black.
void SetLinear(VXMaterialColor4& to, const VERTEX& c)
{
    to.Set(EncodedOf(std::max(c.x, 0.0f)), EncodedOf(std::max(c.y, 0.0f)), EncodedOf(std::max(c.z, 0.0f)), 1);
}

// A colour that is not scaled keeps its digits.
void SetScaled(VXMaterialColor4& to, const Surface& surface, const char* color, const char* value)
{
    const TreeInput& input = surface.At(color);
    if (!(surface.Number(value) == 1 && input.GetColor(to)))
        SetLinear(to, surface.Scaled(color, value));
}

const TreeNode* PictureOf(const TreeInput& input)
{
    const TreeNode* const node = input.Node();
    return node && std::string_view(node->Type().name) == "image_map" ? node : nullptr;
}
} // namespace

BString ApplyTree(const ShaderTree& tree, VXMaterial& material, TextureTable& textures)
{
    if (!tree.Root())
        return {};
    const Surface surface(*tree.Root());
    SetScaled(material.KdColor(), surface, "Diffuse_Color", "Diffuse_Value");
    // Diffuse shading made of nodes stands in for the diffuse colour; a plain one glows.
    const VERTEX alternate = Linear(surface.At("AlternateDiffuse"));
    const bool shaded = surface.Connected("AlternateDiffuse");
    if (shaded)
        SetLinear(material.KdColor(), surface.Scaled("Diffuse_Color", "Diffuse_Value") + alternate);
    SetScaled(material.KsColor(), surface, "Highlight_Color", "Highlight_Value");
    material.SetNs(surface.At("Highlight_Size").Values()[0]);
    SetLinear(material.KaColor(), surface.Scaled("Ambient_Color", "Ambient_Value") + (shaded ? VERTEX() : alternate) +
                                      Linear(surface.At("AlternateSpecular")));
    material.SetBumpStrength(surface.At("Bump_Strength").Values()[0]);

    // The rim alone says whether a surface is drawn among the transparent ones. What a node says may be above 0 in some
    // places whatever it is here.
    constexpr float kLeastDrawn = 0.0101f;
    const bool fed = surface.Connected("Transparency_Max") || surface.Connected("Transparency_Min");
    const float faceOn = surface.Number("Transparency_Min"), rim = surface.Number("Transparency_Max");
    material.SetTMin(faceOn);
    material.SetTMax(std::max(rim, faceOn > 0 || fed ? kLeastDrawn : 0));
    material.SetTExpo(surface.Number("Transparency_Falloff"));

    material.SetTextureIndex(-1);
    material.SetPreviewTexturePath("");
    const TreeNode* const picture = PictureOf(surface.At("Diffuse_Color"));
    const BString file = picture ? FileOf(*picture) : BString();
    if (file.IsEmpty())
        return {};
    const float value = EncodedOf(surface.Number("Diffuse_Value"));
    material.TextureColor().Set(value, value, value, 1);
    material.SetPreviewTexturePath(file);
    BString why;
    material.SetTextureIndex(textures.Add(BPath(file), why));
    return why.IsEmpty() ? BString() : "the texture " + file + " is not shown: it " + why;
}

// --- Who needs a program

namespace
{
constexpr const char* kDecisive[] = {
    "Diffuse_Color",      "Diffuse_Value",    "Highlight_Color",   "Highlight_Value",      "Ambient_Color",
    "Ambient_Value",      "Transparency_Max", "Transparency_Min",  "Transparency_Falloff", "Translucence_Color",
    "Translucence_Value", "AlternateDiffuse", "AlternateSpecular", "Gradient_Bump"};

// Why what feeds an input is more than a plain colour or picture; empty when it is not.
BString WhyNotSimple(const TreeInput& input)
{
    const TreeNode* const node = input.Node();
    if (!node)
        return {};
    const std::string_view type = node->Type().name;
    const BString named = BString(input.Type().name) + " is fed by '" + node->Name() + "'";
    if (type != "image_map" && type != "simple_color")
        return named + ", which is a node of type " + node->Type().name;
    struct Row
    {
        const char* name;
        double standard, tolerance;
    };
    constexpr Row kTransforms[] = {
        {"U_Scale", 1, 1e-6}, {"V_Scale", 1, 1e-6}, {"U_Offset", 0, 1e-5}, {"V_Offset", 0, 1e-5}};
    for (const Row& row : kTransforms)
        if (const TreeInput* const found = node->Find(row.name))
            if (const double off = std::abs(double(found->Values()[0]) - row.standard);
                off > row.tolerance || (row.standard == 0 && found->Values()[0] >= 1e-5f))
                return named + BString::Format(", whose %s is %g", row.name, double(found->Values()[0]));
    return {};
}
} // namespace

// Whether the input turns normals at all.
static bool HasRelief(const Surface& surface, const char* name)
{
    const TreeInput& input = surface.At(name);
    if (input.Type().type == ValueType::Vector)
    {
        const TreeInput* const file = input.Node() ? input.Node()->Find("File") : nullptr;
        return input.Node() ? !file || !file->File().IsEmpty() : input.Values()[0] != 0 || input.Values()[1] != 0;
    }
    const bool weighed = std::string_view(name) == "Bump";
    return input.Node() && !(weighed && surface.At("Bump_Strength").Values()[0] == 0);
}

BString LostWithoutShader(const ShaderTree& tree)
{
    if (!tree.Root())
        return {};
    const Surface surface(*tree.Root());
    for (const char* const relief : {"Bump", "Gradient_Bump", "Normal_Map"})
        if (HasRelief(surface, relief))
            return BString("relief from ") + relief;
    for (const char* const name : kDecisive)
        if (const TreeNode* const picture = PictureOf(surface.At(name)))
        {
            if (FileOf(*picture).IsEmpty())
                continue; // white
            if (std::string_view(name) != "Diffuse_Color")
                return BString("the picture in ") + name;
            for (const char* const setting : {"Gamma", "Filtering"})
                if (!picture->Find(setting)->IsStandard())
                    return BString("the ") + setting + " of the picture in " + name;
        }
    const auto isDark = [](const VERTEX& c) { return c.x <= 0 && c.y <= 0 && c.z <= 0; };
    if (!isDark(surface.Scaled("Ambient_Color", "Ambient_Value")))
        return "the light of Ambient_Color";
    if (!isDark(surface.Scaled("Translucence_Color", "Translucence_Value")))
        return "the light of Translucence_Color";
    for (const char* const name : {"AlternateDiffuse", "AlternateSpecular"})
        if (!isDark(Linear(surface.At(name))))
            return BString("the light of ") + name;
    return {};
}

ShaderDecision DecideShader(const ShaderTree& tree, const BString& materialName, std::size_t numLayers)
{
    if (materialName == "Camera")
        return {false, "materials named Camera never get a shader"};
    if (!tree.Root())
        return {false, "the tree has no surface"};
    for (const char* const name : kDecisive)
        if (const BString why = WhyNotSimple(*tree.Root()->Find(name)); !why.IsEmpty())
            return {true, why};
    if (numLayers > 1)
        return {true, "without one, the layers above the base would not be shown"};
    if (const BString lost = LostWithoutShader(tree); !lost.IsEmpty())
        return {true, "without one, " + lost + " would be lost"};
    return {false, "all that it consists of are plain values, colours and untransformed pictures"};
}
} // namespace vx
