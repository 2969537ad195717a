#include "host/glsl/ImageLight.h"

namespace vx
{
void AddImageLight(const float* colors, const VERTEX axes[3], const VERTEX& strength, float forms[3][16])
{
    // Factors of the harmonics, times 1, 2/3 and 1/4: what is left of each order when light from all directions falls
    // on a surface.
    constexpr float k0 = 0.282095f, k1 = 0.488603f * 2 / 3, k2 = 1.092548f / 4, k20 = 0.315392f / 4,
                    k22 = 0.546274f / 4;
    const float turn[4][4] = {{axes[0].x, axes[0].y, axes[0].z, 0},
                              {axes[1].x, axes[1].y, axes[1].z, 0},
                              {axes[2].x, axes[2].y, axes[2].z, 0},
                              {0, 0, 0, 1}};
    const float factor[3] = {strength.x, strength.y, strength.z};
    for (int c = 0; c < 3; ++c)
    {
        const auto l = [&](int i) { return colors[3 * i + c] * factor[c]; };
        const float xy = k2 * l(4) / 2, yz = k2 * l(5) / 2, xz = k2 * l(7) / 2;
        const float x = k1 * l(3) / 2, y = k1 * l(1) / 2, z = k1 * l(2) / 2;
        const float form[4][4] = {{k22 * l(8), xy, xz, x},
                                  {xy, -k22 * l(8), yz, y},
                                  {xz, yz, 3 * k20 * l(6), z},
                                  {x, y, z, k0 * l(0) - k20 * l(6)}};
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j)
                for (int a = 0; a < 4; ++a)
                    for (int b = 0; b < 4; ++b)
                        forms[c][4 * i + j] += turn[a][i] * form[a][b] * turn[b][j];
    }
}
} // namespace vx
