// VelmarBase: command line.
#pragma once

#include "Cli.h"

class GEOM;
class VXScene;

/// @file
/// What the verbs that subdivide share: the choice of a scheme, and what keeps a mesh from being subdivided.

namespace vx::cli
{

inline constexpr const char* kOpenSubdiv = "opensubdiv";
inline constexpr const char* kOwnScheme = "catmull-clark";

const std::vector<std::string>& SchemeNames(); ///< of this build, the standard one first
/// "--scheme"; one that this build lacks is wrong usage, and told so.
CLI::Option* AddScheme(CLI::App& verb, std::string& scheme);

/// Why a mesh of faces cannot be subdivided so far; empty when nothing is known that keeps it from that.
BString SubdivisionProblem(const GEOM& record, int levels, bool ownScheme);
/// The same of all objects of a scene, with the name of the one.
BString SubdivisionProblem(const VXScene& scene, int levels, bool ownScheme);

} // namespace vx::cli
