// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"

#include <span>
#include <string_view>

/// @file
/// The kinds of node that material trees are made of, as a table: what a node is called, what it takes in, what it
/// gives. Reading, writing, checking and shader generation all go by it.

namespace vx
{
/// What an input takes and a node gives. Floats and colours convert into each other: a colour's luminance (of linear
/// light, by Rec. 709), and grey.
enum class ValueType
{
    Float,
    Color,   ///< red, green, blue as they are written, sRGB 0..1; nodes compute with linear light
    Vector,  ///< a direction in tangent space, each part -1..1; (0, 0, 1) is the surface's own normal
    File,    ///< a picture; plain values only
    Choice,  ///< one of a few words; plain values only
    Surface, ///< what a root gives: nothing to connect to
};

struct InputType
{
    const char* name; ///< as texts and code have it, such as "Diffuse_Color"
    ValueType type;
    float standard[3];   ///< value where nothing is said: number, colour, vector, or index into the choices in [0]
    float low, high;     ///< plain numbers beyond are brought to the nearer of the two, by TreeInput::Set
    const char* choices; ///< of a Choice, separated by blanks; otherwise null
    const char* purpose; ///< one line for people
    bool takesNode;      ///< false: plain values only
};

struct NodeType
{
    const char* name; ///< such as "image_map"
    ValueType result;
    std::span<const InputType> inputs;
    const char* purpose;

    VELMAR_HOST_EXPORT int InputIndex(std::string_view inputName) const; ///< -1 for none
    bool IsRoot() const { return result == ValueType::Surface; }
};

/// Index of a word among the choices of an input, -1 for none.
VELMAR_HOST_EXPORT int ChoiceIndex(const InputType& input, std::string_view word);
/// The word of that index; empty for none.
VELMAR_HOST_EXPORT std::string_view ChoiceWord(const InputType& input, int index);

VELMAR_HOST_EXPORT std::span<const NodeType> NodeTypes();               ///< surface roots first
VELMAR_HOST_EXPORT const NodeType* FindNodeType(std::string_view name); ///< null for none
VELMAR_HOST_EXPORT const char* NameOf(ValueType type);                  ///< "number", "colour"... for messages

/// Whether an input of one type can be fed by a node that gives the other.
VELMAR_HOST_EXPORT bool CanFeed(ValueType node, ValueType input);
} // namespace vx
