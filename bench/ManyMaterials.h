// A scene of many materials, each on an object of its own and every second with a program of its own.
#pragma once

#include "draw/VXSceneDrawEngine.h"
#include "draw/VXSceneDrawOptions.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "engine/VXSceneDelegate.h"
#include "mesh/VXGeom.h"
#include "shader/VXShaderCompiler.h"
#include "shader/VXShaderEngine.h"
#include "shader/VXShaderProgram.h"
#include "tests/support/FakeShaderTree.h"
#include "tests/support/Meshes.h"

#include <memory>
#include <vector>

/// Makes programs that do nothing.
class EmptyCompiler : public VXShaderCompiler
{
public:
    using VXShaderCompiler::VXShaderCompiler;
    void Init() override {}
    void BeginShading() override {}
    void EndShading() override {}

protected:
    VXShaderProgram* BuildProgram(VXMaterial*, std::int64_t) override { return new VXShaderProgram; }
};

class ManyMaterials
{
public:
    static constexpr int kCount = 200;

    explicit ManyMaterials(VXSceneDrawEngine& engine) : mEngine(engine)
    {
        mScene.SetDrawEngine(&engine);
        mScene.SetSceneDelegate(&mDelegate);
        engine.DrawOptions()->mHWShading = true;
        engine.SetHWShadingAllowed(true);
        VXShaderEngine* const shaders = new VXShaderEngine(&engine);
        shaders->SetShaderCompiler(new EmptyCompiler(shaders, &engine));
        engine.SetShaderEngine(shaders);
        for (int i = 0; i < kCount; ++i)
            Add(i);
        Frame(); // builds what is missing
    }
    ~ManyMaterials() { VXShaderCompiler::ClearProgramCache(); }

    bool HasPrograms() const { return mEngine.ShaderEngine()->HasShader(mMaterials[0].get(), 0); }
    void Frame()
    {
        Mat44 camera;
        MAT_Identity(camera);
        MAT_Translate(camera, 0, 0, -30);
        mScene.Draw(camera);
    }
    void Upkeep() { mEngine.ShaderEngine()->UpdateShaders(mScene.Materials()); }

private:
    struct Delegate : VXSceneDelegate
    {
        void ComputeShaderHash(VXMaterial* material, bool) override
        {
            // As long as a real one, and differing late as texts do that share a beginning.
            material->Layer(0)->SetTreeHash(("9f86d081884c7d659a2feaa0c55ad0" + material->InternalName()).CString());
        }
    };

    void Add(int i)
    {
        VXMaterial* const material = mMaterials.emplace_back(std::make_unique<VXMaterial>(0, nullptr)).get();
        material->SetInternalName(BString::Format("%08x", unsigned(i) * 2654435761u));
        if (i % 2 == 0)
            mTree.GiveTo(*material);
        mScene.AddMaterial(material);
        const GeomPtr record = Cube().Record();
        record->materials.Append(GEOM_Material());
        record->SetMaterialPointer(0, material);
        VXGeom geom;
        geom.SetGeom(record.get(), true);
        VXObject* const object = new VXObject;
        object->SetGeom(&geom, true);
        MAT_Identity(object->GetTransform());
        MAT_Translate(object->GetTransform(), float(i % 20 - 10) * 3, float(i / 20 - 5) * 3, -20);
        mScene.AddObject(object);
    }

    FakeTree mTree;
    std::vector<std::unique_ptr<VXMaterial>> mMaterials;
    Delegate mDelegate;
    VXSceneDrawEngine& mEngine;
    VXScene mScene;
};
