#include "base/GEOM_Obj.h"

#include "base/MEM.h"

#include <charconv>
#include <cmath>
#include <new>
#include <string>
#include <string_view>

namespace
{
constexpr std::size_t kBufferSize = 1 << 18;
constexpr std::int64_t kFirstNamedGroup = 32;

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

// The reader would leave out the others, or could not be told what they are.
bool CanBeWritten(const ELEMENT* poly)
{
    return poly->type <= kElementPoint && poly->length >= (poly->IsFace() ? 3 : 1);
}

/// Writes statements through one buffer.
class ObjWriter
{
public:
    ObjWriter(const GEOM* g, BFile& file) : mGeom(g), mFile(file) { mBuffer.reserve(kBufferSize + 4096); }

    bool Write();

private:
    void Vertices();
    void TexVertices();
    void Normals();
    void NamesInOrder();
    void Polygons();
    void Objects(std::int32_t poly);
    void States(const ELEMENT* poly);
    void GroupsOf(const ELEMENT* poly);
    void Smoothing(std::uint32_t word);
    void Polygon(std::int32_t i, const ELEMENT* poly);

    bool MaterialsAppearInOrder() const;
    bool GroupsAppearInOrder() const;
    bool IsIn(const ELEMENT* poly, std::int64_t named) const;

    void Text(std::string_view text) { mBuffer += text; }
    void Number(float value);
    void Index(std::int32_t index); ///< counted from 1
    void Point(const char* keyword, const VERTEX& p);
    void LineName(const char* keyword, std::string_view name);
    void GroupName(std::string_view name);
    void EndLine();
    void Flush();

    const GEOM* mGeom;
    BFile& mFile;
    std::string mBuffer;
    bool mFailed = false;
    std::int64_t mNextObject = 0;
    const ELEMENT* mPrevious = nullptr; ///< the polygon whose states hold
    bool mGroupsStand = true;           ///< false: the last g statement is not that of mPrevious
    std::int32_t mMaterial = -1;
};
} // namespace

// --- Lines

void ObjWriter::Flush()
{
    mFailed = mFailed || mFile.Write(mBuffer) != 0;
    mBuffer.clear();
}

void ObjWriter::EndLine()
{
    // A backslash there would draw the next line in.
    mBuffer += mBuffer.back() == '\\' ? " \n" : "\n";
    if (mBuffer.size() >= kBufferSize)
        Flush();
}

void ObjWriter::Number(float value)
{
    char digits[32];
    const char* const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    mBuffer += ' ';
    mBuffer.append(digits, std::size_t(end - digits));
}

void ObjWriter::Index(std::int32_t index)
{
    char digits[16];
    const char* const end = std::to_chars(digits, digits + sizeof digits, std::int64_t(index) + 1).ptr;
    mBuffer.append(digits, std::size_t(end - digits));
}

void ObjWriter::Point(const char* keyword, const VERTEX& p)
{
    Text(keyword);
    Number(p.x);
    Number(p.y);
    Number(p.z);
}

// A name that goes to the end of the line. What would end it early becomes an underscore.
void ObjWriter::LineName(const char* keyword, std::string_view name)
{
    while (!name.empty() && IsBlank(name.front()))
        name.remove_prefix(1);
    while (!name.empty() && IsBlank(name.back()))
        name.remove_suffix(1);
    Text(keyword);
    Text(" ");
    for (const char c : name)
        mBuffer += c == '\n' || (c == '#' && IsBlank(mBuffer.back())) ? '_' : c;
    EndLine();
}

// A name among others; blanks part them.
void ObjWriter::GroupName(std::string_view name)
{
    Text(" ");
    if (name.empty())
        Text("_");
    for (const char c : name)
        mBuffer += c == '\n' || IsBlank(c) || (c == '#' && mBuffer.back() == ' ') ? '_' : c;
}

// --- Vertices

void ObjWriter::Vertices()
{
    for (std::int32_t i = 0; i < mGeom->numVerts; ++i)
    {
        Point("v", mGeom->verts[i]);
        if (mGeom->vertColors)
            Point("", mGeom->vertColors[i]);
        EndLine();
    }
}

void ObjWriter::TexVertices()
{
    for (std::int32_t i = 0; mGeom->tex && i < mGeom->tex->numVerts; ++i)
    {
        Text("vt");
        Number(mGeom->tex->verts[i].u);
        Number(mGeom->tex->verts[i].v);
        EndLine();
    }
}

void ObjWriter::Normals()
{
    for (std::int32_t i = 0; i < mGeom->numNormals; ++i)
    {
        Point("vn", mGeom->normals[i]);
        EndLine();
    }
}

// --- Names: a reader numbers them as they appear, so the order of the slots must be the order of appearance

bool ObjWriter::IsIn(const ELEMENT* poly, std::int64_t named) const
{
    const std::int64_t slot = kFirstNamedGroup + named;
    return slot < mGeom->numGroups && (poly->GroupWord(slot / 32) >> (slot % 32) & 1);
}

bool ObjWriter::MaterialsAppearInOrder() const
{
    std::int32_t seen = 0;
    for (std::int32_t i = 0; i < mGeom->numPolys; ++i)
    {
        const ELEMENT* const poly = mGeom->Poly(i);
        if (!CanBeWritten(poly))
            continue;
        if (poly->material > seen)
            return false;
        seen += poly->material == seen;
    }
    return seen == mGeom->materials.Count();
}

