#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "host/gl/ShaderText.h"
#include "host/gl/VXGLDrawEngine.h"
#include "mesh/VXGeom.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>

// Widths in pixels of the finished picture.
static constexpr float kWireWidth = 1.25f;
static constexpr float kCreaseWidth = 1.4f;
static constexpr float kSilhouetteWidth = 2.3f;
static constexpr float kElementWidth = 1.6f;
static constexpr float kPointWidth = 5;
static constexpr float kVectorWidth = 1.3f;

static float Linear(float encoded)
{
    return encoded <= 0.04045f ? encoded / 12.92f : std::pow((encoded + 0.055f) / 1.055f, 2.4f);
}

// Indices that make two triangles of each four vertices; one buffer serves all lines.
bool VXGLDrawEngine::ReserveSegments(std::int32_t count)
{
    if (count <= mNumSegments)
        return true;
    count = std::max(count, 2 * mNumSegments);
    BArray<std::uint32_t> indices;
    if (!indices.SetCountForWriting(6 * std::int64_t(count)))
        return false;
    for (std::int64_t e = 0; e < count; ++e)
    {
        constexpr std::uint32_t kCorners[6] = {0, 1, 2, 2, 1, 3};
        for (int k = 0; k < 6; ++k)
            indices[6 * e + k] = std::uint32_t(4 * e) + kCorners[k];
    }
    if (!mSegmentIndices)
        glGenBuffers(1, &mSegmentIndices);
    glBindBuffer(GL_COPY_WRITE_BUFFER, mSegmentIndices);
    glBufferData(GL_COPY_WRITE_BUFFER, indices.Count() * 4, indices.Data(), GL_STATIC_DRAW);
    glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
    mNumSegments = count;
    return true;
}

void VXGLDrawEngine::DrawSegments(const vx::GpuArray& pairs, const Range& range, const LineStyle& style, bool points)
{
    DrawSegmentsBetween(mBuffers->Positions(), pairs, range, style, points);
}

void VXGLDrawEngine::DrawSegmentsBetween(const vx::GpuArray& positions, const vx::GpuArray& pairs, const Range& range,
                                         const LineStyle& style, bool points)
{
    if (range.count < 1 || !ReserveSegments(range.first + range.count))
        return;
    const bool lit = style.lit && mBuffers->NeedNormals();
    const bool pushed = !lit && style.offset != 0 && style.pushed && style.pushed->Bytes() > 0;
    const std::string defines = std::string(points ? "#define POINTS\n" : "") + (lit ? "#define LIT\n" : "") +
                                (pushed ? "#define PUSHED\n" : "");
    const std::uint32_t key = 0x40000000u + (points ? 1u : 0u) + (lit ? 2u : 0u) + (pushed ? 4u : 0u);
    vx::Program* const program = Variant(key, "lines", defines, vx::text::kLineVertex, vx::text::kLineFragment);
    if (!program)
        return;
    glUniformMatrix4fv(program->Uniform("uModelView"), 1, GL_FALSE, mPlacement.modelView[0]);
    glUniformMatrix4fv(program->Uniform("uToClip"), 1, GL_FALSE, mPlacement.toClip[0]);
    glUniformMatrix3fv(program->Uniform("uNormalMatrix"), 1, GL_FALSE, mPlacement.normal);
    glUniform1f(program->Uniform("uWidth"), style.width * mPixelScale);
    glUniform1f(program->Uniform("uBias"), style.bias);
    glUniform4f(program->Uniform("uLineColor"), style.color.TotalRed(), style.color.TotalGreen(),
                style.color.TotalBlue(), style.alpha);
    glUniform3f(program->Uniform("uKd"), Linear(style.kd.TotalRed()), Linear(style.kd.TotalGreen()),
                Linear(style.kd.TotalBlue()));
    glUniform4f(program->Uniform("uFade"), style.fadeBelow * mPixelScale, style.fadeTo, style.fadeFar, 0);
    glUniform1f(program->Uniform("uOffset"), style.offset);
    const GLuint normals = lit ? mBuffers->Normals().Texture() : (pushed ? style.pushed->Texture() : 0);
    const GLuint textures[3] = {positions.Texture(), normals, pairs.Texture()};
    for (GLuint k = 0; k < 3; ++k)
    {
        glActiveTexture(GL_TEXTURE1 + k);
        glBindTexture(GL_TEXTURE_BUFFER, textures[k]);
    }
    glActiveTexture(GL_TEXTURE0);
    for (GLuint index = 0; index < 4; ++index)
        glDisableVertexAttribArray(index);
    glDisable(GL_CULL_FACE); // which way round a segment's quad comes out means nothing
    SetBlend(true);
    SetDepthState(true, false);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, mSegmentIndices);
    glDrawElements(GL_TRIANGLES, 6 * range.count, GL_UNSIGNED_INT,
                   reinterpret_cast<const void*>(std::intptr_t(range.first) * 24));
    ++mNumDrawCalls;
    SetCullFace(mCull, mCullBack);
}

