// VelmarBase: sample models.
#include "ObjModel.h"

#include <cmath>
#include <cstdint>
#include <numbers>

Vec3 Cross(Vec3 a, Vec3 b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }

Vec3 Unit(Vec3 a)
{
    const double length = std::sqrt(a.x * a.x + a.y * a.y + a.z * a.z);
    return length > 0 ? (1 / length) * a : a;
}

Vec2 Bezier(Vec2 a, Vec2 b, Vec2 c, Vec2 d, double t)
{
    const double s = 1 - t;
    const double wa = s * s * s, wb = 3 * s * s * t, wc = 3 * s * t * t, wd = t * t * t;
    return {wa * a.x + wb * b.x + wc * c.x + wd * d.x, wa * a.y + wb * b.y + wc * c.y + wd * d.y};
}

// Four decimals without a trailing zero. The small bias settles ties, which sine and cosine of round angles do produce:
// C libraries differ in the last bit there, and the files must not.
static std::string Number(double value)
{
    const long long scaled = static_cast<long long>(std::floor(value * 10000 + 0.5 + 1e-6));
    const unsigned long long size = static_cast<unsigned long long>(scaled < 0 ? -scaled : scaled);
    std::string text = scaled < 0 ? "-" : "";
    text += std::to_string(size / 10000);
    if (size % 10000 != 0)
    {
        std::string decimals = std::to_string(size % 10000 + 10000).substr(1);
        decimals.erase(decimals.find_last_not_of('0') + 1);
        text += "." + decimals;
    }
    return text;
}

static void AppendStatement(std::string& text, const char* keyword, const std::vector<std::string>& arguments)
{
    text += keyword;
    for (const std::string& argument : arguments)
        text.append(" ").append(argument);
    text += "\n";
}

void ObjModel::Place(Vec3 origin, Vec3 x, Vec3 y, Vec3 z)
{
    mOrigin = origin;
    mX = x;
    mY = y;
    mZ = z;
}

int ObjModel::Vert(Vec3 local)
{
    const Vec3 p = mOrigin + local.x * mX + local.y * mY + local.z * mZ;
    AppendStatement(mVerts, "v", {Number(p.x), Number(p.y), Number(p.z)});
    return mNumVerts++;
}

int ObjModel::Uv(double u, double v)
{
    AppendStatement(mUvs, "vt", {Number(u), Number(v)});
    return mNumUvs++;
}

void ObjModel::State(std::string& slot, const std::string& statement)
{
    if (slot == statement)
        return;
    slot = statement;
    mBody += statement + "\n";
}

void ObjModel::Object(const std::string& name) { State(mObject, "o " + name); }
void ObjModel::Group(const std::string& names) { State(mGroup, "g " + names); }
void ObjModel::Material(const std::string& name) { State(mMaterial, "usemtl " + name); }
void ObjModel::Smooth(int group)
{
    State(mSmooth, group > 0 ? std::string("s ").append(std::to_string(group)) : "s off");
}

void ObjModel::Face(const std::vector<int>& verts, const std::vector<int>& uvs)
{
    std::vector<std::string> corners;
    for (std::size_t i = 0; i < verts.size(); ++i)
    {
        const std::size_t k = mReversed ? verts.size() - 1 - i : i;
        corners.push_back(std::to_string(verts[k] + 1));
        if (!uvs.empty())
            corners.back().append("/").append(std::to_string(uvs[k] + 1));
    }
    AppendStatement(mBody, "f", corners);
}

static std::vector<std::string> Indices(const std::vector<int>& verts)
{
    std::vector<std::string> texts;
    for (int v : verts)
        texts.push_back(std::to_string(v + 1));
    return texts;
}

void ObjModel::Line(const std::vector<int>& verts) { AppendStatement(mBody, "l", Indices(verts)); }
void ObjModel::Points(const std::vector<int>& verts) { AppendStatement(mBody, "p", Indices(verts)); }

std::string ObjModel::Text() const
{
    return "# " + mTitle + "\n# Written by samples/generate.cpp; change it there.\nmtllib " + mMaterialFile + "\n" +
           mVerts + mUvs + mBody;
}

// --- Shapes

