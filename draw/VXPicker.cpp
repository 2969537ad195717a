#include "draw/VXPicker.h"

#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "mesh/VXGeom.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

// How far, along either side, the middle of a pixel that shows a polygon may be from a point of the polygon's rim: a
// rim that is seen has such a pixel beside it.
static constexpr double kNextTo = 1.5;

/// A pixel that shows a polygon.
struct VXPicker::Seen
{
    std::uint32_t name;
    std::int32_t x, y;
};

/// Where something is looked for, and the best that was found.
struct VXPicker::Place
{
    double x, y, radius;
    double best = INFINITY; ///< squared distance
    VXPickHit hit;

    bool Take(double distance, const Point& point, const VXPickHit& on, std::int32_t a, std::int32_t b);
};

bool VXPicker::Place::Take(double distance, const Point& point, const VXPickHit& on, std::int32_t a, std::int32_t b)
{
    const float depth = float(point.depth);
    if (hit && std::tie(distance, depth, on.object, on.polygon) >= std::tie(best, hit.depth, hit.object, hit.polygon))
        return false;
    best = distance;
    hit = on;
    hit.x = float(point.x);
    hit.y = float(point.y);
    hit.depth = depth;
    hit.verts[0] = a;
    hit.verts[1] = b;
    return true;
}

/// A geometry as it stands in the picture.
class VXPicker::Surface
{
public:
    Surface(const VXPicker& picker, const VXPickHit& hit) : mPicker(picker), mGeom(picker.GeomOf(hit))
    {
        MAT_Concat4x4(picker.mScene.Object(hit.object)->GetTransform(), picker.mToView, mToClip);
        MAT_Concat4x4(mToClip, picker.mProjection, mToClip);
    }

    const VXGeom* Geom() const { return mGeom; }

    struct Clip
    {
        double x, y, z, w;
        double Near() const { return z + w; } ///< negative: behind the near plane
    };
    Clip ClipOf(std::int32_t vertex) const
    {
        const VERTEX& p = mGeom->Verts()[vertex];
        const auto column = [&](int c) {
            return double(p.x) * mToClip[0][c] + double(p.y) * mToClip[1][c] + double(p.z) * mToClip[2][c] +
                   mToClip[3][c];
        };
        return {column(0), column(1), column(2), column(3)};
    }
    Point ScreenOf(const Clip& clip) const
    {
        return {(0.5 + 0.5 * clip.x / clip.w) * mPicker.mWidth, (0.5 - 0.5 * clip.y / clip.w) * mPicker.mHeight,
                0.5 + 0.5 * clip.z / clip.w};
    }

private:
    const VXPicker& mPicker;
    const VXGeom* mGeom;
    Mat44 mToClip;
};

VXPicker::VXPicker(const VXPickBuffer& buffer, const VXScene& scene, const Mat44 toView, const Mat44 projection,
                   int width, int height)
    : mBuffer(buffer), mScene(scene), mWidth(width), mHeight(height)
{
    MAT_Copy(toView, mToView);
    MAT_Copy(projection, mProjection);
}

VXGeom* VXPicker::GeomOf(const VXPickHit& hit) const
{
    const bool polygon = hit.drawGeom >= 0 && hit.object >= 0 && hit.object < mScene.NumObjects();
    const VXObject* const object = polygon ? mScene.Object(hit.object) : nullptr;
    VXGeom* const geom = object ? object->DrawGeom(E_DrawGeom(hit.drawGeom)) : nullptr;
    return geom && hit.polygon < geom->NumPolys() ? geom : nullptr;
}

// --- By the flags

VXPickHit VXPicker::At(int x, int y, float radius) const
{
    VXPickHit hit;
    if (mScene.PickVerts())
        hit = VertexAt(x, y, radius);
    if (!hit && mScene.PickEdges())
        hit = EdgeAt(x, y, radius);
    if (hit || !(mScene.PickPolys() || mScene.PickObject()))
        return hit;
    hit = mBuffer.At(x, y);
    if (hit && !mScene.PickPolys())
        hit.kind = VXPickKind::Object;
    return hit;
}

// --- Edges and vertices

int VXPicker::ReachOf(float radius)
{
    return int(std::ceil(radius >= 0 ? std::min(radius, kMostRadius) : 0.0f)) + 2; // 0 for what is no number, too
}

