#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "host/gl/ShaderText.h"
#include "host/gl/VXGLDrawEngine.h"
#include "host/image/ColorSpace.h"
#include "host/image/TextureTable.h"
#include "mesh/VXGeom.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace
{
// What makes a variant of the surface program: at most one way to shade, and features.
enum SurfaceBit : std::uint32_t
{
    kShadeMask = 0xF,
    kShadeLit = 0,
    kShadeToon,
    kShadeFill,
    kShadeDepth,
    kShadeNormals,
    kShadeHeight,
    kShadeGround,
    kShadeMark,
    kShadeOcclusion,
    kFlat = 1u << 4,
    kTexture = 1u << 5,
    kVertexColors = 1u << 6,
    kClear = 1u << 7,
    kFarLightsShift = 8, ///< four bits: their number
};

constexpr const char* kShadeNames[] = {"SHADE_LIT",    "SHADE_TOON",   "SHADE_FILL", "SHADE_DEPTH",    "SHADE_NORMALS",
                                       "SHADE_HEIGHT", "SHADE_GROUND", "SHADE_MARK", "SHADE_OCCLUSION"};

VERTEX Linear(const VXMaterialColor4& c)
{
    return {vx::LinearOf(c.TotalRed()), vx::LinearOf(c.TotalGreen()), vx::LinearOf(c.TotalBlue())};
}

void BindBufferTexture(GLenum unit, const vx::GpuArray& array)
{
    glActiveTexture(GL_TEXTURE0 + unit);
    glBindTexture(GL_TEXTURE_BUFFER, array.Texture());
    glActiveTexture(GL_TEXTURE0);
}
} // namespace

bool VXGLDrawEngine::DrawsLinesOver(const VXMaterial* mode) const
{
    return mode->GetFlagDrawWires() || mode->GetFlagOutline() || (mOptions.mHaberlinesOn && !ShowsData(mode));
}

bool VXGLDrawEngine::IsGround(const VXObject* object) const
{
    return object && (object == Scene()->GroundObject() || object->InternalName() == "GROUND");
}

void VXGLDrawEngine::DrawElements(const VXElementBatch& batch)
{
    if (!mBuffers || !batch.geom)
        return;
    if (batch.kind == VXElementKind::Lines || batch.kind == VXElementKind::Points)
        DrawLineElements(batch);
    else if (ElementPass() == 1)
        DrawWires(batch);
    else
        DrawSurface(batch);
}

std::uint32_t VXGLDrawEngine::SurfaceVariant(const VXElementBatch& batch)
{
    const VXMaterial& mode = *batch.drawMode;
    if (mDrawingShadowMap)
        return kShadeHeight;
    if (DoingAO())
        return kShadeOcclusion;
    if (mode.GetFlagDepthOnly())
        return kShadeDepth;
    const std::uint32_t flat = mNormalData && mBuffers->NeedNormals() ? 0 : std::uint32_t(kFlat);
    if (mode.GetFlagNormalsOnly())
        return kShadeNormals | flat;
    if (mode.GetFlagSilhouette())
        return kShadeFill;
    if (IsGround(CurrentObject()))
        return kShadeGround;
    std::uint32_t variant = (mode.GetFlagToon() ? kShadeToon : kShadeLit) | flat;
    if (mode.GetFlagTexture() && batch.material && TextureOf(batch.material->TextureIndex()) && mBuffers->NeedUVs())
        variant |= kTexture;
    if (mColorData && mode.GetFlagVertexColorsOnly())
        variant |= kVertexColors;
    if (batch.transparent)
        variant |= kClear;
    if (!mode.GetFlagToon())
        variant |= std::uint32_t(mNumFarLights) << kFarLightsShift;
    return variant;
}

