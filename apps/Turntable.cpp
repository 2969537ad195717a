// VelmarBase: command line.
#include "PictureOptions.h"

#include "ModelFile.h"

#include "host/Turntable.h"
#include "host/image/Png.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vx::cli
{

namespace
{

constexpr int kMostFrames = 9999;

/// A name with a number in it, as "%d", "%4d" or "%04d" say. Such a text is read here and never taken for a format.
struct Pattern
{
    std::string before, after;
    int digits = 0; ///< at least so many
    char fill = ' ';

    std::string Name(int number) const
    {
        const std::string text = std::to_string(number);
        const std::size_t lack = std::size_t(digits) > text.size() ? std::size_t(digits) - text.size() : 0;
        return before + std::string(lack, fill) + text + after;
    }
};

std::optional<Pattern> ReadPattern(const std::string& text)
{
    Pattern pattern;
    const std::size_t percent = text.find('%');
    if (percent == std::string::npos)
        return std::nullopt;
    pattern.before = text.substr(0, percent);
    const char* at = text.c_str() + percent + 1;
    if (*at == '0')
    {
        pattern.fill = '0';
        ++at;
    }
    if (*at >= '1' && *at <= '9') // one figure: more digits than nine have no use
        pattern.digits = *at++ - '0';
    pattern.after = *at == 'd' ? at + 1 : "%";
    if (pattern.after.find('%') != std::string::npos)
        return std::nullopt;
    return pattern;
}

std::string CheckPattern(const std::string& text)
{
    return ReadPattern(text) ? ""
                             : "'" + text +
                                   "' names no frames, expected one %d, or %03d for three digits, and no other %, as "
                                   "in frame-%03d.png";
}

struct TurntableArguments : PictureArguments
{
    std::string output = "frame-%03d.png";
    int frames = 36;
};

// Empty, or what went wrong. By then nothing is left of the line that counts.
BString WriteFrames(Preview& preview, const PreviewOptions& options, const std::vector<std::string>& names)
{
    BArray<VERTEX> points, around;
    preview.GatherContent(options, points, around);
    const Turntable turntable({points.Data(), std::size_t(points.Count())},
                              {around.Data(), std::size_t(around.Count())},
                              float(options.width) / float(options.height), options.view);
    Progress progress("frame", int(names.size()));
    for (std::size_t i = 0; i < names.size(); ++i)
    {
        progress.Reach(int(i) + 1);
        const PicturePtr picture = preview.Render(options, turntable.At(360.0f * float(i) / float(names.size())));
        if (!picture)
            return preview.Error();
        if (const BString problem = WritePng(*picture, BPath(BString(names[i]))); !problem.IsEmpty())
            return problem;
    }
    return {};
}

int RunTurntable(TurntableArguments& arguments)
{
    const Pattern pattern = *ReadPattern(arguments.output);
    std::vector<std::string> names;
    for (int i = 1; i <= arguments.frames; ++i)
        names.push_back(pattern.Name(i));
    Stopwatch watch(arguments.verbose);
    Preview preview;
    if (const int code = arguments.Open(preview, names, watch); code != kDone)
        return code;
    if (const BString problem = WriteFrames(preview, arguments.picture, names); !problem.IsEmpty())
        return Fail(kFailed, "", 0, problem);
    for (const BString& warning : preview.Warnings())
        Warn(warning);
    watch.Tell(BString::Format("drawn and written %d frames", arguments.frames));
    std::printf("%s to %s\n", names.front().c_str(), names.back().c_str());
    return FinishStandardOutput();
}

} // namespace

void AddTurntableVerb(CLI::App& app, int& exitCode)
{
    const auto arguments = std::make_shared<TurntableArguments>();
    CLI::App* const verb = AddVerb(app, "turntable", "Render models to a row of PNG pictures, once round them");
    arguments->AddModels(*verb);
    arguments->AddOutput(*verb, arguments->output,
                         "Pictures to write, replaced when they exist: a name with %d, or %03d for three digits, where "
                         "the number stands, from 1 up");
    verb->get_option("--output")->check(CLI::Validator(CheckPattern, ""));
    AddWholeNumber(*verb, "--frames", arguments->frames, 1, kMostFrames, "Pictures for the whole way round");
    arguments->AddAll(*verb);
    verb->callback([arguments, &exitCode] { exitCode = RunTurntable(*arguments); });
}

} // namespace vx::cli
