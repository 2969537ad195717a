// VelmarBase: command line.
#include "PictureOptions.h"

#include "Groups.h"
#include "MaterialFiles.h"
#include "ModelFile.h"
#include "Subdivision.h"

#include "base/BFile.h"
#include "base/MEM.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "host/image/Png.h"
#include "host/import/ElementParts.h"
#include "mesh/VXGeom.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <system_error>

namespace vx::cli
{

namespace
{

constexpr int kLargestSide = 16384; // of a picture, in pixels

// --- Values of options: each reader has a check that says what was expected

std::optional<int> WholeNumber(std::string_view text, int most)
{
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < 1 || value > most)
        return std::nullopt;
    return value;
}

std::string CheckSize(const std::string& text)
{
    return ReadPictureSize(text, kLargestSide)
               ? ""
               : BString::Format("'%s' is no picture size, expected WIDTHxHEIGHT from 1x1 to %dx%d", text.c_str(),
                                 kLargestSide, kLargestSide)
                     .Std();
}

std::string ModeNames(const char* between)
{
    std::string names;
    for (int i = 0; i < kNumDrawModes; ++i)
        names.append(i > 0 ? between : "").append(PresetOf(DrawMode(i)).name);
    return names;
}

std::string CheckMode(const std::string& text)
{
    return FindPreset(text) ? "" : "'" + text + "' is no draw mode, expected one of " + ModeNames(", ");
}

// RRGGBB, with or without the # that shells like to take for a comment.
std::optional<VERTEX> ReadColor(std::string_view text)
{
    if (text == "white")
        return VERTEX{1, 1, 1};
    if (text == "black")
        return VERTEX{0, 0, 0};
    if (text.starts_with('#'))
        text.remove_prefix(1);
    unsigned rgb = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), rgb, 16);
    if (text.size() != 6 || error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    const auto part = [rgb](int shift) { return float(rgb >> shift & 255) / 255; };
    return VERTEX{part(16), part(8), part(0)};
}

struct Background
{
    BackgroundStyle style;
    VERTEX top, bottom;
};

std::optional<Background> ReadBackground(std::string_view text)
{
    const PreviewOptions standard;
    if (text == "gradient" || text == "transparent")
        return Background{text == "gradient" ? BackgroundStyle::Gradient : BackgroundStyle::Clear,
                          standard.backgroundTop, standard.backgroundBottom};
    const std::size_t comma = text.find(',');
    const auto top = ReadColor(text.substr(0, comma));
    const auto bottom = comma == std::string_view::npos ? top : ReadColor(text.substr(comma + 1));
    if (!top || !bottom)
        return std::nullopt;
    return Background{comma == std::string_view::npos ? BackgroundStyle::Plain : BackgroundStyle::Gradient, *top,
                      *bottom};
}

std::string CheckBackground(const std::string& text)
{
    return ReadBackground(text) ? ""
                                : "'" + text +
                                      "' is no background, expected gradient, transparent, RRGGBB, white, black, or "
                                      "two colours as TOP,BOTTOM";
}

// Width over height, as one number or as two with a colon between them.
std::optional<float> ReadAspect(std::string_view text)
{
    const auto number = [](std::string_view part) -> std::optional<float>
    {
        float value = 0;
        const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), value);
        const bool whole = error == std::errc() && end == part.data() + part.size();
        return whole && value > 0 ? std::optional<float>(value) : std::nullopt;
    };
    const std::size_t colon = text.find(':');
    const auto width = number(text.substr(0, colon));
    const auto height = colon == std::string_view::npos ? std::optional<float>(1.0f) : number(text.substr(colon + 1));
    if (!width || !height || !(*width / *height >= 0.05f && *width / *height <= 20.0f))
        return std::nullopt;
    return *width / *height;
}

std::string CheckAspect(const std::string& text)
{
    return ReadAspect(text) ? ""
                            : "'" + text + "' is no shape of a frame, expected WIDTH:HEIGHT or their ratio, 0.05 to 20";
}

// --- Overlays: KIND or KIND=TEXT

