#include "base/XMLStringRes.h"
