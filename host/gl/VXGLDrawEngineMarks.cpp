// What is selected, and what the host's tools work on.

#include "draw/VXAppToolInfo.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "host/gl/VXGLDrawEngine.h"
#include "mesh/VXGeom.h"

#include <GL/glew.h>

#include <algorithm>
#include <bit>
#include <cmath>

namespace
{
// Pixels of the finished picture.
constexpr float kBorderWidth = 2.0f;
constexpr float kLargestDot = 8, kSmallestDot = 2.5f;
constexpr float kDotShareOfEdge = 0.45f;

constexpr float kTintAlpha = 0.5f, kMemberTintAlpha = 0.4f;

// Of the grouping tool: wires of the object that it works on, the current group, what its two checks find.
const VXMaterialColor4 kToolWires{0.10f, 0.25f, 0.55f, 1};
const VXMaterialColor4 kCurrentGroup{0.98f, 0.45f, 0.05f, 1};
const VXMaterialColor4 kSeveralGroups{0.80f, 0.10f, 0.60f, 1};
const VXMaterialColor4 kNoGroup{0.10f, 0.45f, 0.95f, 1};
const VXMaterialColor4 kMember{0.05f, 0.50f, 0.45f, 1}; ///< of a group of objects that is shown

// Marks of one geometry are kept by what they are for; highlights by their place in the list.
enum MarkSlot
{
    kSlotCurrentGroup = -3,
    kSlotSeveral,
    kSlotNone,
};

template <class IsMarked>
BBitArray PolysWhere(const VXGeom& geom, IsMarked&& isMarked)
{
    BBitArray marked(geom.NumPolys());
    for (std::int32_t p = 0; p < geom.NumPolys(); ++p)
        marked.Set(p, isMarked(*geom.Polygon(p)));
    return marked;
}

BBitArray PolysInGroup(const VXGeom& geom, std::int32_t word, std::uint32_t mask)
{
    const bool there = word >= 0 && word < geom.Geom()->GroupWords();
    return PolysWhere(geom, [&](const ELEMENT& poly) { return there && (poly.GroupWord(word) & mask) != 0; });
}

// In how many named groups a polygon is. Word 0 holds smoothing groups.
int NumGroupsOf(const GEOM& record, const ELEMENT& poly)
{
    int count = 0;
    for (std::int64_t w = 1; w < record.GroupWords(); ++w)
        count += std::popcount(poly.GroupWord(w));
    return count;
}
} // namespace

// Where the surface is seen, and nowhere else: at its own depth, with its own offsets.
void VXGLDrawEngine::DrawTint(const vx::PolyMarks& marks, const VXMaterial* mode, const VXMaterialColor4& color,
                              float alpha)
{
    vx::Program* const program = MarkProgram();
    if (!program)
        return;
    glUniformMatrix4fv(program->Uniform("uModelView"), 1, GL_FALSE, mPlacement.modelView[0]);
    glUniformMatrix4fv(program->Uniform("uToClip"), 1, GL_FALSE, mPlacement.toClip[0]);
    glUniform1i(program->Uniform("uFirstTriangle"), 0);
    glUniform4f(program->Uniform("uFill"), color.TotalRed(), color.TotalGreen(), color.TotalBlue(), alpha);
    BindMarkArrays(marks);
    SetBlend(true);
    SetDepthState(true, false);
    SetCulling(mode, mPlacement.mirrored);
    DrawUnderLines(mode, {0, std::int32_t(mBuffers->Indices().Bytes() / 12)});
}

void VXGLDrawEngine::DrawPolyMarks(Geometry& geometry, int slot, const BBitArray& marked, const VXMaterial* mode,
                                   const VXMaterialColor4& color, float alpha)
{
    mBuffers = &geometry.buffers;
    vx::PolyMarks& marks = geometry.marks[slot];
    if (marks.UpdatePolys(*geometry.geom, marked) && mBuffers->NeedTriangles())
    {
        DrawTint(marks, mode, color, alpha);
        LineStyle style;
        style.width = kBorderWidth;
        style.color = color * VXMaterialColor4(0.72f, 0.72f, 0.72f, 1); // stands out from the tint beside it
        style.bias = 1.5f * kLineBias;
        DrawSegments(marks.Border(), marks.BorderRange(), style);
    }
    mBuffers = nullptr;
}

