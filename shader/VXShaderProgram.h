// VelmarBase: shaders.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"
#include "base/BString.h"

class VXShaderBindingTexture;
class VXShaderBindingUniform;

/// The record of one generated program: its texts, the platform's two shader objects, and what is bound to it. The
/// platform derives from it, makes the objects and gives them back in its destructor. Owns its bindings.
class VELMAR_EXPORT VXShaderProgram
{
public:
    VXShaderProgram() = default;
    virtual ~VXShaderProgram();
    VXShaderProgram(const VXShaderProgram&) = delete;
    VXShaderProgram& operator=(const VXShaderProgram&) = delete;

    virtual void MakeCurrent() {}
    virtual void StopBeingCurrent() {}

    bool IsValid() const { return mVertexShader && mFragmentShader; }
    void* VertexShader() const { return mVertexShader; }
    void* FragmentShader() const { return mFragmentShader; }
    void SetShaders(void* vertex, void* fragment); ///< handles of the platform, not owned here

    const BString& VertexProgramSource() const { return mVertexSource; }
    const BString& FragmentProgramSource() const { return mFragmentSource; }
    void SetVertexProgramSource(const BString& text) { mVertexSource = text; }
    void SetFragmentProgramSource(const BString& text) { mFragmentSource = text; }
    const BString& GetVertexShaderCompiledSource() const { return mVertexCompiled; } ///< as it went to the driver
    const BString& GetFragmentShaderCompiledSource() const { return mFragmentCompiled; }
    void SetVertexProgramCompiledSource(const BString& text) { mVertexCompiled = text; }
    void SetFragmentProgramCompiledSource(const BString& text) { mFragmentCompiled = text; }

    /// Takes the binding. @return false when memory ran out; the binding is gone then
    bool AddTexture(VXShaderBindingTexture* binding);
    bool AddUniform(VXShaderBindingUniform* binding);
    const BArray<VXShaderBindingTexture*>& Textures() const { return mTextures; }
    const BArray<VXShaderBindingUniform*>& Uniforms() const { return mUniforms; }

private:
    void* mVertexShader = nullptr;
    void* mFragmentShader = nullptr;
    BString mVertexSource, mFragmentSource, mVertexCompiled, mFragmentCompiled;
    BArray<VXShaderBindingTexture*> mTextures{0, 8};
    BArray<VXShaderBindingUniform*> mUniforms{0, 8};
};
