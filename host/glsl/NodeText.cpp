#include "host/glsl/Emitter.h"
#include "host/glsl/ShadingText.h"

#include <utility>

namespace vx::glsl
{
namespace
{
const char* const kNearestTexel = R"(
vec4 NearestTexel(sampler2D picture, vec2 at)
{
    vec2 size = vec2(textureSize(picture, 0));
    return textureLod(picture, (floor(at * size) + 0.5) / size, 0.0);
}
)";

const char* const kTiles = R"(
// 1 on a tile, 0 on the grout; edges are never narrower than a pixel.
float Tiles(vec2 at, float gap, float softness, float shift)
{
    vec2 edge = max(vec2(softness), fwidth(at));
    at.x += shift * mod(floor(at.y), 2.0);
    vec2 fromEdge = 0.5 - abs(fract(at) - 0.5);
    vec2 inside = gap > 0.0 ? smoothstep(vec2(0.5 * gap), vec2(0.5 * gap) + edge, fromEdge) : vec2(1.0);
    return inside.x * inside.y;
}
)";

// C. Schlick, An Inexpensive BRDF Model for Physically-based Rendering, 1994.
const char* const kFresnel = R"(
float Fresnel(vec3 n, float faceOn)
{
    float turned = clamp(1.0 - abs(dot(n, ToViewer())), 0.0, 1.0); // rounding can take it below 0
    return faceOn + (1.0 - faceOn) * pow(turned, 5.0);
}
)";

const char* const kIllumination = R"(
float Illumination(vec3 n)
{
    vec3 diffuse, specular;
    GatherLight(n, 1.0, diffuse, specular);
    return clamp(dot(diffuse, vec3(0.2126, 0.7152, 0.0722)), 0.0, 1.0);
}
)";

const char* const kPower = R"(
// Of numbers below 0 whole powers alone.
float Power(float a, float b)
{
    float size = a == 0.0 ? (b == 0.0 ? 1.0 : 0.0) : pow(abs(a), b);
    return a >= 0.0 ? size : fract(b) != 0.0 ? 0.0 : mod(b, 2.0) == 0.0 ? size : -size;
}
)";

const char* const kDivide = R"(
float Divide(float a, float b) { return b != 0.0 ? a / b : 0.0; }
)";

const char* const kDivideColor = R"(
vec3 DivideColor(vec3 a, vec3 b)
{
    return vec3(b.r != 0.0 ? a.r / b.r : 0.0, b.g != 0.0 ? a.g / b.g : 0.0, b.b != 0.0 ? a.b / b.b : 0.0);
}
)";

const char* const kModulo = R"(
float Modulo(float a, float b) { return b != 0.0 ? mod(a, b) : 0.0; }
)";

// Frames from texture coordinates: C. Schueler, Followup: Normal Mapping Without Precomputed Tangents, 2013.
const char* const kMapped = R"(
// Turns a normal as a picture of normals says. Vertices without a frame of their own get that of the coordinates.
vec3 Mapped(vec3 n, vec3 map)
{
    float side = gl_FrontFacing ? 1.0 : -1.0;
    vec3 alongX = dFdx(vPosition), alongY = dFdy(vPosition);
    vec2 uvX = dFdx(vUV), uvY = dFdy(vUV);
    float turn = sign(uvX.x * uvY.y - uvX.y * uvY.x);
    bool given = dot(vTangent, vTangent) > 1e-20 && dot(vBinormal, vBinormal) > 1e-20;
    vec3 t = given ? vTangent : turn * (alongX * uvY.y - alongY * uvX.y);
    vec3 b = given ? vBinormal : turn * (alongY * uvX.x - alongX * uvY.x);
    t -= n * dot(n, t);
    b -= n * dot(n, b);
    t *= inversesqrt(max(dot(t, t), 1e-30));
    b *= inversesqrt(max(dot(b, b), 1e-30));
    vec3 turned = t * map.x + b * map.y + n * (side * map.z);
    return dot(turned, turned) > 1e-12 ? normalize(turned) * side : n;
}
)";

// M. Mikkelsen, Bump Mapping Unparametrized Surfaces on the GPU, 2010.
const char* const kBumped = R"(
// Turns a normal by the slope of a height in the model's units.
vec3 Bumped(vec3 n, float height)
{
    vec3 alongX = dFdx(vPosition), alongY = dFdy(vPosition);
    vec3 acrossX = cross(alongY, n), acrossY = cross(n, alongX);
    float area = dot(alongX, acrossX);
    height *= length(uModelView[0].xyz) * (gl_FrontFacing ? 1.0 : -1.0);
    vec3 turned = abs(area) * n - sign(area) * (dFdx(height) * acrossX + dFdy(height) * acrossY);
    return dot(turned, turned) > 0.0 ? normalize(turned) : n;
}
)";

