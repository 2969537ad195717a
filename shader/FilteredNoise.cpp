// Cubic convolution: R. Keys, "Cubic Convolution Interpolation for Digital Image Processing", 1981.
#include "shader/FilteredNoise.h"

#include "shader/detail/NoiseUpload.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <new>

struct FilteredNoise::Lattice
{
    int owners = 1;
    BArray<float> values; ///< x fastest, then y, then z
};

// --- Interpolation along one axis

namespace
{
constexpr float kA = -0.75f; ///< the kernel's slope at distance 1

float Kernel(float t)
{
    if (t >= 0 && t < 1)
        return ((kA + 2) * t - (kA + 3)) * t * t + 1;
    if (t >= 1 && t <= 2)
        return ((kA * t - 5 * kA) * t + 8 * kA) * t - 4 * kA;
    return 0;
}

// A whole number as an unsigned index that wraps: any power of two that masks it leaves the right place.
std::uint32_t Wrapped(float whole)
{
    constexpr float kLimit = 9.0e18f; // below 2 to the 63rd
    return std::fabs(whole) < kLimit ? std::uint32_t(std::int64_t(whole)) : 0;
}

/// The four neighbours of a coordinate on one axis: the first one's index, and what each is worth.
struct Taps
{
    std::uint32_t first = 0;
    float weights[4] = {};

    Taps() = default;
    explicit Taps(float at)
    {
        const float x = std::isfinite(at) ? at : 0;
        const float below = std::floor(x);
        const float f = x - below;
        first = Wrapped(below) - 1;
        weights[0] = Kernel(f + 1);
        weights[1] = Kernel(f);
        weights[2] = Kernel(1 - f);
        weights[3] = Kernel(2 - f);
    }
};

// Everything is summed by this one expression, so that a volume built row by row has the bytes of its single values.
inline float Sum(const float (&weights)[4], float p0, float p1, float p2, float p3)
{
    return weights[0] * p0 + weights[1] * p1 + weights[2] * p2 + weights[3] * p3;
}

inline float AlongX(const float* row, std::uint32_t mask, const Taps& x)
{
    return Sum(x.weights, row[x.first & mask], row[(x.first + 1) & mask], row[(x.first + 2) & mask],
               row[(x.first + 3) & mask]);
}

inline float Clamped(float n)
{
    if (n < -1)
        return -1;
    return n > 1 ? 1.0f : n;
}

inline std::uint8_t ToByte(float v, float amplitude)
{
    const float clamped = v > 0 ? std::min(v, 1.0f) : 0.0f;
    const float scaled = clamped * amplitude * 255;
    return scaled > 0 ? std::uint8_t(std::min(scaled, 255.0f)) : std::uint8_t(0);
}
} // namespace

// --- The lattice

FilteredNoise::FilteredNoise(int sizeX, int sizeY, int sizeZ)
    : mSizeX(std::uint32_t(sizeX)), mSizeY(std::uint32_t(sizeY)), mSizeZ(std::uint32_t(sizeZ))
{
    if (sizeX < 1 || sizeY < 1 || sizeZ < 1 || std::int64_t(sizeX) * sizeY > INT64_MAX / sizeZ)
        return;
    mValues = new (std::nothrow) Lattice;
    if (!mValues)
        return;
    if (!mValues->values.SetCountForWriting(std::int64_t(sizeX) * sizeY * sizeZ))
    {
        delete mValues;
        mValues = nullptr;
        return;
    }
    for (float& value : mValues->values)
        value = 2.0f * float(std::rand() & 32767) / 32767.0f - 1.0f;
}

FilteredNoise::FilteredNoise(const FilteredNoise& other)
    : mTexture(other.mTexture), mSizeX(other.mSizeX), mSizeY(other.mSizeY), mSizeZ(other.mSizeZ), mValues(other.mValues)
{
    if (mValues)
        ++mValues->owners;
}

FilteredNoise& FilteredNoise::operator=(const FilteredNoise& other)
{
    FilteredNoise copy(other);
    std::swap(mTexture, copy.mTexture);
    std::swap(mSizeX, copy.mSizeX);
    std::swap(mSizeY, copy.mSizeY);
    std::swap(mSizeZ, copy.mSizeZ);
    std::swap(mValues, copy.mValues);
    return *this;
}

FilteredNoise::~FilteredNoise()
{
    if (mValues && --mValues->owners == 0)
        delete mValues;
}

// The lattice must not be empty.
const float* FilteredNoise::Row(std::uint32_t y, std::uint32_t z) const
{
    const std::int64_t row = std::int64_t((mSizeZ - 1) & z) * mSizeY + ((mSizeY - 1) & y);
    return mValues->values.Data() + row * mSizeX;
}

