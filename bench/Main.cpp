// Runs the benchmarks and says what they mean: for each piece of work how many times as fast as the public library that
// was measured in the same run. Absolute times are printed too, but mean little on a shared machine.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace
{
struct RatioRow
{
    const char* work;
    std::vector<const char*> ours;  ///< times are added
    std::vector<const char*> peers; ///< times are added
    double mustReach;
};

// Names are those of the benchmarks themselves; a row whose benchmarks did not run is left out.
const std::vector<RatioRow> kRatios = {
    {"OBJ text to record / tinyobjloader", {"ObjRead/velmar"}, {"ObjRead/tinyobjloader"}, 4.5},
    {"weld / nanoflann radius search", {"Weld/velmar"}, {"Weld/nanoflann"}, 2},
    {"weld of exact copies / meshoptimizer remap", {"Weld/velmar"}, {"Weld/meshoptimizer"}, 1 / 2.5},
    {"edge list / OpenMesh half-edges", {"Edges/velmar"}, {"Edges/openmesh"}, 1.6},
    {"edge list / OpenMesh, random order", {"Edges/velmar-shuffled"}, {"Edges/openmesh-shuffled"}, 1.6},
    {"normals / OpenMesh update_normals", {"Normals/velmar"}, {"Normals/openmesh"}, 4},
    {"normals / bare loop", {"Normals/velmar"}, {"Normals/bare-loop"}, 1 / 1.5},
    {"creases and normals / assimp", {"Creases/velmar"}, {"Creases/assimp"}, 12},
    {"tangents / assimp", {"Tangents/velmar"}, {"Tangents/assimp"}, 5},
    {"creases and all normals, tangents beside / without", {"Derive/with-tangents"}, {"Derive/alone"}, 1 / 1.25},
    {"creased normals with tangents beside / without", {"CreasedPass/with-tangents"}, {"CreasedPass/alone"}, 1 / 1.25},
    {"Catmull-Clark with UVs / OpenSubdiv", {"Subdiv/velmar"}, {"Subdiv/opensubdiv"}, 3},
    {"Catmull-Clark with UVs / OpenSubdiv, edge list and base level too",
     {"Subdiv/velmar-from-record"},
     {"Subdiv/opensubdiv-from-record"},
     1},
    {"Catmull-Clark / OpenMesh", {"Subdiv/velmar"}, {"Subdiv/openmesh"}, 3},
    {"Catmull-Clark / CGAL", {"Subdiv/velmar"}, {"Subdiv/cgal"}, 3},
    {"groups by the nearest polygon / nanoflann", {"Groups/velmar"}, {"Groups/nanoflann"}, 1 / 1.5},
    {"ten times growing / CGAL expand_face_selection", {"Select/velmar-grow"}, {"Select/cgal-grow"}, 2},
    {"ten times growing / CGAL, ten steps at once", {"Select/velmar-grow"}, {"Select/cgal-grow-at-once"}, 1},
    {"mirroring vertices / nanoflann", {"Select/velmar-mirror"}, {"Select/nanoflann-mirror"}, 1 / 1.5},
    {"OpenSubdiv rebuild, level 1 / direct", {"OpenSubdiv/velmar-1"}, {"OpenSubdiv/direct-1"}, 1 / 1.3},
    {"OpenSubdiv rebuild, level 2 / direct", {"OpenSubdiv/velmar-2"}, {"OpenSubdiv/direct-2"}, 1 / 1.3},
    {"OpenSubdiv rebuild, level 3 / direct", {"OpenSubdiv/velmar-3"}, {"OpenSubdiv/direct-3"}, 1 / 1.3},
    {"OpenSubdiv pose / bare interpolation", {"OpenSubdiv/pose"}, {"OpenSubdiv/bare-pose"}, 1 / 1.1},
    {"OpenSubdiv pose and normals / bare", {"OpenSubdiv/pose-and-normals"}, {"OpenSubdiv/bare-pose"}, 1 / 2.2},
    {"OpenSubdiv pose / rebuild", {"OpenSubdiv/pose"}, {"OpenSubdiv/velmar-2"}, 5},
    {"noise volume / plain loop over 64 neighbours", {"Noise/velmar"}, {"Noise/direct"}, 3},
    {"noise volume / single values", {"Noise/velmar"}, {"Noise/single-values"}, 3},
    {"shader upkeep of 200 materials / frame", {"Shaders/upkeep-of-200"}, {"Shaders/frame-of-200"}, 50},
    {"shader upkeep of 200 materials / frame without drawing",
     {"Shaders/upkeep-of-200"},
     {"Shaders/empty-frame-of-200"},
     10},
    {"page of text / FreeType and GLU for its glyphs", {"Text/velmar"}, {"Text/freetype-glu"}, 1 / 1.5},
    {"page of text / FTGL polygon font", {"Text/velmar"}, {"Text/ftgl"}, 5},
    {"page of text, triangles alone / FreeType and GLU for its glyphs",
     {"Text/velmar-mesh"},
     {"Text/freetype-glu"},
     1 / 1.5},
    {"read, wrap, edges, creases, normals / tinyobjloader + OpenMesh",
     {"Whole/velmar"},
     {"ObjRead/tinyobjloader", "Edges/openmesh", "Normals/openmesh"},
     1},
    {"lined frame of 70,000 quads / bare program", {"Frame/velmar"}, {"Frame/bare"}, 0.5},
    {"the same with a Skia overlay / without", {"Frame/with-overlay"}, {"Frame/velmar"}, 1 / 1.1},
    {"frame of 1,000 objects / one object of their polygons", {"Objects/thousand"}, {"Objects/one"}, 0.5},
};

struct LimitRow
{
    const char* name;
    double milliseconds;
};

// Work that has to fit into a frame, whatever others need for it.
constexpr LimitRow kLimits[] = {{"OpenSubdiv/pose-and-normals", 10}, {"OpenSubdiv/object-pose", 10}};

/// Keeps the median of every benchmark while the console shows them.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            if (!run.error_occurred && (run.run_type == Run::RT_Iteration || run.aggregate_name == "median"))
                mMedian[run.run_name.function_name] = run;
        ConsoleReporter::ReportRuns(runs);
    }

    void Finalize() override
    {
        PrintRatios();
        PrintLimits();
        PrintScaling();
        PrintMemory();
    }