VXGLDrawEngine::LineStyle VXGLDrawEngine::WireStyle(const VXMaterial* mode) const
{
    LineStyle style;
    style.width = mLineWidth > 0 ? mLineWidth : kWireWidth;
    style.color = mode->GetFlagBlackLines() ? VXMaterialColor4(0, 0, 0, 1) : mode->LineColor();
    if (mode->GetFlagLineColorFromObject() || ToolColorsWires())
        style.color = CurrentObject()->DefaultMaterial()->KdColor();
    style.bias = kLineBias;
    style.fadeBelow = 9;
    style.fadeTo = 0.22f;
    if (mode->GetFlagDrawPolys() && !mode->GetFlagSilhouette())
        style.alpha = 0.80f; // on shaded surfaces full ink is too hard
    if (!mode->GetFlagDrawPolys())
        style.fadeFar = 0.55f; // without surfaces, what is far is fainter, or near and far could not be told apart
    if (mode->GetFlagLightLines())
    {
        style.lit = true;
        style.fadeTo = 0.5f;
    }
    return style;
}

void VXGLDrawEngine::DrawWires(const VXElementBatch& batch)
{
    if (IsGround(CurrentObject()) || !mBuffers->NeedEdges())
        return;
    // The cage of a subdivided object is drawn in the pass's own style, everything else in the style of the run.
    const bool cage = CurrentObject()->WantsLinesOnly(E_DrawGeom(CurrentDrawGeom()));
    const VXMaterial* const mode = cage ? mPassMode : batch.drawMode;
    LineStyle style = WireStyle(mode);
    if (style.lit)
    {
        const VXMaterial* const material = batch.material ? batch.material : CurrentObject()->DefaultMaterial();
        style.kd = material->KdColor();
        // Lit lines are all there is to see of a surface. Before a light background they are darkened as a whole, so
        // that their brightest part still stands out.
        const VXMaterialColor4& behind = Scene()->BackgroundColor();
        if (behind.MixedValue() > 0.36f)
            style.kd *= VXMaterialColor4(0.50f, 0.50f, 0.50f, 1);
    }
    if (cage)
    {
        style.width = std::max(style.width, 1.0f);
        style.alpha = 0.7f;
        style.fadeFar = 0;
    }
    DrawSegments(mBuffers->EdgePairs(), mBuffers->Edges(batch.kind, batch.first, batch.count), style);
}

void VXGLDrawEngine::DrawLineElements(const VXElementBatch& batch)
{
    if (DoingDropShadow() || DoingAO() || GetDrawPass() == kPickPass || ShowsData(batch.drawMode) ||
        !mBuffers->NeedLineElements())
        return;
    LineStyle style;
    const bool points = batch.kind == VXElementKind::Points;
    style.width = points ? kPointWidth : (mLineWidth > 0 ? mLineWidth : kElementWidth);
    // Curves of a model are its content: they take their material's colour, and the style's line colour without one.
    style.color = batch.material ? batch.material->KdColor() : batch.drawMode->LineColor();
    style.bias = 0.5f * kLineBias;
    DrawSegments(points ? mBuffers->Points() : mBuffers->LinePairs(),
                 mBuffers->LineElements(batch.kind, batch.first, batch.count), style, points);
}

// --- Edge lines

