#include "tests/support/EdgeMeshes.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace
{
std::unique_ptr<VXGeom> Wrapped(const GEOM& record)
{
    auto geom = std::make_unique<VXGeom>();
    EXPECT_EQ(geom->SetGeom(const_cast<GEOM*>(&record), true), 0);
    return geom;
}

/// Triangles, each with its centre at a point.
GeomPtr TrianglesAt(const std::vector<VERTEX>& centers)
{
    TestMesh mesh{"triangles", {}, {}};
    for (const VERTEX& at : centers)
    {
        const int first = int(mesh.verts.size());
        mesh.verts.insert(mesh.verts.end(), {at + VERTEX{1, 0, 0}, at + VERTEX{0, 1, 0}, at + VERTEX{-1, -1, 0}});
        mesh.faces.push_back({first, first + 1, first + 2});
    }
    return mesh.Record();
}

/// Triangles on a lattice, so that many are equally near, in random groups of which two share a name and the last has
/// no member; all bits of the smoothing word set, and some in slots without a name.
GeomPtr RandomGroups(unsigned seed, int count, int numGroups)
{
    std::mt19937 random(seed);
    std::vector<VERTEX> centers;
    for (int i = 0; i < count; ++i)
        centers.push_back({3 * float(random() % 5), 3 * float(random() % 5), 3 * float(random() % 3)});
    GeomPtr g = TrianglesAt(centers);
    for (const int i : {1, 2})
        GEOM_AddMaterialName(g.get(), (std::to_string(seed) + "material" + std::to_string(i)).c_str());
    for (int i = 0; i < numGroups; ++i)
        GEOM_GroupAddElem(g.get(), ("group" + std::to_string(random() % 1000)).c_str(), -1);
    if (g->groupNames.Count() > 3)
        g->groupNames[2] = g->groupNames[1];
    for (int p = 0; p < count; ++p)
    {
        g->Poly(p)->material = std::uint16_t(random() % 3);
        for (std::int64_t w = 0; w < g->GroupWords(); ++w)
            g->Poly(p)->SetGroupWord(w, std::uint32_t(random()) & std::uint32_t(random()));
    }
    return g;
}

/// The nearest source polygon, by a plain loop.
int NearestPoly(const GEOM& source, const VERTEX& center)
{
    std::vector<VERTEX> centers(std::size_t(source.numPolys));
    GEOM_CalcPolyCentroids(&source, centers.data(), nullptr);
    float best = 1e8f;
    int nearest = 0;
    for (int q = 0; q < source.numPolys; ++q)
        if (const float squared = Dot(centers[std::size_t(q)] - center, centers[std::size_t(q)] - center);
            squared < best)
        {
            best = squared;
            nearest = q;
        }
    return nearest;
}

/// Adds polygon p of a record to the groups of polygon q of another, one by one.
void AddOneByOne(const GEOM& from, int q, GEOM& to, int p)
{
    for (std::int64_t slot = 32; slot < 32 * from.GroupWords(); ++slot)
        if (slot - 32 < from.groupNames.Count() && (from.Poly(q)->GroupWord(slot / 32) >> (slot % 32) & 1))
            GEOM_GroupAddElem(&to, from.groupNames[slot - 32].CString(), p);
}

void ExpectSameGroups(const GEOM& a, const GEOM& b)
{
    ASSERT_EQ(a.groupNames.Count(), b.groupNames.Count());
    for (std::int64_t i = 0; i < a.groupNames.Count(); ++i)
        EXPECT_EQ(a.groupNames[i], b.groupNames[i]) << i;
    ASSERT_EQ(a.PolyStride(), b.PolyStride());
    for (int p = 0; p < a.numPolys; ++p)
        for (std::int64_t w = 0; w < a.GroupWords(); ++w)
            ASSERT_EQ(a.Poly(p)->GroupWord(w), b.Poly(p)->GroupWord(w)) << "polygon " << p << " word " << w;
}
} // namespace

TEST(Groups, AreCopiedAsAddingOneByOneWould)
{
    for (unsigned seed = 1; seed <= 20; ++seed)
    {
        SCOPED_TRACE(seed);
        const GeomPtr source = RandomGroups(seed, 60, int(seed % 5) * 20);
        const GeomPtr target = RandomGroups(seed + 100, 60, int(seed % 3) * 20);
        int marker = 0;
        source->SetMaterialPointer(0, &marker);
        const auto from = Wrapped(*source), to = Wrapped(*target);
        to->SetCurrentPoly(59);
        ASSERT_EQ(to->CopyGroupsAndMaterials(from.get()), 0);
        EXPECT_TRUE(to->CurPolyIsFace()); // the cursor has followed the records, which became wider
        EXPECT_EQ(to->CurPolyMaterialIndex(), int(source->Poly(59)->material));
        for (int p = 0; p < 60; ++p)
        {
            AddOneByOne(*source, p, *target, p);
            EXPECT_EQ(int(to->Polygon(p)->material), int(source->Poly(p)->material));
        }
        ExpectSameGroups(*to->Geom(), *target);
        ASSERT_EQ(to->NumGeomMaterials(), 3);
        EXPECT_EQ(to->MaterialName(1), source->materials[1].name);
        EXPECT_EQ(to->MaterialPointer(0), &marker);
    }
}

