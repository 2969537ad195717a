#include "mesh/VXGeom.h"

#include "mesh/kernel/Tangents.h"

#include <algorithm>
#include <cassert>

// --- Tangents

int VXGeom::ComputeTangents()
{
    if (!mGeom)
        return 0;
    const std::size_t count = std::size_t(NumVerts(true));
    if (!MEM_SizeArrayForWriting(mVertTangents, count) || !MEM_SizeArrayForWriting(mVertBinormals, count))
    {
        MEM_SetAllocationFailed(true);
        DropTangents();
        return 0;
    }
    const std::span<VERTEX> tangents(mVertTangents, count), binormals(mVertBinormals, count);
    const GEOM_Texture* const tex = mGeom->tex;
    if (!tex)
    {
        std::fill(tangents.begin(), tangents.end(), vx::kDefaultTangent);
        std::fill(binormals.begin(), binormals.end(), vx::kDefaultBinormal);
        return -1;
    }
    // The record's own corners: crease vertices keep the default.
    if (!vx::CornerTangents({mGeom->verts, count}, vx::PolysOf(*mGeom), *tex, tangents, binormals))
    {
        MEM_SetAllocationFailed(true);
        DropTangents();
    }
    return 0;
}

void VXGeom::DropTangents()
{
    MEM_Release(mVertTangents);
    MEM_Release(mVertBinormals);
}

// --- Local frames

void VXGeom::ComputeVertLocalBases(BASIS3D* out, bool recomputeNormals, bool rebuildEdges)
{
    if (!mGeom || !out)
        return;
    if (recomputeNormals)
        ComputeAllNormals();
    if (rebuildEdges)
        BuildEdgeList();
    const VERTEX* const verts = mGeom->verts;
    const std::int32_t numLinked = std::min(mGeom->numVerts, mEdgeList.GetVertexLinkCount());
    for (std::int32_t v = 0; v < mGeom->numVerts; ++v)
    {
        const std::int32_t link = v < numLinked ? mEdgeList.GetFirstVertexLink(v) : -1;
        if (link < 0 || !mVertNormals)
        {
            out[v] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
            continue;
        }
        const VXEdge& edge = mEdgeList.GetEdge(mEdgeList.GetEdgefromVertexLink(link));
        const std::int32_t other = edge.VertIndex1() == v ? edge.VertIndex2() : edge.VertIndex1();
        const VERTEX n = mVertNormals[v], along = verts[other] - verts[v];
        const VERTEX w = Cross(n, along * MATH_FastSqrtInv(Dot(along, along)));
        out[v] = {n, Cross(n, w), w};
    }
}

// --- Displacements

void VXGeom::BasisTransformDeltaFromTangentSpace(int vert, float sx, float sy, float sz, VERTEX& d) const
{
    const VERTEX *const normals = PreMungeNormals(), *const tangents = PreMungeTangents(),
                        *const binormals = PreMungeBinormals();
    if (!normals || !tangents || !binormals)
        return;
    const VERTEX moved = d.x * normals[vert] + d.y * tangents[vert] + d.z * binormals[vert];
    d = {moved.x * sx, moved.y * sy, moved.z * sz};
}

void VXGeom::BasisTransformDeltaToTangentSpace(int vert, float sx, float sy, float sz, VERTEX& d) const
{
    assert(PreMungeNormals() && PreMungeTangents() && PreMungeBinormals());
    const VERTEX n = PreMungeNormals()[vert], t = PreMungeTangents()[vert], b = PreMungeBinormals()[vert];
    const VERTEX scaled = {d.x / sx, d.y / sy, d.z / sz};
    // Cramer's rule for the columns n, t, b.
    const VERTEX tb = Cross(t, b);
    const float determinant = Dot(n, tb);
    if (determinant == 0)
        d = {};
    else
        d = {Dot(scaled, tb) / determinant, Dot(n, Cross(scaled, b)) / determinant,
             Dot(n, Cross(t, scaled)) / determinant};
}
