#include "engine/VXLight.h"

#include <gtest/gtest.h>

TEST(Light, SettersMarkItChangedExceptThoseThatDoNot)
{
    struct Row
    {
        const char* what;
        void (*act)(VXLight&);
        bool fromClear, fromSet; // Changed afterwards, when it was clear and when it was set
    };
    for (const Row& row :
         {
             Row{"type", [](VXLight& l) { l.SetLightType(VXLight::kLightInfinite); }, true, true},
             {"attenuation type", [](VXLight& l) { l.SetAttenType(VXLight::kAttenInverseLinear); }, true, true},
             {"attenuation start", [](VXLight& l) { l.SetAttenStart(0); }, true, true},
             {"attenuation end", [](VXLight& l) { l.SetAttenEnd(0); }, true, true},
             {"shadow strength", [](VXLight& l) { l.SetShadowStrength(1); }, true, true},
             {"colour", [](VXLight& l) { l.SetLightColor(1, 1, 1, 1); }, true, true},
             {"another falloff start", [](VXLight& l) { l.SetFalloffStart(2); }, true, true},
             {"the same falloff start", [](VXLight& l) { l.SetFalloffStart(0); }, false, false},
             {"another falloff end", [](VXLight& l) { l.SetFalloffEnd(2); }, true, true},
             {"the same falloff end", [](VXLight& l) { l.SetFalloffEnd(0); }, false, false},
             {"shadow map size", [](VXLight& l) { l.SetShadowMapSize(64); }, false, true},
             {"fixed pipeline", [](VXLight& l) { l.SetIncludeOGL(false); }, false, true},
             {"distance range", [](VXLight& l) { l.SetDistanceRange(1, 2); }, false, true},
             {"image colours", [](VXLight& l) { l.SetIBLColors(nullptr); }, false, true},
         })
    {
        SCOPED_TRACE(row.what);
        VXLight clear, set;
        set.SetChanged(true);
        row.act(clear);
        row.act(set);
        EXPECT_EQ(clear.Changed(), row.fromClear);
        EXPECT_EQ(set.Changed(), row.fromSet);
    }
}

TEST(Light, OnlyAnotherTypeIsATypeChange)
{
    VXLight light;
    light.SetLightType(VXLight::kLightInfinite);
    EXPECT_FALSE(light.TypeChanged());
    light.SetLightType(VXLight::kLightSpot);
    EXPECT_TRUE(light.TypeChanged());
    light.SetTypeChanged(false);
    light.SetLightType(VXLight::kLightSpot);
    EXPECT_FALSE(light.TypeChanged());
}

TEST(Light, AnAreaLightWeakensInItsOwnWayAndRemembersTheOther)
{
    VXLight light;
    light.SetAttenType(VXLight::kAttenInverseLinear);
    light.SetLightType(VXLight::kLightArea);
    EXPECT_EQ(int(light.AttenType()), 1);
    light.SetLightType(VXLight::kLightPoint);
    EXPECT_EQ(light.AttenType(), VXLight::kAttenInverseLinear);
}

TEST(Light, PositionAndDirectionFollowTheTransform)
{
    VXLight light;
    EXPECT_EQ(light.GetPosition(), VERTEX());
    Mat44 m;
    MAT_Identity(m);
    MAT_Scale(m, 3, 3, 3);
    MAT_RotateY(m, 1.5707963f);
    MAT_Translate(m, 4, 5, 6);
    light.SetTransform(m);
    EXPECT_NEAR(Length(light.GetPosition() - VERTEX{4, 5, 6}), 0, 1e-6f);
    EXPECT_NEAR(Length(light.GetDirection() - VERTEX{1, 0, 0}), 0, 1e-6f); // of unit length in spite of the scale

    MAT_Scale(m, 0, 0, 0);
    light.SetTransform(m);
    EXPECT_EQ(light.GetDirection(), VERTEX());
}

TEST(Light, ImageColoursAreCopiedAndNullIsIgnored)
{
    float colors[9][3];
    for (int i = 0; i < 27; ++i)
        colors[i / 3][i % 3] = float(i);
    VXLight light;
    light.SetIBLColors(colors);
    light.SetIBLColors(nullptr);
    colors[0][0] = 99;
    for (int i = 0; i < 27; ++i)
        EXPECT_EQ(light.IBLColors()[i], float(i));
}

TEST(Light, CallsEachProcWithItsOwnData)
{
    struct Heard
    {
        VXLight* light = nullptr;
        int times = 0;
    };
    const auto hear = [](VXLight* light, void* data)
    {
        static_cast<Heard*>(data)->light = light;
        return ++static_cast<Heard*>(data)->times;
    };
    Heard prepared, ended;
    VXLight light;
    light.PrepareForDrawing(); // nothing is set yet
    light.EndDrawing();
    light.SetPrepareProc(hear, &prepared);
    light.SetEndProc(hear, &ended);
    light.PrepareForDrawing();
    EXPECT_EQ(prepared.times, 1);
    EXPECT_EQ(ended.times, 0);
    light.EndDrawing();
    EXPECT_EQ(ended.times, 1);
    EXPECT_EQ(ended.light, &light);
}
