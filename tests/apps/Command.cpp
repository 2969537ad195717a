#include "Command.h"

#include "base/BFile.h"
#include "base/BText.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

#ifndef _WIN32
#include <sys/wait.h>
#endif

namespace fs = std::filesystem;

std::string ReadWhole(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

std::string Gzipped(const std::string& bytes)
{
    const fs::path path = fs::temp_directory_path() / ("velmar-test-" + MakeUuidString().Std());
    BFile file(BPath(BString(path.string())));
    file.SetCompression(true);
    const bool written = file.Open(BFile::Mode::Write) == 0 && file.Write(bytes) == 0 && file.Close() == 0;
    const std::string packed = written ? ReadWhole(path) : "";
    fs::remove(path);
    return packed;
}

Workplace::Workplace()
{
    const std::u8string name = u8"velmar tést \u30e2\u30c7\u30eb ";
    mFolder = fs::temp_directory_path() / (fs::path(name) += MakeUuidString().Std());
    fs::create_directories(mFolder);
}

Workplace::~Workplace()
{
    std::error_code ignored;
    fs::remove_all(mFolder, ignored);
}

void Workplace::Write(const std::string& name, const std::string& bytes) const
{
    const fs::path path = mFolder / fs::path(std::u8string(name.begin(), name.end()));
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string Workplace::Read(const std::string& name) const { return ReadWhole(mFolder / name); }
bool Workplace::Has(const std::string& name) const { return fs::exists(mFolder / name); }

std::vector<std::string> Workplace::Names() const
{
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(mFolder))
        names.push_back(fs::relative(entry.path(), mFolder).generic_string());
    std::sort(names.begin(), names.end());
    return names;
}

// Single quotes keep everything for a POSIX shell but themselves.
static std::string Quoted(const std::string& text)
{
#ifdef _WIN32
    return "\"" + text + "\"";
#else
    std::string quoted(1, '\'');
    for (char c : text)
    {
        if (c == '\'')
            quoted += "'\\'"; // ends, gives the quote itself, begins anew with the quote below
        quoted += c;
    }
    quoted += '\'';
    return quoted;
#endif
}

Outcome Workplace::Run(const std::string& program, const std::vector<std::string>& arguments,
                       const std::string& input) const
{
    // Captured beside the workplace, so that Names() sees only what the program itself leaves.
    const std::string beside = mFolder.string() + ".captured-";
    std::string command = "cd ";
    command.append(Quoted(mFolder.string())).append(" && ").append(Quoted(program));
    for (const std::string& argument : arguments)
        command.append(" ").append(Quoted(argument));
    command.append(" > ").append(Quoted(beside + "out")).append(" 2> ").append(Quoted(beside + "err"));
    command.append(" < ").append(input.empty() ? std::string("/dev/null") : Quoted(input));

    Outcome outcome;
    const int status = std::system(command.c_str());
#ifdef _WIN32
    outcome.exitCode = status;
#else
    outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
    outcome.out = ReadWhole(beside + "out");
    outcome.err = ReadWhole(beside + "err");
    fs::remove(beside + "out");
    fs::remove(beside + "err");
    return outcome;
}
