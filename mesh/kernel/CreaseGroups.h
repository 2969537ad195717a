// VelmarBase: mesh processing.
#pragma once

#include "mesh/kernel/Corners.h"

#include <functional>

namespace vx
{

/// Groups the polygon corners around a vertex at which creases end: those in one group share a vertex. Two corners
/// belong together when a chain of edges at the vertex leads from one to the other, none of them a crease. So where a
/// crease ends inside a fan of polygons, the way around its end joins its two sides to one group. On request polygons
/// also meet across edges of more than two polygons, which the edge list cuts into pairs.
class CornerGrouper
{
public:
    struct Corner
    {
        std::int32_t index; ///< in the corner index array
        std::int32_t group; ///< the lowest corner in the group
        bool keepsVertex;   ///< the group stays with the original vertex
    };
    /// Whether the two polygons of an edge may be in one group; asked for pairs that the edge list did not make.
    using CanJoin = std::function<bool(const VXEdge& pair)>;

    /// @param mesh with edges classified  @param canJoin empty: polygons meet across the edges of the list only
    CornerGrouper(const CreaseMesh& mesh, CanJoin canJoin) : mMesh(mesh), mCanJoin(std::move(canJoin)) {}

    bool Init(); ///< before the first vertex; false when memory ran out

    /// Finds the groups around a vertex, in time linear in its edges. At most one of the groups that creases bound
    /// keeps the vertex: beside the first crease, one that lies on no crease's first side. Fans without any crease keep
    /// it too.
    /// @return false when memory ran out
    bool Group(std::int32_t v);
    std::span<const Corner> Corners() const { return {mCorners.Data(), std::size_t(mCorners.Count())}; } ///< each once

private:
    /// A polygon at one of several edges between the same two vertices.
    struct Page
    {
        std::int32_t other; ///< the edges' other vertex
        std::int32_t edge;
        std::int32_t poly, rel, relOther;
    };
    enum : std::uint8_t
    {
        kFirstSide = 1, ///< the group lies on the first polygon's side of a crease
        kSecondSide = 2,
        kListed = 4,
    };

    bool Collect(std::int32_t v);
    bool CollectPages(std::int32_t v);
    bool JoinPages(std::int32_t v);
    void JoinPagesOfOneEdge(std::int32_t v, std::span<const Page> pages);
    void MarkSides(std::int32_t v);
    std::int32_t Keeper(std::int32_t v);

    const CreaseMesh& mMesh;
    CanJoin mCanJoin;
    CornerSets mGroups;
    BArray<std::uint8_t> mMarks;      ///< per corner: sides, valid at a group's lowest; and whether it is in mCorners
    BArray<std::int32_t> mNumEdgesTo; ///< per vertex, while a vertex is worked on; else 0
    BArray<Corner> mCorners;
    BArray<Page> mPages;
};

} // namespace vx
