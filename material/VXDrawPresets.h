// VelmarBase: materials.
#pragma once

#include "VelmarExport.h"
#include "material/VXMaterialFlags.h"

#include <string_view>

/// The sixteen ways to draw, in the order of kDrawPresets.
enum class DrawMode : int
{
    Depth,
    FlatLined,
    Flat,
    HidLine,
    LitWire,
    Normals,
    Outline,
    Silhouette,
    SmoothLined,
    Smooth,
    SmoothOutlined,
    SmoothTextured,
    TexturedLined,
    ToonShaded,
    ToonShadedOutlined,
    Wire,
};
inline constexpr int kNumDrawModes = 16;

/// What a preset does to a material's flag word and to its line and silhouette colours.
struct DrawPreset
{
    enum class Silhouette
    {
        Background,
        Wireframe
    }; ///< the scene colour that the silhouette takes
    enum class Lines
    {
        Wireframe,
        Black
    }; ///< scene colour, or black with the flag BlackLines

    DrawMode mode;
    const char* name; ///< kebab-case, as the command line spells it
    Silhouette silhouette;
    Lines lines;
    FlagWord<MaterialFlag> bits; ///< set; all other style bits are cleared
};

namespace vx
{
VELMAR_EXPORT const DrawPreset& PresetOf(DrawMode mode);
VELMAR_EXPORT const DrawPreset* FindPreset(std::string_view name); ///< by its exact name; null for none
} // namespace vx
