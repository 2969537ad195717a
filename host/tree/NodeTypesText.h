// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BString.h"

namespace vx
{
/// All node types and their inputs for people, as Markdown tables. docs/materials.md contains it; a test compares.
VELMAR_HOST_EXPORT BString NodeTypesText();
} // namespace vx
