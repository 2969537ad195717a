#include "host/gl/ShaderText.h"

namespace vx::text
{
// What every program starts with. The C++ side of the block is FrameBlock.h.
const char* const kCommon = R"(
struct Light
{
    vec4 position;  // view space; w 0: the direction to a light far away
    vec4 color;     // linear; w: 0 constant, 1 inverse square, 2 inverse linear
    vec4 axis;      // view space, where a spot shines; w: cosine of its outer angle, -2 for no spot. Of a light far
                    // away: halfway between it and a viewer far away
    vec4 range;     // attenuation start and end, cosine of a spot's inner angle
};
layout(std140) uniform Frame
{
    mat4 uProjection;
    vec4 uViewport;     // width, height, device pixels for one pixel of the picture, 1 for parallel projection
    vec4 uUp;           // view space; w: number of lights
    vec4 uSky;          // ambient light from above, linear
    vec4 uFloor;        // ambient light from below, linear
    vec4 uBackTop;      // background, as it is written; w: alpha
    vec4 uBackBottom;
    vec4 uTile;         // the part of the picture that is drawn: scale x y, offset x y, of 0..1
    vec4 uDepths;       // nearest and farthest depth of the content along the view
    vec4 uCue;          // depth cue: where it begins, one over its length, 1 while it is on; w: 1 with a picture behind
    vec4 uPicture;      // place in the background picture: scale x y, offset x y, of the place in the picture drawn
    Light uLights[8];
};
#ifdef FRAGMENT_STAGE
vec3 Encoded(vec3 c)    // linear to sRGB
{
    c = clamp(c, 0.0, 1.0);
    return mix(12.92 * c, 1.055 * pow(c, vec3(1.0 / 2.4)) - 0.055, step(vec3(0.0031308), c));
}

// Breaks up the steps of 8-bit gradients. J. Jimenez, Next Generation Post Processing in Call of Duty, 2014.
float Dither()
{
    return fract(52.9829189 * fract(dot(gl_FragCoord.xy, vec2(0.06711056, 0.00583715)))) - 0.5;
}

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
        vec4 picture = textureLod(uBackPicture, at, 0.0);
        bool inside = all(greaterThanEqual(at, vec2(0.0))) && all(lessThanEqual(at, vec2(1.0)));
        picture *= inside ? 1.0 : 0.0;
        color = picture + color * (1.0 - picture.a);
    }
    return color;
}

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
#endif
)";

const char* const kSurfaceVertex = R"(
layout(location = 0) in vec3 aPosition;
layout(location = 1) in vec3 aNormal;
layout(location = 2) in vec2 aUV;
layout(location = 3) in vec3 aColor;
uniform mat4 uModelView;
uniform mat3 uNormalMatrix;
uniform mat4 uToClip;           // modelview and projection in one, the same product as in the line shader
out vec3 vPosition;
out vec3 vNormal;
out vec2 vUV;
out vec3 vColor;
invariant gl_Position;

void main()
{
    vPosition = (uModelView * vec4(aPosition, 1.0)).xyz;
#ifdef FLAT
    vNormal = vec3(0.0);
#else
    vNormal = uNormalMatrix * aNormal;
#endif
    vUV = aUV;
    vColor = aColor;
    gl_Position = uToClip * vec4(aPosition, 1.0);
}
)";

const char* const kSurfaceFragment = R"(
in vec3 vPosition;
in vec3 vNormal;
in vec2 vUV;
in vec3 vColor;
out vec4 oColor;

uniform mat3 uNormalMatrix;
uniform samplerBuffer uPolyNormals;    // three floats for each polygon
uniform isamplerBuffer uTrianglePolys; // polygon of each triangle
uniform isamplerBuffer uMarks;         // of each polygon: 1 when it is marked
uniform int uFirstTriangle;            // gl_PrimitiveID starts anew with every call
uniform sampler2D uTexture;
uniform vec3 uKd;                      // linear
uniform vec3 uKs;
uniform float uNs;
uniform vec3 uBack;                    // linear: Kd of back faces
uniform vec4 uTransparency;            // at the middle, at the rim, falloff; w: least opacity shown
uniform vec4 uFill;                    // as it is written; w below 0: the background
uniform int uTones;
uniform vec4 uGround;                  // view-space centre, and radius at which the ground has faded

