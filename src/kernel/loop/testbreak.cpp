#include "kernel/loop/testbreak.h"

#include <cstdlib>

#include "app/link.h"
#include "kernel/loop/brk.h"

namespace korvu {

int64_t test_break_after = 0;

void link_test_break() {
    const char* s = std::getenv("KORVU_TEST_BREAK_AFTER");
    if (!s || !*s) return;
    char* end;
    long long n = std::strtoll(s, &end, 10);
    if (*end || n < 1) return;
    test_break_after = n;
    poll_rate = 1; // every poll reaches the event search, so polls are counted
    poll_rate_rarely = 1;
}

void test_break_tick() {
    if (test_break_after > 0 && --test_break_after == 0) stopflag = 1;
}

} // namespace korvu
