#include "host/tree/NodeTypes.h"

namespace vx
{
namespace
{
constexpr float kLow = -1e6f, kHigh = 1e6f; // of numbers that know no bounds: no sum or product of them overflows

struct Bounds
{
    float low = kLow, high = kHigh;
};
constexpr Bounds kShare{0, 1}, kPositive{0, kHigh};

// Rows of the tables below. What only takes plain values says so by "Plain".
constexpr InputType Number(const char* name, float standard, Bounds b, const char* purpose, bool takesNode = true)
{
    return {name, ValueType::Float, {standard, 0, 0}, b.low, b.high, nullptr, purpose, takesNode};
}
constexpr InputType PlainNumber(const char* name, float standard, Bounds b, const char* purpose)
{
    return Number(name, standard, b, purpose, false);
}
constexpr InputType Color(const char* name, float grey, const char* purpose, bool takesNode = true)
{
    return {name, ValueType::Color, {grey, grey, grey}, 0, 1, nullptr, purpose, takesNode};
}
constexpr InputType PlainColor(const char* name, float grey, const char* purpose)
{
    return Color(name, grey, purpose, false);
}
constexpr InputType Choice(const char* name, const char* choices, int standard, const char* purpose)
{
    return {name, ValueType::Choice, {float(standard), 0, 0}, 0, 100, choices, purpose, false};
}

// clang-format off

// --- Roots. With nothing set they give the surface of a material about which nothing is known.

constexpr InputType kSurface[] =
{
    Color      ("Diffuse_Color",        0.72f,           "Colour in which the surface scatters light"),
    Number     ("Diffuse_Value",        1,    kPositive, "Factor of Diffuse_Color"),
    Color      ("Highlight_Color",      1,               "Colour of highlights"),
    Number     ("Highlight_Value",      0.04f, kPositive, "Factor of Highlight_Color; 0 for none"),
    PlainNumber("Highlight_Size",       28,   {1, 1000}, "Exponent of highlights: small is wide and soft, large is small and sharp"),
    Color      ("Ambient_Color",        1,               "Colour of the light that the surface gives off by itself"),
    Number     ("Ambient_Value",        0,    kPositive, "Factor of Ambient_Color; above 0 the surface glows"),
    Number     ("Transparency_Max",     0,    kShare,    "How clear the surface is at its rim, 0 opaque, 1 clear"),
    Number     ("Transparency_Min",     0,    kShare,    "How clear it is where it is seen face on"),
    Number     ("Transparency_Falloff", 0,    {0, 100},  "How far Transparency_Max keeps to the rim; 0: it holds everywhere"),
    Color      ("Translucence_Color",   1,               "Colour of light that comes through from behind"),
    Number     ("Translucence_Value",   0,    kPositive, "Factor of Translucence_Color; above 0 light shines through"),
    Color      ("AlternateDiffuse",     0,               "Colour added as it is, for diffuse shading made of nodes"),
    Color      ("AlternateSpecular",    0,               "Colour added as it is, for highlights made of nodes"),
    Number     ("Gradient_Bump",        0,    {},        "Height added to Bump, not multiplied by Bump_Strength: in model units"),
    Number     ("Bump",                 0,    {},        "Height of fine relief, whose slope turns the normal"),
    PlainNumber("Bump_Strength",        0.02f, {},       "How far a height of 1 stands out, in model units; below 0 turns it inside out"),
    {"Normal_Map", ValueType::Vector, {0, 0, 1}, -1, 1, nullptr, "Normal in tangent space, from a normal_map", true},
    PlainNumber("Geometry_Edge_Dist",   0.003f, {},      "How far edge lines are pushed off the surface, in model units"),
    PlainColor ("Geometry_Edge_Color",  0,               "Colour of edge lines"),
};

// --- Colours and pictures

constexpr InputType kUScale  = PlainNumber("U_Scale",  1, {}, "How often the picture repeats along u");
constexpr InputType kVScale  = PlainNumber("V_Scale",  1, {}, "How often it repeats along v");
constexpr InputType kUOffset = PlainNumber("U_Offset", 0, {}, "Added to u after scaling");
constexpr InputType kVOffset = PlainNumber("V_Offset", 0, {}, "Added to v after scaling");
constexpr InputType kFile = {"File", ValueType::File, {}, 0, 0, nullptr,
                             "Picture, relative to the folder of the text; without one all is as if it were white", false};
constexpr InputType kNormalFile = {"File", ValueType::File, {}, 0, 0, nullptr,
                                   "Picture of normals, relative to the folder of the text; without one nothing is turned", false};

constexpr InputType kSimpleColor[] =
{
    PlainColor ("Color",          0.72f,        "The colour"),
};
constexpr InputType kImageMap[] =
{
    kFile, kUScale, kVScale, kUOffset, kVOffset,
    PlainNumber("Gamma",          2.2f, {0.1f, 10}, "Gamma of the picture: 2.2 for colours (read as sRGB), 1 for numbers such as heights"),
    Choice     ("Filtering",      "smooth nearest", 0, "smooth, or nearest for hard pixels"),
};
constexpr InputType kNormalMap[] =
{
    kNormalFile, kUScale, kVScale, kUOffset, kVOffset,
    PlainNumber("Strength",       1, {-100, 100}, "Factor of the slopes; 0 is flat"),
    Choice     ("Green",          "up down", 0, "Where the picture's green points: up along v, or down"),
};

// --- Patterns

constexpr InputType kNoise[] =
{
    Choice     ("Mode",           "smooth absolute ridged lattice radial", 0,
                "smooth clouds; absolute billows; ridged bright veins; lattice hard cells; radial rings about the axis z"),
    Choice     ("Coordinates",    "position uv", 0, "What it depends on: the place in the model, or its texture coordinates"),
    PlainNumber("Scale",          4, {0.0001f, 10000}, "Cells for each unit of the coordinates"),
    PlainNumber("X_Scale",        1, {}, "Further factor along x, or u"),
    PlainNumber("Y_Scale",        1, {}, "Further factor along y, or v"),
    PlainNumber("Z_Scale",        1, {}, "Further factor along z"),
    PlainNumber("Octaves",        3, {1, 8}, "Layers of noise, each with twice the scale of the one before; whole numbers"),
    PlainNumber("Gain",           0.5f, kShare, "Strength of each layer beside the one before"),
};
constexpr InputType kTiles[] =
{
    Color      ("Tile_Color",     0.85f, "Colour of the tiles"),
    Color      ("Grout_Color",    0.35f, "Colour between them"),
    PlainNumber("U_Count",        8, {0.01f, 10000}, "Tiles along u from 0 to 1"),
    PlainNumber("V_Count",        8, {0.01f, 10000}, "Tiles along v from 0 to 1"),
    PlainNumber("Gap",            0.06f, kShare, "Width of the grout as a share of a tile"),
    PlainNumber("Softness",       0.02f, kShare, "Width of the edge of a tile as a share of it"),
    PlainNumber("Shift",          0, kShare, "How far each second row is shifted, as a share of a tile: 0.5 for bricks"),
};

// --- Variables

constexpr InputType kUv[] =
{
    Choice     ("Component",      "u v", 0, "Which of the two"),
    PlainNumber("Scale",          1, {}, "Factor of it"),
    PlainNumber("Offset",         0, {}, "Added after scaling"),
};
constexpr InputType kPosition[] =
{
    Choice     ("Component",      "x y z", 1, "Which of the three"),
    PlainNumber("Scale",          1, {}, "Factor of it"),
    PlainNumber("Offset",         0, {}, "Added after scaling"),
};
constexpr InputType kFresnel[] =
{
    PlainNumber("Index",          1.45f, {1, 100}, "Index of refraction: 1.33 water, 1.5 glass, 2.4 diamond"),
};
constexpr InputType kFacing[] =
{
    PlainNumber("Power",          1, {0.01f, 100}, "Power to which it is raised"),
};

// --- Calculation

constexpr InputType kMath[] =
{
    Choice     ("Operation",      "add subtract multiply divide power minimum maximum modulo step sine wave absolute fraction floor root",
                0, "step: 1 where Value_1 is at least Value_2; wave: a sine of Value_1 with period 1, from 0 to 1; "
                   "division and modulo by 0, and roots of less, give 0"),
    Number     ("Value_1",        0, {}, "First number"),
    Number     ("Value_2",        0, {}, "Second number; sine, wave, absolute, fraction, floor and root take the first alone"),
};
constexpr InputType kColorMath[] =
{
    Choice     ("Operation",      "add subtract multiply divide minimum maximum screen difference", 2,
                "What is done to each of red, green and blue; division by 0 gives 0"),
    Color      ("Color_1",        1, "First colour"),
    Color      ("Color_2",        1, "Second colour"),
};
constexpr InputType kBlender[] =
{
    Color      ("Input_1",        0, "Colour at Blending 0"),
    Color      ("Input_2",        1, "Colour at Blending 1"),
    Number     ("Blending",       0.5f, kShare, "Share of the second"),
};
constexpr InputType kClamp[] =
{
    Number     ("Value",          0, {}, "Number to bring into the range"),
    Number     ("Minimum",        0, {}, "Least result"),
    Number     ("Maximum",        1, {}, "Greatest result; counts where it is below Minimum"),
};
constexpr InputType kRamp[] =
{
    Number     ("Value",          0.5f, {}, "Where on the ramp, from 0 to 1"),
    Choice     ("Interpolation",  "linear smooth steps", 0, "Between stops: straight, eased, or hard steps"),
    PlainNumber("Stops",          2, {2, 5}, "How many of the stops count; whole numbers"),
    Color      ("Color_1",        0, "Colour at and before Position_1"),
    Color      ("Color_2",        1, "Colour at Position_2"),
    Color      ("Color_3",        1, "Colour at Position_3"),
    Color      ("Color_4",        1, "Colour at Position_4"),
    Color      ("Color_5",        1, "Colour at Position_5"),
    PlainNumber("Position_1",     0, {}, "Where Color_1 stands"),
    PlainNumber("Position_2",     1, {}, "Where Color_2 stands; one before its predecessor counts as there"),
    PlainNumber("Position_3",     1, {}, "Where Color_3 stands"),
    PlainNumber("Position_4",     1, {}, "Where Color_4 stands"),
    PlainNumber("Position_5",     1, {}, "Where Color_5 stands"),
};

constexpr NodeType kNodeTypes[] =
{
    {"PhysicalSurface", ValueType::Surface, kSurface,     "The surface of a material"},
    {"kelvo",           ValueType::Surface, kSurface,     "The same surface, as root of materials that name it so"},
    {"CyclesSurface",   ValueType::Surface, kSurface,     "The same surface, as root of materials that name it so"},
    {"simple_color",    ValueType::Color,   kSimpleColor, "One colour"},
    {"image_map",       ValueType::Color,   kImageMap,    "A picture, laid on by texture coordinates, repeated in all directions"},
    {"normal_map",      ValueType::Vector,  kNormalMap,   "A picture of normals in tangent space"},
    {"noise",           ValueType::Float,   kNoise,       "An irregular pattern from 0 to 1"},
    {"tiles",           ValueType::Color,   kTiles,       "Rows of tiles on texture coordinates"},
    {"uv",              ValueType::Float,   kUv,          "A texture coordinate"},
    {"position",        ValueType::Float,   kPosition,    "The place in the model, in its own units"},
    {"fresnel",         ValueType::Float,   kFresnel,     "How much is reflected: little face on, all at the rim"},
    {"facing",          ValueType::Float,   kFacing,      "1 where the surface faces the viewer, 0 at its rim"},
    {"illumination",    ValueType::Float,   {},           "How strongly the scene's lights fall on the place, from 0 to 1, for shading made of nodes"},
    {"math",            ValueType::Float,   kMath,        "Calculation with numbers"},
    {"color_math",      ValueType::Color,   kColorMath,   "Calculation with colours, in linear light"},
    {"blender",         ValueType::Color,   kBlender,     "A mixture of two colours, in linear light"},
    {"clamp",           ValueType::Float,   kClamp,       "A number brought into a range"},
    {"ramp",            ValueType::Color,   kRamp,        "Colours along a number, mixed in linear light"},
};
// clang-format on
} // namespace

int NodeType::InputIndex(std::string_view inputName) const
{
    for (std::size_t i = 0; i < inputs.size(); ++i)
        if (inputName == inputs[i].name)
            return int(i);
    return -1;
}

int ChoiceIndex(const InputType& input, std::string_view word)
{
    std::string_view there;
    for (int i = 0; !(there = ChoiceWord(input, i)).empty(); ++i)
        if (there == word)
            return i;
    return -1;
}

std::string_view ChoiceWord(const InputType& input, int index)
{
    std::string_view rest = input.choices ? input.choices : "";
    for (; index > 0 && !rest.empty(); --index)
    {
        const std::size_t blank = rest.find(' ');
        rest = blank == std::string_view::npos ? "" : rest.substr(blank + 1);
    }
    return index < 0 ? "" : rest.substr(0, rest.find(' '));
}

std::span<const NodeType> NodeTypes() { return kNodeTypes; }

const NodeType* FindNodeType(std::string_view name)
{
    for (const NodeType& type : kNodeTypes)
        if (name == type.name)
            return &type;
    return nullptr;
}

const char* NameOf(ValueType type)
{
    constexpr const char* kNames[] = {"number", "colour", "vector", "file", "choice", "surface"};
    return kNames[int(type)];
}

bool CanFeed(ValueType node, ValueType input)
{
    const auto isLight = [](ValueType t) { return t == ValueType::Float || t == ValueType::Color; };
    return (isLight(node) && isLight(input)) || (node == ValueType::Vector && input == ValueType::Vector);
}
} // namespace vx
