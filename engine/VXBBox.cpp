// VelmarBase: engine and scene.
#include "engine/VXBBox.h"

#include <algorithm>
#include <cmath>
#include <utility>

void VXBBox::Set(float minX, float minY, float minZ, float maxX, float maxY, float maxZ)
{
    mMin = {minX, minY, minZ};
    mMax = {maxX, maxY, maxZ};
    mInitialized = true;
}

void VXBBox::Extend(const VERTEX& point)
{
    if (!mInitialized)
    {
        *this = VXBBox(point, point);
        return;
    }
    mMin = {std::min(mMin.x, point.x), std::min(mMin.y, point.y), std::min(mMin.z, point.z)};
    mMax = {std::max(mMax.x, point.x), std::max(mMax.y, point.y), std::max(mMax.z, point.z)};
}

void VXBBox::Extend(const VERTEX* points, int count)
{
    for (int i = 0; i < count; ++i)
        Extend(points[i]);
}

void VXBBox::Extend(const VXBBox& box)
{
    if (!box.mInitialized)
        return;
    const VERTEX max = box.mMax; // `box` may be this one
    Extend(box.mMin);
    Extend(max);
}

void VXBBox::Offset(float dx, float dy, float dz)
{
    if (!mInitialized)
        return;
    mMin += {dx, dy, dz};
    mMax += {dx, dy, dz};
}

void VXBBox::Scale(float sx, float sy, float sz)
{
    if (!mInitialized)
        return;
    const VERTEX centre = (mMin + mMax) * 0.5f;
    const VERTEX size = mMax - mMin;
    const VERTEX half = {size.x * sx * 0.5f, size.y * sy * 0.5f, size.z * sz * 0.5f};
    mMin = centre - half;
    mMax = centre + half;
}

void VXBBox::Transform(const Mat44 m)
{
    if (!mInitialized)
        return;
    // Each output axis is a sum of one term for each input axis, and each term is extreme at one of the two corners:
    // so no corner needs transforming.
    const float oldMin[3] = {mMin.x, mMin.y, mMin.z};
    const float oldMax[3] = {mMax.x, mMax.y, mMax.z};
    float newMin[3], newMax[3];
    for (int axis = 0; axis < 3; ++axis)
    {
        newMin[axis] = newMax[axis] = m[3][axis];
        for (int i = 0; i < 3; ++i)
        {
            const float a = m[i][axis] * oldMin[i];
            const float b = m[i][axis] * oldMax[i];
            newMin[axis] += std::min(a, b);
            newMax[axis] += std::max(a, b);
        }
    }
    Set(newMin[0], newMin[1], newMin[2], newMax[0], newMax[1], newMax[2]);
}

// One axis of the slab test: narrows tNear..tFar to the stretch between the two planes.
static bool ClipToSlab(float dir, float origin, float min, float max, float& tNear, float& tFar)
{
    if (std::fabs(double(dir)) <= 1e-6) // parallel: inside for all t or for none
        return origin >= min && origin <= max;
    const float scale = 1.0f / dir;
    float t1 = (min - origin) * scale;
    float t2 = (max - origin) * scale;
    if (t1 > t2)
        std::swap(t1, t2);
    tNear = std::max(tNear, t1);
    tFar = std::min(tFar, t2);
    return !(tNear > tFar || tNear < 0);
}

bool VXBBox::Intersect(const VERTEX& dir, const VERTEX& origin, float& tNear, float& tFar) const
{
    return ClipToSlab(dir.x, origin.x, mMin.x, mMax.x, tNear, tFar) &&
           ClipToSlab(dir.y, origin.y, mMin.y, mMax.y, tNear, tFar) &&
           ClipToSlab(dir.z, origin.z, mMin.z, mMax.z, tNear, tFar);
}
