// VelmarBase: sample models.
#include "ObjModel.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

/// @file
/// A small sloop under sail: lofted hull, cabin, spars, cambered sails with a painted emblem, rigging as lines and
/// lanterns as points. Metres; the bow points to +x, y is up.

namespace
{

const char* const kMaterials = R"(# Materials of sailboat.obj.
newmtl topsides
Kd 0.13 0.24 0.38
Ks 0.5 0.5 0.5
Ns 70

newmtl stripe
Kd 0.93 0.92 0.88
Ks 0.3 0.3 0.3
Ns 50

newmtl bottom
Kd 0.6 0.16 0.12
Ks 0.1 0.1 0.1
Ns 15

newmtl wood
Kd 0.62 0.41 0.22
Ks 0.3 0.25 0.2
Ns 40

newmtl deck
Kd 0.8 0.68 0.48

newmtl cabin
Kd 0.92 0.91 0.87
Ks 0.2 0.2 0.2
Ns 30

newmtl sail
Kd 1 1 1
map_Kd sail.png

newmtl pennant
Kd 0.79 0.2 0.13

newmtl rigging
Kd 0.25 0.25 0.27

newmtl brass
Kd 0.83 0.64 0.26
Ks 0.8 0.7 0.4
Ns 60
)";

constexpr int kStations = 15, kRows = 9; // along the hull, and from keel to rail
constexpr double kDeck = 0.38;

double Station(int i) { return double(i) / (kStations - 1); } // 0 at the stern, 1 at the bow

double HalfBreadth(double t)
{
    return t < 0.42 ? 1.05 - 0.38 * std::pow((0.42 - t) / 0.42, 2) : 1.05 * (1 - std::pow((t - 0.42) / 0.58, 2.2));
}
double Rail(double t) { return 0.6 + 0.42 * std::pow(t, 2.4) + 0.1 * std::pow(1 - t, 2); }
double Keel(double t)
{
    const double aft = std::max(0.0, (0.4 - t) / 0.4), fore = std::max(0.0, (t - 0.5) / 0.5);
    return -0.5 + 0.42 * aft * aft + 0.75 * fore * fore * fore;
}

// A point of the hull at a station, `rise` of the way up from keel (0) to rail (1).
Vec3 HullAt(double t, double rise, double side)
{
    const double a = std::acos(std::pow(1 - rise, 1 / 1.1));
    const double rake = 0.4 * std::pow(t, 4) * rise - 0.18 * std::pow(1 - t, 6) * rise; // stem and stern lean outwards
    return {-3 + 6 * t + rake, Keel(t) + (Rail(t) - Keel(t)) * rise,
            side * HalfBreadth(t) * std::pow(std::sin(a), 0.8)};
}

Vec3 HullPoint(int station, int row, double side)
{
    const double a = 0.5 * std::numbers::pi * row / (kRows - 1);
    return HullAt(Station(station), row == kRows - 1 ? 1 : 1 - std::pow(std::cos(a), 1.1), side);
}

// The hull's own point moved inboard by the thickness of the planking.
Vec3 Inboard(Vec3 p, int station, double side)
{
    if (station == kStations - 1)
        return p - Vec3{0.22, 0, 0};
    return p + Vec3{station == 0 ? 0.1 : 0, 0, -side * std::min(0.09, 0.6 * std::abs(p.z))};
}

/// Vertex of each station and row; on the keel and at the stem both sides share them.
struct HullSide
{
    int verts[kStations][kRows];
    int rail[kStations], deck[kStations]; ///< inner edge of the rail, and the edge of the deck below it
};

