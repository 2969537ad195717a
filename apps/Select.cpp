// VelmarBase: command line.
#include "Groups.h"
#include "ModelFile.h"

#include "base/BBitArray.h"
#include "mesh/VXGeom.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <memory>
#include <string>
#include <vector>

namespace vx::cli
{

namespace
{

constexpr int kMostSteps = 10000; // of growing or shrinking at once

/// A step as it stands on the command line.
struct Step
{
    std::string option; ///< without the dashes
    std::string value;
};

struct SelectArguments
{
    std::string input;
    std::vector<Step> steps;
    ModelOutput output;
};

/// Growing and shrinking, of polygons and of vertices.
struct Growth
{
    const char* option;
    void (VXGeom::*polys)(const char* group);
    void (VXGeom::*verts)(BBitArray& verts) const;
    const char* purpose;
};
constexpr Growth kGrowths[] = {
    {"grow", &VXGeom::PolyGroupGrowSelection, &VXGeom::VertexGroupGrowSelection,
     "Add all around: polygons that share a vertex, vertices that share an edge"},
    {"shrink", &VXGeom::PolyGroupShrinkSelection, &VXGeom::VertexGroupShrinkSelection,
     "Take away what lies at the rim; the border of the model is no rim"},
    {"grow-loop", &VXGeom::PolyGroupGrowSelectionEdgeLoop, &VXGeom::VertexGroupGrowSelectionEdgeLoop,
     "Make strips of polygons, or lines of vertices, longer at their ends"},
    {"shrink-loop", &VXGeom::PolyGroupShrinkSelectionEdgeLoop, &VXGeom::VertexGroupShrinkSelectionEdgeLoop,
     "Make strips of polygons, or lines of vertices, shorter at their ends"},
};

// In the order of E_MirrorDirection.
const std::vector<std::string> kSides = {"+x", "-x", "+y", "-y", "+z", "-z"};

// --- Values of steps

// Runs of polygon numbers, "3,7,10-19"; empty when the text is none.
struct Run
{
    std::int64_t first, last;
};
std::vector<Run> ReadRuns(std::string_view text)
{
    const auto number = [&text](std::int64_t& value)
    {
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        text.remove_prefix(std::size_t(end - text.data()));
        return error == std::errc() && value >= 1;
    };
    std::vector<Run> runs;
    for (bool more = true; more;)
    {
        Run run{};
        if (!number(run.first))
            return {};
        run.last = run.first;
        if (text.starts_with('-'))
        {
            text.remove_prefix(1);
            if (!number(run.last) || run.last < run.first)
                return {};
        }
        runs.push_back(run);
        more = text.starts_with(',');
        if (more)
            text.remove_prefix(1);
    }
    return text.empty() ? runs : std::vector<Run>();
}

std::string CheckRuns(const std::string& text)
{
    return !ReadRuns(text).empty() ? ""
                                   : "'" + text + "' names no polygons, expected numbers from 1 up such as 3,7,10-19";
}

int ReadCount(std::string_view text)
{
    int count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    return error == std::errc() && end == text.data() + text.size() && count <= kMostSteps ? count : 0;
}

std::string CheckCount(const std::string& text)
{
    return ReadCount(text) > 0
               ? ""
               : BString::Format("'%s' is no number of steps, expected 1 to %d", text.c_str(), kMostSteps).Std();
}

// In a file, white space ends a group's name, and a number sign the line.
std::string CheckGroupName(const std::string& name)
{
    const bool fits =
        !name.empty() &&
        std::none_of(name.begin(), name.end(),
                     [](char c) { return static_cast<unsigned char>(c) <= ' ' || c == '#' || c == '\\'; });
    return fits ? "" : "'" + name + "' is no name of a group, expected one without white space, # and \\";
}

// --- Running the steps

/// What is selected while the steps run. Polygons are held as a group of the model, as all operations on them want it:
/// one of its own, so that the groups that there are stay as they are until the results are put into them.
class Selection
{
public:
    Selection(VXGeom& geom, const BString& model) : mGeom(geom), mModel(model) {}

