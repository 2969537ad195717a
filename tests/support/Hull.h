// Convex hulls, as far as tests ask about them.
#pragma once

#include "base/Vertex.h"

#include <algorithm>
#include <limits>
#include <random>
#include <span>

/// How far some point reaches beyond the convex hull of others, in the worst of 32 random directions and the axes: 0 or
/// less when all are inside as far as these tell.
inline float BeyondHull(std::span<const VERTEX> points, std::span<const VERTEX> control)
{
    std::minstd_rand random(11);
    const auto part = [&random] { return float(random() % 2001) / 1000 - 1; };
    const auto reach = [](std::span<const VERTEX> of, const VERTEX& direction)
    {
        float most = -std::numeric_limits<float>::infinity();
        for (const VERTEX& p : of)
            most = std::max(most, Dot(p, direction));
        return most;
    };
    float worst = -std::numeric_limits<float>::infinity();
    for (int i = 0; i < 38; ++i)
    {
        VERTEX direction = {part(), part(), part()};
        if (i < 6)
            direction = {float((i == 0) - (i == 3)), float((i == 1) - (i == 4)), float((i == 2) - (i == 5))};
        worst = std::max(worst, reach(points, direction) - reach(control, direction));
    }
    return worst;
}
