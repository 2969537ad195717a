#include "base/BMutex.h"
