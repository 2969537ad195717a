#include "draw/VXSceneDrawEngine.h"

#include "draw/detail/FrameScopes.h"
#include "engine/VXScene.h"
#include "mesh/VXGeom.h"
#include "mesh/VXSetIterator.h"
#include "shader/VXShaderEngine.h"

#include <algorithm>

// Where a material counts as transparent; the sorted lists draw the same line.
static constexpr float kLeastTransparency = 0.01f;

// --- Which objects, and in which order

VXMaterial* VXSceneDrawEngine::EffectiveMode(VXMaterial* objectMode, VXMaterial* sceneMode)
{
    return !objectMode || objectMode->GetFlagInheritStyleFromScene() ? sceneMode : objectMode;
}

void VXSceneDrawEngine::DrawScenePolys(VXScene* scene)
{
    if (!scene)
        return;
    mScene = scene;
    mElementPass = 0; // a host may call this by itself, after a frame that ended with another
    BeginFrameState();
    const bool normal = mDrawPass == kNormalPass || mDrawPass == kNormalSecondPass;
    const ActiveShading active(mShaderEngine, normal && SceneWantsShading());
    if (normal && !mSilhouetteToggle)
        VisitFarthestFirst(&VXSceneDrawEngine::DrawPolysOfObject);
    else
        VisitObjects(&VXSceneDrawEngine::DrawPolysOfObject);
}

void VXSceneDrawEngine::VisitObjects(ObjectStep step)
{
    for (std::int64_t i = 0; i < mScene->NumObjects(); ++i)
        VisitObject(int(i), step);
}

void VXSceneDrawEngine::VisitObject(int index, ObjectStep step)
{
    VXObject* const object = mScene->Object(index);
    if (!object || !object->Visible() || !TakesPart(*object))
        return;
    const bool picking = mDrawPass == kPickPass && mElementPass == 0;
    const PreparedObject prepared(*object, picking);
    if (!prepared.Ready())
        return;
    if (picking)
        SetPickName(index);
    mCurrentObject = object;
    BeginObject(object);
    (this->*step)(*object);
    EndObject(object);
    mCurrentObject = nullptr;
    mCurrentGeom = nullptr;
}

// What can be told of an object before it is prepared.
bool VXSceneDrawEngine::TakesPart(const VXObject& object) const
{
    if (DoingDropShadow() && mElementPass == 0)
        return object.CastsShadow();
    if (mDrawPass == kPickPass && mElementPass == 0)
        return object.InternalName().Find("_SETUP") < 0; // parts that only set up a figure are not to be picked
    if (mElementPass == 3)
        return object.CurSubDivLevel() < 1 || object.SubdivGeom(object.CurSubDivLevel());
    return true;
}

// Squared distance of an object's middle from the eye.
float VXSceneDrawEngine::DistanceFromEye(const VXObject& object) const
{
    const VXBBox& box = object.BoundingBox();
    VERTEX middle = (box.Min() + box.Max()) * 0.5f; // the object's own origin while nobody has filled the box
    Mat44 toView;
    MAT_Concat4x4(object.GetTransform(), mCamera, toView);
    MAT_VertTransform(&middle, &middle, 1, toView);
    const float distance = Dot(middle, middle);
    return distance == distance ? distance : 0.0f; // a sort must not meet a NaN
}

// Transparent surfaces show what lies behind them only when that has been drawn before. Objects at the same distance
// keep their order.
void VXSceneDrawEngine::VisitFarthestFirst(ObjectStep step)
{
    struct Entry
    {
        float distance;
        std::int32_t index;
    };
    BArray<Entry> order;
    const std::int64_t count = mScene->NumObjects();
    if (!order.Reserve(count))
        return VisitObjects(step); // a wrong order is better than no picture
    for (std::int64_t i = 0; i < count; ++i)
        if (const VXObject* const object = mScene->Object(int(i)))
            order.Append({DistanceFromEye(*object), std::int32_t(i)});
    std::sort(order.begin(), order.end(),
              [](const Entry& a, const Entry& b)
              { return a.distance != b.distance ? a.distance > b.distance : a.index < b.index; });
    for (const Entry& entry : order)
        VisitObject(entry.index, step);
}

// --- The geometries of an object

// Makes draw geometry `index` of the object current. False when there is nothing there.
bool VXSceneDrawEngine::TakeGeom(const VXObject& object, int index)
{
    mCurrentDrawGeom = index;
    mCurrentGeom = object.DrawGeom(E_DrawGeom(index));
    return mCurrentGeom != nullptr;
}

