#include "engine/VXScene.h"
#include "host/import/MaterialFile.h"
#include "host/import/MaterialTree.h"
#include "host/import/ModelStore.h"
#include "host/tree/FixedMaterial.h"
#include "host/tree/MaterialJson.h"
#include "material/VXMaterial.h"
#include "mesh/VXGeom.h"

#include <algorithm>
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

void ModelStore::ReadMaterials(VXScene& scene, const BPath& path, float size, ImportReport& report)
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
        SetPlainMaterial(*material, record, path, report);
        Keep(*material, 0, TreeOf(record, path.Parent(), size));
    }
}

void ModelStore::SetPlainMaterial(VXMaterial& material, const MaterialRecord& record, const BPath& path,
                                  ImportReport& report)
{
    Apply(record, material);
    if (record.kdMap.file.IsEmpty())
        return;
    BString name = record.kdMap.file, why;
    name.ReplaceAll("\\", "/");
    const BPath texture = path.Parent().Joined(name);
    material.SetTextureIndex(mTextures.Add(texture, why));
    material.SetPreviewTexturePath(texture.FullPath());
    // The colour is a factor of the picture; black, which some programs write beside a picture, would hide it.
    const VERTEX& kd = record.kd;
    if (kd.x + kd.y + kd.z > 0)
        material.TextureColor().Set(kd.x, kd.y, kd.z, 1);
    if (material.TextureIndex() < 0)
        report.warnings.Append(path.FullPath() + ": the texture " + record.kdMap.file + " of material " + record.name +
                               " is not shown: it " + why);
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

// --- Trees

void ModelStore::Keep(VXMaterial& material, std::int64_t layer, std::shared_ptr<ShaderTree> tree)
{
    material.SetOrmondShaderTree(layer, static_cast<BShaderTree*>(tree.get()));
    material.SetShaderTreeDirty(true);
    const auto place =
        std::find_if(mTrees.begin(), mTrees.end(),
                     [&](const KeptTree& kept) { return kept.material == &material && kept.layer == layer; });
    if (place != mTrees.end())
        place->tree = std::move(tree);
    else
        mTrees.push_back({&material, layer, std::move(tree)});
}

BString ModelStore::SetTree(VXMaterial& material, std::int64_t layer, std::shared_ptr<ShaderTree> tree)
{
    const BString problem = layer == 0 && tree ? ApplyTree(*tree, material, mTextures) : BString();
    Keep(material, layer, std::move(tree));
    return problem;
}

std::vector<VXMaterial*> ModelStore::MaterialsOfModels() const
{
    std::vector<VXMaterial*> found;
    for (const VXGeom* const mesh : mMeshes)
        for (int slot = 0; slot < mesh->NumGeomMaterials(); ++slot)
            if (auto* const material = static_cast<VXMaterial*>(mesh->MaterialPointer(slot));
                material && std::find(found.begin(), found.end(), material) == found.end())
                found.push_back(material);
    return found;
}

void ModelStore::ApplyMaterials(std::vector<NamedMaterial> materials, ImportReport& report)
{
    const std::vector<VXMaterial*> there = MaterialsOfModels();
    const auto isNamed = [](const VXMaterial* material, const BString& name)
    { return material->InternalName() == name; };
    for (NamedMaterial& from : materials)
    {
        std::vector<VXMaterial*> targets;
        for (VXMaterial* const material : there)
            if (isNamed(material, from.name))
                targets.push_back(material);
        if (targets.empty() && materials.size() == 1)
            targets = there;
        if (targets.empty())
            report.warnings.Append("no model has a material '" + from.name + "', so that of this name is not used");
        for (VXMaterial* const material : targets)
        {
            material->RemoveAllLayers(); // but the base
            std::erase_if(mTrees, [&](const KeptTree& kept) { return kept.material == material && kept.layer > 0; });
        }
        for (std::size_t i = 0; i < from.layers.size(); ++i)
        {
            const std::shared_ptr<ShaderTree> tree = std::move(from.layers[i].tree);
            BString problem;
            for (VXMaterial* const material : targets)
            {
                const auto layer = std::int64_t(i);
                const BString& name = from.layers[i].name;
                if (layer >= material->NumLayers() && material->CreateNewLayer(name.CString(), name.CString()) < 0)
                    continue;
                problem = SetTree(*material, layer, tree);
            }
            if (!problem.IsEmpty())
                report.warnings.Append("material '" + from.name + "': " + problem);
        }
    }
    // What is drawn when, with what, hangs on the materials.
    for (VXGeom* const mesh : mMeshes)
        mesh->SetGeomChanged(true);
}
} // namespace vx
