#include "engine/VXObject.h"
#include "engine/VXObjectDelegate.h"
#include "engine/VXScene.h"
#include "engine/VXSceneDelegate.h"
#include "mesh/VXGeom.h"
#include "tests/support/Meshes.h"

#include <gtest/gtest.h>

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
    int failures = 0;
    bool AllowCreaseVertsForSubdiv() override { return creases; }
    void NotifyForFailedSubdivision(VXObject*) override { ++failures; }
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