void VXSceneDrawEngine::DrawPolysOfObject(VXObject& object)
{
    VXMaterial* const objectMode = object.DefaultMaterial();
    VXMaterial* const sceneMode = mScene->SceneMaterial();
    const bool drawsPolys = EffectiveMode(objectMode, sceneMode)->GetFlagDrawPolys();
    for (int index = object.NumbDrawGeoms() - 1; index >= 0; --index)
    {
        if (!TakeGeom(object, index) || object.WantsLinesOnly(E_DrawGeom(index)))
            continue;
        if (mDrawPass == kDropShadowLinesPass)
        {
            if (mCurrentGeom->IncludesLines() || mCurrentGeom->IncludesPoints())
                DrawSortedLines(mCurrentGeom, objectMode, sceneMode, mScene);
            continue;
        }
        if (!drawsPolys)
            continue;
        DrawSortedElements(mCurrentGeom, objectMode, sceneMode, mScene);
        if (DoHaberlines() && !HaberlinesDrawLast())
            DrawHaberlines(mCurrentGeom, objectMode, sceneMode, mScene);
    }
}

// --- The elements of a geometry

void VXSceneDrawEngine::DrawSortedElements(VXGeom* geom, VXMaterial* objectMode, VXMaterial* sceneMode, VXScene* scene)
{
    if (!geom)
        return;
    mCurrentMaterial = nullptr;
    if (!geom->DataSorted())
        geom->SortGeomData();
    VXElementBatch batch;
    batch.geom = geom;
    batch.drawMode = EffectiveMode(objectMode, sceneMode);
    if (!batch.drawMode || !HasWantedRun(batch))
        return;

    const ClientArrays arrays(*this);
    SetElementArrays(geom, *batch.drawMode);
    PrepareGeometry(geom);
    PrepareSceneLights(scene);
    VXSetIterator runs(geom);
    while (const VXSortedSet* const run = runs.Next())
        if (FillBatch(batch, *run, runs.Kind(), runs.First()))
            DrawRun(batch);
    if (mShaderEngine && mShaderEngine->ShadersEnabled())
        mShaderEngine->DisableShaders();
}

// The second half of the polygons visits every geometry, few of which have anything for it: they cost no array calls.
bool VXSceneDrawEngine::HasWantedRun(VXElementBatch& batch) const
{
    VXSetIterator runs(batch.geom);
    while (const VXSortedSet* const run = runs.Next())
        if (FillBatch(batch, *run, runs.Kind(), runs.First()))
            return true;
    return false;
}

// Makes `batch` the given run. False when this half of the polygons leaves it out.
bool VXSceneDrawEngine::FillBatch(VXElementBatch& batch, const VXSortedSet& run, VXElementKind kind,
                                  std::int32_t first) const
{
    const VXSortedBucket& bucket = batch.geom->Sorted(kind);
    batch.kind = kind;
    batch.first = first;
    batch.count = run.count;
    batch.cornersPerElement = kind == VXElementKind::Quads ? 4 : kind == VXElementKind::Triangles ? 3 : 0;
    batch.polys = bucket.polys ? bucket.polys + first : nullptr;
    batch.corners = bucket.corners ? bucket.corners + std::int64_t(first) * batch.cornersPerElement : nullptr;
    batch.edgeFlags = bucket.edgeFlags ? bucket.edgeFlags + first : nullptr;
    batch.material = static_cast<VXMaterial*>(batch.geom->MaterialPointer(run.MaterialIndex()));
    batch.layer = 0;
    // Asked of the material itself: its transparency may have been changed since the lists were sorted.
    batch.transparent =
        batch.material && batch.material->TMax() > kLeastTransparency && !batch.drawMode->GetFlagForceOpaque();
    const bool inHalves = mElementPass == 0 && (mDrawPass == kNormalPass || mDrawPass == kNormalSecondPass);
    return run.count > 0 && (!inHalves || batch.transparent == !mSilhouetteToggle);
}

void VXSceneDrawEngine::SetElementArrays(VXGeom* geom, const VXMaterial& mode)
{
    const int count = geom->NumVerts(true);
    // Wires take part in lighting by a switch of their own.
    const bool lit = mElementPass == 0 ? mode.GetFlagSmooth() : mode.GetFlagLightLines();
    VERTEX* const normals = lit && !mNormalsOff ? geom->VertNormals() : nullptr;
    T_VERTEX* uvs = geom->NumbCreaseVerts() > 0 ? geom->UvsPerVertex() : nullptr;
    if (mElementPass == 0 && mode.GetFlagToon() && normals && WantsToonUVS())
        uvs = GenerateToonUVS(normals, count);
    SetVertexArray(geom->Verts(), count);
    SetNormalArray(normals, normals ? count : 0);
    SetColorArray(geom->VertexColors(), geom->VertexColors() ? count : 0);
    SetTexCoordArray(uvs, uvs ? count : 0);
    SetTangentArray(nullptr, 0);
}

void VXSceneDrawEngine::BindIfChanged(VXMaterial* material)
{
    if (!material || material == mCurrentMaterial)
        return;
    mCurrentMaterial = material;
    BindMaterial(material);
}

