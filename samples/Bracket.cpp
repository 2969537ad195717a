// VelmarBase: sample models.
#include "ObjModel.h"

#include <cmath>
#include <numbers>

/// @file
/// An angle bracket, milled from one piece: rounded L profile, bevelled sides, drilled and countersunk, with a brass
/// bushing, two bolts, and the centre lines of its holes. Millimetres, y up. Its flat sides are concave polygons of
/// many corners, each hole cutting two of them.

namespace
{

const char* const kMaterials = R"(# Materials of bracket.obj.
newmtl steel
Kd 0.56 0.6 0.65
Ks 0.5 0.5 0.5
Ns 50

newmtl brass
Kd 0.8 0.63 0.27
Ks 0.8 0.7 0.4
Ns 70

newmtl dial
Kd 1 1 1
Ks 0.8 0.7 0.4
Ns 70
map_Kd dial.png

newmtl zinc
Kd 0.33 0.34 0.37
Ks 0.6 0.6 0.6
Ns 90

newmtl centre-line
Kd 0.78 0.16 0.12
)";

constexpr double kHalfWidth = 24, kBevel = 1, kCountersink = 0.8;
constexpr int kHoleSegments = 32;

struct ProfilePoint
{
    Vec2 at, normal; ///< normal points out of the material
};

struct Corner
{
    Vec2 at;
    double radius;
};

// The L seen from +z, counter-clockwise. All its corners are round, so that insetting it means moving every point
// along its normal.
const Corner kCorners[] = {{{0, 0}, 5},    {{90, 0}, 2.5},  {{90, 10}, 2.5},
                           {{10, 10}, 12}, {{10, 70}, 2.5}, {{0, 70}, 2.5}};
constexpr int kCornerSpans = 6;

std::vector<ProfilePoint> Profile()
{
    std::vector<ProfilePoint> profile;
    const std::size_t count = std::size(kCorners);
    for (std::size_t i = 0; i < count; ++i)
    {
        const Vec2 c = kCorners[i].at, before = kCorners[(i + count - 1) % count].at,
                   after = kCorners[(i + 1) % count].at;
        const Vec3 in = Unit({c.x - before.x, c.y - before.y, 0}), out = Unit({after.x - c.x, after.y - c.y, 0});
        const double turn = in.x * out.y - in.y * out.x; // 1: convex, -1: the inner corner of the L
        const double r = kCorners[i].radius;
        const Vec3 centre = Vec3{c.x, c.y, 0} - r * in + r * out;
        const Vec3 start = turn * Vec3{in.y, -in.x, 0}; // from the centre to the arc's first point
        for (int k = 0; k <= kCornerSpans; ++k)
        {
            const double angle = 0.5 * std::numbers::pi * k / kCornerSpans;
            const Vec3 ray = std::cos(angle) * start + std::sin(angle) * in;
            const Vec3 p = centre + r * ray;
            profile.push_back({{p.x, p.y}, {turn * ray.x, turn * ray.y}});
        }
    }
    return profile;
}

/// A hole through two flats: its rims lie in them. Vertex k of a rim is at angle k from the way in which the profile
/// runs along the flat, towards +z.
struct Rims
{
    std::vector<int> front, back;
};

// Drills from the flat at `centre` along `-outward`; `along` is the profile's way on that flat.
Rims AddHole(ObjModel& model, Vec3 centre, Vec3 along, Vec3 outward, double radius, double depth)
{
    const double radii[4] = {radius + kCountersink, radius, radius, radius + kCountersink};
    const double depths[4] = {0, kCountersink, depth - kCountersink, depth};
    std::vector<int> rings[4];
    for (int row = 0; row < 4; ++row)
    {
        for (int k = 0; k < kHoleSegments; ++k)
        {
            const double angle = 2 * std::numbers::pi * k / kHoleSegments;
            rings[row].push_back(model.Vert(centre - depths[row] * outward + (radii[row] * std::cos(angle)) * along +
                                            Vec3{0, 0, radii[row] * std::sin(angle)}));
        }
        if (row > 0)
            AddBand(model, rings[row - 1], rings[row]);
    }
    Rims rims{rings[0], {}};
    for (int k = 0; k < kHoleSegments; ++k) // the profile runs the other way on the far flat
        rims.back.push_back(rings[3][std::size_t((kHoleSegments + kHoleSegments / 2 - k) % kHoleSegments)]);
    return rims;
}

