// VelmarBase: viewer.
#include "Panels.h"

#include "apps/Groups.h"
#include "apps/Subdivision.h"
#include "base/BText.h"

#include <imgui.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <iterator>

namespace vx::view
{

static constexpr float kFontSize = 15;
static constexpr float kPanelWidth = 20; // in heights of the font

// --- Look of the panels: dark and quiet, so that the model is what one sees

static ImVec4 Grey(float value, float alpha = 1) { return {value, value, value * 1.04f, alpha}; }
static const ImVec4 kAccent{0.33f, 0.56f, 0.80f, 1};
static const ImVec4 kWarning{0.96f, 0.72f, 0.52f, 1};

static void SetColors(ImGuiStyle& style)
{
    ImVec4* const colors = style.Colors;
    const auto accent = [](float alpha) { return ImVec4(kAccent.x, kAccent.y, kAccent.z, alpha); };
    colors[ImGuiCol_Text] = Grey(0.88f);
    colors[ImGuiCol_TextDisabled] = Grey(0.56f);
    colors[ImGuiCol_WindowBg] = Grey(0.155f);
    colors[ImGuiCol_ChildBg] = Grey(0, 0);
    colors[ImGuiCol_PopupBg] = Grey(0.125f);
    colors[ImGuiCol_Border] = Grey(0.27f);
    colors[ImGuiCol_FrameBg] = Grey(0.225f);
    colors[ImGuiCol_FrameBgHovered] = Grey(0.275f);
    colors[ImGuiCol_FrameBgActive] = Grey(0.30f);
    colors[ImGuiCol_Button] = Grey(0.25f);
    colors[ImGuiCol_ButtonHovered] = Grey(0.32f);
    colors[ImGuiCol_ButtonActive] = accent(0.8f);
    colors[ImGuiCol_Header] = Grey(0.20f);
    colors[ImGuiCol_HeaderHovered] = Grey(0.26f);
    colors[ImGuiCol_HeaderActive] = Grey(0.29f);
    colors[ImGuiCol_CheckMark] = accent(1);
    colors[ImGuiCol_SliderGrab] = accent(0.85f);
    colors[ImGuiCol_SliderGrabActive] = accent(1);
    colors[ImGuiCol_Separator] = Grey(0.25f);
    colors[ImGuiCol_ScrollbarBg] = Grey(0, 0);
    colors[ImGuiCol_ScrollbarGrab] = Grey(0.30f);
    colors[ImGuiCol_TableRowBg] = colors[ImGuiCol_TableRowBgAlt] = Grey(0, 0);
}

// Latin, Greek and Cyrillic letters, as they come in names of files and groups.
static const ImWchar kLetters[] = {0x0020, 0x024F, 0x0370, 0x03FF, 0x0400, 0x052F, 0x2010, 0x2044, 0x20AC, 0x20AC, 0};

static const char* const kFonts[] = {"/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf",
                                     "/usr/share/fonts/TTF/DejaVuSans.ttf", "/usr/share/fonts/dejavu/DejaVuSans.ttf",
                                     "/usr/share/fonts/dejavu-sans-fonts/DejaVuSans.ttf",
                                     "C:/Windows/Fonts/segoeui.ttf"};

void Panels::SetScale(float scale, float density)
{
    mScale = scale;
    ImGuiIO& io = ImGui::GetIO();
    io.Fonts->Clear();
    const float pixels = std::round(kFontSize * scale * density);
    const auto* const font =
        std::find_if(std::begin(kFonts), std::end(kFonts), [](const char* file) { return BPath(file).IsFile(); });
    if (font != std::end(kFonts))
        io.Fonts->AddFontFromFileTTF(*font, pixels, nullptr, kLetters);
    else
    {
        ImFontConfig plain; // the one that needs no file
        plain.SizePixels = pixels;
        io.Fonts->AddFontDefault(&plain);
    }
    io.FontGlobalScale = 1 / density;

    ImGuiStyle style;
    SetColors(style);
    style.WindowPadding = {14, 12};
    style.FramePadding = {8, 4};
    style.ItemSpacing = {8, 7};
    style.ItemInnerSpacing = {7, 4};
    style.FrameRounding = 4;
    style.GrabRounding = 3;
    style.PopupRounding = 4;
    style.ScrollbarRounding = 6;
    style.ScrollbarSize = 11;
    style.GrabMinSize = 11;
    style.WindowRounding = 0;
    style.WindowBorderSize = 0;
    style.IndentSpacing = 10;
    style.ScaleAllSizes(scale);
    ImGui::GetStyle() = style;
}

float Panels::Em(float units) const { return units * kFontSize * mScale; }
float Panels::PanelWidth() const { return mControls.showPanels ? std::round(Em(kPanelWidth)) : 0; }
float Panels::StatusHeight() const { return mControls.showPanels ? std::round(Em(1.9f)) : 0; }

// --- Small parts

void Panels::Label(const char* text) const
{
    ImGui::AlignTextToFramePadding();
    ImGui::TextUnformatted(text);
    ImGui::SameLine(Em(7));
    ImGui::SetNextItemWidth(-FLT_MIN);
}

void Panels::Switch(const char* label, bool PreviewOptions::*option)
{
    bool on = mSession.Options().*option;
    if (ImGui::Checkbox(label, &on))
        mSession.Change().*option = on;
}

// One that came with the command line, whatever its words, is switched off and on like all others.
void Panels::Switch(const char* label, OverlayKind overlay)
{
    const auto same = [overlay](const OverlaySpec& spec) { return spec.kind == overlay; };
    const std::vector<OverlaySpec>& overlays = mSession.Options().overlays;
    bool on = std::any_of(overlays.begin(), overlays.end(), same);
    if (!ImGui::Checkbox(label, &on))
        return;
    if (on)
        mSession.Change().overlays.push_back({overlay, {}});
    else
        std::erase_if(mSession.Change().overlays, same);
}

void Panels::Color(const char* label, VERTEX PreviewOptions::*option)
{
    VERTEX color = mSession.Options().*option;
    if (ImGui::ColorEdit3(label, &color.x, ImGuiColorEditFlags_NoInputs | ImGuiColorEditFlags_NoLabel))
        mSession.Change().*option = color;
}

// A choice among names. @return whether another was chosen
static bool Choose(const char* id, const char* const* names, int count, int& chosen)
{
    bool changed = false;
    if (!ImGui::BeginCombo(id, names[chosen], ImGuiComboFlags_HeightLargest))
        return false;
    for (int i = 0; i < count; ++i)
        if (ImGui::Selectable(names[i], i == chosen))
        {
            changed = chosen != i;
            chosen = i;
        }
    ImGui::EndCombo();
    return changed;
}

// Buttons that share a line evenly. @return the one that was pressed, -1 for none
template <std::size_t N>
static int Buttons(const char* const (&names)[N])
{
    const float gap = ImGui::GetStyle().ItemInnerSpacing.x;
    const float width = (ImGui::GetContentRegionAvail().x - gap * float(N - 1)) / float(N);
    int pressed = -1;
    for (std::size_t i = 0; i < N; ++i)
    {
        if (i > 0)
            ImGui::SameLine(0, gap);
        if (ImGui::Button(names[i], {width, 0}))
            pressed = int(i);
    }
    return pressed;
}

static std::string Counted(std::int64_t count, const char* one, const char* many)
{
    return GroupedDigits(count).Std() + " " + (count == 1 ? one : many);
}

static bool Section(const char* name, bool open)
{
    ImGui::Dummy({0, ImGui::GetStyle().ItemSpacing.y * 0.25f});
    return ImGui::CollapsingHeader(name, open ? ImGuiTreeNodeFlags_DefaultOpen : 0);
}

// --- The panel

void Panels::Draw(float width, float height)
{
    if (mControls.showPanels)
    {
        DrawSide(height);
        DrawStatus(width, height);
    }
    if (mSession.Models().empty())
        DrawHint(width, height);
    DrawMessage(height);
    if (mControls.showHelp)
        DrawHelp(width, height);
}

static constexpr ImGuiWindowFlags kFixed = ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoMove |
                                           ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoCollapse |
                                           ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_NoBringToFrontOnFocus;

void Panels::DrawSide(float height)
{
    ImGui::SetNextWindowPos({0, 0});
    ImGui::SetNextWindowSize({PanelWidth(), height});
    ImGui::Begin("side", nullptr, kFixed);
    DrawHeading();
    DrawLook();
    DrawSurface();
    DrawCamera();
    DrawSelection();
    DrawGroups();
    DrawFiles();
    ImGui::End();
}

void Panels::DrawHeading()
{
    const std::vector<BPath>& models = mSession.Models();
    if (models.empty())
        ImGui::TextUnformatted("No model");
    else
        ImGui::TextUnformatted(models.front().FileName().CString());
    if (models.size() > 1)
    {
        ImGui::SameLine();
        ImGui::TextDisabled("and %d more", int(models.size()) - 1);
    }
    const Session::Statistics& counts = mSession.Counts();
    ImGui::TextDisabled("%s, %s", Counted(counts.polygons, "polygon", "polygons").c_str(),
                        Counted(counts.vertices, "vertex", "vertices").c_str());
}

void Panels::DrawLook()
{
    if (!Section("Look", true))
        return;
    const PreviewOptions& options = mSession.Options();
    const char* names[kNumDrawModes];
    for (int i = 0; i < kNumDrawModes; ++i)
        names[i] = PresetOf(DrawMode(i)).name;
    int mode = int(options.mode);
    Label("Style");
    if (Choose("##style", names, kNumDrawModes, mode))
        mSession.Change().mode = DrawMode(mode);

    constexpr const char* kBackgrounds[] = {"gradient", "plain"};
    int background = options.background == BackgroundStyle::Gradient ? 0 : 1;
    Label("Background");
    const float gap = ImGui::GetStyle().ItemInnerSpacing.x, square = ImGui::GetFrameHeight() + gap;
    ImGui::SetNextItemWidth(ImGui::GetContentRegionAvail().x - square * (background == 0 ? 2.0f : 1.0f));
    if (Choose("##background", kBackgrounds, int(std::size(kBackgrounds)), background))
        mSession.Change().background = background == 0 ? BackgroundStyle::Gradient : BackgroundStyle::Plain;
    ImGui::SameLine(0, gap);
    Color("##top", &PreviewOptions::backgroundTop);
    if (background == 0)
    {
        ImGui::SameLine(0, gap);
        Color("##bottom", &PreviewOptions::backgroundBottom);
    }

    constexpr const char* kShaders[] = {"where needed", "for all", "never"}; // in the order of ShaderUse
    int shaders = int(options.shaders);
    Label("Shaders");
    if (Choose("##shaders", kShaders, int(std::size(kShaders)), shaders))
        mSession.Change().shaders = ShaderUse(shaders);

    constexpr const char* kVectors[] = {"none", "normals", "tangents"};
    int vectors = int(options.vectors);
    Label("Vectors");
    if (Choose("##vectors", kVectors, int(std::size(kVectors)), vectors))
        mSession.Change().vectors = VectorKind(vectors);

    Switch("Shadows", &PreviewOptions::shadows);
    ImGui::SameLine(Em(9));
    Switch("Ground", &PreviewOptions::ground);
    Switch("Edge lines", &PreviewOptions::edgeLines);
    ImGui::SameLine(Em(9));
    Switch("Back faces", &PreviewOptions::backFaces);
    Switch("Depth cue", &PreviewOptions::depthCue);
    ImGui::SameLine(Em(9));
    bool occlusion = options.occlusion != OcclusionQuality::Off;
    if (ImGui::Checkbox("Occlusion", &occlusion))
        mSession.Change().occlusion = occlusion ? OcclusionQuality::Full : OcclusionQuality::Off;
    if (HaveOverlays())
    {
        Switch("Axes", OverlayKind::Axes);
        ImGui::SameLine(Em(9));
        Switch("Facts", OverlayKind::Stats);
        Switch("Frame", OverlayKind::Frame);
    }
}

void Panels::DrawSurface()
{
    if (!Section("Surface", true))
        return;
    const PreviewOptions& options = mSession.Options();
    bool creases = mSession.Import().creases;
    float angle = mSession.Import().creaseAngle;
    Label("Hard edges");
    bool changed = ImGui::Checkbox("##creases", &creases);
    ImGui::SameLine();
    ImGui::SetNextItemWidth(-FLT_MIN);
    ImGui::BeginDisabled(!creases);
    changed |= ImGui::SliderFloat("##angle", &angle, 0, 180, "%.0f\xC2\xB0", ImGuiSliderFlags_AlwaysClamp);
    ImGui::EndDisabled();
    if (changed)
        mSession.SetCreases(creases, angle);

    int level = options.subdivision, scheme = options.ownScheme ? 1 : 0;
    Label("Subdivide");
    changed = ImGui::SliderInt("##level", &level, 0, kMostSubdivision, level == 0 ? "off" : "level %d",
                               ImGuiSliderFlags_AlwaysClamp);
    const std::vector<std::string>& schemes = cli::SchemeNames();
    if (schemes.size() > 1)
    {
        const char* const names[] = {cli::kOpenSubdiv, cli::kOwnScheme};
        Label("Scheme");
        changed |= Choose("##scheme", names, 2, scheme);
    }
    else
        scheme = 1;
    if (changed)
        mControls.Report(mSession.SetSubdivision(level, scheme == 1));
    ImGui::BeginDisabled(level == 0);
    Switch("Cage", &PreviewOptions::cage);
    ImGui::EndDisabled();
}

void Panels::DrawCamera()
{
    if (!Section("Camera", true))
        return;
    std::vector<const char*> names;
    for (const Session::NamedCamera& camera : mSession.Cameras())
        names.push_back(camera.name.c_str());
    int chosen = mSession.CameraIndex();
    ImGui::SetNextItemWidth(ImGui::GetContentRegionAvail().x - Em(3.6f));
    if (Choose("##camera", names.data(), int(names.size()), chosen))
        mSession.UseCamera(chosen);
    ImGui::SameLine(0, ImGui::GetStyle().ItemInnerSpacing.x);
    if (ImGui::Button("Add", {-FLT_MIN, 0}))
        mSession.AddCamera();

    constexpr struct
    {
        float azimuth, elevation;
    } kDirections[] = {{0, 0}, {90, 0}, {0, 90}, {35, 20}};
    if (const int side = Buttons({"Front", "Side", "Top", "Corner"}); side >= 0)
        mSession.MoveCamera().SetDirection(kDirections[side].azimuth, kDirections[side].elevation);
    const int frame = Buttons({"Frame all", "Frame selection"});
    if (frame == 0)
        mSession.FrameAll();
    else if (frame == 1)
        mSession.FrameSelected();

    const ViewOptions& look = mSession.Camera().Look();
    bool ortho = look.ortho, upIsZ = look.up == UpAxis::Z;
    float fov = look.fov;
    if (ImGui::Checkbox("Parallel", &ortho))
        mSession.MoveCamera().SetOrtho(ortho);
    ImGui::SameLine(Em(9));
    if (ImGui::Checkbox("Z is up", &upIsZ))
        mSession.SetUp(upIsZ ? UpAxis::Z : UpAxis::Y);
    Label("Angle");
    ImGui::BeginDisabled(ortho);
    if (ImGui::SliderFloat("##fov", &fov, 5, 120, "%.0f\xC2\xB0", ImGuiSliderFlags_AlwaysClamp))
        mSession.MoveCamera().SetFov(fov);
    ImGui::EndDisabled();
}

void Panels::DrawSelection()
{
    if (!Section("Selection", true))
        return;
    using Step = Selection::Step;
    const std::int64_t count = mSession.Selected().Count();
    if (count == 0)
        ImGui::TextDisabled("Click a polygon to select it");
    else
        ImGui::Text("%s selected", Counted(count, "polygon", "polygons").c_str());
    constexpr Step kSteps[] = {Step::Grow, Step::Shrink, Step::GrowLoop, Step::ShrinkLoop};
    if (const int step = Buttons({"Grow", "Shrink"}); step >= 0)
        mSession.ChangeSelection().Apply(kSteps[step]);
    if (const int step = Buttons({"Grow strip", "Shrink strip"}); step >= 0)
        mSession.ChangeSelection().Apply(kSteps[2 + step]);
    const int which = Buttons({"All", "None", "Invert"});
    if (which == 0 || which == 1)
        mSession.ChangeSelection().SelectAll(which == 0);
    else if (which == 2)
        mSession.ChangeSelection().Invert();

    constexpr const char* kSides[] = {"what is at +x", "what is at -x", "what is at +y",
                                      "what is at -y", "what is at +z", "what is at -z"};
    Label("Mirror");
    if (ImGui::BeginCombo("##mirror", "choose a side", ImGuiComboFlags_HeightLargest))
    {
        for (int side = 0; side < int(std::size(kSides)); ++side)
            if (ImGui::Selectable(kSides[side]))
                mSession.ChangeSelection().Mirror(E_MirrorDirection(side));
        ImGui::EndCombo();
    }
}

void Panels::DrawGroups()
{
    const std::vector<std::string>& groups = mSession.Groups();
    if (groups.empty() || !Section("Groups", true))
        return;
    const float row = ImGui::GetFrameHeightWithSpacing();
    ImGui::BeginChild("groups", {0, row * float(std::min<std::size_t>(groups.size(), 8))});
    ImGuiListClipper clipper; // models with ten thousand groups are around
    clipper.Begin(int(groups.size()), row);
    while (clipper.Step())
        for (int i = clipper.DisplayStart; i < clipper.DisplayEnd; ++i)
        {
            const std::string& name = groups[std::size_t(i)];
            ImGui::PushID(i);
            bool shown = mSession.IsHighlighted(name);
            const VXMaterialColor4& color = cli::HighlightColor(std::size_t(i) + 1);
            ImGui::PushStyleColor(ImGuiCol_CheckMark, {color.TotalRed(), color.TotalGreen(), color.TotalBlue(), 1});
            if (ImGui::Checkbox("##shown", &shown))
                mSession.SetHighlighted(name, shown);
            ImGui::PopStyleColor();
            ImGui::SameLine();
            const ImVec2 text = ImGui::GetCursorPos(); // by itself: ## in a name would end it in a label
            if (ImGui::Selectable("##select"))
                mSession.ChangeSelection().SelectGroup(name);
            if (ImGui::IsItemHovered())
                ImGui::SetTooltip("Select its polygons");
            ImGui::SetCursorPos(text);
            ImGui::TextUnformatted(name.c_str());
            ImGui::PopID();
        }
    ImGui::EndChild();
}

void Panels::DrawFiles()
{
    if (mSession.Models().empty() || !Section("Files", false))
        return;
    ImGui::Checkbox("Reload when they change", &mSession.watching);
    const int pressed = Buttons({"Reload now", "Save picture"});
    if (pressed == 0)
        mControls.Report(mSession.Reload());
    else if (pressed == 1)
        mControls.wantsScreenshot = true;
    for (const BPath& file : mSession.WatchedFiles())
        ImGui::TextDisabled("%s", file.FileName().CString());
    ImGui::PushStyleColor(ImGuiCol_Text, kWarning);
    for (const std::string& warning : mSession.Warnings())
        ImGui::TextWrapped("%s", warning.c_str());
    ImGui::PopStyleColor();
}

// --- Around and over the picture

void Panels::DrawStatus(float width, float height)
{
    ImGui::SetNextWindowPos({PanelWidth(), height - StatusHeight()});
    ImGui::SetNextWindowSize({std::max(width - PanelWidth(), 1.0f), StatusHeight()});
    ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, {Em(0.7f), Em(0.35f)});
    ImGui::PushStyleVar(ImGuiStyleVar_WindowMinSize, {1, 1});
    ImGui::PushStyleColor(ImGuiCol_WindowBg, Grey(0.125f));
    ImGui::Begin("status", nullptr, kFixed | ImGuiWindowFlags_NoScrollbar);
    const Session::Statistics& counts = mSession.Counts();
    const std::string items[] = {
        Counted(counts.objects, "object", "objects"), Counted(counts.polygons, "polygon", "polygons"),
        Counted(counts.vertices, "vertex", "vertices"), Counted(counts.drawCalls, "draw call", "draw calls"),
        BString::Format("%.1f ms a frame", counts.milliseconds).Std()};
    for (const std::string& item : items)
    {
        ImGui::TextDisabled("%s", item.c_str());
        ImGui::SameLine(0, Em(1.6f));
    }
    const char* const help = "H: keys";
    const float right = ImGui::GetWindowWidth() - ImGui::CalcTextSize(help).x - Em(0.7f);
    if (right > ImGui::GetCursorPosX())
    {
        ImGui::SameLine(right);
        ImGui::TextDisabled("%s", help);
    }
    ImGui::End();
    ImGui::PopStyleColor();
    ImGui::PopStyleVar(2);
}

