#include "mesh/kernel/Creases.h"

#include <bit>
#include <cmath>
#include <limits>
#include <utility>

namespace vx
{
namespace
{

constexpr float kSameValue = 0.000001f; // corner normals and texture coordinates closer than this are the same

// --- Classification

// The largest dot product of two unit normals that makes a crease, so that no arc cosine is taken per edge. Found with
// the arc cosine itself: the answers are those of acos(d) >= angle, to the last bit.
class AngleTest
{
public:
    explicit AngleTest(float degrees) : mRadians(double(degrees) * 0.017453292)
    {
        if (!Reached(kLeast))
            mLargest = -std::numeric_limits<float>::infinity();
        else if (Reached(kMost))
            mLargest = kMost;
        else
        {
            mLargest = std::clamp(float(std::cos(mRadians)), kLeast, kMost);
            while (!Reached(mLargest))
                mLargest = std::nextafter(mLargest, kLeast);
            while (Reached(std::nextafter(mLargest, kMost)))
                mLargest = std::nextafter(mLargest, kMost);
        }
    }

    /// A dot product that is not a number makes no crease.
    bool Creases(float dot) const { return (dot < kLeast ? kLeast : dot > kMost ? kMost : dot) <= mLargest; }

private:
    // The clamp is asymmetric on purpose: any angle up to 0.81 degrees splits coplanar polygons too.
    static constexpr float kLeast = -0.99999f, kMost = 0.9999f;
    bool Reached(float dot) const { return std::acos(double(dot)) >= mRadians; }

    double mRadians;
    float mLargest;
};

bool Differ(float a, float b) { return std::fabs(a - b) > kSameValue; }

bool Differ(const VERTEX& a, const VERTEX& b) { return Differ(a.x, b.x) || Differ(a.y, b.y) || Differ(a.z, b.z); }

// Texture vertex of a polygon's corner, -1 for none.
std::int32_t TexVertex(const GEOM_Texture& tex, std::int32_t poly, std::int32_t rel)
{
    if (poly >= tex.numPolys)
        return -1;
    const GEOM_TexPoly run = tex.polys[poly];
    const std::int64_t corner = std::int64_t(run.start) + rel;
    if (rel >= run.length || run.start < 0 || corner >= tex.numCorners)
        return -1;
    const std::int32_t vert = tex.sets[corner];
    return vert >= 0 && vert < tex.numVerts ? vert : -1;
}

T_VERTEX UV(const GEOM_Texture& tex, std::int32_t texVertex)
{
    return texVertex >= 0 ? tex.verts[texVertex] : T_VERTEX{};
}

bool TexDiffers(const GEOM_Texture& tex, std::int32_t p1, std::int32_t rel1, std::int32_t p2, std::int32_t rel2)
{
    const std::int32_t t1 = TexVertex(tex, p1, rel1), t2 = TexVertex(tex, p2, rel2);
    if (t1 == t2)
        return false;
    const T_VERTEX a = UV(tex, t1), b = UV(tex, t2);
    return Differ(a.u, b.u) || Differ(a.v, b.v);
}

bool IsTextured(const GEOM_Texture* tex)
{
    return tex && tex->sets && tex->verts && tex->polys && tex->numCorners >= 1;
}

// The tests in their order; the first that fires decides.
class EdgeClassifier
{
public:
    EdgeClassifier(const CreaseMesh& mesh, const CreaseRules& rules)
        : mMesh(mesh), mRules(rules), mAngle(rules.angle), mTex(IsTextured(mesh.tex) ? mesh.tex : nullptr)
    {
        for (std::int64_t p = 1; p < mesh.polys.count && !mSmoothingDiffers; ++p)
            mSmoothingDiffers = mesh.polys[p].GroupWord(0) != mesh.polys[0].GroupWord(0);
    }

    bool IsHard(const VXEdge& edge) const
    {
        const std::int32_t p1 = edge.PolyIndex1(), p2 = edge.PolyIndex2();
        if (mSmoothingDiffers && mMesh.polys[p1].GroupWord(0) != mMesh.polys[p2].GroupWord(0))
            return true;
        if (mRules.cornerNormals && (NormalDiffers(p1, edge.RelIndexP1V1(), p2, edge.RelIndexP2V1()) ||
                                     NormalDiffers(p1, edge.RelIndexP1V2(), p2, edge.RelIndexP2V2())))
            return true;
        return mRules.polyNormals && mAngle.Creases(Dot(mRules.polyNormals[p1], mRules.polyNormals[p2]));
    }

