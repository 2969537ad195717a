#include "host/gl/OverlayText.h"

namespace vx::text
{
const char* const kPictureVertex = R"(
uniform vec4 uPlace; // lower left, width and height, of 0..1 over the whole picture
out vec2 vUV;
void main()
{
    vUV = vec2(gl_VertexID & 1, gl_VertexID >> 1);
    vec2 at = (uPlace.xy + uPlace.zw * vUV - uTile.zw) / uTile.xy;
    gl_Position = vec4(2.0 * at - 1.0, 0.0, 1.0);
}
)";

const char* const kPictureFragment = R"(
in vec2 vUV;
out vec4 oColor;
uniform sampler2D uMap;
uniform float uOpacity;
void main()
{
    oColor = texture2D(uMap, vUV) * uOpacity;
}
)";

const char* const kProductionFrameFragment = R"(
out vec4 oColor;
uniform vec4 uInside; // left, bottom, right, top: device pixels of the whole picture
uniform float uWidth; // of the line along it
void main()
{
    vec2 at = gl_FragCoord.xy + uTile.zw / uTile.xy * uViewport.xy;
    vec2 past = max(uInside.xy - at, at - uInside.zw);
    float outside = max(past.x, past.y);
    float line = clamp(0.5 * uWidth + 0.5 - abs(outside - 0.5 * uWidth), 0.0, 1.0);
    oColor = mix(vec4(0.0, 0.0, 0.0, 0.5 * clamp(outside + 0.5, 0.0, 1.0)), vec4(vec3(0.94), 0.9), line);
}
)";

// After M. McGuire, B. Osman, M. Bukowski, P. Hennessy, The Alchemy Screen-Space Ambient Obscurance Algorithm, 2011.
// The pattern of samples is turned by one of sixteen angles in each square of four by four pixels, in a fixed order;
// averaging over such a square afterwards leaves nothing of it, so that a still view is always the same picture and a
// moving one does not sparkle.
const char* const kOcclusionFragment = R"(
out vec4 oColor;
uniform sampler2D uMap;  // normal and distance along the view; 0 where nothing is
uniform vec4 uPadding;   // normalised coordinates of the picture for those of the map: scale; size of the map in texels
uniform vec4 uReach;     // radius, texels that it takes (at a distance of 1 in perspective), most texels; w unused

vec3 Position(ivec2 texel, float away)
{
    vec2 place = ((vec2(texel) + 0.5) / uPadding.zw * 2.0 - 1.0) * uPadding.xy;
    float w = uViewport.w > 0.5 ? 1.0 : away;
    vec2 shift = -away * vec2(uProjection[2][0], uProjection[2][1]) + vec2(uProjection[3][0], uProjection[3][1]);
    return vec3((place * w - shift) / vec2(uProjection[0][0], uProjection[1][1]), -away);
}

void main()
{
    const int kSamples = 14;
    ivec2 here = ivec2(gl_FragCoord.xy);
    vec4 surface = texelFetch(uMap, here, 0);
    oColor = vec4(1.0);
    if (surface.w <= 0.0)
        return;
    vec3 p = Position(here, surface.w);
    float texels = clamp(uReach.y / (uViewport.w > 0.5 ? 1.0 : surface.w), 1.0, uReach.z);
    // Bits of both coordinates taken in turn, lowest first: neighbours get angles far apart.
    int x = here.x, y = here.x ^ here.y;
    float turn = float((y & 1) * 8 + (x & 1) * 4 + (y & 2) + ((x & 2) >> 1)) * 0.39269908;
    ivec2 last = ivec2(uPadding.zw) - 1;
    float sum = 0.0;
    for (int i = 0; i < kSamples; ++i)
    {
        float angle = turn + float(i) * 2.3999632; // golden
        float away = (float(i) + 0.5) / float(kSamples) * texels;
        ivec2 at = clamp(here + ivec2(round(away * vec2(cos(angle), sin(angle)))), ivec2(0), last);
        vec4 other = texelFetch(uMap, at, 0);
        vec3 way = (Position(at, other.w) - p) / uReach.x; // in radii
        float squared = dot(way, way);
        float near = max(1.0 - squared, 0.0);
        float above = max(dot(way, surface.xyz) - 0.02, 0.0);
        sum += other.w > 0.0 ? near * near * near * above / (squared + 0.001) : 0.0;
    }
    oColor = vec4(max(1.0 - sum * 3.0 / float(kSamples), 0.0));
}
)";

const char* const kOcclusionLateFragment = R"(
out vec4 oColor;
uniform sampler2D uMap;      // openness
uniform sampler2D uGeometry; // normal and distance
uniform vec4 uPlace;         // texels for device pixels: scale and shift; z: radius; w: strength
void main()
{
    ivec2 here = ivec2(gl_FragCoord.xy * uPlace.x + uPlace.y);
    float away = texelFetch(uGeometry, here, 0).w;
    if (away <= 0.0)
        discard;
    // Ends count half: every angle of the pattern comes out with the same weight. What lies on another surface is not
    // of this one.
    float sum = 0.0, weights = 0.0;
    for (int y = -2; y <= 2; ++y)
        for (int x = -2; x <= 2; ++x)
        {
            ivec2 at = here + ivec2(x, y);
            float apart = abs(texelFetch(uGeometry, at, 0).w - away) / uPlace.z;
            float weight = (abs(x) == 2 ? 0.5 : 1.0) * (abs(y) == 2 ? 0.5 : 1.0) * clamp(2.0 - 4.0 * apart, 0.0, 1.0);
            sum += weight * texelFetch(uMap, at, 0).r;
            weights += weight;
        }
    float open = sum / weights;
    oColor = vec4(0.0, 0.0, 0.0, (1.0 - open) * uPlace.w * (1.0 - Cue(away)));
}
)";
} // namespace vx::text