vec3 ShadingNormal()
{
#ifdef FLAT
    int poly = texelFetch(uTrianglePolys, uFirstTriangle + gl_PrimitiveID).r;
    vec3 n = vec3(texelFetch(uPolyNormals, 3 * poly).r, texelFetch(uPolyNormals, 3 * poly + 1).r,
                  texelFetch(uPolyNormals, 3 * poly + 2).r);
    n = uNormalMatrix * n;
#else
    vec3 n = vNormal;
#endif
    // Polygons without area, and vertices that only such polygons use, have no normal of their own.
    if (!(dot(n, n) > 1e-20))
        n = cross(dFdx(vPosition), dFdy(vPosition)) * (gl_FrontFacing ? 1.0 : -1.0);
    n = normalize(n);
    return gl_FrontFacing ? n : -n;
}

vec3 ToViewer() { return uViewport.w > 0.5 ? vec3(0.0, 0.0, 1.0) : normalize(-vPosition); }

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
    return direction;
}

// The factor keeps the reflected energy about the same whatever the exponent.
float Shine(vec3 n, vec3 halfway) { return pow(max(dot(n, halfway), 0.0), uNs) * (uNs + 8.0) * 0.04; }

vec3 Lit(vec3 n, vec3 kd)
{
    vec3 diffuse = mix(uFloor.rgb, uSky.rgb, 0.5 + 0.5 * dot(n, uUp.xyz));
    vec3 specular = vec3(0.0);
#ifdef FAR_LIGHTS
    // All lights far away, as in the standard set: directions and, for a viewer far away too, halfway vectors are given.
    for (int i = 0; i < FAR_LIGHTS; ++i)
    {
        vec3 arriving = uLights[i].color.rgb * max(dot(n, uLights[i].position.xyz), 0.0);
        diffuse += arriving;
        specular += arriving * Shine(n, uLights[i].axis.xyz);
    }
#else
    vec3 viewer = ToViewer();
    int count = int(uUp.w);
    for (int i = 0; i < count; ++i)
    {
        float strength;
        vec3 l = ToLight(uLights[i], strength);
        vec3 arriving = uLights[i].color.rgb * (strength * max(dot(n, l), 0.0));
        diffuse += arriving;
        specular += arriving * Shine(n, normalize(l + viewer));
    }
#endif
    // Bright places keep their drawing: above 0.7 light comes out less and less, and never reaches white.
    vec3 light = kd * diffuse + uKs * specular;
    return mix(light, 1.0 - 0.3 * exp((0.7 - light) / 0.3), step(0.7, light));
}

// Bands of equal tone with an edge of one pixel, whatever the size of the picture.
vec3 Toned(vec3 n, vec3 kd)
{
    float strength;
    float facing = uUp.w > 0.5 ? dot(n, ToLight(uLights[0], strength)) : dot(n, ToViewer());
    float level = 0.5 + 0.5 * facing;
    float edge = max(fwidth(level), 1e-5);
    float tones = float(uTones);
    float tone = 0.0;
    for (int i = 1; i < uTones; ++i)
        tone += clamp((level - (0.28 + 0.56 * float(i) / tones)) / edge + 0.5, 0.0, 1.0);
    float share = uTones > 1 ? tone / (tones - 1.0) : 1.0;
    return kd * mix(0.30, 1.12, share);
}

float Alpha(vec3 n, float texel)
{
    float rim = 1.0 - abs(dot(n, ToViewer()));
    float clearness = mix(uTransparency.x, uTransparency.y, pow(rim, max(uTransparency.z, 0.0)));
    return max((1.0 - clearness) * texel, uTransparency.w);
}

void main()
{
#if defined(SHADE_HEIGHT)
    // How strongly this lowest point above a piece of ground darkens it: sharp contact, near, and far shadow.
    float height = max(vPosition.z, 0.0); // the model-view matrix leads to ground coordinates
    oColor = vec4(exp(-14.0 * height), exp(-4.5 * height), exp(-1.4 * height), 1.0);
#elif defined(SHADE_PICK)
    oColor = uFill;
#elif defined(SHADE_MARK)
    if (texelFetch(uMarks, texelFetch(uTrianglePolys, uFirstTriangle + gl_PrimitiveID).r).r == 0)
        discard;
    oColor = Cued(uFill, -vPosition.z);
#elif defined(SHADE_FILL)
    oColor = uFill.a < 0.0 ? Background() : Cued(uFill, -vPosition.z);
#elif defined(SHADE_DEPTH)
    float depth = clamp((-vPosition.z - uDepths.x) / max(uDepths.y - uDepths.x, 1e-20), 0.0, 1.0);
    oColor = vec4(vec3(mix(1.0, 0.12, depth)), 1.0);
#elif defined(SHADE_NORMALS)
    oColor = vec4(0.5 + 0.5 * ShadingNormal(), 1.0);
#elif defined(SHADE_GROUND)
    float away = length(vPosition - uGround.xyz) / uGround.w;
    oColor = Cued(vec4(Encoded(uKd), 1.0 - smoothstep(0.25, 1.0, away)), -vPosition.z);
#else
    vec3 n = ShadingNormal();
    vec3 kd = gl_FrontFacing ? uKd : uBack;
    float texel = 1.0;
#ifdef TEXTURE
    vec4 texture = texture2D(uTexture, vUV);
    kd *= texture.rgb;
    texel = texture.a;
#endif
#ifdef VERTEX_COLORS
    kd *= vColor;
#endif
#ifdef SHADE_TOON
    vec3 color = Toned(n, kd);
#else
    vec3 color = Lit(n, kd);
#endif
    oColor.rgb = Encoded(color) + Dither() / 255.0;
#ifdef CLEAR
    oColor.a = Alpha(n, texel);
#else
#ifdef TEXTURE
    if (texel < 0.5)
        discard; // cut-outs, such as leaves, of materials that are opaque
#endif
    oColor.a = 1.0;
#endif
    oColor = Cued(oColor, -vPosition.z);
#endif
}
)";

