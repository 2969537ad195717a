// VelmarBase: engine and scene.
#include "engine/VXObject.h"
#include "engine/VXObjectDelegate.h"
#include "engine/VXScene.h"
#include "engine/VXSceneDelegate.h"
#include "engine/VXSwitches.h"
#include "mesh/VXGeom.h"

#include <cstring>

namespace
{
constexpr int kCannotBuild = -2; // no control mesh, or a level that could not be made
constexpr int kNotSubdivided = -1;
constexpr int kMostLevels = 15; // a level has four times the polygons of the one before

bool CreasesAllowed()
{
    const VXScene* const scene = VXScene::CurrentScene();
    return scene && scene->SceneDelegate() && scene->SceneDelegate()->AllowCreaseVertsForSubdiv();
}

bool SameCounts(const VXGeom& a, const VXGeom& b)
{
    return a.NumVerts(false) == b.NumVerts(false) && a.NumPolys() == b.NumPolys();
}
} // namespace

void VXObject::Subdivide()
{
    if (!SubdivDirty())
        return;
    SetSubdivDirty(false);
    if (RebuildSubDiv() == 0)
        return;
    const VXScene* const scene = VXScene::CurrentScene();
    if (scene && scene->SceneDelegate())
        scene->SceneDelegate()->NotifyForFailedSubdivision(this);
}

int VXObject::RebuildSubDiv()
{
    const int last = mCurSubDivLevel;
    if (!mGeom)
        return kCannotBuild;
    if (last <= 0)
        return 0;
    if (last > kMostLevels)
        return kNotSubdivided;

    if (SubdivGeom(0) && !SameCounts(*SubdivGeom(0), *mGeom))
        ClearSubdivStructures(); // the control mesh has another topology: nothing that was made of the old one fits
    while (mSubdivGeoms.Count() <= last)
        if (!mSubdivGeoms.AppendOrKeep(nullptr))
            return kCannotBuild;

    if (!MakeLevel(0, mGeom))
        return kCannotBuild;
    RefreshLevelZero();

    int result = 0;
    for (int level = 1; level <= last; ++level)
    {
        VXGeom* const source = SubdivGeom(level - 1);
        if (!source || !MakeLevel(level, source))
            return kCannotBuild;
        result = RunScheme(source, SubdivGeom(level));
        if (result != 0 && result != kNotSubdivided)
        {
            SetSubdivGeom(level, nullptr);
            return result;
        }
        FinishLevel(level, result == 0);
    }
    return result;
}

// Subdivides `source` into `destination`: 0, -1 when the destination is as it was, or another failure, after which the
// destination is of no use.
int VXObject::RunScheme(VXGeom* source, VXGeom* destination)
{
#ifdef VELMAR_WITH_OPENSUBDIV
    if (VXSwitches::OpenSubdivOn())
        return source->SubdivideOpenSubDiv(destination, 1, kSubdivSchemeOther, false);
#endif
    source->SubdivideCatmullClark(destination);
    // Every vertex of the source goes on as one of the destination, whose edges the next level needs, unless memory ran
    // out.
    const int numVerts = destination->NumVerts(false);
    const bool made = numVerts >= source->NumVerts(true) && destination->EdgeList().GetVertexLinkCount() == numVerts;
    return made ? 0 : kCannotBuild;
}

// Makes sure that a level has a mesh: a copy of `source` when it had none. False when memory ran out.
bool VXObject::MakeLevel(int level, const VXGeom* source)
{
    if (VXGeom* const present = SubdivGeom(level))
    {
        VXGeom::CopyMaterialPointersSynced(mGeom, present);
        return true;
    }
    VXGeom* const fresh = source->Clone(true);
    if (!fresh)
        return false;
    fresh->SetUseCreaseAngle(false);
    fresh->SetUseExternalCreaseInfo(false);
    fresh->SetUseExternalNormals(false);
    const bool creases = CreasesAllowed();
    fresh->SetGenerateCreases(creases);
    if (creases)
    {
        fresh->SetEdgesClassified(false);
        fresh->GenerateCreaseData(nullptr);
    }
    const int count = source->NumVerts(false);
    if (count == fresh->NumVerts(false))
        fresh->FillRefPoints(source->Verts(), count);
    SetSubdivGeom(level, fresh);
    return true;
}

// Level 0 takes the control mesh's positions, which the delegate may then deform.
void VXObject::RefreshLevelZero()
{
    VXGeom* const zero = SubdivGeom(0);
    const int count = zero->NumVerts(false);
    if (count > 0 && zero->Verts() != mGeom->Verts())
        std::memcpy(zero->Verts(), mGeom->Verts(), std::size_t(count) * sizeof(VERTEX));
    DeformLevel(0);
}

void VXObject::FinishLevel(int level, bool subdivided)
{
    if (subdivided)
        for (VXGeom* const geom : {SubdivGeom(level - 1), SubdivGeom(level)})
        {
            geom->SetIncludesLines(false); // what is subdivided has faces alone
            geom->SetIncludesPoints(false);
        }
    if (UsesTangents())
        SubdivGeom(level)->ComputeAndSavePreMunge(); // the rest state, before the delegate deforms it
    DeformLevel(level);
}

// Lets the delegate move a level's vertices, and derives what depends on positions.
void VXObject::DeformLevel(int level)
{
    VXGeom* const geom = SubdivGeom(level);
    if (mDelegate)
        mDelegate->MungeSubdividedVerts(this, level, geom->Verts(), geom->NumVerts(false));
    geom->UpdateCreaseVerts();
    geom->ComputeAllNormals();
}

void VXObject::ClearSubdivStructures()
{
    for (VXGeom*& geom : mSubdivGeoms)
    {
        delete geom;
        geom = nullptr;
    }
    mSubdivGeoms.Empty();
}