TEST(Groups, ComeFromTheNearestPolygonFirstOfEquals)
{
    for (unsigned seed = 1; seed <= 20; ++seed)
    {
        SCOPED_TRACE(seed);
        const GeomPtr source = RandomGroups(seed, 80, 40), target = RandomGroups(seed + 50, 120, 3);
        VXGeom from, to;
        from.SetGeom(source.get(), false);
        to.SetGeom(target.get(), false); // which would repair what is no number
        target->verts[0].x = source->verts[30].y = std::numeric_limits<float>::quiet_NaN();
        target->verts[3].x = 1e6f; // polygons 0 and 1 are near to nothing
        source->verts[33].x = -1e6f;
        const GeomPtr expected(GEOM_Copy(target.get(), 0));
        ASSERT_EQ(to.CreateGroupsByProximity(&from), 0);
        EXPECT_EQ(to.PolyCenters(), nullptr);
        std::vector<VERTEX> centers(120);
        GEOM_CalcPolyCentroids(target.get(), centers.data(), nullptr);
        for (int p = 0; p < 120; ++p)
            AddOneByOne(*source, NearestPoly(*source, centers[std::size_t(p)]), *expected, p);
        ExpectSameGroups(*target, *expected);
    }
}

TEST(Groups, OfTheSameMeshAreReproduced)
{
    GeomPtr record = Torus(30, 20, false).Record();
    for (int p = 0; p < record->numPolys; ++p)
        GEOM_GroupAddElem(record.get(), ("g" + std::to_string(p / 50)).c_str(), p);
    const GeomPtr bare = Torus(30, 20, false).Record();
    const auto from = Wrapped(*record), to = Wrapped(*bare);
    for (VXGeom* const target : {to.get(), from.get()}) // the second: from itself
    {
        ASSERT_EQ(target->CreateGroupsByProximity(from.get()), 0);
        ExpectSameGroups(*target->Geom(), *record);
        ASSERT_EQ(target->CopyGroupsAndMaterials(from.get()), 0);
        ExpectSameGroups(*target->Geom(), *record);
    }
}

TEST(Groups, StayAsTheyAreWhenNothingCanBeTakenOver)
{
    const GeomPtr some = RandomGroups(1, 10, 40), other = RandomGroups(2, 11, 7), none(GEOM_Alloc());
    const auto from = Wrapped(*some), to = Wrapped(*other), empty = Wrapped(*none);
    VXGeom missing;
    const auto nothingChanged = [&] { ExpectSameGroups(*to->Geom(), *other); };
    EXPECT_EQ(to->CopyGroupsAndMaterials(nullptr), -1);
    EXPECT_EQ(to->CopyGroupsAndMaterials(&missing), -1);
    EXPECT_EQ(to->CopyGroupsAndMaterials(from.get()), -1); // 10 and 11 polygons
    EXPECT_EQ(to->CreateGroupsByProximity(nullptr), -1);
    EXPECT_EQ(to->CreateGroupsByProximity(&missing), -1);
    EXPECT_EQ(missing.CreateGroupsByProximity(to.get()), -1);
    EXPECT_EQ(to->CreateGroupsByProximity(empty.get()), 0);
    EXPECT_EQ(empty->CreateGroupsByProximity(to.get()), 0);
    nothingChanged();
    const auto same = Wrapped(*RandomGroups(3, 11, 60));
    for (const bool copy : {true, false})
        for (int n = 1, result = -1; result != 0; ++n)
        {
            MEM_FailAfter(n);
            result = copy ? to->CopyGroupsAndMaterials(same.get()) : to->CreateGroupsByProximity(same.get());
            MEM_FailAfter(0);
            if (result == 0)
                to->SetGeom(other.get(), true);
            nothingChanged();
            EXPECT_EQ(to->PolyCenters(), nullptr);
        }
}

TEST(MaterialPointers, AreCopiedWhereBothHaveASlot)
{
    int hosts[3] = {};
    const auto withMaterials = [&](int count)
    {
        const GeomPtr g = Cube().Record();
        for (int i = 1; i < count; ++i)
            GEOM_AddMaterialName(g.get(), std::string(std::size_t(i), 'm').c_str());
        return Wrapped(*g);
    };
    const auto two = withMaterials(2), three = withMaterials(3);
    for (int i = 0; i < 3; ++i)
        three->SetMaterialPointer(i, &hosts[i]);
    VXGeom::CopyMaterialPointersSynced(three.get(), two.get());
    EXPECT_EQ(two->MaterialPointer(0), &hosts[0]);
    EXPECT_EQ(two->MaterialPointer(1), &hosts[1]);
    two->SetMaterialPointer(0, nullptr);
    VXGeom::CopyMaterialPointersSynced(two.get(), three.get());
    EXPECT_EQ(three->MaterialPointer(0), nullptr);
    EXPECT_EQ(three->MaterialPointer(2), &hosts[2]) << "slots that the first has not are left alone";
    VXGeom::CopyMaterialPointersSynced(nullptr, two.get());
    VXGeom::CopyMaterialPointersSynced(two.get(), nullptr);
    EXPECT_EQ(two->MaterialPointer(1), &hosts[1]);
}

