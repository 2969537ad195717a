#include "draw/VXSceneDrawEngine.h"

#include "draw/VXSceneDrawOptions.h"
#include "draw/detail/FrameScopes.h"
#include "engine/VXScene.h"
#include "engine/VXSwitches.h"
#include "mesh/VXGeom.h"
#include "mesh/VXSetIterator.h"
#include "shader/VXShaderEngine.h"

// --- When edge lines are drawn

static bool StyledMode(const VXScene* scene) { return scene && scene->SceneMaterial()->GetFlagPick(); }

bool VXSceneDrawEngine::DoHaberlines()
{
    if (StyledMode(mScene) && (mScene->PickPolys() || mScene->PickShadows()))
        return false;
    return mDrawPass == kNormalPass && DrawOptions()->mHaberlinesOn;
}

bool VXSceneDrawEngine::HaberlinesDrawLast()
{
    if (StyledMode(mScene) && (mScene->PickPolys() || mScene->PickObject() || mScene->PickShadows()))
        return false;
    return DrawOptions()->mHaberlinesDrawLast;
}

bool VXSceneDrawEngine::HaberlinesWelded() { return DrawOptions()->mHaberlinesWelded; }

// --- The scene's

void VXSceneDrawEngine::DrawSceneHaberlines(VXScene* scene)
{
    if (!scene || scene->SceneMaterial()->GetFlagVertexColorsOnly() || mDrawPass != kNormalPass)
        return;
    if (GroupModeOn())
        return;
    mScene = scene;
    BeginFrameState();
    const ActiveShading active(mShaderEngine, SceneWantsShading());
    VisitObjects(&VXSceneDrawEngine::DrawHaberlinesOfObject);
}

void VXSceneDrawEngine::DrawHaberlinesOfObject(VXObject& object)
{
    VXMaterial* const objectMode = object.DefaultMaterial();
    VXMaterial* const sceneMode = mScene->SceneMaterial();
    const bool polys = EffectiveMode(objectMode, sceneMode)->GetFlagDrawPolys();
    for (int index = object.NumbDrawGeoms() - 1; index >= 0; --index)
    {
        if (!TakeGeom(object, index))
            continue;
        if (mElementPass == 0 && (object.WantsLinesOnly(E_DrawGeom(index)) || !polys))
            continue;
        DrawHaberlines(mCurrentGeom, objectMode, sceneMode, mScene);
    }
}

// --- One geometry's

void VXSceneDrawEngine::DrawHaberlines(VXGeom* geom, VXMaterial* /*objectMode*/, VXMaterial* /*sceneMode*/,
                                       VXScene* scene)
{
    if (VXSwitches::EdgeLinesSuppressed() || !DoHaberlines() || !geom)
        return;
    if (!geom->DataSorted())
        geom->SortGeomData();
    const ClientArrays arrays(*this);
    SetVertexArray(geom->Verts(), geom->NumVerts(true));
    SetNormalArray(nullptr, 0);
    SetColorArray(nullptr, 0);
    SetTexCoordArray(nullptr, 0);
    SetTangentArray(nullptr, 0);
    PrepareGeometry(geom);
    PrepareSceneLights(scene);

    bool cull = false, back = false;
    GetCullFace(cull, back);
    VXSetIterator runs(geom);
    while (const VXSortedSet* const run = runs.Next())
    {
        VXMaterial* const material = static_cast<VXMaterial*>(geom->MaterialPointer(run->MaterialIndex()));
        if (material)
            DrawHaberlineLayers(*geom, *material, *run, runs.Kind(), runs.First());
        SetCullFace(cull, back);
    }
}

// Every layer draws the same edges; each lies in front of the one before.
void VXSceneDrawEngine::DrawHaberlineLayers(VXGeom& geom, VXMaterial& material, const VXSortedSet& run,
                                            VXElementKind kind, std::int32_t first)
{
    constexpr int kUnitsPerLayer = -1000;
    const std::int64_t layers = material.NumLayers();
    for (std::int64_t k = 0; k < layers; ++k)
    {
        if (k > 0)
        {
            SetPolygonOffset(true, 1, kUnitsPerLayer * int(k));
            SetCullFace(true, false);
        }
        DrawHaberlineRun(geom, material, run, kind, first);
        if (mShaderEngine && mShaderEngine->HasShader(&material, k))
            mShaderEngine->DisableShader(&material, k);
    }
    if (layers > 1)
        SetPolygonOffset(false, 0, 0);
}

// Edges are pushed out along the normals of the welded mesh, so that lines meet at creases. Polygons of more than four
// sides have no edge flags, and get no lines.
void VXSceneDrawEngine::DrawHaberlineRun(VXGeom& geom, VXMaterial& material, const VXSortedSet& run, VXElementKind kind,
                                         std::int32_t first)
{
    const VXSortedBucket& bucket = geom.Sorted(kind);
    if (!bucket.corners || !bucket.edgeFlags || !DoHaberlines())
        return;
    const int corners = kind == VXElementKind::Quads ? 4 : 3;
    const std::int32_t* const indices = bucket.corners + std::int64_t(first) * corners;
    VERTEX* const welded = geom.WeldedNormals(true);
    SetNormalArray(welded, welded ? geom.NumVerts(true) : 0);
    DrawHaberlineSets(&material, run.count, reinterpret_cast<const std::uint32_t*>(indices), bucket.edgeFlags + first,
                      corners);
    VERTEX* const normals = mNormalsOff ? nullptr : geom.VertNormals();
    SetNormalArray(normals, normals ? geom.NumVerts(true) : 0);
}