std::optional<OverlaySpec> ReadOverlay(const std::string& text)
{
    const std::size_t sign = text.find('=');
    const std::string kind = text.substr(0, sign), value = sign == std::string::npos ? "" : text.substr(sign + 1);
    const bool plain = sign == std::string::npos;
    if (kind == "stats" && plain)
        return OverlaySpec{OverlayKind::Stats, {}};
    if (kind == "axes" && plain)
        return OverlaySpec{OverlayKind::Axes, {}};
    if (kind == "title" && !value.empty())
        return OverlaySpec{OverlayKind::Title, BString(value)};
    if (kind == "logo" && !value.empty())
        return OverlaySpec{OverlayKind::Logo, BString(value)};
    if (kind != "frame")
        return std::nullopt;
    const auto aspect = plain ? std::optional<float>(OverlaySpec().aspect) : ReadAspect(value);
    return aspect ? std::optional<OverlaySpec>({OverlayKind::Frame, {}, *aspect}) : std::nullopt;
}

std::string CheckOverlay(const std::string& text)
{
    return ReadOverlay(text) ? ""
                             : "'" + text +
                                   "' is no overlay, expected stats, title=TEXT, axes, frame, frame=WIDTH:HEIGHT or "
                                   "logo=FILE.png";
}

// --- Highlights

void AddHighlight(CLI::App& verb, std::vector<Highlight>& highlights, const char* name, bool vertices,
                  const char* purpose)
{
    const auto append = [&highlights, vertices](const std::string& group) {
        highlights.push_back({BString(group), HighlightColor(highlights.size()), vertices});
    };
    verb.add_option_function<std::string>(name, append, purpose)->trigger_on_parse()->type_name("GROUP");
}

// --- Models

bool LoadModel(Preview& preview, Input& input, const ImportOptions& options, BString& problem)
{
    if (!input.Open())
    {
        problem = input.Name() + ": " + input.Error();
        return false;
    }
    bool loaded;
    if (!input.IsStandardInput())
        loaded = preview.Load(input.Path(), options);
    else
    {
        BFile file(input.Path());
        char* const text = file.Open(BFile::Mode::Read) == 0 ? file.ReadAll() : nullptr;
        if (!text)
        {
            problem = input.Name() + ": " + file.LastError();
            return false;
        }
        loaded = preview.LoadText(text, MEM_Count(text), input.Name(), BPath("."), options);
        MEM_Free(text);
    }
    problem = preview.Error();
    return loaded;
}

void WarnOfMissingTangents(Preview& preview)
{
    for (std::int64_t i = 0; i < preview.Scene().NumObjects(); ++i)
    {
        const VXObject* const object = preview.Scene().Object(int(i));
        if (object && object->Geom() && !object->Geom()->Geom()->tex)
            Warn(object->ExternalName() + ": has no texture coordinates, so no tangents are shown");
    }
}

} // namespace

// Beside the program when it is installed, else in the tree that it was built from.
BPath BundledSample()
{
    std::error_code ignored;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    const std::filesystem::path places[] = {program.parent_path().parent_path() / "share/velmar/samples",
                                            VELMAR_SAMPLES_INSTALLED, VELMAR_SAMPLES_SOURCE};
    for (const std::filesystem::path& place : places)
    {
        const BPath sample = BPath(BString(place.string())).Joined("teacup.obj");
        if (sample.IsFile())
            return sample;
    }
    return "teacup.obj";
}

std::optional<PictureSize> ReadPictureSize(std::string_view text, int most)
{
    const std::size_t cross = text.find('x');
    if (cross == std::string_view::npos)
        return std::nullopt;
    const auto width = WholeNumber(text.substr(0, cross), most);
    const auto height = WholeNumber(text.substr(cross + 1), most);
    return width && height ? std::optional<PictureSize>({*width, *height}) : std::nullopt;
}

// --- Grammar

void PictureArguments::AddModels(CLI::App& verb)
{
    mVerb = (verb.get_parent() ? "velmar " : "") + verb.get_name();
    verb.add_option("INPUT", mInputs,
                    "Wavefront OBJ files, plain or gzip, shown together; - is standard input; none is a sample")
        ->type_name("");
    AddVerbose(verb, verbose);
}

void PictureArguments::AddOutput(CLI::App& verb, std::string& output, const char* purpose)
{
    verb.add_option("-o,--output", output, purpose)
        ->type_name("FILE.png")
        ->check(OutputName("a picture", {".png"}))
        ->capture_default_str();
}

void PictureArguments::AddSize(CLI::App& verb, const char* size, const char* purpose)
{
    mSize = size;
    verb.add_option("--size", mSize, purpose)
        ->type_name("WIDTHxHEIGHT")
        ->check(CLI::Validator(CheckSize, ""))
        ->capture_default_str();
}

