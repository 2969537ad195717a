// VelmarBase: command line.
#include "PictureOptions.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace vx::cli
{

namespace
{

struct PreviewArguments : PictureArguments
{
    std::string output = "preview.png";
};

int RunPreview(PreviewArguments& arguments)
{
    Stopwatch watch(arguments.verbose);
    Preview preview;
    if (const int code = arguments.Open(preview, {arguments.output}, watch); code != kDone)
        return code;
    const PicturePtr picture = preview.Render(arguments.picture);
    if (!picture)
        return Fail(kFailed, "", 0, preview.Error());
    watch.Tell(BString::Format("drawn %d x %d pixels", picture->Width(), picture->Height()));
    return WritePicture(*picture, arguments.output, preview, watch);
}

} // namespace

void AddPreviewVerb(CLI::App& app, int& exitCode)
{
    const auto arguments = std::make_shared<PreviewArguments>();
    CLI::App* const verb = AddVerb(app, "preview", "Render models to a PNG picture");
    arguments->AddModels(*verb);
    arguments->AddOutput(*verb, arguments->output, "Picture to write, replaced when it exists; - is standard output");
    arguments->AddAll(*verb);
    verb->callback([arguments, &exitCode] { exitCode = RunPreview(*arguments); });
}

} // namespace vx::cli
