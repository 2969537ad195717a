#include "engine/VXSwitches.h"
#include "mesh/VXGeom.h"
#include "tests/support/Meshes.h"

#include <gtest/gtest.h>

TEST(WithoutOpenSubdiv, ItsSchemeIsOffAndAlwaysFails)
{
    VXGeom control(Cube().Record().get()), dest(OpenBox().Record().get());
    EXPECT_FALSE(VXSwitches::OpenSubdivOn());
    EXPECT_EQ(control.SubdivideOpenSubDiv(&dest, 1, kSubdivSchemeDefault, true), -1);
    EXPECT_EQ(dest.NumPolys(), 5);
    control.ClearSubdiv();
}