TEST(Grouping, OfPolygonsFollowsTheirDifferences)
{
    using Corner = VXGeom::PolyLineVert;
    // Two unit quads at a right angle and a third in the plane of the first.
    const TestMesh mesh{"angle",
                        {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {1, 0, 1}, {1, 1, 1}, {2, 0, 0}, {2, 1, 0}},
                        {{0, 1, 2, 3}, {1, 4, 5, 2}, {1, 6, 7, 2}}};
    const GeomPtr g = mesh.Record();
    ASSERT_EQ(g->SetSize(3, 8, 12, 0, 12, 5), 0);
    const T_VERTEX uvs[] = {{0, 0}, {1, 0}, {1, 1}, {1, 5e-7f}, {2, 1}};
    std::copy(std::begin(uvs), std::end(uvs), g->tex->verts);
    g->normals = MEM_CallocArray<VERTEX>(3);
    g->normals[1] = {5e-7f, 0, 0};
    g->normals[2] = {0, 0, 1};
    g->numNormals = 3;
    const auto geom = Wrapped(*g);
    struct Row
    {
        const char* name;
        Corner a, b;
        float angle;
        bool obey;
        bool result, canShare, uvSplit;
    };
    const Row rows[] = {
        {"alike", {0, 1, 1}, {2, 1, 1}, 80, true, true, true, false},
        {"smoothing keys differ", {0, 1, 1}, {2, 1, 2}, 80, false, false, false, false},
        {"at the angle", {0, 1}, {1, 1}, 90, false, false, true, false},
        {"below the angle", {0, 1}, {1, 1}, 90.1f, false, true, true, false},
        {"angle 0 splits what lies in one plane", {0, 1}, {2, 1}, 0, false, false, true, false},
        {"angle and smoothing keys", {0, 1, 1}, {1, 1, 2}, 80, false, false, false, false},
        {"normals nearly equal", {0, 1, 0, {0, 2}}, {2, 1, 0, {1, 2}}, 80, true, true, true, false},
        {"second normals differ", {0, 1, 0, {0, 0}}, {2, 1, 0, {0, 2}}, 80, true, false, true, false},
        {"normals that nobody obeys", {0, 1, 0, {0, 0}}, {2, 1, 0, {2, 2}}, 80, false, true, true, false},
        {"normals that are not there", {0, 1, 0, {0, 9}}, {2, 1, 0, {-1, 0}}, 80, true, true, true, false},
        {"nearly equal UVs", {0, 1, 0, {}, {1, 2}}, {2, 1, 0, {}, {3, 2}}, 80, false, true, true, false},
        {"first UVs differ", {0, 1, 0, {}, {0, 2}}, {2, 1, 0, {}, {1, 2}}, 80, false, false, true, true},
        {"second UVs differ", {0, 1, 0, {}, {1, 2}}, {2, 1, 0, {}, {3, 4}}, 80, false, false, true, true},
        {"a missing UV is (0, 0)", {0, 1, 0, {}, {0, 2}}, {2, 1, 0, {}, {-1, 2}}, 80, false, true, true, false},
        {"and differs from others", {0, 1, 0, {}, {1, 2}}, {2, 1, 0, {}, {-1, 2}}, 80, false, false, true, true},
        {"angle and UVs", {0, 1, 0, {}, {1, 2}}, {1, 1, 0, {}, {0, 2}}, 80, false, false, true, true},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        VXGeom::SetObeyNormals(row.obey);
        geom->SetCreaseAngle(row.angle);
        for (const bool swapped : {false, true})
        {
            bool split = true, canShare = false, uvSplit = true;
            const Corner &a = swapped ? row.b : row.a, &b = swapped ? row.a : row.b;
            EXPECT_EQ(geom->CanGroupPolygons(a, b, split, canShare, uvSplit), row.result);
            EXPECT_EQ(split, !row.result);
            EXPECT_EQ(canShare, row.canShare);
            EXPECT_EQ(uvSplit, row.uvSplit);
        }
        VXGeom::SetObeyNormals(false);
    }
    geom->SetUseCreaseAngle(false);
    bool split, canShare, uvSplit;
    EXPECT_TRUE(geom->CanGroupPolygons({0, 1}, {1, 1}, split, canShare, uvSplit));
}