HullSide AddHullSide(ObjModel& model, double side, const HullSide* other)
{
    HullSide hull;
    for (int i = 0; i < kStations; ++i)
    {
        const bool stem = i == kStations - 1;
        for (int row = 0; row < kRows; ++row)
            hull.verts[i][row] =
                other && (row == 0 || stem) ? other->verts[i][row] : model.Vert(HullPoint(i, row, side));
        const double t = Station(i);
        const Vec3 rail = Inboard(HullAt(t, 1, side), i, side);
        const Vec3 deck = Inboard(HullAt(t, (kDeck - Keel(t)) / (Rail(t) - Keel(t)), side), i, side);
        hull.rail[i] = other && stem ? other->rail[i] : model.Vert(rail);
        hull.deck[i] = other && stem ? other->deck[i] : model.Vert(deck);
    }

    model.SetReversed(side < 0);
    model.Smooth(1);
    model.Group("hull planking");
    for (int row = 0; row + 1 < kRows; ++row)
    {
        model.Material(row < 4 ? "bottom" : row == 4 ? "stripe" : "topsides");
        for (int i = 0; i + 1 < kStations; ++i)
            model.Face(
                {hull.verts[i][row], hull.verts[i + 1][row], hull.verts[i + 1][row + 1], hull.verts[i][row + 1]});
    }
    model.Group("hull rail");
    model.Material("wood");
    model.Smooth(2);
    for (int i = 0; i + 1 < kStations; ++i)
        model.Face({hull.verts[i][kRows - 1], hull.verts[i + 1][kRows - 1], hull.rail[i + 1], hull.rail[i]});
    model.Group("hull inside");
    model.Material("cabin");
    model.Smooth(3);
    for (int i = 0; i + 1 < kStations; ++i)
        model.Face({hull.rail[i], hull.rail[i + 1], hull.deck[i + 1], hull.deck[i]});
    model.SetReversed(false);
    return hull;
}

void AddHull(ObjModel& model)
{
    model.Object("Hull");
    const HullSide starboard = AddHullSide(model, 1, nullptr), port = AddHullSide(model, -1, &starboard);

    model.Group("hull stern");
    model.Smooth(0);
    model.Material("wood");
    std::vector<int> transom;
    for (int row = 0; row < kRows; ++row)
        transom.push_back(starboard.verts[0][row]);
    for (int row = kRows - 1; row > 0; --row)
        transom.push_back(port.verts[0][row]);
    model.Face(transom);
    model.Face({starboard.verts[0][kRows - 1], starboard.rail[0], port.rail[0], port.verts[0][kRows - 1]});
    model.Material("cabin");
    model.Face({starboard.rail[0], starboard.deck[0], port.deck[0], port.rail[0]});

    model.Group("hull deck");
    model.Material("deck");
    std::vector<int> deck(starboard.deck, starboard.deck + kStations);
    for (int i = kStations - 2; i >= 0; --i)
        deck.push_back(port.deck[i]);
    model.Face(deck);

    model.Group("cabin");
    model.Material("cabin");
    model.Place({0.45, kDeck + 0.2, 0});
    AddChamferedBox(model, {0.95, 0.26, 0.46}, 0.1);
    model.Material("wood");
    model.Place({-0.1, kDeck + 0.47, 0});
    AddChamferedBox(model, {0.3, 0.045, 0.26}, 0.025);
    model.Group("rudder");
    model.Place({-3.2, -0.02, 0});
    AddChamferedBox(model, {0.13, 0.62, 0.04}, 0.03);
    model.Place();
    AddBar(model, {-3.2, 0.75, 0}, {-2.2, 0.82, 0.14}, 0.035, 0.03, 8);
}

/// A point of a sail: u 0..1 from the mast or stay to the free edge, v 0..1 from foot to head.
using Surface = std::function<Vec3(double u, double v)>;