/// One end of a flat: its vertices at -z, in the middle, at +z.
struct FlatEnd
{
    int low, mid, high;
};

// A flat with holes along its middle: two polygons, each with half of every rim in its outline.
void AddDrilledFlat(ObjModel& model, FlatEnd start, FlatEnd end, const std::vector<const std::vector<int>*>& rims)
{
    constexpr int kHalf = kHoleSegments / 2;
    std::vector<int> high = {start.mid}, low = {start.low, end.low, end.mid};
    for (const std::vector<int>* rim : rims)
        for (int k = kHalf; k >= 0; --k)
            high.push_back((*rim)[std::size_t(k)]);
    for (std::size_t i = rims.size(); i-- > 0;)
        for (int k = kHoleSegments; k >= kHalf; --k)
            low.push_back((*rims[i])[std::size_t(k % kHoleSegments)]);
    high.insert(high.end(), {end.mid, end.high, start.high});
    low.push_back(start.mid);
    model.Face(high);
    model.Face(low);
}

void AddBody(ObjModel& model)
{
    model.Object("Bracket");
    model.Material("steel");
    model.Group("bracket holes");
    model.Smooth(2);
    const Rims nearBolt = AddHole(model, {42, 10, 0}, {-1, 0, 0}, {0, 1, 0}, 5.5, 10);
    const Rims farBolt = AddHole(model, {73, 10, 0}, {-1, 0, 0}, {0, 1, 0}, 5.5, 10);
    const Rims bearing = AddHole(model, {10, 46, 0}, {0, 1, 0}, {1, 0, 0}, 12, 10);

    const std::vector<ProfilePoint> profile = Profile();
    const auto row = [&](double z, double inset)
    {
        std::vector<int> ids;
        for (const ProfilePoint& p : profile)
            ids.push_back(model.Vert({p.at.x - inset * p.normal.x, p.at.y - inset * p.normal.y, z}));
        return ids;
    };
    const std::vector<int> left = row(-kHalfWidth, kBevel), low = row(-kHalfWidth + kBevel, 0), mid = row(0, 0),
                           high = row(kHalfWidth - kBevel, 0), right = row(kHalfWidth, kBevel);

    model.Group("bracket walls");
    model.Smooth(1);
    for (std::size_t i = 0; i < profile.size(); ++i)
    {
        const std::size_t next = (i + 1) % profile.size();
        const FlatEnd start{low[i], mid[i], high[i]}, end{low[next], mid[next], high[next]};
        const bool flat = i % (kCornerSpans + 1) == kCornerSpans; // from one corner's arc to the next
        const std::size_t side = flat ? i / (kCornerSpans + 1) : 99;
        if (side == 0)
            AddDrilledFlat(model, start, end, {&nearBolt.back, &farBolt.back});
        else if (side == 2)
            AddDrilledFlat(model, start, end, {&farBolt.front, &nearBolt.front});
        else if (side == 3)
            AddDrilledFlat(model, start, end, {&bearing.front});
        else if (side == 5)
            AddDrilledFlat(model, start, end, {&bearing.back});
        else
        {
            model.Face({start.low, end.low, end.mid, start.mid});
            model.Face({start.mid, end.mid, end.high, start.high});
        }
    }
    model.Group("bracket bevels");
    model.Smooth(3);
    AddBand(model, left, low);
    AddBand(model, high, right);
    model.Group("bracket sides");
    model.Smooth(4);
    model.Face(right);
    model.Face({left.rbegin(), left.rend()});
}

