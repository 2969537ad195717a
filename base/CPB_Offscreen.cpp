#include "base/CPB_Offscreen.h"
