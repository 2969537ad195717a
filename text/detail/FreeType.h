// VelmarBase: text meshes.
#pragma once

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <cstdint>

namespace vx
{
/// How many times FreeType has been set up. Faces of an earlier set-up went with their library.
std::uint32_t FreeTypeSetUp();
} // namespace vx