// A sheet of cloth: both faces of a surface a little apart, joined at the rim, so that each has an outside.
void AddSheet(ObjModel& model, const Surface& at, int nu, int nv, double thickness)
{
    std::vector<int> front, back, uvs;
    for (int j = 0; j <= nv; ++j)
    {
        for (int i = 0; i <= nu; ++i)
        {
            const double u = double(i) / nu, v = double(j) / nv, h = 1e-3;
            const Vec3 normal = Unit(Cross(at(u + h, v) - at(u - h, v), at(u, v + h) - at(u, v - h)));
            front.push_back(model.Vert(at(u, v) + (0.5 * thickness) * normal));
            back.push_back(model.Vert(at(u, v) - (0.5 * thickness) * normal));
            uvs.push_back(model.Uv(u, v));
        }
    }
    const auto quads = [&](const std::vector<int>& verts)
    {
        for (int j = 0; j < nv; ++j)
        {
            for (int i = 0; i < nu; ++i)
            {
                const std::size_t a = std::size_t(j * (nu + 1) + i), b = a + std::size_t(nu) + 1;
                model.Face({verts[a], verts[a + 1], verts[b + 1], verts[b]}, {uvs[a], uvs[a + 1], uvs[b + 1], uvs[b]});
            }
        }
    };
    quads(front);
    model.SetReversed(true);
    quads(back);
    model.SetReversed(false);

    std::vector<std::size_t> rim; // counter-clockwise seen from the front
    const std::size_t row = std::size_t(nu) + 1;
    for (std::size_t i = 0; i < std::size_t(nu); ++i)
        rim.push_back(i);
    for (std::size_t j = 0; j < std::size_t(nv); ++j)
        rim.push_back(j * row + std::size_t(nu));
    for (std::size_t i = std::size_t(nu); i > 0; --i)
        rim.push_back(std::size_t(nv) * row + i);
    for (std::size_t j = std::size_t(nv); j > 0; --j)
        rim.push_back(j * row);
    for (std::size_t k = 0; k < rim.size(); ++k)
    {
        const std::size_t a = rim[k], b = rim[(k + 1) % rim.size()];
        model.Face({back[a], back[b], front[b], front[a]}, {uvs[a], uvs[b], uvs[b], uvs[a]});
    }
}

Vec3 Mix(Vec3 a, Vec3 b, double t) { return a + t * (b - a); }

// A three-cornered sail with its belly to leeward (+z) and its free edge bowed outwards by `roach`.
Surface Sail(Vec3 tack, Vec3 clew, Vec3 head, double headWidth, double camber, double roach)
{
    const Vec3 foot = clew - tack, wayAft = Unit(foot);
    const double chord = std::sqrt(foot.x * foot.x + foot.y * foot.y + foot.z * foot.z);
    return [=](double u, double v)
    {
        const Vec3 luff = Mix(tack, head, v);
        const Vec3 leech = Mix(clew, head + headWidth * wayAft, v) + (4 * roach * v * (1 - v)) * wayAft;
        const double belly = camber * chord * (1 - 0.85 * v) * 6.75 * u * (1 - u) * (1 - u) *
                             (0.4 + 0.6 * std::sin(std::numbers::pi * std::min(1.0, 0.15 + v)));
        return Mix(luff, leech, u) + Vec3{0.25 * belly, 0, belly};
    };
}

void AddRig(ObjModel& model)
{
    model.Object("Rig");
    model.Group("spars");
    model.Smooth(4);
    model.Material("wood");
    AddBar(model, {0.55, kDeck, 0}, {0.55, 7.5, 0}, 0.075, 0.04, 12);
    AddBar(model, {0.5, 1.32, 0}, {-2.35, 1.22, 0.62}, 0.05, 0.04, 10);
    model.Material("brass");
    model.Place({0.55, 7.5, 0});
    std::vector<LathePoint> ball;
    for (int i = 1; i < 8; ++i)
    {
        const double a = std::numbers::pi * i / 8;
        ball.push_back({0.09 * std::sin(a), 0.06 - 0.09 * std::cos(a)});
    }
    AddLathe(model, ball, 12, LatheEnds::Capped);
    model.Place();

    model.Object("Sails");
    model.Smooth(5);
    model.Material("sail");
    model.Group("sails main");
    AddSheet(model, Sail({0.44, 1.42, 0}, {-2.25, 1.36, 0.6}, {0.49, 7.2, 0}, 0.14, 0.1, 0.28), 10, 14, 0.012);
    model.Group("sails jib");
    AddSheet(model, Sail({3.05, 1.2, 0}, {0.7, 1.35, 0.85}, {0.72, 6.1, 0}, 0.07, 0.11, -0.08), 9, 12, 0.012);
    model.Group("pennant");
    model.Material("pennant");
    AddSheet(
        model,
        [](double u, double v)
        {
            return Vec3{0.53 - 0.95 * u, 7.42 - 0.1 * u + 0.32 * (v - 0.5) * (1 - 0.85 * u),
                        0.25 * u + 0.07 * std::sin(7 * u) * u};
        },
        8, 2, 0.008);

    model.Group("rigging");
    model.Smooth(0);
    model.Material("rigging");
    const auto stay = [&](std::initializer_list<Vec3> points)
    {
        std::vector<int> line;
        for (Vec3 p : points)
            line.push_back(model.Vert(p));
        model.Line(line);
    };
    stay({{0.55, 6.3, 0}, {3.36, 1.02, 0}});
    stay({{0.55, 7.45, 0}, {-3.12, 0.72, 0}});
    for (double side : {1.0, -1.0})
        stay({{0.55, 5.6, 0}, {0.35, 3.4, 0.6 * side}, {0.3, 0.67, 0.98 * side}});
    stay({{-2.2, 1.2, 0.6}, {-2.5, 0.7, 0.2}});   // main sheet
    stay({{0.7, 1.35, 0.85}, {-0.9, 0.66, 0.9}}); // jib sheet

    model.Group("lanterns");
    model.Material("brass");
    model.Points({model.Vert({3.35, 1.08, 0}), model.Vert({-3.1, 0.78, 0.5}), model.Vert({-3.1, 0.78, -0.5})});
}

