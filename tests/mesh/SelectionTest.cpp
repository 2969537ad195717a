#include "base/MEM.h"
#include "mesh/VXSelectionSet.h"
#include "tests/support/EdgeMeshes.h"
#include "tests/support/Models.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <numeric>
#include <set>
#include <tuple>

namespace
{
constexpr const char* kGroup = "picked";
using Elements = std::set<int>;

Elements GroupOf(const VXGeom& geom, const char* name = kGroup)
{
    std::int32_t word = 0;
    std::uint32_t mask = 0;
    Elements members;
    if (GEOM_GetGroupBit(geom.Geom(), name, &word, &mask))
        for (int p = 0; p < geom.NumPolys(); ++p)
            if (geom.Polygon(p)->GroupWord(word) & mask)
                members.insert(p);
    return members;
}

BBitArray BitsOf(const Elements& elements)
{
    BBitArray bits;
    for (const int i : elements)
        bits.Set(i);
    return bits;
}

Elements ElementsOf(const BBitArray& bits)
{
    Elements elements;
    for (std::int64_t i = bits.NextSet(0); i >= 0; i = bits.NextSet(i + 1))
        elements.insert(int(i));
    return elements;
}

/// Makes the group hold just these polygons.
void SetGroup(VXGeom& geom, const Elements& polys)
{
    GEOM_GroupAddElem(geom.Geom(), kGroup, -1);
    BBitArray all(geom.NumPolys());
    all.SetAll(true);
    geom.PolyGroupAddOrRemoveWithBitArray(kGroup, true, all);
    geom.PolyGroupAddOrRemoveWithBitArray(kGroup, false, BitsOf(polys));
}

Elements RandomElements(std::mt19937& random, int count, unsigned oneIn)
{
    Elements picked;
    for (int i = 0; i < count; ++i)
        if (random() % oneIn == 0)
            picked.insert(i);
    return picked;
}

/// The rules as one would write them down, element by element, with no thought of time.
struct Plain
{
    const VXGeom& geom;
    const Elements& in;

    bool IsIn(int poly) const { return in.contains(poly); }
    std::vector<int> VertsOf(int p) const
    {
        const ELEMENT& e = *geom.Polygon(p);
        return {geom.Geom()->sets + e.start, geom.Geom()->sets + e.start + e.length};
    }
    std::vector<const VXEdge*> EdgesAt(int v) const
    {
        std::vector<const VXEdge*> edges;
        const VXEdgeList& list = geom.EdgeList();
        for (int l = list.GetFirstVertexLink(v); l >= 0; l = list.GetNextVertexLink(l))
            edges.push_back(&list.GetEdge(list.GetEdgefromVertexLink(l)));
        return edges;
    }
    static int Other(const VXEdge& e, int v) { return e.VertIndex1() == v ? e.VertIndex2() : e.VertIndex1(); }
    std::set<const VXEdge*> EdgesAround(int p) const
    {
        std::set<const VXEdge*> edges;
        for (const int v : VertsOf(p))
            for (const VXEdge* e : EdgesAt(v))
                edges.insert(e);
        return edges;
    }
    bool Inside(const VXEdge& e) const { return IsIn(e.PolyIndex1()) && IsIn(e.PolyIndex2()); }

    Elements GrowPolys() const
    {
        Elements out = in;
        for (const int p : in)
            for (const VXEdge* e : EdgesAround(p))
                out.insert({e->PolyIndex1(), e->PolyIndex2()});
        out.erase(-1);
        return out;
    }
    Elements ShrinkPolys() const
    {
        Elements out = in;
        for (const int p : in)
            for (const VXEdge* e : EdgesAround(p))
                if (e->PolyIndex2() >= 0 && !Inside(*e))
                    out.erase(p);
        return out;
    }
    Elements GrowPolyLoops() const
    {
        Elements out = in, members, ends;
        for (const int p : in)
            for (const VXEdge* e : EdgesAround(p))
                if (Inside(*e))
                {
                    members.insert({e->PolyIndex1(), e->PolyIndex2()});
                    ends.insert({e->VertIndex1(), e->VertIndex2()});
                }
        for (const int s : members)
            for (const VXEdge* e : EdgesAround(s))
            {
                if (Inside(*e) || (e->PolyIndex1() != s && e->PolyIndex2() != s))
                    continue;
                const int n = e->PolyIndex1() == s ? e->PolyIndex2() : e->PolyIndex1();
                bool apart = n >= 0;
                for (const int v : n >= 0 ? VertsOf(n) : std::vector<int>())
                    apart = apart && !ends.contains(v);
                if (apart)
                    out.insert(n);
            }
        return out;
    }
    Elements ShrinkPolyLoops() const
    {
        Elements out = in;
        for (const int p : in)
        {
            const auto edges = EdgesAround(p);
            if (std::count_if(edges.begin(), edges.end(), [&](const VXEdge* e) { return Inside(*e); }) < 2)
                out.erase(p);
        }
        return out;
    }

