// The rules are those of E. Catmull and J. Clark, Recursively generated B-spline surfaces on arbitrary topological
// meshes, 1978, for inner vertices and edges. Border vertices never move, and a border edge whose polygon is on its
// second side gets the mean of its ends and the face point; both are meant so.
#include "mesh/kernel/CatmullClark.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>

namespace vx
{
namespace
{

// CatmullScratch::edgeAt of a corner is the edge's index times 4 with these bits, or kNoEdge.
constexpr std::uint32_t kSideB = 1;   // the polygon is the edge's second
constexpr std::uint32_t kOneSide = 2; // the edge has no second polygon
constexpr std::uint32_t kNoEdge = ~0u;
constexpr std::uint32_t kNoEdgeBit = 1u << 31; // of no edge's code
constexpr std::int64_t kMostEdges = std::int64_t(1) << 29;

// Up to here, corners are compared with each other to see whether a polygon has one twice.
constexpr std::int32_t kFewCorners = 8;

using VertexSum = CatmullScratch::VertexSum;

// The arrays of a step as plain pointers, and the counts that say where each kind of point starts.
struct Step
{
    Step(const CatmullSource& s, const CatmullTarget& t, CatmullScratch& scratch)
        : source(s), target(t), points(s.points.data()), first(scratch.firstCorner.Data()),
          edgeAt(scratch.edgeAt.Data()), sums(scratch.sums), mark(scratch.mark.Data()), walk(scratch.walk.Data()),
          numVerts(std::int32_t(s.points.size())), numPolys(std::int32_t(s.polys.count)),
          numEdges(std::int32_t(s.edges.size())), numTexVerts(std::int32_t(s.numTexVerts)),
          facePoints(t.verts + numVerts), edgePoints(facePoints + numPolys)
    {
    }

    const CatmullSource& source;
    const CatmullTarget& target;
    const VERTEX* points;
    const std::int32_t* first;
    std::uint32_t* edgeAt;
    VertexSum* sums;
    std::int32_t* mark;
    std::int32_t* walk;
    std::int32_t numVerts, numPolys, numEdges, numTexVerts;
    VERTEX* facePoints;
    VERTEX* edgePoints;

