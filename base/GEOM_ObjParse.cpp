#include "base/detail/ObjParse.h"

#include "base/detail/ScanNumber.h"

#include <algorithm>
#include <cstring>

namespace vx::detail
{
static constexpr std::ptrdiff_t kProgressStep = 1 << 20;

// --- Characters. A line feed ends every text that is parsed, so that none of these looks for the end.

static bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

// A backslash can be the beginning of a continuation, and the end of whatever stands before it.
static bool EndsToken(char c) { return IsBlank(c) || c == '\n' || c == '\\'; }

// Behind a continuation that begins at p; null when none does.
static const char* BehindContinuation(const char* p)
{
    if (*p != '\\')
        return nullptr;
    for (++p; *p == '\r'; ++p)
    {
    }
    return *p == '\n' ? p + 1 : nullptr;
}

const char* ObjParser::SkipManyBlanks(const char* p)
{
    for (;;)
    {
        if (IsBlank(*p))
            ++p;
        else if (const char* const next = BehindContinuation(p))
        {
            p = next;
            ++mLine;
        }
        else
            return p;
    }
}

// One blank, as most are, costs little.
inline const char* ObjParser::SkipBlanks(const char* p)
{
    p += *p == ' ';
    if (*p > ' ' && *p != '\\') [[likely]]
        return p;
    return *p == '\n' ? p : SkipManyBlanks(p);
}

const char* ObjParser::SkipComment(const char* p) const
{
    return static_cast<const char*>(std::memchr(p, '\n', std::size_t(mEnd - p))) + 1;
}

// An unknown statement goes on in the next line like any other. A comment does not: the backslash at its end belongs
// to a path more often than not.
const char* ObjParser::SkipStatement(const char* p)
{
    for (;;)
    {
        const char* const next = SkipComment(p);
        const char* last = next - 1;
        while (last > p && last[-1] == '\r')
            --last;
        if (last == p || last[-1] != '\\')
            return next;
        ++mLine;
        p = next;
    }
}

inline const char* ObjParser::EndOfStatement(const char* p)
{
    p = SkipBlanks(p);
    return *p == '\n' ? p + 1 : SkipStatement(p);
}

// --- Errors

const char* ObjParser::Fail(BString error, std::int64_t line)
{
    mReport.error = std::move(error);
    mReport.lines = mLine;
    mReport.errorLine = line < 0 ? mLine : line;
    return nullptr;
}

// The token at p for a message: cut when it is long, without bytes that a terminal would act on.
static BString Quoted(const char* p)
{
    std::string text = "\"";
    for (int i = 0; i < 24 && !EndsToken(*p); ++i, ++p)
        text += *p >= ' ' && *p < 0x7F ? *p : '?';
    text += EndsToken(*p) ? "\"" : "...\"";
    return BString(text);
}

static bool BeginsWith(const char* p, const char* word)
{
    for (; *word; ++p, ++word)
        if ((*p | 0x20) != *word)
            return false;
    return true;
}

const char* ObjParser::NumberError(const char* p, int found, int wanted)
{
    if (*p == '\n' || *p == '#')
        return Fail(BString::Format("the statement ends after %d numbers, expected %d", found, wanted));
    const BString token = Quoted(p);
    const char* digits = *p == '-' || *p == '+' ? p + 1 : p;
    float value;
    const char* const end = ScanFloat(p, mEnd, value);
    const bool number = !end && (*digits == '.' || (*digits >= '0' && *digits <= '9')) && digits[0] != '\n' &&
                        (digits[0] != '.' || (digits[1] >= '0' && digits[1] <= '9'));
    if (number || BeginsWith(digits, "nan") || BeginsWith(digits, "inf"))
        return Fail("the number " + token + " is not finite, expected one that a float can hold");
    return Fail("malformed number " + token + ", expected digits");
}

// --- Numbers

inline const char* ObjParser::Number(const char* p, float& value, int found, int wanted)
{
    p = SkipBlanks(p);
    const char* const end = ScanFloat(p, mEnd, value);
    if (!end || (*end != ' ' && !EndsToken(*end))) [[unlikely]]
        return NumberError(p, found, wanted);
    return end;
}

// Up to `atMost` numbers to the end of the statement; more than that must be numbers too, but are dropped.
const char* ObjParser::Numbers(const char* p, float* values, int atLeast, int atMost, int& found)
{
    for (found = 0;; ++found)
    {
        p = SkipBlanks(p);
        if (found >= atLeast && (*p == '\n' || *p == '#'))
            break;
        float value;
        if (!(p = Number(p, value, found, atLeast)))
            return nullptr;
        if (found < atMost)
            values[found] = value;
    }
    found = std::min(found, atMost);
    return EndOfStatement(p);
}

// Any index of the file, counted from 1 or back from the newest, as an index of the array.
const char* ObjParser::IndexSlowly(const char* p, std::int64_t count, std::int64_t limit, const char* what,
                                   std::int32_t& index)
{
    std::int64_t value;
    const char* const end = ScanInteger(p, value);
    if (!end && (*p == '\n' || *p == '#' || IsBlank(*p)))
        return Fail(BString::Format("the statement is truncated: expected the index of a %s", what));
    if (!end)
        return Fail(BString::Format("malformed index of a %s: ", what) + Quoted(p) + ", expected a whole number");
    const std::int64_t at = value > 0 ? value - 1 : count + value;
    if (value == 0 || at < 0 || at >= limit)
    {
        const long long there = limit < kMostEntries ? limit : count;
        const BString expected = there > 0 ? BString::Format("expected 1 to %lld or -%lld to -1", there, there)
                                           : BString("expected a statement that makes one");
        return Fail(BString::Format("index %lld of a %s is out of range, ", static_cast<long long>(value), what) +
                    expected);
    }
    mPointsAhead = mPointsAhead || at >= count;
    index = std::int32_t(at);
    return end;
}

// The same for an index of at most seven digits, without a sign, of what has been read already.
inline const char* ObjParser::Index(const char* p, std::int64_t count, std::int64_t limit, const char* what,
                                    std::int32_t& index)
{
    int length;
    const std::uint32_t at = ScanDigits(p, length) - 1;
    if (std::uint32_t(length) - 1 < 7 && at < std::uint32_t(count)) [[likely]]
    {
        index = std::int32_t(at);
        return p + length;
    }
    return IndexSlowly(p, count, limit, what, index);
}

// --- Vertices

const char* ObjParser::Vertex(const char* p)
{
    GrowingArray<VERTEX>& verts = mContents.verts;
    if (verts.count == verts.capacity && !verts.Grow(verts.count)) [[unlikely]]
        return NoMemory();
    VERTEX& vertex = verts.data[verts.count];
    if (!(p = Number(p, vertex.x, 0, 3)) || !(p = Number(p, vertex.y, 1, 3)) || !(p = Number(p, vertex.z, 2, 3)))
        return nullptr;
    if (++verts.count > kMostEntries)
        return Fail("more vertices than a mesh can have");
    p = SkipBlanks(p);
    if (*p == '\n' && !mContents.colors.data) [[likely]]
        return p + 1;

    float more[4];
    int found;
    if (!(p = Numbers(p, more, 0, 4, found)))
        return nullptr;
    GrowingArray<VERTEX>& colors = mContents.colors;
    if (found >= 3 || colors.data)
    {
        while (colors.capacity < verts.count)
            if (!colors.Grow(colors.count))
                return NoMemory();
        while (colors.count < verts.count)
            colors.data[colors.count++] = {1, 1, 1};
    }
    if (found >= 3)
        colors.data[colors.count - 1] = {more[found - 3], more[found - 2], more[found - 1]};
    return p;
}

const char* ObjParser::TexVertex(const char* p)
{
    GrowingArray<T_VERTEX>& verts = mContents.texVerts;
    if (verts.count == verts.capacity && !verts.Grow(verts.count)) [[unlikely]]
        return NoMemory();
    T_VERTEX& vertex = verts.data[verts.count];
    vertex.v = 0; // one number is a place on a line
    if (!(p = Number(p, vertex.u, 0, 1)))
        return nullptr;
    p = SkipBlanks(p);
    if (*p != '\n' && *p != '#' && !(p = Number(p, vertex.v, 1, 2)))
        return nullptr;
    if (++verts.count > kMostEntries)
        return Fail("more texture vertices than a mesh can have");
    if (*(p = SkipBlanks(p)) == '\n') [[likely]]
        return p + 1;
    int found;
    return Numbers(p, nullptr, 0, 0, found);
}

const char* ObjParser::Normal(const char* p)
{
    GrowingArray<VERTEX>& normals = mContents.normals;
    if (normals.count == normals.capacity && !normals.Grow(normals.count)) [[unlikely]]
        return NoMemory();
    VERTEX& normal = normals.data[normals.count];
    if (!(p = Number(p, normal.x, 0, 3)) || !(p = Number(p, normal.y, 1, 3)) || !(p = Number(p, normal.z, 2, 3)))
        return nullptr;
    if (++normals.count > kMostEntries)
        return Fail("more normals than a mesh can have");
    int found;
    return Numbers(p, nullptr, 0, 0, found);
}

// --- Polygons

bool ObjParser::GrowCorners(std::int64_t used)
{
    return mContents.sets.Grow(used) &&
           (!mContents.normalSets.data || mContents.normalSets.capacity >= mContents.sets.capacity ||
            mContents.normalSets.Grow(used));
}

// Corner normals run beside the corners, from the first corner that has one; those before it have none.
bool ObjParser::BeginNormalSets(std::int64_t corners)
{
    GrowingArray<std::int32_t>& sets = mContents.normalSets;
    while (sets.capacity < mContents.sets.capacity)
        if (!sets.Grow(0))
            return false;
    std::fill_n(sets.data, corners, -1);
    return true;
}

const char* ObjParser::Polygon(const char* p, GEOM_ElementType type)
{
    ObjContents& to = mContents;
    const std::int64_t numVerts = to.verts.count, numTexVerts = to.texVerts.count, numNormals = to.normals.count;
    const std::int64_t first = to.sets.count;
    std::int64_t corner = first, texCorner = to.texSets.count, normals = 0;
    for (p = SkipBlanks(p); *p != '\n' && *p != '#'; p = SkipBlanks(p), ++corner)
    {
        const char* const start = p;
        if (corner == to.sets.capacity && !GrowCorners(corner)) [[unlikely]]
            return NoMemory();
        if (!(p = Index(p, numVerts, mVertLimit, "vertex", to.sets.data[corner]))) [[unlikely]]
            return nullptr;
        std::int32_t normal = -1;
        if (*p == '/' && *++p != '/')
        {
            if (texCorner == to.texSets.capacity && !to.texSets.Grow(texCorner)) [[unlikely]]
                return NoMemory();
            if (!(p = Index(p, numTexVerts, mTexLimit, "texture vertex", to.texSets.data[texCorner]))) [[unlikely]]
                return nullptr;
            ++texCorner;
        }
        if (*p == '/')
        {
            if (!(p = Index(p + 1, numNormals, mNormalLimit, "normal", normal)) ||
                (!to.normalSets.data && !BeginNormalSets(corner))) [[unlikely]]
                return p ? NoMemory() : nullptr;
            ++normals;
        }
        if (to.normalSets.data)
            to.normalSets.data[corner] = normal;
        if (*p != ' ' && !EndsToken(*p)) [[unlikely]]
            return Fail("malformed corner " + Quoted(start) + ", expected v, v/vt, v//vn or v/vt/vn");
    }
    return FinishPolygon(p, type, corner - first, texCorner - to.texSets.count, normals);
}

// Takes the corners written behind the counts as a polygon, or leaves them there to be overwritten.
inline const char* ObjParser::FinishPolygon(const char* p, GEOM_ElementType type, std::int64_t length,
                                            std::int64_t texCorners, std::int64_t normals)
{
    ObjContents& to = mContents;
    if (length < 3 && type == kElementFace)
    {
        if (mReport.shortFaces++ == 0)
            mReport.shortFaceLine = mLine;
        return EndOfStatement(p);
    }
    if (length == 0)
        return Fail("the statement is truncated: expected at least one vertex");
    GrowingArray<std::uint32_t>& lengths = to.polyLengths;
    if (lengths.count == lengths.capacity && !lengths.Grow(lengths.count)) [[unlikely]]
        return NoMemory();
    if ((mStateChanged || type != mState.type) && !BeginRun(type))
        return NoMemory();
    to.sets.count += length;
    if (to.normalSets.data)
        to.normalSets.count = to.sets.count;
    to.cornersWithNormals += normals;
    const bool textured = texCorners == length;
    if (textured)
        to.texSets.count += texCorners;
    lengths.data[lengths.count++] = std::uint32_t(length) | (textured ? 0 : ObjContents::kUntextured);
    if (to.sets.count > kMostEntries)
        return Fail("more polygon corners than a mesh can have");
    return *p == '\n' ? p + 1 : EndOfStatement(p);
}

bool ObjParser::BeginRun(GEOM_ElementType type)
{
    if (mState.material < 0 && mContents.materials.Names().empty())
        mState.material = mContents.materials.IndexOf("Default");
    mState.type = type;
    mState.firstPoly = mContents.polyLengths.count;
    mStateChanged = false;
    return mContents.runs.Append(mState);
}

// --- Names and states

std::int32_t NameTable::IndexOf(std::string_view name)
{
    const auto found = mIndex.find(name);
    if (found != mIndex.end())
        return found->second;
    const auto added = mIndex.emplace(name, std::int32_t(mNames.size())).first;
    mNames.push_back(added->first);
    return added->second;
}

// The rest of the statement without blanks at its ends, up to a comment. A line that goes on in the next one is joined
// with a blank.
const char* ObjParser::NameToEndOfLine(const char* p, std::string_view& name)
{
    p = SkipBlanks(p);
    const char* first = p;
    bool joined = false;
    for (;; ++p)
    {
        const char* const next = BehindContinuation(p);
        const bool comment = *p == '#' && (p == first || IsBlank(p[-1]));
        if (*p != '\n' && !next && !comment)
            continue;
        name = std::string_view(first, std::size_t(p - first));
        if (joined || next)
        {
            if (!joined)
                mJoinedName.clear();
            mJoinedName.append(name);
            name = mJoinedName;
            joined = true;
        }
        if (!next)
            break;
        mJoinedName += ' ';
        ++mLine;
        first = next;
        p = next - 1;
    }
    while (!name.empty() && IsBlank(name.back()))
        name.remove_suffix(1);
    return *p == '\n' ? p + 1 : SkipComment(p);
}

const char* ObjParser::Material(const char* p)
{
    std::string_view name;
    p = NameToEndOfLine(p, name);
    const std::int32_t material = mContents.materials.IndexOf(name);
    if (material > std::numeric_limits<std::uint16_t>::max())
        return Fail("more than 65536 materials");
    mContents.namesMaterials = true;
    mStateChanged |= material != mState.material;
    mState.material = material;
    return p;
}

// Names are separated by blanks and can have blanks inside: a name goes on until its extension.
const char* ObjParser::MaterialFiles(const char* p)
{
    std::string_view names;
    p = NameToEndOfLine(p, names);
    static constexpr std::string_view kExtension = ".mtl";
    std::size_t first = 0;
    for (std::size_t at = 0; at < names.size(); ++at)
    {
        const std::size_t end = at + kExtension.size();
        if (end >= names.size() || !IsBlank(names[end]) || !BeginsWith(names.data() + at, ".mtl"))
            continue;
        mContents.materialFiles.IndexOf(names.substr(first, end - first));
        for (first = end; IsBlank(names[first]); ++first)
        {
        }
        at = first - 1;
    }
    if (first < names.size())
        mContents.materialFiles.IndexOf(names.substr(first));
    return p;
}

const char* ObjParser::Groups(const char* p)
{
    BArray<std::int32_t>& lists = mContents.groupLists;
    const std::int64_t first = lists.Count();
    for (p = SkipBlanks(p); *p != '\n' && *p != '#'; p = SkipBlanks(p))
    {
        const char* const name = p;
        while (!IsBlank(*p) && *p != '\n' && !BehindContinuation(p))
            ++p;
        if (!lists.Append(mContents.groups.IndexOf(std::string_view(name, std::size_t(p - name)))))
            return NoMemory();
    }
    // Exporters repeat the statement before every object; the same groups again are no change.
    const std::int64_t count = lists.Count() - first;
    if (count == mState.numGroups && std::equal(lists.begin() + first, lists.end(), lists.begin() + mState.firstGroup))
        lists.SetCount(first);
    else
    {
        mState.firstGroup = first;
        mState.numGroups = count;
        mStateChanged = true;
    }
    return EndOfStatement(p);
}

const char* ObjParser::Object(const char* p)
{
    std::string_view name;
    p = NameToEndOfLine(p, name);
    return mContents.objectNames.Append({std::int32_t(mContents.polyLengths.count), BString(name)}) ? p : NoMemory();
}

const char* ObjParser::Smoothing(const char* p)
{
    std::uint32_t word = 0;
    p = SkipBlanks(p);
    if (BeginsWith(p, "off") && EndsToken(p[3]))
        p += 3;
    else if (BeginsWith(p, "on") && EndsToken(p[2]))
    {
        word = 1;
        p += 2;
    }
    else
        do
        {
            std::int64_t number;
            const char* const end = ScanInteger(p, number);
            if (!end || !EndsToken(*end) || number < 0)
                return *p == '\n' || *p == '#'
                           ? Fail("the statement is truncated: expected a smoothing group")
                           : Fail("malformed smoothing group " + Quoted(p) + ", expected a number or off");
            if (number > 0)
                word |= 1u << ((number - 1) % 32);
            p = SkipBlanks(end);
        } while (*p != '\n' && *p != '#');
    mStateChanged |= word != mState.smoothing;
    mState.smoothing = word;
    return EndOfStatement(p);
}

// --- Statements

const char* ObjParser::VertexStatement(const char* p)
{
    if (IsBlank(p[1]))
        return Vertex(p + 2);
    if (p[1] == 't' && EndsToken(p[2]))
        return TexVertex(p + 2);
    if (p[1] == 'n' && EndsToken(p[2]))
        return Normal(p + 2);
    return EndsToken(p[1]) ? Vertex(p + 1) : SkipStatement(p);
}

const char* ObjParser::Statement(const char* p)
{
    switch (*p)
    {
    case '\n':
        return p + 1;
    case '#':
        return SkipComment(p);
    case 'v':
        return VertexStatement(p);
    case 'f':
        return EndsToken(p[1]) ? Polygon(p + 1, kElementFace) : SkipStatement(p);
    case 'l':
        return EndsToken(p[1]) ? Polygon(p + 1, kElementLine) : SkipStatement(p);
    case 'p':
        return EndsToken(p[1]) ? Polygon(p + 1, kElementPoint) : SkipStatement(p);
    case 'g':
        return EndsToken(p[1]) ? Groups(p + 1) : SkipStatement(p);
    case 'o':
        return EndsToken(p[1]) ? Object(p + 1) : SkipStatement(p);
    case 's':
        return EndsToken(p[1]) ? Smoothing(p + 1) : SkipStatement(p);
    case 'u':
        return std::strncmp(p, "usemtl", 6) == 0 && EndsToken(p[6]) ? Material(p + 6) : SkipStatement(p);
    case 'm':
        return std::strncmp(p, "mtllib", 6) == 0 && EndsToken(p[6]) ? MaterialFiles(p + 6) : SkipStatement(p);
    default:
        return SkipStatement(p);
    }
}

bool ObjParser::ReportProgress(const char* p)
{
    mNextProgress = p + std::min(kProgressStep, mEnd - p);
    if (!mProgress || mProgress(float(double(p - mText) / double(mSize))) == 0)
        return true;
    Fail("reading was cancelled");
    return false;
}

// Lines from p to `end`. Line feeds stand before `end` and, where the last line could go on, up to `guard`.
bool ObjParser::ParseLines(const char* p, const char* end, const char* guard)
{
    mEnd = guard;
    mNextProgress = p;
    while (p < end)
    {
        if (mProgress && p >= mNextProgress && !ReportProgress(p)) [[unlikely]]
            return false;
        ++mLine;
        if (!(p = Statement(SkipBlanks(p))))
            return false;
    }
    return true;
}

// Where the last statements of the text begin that are parsed from a copy: it can be given the line feeds that the text
// may lack, and the bytes behind them that are fetched with digits. All before is parsed where it lies.
static std::size_t TailStart(const char* text, std::size_t size)
{
    for (std::size_t at = size < kReadAhead ? 0 : size - kReadAhead; at > 0; --at)
    {
        if (text[at - 1] != '\n')
            continue;
        std::size_t before = at - 1;
        while (before > 0 && text[before - 1] == '\r')
            --before;
        if (before == 0 || text[before - 1] != '\\')
            return at;
    }
    return 0;
}

bool ObjParser::Parse()
{
    static constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    const std::size_t first = std::string_view(mText, mSize).starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    const std::size_t tailStart = std::max(first, TailStart(mText, mSize));
    if (!ParseLines(mText + first, mText + tailStart, mText + tailStart))
        return false;
    if (tailStart < mSize)
    {
        std::string tail(mText + tailStart, mSize - tailStart);
        if (!tail.ends_with('\n'))
            tail += '\n';
        const std::size_t size = tail.size();
        tail += '\n'; // read when the text ends with a continuation
        tail.append(kReadAhead, '\0');
        mProgress = nullptr;
        if (!ParseLines(tail.data(), tail.data() + size, tail.data() + size + 1))
            return false;
    }
    mReport.lines = mLine;
    return true;
}
} // namespace vx::detail
