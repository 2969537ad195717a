// VelmarBase: sample models.
#include "ObjModel.h"

#include <algorithm>
#include <cmath>
#include <numbers>

/// @file
/// A teacup on its saucer with two lumps of sugar and a wisp of steam. Centimetres, y up.

namespace
{

constexpr int kSegments = 48;

const char* const kMaterials = R"(# Materials of teacup.obj.
newmtl porcelain
Kd 0.76 0.75 0.72
Ks 0.5 0.5 0.5
Ns 80

newmtl painted
Kd 1 1 1
Ks 0.5 0.5 0.5
Ns 80
map_Kd porcelain.png

newmtl gold
Kd 0.72 0.5 0.16
Ks 0.9 0.8 0.5
Ns 60

newmtl tea
Kd 0.48 0.2 0.06
Ks 0.6 0.6 0.6
Ns 120

newmtl sugar
Kd 0.8 0.8 0.78

newmtl steam
Kd 0.93 0.95 0.97
)";

// Points of a Bezier curve after its first, as profile points. v runs from v0 to v1, or stays unset when negative.
void AppendCurve(std::vector<LathePoint>& profile, Vec2 a, Vec2 b, Vec2 c, Vec2 d, int spans, const char* material,
                 double v0 = -1, double v1 = -1)
{
    for (int i = 1; i <= spans; ++i)
    {
        const double t = double(i) / spans;
        const Vec2 p = Bezier(a, b, c, d, t);
        profile.push_back({p.x, p.y, i == 1 ? material : nullptr, v0 < 0 ? -1 : v0 + (v1 - v0) * t});
    }
}

void AddSaucer(ObjModel& model)
{
    model.Object("Saucer");
    model.Group("saucer");
    model.Smooth(1);
    std::vector<LathePoint> profile = {
        {2.7, 0.28, "porcelain"}, {2.85, 0.05}, {2.95, 0}, {3.15, 0}, {3.25, 0.06}, {3.4, 0.32}};
    AppendCurve(profile, {3.4, 0.32}, {4.9, 0.45}, {6.2, 0.9}, {7.15, 1.52}, 6, nullptr);
    for (const LathePoint& rim : {LathePoint{7.27, 1.64, "gold"}, {7.25, 1.74}, {7.12, 1.73}, {7.0, 1.66}})
        profile.push_back(rim);
    AppendCurve(profile, {7.0, 1.66}, {6.1, 1.1}, {5.2, 0.75}, {3.6, 0.66}, 7, "porcelain");
    profile.push_back({3.3, 0.6, "gold"});
    profile.push_back({3.1, 0.56});
    profile.push_back({2.2, 0.56, "porcelain"});
    AddLathe(model, profile, kSegments, LatheEnds::Capped);
}

void AddCup(ObjModel& model)
{
    model.Object("Cup");
    model.Group("cup body");
    model.Smooth(2);
    std::vector<LathePoint> profile = {{1.7, 0.86, "porcelain"}, {1.85, 0.6}, {1.95, 0.56}, {2.15, 0.56}, {2.25, 0.62},
                                       {2.2, 0.9, nullptr, 0}};
    AppendCurve(profile, {2.2, 0.9}, {3.75, 1.25}, {3.8, 3.6}, {4.3, 6.2}, 13, "painted", 0, 1);
    for (const LathePoint& rim : {LathePoint{4.34, 6.34, "gold"}, {4.27, 6.43}, {4.17, 6.41}, {4.1, 6.28}})
        profile.push_back(rim);
    AppendCurve(profile, {4.1, 6.28}, {3.6, 4.0}, {3.5, 1.5}, {1.4, 1.2}, 9, "porcelain");
    AddLathe(model, profile, kSegments, LatheEnds::Capped, 4);

    // The surface of the tea: one polygon, at a height where the wall inside has a ring.
    const Vec2 level = Bezier({4.1, 6.28}, {3.6, 4.0}, {3.5, 1.5}, {1.4, 1.2}, 2.0 / 9);
    model.Group("cup tea");
    model.Smooth(0);
    model.Material("tea");
    std::vector<int> surface;
    for (int i = 0; i < kSegments; ++i)
    {
        const double angle = 2 * std::numbers::pi * i / kSegments;
        surface.push_back(model.Vert({level.x * std::cos(angle), level.y, -level.x * std::sin(angle)}));
    }
    model.Face(surface);

    model.Group("cup handle");
    model.Smooth(3);
    model.Material("porcelain");
    std::vector<Vec3> path;
    std::vector<Vec2> radii;
    constexpr int kSpans = 24;
    for (int i = 0; i <= kSpans; ++i)
    {
        const double t = double(i) / kSpans;
        const Vec2 p = t < 0.5 ? Bezier({3.95, 5.55}, {4.9, 6.4}, {6.5, 6.1}, {6.45, 4.6}, 2 * t)
                               : Bezier({6.45, 4.6}, {6.4, 3.2}, {5.1, 3.0}, {3.35, 2.2}, 2 * t - 1);
        path.push_back({p.x, p.y, 0});
        const double flare = std::pow(std::abs(2 * t - 1), 6); // wider where it meets the cup
        radii.push_back({0.27 + 0.12 * flare, 0.37 + 0.12 * flare});
    }
    AddTube(model, path, {0, 0, -1}, radii, 16);
}

