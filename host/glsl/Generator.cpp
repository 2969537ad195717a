#include "host/glsl/Generator.h"

#include "host/glsl/Emitter.h"
#include "host/glsl/ShadingText.h"

#include <array>
#include <cstdint>
#include <new>

namespace vx
{
namespace
{
using glsl::Emitter;
using glsl::Piece;

constexpr const char* kHead = "#version 130\n#extension GL_ARB_uniform_buffer_object : require\n";

/// What goes from the vertices to the fragments.
struct Varying
{
    int piece; ///< that needs it; -1: always there
    const char* name;
    const char* attributes; ///< lines of the vertex text
    const char* text;
};

constexpr Varying kVaryings[] = {
    {-1, "vec3 vPosition", "in vec3 aPosition;\n", "    vPosition = (uModelView * vec4(aPosition, 1.0)).xyz;\n"},
    {-1, "vec3 vNormal", "in vec3 aNormal;\n", "    vNormal = uNormalMatrix * aNormal;\n"},
    {int(Piece::UV), "vec2 vUV", "in vec2 aUV;\n", "    vUV = aUV;\n"},
    {int(Piece::Place), "vec3 vPlace", "", "    vPlace = aPosition;\n"},
    {int(Piece::Tangent), "vec3 vTangent", "in vec3 aTangent;\n", "    vTangent = mat3(uModelView) * aTangent;\n"},
    {int(Piece::Tangent), "vec3 vBinormal", "in vec3 aBinormal;\n", "    vBinormal = mat3(uModelView) * aBinormal;\n"},
};

std::string VertexText(const Emitter& emitter)
{
    std::string attributes, varyings, body;
    for (const Varying& v : kVaryings)
        if (v.piece < 0 || emitter.Uses(Piece(v.piece)))
        {
            attributes += v.attributes;
            varyings += std::string("out ") + v.name + ";\n";
            body += v.text;
        }
    return std::string(kHead) + "\n" + attributes +
           "uniform mat4 uModelView;\nuniform mat3 uNormalMatrix;\nuniform mat4 uToClip;\n" + varyings +
           "invariant gl_Position; // so that lines lie on the surface\n\nvoid main()\n{\n" + body +
           "    gl_Position = uToClip * vec4(aPosition, 1.0);\n}\n";
}

std::string FragmentText(const Emitter& emitter)
{
    std::string text = std::string(kHead) + "\n";
    for (const Varying& v : kVaryings)
        if (v.piece < 0 || emitter.Uses(Piece(v.piece)))
            text += std::string("in ") + v.name + ";\n";
    text += "out vec4 oColor;\n\nuniform int uFlat;\nuniform int uTones;\nuniform vec3 uBack;\n";
    if (emitter.Uses(Piece::Alpha))
        text += "uniform int uAlphaPass;\n";
    if (emitter.Uses(Piece::Bumped))
        text += "uniform mat4 uModelView;\n";
    for (const GlslSource::Texture& texture : emitter.textures)
        if (texture.type != "none")
            text += "uniform " + texture.type + " " + texture.sampler + ";\n";
    for (const char* const piece :
         {text::kFrame, text::kEncoded, text::kDither, "\n#ifdef DEPTH_CUE", text::kBackground, text::kCued, "#endif\n",
          text::kFacing, text::kToViewer, text::kSided, text::kToLight, text::kAddLight, text::kAmbient,
          text::kGatherLight, text::kShoulder, text::kToned})
        text += piece;
    return text + glsl::PieceText(emitter) + "\nvoid main()\n{\n" + emitter.body + "}\n";
}
} // namespace

static GlslSource Generated(const ShaderTree& tree, const GlslOptions& options)
{
    GlslSource source;
    const TreeNode* const root = tree.Root();
    if (!root)
        source.problem = "the tree has no root";
    else if (!root->Type().IsRoot())
        source.problem = BString("a node of type ") + root->Type().name + " is no surface";
    if (!source.problem.IsEmpty())
        return source;

    Emitter emitter;
    EmitSurface(emitter, *root, options);
    source.problem = emitter.problem;
    if (!source.problem.IsEmpty())
        return source;
    source.vertex = VertexText(emitter);
    source.fragment = FragmentText(emitter);
    source.textures = std::move(emitter.textures);
    source.uniforms = {
        {"uModelView", "mat4"}, {"uNormalMatrix", "mat3"}, {"uToClip", "mat4"},          {"uFlat", "int"},
        {"uTones", "int"},      {"uBack", "vec3"},         {"uBackPicture", "sampler2D"}};
    if (emitter.Uses(Piece::Alpha))
        source.uniforms.push_back({"uAlphaPass", "int"});
    source.usesTangents = emitter.Uses(Piece::Tangent);
    source.usesUVs = emitter.Uses(Piece::UV);
    return source;
}

GlslSource GenerateGlsl(const ShaderTree& tree, const GlslOptions& options)
{
    GlslSource source;
    try
    {
        source = Generated(tree, options);
    }
    catch (const std::bad_alloc&)
    {
        source.problem = "out of memory";
    }
    return source;
}

std::string WithDefine(const std::string& text, const char* name)
{
    const std::size_t head = std::string_view(kHead).size(); // an empty line follows, so that lines keep their numbers
    return text.substr(0, head) + "#define " + name + text.substr(head);
}

// --- The key

namespace
{
/// FNV-1a of 128 bits: its offset and its prime, 2^88 + 0x13B, are those of G. Fowler, L. C. Noll and K.-P. Vo.
class Hash128
{
public:
    void Add(std::string_view bytes)
    {
        for (const char c : bytes)
        {
            mLow ^= std::uint8_t(c);
            Multiply();
        }
    }

    void AddText(std::string_view bytes) ///< with its length, so that no two lists of texts run together
    {
        Add(std::to_string(bytes.size()) + ":");
        Add(bytes);
    }

    BString Hex() const
    {
        return BString::Format("%016llx%016llx", static_cast<unsigned long long>(mHigh),
                               static_cast<unsigned long long>(mLow));
    }

private:
    // The low half times 0x13B carries into the high one; the low half times 2^88 is there alone.
    void Multiply()
    {
        constexpr std::uint64_t kFactor = 0x13B;
        const std::uint64_t low = (mLow & 0xFFFFFFFF) * kFactor, high = (mLow >> 32) * kFactor + (low >> 32);
        mHigh = mHigh * kFactor + (high >> 32) + (mLow << 24);
        mLow = high << 32 | (low & 0xFFFFFFFF);
    }

    std::uint64_t mHigh = 0x6C62272E07BB0142, mLow = 0x62B821756295C58D;
};
} // namespace

BString GlslSource::Hash() const
{
    Hash128 hash;
    hash.AddText(vertex);
    hash.AddText(fragment);
    for (const Texture& texture : textures)
    {
        hash.AddText(texture.sampler);
        hash.AddText(texture.type);
        hash.AddText(texture.BindingFile());
    }
    return hash.Hex();
}
} // namespace vx
