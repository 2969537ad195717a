// VelmarBase: command line.
#include "ModelFile.h"

#include "mesh/VXGeom.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <vector>

namespace vx::cli
{

namespace
{

struct TransferArguments
{
    std::string from, to, by = "proximity";
    ModelOutput output;
};

std::int64_t PolygonsInGroups(const GEOM& record)
{
    std::int64_t count = 0;
    for (std::int64_t i = 0; i < record.numPolys; ++i)
    {
        std::uint32_t named = 0; // word 0 is the smoothing groups
        for (std::int64_t word = 1; word < record.GroupWords(); ++word)
            named |= record.Poly(i)->GroupWord(word);
        count += named != 0;
    }
    return count;
}

// A source without materials has none to give: those that are there stay.
bool CopyByPolygon(const VXGeom& from, VXGeom& to)
{
    GEOM& record = *to.Geom();
    if (from.NumGeomMaterials() > 0)
        return to.CopyGroupsAndMaterials(&from) == 0;
    const BArray<GEOM_Material> materials = record.materials;
    const BArray<BString> files = record.materialFiles;
    std::vector<std::uint16_t> used(std::size_t(record.numPolys));
    for (std::int32_t i = 0; i < record.numPolys; ++i)
        used[std::size_t(i)] = record.Poly(i)->material;
    if (to.CopyGroupsAndMaterials(&from) != 0)
        return false;
    record.materials = materials;
    record.materialFiles = files;
    for (std::int32_t i = 0; i < record.numPolys; ++i)
        record.Poly(i)->material = used[std::size_t(i)];
    return true;
}

int Transfer(const TransferArguments& arguments, const VXGeom& from, VXGeom& to)
{
    const BString fromName = ShownName(arguments.from), toName = ShownName(arguments.to);
    if (to.NumPolys() == 0)
        return Fail(kFailed, toName, 0, "has no polygons, expected some to put into groups");
    bool done;
    if (arguments.by == "polygon")
    {
        if (from.NumPolys() != to.NumPolys())
            return Fail(kFailed, toName, 0,
                        BString::Format("has %d polygons, expected %d as in ", to.NumPolys(), from.NumPolys()) +
                            fromName + " to go by polygon");
        if (from.Geom()->groupNames.IsEmpty() && from.NumGeomMaterials() == 0)
            return Fail(kFailed, fromName, 0, "has no named groups and no materials, expected some to transfer");
        done = CopyByPolygon(from, to);
    }
    else
    {
        if (from.Geom()->groupNames.IsEmpty())
            return Fail(kFailed, fromName, 0, "has no named groups, expected some to transfer");
        done = to.CreateGroupsByProximity(&from) == 0;
    }
    return done ? int(kDone) : Fail(kFailed, toName, 0, "out of memory");
}

int RunTransfer(const TransferArguments& arguments)
{
    const ModelOutput& output = arguments.output;
    if (arguments.from == "-" && arguments.to == "-")
        return Fail(kWrongUsage, "", 0, "FROM and TO are both standard input, expected a file for one of them");
    if (const BString problem = OutputProblem(output.name, {arguments.from, arguments.to}); !problem.IsEmpty())
        return Fail(kFailed, BString(output.name), 0, problem);

    Stopwatch watch(output.verbose);
    VXGeom from, to;
    for (const auto& [name, geom] : {std::pair(&arguments.from, &from), std::pair(&arguments.to, &to)})
        if (const int code = output.Open(*name, *geom, watch); code != kDone)
            return code;
    if (const int code = Transfer(arguments, from, to); code != kDone)
        return code;
    watch.Tell("transferred by " + BString(arguments.by));

    const std::int64_t polygons = to.NumPolys(), inGroups = PolygonsInGroups(*to.Geom());
    const std::int64_t groups = to.Geom()->groupNames.Count();
    return output.Write(to,
                        BString::Format("%lld of %lld polygons in %lld %s", static_cast<long long>(inGroups),
                                        static_cast<long long>(polygons), static_cast<long long>(groups),
                                        groups == 1 ? "group" : "groups"),
                        {{"polygons", polygons}, {"polygonsInGroups", inGroups}, {"groups", groups}});
}

} // namespace

void AddTransferGroupsVerb(CLI::App& app, int& exitCode)
{
    const auto arguments = std::make_shared<TransferArguments>();
    CLI::App* const verb =
        AddVerb(app, "transfer-groups", "Put the polygons of one model into the named groups of another");
    verb->add_option("FROM", arguments->from, "Wavefront OBJ file with groups, plain or gzip; - is standard input")
        ->required()
        ->type_name("");
    verb->add_option("TO", arguments->to, "Wavefront OBJ file that gets them; - is standard input")
        ->required()
        ->type_name("");
    arguments->output.AddTo(*verb);
    verb->add_option("--by", arguments->by,
                     "proximity: each polygon gets the groups of the one with the nearest centre; polygon: of the one "
                     "with the same number, and its material")
        ->type_name("proximity|polygon")
        ->check(Choice("way to match polygons", {"proximity", "polygon"}))
        ->capture_default_str();
    verb->footer("Groups that TO has already stay; its materials do unless FROM has some and goes by polygon.");
    verb->callback([arguments, &exitCode] { exitCode = RunTransfer(*arguments); });
}

} // namespace vx::cli
