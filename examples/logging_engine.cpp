// In which order does a frame call a draw engine?
//
// A subclass of the frame driver that draws nothing and prints what it is asked to do, so no OpenGL is needed. A real
// engine overrides the same hooks and touches graphics state in them.
#include "draw/VXSceneDrawEngine.h"
#include "draw/VXSceneDrawOptions.h"
#include "engine/VXEngine.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "mesh/VXGeom.h"

#include <cstdio>

class LoggingEngine : public VXSceneDrawEngine
{
public:
    VXSceneDrawOptions* DrawOptions() override { return &mOptions; }

    void BeginFrameState() override { std::printf("begin frame state\n"); }
    void EndFrameState() override { std::printf("end frame state\n"); }
    void PrepareScene(VXScene* scene) override
    {
        const VERTEX &min = scene->BoundingBox().Min(), &max = scene->BoundingBox().Max();
        std::printf("prepare scene: (%g %g %g) to (%g %g %g)\n", min.x, min.y, min.z, max.x, max.y, max.z);
    }
    void PrepareMainPass(VXMaterial*) override { std::printf("polygons, draw pass %d\n", GetDrawPass()); }
    void PrepareObjectPass(VXMaterial*) override { std::printf("wires\n"); }
    void PrepareLinePass(VXMaterial*) override { std::printf("line elements\n"); }
    void PrepareArrayPass(VXMaterial*, int) override { std::printf("outlines\n"); }
    void SkipDropShadow() override { std::printf("no drop shadow, draw pass %d\n", GetDrawPass()); }
    void BeginObject(VXObject* object) override { std::printf("  object %s\n", object->InternalName().CString()); }
    void SetVertexArray(VERTEX*, int count) override { std::printf("    %d vertices\n", count); }
    void BindMaterial(VXMaterial* material) override
    {
        std::printf("    material %s\n", material->InternalName().CString());
    }
    void DrawElements(const VXElementBatch& batch) override
    {
        static const char* const kKinds[] = {"quads", "triangles", "polygons", "lines", "points"};
        std::printf("    draw %d %s\n", batch.count, kKinds[int(batch.kind)]);
    }
    void DrawBitMaps(VXScene*) override { std::printf("overlays\n"); }

private:
    VXSceneDrawOptions mOptions;
};

// A pyramid: one quad and four triangles.
static VXGeom* Pyramid()
{
    static const VERTEX kVerts[] = {{-1, 0, 1}, {1, 0, 1}, {1, 0, -1}, {-1, 0, -1}, {0, 1.5f, 0}};
    static const int kCorners[] = {3, 2, 1, 0, 0, 1, 4, 1, 2, 4, 2, 3, 4, 3, 0, 4};
    static const int kLengths[] = {4, 3, 3, 3, 3};

    VXGeom* const mesh = new VXGeom;
    mesh->SetSizeFor(5, 5, 16, 0);
    for (int i = 0; i < 5; ++i)
        *mesh->Vertex(i) = kVerts[i];
    for (int i = 0; i < 16; ++i)
        mesh->Sets(false)[i] = kCorners[i];
    for (int i = 0, start = 0; i < 5; start += kLengths[i++])
    {
        mesh->Polygon(i)->start = start;
        mesh->Polygon(i)->length = kLengths[i];
    }
    GEOM_MakeDefaultMaterial(mesh->Geom());
    mesh->RebuildLists();
    return mesh;
}

int main()
{
    VXEngine host;
    host.InitScene();
    VXScene* const scene = host.Scene();
    LoggingEngine engine;
    scene->SetDrawEngine(&engine);
    scene->InitDefaultCameras();

    VXGeom* const mesh = Pyramid();
    VXObject* const object = new VXObject;
    object->SetInternalName("pyramid");
    object->SetGeom(mesh, true); // the object keeps a copy of its own
    delete mesh;
    scene->AddObject(object); // and the scene keeps the object
    scene->AttachAllMaterials();
    scene->SetSmoothLinedMode();
    scene->UpdateDerivedData();

    Mat44 camera;
    MAT_Identity(camera);
    MAT_Translate(camera, 0, 0, -5);
    scene->Draw(camera);

    scene->SetDrawEngine(nullptr); // the scene borrowed it
    while (scene->NumMaterials() > 0)
        delete scene->Material(0); // materials are the host's; each takes itself out of the list
    return 0;
}
