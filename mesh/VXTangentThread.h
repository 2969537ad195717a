// VelmarBase: mesh processing.
#pragma once

#include "VelmarExport.h"
#include "base/BThread.h"

class VXGeom;

/// Computes a mesh's tangents beside its normals: the two write different arrays and only read the rest. Whoever starts
/// it joins it before anything else happens to the mesh.
class VELMAR_EXPORT VXTangentThread : public BThread
{
public:
    explicit VXTangentThread(VXGeom* geom) : BThread(false, kStackSize, false), mGeom(geom) {}
    ~VXTangentThread() override { Join(); }

protected:
    void DoBegin() override;

private:
    static constexpr std::size_t kStackSize = 1048576;
    VXGeom* mGeom; ///< not owned
};