    Elements GrowVerts() const
    {
        Elements out = in;
        for (const int v : in)
            for (const VXEdge* e : EdgesAt(v))
                out.insert(Other(*e, v));
        return out;
    }
    Elements ShrinkVerts() const
    {
        Elements out = in;
        for (const int v : in)
            for (const VXEdge* e : EdgesAt(v))
                if (!in.contains(Other(*e, v)))
                    out.erase(v);
        return out;
    }
    Elements GrowVertLoops() const
    {
        Elements out = in;
        const auto hasOne = [&](int p)
        {
            const std::vector<int> verts = p >= 0 ? VertsOf(p) : std::vector<int>();
            return std::count_if(verts.begin(), verts.end(), [&](int v) { return in.contains(v); }) == 1;
        };
        for (const int v : in)
            for (const VXEdge* e : EdgesAt(v))
                if (!in.contains(Other(*e, v)) && hasOne(e->PolyIndex1()) && hasOne(e->PolyIndex2()))
                {
                    out.insert(Other(*e, v));
                    break;
                }
        return out;
    }
    Elements ShrinkVertLoops() const
    {
        Elements out = in;
        for (const int v : in)
        {
            Elements neighbours;
            for (const VXEdge* e : EdgesAt(v))
                if (in.contains(Other(*e, v)))
                    neighbours.insert(Other(*e, v));
            if (neighbours.size() == 1)
                out.erase(v);
        }
        return out;
    }
};

struct PolyStep
{
    const char* name;
    void (VXGeom::*step)(const char*);
    Elements (Plain::*rule)() const;
};
constexpr PolyStep kPolySteps[] = {
    {"grow", &VXGeom::PolyGroupGrowSelection, &Plain::GrowPolys},
    {"shrink", &VXGeom::PolyGroupShrinkSelection, &Plain::ShrinkPolys},
    {"grow loop", &VXGeom::PolyGroupGrowSelectionEdgeLoop, &Plain::GrowPolyLoops},
    {"shrink loop", &VXGeom::PolyGroupShrinkSelectionEdgeLoop, &Plain::ShrinkPolyLoops},
};

struct VertStep
{
    const char* name;
    void (VXGeom::*step)(BBitArray&) const;
    Elements (Plain::*rule)() const;
};
constexpr VertStep kVertSteps[] = {
    {"grow", &VXGeom::VertexGroupGrowSelection, &Plain::GrowVerts},
    {"shrink", &VXGeom::VertexGroupShrinkSelection, &Plain::ShrinkVerts},
    {"grow loop", &VXGeom::VertexGroupGrowSelectionEdgeLoop, &Plain::GrowVertLoops},
    {"shrink loop", &VXGeom::VertexGroupShrinkSelectionEdgeLoop, &Plain::ShrinkVertLoops},
};

void ExpectTheRules(VXGeom& geom, const Elements& polys, const Elements& verts)
{
    for (const PolyStep& s : kPolySteps)
    {
        SetGroup(geom, polys);
        (geom.*s.step)(kGroup);
        EXPECT_EQ(GroupOf(geom), (Plain{geom, polys}.*s.rule)()) << "polygons, " << s.name;
    }
    for (const VertStep& s : kVertSteps)
    {
        BBitArray bits = BitsOf(verts);
        (geom.*s.step)(bits);
        EXPECT_EQ(ElementsOf(bits), (Plain{geom, verts}.*s.rule)()) << "vertices, " << s.name;
    }
}

// The quad of a grid nx quads wide at a place.
int QuadAt(int nx, int x, int y) { return y * nx + x; }
} // namespace

