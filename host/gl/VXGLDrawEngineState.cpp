#include "engine/VXLight.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "host/LightRig.h"
#include "host/gl/FrameBlock.h"
#include "host/gl/ShaderText.h"
#include "host/glsl/ImageLight.h"
#include "mesh/VXGeom.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <cstring>

// --- The frame block

static VERTEX Turned(const VERTEX& v, const Mat44 m)
{
    return {v.x * m[0][0] + v.y * m[1][0] + v.z * m[2][0], v.x * m[0][1] + v.y * m[1][1] + v.z * m[2][1],
            v.x * m[0][2] + v.y * m[1][2] + v.z * m[2][2]};
}

static VERTEX Unit(const VERTEX& v)
{
    const float length = Length(v);
    return length > 0 ? v * (1 / length) : VERTEX{0, 0, 1};
}

static void Put(float to[4], const VERTEX& v, float w)
{
    to[0] = v.x;
    to[1] = v.y;
    to[2] = v.z;
    to[3] = w;
}

// Lights of the scene in view space; where it has none, the standard set that goes with the camera. A light stands at
// its transform's origin and shines along its negative z axis, as a camera looks.
int VXGLDrawEngine::FillLights(Light* lights, int most)
{
    int count = 0;
    bool any = false;
    for (std::int64_t i = 0; i < Scene()->NumLights() && count < most; ++i)
    {
        VXLight* const light = Scene()->Light(int(i));
        if (!light)
            continue;
        any = true;
        light->PrepareForDrawing();
        if (light->On() && light->IncludeOGL() && !light->IsImageLight())
        {
            Light& out = lights[count++];
            const VXMaterialColor4& color = light->LightColor();
            const VERTEX back = Unit(Turned(light->GetDirection(), Camera()));
            VERTEX place = light->GetPosition();
            MAT_VertTransform(&place, &place, 1, Camera());
            Put(out.position, light->IsInfinite() ? back : place, light->IsInfinite() ? 0.0f : 1.0f);
            Put(out.color, {color.TotalRed(), color.TotalGreen(), color.TotalBlue()}, float(light->AttenType()));
            Put(out.range, {light->AttenStart(), light->AttenEnd(), 0}, 0);
            Put(out.axis, light->IsInfinite() ? Unit(back + VERTEX{0, 0, 1}) : -back, -2);
            if (light->IsSpot())
            {
                // Falloff start and end are the angles, in degrees, between which a spot's cone fades.
                constexpr float kRadians = 0.017453293f;
                const float outer = light->FalloffEnd() > 0 ? light->FalloffEnd() : 45;
                out.axis[3] = std::cos(std::min(outer, 180.0f) * kRadians);
                out.range[2] = std::cos(std::min(light->FalloffStart(), outer) * kRadians);
            }
            if (light->IsAreaLight()) // a unit square that its transform has scaled
            {
                const Mat44& m = light->GetTransform();
                out.range[3] = 0.25f * (Length({m[0][0], m[0][1], m[0][2]}) + Length({m[1][0], m[1][1], m[1][2]}));
                out.range[0] = std::max(light->AttenStart(), out.range[3]); // its light falls off from its rim on
            }
        }
        light->EndDrawing();
    }
    for (const vx::RigLight& rig : vx::kLightRig)
    {
        if (any || count == most)
            break;
        Light& out = lights[count++];
        Put(out.position, Unit(rig.toLight), 0);
        Put(out.color, rig.color, 0);
        Put(out.axis, Unit(Unit(rig.toLight) + VERTEX{0, 0, 1}), -2);
        Put(out.range, {}, 0);
    }
    return count;
}

// What image lights add from all around, as the viewer sees it. @return false without any
bool VXGLDrawEngine::FillImageLight(float forms[3][16])
{
    bool any = false;
    for (std::int64_t i = 0; i < Scene()->NumLights(); ++i)
    {
        VXLight* const light = Scene()->Light(int(i));
        if (!light || !light->IsImageLight() || !light->On() || !light->IncludeOGL())
            continue;
        any = true;
        Mat44 toView;
        MAT_Concat4x4(light->GetTransform(), Camera(), toView);
        VERTEX axes[3];
        for (int a = 0; a < 3; ++a)
            axes[a] = Unit({toView[a][0], toView[a][1], toView[a][2]});
        const VXMaterialColor4& color = light->LightColor();
        vx::AddImageLight(light->IBLColors(), axes, {color.TotalRed(), color.TotalGreen(), color.TotalBlue()}, forms);
    }
    return any;
}

void VXGLDrawEngine::FillFrameBlock()
{
    FrameBlock block = {};
    std::memcpy(block.projection, mProjection, sizeof block.projection);
    block.viewport[0] = float(mTargetViewport[2]);
    block.viewport[1] = float(mTargetViewport[3]);
    block.viewport[2] = mPixelScale;
    block.viewport[3] = mOrtho ? 1.0f : 0.0f;
    const int count = FillLights(block.lights, FrameBlock::kMostLights);
    mNumFarLights = count;
    for (int i = 0; i < count; ++i)
        if (block.lights[i].position[3] != 0)
            mNumFarLights = 0;
    Put(block.up, Unit(Turned(mUp, Camera())), float(count));
    const bool images = FillImageLight(block.image);
    Put(block.sky, {0.120f, 0.125f, 0.135f}, images ? 1.0f : 0.0f);
    Put(block.floor, {0.068f, 0.064f, 0.060f}, 1);
    const auto background = [&](float to[4], const VXMaterialColor4& c) {
        Put(to, VERTEX{c.TotalRed(), c.TotalGreen(), c.TotalBlue()} * mBackAlpha, mBackAlpha);
    };
    background(block.backTop, mBackTop);
    background(block.backBottom, mBackBottom);
    std::copy(std::begin(mTile), std::end(mTile), block.tile);

    if (Scene()->SceneMaterial()->GetFlagDepthOnly())
        FindDepths(block.depths);
    FindDepthCue(block.cue);
    PlaceBackPicture(block);
    glBindBuffer(GL_UNIFORM_BUFFER, mFrameBuffer);
    glBufferSubData(GL_UNIFORM_BUFFER, 0, sizeof block, &block);
    glBindBuffer(GL_UNIFORM_BUFFER, 0);
}

