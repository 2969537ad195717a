#include "base/BThread.h"
