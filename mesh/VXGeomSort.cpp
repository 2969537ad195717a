#include "mesh/VXGeom.h"