// --- The cloth: cream panels with seams, two bands, and a sun over waves. u, v in 0..1, v upwards.

/// What is painted at a point: colour family 0 cloth, 1 red, 2 blue, and how strong 0..1.
struct Paint
{
    int family;
    double strength;
};

Paint Cloth(double u, double v)
{
    const double x = (u - 0.42) / 0.27, y = (v - 0.4) / 0.092, r = std::hypot(x, y); // round on the main sail
    const double wave = 0.1 * std::sin(9 * x);
    if (r < 1 && y > -0.18 + wave)
        return {1, 1};
    if (r < 1 && std::fmod(y + 4 - wave, 0.36) < 0.2)
        return {2, 1};
    if (std::abs(v - 0.075) < 0.016 || std::abs(v - 0.12) < 0.007)
        return {2, 1};
    const double seam = std::abs(std::fmod(v * 9 + 0.25 * u + 0.5, 1) - 0.5);
    return {0, seam < 0.03 ? 0.55 : 0.06 * std::sin(std::numbers::pi * u)};
}

std::string SailCloth()
{
    // Five shades for each family, from pure cloth to full paint; entry 15 is not used.
    constexpr int kShades = 5;
    constexpr double kCloth[3] = {245, 239, 224}, kFull[3][3] = {{176, 165, 142}, {200, 56, 38}, {34, 66, 108}};
    std::array<std::array<unsigned char, 3>, 16> palette{};
    for (std::size_t family = 0; family < 3; ++family)
        for (std::size_t shade = 0; shade < kShades; ++shade)
            for (std::size_t k = 0; k < 3; ++k)
                palette[family * kShades + shade][k] = static_cast<unsigned char>(
                    std::lround(kCloth[k] + (kFull[family][k] - kCloth[k]) * double(shade) / (kShades - 1)));

    constexpr int kSize = 256, kSamples = 4;
    std::vector<unsigned char> pixels;
    for (int row = 0; row < kSize; ++row)
    {
        for (int column = 0; column < kSize; ++column)
        {
            double sums[3] = {};
            for (int k = 0; k < kSamples * kSamples; ++k)
            {
                const Paint paint = Cloth((column + (k % kSamples + 0.5) / kSamples) / kSize,
                                          1 - (row + (k / kSamples + 0.5) / kSamples) / kSize);
                sums[paint.family] += paint.strength / (kSamples * kSamples);
            }
            const int family = sums[1] > 0 || sums[2] > 0 ? (sums[1] >= sums[2] ? 1 : 2) : 0;
            const double sum = family == 0 ? sums[0] : sums[1] + sums[2];
            pixels.push_back(
                static_cast<unsigned char>(family * kShades + std::lround((kShades - 1) * std::min(1.0, sum))));
        }
    }
    return PngBytes(kSize, kSize, pixels, palette);
}

} // namespace

std::vector<SampleFile> SailboatFiles()
{
    ObjModel model("A small sloop under sail. Metres, bow to +x, y up.", "sailboat.mtl");
    AddHull(model);
    AddRig(model);
    return {{"sailboat.obj", model.Text()}, {"sailboat.mtl", kMaterials}, {"sail.png", SailCloth()}};
}
