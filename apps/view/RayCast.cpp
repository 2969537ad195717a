// VelmarBase: viewer.
#include "RayCast.h"

#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "mesh/VXGeom.h"

#include <cmath>

namespace vx::view
{

Ray RayThrough(const View& view, float x, float y)
{
    Mat44 toClip, toWorld;
    MAT_Concat4x4(view.toView, view.projection, toClip);
    MAT_Inverse(toClip, toWorld);
    VERTEX ends[2];
    for (int i = 0; i < 2; ++i)
    {
        const float clip[3] = {2 * x - 1, 1 - 2 * y, i == 0 ? -1.0f : 0.5f};
        float world[4];
        for (int c = 0; c < 4; ++c)
            world[c] = clip[0] * toWorld[0][c] + clip[1] * toWorld[1][c] + clip[2] * toWorld[2][c] + toWorld[3][c];
        ends[i] = {world[0] / world[3], world[1] / world[3], world[2] / world[3]};
    }
    const VERTEX along = ends[1] - ends[0];
    return {ends[0], along * (1 / Length(along))};
}

namespace
{

struct Vector
{
    double x, y, z;
};

// Positions as seen along a ray: across it, and how far along. The ray is the origin of the first two.
class AlongRay
{
public:
    explicit AlongRay(const Ray& ray) : mRay(ray)
    {
        const VERTEX& d = ray.direction;
        const VERTEX across = std::fabs(d.x) < 0.6f ? VERTEX{1, 0, 0} : VERTEX{0, 1, 0};
        mRight = Cross(d, across);
        mRight = mRight * (1 / Length(mRight));
        mUp = Cross(d, mRight);
    }
    Vector operator()(const VERTEX& world) const
    {
        const VERTEX from = world - mRay.origin;
        return {Dot(from, mRight), Dot(from, mUp), Dot(from, mRay.direction)};
    }

private:
    Ray mRay;
    VERTEX mRight, mUp;
};

// Whether the ray goes through a polygon, and how far away: its corners as seen along the ray. The even-odd rule, which
// takes exactly one of two neighbours whose edge it meets. The polygon's plane is Newell's, through the mean corner.
class PolygonOnRay
{
public:
    void Begin()
    {
        mInside = false;
        mNormal = mMiddle = {0, 0, 0};
        mCount = 0;
    }
    void Edge(const Vector& a, const Vector& b)
    {
        if ((a.y > 0) != (b.y > 0) && (b.x - a.x) * (0 - a.y) / (b.y - a.y) + a.x > 0)
            mInside = !mInside;
        mNormal.x += (a.y - b.y) * (a.z + b.z);
        mNormal.y += (a.z - b.z) * (a.x + b.x);
        mNormal.z += (a.x - b.x) * (a.y + b.y);
        mMiddle = {mMiddle.x + a.x, mMiddle.y + a.y, mMiddle.z + a.z};
        ++mCount;
    }
    bool Inside() const { return mInside && mNormal.z != 0; }
    bool TurnsAway() const { return mNormal.z > 0; } // along the ray
    double Distance() const
    {
        return (mNormal.x * mMiddle.x + mNormal.y * mMiddle.y + mNormal.z * mMiddle.z) / (mNormal.z * mCount);
    }

private:
    bool mInside = false;
    Vector mNormal{}, mMiddle{};
    int mCount = 0;
};

} // namespace

static void CastOnto(const VXGeom& mesh, const Mat44 toWorld, const AlongRay& along, bool backFaces, RayHit& nearest,
                     int object)
{
    const GEOM& record = *mesh.Geom();
    BArray<Vector> seen;
    if (!seen.SetCount(record.numVerts))
        return;
    for (std::int32_t v = 0; v < record.numVerts; ++v)
    {
        VERTEX world;
        MAT_VertTransform(record.verts + v, &world, 1, toWorld);
        seen[v] = along(world);
    }
    PolygonOnRay polygon;
    for (std::int32_t p = 0; p < record.numPolys; ++p)
    {
        const ELEMENT& poly = *record.Poly(p);
        if (!poly.IsFace() || poly.IsHidden() || poly.length < 3)
            continue;
        const std::int32_t* const ring = record.sets + poly.start;
        polygon.Begin();
        for (std::int32_t k = 0, last = poly.length - 1; k < poly.length; last = k++)
            polygon.Edge(seen[ring[last]], seen[ring[k]]);
        if (!polygon.Inside() || (polygon.TurnsAway() && !backFaces))
            continue;
        const double distance = polygon.Distance();
        if (distance >= 0 && (nearest.object < 0 || distance < nearest.distance))
            nearest = {object, int(p), distance};
    }
}

RayHit CastRay(const VXScene& scene, const Ray& ray, bool backFaces)
{
    const AlongRay along(ray);
    RayHit nearest;
    for (std::int64_t i = 0; i < scene.NumObjects(); ++i)
    {
        const VXObject* const object = scene.Object(int(i));
        if (!object || !object->Visible() || object->InternalName() == "GROUND")
            continue;
        if (const VXGeom* const shown = object->CurSubdivGeom(true); shown && shown->Geom())
            CastOnto(*shown, object->GetTransform(), along, backFaces, nearest, int(i));
    }
    return nearest;
}

} // namespace vx::view