static constexpr ImGuiWindowFlags kFloating =
    kFixed | ImGuiWindowFlags_AlwaysAutoResize | ImGuiWindowFlags_NoFocusOnAppearing;

static void BeginFloating(const char* name, ImVec2 at, ImVec2 pivot, ImGuiWindowFlags more)
{
    ImGui::SetNextWindowPos(at, ImGuiCond_Always, pivot);
    ImGui::PushStyleVar(ImGuiStyleVar_WindowRounding, 6);
    ImGui::PushStyleColor(ImGuiCol_WindowBg, Grey(0.11f, 0.90f));
    ImGui::Begin(name, nullptr, kFloating | more);
    ImGui::PopStyleColor();
    ImGui::PopStyleVar();
}

void Panels::DrawMessage(float height)
{
    const Session::Message message = mSession.Telling();
    if (message.text.empty())
        return;
    BeginFloating("message", {PanelWidth() + Em(1), height - StatusHeight() - Em(1)}, {0, 1},
                  ImGuiWindowFlags_NoInputs);
    ImGui::PushStyleColor(ImGuiCol_Text, message.isError ? kWarning : Grey(0.92f));
    ImGui::PushTextWrapPos(Em(40));
    ImGui::TextUnformatted(message.text.c_str());
    ImGui::PopTextWrapPos();
    ImGui::PopStyleColor();
    ImGui::End();
}