vx::Program* VXGLDrawEngine::SurfaceProgram(std::uint32_t variant)
{
    std::string defines = std::string("#define ") + kShadeNames[variant & kShadeMask] + "\n";
    if (variant & kFlat)
        defines += "#define FLAT\n";
    if (variant & kTexture)
        defines += "#define TEXTURE\n";
    if (variant & kVertexColors)
        defines += "#define VERTEX_COLORS\n";
    if (variant & kClear)
        defines += "#define CLEAR\n";
    if (variant >> kFarLightsShift)
        defines += "#define FAR_LIGHTS " + std::to_string(variant >> kFarLightsShift) + "\n";
    return Variant(variant, "surface", defines, vx::text::kSurfaceVertex, vx::text::SurfaceFragment().c_str());
}

// Picture of the host's table as a texture, uploaded when it is first drawn. 0 without one.
std::uint32_t VXGLDrawEngine::TextureOf(std::int32_t index, bool linear)
{
    const CPB_Offscreen* const picture = mTextures ? mTextures->Picture(index) : nullptr;
    if (!picture)
        return 0;
    const auto found = mTextureNames.find({index, linear});
    if (found != mTextureNames.end())
        return found->second;
    GLint largest = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    GLuint name = 0;
    if (picture->Width() <= largest && picture->Height() <= largest)
    {
        glGenTextures(1, &name);
        glBindTexture(GL_TEXTURE_2D, name);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        if (GLEW_EXT_texture_filter_anisotropic) // keeps surfaces that are seen at a slant sharp
            glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, 4);
        // The picture's top row goes to v = 1, where texture coordinates have it.
        BArray<std::uint8_t> rows;
        const std::int64_t bytes = std::int64_t(picture->Width()) * 4;
        if (rows.SetCountForWriting(bytes * picture->Height()))
        {
            for (int y = 0; y < picture->Height(); ++y)
                std::copy_n(picture->Row(picture->Height() - 1 - y), bytes, rows.Data() + y * bytes);
            glTexImage2D(GL_TEXTURE_2D, 0, linear ? GL_RGBA8 : GL_SRGB8_ALPHA8, picture->Width(), picture->Height(), 0,
                         GL_RGBA, GL_UNSIGNED_BYTE, rows.Data());
            glGenerateMipmap(GL_TEXTURE_2D);
        }
        glBindTexture(GL_TEXTURE_2D, 0);
    }
    mTextureNames[{index, linear}] = name;
    return name;
}

void VXGLDrawEngine::SetMaterialUniforms(vx::Program& program, const VXElementBatch& batch, std::uint32_t variant)
{
    const auto set3 = [&](const char* name, const VERTEX& v) { glUniform3f(program.Uniform(name), v.x, v.y, v.z); };
    const VXMaterial* const material = batch.material ? batch.material : CurrentObject()->DefaultMaterial();
    const bool textured = (variant & kTexture) != 0;
    set3("uKd", Linear(textured ? material->TextureColor() : material->KdColor()));
    set3("uKs", Linear(material->KsColor()));
    glUniform1f(program.Uniform("uNs"), std::clamp(material->Ns(), 1.0f, 1000.0f));
    glUniform1i(program.Uniform("uTones"), std::clamp(int(Scene()->ToonToneStyle()), 1, 8));
    if (batch.transparent)
        glUniform4f(program.Uniform("uTransparency"), material->TMin(), material->TMax(), material->TExpo(),
                    mOptions.MinOpacityDisplayGL(false));
    else
        glUniform4f(program.Uniform("uTransparency"), 0, 0, 0, 1);
    if (textured)
        glBindTexture(GL_TEXTURE_2D, TextureOf(material->TextureIndex()));

    const std::uint32_t shade = variant & kShadeMask;
    if (shade == kShadeFill)
    {
        // Surfaces in the scene's background colour are there to hide what lies behind them, so they look like the
        // background that is drawn, gradient and all.
        const VXMaterialColor4& c = batch.drawMode->SilhouetteColor();
        const bool background = c == Scene()->BackgroundColor();
        glUniform4f(program.Uniform("uFill"), c.TotalRed(), c.TotalGreen(), c.TotalBlue(), background ? -1.0f : 1.0f);
    }
    else if (shade == kShadeGround)
    {
        const VXBBox& box = CurrentObject()->BoundingBox();
        VERTEX centre = (box.Min() + box.Max()) * 0.5f;
        MAT_VertTransform(&centre, &centre, 1, mPlacement.modelView);
        const VERTEX size = box.Max() - box.Min();
        glUniform4f(program.Uniform("uGround"), centre.x, centre.y, centre.z,
                    std::max(0.5f * std::max({size.x, size.y, size.z}), 1e-20f));
    }
}

