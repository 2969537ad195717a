// VelmarBase: viewer.
#include "Script.h"

#include "apps/PictureOptions.h"
#include "apps/Subdivision.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <functional>
#include <optional>

namespace vx::view
{

namespace
{

using Arguments = const std::vector<std::string>&;

// --- Values

enum class Kind
{
    Number, ///< any finite one
    Count,  ///< whole, from 0
    Switch, ///< on or off
    Size,   ///< WIDTHxHEIGHT
    Style,
    Scheme,
    Side,
    Direction,
    Axis,
    What, ///< all or selected
    Text,
};

struct Direction
{
    const char* name;
    float azimuth, elevation;
};
constexpr Direction kDirections[] = {{"front", 0, 0}, {"right", 90, 0},   {"back", 180, 0},  {"left", -90, 0},
                                     {"top", 0, 90},  {"bottom", 0, -90}, {"corner", 35, 20}};

// In the order of E_MirrorDirection.
const std::vector<std::string> kSides = {"+x", "-x", "+y", "-y", "+z", "-z"};

template <class T>
std::optional<T> ReadNumber(std::string_view text)
{
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole && value - value == 0 ? std::optional<T>(value) : std::nullopt; // neither infinite nor NaN
}

float NumberOf(const std::string& text) { return ReadNumber<float>(text).value_or(0); }
int CountOf(const std::string& text) { return ReadNumber<int>(text).value_or(0); }

constexpr int kLargestSide = 8192; // of a window's picture

std::vector<std::string> ChoicesOf(Kind kind)
{
    std::vector<std::string> names;
    switch (kind)
    {
    case Kind::Switch:
        return {"on", "off"};
    case Kind::Style:
        for (int i = 0; i < kNumDrawModes; ++i)
            names.emplace_back(PresetOf(DrawMode(i)).name);
        return names;
    case Kind::Scheme:
        return cli::SchemeNames();
    case Kind::Side:
        return kSides;
    case Kind::Direction:
        for (const Direction& direction : kDirections)
            names.emplace_back(direction.name);
        return names;
    case Kind::Axis:
        return {"y", "z"};
    case Kind::What:
        return {"all", "selected"};
    default:
        return {};
    }
}

// Empty when the text is of that kind; else what was expected.
std::string Expected(Kind kind, const std::string& text)
{
    if (kind == Kind::Number)
        return ReadNumber<float>(text) ? "" : "a number";
    if (kind == Kind::Count)
        return ReadNumber<int>(text).value_or(-1) >= 0 ? "" : "a whole number from 0";
    if (kind == Kind::Size)
        return cli::ReadPictureSize(text, kLargestSide) ? "" : "WIDTHxHEIGHT from 1x1 to 8192x8192";
    const std::vector<std::string> choices = ChoicesOf(kind);
    const bool fits = choices.empty() || std::find(choices.begin(), choices.end(), text) != choices.end();
    return fits ? "" : cli::Listed(choices);
}

// --- Commands

BPath PathOf(const std::string& text) { return BPath(BString(text)); }

BString Step(ScriptHost& host, Arguments arguments, Selection::Step step)
{
    host.GetSession().ChangeSelection().Apply(step, arguments.empty() ? 1 : CountOf(arguments[0]));
    return {};
}

BString SelectGroup(Session& session, const std::string& name)
{
    const std::vector<std::string>& groups = session.Groups();
    if (std::find(groups.begin(), groups.end(), name) == groups.end())
        return "no model has a group '" + BString(name) + "', " + BString(cli::GroupsThereAre(groups));
    session.ChangeSelection().SelectGroup(name);
    return {};
}

BString UseCamera(Session& session, const std::string& name)
{
    std::vector<std::string> names;
    for (const Session::NamedCamera& camera : session.Cameras())
    {
        if (camera.name == name)
        {
            session.UseCamera(int(names.size()));
            return {};
        }
        names.push_back(camera.name);
    }
    return "there is no camera '" + BString(name) + "', expected " + BString(cli::Listed(names));
}

BString Press(ScriptHost& host, const std::string& name)
{
    for (const Controls::KeyRow& row : Controls::Keys())
        if (BString(row.name).IsSameAs(BString(name), 0))
        {
            host.GetControls().Key(row.key, {.control = row.control});
            return {};
        }
    return "'" + BString(name) + "' is no key that does anything";
}

BString Drag(ScriptHost& host, Arguments arguments, Controls::Button button)
{
    Controls& controls = host.GetControls();
    controls.Press(button, {}, NumberOf(arguments[0]), NumberOf(arguments[1]));
    controls.Move(NumberOf(arguments[2]), NumberOf(arguments[3]));
    controls.Release(button);
    return {};
}

BString TellCounts(ScriptHost& host)
{
    if (BString problem = host.DrawNow(); !problem.IsEmpty())
        return problem;
    const Session::Statistics& counts = host.GetSession().Counts();
    std::printf("%d objects, %lld polygons, %lld vertices, %lld selected, %lld draw calls\n", counts.objects,
                static_cast<long long>(counts.polygons), static_cast<long long>(counts.vertices),
                static_cast<long long>(host.GetSession().Selected().Count()), static_cast<long long>(counts.drawCalls));
    return {};
}

/// One command: its arguments, those behind `least` may be left out.
struct Command
{
    const char* name;
    const char* arguments; ///< as help shows them
    const char* purpose;
    std::vector<Kind> kinds;
    std::size_t least;
    std::function<BString(ScriptHost&, Arguments)> run;
};

template <class Change>
Command OnOff(const char* name, const char* purpose, Change change)
{
    return {name,
            "on|off",
            purpose,
            {Kind::Switch},
            1,
            [change](ScriptHost& host, Arguments arguments)
            {
                change(host, arguments[0] == "on");
                return BString();
            }};
}

std::vector<Command> MakeCommands()
{
    const auto session = [](ScriptHost& host) -> Session& { return host.GetSession(); };
    using Host = ScriptHost&;
    return {
        {"open",
         "FILE",
         "open a model in place of what is open",
         {Kind::Text},
         1,
         [=](Host h, Arguments a) { return session(h).Open({PathOf(a[0])}); }},
        {"add",
         "FILE",
         "open a model beside what is open",
         {Kind::Text},
         1,
         [=](Host h, Arguments a)
         {
             std::vector<BPath> models = session(h).Models();
             models.push_back(PathOf(a[0]));
             return session(h).Open(models);
         }},
        {"materials",
         "FILE",
         "materials from a JSON file in place of the models' own",
         {Kind::Text},
         1,
         [=](Host h, Arguments a) { return session(h).SetMaterials(PathOf(a[0])); }},
        {"drop",
         "FILE",
         "what dropping a file on the window does",
         {Kind::Text},
         1,
         [=](Host h, Arguments a)
         {
             h.GetControls().Report(session(h).Drop({PathOf(a[0])}));
             return BString();
         }},
        {"reload", "", "read the files again", {}, 0, [=](Host h, Arguments) { return session(h).Reload(); }},
        {"size",
         "WxH",
         "size of the picture in pixels, panels not counted",
         {Kind::Size},
         1,
         [](Host h, Arguments a)
         {
             const cli::PictureSize size = *cli::ReadPictureSize(a[0], kLargestSide);
             return h.Resize(size.width, size.height);
         }},
        {"style",
         "NAME",
         "draw style",
         {Kind::Style},
         1,
         [=](Host h, Arguments a)
         {
             session(h).Change().mode = FindPreset(a[0])->mode;
             return BString();
         }},
        {"crease-angle",
         "DEGREES",
         "edges bent by more are hard",
         {Kind::Number},
         1,
         [=](Host h, Arguments a)
         {
             session(h).SetCreases(true, NumberOf(a[0]));
             return BString();
         }},
        {"subdivide",
         "N [SCHEME]",
         "levels of subdivision",
         {Kind::Count, Kind::Scheme},
         1,
         [=](Host h, Arguments a)
         {
             const bool own = a.size() > 1 ? a[1] == cli::kOwnScheme : session(h).Options().ownScheme;
             return session(h).SetSubdivision(CountOf(a[0]), own);
         }},
        OnOff("cage", "control meshes over their surfaces", [=](Host h, bool on) { session(h).Change().cage = on; }),
        OnOff("depth-cue", "what is far fades into the background",
              [=](Host h, bool on) { session(h).Change().depthCue = on; }),
        OnOff("ao", "darker corners and contacts",
              [=](Host h, bool on)
              { session(h).Change().occlusion = on ? OcclusionQuality::Full : OcclusionQuality::Off; }),
        OnOff("axes", "the world's axes in a corner, in a build with Skia",
              [=](Host h, bool on)
              {
                  std::vector<OverlaySpec>& overlays = session(h).Change().overlays;
                  std::erase_if(overlays, [](const OverlaySpec& spec) { return spec.kind == OverlayKind::Axes; });
                  if (on && HaveOverlays())
                      overlays.push_back({OverlayKind::Axes, {}});
              }),
        OnOff("edge-lines", "hard edges and borders as lines",
              [=](Host h, bool on) { session(h).Change().edgeLines = on; }),
        OnOff("shadows", "the shadow on the ground", [=](Host h, bool on) { session(h).Change().shadows = on; }),
        OnOff("ground", "a plane under the model", [=](Host h, bool on) { session(h).Change().ground = on; }),
        {"highlight",
         "GROUP",
         "show a group in colour",
         {Kind::Text},
         1,
         [=](Host h, Arguments a)
         {
             session(h).SetHighlighted(a[0], true);
             return session(h).IsHighlighted(a[0]) ? BString()
                                                   : "no model has a group '" + BString(a[0]) + "', " +
                                                         BString(cli::GroupsThereAre(session(h).Groups()));
         }},
        {"orbit",
         "DX DY",
         "walk round the model by degrees: to the right, up",
         {Kind::Number, Kind::Number},
         2,
         [=](Host h, Arguments a)
         {
             session(h).MoveCamera().Orbit(NumberOf(a[0]), NumberOf(a[1]));
             return BString();
         }},
        {"pan",
         "DX DY",
         "move the model by pixels: to the right, up",
         {Kind::Number, Kind::Number},
         2,
         [=](Host h, Arguments a)
         {
             session(h).MoveCamera().Pan(NumberOf(a[0]), NumberOf(a[1]), float(session(h).Options().height));
             return BString();
         }},
        {"zoom",
         "FACTOR",
         "2 shows everything twice as large",
         {Kind::Number},
         1,
         [=](Host h, Arguments a)
         {
             session(h).MoveCamera().Zoom(NumberOf(a[0]));
             return BString();
         }},
        {"view",
         "SIDE",
         "look from front, right, back, left, top, bottom, corner",
         {Kind::Direction},
         1,
         [=](Host h, Arguments a)
         {
             const auto* const side = std::find_if(std::begin(kDirections), std::end(kDirections),
                                                   [&](const Direction& d) { return d.name == a[0]; });
             session(h).MoveCamera().SetDirection(side->azimuth, side->elevation);
             return BString();
         }},
        {"frame",
         "all|selected",
         "fill the picture with it",
         {Kind::What},
         1,
         [=](Host h, Arguments a)
         {
             a[0] == "all" ? session(h).FrameAll() : session(h).FrameSelected();
             return BString();
         }},
        OnOff("ortho", "parallel projection", [=](Host h, bool on) { session(h).MoveCamera().SetOrtho(on); }),
        {"up",
         "y|z",
         "the model's axis that points up",
         {Kind::Axis},
         1,
         [=](Host h, Arguments a)
         {
             session(h).SetUp(a[0] == "z" ? UpAxis::Z : UpAxis::Y);
             return BString();
         }},
        {"camera",
         "[NAME]",
         "take that camera of the list; without a name add one",
         {Kind::Text},
         0,
         [=](Host h, Arguments a)
         {
             if (!a.empty())
                 return UseCamera(session(h), a[0]);
             session(h).AddCamera();
             return BString();
         }},
        {"pick",
         "X Y",
         "click: select the polygon at this pixel, from the upper left",
         {Kind::Number, Kind::Number},
         2,
         [](Host h, Arguments a) {
             return Drag(h, {a[0], a[1], a[0], a[1]}, Controls::Button::Left);
         }},
        {"drag",
         "X Y X Y",
         "drag with the left button from one pixel to another",
         {Kind::Number, Kind::Number, Kind::Number, Kind::Number},
         4,
         [](Host h, Arguments a) { return Drag(h, a, Controls::Button::Left); }},
        {"select",
         "GROUP",
         "select the polygons of a group",
         {Kind::Text},
         1,
         [=](Host h, Arguments a) { return SelectGroup(session(h), a[0]); }},
        {"grow",
         "[N]",
         "grow the selection by N rings",
         {Kind::Count},
         0,
         [](Host h, Arguments a) { return Step(h, a, Selection::Step::Grow); }},
        {"shrink",
         "[N]",
         "shrink it",
         {Kind::Count},
         0,
         [](Host h, Arguments a) { return Step(h, a, Selection::Step::Shrink); }},
        {"grow-loop",
         "[N]",
         "make strips longer",
         {Kind::Count},
         0,
         [](Host h, Arguments a) { return Step(h, a, Selection::Step::GrowLoop); }},
        {"shrink-loop",
         "[N]",
         "make strips shorter",
         {Kind::Count},
         0,
         [](Host h, Arguments a) { return Step(h, a, Selection::Step::ShrinkLoop); }},
        {"mirror",
         "SIDE",
         "select also what mirrors that side: +x, -x, +y...",
         {Kind::Side},
         1,
         [=](Host h, Arguments a)
         {
             const auto side = std::find(kSides.begin(), kSides.end(), a[0]) - kSides.begin();
             session(h).ChangeSelection().Mirror(E_MirrorDirection(side));
             return BString();
         }},
        {"press",
         "KEY",
         "what a key does, as the help page names it",
         {Kind::Text},
         1,
         [](Host h, Arguments a) { return Press(h, a[0]); }},
        OnOff("panels", "the panel beside the picture", [](Host h, bool on) { h.GetControls().showPanels = on; }),
        OnOff("help", "the page of keys", [](Host h, bool on) { h.GetControls().showHelp = on; }),
        {"screenshot",
         "FILE.png",
         "save the picture",
         {Kind::Text},
         1,
         [](Host h, Arguments a) { return h.Screenshot(PathOf(a[0])); }},
        {"window-shot",
         "FILE.png",
         "save the window, panels and all",
         {Kind::Text},
         1,
         [](Host h, Arguments a) { return h.WindowShot(PathOf(a[0])); }},
        {"counts", "", "print what is shown", {}, 0, [](Host h, Arguments) { return TellCounts(h); }},
        {"wait",
         "[SECONDS]",
         "draw what is stale, and go on drawing so long",
         {Kind::Number},
         0,
         [](Host h, Arguments a)
         {
             h.Wait(a.empty() ? 0 : double(NumberOf(a[0])));
             return BString();
         }},
        {"quit",
         "",
         "leave",
         {},
         0,
         [](Host h, Arguments)
         {
             h.GetControls().wantsToClose = true;
             return BString();
         }},
    };
}

const std::vector<Command>& Commands()
{
    static const std::vector<Command> kCommands = MakeCommands();
    return kCommands;
}

// --- Reading

// Words, or texts in double quotes; a number sign starts a comment. False when a quote is not closed.
bool Split(std::string_view line, std::vector<std::string>& words)
{
    std::size_t at = 0;
    while (true)
    {
        at = line.find_first_not_of(" \t\r", at);
        if (at == std::string_view::npos || line[at] == '#')
            return true;
        const bool quoted = line[at] == '"';
        at += quoted;
        const std::size_t end = quoted ? line.find('"', at) : std::min(line.find_first_of(" \t\r", at), line.size());
        if (end == std::string_view::npos)
            return false;
        words.emplace_back(line.substr(at, end - at));
        at = end + quoted;
    }
}

// Empty when the words are a command with all that it takes.
BString Problem(const std::vector<std::string>& words, std::size_t& index)
{
    const std::vector<Command>& commands = Commands();
    const auto found = std::find_if(commands.begin(), commands.end(),
                                    [&](const Command& command) { return words.front() == command.name; });
    if (found == commands.end())
    {
        std::vector<std::string> names;
        for (const Command& command : commands)
            names.emplace_back(command.name);
        return "unknown command '" + BString(words.front()) + "', expected " + BString(cli::Listed(names));
    }
    index = std::size_t(found - commands.begin());
    const std::size_t count = words.size() - 1;
    if (count < found->least || count > found->kinds.size())
        return BString::Format("'%s' has %d arguments, expected %s %s", found->name, int(count), found->name,
                               found->arguments);
    for (std::size_t i = 0; i < count; ++i)
        if (const std::string expected = Expected(found->kinds[i], words[i + 1]); !expected.empty())
            return "'" + BString(words[i + 1]) + "' makes no sense here, expected " + BString(expected);
    return {};
}

} // namespace

bool Script::Fail(int line, const BString& problem)
{
    mError = BString::Format("%s:%d: ", mName.c_str(), line) + problem;
    return false;
}

bool Script::Read(std::string_view text, const std::string& name)
{
    mName = name;
    mLines.clear();
    mNext = 0;
    for (int number = 1; !text.empty(); ++number)
    {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::vector<std::string> words;
        if (!Split(text.substr(0, end), words))
            return Fail(number, "a double quote is not closed");
        text.remove_prefix(std::min(end + 1, text.size()));
        std::size_t command = 0;
        if (words.empty())
            continue;
        if (BString problem = Problem(words, command); !problem.IsEmpty())
            return Fail(number, problem);
        words.erase(words.begin());
        mLines.push_back({number, command, std::move(words)});
    }
    return true;
}

bool Script::RunNext(ScriptHost& host)
{
    const Line& line = mLines[mNext++];
    const BString problem = Commands()[line.command].run(host, line.arguments);
    return problem.IsEmpty() || Fail(line.number, problem);
}

std::string Script::Help()
{
    std::string help;
    for (const Command& command : Commands())
    {
        const BString usage = BString(command.name) + " " + command.arguments;
        help += BString::Format("  %-24s %s\n", usage.CString(), command.purpose).Std();
    }
    return help;
}

} // namespace vx::view
