// VelmarBase: reference host.
#pragma once

#include "host/PreviewSetup.h"

namespace vx
{
/// A camera that goes round a model at one distance, so that the model turns without growing or wandering: the view is
/// fitted to all that the points sweep on their way round the vertical line through the middle of their bounds.
class VELMAR_HOST_EXPORT Turntable
{
public:
    /// @param points, around, aspect, options as FitView takes them
    Turntable(std::span<const VERTEX> points, std::span<const VERTEX> around, float aspect, const ViewOptions& options);

    View At(float degrees) const; ///< from further round, as the azimuth of the options counts

private:
    UpAxis mUp;
    VERTEX mMiddle; ///< on the axis
    View mView;     ///< at 0 degrees
};
} // namespace vx