void PictureArguments::AddMode(CLI::App& verb)
{
    verb.add_option("--mode", mMode, "How to draw; the modes are listed below")
        ->type_name("MODE")
        ->check(CLI::Validator(CheckMode, ""))
        ->capture_default_str();
    verb.footer("Modes:\n  " + ModeNames("\n  "));
}

void PictureArguments::AddView(CLI::App& verb)
{
    ViewOptions& view = picture.view;
    AddNumber(verb, "--azimuth", view.azimuth, -36000, 36000,
              "Degrees to walk round the model from its front, towards the picture's right");
    AddNumber(verb, "--elevation", view.elevation, -90, 90, "Degrees above the horizon");
    AddNumber(verb, "--zoom", view.zoom, 0.01, 100, "2 shows everything twice as large");
    CLI::Option* const fov = AddNumber(verb, "--fov", view.fov, 1, 150, "Vertical angle of view in degrees");
    verb.add_flag("--ortho", view.ortho, "Parallel projection")->excludes(fov);
    verb.add_option("--up", mUp, "The model's axis that points up")
        ->type_name("y|z")
        ->check(Choice("axis that can point up", {"y", "z"}))
        ->capture_default_str();
}

void PictureArguments::AddLook(CLI::App& verb)
{
    verb.add_option("--texture", mTexture, "Picture for materials that have none")->type_name("FILE");
    AddBackground(verb);
    verb.add_flag("--ground", picture.ground, "Show a plane under the model");
    CLI::Option* const shadows =
        verb.add_flag("--shadows", picture.shadows, "Show the model's shadow on the ground, as it is anyway");
    verb.add_flag("--no-shadows", mNoShadows, "Show no shadow")->excludes(shadows);
    verb.add_option("--samples", picture.samples, "Samples for each pixel; 16 draws at twice the size")
        ->type_name("1|2|4|8|16")
        ->check(Choice("number of samples", {"1", "2", "4", "8", "16"}))
        ->capture_default_str();
    AddOverlays(verb);
}

void PictureArguments::AddBackground(CLI::App& verb)
{
    verb.add_option("--background", mBackground,
                    "gradient, transparent, a colour as RRGGBB, white or black, or two as TOP,BOTTOM")
        ->type_name("COLOUR")
        ->check(CLI::Validator(CheckBackground, ""))
        ->capture_default_str();
    CLI::Option* const behind =
        verb.add_option("--background-picture", mBackgroundPicture, "Picture behind the model")->type_name("FILE");
    verb.add_option("--background-fit", mBackgroundFit, "crop fills the background with it, fit shows all of it")
        ->type_name("crop|fit")
        ->check(Choice("way to place a picture", {"crop", "fit"}))
        ->capture_default_str()
        ->needs(behind);
}

void PictureArguments::AddOverlays(CLI::App& verb)
{
    verb.add_flag("--edge-lines", picture.edgeLines, "Draw creases, borders and silhouettes as lines over surfaces");
    verb.add_flag("--depth-cue", picture.depthCue, "Fade what is far into the background");
    verb.add_flag("--ao", mOcclusion, "Darken corners and contacts: ambient occlusion");
    verb.add_option("--watermark", mWatermark, "Text in the lower right corner")->type_name("TEXT");
    verb.add_option("--frame", mFrame, "Darken what is outside of a frame of this shape, such as 16:9 or 1.85")
        ->type_name("ASPECT")
        ->check(CLI::Validator(CheckAspect, ""));
    const auto lay = [this](const std::string& text) { picture.overlays.push_back(*ReadOverlay(text)); };
    if (HaveOverlays())
        verb.add_option_function<std::string>("--overlay", lay,
                                              "Draw facts, words, the world's axes, a frame or a picture over it all; "
                                              "may be given more than once")
            ->trigger_on_parse()
            ->type_name("stats|title=TEXT|axes|frame|logo=FILE")
            ->check(CLI::Validator(CheckOverlay, ""));
}

