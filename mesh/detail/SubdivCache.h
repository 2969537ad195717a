// VelmarBase: mesh processing.
#pragma once

#include "base/MEM.h"
#include "mesh/kernel/Refiner.h"

#include <cstddef>
#include <cstdint>
#include <memory>

/// What a control mesh keeps of its last refinement, so that a new pose costs no more than its interpolation.
struct VXSubdivCache
{
    VXSubdivCache() = default;
    VXSubdivCache(const VXSubdivCache&) = delete;
    VXSubdivCache& operator=(const VXSubdivCache&) = delete;
    ~VXSubdivCache() { DropRefiner(); }

    void DropRefiner()
    {
        refiner.reset();
        MEM_Release(positions);
        MEM_Release(uvs);
    }
    std::size_t MemoryUsed() const
    {
        return sizeof *this + (refiner ? refiner->MemoryUsed() : 0) + MEM_Capacity(positions) * sizeof(VERTEX) +
               MEM_Capacity(uvs) * sizeof(T_VERTEX);
    }

    // Of the last build; a difference from these asks for another one.
    std::int32_t numVerts = -1;
    std::int32_t numPolys = -1;
    std::int32_t level = 0;

    std::unique_ptr<vx::Refiner> refiner; ///< null: nothing is kept
    std::uint64_t number = 0;             ///< of the refiner; no other of this process has it
    bool nonDefaultScheme = false;        ///< what the last call asked for; nothing depends on it yet
    VERTEX* positions = nullptr;          ///< all levels in a row, level 0 being the control mesh's (a handle)
    T_VERTEX* uvs = nullptr;              ///< the same for texture vertices; null without (a handle)
};
