// FenwickBase: foundation of the VelmarBase project.
#include "base/MAT.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace
{
// m := m times the rotation that takes axis `from` towards axis `to`.
void RotateTowards(Mat44 m, int from, int to, float radians)
{
    // In double, whose last digit is the only one in which C libraries differ.
    const float c = float(std::cos(double(radians))), s = float(std::sin(double(radians)));
    for (int row = 0; row < 4; ++row)
    {
        const float a = m[row][from], b = m[row][to];
        m[row][from] = a * c - b * s;
        m[row][to] = a * s + b * c;
    }
}

// The matrix being inverted, the inverse growing beside it, and for each entry the largest number that went into it.
struct Elimination
{
    double a[4][8];
    double scale[4][4];
};

void SwapRows(Elimination& e, int i, int j)
{
    if (i == j)
        return;
    std::swap(e.a[i], e.a[j]);
    std::swap(e.scale[i], e.scale[j]);
}

// Subtracts a multiple of row `pivot` from row `row` so that its entry in that column becomes 0.
void Eliminate(Elimination& e, int row, int pivot, int size)
{
    const double factor = e.a[row][pivot] / e.a[pivot][pivot];
    if (factor == 0)
        return;
    for (int k = 0; k < 2 * size; ++k)
        e.a[row][k] -= factor * e.a[pivot][k];
    for (int k = 0; k < size; ++k)
        e.scale[row][k] = std::max(e.scale[row][k], std::abs(factor) * e.scale[pivot][k]);
    e.a[row][pivot] = 0;
}

// Gauss-Jordan with row pivoting. A pivot that is nothing but the rounding of the numbers that cancelled in it counts
// as zero; a comparison with a fixed epsilon would call small but sound matrices singular.
bool Invert(Elimination& e, int size)
{
    constexpr double kRounding = 16 * std::numeric_limits<double>::epsilon();
    for (int pivot = 0; pivot < size; ++pivot)
    {
        int best = -1;
        for (int row = pivot; row < size; ++row)
            if (std::abs(e.a[row][pivot]) > kRounding * e.scale[row][pivot] &&
                (best < 0 || std::abs(e.a[row][pivot]) > std::abs(e.a[best][pivot])))
                best = row;
        if (best < 0)
            return false;
        SwapRows(e, pivot, best);
        for (int row = 0; row < size; ++row)
            if (row != pivot)
                Eliminate(e, row, pivot, size);
    }
    return true;
}
} // namespace

void MAT_Identity(Mat44 m)
{
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            m[row][column] = row == column ? 1.0f : 0.0f;
}

void MAT_Copy(const Mat44 from, Mat44 to) { std::memmove(to, from, sizeof(Mat44)); }

void MAT_Concat4x4(const Mat44 a, const Mat44 b, Mat44 out)
{
    Mat44 product;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            product[row][column] = a[row][0] * b[0][column] + a[row][1] * b[1][column] + a[row][2] * b[2][column] +
                                   a[row][3] * b[3][column];
    MAT_Copy(product, out);
}

void MAT_Translate(Mat44 m, float x, float y, float z)
{
    for (int row = 0; row < 4; ++row)
    {
        m[row][0] += m[row][3] * x;
        m[row][1] += m[row][3] * y;
        m[row][2] += m[row][3] * z;
    }
}

void MAT_Scale(Mat44 m, float x, float y, float z)
{
    for (int row = 0; row < 4; ++row)
    {
        m[row][0] *= x;
        m[row][1] *= y;
        m[row][2] *= z;
    }
}

void MAT_RotateX(Mat44 m, float radians) { RotateTowards(m, 1, 2, radians); }

void MAT_RotateY(Mat44 m, float radians) { RotateTowards(m, 2, 0, radians); }

void MAT_RotateZ(Mat44 m, float radians) { RotateTowards(m, 0, 1, radians); }

void MAT_Transpose(const Mat44 m, Mat44 out)
{
    Mat44 transposed;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            transposed[row][column] = m[column][row];
    MAT_Copy(transposed, out);
}

bool MAT_Inverse(const Mat44 m, Mat44 out, int size)
{
    Elimination e{};
    for (int row = 0; row < size; ++row)
    {
        for (int column = 0; column < size; ++column)
        {
            e.a[row][column] = double(m[row][column]);
            e.scale[row][column] = std::abs(double(m[row][column]));
        }
        e.a[row][size + row] = 1;
    }
    bool sound = Invert(e, size);
    Mat44 inverse;
    MAT_Copy(m, inverse);
    for (int row = 0; sound && row < size; ++row)
        for (int column = 0; column < size; ++column)
        {
            inverse[row][column] = float(e.a[row][size + column] / e.a[row][row]);
            sound = sound && std::isfinite(inverse[row][column]);
        }
    if (sound)
        MAT_Copy(inverse, out);
    else
        MAT_Identity(out);
    return sound;
}

void MAT_VertTransform(const VERTEX* in, VERTEX* out, int count, const Mat44 m)
{
    for (int i = 0; i < count; ++i)
    {
        const VERTEX p = in[i];
        out[i] = {p.x * m[0][0] + p.y * m[1][0] + p.z * m[2][0] + m[3][0],
                  p.x * m[0][1] + p.y * m[1][1] + p.z * m[2][1] + m[3][1],
                  p.x * m[0][2] + p.y * m[1][2] + p.z * m[2][2] + m[3][2]};
    }
}

float MAT_VertTransformW(const VERTEX& p, const Mat44 m)
{
    return p.x * m[0][3] + p.y * m[1][3] + p.z * m[2][3] + m[3][3];
}

void MAT_Perspective(Mat44 out, float fovY, float aspect, float zNear, float zFar)
{
    const double cotangent = 1 / std::tan(double(fovY) / 2), depth = double(zNear) - double(zFar);
    std::memset(out, 0, sizeof(Mat44));
    out[0][0] = float(cotangent / double(aspect));
    out[1][1] = float(cotangent);
    out[2][2] = float((double(zFar) + double(zNear)) / depth);
    out[2][3] = -1;
    out[3][2] = float(2 * double(zFar) * double(zNear) / depth);
}

void MAT_Ortho(Mat44 out, float halfWidth, float halfHeight, float zNear, float zFar)
{
    const double depth = double(zNear) - double(zFar);
    MAT_Identity(out);
    out[0][0] = 1 / halfWidth;
    out[1][1] = 1 / halfHeight;
    out[2][2] = float(2 / depth);
    out[3][2] = float((double(zFar) + double(zNear)) / depth);
}

double MATH_atan2(double y, double x) { return std::atan2(y, x); }