void PictureArguments::AddSurface(CLI::App& verb)
{
    CLI::Option* const angle = AddNumber(verb, "--crease-angle", mImport.creaseAngle, 0, 180,
                                         "Edges bent by more degrees than this are drawn hard");
    verb.add_flag("--no-creases", mNoCreases, "No hard edges at all")->excludes(angle);
    verb.add_option("--crease-method", mImport.creaseMethod,
                    "How hard edges split vertices: 0 along edges, 1 or 2 by grouping the polygons around each vertex")
        ->type_name("0|1|2")
        ->check(Choice("crease method", {"0", "1", "2"}))
        ->capture_default_str()
        ->excludes("--no-creases");
    CLI::Option* const subdivide = AddWholeNumber(verb, "--subdivide", picture.subdivision, 0, kMostSubdivision,
                                                  "Show the smooth surface of which the model is the control mesh: "
                                                  "each level has four times the polygons of the one before");
    AddScheme(verb, mScheme)->needs(subdivide);
    verb.add_flag("--cage", picture.cage, "Show the control mesh as wires over the subdivided surface")
        ->needs(subdivide);
}

void PictureArguments::AddMarks(CLI::App& verb)
{
    verb.add_option("--show", mShow,
                    "Draw the vectors of each vertex as short lines: normals blue, tangents red and binormals green "
                    "with them")
        ->type_name("normals|tangents")
        ->check(Choice("kind of vectors", {"normals", "tangents"}));
    AddHighlight(verb, picture.highlights, "--highlight", false,
                 "Show a group of polygons in colour; each that is given has a colour of its own");
    AddHighlight(verb, picture.highlights, "--highlight-vertices", true, "Show the vertices of a group as dots");
}

void PictureArguments::AddAll(CLI::App& verb)
{
    AddSize(verb, "1280x720", "Size in pixels");
    AddMode(verb);
    AddView(verb);
    AddLook(verb);
    AddSurface(verb);
    AddMaterials(verb);
    AddShaderLog(verb);
    AddMarks(verb);
}

void PictureArguments::AddMaterials(CLI::App& verb)
{
    verb.add_option("--materials", mMaterials,
                    "JSON file whose materials take the place of those of the models with their names; one that is "
                    "alone in the file and has none goes to everything")
        ->type_name("FILE.json");
    AddShaders(verb);
}

void PictureArguments::AddShaders(CLI::App& verb)
{
    verb.add_option("--shaders", mShaders,
                    "Draw materials by shaders of their own: on for all, auto for those that look different without")
        ->type_name("on|off|auto")
        ->check(Choice("use of shaders", {"on", "off", "auto"}))
        ->capture_default_str();
}

void PictureArguments::AddShaderLog(CLI::App& verb)
{
    verb.add_option("--shader-log", mShaderLog, "Write to it what becomes of shaders, and the text of those that fail")
        ->type_name("FILE");
}

// --- Work

void PictureArguments::ReadTexts()
{
    picture.shaders = mShaders == "on" ? ShaderUse::On : mShaders == "off" ? ShaderUse::Off : ShaderUse::Auto;
    const PictureSize size = *ReadPictureSize(mSize, kLargestSide);
    picture.width = size.width;
    picture.height = size.height;
    picture.mode = FindPreset(mMode)->mode;
    const Background background = *ReadBackground(mBackground);
    picture.background = background.style;
    picture.backgroundTop = background.top;
    picture.backgroundBottom = background.bottom;
    picture.view.up = mUp == "z" ? UpAxis::Z : UpAxis::Y;
    picture.shadows = picture.shadows && !mNoShadows;
    picture.backgroundPicture = BPath(BString(mBackgroundPicture));
    picture.backgroundFit = mBackgroundFit == "fit" ? PictureFit::Fit : PictureFit::Crop;
    picture.occlusion = mOcclusion ? OcclusionQuality::Full : OcclusionQuality::Off;
    picture.watermark = BString(mWatermark);
    picture.productionFrame = mFrame.empty() ? 0.0f : *ReadAspect(mFrame);
    mImport.creases = !mNoCreases;
    picture.ownScheme = mScheme == kOwnScheme;
    mImport.separateLines = picture.subdivision > 0;
    if (!mShow.empty())
        picture.vectors = mShow == "normals" ? VectorKind::Normals : VectorKind::Tangents;
}

BString PictureArguments::UsageProblem() const
{
    const bool marks = !picture.highlights.empty();
    if (marks && picture.subdivision > 0 && picture.ownScheme)
        return BString("polygons made by ") + kOwnScheme + " are in no groups, expected --scheme " + kOpenSubdiv +
               " to highlight some";
    const bool data = picture.mode == DrawMode::Depth || picture.mode == DrawMode::Normals;
    if (data && (marks || picture.vectors != VectorKind::Off))
        return "--highlight and --show draw over what the mode shows as data, expected another --mode";
    return {};
}

