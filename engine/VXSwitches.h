// VelmarBase: library-wide switches.
#pragma once

#include "VelmarExport.h"

/// Switches that hold for the whole process. Read and written on the host's drawing thread; the tangent request is
/// also read before a worker starts, never on it.
namespace VXSwitches
{
VELMAR_EXPORT bool TangentsRequested(); ///< creased normals compute tangents even when not asked to; off
VELMAR_EXPORT void SetTangentsRequested(bool on);
VELMAR_EXPORT bool EdgeLinesSuppressed(); ///< no edge lines are drawn, whatever the options say; off
VELMAR_EXPORT void SetEdgeLinesSuppressed(bool on);
VELMAR_EXPORT bool OpenSubdivOn(); ///< subdivide through OpenSubdiv; on, where it is compiled in
VELMAR_EXPORT void SetOpenSubdivOn(bool on);
VELMAR_EXPORT bool SubdividedDrawing(); ///< a subdivided object does not draw its control mesh's wires; off
VELMAR_EXPORT void SetSubdividedDrawing(bool on);
VELMAR_EXPORT bool AbortOnBadSubdivSource(); ///< the answer of the delegate's default; off
VELMAR_EXPORT void SetAbortOnBadSubdivSource(bool on);

/// Sets a switch for the length of a scope: `Scoped quiet(EdgeLinesSuppressed, SetEdgeLinesSuppressed, true);`. Serves
/// other process-wide settings too.
template <class Value>
class Scoped
{
public:
    Scoped(Value (*get)(), void (*set)(Value), Value value) : mSet(set), mBefore(get()) { set(value); }
    ~Scoped() { mSet(mBefore); }
    Scoped(const Scoped&) = delete;
    Scoped& operator=(const Scoped&) = delete;

private:
    void (*mSet)(Value);
    Value mBefore;
};
} // namespace VXSwitches
