// A shader compiler without shaders, which writes what it is asked into the log of a RecordingEngine.
#pragma once

#include "material/VXMaterial.h"
#include "shader/VXShaderCompiler.h"
#include "shader/VXShaderEngine.h"
#include "tests/support/RecordingEngine.h"

#include <set>
#include <string>
#include <utility>

class RecordingCompiler : public VXShaderCompiler
{
public:
    RecordingCompiler(VXShaderEngine* engine, RecordingEngine* log) : VXShaderCompiler(engine, log), mLog(log) {}
    ~RecordingCompiler() override { ++deaths; }

    std::set<std::pair<const VXMaterial*, std::int64_t>> programs; ///< what has a program
    static inline int deaths = 0;

    /// A shader engine with a compiler of this kind, given to the draw engine that owns both from then on.
    static RecordingCompiler* Install(RecordingEngine& engine)
    {
        VXShaderEngine* const shaders = new VXShaderEngine(&engine);
        RecordingCompiler* const compiler = new RecordingCompiler(shaders, &engine);
        shaders->SetShaderCompiler(compiler);
        engine.SetShaderEngine(shaders);
        return compiler;
    }

    void Init() override { Write("Init"); }
    void BeginShading() override { Write("BeginShading"); }
    void EndShading() override { Write("EndShading"); }
    void PrepareForDrawScene() override { Write("PrepareForDrawScene"); }
    void AddShader(VXMaterial* material, std::int64_t layer) override { programs.insert({material, layer}); }
    bool HasShader(VXMaterial* material, std::int64_t layer) override { return programs.count({material, layer}) > 0; }
    void EnableShader(VXMaterial* material, std::int64_t layer) override
    {
        CountActivation();
        Write("EnableShader", material, layer);
    }
    void DisableShader(VXMaterial* material, std::int64_t layer) override { Write("DisableShader", material, layer); }
    void ClearShader(VXMaterial*) override { Write("ClearShader"); }
    bool DeleteShader(const BString&) override { return true; }
    void DeleteShaders() override { Write("DeleteShaders"); }
    void UpdateShaders(BArray<VXMaterial*>& materials) override
    {
        mLog->Log("UpdateShaders", std::to_string(materials.Count()));
    }
    BString GetVertexShaderSource(const BString& key) override { return "vertex " + key; }
    BString GetFragmentShaderSource(const BString& key) override { return "fragment " + key; }

private:
    void Write(const char* what) { mLog->Log(what); }
    void Write(const char* what, const VXMaterial* material, std::int64_t layer)
    {
        mLog->Log(what, material->InternalName().Std() + " " + std::to_string(layer));
    }

    RecordingEngine* mLog;
};
