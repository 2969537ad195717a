// VelmarBase: text meshes.
#pragma once

#ifdef _WIN32
#include <windows.h> // GLU's header takes its calling convention from it
#endif
#include <GL/glu.h>

#ifdef _WIN32
#define VELMAR_GLU_CALL CALLBACK
#else
#define VELMAR_GLU_CALL
#endif

namespace vx
{
using GluCall = void(VELMAR_GLU_CALL*)(); ///< what gluTessCallback takes, whatever the callback's own arguments
} // namespace vx
