#include "host/image/Label.h"

namespace vx
{
bool DrawLabel(CPB_PixelBucket&, const CPB_Rect&, const char*, const LabelStyle&) { return false; }
} // namespace vx
