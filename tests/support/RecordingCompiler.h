// A shader compiler whose generator makes empty programs, and which writes what it is asked into the log of a
// RecordingEngine.
#pragma once

#include "material/VXMaterial.h"
#include "shader/VXShaderCompiler.h"
#include "shader/VXShaderEngine.h"
#include "shader/VXShaderProgram.h"
#include "tests/support/FakeShaderTree.h"
#include "tests/support/RecordingEngine.h"

#include <string>

/// Named after the material and layer that it was built for.
class RecordingProgram : public VXShaderProgram
{
public:
    RecordingProgram(RecordingEngine* log, const std::string& name) : mLog(log), mName(name)
    {
        SetVertexProgramSource("vertex " + name);
        SetFragmentProgramSource("fragment " + name);
    }
    ~RecordingProgram() override { mLog->Log("DeleteProgram", mName); }
    void MakeCurrent() override { mLog->Log("MakeCurrent", mName); }
    void StopBeingCurrent() override { mLog->Log("StopBeingCurrent", mName); }

private:
    RecordingEngine* mLog;
    std::string mName;
};

class RecordingCompiler : public VXShaderCompiler
{
public:
    RecordingCompiler(VXShaderEngine* engine, RecordingEngine* log) : VXShaderCompiler(engine, log), mLog(log) {}
    ~RecordingCompiler() override
    {
        ClearProgramCache(); // tests share the process, and so the cache
        ++deaths;
    }

    static inline int deaths = 0;
    BString failing; ///< programs of the material of this name cannot be built

    /// A shader engine with a compiler of this kind, given to the draw engine that owns both from then on.
    static RecordingCompiler* Install(RecordingEngine& engine)
    {
        VXShaderEngine* const shaders = new VXShaderEngine(&engine);
        RecordingCompiler* const compiler = new RecordingCompiler(shaders, &engine);
        shaders->SetShaderCompiler(compiler);
        engine.SetShaderEngine(shaders);
        return compiler;
    }

    /// A tree, a hash and a program for this layer, whoever needs it.
    void GiveProgram(VXMaterial* material, std::int64_t layer)
    {
        static FakeTree tree;
        tree.GiveTo(*material, layer);
        const std::string name = NameOf(material, layer);
        material->Layer(layer)->SetTreeHash(name.c_str());
        StoreProgram(name, new RecordingProgram(mLog, name));
    }

    void Init() override { mLog->Log("Init"); }
    void BeginShading() override { mLog->Log("BeginShading"); }
    void EndShading() override { mLog->Log("EndShading"); }
    void PrepareForDrawScene() override { mLog->Log("PrepareForDrawScene"); }

protected:
    VXShaderProgram* BuildProgram(VXMaterial* material, std::int64_t layer) override
    {
        mLog->Log("BuildProgram", NameOf(material, layer));
        const bool fails = material->InternalName() == failing;
        SetErrors(fails ? "0(1): no such function" : "");
        return fails ? nullptr : new RecordingProgram(mLog, NameOf(material, layer));
    }

private:
    static std::string NameOf(const VXMaterial* material, std::int64_t layer)
    {
        return material->InternalName().Std() + " " + std::to_string(layer);
    }

    RecordingEngine* mLog;
};
