#include "base/BString.h"