// Empty when each group that is to be shown is in some model.
BString PictureArguments::HighlightProblem(Preview& preview) const
{
    const std::vector<std::string> names = GroupNames(preview.Scene());
    for (const Highlight& highlight : picture.highlights)
        if (std::find(names.begin(), names.end(), highlight.group.Std()) == names.end())
            return BString("no model has a group '") + highlight.group + "', " + BString(GroupsThereAre(names));
    return {};
}

int PictureArguments::ReadModels(Preview& preview, Stopwatch& watch)
{
    for (const std::string& name : mInputs)
    {
        Input input{BString(name)};
        BString problem;
        if (!LoadModel(preview, input, mImport, problem))
            return Fail(kFailed, "", 0, problem);
        watch.Tell("read " + input.Name());
    }
    if (!mModelText.empty() &&
        !preview.LoadText(mModelText.data(), mModelText.size(), BString(mModelName), ".", mImport))
        return Fail(kFailed, "", 0, preview.Error());
    if (!mMaterials.empty())
    {
        std::vector<NamedMaterial> materials;
        if (const int code = ReadMaterialsInput(mMaterials, materials); code != kDone)
            return code;
        preview.ApplyMaterials(std::move(materials));
    }
    if (!mTexture.empty() && !preview.SetDefaultTexture(BPath(BString(mTexture))))
        return Fail(kFailed, "", 0, preview.Error() + ", expected a picture");
    if (const BString problem = SubdivisionProblem(preview.Scene(), picture.subdivision, picture.ownScheme);
        !problem.IsEmpty())
        return Fail(kFailed, "", 0, problem);
    if (const BString problem = HighlightProblem(preview); !problem.IsEmpty())
        return Fail(kFailed, "", 0, problem);
    if (picture.vectors == VectorKind::Tangents)
        WarnOfMissingTangents(preview);
    return kDone;
}

int PictureArguments::ReadOptions()
{
    ReadTexts();
    const BString problem = UsageProblem();
    return problem.IsEmpty() ? int(kDone) : Fail(kWrongUsage, "", 0, problem + ", see '" + BString(mVerb) + " --help'");
}

int PictureArguments::Open(Preview& preview, const std::vector<std::string>& outputs, Stopwatch& watch)
{
    if (const int code = ReadOptions(); code != kDone)
        return code;
    if (mInputs.empty() && mModelText.empty())
        mInputs.push_back(BundledSample().FullPath().Std());
    std::vector<std::string> read = mInputs;
    read.insert(read.end(), mAlsoRead.begin(), mAlsoRead.end());
    for (const std::string* const file : {&mTexture, &mBackgroundPicture, &mMaterials})
        if (!file->empty())
            read.push_back(*file);
    for (const std::string& output : outputs)
        if (const BString problem = OutputProblem(output, read); !problem.IsEmpty())
            return Fail(kFailed, BString(output), 0, problem);
    if (!mShaderLog.empty())
    {
        if (const BString problem = OutputProblem(mShaderLog, read); !problem.IsEmpty())
            return Fail(kFailed, BString(mShaderLog), 0, problem);
        preview.SetShaderLog(BPath(BString(mShaderLog)));
    }
    if (const int code = ReadModels(preview, watch); code != kDone)
        return code;
    if (!preview.PrepareContext())
        return Fail(kNoOpenGL, "", 0, "no OpenGL to be had: " + preview.Error());
    watch.Tell("drawing without a window, as a picture needs none: " + preview.ContextDescription());
    return kDone;
}

int WritePicture(const CPB_Offscreen& picture, const std::string& output, const Preview& preview, Stopwatch& watch)
{
    const bool toStdout = output == "-";
    const BString problem = toStdout ? WritePngToStdout(picture) : WritePng(picture, BPath(BString(output)));
    if (!problem.IsEmpty())
        return Fail(kFailed, "", 0, problem);
    for (const BString& warning : preview.Warnings())
        Warn(warning);
    watch.Tell(BString("written ") + (toStdout ? "to standard output" : output.c_str()));
    if (!toStdout)
        std::printf("%s\n", output.c_str());
    return FinishStandardOutput();
}

} // namespace vx::cli
