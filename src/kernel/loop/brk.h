// Break flags and polling. The signal handler only stores into the flags;
// long-running code polls and returns 1 ("Break") when it sees one.
#pragma once
#include <cstdint>

namespace korvu {

extern volatile int32_t stopflag, altstopflag;
extern int32_t stopflag_val, altstopflag_val;
extern int32_t poll_counter, poll_rate, poll_rate_rarely, poll_time;

void search_event();
void search_event_now();

// Standard poll: an increment and a compare; the clock is read once in
// `poll_rate` calls.
inline int kvpollstd() {
    if (++poll_counter >= poll_rate) search_event();
    return stopflag;
}
inline int kvpollrare() {
    if (++poll_counter >= poll_rate_rarely) search_event();
    return stopflag;
}
int setbreak(int on);

} // namespace korvu
