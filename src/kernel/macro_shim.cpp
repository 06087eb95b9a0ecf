// Temporary stand-ins until the loop state lands.
#include "kernel/macro_deps.h"

namespace korvu {
int32_t macrolen = 33 * 5000 + 200, conslen = 33 * 5000 + 216, vernum = 920;
static char console_buf[33 * 5000 + 216];
char* console = console_buf;
uint8_t procflg = 1;
char* tmpdir = const_cast<char*>("/tmp");
int32_t unix_pid = 0;
} // namespace korvu
#include "kernel/macro.h"
#include "kernel/macro_internal.h"
namespace korvu {
void mac_settok(char*) {}
int extended_xpand(const char*, char* dst) {
    dst[0] = 0;
    return 199;
}
} // namespace korvu
#include "kernel/errors.h"
namespace korvu {
int macnotfound(const char*) {
    return 111;
}
} // namespace korvu