// Each segment is four vertices, two at each end; its ends come from buffers that surfaces share. Corner k of segment e
// has index 4 e + k.
const char* const kLineVertex = R"(
uniform samplerBuffer uPositions;  // three floats for each vertex
uniform samplerBuffer uNormals;
uniform isamplerBuffer uSegments;  // two vertices for each segment; one for each point
uniform mat4 uModelView;
uniform mat3 uNormalMatrix;
uniform mat4 uToClip;
uniform float uWidth;              // device pixels
uniform float uBias;               // of normalised depth, towards the viewer
uniform vec4 uLineColor;           // as it is written
uniform vec3 uKd;                  // linear, for lit lines
uniform vec4 uFade;                // x: pixels below which short edges fade, y: their least opacity,
                                   // z: how much the far side fades
noperspective out vec2 vAlong;     // device pixels from the first end, along and across
flat out float vLength;
out vec4 vColor;
out float vAway;                   // along the view

vec3 Fetch(samplerBuffer from, int i)
{
    return vec3(texelFetch(from, 3 * i).r, texelFetch(from, 3 * i + 1).r, texelFetch(from, 3 * i + 2).r);
}

void main()
{
    int corner = gl_VertexID & 3;
    int e = gl_VertexID >> 2;
#ifdef POINTS
    ivec2 ends = texelFetch(uSegments, e).rr;
#else
    ivec2 ends = texelFetch(uSegments, e).rg;
#endif
    vec3 a = Fetch(uPositions, ends.x), b = Fetch(uPositions, ends.y);
    vec4 clipA = uToClip * vec4(a, 1.0), clipB = uToClip * vec4(b, 1.0);

    // What lies behind the viewer has no place on the screen: the segment ends at the near plane.
    float nearA = clipA.z + clipA.w, nearB = clipB.z + clipB.w;
    if (nearA < 0.0 && nearB < 0.0)
    {
        gl_Position = vec4(2.0, 2.0, 2.0, 1.0);
        vAlong = vec2(0.0);
        vLength = 0.0;
        vColor = vec4(0.0);
        vAway = 0.0;
        return;
    }
    if (nearA < 0.0)
        clipA = mix(clipA, clipB, nearA / (nearA - nearB));
    else if (nearB < 0.0)
        clipB = mix(clipB, clipA, nearB / (nearB - nearA));

    vec2 half_ = 0.5 * uViewport.xy;
    vec2 screenA = clipA.xy / clipA.w * half_, screenB = clipB.xy / clipB.w * half_;
    vec2 way = screenB - screenA;
    float len = length(way);
    vec2 along = len > 1e-4 ? way / len : vec2(1.0, 0.0);
    vec2 across = vec2(-along.y, along.x);
    float reach = 0.5 * uWidth + 1.0;
    bool second = corner >= 2;
    float side = (corner & 1) == 0 ? -reach : reach;
    float past = second ? reach : -reach;
    vec4 clip = second ? clipB : clipA;
    vec2 screen = (second ? screenB : screenA) + along * past + across * side;
    gl_Position = vec4(screen / half_ * clip.w, clip.z - uBias * clip.w, clip.w);
    vAlong = vec2((second ? len : 0.0) + past, side);
    vLength = len;
    vAway = uViewport.w > 0.5 ? -(uModelView * vec4(second ? b : a, 1.0)).z : clip.w;

    vec4 color = uLineColor;
#ifdef LIT
    vec3 n = normalize(uNormalMatrix * Fetch(uNormals, second ? ends.y : ends.x));
    vec3 p = (uModelView * vec4(second ? b : a, 1.0)).xyz;
    vec3 light = mix(uFloor.rgb, uSky.rgb, 0.5 + 0.5 * dot(n, uUp.xyz));
    for (int i = 0; i < int(uUp.w); ++i)
    {
        vec3 l = uLights[i].position.xyz - p * uLights[i].position.w;
        light += uLights[i].color.rgb * max(dot(n, normalize(l)), 0.0);
    }
    vec3 c = clamp(uKd * light, 0.0, 1.0);
    color.rgb = mix(12.92 * c, 1.055 * pow(c, vec3(1.0 / 2.4)) - 0.055, step(vec3(0.0031308), c));
#endif
#ifndef POINTS
    // Where edges are only a few pixels long their ink would cover the surface.
    color.a *= mix(uFade.y, 1.0, clamp(len / max(uFade.x, 1e-3), 0.0, 1.0));
#endif
    color.a *= 1.0 - uFade.z * clamp(0.5 + 0.5 * clip.z / clip.w, 0.0, 1.0);
    vColor = color;
}
)";

