// VelmarBase: viewer.
#pragma once

#include "base/BPath.h"

#include <cstdint>
#include <filesystem>
#include <vector>

namespace vx::view
{

/// Notices when files change. Asked now and then rather than told, which works on every system and file system; a file
/// counts as changed when it has been still between two questions, so that one that is just being written is left
/// alone.
class FileWatch
{
public:
    /// Watches these and no others: those that are new here as they are now, the others as they were told last. Missing
    /// ones count too, when they appear.
    void Watch(const std::vector<BPath>& files);
    bool Changed(); ///< whether any is another one than at Watch or at the last yes
    const std::vector<BPath>& Files() const { return mFiles; }

private:
    struct State
    {
        std::filesystem::file_time_type time{};
        std::uintmax_t size = 0;
        bool there = false;

        friend bool operator==(const State&, const State&) = default;
    };
    static State StateOf(const BPath& file);
    std::vector<State> StatesNow() const;

    std::vector<BPath> mFiles;
    std::vector<State> mKnown; ///< what has been told
    std::vector<State> mLast;  ///< at the last question
};

} // namespace vx::view
