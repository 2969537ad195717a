// VelmarBase: engine and scene.
#include "engine/VXObjectDelegate.h"

VXObjectDelegate::~VXObjectDelegate() = default;
int VXObjectDelegate::PrepareForDrawing(VXObject*) { return 0; }
int VXObjectDelegate::EndPrepareForDrawing(VXObject*) { return 0; }
int VXObjectDelegate::PrepareForPicking(VXObject*) { return 0; }
int VXObjectDelegate::EndPrepareForPicking(VXObject*) { return 0; }
int VXObjectDelegate::MungeSubdividedVerts(VXObject*, int, VERTEX*, int) { return 0; }
