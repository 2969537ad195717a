// Running the built programs from tests, in a folder of their own.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// What a program left behind.
struct Outcome
{
    int exitCode = -1;
    std::string out, err;
};

/// A fresh folder in which a test's programs run; removed with all it holds. Its name has a space and letters outside
/// ASCII, so that every test meets such a path.
class Workplace
{
public:
    Workplace();
    ~Workplace();
    Workplace(const Workplace&) = delete;
    Workplace& operator=(const Workplace&) = delete;

    const std::filesystem::path& Folder() const { return mFolder; }
    void Write(const std::string& name, const std::string& bytes) const; ///< missing folders are made
    std::string Read(const std::string& name) const;                     ///< empty when it is not there
    bool Has(const std::string& name) const;
    std::vector<std::string> Names() const; ///< of all files and folders, in order

    /// Runs a program here and waits for it. @param input file in the workplace to read from, or nothing
    Outcome Run(const std::string& program, const std::vector<std::string>& arguments,
                const std::string& input = "") const;

private:
    std::filesystem::path mFolder;
};

std::string ReadWhole(const std::filesystem::path& path);
std::string Gzipped(const std::string& bytes);