    /// @return kDone, or the code of a failure that has been told
    int Run(const std::vector<Step>& steps);
    bool OnVertices() const { return mOnVertices; }
    std::int64_t NumSelected() const { return mOnVertices ? mVerts.NumSet() : mNumLeft; }
    std::int64_t NumElements() const { return mOnVertices ? mGeom.NumVerts(false) : mGeom.NumPolys(); }

    struct Result
    {
        std::string group;
        BBitArray polys;
    };
    const std::vector<Result>& Results() const { return mResults; }

private:
    int RunStep(const Step& step);
    void Repeat(const Growth& growth, int times);
    std::int64_t NumHeld() const { return mOnVertices ? mVerts.NumSet() : PolysOf(mHeld).NumSet(); }
    bool Finish(); ///< puts the results into the groups that they are for; false when memory ran out
    int StartFromGroup(const std::string& group);
    int StartFromRuns(const std::string& text);
    void Mirror(const std::string& side, std::int32_t flags);
    void Save(const std::string& group);
    void Select(const BBitArray& polys);
    BBitArray PolysOf(const std::string& group) const;
    BBitArray PolysOfVerts() const;
    BString GroupsToChoose() const;
    int FailMemory() const { return Fail(kFailed, mModel, 0, "out of memory"); }

    VXGeom& mGeom;
    BString mModel;
    std::string mHeld;  ///< name of the group that holds the polygons meanwhile
    std::string mStart; ///< the group that the selection started from
    bool mOnVertices = false;
    BBitArray mVerts;
    std::int64_t mNumLeft = 0;
    std::vector<Result> mResults;
};

BString Selection::GroupsToChoose() const
{
    std::vector<std::string> names;
    for (const BString& name : mGeom.Geom()->groupNames)
        if (name.Std() != mHeld)
            names.push_back(name.Std());
    return BString(GroupsThereAre(std::move(names)));
}

BBitArray Selection::PolysOf(const std::string& group) const { return PolysOfGroup(mGeom, group.c_str()); }

// A polygon belongs to vertices when all its corners do.
BBitArray Selection::PolysOfVerts() const
{
    BBitArray polys(mGeom.NumPolys());
    const GEOM& record = *mGeom.Geom();
    for (int p = 0; p < record.numPolys; ++p)
    {
        const ELEMENT& poly = *record.Poly(p);
        const std::int32_t* const corners = record.sets + poly.start;
        polys.Set(p, poly.length > 0 &&
                         std::all_of(corners, corners + poly.length, [&](std::int32_t v) { return mVerts[v]; }));
    }
    return polys;
}

void Selection::Select(const BBitArray& polys)
{
    SetPolysOfGroup(mGeom, mHeld.c_str(), polys);
    mOnVertices = false;
}

int Selection::StartFromGroup(const std::string& group)
{
    const auto saved =
        std::find_if(mResults.rbegin(), mResults.rend(), [&](const Result& result) { return result.group == group; });
    if (saved == mResults.rend() &&
        (group == mHeld || !GEOM_GetGroupBit(mGeom.Geom(), group.c_str(), nullptr, nullptr)))
        return Fail(kFailed, mModel, 0, "has no group '" + BString(group) + "', " + GroupsToChoose());
    Select(saved == mResults.rend() ? PolysOf(group) : saved->polys);
    mStart = group;
    return kDone;
}

int Selection::StartFromRuns(const std::string& text)
{
    BBitArray polys(mGeom.NumPolys());
    for (const auto& [first, last] : ReadRuns(text))
    {
        if (last > mGeom.NumPolys())
            return Fail(
                kFailed, mModel, 0,
                BString::Format("has no polygon %lld, the last is %d", static_cast<long long>(last), mGeom.NumPolys()));
        for (std::int64_t p = first; p <= last; ++p)
            polys.Set(p - 1);
    }
    Select(polys);
    return kDone;
}

void Selection::Mirror(const std::string& side, std::int32_t flags)
{
    const auto direction = E_MirrorDirection(std::find(kSides.begin(), kSides.end(), side) - kSides.begin());
    if (mOnVertices)
        mGeom.VertexGroupMirrorSelection(mVerts, direction, flags);
    else
        mGeom.PolyGroupMirrorSelection(mHeld.c_str(), direction, flags);
}

void Selection::Save(const std::string& group)
{
    mResults.push_back({group, mOnVertices ? PolysOfVerts() : PolysOf(mHeld)});
}

int Selection::RunStep(const Step& step)
{
    if (step.option == "group")
        return StartFromGroup(step.value);
    if (step.option == "polygons")
        return StartFromRuns(step.value);
    if (step.option == "all")
    {
        BBitArray all(mGeom.NumPolys());
        all.SetAll(true);
        Select(all);
    }
    else if (step.option == "vertices")
    {
        if (!mOnVertices)
            mGeom.SetVertGroupFromPolyGroup(mVerts, mHeld.c_str());
        mOnVertices = true;
    }
    else if (step.option == "mirror" || step.option == "mirror-exact")
        Mirror(step.value, step.option == "mirror" ? kMirrorAdd : kMirrorAdd | kMirrorRemove);
    else if (step.option == "save")
        Save(step.value);
    for (const Growth& growth : kGrowths)
        if (step.option == growth.option)
            Repeat(growth, ReadCount(step.value));
    return kDone;
}

// A step only adds, or only takes away: one that leaves the number as it is has nothing more to do.
void Selection::Repeat(const Growth& growth, int times)
{
    std::int64_t before = -1;
    for (int i = 0; i < times && before != NumHeld(); ++i)
    {
        before = NumHeld();
        mOnVertices ? (mGeom.*growth.verts)(mVerts) : (mGeom.*growth.polys)(mHeld.c_str());
    }
}

int Selection::Run(const std::vector<Step>& steps)
{
    mHeld = AddFreshGroup({&mGeom});
    if (mHeld.empty())
        return FailMemory();
    for (const Step& step : steps)
        if (const int code = RunStep(step); code != kDone)
            return code;
    if (mResults.empty())
        Save(mStart);
    mNumLeft = PolysOf(mHeld).NumSet();
    return GEOM_SetNumGroups(mGeom.Geom(), mGeom.Geom()->numGroups - 1) == 0 && Finish() ? int(kDone) : FailMemory();
}

bool Selection::Finish()
{
    for (const Result& result : mResults)
    {
        if (GEOM_GroupAddElem(mGeom.Geom(), result.group.c_str(), -1) != 0)
            return false;
        SetPolysOfGroup(mGeom, result.group.c_str(), result.polys);
    }
    return true;
}

// --- The verb

bool IsStart(const Step& step) { return step.option == "group" || step.option == "polygons" || step.option == "all"; }

// Steps that cannot mean anything in their order. Empty when they can.
std::string OrderProblem(const std::vector<Step>& steps)
{
    if (steps.empty())
        return "nothing is selected, expected --group, --polygons or --all and what to do with it";
    if (!IsStart(steps.front()))
        return "--" + steps.front().option + " has nothing to work on, expected --group, --polygons or --all before it";
    const auto isSave = [](const Step& step) { return step.option == "save"; };
    const bool saves = std::any_of(steps.begin(), steps.end(), isSave);
    if (saves && !isSave(steps.back()))
        return "--" + steps.back().option + " comes after the last --save, expected another --save after it";
    const auto lastStart = std::find_if(steps.rbegin(), steps.rend(), IsStart);
    if (!saves && lastStart->option != "group")
        return "no --save, expected one that names the group to make";
    return {};
}

std::string Counted(std::int64_t count, const char* one, const char* many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

int Tell(const ModelOutput& output, const VXGeom& geom, const Selection& selection)
{
    const bool onVertices = selection.OnVertices();
    std::string text = std::to_string(selection.NumSelected()) + " of " +
                       (onVertices ? Counted(selection.NumElements(), "vertex", "vertices")
                                   : Counted(selection.NumElements(), "polygon", "polygons")) +
                       " selected";
    nlohmann::ordered_json groups = nlohmann::ordered_json::array();
    for (const Selection::Result& result : selection.Results())
    {
        const std::int64_t count = result.polys.NumSet();
        text += ", " + (count == 0 ? "nothing" : Counted(count, "polygon", "polygons")) + " in group " + result.group;
        groups.push_back({{"name", result.group}, {"polygons", count}});
    }
    return output.Write(geom, BString(text),
                        {{"kind", onVertices ? "vertices" : "polygons"},
                         {"selected", selection.NumSelected()},
                         {"of", selection.NumElements()},
                         {"groups", groups}});
}

int RunSelect(const SelectArguments& arguments)
{
    const ModelOutput& output = arguments.output;
    if (const std::string problem = OrderProblem(arguments.steps); !problem.empty())
        return Fail(kWrongUsage, "", 0, BString(problem) + ", see 'velmar select --help'");
    Stopwatch watch(output.verbose);
    VXGeom geom;
    if (const int code = output.Open(arguments.input, geom, watch); code != kDone)
        return code;

    Selection selection(geom, ShownName(arguments.input));
    if (const int code = selection.Run(arguments.steps); code != kDone)
        return code;
    watch.Tell("selected");
    return Tell(output, geom, selection);
}

// An option that is a step: it may be given many times, and its place on the command line counts.
CLI::Option* AddStep(CLI::App& verb, std::vector<Step>& steps, const std::string& name, const std::string& purpose)
{
    return verb
        .add_option_function<std::string>(
            "--" + name,
            [&steps, name](const std::string& value) {
                steps.push_back({name, value});
            },
            purpose)
        ->trigger_on_parse()
        ->group("Steps, in the order in which they are given");
}

} // namespace

void AddSelectVerb(CLI::App& app, int& exitCode)
{
    const auto arguments = std::make_shared<SelectArguments>();
    std::vector<Step>& steps = arguments->steps;
    CLI::App* const verb = AddVerb(app, "select", "Select polygons or vertices and keep them as named groups");
    arguments->output.AddTo(*verb, arguments->input);

    AddStep(*verb, steps, "group", "Start from the polygons of a group, one just saved included")->type_name("NAME");
    AddStep(*verb, steps, "polygons", "Start from polygons by their number as read, from 1: 3,7,10-19")
        ->type_name("NUMBERS")
        ->check(CLI::Validator(CheckRuns, ""));
    AddStep(*verb, steps, "all", "Start from all polygons")->expected(0)->type_name("");
    AddStep(*verb, steps, "vertices", "Go on with the vertices of the selected polygons")->expected(0)->type_name("");
    for (const Growth& growth : kGrowths)
        AddStep(*verb, steps, growth.option, growth.purpose)
            ->type_name("[TIMES]")
            ->expected(0, 1)
            ->default_str("1")
            ->check(CLI::Validator(CheckCount, ""));
    AddStep(*verb, steps, "mirror", "Select also what mirrors the selection on this side of the model")
        ->type_name(Listed(kSides))
        ->check(Choice("side", kSides));
    AddStep(*verb, steps, "mirror-exact", "The same, and let go of what has no such image there")
        ->type_name("SIDE")
        ->check(Choice("side", kSides));
    AddStep(
        *verb, steps, "save",
        "Make a group of the selection, in place of one of that name; of vertices: the polygons whose corners are all "
        "selected")
        ->type_name("NAME")
        ->check(CLI::Validator(CheckGroupName, ""));
    verb->footer("Without --save the group that the selection started from becomes what is selected at the end.\n"
                 "Example: velmar select man.obj -o out.obj --group head --grow 2 --mirror +x --save head_sym");
    verb->callback([arguments, &exitCode] { exitCode = RunSelect(*arguments); });
}

} // namespace vx::cli
