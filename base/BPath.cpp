// FenwickBase: foundation of the VelmarBase project.
#include "base/BPath.h"

#include <string>
#include <system_error>

namespace
{
std::filesystem::path FromUtf8(std::string_view utf8)
{
    try
    {
        return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
    }
    catch (const std::exception&) // bytes that are no UTF-8, on systems whose paths are not bytes
    {
        return {};
    }
}

BString ToUtf8(const std::filesystem::path& path)
{
    try
    {
        const std::u8string utf8 = path.u8string();
        return BString(std::string(utf8.begin(), utf8.end()));
    }
    catch (const std::exception&)
    {
        return {};
    }
}

BPath FromStd(const std::filesystem::path& path) { return BPath(ToUtf8(path)); }
} // namespace

BPath::BPath(const BString& utf8) : mPath(FromUtf8(utf8)) {}

BString BPath::FullPath() const
{
    std::filesystem::path native = mPath;
    return ToUtf8(native.make_preferred());
}

BString BPath::FileName() const { return ToUtf8(mPath.filename()); }

BString BPath::BaseName() const { return ToUtf8(mPath.stem()); }

BString BPath::Extension() const { return ToUtf8(mPath.extension()).Mid(1); }

BPath BPath::Parent() const { return FromStd(mPath.parent_path()); }

BPath BPath::Joined(const BString& component) const { return FromStd(mPath / FromUtf8(component)); }

BPath BPath::WithExtension(const BString& extension) const
{
    std::filesystem::path changed = mPath;
    return FromStd(changed.replace_extension(FromUtf8(extension)));
}

BPath BPath::Absolute() const
{
    std::error_code failed;
    const std::filesystem::path absolute = std::filesystem::absolute(mPath, failed);
    return failed ? *this : FromStd(absolute);
}

bool BPath::Exists() const
{
    std::error_code failed;
    return std::filesystem::exists(mPath, failed);
}

bool BPath::IsFile() const
{
    std::error_code failed;
    return std::filesystem::is_regular_file(mPath, failed);
}

bool BPath::IsFolder() const
{
    std::error_code failed;
    return std::filesystem::is_directory(mPath, failed);
}