    bool IsSeam(const VXEdge& edge) const
    {
        const std::int32_t p1 = edge.PolyIndex1(), p2 = edge.PolyIndex2();
        return mTex && p1 < mTex->numPolys &&
               (TexDiffers(*mTex, p1, edge.RelIndexP1V1(), p2, edge.RelIndexP2V1()) ||
                TexDiffers(*mTex, p1, edge.RelIndexP1V2(), p2, edge.RelIndexP2V2()));
    }

private:
    bool NormalDiffers(std::int32_t p1, std::int32_t rel1, std::int32_t p2, std::int32_t rel2) const
    {
        const std::int32_t n1 = mRules.normalSets[mMesh.Corner(p1, rel1)],
                           n2 = mRules.normalSets[mMesh.Corner(p2, rel2)];
        return n1 != n2 && Differ(mRules.cornerNormals[n1], mRules.cornerNormals[n2]);
    }

    const CreaseMesh& mMesh;
    const CreaseRules& mRules;
    AngleTest mAngle;
    const GEOM_Texture* mTex;
    bool mSmoothingDiffers = false;
};

// --- Splitting

// One end of an edge: the corners that its polygons have there.
struct EdgeEnd
{
    std::int32_t poly1, rel1;
    std::int32_t poly2, rel2; // poly2 is -1 at an open edge
};

EdgeEnd EndAt(const VXEdge& edge, bool atV1)
{
    return atV1 ? EdgeEnd{edge.PolyIndex1(), edge.RelIndexP1V1(), edge.PolyIndex2(), edge.RelIndexP2V1()}
                : EdgeEnd{edge.PolyIndex1(), edge.RelIndexP1V2(), edge.PolyIndex2(), edge.RelIndexP2V2()};
}

// Calls visit(corner) for the neighbours of a corner, within its polygon, that have the same vertex as it: a repeated
// corner belongs to the same sector, though the edges touch only the first and the last of a repetition.
template <class Visit>
void VisitRepeats(const PolyView& polys, std::int32_t poly, std::int32_t rel, Visit&& visit)
{
    const ELEMENT& element = polys[poly];
    const std::int32_t* const ring = polys.sets + element.start;
    const std::int32_t last = element.length - 1;
    const bool closed = element.IsFace();
    const auto next = [&](std::int32_t k) { return k < last ? k + 1 : closed ? 0 : rel; };
    const auto previous = [&](std::int32_t k) { return k > 0 ? k - 1 : closed ? last : rel; };
    for (std::int32_t k = next(rel); k != rel && ring[k] == ring[rel]; k = next(k))
        visit(element.start + k);
    for (std::int32_t k = previous(rel); k != rel && ring[k] == ring[rel]; k = previous(k))
        visit(element.start + k);
}

// Disjoint sets of corners. A root holds itself, or the complement of a value given to its set.
class CornerSets
{
public:
    bool Init(std::int64_t numCorners) { return mParent.SetCountForWriting(numCorners); }
    void Reset(std::int32_t corner) { mParent.Data()[corner] = corner; }
    std::int32_t Root(std::int32_t corner)
    {
        std::int32_t* const parent = mParent.Data();
        for (;;)
        {
            const std::int32_t above = parent[corner];
            if (above < 0 || above == corner)
                return corner;
            if (parent[above] >= 0)
                parent[corner] = parent[above];
            corner = above;
        }
    }
    void Join(std::int32_t a, std::int32_t b)
    {
        a = Root(a);
        b = Root(b);
        mParent.Data()[std::max(a, b)] = std::min(a, b);
    }
    bool HasValue(std::int32_t root) const { return mParent.Data()[root] < 0; }
    std::int32_t Value(std::int32_t root) const { return ~mParent.Data()[root]; }
    void SetValue(std::int32_t root, std::int32_t value) { mParent.Data()[root] = ~value; }

private:
    BArray<std::int32_t> mParent; // only corners around split vertices are ever touched
};

class SectorSplitter
{
public:
    SectorSplitter(const CreaseMesh& mesh, std::span<const std::int32_t> creases, std::int32_t* sets,
                   BArray<std::int32_t>& originals, BArray<std::uint8_t>& split)
        : mMesh(mesh), mCreases(creases), mSets(sets), mOriginals(originals), mSplit(split)
    {
    }

