#include "kernel/errors.h"

namespace korvu {
int32_t globalrc = 0, captrc = 0;
uint8_t error_style = 1;
int error(int code) { return code; }
}  // namespace korvu
