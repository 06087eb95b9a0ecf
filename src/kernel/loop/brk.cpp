#include "kernel/loop/brk.h"

#include <ctime>

#include "kernel/loop/testbreak.h"

namespace korvu {

volatile int32_t stopflag = 0, altstopflag = 0;
int32_t stopflag_val = 1, altstopflag_val = 0;
int32_t poll_counter = 0, poll_rate = 100, poll_rate_rarely = 1000, poll_time = 10;

static time_t last_sec;
static timespec last_ts;

// The console edition has no toolkit queue: a break arrives by signal and is
// already in the flags. Keep the clock bookkeeping so the cost stays bounded.
void search_event() {
    poll_counter = 0;
    if (test_break_after) test_break_tick();
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    long ms = (now.tv_sec - last_ts.tv_sec) * 1000 + (now.tv_nsec - last_ts.tv_nsec) / 1000000;
    if (now.tv_sec == last_sec && ms < poll_time) return;
    last_sec = now.tv_sec;
    last_ts = now;
}

void search_event_now() {}

int setbreak(int on) {
    int was = stopflag_val != 0;
    if ((on != 0) == was) return was;
    if (!on) {
        stopflag_val = 0;
        altstopflag_val = 1;
        altstopflag = stopflag;
        stopflag = 0;
    } else {
        stopflag_val = 1;
        altstopflag_val = 0;
        stopflag = altstopflag;
        altstopflag = 0;
    }
    return was;
}

} // namespace korvu
