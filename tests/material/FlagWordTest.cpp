#include "engine/VXLight.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "material/VXMaterial.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace
{
// Sets and clears each bit of a word that is all clear, and of one that is all set.
template <class Bit, std::size_t N>
void EachBitMovesAlone(const FlagRow<Bit> (&table)[N])
{
    std::set<std::string> names;
    for (const FlagRow<Bit>& row : table)
    {
        SCOPED_TRACE(row.name);
        EXPECT_TRUE(names.insert(row.name).second) << "two bits of one name";
        const std::uint32_t bit = std::uint32_t(row.bit);
        for (const std::uint32_t start : {0u, 0xFFFFFFFFu})
        {
            FlagWord<Bit> word(start);
            word.Set(row.bit, true);
            EXPECT_EQ(word.Word(), start | bit);
            EXPECT_TRUE(word.Get(row.bit));
            word.Set(row.bit, false);
            EXPECT_EQ(word.Word(), start & ~bit);
            EXPECT_FALSE(word.Get(row.bit));
        }
    }
}

// The accessors of one class, by the bit that each pair is to read and write.
template <class Owner, class Bit>
struct Pair
{
    Bit bit;
    bool (Owner::*get)() const;
    void (Owner::*set)(bool);
};

#define MATERIAL_PAIR(name)                                                                                            \
    {                                                                                                                  \
        MaterialFlag::name, &VXMaterial::GetFlag##name, &VXMaterial::SetFlag##name                                     \
    }
constexpr Pair<VXMaterial, MaterialFlag> kMaterialPairs[] = {
    MATERIAL_PAIR(Smooth),
    MATERIAL_PAIR(Silhouette),
    MATERIAL_PAIR(DrawPolys),
    MATERIAL_PAIR(DrawWires),
    MATERIAL_PAIR(BackCull),
    MATERIAL_PAIR(LightLines),
    MATERIAL_PAIR(Texture),
    MATERIAL_PAIR(Toon),
    MATERIAL_PAIR(Outline),
    MATERIAL_PAIR(Pick),
    MATERIAL_PAIR(HairMaterial),
    MATERIAL_PAIR(NonBodyPart),
    MATERIAL_PAIR(KsIgnoreTexture),
    MATERIAL_PAIR(ReflectMultLights),
    MATERIAL_PAIR(ReflectMultKD),
    MATERIAL_PAIR(SetFromScript),
    MATERIAL_PAIR(Animateable),
    MATERIAL_PAIR(InCurrentSelection),
    MATERIAL_PAIR(InheritStyleFromObject),
    MATERIAL_PAIR(InheritStyleFromObjectParent),
    MATERIAL_PAIR(InheritStyleFromScene),
    MATERIAL_PAIR(ForceOpaque),
    MATERIAL_PAIR(LineColorFromObject),
    MATERIAL_PAIR(BlackLines),
    MATERIAL_PAIR(DepthOnly),
    MATERIAL_PAIR(NormalsOnly),
    MATERIAL_PAIR(VertexColorsOnly),
    MATERIAL_PAIR(RegularBumpChannel),
};
static_assert(std::size(kMaterialPairs) == std::size(kMaterialFlags));

#define SCENE_PAIR(name)                                                                                               \
    {                                                                                                                  \
        SceneFlag::name, &VXScene::name, &VXScene::Set##name                                                           \
    }
// All but Changed and NeedsShadowRedraw, whose setters do more.
constexpr Pair<VXScene, SceneFlag> kScenePairs[] = {
    SCENE_PAIR(PickPolys),       SCENE_PAIR(PickEdges),   SCENE_PAIR(PickVerts),          SCENE_PAIR(PickObject),
    SCENE_PAIR(PickAxes),        SCENE_PAIR(PickShadows), SCENE_PAIR(ControlMeshVisible), SCENE_PAIR(SurfaceVisible),
    SCENE_PAIR(DrawDropShadows), SCENE_PAIR(DepthCueOn),  SCENE_PAIR(CameraTrackingOn),   SCENE_PAIR(PickZObjects),
};

#define OBJECT_PAIR(name)                                                                                              \
    {                                                                                                                  \
        ObjectFlag::name, &VXObject::name, &VXObject::Set##name                                                        \
    }
// All but Changed and IgnoreZBufferEdges, whose setters do more.
constexpr Pair<VXObject, ObjectFlag> kObjectPairs[] = {
    OBJECT_PAIR(Visible),     OBJECT_PAIR(SilhouetteDirty),       OBJECT_PAIR(CastsShadow), OBJECT_PAIR(TypeCurve),
    OBJECT_PAIR(TypeHair),    OBJECT_PAIR(WorldvertsExternalSet), OBJECT_PAIR(TypeCamera),  OBJECT_PAIR(TypeLight),
    OBJECT_PAIR(SubdivDirty), OBJECT_PAIR(UsesTangents),          OBJECT_PAIR(GroupMember),
};

#define LIGHT_PAIR(name)                                                                                               \
    {                                                                                                                  \
        LightFlag::name, &VXLight::name, &VXLight::Set##name                                                           \
    }
constexpr Pair<VXLight, LightFlag> kLightPairs[] = {
    LIGHT_PAIR(Changed), LIGHT_PAIR(On), LIGHT_PAIR(HWShadow), LIGHT_PAIR(HWShadowDirty), LIGHT_PAIR(TypeChanged),
};

template <class Owner, class Bit, std::size_t N>
void EachPairIsItsBit(Owner& owner, const Pair<Owner, Bit> (&pairs)[N])
{
    for (const Pair<Owner, Bit>& pair : pairs)
    {
        const std::uint32_t bit = std::uint32_t(pair.bit), before = owner.Flags();
        SCOPED_TRACE(bit);
        (owner.*pair.set)(true);
        EXPECT_EQ(owner.Flags(), before | bit);
        EXPECT_TRUE((owner.*pair.get)());
        (owner.*pair.set)(false);
        EXPECT_EQ(owner.Flags(), before & ~bit);
        EXPECT_FALSE((owner.*pair.get)());
        (owner.*pair.set)((before & bit) != 0);
    }
}
} // namespace

TEST(FlagWord, EachBitOfEachTableMovesAlone)
{
    EachBitMovesAlone(kMaterialFlags);
    EachBitMovesAlone(kObjectFlags);
    EachBitMovesAlone(kSceneFlags);
    EachBitMovesAlone(kLightFlags);
}

TEST(FlagWord, ReplaceTouchesNothingOutside)
{
    FlagWord<MaterialFlag> word(0xF0F0F0F0u);
    word.Replace(FlagWord<MaterialFlag>(0x0000FFFFu), FlagWord<MaterialFlag>(0x00001234u));
    EXPECT_EQ(word.Word(), 0xF0F01234u);
}

TEST(FlagWord, AccessorsReadAndWriteTheBitOfTheirName)
{
    VXMaterial material(0, nullptr);
    EachPairIsItsBit(material, kMaterialPairs);
    VXScene scene;
    EachPairIsItsBit(scene, kScenePairs);
    VXObject object;
    EachPairIsItsBit(object, kObjectPairs);
    VXLight light;
    EachPairIsItsBit(light, kLightPairs);
}

TEST(FlagWord, NewThingsStartWithTheirDefaults)
{
    EXPECT_EQ(VXMaterial(0, nullptr).Flags(), 0x40010u);
    EXPECT_EQ(VXScene().Flags(), 0x190u);
    EXPECT_EQ(VXObject().Flags(), 0x402u);
    EXPECT_EQ(VXLight().Flags(), 0x2u);
}