// The pixels around the place that show polygons, by name.
bool VXPicker::GatherSeen(int x, int y, float radius, BArray<Seen>& seen) const
{
    const std::int64_t reach = ReachOf(radius);
    const auto within = [reach](int at, int low, int count, int& from, int& to)
    {
        from = int(std::max<std::int64_t>(at - reach, low));
        to = int(std::min<std::int64_t>(at + reach + 1, low + count));
    };
    int left, right, top, bottom;
    within(x, mBuffer.Left(), mBuffer.Width(), left, right);
    within(y, mBuffer.Top(), mBuffer.Height(), top, bottom);
    for (int py = top; py < bottom; ++py)
        for (int px = left; px < right; ++px)
            if (const std::uint32_t name = mBuffer.NameAt(px, py); name && !seen.Append({name, px, py}))
                return false;
    std::sort(seen.begin(), seen.end(),
              [](const Seen& a, const Seen& b) { return std::tie(a.name, a.y, a.x) < std::tie(b.name, b.y, b.x); });
    return true;
}

VXPickHit VXPicker::Search(int x, int y, float radius,
                           void (VXPicker::*step)(const Seen*, const Seen*, Place&) const) const
{
    BArray<Seen> seen;
    if (!(radius >= 0) || !GatherSeen(x, y, radius, seen))
        return {};
    Place place{x + 0.5, y + 0.5, double(std::min(radius, kMostRadius)), INFINITY, {}};
    for (const Seen* from = seen.begin(); from != seen.end();)
    {
        const Seen* const to = std::find_if(from, static_cast<const Seen*>(seen.end()),
                                            [&](const Seen& s) { return s.name != from->name; });
        (this->*step)(from, to, place);
        from = to;
    }
    return place.hit;
}

VXPickHit VXPicker::VertexAt(int x, int y, float radius) const
{
    VXPickHit hit = Search(x, y, radius, &VXPicker::SearchVertices);
    if (hit)
        hit.kind = VXPickKind::Vertex;
    return hit;
}

VXPickHit VXPicker::EdgeAt(int x, int y, float radius) const
{
    VXPickHit hit = Search(x, y, radius, &VXPicker::SearchEdges);
    if (!hit)
        return hit;
    hit.kind = VXPickKind::Edge;
    if (hit.verts[0] > hit.verts[1]) // whichever polygon it was found on
        std::swap(hit.verts[0], hit.verts[1]);
    const VXEdgeList& edges = GeomOf(hit)->EdgeList();
    if (hit.verts[0] < edges.GetVertexLinkCount())
        hit.edge = edges.FindEdge(hit.verts[0], hit.verts[1], hit.polygon);
    return hit;
}

static bool HasCorner(const GEOM& record, std::int32_t poly, std::int32_t vertex)
{
    const std::int32_t* const corners = record.sets + record.Poly(poly)->start;
    const std::int32_t* const end = corners + record.Poly(poly)->length;
    return vertex < 0 || std::find(corners, end, vertex) != end;
}

// Whether nothing lies before a point of the rim of polygon `on`, which is at vertex a, or between a and b. The pixel
// that it is in decides: it may show what lies behind the point, or a polygon that shares the rim, but no other.
bool VXPicker::Shows(const Point& point, const VXGeom& geom, const VXPickHit& on, std::int32_t a, std::int32_t b) const
{
    const VXPickHit there = mBuffer.At(int(std::floor(point.x)), int(std::floor(point.y)));
    if (!there || double(there.depth) >= point.depth)
        return true;
    return there.object == on.object && there.drawGeom == on.drawGeom &&
           (there.polygon == on.polygon ||
            (HasCorner(*geom.Geom(), there.polygon, a) && HasCorner(*geom.Geom(), there.polygon, b)));
}

void VXPicker::SearchVertices(const Seen* from, const Seen* to, Place& place) const
{
    const VXPickHit on = mBuffer.At(from->x, from->y);
    const Surface surface(*this, on);
    if (!surface.Geom())
        return;
    const GEOM& record = *surface.Geom()->Geom();
    const ELEMENT& poly = *record.Poly(on.polygon);
    for (std::int32_t k = 0; k < poly.length; ++k)
    {
        const std::int32_t vertex = record.sets[poly.start + k];
        const Surface::Clip clip = surface.ClipOf(vertex);
        if (!(clip.Near() >= 0) || !(clip.w > 0))
            continue;
        const Point point = surface.ScreenOf(clip);
        const double dx = point.x - place.x, dy = point.y - place.y, distance = dx * dx + dy * dy;
        if (!(distance <= place.radius * place.radius) || distance > place.best)
            continue;
        const bool beside = std::any_of(from, to,
                                        [&](const Seen& s) {
                                            return std::fabs(s.x + 0.5 - point.x) <= kNextTo &&
                                                   std::fabs(s.y + 0.5 - point.y) <= kNextTo;
                                        });
        if (beside && Shows(point, *surface.Geom(), on, vertex, -1))
            place.Take(distance, point, on, vertex, -1);
    }
}

namespace
{
/// An edge in the picture, from a to b.
struct Segment
{
    double ax, ay, az, bx, by, bz;

