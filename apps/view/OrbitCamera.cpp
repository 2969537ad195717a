// VelmarBase: viewer.
#include "OrbitCamera.h"

#include <algorithm>
#include <cmath>

namespace vx::view
{

// How far zooming goes from what was framed: beyond it floats have no digits left.
static constexpr float kClosest = 1e-4f, kFarthest = 1e3f;

void OrbitCamera::SetLook(const ViewOptions& look)
{
    mLook = look;
    mLook.zoom = 1;
    SetDirection(look.azimuth, look.elevation);
    SetFov(look.fov);
}

void OrbitCamera::SetDirection(float azimuth, float elevation)
{
    mLook.azimuth = std::remainder(azimuth, 360.0f);
    mLook.elevation = std::clamp(elevation, -90.0f, 90.0f);
}

void OrbitCamera::SetFov(float degrees) { mLook.fov = std::clamp(degrees, 1.0f, 150.0f); }

void OrbitCamera::Orbit(float right, float up) { SetDirection(mLook.azimuth + right, mLook.elevation + up); }

void OrbitCamera::Pan(float right, float up, float height)
{
    const ViewAxes axes(mLook.azimuth, mLook.elevation, mLook.up);
    const float pixel = 2 * mHalfHeight / std::max(height, 1.0f);
    mTarget = mTarget - (axes.right * right + axes.up * up) * pixel;
}

void OrbitCamera::Zoom(float factor, float x, float y)
{
    if (!(factor > 0) || !std::isfinite(factor))
        return;
    const float half = std::clamp(mHalfHeight / factor, kClosest * mFramed, kFarthest * mFramed);
    const ViewAxes axes(mLook.azimuth, mLook.elevation, mLook.up);
    mTarget = mTarget + (axes.right * x + axes.up * y) * (mHalfHeight - half);
    mHalfHeight = half;
}

void OrbitCamera::Frame(std::span<const VERTEX> points, std::span<const VERTEX> around, float aspect)
{
    const View view = FitView(points, around, aspect, mLook);
    mTarget = view.target;
    mFramed = mHalfHeight = view.halfHeight;
}

View OrbitCamera::ViewOf(std::span<const VERTEX> content, float aspect) const
{
    return vx::ViewOf(mTarget, mHalfHeight, content, aspect, mLook);
}

} // namespace vx::view
