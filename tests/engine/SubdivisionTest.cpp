#include "base/MEM.h"
#include "engine/VXObject.h"
#include "engine/VXObjectDelegate.h"
#include "engine/VXScene.h"
#include "engine/VXSceneDelegate.h"
#include "engine/VXSwitches.h"
#include "mesh/VXGeom.h"
#include "tests/support/Meshes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

namespace
{
std::unique_ptr<VXGeom> GeomOf(const TestMesh& mesh)
{
    const GeomPtr record = mesh.Record();
    return std::make_unique<VXGeom>(record.get());
}

struct Munger : VXObjectDelegate
{
    std::vector<int> levels;
    int MungeSubdividedVerts(VXObject*, int level, VERTEX* verts, int count) override
    {
        levels.push_back(level);
        for (int i = 0; i < count; ++i)
            verts[i].z += 100;
        return 0;
    }
};

struct HostDelegate : VXSceneDelegate
{
    bool creases = false;
    int failures = 0, rebuilds = 0;
    bool AllowCreaseVertsForSubdiv() override { return creases; }
    void NotifyForFailedSubdivision(VXObject*) override { ++failures; }
    void SubdivisionWillRebuild(bool, int, E_SubdivScheme) override { ++rebuilds; }
};
} // namespace

TEST(RebuildSubDiv, NeedsAControlMeshAndBuildsNothingAtLevelZero)
{
    VXObject object;
    EXPECT_EQ(object.RebuildSubDiv(), -2);
    const auto cube = GeomOf(Cube());
    object.SetGeom(cube.get(), false);
    for (const int level : {0, -1})
    {
        object.SetCurSubDivLevel(level);
        object.ClearSubdivStructures();
        EXPECT_EQ(object.RebuildSubDiv(), 0) << level;
        EXPECT_EQ(object.SubdivGeom(0), nullptr) << level;
    }
}

TEST(RebuildSubDiv, MakesEveryLevelUpToTheCurrentOne)
{
    VXScene scene;
    const auto cube = GeomOf(Cube());
    VXObject object;
    object.SetGeom(cube.get(), false);
    object.SetCurSubDivLevel(2);
    object.RebuildSubDiv();
    ASSERT_EQ(object.NumSubdivGeoms(), 3);
    for (int level = 0; level <= 2; ++level)
    {
        ASSERT_NE(object.SubdivGeom(level), nullptr) << level;
        EXPECT_NE(object.SubdivGeom(level), cube.get());
        EXPECT_FALSE(object.SubdivGeom(level)->UseCreaseAngle());
        EXPECT_FALSE(object.SubdivGeom(level)->GenerateCreases());
    }
    EXPECT_EQ(object.SubdivGeom(0)->RefPoints().Count(), 8);
    EXPECT_TRUE(cube->GenerateCreases()); // the control mesh is as it was
}

TEST(RebuildSubDiv, LevelZeroFollowsTheControlMesh)
{
    VXScene scene;
    const auto cube = GeomOf(Cube());
    VXObject object;
    object.SetGeom(cube.get(), false);
    object.SetCurSubDivLevel(1);
    object.RebuildSubDiv();
    const VXGeom* const zero = object.SubdivGeom(0);
    for (int i = 0; i < 8; ++i)
        cube->Verts()[i] *= 3;
    object.RebuildSubDiv();
    EXPECT_EQ(object.SubdivGeom(0), zero); // kept, and moved along
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(zero->Verts()[i], cube->Verts()[i]);
}

TEST(RebuildSubDiv, AnotherTopologyMakesAllLevelsAnew)
{
    VXScene scene;
    const auto cube = GeomOf(Cube()), grid = GeomOf(Grid(3, 2));
    VXObject object;
    object.SetGeom(cube.get(), false);
    object.SetCurSubDivLevel(1);
    object.RebuildSubDiv();
    object.SetGeom(grid.get(), false);
    object.RebuildSubDiv();
    ASSERT_EQ(object.NumSubdivGeoms(), 2);
    EXPECT_EQ(object.SubdivGeom(0)->NumVerts(false), grid->NumVerts(false));
    EXPECT_EQ(object.SubdivGeom(0)->NumPolys(), 6);
    for (int i = 0; i < grid->NumVerts(false); ++i)
        EXPECT_EQ(object.SubdivGeom(0)->Verts()[i], grid->Verts()[i]);
}

TEST(RebuildSubDiv, TheDelegateDeformsEachLevelInOrder)
{
    VXScene scene;
    const auto cube = GeomOf(Cube());
    VXObject object;
    Munger munger;
    object.SetGeom(cube.get(), false);
    object.SetDelegate(&munger);
    object.SetCurSubDivLevel(2);
    object.RebuildSubDiv();
    EXPECT_EQ(munger.levels, (std::vector<int>{0, 1, 2}));
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(object.SubdivGeom(0)->Verts()[i].z, cube->Verts()[i].z + 100);
    object.RebuildSubDiv(); // starts from the control mesh again: deformations do not add up
    EXPECT_EQ(object.SubdivGeom(0)->Verts()[0].z, cube->Verts()[0].z + 100);
}

