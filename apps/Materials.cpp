// VelmarBase: command line.
#include "MaterialFiles.h"
#include "ModelFile.h"
#include "PictureOptions.h"

#include "host/image/Sheet.h"

#include <CLI/CLI.hpp>

#include <cmath>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

namespace vx::cli
{

namespace
{

// A ball whose texture coordinates run twice around, so that what is square on the picture is about square on it.
std::string BallText()
{
    constexpr int kRound = 96, kRings = 48;
    constexpr double kRepeats = 2;
    std::string text = "o Ball\nv 0 2 0\nv 0 0 0\n";
    for (int ring = 1; ring < kRings; ++ring)
        for (int i = 0; i < kRound; ++i)
        {
            const double polar = std::numbers::pi * ring / kRings, around = 2 * std::numbers::pi * i / kRound;
            text += BString::Format("v %.6f %.6f %.6f\n", std::sin(polar) * std::sin(around), 1 + std::cos(polar),
                                    std::sin(polar) * std::cos(around));
        }
    for (int ring = 0; ring <= kRings; ++ring)
        for (int i = 0; i <= kRound; ++i)
            text += BString::Format("vt %.6f %.6f\n", kRepeats * i / kRound, 1 - double(ring) / kRings);

    const auto corner = [&](int ring, int i)
    {
        const int vertex = ring == 0 ? 1 : ring == kRings ? 2 : 3 + (ring - 1) * kRound + i % kRound;
        text += BString::Format(" %d/%d", vertex, 1 + ring * (kRound + 1) + i);
    };
    text += "s 1\nusemtl Ball\n";
    for (int ring = 0; ring < kRings; ++ring)
        for (int i = 0; i < kRound; ++i)
        {
            text += "f";
            corner(ring, i);
            corner(ring + 1, i);
            if (ring + 1 < kRings)
                corner(ring + 1, i + 1);
            if (ring > 0)
                corner(ring, i + 1);
            text += "\n";
        }
    return text;
}

struct MaterialsArguments : PictureArguments
{
    std::vector<std::string> inputs;
    std::string output = "materials.png";
    SheetLook look;
};

int RunMaterials(MaterialsArguments& arguments)
{
    Stopwatch watch(arguments.verbose);
    std::vector<NamedMaterial> materials;
    for (const std::string& name : arguments.inputs)
        if (const int code = ReadMaterialsInput(name, materials); code != kDone)
            return code;
    if (materials.empty())
        return Fail(kFailed, ShownName(arguments.inputs.front()), 0, "there are no materials to show");
    watch.Tell(BString::Format("read %d materials", int(materials.size())));

    Preview preview;
    arguments.SetModel("ball", BallText());
    arguments.AlsoReads(arguments.inputs);
    if (const int code = arguments.Open(preview, {arguments.output}, watch); code != kDone)
        return code;
    std::vector<PicturePtr> pictures;
    std::vector<SheetCell> cells;
    for (NamedMaterial& material : materials)
    {
        const BString name = material.name;
        std::vector<NamedMaterial> one;
        one.push_back(std::move(material));
        preview.ApplyMaterials(std::move(one));
        pictures.push_back(preview.Render(arguments.picture));
        if (!pictures.back())
            return Fail(kFailed, "", 0, preview.Error());
        cells.push_back({pictures.back().get(), name});
    }
    watch.Tell(BString::Format("drawn %d materials", int(materials.size())));
    const Sheet sheet = ComposeSheet(cells, arguments.look);
    if (!sheet.picture)
        return Fail(kFailed, "", 0, sheet.error);
    if (!sheet.captionProblem.IsEmpty())
        Warn("the materials have no captions: " + sheet.captionProblem);
    return WritePicture(*sheet.picture, arguments.output, preview, watch);
}

} // namespace

void AddMaterialsVerb(CLI::App& app, int& exitCode)
{
    const auto arguments = std::make_shared<MaterialsArguments>();
    CLI::App* const verb = AddVerb(app, "materials", "Show the materials of JSON files on balls, on one sheet");
    verb->add_option("INPUT", arguments->inputs, "Material files, plain or gzip; - is standard input")
        ->required()
        ->type_name("");
    verb->add_flag("-v,--verbose", arguments->verbose, "Say on standard error what is done");
    arguments->AddOutput(*verb, arguments->output, "Sheet to write, replaced when it exists; - is standard output");
    arguments->AddSize(*verb, "240x240", "Size of each picture in pixels");
    AddWholeNumber(*verb, "--columns", arguments->look.columns, 1, 100, "Pictures side by side");
    arguments->AddShaders(*verb);
    arguments->AddShaderLog(*verb);
    arguments->AddView(*verb);
    arguments->AddLook(*verb);
    verb->callback([arguments, &exitCode] { exitCode = RunMaterials(*arguments); });
}

} // namespace vx::cli