    bool IsPoly(std::int32_t p) const { return std::uint32_t(p) < std::uint32_t(numPolys); }
    bool IsVert(std::int32_t v) const { return std::uint32_t(v) < std::uint32_t(numVerts); }
    std::int32_t Length(std::int32_t p) const { return first[p + 1] - first[p]; }
    std::int32_t EdgePoint(std::uint32_t edge) const { return numVerts + numPolys + std::int32_t(edge >> 2); }
    std::int32_t EdgeTexPoint(std::uint32_t edge) const
    {
        return numTexVerts + numPolys + std::int32_t(2 * (edge >> 2) + (edge & kSideB));
    }
};

// --- Old texture vertices and face points

void WriteFacePoints(const Step& step)
{
    T_VERTEX* const uvs = step.target.texVerts;
    if (step.numTexVerts > 0)
        std::copy_n(step.source.geom.tex->verts, step.numTexVerts, uvs);
    GEOM_CalcPolyCentroids(&step.source.geom, step.facePoints, step.numTexVerts > 0 ? uvs + step.numTexVerts : nullptr);
}

// --- Edges: edge points, what they add to their vertices, and the corners where they start

VERTEX EdgePoint(const VERTEX& p0, const VERTEX& p1, const VERTEX* faceA, const VERTEX* faceB)
{
    if (faceA && faceB)
        return (p0 + p1 + *faceA + *faceB) * 0.25f;
    if (faceA)
        return (p0 + p1) * 0.5f;
    constexpr double kThird = 0.333333333; // nine digits, as it always was
    const VERTEX sum = p0 + p1 + *faceB;
    return {float(sum.x * kThird), float(sum.y * kThird), float(sum.z * kThird)};
}

void Add(VertexSum& sum, const VertexSum& part)
{
    for (std::size_t i = 0; i < 3; ++i)
        sum.faces[i] += part.faces[i];
    for (std::size_t i = 0; i < 3; ++i)
        sum.ends[i] += part.ends[i];
    sum.numEdges += part.numEdges;
    sum.numEnds += part.numEnds;
}

VertexSum PartOf(const VERTEX& faces, const VERTEX& ends, int numEnds)
{
    return {{faces.x, faces.y, faces.z}, {ends.x, ends.y, ends.z}, 1, double(numEnds)};
}

// What an edge adds to the sums at its ends.
void AddToEnds(const Step& step, const VXEdge& edge, const VERTEX* faceA, const VERTEX* faceB)
{
    const std::int32_t v0 = edge.VertIndex1(), v1 = edge.VertIndex2();
    if (faceA && faceB && step.IsVert(v0) && step.IsVert(v1)) [[likely]]
    {
        const VertexSum part = PartOf(*faceA + *faceB, step.points[v0] + step.points[v1], 2);
        Add(step.sums[v0], part);
        Add(step.sums[v1], part);
        return;
    }
    for (const std::int32_t v : {v0, v1})
        if (step.IsVert(v) && faceA && faceB)
            Add(step.sums[v], PartOf(*faceA + *faceB, step.points[v], 1));
        else if (step.IsVert(v))
            step.sums[v].numEdges = -std::numeric_limits<double>::infinity();
}

void NoteStart(const Step& step, std::int32_t poly, std::int32_t corner, std::uint32_t edge)
{
    if (std::uint32_t(corner) < std::uint32_t(step.Length(poly)))
        step.edgeAt[step.first[poly] + corner] = edge;
}

// Goes backwards, because that is the order in which a vertex's chain has its edges: sums have the same digits as when
// each chain is walked.
void GoThroughEdges(const Step& step)
{
    for (std::int32_t e = step.numEdges - 1; e >= 0; --e)
    {
        const VXEdge& edge = step.source.edges[std::size_t(e)];
        const std::int32_t a = edge.PolyIndex1(), b = edge.PolyIndex2();
        const std::int32_t v0 = edge.VertIndex1(), v1 = edge.VertIndex2();
        const bool hasA = step.IsPoly(a), hasB = step.IsPoly(b), hasEnds = step.IsVert(v0) && step.IsVert(v1);
        const VERTEX* const faceA = hasA ? step.facePoints + a : nullptr;
        const VERTEX* const faceB = hasB ? step.facePoints + b : nullptr;
        if (hasEnds && (hasA || hasB))
            step.edgePoints[e] = EdgePoint(step.points[v0], step.points[v1], faceA, faceB);
        AddToEnds(step, edge, faceA, faceB);

        const std::uint32_t code = std::uint32_t(e) << 2;
        if (hasA)
            NoteStart(step, a, edge.RelIndexP1V1(), hasB ? code : code | kOneSide);
        if (hasB)
            NoteStart(step, b, edge.IsEdgeOrderedProperly() ? edge.RelIndexP2V2() : edge.RelIndexP2V1(), code | kSideB);
    }
}

// --- Vertex points

VERTEX VertexPoint(const VERTEX& p, const VertexSum& sum)
{
    const double n = sum.numEdges, perFace = 1 / (2 * n), perEnd = 1 / sum.numEnds, perEdge = 1 / n;
    const auto moved = [&](int axis, float old)
    {
        const double q = sum.faces[axis] * perFace, r = sum.ends[axis] * perEnd;
        return float((q + 2 * r + (n - 3) * double(old)) * perEdge);
    };
    return {moved(0, p.x), moved(1, p.y), moved(2, p.z)};
}

void MoveVertices(const Step& step)
{
    for (std::int32_t v = 0; v < step.numVerts; ++v)
    {
        const VertexSum& sum = step.sums[v];
        step.target.verts[v] = sum.numEdges > 0 ? VertexPoint(step.points[v], sum) : step.points[v];
    }
}

// --- Quads

// Texture vertices of one polygon's corners. A corner without one uses the polygon's face point, which is (0, 0) when
// no corner has one.
struct TexRing
{
    TexRing(const Step& step, std::int32_t poly) : numTexVerts(step.numTexVerts), facePoint(numTexVerts + poly)
    {
        const GEOM_Texture& tex = *step.source.geom.tex;
        const GEOM_TexPoly run = poly < tex.numPolys ? tex.polys[poly] : GEOM_TexPoly{};
        if (run.start < 0 || run.length < 0 || std::int64_t(run.start) + run.length > tex.numCorners)
            return;
        ring = tex.sets + run.start;
        length = run.length;
    }
    std::int32_t At(std::int32_t corner) const
    {
        return corner < length && std::uint32_t(ring[corner]) < std::uint32_t(numTexVerts) ? ring[corner] : facePoint;
    }

