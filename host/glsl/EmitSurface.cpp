#include "host/glsl/Emitter.h"
#include "host/image/ColorSpace.h"

#include <algorithm>

namespace vx::glsl
{
namespace
{
/// A colour and its factor, in linear light.
struct Product
{
    std::string pattern; ///< the colour where a node gives it; otherwise empty
    std::string factor;  ///< of the pattern, or the whole colour where there is none
    std::string Text() const
    {
        if (pattern.empty())
            return factor;
        return factor == "vec3(1.0)" ? pattern : pattern + " * " + factor;
    }
};

// Factors count in linear light: half of a colour is half its light.
Product ProductOf(Emitter& emitter, const TreeNode& root, const char* colorInput, const char* valueInput)
{
    const Term color = emitter.Value(root, colorInput), value = emitter.Value(root, valueInput);
    const bool plainValue = root.Find(valueInput)->Node() == nullptr;
    Product out;
    if (plainValue)
    {
        float factor[3];
        for (int c = 0; c < 3; ++c)
            factor[c] = value.value[0] * (color.constant ? LinearOf(color.value[c]) : 1);
        out.factor = Literal(factor);
    }
    else
    {
        const std::string number = "max(" + emitter.Float(root, valueInput) + ", 0.0)";
        out.factor = color.constant ? LinearLiteral(color.value) + " * " + number : "vec3(" + number + ")";
    }
    if (!color.constant)
        out.pattern = emitter.Color(root, colorInput);
    return out;
}

bool IsBlack(const TreeNode& root, const char* colorInput, const char* valueInput)
{
    return Emitter::IsPlain(root, colorInput, 0) || Emitter::IsPlain(root, valueInput, 0);
}

// A share of 0..1. Plain ones are in that range already.
std::string Share(Emitter& emitter, const TreeNode& root, const char* input)
{
    const std::string text = emitter.Float(root, input);
    return root.Find(input)->Node() ? "clamp(" + text + ", 0.0, 1.0)" : text;
}

/// Lines of one surface, in the order in which they stand.
class Surface
{
public:
    Surface(Emitter& emitter, const TreeNode& root) : e(emitter), mRoot(root) {}

    // The normal comes first: what else depends on it sees it turned. Nodes that feed it see it as it was.
    void Normal()
    {
        e.Line("vec3 normal = Facing(uFlat == 1 ? vec3(0.0) : vNormal);");
        const TreeNode* const map = mRoot.Find("Normal_Map")->Node();
        const float* const plain = mRoot.Find("Normal_Map")->Values();
        if (map || plain[0] != 0 || plain[1] != 0)
        {
            if (!e.Prepare(mRoot, {"Normal_Map"}))
                return;
            if (!e.Value(mRoot, "Normal_Map").constant || !map)
            {
                e.Use(Piece::Mapped);
                e.Line("normal = Mapped(normal, " + e.Vector(mRoot, "Normal_Map") + ");");
            }
        }
        Bump();
    }

    void Colors()
    {
        if (!e.Prepare(mRoot, {"Diffuse_Color", "Diffuse_Value"}))
            return;
        const Product diffuse = ProductOf(e, mRoot, "Diffuse_Color", "Diffuse_Value");
        const std::string side = "Sided(" + diffuse.factor + ", uBack, normal)";
        e.Line("vec3 Diffuse_result = " + (diffuse.pattern.empty() ? side : diffuse.pattern + " * " + side) + ";");
        Light("Highlight", "Highlight_Color", "Highlight_Value", mShine);
        Light("Translucence", "Translucence_Color", "Translucence_Value", mThrough);
        Light("Ambient", "Ambient_Color", "Ambient_Value", mGlow);
        Added("AlternateDiffuse");
        Added("AlternateSpecular");
    }

    void Shading()
    {
        e.Line("vec3 color;");
        e.Line("if (uTones > 0)");
        e.Line("    color = Toned(normal, Diffuse_result, uTones)" + mGlow + ";");
        e.Line("else");
        e.Line("{");
        e.Line("    vec3 diffuse, specular;");
        e.Line("    GatherLight(normal, " +
               Literal(std::clamp(Emitter::Plain(mRoot, "Highlight_Size"), 1.0f, 1000.0f)) + ", diffuse, specular);");
        if (!mThrough.empty())
        {
            e.Line("    vec3 through, unseen;");
            e.Line("    GatherLight(-normal, 1.0, through, unseen);");
        }
        e.Line("    color = Shoulder(Diffuse_result * diffuse" + (mShine.empty() ? "" : mShine + " * specular") +
               (mThrough.empty() ? "" : mThrough + " * through") + mGlow + ");");
        e.Line("}");
        e.Line("oColor.rgb = Encoded(color) + Dither() / 255.0;");
    }

