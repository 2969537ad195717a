// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BArray.h"
#include "base/BPath.h"
#include "base/BString.h"
#include "host/tree/ShaderTree.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

/// @file
/// Materials as JSON texts that people write by hand: docs/materials.md describes them.

namespace vx
{
/// A material of such a text.
struct NamedMaterial
{
    struct Layer
    {
        BString name;
        std::unique_ptr<ShaderTree> tree; ///< has a root, and no cycles
    };
    BString name;
    std::vector<Layer> layers; ///< the base layer first; at least one
};

struct MaterialsReport
{
    BString error;            ///< why nothing of the text can be used; empty otherwise
    BArray<BString> problems; ///< what is wrong with materials that were left out: "NAME:LINE:COLUMN: TEXT"
    BArray<BString> warnings; ///< what is odd without keeping a material out
};

/// Reads materials. Any bytes end in materials or in an error with its place; a material with an error is left out and
/// the others are kept. Memory stays below 256 times the text and 1 MiB.
/// @param name stands for the text in messages  @param folder that of the pictures that it names
/// @return false with report.error
VELMAR_HOST_EXPORT bool ReadMaterials(const char* text, std::size_t size, const BString& name, const BPath& folder,
                                      std::vector<NamedMaterial>& materials, MaterialsReport& report);
/// The same from a file, plain or gzip.
VELMAR_HOST_EXPORT bool ReadMaterialsFile(const BPath& path, std::vector<NamedMaterial>& materials,
                                          MaterialsReport& report);

/// The text of materials, from which they read back the same. Inputs at their standard are left out.
/// @param folder where the text is going to lie: pictures are named from there
/// @return the text; empty when it does not fit into memory
VELMAR_HOST_EXPORT std::string WriteMaterials(std::span<const NamedMaterial> materials, const BPath& folder);
} // namespace vx
