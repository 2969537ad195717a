// VelmarBase: mesh processing.
#pragma once

#include "mesh/VXGeom.h"
#include "mesh/VXTangentThread.h"

#include <optional>

namespace vx
{

/// Computes a mesh's tangents beside what happens in a scope, which must leave positions, corners and texture alone.
/// They are there at its end; where no thread is to be had they are computed then.
class TangentsBeside
{
public:
    TangentsBeside(VXGeom* geom, bool wanted) : mGeom(geom), mWanted(wanted)
    {
        if (wanted)
            mRunning = mThread.emplace(geom).Run();
    }
    ~TangentsBeside()
    {
        if (mRunning)
            mThread->Join();
        else if (mWanted)
            mGeom->ComputeTangents();
    }
    TangentsBeside(const TangentsBeside&) = delete;
    TangentsBeside& operator=(const TangentsBeside&) = delete;

private:
    VXGeom* mGeom;
    bool mWanted, mRunning = false;
    std::optional<VXTangentThread> mThread;
};

} // namespace vx
