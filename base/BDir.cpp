#include "base/BDir.h"
