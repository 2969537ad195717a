#include "host/tree/MaterialJson.h"

#include "base/BFile.h"
#include "base/MEM.h"
#include "host/tree/detail/JsonText.h"

#include <algorithm>
#include <charconv>
#include <new>
#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace vx
{
namespace
{
using Kind = JsonText::Kind;

constexpr std::int64_t kMostMessages = 50; // of each kind; a file with more has one cause for all of them
constexpr std::size_t kMostQuoted = 60;    // characters of the text in a message

// A piece of the text for a message: whole letters, not too many of them.
std::string Quoted(std::string_view text)
{
    std::size_t length = std::min(text.size(), kMostQuoted);
    while (length > 0 && length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
        --length;
    std::string told = "'";
    told += text.substr(0, length);
    told += length < text.size() ? "...'" : "'";
    return told;
}

std::size_t EditDistance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i)
    {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j)
        {
            const std::size_t replaced = diagonal + (a[i - 1] != b[j - 1]);
            diagonal = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

// "Scale" for "scael", else all that there is.
std::string Expected(std::string_view given, const std::vector<std::string_view>& names)
{
    std::string all;
    std::string_view nearest;
    std::size_t least = 4; // more letters off is another word
    for (const std::string_view name : names)
    {
        const std::size_t distance = given.size() < 64 ? EditDistance(given, name) : least;
        if (distance < least && distance < name.size())
        {
            least = distance;
            nearest = name;
        }
        all += (all.empty() ? "" : ", ") + std::string(name);
    }
    return nearest.empty() ? all : std::string(nearest);
}

class MaterialReader
{
public:
    MaterialReader(const JsonText& json, const BString& name, const BPath& folder, MaterialsReport& report)
        : mJson(json), mName(name), mFolder(folder), mReport(report)
    {
    }

    bool Run(std::vector<NamedMaterial>& materials);

private:
    struct PendingNode
    {
        TreeInput* input;
        std::uint32_t name; ///< value of the text
        ValueType type;
    };

    BString At(std::uint32_t value, const std::string& text) const;
    void Problem(std::uint32_t value, const std::string& text);
    void Warn(std::uint32_t value, const std::string& text);
    bool IsA(std::uint32_t value, Kind kind, const char* what);
    void CheckKeys(std::uint32_t object, const std::vector<std::string_view>& known);

    std::optional<NamedMaterial> ReadMaterial(std::uint32_t object);
    void ReadLayer(std::uint32_t object, NamedMaterial::Layer& layer);
    const NodeType* ReadType(std::uint32_t object, bool root);
    TreeNode* AddNode(std::uint32_t object, const NodeType& type, const BString& name);
    void ReadInputs(std::uint32_t object, TreeNode& node);
    void ReadInput(std::uint32_t value, TreeInput& input);
    void ReadConnection(std::uint32_t object, TreeInput& input);
    void ReadNumbers(std::uint32_t value, TreeInput& input);
    bool ReadColorText(std::uint32_t value, TreeInput& input);
    void SetNumbers(std::uint32_t value, TreeInput& input, const double (&numbers)[3]);
    void ConnectPending();
    void WarnOfUnused();
    BString NewName(const char* type);
    bool TakeNodeNames();
    void ReportTooManyNodes(std::uint32_t at);

    const JsonText& mJson;
    const BString& mName;
    const BPath& mFolder;
    MaterialsReport& mReport;
    BString mMaterial; ///< the one that is being read
    bool mSound = true;
    ShaderTree* mTree = nullptr;
    std::uint32_t mNodesAt = 0;
    std::unordered_set<std::string_view> mNodeNames;        ///< in "nodes"
    std::unordered_map<std::string_view, TreeNode*> mNamed; ///< nodes that can be referred to
    std::unordered_map<const TreeNode*, std::uint32_t> mPlaces;
    std::vector<PendingNode> mPending;
    int mNumNewNames = 0;
};

// --- Messages

BString MaterialReader::At(std::uint32_t value, const std::string& text) const
{
    const JsonText::Place place = mJson.PlaceOf(mJson.At(value));
    return mName + BString::Format(":%d:%d: ", place.line, place.column) + BString(text);
}

void MaterialReader::Problem(std::uint32_t value, const std::string& text)
{
    const bool first = mSound;
    mSound = false;
    if (mReport.problems.Count() < kMostMessages)
        mReport.problems.Append(At(
            value, text + (first && !mMaterial.IsEmpty() ? "; material " + Quoted(mMaterial) + " is left out" : "")));
    else if (mReport.problems.Count() == kMostMessages)
        mReport.problems.Append(At(value, "there are more errors from here on"));
}

void MaterialReader::Warn(std::uint32_t value, const std::string& text)
{
    if (mReport.warnings.Count() < kMostMessages)
        mReport.warnings.Append(At(value, text));
    else if (mReport.warnings.Count() == kMostMessages)
        mReport.warnings.Append(At(value, "there are more warnings from here on"));
}

bool MaterialReader::IsA(std::uint32_t value, Kind kind, const char* what)
{
    if (mJson.KindOf(value) == kind)
        return true;
    Problem(value, std::string("expected ") + what + ", found " + mJson.NameOf(value));
    return false;
}

void MaterialReader::CheckKeys(std::uint32_t object, const std::vector<std::string_view>& known)
{
    std::unordered_set<std::string_view> seen;
    for (std::uint32_t key = mJson.First(object); key < mJson.End(object); key = mJson.Next(key + 1))
    {
        const std::string_view name = mJson.Text(key);
        if (!seen.insert(name).second)
            Problem(key, Quoted(name) + " stands here for the second time");
        else if (!known.empty() && std::find(known.begin(), known.end(), name) == known.end())
            Problem(key, "unknown key " + Quoted(name) + ", expected " + Expected(name, known));
    }
}

// --- Materials

bool MaterialReader::Run(std::vector<NamedMaterial>& materials)
{
    const std::uint32_t list = mJson.KindOf(mJson.Root()) == Kind::Object ? mJson.Find(mJson.Root(), "materials") : 0;
    if (list == 0 || mJson.KindOf(list) != Kind::List)
    {
        mReport.error = At(list, "expected an object with a list of materials: {\"materials\": [...]}");
        return false;
    }
    std::unordered_map<std::string, std::uint32_t> seen;
    for (std::uint32_t i = mJson.First(list); i < mJson.End(list); i = mJson.Next(i))
    {
        mSound = true;
        mMaterial.Empty();
        std::optional<NamedMaterial> material = ReadMaterial(i);
        if (mMaterial.IsEmpty())
            continue;
        const auto [before, isNew] = seen.emplace(mMaterial.Std(), i);
        if (!isNew)
        {
            // What else is wrong with it is told already. A place takes a walk through the text, so that many of them
            // would take the square of its length.
            mSound = true;
            std::string where;
            if (mReport.problems.Count() < kMostMessages)
                where = ", in line " + std::to_string(mJson.PlaceOf(mJson.At(mJson.Find(before->second, "name"))).line);
            Problem(mJson.Find(i, "name"), "the name was given before" + where + ", expected another");
        }
        else if (material && mSound)
            materials.push_back(std::move(*material));
    }
    mSound = true;
    mMaterial.Empty();
    CheckKeys(mJson.Root(), {"materials"});
    return true;
}

std::optional<NamedMaterial> MaterialReader::ReadMaterial(std::uint32_t object)
{
    if (!IsA(object, Kind::Object, "a material as an object"))
        return std::nullopt;
    const std::uint32_t name = mJson.Find(object, "name");
    if (name == 0 || mJson.KindOf(name) != Kind::Text || mJson.Text(name).empty())
    {
        Problem(name ? name : object, "expected a name for the material: \"name\": \"...\"; it is left out");
        return std::nullopt;
    }
    mMaterial = BString(mJson.Text(name));
    NamedMaterial material;
    material.name = mMaterial;
    CheckKeys(object, {"name", "surface", "nodes", "layers"});
    material.layers.push_back({"Base", nullptr});
    ReadLayer(object, material.layers.back());

    const std::uint32_t layers = mJson.Find(object, "layers");
    if (layers == 0 || !IsA(layers, Kind::List, "a list of layers"))
        return material;
    for (std::uint32_t i = mJson.First(layers); i < mJson.End(layers) && mSound; i = mJson.Next(i))
    {
        if (!IsA(i, Kind::Object, "a layer as an object"))
            break;
        CheckKeys(i, {"name", "surface", "nodes"});
        const std::uint32_t layerName = mJson.Find(i, "name");
        if (layerName == 0)
            Problem(i, "expected a name for the layer: \"name\": \"...\"");
        else if (IsA(layerName, Kind::Text, "a name"))
        {
            material.layers.push_back({BString(mJson.Text(layerName)), nullptr});
            ReadLayer(i, material.layers.back());
        }
    }
    return material;
}

void MaterialReader::ReadLayer(std::uint32_t object, NamedMaterial::Layer& layer)
{
    const std::uint32_t surface = mJson.Find(object, "surface");
    if (surface == 0)
        return Problem(object, "expected a surface: \"surface\": {...}");
    if (!IsA(surface, Kind::Object, "the surface as an object"))
        return;
    layer.tree = std::make_unique<ShaderTree>();
    mTree = layer.tree.get();
    mNamed.clear();
    mPlaces.clear();
    mPending.clear();
    mNumNewNames = 0;
    mNodeNames.clear();
    mNodesAt = mJson.Find(object, "nodes");
    if (mNodesAt != 0 && IsA(mNodesAt, Kind::Object, "the nodes as an object") && !TakeNodeNames())
        return;
    if (const NodeType* const type = ReadType(surface, true))
        if (TreeNode* const root = AddNode(surface, *type, "surface"))
        {
            mTree->SetRoot(root);
            ReadInputs(surface, *root);
        }
    if (mNodesAt != 0 && mSound)
        for (std::uint32_t key = mJson.First(mNodesAt); key < mJson.End(mNodesAt) && mSound; key = mJson.Next(key + 1))
        {
            if (!IsA(key + 1, Kind::Object, "a node as an object"))
                break;
            const NodeType* const type = ReadType(key + 1, false);
            TreeNode* const node = type ? AddNode(key + 1, *type, BString(mJson.Text(key))) : nullptr;
            if (!node)
                break;
            mNamed.emplace(mJson.Text(key), node);
            ReadInputs(key + 1, *node);
        }
    if (!mSound)
        return;
    ConnectPending();
    if (const BString cycle = mTree->CycleProblem(); !cycle.IsEmpty())
        Problem(mNodesAt, "nodes feed themselves: " + cycle.Std());
    else if (mSound)
        WarnOfUnused();
}

// --- Nodes

// The names are looked through once, and there are few of them: what comes after may search them. False with a problem.
bool MaterialReader::TakeNodeNames()
{
    for (std::uint32_t key = mJson.First(mNodesAt); key < mJson.End(mNodesAt); key = mJson.Next(key + 1))
        if (!mNodeNames.insert(mJson.Text(key)).second)
            Problem(key, Quoted(mJson.Text(key)) + " stands here for the second time");
        else if (mNodeNames.size() == std::size_t(kMostNodes)) // the surface is a node too
        {
            ReportTooManyNodes(key);
            return false;
        }
    return true;
}

void MaterialReader::ReportTooManyNodes(std::uint32_t at)
{
    Problem(at, "more than " + std::to_string(kMostNodes) + " nodes");
}

const NodeType* MaterialReader::ReadType(std::uint32_t object, bool root)
{
    const std::uint32_t value = mJson.Find(object, "type");
    if (value == 0 && root)
        return FindNodeType("PhysicalSurface");
    if (value == 0)
        Problem(object, "expected the type of the node: \"type\": \"noise\" or another");
    if (value == 0 || !IsA(value, Kind::Text, "the name of a node type"))
        return nullptr;
    const std::string_view name = mJson.Text(value);
    const NodeType* const type = FindNodeType(name);
    if (type && type->IsRoot() == root)
        return type;
    std::vector<std::string_view> names;
    for (const NodeType& known : NodeTypes())
        if (known.IsRoot() == root)
            names.emplace_back(known.name);
    Problem(value, (type ? Quoted(name) + (root ? " is no surface" : " is a surface and feeds nothing")
                         : "unknown node type " + Quoted(name)) +
                       ", expected " + Expected(name, names));
    return nullptr;
}

TreeNode* MaterialReader::AddNode(std::uint32_t object, const NodeType& type, const BString& name)
{
    if (mTree->NumNodes() == std::size_t(kMostNodes))
    {
        ReportTooManyNodes(object);
        return nullptr;
    }
    TreeNode* const node = mTree->AddNode(type.name, name);
    mPlaces.emplace(node, object);
    return node;
}

// A name for a node that the text gives none, which it does not give to another either.
BString MaterialReader::NewName(const char* type)
{
    for (;;)
    {
        BString name = BString::Format("%s_%d", type, ++mNumNewNames);
        if (!mNodeNames.contains(name))
            return name;
    }
}

void MaterialReader::ReadInputs(std::uint32_t object, TreeNode& node)
{
    CheckKeys(object, {});
    for (std::uint32_t key = mJson.First(object); key < mJson.End(object) && mSound; key = mJson.Next(key + 1))
    {
        const std::string_view name = mJson.Text(key);
        if (name == "type")
            continue;
        const int i = node.Type().InputIndex(name);
        if (i >= 0)
        {
            ReadInput(key + 1, node.At(i));
            continue;
        }
        std::vector<std::string_view> names;
        for (const InputType& input : node.Type().inputs)
            names.emplace_back(input.name);
        Problem(key, "unknown input " + Quoted(name) + " of " + node.Type().name +
                         (names.empty() ? ", expected none" : ", expected " + Expected(name, names)));
    }
}

// --- Inputs

void MaterialReader::ReadInput(std::uint32_t value, TreeInput& input)
{
    const InputType& type = input.Type();
    if (mJson.KindOf(value) == Kind::Object && type.takesNode)
        return ReadConnection(value, input);
    switch (type.type)
    {
    case ValueType::Float:
        if (IsA(value, Kind::Number, type.takesNode ? "a number or a node" : "a number"))
            SetNumbers(value, input, {mJson.At(value).number, 0, 0});
        return;
    case ValueType::Color:
    case ValueType::Vector:
        return ReadNumbers(value, input);
    case ValueType::File:
        if (IsA(value, Kind::Text, "the name of a file"))
        {
            BString file(mJson.Text(value));
            file.ReplaceAll("\\", "/");
            if (file.Find(std::string_view("\0", 1)) >= 0)
                Problem(value, "a file cannot be named so");
            else if (!file.IsEmpty())
                input.SetFile(mFolder.Joined(file).FullPath());
        }
        return;
    case ValueType::Choice:
        if (IsA(value, Kind::Text, "a word"))
        {
            const int choice = ChoiceIndex(type, mJson.Text(value));
            std::vector<std::string_view> words;
            for (int i = 0; !ChoiceWord(type, i).empty(); ++i)
                words.push_back(ChoiceWord(type, i));
            if (choice < 0)
                Problem(value, "unknown " + std::string(type.name) + " " + Quoted(mJson.Text(value)) + ", expected " +
                                   Expected(mJson.Text(value), words));
            else
                input.Set(float(choice));
        }
        return;
    case ValueType::Surface:
        return; // no table has such an input
    }
}

void MaterialReader::ReadConnection(std::uint32_t object, TreeInput& input)
{
    const std::uint32_t reference = mJson.Find(object, "node");
    if (reference != 0)
    {
        CheckKeys(object, {"node"});
        if (mSound && IsA(reference, Kind::Text, "the name of a node"))
            mPending.push_back({&input, reference, input.Type().type});
        return;
    }
    if (mJson.Find(object, "type") == 0)
        return Problem(object, "expected a node: {\"node\": \"its name\"} or {\"type\": \"noise\", ...}");
    const NodeType* const type = ReadType(object, false);
    if (!type)
        return;
    if (!CanFeed(type->result, input.Type().type))
        return Problem(object, std::string("expected a node that gives a ") + NameOf(input.Type().type) + ", " +
                                   type->name + " gives a " + NameOf(type->result));
    TreeNode* const node = AddNode(object, *type, NewName(type->name));
    if (!node)
        return;
    input.Connect(node);
    ReadInputs(object, *node);
}

void MaterialReader::ReadNumbers(std::uint32_t value, TreeInput& input)
{
    const bool color = input.Type().type == ValueType::Color;
    if (color && mJson.KindOf(value) == Kind::Number)
    {
        const double grey = mJson.At(value).number;
        return SetNumbers(value, input, {grey, grey, grey});
    }
    if (color && mJson.KindOf(value) == Kind::Text && ReadColorText(value, input))
        return;
    const char* const what = !color                   ? "three numbers, [x, y, z]"
                             : input.Type().takesNode ? "a colour, [red, green, blue], \"#RRGGBB\" or a grey, or a node"
                                                      : "a colour, [red, green, blue], \"#RRGGBB\" or a grey";
    if (!IsA(value, Kind::List, what))
        return;
    double numbers[3];
    int count = 0;
    for (std::uint32_t i = mJson.First(value); i < mJson.End(value); i = mJson.Next(i), ++count)
    {
        if (count < 3 && !IsA(i, Kind::Number, "a number"))
            return;
        if (count < 3)
            numbers[count] = mJson.At(i).number;
    }
    if (count != 3)
        return Problem(value, std::string("expected ") + what + ", found a list of " + std::to_string(count));
    SetNumbers(value, input, numbers);
}

bool MaterialReader::ReadColorText(std::uint32_t value, TreeInput& input)
{
    const std::string_view text = mJson.Text(value);
    unsigned bits = 0;
    if (text.size() != 7 || text[0] != '#' ||
        std::from_chars(text.data() + 1, text.data() + 7, bits, 16).ptr != text.data() + 7)
        return false;
    input.Set(float(bits >> 16 & 255) / 255, float(bits >> 8 & 255) / 255, float(bits & 255) / 255);
    return true;
}

void MaterialReader::SetNumbers(std::uint32_t value, TreeInput& input, const double (&numbers)[3])
{
    const InputType& type = input.Type();
    for (const double number : numbers)
        if (const double low = std::min<double>(type.low, 0); // the unused ones of a number are 0
            number < (type.type == ValueType::Float ? low : type.low) || number > type.high)
        {
            Warn(value, BString::Format("%g is brought into the range of %s, %g to %g", number, type.name,
                                        double(type.low), double(type.high))
                            .Std());
            break;
        }
    input.Set(float(numbers[0]), float(numbers[1]), float(numbers[2]));
}

// --- Afterwards

void MaterialReader::ConnectPending()
{
    for (const PendingNode& pending : mPending)
    {
        const std::string_view name = mJson.Text(pending.name);
        const auto found = mNamed.find(name);
        if (found == mNamed.end())
        {
            std::vector<std::string_view> names;
            for (std::size_t i = 0; i < mTree->NumNodes() && names.size() < 20; ++i)
                if (mNamed.contains(mTree->Node(i)->Name()))
                    names.emplace_back(mTree->Node(i)->Name());
            Problem(pending.name, "there is no node " + Quoted(name) + " in the material's \"nodes\", expected " +
                                      (names.empty() ? "it to be there" : Expected(name, names)));
            continue;
        }
        const NodeType& type = found->second->Type();
        if (!CanFeed(type.result, pending.type))
            Problem(pending.name, std::string("expected a node that gives a ") + NameOf(pending.type) + ", " +
                                      Quoted(name) + " gives a " + NameOf(type.result));
        else
            pending.input->Connect(found->second);
    }
}

void MaterialReader::WarnOfUnused()
{
    std::unordered_set<const TreeNode*> used{mTree->Root()};
    for (std::size_t i = 0; i < mTree->NumNodes(); ++i)
        for (int k = 0; k < mTree->Node(i)->NumInputs(); ++k)
            used.insert(mTree->Node(i)->At(k).Node());
    for (std::size_t i = 0; i < mTree->NumNodes(); ++i)
        if (const TreeNode* const node = mTree->Node(i); !used.contains(node))
            Warn(mPlaces.at(node), "node " + Quoted(node->Name()) + " feeds nothing");
}
} // namespace

bool ReadMaterials(const char* text, std::size_t size, const BString& name, const BPath& folder,
                   std::vector<NamedMaterial>& materials, MaterialsReport& report)
{
    report.error.Empty();
    try
    {
        JsonText json;
        if (!json.Read({text, size}))
        {
            const JsonText::Place place = json.PlaceOf(json.ErrorAt());
            report.error = name + BString::Format(":%d:%d: ", place.line, place.column) + BString(json.Error());
            return false;
        }
        return MaterialReader(json, name, folder, report).Run(materials);
    }
    catch (const std::bad_alloc&)
    {
        report.error = name + ": does not fit into memory";
        return false;
    }
}

bool ReadMaterialsFile(const BPath& path, std::vector<NamedMaterial>& materials, MaterialsReport& report)
{
    BFile file(path);
    char* const text = file.Open(BFile::Mode::Read) ? nullptr : file.ReadAll();
    if (!text)
    {
        report.error = path.FullPath() + ": " + file.LastError();
        return false;
    }
    const bool read = ReadMaterials(text, MEM_Count(text), path.FullPath(), path.Parent(), materials, report);
    MEM_Free(text);
    return read;
}
} // namespace vx
