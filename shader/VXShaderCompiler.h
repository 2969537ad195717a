// VelmarBase: shaders.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"
#include "base/BString.h"

#include <cstdint>

class VXMaterial;
class VXSceneDrawEngine;
class VXShaderEngine;

/// Turns materials' shader trees into programs and keeps the programs. The shader engine forwards to it; the platform
/// subclass writes the shader text. GL thread only.
class VELMAR_EXPORT VXShaderCompiler
{
public:
    VXShaderCompiler(VXShaderEngine* engine, VXSceneDrawEngine* drawEngine)
        : mShaderEngine(engine), mDrawEngine(drawEngine)
    {
    }
    virtual ~VXShaderCompiler();
    VXShaderCompiler(const VXShaderCompiler&) = delete;
    VXShaderCompiler& operator=(const VXShaderCompiler&) = delete;

    // --- The platform's part
    virtual void Init() = 0;            ///< once, before the first use of the compiler in a frame
    virtual void BeginShading() = 0;    ///< before a program is made current, or shading is switched on
    virtual void EndShading() = 0;      ///< after a program was released, or shading is switched off
    virtual void PrepareForDrawScene(); ///< at the start of every frame; empty here

    // --- Programs, by material and layer
    virtual void AddShader(VXMaterial* material, std::int64_t layer) = 0;
    virtual bool HasShader(VXMaterial* material, std::int64_t layer) = 0; ///< false for null
    virtual void EnableShader(VXMaterial* material, std::int64_t layer) = 0;
    virtual void DisableShader(VXMaterial* material, std::int64_t layer) = 0;
    virtual void ClearShader(VXMaterial* material) = 0;
    virtual bool DeleteShader(const BString& key) = 0; ///< by tree hash; false when there is no program
    virtual void DeleteShaders() = 0;
    virtual void UpdateShaders(BArray<VXMaterial*>& materials) = 0; ///< once per frame
    virtual BString GetVertexShaderSource(const BString& key) = 0;  ///< empty when there is no program
    virtual BString GetFragmentShaderSource(const BString& key) = 0;

    VXSceneDrawEngine* DrawEngine() const { return mDrawEngine; }
    VXShaderEngine* ShaderEngine() const { return mShaderEngine; }
    void SetVerboseMode(bool on) { mVerbose = on; }
    bool VerboseMode() const { return mVerbose; }

    // --- How often a program was made current since the frame began, all compilers together
    static int NumActivations() { return smNumActivations; }
    static void ResetActivations() { smNumActivations = 0; } ///< each frame does this first
    static void CountActivation() { ++smNumActivations; }    ///< EnableShader does this for each program

private:
    VXShaderEngine* mShaderEngine;
    VXSceneDrawEngine* mDrawEngine;
    bool mVerbose = false;

    static int smNumActivations;
};
