// VelmarBase: shaders.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"
#include "base/BString.h"

#include <cstdint>

class VXMaterial;
class VXSceneDrawEngine;
class VXShaderBindingTexture;
class VXShaderCompiler;
class VXShaderProgram;

/// The draw engine's front to the shader compiler: the switches that say whether generated shading may be used, is in
/// use, and is bound, and forwarders that do nothing (or answer false or the empty text) while there is no compiler.
///
/// Owned by the draw engine, together with the compiler that it is given: neither deletes the other. GL thread only.
class VELMAR_EXPORT VXShaderEngine
{
public:
    explicit VXShaderEngine(VXSceneDrawEngine* drawEngine) : mDrawEngine(drawEngine) {}
    virtual ~VXShaderEngine();
    VXShaderEngine(const VXShaderEngine&) = delete;
    VXShaderEngine& operator=(const VXShaderEngine&) = delete;

    VXShaderCompiler* ShaderCompiler() const { return mCompiler; }
    void SetShaderCompiler(VXShaderCompiler* compiler) { mCompiler = compiler; }
    VXSceneDrawEngine* DrawEngine() const { return mDrawEngine; }

    // --- Switches
    bool AppEnabled() const { return mAppEnabled; } ///< shading is allowed in this frame; the draw engine decides anew
    void Enable() { mAppEnabled = true; }
    void Disable() { mAppEnabled = false; }
    bool IsActive() const { return mIsActive; }
    void EnableEngine();  ///< only while AppEnabled
    void DisableEngine(); ///< only while AppEnabled
    bool Enabled() const { return mAppEnabled && mIsActive; }
    bool ShadersEnabled() const { return Enabled() && mShadersOn; }
    /// Switches shading on for a stretch of drawing; nothing when it is on already. Works on an engine that is not
    /// enabled too: that is a mistake of the caller, but drawing goes on.
    void EnableShaders();
    void DisableShaders();
    int EnableCount() const { return mEnableCount; }   ///< how often shading was really switched on
    int DisableCount() const { return mDisableCount; } ///< ... and off
    void SetVerboseMode(bool on);                      ///< of engine and compiler
    bool VerboseMode() const { return mVerbose; }

    // --- Forwarded to the compiler
    void Init();
    void PrepareForDrawScene();
    void AddShader(VXMaterial* material, std::int64_t layer);
    bool HasShader(VXMaterial* material, std::int64_t layer) const;
    void EnableShader(VXMaterial* material, std::int64_t layer);
    void DisableShader(VXMaterial* material, std::int64_t layer);
    bool DeleteShader(const BString& key);
    void DeleteShaders();
    void UpdateShaders(BArray<VXMaterial*>& materials);
    BString GetVertexShaderSource(const BString& key) const;
    BString GetFragmentShaderSource(const BString& key) const;

    // --- Textures of a program, by the draw engine's texture hooks

    /// Loads what is not loaded yet. An image that fails is marked so in its binding and not asked for again by it; the
    /// debug log names each file that failed once. Every 3D sampler gets the one noise volume, which the first of them
    /// has made.
    void LoadShaderTextures(VXMaterial* material, VXShaderProgram* program);
    /// Binds what is loaded: the image at place i of the list to unit i, except that place 1 uses unit 0 too; the noise
    /// volume to unit 1.
    void EnableShaderTextures(VXShaderProgram* program);
    void ClearShaderTextures(VXMaterial* material, VXShaderProgram* program); ///< nothing here: textures stay loaded
    std::uint32_t NoiseTexture() const { return mNoiseTexture; }              ///< 0 before it was needed

private:
    void WarnWhenNotEnabled(const char* what) const;
    void LoadImage(VXShaderBindingTexture& texture);
    std::uint32_t LoadNoise();

    VXShaderCompiler* mCompiler = nullptr;
    bool mAppEnabled = true;
    bool mIsActive = false;
    bool mShadersOn = false;
    std::int32_t mEnableCount = 0;
    std::int32_t mDisableCount = 0;
    VXSceneDrawEngine* mDrawEngine;
    std::uint32_t mNoiseTexture = 0;
    bool mVerbose = true;            ///< misuse is noted in the debug log
    BArray<BString> mFailedTextures; ///< whose failures the debug log has been told
};
