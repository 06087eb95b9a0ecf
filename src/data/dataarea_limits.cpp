#include "data/dataarea_limits.h"

namespace korvu {
int32_t matsize = 400;
}
