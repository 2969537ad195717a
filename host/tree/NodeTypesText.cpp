#include "host/tree/NodeTypesText.h"

#include "host/tree/NodeTypes.h"

namespace vx
{
namespace
{
BString StandardOf(const InputType& input)
{
    const float* const v = input.standard;
    switch (input.type)
    {
    case ValueType::Float:
        return BString::Format("%g", double(v[0]));
    case ValueType::Color:
        if (v[0] == v[1] && v[1] == v[2])
            return BString::Format("%g", double(v[0]));
        [[fallthrough]];
    case ValueType::Vector:
        return BString::Format("[%g, %g, %g]", double(v[0]), double(v[1]), double(v[2]));
    case ValueType::Choice:
        return BString(ChoiceWord(input, int(v[0])));
    default:
        return {};
    }
}

BString TakenBy(const InputType& input)
{
    if (input.type != ValueType::Choice)
        return NameOf(input.type) + BString(input.takesNode ? " or node" : "");
    BString words = input.choices;
    words.ReplaceAll(" ", ", ");
    return words;
}

void AddRow(BString& text, const InputType& input)
{
    text += BString("| `") + input.name + "` | " + TakenBy(input) + " | " + StandardOf(input) + " | " + input.purpose +
            " |\n";
}
} // namespace

BString NodeTypesText()
{
    BString text;
    const NodeType* before = nullptr;
    for (const NodeType& type : NodeTypes())
    {
        text += BString(before ? "\n" : "") + "### `" + type.name + "`\n\n" + type.purpose + ". ";
        text += type.IsRoot() ? BString("A surface.") : BString("Gives a ") + NameOf(type.result) + ".";
        text += "\n";
        if (before && before->inputs.data() == type.inputs.data())
            text += BString("\nInputs are those of `") + NodeTypes()[0].name + "`.\n";
        else if (!type.inputs.empty())
        {
            text += "\n| input | takes | standard | |\n| --- | --- | --- | --- |\n";
            for (const InputType& input : type.inputs)
                AddRow(text, input);
        }
        before = &type;
    }
    return text;
}
} // namespace vx