void Panels::DrawHint(float width, float height)
{
    BeginFloating("hint", {(PanelWidth() + width) / 2, (height - StatusHeight()) / 2}, {0.5f, 0.5f},
                  ImGuiWindowFlags_NoInputs);
    ImGui::TextUnformatted("Drop a Wavefront OBJ file here");
    ImGui::End();
}

void Panels::DrawHelp(float width, float height)
{
    BeginFloating("help", {(PanelWidth() + width) / 2, (height - StatusHeight()) / 2}, {0.5f, 0.5f}, 0);
    const auto row = [this](const char* what, const char* does, float column)
    {
        ImGui::TextUnformatted(what);
        ImGui::SameLine(column);
        ImGui::TextDisabled("%s", does);
    };
    for (const Controls::MouseRow& action : Controls::MouseActions())
        row(action.action, action.purpose, Em(18));
    ImGui::Separator();
    const std::span<const Controls::KeyRow> keys = Controls::Keys();
    const std::size_t half = (keys.size() + 1) / 2; // in two columns
    for (std::size_t i = 0; i < half; ++i)
    {
        row(keys[i].name, keys[i].purpose, Em(6.5f));
        if (i + half >= keys.size())
            continue;
        ImGui::SameLine(Em(19));
        ImGui::TextUnformatted(keys[i + half].name);
        ImGui::SameLine(Em(24.5f));
        ImGui::TextDisabled("%s", keys[i + half].purpose);
    }
    ImGui::End();
}

} // namespace vx::view
