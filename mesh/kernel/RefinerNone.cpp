// Stands in for Refiner.cpp where OpenSubdiv is not compiled in: no refiner is ever made, so nothing else is reached.
#include "mesh/kernel/Refiner.h"

namespace vx
{

struct Refiner::Tables
{
};

std::unique_ptr<Refiner> Refiner::Make(const ControlTopology&, int) noexcept { return nullptr; }
Refiner::Refiner(std::unique_ptr<Tables>) {}
Refiner::~Refiner() = default;

std::int32_t Refiner::NumVertsTotal() const { return 0; }
std::int32_t Refiner::NumVerts() const { return 0; }
std::int32_t Refiner::NumFaces() const { return 0; }
std::int32_t Refiner::NumUVsTotal() const { return 0; }
std::int32_t Refiner::NumUVs() const { return 0; }
std::size_t Refiner::MemoryUsed() const { return 0; }
void Refiner::Interpolate(VERTEX*) const {}
bool Refiner::InterpolateUVs(T_VERTEX*) const noexcept { return false; }
void Refiner::Corners(std::int32_t*) const {}
void Refiner::UVCorners(std::int32_t*) const {}
void Refiner::FaceParents(std::int32_t*) const {}
void Refiner::VertChildren(std::int32_t*) const {}

} // namespace vx
