// VelmarBase: command line.
#include "Cli.h"

#include "ModelFile.h"
#include "mesh/VXGeom.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace vx::cli
{

namespace
{

struct InfoOptions
{
    std::vector<std::string> inputs;
    float creaseAngle = 40;
    bool json = false;
    bool verbose = false;
};

/// Everything that the verb tells about one model.
struct Facts
{
    std::string file;
    std::int64_t lines = 0; ///< of the file
    std::int64_t vertices = 0, textureVertices = 0, cornerNormals = 0;
    std::int64_t polygons = 0, triangles = 0, quads = 0, ngons = 0, largest = 0, lineElements = 0, points = 0;
    std::int64_t edges = 0, openEdges = 0, creaseEdges = 0, seamEdges = 0, nonManifoldEdges = 0;
    std::int64_t smoothingGroups = 0;                                             ///< in use
    std::vector<std::pair<std::string, std::int64_t>> objects, groups, materials; ///< with their polygons
    std::vector<std::string> materialFiles;
    float bounds[9] = {}; ///< min, max, centre
    std::int64_t memory = 0;
};

void CountPolygons(const GEOM& geom, Facts& facts)
{
    std::vector<std::int64_t> perGroup(std::size_t(geom.groupNames.Count())),
        perMaterial(std::size_t(geom.NumMaterials()));
    std::uint32_t smoothing = 0;
    for (std::int64_t i = 0; i < geom.numPolys; ++i)
    {
        const ELEMENT& poly = *geom.Poly(i);
        if (poly.IsFace())
        {
            facts.largest = std::max<std::int64_t>(facts.largest, poly.length);
            ++(poly.length == 3 ? facts.triangles : poly.length == 4 ? facts.quads : facts.ngons);
            smoothing |= poly.GroupWord(0);
        }
        else
            ++(poly.type == kElementLine ? facts.lineElements : facts.points);
        for (std::size_t g = 0; g < perGroup.size(); ++g)
            perGroup[g] += poly.GroupWord(std::int64_t(g) / 32 + 1) >> (g % 32) & 1;
        if (poly.material < perMaterial.size())
            ++perMaterial[poly.material];
    }
    facts.polygons = geom.numPolys;
    for (; smoothing != 0; smoothing &= smoothing - 1)
        ++facts.smoothingGroups;
    for (std::size_t g = 0; g < perGroup.size(); ++g)
        facts.groups.emplace_back(geom.groupNames[std::int64_t(g)].Std(), perGroup[g]);
    for (std::size_t m = 0; m < perMaterial.size(); ++m)
        facts.materials.emplace_back(geom.materials[std::int64_t(m)].name.Std(), perMaterial[m]);
    for (std::int64_t i = 0; i < geom.objectNames.Count(); ++i)
    {
        const std::int64_t end = i + 1 < geom.objectNames.Count() ? geom.objectNames[i + 1].firstPoly : geom.numPolys;
        facts.objects.emplace_back(geom.objectNames[i].name.Std(), end - geom.objectNames[i].firstPoly);
    }
}

// The edge list holds a parallel edge for every further pair of faces on an edge; here they are one edge, which is not
// manifold. Edges of line elements are none of a surface.
void CountEdges(const VXGeom& geom, Facts& facts)
{
    const VXEdgeList& list = geom.EdgeList();
    std::vector<std::pair<std::int64_t, std::int32_t>> byEnds; // both ends in one key, edge
    byEnds.reserve(std::size_t(list.GetEdgeCount()));
    for (std::int32_t e = 0; e < list.GetEdgeCount(); ++e)
    {
        const VXEdge& edge = list.GetEdge(e);
        if (!geom.Geom()->Poly(edge.PolyIndex1())->IsFace())
            continue;
        const std::int64_t low = std::min(edge.VertIndex1(), edge.VertIndex2());
        const std::int64_t high = std::max(edge.VertIndex1(), edge.VertIndex2());
        byEnds.emplace_back(low << 32 | high, e);
    }
    std::sort(byEnds.begin(), byEnds.end());
    for (std::size_t i = 0; i < byEnds.size();)
    {
        const VXEdge& edge = list.GetEdge(byEnds[i].second);
        const std::int64_t ends = byEnds[i].first;
        const std::size_t first = i;
        while (i < byEnds.size() && byEnds[i].first == ends)
            ++i;
        ++facts.edges;
        if (i - first > 1)
            ++facts.nonManifoldEdges;
        else if (edge.IsOpenEdge())
            ++facts.openEdges;
        else if (edge.IsCreaseEdge())
            ++(edge.IsSmoothEdge() ? facts.seamEdges : facts.creaseEdges);
    }
}

// --- Printing

std::string Count(std::int64_t n) // 1234567 as 1,234,567
{
    const std::string digits = std::to_string(n);
    std::string text;
    for (std::size_t i = 0; i < digits.size(); ++i)
    {
        if (i > 0 && (digits.size() - i) % 3 == 0)
            text += ',';
        text += digits[i];
    }
    return text;
}

std::string Plural(std::int64_t n, const char* one, const char* many) { return Count(n) + " " + (n == 1 ? one : many); }

std::string Number(float value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", double(value) + 0.0); // the sum turns -0 into 0
    return text;
}

std::string Bytes(std::int64_t bytes)
{
    char text[32];
    if (bytes < 1024 * 1024)
        std::snprintf(text, sizeof text, "%.1f KiB", double(bytes) / 1024);
    else
        std::snprintf(text, sizeof text, "%.1f MiB", double(bytes) / (1024 * 1024));
    return text;
}

void PrintNames(const char* label, const std::vector<std::pair<std::string, std::int64_t>>& names)
{
    if (names.empty())
        return;
    std::printf("  %-10s %s\n", label, Count(std::int64_t(names.size())).c_str());
    std::size_t width = 0;
    for (const auto& [name, polygons] : names)
        width = std::max(width, name.size());
    for (const auto& [name, polygons] : names)
        std::printf("    %-*s %s\n", int(std::min<std::size_t>(width, 60)), name.c_str(),
                    Plural(polygons, "polygon", "polygons").c_str());
}

void PrintText(const Facts& facts, float creaseAngle)
{
    std::printf("%s\n", facts.file.c_str());
    std::printf("  %-10s %s, %s, %s\n", "vertices", Count(facts.vertices).c_str(),
                Plural(facts.textureVertices, "texture vertex", "texture vertices").c_str(),
                Plural(facts.cornerNormals, "normal", "normals").c_str());
    const std::string largest = facts.ngons > 0 ? " (up to " + Count(facts.largest) + " corners)" : "";
    std::printf("  %-10s %s: %s, %s, %s%s, %s, %s\n", "polygons", Count(facts.polygons).c_str(),
                Plural(facts.triangles, "triangle", "triangles").c_str(), Plural(facts.quads, "quad", "quads").c_str(),
                Plural(facts.ngons, "n-gon", "n-gons").c_str(), largest.c_str(),
                Plural(facts.lineElements, "line", "lines").c_str(), Plural(facts.points, "point", "points").c_str());
    std::printf("  %-10s %s: %s open, %s crease (above %s degrees), %s texture seam, %s non-manifold\n", "edges",
                Count(facts.edges).c_str(), Count(facts.openEdges).c_str(), Count(facts.creaseEdges).c_str(),
                Number(creaseAngle).c_str(), Count(facts.seamEdges).c_str(), Count(facts.nonManifoldEdges).c_str());
    const float* b = facts.bounds;
    std::printf("  %-10s %s %s %s to %s %s %s, size %s x %s x %s\n", "bounds", Number(b[0]).c_str(),
                Number(b[1]).c_str(), Number(b[2]).c_str(), Number(b[3]).c_str(), Number(b[4]).c_str(),
                Number(b[5]).c_str(), Number(b[3] - b[0]).c_str(), Number(b[4] - b[1]).c_str(),
                Number(b[5] - b[2]).c_str());
    std::printf("  %-10s %s\n", "smoothing", Plural(facts.smoothingGroups, "group", "groups").c_str());
    PrintNames("objects", facts.objects);
    PrintNames("groups", facts.groups);
    PrintNames("materials", facts.materials);
    for (const std::string& name : facts.materialFiles)
        std::printf("  %-10s %s\n", "mtllib", name.c_str());
    std::printf("  %-10s %s\n", "memory", Bytes(facts.memory).c_str());
}

nlohmann::ordered_json NamesJson(const std::vector<std::pair<std::string, std::int64_t>>& names)
{
    auto list = nlohmann::ordered_json::array();
    for (const auto& [name, polygons] : names)
        list.push_back({{"name", name}, {"polygons", polygons}});
    return list;
}

// One object on one line for each model, so that any number of inputs reads the same way.
void PrintFactsAsJson(const Facts& facts, float creaseAngle)
{
    const float* b = facts.bounds;
    const nlohmann::ordered_json json = {
        {"file", facts.file},
        {"vertices", facts.vertices},
        {"textureVertices", facts.textureVertices},
        {"normals", facts.cornerNormals},
        {"polygons",
         {{"total", facts.polygons},
          {"triangles", facts.triangles},
          {"quads", facts.quads},
          {"ngons", facts.ngons},
          {"lines", facts.lineElements},
          {"points", facts.points},
          {"mostCorners", facts.largest}}},
        {"edges",
         {{"total", facts.edges},
          {"open", facts.openEdges},
          {"crease", facts.creaseEdges},
          {"seam", facts.seamEdges},
          {"nonManifold", facts.nonManifoldEdges},
          {"creaseAngle", creaseAngle}}},
        {"bounds", {{"min", {b[0], b[1], b[2]}}, {"max", {b[3], b[4], b[5]}}, {"centre", {b[6], b[7], b[8]}}}},
        {"smoothingGroups", facts.smoothingGroups},
        {"objects", NamesJson(facts.objects)},
        {"groups", NamesJson(facts.groups)},
        {"materials", NamesJson(facts.materials)},
        {"materialFiles", facts.materialFiles},
        {"memory", facts.memory},
    };
    PrintJson(stdout, json);
}

// --- The verb

int InfoOf(const std::string& name, const InfoOptions& options)
{
    Input input{BString(name)};
    if (!input.Open())
        return Fail(kFailed, input.Name(), 0, input.Error());

    VXGeom geom;
    geom.SetCreaseAngle(options.creaseAngle);
    GEOM_ReadReport report;
    if (geom.ReadWavefront(input.Path().FullPath().CString(), nullptr, &report) != 0)
        return Fail(kFailed, input.Name(), report.errorLine, report.error);
    WarnOfOddities(input.Name(), report);
    if (!geom.EdgesClassified())
        geom.GenerateCreaseData();
    if (MEM_AllocationFailed())
        return Fail(kFailed, input.Name(), 0, "out of memory");

    const GEOM& record = *geom.Geom();
    Facts facts;
    facts.file = input.Name().Std();
    facts.lines = report.lines;
    facts.vertices = record.numVerts;
    facts.textureVertices = record.tex ? record.tex->numVerts : 0;
    facts.cornerNormals = record.numNormals;
    CountPolygons(record, facts);
    CountEdges(geom, facts);
    for (const BString& file : record.materialFiles)
        facts.materialFiles.push_back(file.Std());
    GEOM_Stats(&record, facts.bounds);
    facts.memory = std::int64_t(geom.MemoryUsed());
    if (options.verbose)
        Note(BString::Format("%s: %lld lines read", facts.file.c_str(), static_cast<long long>(facts.lines)));

    if (options.json)
        PrintFactsAsJson(facts, options.creaseAngle);
    else
        PrintText(facts, options.creaseAngle);
    return kDone;
}

int RunInfo(const InfoOptions& options)
{
    for (const std::string& name : options.inputs)
        if (const int code = InfoOf(name, options); code != kDone)
            return code;
    return FinishStandardOutput();
}

} // namespace

void AddInfoVerb(CLI::App& app, int& exitCode)
{
    const auto options = std::make_shared<InfoOptions>();
    CLI::App* const verb = AddVerb(app, "info", "Tell what is in models");
    verb->add_option("INPUT", options->inputs, "Wavefront OBJ files, plain or gzip; - is standard input")
        ->required()
        ->type_name("");
    AddNumber(*verb, "--crease-angle", options->creaseAngle, 0, 180,
              "Edges bent by more degrees than this are creases");
    verb->add_flag("--json", options->json, "One line of JSON for each input");
    AddVerbose(*verb, options->verbose);
    verb->callback([options, &exitCode] { exitCode = RunInfo(*options); });
}

} // namespace vx::cli
