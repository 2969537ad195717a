#include "engine/VXScene.h"
#include "host/gl/OverlayText.h"
#include "host/gl/ShaderText.h"
#include "host/gl/VXGLDrawEngine.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>

// Ambient occlusion: corners and contacts get less of the light that comes from all sides. After the opaque surfaces a
// pass of its own draws their normals and distances into a map that is larger than the picture by a margin, so that
// nothing changes at the edges of a picture or of its tiles; from it comes how open the surroundings of each point are,
// and a late pass lays that over what has been drawn, before transparent surfaces and lines.

static constexpr float kRadius = 0.075f;  // of the diagonal of what is shown
static constexpr float kStrength = 0.80f; // of what is all closed in
static constexpr int kMarginShare = 8;    // of the picture's longer side; nothing reaches farther

// Only light is taken away: drawings and data stay as they are.
bool VXGLDrawEngine::WantsOcclusion() const
{
    const VXMaterial& mode = *Scene()->SceneMaterial();
    return mReady && !mOcclusionRefused && mOcclusion != vx::OcclusionQuality::Off && mode.GetFlagDrawPolys() &&
           !mode.GetFlagSilhouette() && !mode.GetFlagToon() && !ShowsData(&mode) &&
           Scene()->BoundingBox().Initialized();
}

bool VXGLDrawEngine::MakeOcclusionMaps(int width, int height)
{
    if (mOcclusionFrame && mOcclusionWidth == width && mOcclusionHeight == height)
        return true;
    ReleaseOcclusion();
    glGenTextures(2, mOcclusionMaps);
    for (int map = 0; map < 2; ++map)
    {
        glBindTexture(GL_TEXTURE_2D, mOcclusionMaps[map]);
        glTexImage2D(GL_TEXTURE_2D, 0, map == 0 ? GL_RGBA32F : GL_R8, width, height, 0, map == 0 ? GL_RGBA : GL_RED,
                     map == 0 ? GL_FLOAT : GL_UNSIGNED_BYTE, nullptr);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    }
    glBindTexture(GL_TEXTURE_2D, 0);
    glGenRenderbuffers(1, &mOcclusionDepth);
    glBindRenderbuffer(GL_RENDERBUFFER, mOcclusionDepth);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, width, height);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    glGenFramebuffers(1, &mOcclusionFrame);
    glBindFramebuffer(GL_FRAMEBUFFER, mOcclusionFrame);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, mOcclusionDepth);
    bool complete = true;
    for (int map = 1; map >= 0; --map)
    {
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, mOcclusionMaps[map], 0);
        complete = complete && glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    }
    glBindFramebuffer(GL_FRAMEBUFFER, GLuint(mTargetFrame));
    mOcclusionWidth = width;
    mOcclusionHeight = height;
    return complete;
}

void VXGLDrawEngine::ReleaseOcclusion()
{
    glDeleteFramebuffers(1, &mOcclusionFrame);
    glDeleteRenderbuffers(1, &mOcclusionDepth);
    glDeleteTextures(2, mOcclusionMaps);
    mOcclusionFrame = mOcclusionDepth = mOcclusionMaps[0] = mOcclusionMaps[1] = 0;
    mOcclusionWidth = mOcclusionHeight = 0;
}

