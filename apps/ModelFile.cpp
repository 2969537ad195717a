// VelmarBase: command line.
#include "ModelFile.h"

#include "base/BFile.h"
#include "mesh/VXGeom.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

namespace vx::cli
{

void WarnOfOddities(const BString& name, const GEOM_ReadReport& report)
{
    if (report.shortFaces > 0)
        Warn(name + BString::Format(":%lld: faces with fewer than 3 corners are left out: %lld",
                                    static_cast<long long>(report.shortFaceLine),
                                    static_cast<long long>(report.shortFaces)));
    if (report.groupsLeftOut > 0)
        Warn(name + BString::Format(": groups for which there is no room are left out: %lld",
                                    static_cast<long long>(report.groupsLeftOut)));
}

// The wrapper's own reader drops materials that no polygon uses, which is right for drawing only.
int ReadModel(const std::string& name, VXGeom& geom)
{
    Input input{BString(name)};
    if (!input.Open())
        return Fail(kFailed, input.Name(), 0, input.Error());
    BFile file(input.Path());
    if (file.Open(BFile::Mode::Read) != 0)
        return Fail(kFailed, input.Name(), 0, file.LastError());
    GEOM_ReadReport report;
    GEOM* const record = GEOM_ReadObjFile(file, nullptr, &report);
    if (!record)
        return Fail(kFailed, input.Name(), report.errorLine, report.error);
    WarnOfOddities(input.Name(), report);
    geom.SetGenerateCreases(false);
    const int status = geom.SetGeom(record, false);
    geom.SetGeomShared(false); // nobody else knows this record
    return status == 0 ? int(kDone) : Fail(kFailed, input.Name(), 0, "out of memory");
}

BString ShownName(const std::string& input) { return input == "-" ? BString("<stdin>") : BString(input); }

// --- Writing

// Names of material files are relative to the model's folder.
static void MoveMaterialFiles(GEOM& record, const std::filesystem::path& from, const std::filesystem::path& to)
{
    std::error_code unknown;
    const std::filesystem::path here = std::filesystem::weakly_canonical(from.parent_path() / ".", unknown),
                                there = std::filesystem::weakly_canonical(to.parent_path() / ".", unknown);
    if (unknown || here == there)
        return;
    for (BString& file : record.materialFiles)
        if (const BPath name(file); !name.Std().is_absolute())
            file = BString((here / name.Std()).lexically_normal().lexically_relative(there).generic_string());
}

int ModelOutput::Open(const std::string& input, VXGeom& geom, Stopwatch& watch) const
{
    if (const BString problem = OutputProblem(name, {input}); !problem.IsEmpty())
        return Fail(kFailed, BString(name), 0, problem);
    if (const int code = ReadModel(input, geom); code != kDone)
        return code;
    if (input != "-" && name != "-")
        MoveMaterialFiles(*geom.Geom(), BPath(BString(input)).Std(), BPath(BString(name)).Std());
    watch.Tell("read " + ShownName(input));
    return kDone;
}

void ModelOutput::AddTo(CLI::App& verb)
{
    verb.add_option("-o,--output", name,
                    "Wavefront OBJ file to write, gzip when it ends in .gz, replaced when it exists; - is standard "
                    "output")
        ->required()
        ->type_name("FILE.obj")
        ->check(OutputName("a model", {".obj", ".obj.gz"}));
    verb.add_flag("--json", json, "Tell in one line of JSON; on standard error when the model goes to standard output");
    AddVerbose(verb, verbose);
}

void ModelOutput::AddTo(CLI::App& verb, std::string& input)
{
    verb.add_option("INPUT", input, "Wavefront OBJ file, plain or gzip; - is standard input")
        ->required()
        ->type_name("");
    AddTo(verb);
}

static BString WriteRecord(const GEOM& record, const BPath& path, bool compressed)
{
    BFile file(path);
    file.SetCompression(compressed);
    if (file.Open(BFile::Mode::WriteAtomic) == 0 && GEOM_WriteObjFile(&record, file) == 0 && file.Close() == 0)
        return {};
    const BString why = file.LastError();
    file.Discard();
    return BString("cannot be written") + (why.IsEmpty() ? BString(": out of memory") : ": " + why);
}

// By way of a file, so that nothing of a model that cannot be written in full goes out.
int ModelOutput::WriteToStandardOutput(const GEOM& record) const
{
    const TemporaryFile spool(".obj");
    const auto fail = [](const BString& problem) { return Fail(kFailed, "standard output", 0, problem); };
    if (const BString problem = WriteRecord(record, spool.Path(), false); !problem.IsEmpty())
        return fail(problem);
    BFile file(spool.Path());
    file.SetCompression(false);
    if (file.Open(BFile::Mode::Read) != 0)
        return fail("cannot be written: " + file.LastError());
#ifdef _WIN32
    _setmode(_fileno(stdout), _O_BINARY);
#endif
    char buffer[65536];
    std::int64_t got;
    while ((got = file.Read(buffer, sizeof buffer)) > 0)
        if (std::fwrite(buffer, 1, std::size_t(got), stdout) != std::size_t(got))
            break; // told below
    return got < 0 ? fail("cannot be written: " + file.LastError()) : FinishStandardOutput();
}

int ModelOutput::Write(const VXGeom& geom, const BString& text, nlohmann::ordered_json facts) const
{
    std::error_code ignored;
    const bool toStdout = name == "-";
    if (toStdout)
    {
        if (const int code = WriteToStandardOutput(*geom.Geom()); code != kDone)
            return code;
    }
    else if (const BString problem =
                 WriteRecord(*geom.Geom(), BPath(BString(name)), BString(name).Lower().EndsWith(".gz"));
             !problem.IsEmpty())
        return Fail(kFailed, BString(name), 0, problem);

    // A device may be where standard output goes too, such as /dev/stdout.
    const bool apart = !toStdout && std::filesystem::is_regular_file(BPath(BString(name)).Std(), ignored);
    if (json)
    {
        nlohmann::ordered_json line = {{"file", toStdout ? "<stdout>" : name}};
        line.update(facts);
        PrintJson(apart ? stdout : stderr, line);
    }
    else if (apart)
        std::printf("%s: %s\n", name.c_str(), text.CString());
    return FinishStandardOutput();
}

void PrintJson(std::FILE* where, const nlohmann::ordered_json& facts)
{
    std::fprintf(where, "%s\n", facts.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace).c_str());
}

int FinishStandardOutput()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
        return Fail(kFailed, "standard output", 0, "cannot be written");
    return kDone;
}

} // namespace vx::cli
