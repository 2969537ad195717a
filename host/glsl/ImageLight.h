// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/Vertex.h"

namespace vx
{
/// Diffuse light of an image all around, added to the quadratic forms that the uniform block of a frame carries: light
/// on a normal n is (n, 1) M (n, 1) for each of red, green and blue.
///
/// The nine colours of an image light are read as its radiance in spherical harmonics of the second order, linear, in
/// the frame of the light: constant; y, z, x; xy, yz, 3z^2 - 1, xz, x^2 - y^2, with the usual factors. So a first
/// colour of 3.545 and eight of zero light everything by 1.
/// After R. Ramamoorthi and P. Hanrahan, An Efficient Representation for Irradiance Environment Maps, 2001.
/// @param colors    nine times red, green, blue
/// @param axes      of the light, unit length, as the viewer sees them
/// @param strength  factor of red, green and blue
/// @param forms     one symmetric matrix for each of red, green and blue
VELMAR_HOST_EXPORT void AddImageLight(const float* colors, const VERTEX axes[3], const VERTEX& strength,
                                      float forms[3][16]);
} // namespace vx
