#include "base/BSubject.h"