void VXGLDrawEngine::DrawHaberlineSets(VXMaterial* material, int count, const std::uint32_t* /*indices*/,
                                       const std::uint32_t* edgeFlags, int corners)
{
    if (!mBuffers || ShowsData(Scene()->SceneMaterial()) || IsGround(CurrentObject()) || !mBuffers->NeedPositions())
        return;
    VXGeom& geom = *mBuffers->Geom();
    vx::EdgeLines& lines = mGeometry->edgeLines;
    if (!lines.Update(geom, HaberlinesWelded()))
        return;
    const VXElementKind kind = corners == 4 ? VXElementKind::Quads : VXElementKind::Triangles;
    const std::int32_t first = std::int32_t(edgeFlags - geom.Sorted(kind).edgeFlags);
    LineStyle style;
    style.width = kCreaseWidth;
    style.color = material->HaberlineColor();
    style.alpha = 0.9f;
    style.bias = kLineBias;
    style.offset = material->HaberlineOffset();
    style.pushed = &lines.Normals();
    DrawSegments(lines.Pairs(), lines.Lines(kind, first, count), style);
    // Styles with an outline show silhouettes by themselves.
    const bool outlined = EffectiveMode(CurrentObject()->DefaultMaterial(), Scene()->SceneMaterial())->GetFlagOutline();
    if (!outlined && lines.UpdateOutline(geom, mPlacement.modelView))
    {
        style.width = kSilhouetteWidth;
        style.bias = kSilhouetteBias;
        DrawSegments(lines.OutlinePairs(), lines.Outline(kind, first, count), style);
    }
    SetDepthState(true, true);
}

// --- Outlines: gathered edge by edge, drawn when the geometry ends

void VXGLDrawEngine::DrawPolygon(VXGeom* geom, const VXEdge& edge)
{
    if (!geom->Polygon(edge.PolyIndex1())->IsFace())
        return; // line elements are drawn as what they are
    if (!edge.IsBoundaryEdge() && !edge.IsOpenEdge() && !edge.IsMtlBoundaryEdge())
        return;
    if (mOutlinePairs.Append(edge.VertIndex1()))
        mOutlinePairs.Append(edge.VertIndex2());
}

void VXGLDrawEngine::FlushOutline()
{
    const std::int32_t count = std::int32_t(mOutlinePairs.Count() / 2);
    if (count < 1 || !mBuffers || IsGround(CurrentObject()) || !mBuffers->NeedPositions())
        return;
    mBuffers->SetOutline(mOutlinePairs.Data(), count);
    LineStyle style;
    const bool alone = mPassMode && !mPassMode->GetFlagDrawPolys();
    style.width = kSilhouetteWidth;
    style.color = mPassMode && !mPassMode->GetFlagBlackLines() ? mPassMode->LineColor() : VXMaterialColor4(0, 0, 0, 1);
    style.alpha = alone ? 1.0f : 0.92f;
    style.bias = kSilhouetteBias;
    DrawSegments(mBuffers->OutlinePairs(), {0, count}, style);
    mOutlinePairs.Empty();
}

// --- Vectors

void VXGLDrawEngine::DrawCustomLines(VXScene* /*scene*/)
{
    if (mVectors == vx::VectorKind::Off || !mReady)
        return;
    // Tangent, binormal and normal are the x, y and z of a vertex's frame: red, green and blue, as axes are drawn.
    static const VXMaterialColor4 kColors[vx::VectorLines::kNumAxes] = {
        {0.90f, 0.16f, 0.14f, 1}, {0.10f, 0.62f, 0.16f, 1}, {0.10f, 0.36f, 0.98f, 1}};
    SetSurfaceOffset(false);
    VisitSurfaces(
        [&](VXObject&, Geometry& geometry)
        {
            if (!geometry.vectors.Update(*geometry.geom, mVectors))
                return;
            for (int axis = 0; axis < vx::VectorLines::kNumAxes; ++axis)
            {
                LineStyle style;
                style.width = kVectorWidth;
                style.color = kColors[axis];
                style.alpha = geometry.vectors.Opacity();
                style.bias = 2.5f * kLineBias; // tangents lie in the surface, and under it where it is hollow
                DrawSegmentsBetween(geometry.vectors.Positions(), geometry.vectors.Pairs(),
                                    geometry.vectors.Segments(vx::VectorLines::Axis(axis)), style, false);
            }
        });
}
