// VelmarBase: viewer.
#pragma once

#include "host/PreviewSetup.h"

namespace vx::view
{

/// A camera that a hand moves around what it looks at. Upright always: the horizon stays level. Parallel and
/// perspective pictures of one camera show its target equally large.
class OrbitCamera
{
public:
    /// Direction, angle of view, projection, up axis; zoom stays 1.
    const ViewOptions& Look() const { return mLook; }
    const VERTEX& Target() const { return mTarget; }
    float HalfHeight() const { return mHalfHeight; } ///< of the picture, at the target

    void SetLook(const ViewOptions& look);             ///< its zoom does not count
    void SetDirection(float azimuth, float elevation); ///< degrees, as in ViewOptions
    void SetOrtho(bool on) { mLook.ortho = on; }
    void SetFov(float degrees); ///< the target stays as large as it is
    void SetUp(UpAxis up) { mLook.up = up; }

    void Orbit(float right, float up);             ///< walks round the target by so many degrees
    void Pan(float right, float up, float height); ///< moves the picture by pixels; height of the picture in pixels
    /// 2 shows everything twice as large. What is at this place of the target's plane stays there.
    /// @param x, y from the middle of the picture, in halves of its height, y up
    void Zoom(float factor, float x = 0, float y = 0);
    /// Looks at the middle of the points from where they just fill the picture. `around` as in FitView.
    void Frame(std::span<const VERTEX> points, std::span<const VERTEX> around, float aspect);

    /// @param content what the near and far planes enclose
    View ViewOf(std::span<const VERTEX> content, float aspect) const;

private:
    ViewOptions mLook;
    VERTEX mTarget;
    float mHalfHeight = 1;
    float mFramed = 1; ///< half height of the last frame: zooming keeps within sight of it
};

} // namespace vx::view
