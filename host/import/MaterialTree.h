// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BPath.h"
#include "host/import/MaterialFile.h"

#include <memory>

namespace vx
{
class ShaderTree;

/// The tree of an imported material: what fixed drawing shows of it, and highlight, bump and normal maps besides.
/// @param folder that of the material file: pictures are named from there
/// @param size of the model, to which heights are related: the file does not say in which units they are
VELMAR_HOST_EXPORT std::unique_ptr<ShaderTree> TreeOf(const MaterialRecord& record, const BPath& folder, float size);
} // namespace vx
