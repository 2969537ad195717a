// VelmarBase: command line.
#include "PictureOptions.h"

#include "host/image/Sheet.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace vx::cli
{

namespace
{

struct StylesArguments : PictureArguments
{
    std::string output = "styles.png";
    SheetLook look;
};

int RunStyles(StylesArguments& arguments)
{
    Stopwatch watch(arguments.verbose);
    Preview preview;
    if (const int code = arguments.Open(preview, {arguments.output}, watch); code != kDone)
        return code;
    std::vector<PicturePtr> pictures;
    std::vector<SheetCell> cells;
    PreviewOptions options = arguments.picture;
    for (int i = 0; i < kNumDrawModes; ++i)
    {
        options.mode = DrawMode(i);
        pictures.push_back(preview.Render(options));
        if (!pictures.back())
            return Fail(kFailed, "", 0, preview.Error());
        cells.push_back({pictures.back().get(), PresetOf(options.mode).name});
    }
    watch.Tell(BString::Format("drawn %d styles", kNumDrawModes));
    const Sheet sheet = ComposeSheet(cells, arguments.look);
    if (!sheet.picture)
        return Fail(kFailed, "", 0, sheet.error);
    if (!sheet.captionProblem.IsEmpty())
        Warn("the sheet lacks captions: " + sheet.captionProblem);
    return WritePicture(*sheet.picture, arguments.output, preview, watch);
}

} // namespace

void AddStylesVerb(CLI::App& app, int& exitCode)
{
    const auto arguments = std::make_shared<StylesArguments>();
    CLI::App* const verb = AddVerb(app, "styles", "Show models in all draw modes on one sheet");
    arguments->AddModels(*verb);
    arguments->AddOutput(*verb, arguments->output, "Sheet to write, replaced when it exists; - is standard output");
    arguments->AddSize(*verb, "320x240", "Size of each picture in pixels");
    AddWholeNumber(*verb, "--columns", arguments->look.columns, 1, kNumDrawModes, "Pictures side by side");
    arguments->AddView(*verb);
    arguments->AddLook(*verb);
    arguments->AddSurface(*verb);
    arguments->AddMaterials(*verb);
    verb->callback([arguments, &exitCode] { exitCode = RunStyles(*arguments); });
}

} // namespace vx::cli
