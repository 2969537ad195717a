// VelmarBase: command line.
#include "FontChoice.h"
#include "ModelFile.h"
#include "PictureOptions.h"

#include "base/BFile.h"
#include "base/MEM.h"
#include "engine/VXScene.h"
#include "host/text/TextMesh.h"
#include "material/VXMaterial.h"
#include "mesh/VXGeom.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>
#include <string>

namespace vx::cli
{

namespace
{

constexpr double kLargestLength = 1e6; // model units
constexpr float kDepthOfSize = 0.2f;   // unless a depth is given

struct TextArguments
{
    std::string text, font, align = "left";
    int width = 1280; ///< of a picture, in pixels
    bool depthGiven = false;
    TextMeshOptions mesh;
    ModelOutput output;
};

// A text as the user named it: itself, or what standard input holds, without the line break at its end.
int ReadText(const std::string& named, BString& text)
{
    text = BString(named);
    if (named != "-")
        return kDone;
    Input input{text};
    if (!input.Open())
        return Fail(kFailed, input.Name(), 0, input.Error());
    BFile file(input.Path());
    file.SetCompression(false);
    char* const bytes = file.Open(BFile::Mode::Read) == 0 ? file.ReadAll() : nullptr;
    if (!bytes)
        return Fail(kFailed, input.Name(), 0, file.LastError());
    std::string_view all(bytes, MEM_Count(bytes));
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF"; // editors put it, and it is no text
    if (all.starts_with(kByteOrderMark))
        all.remove_prefix(kByteOrderMark.size());
    if (all.ends_with('\n'))
        all.remove_suffix(all.ends_with("\r\n") ? 2 : 1);
    const bool binary = all.find('\0') != std::string_view::npos;
    text = BString(all);
    MEM_Free(bytes);
    return binary ? Fail(kFailed, input.Name(), 0, "is no text, expected UTF-8") : int(kDone);
}

TextAlign AlignOf(const std::string& name)
{
    return name == "right" ? TextAlign::Right : name == "centre" ? TextAlign::Centre : TextAlign::Left;
}

void WarnOfMissing(const BString& font, const TextMeshReport& report)
{
    if (report.missing > 0)
        Warn(font + BString::Format(": lacks %d characters, the first of them U+%04X; drawn as its missing glyph",
                                    int(report.missing), unsigned(report.firstMissing)));
}

// --- Pictures

// As flat as the text is, so that a line does not stand alone in an empty picture.
int PictureHeight(const GEOM& record, int pictureWidth)
{
    float stats[9];
    GEOM_Stats(&record, stats);
    const float width = stats[3] - stats[0], height = stats[4] - stats[1];
    const float share = width > 0 ? 1.5f * height / width : 1;
    return std::clamp(int(share * float(pictureWidth)), (pictureWidth + 3) / 4, pictureWidth);
}

void SetColor(Preview& preview, const BString& material, float r, float g, float b)
{
    if (VXMaterial* const found = preview.Models().MaterialNamed(preview.Scene(), material.CString()))
        found->KdColor().Set(r, g, b, 1);
}

int WriteTextPicture(RecordPtr record, const TextArguments& arguments, Stopwatch& watch)
{
    PreviewOptions options;
    options.width = arguments.width;
    options.height = PictureHeight(*record, arguments.width);
    options.samples = 16;
    options.view.azimuth = 18;
    options.view.elevation = 14;
    Preview preview;
    if (!preview.Take(record.release(), "text"))
        return Fail(kFailed, "", 0, preview.Error());
    SetColor(preview, arguments.mesh.frontMaterial, 0.86f, 0.82f, 0.74f);
    SetColor(preview, arguments.mesh.sideMaterial, 0.30f, 0.42f, 0.58f);
    if (!preview.PrepareContext())
        return Fail(kNoOpenGL, "", 0, "no OpenGL to be had: " + preview.Error());
    const PicturePtr picture = preview.Render(options);
    if (!picture)
        return Fail(kFailed, "", 0, preview.Error());
    watch.Tell(BString::Format("drawn %d x %d pixels", picture->Width(), picture->Height()));
    return WritePicture(*picture, arguments.output.name, preview, watch);
}

// --- The verb

int RunText(TextArguments& arguments)
{
    const ModelOutput& output = arguments.output;
    const bool picture = BString(output.name).Lower().EndsWith(".png");
    if (picture && output.json)
        return Fail(kWrongUsage, "", 0, "--json tells of models only, expected -o FILE.obj with it");
    Stopwatch watch(output.verbose);
    if (const BString problem = OutputProblem(output.name, {}); !problem.IsEmpty())
        return Fail(kFailed, BString(output.name), 0, problem);
    BString text;
    if (const int code = ReadText(arguments.text, text); code != kDone)
        return code;
    SystemFonts fonts;
    VXFTFace* const face = fonts.Choose(arguments.font);
    if (!face)
        return Fail(kFailed, "", 0, fonts.Error());

    arguments.mesh.align = AlignOf(arguments.align);
    if (!arguments.depthGiven) // flat letters are what two sides are asked of
        arguments.mesh.depth = arguments.mesh.twoSided ? 0 : kDepthOfSize * arguments.mesh.size;
    TextMeshReport report;
    RecordPtr record = BuildTextMesh(text, *face, arguments.mesh, report);
    const BString font = face->Path().FullPath();
    if (!record)
        return Fail(kFailed, report.blames == TextMeshReport::Blames::Font ? font : BString(""), 0, report.error);
    WarnOfMissing(font, report);
    watch.Tell(BString::Format("%d glyphs of ", int(report.glyphs)) + font);

    if (picture)
        return WriteTextPicture(std::move(record), arguments, watch);
    VXGeom geom;
    geom.SetGenerateCreases(false);
    const int status = geom.SetGeom(record.get(), false);
    geom.SetGeomShared(false);
    record.release();
    if (status != 0)
        return Fail(kFailed, "", 0, "out of memory");
    return output.Write(geom, BString::Format("%d glyphs, %d polygons", int(report.glyphs), geom.NumPolys()),
                        {{"font", font.Std()},
                         {"glyphs", report.glyphs},
                         {"lines", report.lines},
                         {"missing", report.missing},
                         {"polygons", geom.NumPolys()}});
}

} // namespace

void AddTextVerb(CLI::App& app, int& exitCode)
{
    const auto arguments = std::make_shared<TextArguments>();
    TextMeshOptions& mesh = arguments->mesh;
    ModelOutput& output = arguments->output;
    CLI::App* const verb = AddVerb(app, "text", "Make a model, or a picture, of a text");
    verb->add_option("TEXT", arguments->text, "The text, in UTF-8, with its line breaks; - is standard input")
        ->required()
        ->type_name("");
    verb->add_option("-o,--output", output.name,
                     "Wavefront OBJ file, gzip when it ends in .gz, or PNG picture to write, replaced when it exists; "
                     "- is standard output, for the model")
        ->required()
        ->type_name("FILE.obj|FILE.png")
        ->check(OutputName("a model or a picture", {".obj", ".obj.gz", ".png"}));
    verb->add_option("--font", arguments->font,
                     "Font file, or the name of one that 'velmar fonts' lists; DejaVu Sans unless given")
        ->type_name("NAME|FILE");
    const float least = 1e-6f;
    AddNumber(*verb, "--size", mesh.size, least, kLargestLength, "Height of the font, from line to line or nearly so");
    CLI::Option* const depth =
        AddNumber(*verb, "--depth", mesh.depth, 0, kLargestLength,
                  "How thick the letters are, a fifth of the size unless given; 0 makes them flat");
    depth->default_str("");
    AddNumber(*verb, "--bevel", mesh.bevel, 0, kLargestLength,
              "Cut off the edges so far, at most half the depth; the sides stand out as much, less where they would "
              "meet");
    verb->add_flag("--two-sided", mesh.twoSided,
                   "Flat letters that can be read from behind as well; thick ones have a back anyway");
    verb->add_option("--align", arguments->align, "How lines stand above each other")
        ->type_name("left|centre|right")
        ->check(Choice("alignment", {"left", "centre", "right"}))
        ->capture_default_str();
    AddWholeNumber(*verb, "--width", arguments->width, 16, 16384,
                   "Pixels that a picture is wide; its height goes by the text");
    verb->add_flag("--json", output.json,
                   "Tell of a model in one line of JSON; on standard error when it goes to standard output");
    AddVerbose(*verb, output.verbose);
    verb->footer(
        "Front and back have the material \"Text\", sides and bevels \"Text side\". The front looks along +z.");
    verb->callback(
        [arguments, depth, &exitCode]
        {
            arguments->depthGiven = depth->count() > 0;
            exitCode = RunText(*arguments);
        });
}

} // namespace vx::cli