TEST(RebuildSubDiv, LevelsGetCreasesWhereTheHostAllowsThem)
{
    for (const bool allowed : {false, true})
    {
        VXScene scene;
        HostDelegate host;
        host.creases = allowed;
        scene.SetSceneDelegate(&host);
        const auto cube = GeomOf(Cube());
        VXObject object;
        object.SetGeom(cube.get(), false);
        object.SetCurSubDivLevel(1);
        object.RebuildSubDiv();
        EXPECT_EQ(object.SubdivGeom(0)->GenerateCreases(), allowed);
    }
}

TEST(RebuildSubDiv, MaterialsOfTheControlMeshReachPresentLevels)
{
    VXScene scene;
    const auto cube = GeomOf(Cube());
    VXMaterial material(0, nullptr);
    VXObject object;
    object.SetGeom(cube.get(), false);
    object.SetCurSubDivLevel(1);
    object.RebuildSubDiv();
    cube->SetMaterialPointer(0, &material);
    object.RebuildSubDiv();
    EXPECT_EQ(object.SubdivGeom(0)->MaterialPointer(0), &material);
    EXPECT_EQ(object.SubdivGeom(1)->MaterialPointer(0), &material);
}

TEST(RebuildSubDiv, EveryLevelIsFinerAndKeepsItsSnapshotUndeformed)
{
    for (const bool openSubdiv : {false, VXSwitches::OpenSubdivOn()}) // on where it is compiled in
    {
        SCOPED_TRACE(openSubdiv);
        VXScene scene;
        HostDelegate host;
        scene.SetSceneDelegate(&host);
        const VXSwitches::Scoped scheme(VXSwitches::OpenSubdivOn, VXSwitches::SetOpenSubdivOn, openSubdiv);
        const auto cube = GeomOf(Cube());
        VXObject object;
        Munger munger;
        object.SetGeom(cube.get(), false);
        object.SetDelegate(&munger);
        object.SetUsesTangents(true);
        object.SetCurSubDivLevel(3);
        EXPECT_EQ(object.RebuildSubDiv(), 0);
        for (int level = 0, quads = 6; level <= 3; ++level, quads *= 4)
        {
            VXGeom& geom = *object.SubdivGeom(level);
            EXPECT_EQ(geom.NumPolys(), quads);
            EXPECT_FALSE(geom.IncludesLines() || geom.IncludesPoints());
            if (level == 0)
                continue;
            ASSERT_NE(geom.PreMungeVerts(), nullptr);
            EXPECT_EQ(geom.Vertex(7)->z, geom.PreMungeVerts()[7].z + 100) << level;
            EXPECT_GT(Length(*geom.VertNormal(7)), 0.99f);
        }
        EXPECT_EQ(object.CurSubdivGeom(true), object.SubdivGeom(3));
        EXPECT_EQ(object.DrawGeom(kDrawGeomSurface), object.SubdivGeom(3)); // the scene shows surfaces
        const std::vector<VERTEX> first(object.SubdivGeom(3)->Verts(), object.SubdivGeom(3)->Verts() + 386);
        object.RebuildSubDiv(); // into the meshes that are there now
        for (std::size_t v = 0; v < first.size(); ++v)
            EXPECT_EQ(*object.SubdivGeom(3)->Vertex(int(v)), first[v]);
        EXPECT_EQ(host.rebuilds, openSubdiv ? 3 : 0); // the second time only positions were refined
    }
}