    bool Run()
    {
        mOriginals.Empty();
        mSplit.Empty();
        if (!mSplit.SetCount(std::int64_t(mMesh.firstLink.size())))
            return false;
        if (mCreases.empty())
            return true;
        if (!mSectors.Init(mMesh.polys.numCorners) || !MarkVertices())
            return false;
        for (const std::int32_t v : mVerts)
            JoinCorners(v);
        if (!SplitFirstSides() || !SplitSecondSides())
            return false;
        for (const std::int32_t v : mVerts)
            RedirectCorners(v);
        for (const std::int32_t v : mVerts)
            if (!WriteCreaseData(v))
                return false;
        return true;
    }

private:
    enum : std::uint8_t
    {
        kNotSplit,
        kSplit,
        kKept, // some sector keeps the original
    };

    // Calls visit(edge, atV1) for each edge at a vertex, newest first.
    template <class Visit>
    void VisitEdges(std::int32_t v, Visit&& visit) const
    {
        for (std::int32_t l = mMesh.firstLink[std::size_t(v)]; l >= 0; l = mMesh.links[std::size_t(l)].next)
        {
            VXEdge& edge = mMesh.edges[std::size_t(mMesh.links[std::size_t(l)].edge)];
            visit(edge, edge.VertIndex1() == v);
        }
    }

    // Calls visit(v, end) for both ends of each crease edge.
    template <class Visit>
    bool VisitCreaseEnds(Visit&& visit) const
    {
        for (const std::int32_t e : mCreases)
        {
            const VXEdge& edge = mMesh.edges[std::size_t(e)];
            if (!visit(edge.VertIndex1(), EndAt(edge, true)) || !visit(edge.VertIndex2(), EndAt(edge, false)))
                return false;
        }
        return true;
    }

    bool MarkVertices()
    {
        return VisitCreaseEnds(
            [this](std::int32_t v, const EdgeEnd&)
            {
                std::uint8_t& state = mSplit.Data()[v];
                const bool isNew = state == kNotSplit;
                state = kSplit;
                return !isNew || mVerts.Append(v);
            });
    }

    void JoinCorners(std::int32_t v)
    {
        const auto reset = [&](std::int32_t poly, std::int32_t rel)
        {
            mSectors.Reset(mMesh.Corner(poly, rel));
            VisitRepeats(mMesh.polys, poly, rel, [&](std::int32_t repeat) { mSectors.Reset(repeat); });
        };
        VisitEdges(v,
                   [&](const VXEdge& edge, bool atV1)
                   {
                       const EdgeEnd end = EndAt(edge, atV1);
                       reset(end.poly1, end.rel1);
                       if (end.poly2 >= 0)
                           reset(end.poly2, end.rel2);
                   });
        const auto joinRepeats = [&](std::int32_t poly, std::int32_t rel)
        {
            const std::int32_t corner = mMesh.Corner(poly, rel);
            VisitRepeats(mMesh.polys, poly, rel, [&](std::int32_t repeat) { mSectors.Join(corner, repeat); });
            return corner;
        };
        VisitEdges(v,
                   [&](const VXEdge& edge, bool atV1)
                   {
                       const EdgeEnd end = EndAt(edge, atV1);
                       const std::int32_t corner1 = joinRepeats(end.poly1, end.rel1);
                       if (end.poly2 < 0)
                           return;
                       const std::int32_t corner2 = joinRepeats(end.poly2, end.rel2);
                       if (!edge.IsCreaseEdge())
                           mSectors.Join(corner1, corner2);
                   });
    }

    bool AddCopy(std::int32_t v, std::int32_t root)
    {
        mSectors.SetValue(root, std::int32_t(std::int64_t(mMesh.firstLink.size()) + mOriginals.Count()));
        return mOriginals.Append(v);
    }

    bool SplitFirstSides()
    {
        return VisitCreaseEnds(
            [this](std::int32_t v, const EdgeEnd& end)
            {
                const std::int32_t root = mSectors.Root(mMesh.Corner(end.poly1, end.rel1));
                return mSectors.HasValue(root) || AddCopy(v, root);
            });
    }

