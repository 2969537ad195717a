#include "mesh/VXEdgeList.h"
