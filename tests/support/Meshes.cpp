#include "tests/support/Meshes.h"
