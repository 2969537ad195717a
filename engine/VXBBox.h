// VelmarBase: engine and scene.
#pragma once

#include "VelmarExport.h"
#include "base/MAT.h"
#include "base/Vertex.h"

/// An axis-aligned box that knows whether anything has been put into it. An uninitialised box is empty: moving, scaling
/// and transforming leave it so.
class VELMAR_EXPORT VXBBox
{
public:
    VXBBox() = default;
    VXBBox(const VERTEX& min, const VERTEX& max) : mMin(min), mMax(max), mInitialized(true) {}

    bool Initialized() const { return mInitialized; }
    const VERTEX& Min() const { return mMin; } ///< zero while not initialised
    const VERTEX& Max() const { return mMax; }

    void Set(float minX, float minY, float minZ, float maxX, float maxY, float maxZ);
    void Extend(const VERTEX& point);
    void Extend(const VERTEX* points, int count);
    void Extend(const VXBBox& box); ///< nothing for an uninitialised box
    void Offset(float dx, float dy, float dz);
    void Scale(float sx, float sy, float sz); ///< about the centre; a negative factor swaps the corners' coordinates
    void Transform(const Mat44 m);            ///< becomes the axis-aligned box of the transformed box; m is affine

    /// Slab test of the ray origin + t dir.
    /// @param tNear in: where the ray starts; must not be negative, callers pass 0, because an axis fails at once when
    ///              its entry lies before 0. out: where the ray enters
    /// @param tFar in: where the ray ends. out: where it leaves
    /// @return false when the ray misses; both are then half done
    bool Intersect(const VERTEX& dir, const VERTEX& origin, float& tNear, float& tFar) const;

private:
    VERTEX mMin;
    VERTEX mMax;
    bool mInitialized = false;
};
