#include "engine/VXSceneDelegate.h"
#include "engine/VXSwitches.h"

#include <gtest/gtest.h>

TEST(SceneDelegate, AnswersNeutrally)
{
    VXSceneDelegate d;
    BString text;
    EXPECT_FALSE(d.RedrawOff());
    EXPECT_FALSE(d.SetRedrawOff(true));
    EXPECT_FALSE(d.RedrawOff()); // it stores nothing
    d.GetClientNameFromObjectName("name", text);
    EXPECT_EQ(text, "name");
    EXPECT_EQ(d.GetTextureBucketByID(1, nullptr), -1);
    EXPECT_TRUE(d.CheckValidTexturePath(1));
    EXPECT_EQ(d.RuntimeShaderFolder(), "Runtime/Cg/");
    EXPECT_EQ(d.SceneGeometricEdgeDistance(), 0);
    EXPECT_EQ(int(d.CurrentPreviewRootRenderType()), 1);
    EXPECT_FALSE(d.AllowCreaseVertsForSubdiv());
    EXPECT_EQ(d.AddHostMapFile(text), 0);
    EXPECT_EQ(d.GetCurrentLight(), nullptr);
    EXPECT_EQ(d.FrameNumber(), 1);
    EXPECT_EQ(d.GammaForTexture(text), 0);
    EXPECT_FALSE(d.PickDrawCheckPrepareBeforeVisible());
    EXPECT_FALSE(d.WantsShaderDebugging());
    EXPECT_FALSE(d.WantsShaderLog());
}

TEST(SceneDelegate, AbortAnswerIsTheLibraryWideSwitch)
{
    VXSceneDelegate d;
    EXPECT_FALSE(d.AbortOnBadSubdivSourceData());
    {
        const VXSwitches::Scoped abort(VXSwitches::AbortOnBadSubdivSource, VXSwitches::SetAbortOnBadSubdivSource, true);
        EXPECT_TRUE(d.AbortOnBadSubdivSourceData());
    }
    EXPECT_FALSE(d.AbortOnBadSubdivSourceData());
}

TEST(Switches, StandApartAndReturnToTheirValue)
{
    struct Row
    {
        bool (*get)();
        void (*set)(bool);
    };
    using namespace VXSwitches;
    const Row rows[] = {{TangentsRequested, SetTangentsRequested},
                        {EdgeLinesSuppressed, SetEdgeLinesSuppressed},
                        {OpenSubdivOn, SetOpenSubdivOn},
                        {SubdividedDrawing, SetSubdividedDrawing},
                        {AbortOnBadSubdivSource, SetAbortOnBadSubdivSource}};
    for (const Row& moved : rows)
    {
        const bool before = moved.get();
        {
            const Scoped flipped(moved.get, moved.set, !before);
            EXPECT_EQ(moved.get(), !before);
            for (const Row& other : rows)
                if (other.get != moved.get)
                {
                    const bool value = other.get();
                    const Scoped twice(other.get, other.set, !value);
                    EXPECT_EQ(moved.get(), !before);
                }
        }
        EXPECT_EQ(moved.get(), before);
    }
}
