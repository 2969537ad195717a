// VelmarBase: command line.
#pragma once

#include "base/BBitArray.h"
#include "material/VXMaterialColor4.h"

#include <cstddef>
#include <string>
#include <vector>

class VXGeom;
class VXScene;

/// @file
/// Named groups of polygons as sets of bits, and the colours in which they are shown.

namespace vx::cli
{

BBitArray PolysOfGroup(const VXGeom& geom, const char* group);                 ///< empty set without such a group
void SetPolysOfGroup(VXGeom& geom, const char* group, const BBitArray& polys); ///< it holds just these afterwards
/// Adds a group that is in none of these meshes and holds nothing. @return its name; empty when memory ran out
std::string AddFreshGroup(const std::vector<VXGeom*>& meshes);
std::vector<std::string> GroupNames(const VXScene& scene); ///< of all control meshes, each name once

/// One after the other, so that groups that are shown together can be told apart.
const VXMaterialColor4& HighlightColor(std::size_t i);

} // namespace vx::cli
