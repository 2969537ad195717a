// VelmarBase: viewer.
#include "FileWatch.h"

#include <algorithm>
#include <system_error>

namespace vx::view
{

FileWatch::State FileWatch::StateOf(const BPath& file)
{
    std::error_code timeProblem, sizeProblem;
    State state;
    state.time = std::filesystem::last_write_time(file.Std(), timeProblem);
    state.size = std::filesystem::file_size(file.Std(), sizeProblem);
    state.there = !timeProblem && !sizeProblem;
    return state.there ? state : State();
}

std::vector<FileWatch::State> FileWatch::StatesNow() const
{
    std::vector<State> states(mFiles.size());
    std::transform(mFiles.begin(), mFiles.end(), states.begin(), StateOf);
    return states;
}

void FileWatch::Watch(const std::vector<BPath>& files)
{
    std::vector<State> known;
    for (const BPath& file : files)
    {
        const auto before = std::find(mFiles.begin(), mFiles.end(), file);
        known.push_back(before == mFiles.end() ? StateOf(file) : mKnown[std::size_t(before - mFiles.begin())]);
    }
    mFiles = files;
    mKnown = known;
    mLast = std::move(known);
}

// A file that is gone for a moment is being replaced: only what is there can have changed.
bool FileWatch::Changed()
{
    std::vector<State> now = StatesNow();
    const bool still = now == mLast;
    mLast = now;
    bool changed = false;
    for (std::size_t i = 0; still && i < now.size(); ++i)
        if (now[i].there && now[i] != mKnown[i])
        {
            mKnown[i] = now[i];
            changed = true;
        }
    return changed;
}

} // namespace vx::view
