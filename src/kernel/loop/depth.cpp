#include "kernel/loop/depth.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cstring>

#include "kernel/errors/errors.h"
#include "kernel/flow/flow.h"
#include "kernel/loop/loop.h"
#include "output/spout.h"

namespace korvu {

int32_t reqdepth = 0;

// Stack for one nesting level, measured for the costliest nesting (a loop in
// a loop) and doubled: about 470 bytes a level in an optimised build, 860
// under the address sanitizer. A reserve is kept for the innermost command.
#if defined(__SANITIZE_ADDRESS__)
static constexpr uint64_t LEVEL_BYTES = 2048;
#else
static constexpr uint64_t LEVEL_BYTES = 1024;
#endif
static constexpr uint64_t RESERVE_BYTES = 4u << 20;
static constexpr uint64_t WANT_BYTES = RESERVE_BYTES + LEVEL_BYTES * MAXREQDEPTH + (8u << 20);

void depth_stack_raise(char** argv) {
    rlimit rl;
    if (getrlimit(RLIMIT_STACK, &rl) || rl.rlim_cur == RLIM_INFINITY) return;
    if (rl.rlim_cur >= WANT_BYTES) return;
    if (rl.rlim_max != RLIM_INFINITY && rl.rlim_max < WANT_BYTES) return;
    rl.rlim_cur = WANT_BYTES;
    if (setrlimit(RLIMIT_STACK, &rl)) return;
    // the main thread's stack is sized when a program starts: start again;
    // the limit now suffices, so this happens once
    execv("/proc/self/exe", argv);
}

int32_t reqdepth_limit() {
    static int32_t limit = 0;
    if (limit) return limit;
    uint64_t stack = 8u << 20;
    rlimit rl;
    if (!getrlimit(RLIMIT_STACK, &rl))
        stack = rl.rlim_cur == RLIM_INFINITY ? WANT_BYTES : static_cast<uint64_t>(rl.rlim_cur);
    uint64_t levels = stack > RESERVE_BYTES ? (stack - RESERVE_BYTES) / LEVEL_BYTES : 16;
    limit =
        static_cast<int32_t>(levels < static_cast<uint64_t>(MAXREQDEPTH) ? levels : MAXREQDEPTH);
    if (limit < 16) limit = 16;
    return limit;
}

// Does the line open a block: a brace that ends it?
static bool opensblock(const char* p) {
    size_t n = strlen(p);
    while (n && p[n - 1] == ' ') n--;
    return n && p[n - 1] == '{';
}

int reqtoodeep() {
    if (opensblock(console)) {
        // lines up to the matching close, counted, not run
        int32_t depth = 1;
        while (depth > 0 && !flow_getline()) {
            const char* p = console;
            while (*p == ' ') p++;
            if (*p == '}')
                depth--;
            else if (opensblock(p))
                depth++;
        }
    }
    return errorf(1000, "commands nested too deeply: at most %d levels\n",
                  static_cast<int>(reqdepth_limit()));
}

} // namespace korvu
