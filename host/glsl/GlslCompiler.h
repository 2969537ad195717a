// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "host/gl/Program.h"
#include "host/glsl/Generator.h"
#include "shader/VXShaderCompiler.h"
#include "shader/VXShaderProgram.h"

#include <memory>
#include <vector>

class VXGLDrawEngine;

namespace vx
{
/// What shader texts depend on besides the trees, for pictures drawn with these settings.
VELMAR_HOST_EXPORT GlslOptions GlslOptionsFor(VXSceneDrawEngine& engine);

/// Stores in each layer of the material the key of the program that its tree makes. Layers without a tree have the
/// empty key; trees of which no text can be made each have one of their own.
VELMAR_HOST_EXPORT void ComputeTreeHashes(VXMaterial& material, const GlslOptions& options);

/// A program made of a tree, linked in the context of the draw engine that it was built for: once for frames with depth
/// cue and once for those without, as they come.
class VELMAR_HOST_EXPORT GlslProgram : public VXShaderProgram
{
public:
    explicit GlslProgram(VXGLDrawEngine& engine);
    ~GlslProgram() override; ///< leaves the deleting in OpenGL to the draw engine, whose context may not be current

    /// Takes the texts and what is bound to them, compiles and links what the draw engine's scene asks for now.
    /// @param name stands before the compiler's words  @return empty, or these
    BString Build(const BString& name, const GlslSource& source);

    /// Loads textures that are not there yet, binds all, and has the draw engine use the program. Nothing while that
    /// draws no frame.
    void MakeCurrent() override;
    void StopBeingCurrent() override;

    Program* Linked(); ///< for the draw engine's scene as it is; null, told of as a warning once, when it cannot be
    bool UsesTangents() const { return mUsesTangents; }
    bool UsesUVs() const { return mUsesUVs; }

private:
    bool TakeBindings(const GlslSource& source);
    bool WantsCue() const;
    BString Link(bool cue);

    VXGLDrawEngine& mEngine;
    BString mName;
    std::unique_ptr<Program> mLinked[2]; ///< without and with depth cue; null until it is asked for
    std::vector<int> mUnits;             ///< of the textures
    bool mUsesTangents = false, mUsesUVs = false;
};

/// The compiler of the reference host: GLSL from trees of vx::ShaderTree. Layers with trees of other classes get no
/// program. A tree that makes no program is told of as a warning of the draw engine; its texts and the compiler's words
/// go to the debug log.
class VELMAR_HOST_EXPORT GlslCompiler : public VXShaderCompiler
{
public:
    GlslCompiler(VXShaderEngine* engine, VXGLDrawEngine* drawEngine);

    void Init() override {}
    void BeginShading() override {}
    void EndShading() override;
    /// As the library decides, and also for what fixed drawing would lose: LostWithoutShader, and layers above the
    /// base. All layers of a material get a program, or none.
    bool NeedsShader(VXMaterial* material, bool deep) const override;
    int NumBuilt() const { return mNumBuilt; } ///< programs, failed ones too, since the compiler was made
    void Fail(const BString& problem);         ///< tells of a program that cannot be had: log, errors, and a warning

protected:
    VXShaderProgram* BuildProgram(VXMaterial* material, std::int64_t layer) override;
    virtual GlslSource Generate(const ShaderTree& tree); ///< the texts that are built

private:
    VXGLDrawEngine& mGLEngine;
    int mNumBuilt = 0;
};
} // namespace vx
