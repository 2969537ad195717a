#include "host/gl/VXGLDrawEngine.h"

#include "engine/VXCamera.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "host/gl/FrameBlock.h"
#include "host/gl/LoadGL.h"
#include "host/gl/ShaderText.h"
#include "host/glsl/GlslCompiler.h"
#include "host/overlay/OverlayPainter.h"
#include "mesh/VXGeom.h"
#include "shader/VXShaderEngine.h"

#include <GL/glew.h>

#include <cassert>

// Geometries that no frame has drawn for this long give their buffers back; shown again, they are uploaded anew.
static constexpr std::int64_t kFramesToKeep = 300;

VXGLDrawEngine::VXGLDrawEngine()
{
    MAT_Identity(mProjection);
    MAT_Identity(mPaddedProjection);
    MAT_Identity(mShadowView);
    MAT_Identity(mShadowToClip);
    mPlacement = {};
    mOptions.mSuppressBackCull = true; // back faces are shown, in a colour of their own
}

VXGLDrawEngine::~VXGLDrawEngine() { ReleaseGL(); }

BString VXGLDrawEngine::Init()
{
    ReleaseGL();
    glGenVertexArrays(1, &mVertexArray);
    glGenBuffers(1, &mFrameBuffer);
    glBindBuffer(GL_UNIFORM_BUFFER, mFrameBuffer);
    glBufferData(GL_UNIFORM_BUFFER, sizeof(FrameBlock), nullptr, GL_DYNAMIC_DRAW);
    glBindBuffer(GL_UNIFORM_BUFFER, 0);
    glGetIntegerv(GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS, &mNumUnits);
    VXShaderEngine* const shaders = new VXShaderEngine(this);
    shaders->SetShaderCompiler(new vx::GlslCompiler(shaders, this));
    SetShaderEngine(shaders);
    mPainter = std::make_unique<vx::OverlayPainter>();
    mReady = true;
    return vx::PendingGLErrors();
}

void VXGLDrawEngine::ReleaseGL()
{
    if (!mReady)
        return;
    mPainter.reset();
    ReleaseShaders();
    mPrograms.clear();
    mPickTarget.Release();
    mGeometries.clear();
    mColors.Release();
    mBuffers = nullptr;
    FreeTextures();
    glDeleteBuffers(1, &mFrameBuffer);
    glDeleteBuffers(1, &mSegmentIndices);
    glDeleteVertexArrays(1, &mVertexArray);
    glDeleteFramebuffers(1, &mShadowFrame);
    glDeleteRenderbuffers(1, &mShadowDepth);
    glDeleteTextures(2, mShadowMaps);
    mFrameBuffer = mSegmentIndices = mVertexArray = mShadowFrame = mShadowDepth = 0;
    mShadowMaps[0] = mShadowMaps[1] = 0;
    mNumSegments = 0;
    mBackTexture.Release();
    mOverlayTexture.Release();
    mItemTextures.clear();
    mWatermarkTexture.Release();
    mWatermarkText.Empty();
    ReleaseOcclusion();
    mShadowMapValid = mReady = false;
}

void VXGLDrawEngine::SetBackground(const VXMaterialColor4& top, const VXMaterialColor4& bottom, float alpha)
{
    mBackTop = top;
    mBackBottom = bottom;
    mBackAlpha = alpha;
}

void VXGLDrawEngine::SetTile(float x, float y, float width, float height)
{
    mTile[0] = width;
    mTile[1] = height;
    mTile[2] = x;
    mTile[3] = y;
}

// The first failure of a frame is the one to read; what follows is usually its consequence.
void VXGLDrawEngine::Fail(const BString& problem)
{
    if (mError.IsEmpty())
        mError = problem;
}

vx::Program* VXGLDrawEngine::Variant(std::uint32_t key, const char* name, const std::string& defines,
                                     const char* vertexText, const char* fragmentText)
{
    std::unique_ptr<vx::Program>& slot = mPrograms[key];
    if (!slot)
    {
        slot = std::make_unique<vx::Program>();
        const BString problem = slot->Build(name, defines + vx::text::Common(), vertexText, fragmentText);
        if (!problem.IsEmpty())
            Fail(problem);
        glUseProgram(slot->Id());
        // The same units in every program, so that switching programs moves no texture.
        constexpr struct
        {
            const char* sampler;
            int unit;
        } kUnits[] = {{"uTexture", 0},       {"uMap", 0},
                      {"uPositions", 1},     {"uNormals", 2},
                      {"uSegments", 3},      {"uPolyNormals", 4},
                      {"uTrianglePolys", 5}, {"uMarks", 6},
                      {"uGeometry", 7},      {"uBackPicture", kBackPictureUnit}};
        for (const auto& [sampler, unit] : kUnits)
            glUniform1i(slot->Uniform(sampler), unit); // -1, for one that is not used, is ignored
    }
    if (!slot->IsBuilt())
    {
        Fail("a shader program of the draw engine could not be built");
        return nullptr;
    }
    glUseProgram(slot->Id());
    return slot.get();
}

// --- The frame

void VXGLDrawEngine::BeginFrameState()
{
    if (mFrameBegun)
        return;
    mFrameBegun = true;
    ++mFrame;
    mRetired.clear();
    mNumDrawCalls = 0;
    mDepthDrawn = false;
    mError.Empty();
    if (!mReady)
        Fail("the draw engine was not initialised in this context");
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &mTargetFrame);
    glGetIntegerv(GL_VIEWPORT, mTargetViewport);
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glBindVertexArray(mVertexArray);
    glBindBufferBase(GL_UNIFORM_BUFFER, 0, mFrameBuffer);
    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_ALPHA_TEST);
    glDisable(GL_LIGHTING);
    glDisable(GL_FOG);
    glDepthFunc(GL_LEQUAL);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
}