TEST(Selection, StepsFollowTheRulesOnAnyMesh)
{
    std::mt19937 random(5);
    for (int round = 0; round < 150; ++round)
    {
        SCOPED_TRACE(round);
        const int numVerts = 2 + int(random() % 30);
        VXGeom geom(RecordOf(numVerts, RandomPolys(random, numVerts, 1 + int(random() % 75))).get());
        const unsigned oneIn = round % 3 == 0 ? 40 : 1 + unsigned(random() % 4); // a few, and large parts of the mesh
        ExpectTheRules(geom, RandomElements(random, geom.NumPolys(), oneIn),
                       RandomElements(random, geom.NumVerts(false), oneIn));
    }
    for (const TestMesh& mesh : {Torus(12, 9), MoebiusStrip(8), TwoCubesSharingAnEdge(), Fan(20), OpenBox()})
        for (const unsigned oneIn : {2u, 5u})
        {
            SCOPED_TRACE(mesh.name);
            VXGeom geom(mesh.Record().get());
            ExpectTheRules(geom, RandomElements(random, geom.NumPolys(), oneIn),
                           RandomElements(random, geom.NumVerts(false), oneIn));
        }
}

TEST(Selection, GrowsAndShrinksAsAPersonExpects)
{
    constexpr int n = 7;
    VXGeom geom(Grid(n, n).Record().get());
    SetGroup(geom, {QuadAt(n, 3, 3)});
    geom.PolyGroupGrowSelection(kGroup);
    EXPECT_EQ(GroupOf(geom).size(), 9u) << "corner neighbours count";
    geom.PolyGroupShrinkSelection(kGroup);
    EXPECT_EQ(GroupOf(geom), (Elements{QuadAt(n, 3, 3)}));
    geom.PolyGroupGrowSelectionEdgeLoop(kGroup);
    EXPECT_EQ(GroupOf(geom), (Elements{QuadAt(n, 3, 3)})) << "a lone quad is no strip";
    geom.PolyGroupShrinkSelectionEdgeLoop(kGroup);
    EXPECT_EQ(GroupOf(geom), Elements());

    SetGroup(geom, {QuadAt(n, 2, 3), QuadAt(n, 3, 3)});
    geom.PolyGroupGrowSelectionEdgeLoop(kGroup);
    EXPECT_EQ(GroupOf(geom), (Elements{QuadAt(n, 1, 3), QuadAt(n, 2, 3), QuadAt(n, 3, 3), QuadAt(n, 4, 3)}))
        << "at the ends alone";
    geom.PolyGroupShrinkSelectionEdgeLoop(kGroup);
    EXPECT_EQ(GroupOf(geom), (Elements{QuadAt(n, 2, 3), QuadAt(n, 3, 3)}));

    // The mesh's border takes nothing away from a selection that reaches it.
    SetGroup(geom, {QuadAt(n, 0, 0), QuadAt(n, 1, 0), QuadAt(n, 0, 1), QuadAt(n, 1, 1)});
    geom.PolyGroupShrinkSelection(kGroup);
    EXPECT_EQ(GroupOf(geom), (Elements{QuadAt(n, 0, 0)}));
}

// The polygons that n steps from vertex to vertex lead to, by a search of its own.
TEST(Selection, GrowingNTimesReachesVertexDistanceN)
{
    std::mt19937 random(3);
    for (const TestMesh& mesh : {Shuffled(Torus(20, 15), 7), Shuffled(Grid(12, 9), 8)})
    {
        VXGeom geom(mesh.Record().get());
        std::map<int, std::vector<int>> polysAt;
        for (int p = 0; p < geom.NumPolys(); ++p)
            for (const int v : mesh.faces[std::size_t(p)])
                polysAt[v].push_back(p);
        Elements reached = RandomElements(random, geom.NumPolys(), 60);
        SetGroup(geom, reached);
        for (int n = 1; n <= 4; ++n)
        {
            const Elements before = reached;
            for (const int p : before)
                for (const int v : mesh.faces[std::size_t(p)])
                    reached.insert(polysAt[v].begin(), polysAt[v].end());
            geom.PolyGroupGrowSelection(kGroup);
            EXPECT_EQ(GroupOf(geom), reached) << n;
            VXGeom shrunk(geom.Geom());
            shrunk.PolyGroupShrinkSelection(kGroup);
            const Elements kept = GroupOf(shrunk);
            EXPECT_TRUE(std::includes(kept.begin(), kept.end(), before.begin(), before.end())) << n;
            EXPECT_TRUE(std::includes(reached.begin(), reached.end(), kept.begin(), kept.end())) << n;
        }
    }
}

