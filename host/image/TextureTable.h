// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BArray.h"
#include "base/BPath.h"
#include "base/BString.h"
#include "host/image/Picture.h"

#include <cstdint>

namespace vx
{
/// The textures that materials refer to by index (VXMaterial::TextureIndex). A file is read once, whoever names it.
/// Holds pictures only; the draw engine keeps what it uploads of them. Outlives the scenes whose materials point here.
class VELMAR_HOST_EXPORT TextureTable
{
public:
    /// Indices 0 and 1 are not given out: materials are born with -1 or 1, and sorting by texture starts above 1.
    static constexpr std::int32_t kFirstIndex = 2;

    TextureTable();
    ~TextureTable();
    TextureTable(const TextureTable&) = delete;
    TextureTable& operator=(const TextureTable&) = delete;

    /// Reads the picture, or finds it when it was read before. @return its index, -1 with the reason in `error`
    std::int32_t Add(const BPath& path, BString& error);
    bool HasFailed(const BPath& path) const; ///< it could not be read when it was asked for
    /// Takes a picture made in memory. @return its index, -1 when memory ran out
    std::int32_t Add(PicturePtr picture, const char* name);

    const CPB_Offscreen* Picture(std::int32_t index) const; ///< null for an index that was not given out
    std::int32_t Count() const { return std::int32_t(mEntries.Count()); }

private:
    struct Entry
    {
        BString name;
        CPB_Offscreen* picture;
    };
    BArray<Entry> mEntries;
    BArray<BString> mFailed; ///< names
};
} // namespace vx
