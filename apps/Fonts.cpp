// VelmarBase: command line.
#include "FontChoice.h"
#include "ModelFile.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <memory>

namespace vx::cli
{

namespace
{

int RunFonts(bool json)
{
    const SystemFonts fonts;
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const VXFTFace* const face : fonts.Faces())
        if (json)
            list.push_back({{"name", face->Name().Std()}, {"file", face->Path().FullPath().Std()}});
        else
            std::printf("%s\n", face->Name().CString());
    if (json)
        PrintJson(stdout, list);
    return FinishStandardOutput();
}

} // namespace

void AddFontsVerb(CLI::App& app, int& exitCode)
{
    const auto json = std::make_shared<bool>(false);
    CLI::App* const verb = AddVerb(app, "fonts", "List the fonts that text can be made of");
    verb->add_flag("--json", *json, "One line of JSON, with the file of each font");
    verb->footer("These are the TrueType and OpenType files in the font folders of the system and of the user.");
    verb->callback([json, &exitCode] { exitCode = RunFonts(*json); });
}

} // namespace vx::cli