void VXGLDrawEngine::BindSurfaceArrays(std::uint32_t variant)
{
    const std::uint32_t shade = variant & kShadeMask;
    const bool shaded = shade == kShadeLit || shade == kShadeToon || shade == kShadeNormals;
    if (variant & kVertexColors)
        mColors.Upload(mColorData, std::size_t(mVertexCount) * sizeof(VERTEX));
    BindArrays({.normals = shaded && !(variant & kFlat),
                .uvs = (variant & kTexture) != 0,
                .colors = (variant & kVertexColors) != 0});
    if ((variant & kFlat) && mBuffers->NeedPolyNormals())
    {
        BindBufferTexture(4, mBuffers->PolyNormals());
        BindBufferTexture(5, mBuffers->TrianglePolys());
    }
}

// The places are those of the attributes in all programs of surfaces.
void VXGLDrawEngine::BindArrays(const SurfaceArrays& wanted)
{
    const struct
    {
        bool on;
        const vx::GpuArray& from;
        GLint size;
    } attributes[] = {{true, mBuffers->SurfacePositions(), 3},    {wanted.normals, mBuffers->SurfaceNormals(), 3},
                      {wanted.uvs, mBuffers->UVs(), 2},           {wanted.colors, mColors, 3},
                      {wanted.tangents, mBuffers->Tangents(), 3}, {wanted.tangents, mBuffers->Binormals(), 3}};
    GLuint index = 0;
    for (const auto& [on, from, size] : attributes)
    {
        if (on)
        {
            glBindBuffer(GL_ARRAY_BUFFER, from.Buffer());
            glVertexAttribPointer(index, size, GL_FLOAT, GL_FALSE, 0, nullptr);
            glEnableVertexAttribArray(index);
        }
        else
            glDisableVertexAttribArray(index);
        ++index;
    }
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, mBuffers->Indices().Buffer());
}

void VXGLDrawEngine::DrawTriangles(const Range& range)
{
    glDrawElements(GL_TRIANGLES, 3 * range.count, GL_UNSIGNED_INT,
                   reinterpret_cast<const void*>(std::intptr_t(range.first) * 12));
    ++mNumDrawCalls;
}

void VXGLDrawEngine::DrawSurface(const VXElementBatch& batch)
{
    if (GetDrawPass() == kPickPass)
        return DrawPickSurface(batch);
    if (DoingDropShadow() && !mDrawingShadowMap)
        return; // the map still holds what it would show
    if ((ShowsData(batch.drawMode) || DoingAO()) && IsGround(CurrentObject()))
        return;
    if (DoingAO() && batch.transparent)
        return; // what is clear keeps no light from others
    if (!mBuffers->NeedTriangles())
        return;
    const Range range = mBuffers->Triangles(batch.kind, batch.first, batch.count);
    if (range.count < 1)
        return;
    const std::uint32_t variant = SurfaceVariant(batch);
    // What shows data, fills, or vertex colours, looks the same whatever the material.
    const bool generated = mShaderProgram && (variant & kShadeMask) == kShadeLit && !(variant & kVertexColors);
    vx::Program* program = generated ? UseGenerated(batch) : nullptr;
    if (!program)
        program = UseFixed(batch, variant);
    if (!program)
        return;
    glUniformMatrix4fv(program->Uniform("uModelView"), 1, GL_FALSE, mPlacement.modelView[0]);
    glUniformMatrix4fv(program->Uniform("uToClip"), 1, GL_FALSE, mPlacement.toClip[0]);
    glUniformMatrix3fv(program->Uniform("uNormalMatrix"), 1, GL_FALSE, mPlacement.normal);
    glUniform1i(program->Uniform("uFirstTriangle"), range.first);
    const VERTEX back = Linear(mBackFaceColor);
    glUniform3f(program->Uniform("uBack"), back.x, back.y, back.z);
    DrawFilled(batch, range);
}

