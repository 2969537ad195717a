#include "host/image/TextureTable.h"

#include <algorithm>

namespace vx
{
TextureTable::TextureTable() = default;

TextureTable::~TextureTable()
{
    for (const Entry& entry : mEntries)
        delete entry.picture;
}

std::int32_t TextureTable::Add(const BPath& path, BString& error)
{
    const BString name = path.Absolute().FullPath();
    for (std::int64_t i = 0; i < mEntries.Count(); ++i)
        if (mEntries[i].name == name)
            return std::int32_t(i) + kFirstIndex;
    PicturePtr picture = ReadPicture(path, error);
    if (!picture && !HasFailed(path))
        mFailed.Append(name);
    return picture ? Add(std::move(picture), name.CString()) : -1;
}

bool TextureTable::HasFailed(const BPath& path) const
{
    const BString name = path.Absolute().FullPath();
    return std::find(mFailed.begin(), mFailed.end(), name) != mFailed.end();
}

std::int32_t TextureTable::Add(PicturePtr picture, const char* name)
{
    if (!picture || !mEntries.Reserve(mEntries.Count() + 1))
        return -1;
    mEntries.Append(Entry{name, picture.release()});
    return std::int32_t(mEntries.Count()) - 1 + kFirstIndex;
}

const CPB_Offscreen* TextureTable::Picture(std::int32_t index) const
{
    const std::int64_t i = std::int64_t(index) - kFirstIndex;
    return i >= 0 && i < mEntries.Count() ? mEntries[i].picture : nullptr;
}
} // namespace vx