// Shaders fill polygons of the normal passes; shadows, wires and picking need none.
bool VXSceneDrawEngine::ShadingActive() const
{
    return mElementPass == 0 && (mDrawPass == kNormalPass || mDrawPass == kNormalSecondPass) && mShaderEngine &&
           mShaderEngine->Enabled();
}

void VXSceneDrawEngine::DrawRun(VXElementBatch& batch)
{
    BindIfChanged(batch.material);
    const bool shading = ShadingActive() && batch.material;
    const std::int64_t layers = shading ? std::max<std::int64_t>(batch.material->NumLayers(), 1) : 1;
    for (batch.layer = 0; batch.layer < layers; ++batch.layer)
    {
        const bool shaded = shading && WantsShaderForMaterial(batch.drawMode, batch.material, batch.layer);
        if (batch.layer > 0 && !shaded)
            continue; // the fixed pipeline would draw the same picture over itself
        if (batch.layer > 0)
            SetPolygonOffset(true, 0, -int(batch.layer));
        if (shaded)
            DrawShaded(batch);
        else
        {
            if (shading)
                mShaderEngine->DisableShaders();
            DrawElements(batch);
        }
    }
    if (layers > 1)
        SetPolygonOffset(false, 0, 0);
}

void VXSceneDrawEngine::DrawShaded(const VXElementBatch& batch)
{
    mShaderEngine->EnableShaders();
    mShaderEngine->EnableShader(batch.material, batch.layer);
    DrawElements(batch);
    mShaderEngine->DisableShader(batch.material, batch.layer);
}

bool VXSceneDrawEngine::WantsShaderForMaterial(VXMaterial* drawMaterial, VXMaterial* shaderMaterial, std::int64_t layer)
{
    VXMaterial* const mode = EffectiveMode(drawMaterial, mScene ? mScene->SceneMaterial() : nullptr);
    if (!mode || !mShaderEngine || !mShaderEngine->HasShader(shaderMaterial, layer))
        return false;
    return mode->GetFlagSmooth() && mode->GetFlagDrawPolys() && !mode->GetFlagToon() && !mode->GetFlagOutline();
}

void VXSceneDrawEngine::DrawSortedLines(VXGeom* geom, VXMaterial* objectMode, VXMaterial* sceneMode, VXScene* scene)
{
    if (!geom)
        return;
    mCurrentMaterial = nullptr;
    if (!geom->DataSorted())
        geom->SortGeomData();
    VXElementBatch batch;
    batch.geom = geom;
    batch.drawMode = EffectiveMode(objectMode, sceneMode);
    if (!batch.drawMode)
        return;
    const ClientArrays arrays(*this);
    SetElementArrays(geom, *batch.drawMode);
    PrepareGeometry(geom);
    PrepareSceneLights(scene);
    for (const VXElementKind kind : {VXElementKind::Lines, VXElementKind::Points})
    {
        const VXSortedBucket& bucket = geom->Sorted(kind);
        std::int32_t first = 0;
        for (std::int32_t i = 0; i < bucket.numRuns; first += bucket.runs[i++].count)
        {
            FillBatch(batch, bucket.runs[i], kind, first);
            BindIfChanged(batch.material);
            DrawElements(batch);
        }
    }
}

// --- Toon shading

static float Clamped(float x)
{
    return x > 0.0f ? (x < 1.0f ? x : 1.0f) : 0.0f; // NaN becomes 0
}

// A direction of view space as a unit vector of the current object's space. Taking light and viewer to the object is
// two products instead of one for each normal; exact for objects that are moved, turned and scaled evenly.
VERTEX VXSceneDrawEngine::ToObjectSpace(const VERTEX& direction) const
{
    Mat44 toView;
    MAT_Copy(mCamera, toView);
    if (mCurrentObject)
        MAT_Concat4x4(mCurrentObject->GetTransform(), mCamera, toView);
    const auto row = [&](int i) { return VERTEX{toView[i][0], toView[i][1], toView[i][2]}; };
    const VERTEX turned = {Dot(row(0), direction), Dot(row(1), direction), Dot(row(2), direction)};
    const float length = Length(turned);
    return length > 0.0f ? turned * (1.0f / length) : VERTEX{0, 0, 1};
}

T_VERTEX* VXSceneDrawEngine::GenerateToonUVS(VERTEX* normals, int count)
{
    if (!normals || count < 1 || !mToonUVs.SetCountForWriting(count))
        return nullptr;
    const VERTEX light = ToObjectSpace(mToonLight);
    const VERTEX viewer = ToObjectSpace({0, 0, 1});
    T_VERTEX* const uvs = mToonUVs.Data();
    for (int i = 0; i < count; ++i)
        uvs[i] = {Clamped(0.5f + 0.5f * Dot(normals[i], light)), Clamped(Dot(normals[i], viewer))};
    return uvs;
}
