#include "host/gl/GeomBuffers.h"

#include "mesh/VXGeom.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vx
{
std::int64_t GpuArray::smUploaded = 0;

// The hash decides whether an upload is needed, so contents must not collide by accident: eight bytes at a
// time, each step a full multiplication folded to both halves.
std::uint64_t HashOf(const void* data, std::size_t bytes, std::uint64_t seed)
{
    const auto mix = [](std::uint64_t h, std::uint64_t word)
    {
        h ^= word;
        h *= 0xD6E8FEB86659FD93u;
        return h ^ (h >> 32);
    };
    const std::uint8_t* at = static_cast<const std::uint8_t*>(data);
    std::uint64_t h = mix(seed, bytes);
    for (; bytes >= 8; bytes -= 8, at += 8)
    {
        std::uint64_t word;
        std::memcpy(&word, at, 8);
        h = mix(h, word);
    }
    std::uint64_t rest = 0;
    if (bytes)
        std::memcpy(&rest, at, bytes);
    return mix(h, rest);
}

void GpuArray::Upload(const void* data, std::size_t bytes)
{
    const std::uint64_t hash = HashOf(data, bytes);
    if (mBuffer && bytes == mBytes && hash == mHash)
        return;
    const bool fresh = mBuffer == 0;
    if (fresh)
        glGenBuffers(1, &mBuffer);
    const GLenum target = GL_COPY_WRITE_BUFFER; // bound to nothing that drawing looks at
    glBindBuffer(target, mBuffer);
    glBufferData(target, GLsizeiptr(bytes), data, GL_STATIC_DRAW);
    glBindBuffer(target, 0);
    if (fresh && mTexels != Texels::Absent)
    {
        const GLenum format = mTexels == Texels::Floats ? GL_R32F : (mTexels == Texels::Ints ? GL_R32I : GL_RG32I);
        glGenTextures(1, &mTexture);
        glBindTexture(GL_TEXTURE_BUFFER, mTexture);
        glTexBuffer(GL_TEXTURE_BUFFER, format, mBuffer);
        glBindTexture(GL_TEXTURE_BUFFER, 0);
    }
    mBytes = bytes;
    mHash = hash;
    CountUpload(bytes);
}

void GpuArray::Release()
{
    if (mTexture)
        glDeleteTextures(1, &mTexture);
    if (mBuffer)
        glDeleteBuffers(1, &mBuffer);
    mTexture = mBuffer = 0;
    mBytes = 0;
}

// --- What is drawn

void GeomBuffers::SetArrays(VXGeom* geom, const VERTEX* verts, int numVerts, const VERTEX* normals)
{
    if (geom != mGeom || verts != mVerts || numVerts != mNumVerts)
    {
        MarkStale();
        mVertNormals = nullptr;
    }
    if (normals && normals != mVertNormals)
    {
        mFresh &= ~std::uint32_t(kNormals);
        mVertNormals = normals; // kept while a flat or lined pass has none
    }
    mGeom = geom;
    mVerts = verts;
    mNumVerts = numVerts;
}

bool GeomBuffers::BeginPiece(Piece piece)
{
    const bool stale = (mFresh & piece) == 0;
    mFresh |= piece;
    return stale;
}

const std::int32_t* GeomBuffers::Corners() const
{
    const std::int32_t* const creased = mGeom->NumbCreaseVerts() > 0 ? mGeom->CreaseSets() : nullptr;
    return creased ? creased : mGeom->Geom()->sets;
}

std::int32_t GeomBuffers::KindBase(VXElementKind kind) const
{
    std::int32_t base = 0;
    for (int k = 0; k < int(kind); ++k)
        base += mGeom->Sorted(VXElementKind(k)).count;
    return base;
}

std::uint64_t GeomBuffers::TopologyHash() const
{
    const GEOM& record = *mGeom->Geom();
    std::uint64_t hash = HashOf(Corners(), std::size_t(record.NumCorners()) * sizeof(std::int32_t));
    for (const VXElementKind kind : {VXElementKind::Quads, VXElementKind::Triangles, VXElementKind::Polygons,
                                     VXElementKind::Lines, VXElementKind::Points})
    {
        const VXSortedBucket& bucket = mGeom->Sorted(kind);
        hash = HashOf(bucket.polys, std::size_t(bucket.count) * sizeof(std::int32_t), hash);
    }
    if (record.tex && record.tex->sets)
    {
        hash = HashOf(record.tex->sets, std::size_t(record.tex->numCorners) * sizeof(std::int32_t), hash);
        hash = HashOf(mGeom->UvsPerVertex(), MEM_TotalSize(mGeom->UvsPerVertex()), hash);
    }
    return hash;
}

// --- Vertices

bool GeomBuffers::NeedPositions()
{
    if (!mGeom || !mGeom->Geom() || !mVerts || mNumVerts < 1)
        return false;
    if (BeginPiece(kPositions))
        mPositions.Upload(mVerts, std::size_t(mNumVerts) * sizeof(VERTEX));
    return true;
}

bool GeomBuffers::Gather(const VERTEX* from, GpuArray& to, BArray<VERTEX>& scratch) const
{
    if (!scratch.SetCountForWriting(mOwnVertex.Count()))
        return false;
    for (std::int64_t k = 0; k < mOwnVertex.Count(); ++k)
        scratch[k] = from[mOwnVertex[k]];
    to.Upload(scratch.Data(), std::size_t(scratch.Count()) * sizeof(VERTEX));
    return true;
}

bool GeomBuffers::NeedNormals()
{
    if (!mVertNormals || !NeedTriangles())
        return false;
    if (!BeginPiece(kNormals))
        return true;
    mNormals.Upload(mVertNormals, std::size_t(mNumVerts) * sizeof(VERTEX));
    BArray<VERTEX> scratch;
    return !mOwnVertices || Gather(mVertNormals, mSurfaceNormals, scratch);
}

bool GeomBuffers::NeedUVs()
{
    if (!NeedTriangles())
        return false;
    const GEOM_Texture* const tex = mGeom->Geom()->tex;
    if (!tex || !tex->verts || !tex->sets || tex->numVerts < 1)
        return false;
    if (!BeginPiece(kUVs))
        return true;
    if (!mOwnVertices)
    {
        mUVs.Upload(mGeom->UvsPerVertex(), std::size_t(mNumVerts) * sizeof(T_VERTEX));
        return true;
    }
    BArray<T_VERTEX> uvs;
    if (!uvs.SetCountForWriting(mOwnUV.Count()))
        return false;
    for (std::int64_t k = 0; k < mOwnUV.Count(); ++k)
        uvs[k] = mOwnUV[k] >= 0 ? tex->verts[mOwnUV[k]] : T_VERTEX{};
    mUVs.Upload(uvs.Data(), std::size_t(uvs.Count()) * sizeof(T_VERTEX));
    return true;
}

// Texture vertex of corner k of a polygon, -1 without one.
static std::int32_t TextureCorner(const GEOM& record, std::int32_t poly, std::int32_t k)
{
    if (!record.PolyHasTexture(poly))
        return -1;
    const GEOM_TexPoly run = record.tex->polys[poly];
    return k < run.length ? record.tex->sets[run.start + k] : -1;
}

// Adds the directions of u and v at every corner to those of its surface vertex.
void GeomBuffers::AddCornerTangents(VERTEX* tangents, VERTEX* binormals) const
{
    const GEOM& record = *mGeom->Geom();
    const std::int32_t* const surface = mOwnVertices ? mOwnCorner.Data() : Corners();
    const std::int32_t* const corners = Corners();
    for (std::int32_t p = 0; p < record.numPolys; ++p)
    {
        const ELEMENT& poly = *record.Poly(p);
        const std::int32_t start = poly.start, n = poly.length;
        for (std::int32_t k = 0; poly.IsFace() && record.PolyHasTexture(p) && k < n; ++k)
        {
            const std::int32_t at = surface[start + k], next = (k + 1) % n, last = (k + n - 1) % n;
            const std::int32_t t = TextureCorner(record, p, k), a = TextureCorner(record, p, next),
                               b = TextureCorner(record, p, last);
            if (t < 0 || a < 0 || b < 0)
                continue;
            const VERTEX here = mVerts[corners[start + k]];
            const VERTEX alongA = mVerts[corners[start + next]] - here, alongB = mVerts[corners[start + last]] - here;
            const T_VERTEX uv = record.tex->verts[t], uvA = record.tex->verts[a], uvB = record.tex->verts[b];
            const float ua = uvA.u - uv.u, va = uvA.v - uv.v, ub = uvB.u - uv.u, vb = uvB.v - uv.v;
            const float area = ua * vb - ub * va;
            if (!(std::fabs(area) > 0) || !IsFinite(alongA) || !IsFinite(alongB))
                continue;
            tangents[at] = tangents[at] + (alongA * vb - alongB * va) * (1 / area);
            binormals[at] = binormals[at] + (alongB * ua - alongA * ub) * (1 / area);
        }
    }
}

// The mesh has tangents at the vertices of its record. Vertices that were split, by creases, by seams or here, get the
// mean of their own corners: across a seam of the texture the directions of u and v may turn about.
bool GeomBuffers::NeedTangents()
{
    if (!NeedUVs())
        return false;
    if (!BeginPiece(kTangents))
        return mTangents.Buffer() != 0;
    const std::int64_t count = mOwnVertices ? mOwnVertex.Count() : mNumVerts;
    const std::int32_t kept = mOwnVertices ? 0 : std::min(mNumVerts, mGeom->NumVerts(false));
    BArray<VERTEX> tangents, binormals;
    mGeom->ComputeTangents();
    if (!mGeom->VertTangents() || !tangents.SetCount(count) || !binormals.SetCount(count))
        return false;
    std::fill(tangents.begin(), tangents.end(), VERTEX{});
    std::fill(binormals.begin(), binormals.end(), VERTEX{});
    AddCornerTangents(tangents.Data(), binormals.Data());
    for (std::int32_t v = 0; v < kept; ++v)
    {
        // Where coordinates are mirrored the mesh's point the other way.
        const VERTEX along = mGeom->VertTangents()[v];
        const float way = Dot(along, tangents[v]);
        const float turn = way > 0 ? 1.0f : (way < 0 ? -1.0f : 0.0f); // 0: in no polygon with a texture
        tangents[v] = along * turn;
        binormals[v] = mGeom->VertBinormals()[v] * turn;
    }
    mTangents.Upload(tangents.Data(), std::size_t(count) * sizeof(VERTEX));
    mBinormals.Upload(binormals.Data(), std::size_t(count) * sizeof(VERTEX));
    return true;
}

bool GeomBuffers::NeedPolyNormals()
{
    if (!NeedTriangles())
        return false;
    if (!BeginPiece(kPolyNormals))
        return true;
    const std::size_t count = std::size_t(mGeom->NumPolys());
    if (mGeom->PolyNormals())
    {
        mPolyNormals.Upload(mGeom->PolyNormals(), count * sizeof(VERTEX));
        return true;
    }
    BArray<VERTEX> normals;
    if (!normals.SetCountForWriting(std::int64_t(count)) || GEOM_CalcPolyNormals(mGeom->Geom(), normals.Data()))
        return false;
    mPolyNormals.Upload(normals.Data(), count * sizeof(VERTEX));
    return true;
}

// --- Surfaces

bool GeomBuffers::UVsFitVertices() const
{
    const GEOM& record = *mGeom->Geom();
    const T_VERTEX* const uvs = mGeom->UvsPerVertex();
    if (!uvs || MEM_Count(uvs) < std::size_t(mNumVerts))
        return false;
    const std::int32_t* const corners = Corners();
    for (std::int32_t p = 0; p < record.numPolys; ++p)
    {
        const ELEMENT& poly = *record.Poly(p);
        for (std::int32_t k = 0; poly.IsFace() && k < poly.length; ++k)
        {
            const std::int32_t t = TextureCorner(record, p, k);
            const T_VERTEX wanted = t >= 0 ? record.tex->verts[t] : T_VERTEX{};
            if (!(uvs[corners[poly.start + k]] == wanted))
                return false;
        }
    }
    return true;
}

// Gives each pair of vertex and texture vertex a surface vertex: per vertex a chain of those made so far.
bool GeomBuffers::FindSurfaceVertices()
{
    const GEOM& record = *mGeom->Geom();
    mOwnVertex.Empty();
    mOwnUV.Empty();
    mOwnVertices = record.tex && record.tex->sets && record.tex->verts && record.tex->numVerts > 0 && !UVsFitVertices();
    if (!mOwnVertices)
        return true;
    BArray<std::int32_t> newest, before;
    if (!newest.SetCountForWriting(mNumVerts) || !mOwnCorner.SetCountForWriting(record.NumCorners()))
        return false;
    std::fill(newest.begin(), newest.end(), -1);
    const std::int32_t* const corners = Corners();
    for (std::int32_t p = 0; p < record.numPolys; ++p)
    {
        const ELEMENT& poly = *record.Poly(p);
        for (std::int32_t k = 0; k < poly.length; ++k)
        {
            const std::int32_t vertex = corners[poly.start + k], t = TextureCorner(record, p, k);
            std::int32_t own = newest[vertex];
            while (own >= 0 && mOwnUV[own] != t)
                own = before[own];
            if (own < 0)
            {
                own = std::int32_t(mOwnVertex.Count());
                if (!mOwnVertex.Append(vertex) || !mOwnUV.Append(t) || !before.Append(newest[vertex]))
                    return false;
                newest[vertex] = own;
            }
            mOwnCorner[poly.start + k] = own;
        }
    }
    return true;
}

bool GeomBuffers::AppendTriangles(VXElementKind kind, Triangulator& triangulator, BArray<std::int32_t>& polys)
{
    const GEOM& record = *mGeom->Geom();
    const VXSortedBucket& bucket = mGeom->Sorted(kind);
    const std::int32_t* const surface = mOwnVertices ? mOwnCorner.Data() : Corners();
    const std::int32_t* const corners = Corners();
    for (std::int32_t i = 0; i < bucket.count; ++i)
    {
        const ELEMENT& poly = *record.Poly(bucket.polys[i]);
        const std::int64_t before = mTriangles.Count();
        if (!triangulator.Append({mVerts, std::size_t(mNumVerts)}, {corners + poly.start, std::size_t(poly.length)},
                                 mTriangles))
            return false;
        for (std::int64_t c = before; c < mTriangles.Count(); ++c)
            mTriangles[c] = surface[poly.start + mTriangles[c]];
        for (std::int64_t c = before; c < mTriangles.Count(); c += 3)
            if (!polys.Append(bucket.polys[i]))
                return false;
        if (!mFirstTriangle.Append(std::int32_t(mTriangles.Count() / 3)))
            return false;
    }
    return true;
}

bool GeomBuffers::BuildTriangles()
{
    Triangulator triangulator;
    BArray<std::int32_t> polys;
    const std::int64_t corners = mGeom->Geom()->NumCorners();
    mTriangles.Empty();
    mFirstTriangle.Empty();
    if (!FindSurfaceVertices() || !mTriangles.Reserve(3 * corners) || !polys.Reserve(corners) ||
        !mFirstTriangle.Append(0))
        return false;
    for (const VXElementKind kind : {VXElementKind::Quads, VXElementKind::Triangles, VXElementKind::Polygons})
        if (!AppendTriangles(kind, triangulator, polys))
            return false;
    mIndices.Upload(mTriangles.Data(), std::size_t(mTriangles.Count()) * sizeof(std::int32_t));
    mTrianglePolys.Upload(polys.Data(), std::size_t(polys.Count()) * sizeof(std::int32_t));
    mTriangles.Release();
    return true;
}

bool GeomBuffers::NeedTriangles()
{
    if (!NeedPositions())
        return false;
    if (BeginPiece(kTriangles))
    {
        if (!mGeom->DataSorted())
            mGeom->SortGeomData();
        const std::uint64_t hash = TopologyHash();
        if (hash != mTopologyHash || !mIndices.Buffer())
        {
            mTopologyHash = 0;
            if (!BuildTriangles())
                return false;
            mTopologyHash = hash;
        }
        BArray<VERTEX> scratch;
        if (mOwnVertices && !Gather(mVerts, mSurfacePositions, scratch))
            return false;
    }
    return mIndices.Bytes() > 0;
}

GeomBuffers::Range GeomBuffers::Triangles(VXElementKind kind, std::int32_t first, std::int32_t count) const
{
    const std::int64_t from = KindBase(kind) + first;
    if (kind > VXElementKind::Polygons || from + count >= mFirstTriangle.Count())
        return {};
    return {mFirstTriangle[from], mFirstTriangle[from + count] - mFirstTriangle[from]};
}

// --- Edges

// Every edge once, with the element that comes first in drawing order: two elements that draw one edge would ink it
// twice, and blended ink shows that.
bool GeomBuffers::BuildEdges()
{
    const VXEdgeList& list = mGeom->EdgeList();
    const std::int32_t numEdges = list.GetEdgeCount(), numFaces = KindBase(VXElementKind::Lines);
    BArray<std::int32_t> rank, owner, pairs;
    if (!rank.SetCountForWriting(mGeom->NumPolys()) || !owner.SetCountForWriting(numEdges) ||
        !pairs.SetCountForWriting(2 * std::int64_t(numEdges)) || !mFirstEdge.SetCount(0) ||
        !mFirstEdge.SetCount(numFaces + 1))
        return false;
    std::fill(rank.begin(), rank.end(), INT32_MAX);
    for (const VXElementKind kind : {VXElementKind::Quads, VXElementKind::Triangles, VXElementKind::Polygons})
    {
        const VXSortedBucket& bucket = mGeom->Sorted(kind);
        const std::int32_t base = KindBase(kind);
        for (std::int32_t i = 0; i < bucket.count; ++i)
            rank[bucket.polys[i]] = base + i;
    }
    const auto rankOf = [&](std::int32_t poly) { return poly >= 0 && poly < rank.Count() ? rank[poly] : INT32_MAX; };
    for (std::int32_t e = 0; e < numEdges; ++e)
    {
        const VXEdge& edge = list.GetEdge(e);
        owner[e] = std::min(rankOf(edge.PolyIndex1()), rankOf(edge.PolyIndex2()));
        if (owner[e] < numFaces)
            ++mFirstEdge[owner[e] + 1];
    }
    for (std::int32_t i = 0; i < numFaces; ++i)
        mFirstEdge[i + 1] += mFirstEdge[i];
    BArray<std::int32_t> next(mFirstEdge);
    if (next.Count() != mFirstEdge.Count())
        return false;
    for (std::int32_t e = 0; e < numEdges; ++e)
    {
        if (owner[e] >= numFaces)
            continue; // of hidden polygons, or of line elements
        const std::int64_t at = 2 * std::int64_t(next[owner[e]]++);
        pairs[at] = list.GetEdge(e).VertIndex1();
        pairs[at + 1] = list.GetEdge(e).VertIndex2();
    }
    mEdges.Upload(pairs.Data(), 2 * std::size_t(mFirstEdge[numFaces]) * sizeof(std::int32_t));
    return true;
}

bool GeomBuffers::NeedEdges()
{
    if (!NeedPositions())
        return false;
    if (BeginPiece(kEdges))
    {
        if (!mGeom->DataSorted())
            mGeom->SortGeomData();
        const std::uint64_t hash = TopologyHash();
        if (hash != mEdgeHash || !mEdges.Buffer())
        {
            mEdgeHash = 0;
            if (!BuildEdges())
                return false;
            mEdgeHash = hash;
        }
    }
    return mEdges.Bytes() > 0;
}

GeomBuffers::Range GeomBuffers::Edges(VXElementKind kind, std::int32_t first, std::int32_t count) const
{
    const std::int64_t from = KindBase(kind) + first;
    if (kind > VXElementKind::Polygons || from + count >= mFirstEdge.Count())
        return {};
    return {mFirstEdge[from], mFirstEdge[from + count] - mFirstEdge[from]};
}

// --- Line and point elements

bool GeomBuffers::NeedLineElements()
{
    if (!NeedPositions())
        return false;
    if (!BeginPiece(kLineElements))
        return true;
    if (!mGeom->DataSorted())
        mGeom->SortGeomData();
    const GEOM& record = *mGeom->Geom();
    BArray<std::int32_t> pairs, points;
    mFirstLine.Empty();
    bool done = mFirstLine.Append(0);
    const VXSortedBucket& lines = mGeom->Sorted(VXElementKind::Lines);
    for (std::int32_t i = 0; done && i < lines.count; ++i)
    {
        const ELEMENT& line = *record.Poly(lines.polys[i]);
        for (std::int32_t k = 0; done && k + 1 < line.length; ++k)
            done = pairs.Append(record.sets[line.start + k]) && pairs.Append(record.sets[line.start + k + 1]);
        done = done && mFirstLine.Append(std::int32_t(pairs.Count() / 2));
    }
    // A point element may name several vertices; ranges of elements are ranges of points by a table of their own.
    const VXSortedBucket& dots = mGeom->Sorted(VXElementKind::Points);
    for (std::int32_t i = 0; done && i < dots.count; ++i)
    {
        const ELEMENT& dot = *record.Poly(dots.polys[i]);
        for (std::int32_t k = 0; done && k < dot.length; ++k)
            done = points.Append(record.sets[dot.start + k]);
        done = done && mFirstLine.Append(std::int32_t(points.Count()));
    }
    if (!done)
        return false;
    mLines.Upload(pairs.Data(), std::size_t(pairs.Count()) * sizeof(std::int32_t));
    mPoints.Upload(points.Data(), std::size_t(points.Count()) * sizeof(std::int32_t));
    return true;
}

GeomBuffers::Range GeomBuffers::LineElements(VXElementKind kind, std::int32_t first, std::int32_t count) const
{
    const std::int32_t numLines = mGeom->Sorted(VXElementKind::Lines).count;
    const std::int64_t from = kind == VXElementKind::Points ? std::int64_t(numLines) + first : first;
    if (from + count >= mFirstLine.Count() || count < 1)
        return {};
    // The table goes on from lines to points, whose count starts at zero again.
    const bool startsPoints = kind == VXElementKind::Points && first == 0;
    const std::int32_t begin = startsPoints ? 0 : mFirstLine[from];
    return {begin, mFirstLine[from + count] - begin};
}

void GeomBuffers::SetOutline(const std::int32_t* pairs, std::int32_t numPairs)
{
    mOutline.Upload(pairs, 2 * std::size_t(numPairs) * sizeof(std::int32_t));
}
} // namespace vx