    const std::int32_t* ring = nullptr;
    std::int32_t length = 0;
    std::int32_t numTexVerts;
    std::int32_t facePoint;
};

// The texture point of the edge that starts at a corner, on this polygon's side.
void WriteEdgeTexPoint(const Step& step, std::uint32_t edge, std::int32_t tex, std::int32_t nextTex)
{
    T_VERTEX* const uvs = step.target.texVerts;
    const T_VERTEX a = uvs[tex], b = uvs[nextTex];
    const T_VERTEX middle = {(a.u + b.u) * 0.5f, (a.v + b.v) * 0.5f};
    const std::int32_t slot = step.EdgeTexPoint(edge);
    uvs[slot] = middle;
    if (edge & kOneSide)
        uvs[slot + 1] = middle;
}

// Writes quads one after the other.
struct QuadWriter
{
    CatmullTarget target; // a copy: what is stored cannot change it
    std::int32_t poly = 0;
    std::uint16_t material = 0;
    std::int32_t texLength = 0; // 4; children of a polygon without texture coordinates have none

    // Of the old vertex, its edge, the face, the edge before it: vertices and, with texture coordinates, texture
    // vertices.
    template <bool Textured>
    void Write(std::int32_t q, const std::int32_t (&verts)[4], const std::int32_t (&texVerts)[4]) const
    {
        ELEMENT& quad = *reinterpret_cast<ELEMENT*>(target.polys + q * target.stride);
        quad.start = 4 * q;
        quad.length = 4;
        quad.material = material;
        std::memcpy(target.sets + 4 * std::int64_t(q), verts, sizeof verts);
        target.parents[q] = poly;
        if constexpr (Textured)
        {
            std::memcpy(target.texSets + 4 * std::int64_t(q), texVerts, sizeof texVerts);
            target.texPolys[q] = {4 * q, texLength};
        }
    }
};

bool AllDifferent(const std::int32_t* ring, std::int32_t length)
{
    if (length == 4)
        return ring[0] != ring[1] && ring[0] != ring[2] && ring[0] != ring[3] && ring[1] != ring[2] &&
               ring[1] != ring[3] && ring[2] != ring[3];
    for (std::int32_t k = 1; k < length; ++k)
        for (std::int32_t j = 0; j < k; ++j)
            if (ring[j] == ring[k])
                return false;
    return true;
}

bool AllDifferentByMarks(const Step& step, std::int32_t poly, const std::int32_t* ring, std::int32_t length)
{
    for (std::int32_t k = 0; k < length; ++k)
    {
        if (!step.IsVert(ring[k]) || step.mark[ring[k]] == poly)
            return false;
        step.mark[ring[k]] = poly;
    }
    return true;
}

// Whether walking around the polygon from edge to edge goes from corner to corner: it is a face, each corner has its
// edge, and no vertex comes twice, so that edges and corners determine each other.
inline bool IsPlain(const Step& step, std::int32_t poly, bool isFace, const std::int32_t* ring, std::int32_t length)
{
    if (!isFace || length < 3)
        return false;
    std::uint32_t all = 0;
    for (std::int32_t k = 0; k < length; ++k)
        all |= step.edgeAt[step.first[poly] + k];
    if (all & kNoEdgeBit)
        return false;
    return length > kFewCorners ? AllDifferentByMarks(step, poly, ring, length) : AllDifferent(ring, length);
}

// This and SplitByWalking write a polygon's quads from q on, and return how many there are then.
template <bool Textured>
inline std::int32_t SplitPlain(const Step& step, const QuadWriter& writer, std::int32_t q, const std::int32_t* ring,
                               std::int32_t length)
{
    const std::int32_t poly = writer.poly, face = step.numVerts + poly, texFace = step.numTexVerts + poly;
    const std::uint32_t* const edges = step.edgeAt + step.first[poly];
    std::uint32_t before = edges[length - 1];
    if constexpr (Textured)
    {
        const TexRing texRing(step, poly);
        std::int32_t tex = texRing.At(0);
        for (std::int32_t k = 0; k < length; ++k)
        {
            const std::uint32_t edge = edges[k];
            const std::int32_t nextTex = texRing.At(k + 1 < length ? k + 1 : 0);
            if (writer.texLength > 0)
                WriteEdgeTexPoint(step, edge, tex, nextTex);
            writer.Write<true>(q++, {ring[k], step.EdgePoint(edge), face, step.EdgePoint(before)},
                               {tex, step.EdgeTexPoint(edge), texFace, step.EdgeTexPoint(before)});
            tex = nextTex;
            before = edge;
        }
        return q;
    }
    for (std::int32_t k = 0; k < length; ++k)
    {
        const std::uint32_t edge = edges[k];
        writer.Write<false>(q++, {ring[k], step.EdgePoint(edge), face, step.EdgePoint(before)}, {});
        before = edge;
    }
    return q;
}

// The edges of one polygon that is not plain, with chains of them at its vertices in the order of the mesh's own
// chains: newest edge first. Finding an edge here gives what searching the mesh's chains for this polygon would, but
// the time does not depend on what other polygons do at the vertices.
class OwnEdges
{
public:
    OwnEdges(const Step& step, std::int32_t poly, const std::int32_t* ring, std::int32_t length)
        : mEdges(step.edgeAt + step.first[poly]), mRing(ring), mLength(length), mHead(step.mark), mOrder(step.walk),
          mNext(step.walk + length)
    {
        for (std::int32_t k = 0; k < length; ++k)
        {
            mHead[ring[k]] = -1;
            if (mEdges[k] != kNoEdge)
                mOrder[mCount++] = k;
        }
        std::sort(mOrder, mOrder + mCount, [this](std::int32_t a, std::int32_t b) { return mEdges[a] < mEdges[b]; });
        for (std::int32_t i = 0; i < mCount; ++i)
        {
            Link(ring[mOrder[i]], 2 * mOrder[i]);
            Link(ring[After(mOrder[i])], 2 * mOrder[i] + 1);
        }
    }
    ~OwnEdges()
    {
        for (std::int32_t k = 0; k < mLength; ++k)
            mHead[mRing[k]] = -1;
    }
    OwnEdges(const OwnEdges&) = delete;
    OwnEdges& operator=(const OwnEdges&) = delete;

