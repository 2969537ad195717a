// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"
#include "base/Vertex.h"

#include <bit>
#include <cstdint>

/// @file
/// 4x4 float matrices as plain arrays `float[4][4]`: row vectors (p' = p M), so the translation is row 3, and a chain
/// of matrices reads left to right in the order in which they apply.

using Mat44 = float[4][4];

FENWICK_EXPORT void MAT_Identity(Mat44 m);
FENWICK_EXPORT void MAT_Copy(const Mat44 from, Mat44 to);

/// out = a b: applies a first, then b. `out` may be a or b.
FENWICK_EXPORT void MAT_Concat4x4(const Mat44 a, const Mat44 b, Mat44 out);

FENWICK_EXPORT void MAT_Translate(Mat44 m, float x, float y, float z); ///< m := m times the translation
FENWICK_EXPORT void MAT_Scale(Mat44 m, float x, float y, float z);     ///< m := m times the scaling
FENWICK_EXPORT void MAT_RotateX(Mat44 m, float radians);               ///< m := m times the rotation, counter-clockwise
FENWICK_EXPORT void MAT_RotateY(Mat44 m, float radians);               ///< seen against the axis
FENWICK_EXPORT void MAT_RotateZ(Mat44 m, float radians);
FENWICK_EXPORT void MAT_Transpose(const Mat44 m, Mat44 out);

/// Inverse of the upper left `size` x `size` part (3 or 4; the rest is copied), computed in double precision.
/// `out` may be m. False for a singular matrix; `out` is then the identity.
FENWICK_EXPORT bool MAT_Inverse(const Mat44 m, Mat44 out, int size = 4);

/// Affine transform of `count` points: (x y z 1) M, the fourth component dropped. `out` may be `in`.
FENWICK_EXPORT void MAT_VertTransform(const VERTEX* in, VERTEX* out, int count, const Mat44 m);

/// The fourth component of (x y z 1) M, for those who project.
FENWICK_EXPORT float MAT_VertTransformW(const VERTEX& p, const Mat44 m);

/// Perspective projection to OpenGL clip space. @param fovY full vertical angle in radians @param aspect width / height
FENWICK_EXPORT void MAT_Perspective(Mat44 out, float fovY, float aspect, float zNear, float zFar);

/// Parallel projection to OpenGL clip space of a box halfWidth x halfHeight about the axis.
FENWICK_EXPORT void MAT_Ortho(Mat44 out, float halfWidth, float halfHeight, float zNear, float zFar);

/// 1 / sqrt(x) by a bit-level first guess and three Newton steps in float: the same bits on every machine, relative
/// error below 3e-7, finite for 0 (so that scaling a zero vector by it gives zero). NaN for NaN. Inline, because the
/// kernels call it once for each vertex or polygon.
inline float MATH_FastSqrtInv(float x)
{
    const float half = 0.5f * x;
    // The constant minimises the largest error of the guess; see Lomont, "Fast inverse square root", 2003.
    float y = std::bit_cast<float>(0x5F375A86u - (std::bit_cast<std::uint32_t>(x) >> 1));
    // half * y * y reads left to right: y * y alone is infinite for 0.
    y = y * (1.5f - half * y * y);
    y = y * (1.5f - half * y * y);
    return y * (1.5f - half * y * y);
}

FENWICK_EXPORT double MATH_atan2(double y, double x);
