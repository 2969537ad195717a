// VelmarBase: sample models.
#include "ObjModel.h"

#include <cmath>

namespace
{

// A square pyramid on flat ground as a picture of normals: one colour for each of its sides. Green points up.
std::string NormalsOfStud()
{
    constexpr int kSize = 32, kRim = 4;
    constexpr double kSlope = 0.5; // sine of the sides' angle
    const auto coded = [](double part) { return static_cast<unsigned char>(std::floor(127.5 * (1 + part) + 0.5)); };
    const double up = std::sqrt(1 - kSlope * kSlope);
    constexpr double kSides[5][2] = {{0, 0}, {0, kSlope}, {kSlope, 0}, {0, -kSlope}, {-kSlope, 0}};
    std::array<std::array<unsigned char, 3>, 16> palette{};
    for (std::size_t i = 0; i < 5; ++i)
        palette[i] = {coded(kSides[i][0]), coded(kSides[i][1]), coded(i == 0 ? 1 : up)};

    std::vector<unsigned char> pixels;
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
        {
            const int right = 2 * x + 1 - kSize, down = 2 * y + 1 - kSize;
            unsigned char side = 0;
            if (std::abs(right) < kSize - 2 * kRim && std::abs(down) < kSize - 2 * kRim)
                side = std::abs(down) >= std::abs(right) ? (down < 0 ? 1 : 3) : (right > 0 ? 2 : 4);
            pixels.push_back(side);
        }
    return PngBytes(kSize, kSize, pixels, palette);
}

} // namespace

std::vector<SampleFile> MaterialPictures() { return {{"materials/studs.png", NormalsOfStud()}}; }
