#include "mesh/kernel/Tangents.h"

#include "base/BArray.h"
#include "base/MAT.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vx
{
namespace
{

// --- Corner frames

/// Frames are computed some at a time, in loops over lanes that the compiler turns into vector instructions.
class FrameBatch
{
public:
    FrameBatch(std::span<VERTEX> tangents, std::span<VERTEX> binormals) : mTangents(tangents), mBinormals(binormals) {}

    /// The frame of a vertex at a corner: three positions and texture coordinates, of the corner before, the corner and
    /// the one after.
    void Add(std::int32_t v, const VERTEX (&p)[3], const T_VERTEX (&t)[3])
    {
        mVert[mCount] = v;
        mE1.Set(mCount, p[1] - p[0]);
        mE2.Set(mCount, p[2] - p[0]);
        mDu1[mCount] = t[1].u - t[0].u;
        mDv1[mCount] = t[1].v - t[0].v;
        mDu2[mCount] = t[2].u - t[0].u;
        mDv2[mCount] = t[2].v - t[0].v;
        if (++mCount == kLanes)
            Flush();
    }

    void Flush()
    {
        // The derivatives of position by u and v up to a factor, which is the inverse of the determinant. Its sign is
        // left out too, so frames of mirrored texture point the other way. Without one, the edges stand in.
        std::int32_t flat = 0; // as wide as a float, for vectors
        for (int i = 0; i < kLanes; ++i)
            flat |= mDv2[i] * mDu1[i] - mDv1[i] * mDu2[i] == 0 ? 1 : 0;
        if (flat) [[unlikely]]
            LetEdgesStandIn();
        Lanes tangent, binormal;
        float tangentSquare[kLanes], binormalSquare[kLanes];
        tangent.SetUnitDifference(mE1, mDv2, mE2, mDv1, tangentSquare);
        binormal.SetUnitDifference(mE2, mDu1, mE1, mDu2, binormalSquare);
        std::int32_t odd = 0;
        for (int i = 0; i < kLanes; ++i)
            odd |= (tangentSquare[i] <= kMost ? 0 : 1) | (binormalSquare[i] <= kMost ? 0 : 1); // NaN, infinity
        for (int i = 0; i < kLanes && odd; ++i)
            if (!(tangentSquare[i] <= kMost && binormalSquare[i] <= kMost))
            {
                tangent.Set(i, kDefaultTangent);
                binormal.Set(i, kDefaultBinormal);
            }
        for (int i = 0; i < mCount; ++i)
        {
            mTangents[std::size_t(mVert[i])] = tangent.At(i);
            mBinormals[std::size_t(mVert[i])] = binormal.At(i);
        }
        mCount = 0;
    }

private:
    static constexpr int kLanes = 16;
    static constexpr float kMost = std::numeric_limits<float>::max();

    struct Lanes
    {
        float x[kLanes] = {}, y[kLanes] = {}, z[kLanes] = {};

        void Set(int i, const VERTEX& v)
        {
            x[i] = v.x;
            y[i] = v.y;
            z[i] = v.z;
        }
        VERTEX At(int i) const { return {x[i], y[i], z[i]}; }

        /// This := s a - r b, made unit. @param square out: the squared length that it had
        void SetUnitDifference(const Lanes& a, const float* s, const Lanes& b, const float* r, float* square)
        {
            for (int i = 0; i < kLanes; ++i)
            {
                const VERTEX d = s[i] * a.At(i) - r[i] * b.At(i);
                square[i] = Dot(d, d);
                Set(i, d * MATH_FastSqrtInv(square[i]));
            }
        }
    };

    void LetEdgesStandIn()
    {
        for (int i = 0; i < kLanes; ++i)
            if (mDv2[i] * mDu1[i] - mDv1[i] * mDu2[i] == 0)
            {
                mDv2[i] = mDu1[i] = 1;
                mDv1[i] = mDu2[i] = 0;
            }
    }

    std::span<VERTEX> mTangents, mBinormals;
    int mCount = 0;
    std::int32_t mVert[kLanes] = {};
    Lanes mE1, mE2;
    float mDu1[kLanes] = {}, mDv1[kLanes] = {}, mDu2[kLanes] = {}, mDv2[kLanes] = {};
};

} // namespace

// Polygons and their corners are walked backwards: then the first frame that a vertex is given is the one that stands,
// and only one of the corners around it has to be computed.
bool CornerTangents(std::span<const VERTEX> points, const PolyView& polys, const GEOM_Texture& tex,
                    std::span<VERTEX> tangents, std::span<VERTEX> binormals)
{
    BArray<std::uint8_t> marks; // vertices that have been written to
    if (!marks.SetCount(std::int64_t(tangents.size())))
        return false;
    FrameBatch frames(tangents, binormals);
    const PolyView view = polys; // copies: what is stored cannot change them, so they stay in registers
    const GEOM_Texture texture = tex;
    const VERTEX* const verts = points.data();
    std::uint8_t* const written = marks.Data();
    for (std::int64_t p = view.count - 1; p >= 0; --p)
    {
        const ELEMENT& element = view[p];
        const std::int32_t length = view.Length(element);
        if (length < 1 || element.type == kElementLine || element.type == kElementPoint)
            continue;
        const std::int32_t* const ring = view.sets + element.start;
        if (length == 1 && !written[ring[0]])
        {
            written[ring[0]] = 1;
            tangents[std::size_t(ring[0])] = kDefaultTangent;
            binormals[std::size_t(ring[0])] = kDefaultBinormal;
        }
        if (length == 1 || p >= texture.numPolys || texture.polys[p].length != length)
            continue;
        const std::int32_t* const texRing = texture.sets + texture.polys[p].start;
        for (std::int32_t step = 0; step < length; ++step)
        {
            // The last, the first, then from the last but one down to the second.
            const std::int32_t k = step == 0 ? length - 1 : step == 1 ? 0 : length - step;
            const std::int32_t v = ring[k];
            if (written[v])
                continue;
            written[v] = 1;
            const std::int32_t before = k > 0 ? k - 1 : length - 1, after = k + 1 < length ? k + 1 : 0;
            frames.Add(v, {verts[ring[before]], verts[v], verts[ring[after]]},
                       {texture.verts[texRing[before]], texture.verts[texRing[k]], texture.verts[texRing[after]]});
        }
    }
    frames.Flush();
    for (std::size_t v = 0; v < tangents.size(); ++v)
        if (!written[v])
        {
            tangents[v] = kDefaultTangent;
            binormals[v] = kDefaultBinormal;
        }
    return true;
}

// --- Repair

namespace
{

VERTEX Unit(const VERTEX& v)
{
    // In double, where the square of no float is lost.
    const double x = v.x, y = v.y, z = v.z, length = std::sqrt(x * x + y * y + z * z);
    return length > 0 ? VERTEX{float(x / length), float(y / length), float(z / length)} : VERTEX{};
}

bool Parallel(const VERTEX& a, const VERTEX& b)
{
    constexpr float kNear = 0.000001f;
    const float dot = Dot(a, b);
    return std::fabs(dot - 1) <= kNear || std::fabs(dot + 1) <= kNear;
}

// Axes come with unit length or none, apart from those of a mesh so small that the squares of its edges have few
// digits.
VERTEX UnitAgain(const VERTEX& axis)
{
    const float squared = Dot(axis, axis);
    return std::fabs(squared - 1) <= 1e-5f ? axis : Unit(axis);
}

VERTEX AcrossNormal(const VERTEX& n)
{
    if (n.x == 0 && n.y == 0)
        return n.z != 0 ? VERTEX{0, 1, 0} : VERTEX{};
    return Unit({-n.y, n.x, 0});
}

} // namespace

void RepairFrames(std::span<const VERTEX> normals, std::span<VERTEX> tangents, std::span<VERTEX> binormals)
{
    for (std::size_t i = 0; i < normals.size(); ++i)
    {
        const VERTEX n = normals[i];
        VERTEX &t = tangents[i], &b = binormals[i];
        t = UnitAgain(t);
        b = UnitAgain(b);
        const bool noTangent = t == VERTEX{}, noBinormal = b == VERTEX{};
        const bool nt = Parallel(n, t), bn = Parallel(b, n), bt = Parallel(b, t);
        // Where two pairs are parallel the third nearly is, and where both axes are gone nothing but the normal is
        // left.
        if (nt + bn + bt >= 2 || ((nt || noTangent) && (bn || noBinormal)))
        {
            b = AcrossNormal(n);
            t = Unit(Cross(b, n));
        }
        else if (nt || noTangent)
            t = Unit(Cross(b, n));
        else if (bn || bt || noBinormal)
            b = Unit(Cross(n, t));
    }
}

} // namespace vx