void AddSugarAndSteam(ObjModel& model)
{
    model.Object("Extras");
    model.Group("sugar");
    model.Smooth(0);
    model.Material("sugar");
    model.Place({2.2, 1.35, 4.6}, {0.9397, 0, -0.342}, {0, 1, 0}, {0.342, 0, 0.9397});
    AddChamferedBox(model, {0.62, 0.46, 0.62}, 0.07);
    model.Place({3.75, 1.42, 3.7}, {0.848, 0, 0.5299}, {0, 1, 0}, {-0.5299, 0, 0.848});
    AddChamferedBox(model, {0.62, 0.46, 0.62}, 0.07);
    model.Place();

    model.Group("steam");
    model.Material("steam");
    for (int wisp = 0; wisp < 3; ++wisp)
    {
        std::vector<int> line;
        for (int i = 0; i <= 24; ++i)
        {
            const double t = i / 24.0, turn = 2 * std::numbers::pi * (1.15 * t + wisp / 3.0);
            const double width = 0.12 + 0.5 * t * (1 - 0.5 * t);
            line.push_back(model.Vert({(wisp - 1) * 1.3 + width * std::sin(turn), 5.7 + (3.1 + 0.5 * (wisp % 2)) * t,
                                       0.5 * width * std::cos(turn)}));
        }
        model.Line(line);
    }
}

// --- The painted band: cobalt on white, one tile of the pattern; u and v in 0..1, v upwards, seamless in u.

double Stripe(double x, double centre, double halfWidth) { return std::abs(x - centre) <= halfWidth ? 1 : 0; }

double Blossom(double x, double y, double radius)
{
    const double r = std::hypot(x, y) / radius, angle = std::atan2(y, x);
    if (r > 1)
        return 0;
    const double petal = 0.62 + 0.36 * std::abs(std::cos(2.5 * angle)); // five petals
    if (r < 0.17)
        return 0.15;
    if (r < 0.26)
        return 1;
    if (r < petal - 0.1)
        return 0.3 + 0.35 * std::abs(std::sin(2.5 * angle)); // the petal, darker towards the seams
    return r < petal ? 1 : 0;
}

double Leaf(double x, double y, double angle, double length)
{
    const double along = x * std::cos(angle) + y * std::sin(angle);
    const double aside = std::abs(y * std::cos(angle) - x * std::sin(angle));
    if (along < 0 || along > length)
        return 0;
    const double half = 0.19 * length * std::sin(std::numbers::pi * along / length);
    if (aside > half)
        return 0;
    return aside < 0.006 ? 0.2 : 0.75;
}

double Ink(double u, double v)
{
    double ink = 0;
    const auto put = [&ink](double more) { ink = std::max(ink, more); };

    // Borders: lines above and below, a row of lozenges under the rim, scales at the foot.
    put(Stripe(v, 0.965, 0.014));
    put(Stripe(v, 0.83, 0.006));
    const double cell = std::abs(std::fmod(u * 8, 1) - 0.5);
    put(cell / 0.42 + std::abs(v - 0.89) / 0.042 < 1 ? 0.8 : 0);
    put(Stripe(v, 0.3, 0.008));
    if (v < 0.3)
    {
        for (int row = 0; row < 3; ++row)
        {
            const double x = std::fmod(u * 8 + 0.5 * row, 1) - 0.5, y = (v - 0.03 - 0.09 * row) / 0.125;
            const double r = std::hypot(x, y);
            if (y >= -0.2 && r < 0.5)
                ink = r > 0.42 ? 1 : r > 0.3 ? 0.12 : r > 0.2 ? 0.6 : 0.1;
        }
    }

    // One blossom in the middle of the tile, a bud where tiles meet, leaves between on a swinging stem.
    const double x = u - 0.5, y = v - 0.575;
    const double stem = 0.575 + 0.075 * std::sin(2 * std::numbers::pi * u);
    if (std::abs(x) > 0.17)
        put(0.85 * Stripe(v, stem, 0.007));
    for (double angle : {0.45, 2.65, 3.7, 5.7})
        put(Leaf(x - 0.17 * std::cos(angle), y - 0.15 * std::sin(angle), angle, 0.17));
    const double bloom = Blossom(x, y, 0.2);
    if (std::hypot(x, y) < 0.2 && bloom > 0)
        ink = bloom;
    const double budX = u < 0.5 ? u : u - 1, budR = std::hypot(budX, v - 0.575);
    if (budR < 0.05)
        ink = budR > 0.038 ? 1 : 0.4;
    return ink;
}

std::string PaintedBand()
{
    constexpr int kSize = 192, kSamples = 4;
    std::vector<unsigned char> pixels;
    for (int row = 0; row < kSize; ++row)
    {
        for (int column = 0; column < kSize; ++column)
        {
            double sum = 0;
            for (int k = 0; k < kSamples * kSamples; ++k)
                sum += Ink((column + (k % kSamples + 0.5) / kSamples) / kSize,
                           1 - (row + (k / kSamples + 0.5) / kSamples) / kSize);
            pixels.push_back(static_cast<unsigned char>(std::lround(15 * sum / (kSamples * kSamples))));
        }
    }
    std::array<std::array<unsigned char, 3>, 16> palette; // white to cobalt
    for (int i = 0; i < 16; ++i)
        palette[std::size_t(i)] = {static_cast<unsigned char>(243 - 14 * i), static_cast<unsigned char>(241 - 12 * i),
                                   static_cast<unsigned char>(234 - 6 * i)};
    return PngBytes(kSize, kSize, pixels, palette);
}

} // namespace

std::vector<SampleFile> TeacupFiles()
{
    ObjModel model("A teacup on its saucer. Centimetres, y up.", "teacup.mtl");
    AddSaucer(model);
    AddCup(model);
    AddSugarAndSteam(model);
    return {{"teacup.obj", model.Text()}, {"teacup.mtl", kMaterials}, {"porcelain.png", PaintedBand()}};
}
