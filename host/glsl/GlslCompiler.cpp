#include "host/glsl/GlslCompiler.h"

#include "draw/VXSceneDrawOptions.h"
#include "engine/VXScene.h"
#include "host/gl/FrameBlock.h"
#include "host/gl/VXGLDrawEngine.h"
#include "host/tree/FixedMaterial.h"
#include "host/tree/ShaderTree.h"
#include "material/VXMaterial.h"
#include "shader/VXShaderBinding.h"
#include "shader/VXShaderDebug.h"
#include "shader/VXShaderEngine.h"

#include <GL/glew.h>

#include <new>

namespace vx
{
static const ShaderTree* TreeOf(const VXMaterial& material, std::int64_t layer)
{
    return dynamic_cast<const ShaderTree*>(material.ShaderTree(layer));
}

GlslOptions GlslOptionsFor(VXSceneDrawEngine& engine)
{
    // The same floor as the fixed surfaces have.
    return {engine.DrawOptions()->MinOpacityDisplayGL(false)};
}

void ComputeTreeHashes(VXMaterial& material, const GlslOptions& options)
{
    for (std::int64_t layer = 0; layer < material.NumLayers(); ++layer)
    {
        BString key;
        if (const ShaderTree* const tree = TreeOf(material, layer))
        {
            const GlslSource source = GenerateGlsl(*tree, options);
            key = source.problem.IsEmpty() ? source.Hash() : "without text: " + source.problem;
            // Alone the same tree may do without the program that it needs as one of several.
            if (material.NumLayers() > 1)
                key += ", layered";
        }
        material.Layer(layer)->SetTreeHash(key.CString());
    }
}

// --- Programs

static BString FirstLine(const BString& text)
{
    const std::int64_t end = text.Find("\n");
    return end < 0 ? text : text.Left(end);
}

// Handles of OpenGL are numbers; the record of a program asks for pointers.
static void* Handle(GLuint name) { return reinterpret_cast<void*>(std::uintptr_t(name)); }

GlslProgram::GlslProgram(VXGLDrawEngine& engine) : mEngine(engine) {}

GlslProgram::~GlslProgram()
{
    for (std::unique_ptr<Program>& linked : mLinked)
        mEngine.Retire(this, std::move(linked));
}

BString GlslProgram::Build(const BString& name, const GlslSource& source)
{
    mName = name;
    SetVertexProgramSource(source.vertex);
    SetFragmentProgramSource(source.fragment);
    mUsesTangents = source.usesTangents;
    mUsesUVs = source.usesUVs;
    return TakeBindings(source) ? Link(WantsCue()) : name + ": out of memory";
}

bool GlslProgram::TakeBindings(const GlslSource& source)
{
    for (const GlslSource::Texture& texture : source.textures)
    {
        mUnits.push_back(texture.unit);
        if (!AddTexture(new VXShaderBindingTexture(texture.sampler, texture.type, texture.BindingFile())))
            return false;
    }
    for (const GlslSource::Uniform& uniform : source.uniforms)
        if (!AddUniform(new VXShaderBindingUniform(uniform.name, uniform.type)))
            return false;
    return true;
}

bool GlslProgram::WantsCue() const { return mEngine.Scene() && mEngine.Scene()->DepthCueOn(); }

BString GlslProgram::Link(bool cue)
{
    mLinked[cue] = std::make_unique<Program>();
    Program& program = *mLinked[cue];
    const std::string vertex = VertexProgramSource().Std(), plain = FragmentProgramSource().Std();
    const std::string fragment = cue ? WithDefine(plain, "DEPTH_CUE") : plain;
    const BString problem = program.Build(mName.CString(), vertex, fragment, kGlslAttributes);
    if (!problem.IsEmpty())
        return problem;
    SetVertexProgramCompiledSource(vertex);
    SetFragmentProgramCompiledSource(fragment);
    GLuint shaders[2] = {};
    glGetAttachedShaders(program.Id(), 2, nullptr, shaders);
    SetShaders(Handle(shaders[0]), Handle(shaders[1]));
    const GLuint block = glGetUniformBlockIndex(program.Id(), "Frame");
    if (block != GL_INVALID_INDEX)
        glUniformBlockBinding(program.Id(), block, 0);
    glUseProgram(program.Id());
    for (std::int64_t i = 0; i < Textures().Count(); ++i)
        glUniform1i(program.Uniform(Textures()[i]->Name().CString()), mUnits[std::size_t(i)]);
    glUniform1i(program.Uniform("uBackPicture"), kBackPictureUnit);
    glUseProgram(0);
    return {};
}

Program* GlslProgram::Linked()
{
    const bool cue = WantsCue();
    if (!mLinked[cue])
    {
        const BString problem = Link(cue);
        const VXShaderEngine* const shaders = mEngine.ShaderEngine();
        auto* const compiler = shaders ? dynamic_cast<GlslCompiler*>(shaders->ShaderCompiler()) : nullptr;
        if (!problem.IsEmpty() && compiler)
            compiler->Fail(problem);
    }
    return mLinked[cue]->IsBuilt() ? mLinked[cue].get() : nullptr;
}

void GlslProgram::MakeCurrent()
{
    VXShaderEngine* const shaders = mEngine.ShaderEngine();
    if (!mEngine.InFrame() || !shaders)
        return;
    shaders->LoadShaderTextures(nullptr, this);
    shaders->EnableShaderTextures(this);
    for (std::int64_t i = 0; i < Textures().Count(); ++i)
        if (const VXShaderBindingTexture& texture = *Textures()[i];
            texture.Type() == "sampler2D" && std::int32_t(texture.TexID()) <= 0)
            mEngine.EnableMultitexture2D(
                int(mEngine.StandInTexture(texture.FileName().EndsWith(GlslSource::kLinearMark))),
                mUnits[std::size_t(i)]);
    mEngine.SetShaderProgram(this);
}

void GlslProgram::StopBeingCurrent() { mEngine.SetShaderProgram(nullptr); }

// --- The compiler

GlslCompiler::GlslCompiler(VXShaderEngine* engine, VXGLDrawEngine* drawEngine)
    : VXShaderCompiler(engine, drawEngine), mGLEngine(*drawEngine)
{
}

void GlslCompiler::EndShading() { mGLEngine.SetShaderProgram(nullptr); }

GlslSource GlslCompiler::Generate(const ShaderTree& tree) { return GenerateGlsl(tree, GlslOptionsFor(mGLEngine)); }

bool GlslCompiler::NeedsShader(VXMaterial* material, bool deep) const
{
    if (!VXShaderCompiler::NeedsShader(material, false))
        return false;
    if (VXShaderCompiler::NeedsShader(material, deep))
        return true;
    const ShaderTree* const tree = TreeOf(*material, 0);
    return tree && (material->NumLayers() > 1 || !LostWithoutShader(*tree).IsEmpty());
}

// A text with the number of each line before it, as compilers name lines.
static BString Numbered(const std::string& text)
{
    std::string out;
    int number = 0;
    for (std::size_t from = 0; from < text.size();)
    {
        const std::size_t end = std::min(text.find('\n', from), text.size());
        out += BString::Format("%4d  ", ++number).Std();
        out.append(text, from, end - from);
        out += '\n';
        from = end + 1;
    }
    return BString(out);
}

static void LogSource(const BString& name, const GlslSource& source)
{
    for (const auto& [stage, text] : {std::pair("Vertex", &source.vertex), std::pair("Fragment", &source.fragment)})
        VXShaderDebug("%s shader of material %s:\n%s", stage, name.CString(), Numbered(*text).CString());
}

void GlslCompiler::Fail(const BString& problem)
{
    VXShaderDebug("%s\n", problem.CString());
    SetErrors(problem);
    mGLEngine.Warn(FirstLine(problem) + "; it is drawn without its shader");
}

VXShaderProgram* GlslCompiler::BuildProgram(VXMaterial* material, std::int64_t layer)
try
{
    const ShaderTree* const tree = TreeOf(*material, layer);
    if (!tree)
        return nullptr;
    ++mNumBuilt;
    mGLEngine.SetShaderRecompiled(true);
    const BString name = "material " + material->ExternalName();
    const GlslSource source = Generate(*tree);
    auto program = std::make_unique<GlslProgram>(mGLEngine);
    const BString problem = source.problem.IsEmpty() ? program->Build(name, source) : name + ": " + source.problem;
    if (VerboseMode() || !problem.IsEmpty())
        LogSource(material->ExternalName(), source);
    if (problem.IsEmpty())
        return program.release();
    Fail(problem);
    return nullptr;
}
catch (const std::bad_alloc&)
{
    return nullptr; // the library says that there is none
}
} // namespace vx
