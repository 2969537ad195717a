#include "host/gl/ShaderText.h"

#include "host/glsl/ShadingText.h"

namespace vx::text
{
std::string Common()
{
    return std::string(kFrame) + "#ifdef FRAGMENT_STAGE" + kEncoded + kDither + kBackground + kCued + "#endif\n";
}

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

static const char* const kSurfaceInputs = R"(
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
)";

static const char* const kShadingNormal = R"(
vec3 ShadingNormal()
{
#ifdef FLAT
    int poly = texelFetch(uTrianglePolys, uFirstTriangle + gl_PrimitiveID).r;
    vec3 n = vec3(texelFetch(uPolyNormals, 3 * poly).r, texelFetch(uPolyNormals, 3 * poly + 1).r,
                  texelFetch(uPolyNormals, 3 * poly + 2).r);
    return Facing(uNormalMatrix * n);
#else
    return Facing(vNormal);
#endif
}
)";

// Where all lights are far away, as in the standard set, their number is known and little is to be computed.
static const char* const kGatherFarLights = R"(
void GatherLight(vec3 n, float exponent, out vec3 diffuse, out vec3 specular)
{
    diffuse = Ambient(n);
    specular = vec3(0.0);
    for (int i = 0; i < FAR_LIGHTS; ++i)
        AddFarLight(uLights[i], n, exponent, diffuse, specular);
}
)";

static const char* const kSurfaceMain = R"(
void main()
{
#if defined(SHADE_HEIGHT)
    // How strongly this lowest point above a piece of ground darkens it: sharp contact, near, and far shadow.
    float height = max(vPosition.z, 0.0); // the model-view matrix leads to ground coordinates
    oColor = vec4(exp(-14.0 * height), exp(-4.5 * height), exp(-1.4 * height), 1.0);
#elif defined(SHADE_MARK)
    if (texelFetch(uMarks, texelFetch(uTrianglePolys, uFirstTriangle + gl_PrimitiveID).r).r == 0)
        discard;
    oColor = Cued(uFill, -vPosition.z);
#elif defined(SHADE_OCCLUSION)
    // Of the surface as it is: with smoothed normals every edge of a coarse mesh would darken its own polygons.
    oColor = vec4(normalize(cross(dFdx(vPosition), dFdy(vPosition))), -vPosition.z);
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
    vec3 kd = Sided(uKd, uBack, n);
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
    vec3 color = Toned(n, kd, uTones);
#else
    vec3 diffuse, specular;
    GatherLight(n, uNs, diffuse, specular);
    vec3 color = Shoulder(kd * diffuse + uKs * specular);
#endif
    oColor.rgb = Encoded(color) + Dither() / 255.0;
#ifdef CLEAR
    oColor.a = Alpha(n, texel, uTransparency.x, uTransparency.y, uTransparency.z, uTransparency.w);
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

const std::string& SurfaceFragment()
{
    static const std::string text = std::string(kSurfaceInputs) + kFacing + kShadingNormal + kToViewer + kSided +
                                    kToLight + kAddLight + kAmbient + "#ifdef FAR_LIGHTS" + kGatherFarLights + "#else" +
                                    kGatherLight + "#endif" + kShoulder + kToned + kAlpha + kSurfaceMain;
    return text;
}

const char* const kPickVertex = R"(
layout(location = 0) in vec3 aPosition;
uniform mat4 uToClip;
invariant gl_Position;

void main() { gl_Position = uToClip * vec4(aPosition, 1.0); }
)";

const char* const kPickFragment = R"(
out uint oName;
uniform isamplerBuffer uTrianglePolys; // polygon of each triangle
uniform int uFirstTriangle;            // gl_PrimitiveID starts anew with every call
uniform uint uFirstName;
uniform int uElements;                 // 1: each polygon has a name, 0: the object has one

void main()
{
    oName = uFirstName;
    if (uElements != 0)
        oName += uint(texelFetch(uTrianglePolys, uFirstTriangle + gl_PrimitiveID).r);
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
uniform float uOffset;             // along the normals, object units
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
#ifdef PUSHED
    a += uOffset * Fetch(uNormals, ends.x);
    b += uOffset * Fetch(uNormals, ends.y);
#endif
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