static std::vector<int> AddRing(ObjModel& model, double r, double y, int segments)
{
    std::vector<int> ring;
    for (int i = 0; i < segments; ++i)
    {
        const double angle = 2 * std::numbers::pi * i / segments;
        ring.push_back(model.Vert({r * std::cos(angle), y, -r * std::sin(angle)}));
    }
    return ring;
}

static std::vector<int> Backwards(const std::vector<int>& ring) { return {ring.rbegin(), ring.rend()}; }

void AddBand(ObjModel& model, const std::vector<int>& lower, const std::vector<int>& upper)
{
    for (std::size_t i = 0; i < lower.size(); ++i)
    {
        const std::size_t next = (i + 1) % lower.size();
        model.Face({lower[i], lower[next], upper[next], upper[i]});
    }
}

// The same with texture coordinates, of which each ring has one more than vertices: the seam has two.
static void AddTexturedBand(ObjModel& model, const std::vector<int>& lower, const std::vector<int>& upper,
                            const std::vector<int>& lowerUvs, const std::vector<int>& upperUvs)
{
    for (std::size_t i = 0; i < lower.size(); ++i)
    {
        const std::size_t next = (i + 1) % lower.size();
        model.Face({lower[i], lower[next], upper[next], upper[i]},
                   {lowerUvs[i], lowerUvs[i + 1], upperUvs[i + 1], upperUvs[i]});
    }
}

void AddLathe(ObjModel& model, const std::vector<LathePoint>& profile, int segments, LatheEnds ends, double uRepeat)
{
    std::vector<int> first, below, belowUvs;
    for (const LathePoint& point : profile)
    {
        const std::vector<int> ring = AddRing(model, point.r, point.y, segments);
        std::vector<int> uvs;
        for (int i = 0; point.v >= 0 && i <= segments; ++i)
            uvs.push_back(model.Uv(uRepeat * i / segments, point.v));

        if (point.material)
            model.Material(point.material);
        if (below.empty())
        {
            first = ring;
            if (ends == LatheEnds::Capped)
                model.Face(Backwards(ring));
        }
        else if (uvs.empty() || belowUvs.empty())
            AddBand(model, below, ring);
        else
            AddTexturedBand(model, below, ring, belowUvs, uvs);
        below = ring;
        belowUvs = uvs;
    }
    if (ends == LatheEnds::Capped)
        model.Face(below);
    else
        AddBand(model, below, first);
}

void AddTube(ObjModel& model, const std::vector<Vec3>& path, Vec3 across, const std::vector<Vec2>& radii, int segments)
{
    std::vector<int> before;
    for (std::size_t i = 0; i < path.size(); ++i)
    {
        const Vec3 along = Unit(path[i + 1 < path.size() ? i + 1 : i] - path[i > 0 ? i - 1 : i]);
        const Vec3 inPlane = Cross(across, along);
        std::vector<int> ring;
        for (int k = 0; k < segments; ++k)
        {
            const double angle = 2 * std::numbers::pi * k / segments;
            ring.push_back(model.Vert(path[i] + (radii[i].x * std::cos(angle)) * inPlane +
                                      (radii[i].y * std::sin(angle)) * across));
        }
        if (i == 0)
            model.Face(Backwards(ring));
        else
            AddBand(model, before, ring);
        before = ring;
    }
    model.Face(before);
}

void AddBar(ObjModel& model, Vec3 from, Vec3 to, double r0, double r1, int segments)
{
    const Vec3 along = Unit(to - from);
    const Vec3 helper = std::abs(along.y) < 0.9 ? Vec3{0, 1, 0} : Vec3{1, 0, 0};
    AddTube(model, {from, to}, Unit(Cross(along, helper)), {{r0, r0}, {r1, r1}}, segments);
}