void VXGLDrawEngine::DrawVertMarks(Geometry& geometry, int slot, const BBitArray& marked, const VXMaterialColor4& color)
{
    mBuffers = &geometry.buffers;
    vx::PolyMarks& marks = geometry.marks[slot];
    if (marks.UpdateVerts(*geometry.geom, marked) && mBuffers->NeedPositions())
    {
        // Neighbours stay apart: what an edge measures on the picture, in the middle of the geometry.
        VERTEX low, high, middle;
        geometry.geom->GetBounds(&low.x, &low.y, &low.z, &high.x, &high.y, &high.z, &middle.x, &middle.y, &middle.z);
        const Mat44& m = mPlacement.toClip;
        const float w = middle.x * m[0][3] + middle.y * m[1][3] + middle.z * m[2][3] + m[3][3];
        const float clip = marks.MeanEdge() * Length({m[0][1], m[1][1], m[2][1]}) / std::max(std::abs(w), 1e-20f);
        const float edge = clip * 0.5f * float(mTargetViewport[3]) / mPixelScale;
        LineStyle style;
        style.width = std::clamp(kDotShareOfEdge * edge, kSmallestDot, kLargestDot);
        style.color = color * VXMaterialColor4(0.45f, 0.45f, 0.45f, 1);
        style.bias = 10 * kLineBias; // a dot faces the viewer, and half of it would lie under a slanted surface
        if (style.width > 4)
        {
            DrawSegments(marks.Verts(), marks.VertRange(), style, true);
            style.width -= 2; // a dark rim is left
        }
        style.color = color;
        DrawSegments(marks.Verts(), marks.VertRange(), style, true);
    }
    mBuffers = nullptr;
}

// --- Highlights

void VXGLDrawEngine::DrawCustomVerts(VXScene* scene)
{
    if (mHighlights.empty() || !mReady)
        return;
    VisitSurfaces(
        [&](VXObject& object, Geometry& geometry)
        {
            const VXMaterial* const mode = EffectiveMode(object.DefaultMaterial(), scene->SceneMaterial());
            for (std::size_t i = 0; i < mHighlights.size(); ++i)
            {
                const vx::Highlight& highlight = mHighlights[i];
                std::int32_t word = 0;
                std::uint32_t mask = 0;
                if (!GEOM_GetGroupBit(geometry.geom->Geom(), highlight.group.CString(), &word, &mask))
                    continue;
                const BBitArray marked = PolysInGroup(*geometry.geom, word, mask);
                if (highlight.vertices)
                    DrawVertMarks(geometry, int(i), marked, highlight.color);
                else
                    DrawPolyMarks(geometry, int(i), marked, mode, highlight.color, kTintAlpha);
            }
        });
}

// --- Tools

// While a tool is at work, wires show the colours that the frame gives to objects: black for those that it leaves
// alone.
bool VXGLDrawEngine::ToolColorsWires() const
{
    return mMemberWires || (GroupToolInfo() && (GroupToolInfo()->GroupModeOn() || GroupToolInfo()->MorphModeOn()));
}

void VXGLDrawEngine::DrawGroupToolObject(VXGeom* geom, VXMaterial* objectMode, VXMaterial* sceneMode, VXScene* scene)
{
    if (!mReady || !geom || !geom->Geom() || !GroupToolInfo())
        return;
    const VXAppToolInfo& tool = *GroupToolInfo();
    const VXMaterial* const mode = EffectiveMode(objectMode, sceneMode);
    const GEOM& record = *geom->Geom();
    Geometry& geometry = GeometryOf(CurrentObject(), CurrentDrawGeom(), geom);
    geometry.buffers.SetArrays(geom, geom->Verts(), geom->NumVerts(true), nullptr);

    const BBitArray current = PolysInGroup(*geom, tool.CurGroupWord(), tool.CurGroupBits());
    if (tool.GroupModeSelectionType() != kGroupSelectVertices)
        DrawPolyMarks(geometry, kSlotCurrentGroup, current, mode, kCurrentGroup, kTintAlpha);
    if (tool.CheckMultiGroupedMode())
        DrawPolyMarks(geometry, kSlotSeveral,
                      PolysWhere(*geom, [&](const ELEMENT& poly) { return NumGroupsOf(record, poly) > 1; }), mode,
                      kSeveralGroups, kTintAlpha);
    if (tool.CheckNonGroupedMode())
        DrawPolyMarks(geometry, kSlotNone,
                      PolysWhere(*geom, [&](const ELEMENT& poly) { return NumGroupsOf(record, poly) == 0; }), mode,
                      kNoGroup, kTintAlpha);
    objectMode->KdColor() = kToolWires; // the frame puts the object's colours back
    DrawSortedElements(geom, objectMode, sceneMode, scene);
    if (tool.GroupModeSelectionType() == kGroupSelectVertices)
        DrawVertMarks(geometry, kSlotCurrentGroup, current, kCurrentGroup);
}

void VXGLDrawEngine::DrawGroupToolMember(VXGeom* geom, VXMaterial* objectMode, VXMaterial* sceneMode, VXObject* object)
{
    if (!mReady || !geom || !geom->Geom())
        return;
    Geometry& geometry = GeometryOf(object, CurrentDrawGeom(), geom);
    geometry.buffers.SetArrays(geom, geom->Verts(), geom->NumVerts(true), nullptr);
    DrawPolyMarks(geometry, kSlotCurrentGroup, PolysWhere(*geom, [](const ELEMENT&) { return true; }),
                  EffectiveMode(objectMode, sceneMode), kMember, kMemberTintAlpha);
    objectMode->KdColor() = kMember;
    mMemberWires = true;
    DrawSortedElements(geom, objectMode, sceneMode, Scene());
    mMemberWires = false;
}