    double Length() const { return std::hypot(bx - ax, by - ay); }
    double X(double t) const { return ax + t * (bx - ax); }
    double Y(double t) const { return ay + t * (by - ay); }
    double Depth(double t) const { return az + t * (bz - az); } // depth is linear in the picture
    /// Where it comes closest to a place: 0 at a, 1 at b.
    double Closest(double x, double y) const
    {
        const double dx = bx - ax, dy = by - ay, square = dx * dx + dy * dy;
        return square > 0 ? std::clamp(((x - ax) * dx + (y - ay) * dy) / square, 0.0, 1.0) : 0;
    }
    double SquareFrom(double t, double x, double y) const { return (X(t) - x) * (X(t) - x) + (Y(t) - y) * (Y(t) - y); }
};
} // namespace

void VXPicker::SearchEdges(const Seen* from, const Seen* to, Place& place) const
{
    const VXPickHit on = mBuffer.At(from->x, from->y);
    const Surface surface(*this, on);
    if (!surface.Geom())
        return;
    const GEOM& record = *surface.Geom()->Geom();
    const ELEMENT& poly = *record.Poly(on.polygon);
    const std::int32_t* const corners = record.sets + poly.start;
    for (std::int32_t k = 0; k < poly.length; ++k)
    {
        const std::int32_t a = corners[k], b = corners[k + 1 < poly.length ? k + 1 : 0];
        Surface::Clip clipA = surface.ClipOf(a), clipB = surface.ClipOf(b);
        const double nearA = clipA.Near(), nearB = clipB.Near();
        if (a == b || !(std::max(nearA, nearB) > 0))
            continue;
        const auto cut = [](const Surface::Clip& p, const Surface::Clip& q, double t) {
            return Surface::Clip{p.x + t * (q.x - p.x), p.y + t * (q.y - p.y), p.z + t * (q.z - p.z),
                                 p.w + t * (q.w - p.w)};
        };
        if (nearA < 0)
            clipA = cut(clipA, clipB, nearA / (nearA - nearB));
        else if (nearB < 0)
            clipB = cut(clipB, clipA, nearB / (nearB - nearA));
        const Point pa = surface.ScreenOf(clipA), pb = surface.ScreenOf(clipB);
        const Segment segment{pa.x, pa.y, pa.depth, pb.x, pb.y, pb.depth};
        const double closest = segment.Closest(place.x, place.y), length = segment.Length();
        const double least = segment.SquareFrom(closest, place.x, place.y);
        if (!(least <= place.radius * place.radius) || least > place.best)
            continue;
        // Of the stretches beside pixels that show the polygon, the one that comes closest to the place.
        for (const Seen* s = from; s != to; ++s)
        {
            const double beside = segment.Closest(s->x + 0.5, s->y + 0.5), reach = length > 0 ? kNextTo / length : 0;
            if (segment.SquareFrom(beside, s->x + 0.5, s->y + 0.5) > kNextTo * kNextTo)
                continue;
            const double t = std::clamp(closest, std::max(beside - reach, 0.0), std::min(beside + reach, 1.0));
            const double distance = segment.SquareFrom(t, place.x, place.y);
            const Point point{segment.X(t), segment.Y(t), segment.Depth(t)};
            if (distance <= place.radius * place.radius && distance <= place.best &&
                Shows(point, *surface.Geom(), on, a, b))
                place.Take(distance, point, on, a, b);
        }
    }
}

// --- Places in space

// In double, and by way of the view: a camera that stands far away leaves few digits to a product with its matrix.
VERTEX VXPicker::SeenFromEye(const VXPickHit& hit) const
{
    const double x = 2.0 * hit.x / mWidth - 1, y = 1 - 2.0 * hit.y / mHeight, depth = 2.0 * double(hit.depth) - 1;
    const Mat44& p = mProjection;
    // depth = (z p22 + p32) / (z p23 + p33)
    const double z = (depth * p[3][3] - p[3][2]) / (p[2][2] - depth * p[2][3]);
    const double w = z * p[2][3] + p[3][3];
    return {float((x * w - z * p[2][0] - p[3][0]) / p[0][0]), float((y * w - z * p[2][1] - p[3][1]) / p[1][1]),
            float(z)};
}

float VXPicker::DistanceOf(const VXPickHit& hit) const { return hit ? -SeenFromEye(hit).z : 0; }

VERTEX VXPicker::PositionOf(const VXPickHit& hit) const
{
    VERTEX place;
    if (!hit)
        return place;
    if (const VXGeom* const geom = hit.kind == VXPickKind::Vertex ? GeomOf(hit) : nullptr)
    {
        MAT_VertTransform(geom->Verts() + hit.verts[0], &place, 1, mScene.Object(hit.object)->GetTransform());
        return place;
    }
    Mat44 toWorld;
    MAT_Inverse(mToView, toWorld);
    place = SeenFromEye(hit);
    MAT_VertTransform(&place, &place, 1, toWorld);
    return place;
}
