// VelmarBase: command line.
#include "PictureOptions.h"

#include "ModelFile.h"

#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "mesh/VXGeom.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <charconv>
#include <cstdio>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vx::cli
{

namespace
{

/// In the order of VXPickKind, after Nothing.
const std::vector<std::string> kKinds = {"object", "polygon", "edge", "vertex"};

struct Pixel
{
    int x, y;
};

std::optional<Pixel> ReadPixel(const std::string& text)
{
    Pixel pixel{};
    const char* const end = text.data() + text.size();
    const auto x = std::from_chars(text.data(), end, pixel.x);
    if (x.ec != std::errc() || x.ptr == end || *x.ptr != ',')
        return std::nullopt;
    const auto y = std::from_chars(x.ptr + 1, end, pixel.y);
    if (y.ec != std::errc() || y.ptr != end || pixel.x < 0 || pixel.y < 0)
        return std::nullopt;
    return pixel;
}

std::string CheckPixel(const std::string& text)
{
    return ReadPixel(text) ? "" : "'" + text + "' is no pixel, expected X,Y counted from 0,0 in the upper left corner";
}

struct PickArguments : PictureArguments
{
    std::string at, kind = "polygon";
    float radius = 8;
    bool json = false;

protected:
    BString UsageProblem() const override
    {
        const Pixel pixel = *ReadPixel(at);
        if (pixel.x < picture.width && pixel.y < picture.height)
            return PictureArguments::UsageProblem();
        return BString::Format("--at: %d,%d lies outside a picture of %d x %d pixels", pixel.x, pixel.y, picture.width,
                               picture.height);
    }
};

// --- What is told. Numbers of elements begin with 1, as in files and for 'velmar select'.

nlohmann::ordered_json FactsOf(const PickResult& result)
{
    const VXPickHit& hit = result.hit;
    nlohmann::ordered_json facts = {{"kind", hit ? kKinds[std::size_t(hit.kind) - 1] : "nothing"}};
    if (!hit)
        return facts;
    facts["object"] = result.object->ExternalName().Std();
    if (hit.kind == VXPickKind::Edge)
        facts["edge"] = hit.edge + 1;
    if (hit.kind == VXPickKind::Edge || hit.kind == VXPickKind::Vertex)
        for (const std::int32_t vertex : hit.verts)
            if (vertex >= 0)
                facts["vertices"].push_back(vertex + 1);
    if (hit.kind != VXPickKind::Object)
    {
        const GEOM& record = *result.geom->Geom();
        const ELEMENT& poly = *record.Poly(hit.polygon);
        facts["polygon"] = hit.polygon + 1;
        facts["corners"] = nlohmann::json::array();
        for (std::int32_t k = 0; k < poly.length; ++k)
            facts["corners"].push_back(record.sets[poly.start + k] + 1);
        facts["groups"] = nlohmann::json::array();
        for (std::int64_t i = 0; i < record.groupNames.Count(); ++i)
            if (poly.GroupWord(1 + i / 32) >> (i % 32) & 1)
                facts["groups"].push_back(record.groupNames[i].Std());
        if (poly.material < record.materials.Count())
            facts["material"] = record.materials[poly.material].name.Std();
    }
    facts["depth"] = result.depth;
    facts["position"] = {result.position.x, result.position.y, result.position.z};
    return facts;
}

std::string TextOf(const nlohmann::ordered_json& fact)
{
    if (fact.is_string())
        return fact.get<std::string>();
    if (fact.is_number_float())
        return BString::Format("%.6g", fact.get<double>()).Std();
    if (!fact.is_array())
        return fact.dump();
    std::string list;
    for (const nlohmann::ordered_json& entry : fact)
        list += (list.empty() ? "" : " ") + TextOf(entry);
    return list;
}

void Print(const nlohmann::ordered_json& facts, bool json)
{
    if (json)
        return PrintJson(stdout, facts);
    const std::string kind = facts["kind"];
    std::printf("%s\n", kind.c_str());
    for (const auto& [name, fact] : facts.items())
        if (name != "kind" && !(fact.is_array() && fact.empty()))
            std::printf("  %-9s %s\n", name.c_str(), TextOf(fact).c_str());
}

// --- The verb

int RunPick(PickArguments& arguments)
{
    const Pixel pixel = *ReadPixel(arguments.at);
    arguments.picture.shadows = false; // changes nothing of where things are
    Stopwatch watch(arguments.verbose);
    Preview preview;
    if (const int code = arguments.Open(preview, {}, watch); code != kDone)
        return code;
    const PreviewOptions& options = arguments.picture;
    VXScene& scene = preview.Scene();
    scene.SetPickObject(arguments.kind == "object");
    scene.SetPickPolys(arguments.kind == "polygon");
    scene.SetPickEdges(arguments.kind == "edge");
    scene.SetPickVerts(arguments.kind == "vertex");
    PickResult result;
    if (!preview.Pick(options, preview.FitToScene(options), pixel.x, pixel.y, result, arguments.radius))
        return Fail(kFailed, "", 0, preview.Error());
    watch.Tell("picked");
    for (const BString& warning : preview.Warnings())
        Warn(warning);
    Print(FactsOf(result), arguments.json);
    return FinishStandardOutput();
}

} // namespace

void AddPickVerb(CLI::App& app, int& exitCode)
{
    const auto arguments = std::make_shared<PickArguments>();
    CLI::App* const verb = AddVerb(app, "pick", "Tell what stands at a pixel of a picture of models");
    arguments->AddModels(*verb);
    verb->add_option("--at", arguments->at, "The pixel, counted from 0,0 in the upper left corner")
        ->required()
        ->type_name("X,Y")
        ->check(CLI::Validator(CheckPixel, ""));
    verb->add_option("--kind", arguments->kind, "What to pick")
        ->type_name("object|polygon|edge|vertex")
        ->check(Choice("kind of thing to pick", kKinds))
        ->capture_default_str();
    AddNumber(*verb, "--radius", arguments->radius, 0, 64,
              "How far from the pixel an edge or a vertex may be, in pixels");
    arguments->AddSize(*verb, "1280x720", "Size of the picture in pixels");
    arguments->AddView(*verb);
    arguments->AddSurface(*verb);
    verb->add_flag("--json", arguments->json, "Tell in one line of JSON");
    verb->footer("The picture is the one that 'velmar preview' draws with the same options. Polygons, edges and\n"
                 "vertices have numbers from 1 up, as in the model or, with --subdivide, in the surface that is\n"
                 "shown. Where nothing stands at the pixel, that is told too, and is no failure.");
    verb->callback([arguments, &exitCode] { exitCode = RunPick(*arguments); });
}

} // namespace vx::cli
