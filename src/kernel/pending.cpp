// Entry points whose subsystems are not linked in yet.
#include <cstring>

#include "kernel/errors.h"
#include "kernel/gettok.h"
#include "kernel/loop.h"
#include "kernel/macro.h"
#include "output/spout.h"

namespace korvu {

int macexp() {
    return macexp_console();
}

} // namespace korvu
