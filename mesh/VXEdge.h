// VelmarBase: mesh processing.
#pragma once

#include "VelmarExport.h"

#include <cstdint>

class VXEdge;

/// A link of a vertex's chain of edges.
struct VXVertexLink
{
    std::int32_t edge; ///< index of the edge
    std::int32_t next; ///< index of the next link, -1 at the end
};

/// Which vertex each polygon's corner at each end of an edge uses after creasing.
struct VELMAR_EXPORT VXCreaseVertexData
{
    std::int32_t p1v1 = -1, p1v2 = -1, p2v1 = -1, p2v2 = -1;

    VXCreaseVertexData() = default;
    explicit VXCreaseVertexData(const VXEdge* edge); ///< the plain vertices; -1 for a polygon that is not there
};

/// What is known of an edge, as bits of one word.
enum class EdgeFlag : std::uint32_t
{
    OpenEdge = 1u << 0,            ///< only one polygon
    BoundaryEdge = 1u << 1,        ///< silhouette edge as seen from the last viewpoint given to the facing pass
    CreaseEdge = 1u << 2,          ///< vertices are split here
    WeldedEdge = 1u << 3,          ///< for the users of edges; not read here
    SmoothEdge = 1u << 4,          ///< normals run through; with CreaseEdge: a texture seam
    EdgeOrderedProperly = 1u << 5, ///< polygon 2 walks the edge from V2 to V1, opposite to polygon 1
    P1V1Classified = 1u << 6,      ///< the corner of polygon 1 at V1 has its crease vertex
    P1V2Classified = 1u << 7,
    P2V1Classified = 1u << 8,
    P2V2Classified = 1u << 9,
    ClosingEdgeP1 = 1u << 10, ///< in polygon 1 the edge ends at the first corner
    ClosingEdgeP2 = 1u << 11,
    StartingEdgeP1 = 1u << 12, ///< in polygon 1 the edge starts at the first corner
    StartingEdgeP2 = 1u << 13,
    FacingForward = 1u << 14,   ///< one of its polygons faces the viewpoint
    EdgeWalkDone = 1u << 15,    ///< visited by the current VertLinkEdgeWalker
    MtlBoundaryEdge = 1u << 16, ///< its polygons have different materials, and it is no silhouette edge
    AppFlagged = 1u << 17,      ///< marked by the host's tools
};

/// One undirected edge with the one or two polygons that share it. V1 to V2 is the direction in which polygon 1 walks
/// it. Owns its crease data; a copy copies them.
class VELMAR_EXPORT VXEdge
{
public:
    VXEdge() = default;
    /// An open edge of `poly` from vertex v1 at corner rel1 to vertex v2 at corner rel2.
    VXEdge(std::int32_t poly, std::int32_t v1, std::int32_t v2, std::int32_t rel1, std::int32_t rel2,
           std::int32_t index)
        : mPolyIndex1(poly), mVertIndex1(v1), mVertIndex2(v2), mRelP1V1(rel1), mRelP1V2(rel2),
          mFlags(std::uint32_t(EdgeFlag::OpenEdge) | (rel1 == 0 ? std::uint32_t(EdgeFlag::StartingEdgeP1) : 0u) |
                 (rel2 == 0 ? std::uint32_t(EdgeFlag::ClosingEdgeP1) : 0u)),
          mEdgeIndex(index)
    {
    }
    VXEdge(const VXEdge& other) { *this = other; }
    VXEdge(VXEdge&& other) noexcept { *this = static_cast<VXEdge&&>(other); }
    VXEdge& operator=(const VXEdge& other);
    VXEdge& operator=(VXEdge&& other) noexcept;
    ~VXEdge() { delete mCreaseData; }

