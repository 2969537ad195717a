#include "material/VXMaterial.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
// A material whose layers have these names, inside and outside alike.
struct Layered
{
    Layered(std::initializer_list<const char*> names) : material(0, nullptr)
    {
        material.ClearLayers();
        for (const char* name : names)
            material.InsertNewLayer(material.NumLayers(), name, name);
    }
    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (std::int64_t i = 0; i < material.NumLayers(); ++i)
            names.push_back(material.Layer(i)->ExternalName().Std());
        return names;
    }
    VXMaterial material;
};
using Names = std::vector<std::string>;
} // namespace

TEST(Layers, ANewMaterialHasItsBaseAlone)
{
    VXMaterial material(0, nullptr);
    ASSERT_EQ(material.NumLayers(), 1);
    EXPECT_EQ(material.Layer(0)->InternalName(), "Base");
    EXPECT_EQ(material.Layer(0)->ExternalName(), "Base");
    EXPECT_EQ(material.Layer(0)->Material(), &material);
    EXPECT_EQ(material.Layer(-1), nullptr);
    EXPECT_EQ(material.Layer(1), nullptr);
}

TEST(Layers, NamesAreMadeUniqueByTheirKind)
{
    struct Row
    {
        std::initializer_list<const char*> present;
        const char* asked;
        const char* unique;
    };
    for (const Row& row : {
             Row{{"Base"}, "Skin", "Skin"},
             {{"Base"}, "Base", "Base_1"},
             {{"Base", "Base_1"}, "Base", "Base_2"},
             {{"Base", "Base_1"}, "Base_1", "Base_1 1"}, // only the bare name counts up after an underline
             {{"Base", "Skin"}, "Skin", "Skin 1"},
             {{"Base", "Skin", "Skin 1", "Skin 3"}, "Skin", "Skin 2"},
             {{"Layer_3"}, "Layer_3", "Layer_1"},
             {{"Layer_3", "Layer_1", "Layer_2"}, "Layer_3", "Layer_4"},
             {{"Layer_03"}, "Layer_03", "Layer_1"},
             {{"Layer_"}, "Layer_", "Layer_ 1"},
             {{"Layer_-3"}, "Layer_-3", "Layer_-3 1"},
             {{"Layer_3x"}, "Layer_3x", "Layer_3x 1"},
             {{"layer_3"}, "layer_3", "layer_3 1"},
             {{"100%d %s%n"}, "100%d %s%n", "100%d %s%n 1"}, // a name is no format
             {{""}, "", " 1"},
         })
    {
        SCOPED_TRACE(row.asked);
        const Layered layered(row.present);
        EXPECT_EQ(layered.material.UniqueLayerName(row.asked, true), row.unique);
        EXPECT_EQ(layered.material.UniqueLayerName(row.asked, false), row.unique);
    }
}

TEST(Layers, InternalAndExternalNamesAreLookedUpApart)
{
    VXMaterial material(0, nullptr);
    material.InsertNewLayer(1, "inside", "outside");
    EXPECT_TRUE(material.LayerNameExists("inside", false));
    EXPECT_FALSE(material.LayerNameExists("inside", true));
    EXPECT_TRUE(material.LayerNameExists("outside", true));
    EXPECT_FALSE(material.LayerNameExists("outside", false));
    EXPECT_FALSE(material.LayerNameExists("Outside", true));
}

TEST(Layers, SuggestedNameIsTheFirstFree)
{
    struct Row
    {
        std::initializer_list<const char*> present;
        const char* suggested;
    };
    for (const Row& row : {Row{{}, "Base"},
                           {{"Base"}, "Layer_1"},
                           {{"Base", "Layer_1"}, "Layer_2"},
                           {{"Base", "Layer_2"}, "Layer_1"},
                           {{"Layer_1", "Layer_2", "Layer_4"}, "Layer_3"}})
        EXPECT_EQ(Layered(row.present).material.SuggestedNewLayerName(), row.suggested);
}

TEST(Layers, CreatingAppendsUniqueNamesAndInsertingKeepsTheExternalOne)
{
    VXMaterial material(0, nullptr);
    EXPECT_EQ(material.CreateNewLayer("Base", "Base"), 1);
    EXPECT_EQ(material.Layer(1)->InternalName(), "Base_1");
    EXPECT_EQ(material.Layer(1)->ExternalName(), "Base_1");

    VXMaterialLayer* const first = material.InsertNewLayer(0, "Base", "Base");
    EXPECT_EQ(material.Layer(0), first);
    EXPECT_EQ(first->InternalName(), "Base_2");
    EXPECT_EQ(first->ExternalName(), "Base");
    EXPECT_EQ(material.NumLayers(), 3);

    for (const std::int64_t outside : {-1, 4})
    {
        VXMaterialLayer* const loose = material.InsertNewLayer(outside, "x", "x");
        ASSERT_NE(loose, nullptr);
        EXPECT_EQ(material.FindLayerIndex(loose), -1);
        EXPECT_EQ(material.NumLayers(), 3);
        delete loose; // the caller's
    }
}

