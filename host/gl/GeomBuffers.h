// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BArray.h"
#include "base/Vertex.h"
#include "host/gl/Triangulate.h"
#include "mesh/VXSortedData.h"

#include <cstdint>

class VXGeom;

namespace vx
{
/// 64 bits over contents, by which what is on the graphics card is known again.
/// @param seed what stands for all before these bytes
std::uint64_t HashOf(const void* data, std::size_t bytes, std::uint64_t seed = 0x9E3779B97F4A7C15u);

/// A buffer object, and the buffer texture over it where shaders read it by index. Remembers what it holds, so that
/// handing it the same bytes again uploads nothing.
class VELMAR_HOST_EXPORT GpuArray
{
public:
    /// How the buffer texture reads entries.
    enum class Texels
    {
        Absent,
        Floats,
        Ints,
        IntPairs
    };
    explicit GpuArray(Texels texels = Texels::Absent) : mTexels(texels) {}
    ~GpuArray() { Release(); }
    GpuArray(const GpuArray&) = delete;
    GpuArray& operator=(const GpuArray&) = delete;

    void Upload(const void* data, std::size_t bytes); ///< nothing when it holds these bytes already
    void Release();
    std::uint32_t Buffer() const { return mBuffer; }
    std::uint32_t Texture() const { return mTexture; }
    std::size_t Bytes() const { return mBytes; }

    static std::int64_t UploadedBytes() { return smUploaded; } ///< since the process began, arrays and pictures
    static void CountUpload(std::size_t bytes) { smUploaded += std::int64_t(bytes); }

private:
    std::uint32_t mBuffer = 0, mTexture = 0;
    std::size_t mBytes = 0;
    std::uint64_t mHash = 0;
    Texels mTexels;
    static std::int64_t smUploaded;
};

/// Everything that drawing one geometry keeps on the graphics card: positions, normals, texture coordinates, triangles
/// in sorted order, edges in the order of the elements they belong to. Each piece is brought up to date when it is
/// first asked for after MarkStale, and is uploaded only when its contents changed: a changed pose costs positions and
/// normals, a changed draw style nothing.
///
/// Vertices are numbered as in the geometry. Only where one vertex needs several texture coordinates, which happens to
/// meshes without crease vertices, surfaces use vertices of their own, one for each pair of vertex and coordinate.
class VELMAR_HOST_EXPORT GeomBuffers
{
public:
    /// A run of triangles, or of segments.
    struct Range
    {
        std::int32_t first = 0, count = 0;
    };

    GeomBuffers() = default;
    void MarkStale() { mFresh = 0; } ///< the object was marked changed: look at everything again
    /// What is drawn from now on. Stale when any of it differs from the time before.
    void SetArrays(VXGeom* geom, const VERTEX* verts, int numVerts, const VERTEX* normals);
    VXGeom* Geom() const { return mGeom; }

    // --- Each brings a piece up to date; false when there is nothing to draw or memory ran out
    bool NeedPositions();
    bool NeedTriangles();
    bool NeedNormals();
    bool NeedUVs();
    bool NeedTangents(); ///< along u and v; the mesh's own where all corners of a vertex agree
    bool NeedPolyNormals();
    bool NeedEdges();
    bool NeedLineElements();

    // --- Ranges of elements [first, first + count) of a kind
    Range Triangles(VXElementKind kind, std::int32_t first, std::int32_t count) const;
    Range Edges(VXElementKind kind, std::int32_t first, std::int32_t count) const;
    Range LineElements(VXElementKind kind, std::int32_t first, std::int32_t count) const; ///< points: Points()

    // --- Outlines: pairs of vertices, gathered anew in every frame
    void SetOutline(const std::int32_t* pairs, std::int32_t numPairs);

    const GpuArray& SurfacePositions() const { return mOwnVertices ? mSurfacePositions : mPositions; }
    const GpuArray& SurfaceNormals() const { return mOwnVertices ? mSurfaceNormals : mNormals; }
    const GpuArray& Positions() const { return mPositions; }
    const GpuArray& Normals() const { return mNormals; }
    const GpuArray& UVs() const { return mUVs; }
    const GpuArray& Tangents() const { return mTangents; }
    const GpuArray& Binormals() const { return mBinormals; }
    const GpuArray& Indices() const { return mIndices; }
    const GpuArray& TrianglePolys() const { return mTrianglePolys; }
    const GpuArray& PolyNormals() const { return mPolyNormals; }
    const GpuArray& EdgePairs() const { return mEdges; }
    const GpuArray& LinePairs() const { return mLines; }
    const GpuArray& Points() const { return mPoints; }
    const GpuArray& OutlinePairs() const { return mOutline; }

private:
    enum Piece : std::uint32_t
    {
        kPositions = 1u << 0,
        kTriangles = 1u << 1,
        kNormals = 1u << 2,
        kUVs = 1u << 3,
        kPolyNormals = 1u << 4,
        kEdges = 1u << 5,
        kLineElements = 1u << 6,
        kTangents = 1u << 7,
    };
    bool BeginPiece(Piece piece); ///< true when the piece must be looked at
    std::uint64_t TopologyHash() const;
    bool FindSurfaceVertices();
    bool UVsFitVertices() const;
    bool BuildTriangles();
    bool AppendTriangles(VXElementKind kind, Triangulator& triangulator, BArray<std::int32_t>& polys);
    bool BuildEdges();
    bool Gather(const VERTEX* from, GpuArray& to, BArray<VERTEX>& scratch) const;
    void AddCornerTangents(VERTEX* tangents, VERTEX* binormals) const;
    const std::int32_t* Corners() const;
    std::int32_t KindBase(VXElementKind kind) const; ///< rank of the kind's first element among all faces

    VXGeom* mGeom = nullptr;
    const VERTEX* mVerts = nullptr;
    const VERTEX* mVertNormals = nullptr;
    int mNumVerts = 0;
    std::uint32_t mFresh = 0;

    std::uint64_t mTopologyHash = 0, mEdgeHash = 0;
    bool mOwnVertices = false;               ///< surfaces have vertices of their own
    BArray<std::int32_t> mOwnVertex, mOwnUV; ///< of each: vertex and texture vertex
    BArray<std::int32_t> mOwnCorner;         ///< surface vertex of each corner of the record
    BArray<std::int32_t> mTriangles;         ///< scratch of BuildTriangles
    BArray<std::int32_t> mFirstTriangle;     ///< by rank of the element, and one more
    BArray<std::int32_t> mFirstEdge;         ///< by rank, and one more
    BArray<std::int32_t> mFirstLine;         ///< by line element, and one more

    GpuArray mPositions{GpuArray::Texels::Floats}, mNormals{GpuArray::Texels::Floats};
    GpuArray mSurfacePositions, mSurfaceNormals, mUVs, mIndices, mTangents, mBinormals;
    GpuArray mTrianglePolys{GpuArray::Texels::Ints}, mPolyNormals{GpuArray::Texels::Floats};
    GpuArray mEdges{GpuArray::Texels::IntPairs}, mLines{GpuArray::Texels::IntPairs},
        mOutline{GpuArray::Texels::IntPairs};
    GpuArray mPoints{GpuArray::Texels::Ints};
};
} // namespace vx
