#include "base/MEM.h"
