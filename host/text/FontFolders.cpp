#include "host/text/FontFolders.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <system_error>
#include <vector>

namespace vx
{
namespace
{
/// Where fonts are kept: a folder below the one that a variable of the environment names.
struct Place
{
    const char* variable; ///< null: the folder stands alone
    const char* folder;
};

// Every system has some of them; the others do not exist there, so nothing needs to know the system.
constexpr Place kPlaces[] = {
    {nullptr, "/usr/share/fonts"},
    {nullptr, "/usr/local/share/fonts"},
    {nullptr, "/System/Library/Fonts"},
    {nullptr, "/Library/Fonts"},
    {"WINDIR", "Fonts"},
    {"LOCALAPPDATA", "Microsoft/Windows/Fonts"},
    {"HOME", ".fonts"},
    {"HOME", ".local/share/fonts"},
    {"XDG_DATA_HOME", "fonts"},
    {"HOME", "Library/Fonts"},
};

// The sans fonts that systems come with, in the order in which they are liked.
constexpr const char* kSansFonts[] = {
    "DejaVuSans.ttf", "NotoSans-Regular.ttf", "LiberationSans-Regular.ttf", "FreeSans.ttf", "FreeSans.otf",
    "Ubuntu-R.ttf",   "OpenSans-Regular.ttf", "Roboto-Regular.ttf",         "segoeui.ttf",  "Arial.ttf",
    "arial.ttf"};

void AddWithFoldersBelow(const std::filesystem::path& top, std::vector<std::filesystem::path>& folders)
{
    std::error_code failed;
    std::vector<std::filesystem::path> found{top};
    auto at = std::filesystem::recursive_directory_iterator(
        top, std::filesystem::directory_options::skip_permission_denied, failed);
    for (; !failed && at != std::filesystem::recursive_directory_iterator(); at.increment(failed))
    {
        std::error_code unknown;
        if (at->is_directory(unknown) && !at->is_symlink(unknown))
            found.push_back(at->path());
    }
    std::sort(found.begin() + 1, found.end());
    for (std::filesystem::path& folder : found)
        if (std::find(folders.begin(), folders.end(), folder) == folders.end())
            folders.push_back(std::move(folder));
}
} // namespace

static std::vector<std::filesystem::path> FindFolders()
{
    std::vector<std::filesystem::path> folders;
    for (const Place& place : kPlaces)
    {
        const char* const base = place.variable ? std::getenv(place.variable) : "";
        if (!base || (place.variable && !*base))
            continue;
        const std::filesystem::path top = std::filesystem::path(base) / place.folder;
        std::error_code unknown;
        if (std::filesystem::is_directory(top, unknown))
            AddWithFoldersBelow(top, folders);
    }
    return folders;
}

BArray<BPath> SystemFontFolders()
{
    BArray<BPath> paths;
    try
    {
        for (const std::filesystem::path& folder : FindFolders())
        {
            const std::u8string utf8 = folder.u8string();
            paths.Append(BPath(BString(std::string_view(reinterpret_cast<const char*>(utf8.data()), utf8.size()))));
        }
    }
    catch (const std::exception&)
    {
        // Out of memory, or a variable that is no name of a file: the folders found so far.
    }
    return paths;
}

BArray<BPath> SystemSansFonts()
{
    const BArray<BPath> folders = SystemFontFolders();
    BArray<BPath> files;
    for (const char* const name : kSansFonts)
        for (const BPath& folder : folders)
            if (const BPath file = folder.Joined(name); file.IsFile())
                files.Append(file);
    return files;
}
} // namespace vx
