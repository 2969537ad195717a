#include "host/tree/MaterialJson.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <new>
#include <unordered_map>
#include <unordered_set>

namespace vx
{
namespace
{
std::string JsonOf(std::string_view text)
{
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

// The shortest text that reads back as the same float.
std::string JsonOf(float number)
{
    char buffer[32];
    return {buffer, std::to_chars(buffer, std::end(buffer), number).ptr};
}

class MaterialWriter
{
public:
    explicit MaterialWriter(const BPath& folder) : mFolder(folder.Absolute().Std().lexically_normal()) {}

    std::string Write(std::span<const NamedMaterial> materials)
    {
        mText = "{\"materials\": [";
        for (const NamedMaterial& material : materials)
        {
            mText += &material == materials.data() ? "\n" : ",\n";
            mText += "  {\"name\": " + JsonOf(material.name);
            if (!material.layers.empty())
                AddTree(*material.layers[0].tree, "   ");
            for (std::size_t i = 1; i < material.layers.size(); ++i)
            {
                mText += i == 1 ? ",\n   \"layers\": [\n" : ",\n";
                mText += "    {\"name\": " + JsonOf(material.layers[i].name);
                AddTree(*material.layers[i].tree, "     ");
                mText += i + 1 == material.layers.size() ? "}]" : "}";
            }
            mText += "}";
        }
        mText += "\n]}\n";
        return std::move(mText);
    }

private:
    // Trees that come from elsewhere may have names twice.
    void NameNodes(const ShaderTree& tree)
    {
        mNames.clear();
        std::unordered_set<std::string> taken;
        for (std::size_t i = 0; i < tree.NumNodes(); ++i)
        {
            const std::string wanted = tree.Node(i)->Name().Std();
            std::string name = wanted;
            for (int k = 2; !taken.insert(name).second; ++k)
                name = wanted + "_" + std::to_string(k);
            mNames.emplace(tree.Node(i), name);
        }
    }

    void AddTree(const ShaderTree& tree, const std::string& indent)
    {
        NameNodes(tree);
        mText += ",\n" + indent + "\"surface\": ";
        AddNode(*tree.Root(), indent + "  ");
        bool first = true;
        for (std::size_t i = 0; i < tree.NumNodes(); ++i)
        {
            const TreeNode& node = *tree.Node(i);
            if (node.Type().IsRoot())
                continue; // one is written already; others feed nothing
            mText +=
                (first ? ",\n" + indent + "\"nodes\": {\n" : ",\n") + indent + "  " + JsonOf(mNames.at(&node)) + ": ";
            AddNode(node, indent + "    ");
            first = false;
        }
        if (!first)
            mText += "}";
    }

    void AddNode(const TreeNode& node, const std::string& indent)
    {
        mText += "{\"type\": " + JsonOf(node.Type().name);
        for (int i = 0; i < node.NumInputs(); ++i)
            if (const TreeInput& input = node.At(i); !input.IsStandard())
            {
                mText += ",\n" + indent + JsonOf(input.Type().name) + ": ";
                AddValue(input);
            }
        mText += "}";
    }

    void AddValue(const TreeInput& input)
    {
        const float* const v = input.Values();
        if (input.Node())
            mText += "{\"node\": " + JsonOf(mNames.at(input.Node())) + "}";
        else if (input.Type().type == ValueType::File)
            mText += JsonOf(NameOf(input.File()));
        else if (input.Type().type == ValueType::Choice)
            mText += JsonOf(ChoiceWord(input.Type(), input.Choice()));
        else if (input.Type().type == ValueType::Float)
            mText += JsonOf(v[0]);
        else
            mText += "[" + JsonOf(v[0]) + ", " + JsonOf(v[1]) + ", " + JsonOf(v[2]) + "]";
    }

    BString NameOf(const BString& file) const
    {
        const std::filesystem::path path = BPath(file).Absolute().Std().lexically_normal();
        const std::filesystem::path relative = path.lexically_relative(mFolder);
        return BString((relative.empty() ? path : relative).generic_string());
    }

    std::filesystem::path mFolder;
    std::string mText;
    std::unordered_map<const TreeNode*, std::string> mNames;
};
} // namespace

std::string WriteMaterials(std::span<const NamedMaterial> materials, const BPath& folder)
{
    try
    {
        return MaterialWriter(folder).Write(materials);
    }
    catch (const std::bad_alloc&)
    {
        return {};
    }
}
} // namespace vx
