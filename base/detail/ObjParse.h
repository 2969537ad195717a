// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "base/BArray.h"
#include "base/GEOM_Obj.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vx::detail
{
/// An array that grows while a text is read and whose place the reader knows: entries are written through `data`
/// without a call for each.
template <class T>
struct GrowingArray
{
    T* data = nullptr;
    std::int64_t count = 0;
    std::int64_t capacity = 0;

    GrowingArray() = default;
    ~GrowingArray() { MEM_Free(data); }
    GrowingArray(const GrowingArray&) = delete;
    GrowingArray& operator=(const GrowingArray&) = delete;

    /// Room for at least one entry more than `used`; false when memory ran out.
    bool Grow(std::int64_t used)
    {
        const std::int64_t larger = std::max<std::int64_t>(1024, capacity * 2);
        if (data)
            MEM_SetCount(data, std::size_t(used)); // growing moves the entries that count
        else
            data = MEM_AllocArray<T>(0);
        void* const moved = data ? MEM_Reserve(data, std::size_t(larger)) : nullptr;
        if (!moved)
            return false;
        data = static_cast<T*>(moved);
        capacity = larger;
        return true;
    }
    /// Hands the array over as a memory handle of exactly `count` entries; null when there never was one.
    T* Take()
    {
        T* taken = data;
        if (taken)
        {
            MEM_SetCount(taken, std::size_t(count));
            taken = static_cast<T*>(MEM_Trim(taken));
        }
        data = nullptr;
        count = capacity = 0;
        return taken;
    }
};

/// Names numbered in the order of their first appearance.
class NameTable
{
public:
    std::int32_t IndexOf(std::string_view name);
    const std::vector<std::string_view>& Names() const { return mNames; } ///< by number

private:
    struct Hash
    {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>()(name); }
    };
    std::unordered_map<std::string, std::int32_t, Hash, std::equal_to<>> mIndex;
    std::vector<std::string_view> mNames; ///< into the keys of mIndex, which stay where they are
};

/// What polygons share from one statement to the next. A new run begins where any of it changes.
struct ObjRun
{
    std::int64_t firstPoly = 0;
    std::uint8_t type = kElementFace;
    std::int32_t material = -1; ///< -1: before the first usemtl
    std::uint32_t smoothing = 0;
    std::int64_t firstGroup = 0, numGroups = 0; ///< in ObjContents::groupLists
};

/// The contents of an OBJ text as flat arrays, polygons as runs: what reading collects before it is known how wide a
/// polygon record is.
struct ObjContents
{
    static constexpr std::uint32_t kUntextured = 0x80000000; ///< flag in polyLengths

    GrowingArray<VERTEX> verts, normals, colors;
    GrowingArray<T_VERTEX> texVerts;
    GrowingArray<std::int32_t> sets, texSets;
    GrowingArray<std::int32_t> normalSets; ///< null until a corner has a normal; then -1 for corners without
    GrowingArray<std::uint32_t> polyLengths;
    BArray<ObjRun> runs;
    BArray<std::int32_t> groupLists;
    BArray<GEOM_ObjectName> objectNames;
    NameTable materials, groups, materialFiles;
    std::int64_t cornersWithNormals = 0;
    bool namesMaterials = false; ///< there is a usemtl
};

/// One pass over an OBJ text. Indices are resolved as they come; whether those that point ahead meet something is for
/// the caller to see at the end.
class ObjParser
{
public:
    ObjParser(const char* text, std::size_t size, GEOM_ProgressProc progress, ObjContents& contents,
              GEOM_ReadReport& report)
        : mText(text), mSize(size), mProgress(progress), mContents(contents), mReport(report)
    {
    }

    /// What the file holds in all. Indices past it are errors at once then, which tells their line.
    void SetFinalCounts(std::int64_t verts, std::int64_t texVerts, std::int64_t normals)
    {
        mVertLimit = verts;
        mTexLimit = texVerts;
        mNormalLimit = normals;
    }

    bool Parse(); ///< false when the report holds an error
    bool SomeIndexPointsAhead() const { return mPointsAhead; }

private:
    bool ParseLines(const char* p, const char* end, const char* guard);
    const char* Statement(const char* p);
    const char* VertexStatement(const char* p);
    const char* Vertex(const char* p);
    const char* TexVertex(const char* p);
    const char* Normal(const char* p);
    const char* Polygon(const char* p, GEOM_ElementType type);
    const char* Material(const char* p);
    const char* MaterialFiles(const char* p);
    const char* Groups(const char* p);
    const char* Object(const char* p);
    const char* Smoothing(const char* p);

    const char* Number(const char* p, float& value, int found, int wanted);
    const char* Numbers(const char* p, float* values, int atLeast, int atMost, int& found);
    const char* Index(const char* p, std::int64_t count, std::int64_t limit, const char* what, std::int32_t& index);
    const char* IndexSlowly(const char* p, std::int64_t count, std::int64_t limit, const char* what,
                            std::int32_t& index);
    bool GrowCorners(std::int64_t used);
    bool BeginNormalSets(std::int64_t corners);
    const char* FinishPolygon(const char* p, GEOM_ElementType type, std::int64_t length, std::int64_t texCorners,
                              std::int64_t normals);
    bool BeginRun(GEOM_ElementType type);

    const char* SkipBlanks(const char* p);
    const char* SkipManyBlanks(const char* p);
    const char* SkipStatement(const char* p);
    const char* EndOfStatement(const char* p);
    const char* SkipComment(const char* p) const;
    const char* NameToEndOfLine(const char* p, std::string_view& name);
    bool ReportProgress(const char* p);

    const char* Fail(BString error, std::int64_t line = -1); ///< always null
    const char* NoMemory() { return Fail("out of memory", 0); }
    const char* NumberError(const char* p, int found, int wanted);

    const char* mText;
    std::size_t mSize;
    GEOM_ProgressProc mProgress;
    ObjContents& mContents;
    GEOM_ReadReport& mReport;

    const char* mEnd = nullptr; ///< of the lines being parsed; a line feed stands before it
    const char* mNextProgress = nullptr;
    std::int64_t mLine = 0;
    static constexpr std::int64_t kMostEntries = std::numeric_limits<std::int32_t>::max();
    std::int64_t mVertLimit = kMostEntries, mTexLimit = kMostEntries, mNormalLimit = kMostEntries;
    bool mPointsAhead = false;
    bool mStateChanged = true; ///< since the last polygon
    ObjRun mState;
    std::string mJoinedName; ///< of a name that goes on in the next line
};
} // namespace vx::detail
