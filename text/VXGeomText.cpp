#include "base/BText.h"
#include "mesh/VXGeom.h"
#include "text/VXFTFace.h"
#include "text/detail/GlyphShapes.h"
#include "text/detail/TextPage.h"

#include <algorithm>
#include <cstring>
#include <utility>

using namespace vx;

bool VXGeom::smUnscaledKerning = false;

static FT_Face OpenedFace(VXFTFace* face)
{
    if (!VXGeom::FTLibrary())
        VXGeom::SetupFreeType();
    return VXGeom::FTLibrary() && face ? face->GetFTFace() : nullptr;
}

// The record and a copy turned about the y axis through the pivot; null when memory ran out.
static PagePtr WithBack(GEOM& front, const float pivot[3])
{
    constexpr float kHalfTurn = 3.1415927f, kGap = 0.0001f;
    GEOM_Offset(&front, 0, 0, kGap);
    const PagePtr back(GEOM_Copy(&front, 0));
    if (!back)
        return nullptr;
    Mat44 turn;
    MAT_Identity(turn);
    MAT_Translate(turn, -pivot[0], -pivot[1], -pivot[2]);
    MAT_RotateY(turn, kHalfTurn);
    MAT_Translate(turn, pivot[0], pivot[1], pivot[2]);
    MAT_VertTransform(back->verts, back->verts, back->numVerts, turn);
    const GEOM* const sides[] = {&front, back.get()};
    return PagePtr(GEOM_CreateUniMesh(sides, 2));
}

// The front's first. False when memory ran out.
static bool NormalsOfSides(std::int32_t count, int sides, VERTEX*& normals)
{
    normals = MEM_AllocArray<VERTEX>(std::size_t(count));
    if (!normals)
        return false;
    std::fill_n(normals, count, VERTEX{0, 0, 1});
    for (std::int32_t i = count / sides; i < count; ++i)
        normals[i].z = -1;
    return true;
}

// --- In the wrapper

// A record that is borrowed is the host's: it is forgotten, not emptied.
void VXGeom::EmptyForText()
{
    if (mGeomShared)
        StealGeom();
    Empty();
}

// Takes the record, the edges and the normals of a text, or nothing when memory ran out. The normals are those of the
// plane: slivers, of which rounding leaves nothing to compute them from, would get creases all around.
bool VXGeom::TakeText(GEOM* record, const char* material, VXEdgeList& edges, int sides)
{
    vx::PagePtr taken(record);
    VERTEX* normals[2] = {nullptr, nullptr};
    if (!taken || GEOM_AddMaterialName(record, material) < 0 || GEOM_VerifyAndFix(record) != 0 ||
        (!UseExternalNormals() &&
         !(NormalsOfSides(record->numPolys, sides, normals[0]) && NormalsOfSides(record->numVerts, sides, normals[1]))))
    {
        MEM_Free(normals[0]);
        return false;
    }
    Hold(taken.release(), false);
    SetFlag(GeomFlag::TransparentParts, false);
    SetIncludesLines(false);
    SetIncludesPoints(false);
    mEdgeList = std::move(edges);
    if (!UseExternalNormals())
    {
        mPolyNormals = normals[0];
        mVertNormals = normals[1];
    }
    SetEdgesClassified(GenerateCreases());
    return true;
}

void VXGeom::BuildCharGlyph(unsigned int code, VXFTFace* face, float size, FT_GlyphSlot* slot, const char* material)
{
    if (slot)
        *slot = nullptr;
    const BString name(material ? material : ""); // it may lie in what is emptied
    EmptyForText();
    const FT_Face opened = OpenedFace(face);
    if (!opened)
        return;
    if (slot)
        *slot = opened->glyph;
    const GlyphScale scale(opened, size);
    GlyphShapes shapes(opened, scale);
    const std::int32_t index = shapes.Find(FT_Get_Char_Index(opened, code));
    if (!mGeom)
        mGeom = GEOM_Alloc();
    if (!mGeom || index < 0)
        return;
    const GlyphShape& shape = shapes[index];
    if (mGeom->SetSize(shape.numPolys, shape.numVerts, 3 * shape.numPolys, 0, 0, 0) == 0)
    {
        GlyphCursor at;
        shapes.Write(shape, 0, 0, *mGeom, at);
    }
    GEOM_AddMaterialName(mGeom, name.CString());
    GEOM_VerifyAndFix(mGeom);
}

void VXGeom::BuildStrGlyphs(const char* utf8, VXFTFace* face, float size, const char* material, bool twoSided,
                            bool leftAlign, BArray<std::int32_t>* glyphEnds)
{
    if (glyphEnds)
        glyphEnds->Empty();
    const FT_Face opened = OpenedFace(face);
    if (!opened)
        return;
    // What is emptied may hold both of these.
    const BString name(material ? material : "");
    BArray<std::uint32_t> codes;
    const std::int64_t bytes = utf8 ? std::int64_t(std::strlen(utf8)) : 0;
    const bool legal = bytes == 0 || ConvertUTF8toUTF32(utf8, bytes, codes) >= 0;
    EmptyForText();
    if (!legal)
        return;

    TextEdges edges;
    edges.sides = twoSided ? 2 : 1;
    edges.smooth = GenerateCreases();
    PagePtr record = WriteTextPage(codes, opened, size, smUnscaledKerning, glyphEnds, &edges);
    if (!record)
        return;
    // Taken once and before anything moves, so that the back turns about where the centre was.
    float stats[9] = {};
    if (leftAlign || twoSided)
        GEOM_Stats(record.get(), stats);
    if (leftAlign)
        GEOM_Offset(record.get(), -stats[0], 0, 0);
    if (twoSided)
        record = WithBack(*record, stats + 6);
    TakeText(record.release(), name.CString(), edges.list, edges.sides);
}