TEST(Mirroring, ThereAndBackIsTheIdentityOnASymmetricMesh)
{
    std::mt19937 random(9);
    const TestMesh mesh = Moved(Grid(8, 6), {-4, -3, 0});
    for (int direction = 0; direction < 4; ++direction)
    {
        SCOPED_TRACE(direction);
        VXGeom geom(mesh.Record().get());
        ASSERT_EQ(geom.SetGeom(mesh.Record().get(), true), 0);
        const int axis = direction / 2;
        const auto imageOf = [&](int p)
        { return axis == 0 ? QuadAt(8, 7 - p % 8, p / 8) : QuadAt(8, p % 8, 5 - p / 8); };
        const auto isSource = [&](int p)
        {
            const bool above = axis == 0 ? p % 8 >= 4 : p / 8 >= 3;
            return above == (direction % 2 == 0);
        };
        const Elements start = RandomElements(random, 48, 3);
        SetGroup(geom, start);
        geom.PolyGroupMirrorSelection(kGroup, E_MirrorDirection(direction), kMirrorAdd | kMirrorRemove);
        const Elements mirrored = GroupOf(geom);
        for (int p = 0; p < 48; ++p)
            EXPECT_EQ(mirrored.contains(p), start.contains(isSource(p) ? p : imageOf(p))) << p;
        geom.PolyGroupMirrorSelection(kGroup, E_MirrorDirection(direction ^ 1), kMirrorAdd | kMirrorRemove);
        EXPECT_EQ(GroupOf(geom), mirrored) << "it is symmetric now";

        SetGroup(geom, start);
        geom.PolyGroupMirrorSelection(kGroup, E_MirrorDirection(direction), kMirrorAdd);
        for (int p = 0; p < 48; ++p)
            EXPECT_EQ(GroupOf(geom).contains(p), start.contains(p) || (!isSource(p) && start.contains(imageOf(p))))
                << p;
        for (const int nowhere : {-1, 6, 1000})
        {
            SetGroup(geom, start);
            geom.PolyGroupMirrorSelection(kGroup, E_MirrorDirection(nowhere), kMirrorAdd | kMirrorRemove);
            EXPECT_EQ(GroupOf(geom), start);
        }
    }
}

namespace
{
bool Contains(const Elements& all, const Elements& some)
{
    return std::includes(all.begin(), all.end(), some.begin(), some.end());
}

Elements AfterStep(VXGeom& geom, const Elements& polys, void (VXGeom::*step)(const char*))
{
    SetGroup(geom, polys);
    (geom.*step)(kGroup);
    return GroupOf(geom);
}

// The same polygons in another order. @param places where polygon i stood before
TestMesh Renumbered(const GEOM& record, std::mt19937& random, std::vector<int>& places)
{
    TestMesh mesh{"renumbered", {record.verts, record.verts + record.numVerts}, {}};
    places.resize(std::size_t(record.numPolys));
    std::iota(places.begin(), places.end(), 0);
    std::shuffle(places.begin(), places.end(), random);
    for (const int p : places)
    {
        const std::int32_t* const corners = record.sets + record.Poly(p)->start;
        mesh.faces.emplace_back(corners, corners + record.Poly(p)->length);
    }
    return mesh;
}

// Whether each polygon's centre has one of its own in its mirror image across x = 0.
bool IsSymmetric(const VXGeom& geom)
{
    std::vector<VERTEX> centres(std::size_t(geom.NumPolys()));
    geom.ComputePolyCentroids(centres.data(), nullptr);
    const auto places = [&](float side)
    {
        std::multiset<std::tuple<long, long, long>> set;
        for (const VERTEX& c : centres)
            set.emplace(std::lround(side * c.x * 4096), std::lround(c.y * 4096), std::lround(c.z * 4096));
        return set;
    };
    return places(1) == places(-1);
}
} // namespace

