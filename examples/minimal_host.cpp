// What is the least that a host has to do for a picture?
//
// minimal_host [PICTURE.png]: an engine with its scene, a mesh from plain arrays, a material, a light, a camera, one
// frame without a window.
#include "engine/VXEngine.h"
#include "engine/VXLight.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "host/PreviewSetup.h"
#include "host/gl/Framebuffer.h"
#include "host/gl/VXGLDrawEngine.h"
#include "host/image/Png.h"
#include "host/window/OffscreenContext.h"
#include "mesh/VXGeom.h"

#include <cstdio>

static int Fail(const BString& why)
{
    std::fprintf(stderr, "minimal_host: %s\n", why.CString());
    return 1;
}

// An octahedron: six vertices, eight triangles.
static bool FillMesh(VXGeom& mesh)
{
    static const VERTEX kVerts[] = {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
    static const int kCorners[] = {0, 2, 4, 2, 1, 4, 1, 3, 4, 3, 0, 4, 2, 0, 5, 1, 2, 5, 3, 1, 5, 0, 3, 5};
    if (mesh.SetSizeFor(6, 8, 24, 0) != 0)
        return false;
    for (int i = 0; i < 6; ++i)
        *mesh.Vertex(i) = kVerts[i];
    for (int i = 0; i < 24; ++i)
        mesh.Sets(false)[i] = kCorners[i];
    for (int i = 0; i < 8; ++i)
    {
        mesh.Polygon(i)->start = 3 * i;
        mesh.Polygon(i)->length = 3;
    }
    mesh.SetCreaseAngle(40); // every edge of an octahedron is sharper: the faces stay flat
    return GEOM_MakeDefaultMaterial(mesh.Geom()) == 0 && mesh.RebuildLists();
}

int main(int argc, char** argv)
{
    constexpr int kWidth = 640, kHeight = 480;

    // The context comes first and goes last: drawing engine and target live in it.
    vx::OffscreenContext context;
    if (!context.Create())
        return Fail(context.Error());
    vx::Framebuffer target;
    if (const BString problem = target.Create(kWidth, kHeight, 4); !problem.IsEmpty())
        return Fail(problem);
    VXMaterial jade(0, nullptr); // materials belong to the host
    jade.KdColor().Set(0.25f, 0.6f, 0.5f, 1);
    VXGLDrawEngine drawEngine;
    if (const BString problem = drawEngine.Init(); !problem.IsEmpty())
        return Fail(problem);

    VXEngine engine;
    engine.InitScene();
    VXScene& scene = *engine.Scene();
    scene.SetDrawEngine(&drawEngine);

    VXGeom mesh;
    if (!FillMesh(mesh))
        return Fail("out of memory");
    mesh.SetMaterialPointer(0, &jade);
    VXObject* const object = new VXObject;
    object->SetGeom(&mesh, true);
    scene.AddObject(object); // the scene owns it from now on
    scene.UpdateDerivedData();

    VXLight* const light = new VXLight; // from where it stands: up, to the left, towards the viewer
    light->GetTransform()[2][0] = -0.5f;
    light->GetTransform()[2][1] = 0.7f;
    light->GetTransform()[2][2] = 0.5f;
    scene.AddLight(light);

    const VERTEX corners[] = {object->BoundingBox().Min(), object->BoundingBox().Max()};
    const vx::View view = vx::FitView(corners, {}, float(kWidth) / kHeight, {});
    vx::PlaceCamera(scene, view);

    scene.SetSmoothMode();
    target.Bind();
    Mat44 camera;
    MAT_Copy(view.toView, camera);
    scene.Draw(camera);
    if (!drawEngine.Error().IsEmpty())
        return Fail(drawEngine.Error());

    const vx::PicturePtr picture = target.ReadBack(false);
    const BString problem = picture ? vx::WritePng(*picture, argc > 1 ? argv[1] : "minimal_host.png") : "out of memory";
    return problem.IsEmpty() ? 0 : Fail(problem);
}
