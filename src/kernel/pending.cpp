// Entry points whose subsystems are not linked in yet: no program is ever
// running, and a word that is no built-in is unrecognized.
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

int pgmgetline() {
    return 1;
}

int runprogram() {
    uint8_t old = c_outlev;
    c_outlev = 3;
    spoutsetptagweak();
    spout21("unrecognized command:  ");
    spout21(cmd);
    newline();
    c_outlev = old;
    return 199;
}

} // namespace korvu
