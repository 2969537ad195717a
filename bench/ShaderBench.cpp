// The noise volume beside the plain loop over its voxels, and shader upkeep where nothing has changed.

#include "bench/BenchMeshes.h"
#include "bench/ManyMaterials.h"
#include "shader/FilteredNoise.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace
{
// --- Noise

constexpr int kSide = 64;
constexpr float kScale = 4;

const FilteredNoise& Noise()
{
    static const FilteredNoise noise = []
    {
        std::srand(1);
        return FilteredNoise(16, 16, 16);
    }();
    return noise;
}

float Weight(float d)
{
    constexpr float a = -0.75f;
    if (d < 1)
        return ((a + 2) * d - (a + 3)) * d * d + 1;
    return d < 2 ? ((a * d - 5 * a) * d + 8 * a) * d - 4 * a : 0.0f;
}

// All 64 neighbours of every voxel, each with its own weight of three factors.
void DirectVolume(BArray<std::uint8_t>& volume)
{
    volume.SetCountForWriting(std::int64_t(kSide) * kSide * kSide);
    std::uint8_t* out = volume.Data();
    for (int z = 0; z < kSide; ++z)
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x)
            {
                const float at[3] = {float(x) / kScale - 0.5f, float(y) / kScale - 0.5f, float(z) / kScale - 0.5f};
                int first[3];
                float weights[3][4];
                for (int axis = 0; axis < 3; ++axis)
                {
                    const float below = std::floor(at[axis]);
                    first[axis] = int(below) - 1;
                    for (int tap = 0; tap < 4; ++tap)
                        weights[axis][tap] = Weight(std::fabs(at[axis] - below - float(tap - 1)));
                }
                float sum = 0;
                for (int k = 0; k < 4; ++k)
                    for (int j = 0; j < 4; ++j)
                        for (int i = 0; i < 4; ++i)
                            sum += weights[0][i] * weights[1][j] * weights[2][k] *
                                   Noise().noise3D(first[0] + i, first[1] + j, first[2] + k);
                *out++ = std::uint8_t((std::fmin(std::fmax(sum, -1.0f), 1.0f) + 1) * 0.5f * 255);
            }
}

void SingleValues(BArray<std::uint8_t>& volume)
{
    volume.SetCountForWriting(std::int64_t(kSide) * kSide * kSide);
    std::uint8_t* out = volume.Data();
    for (int z = 0; z < kSide; ++z)
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x)
            {
                const float n = Noise().bicubicNoise3D(float(x) / kScale - 0.5f, float(y) / kScale - 0.5f,
                                                       float(z) / kScale - 0.5f);
                *out++ = std::uint8_t((n + 1) * 0.5f * 255);
            }
}

void OurVolume(BArray<std::uint8_t>& volume)
{
    Noise().noiseVolume3D(kSide, kSide, kSide, kScale, 1, FilteredNoise::NoiseSmooth, volume);
}

// Byte for byte what single values give; the plain loop sums in another order and may be off by one here and there.
bool SameVolumes()
{
    BArray<std::uint8_t> ours, single, direct;
    OurVolume(ours);
    SingleValues(single);
    DirectVolume(direct);
    for (std::int64_t i = 0; i < ours.Count(); ++i)
        if (ours[i] != single[i] || std::abs(ours[i] - direct[i]) > 1)
            return false;
    return true;
}

template <void (*build)(BArray<std::uint8_t>&)>
void Volume(benchmark::State& state)
{
    if (!SameVolumes())
    {
        state.SkipWithError("the volumes differ");
        return;
    }
    BArray<std::uint8_t> volume;
    for (auto _ : state)
    {
        state.SetIterationTime(SecondsOf([&] { build(volume); }));
        benchmark::DoNotOptimize(volume.Data());
    }
}
BENCHMARK(Volume<OurVolume>)->Name("Noise/velmar")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Volume<SingleValues>)->Name("Noise/single-values")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Volume<DirectVolume>)->Name("Noise/direct")->UseManualTime()->Unit(benchmark::kMillisecond);

// --- Upkeep

/// Draws nothing: what is left of a frame is the driver's own work.
class EmptyEngine : public VXSceneDrawEngine
{
public:
    VXSceneDrawOptions* DrawOptions() override { return &mOptions; }

private:
    VXSceneDrawOptions mOptions;
};

void Upkeep(benchmark::State& state)
{
    EmptyEngine engine;
    ManyMaterials many(engine);
    if (!many.HasPrograms())
        state.SkipWithError("no programs");
    for (auto _ : state)
        many.Upkeep();
}
BENCHMARK(Upkeep)->Name("Shaders/upkeep-of-200")->Unit(benchmark::kMicrosecond);

void EmptyFrame(benchmark::State& state)
{
    EmptyEngine engine;
    ManyMaterials many(engine);
    for (auto _ : state)
        many.Frame();
}
BENCHMARK(EmptyFrame)->Name("Shaders/empty-frame-of-200")->Unit(benchmark::kMicrosecond);
} // namespace