TEST(Layers, MoveWithinTheRulesAndNoFurther)
{
    struct Row
    {
        const char* what;
        int (*act)(VXMaterial&);
        int result;
        Names after;
    };
    const Names same = {"Base", "a", "b", "c"};
    const std::vector<Row> rows = {
        {"raise base", [](VXMaterial& m) { return m.RaiseLayer(0); }, -1, same},
        {"raise 1", [](VXMaterial& m) { return m.RaiseLayer(1); }, 0, {"Base", "b", "a", "c"}},
        {"raise last", [](VXMaterial& m) { return m.RaiseLayer(3); }, -1, same},
        {"raise -1", [](VXMaterial& m) { return m.RaiseLayer(-1); }, -1, same},
        {"lower 1", [](VXMaterial& m) { return m.LowerLayer(1); }, -1, same},
        {"lower 2", [](VXMaterial& m) { return m.LowerLayer(2); }, 0, {"Base", "b", "a", "c"}},
        {"lower beyond", [](VXMaterial& m) { return m.LowerLayer(4); }, -1, same},
        {"move 1 to 3", [](VXMaterial& m) { return m.MoveLayer(1, 3); }, 0, {"Base", "b", "c", "a"}},
        {"move 3 to 1", [](VXMaterial& m) { return m.MoveLayer(3, 1); }, 0, {"Base", "c", "a", "b"}},
        {"move 2 to 2", [](VXMaterial& m) { return m.MoveLayer(2, 2); }, 0, same},
        {"move to base", [](VXMaterial& m) { return m.MoveLayer(2, 0); }, -1, same},
        {"move base", [](VXMaterial& m) { return m.MoveLayer(0, 2); }, -1, same},
        {"move beyond", [](VXMaterial& m) { return m.MoveLayer(1, 4); }, -1, same},
        {"remove base", [](VXMaterial& m) { return m.RemoveLayer(std::int64_t{0}); }, -1, same},
        {"remove 2", [](VXMaterial& m) { return m.RemoveLayer(2); }, 0, {"Base", "a", "c"}},
        {"remove beyond", [](VXMaterial& m) { return m.RemoveLayer(4); }, -1, same},
        {"remove pointer", [](VXMaterial& m) { return m.RemoveLayer(m.Layer(3)); }, 0, {"Base", "a", "b"}},
        {"remove base pointer", [](VXMaterial& m) { return m.RemoveLayer(m.Layer(0)); }, -1, same},
        {"remove null", [](VXMaterial& m) { return m.RemoveLayer(nullptr); }, -1, same},
        {"remove all", [](VXMaterial& m) { return m.RemoveAllLayers(); }, 0, {"Base"}},
        {"rename base", [](VXMaterial& m) { return m.RenameLayer(0, "new"); }, -1, same},
        {"rename 1", [](VXMaterial& m) { return m.RenameLayer(1, "new"); }, 0, {"Base", "new", "b", "c"}},
        {"rename to a taken name", [](VXMaterial& m) { return m.RenameLayer(1, "c"); }, -1, same},
        {"rename to its own name", [](VXMaterial& m) { return m.RenameLayer(1, "a"); }, -1, same},
        {"rename beyond", [](VXMaterial& m) { return m.RenameLayer(4, "new"); }, -1, same},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.what);
        Layered layered({"Base", "a", "b", "c"});
        EXPECT_EQ(row.act(layered.material), row.result);
        EXPECT_EQ(layered.Names(), row.after);
    }
}

TEST(Layers, RenamingLeavesTheInternalName)
{
    Layered layered({"Base", "a"});
    layered.material.RenameLayer(1, "new");
    EXPECT_EQ(layered.material.Layer(1)->InternalName(), "a");
}

TEST(Layers, ActiveLayerStaysInTheListWhenLayersGo)
{
    Layered layered({"Base", "a", "b"});
    layered.material.SetLayerActive(2);
    layered.material.RemoveLayer(1);
    EXPECT_EQ(layered.material.LayerActive(), 1);
    layered.material.RemoveAllLayers();
    EXPECT_EQ(layered.material.LayerActive(), 0);
}

TEST(Layers, TreesAndHashesOutsideTheListAreNothing)
{
    VXMaterial material(0, nullptr);
    int tree = 0;
    material.SetOrmondShaderTree(0, &tree);
    material.Layer(0)->SetTreeHash("hash");
    EXPECT_EQ(material.OrmondShaderTree(0), &tree);
    EXPECT_EQ(material.TreeHash(0), "hash");
    for (const std::int64_t outside : {-1, 1})
    {
        material.SetOrmondShaderTree(outside, &tree);
        EXPECT_EQ(material.OrmondShaderTree(outside), nullptr);
        EXPECT_EQ(material.TreeHash(outside), "");
    }
    material.ClearLayers();
    EXPECT_EQ(material.NumLayers(), 0);
    EXPECT_EQ(material.OrmondShaderTree(0), nullptr);
    EXPECT_EQ(material.RemoveAllLayers(), -1);
}
