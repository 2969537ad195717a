// VelmarBase: materials.
#include "material/VXDrawPresets.h"

#include <cassert>
#include <iterator>

namespace
{
using enum MaterialFlag;
using Silh = DrawPreset::Silhouette;
using Lines = DrawPreset::Lines;

// All sixteen, one row each. Smooth-textured has black lines although it draws none: whoever adds wires to it by hand
// sees them in the colour of the other textured mode. Outline draws no polygons, so outlines and silhouettes remain.
// clang-format off
constexpr DrawPreset kDrawPresets[] =
{
    //  mode                           name               silhouette        lines             bits set; all other style bits are cleared
    { DrawMode::Depth,              "depth",           Silh::Wireframe,  Lines::Wireframe, {Smooth, DrawPolys, ForceOpaque, DepthOnly} },
    { DrawMode::FlatLined,          "flat-lined",      Silh::Background, Lines::Black,     {DrawPolys, DrawWires} },
    { DrawMode::Flat,               "flat",            Silh::Background, Lines::Wireframe, {DrawPolys} },
    { DrawMode::HidLine,            "hidden-line",     Silh::Background, Lines::Wireframe, {Silhouette, DrawPolys, DrawWires, ForceOpaque} },
    { DrawMode::LitWire,            "lit-wire",        Silh::Background, Lines::Wireframe, {Smooth, Silhouette, DrawPolys, DrawWires, LightLines, ForceOpaque} },
    { DrawMode::Normals,            "normals",         Silh::Wireframe,  Lines::Wireframe, {Smooth, DrawPolys, ForceOpaque, NormalsOnly} },
    { DrawMode::Outline,            "outline",         Silh::Background, Lines::Wireframe, {Silhouette, Outline} },
    { DrawMode::Silhouette,         "silhouette",      Silh::Wireframe,  Lines::Wireframe, {Silhouette, DrawPolys, ForceOpaque} },
    { DrawMode::SmoothLined,        "smooth-lined",    Silh::Background, Lines::Black,     {Smooth, DrawPolys, DrawWires} },
    { DrawMode::Smooth,             "smooth",          Silh::Background, Lines::Wireframe, {Smooth, DrawPolys} },
    { DrawMode::SmoothOutlined,     "smooth-outlined", Silh::Background, Lines::Black,     {Smooth, DrawPolys, Outline} },
    { DrawMode::SmoothTextured,     "smooth-textured", Silh::Background, Lines::Black,     {Smooth, DrawPolys, Texture} },
    { DrawMode::TexturedLined,      "textured-lined",  Silh::Background, Lines::Black,     {Smooth, DrawPolys, DrawWires, Texture} },
    { DrawMode::ToonShaded,         "toon",            Silh::Background, Lines::Wireframe, {Smooth, DrawPolys, Toon} },
    { DrawMode::ToonShadedOutlined, "toon-outlined",   Silh::Background, Lines::Black,     {Smooth, DrawPolys, Toon, Outline} },
    { DrawMode::Wire,               "wire",            Silh::Background, Lines::Wireframe, {DrawWires} },
};
// clang-format on

constexpr bool RowsFollowTheEnum()
{
    for (std::size_t i = 0; i < std::size(kDrawPresets); ++i)
        if (kDrawPresets[i].mode != DrawMode(i))
            return false;
    return true;
}

constexpr bool OnlyStyleBitsAreSet()
{
    for (const DrawPreset& row : kDrawPresets)
        if ((row.bits.Word() & ~kStyleBits.Word()) != 0)
            return false;
    return true;
}

static_assert(std::size(kDrawPresets) == kNumDrawModes && RowsFollowTheEnum(), "finding a preset is an index");
static_assert(OnlyStyleBitsAreSet(), "a preset leaves the bits of the surface alone");
static_assert(kStyleBits.Word() == 0x32003EF);
} // namespace

const DrawPreset& vx::PresetOf(DrawMode mode)
{
    assert(int(mode) >= 0 && int(mode) < kNumDrawModes);
    return kDrawPresets[int(mode)];
}

const DrawPreset* vx::FindPreset(std::string_view name)
{
    for (const DrawPreset& row : kDrawPresets)
        if (name == row.name)
            return &row;
    return nullptr;
}
