#include "base/MAT.h"