void AddChamferedBox(ObjModel& model, Vec3 halfSize, double chamfer)
{
    const double half[3] = {halfSize.x, halfSize.y, halfSize.z};

    // Each of the 8 corners has 3 vertices, one for each face that meets there.
    int ids[8][3];
    for (int corner = 0; corner < 8; ++corner)
    {
        for (int axis = 0; axis < 3; ++axis)
        {
            double p[3];
            for (int k = 0; k < 3; ++k)
                p[k] = (corner >> k & 1 ? 1 : -1) * (k == axis ? half[k] : half[k] - chamfer);
            ids[corner][axis] = model.Vert({p[0], p[1], p[2]});
        }
    }
    for (int axis = 0; axis < 3; ++axis)
    {
        const int u = 1 << (axis + 1) % 3, v = 1 << (axis + 2) % 3, w = 1 << axis;
        const int next = (axis + 1) % 3;
        for (int side : {0, 1}) // the face across `axis`
        {
            const int at = side ? w : 0;
            model.SetReversed(side == 0);
            model.Face({ids[at][axis], ids[at | u][axis], ids[at | u | v][axis], ids[at | v][axis]});
        }
        // The four edges between this axis' faces and the next axis' faces run along the third axis.
        for (int k = 0; k < 4; ++k)
        {
            const int at = (k & 1 ? w : 0) | (k & 2 ? u : 0);
            model.SetReversed(k == 0 || k == 3);
            model.Face({ids[at][axis], ids[at | v][axis], ids[at | v][next], ids[at][next]});
        }
    }
    for (int corner = 0; corner < 8; ++corner)
    {
        const bool even = ((corner & 1) + (corner >> 1 & 1) + (corner >> 2 & 1)) % 2 == 0;
        model.SetReversed(even);
        model.Face({ids[corner][0], ids[corner][1], ids[corner][2]});
    }
    model.SetReversed(false);
}

// --- PNG: the container of ISO/IEC 15948 around one zlib stream of stored blocks.

static std::uint32_t Crc32(const std::string& bytes)
{
    std::uint32_t crc = 0xFFFFFFFFu;
    for (char byte : bytes)
    {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (crc & 1 ? 0xEDB88320u : 0u);
    }
    return ~crc;
}

static std::uint32_t Adler32(const std::string& bytes)
{
    std::uint32_t a = 1, b = 0;
    for (char byte : bytes)
    {
        a = (a + static_cast<unsigned char>(byte)) % 65521;
        b = (b + a) % 65521;
    }
    return b << 16 | a;
}

static std::string BigEndian(std::uint32_t word)
{
    return {char(word >> 24), char(word >> 16 & 255), char(word >> 8 & 255), char(word & 255)};
}

static std::string Chunk(const std::string& type, const std::string& data)
{
    return BigEndian(std::uint32_t(data.size())) + type + data + BigEndian(Crc32(type + data));
}

static std::string Stored(const std::string& bytes)
{
    std::string out = {'\x78', '\x01'};
    for (std::size_t at = 0; at < bytes.size(); at += 65535)
    {
        const std::string block = bytes.substr(at, 65535);
        const unsigned size = unsigned(block.size());
        out += char(at + 65535 >= bytes.size() ? 1 : 0);
        for (unsigned word : {size, ~size})
            out += {char(word & 255), char(word >> 8 & 255)};
        out += block;
    }
    return out + BigEndian(Adler32(bytes));
}

std::string PngBytes(int width, int height, const std::vector<unsigned char>& pixels,
                     const std::array<std::array<unsigned char, 3>, 16>& palette)
{
    std::string colours;
    for (const auto& entry : palette)
        for (unsigned char part : entry)
            colours += char(part);

    std::string rows;
    for (int y = 0; y < height; ++y)
    {
        rows += '\0'; // filter type of the row: none
        for (int x = 0; x < width; x += 2)
        {
            const std::size_t at = std::size_t(y) * std::size_t(width) + std::size_t(x);
            const int low = x + 1 < width ? pixels[at + 1] : 0;
            rows += char(pixels[at] << 4 | low);
        }
    }
    const std::string header = BigEndian(std::uint32_t(width)) + BigEndian(std::uint32_t(height)) +
                               std::string{4, 3, 0, 0, 0}; // 4 bits, palette, no interlacing
    return std::string("\x89PNG\r\n\x1a\n", 8) + Chunk("IHDR", header) + Chunk("PLTE", colours) +
           Chunk("IDAT", Stored(rows)) + Chunk("IEND", "");
}