    std::int32_t PolyIndex1() const { return mPolyIndex1; }
    std::int32_t PolyIndex2() const { return mPolyIndex2; } ///< -1 while the edge is open
    void SetPolyIndex1(std::int32_t p) { mPolyIndex1 = p; }
    void SetPolyIndex2(std::int32_t p) { mPolyIndex2 = p; }
    std::int32_t VertIndex1() const { return mVertIndex1; }
    std::int32_t VertIndex2() const { return mVertIndex2; }
    void SetVertIndex1(std::int32_t v) { mVertIndex1 = v; }
    void SetVertIndex2(std::int32_t v) { mVertIndex2 = v; }
    std::int32_t EdgeIndex() const { return mEdgeIndex; }
    void SetEdgeIndex(std::int32_t i) { mEdgeIndex = i; }

    // Corner positions within the polygons: RelIndexP2V1 is where V1 stands among the corners of polygon 2.
    std::int32_t RelIndexP1V1() const { return mRelP1V1; }
    std::int32_t RelIndexP1V2() const { return mRelP1V2; }
    std::int32_t RelIndexP2V1() const { return mRelP2V1; }
    std::int32_t RelIndexP2V2() const { return mRelP2V2; }
    void SetRelIndexP1V1(std::int32_t k) { mRelP1V1 = k; }
    void SetRelIndexP1V2(std::int32_t k) { mRelP1V2 = k; }
    void SetRelIndexP2V1(std::int32_t k) { mRelP2V1 = k; }
    void SetRelIndexP2V2(std::int32_t k) { mRelP2V2 = k; }

    /// A second polygon walks the open edge, from its corner `from` to its corner `to`.
    /// @param sameWay it walks from V1 to V2, as polygon 1 does
    void Close(std::int32_t poly, std::int32_t from, std::int32_t to, bool sameWay)
    {
        mPolyIndex2 = poly;
        mRelP2V1 = sameWay ? from : to;
        mRelP2V2 = sameWay ? to : from;
        SetOpenEdge(false);
        SetEdgeOrderedProperly(!sameWay);
        SetStartingEdgeP2(from == 0);
        SetClosingEdgeP2(to == 0);
    }

    // --- Flags, in bit order
    bool Flag(EdgeFlag f) const { return (mFlags & std::uint32_t(f)) != 0; }
    void SetFlag(EdgeFlag f, bool on) { mFlags = on ? mFlags | std::uint32_t(f) : mFlags & ~std::uint32_t(f); }
    std::uint32_t Flags() const { return mFlags; }
    void SetFlags(std::uint32_t word) { mFlags = word; }
    bool IsOpenEdge() const { return Flag(EdgeFlag::OpenEdge); }
    void SetOpenEdge(bool on) { SetFlag(EdgeFlag::OpenEdge, on); }
    bool IsBoundaryEdge() const { return Flag(EdgeFlag::BoundaryEdge); }
    void SetBoundaryEdge(bool on) { SetFlag(EdgeFlag::BoundaryEdge, on); }
    bool IsCreaseEdge() const { return Flag(EdgeFlag::CreaseEdge); }
    void SetCreaseEdge(bool on) { SetFlag(EdgeFlag::CreaseEdge, on); }
    bool IsWeldedEdge() const { return Flag(EdgeFlag::WeldedEdge); }
    void SetWeldedEdge(bool on) { SetFlag(EdgeFlag::WeldedEdge, on); }
    bool IsSmoothEdge() const { return Flag(EdgeFlag::SmoothEdge); }
    void SetSmoothEdge(bool on) { SetFlag(EdgeFlag::SmoothEdge, on); }
    bool IsEdgeOrderedProperly() const { return Flag(EdgeFlag::EdgeOrderedProperly); }
    void SetEdgeOrderedProperly(bool on) { SetFlag(EdgeFlag::EdgeOrderedProperly, on); }
    bool IsP1V1Classified() const { return Flag(EdgeFlag::P1V1Classified); }
    void SetP1V1Classified(bool on) { SetFlag(EdgeFlag::P1V1Classified, on); }
    bool IsP1V2Classified() const { return Flag(EdgeFlag::P1V2Classified); }
    void SetP1V2Classified(bool on) { SetFlag(EdgeFlag::P1V2Classified, on); }
    bool IsP2V1Classified() const { return Flag(EdgeFlag::P2V1Classified); }
    void SetP2V1Classified(bool on) { SetFlag(EdgeFlag::P2V1Classified, on); }
    bool IsP2V2Classified() const { return Flag(EdgeFlag::P2V2Classified); }
    void SetP2V2Classified(bool on) { SetFlag(EdgeFlag::P2V2Classified, on); }
    bool IsClosingEdgeP1() const { return Flag(EdgeFlag::ClosingEdgeP1); }
    void SetClosingEdgeP1(bool on) { SetFlag(EdgeFlag::ClosingEdgeP1, on); }
    bool IsClosingEdgeP2() const { return Flag(EdgeFlag::ClosingEdgeP2); }
    void SetClosingEdgeP2(bool on) { SetFlag(EdgeFlag::ClosingEdgeP2, on); }
    bool IsStartingEdgeP1() const { return Flag(EdgeFlag::StartingEdgeP1); }
    void SetStartingEdgeP1(bool on) { SetFlag(EdgeFlag::StartingEdgeP1, on); }
    bool IsStartingEdgeP2() const { return Flag(EdgeFlag::StartingEdgeP2); }
    void SetStartingEdgeP2(bool on) { SetFlag(EdgeFlag::StartingEdgeP2, on); }
    bool IsFacingForward() const { return Flag(EdgeFlag::FacingForward); }
    void SetFacingForward(bool on) { SetFlag(EdgeFlag::FacingForward, on); }
    bool IsEdgeWalkDone() const { return Flag(EdgeFlag::EdgeWalkDone); }
    void SetEdgeWalkDone(bool on) { SetFlag(EdgeFlag::EdgeWalkDone, on); }
    bool IsMtlBoundaryEdge() const { return Flag(EdgeFlag::MtlBoundaryEdge); }
    void SetMtlBoundaryEdge(bool on) { SetFlag(EdgeFlag::MtlBoundaryEdge, on); }
    bool IsAppFlagged() const { return Flag(EdgeFlag::AppFlagged); }
    void SetAppFlagged(bool on) { SetFlag(EdgeFlag::AppFlagged, on); }

