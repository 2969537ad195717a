#include "engine/VXObject.h"
#include "host/gl/VXGLDrawEngine.h"
#include "host/glsl/GlslCompiler.h"
#include "host/image/TextureTable.h"
#include "shader/FilteredNoise.h"
#include "shader/VXShaderEngine.h"

#include <GL/glew.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

// --- Programs

// The cache of programs is one for the process, programs live in the context that they were built in, and textures
// too: the engine that builds has the cache for itself. Two engines that take turns each build anew, which is slow and
// right.
static const VXGLDrawEngine* sProgramsOf = nullptr;

void VXGLDrawEngine::ClaimPrograms()
{
    if (sProgramsOf == this)
        return;
    VXShaderCompiler::ClearProgramCache();
    sProgramsOf = this;
}

void VXGLDrawEngine::ReleaseShaders()
{
    if (sProgramsOf == this)
    {
        VXShaderCompiler::ClearProgramCache();
        sProgramsOf = nullptr;
    }
    DeleteShaderEngine();
    mRetired.clear();
    mShaderProgram = nullptr;
    glDeleteTextures(1, &mNoiseName);
    mNoiseName = 0;
    glDeleteTextures(2, mStandIns);
    std::fill_n(mStandIns, 2, 0u);
}

void VXGLDrawEngine::Retire(vx::GlslProgram* going, std::unique_ptr<vx::Program> linked)
{
    if (mShaderProgram == going)
        mShaderProgram = nullptr;
    if (linked)
        mRetired.push_back(std::move(linked));
}

void VXGLDrawEngine::Warn(const BString& line) { mWarnings.push_back(line); }

void VXGLDrawEngine::InitShaderEngine() { ShaderEngine()->Init(); }

void VXGLDrawEngine::UpdateShadersNow(VXScene*) { ClaimPrograms(); }

void VXGLDrawEngine::UpdateShadersLater() { ClaimPrograms(); }

// Readies the program of the batch's material. What it has in common with the fixed ones the caller sets.
vx::Program* VXGLDrawEngine::UseGenerated(const VXElementBatch& batch)
{
    vx::Program* const linked = mShaderProgram->Linked();
    if (!linked)
        return nullptr;
    vx::Program& program = *linked;
    glUseProgram(program.Id());
    const bool normals = mNormalData && mBuffers->NeedNormals();
    glUniform1i(program.Uniform("uFlat"), normals ? 0 : 1);
    glUniform1i(program.Uniform("uTones"), 0); // toon styles are drawn by the fixed surfaces
    glUniform1i(program.Uniform("uAlphaPass"), IsBlended(batch) ? 1 : 0);
    BindArrays({.normals = normals,
                .uvs = mShaderProgram->UsesUVs() && mBuffers->NeedUVs(),
                .tangents = mShaderProgram->UsesTangents() && mBuffers->NeedTangents()});
    return linked;
}

// --- Textures

int VXGLDrawEngine::LoadTextureForShader(const BString& path, int& id)
{
    id = 0;
    const std::string_view mark = vx::GlslSource::kLinearMark;
    const bool linear = path.EndsWith(mark);
    const BPath file(linear ? path.Left(path.Length() - std::int64_t(mark.size())) : path);
    if (!mTextures || mTextures->HasFailed(file))
        return 0;
    BString why;
    const std::int32_t index = mTextures->Add(file, why);
    const bool known = mTextureNames.contains({index, linear});
    if (index >= 0)
        id = int(TextureOf(index, linear));
    if (index >= 0 && id == 0)
        why = "is larger than this graphics card allows";
    if (id == 0 && !known)
        Warn(file.FullPath() + ": the texture is not shown: it " + why);
    return id;
}

std::uint32_t VXGLDrawEngine::StandInTexture(bool linear)
{
    std::uint32_t& name = mStandIns[linear];
    if (name == 0)
    {
        // The grey that fixed surfaces take, and 128 for zero as in pictures of normals.
        const float texels[2][4] = {{0.5f, 0.5f, 0.5f, 1}, {128 / 255.0f, 128 / 255.0f, 1, 1}};
        glGenTextures(1, &name);
        glBindTexture(GL_TEXTURE_2D, name);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA16, 1, 1, 0, GL_RGBA, GL_FLOAT, texels[linear]);
        glBindTexture(GL_TEXTURE_2D, 0);
    }
    return name;
}

void VXGLDrawEngine::FreeTextures()
{
    for (const auto& [key, name] : mTextureNames)
        glDeleteTextures(1, &name);
    mTextureNames.clear();
}

void VXGLDrawEngine::FreeTextureForShader(int id)
{
    std::erase_if(mTextureNames,
                  [&](const auto& entry)
                  {
                      if (id < 1 || entry.second != GLuint(id))
                          return false;
                      glDeleteTextures(1, &entry.second);
                      return true;
                  });
}

int VXGLDrawEngine::CreateNoiseTexture()
{
    using Volume = vx::NoiseVolume;
    std::srand(1); // the lattice comes from rand(): the same in every run, whatever drew numbers before
    FilteredNoise noise(Volume::kLattice, Volume::kLattice, Volume::kLattice);
    mNoiseName = noise.createNoiseTexture3D(Volume::kSize, Volume::kSize, Volume::kSize, Volume::kScale,
                                            Volume::kAmplitude, FilteredNoise::NoiseSmooth);
    glBindTexture(GL_TEXTURE_3D, 0);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    return int(mNoiseName);
}

// --- Texture units

void VXGLDrawEngine::BindTexture(std::uint32_t target, int id, int unit)
{
    if (unit < 0 || unit >= std::min(mNumUnits, 64))
        return;
    glActiveTexture(GL_TEXTURE0 + GLenum(unit));
    glBindTexture(target, GLuint(id));
    glActiveTexture(GL_TEXTURE0);
}

void VXGLDrawEngine::EnableMultitexture2D(int id, int unit)
{
    BindTexture(GL_TEXTURE_2D, id, unit);
    mUnits2D |= std::uint64_t(1) << (unit & 63);
}

void VXGLDrawEngine::EnableMultitexture3D(int id, int unit)
{
    BindTexture(GL_TEXTURE_3D, id, unit);
    mUnits3D |= std::uint64_t(1) << (unit & 63);
}

void VXGLDrawEngine::DisableMultitexture2D()
{
    for (int unit = 0; mUnits2D; ++unit, mUnits2D >>= 1)
        if (mUnits2D & 1)
            BindTexture(GL_TEXTURE_2D, 0, unit);
}

void VXGLDrawEngine::DisableMultitexture3D()
{
    for (int unit = 0; mUnits3D; ++unit, mUnits3D >>= 1)
        if (mUnits3D & 1)
            BindTexture(GL_TEXTURE_3D, 0, unit);
}

void VXGLDrawEngine::UnbindTexture()
{
    DisableMultitexture2D();
    DisableMultitexture3D();
}
