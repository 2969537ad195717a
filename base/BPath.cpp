#include "base/BPath.h"
