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
