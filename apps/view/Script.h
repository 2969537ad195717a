// VelmarBase: viewer.
#pragma once

#include "Controls.h"

#include <string>
#include <string_view>
#include <vector>

namespace vx::view
{

/// What a script asks of the window that runs it. Each answers empty, or what went wrong.
class ScriptHost
{
public:
    virtual ~ScriptHost() = default;
    virtual Session& GetSession() = 0;
    virtual Controls& GetControls() = 0;
    virtual BString Resize(int width, int height) = 0; ///< until the picture has so many pixels
    virtual BString Screenshot(const BPath& file) = 0; ///< of the picture alone
    virtual BString WindowShot(const BPath& file) = 0; ///< with the panels
    virtual void Wait(double seconds) = 0;             ///< goes on drawing what changes meanwhile
    virtual BString DrawNow() = 0;                     ///< draws what is stale
};

/// A list of commands, one in a line, that drive a viewer: for tests and for pictures made by hand or by night.
class Script
{
public:
    /// Checks every line, so that nothing is half done because of a slip further down.
    /// @param name stands before each message  @return false, with Error(), for anything that is no command
    bool Read(std::string_view text, const std::string& name);
    const BString& Error() const { return mError; } ///< "NAME:LINE: what is wrong, what was expected"

    bool IsAtEnd() const { return mNext == mLines.size(); }
    bool RunNext(ScriptHost& host); ///< false, with Error(), when the command failed

    static std::string Help(); ///< one line for each command

private:
    struct Line
    {
        int number;
        std::size_t command; ///< in the table
        std::vector<std::string> arguments;
    };
    bool Fail(int line, const BString& problem);

    std::string mName;
    std::vector<Line> mLines;
    std::size_t mNext = 0;
    BString mError;
};

} // namespace vx::view
