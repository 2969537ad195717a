#include "material/VXMaterial.h"
#include "material/VXMaterialUndoData.h"

#include <gtest/gtest.h>

using Color = VXMaterialColor4;

TEST(Color, ArithmeticIsComponentWiseOnAllFour)
{
    const Color a(1, 2, 3, 4), b(0.5f, 0.25f, 2, 8); // powers of two, so that results are exact
    EXPECT_EQ(a * b, Color(0.5f, 0.5f, 6, 32));
    EXPECT_EQ(a * 2, Color(2, 4, 6, 8));
    EXPECT_EQ(a + b, Color(1.5f, 2.25f, 5, 12));
    EXPECT_EQ(a + 1, Color(2, 3, 4, 5));
    EXPECT_EQ(a - b, Color(0.5f, 1.75f, 1, -4));
    Color c = a;
    EXPECT_EQ(c *= b, a * b);
    EXPECT_EQ(c += b, a * b + b);
    EXPECT_EQ(c -= b, a * b);
    EXPECT_EQ(c *= 0.5f, Color(0.25f, 0.25f, 3, 16));
    EXPECT_EQ(c += 1, Color(1.25f, 1.25f, 4, 17));
}

TEST(Color, HighestAndMixedValueLeaveBrightnessOut)
{
    struct Row
    {
        Color color;
        float highest;
    };
    for (const Row& row : {Row{{3, 2, 1, 9}, 3},
                           {{1, 3, 2, 9}, 3},
                           {{1, 2, 3, 9}, 3},
                           {{2, 2, 1, 9}, 2},
                           {{1, 2, 2, 9}, 2},
                           {{-1, -3, -2, 9}, -1}})
        EXPECT_EQ(row.color.HighestValue(), row.highest);
    EXPECT_FLOAT_EQ(Color(0.3f, 0.6f, 0.9f, 1).MixedValue(), 0.6f);
}

TEST(Color, TotalsAreScaledByBrightness)
{
    const Color c(1, 2, 3, 0.5f);
    EXPECT_EQ(c.TotalRed(), 0.5f);
    EXPECT_EQ(c.TotalGreen(), 1);
    EXPECT_EQ(c.TotalBlue(), 1.5f);
}

TEST(Undo, OfAMaterialBringsBackBothColours)
{
    VXMaterial material(0, nullptr);
    material.KdColor().Set(0.1f, 0.2f, 0.3f, 0.4f);
    material.KsColor().Set(0.5f, 0.6f, 0.7f, 0.8f);
    material.RememberForUndo();
    material.KdColor().Set(9, 9, 9, 9);
    material.KsColor().Set(9, 9, 9, 9);
    material.Undo();
    EXPECT_EQ(material.KdColor(), Color(0.1f, 0.2f, 0.3f, 0.4f));
    EXPECT_EQ(material.KsColor(), Color(0.5f, 0.6f, 0.7f, 0.8f));
}

TEST(Undo, SnapshotSwapsAndTwiceRestores)
{
    VXMaterial material(0, nullptr);
    const Color kd = material.KdColor(), ks = material.KsColor(), newKd(1, 0, 0, 1), newKs(0, 1, 0, 1);
    VXMaterialUndoData undo(&material);
    material.KdColor() = newKd;
    material.KsColor() = newKs;
    undo.SwapValues();
    EXPECT_EQ(material.KdColor(), kd);
    EXPECT_EQ(material.KsColor(), ks);
    EXPECT_EQ(undo.KdColor(), newKd);
    EXPECT_EQ(undo.KsColor(), newKs);
    undo.SwapValues();
    EXPECT_EQ(material.KdColor(), newKd);
    EXPECT_EQ(material.KsColor(), newKs);
    EXPECT_EQ(undo.KdColor(), kd);

    undo.Init(); // without its material it has nothing to swap with
    undo.SwapValues();
    EXPECT_EQ(undo.KdColor(), kd);
    EXPECT_EQ(material.KdColor(), newKd);
}