bool ObjWriter::GroupsAppearInOrder() const
{
    std::int64_t seen = 0;
    const std::int64_t count = mGeom->groupNames.Count();
    const ELEMENT* previous = nullptr;
    for (std::int32_t i = 0; i < mGeom->numPolys; ++i)
    {
        const ELEMENT* const poly = mGeom->Poly(i);
        if (!CanBeWritten(poly))
            continue;
        bool same = previous != nullptr;
        for (std::int64_t w = 1; w < mGeom->GroupWords() && same; ++w)
            same = poly->GroupWord(w) == previous->GroupWord(w);
        previous = poly;
        for (std::int64_t k = seen; !same && k < count; ++k)
            if (IsIn(poly, k))
            {
                if (k != seen)
                    return false;
                ++seen;
            }
    }
    return seen == count;
}

void ObjWriter::NamesInOrder()
{
    for (const BString& file : mGeom->materialFiles)
        LineName("mtllib", file);
    if (!mGeom->materials.IsEmpty() && !MaterialsAppearInOrder())
        for (const GEOM_Material& material : mGeom->materials)
            LineName("usemtl", material.name);
    if (mGeom->groupNames.IsEmpty() || GroupsAppearInOrder())
        return;
    Text("g");
    for (const BString& name : mGeom->groupNames)
        GroupName(name);
    EndLine();
    mGroupsStand = false;
}

// --- Polygons

void ObjWriter::Objects(std::int32_t poly)
{
    for (; mNextObject < mGeom->objectNames.Count(); ++mNextObject)
    {
        const GEOM_ObjectName& object = mGeom->objectNames[mNextObject];
        if (object.firstPoly > poly)
            break;
        LineName("o", object.name);
    }
}

void ObjWriter::GroupsOf(const ELEMENT* poly)
{
    Text("g");
    for (std::int64_t i = 0; i < mGeom->groupNames.Count(); ++i)
        if (IsIn(poly, i))
            GroupName(mGeom->groupNames[i]);
    EndLine();
}

void ObjWriter::Smoothing(std::uint32_t word)
{
    Text(word == 0 ? "s off" : "s");
    for (std::int32_t bit = 0; bit < 32; ++bit)
        if (word >> bit & 1)
        {
            Text(" ");
            Index(bit);
        }
    EndLine();
}

void ObjWriter::States(const ELEMENT* poly)
{
    // Before the first polygon of a file there is no group and no smoothing.
    static constexpr std::uint32_t kNone = 0;
    const std::int64_t named = mGeom->GroupWords() - 1;
    bool sameGroups = mGroupsStand;
    for (std::int64_t w = 1; w <= named && sameGroups; ++w)
        sameGroups = poly->GroupWord(w) == (mPrevious ? mPrevious->GroupWord(w) : kNone);
    if (!sameGroups)
        GroupsOf(poly);
    mGroupsStand = true;
    if (poly->material != mMaterial && poly->material < mGeom->materials.Count())
    {
        LineName("usemtl", mGeom->materials[poly->material].name);
        mMaterial = poly->material;
    }
    if (poly->GroupWord(0) != (mPrevious ? mPrevious->GroupWord(0) : kNone))
        Smoothing(poly->GroupWord(0));
    mPrevious = poly;
}

void ObjWriter::Polygon(std::int32_t i, const ELEMENT* poly)
{
    const std::int32_t* const normals = mGeom->numNormals > 0 ? mGeom->normalSets : nullptr;
    const std::int32_t* tex = nullptr;
    if (mGeom->PolyHasTexture(i) && mGeom->tex->polys[i].length >= poly->length)
        tex = mGeom->tex->sets + mGeom->tex->polys[i].start;

    Text(poly->IsFace() ? "f" : poly->type == kElementLine ? "l" : "p");
    for (std::int32_t k = 0; k < poly->length; ++k)
    {
        Text(" ");
        Index(mGeom->sets[poly->start + k]);
        if (tex || normals)
            Text("/");
        if (tex)
            Index(tex[k]);
        if (normals)
        {
            Text("/");
            Index(normals[poly->start + k]);
        }
    }
    EndLine();
}

void ObjWriter::Polygons()
{
    for (std::int32_t i = 0; i < mGeom->numPolys; ++i)
    {
        Objects(i);
        const ELEMENT* const poly = mGeom->Poly(i);
        if (!CanBeWritten(poly))
            continue;
        States(poly);
        Polygon(i, poly);
    }
    Objects(mGeom->numPolys);
}

bool ObjWriter::Write()
{
    NamesInOrder();
    Vertices();
    TexVertices();
    Normals();
    Polygons();
    Flush();
    return !mFailed;
}

static bool AllFinite(const float* values, std::int64_t count)
{
    for (std::int64_t i = 0; i < count; ++i)
        if (!std::isfinite(values[i]))
            return false;
    return true;
}

static bool AllFinite(const VERTEX* points, std::int64_t count) { return !points || AllFinite(&points->x, 3 * count); }

int GEOM_WriteObjFile(const GEOM* g, BFile& file)
{
    if (!g || !AllFinite(g->verts, g->numVerts) || !AllFinite(g->vertColors, g->numVerts) ||
        !AllFinite(g->normals, g->numNormals) ||
        (g->tex && g->tex->verts && !AllFinite(&g->tex->verts->u, 2ll * g->tex->numVerts)))
        return -1;
    try
    {
        return ObjWriter(g, file).Write() ? 0 : -1;
    }
    catch (const std::bad_alloc&)
    {
        return -1;
    }
}
