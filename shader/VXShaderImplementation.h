// VelmarBase: shaders.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"
#include "base/BString.h"

/// One parameter that a program hands to its vertex or fragment part. Its fields are for the generator to use.
class VELMAR_EXPORT VXShaderImplementationParam
{
public:
    VXShaderImplementationParam() = default;
    VXShaderImplementationParam(const BString& name, const BString& type, const BString& value)
        : mName(name), mType(type), mValue(value)
    {
    }

    const BString& Name() const { return mName; }
    const BString& Type() const { return mType; }
    const BString& Value() const { return mValue; } ///< as text of the shading language

private:
    BString mName, mType, mValue;
};

/// The text that a generated program needs besides its node expressions: functions, includes, preprocessor lines,
/// parameters and textures of one named piece, collected while a generator walks a tree. Text is opaque here.
class VELMAR_EXPORT VXShaderImplementation
{
public:
    explicit VXShaderImplementation(const BString& name) : mName(name) {}
    virtual ~VXShaderImplementation();
    VXShaderImplementation(const VXShaderImplementation&) = delete;
    VXShaderImplementation& operator=(const VXShaderImplementation&) = delete;

    // --- Collecting. Lists answer false when they have an equal entry already, or memory ran out.
    void AddImplCode(const BString& code, bool, bool); ///< to the fragment part; both flags are ignored on purpose
    void AddBodyCode(const BString& code, bool toVertex, bool toFragment);
    bool AddInclude(const BString& name);
    bool AddPreprocessor(const BString& line);
    /// Compared by pointer, not owned; the newest stands first. False for null.
    bool AddVertexParam(VXShaderImplementationParam* param);
    bool AddFragmentParam(VXShaderImplementationParam* param);
    /// @return the sampler's name: "texture0", "texture1", ...; empty when memory ran out
    BString AddTexture(const BString& fileName);
    void SetUniversalImpl(const BString& text) { mUniversalImpl = text; }

    // --- Reading
    BString GetName() const { return mName; }
    BString GetVertexImpl() const { return mVertexImpl; }
    BString GetFragmentImpl() const { return mFragmentImpl; }
    BString GetUniversalImpl() const { return mUniversalImpl; } ///< for both parts
    const BString& VertexBody() const { return mVertexBody; }
    const BString& FragmentBody() const { return mFragmentBody; }
    const BArray<BString>& Includes() const { return mIncludes; } ///< in order of addition
    const BArray<BString>& Preprocessor() const { return mPreprocessor; }
    const BArray<VXShaderImplementationParam*>& VertexParams() const { return mVertexParams; }
    const BArray<VXShaderImplementationParam*>& FragmentParams() const { return mFragmentParams; }
    const BArray<BString>& Textures() const { return mTextures; } ///< file names

    /// The whole text of a file in the delegate's shader folder, in "Runtime/Cg/" below the working directory without
    /// a delegate. Folder and name are joined as they are. Empty when the file cannot be read, which the debug log is
    /// told.
    static BString LoadShaderFile(const BString& fileName);

private:
    BString mName;
    BString mVertexImpl, mFragmentImpl;
    BString mVertexBody, mFragmentBody;
    BString mUniversalImpl;
    BArray<BString> mIncludes;
    BArray<BString> mPreprocessor;
    BArray<VXShaderImplementationParam*> mVertexParams;
    BArray<VXShaderImplementationParam*> mFragmentParams;
    BArray<BString> mTextures{0, 8};
};