// --- Single values

float FilteredNoise::noise2D(int x, int y) const { return noise3D(x, y, 0); }

float FilteredNoise::noise3D(int x, int y, int z) const
{
    return mValues ? Row(std::uint32_t(y), std::uint32_t(z))[(mSizeX - 1) & std::uint32_t(x)] : 0.0f;
}

float FilteredNoise::bicubicNoise2D(float x, float y) const
{
    if (!mValues)
        return 0;
    const Taps tx(x), ty(y);
    float rows[4];
    for (std::uint32_t j = 0; j < 4; ++j)
        rows[j] = AlongX(Row(ty.first + j, 0), mSizeX - 1, tx);
    return Clamped(Sum(ty.weights, rows[0], rows[1], rows[2], rows[3]));
}

float FilteredNoise::bicubicNoise3D(float x, float y, float z) const
{
    if (!mValues)
        return 0;
    const Taps tx(x), ty(y), tz(z);
    float slices[4];
    for (std::uint32_t k = 0; k < 4; ++k)
    {
        float rows[4];
        for (std::uint32_t j = 0; j < 4; ++j)
            rows[j] = AlongX(Row(ty.first + j, tz.first + k), mSizeX - 1, tx);
        slices[k] = Sum(ty.weights, rows[0], rows[1], rows[2], rows[3]);
    }
    return Clamped(Sum(tz.weights, slices[0], slices[1], slices[2], slices[3]));
}

// --- Volumes

namespace
{
/// The last four lines of floats that were computed, by their place on an axis. Neighbours share three of their four
/// lines as long as a volume has more samples than the lattice has values, which is what makes building it cheap.
class LineCache
{
public:
    bool SetSize(std::int64_t lineLength)
    {
        mLength = lineLength;
        return lineLength <= INT64_MAX / 64 && mLines.SetCountForWriting(4 * lineLength);
    }
    void Forget() { std::fill(std::begin(mKnown), std::end(mKnown), false); }

    /// The line at `place`, filled by compute(line) when it is not known.
    template <class Compute>
    const float* Line(std::uint32_t place, Compute compute)
    {
        const std::uint32_t slot = place & 3; // four in a row never share one
        float* const line = mLines.Data() + slot * mLength;
        if (!mKnown[slot] || mPlaces[slot] != place)
            compute(line);
        mKnown[slot] = true;
        mPlaces[slot] = place;
        return line;
    }

private:
    BArray<float> mLines;
    std::int64_t mLength = 0;
    std::uint32_t mPlaces[4] = {};
    bool mKnown[4] = {};
};

float Coordinate(int i, float scale) { return float(i) / scale - 0.5f; }

bool SetTaps(BArray<Taps>& taps, int count, float scale)
{
    if (!taps.SetCount(count))
        return false;
    for (int i = 0; i < count; ++i)
        taps[i] = Taps(Coordinate(i, scale));
    return true;
}

void SumLines(const float (&weights)[4], const float* const (&lines)[4], std::int64_t count, float* out)
{
    const float *const a = lines[0], *const b = lines[1], *const c = lines[2], *const d = lines[3];
    for (std::int64_t i = 0; i < count; ++i)
        out[i] = Sum(weights, a[i], b[i], c[i], d[i]);
}

/// Interpolates whole slices: lattice rows along x, four of them along y to a plane, four planes along z to a slice.
/// RowOf(y, z): the lattice row, any indices.
template <class RowOf>
class SliceBuilder
{
public:
    SliceBuilder(RowOf rowOf, std::uint32_t maskX) : mRowOf(rowOf), mMaskX(maskX) {}

    bool SetSize(int width, int height, int depth, float scale)
    {
        return SetTaps(mX, width, scale) && SetTaps(mY, height, scale) && SetTaps(mZ, depth, scale) &&
               mRows.SetSize(width) && mPlanes.SetSize(std::int64_t(width) * height) &&
               mSlice.SetCountForWriting(std::int64_t(width) * height);
    }

    /// The values of slice z, before they are clamped: width * height, x fastest.
    const BArray<float>& Slice(int z)
    {
        const Taps& taps = mZ[z];
        const float* planes[4];
        for (std::uint32_t k = 0; k < 4; ++k)
        {
            const std::uint32_t place = taps.first + k;
            planes[k] = mPlanes.Line(place, [this, place](float* plane) { BuildPlane(place, plane); });
        }
        SumLines(taps.weights, planes, mSlice.Count(), mSlice.Data());
        return mSlice;
    }

private:
    void BuildPlane(std::uint32_t place, float* plane)
    {
        mRows.Forget();
        for (const Taps& taps : mY)
        {
            const float* rows[4];
            for (std::uint32_t j = 0; j < 4; ++j)
            {
                const float* const lattice = mRowOf(taps.first + j, place);
                rows[j] = mRows.Line(taps.first + j, [this, lattice](float* row) { BuildRow(lattice, row); });
            }
            SumLines(taps.weights, rows, mX.Count(), plane);
            plane += mX.Count();
        }
    }

