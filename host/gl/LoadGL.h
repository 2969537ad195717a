// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BString.h"

namespace vx
{
/// Loads OpenGL's entry points for the context that is current on this thread, offscreen or windowed.
/// @return empty when all that the draw engine needs is there; otherwise what is missing, in words
VELMAR_HOST_EXPORT BString LoadGL();

/// Whether a context is current on this thread, and has not been lost by a reset of the graphics card.
VELMAR_HOST_EXPORT bool ContextIsAlive();

/// "renderer, version" of the current context.
VELMAR_HOST_EXPORT BString DescribeGL();

/// Reads and clears OpenGL's error state. @return empty, or the names of the errors that were pending
VELMAR_HOST_EXPORT BString PendingGLErrors();
} // namespace vx