// --- Objects

VXGLDrawEngine::Placement VXGLDrawEngine::PlacementOf(const VXObject& object) const
{
    Placement out = {};
    const bool shadow = mDrawingShadowMap;
    MAT_Concat4x4(object.GetTransform(), shadow ? mShadowView : Camera(), out.modelView);
    const Mat44& seen = GetDrawPass() == kAmbientOcclusionPass ? mPaddedProjection : mProjection;
    MAT_Concat4x4(out.modelView, shadow ? mShadowToClip : seen, out.toClip);
    Mat44 inverse;
    MAT_Inverse(out.modelView, inverse, 3);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            out.normal[3 * i + j] = inverse[j][i];
    const VERTEX x = {out.modelView[0][0], out.modelView[0][1], out.modelView[0][2]};
    const VERTEX y = {out.modelView[1][0], out.modelView[1][1], out.modelView[1][2]};
    const VERTEX z = {out.modelView[2][0], out.modelView[2][1], out.modelView[2][2]};
    out.mirrored = Dot(Cross(x, y), z) < 0;
    return out;
}

// --- Passes

void VXGLDrawEngine::PrepareMainPass(VXMaterial* drawMode)
{
    if (GetDrawPass() == kNormalSecondPass)
        DrawOcclusion(); // of what is opaque, which has been drawn
    mPassMode = drawMode;
    SetDepthState(true, true);
    SetBlend(false);
    SetSurfaceOffset(false);
}

// Surfaces stand back a little for the lines that are drawn on them: by the slope within half a line's width, and by
// the smallest step of the depth buffer.
void VXGLDrawEngine::SetSurfaceOffset(bool on)
{
    mSurfaceOffset = on;
    on ? glEnable(GL_POLYGON_OFFSET_FILL) : glDisable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(1.25f, 1.0f);
}

void VXGLDrawEngine::PrepareObjectPass(VXMaterial* drawMode)
{
    mPassMode = drawMode;
    mLineWidth = 0;
    SetDepthState(true, false);
    SetBlend(true);
    SetSurfaceOffset(false);
}

void VXGLDrawEngine::PrepareLinePass(VXMaterial* drawMode) { PrepareObjectPass(drawMode); }

void VXGLDrawEngine::PrepareArrayPass(VXMaterial* drawMode, int /*reserved*/)
{
    PrepareObjectPass(drawMode);
    // Outlines alone still hide each other behind surfaces, as a drawing does.
    if (drawMode->GetFlagOutline() && !drawMode->GetFlagDrawPolys() && !mDepthDrawn)
    {
        mDepthDrawn = true;
        DrawDepthOfScene();
        PrepareObjectPass(drawMode);
    }
}

void VXGLDrawEngine::SetFrameMultisample(bool on)
{
    // Lines bring their own coverage, but are tested against the depth of every sample: switching multisampling off
    // for them, as the frame suggests, would let them be hidden by whole pixels.
    if (on)
        glEnable(GL_MULTISAMPLE);
}

void VXGLDrawEngine::SetPolygonOffset(bool on, int factor, int units)
{
    if (!on)
        return SetSurfaceOffset(mSurfaceOffset);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(float(factor), float(units));
}

void VXGLDrawEngine::GetCullFace(bool& cull, bool& back)
{
    cull = mCull;
    back = mCullBack;
}

void VXGLDrawEngine::SetCullFace(bool cull, bool back)
{
    mCull = cull;
    mCullBack = back;
    cull ? glEnable(GL_CULL_FACE) : glDisable(GL_CULL_FACE);
    glCullFace(back ? GL_BACK : GL_FRONT);
}

void VXGLDrawEngine::SetCulling(const VXMaterial* mode, bool mirrored)
{
    glFrontFace(mirrored ? GL_CW : GL_CCW);
    SetCullFace(mode && mode->GetFlagBackCull(), true);
}

void VXGLDrawEngine::SetDepthState(bool test, bool write)
{
    test ? glEnable(GL_DEPTH_TEST) : glDisable(GL_DEPTH_TEST);
    glDepthMask(write ? GL_TRUE : GL_FALSE);
}

// Alpha adds up to the coverage of the target, so that pictures with a clear background come out right.
void VXGLDrawEngine::SetBlend(bool on)
{
    on ? glEnable(GL_BLEND) : glDisable(GL_BLEND);
    glBlendEquation(GL_FUNC_ADD);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
}

bool VXGLDrawEngine::ShowsData(const VXMaterial* mode)
{
    return mode && (mode->GetFlagDepthOnly() || mode->GetFlagNormalsOnly());
}

// --- Background

void VXGLDrawEngine::DrawBackgroundPicture(VXScene* scene)
{
    if (!mReady || ShowsData(scene->SceneMaterial()))
        return; // depth and normals stand on black
    if (!Variant(0xB0000001, "background", "", vx::text::kScreenVertex, vx::text::kBackgroundFragment))
        return;
    SetDepthState(false, false);
    SetBlend(false);
    SetCullFace(false, true);
    glDisable(GL_POLYGON_OFFSET_FILL);
    glDrawArrays(GL_TRIANGLES, 0, 3);
    ++mNumDrawCalls;
}
