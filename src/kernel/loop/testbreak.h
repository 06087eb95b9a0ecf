// A test switch: with KORVU_TEST_BREAK_AFTER=N in the environment at start-up,
// every poll for break consults the event search, and the N-th one raises the
// break flag as if the user had pressed the break key. For tests of what a
// break leaves behind; without the variable nothing changes.
#pragma once
#include <cstdint>

namespace korvu {

extern int64_t test_break_after; // polls left before the break; 0 when off

// Counts one poll; raises the break flag when the count runs out.
void test_break_tick();

} // namespace korvu
