// VelmarBase: command line.
#include "Cli.h"

#include "base/BDir.h"
#include "base/BFile.h"
#include "base/BText.h"

#include <CLI/CLI.hpp>

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

static void Print(const BString& place, std::int64_t line, const BString& text)
{
    std::string message = "velmar: ";
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

// --- Inputs

Input::~Input()
{
    std::error_code ignored;
    if (mTemporary)
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
    mPath = BDir::Temporary().Joined("velmar-" + MakeUuidString() + ".obj");
    BFile file(mPath);
    file.SetCompression(false); // bytes go through as they come
    if (file.Open(BFile::Mode::Write) != 0)
    {
        mError = BString("cannot be kept in ") + mPath.FullPath() + ": " + file.LastError();
        return false;
    }
    mTemporary = true;
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

// --- Grammar

CLI::App* AddVerb(CLI::App& app, const char* name, const char* purpose)
{
    CLI::App* const verb = app.add_subcommand(name, purpose);
    verb->set_version_flag("--version", "velmar " VELMAR_VERSION, "Print the version and leave");
    return verb;
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

} // namespace vx::cli
