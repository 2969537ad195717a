#include "host/glsl/ShadingText.h"

namespace vx::text
{
const char* const kFrame = R"(
struct Light
{
    vec4 position;  // view space; w 0: the direction to a light far away
    vec4 color;     // linear; w: 0 constant, 1 inverse square, 2 inverse linear
    vec4 axis;      // view space, where a spot or an area shines; w: cosine of a spot's outer angle, -2 for no spot. Of
                    // a light far away: halfway between it and a viewer far away
    vec4 range;     // attenuation start and end, cosine of a spot's inner angle, radius of an area
};
layout(std140) uniform Frame
{
    mat4 uProjection;
    vec4 uViewport;     // width, height, device pixels for one pixel of the picture, 1 for parallel projection
    vec4 uUp;           // view space; w: number of lights
    vec4 uSky;          // ambient light from above, linear; w: 1 when images light the scene
    vec4 uFloor;        // ambient light from below, linear
    vec4 uBackTop;      // background, as it is written; w: alpha
    vec4 uBackBottom;
    vec4 uTile;         // the part of the picture that is drawn: scale x y, offset x y, of 0..1
    vec4 uDepths;       // nearest and farthest depth of the content along the view
    vec4 uCue;          // depth cue: where it begins, one over its length, 1 while it is on; w: 1 with a picture behind
    vec4 uPicture;      // place in the background picture: scale x y, offset x y, of the place in the picture drawn
    Light uLights[8];
    mat4 uImage[3];     // light of images, for each colour: a quadratic form of the view-space normal
};
)";

const char* const kEncoded = R"(
vec3 Encoded(vec3 c)    // linear to sRGB
{
    c = clamp(c, 0.0, 1.0);
    return mix(12.92 * c, 1.055 * pow(c, vec3(1.0 / 2.4)) - 0.055, step(vec3(0.0031308), c));
}
)";

const char* const kDither = R"(
// Breaks up the steps of 8-bit gradients. J. Jimenez, Next Generation Post Processing in Call of Duty, 2014.
float Dither()
{
    return fract(52.9829189 * fract(dot(gl_FragCoord.xy, vec2(0.06711056, 0.00583715)))) - 0.5;
}
)";

const char* const kBackground = R"(
uniform sampler2D uBackPicture; // on a unit that no material uses

// What is drawn behind everything, colour times alpha: a vertical gradient, and a picture over it.
vec4 Background()
{
    vec2 place = (gl_FragCoord.xy / uViewport.xy) * uTile.xy + uTile.zw;
    float t = smoothstep(0.0, 1.0, place.y);
    vec4 color = mix(uBackBottom, uBackTop, t);
    float noise = uBackTop == uBackBottom ? 0.0 : Dither();
    color.rgb += noise / 255.0;
    if (uCue.w > 0.5)
    {
        vec2 at = place * uPicture.xy + uPicture.zw;
        float texels = float(textureSize(uBackPicture, 0).x) * uPicture.x * uTile.x / uViewport.x; // in a pixel
        vec4 picture = textureLod(uBackPicture, at, max(log2(texels), 0.0));
        bool inside = all(greaterThanEqual(at, vec2(0.0))) && all(lessThanEqual(at, vec2(1.0)));
        picture *= inside ? 1.0 : 0.0;
        color = picture + color * (1.0 - picture.a);
    }
    return color;
}
)";

const char* const kCued = R"(
// Depth cue: how much of what lies so far along the view has faded into the background.
float Cue(float away) { return uCue.z * clamp((away - uCue.x) * uCue.y, 0.0, 1.0); }

// A colour as it is written, with its opacity, after that.
vec4 Cued(vec4 color, float away)
{
    float t = Cue(away);
    if (t == 0.0)
        return color;
    vec4 behind = Background();
    vec3 to = behind.a > 0.0 ? behind.rgb / behind.a : color.rgb;
    return vec4(mix(color.rgb, to, t), color.a * mix(1.0, behind.a, t));
}
)";

const char* const kFacing = R"(
// A unit normal on the side that is seen. Polygons without area, and vertices that only such polygons use, have no
// normal of their own.
vec3 Facing(vec3 n)
{
    if (!(dot(n, n) > 1e-20))
        n = cross(dFdx(vPosition), dFdy(vPosition)) * (gl_FrontFacing ? 1.0 : -1.0);
    n = normalize(n);
    return gl_FrontFacing ? n : -n;
}
)";

const char* const kToViewer = R"(
vec3 ToViewer() { return uViewport.w > 0.5 ? vec3(0.0, 0.0, 1.0) : normalize(-vPosition); }
)";

const char* const kSided = R"(
// Colour of the side that is seen. Seen along the surface, which side it is means nothing: back faces would speckle the
// rim of a body.
vec3 Sided(vec3 front, vec3 back, vec3 n)
{
    return gl_FrontFacing ? front : mix(front, back, smoothstep(0.1, 0.3, abs(dot(n, ToViewer()))));
}
)";

