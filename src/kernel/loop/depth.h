// How deeply requests may nest. Commands nest by plain recursion (a block, a
// loop, a prefix or an `if` runs its lines through doreq and selreq again), so
// the depth is bounded by a count checked at each dispatch, set from the
// stack the process has: nesting that the stack could not hold ends with a
// message and r(1000), the session alive.
#pragma once
#include <cstdint>

namespace korvu {

// The most requests that may nest, 9999 nested foreach loops among them.
inline constexpr int32_t MAXREQDEPTH = 12000;

extern int32_t reqdepth; // requests now being carried out, one inside another

// At start-up, before anything else: when the stack is smaller than the
// nesting above needs and the hard limit allows more, the soft limit is raised
// and the program started again in place, so that the new size applies.
void depth_stack_raise(char** argv);

// The limit for this process: MAXREQDEPTH, or less when the stack is small.
int32_t reqdepth_limit();

// Reports nesting that went too deep; a block opened on the current line is
// passed over to its close first, so the lines around it keep their
// structure. Returns 1000.
int reqtoodeep();

} // namespace korvu