    // The first sector that is left keeps the original. Others get copies as well: they lie opposite each other, or in
    // fans that only touch, and normals that were summed over both could even cancel out.
    bool SplitSecondSides()
    {
        return VisitCreaseEnds(
            [this](std::int32_t v, const EdgeEnd& end)
            {
                const std::int32_t root = mSectors.Root(mMesh.Corner(end.poly2, end.rel2));
                if (mSectors.HasValue(root))
                    return true;
                std::uint8_t& state = mSplit.Data()[v];
                if (state == kKept)
                    return AddCopy(v, root);
                state = kKept;
                mSectors.SetValue(root, v);
                return true;
            });
    }

    void RedirectCorners(std::int32_t v)
    {
        const auto redirect = [this](std::int32_t poly, std::int32_t rel)
        {
            const std::int32_t corner = mMesh.Corner(poly, rel);
            const std::int32_t root = mSectors.Root(corner);
            if (!mSectors.HasValue(root))
                return;
            const std::int32_t vert = mSectors.Value(root);
            mSets[corner] = vert;
            VisitRepeats(mMesh.polys, poly, rel, [&](std::int32_t repeat) { mSets[repeat] = vert; });
        };
        VisitEdges(v,
                   [&](const VXEdge& edge, bool atV1)
                   {
                       const EdgeEnd end = EndAt(edge, atV1);
                       redirect(end.poly1, end.rel1);
                       if (end.poly2 >= 0)
                           redirect(end.poly2, end.rel2);
                   });
    }

    // The vertices that an edge's corners use at one end; -1 for the polygon that is not there.
    std::pair<std::int32_t, std::int32_t> Used(const EdgeEnd& end) const
    {
        return {mSets[mMesh.Corner(end.poly1, end.rel1)],
                end.poly2 >= 0 ? mSets[mMesh.Corner(end.poly2, end.rel2)] : -1};
    }

    // Only edges with a redirected corner need crease data; the others answer their plain vertices.
    bool WriteCreaseData(std::int32_t v)
    {
        bool done = true;
        VisitEdges(v,
                   [&](VXEdge& edge, bool atV1)
                   {
                       const auto [here1, here2] = Used(EndAt(edge, atV1));
                       if (here1 != v || edge.IsCreaseEdge())
                           edge.SetFlag(atV1 ? EdgeFlag::P1V1Classified : EdgeFlag::P1V2Classified, true);
                       if (here2 >= 0 && (here2 != v || edge.IsCreaseEdge()))
                           edge.SetFlag(atV1 ? EdgeFlag::P2V1Classified : EdgeFlag::P2V2Classified, true);
                       if (edge.HasCreaseData() || (here1 == v && (here2 == v || here2 < 0)))
                           return;
                       const auto [there1, there2] = Used(EndAt(edge, !atV1));
                       done = done && (atV1 ? edge.CreateCreaseData(here1, there1, here2, there2)
                                            : edge.CreateCreaseData(there1, here1, there2, here2));
                   });
        return done;
    }

