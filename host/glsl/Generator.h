// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BString.h"

#include <string>
#include <vector>

namespace vx
{
class ShaderTree;

/// The noise volume that generated programs sample: what to make a FilteredNoise of, and its texture. The lattice fits
/// the volume without a seam, so it may be repeated in all directions.
struct NoiseVolume
{
    static constexpr int kLattice = 16;    ///< lattice values along each side
    static constexpr int kSize = 64;       ///< texels along each side
    static constexpr float kScale = 4;     ///< texels between two lattice values
    static constexpr float kAmplitude = 1; ///< in mode 0, smooth
};

/// The shader text of one tree, and what has to be bound to it. Needs no OpenGL.
///
/// Attributes, in the order of their locations: kGlslAttributes. Not all are used by every program. Tangents and
/// binormals point to where u and v grow; of a vertex without them they are zero.
///
/// Uniforms that whoever draws sets, apart from the samplers' units (Texture::unit) and the block "Frame":
///     mat4 uModelView, mat3 uNormalMatrix, mat4 uToClip   as the fixed surfaces have them
///     int  uFlat       1: polygons are flat, whatever the normals of their vertices
///     int  uTones      number of tones, for hosts that draw toon styles by these programs; 0: lit. The library asks
///                      for no programs in toon styles, and VXGLDrawEngine leaves those to the fixed surfaces
///     vec3 uBack       linear; colour of back faces, in place of the diffuse colour or, where this is a pattern, of
///                      the factor of the pattern
///     int  uAlphaPass  1: alpha is written, for blending; 0: opaque, pictures cut out where they are clear. Only where
///                      the tree can be clear
///     sampler2D uBackPicture   the unit of the background picture, kBackPictureUnit; with DEPTH_CUE alone
/// Those that a program does not use are not in `uniforms`.
struct VELMAR_HOST_EXPORT GlslSource
{
    /// A sampler of the fragment text. The list stands in the order in which the shader engine binds textures, whose
    /// units follow from the place: see Generator.cpp.
    struct Texture
    {
        std::string sampler;
        std::string type; ///< "sampler2D", "sampler3D" for the noise volume, "none" for a place that stays empty
        BString file;
        int unit = 0;
        bool linear = false; ///< bytes are numbers, such as heights, and not colours encoded as sRGB

        /// The file name of the binding: numbers are marked, for whoever uploads it, by what no file name ends in.
        BString BindingFile() const { return linear ? file + kLinearMark : file; }
    };
    struct Uniform
    {
        std::string name, type;
    };
    static constexpr const char* kLinearMark = "\nlinear";

    std::string vertex, fragment;
    std::vector<Texture> textures;
    std::vector<Uniform> uniforms;
    bool usesTangents = false; ///< of the vertices: normal maps
    bool usesUVs = false;
    BString problem; ///< why there is no text; empty when there is

    /// Key of the program: equal exactly for equal texts and textures, on every machine and in every run. Textures
    /// count by their file names as they are to be opened: those relative to the folder that the process is in differ
    /// from one such folder to another.
    BString Hash() const;
};

inline constexpr const char* kGlslAttributes[] = {"aPosition", "aNormal", "aUV", "aColor", "aTangent", "aBinormal"};

/// What the text depends on besides the tree.
struct GlslOptions
{
    float minOpacity = 0.1f; ///< nothing is drawn clearer; that of the draw options, whose default this is
};

/// Writes the programs of a tree: GLSL 1.30 for the compatibility profile, lit per pixel like the fixed surfaces. Trees
/// that differ in the names of their nodes alone, or in what has no effect, get the same text.
VELMAR_HOST_EXPORT GlslSource GenerateGlsl(const ShaderTree& tree, const GlslOptions& options = {});

/// A text of such a program with something defined in it. DEPTH_CUE in the fragment text fades what is far, where the
/// frame asks for it; it is left out otherwise because it takes a driver as long to compile as a simple surface.
VELMAR_HOST_EXPORT std::string WithDefine(const std::string& text, const char* name);
} // namespace vx
