#include "mesh/VXGeom.h"

#include <algorithm>

void VXGeom::SetCurrentPoly(int i)
{
    mCurTexPoly = nullptr;
    mPolySetStart = mPolyNormalSetStart = mPolyUVSetStart = nullptr;
    if (i < 0 || i >= NumPolys())
    {
        mCurPoly = nullptr;
        mCurPolyIndex = mCurPolyLength = 0;
        mCurCorner = -1;
        return;
    }

    mCurPoly = mGeom->Poly(i);
    mCurPolyIndex = i;
    mCurPolyLength = mCurPoly->length;
    if (std::int32_t* const sets = Sets(true))
        mPolySetStart = sets + mCurPoly->start;
    if (mGeom->normalSets)
        mPolyNormalSetStart = mGeom->normalSets + mCurPoly->start;
    if (mGeom->PolyHasTexture(i))
    {
        GEOM_Texture& tex = *mGeom->tex;
        mCurTexPoly = tex.polys + i;
        // A polygon without texture corners may carry any start.
        mPolyUVSetStart = tex.sets;
        if (mCurTexPoly->length != 0)
            mPolyUVSetStart += std::clamp(mCurTexPoly->start, 0, tex.numCorners);
    }
}

int VXGeom::BeginPolyVertexLoop(int i)
{
    mCurCorner = -1;
    SetCurrentPoly(i);
    return mCurPolyLength;
}

VERTEX* VXGeom::NextPolyVert()
{
    if (++mCurCorner >= mCurPolyLength)
        mCurCorner = -1;
    return CurPolyVert();
}

// --- The current corner

int VXGeom::CurPolyVertIndex() const
{
    return mPolySetStart && mCurCorner >= 0 && mCurCorner < mCurPolyLength ? mPolySetStart[mCurCorner] : -1;
}

int VXGeom::CurPolyUVIndex() const { return CurTexPoly(mCurCorner) ? mPolyUVSetStart[mCurCorner] : -1; }

VERTEX* VXGeom::CurPolyVert() const
{
    const int vert = CurPolyVertIndex();
    return vert >= 0 && mGeom->verts ? mGeom->verts + vert : nullptr;
}

VERTEX* VXGeom::CurPolyVertNormalPerVert() const
{
    const int vert = CurPolyVertIndex();
    return vert >= 0 && mVertNormals ? mVertNormals + vert : nullptr;
}

VERTEX* VXGeom::CurPolyVertexColorPerVert() const
{
    const int vert = CurPolyVertIndex();
    return vert >= 0 && mVertexColors ? mVertexColors + vert : nullptr;
}

void* VXGeom::CurrentPolyMaterial() const { return mCurPoly ? MaterialPointer(mCurPoly->material) : nullptr; }

// --- Texture coordinates

// The current texture polygon, when it and the polygon both have that corner.
const GEOM_TexPoly* VXGeom::CurTexPoly(int corner) const
{
    return mCurTexPoly && corner >= 0 && corner < std::min(mCurTexPoly->length, mCurPolyLength) ? mCurTexPoly : nullptr;
}

T_VERTEX* VXGeom::CurPolyTVertex(int corner) const
{
    if (!mCurTexPoly)
        return nullptr;
    if (mNumbCreaseVerts > 0 && mUvsPerVertex)
        return mPolySetStart && corner >= 0 && corner < mCurPolyLength ? mUvsPerVertex + mPolySetStart[corner]
                                                                       : nullptr;
    return CurTexPoly(corner) && mGeom->tex->verts ? mGeom->tex->verts + mPolyUVSetStart[corner] : nullptr;
}

T_VERTEX* VXGeom::CurPolyTVerts() const { return CurPolyTVertex(0); }

bool VXGeom::CurPolyTexCoords(float* u, float* v, int corner) const
{
    const T_VERTEX* const uv = CurPolyTVertex(corner);
    if (u)
        *u = uv ? uv->u : 0;
    if (v)
        *v = uv ? uv->v : 0;
    return uv != nullptr;
}

bool VXGeom::CurPolyVertTexCoord(float& u, float& v) const { return CurPolyTexCoords(&u, &v, mCurCorner); }
