// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BArray.h"
#include "base/BPath.h"

namespace vx
{
/// The folders in which this system keeps its fonts, with all folders below them, in order of their names; the system's
/// before the user's. Folders that do not exist are left out. Links to folders are not followed.
VELMAR_HOST_EXPORT BArray<BPath> SystemFontFolders();

/// The sans fonts of this system that suit labels, the one that is liked most first. Not opened yet.
VELMAR_HOST_EXPORT BArray<BPath> SystemSansFonts();
} // namespace vx