    // --- Crease data: created on first use from the plain vertices; false when memory ran out
    bool HasCreaseData() const { return mCreaseData != nullptr; }
    const VXCreaseVertexData* CreaseVertexData() const { return mCreaseData; } ///< null without
    bool CreateCreaseData(std::int32_t p1v1, std::int32_t p1v2, std::int32_t p2v1, std::int32_t p2v2);
    bool SetCreaseDataP1V1(std::int32_t v);
    bool SetCreaseDataP1V2(std::int32_t v);
    bool SetCreaseDataP2V1(std::int32_t v);
    bool SetCreaseDataP2V2(std::int32_t v);
    void FreeCreaseData();

    /// The vertex that polygon 1's corner at V1 uses: from the crease data when there are some, else the plain vertex.
    /// @param useCrease true: an edge that is both crease and smooth (a texture seam) answers the plain vertex, as its
    ///                  normals run through
    std::int32_t CreaseVertexP1V1(bool useCrease) const;
    std::int32_t CreaseVertexP1V2(bool useCrease) const;
    std::int32_t CreaseVertexP2V1(bool useCrease) const;
    std::int32_t CreaseVertexP2V2(bool useCrease) const;

private:
    VXCreaseVertexData* CreaseData(); ///< created when missing
    void CopyPlain(const VXEdge& other);
    bool PlainWanted(bool useCrease) const { return !mCreaseData || (useCrease && IsCreaseEdge() && IsSmoothEdge()); }

    std::int32_t mPolyIndex1 = -1;
    std::int32_t mPolyIndex2 = -1;
    std::int32_t mVertIndex1 = -1;
    std::int32_t mVertIndex2 = -1;
    VXCreaseVertexData* mCreaseData = nullptr; ///< owned
    std::int32_t mRelP1V1 = 0, mRelP1V2 = 0;
    std::int32_t mRelP2V1 = 0, mRelP2V2 = 0;
    std::uint32_t mFlags = 0;
    std::int32_t mEdgeIndex = -1;
};
static_assert(sizeof(void*) != 8 || sizeof(VXEdge) == 48, "a quad mesh has two of these per polygon");
