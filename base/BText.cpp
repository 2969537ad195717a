#include "base/BText.h"
