#include "base/BDependentProvider.h"