// Lattice values lie kScale texels apart, the first in the middle of a texel; a byte stands for the middle of its step.
std::string Noise(bool curved)
{
    const std::string lattice = Literal(float(NoiseVolume::kLattice)), size = Literal(float(NoiseVolume::kSize));
    const std::string at = "(at + 0.5) / " + lattice + " + 0.5 / " + size;
    return std::string(R"(
// Irregular numbers from -1 to 1 that change smoothly from cell to cell.
float Noise(vec3 at)
{
)") +
           (curved ? "    float v = Curved(" + at + ", " + size + ");\n"
                   : "    float v = texture3D(texture0, " + at + ").r;\n") +
           R"(    return clamp(2.0 * (v + 0.5 / 255.0) - 1.0, -1.0, 1.0);
}
)";
}

// C. Sigg and M. Hadwiger, Fast Third-Order Texture Filtering, 2005.
const char* const kCurved = R"(
// The volume by cubic B-splines: slopes of what the hardware interpolates have steps, which relief would show.
float Curved(vec3 at, float size)
{
    at = at * size - 0.5;
    vec3 f = fract(at), r = 1.0 - f;
    vec3 w0 = r * r * r / 6.0, w1 = 2.0 / 3.0 - 0.5 * f * f * (1.0 + r);
    vec3 w2 = 2.0 / 3.0 - 0.5 * r * r * (1.0 + f), w3 = f * f * f / 6.0;
    vec3 low = w0 + w1;
    vec3 a = (floor(at) - 0.5 + w1 / low) / size, b = (floor(at) + 1.5 + w3 / (w2 + w3)) / size;
    vec4 edges; // along x, of y and z
    edges.x = mix(texture3D(texture0, b).r, texture3D(texture0, vec3(a.x, b.yz)).r, low.x);
    edges.y = mix(texture3D(texture0, vec3(b.x, a.y, b.z)).r, texture3D(texture0, vec3(a.xy, b.z)).r, low.x);
    edges.z = mix(texture3D(texture0, vec3(b.xy, a.z)).r, texture3D(texture0, vec3(a.x, b.y, a.z)).r, low.x);
    edges.w = mix(texture3D(texture0, vec3(b.x, a.yz)).r, texture3D(texture0, a).r, low.x);
    vec2 sides = mix(edges.xz, edges.yw, low.y);
    return mix(sides.x, sides.y, low.z);
}
)";

// The value of a cell, which is that of one texel.
std::string Cell()
{
    return R"(
float Cell(vec3 at)
{
    float v = texture3D(texture0, (floor(at) + 0.5) / )" +
           Literal(float(NoiseVolume::kLattice)) + " + 0.5 / " + Literal(float(NoiseVolume::kSize)) + R"().r;
    return v + 0.5 / 255.0;
}
)";
}
static_assert(NoiseVolume::kSize == NoiseVolume::kLattice * NoiseVolume::kScale);

// Layers of noise, each of twice the scale, moved so that the origin is nothing special.
std::string Layers(const char* name, const char* shape)
{
    return std::string("\nfloat ") + name + R"(Noise(vec3 at, int octaves, float gain)
{
    float sum = 0.0, weight = 1.0, weights = 0.0;
    for (int i = 0; i < octaves; ++i)
    {
        sum += weight * ()" +
           shape + R"();
        weights += weight;
        weight *= gain;
        at = 2.0 * at + vec3(5.3, 1.7, 9.1);
    }
    return sum / weights;
}
)";
}

const char* const kRadialNoise = R"(
// Rings about the axis z, as irregular as the noise.
float RadialNoise(vec3 at, int octaves, float gain)
{
    float away = length(at.xy) + SmoothNoise(at, octaves, gain) - 0.5;
    return 0.5 - 0.5 * cos(6.2831853 * away);
}
)";
} // namespace

std::string PieceText(const Emitter& emitter)
{
    const bool curved = emitter.Uses(Piece::Bumped);
    const std::pair<Piece, std::string> pieces[] = {
        {Piece::Alpha, text::kAlpha},
        {Piece::Noise, curved ? kCurved + Noise(true) : Noise(false)},
        {Piece::Cell, Cell()},
        {Piece::SmoothNoise, Layers("Smooth", "0.5 + 0.5 * Noise(at)")},
        {Piece::AbsoluteNoise, Layers("Absolute", "abs(Noise(at))")},
        {Piece::RidgedNoise, Layers("Ridged", "max(1.0 - 2.0 * abs(Noise(at)), 0.0)")},
        {Piece::LatticeNoise, Layers("Lattice", "Cell(at)")},
        {Piece::RadialNoise, kRadialNoise},
        {Piece::NearestTexel, kNearestTexel},
        {Piece::Tiles, kTiles},
        {Piece::Fresnel, kFresnel},
        {Piece::Illumination, kIllumination},
        {Piece::Power, kPower},
        {Piece::Divide, kDivide},
        {Piece::DivideColor, kDivideColor},
        {Piece::Modulo, kModulo},
        {Piece::Mapped, kMapped},
        {Piece::Bumped, kBumped},
    };
    std::string text;
    for (const auto& [piece, words] : pieces)
        if (emitter.Uses(piece))
            text += words;
    return text;
}
} // namespace vx::glsl
