// FenwickBase: foundation of the VelmarBase project.
#include "base/BDir.h"

#include <algorithm>
#include <system_error>

namespace
{
// On a mismatch only the last '*' has to take one byte more, so the time stays within the product of both lengths.
bool Matches(std::string_view name, std::string_view pattern)
{
    std::size_t n = 0, p = 0;
    std::size_t starAt = std::string_view::npos, starTook = 0;
    while (n < name.size())
    {
        if (p < pattern.size() && pattern[p] == '*')
        {
            starAt = p++;
            starTook = n;
        }
        else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n]))
        {
            ++p;
            ++n;
        }
        else if (starAt != std::string_view::npos)
        {
            p = starAt + 1;
            n = ++starTook;
        }
        else
            return false;
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}
} // namespace

int BDir::Open()
{
    mNames.Empty();
    std::error_code failed;
    std::filesystem::directory_iterator entry(mPath.Std(), failed);
    for (; !failed && entry != std::filesystem::directory_iterator(); entry.increment(failed))
    {
        const std::u8string name = entry->path().filename().u8string();
        if (!mNames.Append(BString(std::string(name.begin(), name.end()))))
            return -1;
    }
    if (failed)
        mNames.Empty();
    std::sort(mNames.begin(), mNames.end());
    return failed ? -1 : 0;
}

BArray<BString> BDir::List(const BString& pattern) const
{
    BArray<BString> matching;
    for (const BString& name : mNames)
        if (Matches(name, pattern) && !matching.Append(name))
            break;
    return matching;
}

int BDir::Create(const BPath& path)
{
    std::error_code failed;
    std::filesystem::create_directories(path.Std(), failed);
    return path.IsFolder() ? 0 : -1;
}

BPath BDir::Temporary()
{
    std::error_code failed;
    const std::u8string path = std::filesystem::temp_directory_path(failed).u8string();
    return failed ? BPath(".") : BPath(BString(std::string(path.begin(), path.end())));
}
