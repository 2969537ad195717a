#include "shader/detail/NoiseUpload.h"

namespace vx
{
void LoadVolumeFunctions() {}

void UploadNoiseVolume(std::uint32_t, int, int, int, const std::uint8_t*) {}
} // namespace vx
