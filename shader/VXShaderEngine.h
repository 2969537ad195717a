// VelmarBase: shaders.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"
#include "base/BString.h"

#include <cstdint>

class VXMaterial;
class VXSceneDrawEngine;
class VXShaderCompiler;

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

private:
    VXShaderCompiler* mCompiler = nullptr;
    bool mAppEnabled = true;
    bool mIsActive = false;
    bool mShadersOn = false;
    std::int32_t mEnableCount = 0;
    std::int32_t mDisableCount = 0;
    VXSceneDrawEngine* mDrawEngine;
    bool mVerbose = true;
};
