// VelmarBase: command line.
#include "ModelFile.h"

#include "mesh/VXGeom.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <memory>
#include <string>

namespace vx::cli
{

namespace
{

constexpr double kLargestTolerance = 1e9; // model units

struct WeldArguments
{
    std::string input;
    float tolerance = 0.00001f;
    ModelOutput output;
};

int RunWeld(const WeldArguments& arguments)
{
    const ModelOutput& output = arguments.output;
    Stopwatch watch(output.verbose);
    VXGeom geom;
    if (const int code = output.Open(arguments.input, geom, watch); code != kDone)
        return code;

    const int before = geom.NumVerts(false);
    geom.SetGeomChanged(false);
    geom.Weld(arguments.tolerance);
    if (!geom.GeomChanged())
        return Fail(kFailed, ShownName(arguments.input), 0, "out of memory");
    const int after = geom.NumVerts(false);
    watch.Tell(BString::Format("welded within %g", double(arguments.tolerance)));

    return output.Write(geom, BString::Format("%d vertices before, %d after", before, after),
                        {{"verticesBefore", before}, {"verticesAfter", after}});
}

} // namespace

void AddWeldVerb(CLI::App& app, int& exitCode)
{
    const auto arguments = std::make_shared<WeldArguments>();
    CLI::App* const verb = AddVerb(app, "weld", "Merge vertices that lie in one place");
    arguments->output.AddTo(*verb, arguments->input);
    AddNumber(*verb, "--tolerance", arguments->tolerance, 0, kLargestTolerance,
              "Vertices at most this far apart, in the model's units, become the first of them; 0 merges equal "
              "positions alone")
        ->default_str("0.00001"); // the number itself would show as 1e-05
    verb->footer("Polygons, groups, materials, texture coordinates and normals stay as they are.");
    verb->callback([arguments, &exitCode] { exitCode = RunWeld(*arguments); });
}

} // namespace vx::cli
