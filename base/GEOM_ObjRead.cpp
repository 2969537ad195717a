#include "base/GEOM_Obj.h"
