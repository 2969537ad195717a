// VelmarBase: shaders.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"
#include "base/BString.h"

#include <cstdint>
#include <map>

class BShaderInput;
class BShaderNode;
class VXMaterial;
class VXMaterialColor4;
class VXSceneDrawEngine;
class VXShaderEngine;
class VXShaderImplementation;
class VXShaderProgram;

/// Decides which materials need a generated program, has it built, and keeps it. The shader engine forwards to it; the
/// platform subclass turns a node tree into a program.
///
/// Programs are kept by the hash of the layer's tree, for the life of the process, and are shared by all compilers and
/// materials: layers with equal hashes share a program, so a host whose delegate computes no hashes gets one entry for
/// all of its layers. An entry without a program is an answer too: that tree was looked at and gets none, because the
/// fixed pipeline can draw it or because its program could not be built, and it is not looked at again before its hash
/// changes. Programs belong to the context that was current when they were built; whoever gives that up clears the
/// cache before.
///
/// GL thread only: nothing is locked.
class VELMAR_EXPORT VXShaderCompiler
{
public:
    VXShaderCompiler(VXShaderEngine* engine, VXSceneDrawEngine* drawEngine)
        : mShaderEngine(engine), mDrawEngine(drawEngine)
    {
    }
    virtual ~VXShaderCompiler(); ///< deletes the implementations; programs stay in the cache
    VXShaderCompiler(const VXShaderCompiler&) = delete;
    VXShaderCompiler& operator=(const VXShaderCompiler&) = delete;

    VXSceneDrawEngine* DrawEngine() const { return mDrawEngine; }
    VXShaderEngine* ShaderEngine() const { return mShaderEngine; }

    // --- The platform's part
    virtual void Init() = 0;         ///< once, before the first use of the compiler in a frame
    virtual void BeginShading() = 0; ///< before a program is made current, or shading is switched on
    virtual void EndShading() = 0;   ///< after a program was released, or shading is switched off

    // --- Programs, by material and layer: VXShaderCompiler.cpp. Nothing is done for a null material.

    /// Deletes the programs of all layers and forgets them. What is known to need no program stays known.
    virtual void ClearShader(VXMaterial* material);

    /// Brings the cache in step with the materials: asks the delegate for the hashes that are stale, deletes programs
    /// that no material uses any more, and builds what is missing as long as the frame is allowed shading. The
    /// delegate's busy notification goes around the building. Once per frame; costs one look-up for each layer when
    /// nothing has changed.
    void UpdateShaders(BArray<VXMaterial*>& materials);

    /// Loads the material's preview texture, and builds the layer's program when the material needs one. One that is
    /// there already is deleted. Materials with equal hashes share the answer, so UpdateShaders comes here for the
    /// first of them only.
    void AddShader(VXMaterial* material, std::int64_t layer);
    bool HasShader(const VXMaterial* material, std::int64_t layer) const;
    /// Makes the program current; without one, binds the material's preview texture. Nothing for a layer without tree.
    void EnableShader(VXMaterial* material, std::int64_t layer);
    /// Lets go of the program that EnableShader made current. EndShading is called in every case, for a null material
    /// too.
    void DisableShader(VXMaterial* material, std::int64_t layer);

    // --- Programs, by tree hash
    /// Deletes the program; its entry stays, as one without a program. @return false when there was no program
    bool DeleteShader(const BString& key);
    void DeleteShaders();                                    ///< all of them, entries too
    static void ClearProgramCache();                         ///< the same without a compiler
    BString GetVertexShaderSource(const BString& key) const; ///< as generated; empty when there is no program
    BString GetFragmentShaderSource(const BString& key) const;

    // --- Who needs a program: VXShaderCompilerNeeds.cpp

    /// Whether the fixed pipeline cannot draw the material. Only the tree of layer 0 is looked at, and only a root of a
    /// known surface gets a program.
    /// @param deep looks at the root's inputs too; otherwise every known surface needs one
    virtual bool NeedsShader(VXMaterial* material, bool deep) const;
    /// @param depth 0 for the root; a node below it always needs a program
    bool NeedsShaderNode(BShaderNode* node, VXMaterial* material, int depth) const;
    /// False for a plain value, a plain colour and an image map that is neither scaled nor moved. Null needs one.
    bool NeedsShaderInput(BShaderInput* input, VXMaterial* material, int depth) const;

    // --- For generators

    // How generated text names things and joins expressions.
    virtual BString CodeVarName(const BString& a, const BString& b);
    virtual BString CodeInputName(const BString& a);
    virtual BString CodeResultName(const BString& a);
    virtual BString CodeMultiply(const BString& a, const BString& b);
    virtual BString CodeAdd(const BString& a, const BString& b);

    virtual void PrepareForDrawScene(); ///< at the start of every frame; empty here

    /// The implementation of this name. The first call reads the shader file of that name into its universal text,
    /// which stays empty when it cannot be read. Null when memory ran out; the compiler owns it.
    VXShaderImplementation* GetImplementation(const BString& name);

    float GetMinOpacity() const { return mMinOpacity; } ///< generated programs draw nothing clearer than this

    // A generator hands on either code or a constant that the code came down to; a colour marked invalid stands for
    // the former. The mark is one exact value of red.
    static void SetInvalidColorResult(VXMaterialColor4& color);
    static bool IsOptimizedColorResult(const VXMaterialColor4& color); ///< a constant, not the mark

    // --- What went wrong
    const BString& GetErrors() const { return mErrors; } ///< the last compile or link log
    /// One of the programs built last has failed: by AddShader, or in the last UpdateShaders that had any to build.
    bool HasErrors() const { return mHasErrors; }
    void SetVerboseMode(bool on) { mVerbose = on; } ///< each added program is noted in the debug log
    bool VerboseMode() const { return mVerbose; }

    // --- How often a program was made current since the frame began, all compilers together
    static int NumActivations() { return smNumActivations; }
    static void ResetActivations() { smNumActivations = 0; } ///< each frame does this first
    static void CountActivation() { ++smNumActivations; }    ///< EnableShader does this for each program

protected:
    /// Builds the program of a layer whose tree is not null. @return a new program, which the cache owns from then on;
    /// null on failure, with the reason given to SetErrors
    virtual VXShaderProgram* BuildProgram(VXMaterial* material, std::int64_t layer) = 0;

    void SetErrors(const BString& log); ///< an empty log is none
    /// Puts a program under a key, in place of one that is there. Null records that the tree needs none.
    /// @return false when memory ran out; the program is deleted then
    static bool StoreProgram(const BString& key, VXShaderProgram* program);
    static VXShaderProgram* FindProgram(const BString& key); ///< null when there is none

private:
    bool WantsDeepTest() const;
    bool MayBuildPrograms() const;
    void LoadPreviewTexture(VXMaterial& material) const;
    void AddMissing(VXMaterial& material, bool& busy);
    void BuildShader(VXMaterial& material, std::int64_t layer);

    VXShaderEngine* mShaderEngine;
    VXSceneDrawEngine* mDrawEngine;
    [[maybe_unused]] void* mReserved = nullptr;
    BString mErrors;
    bool mHasErrors = false;
    bool mVerbose = false;
    std::map<BString, VXShaderImplementation*> mImplementations; ///< owned
    float mMinOpacity = 0.9f;
    [[maybe_unused]] std::uint64_t mReservedWord = 0;

    static int smNumActivations;
};
