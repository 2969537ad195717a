// The torus of a million quads as a scene of assimp. It gets there through a loader of our own, outside the clock.
#pragma once

#include "bench/BenchMeshes.h"

#include <assimp/BaseImporter.h>
#include <assimp/Importer.hpp>
#include <assimp/importerdesc.h>
#include <assimp/scene.h>

inline constexpr aiImporterDesc kTorusFormat = {
    "the benchmark's torus", "", "", "", aiImporterFlags_SupportTextFlavour, 0, 0, 0, 0, "velmartorus"};

/// Hands over the torus with separate corners, as assimp's own loaders do.
class TorusImporter : public Assimp::BaseImporter
{
public:
    explicit TorusImporter(const VERTEX* normals) : mNormals(normals) {}
    bool CanRead(const std::string& file, Assimp::IOSystem*, bool) const override
    {
        return GetExtension(file) == "velmartorus";
    }
    const aiImporterDesc* GetInfo() const override { return &kTorusFormat; }

protected:
    void InternReadFile(const std::string&, aiScene* scene, Assimp::IOSystem*) override
    {
        const GEOM& geom = TorusRecord(1000, 1000);
        const unsigned numCorners = unsigned(geom.NumCorners());
        auto* const mesh = new aiMesh;
        mesh->mPrimitiveTypes = aiPrimitiveType_POLYGON;
        mesh->mNumVertices = numCorners;
        mesh->mVertices = new aiVector3D[numCorners];
        mesh->mNormals = mNormals ? new aiVector3D[numCorners] : nullptr;
        mesh->mTextureCoords[0] = new aiVector3D[numCorners];
        mesh->mNumUVComponents[0] = 2;
        for (unsigned c = 0; c < numCorners; ++c)
        {
            const VERTEX& p = geom.verts[geom.sets[c]];
            const T_VERTEX& uv = geom.tex->verts[geom.tex->sets[c]];
            mesh->mVertices[c] = {p.x, p.y, p.z};
            mesh->mTextureCoords[0][c] = {uv.u, uv.v, 0};
            if (mNormals)
            {
                const VERTEX& n = mNormals[geom.sets[c]];
                mesh->mNormals[c] = {n.x, n.y, n.z};
            }
        }
        mesh->mNumFaces = unsigned(geom.numPolys);
        mesh->mFaces = new aiFace[mesh->mNumFaces];
        for (unsigned f = 0; f < mesh->mNumFaces; ++f)
        {
            mesh->mFaces[f].mNumIndices = 4;
            mesh->mFaces[f].mIndices = new unsigned[4]{4 * f, 4 * f + 1, 4 * f + 2, 4 * f + 3};
        }
        scene->mNumMeshes = 1;
        scene->mMeshes = new aiMesh* [1] { mesh };
        scene->mNumMaterials = 1;
        scene->mMaterials = new aiMaterial* [1] { new aiMaterial };
        scene->mRootNode = new aiNode("torus");
        scene->mRootNode->mNumMeshes = 1;
        scene->mRootNode->mMeshes = new unsigned[1]{0};
    }

private:
    const VERTEX* mNormals;
};

/// @param normals one per vertex of the torus, or null for a scene without normals
inline const aiScene* ReadTorus(Assimp::Importer& importer, const VERTEX* normals = nullptr)
{
    importer.RegisterLoader(new TorusImporter(normals));
    return importer.ReadFileFromMemory("torus", 5, 0, "velmartorus");
}
