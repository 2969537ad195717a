// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BArray.h"
#include "base/BString.h"
#include "draw/VXPickBuffer.h"

#include <cstdint>

namespace vx
{
/// The drawing target of a pick pass: a 32-bit whole number and a depth for each pixel, one sample, so that nothing
/// between two names ever comes out. Belongs to the context that was current at Create.
class VELMAR_HOST_EXPORT PickTarget
{
public:
    PickTarget() = default;
    ~PickTarget() { Release(); }
    PickTarget(const PickTarget&) = delete;
    PickTarget& operator=(const PickTarget&) = delete;

    BString Create(int width, int height); ///< keeps a target of that size; empty, or what went wrong
    void Release();
    void Begin();                    ///< makes it the target of drawing, in which nothing is seen
    bool Read(VXPickBuffer& buffer); ///< into a buffer of the same size; false when memory ran out

private:
    std::uint32_t mFrame = 0, mNames = 0, mDepths = 0;
    int mWidth = 0, mHeight = 0;
};
} // namespace vx
