#include "host/import/ModelStore.h"

#include "base/GEOM_Obj.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "engine/VXSwitches.h"
#include "host/import/ElementParts.h"
#include "mesh/VXGeom.h"

#include <algorithm>
#include <memory>

namespace vx
{

// The method is a setting of the whole process, and put back for whoever else derives meshes.
struct CreaseMethod : VXSwitches::Scoped<int>
{
    explicit CreaseMethod(const ImportOptions& options)
        : Scoped(VXGeom::GenCreaseMethod, VXGeom::SetGenCreaseMethod, options.creaseMethod)
    {
    }
};

static std::unique_ptr<VXGeom> NewMesh(const ImportOptions& options)
{
    auto mesh = std::make_unique<VXGeom>();
    mesh->SetCreaseAngle(options.creaseAngle);
    mesh->SetGenerateCreases(options.creases);
    return mesh;
}

static BString Told(const BString& name, const GEOM_ReadReport& report)
{
    return report.errorLine > 0
               ? BString::Format("%s:%lld: ", name.CString(), static_cast<long long>(report.errorLine)) + report.error
               : name + ": " + report.error;
}

static void TellOddities(const BString& name, const GEOM_ReadReport& read, ImportReport& report)
{
    if (read.shortFaces > 0)
        report.warnings.Append(BString::Format("%s:%lld: faces with fewer than 3 corners are left out: %lld",
                                               name.CString(), static_cast<long long>(read.shortFaceLine),
                                               static_cast<long long>(read.shortFaces)));
}

VXObject* ModelStore::ImportObj(VXScene& scene, const BPath& path, const ImportOptions& options, ImportReport& report)
{
    const CreaseMethod method(options);
    std::unique_ptr<VXGeom> mesh = NewMesh(options);
    GEOM_ReadReport read;
    if (mesh->ReadWavefront(path.FullPath().CString(), nullptr, &read) != 0)
    {
        report.error = Told(path.FullPath(), read);
        return nullptr;
    }
    TellOddities(path.FullPath(), read, report);
    return AddParts(scene, mesh.release(), path.FullPath(), path.Parent(), options, report);
}

VXObject* ModelStore::ImportObjText(VXScene& scene, const char* text, std::size_t size, const BString& name,
                                    const BPath& folder, const ImportOptions& options, ImportReport& report)
{
    GEOM_ReadReport read;
    GEOM* const record = GEOM_ReadObjText(text, size, nullptr, &read);
    if (!record)
    {
        report.error = Told(name, read);
        return nullptr;
    }
    VXObject* const object = TakeRecord(scene, record, name, folder, options, report);
    if (object)
        TellOddities(name, read, report);
    return object;
}

VXObject* ModelStore::TakeRecord(VXScene& scene, GEOM* record, const BString& name, const BPath& folder,
                                 const ImportOptions& options, ImportReport& report)
{
    const CreaseMethod method(options);
    std::unique_ptr<VXGeom> mesh = NewMesh(options);
    if ((record->NumMaterials() < 1 && GEOM_MakeDefaultMaterial(record)) || GEOM_PurgeUnusedMaterials(record))
    {
        GEOM_Free(record);
        report.error = name + ": out of memory";
        return nullptr;
    }
    const int status = mesh->SetGeom(record, false);
    mesh->SetGeomShared(false); // nobody else holds the record
    if (status != 0)
    {
        report.error = name + ": out of memory";
        return nullptr;
    }
    return AddParts(scene, mesh.release(), name, folder, options, report);
}

// Takes the mesh. @return the object with the faces, when there are any
VXObject* ModelStore::AddParts(VXScene& scene, VXGeom* mesh, const BString& name, const BPath& folder,
                               const ImportOptions& options, ImportReport& report)
{
    std::unique_ptr<VXGeom> held(mesh);
    const GEOM& whole = *mesh->Geom();
    if (!options.separateLines || !HasElements(whole, ElementPart::Faces) || !HasElements(whole, ElementPart::Rest))
        return AddMesh(scene, held.release(), name, folder, report);
    VXObject* faces = nullptr;
    for (const ElementPart part : {ElementPart::Rest, ElementPart::Faces})
    {
        GEOM* const record = CopyOfElements(whole, part);
        std::unique_ptr<VXGeom> piece = NewMesh(options);
        const bool made = record && piece->SetGeom(record, false) == 0;
        piece->SetGeomShared(false);
        faces = made ? AddMesh(scene, piece.release(), name, folder, report) : nullptr;
        if (!made)
            report.error = name + ": out of memory";
        if (!faces)
            return nullptr;
    }
    return faces;
}

// Takes the mesh.
VXObject* ModelStore::AddMesh(VXScene& scene, VXGeom* mesh, const BString& name, const BPath& folder,
                              ImportReport& report)
{
    std::unique_ptr<VXGeom> held(mesh);
    const GEOM& record = *mesh->Geom();
    if (record.numVerts == 0 || record.numPolys == 0)
    {
        report.error = name + ": there is nothing to show: it has no faces, lines or points";
        return nullptr;
    }
    float stats[9]; // least x y z, greatest x y z, middle
    GEOM_Stats(&record, stats);
    const float size = std::max({stats[3] - stats[0], stats[4] - stats[1], stats[5] - stats[2]});
    for (const BString& file : record.materialFiles)
    {
        BString local = file;
        local.ReplaceAll("\\", "/");
        ReadMaterials(scene, folder.Joined(local), size, report);
    }
    for (int slot = 0; slot < mesh->NumGeomMaterials(); ++slot)
    {
        const char* const wanted = mesh->MaterialName(slot);
        mesh->SetMaterialPointer(slot, MaterialNamed(scene, wanted && *wanted ? wanted : "Default"));
    }
    if (!mMeshes.Reserve(mMeshes.Count() + 1))
    {
        report.error = name + ": out of memory";
        return nullptr;
    }
    mMeshes.Append(held.release());
    VXObject* const object = new VXObject;
    // The frame takes the object of one internal name for the ground.
    const BString internal = BPath(name).BaseName();
    object->SetInternalName(internal == "GROUND" ? "GROUND model" : internal.CString());
    object->SetExternalName(BPath(name).FileName().CString());
    object->SetGeom(mesh, false);
    object->SetCastsShadow(true);
    scene.AddObject(object);
    return object;
}
} // namespace vx
