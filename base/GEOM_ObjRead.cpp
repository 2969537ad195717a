#include "base/GEOM_Obj.h"

#include "base/MEM.h"
#include "base/detail/ObjParse.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

// Reading has two steps. The parser collects flat arrays and runs of polygons that share their states; then the polygon
// records, whose width depends on the number of groups in the whole file, are written once.

using vx::detail::GrowingArray;
using vx::detail::ObjContents;
using vx::detail::ObjParser;
using vx::detail::ObjRun;

namespace
{
constexpr std::int64_t kFirstNamedGroup = 32;

/// Makes a record of what was read.
class RecordBuilder
{
public:
    RecordBuilder(ObjContents& from, std::size_t textSize, GEOM_ReadReport& report)
        : mFrom(from), mTextSize(std::int64_t(textSize)), mReport(report)
    {
    }

    bool Build(GEOM* to); ///< false when memory ran out

private:
    bool TakeNames(GEOM* to);
    bool WritePolys(GEOM* to);
    void WriteRun(GEOM* to, const ObjRun& run, std::int64_t end, std::int64_t& start) const;
    bool TakeTexture(GEOM* to);
    bool TakeNormals(GEOM* to);
    bool AddFlatNormals(GEOM* to) const;

    ObjContents& mFrom;
    std::int64_t mTextSize;
    GEOM_ReadReport& mReport;
};
} // namespace

bool RecordBuilder::TakeNames(GEOM* to)
{
    if (mFrom.namesMaterials)
        for (const std::string_view name : mFrom.materials.Names())
            if (!to->materials.Append({nullptr, BString(name)}))
                return false;
    for (const std::string_view name : mFrom.materialFiles.Names())
        if (!to->materialFiles.Append(BString(name)))
            return false;

    // A group costs a bit in every record, and a file can name a group for every polygon.
    const std::int64_t named = std::int64_t(mFrom.groups.Names().size());
    const std::int64_t polys = std::max<std::int64_t>(mFrom.polyLengths.count, 1);
    const std::int64_t most = std::max<std::int64_t>(64 * mTextSize, 16 << 20) / polys * 8;
    const std::int64_t kept = std::min(named, std::max<std::int64_t>(most, 32) - 32);
    mReport.groupsLeftOut = named - kept;
    for (std::int64_t i = 0; i < kept; ++i)
        if (!to->groupNames.Append(BString(mFrom.groups.Names()[std::size_t(i)])))
            return false;
    to->numGroups = kept > 0 ? std::int32_t(kFirstNamedGroup + kept) : 0;
    to->objectNames.Swap(mFrom.objectNames);
    return true;
}

// Writes the records from the run's first polygon to `end`. `start`: first corner of the first one, advanced.
void RecordBuilder::WriteRun(GEOM* to, const ObjRun& run, std::int64_t end, std::int64_t& start) const
{
    const std::int64_t stride = to->PolyStride();
    std::uint8_t* record = to->polys + run.firstPoly * stride;
    // The first record is made in place; the others are copies of the one before with their own corners.
    ELEMENT* const made = to->Poly(run.firstPoly);
    std::memset(record, 0, std::size_t(stride));
    made->type = run.type;
    made->material = std::uint16_t(std::max(run.material, 0));
    made->SetGroupWord(0, run.smoothing);
    for (std::int64_t i = 0; i < run.numGroups; ++i)
    {
        const std::int64_t slot = kFirstNamedGroup + mFrom.groupLists[run.firstGroup + i];
        if (slot < to->numGroups)
            made->SetGroupWord(slot / 32, made->GroupWord(slot / 32) | 1u << (slot % 32));
    }
    for (std::int64_t i = run.firstPoly; i < end; ++i, record += stride)
    {
        if (i > run.firstPoly)
            std::memcpy(record, record - stride, std::size_t(stride));
        auto* const poly = reinterpret_cast<ELEMENT*>(record);
        poly->start = std::int32_t(start);
        poly->length = std::int32_t(mFrom.polyLengths.data[i] & ~ObjContents::kUntextured);
        start += poly->length;
    }
}

bool RecordBuilder::WritePolys(GEOM* to)
{
    to->polys = MEM_AllocArray<std::uint8_t>(std::size_t(mFrom.polyLengths.count * to->PolyStride()));
    if (!to->polys)
        return false;
    to->numPolys = std::int32_t(mFrom.polyLengths.count);
    std::int64_t start = 0;
    for (std::int64_t i = 0; i < mFrom.runs.Count(); ++i)
    {
        const bool last = i + 1 == mFrom.runs.Count();
        WriteRun(to, mFrom.runs[i], last ? to->numPolys : mFrom.runs[i + 1].firstPoly, start);
    }
    return true;
}

bool RecordBuilder::TakeTexture(GEOM* to)
{
    const auto corners = std::int32_t(mFrom.texSets.count), verts = std::int32_t(mFrom.texVerts.count);
    if (verts == 0)
        return true;
    GEOM_Texture* const tex = to->tex = new (std::nothrow) GEOM_Texture;
    if (!tex)
        return false;
    tex->verts = mFrom.texVerts.Take();
    tex->numVerts = verts;
    if (corners == 0)
        return true;
    tex->sets = mFrom.texSets.Take();
    tex->numCorners = corners;
    tex->polys = MEM_AllocArray<GEOM_TexPoly>(std::size_t(to->numPolys));
    if (!tex->polys)
        return false;
    tex->numPolys = to->numPolys;
    std::int32_t start = 0;
    for (std::int32_t i = 0; i < to->numPolys; ++i)
    {
        const std::uint32_t length = mFrom.polyLengths.data[i];
        tex->polys[i] = {start, length & ObjContents::kUntextured ? 0 : std::int32_t(length)};
        start += tex->polys[i].length;
    }
    return true;
}

