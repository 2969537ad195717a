// The area that an outline fills, found without a tessellator.
#pragma once

#include <ft2build.h>
#include FT_FREETYPE_H

/// The area of the region of non-zero winding (or odd, when the outline asks for it) of FreeType's contours, in square
/// font units, curves cut into `pieces`: the plane is cut into horizontal strips in which no two edges cross, so that
/// every strip is a row of trapezoids whose winding numbers add up from the left.
double FilledArea(const FT_Outline& outline, int pieces);
