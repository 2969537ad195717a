// VelmarBase: mesh processing.
#pragma once

#include "base/Vertex.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace vx
{

/// Polygons to refine, as flat arrays. The indices are trusted.
struct ControlTopology
{
    std::int32_t numVerts = 0;
    std::span<const std::int32_t> lengths; ///< corners of each face, at least 3
    std::span<const std::int32_t> corners; ///< vertex of each corner, the faces in a row
    std::int32_t numUVs = 0;
    std::span<const std::int32_t> uvCorners; ///< texture vertex of each corner; empty without texture coordinates
};

/// The uniform Catmull-Clark refinement of a mesh by OpenSubdiv, which this class keeps to itself. Holds topology
/// alone: positions and texture coordinates are the caller's, so that those of a new pose cost their interpolation
/// only.
///
/// Every face of a level above 0 has four corners. The children of a face follow each other in the order of its
/// corners, and those of face f lie before those of face f + 1. Nothing here throws.
class Refiner
{
public:
    /// @param level 1 to 15
    /// @return null when OpenSubdiv is not compiled in, refuses the topology, or memory runs out
    static std::unique_ptr<Refiner> Make(const ControlTopology& control, int level) noexcept;
    ~Refiner();

    // --- Sizes. "Total" is the sum of all levels, the control mesh included; the others are of the last level
    std::int32_t NumVertsTotal() const;
    std::int32_t NumVerts() const;
    std::int32_t NumFaces() const;
    std::int32_t NumUVsTotal() const; ///< 0 without texture coordinates
    std::int32_t NumUVs() const;      ///< 0 without texture coordinates
    std::size_t MemoryUsed() const;   ///< bytes, estimated from the sizes: OpenSubdiv does not tell

    // --- Interpolation. The arrays hold all levels in a row, level 0 filled
    void Interpolate(VERTEX* positions) const;
    bool InterpolateUVs(T_VERTEX* uvs) const noexcept; ///< false when memory ran out

    // --- Topology of the last level, into the caller's arrays
    void Corners(std::int32_t* out) const;      ///< 4 * NumFaces(): vertex of each corner
    void UVCorners(std::int32_t* out) const;    ///< 4 * NumFaces(): texture vertex of each corner
    void FaceParents(std::int32_t* out) const;  ///< NumFaces(): the control face that each descends from
    void VertChildren(std::int32_t* out) const; ///< per control vertex: the vertex that it becomes

private:
    struct Tables;
    explicit Refiner(std::unique_ptr<Tables> tables);
    std::unique_ptr<Tables> mTables;
};

} // namespace vx
