// VelmarBase: command line.
#include "Cli.h"

#include "base/BDir.h"
#include "base/BFile.h"
#include "base/BText.h"
#include "base/platform/Platform.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

namespace vx::cli
{

static std::string OneLine(std::string text)
{
    for (char& c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            c = '?';
    return text;
}

static const char* programName = "velmar";

void SetProgramName(const char* name) { programName = name; }

static void Print(const BString& place, std::int64_t line, const BString& text)
{
    std::string message = programName + std::string(": ");
    if (!place.IsEmpty())
        message += place.Std() + ":" + (line > 0 ? std::to_string(line) + ": " : " ");
    message = OneLine(message + text.Std()) + "\n";
    std::fputs(message.c_str(), stderr);
}

int Fail(ExitCode code, const BString& place, std::int64_t line, const BString& text)
{
    Print(place, line, text);
    return code;
}

void Warn(const BString& text) { Print("", 0, "warning: " + text); }
void Note(const BString& text) { Print("", 0, text); }

void Stopwatch::Tell(const BString& what)
{
    const auto now = std::chrono::steady_clock::now();
    if (mOn)
        Note(what + BString::Format(" (%.0f ms)", std::chrono::duration<double, std::milli>(now - mStart).count()));
    mStart = now;
}

Progress::Progress(const char* what, int total) : mWhat(what), mTotal(total), mOn(platform::ErrorsGoToTerminal()) {}

void Progress::Reach(int done)
{
    if (mOn)
        std::fprintf(stderr, "\r%s %d of %d", mWhat, done, mTotal);
}

Progress::~Progress()
{
    if (mOn)
        std::fprintf(stderr, "\r\x1B[K"); // clears the line
}

// --- Files

TemporaryFile::TemporaryFile(const char* extension)
    : mPath(BDir::Temporary().Joined("velmar-" + MakeUuidString() + extension))
{
}

TemporaryFile::~TemporaryFile()
{
    std::error_code ignored;
    std::filesystem::remove(mPath.Std(), ignored);
}

bool Input::Open()
{
    if (mName == "-")
        return SpoolStandardInput();
    BFile file(mPath);
    file.SetCompression(false); // content is the reader's business
    if (file.Open(BFile::Mode::Read) == 0)
        return true;
    mError = file.LastError() + ", expected a Wavefront OBJ file";
    return false;
}

bool Input::SpoolStandardInput()
{
    mName = "<stdin>";
#ifdef _WIN32
    _setmode(_fileno(stdin), _O_BINARY);
#endif
    mSpool = std::make_unique<TemporaryFile>(".obj");
    mPath = mSpool->Path();
    BFile file(mPath);
    file.SetCompression(false); // bytes go through as they come
    if (file.Open(BFile::Mode::Write) != 0)
    {
        mError = BString("cannot be kept in ") + mPath.FullPath() + ": " + file.LastError();
        return false;
    }
    char buffer[65536];
    bool written = true;
    while (const std::size_t got = std::fread(buffer, 1, sizeof buffer, stdin))
        written = written && file.Write(buffer, got) == 0;
    if (std::ferror(stdin))
        mError = "cannot be read, expected the text of a Wavefront OBJ file";
    else if (!written || file.Close() != 0)
        mError = BString("cannot be kept in ") + mPath.FullPath() + ": " + file.LastError();
    return mError.IsEmpty();
}

BString OutputProblem(const std::string& output, const std::vector<std::string>& inputs)
{
    if (output == "-")
        return {};
    const BPath path{BString(output)};
    for (const std::string& input : inputs)
    {
        std::error_code ignored;
        if (std::filesystem::equivalent(path.Std(), BPath(BString(input)).Std(), ignored))
            return "is also an input, expected another name";
    }
    BFile file(path);
    if (path.IsFolder())
        return "is a folder, expected a file to write to";
    if (file.Open(BFile::Mode::WriteAtomic) != 0)
        return file.LastError() + ", expected a place to write to";
    file.Discard();
    return {};
}

// --- Grammar

CLI::App* AddVerb(CLI::App& app, const char* name, const char* purpose)
{
    CLI::App* const verb = app.add_subcommand(name, purpose);
    verb->set_version_flag("--version", "velmar " VELMAR_VERSION, "Print the version and leave");
    return verb;
}

void AddVerbose(CLI::App& verb, bool& verbose)
{
    verb.add_flag("-v,--verbose", verbose, "Say on standard error what is done");
}

CLI::Option* AddNumber(CLI::App& verb, const char* name, float& value, double low, double high, const char* purpose)
{
    const auto check = [low, high](const std::string& text)
    {
        double number = 0; // no comparison holds for NaN
        if (CLI::detail::lexical_cast(text, number) && number >= low && number <= high)
            return std::string();
        return BString::Format("'%s' makes no sense, expected a number from %g to %g", text.c_str(), low, high).Std();
    };
    return verb.add_option(name, value, purpose)
        ->type_name("NUMBER")
        ->check(CLI::Validator(check, ""))
        ->capture_default_str();
}

CLI::Option* AddWholeNumber(CLI::App& verb, const char* name, int& value, int low, int high, const char* purpose)
{
    const auto check = [low, high](const std::string& text)
    {
        int number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error == std::errc() && end == text.data() + text.size() && number >= low && number <= high)
            return std::string();
        return BString::Format("'%s' makes no sense, expected a whole number from %d to %d", text.c_str(), low, high)
            .Std();
    };
    return verb.add_option(name, value, purpose)
        ->type_name("NUMBER")
        ->check(CLI::Validator(check, ""))
        ->capture_default_str();
}

std::string Listed(const std::vector<std::string>& names)
{
    std::string list;
    for (std::size_t i = 0; i < names.size(); ++i)
        list += (i == 0 ? "" : i + 1 < names.size() ? ", " : " or ") + names[i];
    return list;
}

std::string GroupsThereAre(std::vector<std::string> names)
{
    constexpr std::size_t kMost = 12;
    if (names.empty())
        return "there are no named groups";
    const std::size_t told = std::min(names.size(), kMost);
    const std::string rest = told < names.size() ? " and " + std::to_string(names.size() - told) + " more" : "";
    names.resize(told);
    return "expected " + Listed(names) + rest;
}

CLI::Validator Choice(const char* what, const std::vector<std::string>& choices)
{
    const auto check = [what = std::string(what), choices](const std::string& text)
    {
        return std::find(choices.begin(), choices.end(), text) != choices.end()
                   ? ""
                   : "'" + text + "' is no " + what + ", expected " + Listed(choices);
    };
    return {check, ""};
}

CLI::Validator OutputName(const char* what, const std::vector<std::string>& endings)
{
    const auto check = [what = std::string(what), endings](const std::string& name)
    {
        std::error_code ignored;
        const bool device = std::filesystem::is_other(name, ignored);
        const bool known =
            std::any_of(endings.begin(), endings.end(),
                        [&](const std::string& ending) { return BString(name).Lower().EndsWith(ending); });
        return name == "-" || device || known ? ""
                                              : "'" + name + "' is no name of " + what +
                                                    ", expected one that ends in " + Listed(endings) + ", or -";
    };
    return {check, ""};
}

} // namespace vx::cli
