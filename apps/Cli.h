// VelmarBase: command line.
#pragma once

#include "base/BPath.h"
#include "base/BString.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace CLI
{
class App;
class Option;
class Validator;
} // namespace CLI

/// @file
/// What the verbs share: exit codes, messages, inputs, outputs.

namespace vx::cli
{

enum ExitCode : int
{
    kDone = 0,
    kFailed = 1,     ///< the input could not be used, or the work failed
    kWrongUsage = 2, ///< arguments that make no sense, before anything was touched
    kNoOpenGL = 3,
};

// --- Messages: one line each on standard error, "velmar: PLACE:LINE: TEXT", led by the program's name. The place (a
// file or an option) is left out when empty, the line when 0. Control characters in names cannot break the line.

void SetProgramName(const char* name); ///< for programs other than velmar; the text is kept, not copied
int Fail(ExitCode code, const BString& place, std::int64_t line, const BString& text); ///< answers the code
void Warn(const BString& text); ///< "velmar: warning: TEXT", which begins with its place
void Note(const BString& text); ///< what --verbose asks for

/// What --verbose tells of a stretch of work.
class Stopwatch
{
public:
    explicit Stopwatch(bool on) : mOn(on) {}
    void Tell(const BString& what);

private:
    bool mOn;
    std::chrono::steady_clock::time_point mStart = std::chrono::steady_clock::now();
};

/// How far a long work is: a line on standard error that counts up while somebody sits before it. Gone at the end.
class Progress
{
public:
    Progress(const char* what, int total); ///< @param what "frame"
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    void Reach(int done);

private:
    const char* mWhat;
    int mTotal;
    bool mOn;
};

// --- Files

/// A name for a file that is gone when this object is.
class TemporaryFile
{
public:
    explicit TemporaryFile(const char* extension);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    const BPath& Path() const { return mPath; }

private:
    BPath mPath;
};

/// An input as the user named it: a file, or "-" for standard input, which is kept in a temporary file while this
/// object lives, so that everything else reads files.
class Input
{
public:
    explicit Input(const BString& name) : mName(name), mPath(name) {}

    /// False when the input is not a readable file; Error() then says why, and what was expected.
    bool Open();
    const BString& Error() const { return mError; }
    const BString& Name() const { return mName; } ///< for messages
    const BPath& Path() const { return mPath; }   ///< to read from
    bool IsStandardInput() const { return mSpool != nullptr; }

private:
    bool SpoolStandardInput();

    BString mName, mError;
    BPath mPath;
    std::unique_ptr<TemporaryFile> mSpool;
};

/// Tries an output before any work is done; nothing of it is left. Empty, or what is wrong with it.
BString OutputProblem(const std::string& output, const std::vector<std::string>& inputs);

// --- Grammar

/// A verb with the options that all have.
CLI::App* AddVerb(CLI::App& app, const char* name, const char* purpose);
void AddVerbose(CLI::App& verb, bool& verbose); ///< "--verbose"
/// An option with a number in [low, high]; anything else, NaN too, is wrong usage.
CLI::Option* AddNumber(CLI::App& verb, const char* name, float& value, double low, double high, const char* purpose);

/// A check of an output: a name with one of these endings, "-", or a device. @param what "a picture"
CLI::Validator OutputName(const char* what, const std::vector<std::string>& endings);
/// A check of a choice. @param what "draw mode"
CLI::Validator Choice(const char* what, const std::vector<std::string>& choices);
/// "a, b or c"
std::string Listed(const std::vector<std::string>& names);
/// The same of the groups of models, as "expected a, b and 7 more", or that there are none.
std::string GroupsThereAre(std::vector<std::string> names);

/// An option with a whole number in [low, high].
CLI::Option* AddWholeNumber(CLI::App& verb, const char* name, int& value, int low, int high, const char* purpose);

// Each verb adds itself to the grammar; `exitCode` is set when its verb ran.

void AddTurntableVerb(CLI::App& app, int& exitCode);
void AddPickVerb(CLI::App& app, int& exitCode);
void AddPreviewVerb(CLI::App& app, int& exitCode);
void AddStylesVerb(CLI::App& app, int& exitCode);
void AddMaterialsVerb(CLI::App& app, int& exitCode);
void AddShaderVerb(CLI::App& app, int& exitCode);
void AddInfoVerb(CLI::App& app, int& exitCode);
void AddSelectVerb(CLI::App& app, int& exitCode);
void AddWeldVerb(CLI::App& app, int& exitCode);
void AddTransferGroupsVerb(CLI::App& app, int& exitCode);
void AddSubdivideVerb(CLI::App& app, int& exitCode);
void AddTextVerb(CLI::App& app, int& exitCode); ///< where text was built in, as the next
void AddFontsVerb(CLI::App& app, int& exitCode);

} // namespace vx::cli
