// The meshes that the benchmarks share, made once each.
#pragma once

#include "tests/support/Meshes.h"

#include <ctime>
#include <string>

struct ObjText
{
    std::string text;
    int quads = 0;
};

/// A torus of nu * nv quads with texture coordinates, two groups and two materials, as an exporter writes it.
const ObjText& TorusText(int nu, int nv);

/// The same as a record, and with polygons and vertices in random order (then in one group, of one material).
const GEOM& TorusRecord(int nu, int nv);
const GEOM& ShuffledTorusRecord(int nu, int nv);

/// Seconds that a call takes, for benchmarks that time only part of an iteration. Processor time, which on a machine
/// that others use too varies less than the clock on the wall; for work on one thread they are the same.
template <class Work>
double SecondsOf(Work&& work)
{
    const std::clock_t start = std::clock();
    work();
    return double(std::clock() - start) / CLOCKS_PER_SEC;
}
