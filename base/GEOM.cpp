#include "base/GEOM.h"