// Draws what the ambient-occlusion passes need, and lays the result over the picture. Comes between the two halves of
// the polygons, and leaves the draw pass as it was.
void VXGLDrawEngine::DrawOcclusion()
{
    if (!WantsOcclusion())
        return;
    const int reduced = mOcclusion == vx::OcclusionQuality::Half ? 2 : 1;
    float whole[2];
    WholeSize(whole);
    const int longer = int(std::max(whole[0], whole[1])) / reduced;
    const int margin = std::clamp(longer / kMarginShare, 16, 512) / 4 * 4;
    const int width = (mTargetViewport[2] + reduced - 1) / reduced + 2 * margin;
    const int height = (mTargetViewport[3] + reduced - 1) / reduced + 2 * margin;
    if (!MakeOcclusionMaps(width, height))
    {
        Warn("no ambient occlusion: this OpenGL cannot draw into textures of floats");
        mOcclusionRefused = true;
        return ReleaseOcclusion();
    }
    // From the map's normalised coordinates to those of the picture.
    const float padding[2] = {float(width * reduced) / float(mTargetViewport[2]),
                              float(height * reduced) / float(mTargetViewport[3])};
    MAT_Identity(mPaddedProjection);
    mPaddedProjection[0][0] = 1 / padding[0];
    mPaddedProjection[1][1] = 1 / padding[1];
    // An odd side has half a texel to spare; it goes to the right and the top.
    mPaddedProjection[3][0] = float(2 * margin * reduced + mTargetViewport[2]) / float(width * reduced) - 1;
    mPaddedProjection[3][1] = float(2 * margin * reduced + mTargetViewport[3]) / float(height * reduced) - 1;
    MAT_Concat4x4(mProjection, mPaddedProjection, mPaddedProjection);

    const DrawPassType pass = GetDrawPass();
    SetDrawPass(kAmbientOcclusionPass);
    EnableAOPrepShader();
    DrawScenePolys(Scene());
    SetDrawPass(kAmbientOcclusionLatePass);
    FindOpenness(padding, margin);
    glBindFramebuffer(GL_FRAMEBUFFER, GLuint(mTargetFrame));
    glViewport(mTargetViewport[0], mTargetViewport[1], mTargetViewport[2], mTargetViewport[3]);
    ComposeOcclusion(reduced, margin);
    SetDrawPass(pass);
}

void VXGLDrawEngine::EnableAOPrepShader()
{
    glBindFramebuffer(GL_FRAMEBUFFER, mOcclusionFrame);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, mOcclusionMaps[0], 0);
    glViewport(0, 0, mOcclusionWidth, mOcclusionHeight);
    SetDepthState(true, true);
    SetBlend(false);
    SetSurfaceOffset(false);
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

float VXGLDrawEngine::OcclusionRadius() const
{
    const VXBBox& box = Scene()->BoundingBox();
    return std::max(kRadius * Length(box.Max() - box.Min()), 1e-20f);
}

void VXGLDrawEngine::FindOpenness(const float padding[2], int margin)
{
    vx::Program* const program =
        Variant(0xB0000012, "occlusion", "", vx::text::kScreenVertex, vx::text::kOcclusionFragment);
    if (!program)
        return;
    PrepareOverlay();
    SetBlend(false);
    const float radius = OcclusionRadius();
    const float texels = 0.5f * radius * std::fabs(mProjection[1][1]) * float(mOcclusionHeight) / padding[1];
    glUniform4f(program->Uniform("uPadding"), padding[0], padding[1], float(mOcclusionWidth), float(mOcclusionHeight));
    glUniform4f(program->Uniform("uReach"), radius, texels, float(margin), 0);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, mOcclusionMaps[1], 0);
    glBindTexture(GL_TEXTURE_2D, mOcclusionMaps[0]);
    glDrawArrays(GL_TRIANGLES, 0, 3);
    ++mNumDrawCalls;
}

void VXGLDrawEngine::ComposeOcclusion(int reduced, int margin)
{
    vx::Program* const program =
        Variant(0xB0000013, "occlusion, late", "", vx::text::kScreenVertex, vx::text::kOcclusionLateFragment);
    if (!program)
        return;
    PrepareOverlay();
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO, GL_ONE);
    glUniform4f(program->Uniform("uPlace"), 1.0f / float(reduced), float(margin), OcclusionRadius(), kStrength);
    glBindTexture(GL_TEXTURE_2D, mOcclusionMaps[1]);
    glActiveTexture(GL_TEXTURE7);
    glBindTexture(GL_TEXTURE_2D, mOcclusionMaps[0]);
    glActiveTexture(GL_TEXTURE0);
    glDrawArrays(GL_TRIANGLES, 0, 3);
    ++mNumDrawCalls;
    glBindTexture(GL_TEXTURE_2D, 0);
}