vx::Program* VXGLDrawEngine::UseFixed(const VXElementBatch& batch, std::uint32_t variant)
{
    vx::Program* const program = SurfaceProgram(variant);
    if (!program)
        return nullptr;
    SetMaterialUniforms(*program, batch, variant);
    BindSurfaceArrays(variant);
    return program;
}

// Layers lie over what is there already, opaque ones with an alpha of 1.
bool VXGLDrawEngine::IsBlended(const VXElementBatch& batch) const
{
    return !mDrawingShadowMap && (batch.transparent || (batch.layer > 0 && !DoingAO()));
}

// Draws triangles with the program in use, as their style and transparency ask for.
void VXGLDrawEngine::DrawFilled(const VXElementBatch& batch, const Range& range)
{
    SetCulling(batch.drawMode, mPlacement.mirrored);
    const bool blended = IsBlended(batch);
    SetBlend(blended);
    if (!mDrawingShadowMap)
        SetDepthState(true, !blended);
    if (blended && !mCull)
    {
        // The far side of a clear body shows through its near side.
        SetCullFace(true, false);
        DrawTriangles(range);
        SetCullFace(true, true);
        DrawTriangles(range);
        SetCullFace(false, true);
    }
    else if (!mDrawingShadowMap && !DoingAO())
        DrawUnderLines(batch.drawMode, range);
    else
        DrawTriangles(range);
}

// Surfaces of styles that draw lines on them stand back for these.
void VXGLDrawEngine::DrawUnderLines(const VXMaterial* mode, const Range& range)
{
    const bool lines = DrawsLinesOver(mode);
    if (lines)
        SetSurfaceOffset(true);
    DrawTriangles(range);
    if (lines)
        SetSurfaceOffset(false);
}

// --- Marks on surfaces

vx::Program* VXGLDrawEngine::MarkProgram() { return SurfaceProgram(kShadeMark | kFlat); }

void VXGLDrawEngine::BindMarkArrays(const vx::PolyMarks& marks)
{
    BindSurfaceArrays(kShadeMark);
    BindBufferTexture(5, mBuffers->TrianglePolys());
    BindBufferTexture(6, marks.Polys());
}

void VXGLDrawEngine::BindPickArrays()
{
    BindSurfaceArrays(kShadeFill);
    BindBufferTexture(5, mBuffers->TrianglePolys());
}

// Depth of all surfaces and nothing else, for styles that hide lines behind surfaces without drawing them.
void VXGLDrawEngine::DrawDepthOfScene()
{
    vx::Program* const program = SurfaceProgram(kShadeFill);
    if (!program)
        return;
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    SetSurfaceOffset(true);
    SetDepthState(true, true);
    SetBlend(false);
    SetCullFace(false, true);
    VisitSurfaces(
        [&](VXObject&, Geometry& geometry)
        {
            mBuffers = &geometry.buffers;
            if (!mBuffers->NeedTriangles())
                return;
            glUniformMatrix4fv(program->Uniform("uModelView"), 1, GL_FALSE, mPlacement.modelView[0]);
            glUniformMatrix4fv(program->Uniform("uToClip"), 1, GL_FALSE, mPlacement.toClip[0]);
            BindSurfaceArrays(kShadeFill);
            DrawTriangles({0, std::int32_t(mBuffers->Indices().Bytes() / 12)});
        });
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    mBuffers = nullptr;
}
