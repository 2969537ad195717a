// VelmarBase: shaders.
#pragma once

#include "VelmarExport.h"
#include "base/BArray.h"

#include <cstdint>

/// A periodic lattice of random values in [-1, 1], its cubic interpolation, and the 3D texture that generated programs
/// sample noise from.
///
/// The lattice is filled from the C library's rand(), which the caller seeds: the same seed gives the same lattice with
/// one C library, and another lattice with another. Of each number the low 15 bits are used, so that the range is the
/// same everywhere. Coordinates wrap by masking, so sizes should be powers of two; with other sizes part of the lattice
/// is never read.
///
/// Copies share one lattice. GL thread only where a texture is made; otherwise one thread at a time.
class VELMAR_EXPORT FilteredNoise
{
public:
    enum NoiseMode : int
    {
        NoiseSmooth = 0,   ///< the interpolated value, moved to [0, 1]
        NoiseAbsolute = 1, ///< its magnitude: creases where it crosses zero
        NoiseRidged = 2,   ///< 1 where it crosses zero, 0 from half its range on
        NoiseLattice = 3,  ///< the lattice itself, in blocks
        NoiseRadial = 4,   ///< no noise: distance from the middle of a slice, with y counted twice on purpose
    };

    /// The one texture name that volumes are uploaded under; none is generated.
    static constexpr std::uint32_t kTextureName = 95062;

    /// A lattice with a size below 1, or for which there is no memory, is empty and reads 0 everywhere.
    FilteredNoise(int sizeX, int sizeY, int sizeZ);
    FilteredNoise(const FilteredNoise& other);
    FilteredNoise& operator=(const FilteredNoise& other);
    ~FilteredNoise();

    // --- Values
    float noise2D(int x, int y) const; ///< of the lattice, in its first slice
    float noise3D(int x, int y, int z) const;
    float bicubicNoise2D(float x, float y) const; ///< in [-1, 1]; not-a-number and infinity read as 0
    float bicubicNoise3D(float x, float y, float z) const;

    // --- Volumes

    /// The volume's bytes, x fastest, then y, then z. Each is what bicubicNoise3D gives at (x, y, z) / scale - 0.5,
    /// by the rule of the mode, times amplitude; 0 and 1 become 0 and 255, and what lies beyond is cut off.
    /// @param volume out, width * height * depth entries
    /// @return false for a size below 1, a scale of 0 or not-a-number, an unknown mode, or when memory ran out
    bool noiseVolume3D(int width, int height, int depth, float scale, float amplitude, NoiseMode mode,
                       BArray<std::uint8_t>& volume) const;

    /// Uploads such a volume as a repeating, linearly filtered luminance texture in the current context, in place of
    /// the one before, and seeds rand() with a number of its own (after the lattice was filled, that is). Without a
    /// context that has 3D textures, or in a library built without OpenGL, nothing is uploaded.
    /// @return the texture's name; 0 where noiseVolume3D answers false. An unknown mode is told on the error stream
    std::uint32_t createNoiseTexture3D(int width, int height, int depth, float scale, float amplitude, NoiseMode mode);

    std::uint32_t texture() const { return mTexture; } ///< of the last volume; 0 before

private:
    struct Lattice;

    const float* Row(std::uint32_t y, std::uint32_t z) const;

    std::uint32_t mTexture = 0;
    std::uint32_t mSizeX, mSizeY, mSizeZ;
    Lattice* mValues = nullptr; ///< shared by copies; null when empty
};
