// How does a host bend a smooth surface frame by frame?
//
// posing [MODEL.obj [FRAMES]]: subdivides a model twice, twists it in every frame, prints how many frames a second that
// makes. The model is a control cage: the twist moves its few vertices, and the surface follows.
#include "engine/VXEngine.h"
#include "engine/VXObject.h"
#include "engine/VXObjectDelegate.h"
#include "engine/VXScene.h"
#include "mesh/VXGeom.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// Level 0 starts every frame as a copy of the control mesh. What is done to it here the finer levels are made from, so
// they need no deformation of their own.
class Twist : public VXObjectDelegate
{
public:
    float turns = 0; ///< per unit of height

    int MungeSubdividedVerts(VXObject*, int level, VERTEX* verts, int count) override
    {
        for (int i = 0; level == 0 && i < count; ++i)
        {
            const VERTEX v = verts[i];
            const float angle = 6.2831853f * turns * v.y, c = std::cos(angle), s = std::sin(angle);
            verts[i] = {c * v.x + s * v.z, v.y, c * v.z - s * v.x};
        }
        return 0;
    }
};

// Only faces can be subdivided; a model may have lines and points beside them.
static bool KeepFaces(VXGeom& mesh)
{
    GEOM& record = *mesh.Geom();
    int kept = 0;
    for (int i = 0; i < record.numPolys; ++i)
        if (record.Poly(i)->IsFace() && record.Poly(i)->length > 2)
        {
            std::memmove(static_cast<void*>(record.Poly(kept)), record.Poly(i), std::size_t(record.PolyStride()));
            if (record.PolyHasTexture(i))
                record.tex->polys[kept] = record.tex->polys[i];
            else if (record.tex && kept < record.tex->numPolys)
                record.tex->polys[kept] = {0, 0};
            ++kept;
        }
    const GEOM_Texture none, &tex = record.tex ? *record.tex : none;
    return record.SetSize(kept, record.numVerts, int(record.NumCorners()), 0, tex.numCorners, tex.numVerts) == 0 &&
           mesh.RebuildLists();
}

int main(int argc, char** argv)
{
    const char* const path = argc > 1 ? argv[1] : VELMAR_SAMPLES "/teacup.obj";
    const int frames = argc > 2 ? std::atoi(argv[2]) : 200;
    VXGeom cage;
    GEOM_ReadReport report;
    if (cage.ReadWavefront(path, nullptr, &report) != 0)
    {
        std::fprintf(stderr, "%s:%lld: %s\n", path, static_cast<long long>(report.errorLine), report.error.CString());
        return 1;
    }

    VXEngine engine;
    engine.InitScene();
    Twist twist;
    VXObject* const object = new VXObject;
    object->SetGeom(&cage, false); // borrowed
    object->SetDelegate(&twist);
    object->SetCurSubDivLevel(2);
    engine.Scene()->AddObject(object); // the scene owns it from now on

    float box[9];
    GEOM_Stats(cage.Geom(), box);
    const float height = box[4] - box[1];

    // The first frame builds all levels; the others move what is there.
    if (!KeepFaces(cage) || object->RebuildSubDiv() != 0)
    {
        std::fprintf(stderr, "%s: it cannot be subdivided\n", path);
        return 1;
    }
    const auto start = std::chrono::steady_clock::now();
    for (int frame = 0; frame < frames; ++frame)
    {
        twist.turns = 0.1f * std::sin(0.05f * float(frame)) / (height > 0 ? height : 1);
        object->SetSubdivDirty(true); // the control mesh is as it was, and its surface is not
        object->Subdivide();
        // Here a host draws: positions and normals of object->SubdivGeom(2) are those of this frame.
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    std::printf("%d polygons, subdivided twice %d\n", cage.NumPolys(), object->SubdivGeom(2)->NumPolys());
    std::printf("%.0f frames per second\n", frames / seconds);
    return 0;
}
