#include "host/Turntable.h"

#include <algorithm>
#include <cmath>

namespace vx
{
// Sides of the rings that stand for circles. They cut off a thousandth of the radius, less than a pixel of a picture.
static constexpr int kSides = 64;

namespace
{
/// A point of the outline that turning leaves: how far from the axis, and how high.
struct Profile
{
    double radius, height;
};

double Height(const VERTEX& p, UpAxis up) { return up == UpAxis::Z ? p.z : p.y; }

Profile ProfileOf(const VERTEX& p, const VERTEX& middle, UpAxis up)
{
    const VERTEX d = p - middle;
    return {up == UpAxis::Z ? std::hypot(double(d.x), double(d.y)) : std::hypot(double(d.x), double(d.z)),
            Height(d, up)};
}

// Of all the points only the outer hull of the outline can touch a side of the picture. A. Andrew's scan, 1979.
BArray<Profile> HullOf(std::span<const VERTEX> points, const VERTEX& middle, UpAxis up)
{
    BArray<Profile> all, hull;
    if (!all.Reserve(std::int64_t(points.size())) || !hull.Reserve(std::int64_t(points.size())))
        return hull;
    for (const VERTEX& p : points)
        if (IsFinite(p))
            all.Append(ProfileOf(p, middle, up));
    std::sort(all.begin(), all.end(),
              [](const Profile& a, const Profile& b)
              { return a.height != b.height ? a.height < b.height : a.radius < b.radius; });
    std::int64_t count = 0;
    for (const Profile& p : all)
    {
        const auto bentIn = [&](const Profile& a, const Profile& b)
        { return (b.radius - a.radius) * (p.height - a.height) <= (p.radius - a.radius) * (b.height - a.height); };
        while (count >= 2 && bentIn(hull[count - 2], hull[count - 1]))
            --count;
        if (count < hull.Count())
            hull[count] = p;
        else
            hull.Append(p);
        ++count;
    }
    hull.SetCount(count);
    return hull;
}

BArray<VERTEX> SweptBy(std::span<const VERTEX> points, const VERTEX& middle, const ViewOptions& options)
{
    BArray<VERTEX> swept;
    for (const Profile& p : HullOf(points, middle, options.up))
        for (int k = 0; k < kSides; ++k)
        {
            // From where the viewer stands, so that the rings are even to the picture's left and right.
            const double angle = (options.azimuth / 360.0 + double(k) / kSides) * 6.283185307179586;
            const float a = float(p.radius * std::sin(angle)), b = float(p.radius * std::cos(angle)),
                        h = float(p.height);
            swept.Append(middle + (options.up == UpAxis::Z ? VERTEX{a, -b, h} : VERTEX{a, h, b}));
        }
    return swept;
}

VERTEX MiddleOf(std::span<const VERTEX> points)
{
    VERTEX low{INFINITY, INFINITY, INFINITY}, high = -low;
    for (const VERTEX& p : points)
        if (IsFinite(p))
        {
            low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
            high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
        }
    return low.x <= high.x ? low * 0.5f + high * 0.5f : VERTEX();
}
} // namespace

Turntable::Turntable(std::span<const VERTEX> points, std::span<const VERTEX> around, float aspect,
                     const ViewOptions& options)
    : mUp(options.up), mMiddle(MiddleOf(points))
{
    const BArray<VERTEX> swept = SweptBy(points, mMiddle, options), ground = SweptBy(around, mMiddle, options);
    mView = FitView({swept.Data(), std::size_t(swept.Count())}, {ground.Data(), std::size_t(ground.Count())}, aspect,
                    options);
}

View Turntable::At(float degrees) const
{
    const float radians = std::remainder(degrees, 360.0f) * 0.017453293f;
    View view = mView;
    // The world turns back before the camera that stands still.
    Mat44 turn;
    MAT_Identity(turn);
    MAT_Translate(turn, -mMiddle.x, -mMiddle.y, -mMiddle.z);
    mUp == UpAxis::Z ? MAT_RotateZ(turn, -radians) : MAT_RotateY(turn, -radians);
    MAT_Translate(turn, mMiddle.x, mMiddle.y, mMiddle.z);
    MAT_Concat4x4(turn, mView.toView, view.toView);
    Mat44 back;
    if (MAT_Inverse(turn, back))
        MAT_VertTransform(&mView.target, &view.target, 1, back);
    return view;
}
} // namespace vx
