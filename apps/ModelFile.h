// VelmarBase: command line.
#pragma once

#include "Cli.h"
#include "base/GEOM_Obj.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdio>
#include <string>

class VXGeom;

/// @file
/// What verbs that make a model out of others share: reading, writing, and telling what was done.

namespace vx::cli
{

BString ShownName(const std::string& input); ///< for messages: the file's, or <stdin>

/// Says on standard error what a reader left out.
void WarnOfOddities(const BString& name, const GEOM_ReadReport& report);

/// Reads a model, with all that its file holds, into a wrapper that makes no crease vertices.
/// @return kDone, or the code of a failure that has been told
int ReadModel(const std::string& name, VXGeom& geom);

/// The options with which such a verb writes its model.
struct ModelOutput
{
    std::string name;
    bool json = false, verbose = false;

    void AddTo(CLI::App& verb);
    void AddTo(CLI::App& verb, std::string& input); ///< the same behind INPUT, for a verb with one model
    /// Reads a model that is to be written, in parts or whole, unless there is no place for the output. Names of
    /// material files that go by the model's folder then go by the output's. Told as "read".
    /// @return kDone, or the code of a failure that has been told
    int Open(const std::string& input, VXGeom& geom, Stopwatch& watch) const;
    /// Writes the model whole or not at all, and then one line on standard output of what was done: "NAME: TEXT", or
    /// `facts` led by the file's name. When the model itself goes there, or to a device, the text is left out and the
    /// facts go to standard error.
    /// @return kDone, or the code of a failure that has been told
    int Write(const VXGeom& geom, const BString& text, nlohmann::ordered_json facts) const;

private:
    int WriteToStandardOutput(const GEOM& record) const;
};

/// Facts as one line. A name is bytes of a file: what is not UTF-8 is replaced rather than refused.
void PrintJson(std::FILE* where, const nlohmann::ordered_json& facts);

/// Says so when standard output took not all that was printed. @return the exit code
int FinishStandardOutput();

} // namespace vx::cli
