// VelmarBase: shaders.
#pragma once

#include "VelmarExport.h"
#include "base/BString.h"

#include <cstdint>

/// One sampler of a program and the texture bound to it. Held by pointer, owned by its program.
class VELMAR_EXPORT VXShaderBindingTexture
{
public:
    static constexpr std::uint32_t kNotLoaded = 0;
    static constexpr std::uint32_t kFailed = 0xFFFFFFFF; ///< loading failed: never tried again

    VXShaderBindingTexture(const BString& name, const BString& type, const BString& fileName)
        : mName(name), mType(type), mFileName(fileName)
    {
    }
    virtual ~VXShaderBindingTexture();

    const BString& Name() const { return mName; } ///< of the sampler
    const BString& Type() const { return mType; } ///< "sampler2D", "sampler3D"; others stay unbound
    const BString& FileName() const { return mFileName; }
    std::uint32_t TexID() const { return mTexID; } ///< kNotLoaded, kFailed, or the texture's name
    void SetTexID(int id) { mTexID = std::uint32_t(id); }

private:
    BString mName, mType, mFileName;
    std::uint32_t mTexID = kNotLoaded;
};

/// One uniform of a program: its name and type. Values are the platform's. Held by pointer, owned by its program.
class VELMAR_EXPORT VXShaderBindingUniform
{
public:
    VXShaderBindingUniform(const BString& name, const BString& type) : mName(name), mType(type) {}
    virtual ~VXShaderBindingUniform();

    const BString& Name() const { return mName; }
    const BString& Type() const { return mType; }

private:
    BString mName, mType;
};