void AddFittings(ObjModel& model)
{
    model.Object("Bushing");
    model.Group("fittings bushing");
    model.Material("brass");
    model.Smooth(5);
    model.Place({0, 46, 0}, {0, 0, 1}, {1, 0, 0}, {0, 1, 0}); // turned about the bearing's axis
    constexpr double kDialRepeats = 8;
    AddLathe(model,
             {{9.1, -2},
              {11.2, -2},
              {11.8, -1.4},
              {11.8, 10},
              {16.2, 10},
              {17, 10.8},
              {17, 13.2},
              {16.2, 14, nullptr, 0},
              {9.1, 14, "dial", 1},
              {8.5, 13.4, "brass"},
              {8.5, -1.4}},
             kHoleSegments, LatheEnds::Joined, kDialRepeats);

    model.Object("Bolts");
    model.Group("fittings bolts");
    for (double x : {42.0, 73.0})
    {
        model.Place({x, 10, 0});
        model.Smooth(6);
        model.Material("zinc");
        AddLathe(model, {{9.6, 0}, {10, 0.4}, {10, 1.4}, {9.6, 1.8}}, kHoleSegments, LatheEnds::Capped);
        model.Smooth(0);
        AddLathe(model, {{8.2, 1.8}, {8.2, 6.4}, {7.2, 7.4}}, 6, LatheEnds::Capped); // six segments: a hexagon
    }
    model.Place();
}

// A centre line as draughtsmen draw it: long, short, long; a point where it starts.
void AddCentreLine(ObjModel& model, Vec3 from, Vec3 way, double length)
{
    const double stops[][2] = {{0, 0.5}, {0.6, 0.68}, {0.78, 1}};
    for (const auto& stop : stops)
    {
        const int a = model.Vert(from + (stop[0] * length) * way), b = model.Vert(from + (stop[1] * length) * way);
        model.Line({a, b});
    }
    model.Points({model.Vert(from)});
}

// How much brass there is at a place of the dial's enamel: an eighth of the way round, nine degrees of five each, the
// first of them long, and a rim. v runs inwards.
double Brass(double u, double v)
{
    const double degree = u * 9, off = std::fabs(degree - std::round(degree));
    const bool first = std::fmod(std::round(degree), 9) == 0;
    const bool tick = off < (first ? 0.17 : 0.11) && v > 0.1 && v < (first ? 0.72 : 0.46);
    return tick || v > 0.9 || v < 0.05 ? 1 : 0;
}

std::string Dial()
{
    constexpr int kSize = 128, kSamples = 4;
    std::vector<unsigned char> pixels;
    for (int row = 0; row < kSize; ++row)
    {
        for (int column = 0; column < kSize; ++column)
        {
            double sum = 0;
            for (int k = 0; k < kSamples * kSamples; ++k)
                sum += Brass((column + (k % kSamples + 0.5) / kSamples) / kSize,
                             1 - (row + (k / kSamples + 0.5) / kSamples) / kSize);
            pixels.push_back(static_cast<unsigned char>(std::lround(15 * sum / (kSamples * kSamples))));
        }
    }
    std::array<std::array<unsigned char, 3>, 16> palette; // enamel to brass
    for (int i = 0; i < 16; ++i)
        palette[std::size_t(i)] = {static_cast<unsigned char>(24 + 13 * i), static_cast<unsigned char>(44 + 9 * i),
                                   static_cast<unsigned char>(62 + 2 * i)};
    return PngBytes(kSize, kSize, pixels, palette);
}

} // namespace

std::vector<SampleFile> BracketFiles()
{
    ObjModel model("An angle bracket with its fittings. Millimetres, y up.", "bracket.mtl");
    AddBody(model);
    AddFittings(model);
    model.Object("Axes");
    model.Group("axes");
    model.Material("centre-line");
    AddCentreLine(model, {42, 17.6, 0}, {0, 1, 0}, 16);
    AddCentreLine(model, {73, 17.6, 0}, {0, 1, 0}, 16);
    AddCentreLine(model, {-6, 46, 0}, {1, 0, 0}, 46);
    return {{"bracket.obj", model.Text()}, {"bracket.mtl", kMaterials}, {"dial.png", Dial()}};
}