    void Opacity(float least)
    {
        if (!e.Prepare(mRoot, {"Transparency_Max", "Transparency_Min", "Transparency_Falloff"}))
            return;
        const std::string alpha = e.Value(mRoot, "Diffuse_Color").alpha;
        if (alpha == "1.0" && Emitter::IsPlain(mRoot, "Transparency_Min", 0) &&
            Emitter::IsPlain(mRoot, "Transparency_Max", 0))
            e.Line("oColor.a = 1.0;");
        else
            Clear(alpha, least);
        e.body += "#ifdef DEPTH_CUE\n    oColor = Cued(oColor, -vPosition.z);\n#endif\n";
    }

private:
    void Clear(const std::string& alpha, float least)
    {
        e.Use(Piece::Alpha);
        e.Line("if (uAlphaPass == 1)");
        e.Line("    oColor.a = Alpha(normal, " + alpha + ", " + Share(e, mRoot, "Transparency_Min") + ", " +
               Share(e, mRoot, "Transparency_Max") + ", " + e.Float(mRoot, "Transparency_Falloff") + ", " +
               Literal(std::clamp(least, 0.0f, 1.0f)) + ");");
        if (alpha == "1.0")
        {
            e.Line("else");
            e.Line("    oColor.a = 1.0;");
            return;
        }
        e.Line("else");
        e.Line("{");
        e.Line("    if (" + alpha + " < 0.5)");
        e.Line("        discard; // cut-outs, such as leaves");
        e.Line("    oColor.a = 1.0;");
        e.Line("}");
    }

    void Bump()
    {
        const bool bumped = mRoot.Find("Bump")->Node() && !Emitter::IsPlain(mRoot, "Bump_Strength", 0);
        const bool gradient = mRoot.Find("Gradient_Bump")->Node() != nullptr;
        if (!bumped && !gradient)
            return; // a plain height has no slope
        std::string height;
        if (bumped && e.Prepare(mRoot, {"Bump"}))
            height = e.Float(mRoot, "Bump") + " * " + Literal(Emitter::Plain(mRoot, "Bump_Strength"));
        if (gradient && e.Prepare(mRoot, {"Gradient_Bump"}))
            height += (height.empty() ? "" : " + ") + e.Float(mRoot, "Gradient_Bump");
        if (!e.problem.IsEmpty())
            return;
        e.Use(Piece::Bumped);
        e.Line("normal = Bumped(normal, " + height + ");");
    }

    // A variable of its own, and " + name" for the sum of lights; nothing where it is black.
    void Light(const char* name, const char* color, const char* value, std::string& sum)
    {
        if (IsBlack(mRoot, color, value) || !e.Prepare(mRoot, {color, value}))
            return;
        const std::string result = VarName(name, "result");
        e.Line("vec3 " + result + " = " + ProductOf(e, mRoot, color, value).Text() + ";");
        sum += " + " + result;
    }

    void Added(const char* input)
    {
        if (Emitter::IsPlain(mRoot, input, 0) || !e.Prepare(mRoot, {input}))
            return;
        const std::string result = VarName(input, "result");
        e.Line("vec3 " + result + " = " + e.Color(mRoot, input) + ";");
        mGlow += " + " + result;
    }

    Emitter& e;
    const TreeNode& mRoot;
    std::string mShine, mThrough, mGlow; ///< what stands in the sum of lights
};
} // namespace

void EmitSurface(Emitter& emitter, const TreeNode& root, const GlslOptions& options)
{
    Surface surface(emitter, root);
    surface.Normal();
    if (emitter.problem.IsEmpty())
        surface.Colors();
    if (emitter.problem.IsEmpty())
        surface.Shading();
    if (emitter.problem.IsEmpty())
        surface.Opacity(options.minOpacity);
}
} // namespace vx::glsl
