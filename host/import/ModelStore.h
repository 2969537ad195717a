// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BArray.h"
#include "base/BPath.h"
#include "base/BString.h"
#include "host/image/TextureTable.h"

#include <memory>
#include <vector>

class GEOM;
class VXGeom;
class VXMaterial;
class VXObject;
class VXScene;

namespace vx
{
class ShaderTree;
struct MaterialRecord;
struct NamedMaterial;

/// How a model is brought in.
struct ImportOptions
{
    float creaseAngle = 40;     ///< degrees; edges at least this sharp are hard
    bool creases = true;        ///< off: normals run through everywhere
    bool separateLines = false; ///< lines and points become an object of their own, so that faces can be subdivided
    int creaseMethod = 0;       ///< how creases split vertices: VXGeom::GenCreaseMethod while the model is derived
};

/// What there is to say about an import, one line each, led by the name of the file it is about.
struct ImportReport
{
    BString error;            ///< empty when the model was read
    BArray<BString> warnings; ///< what is missing or odd without keeping the model from being shown
};

/// Models read from files, and all that a scene refers to without owning it: meshes, materials, textures. Must outlive
/// the scene that shows them, or at least the frames.
class VELMAR_HOST_EXPORT ModelStore
{
public:
    ModelStore();
    ~ModelStore();
    ModelStore(const ModelStore&) = delete;
    ModelStore& operator=(const ModelStore&) = delete;

    /// Reads a Wavefront file, plain or gzip, with the materials and textures that it names, and adds it to the scene
    /// as one object that takes its style from the scene and casts a shadow. The scene must be the current one.
    /// @return the object, which the scene owns; null with report.error when the model could not be used
    VXObject* ImportObj(VXScene& scene, const BPath& path, const ImportOptions& options, ImportReport& report);

    /// The same from text in memory. @param name stands for the file in messages  @param folder where the material
    /// files that it names lie
    VXObject* ImportObjText(VXScene& scene, const char* text, std::size_t size, const BString& name,
                            const BPath& folder, const ImportOptions& options, ImportReport& report);

    /// The same from a record, which is taken, in success and failure alike. @param name stands for its file
    VXObject* TakeRecord(VXScene& scene, GEOM* record, const BString& name, const BPath& folder,
                         const ImportOptions& options, ImportReport& report);

    /// Gives a picture to every material that has none. @return empty, or why the picture could not be used
    BString SetDefaultTexture(const BPath& path);

    /// Gives materials of a text to those of the models that have their names. One material of which there is none of
    /// that name goes to all, if it is the only one; of several, such are warned about.
    void ApplyMaterials(std::vector<NamedMaterial> materials, ImportReport& report);

    /// Makes a tree that of a layer and keeps it; the base layer's also sets what fixed drawing shows.
    /// @return empty, or what of it is not shown
    BString SetTree(VXMaterial& material, std::int64_t layer, std::shared_ptr<ShaderTree> tree);

    /// The material of that name, made in neutral grey when there is none yet.
    VXMaterial* MaterialNamed(VXScene& scene, const char* name);

    TextureTable& Textures() { return mTextures; }
    std::int64_t NumMaterials() const { return mMaterials.Count(); }
    VXMaterial* Material(std::int64_t i) const { return mMaterials[i]; }

private:
    VXObject* AddMesh(VXScene& scene, VXGeom* mesh, const BString& name, const BPath& folder, ImportReport& report);
    VXObject* AddParts(VXScene& scene, VXGeom* mesh, const BString& name, const BPath& folder,
                       const ImportOptions& options, ImportReport& report);
    void ReadMaterials(VXScene& scene, const BPath& path, float size, ImportReport& report);
    void SetPlainMaterial(VXMaterial& material, const MaterialRecord& record, const BPath& path, ImportReport& report);
    std::vector<VXMaterial*> MaterialsOfModels() const;
    void Keep(VXMaterial& material, std::int64_t layer, std::shared_ptr<ShaderTree> tree);

    struct KeptTree
    {
        const VXMaterial* material;
        std::int64_t layer;
        std::shared_ptr<ShaderTree> tree; ///< one may be that of several materials
    };

    BArray<VXGeom*> mMeshes;        ///< owned; objects borrow them
    BArray<VXMaterial*> mMaterials; ///< owned; scenes and meshes point to them
    std::vector<KeptTree> mTrees;   ///< materials point to them
    TextureTable mTextures;
};
} // namespace vx
