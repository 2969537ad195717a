#include "draw/VXSceneDrawEngine.h"

#include "draw/VXAppToolInfo.h"
#include "draw/VXSceneDrawOptions.h"
#include "draw/detail/FrameScopes.h"
#include "engine/VXScene.h"
#include "engine/VXSwitches.h"
#include "mesh/VXGeom.h"

// --- Element pass 1: the wires of objects

void VXSceneDrawEngine::DrawObjectWires()
{
    mElementPass = 1;
    PrepareObjectPass(mScene->SceneMaterial());
    mCageStyleOn = false;
    VisitObjects(&VXSceneDrawEngine::DrawWiresOfObject);
}

// A subdivided object shows its control mesh as a cage of lines in a style of its own.
void VXSceneDrawEngine::ApplyWireStyle(bool cage)
{
    if (cage)
    {
        PrepareObjectPass(mScene->ControlMeshMaterial());
        if (mScene->ControlMeshVisible() && mScene->SurfaceVisible())
            SetLineWidth(DrawOptions()->mLineWidth);
    }
    else if (mCageStyleOn)
        PrepareObjectPass(mScene->SceneMaterial());
    mCageStyleOn = cage;
}

void VXSceneDrawEngine::DrawWiresOfObject(VXObject& object)
{
    const int level = object.CurSubDivLevel();
    const bool noCage = VXSwitches::SubdividedDrawing() && level >= 1 && object.SubdivGeom(level);
    const bool wires = EffectiveMode(object.DefaultMaterial(), mScene->SceneMaterial())->GetFlagDrawWires();
    for (int index = object.NumbDrawGeoms() - 1; index >= 0; --index)
    {
        if (noCage && index == kDrawGeomControl)
            continue;
        const bool cage = object.WantsLinesOnly(E_DrawGeom(index));
        ApplyWireStyle(cage);
        if (TakeGeom(object, index) && (wires || cage) && DrawOptions()->mDrawPolygons)
            DrawWireGeometry(object, *mCurrentGeom);
    }
}

bool VXSceneDrawEngine::HiddenLineMode() const
{
    const VXMaterial& style = *mScene->SceneMaterial();
    return style.GetFlagDrawWires() && style.GetFlagForceOpaque() && !style.GetFlagLightLines();
}

// Tools show what they work on in other colours: the grouping tool its current object by a hook and all others black,
// the morph tool all of them black, a group that is shown its members by a hook.
void VXSceneDrawEngine::DrawWireGeometry(VXObject& object, VXGeom& geom)
{
    VXMaterial* const objectMode = object.DefaultMaterial();
    VXMaterial* const sceneMode = mScene->SceneMaterial();
    const bool grouping = GroupModeOn();
    if (grouping || (mGroupToolInfo && mGroupToolInfo->MorphModeOn()))
    {
        const KeptColors kept(*objectMode);
        if (grouping && !HiddenLineMode() && &object == mScene->CurrentObject())
            return DrawGroupToolObject(&geom, objectMode, sceneMode, mScene);
        objectMode->KdColor().Set(0, 0, 0, 1);
        return DrawSortedElements(&geom, objectMode, sceneMode, mScene);
    }
    if (object.GroupMember() && mGroupToolInfo && mGroupToolInfo->DisplayCDModeOn())
    {
        const KeptColors kept(*objectMode);
        return DrawGroupToolMember(&geom, objectMode, sceneMode, &object);
    }
    DrawSortedElements(&geom, objectMode, sceneMode, mScene);
}

// --- Element pass 2: line and point elements

void VXSceneDrawEngine::DrawLineElements()
{
    mElementPass = 2;
    PrepareLinePass(mScene->SceneMaterial());
    VisitObjects(&VXSceneDrawEngine::DrawLinesOfObject);
}

void VXSceneDrawEngine::DrawLinesOfObject(VXObject& object)
{
    for (int index = object.NumbDrawGeoms() - 1; index >= 0; --index)
    {
        if (!TakeGeom(object, index) || !DrawOptions()->mDrawPolygons)
            continue;
        if (mCurrentGeom->IncludesLines() || mCurrentGeom->IncludesPoints())
            DrawSortedLines(mCurrentGeom, object.DefaultMaterial(), mScene->SceneMaterial(), mScene);
    }
}

// --- Element pass 3: outlines, edge by edge

void VXSceneDrawEngine::DrawOutlines()
{
    mElementPass = 3;
    mOutlineMode = mScene->SceneMaterial();
    PrepareArrayPass(mOutlineMode, 0);
    VisitObjects(&VXSceneDrawEngine::DrawOutlinesOfObject);
}

// Brings the draw mode of an object's outlines into force. False when that mode has none.
bool VXSceneDrawEngine::ApplyOutlineMode(VXObject& object)
{
    VXMaterial* const sceneMode = mScene->SceneMaterial();
    VXMaterial* const mode = EffectiveMode(object.DefaultMaterial(), sceneMode);
    if (!mode->GetFlagOutline())
        return false;
    if (mode != sceneMode || mOutlineMode != sceneMode)
        PrepareArrayPass(mode, 0);
    mOutlineMode = mode;
    return true;
}

void VXSceneDrawEngine::DrawOutlinesOfObject(VXObject& object)
{
    for (int index = object.NumbDrawGeoms() - 1; index >= 0; --index)
    {
        if (!TakeGeom(object, index) || object.WantsLinesOnly(E_DrawGeom(index)) || !DrawOptions()->mDrawPolygons)
            continue;
        mCurrentMaterial = nullptr;
        if (ApplyOutlineMode(object))
            DrawOutlineEdges(object, *mCurrentGeom);
    }
}

void VXSceneDrawEngine::DrawOutlineEdges(const VXObject& object, VXGeom& geom)
{
    const int count = geom.NumVerts(true);
    const ClientArrays arrays(*this);
    SetVertexArray(geom.Verts(), count);
    SetNormalArray(geom.VertNormals(), geom.VertNormals() ? count : 0);
    SetColorArray(nullptr, 0);
    SetTexCoordArray(nullptr, 0);
    SetTangentArray(nullptr, 0);
    PrepareGeometry(&geom);
    PrepareSceneLights(mScene);
    if (object.IgnoreZBufferEdges())
        SetPassLighting(false);
    const VXEdgeList& edges = geom.EdgeList();
    for (std::int32_t i = 0; i < edges.GetEdgeCount(); ++i)
    {
        const VXEdge& edge = edges.GetEdge(i);
        if (edge.PolyIndex1() < 0 || edge.PolyIndex1() >= geom.NumPolys())
            continue;
        const ELEMENT* const poly = geom.Polygon(edge.PolyIndex1());
        if (poly->IsHidden())
            continue;
        BindIfChanged(static_cast<VXMaterial*>(geom.MaterialPointer(poly->material)));
        DrawPolygon(&geom, edge);
    }
    if (object.IgnoreZBufferEdges())
        SetPassLighting(true);
}
