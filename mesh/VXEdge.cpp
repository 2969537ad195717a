#include "mesh/VXEdge.h"
