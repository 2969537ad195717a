// A scene with a recording engine, for tests of frames.
#pragma once

#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "mesh/VXGeom.h"
#include "tests/support/Meshes.h"
#include "tests/support/RecordingEngine.h"

#include <memory>
#include <vector>

using Lines = RecordingEngine::Lines;

/// The current scene, smooth, without objects; its camera looks from the world's origin.
class Stage
{
public:
    Stage() { scene.SetDrawEngine(&engine); }

    RecordingEngine engine;
    VXScene scene;

    int Frame()
    {
        Mat44 camera;
        MAT_Identity(camera);
        return engine.DrawScene(&scene, camera);
    }

    /// The lines of these hooks in one frame.
    Lines FrameOf(std::initializer_list<const char*> hooks)
    {
        engine.Only(hooks);
        engine.Take();
        Frame();
        return engine.Take();
    }

    VXMaterial* Material(const char* name, float transparency = 0)
    {
        VXMaterial* const material = mMaterials.emplace_back(std::make_unique<VXMaterial>(0, nullptr)).get();
        material->SetInternalName(name);
        material->SetTMax(transparency);
        scene.AddMaterial(material);
        return material;
    }

    /// An object of this mesh. @param materials of the mesh's slots  @param slots of the faces in order; slot 0 beyond
    VXObject* Add(const char* name, const TestMesh& mesh, const std::vector<VXMaterial*>& materials = {},
                  const std::vector<std::uint16_t>& slots = {})
    {
        const GeomPtr record = mesh.Record();
        while (record->NumMaterials() < int(materials.size()))
            record->materials.Append(GEOM_Material());
        for (std::size_t i = 0; i < materials.size(); ++i)
            record->SetMaterialPointer(int(i), materials[i]);
        for (std::size_t i = 0; i < slots.size(); ++i)
            record->Poly(std::int64_t(i))->material = slots[i];
        return Add(name, *record);
    }

    VXObject* Add(const char* name, GEOM& record)
    {
        VXGeom geom;
        geom.SetGeom(&record, true);
        VXObject* const object = new VXObject;
        object->SetInternalName(name);
        object->SetGeom(&geom, true);
        scene.AddObject(object);
        return object;
    }

    static void MoveTo(VXObject* object, float x, float y, float z)
    {
        MAT_Identity(object->GetTransform());
        MAT_Translate(object->GetTransform(), x, y, z);
    }

private:
    std::vector<std::unique_ptr<VXMaterial>> mMaterials;
};

/// Lines that begin with this hook's name.
inline Lines Of(const Lines& lines, const std::string& hook)
{
    Lines found;
    for (const std::string& line : lines)
        if (line == hook || line.starts_with(hook + " "))
            found.push_back(line);
    return found;
}

/// A single line element of four corners.
inline GeomPtr MeshWithLine()
{
    GeomPtr record = Grid(1, 1).Record();
    record->Poly(0)->type = kElementLine;
    return record;
}
