// VelmarBase: command line.
#pragma once

#include "base/BPath.h"
#include "base/BString.h"

#include <cstdint>

namespace CLI
{
class App;
class Option;
} // namespace CLI

/// @file
/// What the verbs share: exit codes, messages, inputs.

namespace vx::cli
{

enum ExitCode : int
{
    kDone = 0,
    kFailed = 1,     ///< the input could not be used, or the work failed
    kWrongUsage = 2, ///< arguments that make no sense, before anything was touched
    kNoOpenGL = 3,
};

// --- Messages: one line each on standard error, "velmar: PLACE:LINE: TEXT". The place (a file or an option) is left
// out when empty, the line when 0. Control characters in names cannot break the line.

int Fail(ExitCode code, const BString& place, std::int64_t line, const BString& text); ///< answers the code
void Warn(const BString& text); ///< "velmar: warning: TEXT", which begins with its place
void Note(const BString& text); ///< what --verbose asks for

/// An input as the user named it: a file, or "-" for standard input, which is kept in a temporary file while this
/// object lives, so that everything else reads files.
class Input
{
public:
    explicit Input(const BString& name) : mName(name), mPath(name) {}
    ~Input();
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    /// False when the input is not a readable file; Error() then says why, and what was expected.
    bool Open();
    const BString& Error() const { return mError; }
    const BString& Name() const { return mName; } ///< for messages
    const BPath& Path() const { return mPath; }   ///< to read from
    bool IsStandardInput() const { return mTemporary; }

private:
    bool SpoolStandardInput();

    BString mName, mError;
    BPath mPath;
    bool mTemporary = false;
};

// --- Grammar

/// A verb with the options that all have.
CLI::App* AddVerb(CLI::App& app, const char* name, const char* purpose);
/// An option with a number in [low, high]; anything else, NaN too, is wrong usage.
CLI::Option* AddNumber(CLI::App& verb, const char* name, float& value, double low, double high, const char* purpose);

// Each verb adds itself to the grammar; `exitCode` is set when its verb ran.

void AddPreviewVerb(CLI::App& app, int& exitCode);
void AddInfoVerb(CLI::App& app, int& exitCode);

} // namespace vx::cli
