#include "mesh/kernel/Creases.h"

#include "mesh/kernel/Corners.h"

#include <bit>
#include <cmath>
#include <limits>
#include <utility>

namespace vx
{
namespace
{

// The clamp is asymmetric on purpose: any angle up to 0.81 degrees splits coplanar polygons too.
constexpr float kLeast = -0.99999f, kMost = 0.9999f;

double Radians(float degrees) { return double(degrees) * 0.017453292; }

// --- Classification

// The largest dot product of two unit normals that makes a crease, so that no arc cosine is taken per edge. Found with
// the arc cosine itself: the answers are those of acos(d) >= angle, to the last bit.
class AngleTest
{
public:
    explicit AngleTest(float degrees) : mRadians(Radians(degrees))
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
    bool Reached(float dot) const { return std::acos(double(dot)) >= mRadians; }

    double mRadians;
    float mLargest;
};

T_VERTEX UV(const GEOM_Texture& tex, std::int32_t texVertex)
{
    return texVertex >= 0 ? tex.verts[texVertex] : T_VERTEX{};
}

bool TexDiffers(const GEOM_Texture& tex, std::int32_t p1, std::int32_t rel1, std::int32_t p2, std::int32_t rel2)
{
    const std::int32_t t1 = TexVertex(tex, p1, rel1), t2 = TexVertex(tex, p2, rel2);
    if (t1 == t2)
        return false;
    return CornersDiffer(UV(tex, t1), UV(tex, t2));
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
        return n1 != n2 && CornersDiffer(mRules.cornerNormals[n1], mRules.cornerNormals[n2]);
    }

    const CreaseMesh& mMesh;
    const CreaseRules& mRules;
    AngleTest mAngle;
    const GEOM_Texture* mTex;
    bool mSmoothingDiffers = false;
};

// --- Splitting

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
            if (!WriteCreaseData(mMesh, v, mSets))
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
        VisitEdges(mMesh, v,
                   [&](const VXEdge& edge, bool atV1)
                   {
                       const EdgeEnd end = EndAt(edge, atV1);
                       reset(end.poly1, end.rel1);
                       if (end.poly2 >= 0)
                           reset(end.poly2, end.rel2);
                   });
        JoinAcrossSmoothEdges(mMesh, v, mSectors);
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
        VisitEdges(mMesh, v,
                   [&](const VXEdge& edge, bool atV1)
                   {
                       const EdgeEnd end = EndAt(edge, atV1);
                       redirect(end.poly1, end.rel1);
                       if (end.poly2 >= 0)
                           redirect(end.poly2, end.rel2);
                   });
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

bool ReachesAngle(float dot, float degrees)
{
    return std::acos(double(dot < kLeast ? kLeast : dot > kMost ? kMost : dot)) >= Radians(degrees);
}

bool ClassifyEdges(const CreaseMesh& mesh, const CreaseRules& rules, BArray<std::int32_t>& creases)
{
    const EdgeClassifier classifier(mesh, rules);
    creases.Empty();
    for (std::size_t e = 0; e < mesh.edges.size(); ++e)
    {
        VXEdge& edge = mesh.edges[e];
        edge.FreeCreaseData();
        const bool hard = edge.PolyIndex2() >= 0 && classifier.IsHard(edge);
        const bool crease = hard || (edge.PolyIndex2() >= 0 && classifier.IsSeam(edge));
        SetKind(edge, crease, !hard);
        if (crease && !creases.Append(std::int32_t(e)))
            return false;
    }
    return true;
}

bool SplitSectors(const CreaseMesh& mesh, std::span<const std::int32_t> creases, std::int32_t* sets,
                  BArray<std::int32_t>& originals, BArray<std::uint8_t>& split)
{
    return SectorSplitter(mesh, creases, sets, originals, split).Run();
}

bool WriteCreaseData(const CreaseMesh& mesh, std::int32_t v, const std::int32_t* sets)
{
    const auto used = [&](std::int32_t poly, std::int32_t rel)
    { return poly >= 0 ? sets[mesh.Corner(poly, rel)] : -1; };
    bool done = true;
    VisitEdges(mesh, v,
               [&](VXEdge& edge, bool atV1)
               {
                   const EdgeEnd end = EndAt(edge, atV1), other = EndAt(edge, !atV1);
                   const std::int32_t here1 = used(end.poly1, end.rel1), here2 = used(end.poly2, end.rel2);
                   if (here1 != v || edge.IsCreaseEdge())
                       edge.SetFlag(atV1 ? EdgeFlag::P1V1Classified : EdgeFlag::P1V2Classified, true);
                   if (here2 >= 0 && (here2 != v || edge.IsCreaseEdge()))
                       edge.SetFlag(atV1 ? EdgeFlag::P2V1Classified : EdgeFlag::P2V2Classified, true);
                   if (edge.HasCreaseData() || (here1 == v && (here2 == v || here2 < 0)))
                       return;
                   const std::int32_t there1 = used(other.poly1, other.rel1), there2 = used(other.poly2, other.rel2);
                   done = done && (atV1 ? edge.CreateCreaseData(here1, there1, here2, there2)
                                        : edge.CreateCreaseData(there1, here1, there2, here2));
               });
    return done;
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
