#include "engine/VXCamera.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "host/PreviewSetup.h"
#include "host/gl/ShaderText.h"
#include "host/gl/VXGLDrawEngine.h"
#include "mesh/VXGeom.h"

#include <GL/glew.h>

#include <algorithm>

// The whole frame in styled mode, which is the one for picking: into a target of its own, so that what the window shows
// stays as it is.
int VXGLDrawEngine::DrawStyledScene(VXScene* scene)
{
    UpdateBoundingBoxes();
    if (!mReady || !BeginPicking(*scene))
        return -1;
    SetDrawPass(kPickPass);
    PrepareMainPass(scene->SceneMaterial());
    DrawScenePolys(scene);
    if (!mPickTarget.Read(mPicked))
        Fail("out of memory");
    glBindFramebuffer(GL_FRAMEBUFFER, GLuint(mTargetFrame));
    return mError.IsEmpty() ? 0 : -1;
}

// Makes the target the size of the region, and the projection show just that.
bool VXGLDrawEngine::BeginPicking(const VXScene& scene)
{
    const PickRegion& region = mPickRegion;
    const bool whole = region.width < 1 || region.height < 1;
    const int width = region.pictureWidth > 0 ? region.pictureWidth : mTargetViewport[2];
    const int height = region.pictureHeight > 0 ? region.pictureHeight : mTargetViewport[3];
    const int left = whole ? 0 : std::clamp(region.left, 0, width);
    const int top = whole ? 0 : std::clamp(region.top, 0, height);
    const auto end = [](int from, int count, int low, int high)
    { return int(std::clamp<std::int64_t>(std::int64_t(from) + count, low, high)); };
    const int right = whole ? width : end(region.left, region.width, left, width);
    const int bottom = whole ? height : end(region.top, region.height, top, height);
    const bool outside = right == left || bottom == top;
    if (!mPicked.Reset(left, top, std::max(right - left, 1), std::max(bottom - top, 1)))
        Fail("out of memory");
    if (outside || !mError.IsEmpty())
        return false;
    const BString problem = mPickTarget.Create(right - left, bottom - top);
    if (!problem.IsEmpty())
    {
        Fail(problem);
        glBindFramebuffer(GL_FRAMEBUFFER, GLuint(mTargetFrame));
        return false;
    }
    MAT_Identity(mProjection);
    if (scene.CurCameraIndex() >= 0 && scene.CurCameraIndex() < scene.NumCameras())
        MAT_Copy(scene.CurCamera()->GetPerspectiveMat(), mProjection);
    const float w = float(width), h = float(height);
    vx::TileProjection(mProjection, float(left) / w, 1 - float(bottom) / h, float(right - left) / w,
                       float(bottom - top) / h, mProjection);
    mPickGeom = nullptr;
    mPickTarget.Begin();
    return true;
}

// The first name of what a batch belongs to: elements of a geometry have names where the scene lets elements be picked,
// else the object has one for all.
std::uint32_t VXGLDrawEngine::PickNameOf(const VXElementBatch& batch, bool elements)
{
    if (batch.geom == mPickGeom && mPickName == mPickNamed)
        return mPickFirst;
    const bool known = !elements && mPickGeom && mPickName == mPickNamed;
    mPickGeom = batch.geom;
    mPickNamed = mPickName;
    if (!known)
        mPickFirst = mPicked.AddNames(elements ? VXPickKind::Polygon : VXPickKind::Object, mPickName, CurrentDrawGeom(),
                                      elements ? batch.geom->NumPolys() : 1);
    if (mPickFirst == 0)
        Fail("there are more polygons than can be picked from at once");
    return mPickFirst;
}

void VXGLDrawEngine::DrawPickSurface(const VXElementBatch& batch)
{
    if (IsGround(CurrentObject()) && !Scene()->PickShadows())
        return; // it is there for the shadows on it
    if (!mBuffers->NeedTriangles())
        return;
    const Range range = mBuffers->Triangles(batch.kind, batch.first, batch.count);
    const bool elements = Scene()->PickPolys() || Scene()->PickEdges() || Scene()->PickVerts();
    const std::uint32_t name = range.count > 0 ? PickNameOf(batch, elements) : 0;
    vx::Program* const program =
        name ? Variant(0xB0000006, "pick", "", vx::text::kPickVertex, vx::text::kPickFragment) : nullptr;
    if (!program)
        return;
    glUniformMatrix4fv(program->Uniform("uToClip"), 1, GL_FALSE, mPlacement.toClip[0]);
    glUniform1i(program->Uniform("uFirstTriangle"), range.first);
    glUniform1ui(program->Uniform("uFirstName"), name);
    glUniform1i(program->Uniform("uElements"), elements ? 1 : 0);
    BindPickArrays();
    SetCulling(batch.drawMode, mPlacement.mirrored);
    SetBlend(false);
    SetDepthState(true, true);
    DrawTriangles(range);
}
