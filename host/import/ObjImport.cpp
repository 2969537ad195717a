#include "host/import/ModelStore.h"

#include "base/GEOM_Obj.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "engine/VXSwitches.h"
#include "host/import/ElementParts.h"
#include "host/import/MaterialFile.h"
#include "material/VXMaterial.h"
#include "mesh/VXGeom.h"

#include <memory>

namespace vx
{
// A surface about which nothing is known: light enough that shading shows, dark enough that light does not clip.
static constexpr float kNeutralGrey = 0.72f;

ModelStore::ModelStore() = default;

ModelStore::~ModelStore()
{
    for (VXGeom* const mesh : mMeshes)
        delete mesh;
    for (VXMaterial* const material : mMaterials)
        delete material;
}

// --- Materials

VXMaterial* ModelStore::MaterialNamed(VXScene& scene, const char* name)
{
    if (VXMaterial* const present = scene.FindMaterial(name, false))
        return present;
    auto made = std::make_unique<VXMaterial>(0, nullptr);
    made->SetInternalName(name);
    made->SetExternalName(name);
    made->KdColor().Set(kNeutralGrey, kNeutralGrey, kNeutralGrey, 1);
    made->KsColor().Set(0.22f, 0.22f, 0.22f, 1);
    made->SetNs(28);
    if (!mMaterials.Reserve(mMaterials.Count() + 1))
        return nullptr;
    mMaterials.Append(made.get());
    scene.AddMaterial(made.get());
    return made.release();
}

static void Apply(const MaterialRecord& from, VXMaterial& to)
{
    to.KdColor().Set(from.kd.x, from.kd.y, from.kd.z, 1);
    to.KsColor().Set(from.ks.x, from.ks.y, from.ks.z, 1);
    to.SetNs(from.ns > 1 ? from.ns : 1);
    if (from.ns <= 1)
        to.KsColor().SetBrightness(0); // without an exponent a highlight would be a veil over everything
    to.SetTMin(1 - from.opacity);
    to.SetTMax(1 - from.opacity);
}

void ModelStore::ReadMaterials(VXScene& scene, const BPath& path, ImportReport& report)
{
    BArray<MaterialRecord> records;
    const BString problem = ReadMaterialFile(path, records, report.warnings);
    if (!problem.IsEmpty())
    {
        report.warnings.Append(path.FullPath() + ": materials are not shown: " + problem);
        return;
    }
    for (const MaterialRecord& record : records)
    {
        const bool known = scene.FindMaterial(record.name.CString(), false) != nullptr;
        VXMaterial* const material = known ? nullptr : MaterialNamed(scene, record.name.CString());
        if (!material)
            continue; // of two materials of one name the first counts
        Apply(record, *material);
        if (record.kdMap.IsEmpty())
            continue;
        BString name = record.kdMap, why;
        name.ReplaceAll("\\", "/");
        const BPath texture = path.Parent().Joined(name);
        material->SetTextureIndex(mTextures.Add(texture, why));
        material->SetPreviewTexturePath(texture.FullPath());
        // The colour is a factor of the picture; black, which some programs write beside a picture, would hide it.
        const VERTEX& kd = record.kd;
        if (kd.x + kd.y + kd.z > 0)
            material->TextureColor().Set(kd.x, kd.y, kd.z, 1);
        if (material->TextureIndex() < 0)
            report.warnings.Append(path.FullPath() + ": the texture " + record.kdMap + " of material " + record.name +
                                   " is not shown: it " + why);
    }
}

BString ModelStore::SetDefaultTexture(const BPath& path)
{
    BString why;
    const std::int32_t index = mTextures.Add(path, why);
    if (index < 0)
        return path.FullPath() + ": " + why;
    for (VXMaterial* const material : mMaterials)
        if (material->TextureIndex() < 0)
            material->SetTextureIndex(index);
    return {};
}

// --- Meshes

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
    TellOddities(name, read, report);
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
    for (const BString& file : record.materialFiles)
    {
        BString local = file;
        local.ReplaceAll("\\", "/");
        ReadMaterials(scene, folder.Joined(local), report);
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
