#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "host/gl/ShaderText.h"
#include "host/gl/VXGLDrawEngine.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>

// The shadow on the ground. The first drop-shadow pass draws what casts a shadow from below into a map of the ground:
// for each piece of it, how high the lowest surface above stands. Three channels hold that as contact, near and far
// shadow and are blurred by growing widths, which softens the shadow with the height of what casts it. The map does not
// depend on the view and is kept while the scene does not ask for new shadows. The second drop-shadow pass comes after
// all surfaces, and lays the map over the ground.

static constexpr int kMapSide = 512;
static constexpr float kMargin = 0.42f;                     // around the content, as a share of its size
static constexpr float kBlur[3] = {0.010f, 0.032f, 0.095f}; // standard deviations, as shares of its size

bool VXGLDrawEngine::MakeShadowMap()
{
    if (mShadowFrame)
        return true;
    glGenTextures(2, mShadowMaps);
    for (const GLuint map : mShadowMaps)
    {
        glBindTexture(GL_TEXTURE_2D, map);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, kMapSide, kMapSide, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    }
    glBindTexture(GL_TEXTURE_2D, 0);
    glGenRenderbuffers(1, &mShadowDepth);
    glBindRenderbuffer(GL_RENDERBUFFER, mShadowDepth);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, kMapSide, kMapSide);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    glGenFramebuffers(1, &mShadowFrame);
    glBindFramebuffer(GL_FRAMEBUFFER, mShadowFrame);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, mShadowMaps[0], 0);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, mShadowDepth);
    const bool complete = glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    glBindFramebuffer(GL_FRAMEBUFFER, GLuint(mTargetFrame));
    return complete;
}

static float Along(const VERTEX& v, int axis) { return axis == 0 ? v.x : (axis == 1 ? v.y : v.z); }

void VXGLDrawEngine::BeginDropShadow()
{
    mDrawingShadowMap = false;
    const VXBBox& box = Scene()->BoundingBox();
    if (!mReady || DoingDropShadowLines() || !box.Initialized())
        return;
    if (mShadowMapValid && !Scene()->NeedsShadowRedraw())
        return;
    // Ground axes a and b, so that a, b and up are right-handed.
    const int up = mUp.z > 0.5f ? 2 : 1, a = up == 2 ? 0 : 2, b = up == 2 ? 1 : 0;
    const VERTEX extent = box.Max() - box.Min(), middle = (box.Max() + box.Min()) * 0.5f;
    const float size = std::max({Along(extent, a), Along(extent, b), 0.7f * Along(extent, up)});
    if (!(size > 0) || !std::isfinite(size) || !MakeShadowMap())
        return;
    const float side = size * (1 + 2 * kMargin);
    const VERTEX axes[3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    const float ground = Along(box.Min(), up);
    mShadowGround = ground;
    mShadowSideA = axes[a] * side;
    mShadowSideB = axes[b] * side;
    const VERTEX centre = axes[a] * Along(middle, a) + axes[b] * Along(middle, b);
    mShadowCorner = centre - mShadowSideA * 0.5f - mShadowSideB * 0.5f + axes[up] * (ground - 0.002f * size);

    // World to (a, b, height) in sizes; then a and b to clip space, height to depth with the lowest nearest.
    MAT_Identity(mShadowView);
    for (int row = 0; row < 3; ++row)
    {
        mShadowView[row][0] = Along(axes[a], row) / size;
        mShadowView[row][1] = Along(axes[b], row) / size;
        mShadowView[row][2] = Along(axes[up], row) / size;
    }
    mShadowView[3][0] = -Along(middle, a) / size;
    mShadowView[3][1] = -Along(middle, b) / size;
    mShadowView[3][2] = -ground / size;
    MAT_Identity(mShadowToClip);
    mShadowToClip[0][0] = mShadowToClip[1][1] = 2 * size / side;
    const float top = Along(extent, up) / size * 1.01f + 0.02f;
    mShadowToClip[2][2] = 2 / top;
    mShadowToClip[3][2] = -1 + 0.02f / top;

    mDrawingShadowMap = true;
    glBindFramebuffer(GL_FRAMEBUFFER, mShadowFrame);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, mShadowMaps[0], 0);
    glViewport(0, 0, kMapSide, kMapSide);
    SetDepthState(true, true);
    SetBlend(false);
    glDisable(GL_POLYGON_OFFSET_FILL);
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

void VXGLDrawEngine::EndDropShadow()
{
    if (mDrawingShadowMap)
    {
        mDrawingShadowMap = false;
        BlurShadowMap();
        glBindFramebuffer(GL_FRAMEBUFFER, GLuint(mTargetFrame));
        glViewport(mTargetViewport[0], mTargetViewport[1], mTargetViewport[2], mTargetViewport[3]);
        mShadowMapValid = true;
        Scene()->SetNeedsShadowRedraw(false);
    }
    if (DoingDropShadowLines() && mShadowMapValid)
        CompositeShadow();
}

void VXGLDrawEngine::BlurShadowMap()
{
    vx::Program* const program =
        Variant(0xB0000002, "shadow blur", "", vx::text::kScreenVertex, vx::text::kBlurFragment);
    if (!program)
        return;
    SetDepthState(false, false);
    SetCullFace(false, true);
    constexpr float kTexels = kMapSide / (1 + 2 * kMargin);
    glUniform3f(program->Uniform("uSigma"), kBlur[0] * kTexels, kBlur[1] * kTexels, kBlur[2] * kTexels);
    for (int pass = 0; pass < 2; ++pass)
    {
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, mShadowMaps[1 - pass], 0);
        glBindTexture(GL_TEXTURE_2D, mShadowMaps[pass]);
        glUniform2f(program->Uniform("uDirection"), pass == 0 ? 1.0f / kMapSide : 0, pass == 1 ? 1.0f / kMapSide : 0);
        glDrawArrays(GL_TRIANGLES, 0, 3);
        ++mNumDrawCalls;
    }
    glBindTexture(GL_TEXTURE_2D, 0);
}

void VXGLDrawEngine::CompositeShadow()
{
    if (ShowsData(Scene()->SceneMaterial()))
        return;
    // From below, the ground would hide what stands on it.
    VERTEX eye = {0, 0, mOrtho ? 1.0f : 0.0f};
    Mat44 toWorld;
    MAT_Inverse(Camera(), toWorld);
    MAT_VertTransform(&eye, &eye, 1, toWorld);
    if (Dot(eye, mUp) <= mShadowGround)
        return;
    vx::Program* const program =
        Variant(0xB0000003, "ground shadow", "", vx::text::kShadowVertex, vx::text::kShadowFragment);
    if (!program)
        return;
    Mat44 toClip;
    MAT_Concat4x4(Camera(), mProjection, toClip);
    const auto set = [&](const char* name, const VERTEX& v) { glUniform4f(program->Uniform(name), v.x, v.y, v.z, 0); };
    glUniformMatrix4fv(program->Uniform("uToClip"), 1, GL_FALSE, toClip[0]);
    set("uCorner", mShadowCorner);
    set("uSideA", mShadowSideA);
    set("uSideB", mShadowSideB);
    glUniform1f(program->Uniform("uDensity"), mShadowDensity);
    for (GLuint index = 0; index < 4; ++index)
        glDisableVertexAttribArray(index);
    SetDepthState(true, false);
    SetBlend(true);
    SetCullFace(false, true);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(0, -8); // before a ground plane at the same height
    glBindTexture(GL_TEXTURE_2D, mShadowMaps[0]);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    ++mNumDrawCalls;
    glBindTexture(GL_TEXTURE_2D, 0);
}
