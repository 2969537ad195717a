// VelmarBase: drawing.
#pragma once

namespace vx
{
/// Has OpenGL's functions loaded for the current context, unless the host has done so. False where they are not to be
/// had, as without a context.
bool LoadGLFunctions();
} // namespace vx
