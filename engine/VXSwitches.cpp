// VelmarBase: library-wide switches.
#include "engine/VXSwitches.h"

namespace
{
bool gTangentsRequested = false;
bool gEdgeLinesSuppressed = false;
#ifdef VELMAR_WITH_OPENSUBDIV
bool gOpenSubdivOn = true;
#else
bool gOpenSubdivOn = false;
#endif
bool gSubdividedDrawing = false;
bool gAbortOnBadSubdivSource = false;
} // namespace

bool VXSwitches::TangentsRequested() { return gTangentsRequested; }
void VXSwitches::SetTangentsRequested(bool on) { gTangentsRequested = on; }
bool VXSwitches::EdgeLinesSuppressed() { return gEdgeLinesSuppressed; }
void VXSwitches::SetEdgeLinesSuppressed(bool on) { gEdgeLinesSuppressed = on; }
bool VXSwitches::OpenSubdivOn() { return gOpenSubdivOn; }
void VXSwitches::SetOpenSubdivOn(bool on) { gOpenSubdivOn = on; }
bool VXSwitches::SubdividedDrawing() { return gSubdividedDrawing; }
void VXSwitches::SetSubdividedDrawing(bool on) { gSubdividedDrawing = on; }
bool VXSwitches::AbortOnBadSubdivSource() { return gAbortOnBadSubdivSource; }
void VXSwitches::SetAbortOnBadSubdivSource(bool on) { gAbortOnBadSubdivSource = on; }
