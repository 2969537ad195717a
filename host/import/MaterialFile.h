// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BArray.h"
#include "base/BPath.h"
#include "base/BString.h"
#include "base/Vertex.h"

namespace vx
{
/// A picture that a material names, and how it is laid on.
struct MaterialMap
{
    BString file; ///< as it is written; empty for none
    float scale[2] = {1, 1}, offset[2] = {0, 0};
};

/// One material of a Wavefront material file: what the preview shows of it.
struct MaterialRecord
{
    BString name;
    VERTEX kd{0.72f, 0.72f, 0.72f}, ks; ///< 0..1, as they are written
    float ns = 0;                       ///< specular exponent
    float opacity = 1;                  ///< 0 clear, 1 opaque
    VERTEX ke;                          ///< light of its own
    MaterialMap kdMap, ksMap;           ///< for the diffuse and the specular colour
    MaterialMap bumpMap, normalMap;     ///< heights; normals in tangent space
    float bumpStrength = 1;             ///< factor of the heights
};

/// Reads the text of a material file. Any bytes end in a list, perhaps an empty one; numbers that make no sense are
/// brought into range. @param name stands before each warning
VELMAR_HOST_EXPORT void ReadMaterialText(const char* text, std::size_t size, const BString& name,
                                         BArray<MaterialRecord>& materials, BArray<BString>& warnings);

/// Reads a material file, plain or gzip. @return empty, or why it could not be read
VELMAR_HOST_EXPORT BString ReadMaterialFile(const BPath& path, BArray<MaterialRecord>& materials,
                                            BArray<BString>& warnings);
} // namespace vx