void VXGLDrawEngine::EndFrameState()
{
    if (!mFrameBegun)
        return;
    mFrameBegun = false;
    DropUnusedGeometries();
    UnbindTexture();
    glUseProgram(0);
    glBindVertexArray(0);
    glBindBufferBase(GL_UNIFORM_BUFFER, 0, 0);
    for (GLenum unit = 0; unit < 8; ++unit)
    {
        glActiveTexture(GL_TEXTURE0 + unit);
        glBindTexture(GL_TEXTURE_BUFFER, 0);
        glBindTexture(GL_TEXTURE_2D, 0);
    }
    glActiveTexture(GL_TEXTURE0 + kBackPictureUnit);
    glBindTexture(GL_TEXTURE_2D, 0);
    glActiveTexture(GL_TEXTURE0);
    glPopAttrib();
    const BString errors = vx::PendingGLErrors();
    if (!errors.IsEmpty())
        Fail("OpenGL reports: " + errors);
    assert(errors.IsEmpty());
}

void VXGLDrawEngine::PrepareScene(VXScene* scene)
{
    MAT_Identity(mProjection);
    mOrtho = false;
    if (scene->CurCameraIndex() >= 0 && scene->CurCameraIndex() < scene->NumCameras())
    {
        MAT_Copy(scene->CurCamera()->GetPerspectiveMat(), mProjection);
        mOrtho = scene->CurCamera()->IsOrtho();
    }
    FillFrameBlock();
    SetDepthState(true, true);
    glClearColor(0, 0, 0, ShowsData(scene->SceneMaterial()) ? mBackAlpha : 0);
    glClearDepth(1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

// --- Objects and geometries

void VXGLDrawEngine::BeginObject(VXObject* object)
{
    mPlacement = PlacementOf(*object);
    mMaterial = nullptr;
}

void VXGLDrawEngine::EndObject(VXObject*) { mMaterial = nullptr; }

void VXGLDrawEngine::EnableClientArrays()
{
    mVertexArrayData = mNormalData = mColorData = nullptr;
    mVertexCount = 0;
    mBuffers = nullptr;
    mMaterial = nullptr;
    mOutlinePairs.Empty();
}

void VXGLDrawEngine::DisableClientArrays()
{
    FlushOutline();
    mBuffers = nullptr;
}

void VXGLDrawEngine::SetVertexArray(VERTEX* verts, int count)
{
    mVertexArrayData = verts;
    mVertexCount = count;
}

void VXGLDrawEngine::SetNormalArray(VERTEX* normals, int count) { mNormalData = count > 0 ? normals : nullptr; }

void VXGLDrawEngine::SetColorArray(VERTEX* colors, int count) { mColorData = count > 0 ? colors : nullptr; }

void VXGLDrawEngine::PrepareGeometry(VXGeom* geom)
{
    mGeometry = mReady && CurrentObject() ? &GeometryOf(CurrentObject(), CurrentDrawGeom(), geom) : nullptr;
    mBuffers = mGeometry ? &mGeometry->buffers : nullptr;
    if (mBuffers)
        mBuffers->SetArrays(geom, mVertexArrayData, mVertexCount, mNormalData);
}

// A geometry is found by the object's display list id; its buffers are looked at anew when the list is not ready.
VXGLDrawEngine::Geometry& VXGLDrawEngine::GeometryOf(VXObject* object, int drawGeom, VXGeom* geom)
{
    std::uint32_t id = object->PolyDisplayListID(drawGeom);
    auto found = id ? mGeometries.find(id) : mGeometries.end();
    if (found == mGeometries.end() || found->second->geom != geom)
    {
        id = mNextGeometry++;
        found = mGeometries.emplace(id, std::make_unique<Geometry>()).first;
        found->second->geom = geom;
        object->SetPolyDisplayListID(id, drawGeom);
        object->SetLineDisplayListID(id, drawGeom);
    }
    Geometry& geometry = *found->second;
    if (!object->PolyDisplayListReady(drawGeom) || !object->LineDisplayListReady(drawGeom))
    {
        geometry.buffers.MarkStale();
        geometry.vectors.MarkStale();
        geometry.edgeLines.MarkStale();
        object->SetPolyDisplayListReady(true, drawGeom);
        object->SetLineDisplayListReady(true, drawGeom);
    }
    geometry.lastFrame = mFrame;
    return geometry;
}

// For what is drawn outside the passes of a frame: geometries that have a surface, each with its placement.
void VXGLDrawEngine::VisitSurfaces(const std::function<void(VXObject&, Geometry&)>& step)
{
    const Placement kept = mPlacement;
    for (std::int64_t i = 0; i < Scene()->NumObjects(); ++i)
    {
        VXObject* const object = Scene()->Object(int(i));
        if (!object || !object->Visible() || IsGround(object))
            continue;
        if (object->PrepareForDrawing() == 0)
            for (int index = object->NumbDrawGeoms() - 1; index >= 0; --index)
            {
                VXGeom* const geom = object->DrawGeom(E_DrawGeom(index));
                if (!geom || object->WantsLinesOnly(E_DrawGeom(index)))
                    continue;
                mPlacement = PlacementOf(*object);
                Geometry& geometry = GeometryOf(object, index, geom);
                geometry.buffers.SetArrays(geom, geom->Verts(), geom->NumVerts(true), nullptr);
                step(*object, geometry);
            }
        object->EndDrawing();
    }
    mPlacement = kept;
}

void VXGLDrawEngine::DropUnusedGeometries()
{
    std::erase_if(mGeometries, [&](const auto& entry) { return entry.second->lastFrame + kFramesToKeep < mFrame; });
}
