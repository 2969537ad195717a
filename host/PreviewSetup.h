// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BArray.h"
#include "base/MAT.h"
#include "base/Vertex.h"

#include <span>

class VXObject;
class VXScene;

namespace vx
{
enum class UpAxis
{
    Y, ///< the front of a model looks along +z
    Z, ///< the front of a model looks along -y
};

/// From where, and how, a scene is looked at.
struct ViewOptions
{
    float azimuth = 35;   ///< degrees: 0 is the front, positive walks round to the model's left, the picture's right
    float elevation = 20; ///< degrees above the horizon
    float zoom = 1;       ///< 2: everything appears twice as large
    float fov = 30;       ///< full vertical angle in degrees
    bool ortho = false;   ///< parallel projection
    UpAxis up = UpAxis::Y;
    float fill = 0.83f; ///< how much of the picture the content fills, along the side that it fills first
};

/// A camera: where it stands, and its matrices.
struct View
{
    Mat44 toView;       ///< world to view: x right, y up, z to the viewer
    Mat44 projection;   ///< view to clip space
    VERTEX target;      ///< what it looks at
    float distance = 1; ///< from the target
    float nearest = 0.1f, farthest = 10;
    float halfHeight = 1; ///< of the picture, at the distance of the target
};

VELMAR_HOST_EXPORT VERTEX UpOf(UpAxis axis);

/// The viewer's axes in world space, unit vectors. Straight from above is a direction like any other.
struct VELMAR_HOST_EXPORT ViewAxes
{
    VERTEX right, up, back;

    ViewAxes(float azimuth, float elevation, UpAxis axis); ///< degrees, as in ViewOptions
    VERTEX Seen(const VERTEX& p) const { return {Dot(p, right), Dot(p, up), Dot(p, back)}; }
};

/// The view in which the points just fill the picture, centred. Points that are not finite are ignored; without any
/// the unit box is framed. Exact for the points themselves, linear in their number.
/// @param points   world space, what must be seen
/// @param around   world space, what must not be cut off by the near and far planes either, such as the ground
/// @param aspect   width / height of the picture
VELMAR_HOST_EXPORT View FitView(std::span<const VERTEX> points, std::span<const VERTEX> around, float aspect,
                                const ViewOptions& options);

/// The view of a target from the direction that the options give; their zoom and fill do not count. For cameras that
/// are moved by hand. The near and far planes enclose the points, as far as depth keeps its digits.
/// @param halfHeight of the picture at the target; the distance from the target follows from it
VELMAR_HOST_EXPORT View ViewOf(const VERTEX& target, float halfHeight, std::span<const VERTEX> points, float aspect,
                               const ViewOptions& options);

/// The part of a projection that a tile of the picture shows, blown up to fill clip space. `out` may be `whole`.
/// @param x, y, width, height of the tile, in 0..1 of the picture, from the lower left
VELMAR_HOST_EXPORT void TileProjection(const Mat44 whole, float x, float y, float width, float height, Mat44 out);

/// The corners of all faces, lines and points of the scene's visible objects, in world space. The ground is left out.
/// @param cages with those of the control meshes of subdivided objects  @return false when memory ran out
VELMAR_HOST_EXPORT bool VisiblePoints(const VXScene& scene, BArray<VERTEX>& points, bool cages = false);

/// Stores the view in the scene's current camera, which is made when there is none.
VELMAR_HOST_EXPORT void PlaceCamera(VXScene& scene, const View& view);

/// Gives the scene the three lights of the standard set, fixed to the view; those made by an earlier call are moved.
/// Other lights of the scene stay as they are.
VELMAR_HOST_EXPORT void PlaceLights(VXScene& scene, const View& view);

/// A round plane named "GROUND" under the scene's visible objects, which fades towards its rim. Takes the place of one
/// made before. Null when memory ran out or there is nothing to stand on it.
VELMAR_HOST_EXPORT VXObject* AddGround(VXScene& scene, UpAxis up);
VELMAR_HOST_EXPORT void RemoveGround(VXScene& scene);

/// Colours of the scene that make the standard look: lines, background, shadow.
VELMAR_HOST_EXPORT void SetStandardColors(VXScene& scene, const VERTEX& backgroundTop, const VERTEX& backgroundBottom);
} // namespace vx
