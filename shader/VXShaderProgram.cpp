#include "shader/VXShaderProgram.h"

#include "shader/VXShaderBinding.h"

VXShaderBindingTexture::~VXShaderBindingTexture() = default;

VXShaderBindingUniform::~VXShaderBindingUniform() = default;

VXShaderProgram::~VXShaderProgram()
{
    for (VXShaderBindingTexture* const texture : mTextures)
        delete texture;
    for (VXShaderBindingUniform* const uniform : mUniforms)
        delete uniform;
}

void VXShaderProgram::SetShaders(void* vertex, void* fragment)
{
    mVertexShader = vertex;
    mFragmentShader = fragment;
}

// What is listed stays listed when memory runs out: the program owns it.
template <class Binding>
static bool Take(BArray<Binding*>& list, Binding* binding)
{
    if (!binding)
        return false;
    if (list.AppendOrKeep(binding))
        return true;
    delete binding;
    return false;
}

bool VXShaderProgram::AddTexture(VXShaderBindingTexture* binding) { return Take(mTextures, binding); }

bool VXShaderProgram::AddUniform(VXShaderBindingUniform* binding) { return Take(mUniforms, binding); }