TEST(Selection, HoldsItsPropertiesOnRealModels)
{
    const std::vector<std::filesystem::path> models = FurtherModels();
    if (models.empty())
        GTEST_SKIP() << "VELMAR_MODELS names no folder of models";
    std::mt19937 random(4);
    for (const std::filesystem::path& model : models)
    {
        SCOPED_TRACE(model);
        VXGeom geom;
        geom.SetGenerateCreases(false);
        ASSERT_EQ(geom.ReadWavefront(model.string().c_str()), 0);
        const Elements some = RandomElements(random, geom.NumPolys(), 40);
        const Elements grown = AfterStep(geom, some, &VXGeom::PolyGroupGrowSelection);
        EXPECT_TRUE(Contains(grown, some));
        EXPECT_TRUE(Contains(grown, AfterStep(geom, grown, &VXGeom::PolyGroupShrinkSelection)));
        EXPECT_TRUE(Contains(AfterStep(geom, grown, &VXGeom::PolyGroupShrinkSelection), some));

        std::vector<int> places;
        VXGeom other;
        other.SetGeom(Renumbered(*geom.Geom(), random, places).Record().get(), true);
        Elements there;
        for (std::size_t p = 0; p < places.size(); ++p)
            if (grown.contains(places[p]))
                there.insert(int(p));
        for (const PolyStep& s : kPolySteps)
        {
            Elements back;
            for (const int p : AfterStep(other, there, s.step))
                back.insert(places[std::size_t(p)]);
            EXPECT_EQ(back, AfterStep(geom, grown, s.step)) << s.name << " depends on the order of polygons";
        }

        SetGroup(geom, grown);
        geom.PolyGroupMirrorSelection(kGroup, kMirrorFromPlusX, kMirrorAdd | kMirrorRemove);
        const Elements mirrored = GroupOf(geom);
        geom.PolyGroupMirrorSelection(kGroup, kMirrorFromMinusX, kMirrorAdd | kMirrorRemove);
        if (IsSymmetric(geom))
        {
            EXPECT_EQ(GroupOf(geom), mirrored);
        }
    }
}

TEST(Mirroring, TakesTheNearestAndTreatsThePlaneAsTarget)
{
    TestMesh points{"points", {{1, 0, 0}, {1, 1, 0}, {-1, 0.25f, 0}, {0, 0.9f, 0}, {-5, 0, 0}}, {{0, 1, 2}}};
    VXGeom geom(points.Record().get());
    geom.Vertex(4)->y = NAN; // has no nearest
    BBitArray verts = BitsOf({1});
    geom.VertexGroupMirrorSelection(verts, kMirrorFromPlusX, kMirrorAdd);
    EXPECT_EQ(ElementsOf(verts), (Elements{1, 3})) << "vertex 3 lies on the plane, nearest to vertex 1";
    verts = BitsOf({0, 3});
    geom.VertexGroupMirrorSelection(verts, kMirrorFromPlusX, kMirrorAdd | kMirrorRemove);
    EXPECT_EQ(ElementsOf(verts), (Elements{0, 2}));
    geom.VertexGroupMirrorSelection(verts, kMirrorFromPlusZ, kMirrorAdd | kMirrorRemove);
    EXPECT_EQ(ElementsOf(verts), (Elements{0, 2})) << "nothing is above z = 0";
}