const char* const kToLight = R"(
// Direction to a light, and how much of it arrives here.
vec3 ToLight(Light light, out float strength)
{
    strength = 1.0;
    if (light.position.w == 0.0)
        return normalize(light.position.xyz);
    vec3 way = light.position.xyz - vPosition;
    float distance = max(length(way), 1e-6);
    vec3 direction = way / distance;
    float start = max(light.range.x, 1e-6);
    if (light.color.w > 1.5)
        strength = min(start / distance, 1.0);
    else if (light.color.w > 0.5)
        strength = min(start * start / (distance * distance), 1.0);
    else if (light.range.y > light.range.x)
        strength = 1.0 - smoothstep(light.range.x, light.range.y, distance);
    if (light.axis.w > -1.5)
        strength *= smoothstep(light.axis.w, max(light.range.z, light.axis.w + 1e-4), dot(-direction, light.axis.xyz));
    else if (light.range.w > 0.0)
        strength *= 0.5 + 0.5 * dot(-direction, light.axis.xyz); // an area shines to its front, fading to its sides
    return direction;
}
)";

const char* const kAddLight = R"(
// The factor keeps the reflected energy about the same whatever the exponent.
float Shine(vec3 n, vec3 halfway, float exponent)
{
    return pow(max(dot(n, halfway), 0.0), exponent) * (exponent + 8.0) * 0.04;
}

// A light far away shines as for a viewer far away too: directions and halfway vectors are given.
void AddFarLight(Light light, vec3 n, float exponent, inout vec3 diffuse, inout vec3 specular)
{
    vec3 arriving = light.color.rgb * max(dot(n, light.position.xyz), 0.0);
    diffuse += arriving;
    specular += arriving * Shine(n, light.axis.xyz, exponent);
}

void AddLight(Light light, vec3 n, float exponent, inout vec3 diffuse, inout vec3 specular)
{
    if (light.position.w == 0.0)
        AddFarLight(light, n, exponent, diffuse, specular);
    else
    {
        float strength;
        vec3 l = ToLight(light, strength);
        // An area reaches around to where its middle is below the horizon, the further the nearer it is.
        float wrap = light.range.w / (light.range.w + length(light.position.xyz - vPosition) + 1e-6);
        vec3 arriving = light.color.rgb * (strength * max(dot(n, l) + wrap, 0.0) / (1.0 + wrap));
        diffuse += arriving;
        specular += arriving * Shine(n, normalize(l + ToViewer()), exponent);
    }
}
)";

const char* const kAmbient = R"(
// Light from all around: brighter from above, and what images add.
vec3 Ambient(vec3 n)
{
    vec3 light = mix(uFloor.rgb, uSky.rgb, 0.5 + 0.5 * dot(n, uUp.xyz));
    if (uSky.w > 0.5)
    {
        vec4 m = vec4(n, 1.0);
        light += max(vec3(dot(m, uImage[0] * m), dot(m, uImage[1] * m), dot(m, uImage[2] * m)), 0.0);
    }
    return light;
}
)";

const char* const kGatherLight = R"(
void GatherLight(vec3 n, float exponent, out vec3 diffuse, out vec3 specular)
{
    diffuse = Ambient(n);
    specular = vec3(0.0);
    int count = int(uUp.w);
    for (int i = 0; i < count; ++i)
        AddLight(uLights[i], n, exponent, diffuse, specular);
}
)";

const char* const kShoulder = R"(
// Bright places keep their drawing: above 0.7 light comes out less and less, and never reaches white.
vec3 Shoulder(vec3 light) { return mix(light, 1.0 - 0.3 * exp((0.7 - light) / 0.3), step(0.7, light)); }
)";

const char* const kToned = R"(
// Bands of equal tone with an edge of one pixel, whatever the size of the picture.
vec3 Toned(vec3 n, vec3 kd, int numTones)
{
    float strength;
    float facing = uUp.w > 0.5 ? dot(n, ToLight(uLights[0], strength)) : dot(n, ToViewer());
    float level = 0.5 + 0.5 * facing;
    float edge = max(fwidth(level), 1e-5);
    float tones = float(numTones);
    float tone = 0.0;
    for (int i = 1; i < numTones; ++i)
        tone += clamp((level - (0.28 + 0.56 * float(i) / tones)) / edge + 0.5, 0.0, 1.0);
    float share = numTones > 1 ? tone / (tones - 1.0) : 1.0;
    return kd * mix(0.30, 1.12, share);
}
)";

const char* const kAlpha = R"(
float Alpha(vec3 n, float texel, float middle, float rim, float falloff, float least)
{
    float turned = clamp(1.0 - abs(dot(n, ToViewer())), 0.0, 1.0); // rounding can take it below 0
    float share = falloff > 0.0 ? pow(turned, falloff) : 1.0;      // pow(0, 0) is undefined
    float clearness = mix(middle, rim, share);
    return max((1.0 - clearness) * texel, least);
}
)";
} // namespace vx::text