private:
    double Sum(const std::vector<const char*>& names) const
    {
        double sum = 0;
        for (const char* name : names)
        {
            const auto found = mMedian.find(name);
            if (found == mMedian.end())
                return 0;
            sum += Seconds(found->second);
        }
        return sum;
    }

    static double Seconds(const Run& run)
    {
        return run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
    }

    void PrintRatios() const
    {
        std::printf("\n%-64s %8s %8s\n", "times as fast as (medians of this run)", "ratio", "bar");
        for (const RatioRow& row : kRatios)
        {
            const double ours = Sum(row.ours), peers = Sum(row.peers);
            if (ours > 0 && peers > 0)
                std::printf("%-64s %8.2f %8.2f%s\n", row.work, peers / ours, row.mustReach,
                            peers / ours < row.mustReach ? "  below" : "");
        }
    }

    void PrintLimits() const
    {
        for (const LimitRow& row : kLimits)
            if (const auto found = mMedian.find(row.name); found != mMedian.end())
            {
                const double milliseconds = 1000 * Seconds(found->second);
                std::printf("%-64s %8.2f %8.2f%s\n", (std::string(row.name) + ", milliseconds").c_str(), milliseconds,
                            row.milliseconds, milliseconds > row.milliseconds ? "  above" : "");
            }
    }

    /// Benchmarks named ".../n" and ".../2n" are the same work at one size and at twice that size.
    void PrintScaling() const
    {
        bool first = true;
        for (const auto& [name, run] : mMedian)
        {
            if (!name.ends_with("/n"))
                continue;
            const std::string stem = name.substr(0, name.size() - 1);
            const auto twice = mMedian.find(stem + "2n");
            if (twice == mMedian.end())
                continue;
            if (first)
                std::printf("\n%-64s %8s %8s\n", "time for 2n over time for n", "ratio", "bar");
            first = false;
            const double ratio = Seconds(twice->second) / Seconds(run);
            std::printf("%-64s %8.2f %8.2f%s\n", stem.c_str(), ratio, 2.6, ratio > 2.6 ? "  above" : "");
        }
    }

    void PrintMemory() const
    {
        for (const auto& [name, run] : mMedian)
            for (const auto& [counter, value] : run.counters)
                if (counter.starts_with("bytes"))
                    std::printf("%-64s %8.0f\n", (name + ": " + counter).c_str(), double(value));
    }

    std::map<std::string, Run> mMedian;
};
} // namespace

int main(int argc, char** argv)
{
    std::vector<char*> arguments(argv, argv + argc);
    std::string repetitions = "--benchmark_repetitions=5", aggregates = "--benchmark_report_aggregates_only=true";
    arguments.insert(arguments.begin() + 1,
                     {repetitions.data(), aggregates.data()}); // the caller's own come later and win
    int count = int(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 2;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