TEST(Selection, OddInputsChangeNothing)
{
    VXGeom geom(Cube().Record().get());
    for (const PolyStep& s : kPolySteps)
        (geom.*s.step)("no such group");
    geom.PolyGroupMirrorSelection("no such group", kMirrorFromPlusX, 3);
    EXPECT_EQ(geom.Geom()->numGroups, 0);
    SetGroup(geom, {});
    for (const PolyStep& s : kPolySteps)
        (geom.*s.step)(kGroup);
    EXPECT_EQ(GroupOf(geom), Elements());

    BBitArray odd = BitsOf({2, 500}); // shorter and longer than the mesh
    geom.PolyGroupAddOrRemoveWithBitArray(kGroup, false, odd);
    EXPECT_EQ(GroupOf(geom), (Elements{2}));
    geom.VertexGroupGrowSelection(odd);
    EXPECT_EQ(ElementsOf(odd).size(), 5u) << "vertex 2, its three neighbours, and what is not of this mesh";
    VXGeom none;
    none.VertexGroupGrowSelection(odd);
    none.VertexGroupMirrorSelection(odd, kMirrorFromPlusX, 3);
    EXPECT_EQ(ElementsOf(odd).size(), 5u);

    for (const int numVerts : {0, 8}) // no edges: nothing to walk along
    {
        geom.EdgeList().Begin(numVerts);
        geom.EdgeList().End();
        geom.PolyGroupGrowSelection(kGroup);
        geom.PolyGroupShrinkSelection(kGroup);
        EXPECT_EQ(GroupOf(geom), (Elements{2}));
    }
}

TEST(Selection, WithoutMemoryIsAsItWasOrAStepFurther)
{
    VXGeom geom(Grid(8, 8).Record().get());
    const Elements start{QuadAt(8, 3, 3), QuadAt(8, 4, 3), 0};
    for (const PolyStep& s : kPolySteps)
        for (int n = 1; n < 8; ++n)
        {
            SetGroup(geom, start);
            MEM_FailAfter(n);
            (geom.*s.step)(kGroup);
            MEM_FailAfter(0);
            const Elements after = GroupOf(geom);
            EXPECT_TRUE(after == start || after == (Plain{geom, start}.*s.rule)()) << s.name << n;
        }
    for (const VertStep& s : kVertSteps)
        for (int n = 1; n < 8; ++n)
        {
            BBitArray bits = BitsOf(start); // shorter than the mesh
            MEM_FailAfter(n);
            (geom.*s.step)(bits);
            MEM_FailAfter(0);
            EXPECT_TRUE(ElementsOf(bits) == start || ElementsOf(bits) == (Plain{geom, start}.*s.rule)()) << s.name << n;
        }
}

TEST(Selection, VerticesOfAGroupLeaveHiddenPolygonsOut)
{
    VXGeom geom(Grid(3, 1).Record().get());
    SetGroup(geom, {0, 2});
    geom.Polygon(2)->flags |= kElementHidden;
    BBitArray verts = BitsOf({7, 900});
    ASSERT_TRUE(geom.SetVertGroupFromPolyGroup(verts, kGroup));
    const ELEMENT& quad = *geom.Polygon(0);
    EXPECT_EQ(ElementsOf(verts), Elements(geom.Geom()->sets + quad.start, geom.Geom()->sets + quad.start + 4));
    EXPECT_EQ(verts.Count(), 8);
    EXPECT_FALSE(geom.SetVertGroupFromPolyGroup(verts, "no such group"));
    EXPECT_TRUE(ElementsOf(verts).empty());
    VXGeom none;
    EXPECT_FALSE(none.SetVertGroupFromPolyGroup(verts, kGroup));
    EXPECT_EQ(verts.Count(), 0);
}

TEST(SelectionSet, HoldsItsThreeKindsApart)
{
    VXSelectionSet set;
    EXPECT_EQ(set.Name(), "Nameless");
    set.IncludeVert(3);
    set.IncludePoly(4);
    set.IncludeEdge(5);
    set.Name() = "three";
    const VXSelectionSet copy = set;
    set.RemoveVert(3);
    set.RemovePoly(4);
    set.RemoveEdge(5);
    for (int i = 0; i < 8; ++i)
    {
        EXPECT_EQ(copy.ContainsVert(i), i == 3);
        EXPECT_EQ(copy.ContainsPoly(i), i == 4);
        EXPECT_EQ(copy.ContainsEdge(i), i == 5);
        EXPECT_FALSE(set.ContainsVert(i) || set.ContainsPoly(i) || set.ContainsEdge(i));
    }
    EXPECT_EQ(copy.Name(), "three");
}
