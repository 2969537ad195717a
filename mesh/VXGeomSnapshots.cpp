#include "mesh/VXGeom.h"

#include "engine/VXEngine.h"
#include "engine/VXSwitches.h"
#include "mesh/detail/TangentsBeside.h"
#include "mesh/kernel/Tangents.h"

#include <algorithm>
#include <cstring>

// --- One array

void VXGeom::Snapshot::Lend(VERTEX* hostArray)
{
    if (hostArray && hostArray == array)
        return; // our own, handed back
    if (!lent)
        MEM_Free(array);
    array = hostArray;
    lent = hostArray != nullptr;
}

void VXGeom::Snapshot::Drop()
{
    if (!lent)
        MEM_Release(array);
}

bool VXGeom::Snapshot::Save(const VERTEX* source, std::size_t sourceCount, std::size_t count)
{
    if (lent)
        Lend(nullptr);
    if (!MEM_SizeArrayForWriting(array, count))
        return false;
    const std::size_t copied = source ? std::min(sourceCount, count) : 0;
    if (copied > 0)
        std::memcpy(static_cast<void*>(array), source, copied * sizeof(VERTEX));
    std::fill(array + copied, array + count, VERTEX{});
    return true;
}

// --- The four of them

void VXGeom::SavePreMunge()
{
    if (!mGeom)
        return;
    const std::size_t count = std::size_t(mGeom->numVerts);
    // A lent array and a temporary one are no handles, but have the length that they must have.
    const std::size_t numNormals = mVertNormals == mLentVertNormals ? count : MEM_Count(mVertNormals);
    const bool saved = mPreMungeVerts.Save(mGeom->verts, count, count) &&
                       mPreMungeNormals.Save(mVertNormals, numNormals, count) &&
                       mPreMungeTangents.Save(mVertTangents, MEM_Count(mVertTangents), count) &&
                       mPreMungeBinormals.Save(mVertBinormals, MEM_Count(mVertBinormals), count);
    if (!saved)
    {
        MEM_SetAllocationFailed(true);
        DropSnapshot(); // none is better than one in parts
    }
}

void VXGeom::ComputeAndSavePreMunge()
{
    const bool wanted = VXEngine::TangentCalculationsEnabled();
    // The pass with crease vertices computes tangents itself when asked to. Beside a pass that is still to make them
    // no thread may read positions, since their array grows; it may end without any, and then tangents come last.
    const bool pending = WantsCreases() && !UseExternalNormals();
    {
        const bool beside = !pending && (mNumbCreaseVerts == 0 || UseExternalNormals());
        const vx::TangentsBeside tangents(this, wanted && beside);
        const VXSwitches::Scoped request(VXSwitches::TangentsRequested, VXSwitches::SetTangentsRequested,
                                         !beside || VXSwitches::TangentsRequested());
        ComputeAllNormals();
    }
    if (wanted && pending && mNumbCreaseVerts == 0)
        ComputeTangents();
    RepairFrames();
    SavePreMunge();
}

// A displacement needs three axes that span space. Frames that do not are mended where the texture leaves no choice:
// an axis that is parallel to the normal is replaced by the one across normal and remaining axis; where tangent and
// binormal are parallel to each other the tangent stays; where nothing but the normal is left, the binormal is the
// horizontal direction across it.
void VXGeom::RepairFrames()
{
    const std::size_t count = std::size_t(NumVerts(false));
    const bool there = mVertNormals && MEM_Count(mVertTangents) >= count && MEM_Count(mVertBinormals) >= count &&
                       (mVertNormals == mLentVertNormals || MEM_Count(mVertNormals) >= count);
    if (there)
        vx::RepairFrames({mVertNormals, count}, {mVertTangents, count}, {mVertBinormals, count});
}
