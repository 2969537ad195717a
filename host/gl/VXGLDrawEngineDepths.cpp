#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "host/gl/VXGLDrawEngine.h"
#include "mesh/VXGeom.h"

#include <algorithm>
#include <cmath>

// Nearest and farthest vertex along the view: a picture of depth uses all its shades for what is there.
void VXGLDrawEngine::FindDepths(float depths[2]) const
{
    depths[0] = INFINITY;
    depths[1] = -INFINITY;
    for (std::int64_t i = 0; i < Scene()->NumObjects(); ++i)
    {
        const VXObject* const object = Scene()->Object(int(i));
        if (!object || !object->Visible() || IsGround(object))
            continue;
        Mat44 toView;
        MAT_Concat4x4(object->GetTransform(), Camera(), toView);
        const VXGeom* const geom = object->CurSubdivGeom(true);
        for (int v = 0; geom && v < geom->NumVerts(false); ++v)
        {
            const VERTEX p = *geom->Vertex(v);
            const float away = -(p.x * toView[0][2] + p.y * toView[1][2] + p.z * toView[2][2] + toView[3][2]);
            depths[0] = std::min(depths[0], away); // a NaN changes neither
            depths[1] = std::max(depths[1], away);
        }
    }
}

// Of the corners of all boxes: enough for a fade, and needs no look at the vertices.
void VXGLDrawEngine::FindBoxDepths(float depths[2]) const
{
    depths[0] = INFINITY;
    depths[1] = -INFINITY;
    for (std::int64_t i = 0; i < Scene()->NumObjects(); ++i)
    {
        const VXObject* const object = Scene()->Object(int(i));
        if (!object || !object->Visible() || IsGround(object) || !object->BoundingBox().Initialized())
            continue;
        Mat44 toView;
        MAT_Concat4x4(object->GetTransform(), Camera(), toView);
        const VERTEX ends[2] = {object->BoundingBox().Min(), object->BoundingBox().Max()};
        for (int corner = 0; corner < 8; ++corner)
        {
            const VERTEX p = {ends[corner & 1].x, ends[corner >> 1 & 1].y, ends[corner >> 2].z};
            const float away = -(p.x * toView[0][2] + p.y * toView[1][2] + p.z * toView[2][2] + toView[3][2]);
            depths[0] = std::min(depths[0], away);
            depths[1] = std::max(depths[1], away);
        }
    }
}

// The scene's range; one without length stands for that of the content. What is farthest then keeps a quarter of its
// colour: a model that ends in nothing looks cut off.
void VXGLDrawEngine::FindDepthCue(float cue[4]) const
{
    if (!Scene()->DepthCueOn() || ShowsData(Scene()->SceneMaterial()))
        return;
    float range[2] = {Scene()->DepthCueStart(), Scene()->DepthCueEnd()};
    if (!(range[1] > range[0]))
    {
        FindBoxDepths(range);
        range[1] += (range[1] - range[0]) / 3;
    }
    if (!(range[1] > range[0]) || !std::isfinite(range[1] - range[0]))
        return;
    cue[0] = range[0];
    cue[1] = 1 / (range[1] - range[0]);
    cue[2] = 1;
}