// Gives every polygon with corners that lack a normal its flat one.
bool RecordBuilder::AddFlatNormals(GEOM* to) const
{
    VERTEX* const flat = MEM_AllocArray<VERTEX>(std::size_t(to->numPolys));
    if (!flat)
        return false;
    GEOM_CalcPolyNormals(to, flat);
    bool done = true;
    for (std::int32_t i = 0; i < to->numPolys && done; ++i)
    {
        std::int32_t* const first = to->normalSets + to->Poly(i)->start;
        std::int32_t* const last = first + to->Poly(i)->length;
        if (std::find(first, last, -1) == last)
            continue;
        std::replace(first, last, -1, to->numNormals);
        done = to->numNormals < std::numeric_limits<std::int32_t>::max() && MEM_AppendEntry(to->normals, flat[i]);
        ++to->numNormals;
    }
    MEM_Free(flat);
    return done;
}

bool RecordBuilder::TakeNormals(GEOM* to)
{
    if (mFrom.normals.count == 0)
        return true;
    to->numNormals = std::int32_t(mFrom.normals.count);
    to->normals = mFrom.normals.Take();
    if (mFrom.cornersWithNormals == 0)
        return true;
    to->normalSets = mFrom.normalSets.Take();
    return mFrom.cornersWithNormals == to->NumCorners() || AddFlatNormals(to);
}

bool RecordBuilder::Build(GEOM* to)
{
    to->numVerts = std::int32_t(mFrom.verts.count);
    to->verts = mFrom.verts.Take();
    to->vertColors = mFrom.colors.Take();
    to->sets = mFrom.sets.Take();
    if (!to->sets && !(to->sets = MEM_AllocArray<std::int32_t>(0)))
        return false;
    return TakeNames(to) && WritePolys(to) && TakeTexture(to) && TakeNormals(to);
}

// --- Reading

static bool AllBelow(const GrowingArray<std::int32_t>& indices, std::int64_t limit)
{
    std::int32_t largest = -1;
    for (std::int64_t i = 0; i < indices.count; ++i)
        largest = std::max(largest, indices.data[i]);
    return largest < limit;
}

// An index that pointed ahead must have met something by the end of the file. Where one has not, the text is read once
// more to say where it stands.
static bool CheckIndices(const char* text, std::size_t size, const ObjContents& contents, GEOM_ReadReport& report)
{
    if (AllBelow(contents.sets, contents.verts.count) && AllBelow(contents.texSets, contents.texVerts.count) &&
        AllBelow(contents.normalSets, contents.normals.count))
        return true;
    ObjContents again;
    GEOM_ReadReport found;
    ObjParser parser(text, size, nullptr, again, found);
    parser.SetFinalCounts(contents.verts.count, contents.texVerts.count, contents.normals.count);
    parser.Parse();
    report.error = found.error;
    report.errorLine = found.errorLine;
    return false;
}

static bool ParseContents(const char* text, std::size_t size, GEOM_ProgressProc progress, ObjContents& contents,
                          GEOM_ReadReport& report)
{
    if (!text || size == 0)
    {
        report.error = "the file is empty, expected the text of a Wavefront OBJ file";
        return false;
    }
    ObjParser parser(text, size, progress, contents, report);
    if (!parser.Parse() || (parser.SomeIndexPointsAhead() && !CheckIndices(text, size, contents, report)))
        return false;
    if (contents.verts.count == 0)
        report.error = "no vertices, expected the text of a Wavefront OBJ file";
    return contents.verts.count > 0;
}

static GEOM* ReadText(const char* text, std::size_t size, GEOM_ProgressProc progress, GEOM_ReadReport& report)
{
    ObjContents contents;
    if (!ParseContents(text, size, progress, contents, report))
        return nullptr;
    GEOM* const made = GEOM_Alloc();
    if (made && RecordBuilder(contents, size, report).Build(made))
        return made;
    GEOM_Free(made);
    report.error = "out of memory";
    return nullptr;
}

GEOM* GEOM_ReadObjText(const char* text, std::size_t size, GEOM_ProgressProc progress, GEOM_ReadReport* report)
{
    GEOM_ReadReport own;
    GEOM_ReadReport& told = report ? *report : own;
    try
    {
        told = {};
        return ReadText(text, size, progress, told);
    }
    catch (const std::bad_alloc&) // a name
    {
        told.error = "out of memory"; // short enough to need none
        told.errorLine = 0;
        return nullptr;
    }
}

GEOM* GEOM_ReadObjFile(BFile& file, GEOM_ProgressProc progress, GEOM_ReadReport* report)
{
    char* const text = file.ReadAll();
    if (!text)
    {
        if (report)
        {
            *report = {};
            report->error = file.LastError();
        }
        return nullptr;
    }
    GEOM* const g = GEOM_ReadObjText(text, MEM_Count(text), progress, report);
    MEM_Free(text);
    return g;
}
