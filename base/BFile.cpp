#include "base/BFile.h"