    const CreaseMesh& mMesh;
    std::span<const std::int32_t> mCreases;
    std::int32_t* mSets;
    BArray<std::int32_t>& mOriginals;
    BArray<std::uint8_t>& mSplit;
    BArray<std::int32_t> mVerts; // at which a crease ends, each once
    CornerSets mSectors;         // value: the vertex that the sector uses
};

// --- Texture coordinates

// Those of a split vertex and of its copies. The chain is walked from the newest edge to the oldest, so the first
// value that a vertex is given is the one that stands.
void SplitVertexUVs(const CreaseMesh& mesh, std::int32_t v, const std::int32_t* sets, T_VERTEX* uvs)
{
    constexpr float kUnset = std::numeric_limits<float>::signaling_NaN();
    const auto visitCorners = [&](auto&& visit)
    {
        for (std::int32_t l = mesh.firstLink[std::size_t(v)]; l >= 0; l = mesh.links[std::size_t(l)].next)
        {
            const VXEdge& edge = mesh.edges[std::size_t(mesh.links[std::size_t(l)].edge)];
            const EdgeEnd end = EndAt(edge, edge.VertIndex1() == v);
            if (end.poly2 >= 0)
                visit(end.poly2, end.rel2);
            visit(end.poly1, end.rel1);
        }
    };
    visitCorners([&](std::int32_t poly, std::int32_t rel) { uvs[sets[mesh.Corner(poly, rel)]] = {kUnset, kUnset}; });
    visitCorners(
        [&](std::int32_t poly, std::int32_t rel)
        {
            T_VERTEX& uv = uvs[sets[mesh.Corner(poly, rel)]];
            if (std::bit_cast<std::uint32_t>(uv.u) == std::bit_cast<std::uint32_t>(kUnset))
                uv = UV(*mesh.tex, TexVertex(*mesh.tex, poly, rel));
        });
}

} // namespace

bool ClassifyEdges(const CreaseMesh& mesh, const CreaseRules& rules, BArray<std::int32_t>& creases)
{
    constexpr std::uint32_t kCrease = std::uint32_t(EdgeFlag::CreaseEdge),
                            kSmooth = std::uint32_t(EdgeFlag::SmoothEdge);
    constexpr std::uint32_t kCleared =
        kCrease | kSmooth | std::uint32_t(EdgeFlag::P1V1Classified) | std::uint32_t(EdgeFlag::P1V2Classified) |
        std::uint32_t(EdgeFlag::P2V1Classified) | std::uint32_t(EdgeFlag::P2V2Classified);
    const EdgeClassifier classifier(mesh, rules);
    creases.Empty();
    for (std::size_t e = 0; e < mesh.edges.size(); ++e)
    {
        VXEdge& edge = mesh.edges[e];
        edge.FreeCreaseData();
        std::uint32_t kind = kSmooth;
        if (edge.PolyIndex2() >= 0)
            kind = classifier.IsHard(edge) ? kCrease : classifier.IsSeam(edge) ? kCrease | kSmooth : kSmooth;
        edge.SetFlags((edge.Flags() & ~kCleared) | kind);
        if ((kind & kCrease) && !creases.Append(std::int32_t(e)))
            return false;
    }
    return true;
}

bool SplitSectors(const CreaseMesh& mesh, std::span<const std::int32_t> creases, std::int32_t* sets,
                  BArray<std::int32_t>& originals, BArray<std::uint8_t>& split)
{
    return SectorSplitter(mesh, creases, sets, originals, split).Run();
}

void CornerUVs(const CreaseMesh& mesh, const std::int32_t* sets, std::span<const std::uint8_t> split,
               std::span<T_VERTEX> uvs)
{
    std::fill(uvs.begin(), uvs.end(), T_VERTEX{});
    if (!IsTextured(mesh.tex))
        return;
    for (std::size_t v = 0; v < mesh.firstLink.size(); ++v)
    {
        const std::int32_t newest = mesh.firstLink[v];
        if (newest < 0)
            continue;
        if (split[v])
        {
            SplitVertexUVs(mesh, std::int32_t(v), sets, uvs.data());
            continue;
        }
        // Every corner here uses the vertex itself, and the newest edge's last polygon has the last word.
        const VXEdge& edge = mesh.edges[std::size_t(mesh.links[std::size_t(newest)].edge)];
        const EdgeEnd end = EndAt(edge, edge.VertIndex1() == std::int32_t(v));
        const bool open = end.poly2 < 0;
        uvs[v] =
            UV(*mesh.tex, open ? TexVertex(*mesh.tex, end.poly1, end.rel1) : TexVertex(*mesh.tex, end.poly2, end.rel2));
    }
}

void RedirectStarts(const VXEdge& seam, const PolyView& polys, std::int32_t* sets, bool toPlain)
{
    const auto redirect = [&](std::int32_t poly, std::int32_t rel, std::int32_t vert)
    {
        const std::int32_t corner = polys[poly].start + rel;
        sets[corner] = toPlain ? polys.sets[corner] : vert;
        VisitRepeats(polys, poly, rel, [&](std::int32_t repeat) { sets[repeat] = sets[corner]; });
    };
    redirect(seam.PolyIndex1(), seam.RelIndexP1V1(), seam.CreaseVertexP1V1(false));
    if (seam.IsOpenEdge())
        return;
    if (seam.IsEdgeOrderedProperly())
        redirect(seam.PolyIndex2(), seam.RelIndexP2V2(), seam.CreaseVertexP2V2(false));
    else
        redirect(seam.PolyIndex2(), seam.RelIndexP2V1(), seam.CreaseVertexP2V1(false));
}

} // namespace vx
