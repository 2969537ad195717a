// Crease vertices and creased normals at 80 degrees beside assimp, which makes smooth normals by angle over separate
// corners and then joins what came out equal. The scene reaches assimp through a loader of our own, outside the clock.

#include "bench/BenchMeshes.h"
#include "mesh/VXGeom.h"

#include <assimp/BaseImporter.h>
#include <assimp/Importer.hpp>
#include <assimp/importerdesc.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <benchmark/benchmark.h>

namespace
{
void OurCreases(benchmark::State& state)
{
    VXGeom geom;
    geom.SetGeom(const_cast<GEOM*>(&TorusRecord(1000, 1000)), true);
    for (auto _ : state)
    {
        geom.ClearEdgeSmoothing();
        state.SetIterationTime(SecondsOf([&] { geom.GenerateCreaseData(); }));
        if (geom.NumbCreaseVerts() != 1000 + 1000 + 1)
            state.SkipWithError("a torus has one seam around and one along");
    }
    state.SetItemsProcessed(geom.NumPolys() * std::int64_t(state.iterations()));
}

constexpr aiImporterDesc kTorusFormat = {
    "the benchmark's torus", "", "", "", aiImporterFlags_SupportTextFlavour, 0, 0, 0, 0, "velmartorus"};

/// Hands over the torus with separate corners, as assimp's own loaders do.
class TorusImporter : public Assimp::BaseImporter
{
public:
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
        mesh->mTextureCoords[0] = new aiVector3D[numCorners];
        mesh->mNumUVComponents[0] = 2;
        for (unsigned c = 0; c < numCorners; ++c)
        {
            const VERTEX& p = geom.verts[geom.sets[c]];
            const T_VERTEX& uv = geom.tex->verts[geom.tex->sets[c]];
            mesh->mVertices[c] = {p.x, p.y, p.z};
            mesh->mTextureCoords[0][c] = {uv.u, uv.v, 0};
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
};

void PeerCreases(benchmark::State& state)
{
    for (auto _ : state)
    {
        Assimp::Importer importer;
        importer.RegisterLoader(new TorusImporter);
        importer.SetPropertyFloat(AI_CONFIG_PP_GSN_MAX_SMOOTHING_ANGLE, 80);
        if (!importer.ReadFileFromMemory("torus", 5, 0, "velmartorus"))
            state.SkipWithError(importer.GetErrorString());
        const aiScene* scene = nullptr;
        const auto process = [&]
        { scene = importer.ApplyPostProcessing(aiProcess_GenSmoothNormals | aiProcess_JoinIdenticalVertices); };
        state.SetIterationTime(SecondsOf(process));
        if (!scene || scene->mMeshes[0]->mNumVertices >= 4u * 1000 * 1000)
            state.SkipWithError("nothing was joined");
    }
}

BENCHMARK(OurCreases)->Name("Creases/velmar")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(PeerCreases)->Name("Creases/assimp")->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);
} // namespace
