#include "kernel/startup.h"

namespace korvu {
int korvu_main(int, char**) { return 0; }
}  // namespace korvu
