// VelmarBase: viewer.
#pragma once

#include "host/PreviewSetup.h"

class VXScene;

namespace vx::view
{

/// A line of sight, world space.
struct Ray
{
    VERTEX origin, direction; ///< of unit length
};

/// What is behind a place of a picture, from the near plane on.
/// @param x, y from the left and from the top, 0..1
Ray RayThrough(const View& view, float x, float y);

/// The nearest polygon on a ray.
struct RayHit
{
    int object = -1; ///< of the scene; -1 for none
    int poly = -1;   ///< of the mesh that the object shows
    double distance = 0;
};

/// Looks at all faces that are shown, polygons of any shape included. Linear in them.
/// @param backFaces those that turn away count too
RayHit CastRay(const VXScene& scene, const Ray& ray, bool backFaces);

} // namespace vx::view
