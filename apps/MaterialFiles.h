// VelmarBase: command line.
#pragma once

#include "Cli.h"
#include "host/tree/MaterialJson.h"

#include <string>
#include <vector>

/// @file
/// What verbs that take material files share.

namespace vx::cli
{

/// Reads a material file and tells of what is wrong in it, in one line each: materials with errors are left out, and
/// of a file that is no JSON all.
/// @return kDone; or the code of a failure that has been told: the file itself cannot be read
int ReadMaterialsInput(const std::string& name, std::vector<NamedMaterial>& materials);

} // namespace vx::cli