    // Edges are named by the corner where they start; -1 for none.
    std::int32_t Between(std::int32_t a, std::int32_t b) const
    {
        for (std::int32_t l = mHead[a]; l >= 0; l = mNext[l])
            if (mRing[l >> 1] == b || mRing[After(l >> 1)] == b)
                return l >> 1;
        return -1;
    }
    std::int32_t OtherAt(std::int32_t vert, std::int32_t corner) const
    {
        for (std::int32_t l = mHead[vert]; l >= 0; l = mNext[l])
            if ((l >> 1) != corner)
                return l >> 1;
        return -1;
    }
    std::int32_t After(std::int32_t corner) const { return corner + 1 < mLength ? corner + 1 : 0; }

private:
    void Link(std::int32_t vert, std::int32_t link)
    {
        mNext[link] = mHead[vert];
        mHead[vert] = link;
    }

    const std::uint32_t* mEdges;
    const std::int32_t* mRing;
    std::int32_t mLength;
    std::int32_t* mHead;  // per vertex: its newest link; link 2k is the start of the edge at corner k, 2k+1 its end
    std::int32_t* mOrder; // corners with edges, oldest edge first
    std::int32_t* mNext;  // per link
    std::int32_t mCount = 0;
};

// Lines, polygons of one or two corners, and polygons that come back to a vertex: walks from edge to edge until the
// start, or an end.
template <bool Textured>
std::int32_t SplitByWalking(const Step& step, const QuadWriter& writer, std::int32_t q, const std::int32_t* ring,
                            std::int32_t length)
{
    if (length < 2 || !std::all_of(ring, ring + length, [&step](std::int32_t v) { return step.IsVert(v); }))
        return q;
    const std::int32_t poly = writer.poly;
    const OwnEdges own(step, poly, ring, length);
    const std::uint32_t* const edges = step.edgeAt + step.first[poly];
    std::optional<TexRing> texRing;
    if constexpr (Textured)
    {
        texRing.emplace(step, poly);
        for (std::int32_t k = 0; k < length && writer.texLength > 0; ++k)
            if (edges[k] != kNoEdge)
                WriteEdgeTexPoint(step, edges[k], texRing->At(k), texRing->At(own.After(k)));
    }
    const std::int32_t start = own.Between(ring[0], ring[1]), end = q + length;
    for (std::int32_t corner = start; corner >= 0 && q < end;)
    {
        const std::int32_t vert = ring[corner], before = own.OtherAt(vert, corner);
        const std::int32_t edgePoint = step.EdgePoint(edges[corner]);
        const std::int32_t pointBefore = before >= 0 ? step.EdgePoint(edges[before]) : vert;
        if constexpr (Textured)
        {
            const std::int32_t tex = texRing->At(corner),
                               texBefore = before >= 0 ? step.EdgeTexPoint(edges[before]) : tex;
            writer.Write<true>(q++, {vert, edgePoint, step.numVerts + poly, pointBefore},
                               {tex, step.EdgeTexPoint(edges[corner]), step.numTexVerts + poly, texBefore});
        }
        else
            writer.Write<false>(q++, {vert, edgePoint, step.numVerts + poly, pointBefore}, {});
        corner = own.OtherAt(ring[own.After(corner)], corner);
        if (corner == start)
            break;
    }
    return q;
}

template <bool Textured>
std::int32_t WriteQuads(const Step& step)
{
    std::int32_t q = 0;
    for (std::int32_t p = 0; p < step.numPolys; ++p)
    {
        const ELEMENT& element = step.source.polys[p];
        const std::int32_t length = step.Length(p);
        const std::int32_t* const ring = step.source.polys.sets + element.start;
        const QuadWriter writer{step.target, p, element.material, Textured && TexRing(step, p).length > 0 ? 4 : 0};
        q = IsPlain(step, p, element.IsFace(), ring, length) ? SplitPlain<Textured>(step, writer, q, ring, length)
                                                             : SplitByWalking<Textured>(step, writer, q, ring, length);
    }
    return q;
}

} // namespace

bool PrepareCatmullClark(const CatmullSource& source, CatmullScratch& scratch)
{
    const std::int64_t numVerts = std::int64_t(source.points.size()), numPolys = source.polys.count;
    const std::int64_t numEdges = std::int64_t(source.edges.size());
    if (!scratch.firstCorner.SetCountForWriting(numPolys + 1))
        return false;
    std::int64_t numCorners = 0;
    std::int32_t longest = 0;
    for (std::int64_t p = 0; p < numPolys; ++p)
    {
        scratch.firstCorner.Data()[p] = std::int32_t(numCorners);
        const std::int32_t length = source.polys.Length(source.polys[p]);
        longest = std::max(longest, length);
        numCorners += length;
        if (numCorners > INT32_MAX / 4)
            return false;
    }
    scratch.firstCorner.Data()[numPolys] = std::int32_t(numCorners);
    if (numEdges > kMostEdges || numVerts + numPolys + numEdges > INT32_MAX ||
        source.numTexVerts + numPolys + 2 * std::max(numCorners, numEdges) > INT32_MAX)
        return false;
    if (!scratch.edgeAt.SetCountForWriting(numCorners) || !scratch.mark.SetCountForWriting(numVerts) ||
        !scratch.walk.SetCountForWriting(3 * std::int64_t(longest)))
        return false;
    std::fill(scratch.edgeAt.begin(), scratch.edgeAt.end(), kNoEdge);
    std::fill(scratch.mark.begin(), scratch.mark.end(), -1);
    MEM_Free(scratch.sums);
    scratch.sums = MEM_CallocArray<VertexSum>(std::size_t(numVerts));
    return scratch.sums != nullptr;
}

CatmullSizes CatmullSizesOf(const CatmullSource& source, const CatmullScratch& scratch)
{
    const int numPolys = int(source.polys.count), numEdges = int(source.edges.size());
    const int numCorners = int(scratch.edgeAt.Count());
    CatmullSizes sizes{int(source.points.size()) + numPolys + numEdges, numCorners, 4 * numCorners, 0};
    if (source.numTexVerts > 0) // a list filled by hand may have more edges than there are corners
        sizes.texVerts = int(source.numTexVerts) + numPolys + 2 * std::max(numCorners, numEdges);
    return sizes;
}

std::int32_t CatmullClark(const CatmullSource& source, const CatmullTarget& target, CatmullScratch& scratch)
{
    const Step step(source, target, scratch);
    WriteFacePoints(step);
    GoThroughEdges(step);
    MoveVertices(step);
    const std::int32_t numQuads = step.numTexVerts > 0 ? WriteQuads<true>(step) : WriteQuads<false>(step);
    std::fill(target.parents + numQuads, target.parents + scratch.edgeAt.Count(), -1);
    return numQuads;
}

} // namespace vx
