// VelmarBase: materials.
#pragma once

#include "material/FlagWord.h"

/// Bits of a material's flag word. The same word is the draw style of a scene or an object (VXDrawPresets.h).
enum class MaterialFlag : std::uint32_t
{
    // Style bits: what a draw preset sets and clears.
    Smooth = 1u << 0,     ///< per-vertex normals; off is flat
    Silhouette = 1u << 1, ///< the silhouette is drawn
    DrawPolys = 1u << 2,  ///< filled polygons
    DrawWires = 1u << 3,  ///< edges of polygons
    BackCull = 1u << 4,   ///< back faces are culled; follows the draw options, not the style
    LightLines = 1u << 5, ///< lines are lit
    Texture = 1u << 6,    ///< textured
    Toon = 1u << 7,       ///< toon shading
    Outline = 1u << 8,    ///< outlines; the silhouette edges of the object are computed before drawing
    Pick = 1u << 9,       ///< the pass that draws for picking

    // Bits of the surface: set by the host, never by a preset.
    HairMaterial = 1u << 10,
    NonBodyPart = 1u << 11,       ///< not part of a body
    KsIgnoreTexture = 1u << 12,   ///< the specular colour ignores the texture
    ReflectMultLights = 1u << 13, ///< reflection is multiplied by lighting
    ReflectMultKD = 1u << 14,     ///< reflection is multiplied by Kd
    SetFromScript = 1u << 15,
    Animateable = 1u << 16,
    InCurrentSelection = 1u << 17,

    // Whose style is drawn; without any of them, the material's own.
    InheritStyleFromObject = 1u << 18,       ///< on in a new material
    InheritStyleFromObjectParent = 1u << 19, ///< the object's parent's
    InheritStyleFromScene = 1u << 20,        ///< the scene material's

    ForceOpaque = 1u << 21,         ///< style: opaque regardless of transparency
    LineColorFromObject = 1u << 22, ///< lines take the object's colour
    BlackLines = 1u << 23,          ///< lines are black; set along with the line colour by the presets
    DepthOnly = 1u << 24,           ///< style: the picture shows depth
    NormalsOnly = 1u << 25,         ///< style: the picture shows normals
    VertexColorsOnly = 1u << 26,    ///< the picture shows vertex colours
    RegularBumpChannel = 1u << 27,  ///< bump comes from the regular bump channel; bits 28 to 31 are free
};

inline constexpr FlagRow<MaterialFlag> kMaterialFlags[] = {
    {MaterialFlag::Smooth, "smooth"},
    {MaterialFlag::Silhouette, "silhouette"},
    {MaterialFlag::DrawPolys, "draw-polys"},
    {MaterialFlag::DrawWires, "draw-wires"},
    {MaterialFlag::BackCull, "back-cull"},
    {MaterialFlag::LightLines, "light-lines"},
    {MaterialFlag::Texture, "texture"},
    {MaterialFlag::Toon, "toon"},
    {MaterialFlag::Outline, "outline"},
    {MaterialFlag::Pick, "pick"},
    {MaterialFlag::HairMaterial, "hair-material"},
    {MaterialFlag::NonBodyPart, "non-body-part"},
    {MaterialFlag::KsIgnoreTexture, "ks-ignore-texture"},
    {MaterialFlag::ReflectMultLights, "reflect-mult-lights"},
    {MaterialFlag::ReflectMultKD, "reflect-mult-kd"},
    {MaterialFlag::SetFromScript, "set-from-script"},
    {MaterialFlag::Animateable, "animateable"},
    {MaterialFlag::InCurrentSelection, "in-current-selection"},
    {MaterialFlag::InheritStyleFromObject, "inherit-style-from-object"},
    {MaterialFlag::InheritStyleFromObjectParent, "inherit-style-from-object-parent"},
    {MaterialFlag::InheritStyleFromScene, "inherit-style-from-scene"},
    {MaterialFlag::ForceOpaque, "force-opaque"},
    {MaterialFlag::LineColorFromObject, "line-color-from-object"},
    {MaterialFlag::BlackLines, "black-lines"},
    {MaterialFlag::DepthOnly, "depth-only"},
    {MaterialFlag::NormalsOnly, "normals-only"},
    {MaterialFlag::VertexColorsOnly, "vertex-colors-only"},
    {MaterialFlag::RegularBumpChannel, "regular-bump-channel"},
};
static_assert(FlagMask(kMaterialFlags) == 0x0FFFFFFF && FlagsInOrder(kMaterialFlags), "28 bits, none forgotten");

/// The bits that make up a style. A preset sets its own and clears the others of these.
inline constexpr FlagWord<MaterialFlag> kStyleBits = {
    MaterialFlag::Smooth,     MaterialFlag::Silhouette,  MaterialFlag::DrawPolys, MaterialFlag::DrawWires,
    MaterialFlag::LightLines, MaterialFlag::Texture,     MaterialFlag::Toon,      MaterialFlag::Outline,
    MaterialFlag::Pick,       MaterialFlag::ForceOpaque, MaterialFlag::DepthOnly, MaterialFlag::NormalsOnly};
