#include "kernel/loop/limits.h"

namespace korvu {

int32_t maxmaxvar = 5000;
int32_t maxlrecl = 12 * 5000;
int32_t conslen = 33 * 5000 + 216;
int32_t macrolen = 33 * 5000 + 200;
int32_t vernum = KORVU_VERSION;

void setlimits(int32_t maxvar) {
    maxmaxvar = maxvar;
    maxlrecl = 12 * maxvar;
    conslen = 33 * maxvar + 216;
    macrolen = 33 * maxvar + 200;
}

} // namespace korvu