// Coverage from the distance to the segment, which makes round ends and joints.
const char* const kLineFragment = R"(
noperspective in vec2 vAlong;
flat in float vLength;
in vec4 vColor;
in float vAway;
out vec4 oColor;
uniform float uWidth;

void main()
{
    float past = max(max(-vAlong.x, vAlong.x - vLength), 0.0);
    float coverage = clamp(0.5 * uWidth + 0.5 - length(vec2(past, vAlong.y)), 0.0, 1.0);
    // A line thinner than a pixel is one pixel wide and fainter.
    coverage *= min(uWidth, 1.0);
    if (coverage * vColor.a < 0.002)
        discard;
    oColor = Cued(vec4(vColor.rgb, vColor.a * coverage), vAway);
}
)";

const char* const kScreenVertex = R"(
out vec2 vUV;
void main()
{
    vUV = vec2((gl_VertexID << 1) & 2, gl_VertexID & 2);
    gl_Position = vec4(2.0 * vUV - 1.0, 1.0, 1.0);
}
)";

const char* const kBackgroundFragment = R"(
out vec4 oColor;
void main()
{
    oColor = Background();
}
)";

// A Gaussian of another width in each channel: red the contact, green the near, blue the far shadow.
const char* const kBlurFragment = R"(
in vec2 vUV;
out vec4 oColor;
uniform sampler2D uMap;
uniform vec2 uDirection; // one texel along the direction of this pass
uniform vec3 uSigma;     // texels

void main()
{
    vec3 sum = texture2D(uMap, vUV).rgb;
    float weights = 1.0;
    for (int i = 1; i <= 12; ++i)
    {
        float at = float(i) / 4.0; // to three sigma in twelve steps
        float weight = exp(-0.5 * at * at);
        weights += 2.0 * weight;
        for (int c = 0; c < 3; ++c)
        {
            vec2 away = uDirection * (at * uSigma[c]);
            sum[c] += weight * (texture2D(uMap, vUV + away)[c] + texture2D(uMap, vUV - away)[c]);
        }
    }
    oColor = vec4(sum / weights, 1.0);
}
)";

const char* const kShadowVertex = R"(
uniform mat4 uToClip;
uniform vec4 uCorner; // of the map on the ground: world origin
uniform vec4 uSideA, uSideB;
out vec2 vUV;
out float vAway;
void main()
{
    vUV = vec2(gl_VertexID & 1, gl_VertexID >> 1);
    gl_Position = uToClip * vec4(uCorner.xyz + uSideA.xyz * vUV.x + uSideB.xyz * vUV.y, 1.0);
    vAway = uViewport.w > 0.5 ? (uProjection[3][2] - gl_Position.z) / uProjection[2][2] : gl_Position.w;
}
)";

const char* const kShadowFragment = R"(
in vec2 vUV;
in float vAway;
out vec4 oColor;
uniform sampler2D uMap;
uniform float uDensity; // of the darkest place

void main()
{
    vec3 shadow = texture2D(uMap, vUV).rgb;
    float dark = 0.62 * shadow.r + 0.42 * shadow.g + 0.38 * shadow.b;
    // Nothing is left at the rim of the map, where a shadow of something tall would be cut off.
    vec2 rim = smoothstep(vec2(0.0), vec2(0.12), vUV) * smoothstep(vec2(0.0), vec2(0.12), 1.0 - vUV);
    float noise = fract(52.9829189 * fract(dot(gl_FragCoord.xy, vec2(0.06711056, 0.00583715)))) - 0.5;
    float alpha = uDensity * min(dark, 1.0) * rim.x * rim.y * (1.0 - Cue(vAway));
    oColor = vec4(0.0, 0.0, 0.0, max(alpha + noise / 255.0, 0.0) * step(0.0005, alpha));
}
)";
} // namespace vx::text
