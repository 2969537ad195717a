#include "base/BBitArray.h"
