// VelmarBase: engine and scene.
#pragma once

#include "VelmarExport.h"
#include "base/Vertex.h"

class VXObject;

/// A host's hook into one object's preparation. Preparations nest; the delegate hears of the outermost alone. A
/// non-zero answer of a Prepare function keeps the object out of the pass. The defaults do nothing and answer 0.
class VELMAR_EXPORT VXObjectDelegate
{
public:
    virtual ~VXObjectDelegate();
    virtual int PrepareForDrawing(VXObject* object);
    virtual int EndPrepareForDrawing(VXObject* object);
    virtual int PrepareForPicking(VXObject* object);
    virtual int EndPrepareForPicking(VXObject* object);

    /// The positions of a subdivision level may be changed in place, before its normals are computed.
    /// @param verts `count` record vertices of that level
    virtual int MungeSubdividedVerts(VXObject* object, int level, VERTEX* verts, int count);
};
