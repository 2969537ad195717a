// VelmarBase: engine and scene.
#include "engine/VXObject.h"
#include "engine/VXObjectDelegate.h"
#include "engine/VXScene.h"
#include "mesh/VXGeom.h"

#include <cassert>

int VXObject::PrepareForDrawing()
{
    return ++mPreparationDepth == 1 && mDelegate ? mDelegate->PrepareForDrawing(this) : 0;
}

int VXObject::PrepareForPicking()
{
    return ++mPreparationDepth == 1 && mDelegate ? mDelegate->PrepareForPicking(this) : 0;
}

void VXObject::EndDrawing()
{
    assert(mPreparationDepth > 0);
    if (mPreparationDepth-- == 1 && mDelegate)
        mDelegate->EndPrepareForDrawing(this);
}

void VXObject::EndPicking()
{
    assert(mPreparationDepth > 0);
    if (mPreparationDepth-- == 1 && mDelegate)
        mDelegate->EndPrepareForPicking(this);
}

bool VXObject::PrepareCreaseEdgesFromDisplayList(EDGELIST* edges)
{
    if (!mGeom)
        return true;
    mGeom->ClearEdgeSmoothing();
    const bool outermost = mPreparationDepth == 0;
    const bool refused = outermost && PrepareForDrawing() != 0;
    const bool failed = !refused && mGeom->GenerateCreaseData(edges);
    if (outermost)
        EndDrawing();
    return !failed;
}

void VXObject::ComputeSilhouette(const Mat44 mat)
{
    if (!mGeom)
        return;
    VXGeom* const geom = CurSubdivGeom(true);
    if (!geom || !VXScene::CurrentScene())
        return;

    Mat44 toObject;
    MAT_Concat4x4(mTransform, mat, toObject);
    MAT_Inverse(toObject, toObject, 4);
    VERTEX eye; // the viewer stands at the origin of the space that the matrices lead to
    MAT_VertTransform(&eye, &eye, 1, toObject);
    geom->ComputeBackfacingToVertex(&eye);

    mSilhouetteEdges.Empty();
    const VXEdgeList& edges = geom->EdgeList();
    for (int i = 0; i < edges.GetEdgeCount(); ++i)
    {
        const VXEdge& edge = edges.GetEdge(i);
        if ((edge.IsBoundaryEdge() || edge.IsOpenEdge()) && edge.IsFacingForward())
            mSilhouetteEdges.Append(i); // out of memory empties the list, and it fills again from here
    }
    SetSilhouetteDirty(false);
}