    void BuildRow(const float* lattice, float* row) const
    {
        for (const Taps& taps : mX)
            *row++ = AlongX(lattice, mMaskX, taps);
    }

    RowOf mRowOf;
    std::uint32_t mMaskX;
    BArray<Taps> mX, mY, mZ;
    LineCache mRows, mPlanes;
    BArray<float> mSlice;
};

// value(n): what the mode makes of a clamped value.
template <class Value>
void WriteSlice(const BArray<float>& slice, float amplitude, std::uint8_t* out, Value value)
{
    for (const float n : slice)
        *out++ = ToByte(value(Clamped(n)), amplitude);
}

void WriteSlice(const BArray<float>& slice, float amplitude, FilteredNoise::NoiseMode mode, std::uint8_t* out)
{
    if (mode == FilteredNoise::NoiseSmooth)
        WriteSlice(slice, amplitude, out, [](float n) { return (n + 1) * 0.5f; });
    else if (mode == FilteredNoise::NoiseAbsolute)
        WriteSlice(slice, amplitude, out, [](float n) { return std::fabs(n); });
    else
        WriteSlice(slice, amplitude, out, [](float n) { return 1 - 2 * std::fabs(n); });
}

// value(x, y, z): before it becomes a byte.
template <class Value>
void WriteVoxels(int width, int height, int depth, float amplitude, std::uint8_t* out, Value value)
{
    for (int z = 0; z < depth; ++z)
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                *out++ = ToByte(value(x, y, z), amplitude);
}
} // namespace

bool FilteredNoise::noiseVolume3D(int width, int height, int depth, float scale, float amplitude, NoiseMode mode,
                                  BArray<std::uint8_t>& volume) const
{
    if (width < 1 || height < 1 || depth < 1 || !(scale < 0 || scale > 0) || mode < NoiseSmooth || mode > NoiseRadial)
        return false;
    const std::int64_t sliceSize = std::int64_t(width) * height;
    if (sliceSize > INT64_MAX / depth || !volume.SetCountForWriting(sliceSize * depth))
        return false;
    if (mode == NoiseLattice)
    {
        const auto at = [scale](int i) { return int(Wrapped(std::trunc(Coordinate(i, scale)))); };
        WriteVoxels(width, height, depth, amplitude, volume.Data(),
                    [&](int x, int y, int z) { return (noise3D(at(x), at(y), at(z)) + 1) * 0.5f; });
        return true;
    }
    if (mode == NoiseRadial)
    {
        WriteVoxels(width, height, depth, amplitude, volume.Data(),
                    [&](int x, int y, int)
                    {
                        const float dx = Coordinate(x, scale) / float(width) - 0.5f;
                        const float dy = Coordinate(y, scale) / float(height) - 0.5f;
                        return 2 * std::sqrt(dx * dx + dy * dy + dy * dy);
                    });
        return true;
    }
    static constexpr float kEmpty[1] = {0};
    const auto rowOf = [this](std::uint32_t y, std::uint32_t z) { return mValues ? Row(y, z) : kEmpty; };
    SliceBuilder builder(rowOf, mValues ? mSizeX - 1 : 0);
    if (!builder.SetSize(width, height, depth, scale))
    {
        volume.Empty();
        return false;
    }
    for (int z = 0; z < depth; ++z)
        WriteSlice(builder.Slice(z), amplitude, mode, volume.Data() + z * sliceSize);
    return true;
}

std::uint32_t FilteredNoise::createNoiseTexture3D(int width, int height, int depth, float scale, float amplitude,
                                                  NoiseMode mode)
{
    constexpr unsigned kSeed = 250673;
    vx::LoadVolumeFunctions();
    std::srand(kSeed);
    if (mode < NoiseSmooth || mode > NoiseRadial)
    {
        std::fputs("Noise mode not supported\n", stderr);
        return 0;
    }
    BArray<std::uint8_t> volume;
    if (!noiseVolume3D(width, height, depth, scale, amplitude, mode, volume))
        return 0;
    vx::UploadNoiseVolume(kTextureName, width, height, depth, volume.Data());
    mTexture = kTextureName;
    return mTexture;
}
