// VelmarBase: reference host.
#pragma once

namespace vx
{
/// How a background picture of another shape than the picture drawn is placed.
enum class PictureFit
{
    Crop, ///< covers all, its longer side cut off
    Fit,  ///< all of it is seen, the plain background beside it
};

/// Ambient occlusion: whether and how finely.
enum class OcclusionQuality
{
    Off,
    Half, ///< found at half the resolution: for moving views
    Full,
};
} // namespace vx