TEST(RebuildSubDiv, APoseEqualsWhatAFreshObjectMakesOfIt)
{
    for (const bool openSubdiv : {false, VXSwitches::OpenSubdivOn()})
    {
        SCOPED_TRACE(openSubdiv);
        VXScene scene;
        HostDelegate host;
        host.creases = true;
        scene.SetSceneDelegate(&host);
        const VXSwitches::Scoped scheme(VXSwitches::OpenSubdivOn, VXSwitches::SetOpenSubdivOn, openSubdiv);
        const auto torus = GeomOf(Torus(6, 5)); // its texture has seams
        VXObject posed, fresh;
        for (VXObject* const object : {&posed, &fresh})
        {
            object->SetGeom(torus.get(), false);
            object->SetUsesTangents(true);
            object->SetCurSubDivLevel(2);
        }
        ASSERT_EQ(posed.RebuildSubDiv(), 0);
        for (int v = 0; v < torus->NumVerts(false); ++v)
            torus->Vertex(v)->z += 0.25f * torus->Vertex(v)->x * torus->Vertex(v)->x;
        ASSERT_EQ(posed.RebuildSubDiv(), 0);
        ASSERT_EQ(fresh.RebuildSubDiv(), 0);
        for (int level = 0; level <= 2; ++level)
        {
            const VXGeom &a = *posed.SubdivGeom(level), &b = *fresh.SubdivGeom(level);
            EXPECT_GT(b.NumbCreaseVerts(), 0);
            const auto same = [](const auto* x, const auto* y, int count)
            { return x && y && std::memcmp(x, y, std::size_t(count) * sizeof *x) == 0; };
            const int count = b.NumVerts(true), own = b.NumVerts(false);
            ASSERT_EQ(a.NumVerts(true), count) << level;
            EXPECT_TRUE(same(a.Verts(), b.Verts(), count)) << level;
            EXPECT_TRUE(same(a.VertNormals(), b.VertNormals(), count)) << level;
            EXPECT_TRUE(same(a.PolyNormals(), b.PolyNormals(), b.NumPolys())) << level;
            EXPECT_TRUE(same(a.UvsPerVertex(), b.UvsPerVertex(), count)) << level;
            EXPECT_TRUE(same(a.CreaseSets(), b.CreaseSets(), 4 * b.NumPolys())) << level;
            EXPECT_TRUE(same(a.OrigCreaseIndexTable(), b.OrigCreaseIndexTable(), b.NumbCreaseVerts())) << level;
            if (level == 0)
                continue;
            EXPECT_TRUE(same(a.VertTangents(), b.VertTangents(), own)) << level;
            EXPECT_TRUE(same(a.PreMungeVerts(), b.PreMungeVerts(), own)) << level;
            EXPECT_TRUE(same(a.PreMungeNormals(), b.PreMungeNormals(), own)) << level;
            EXPECT_TRUE(same(a.PreMungeBinormals(), b.PreMungeBinormals(), own)) << level;
        }
    }
}

TEST(RebuildSubDiv, WhatOpenSubdivCannotRefineStaysAsItIs)
{
    if (!VXSwitches::OpenSubdivOn())
        GTEST_SKIP() << "built without OpenSubdiv";
    VXScene scene;
    HostDelegate host;
    scene.SetSceneDelegate(&host);
    const GeomPtr record = Cube().Record();
    record->Poly(0)->type = kElementLine;
    VXGeom control(record.get());
    VXObject object;
    object.SetGeom(&control, false);
    object.SetCurSubDivLevel(2);
    object.Subdivide();
    EXPECT_EQ(host.failures, 1);
    EXPECT_EQ(object.RebuildSubDiv(), -1);
    for (int level = 0; level <= 2; ++level)
        EXPECT_EQ(object.SubdivGeom(level)->NumPolys(), 6);
    EXPECT_TRUE(object.SubdivGeom(2)->IncludesLines());
}

TEST(RebuildSubDiv, RefusesMoreLevelsThanFifteenAndDropsALevelThatFails)
{
    VXScene scene;
    HostDelegate host;
    scene.SetSceneDelegate(&host);
    const VXSwitches::Scoped own(VXSwitches::OpenSubdivOn, VXSwitches::SetOpenSubdivOn, false);
    const auto cube = GeomOf(Cube());
    VXObject object;
    object.SetGeom(cube.get(), false);
    object.SetCurSubDivLevel(16);
    EXPECT_EQ(object.RebuildSubDiv(), -1);
    EXPECT_EQ(object.SubdivGeom(1), nullptr);

    int dropped = 0;
    object.SetCurSubDivLevel(1);
    for (int n = 1; n < 150; ++n)
    {
        object.SetSubdivDirty(true);
        const int failures = host.failures;
        MEM_FailAfter(n);
        object.Subdivide();
        MEM_FailAfter(0);
        const bool failed = host.failures > failures;
        EXPECT_TRUE(failed || object.SubdivGeom(1)->NumPolys() == 24) << n;
        dropped += failed && object.SubdivGeom(0) && !object.SubdivGeom(1) ? 1 : 0;
    }
    EXPECT_GT(dropped, 3);
    EXPECT_EQ(object.RebuildSubDiv(), 0);
    const VXGeom* const kept = object.SubdivGeom(1);
    object.SetCurSubDivLevel(15);
    MEM_FailAfter(1); // the list of levels itself
    EXPECT_EQ(object.RebuildSubDiv(), -2);
    MEM_FailAfter(0);
    EXPECT_EQ(object.SubdivGeom(1), kept);
    MEM_SetAllocationFailed(false);
}

TEST(Subdivide, RunsOnceForEachTimeItIsMarkedStaleAndReportsFailure)
{
    VXScene scene;
    HostDelegate host;
    scene.SetSceneDelegate(&host);
    VXObject object; // marked stale, and without a mesh: it fails
    object.Subdivide();
    EXPECT_EQ(host.failures, 1);
    EXPECT_FALSE(object.SubdivDirty());
    object.Subdivide();
    EXPECT_EQ(host.failures, 1);

    const auto cube = GeomOf(Cube());
    object.SetGeom(cube.get(), false);
    object.SetSubdivDirty(true);
    object.Subdivide(); // level 0 succeeds
    EXPECT_EQ(host.failures, 1);
}
