#include "mesh/VXVertSmoothingList.h"
