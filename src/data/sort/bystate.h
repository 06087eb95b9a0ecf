// The state of a running `by`, as commands, programs and the evaluator's
// _by() functions see it.
#pragma once
#include <cstdint>

namespace korvu {

extern int32_t byvar;         // 0 none, 1 first by-group, 2 later groups
extern int32_t lastby;        // 1 on the last by-group (and outside a by)
extern int32_t bynvaronexit;  // nvar to go back to when the by-run ends; -1 none
extern int32_t by_index;      // group number of the running by, from 1
extern uint8_t in_byable_ado; // a by-able program is running under by

// The 16-byte by context handed to a program: pbs_msg is what the by-driver
// sends, pbs_sys what the running program holds (saved per frame).
struct ByContext {
    int32_t index;     // group number (0 for a whole-range call)
    int32_t first;     // first observation of the group
    int32_t last;      // last observation of the group
    uint8_t kind;      // 0 none, 1 whole range (onecall), 2 per group, 3 per group without header
    uint8_t lastgroup; // this is the last group
    uint8_t pad[2];
};
static_assert(sizeof(ByContext) == 16);
extern char pbs_msg[16];
extern char pbs_sys[16];
ByContext bycontext(const char* pbs);

// At the start of a program: takes over the by context sent to it, with the
// macros `_byvars` and `_byrc0` of a one-call program.
int set_by_env();
// A program is being run once per by-group.
int korvu_adobycontext();

// The by() option of commands that take one: the variables go into
// sysbylist (nsysbylist of them); byoptc also requires the data sorted on
// them (5 otherwise).
extern int32_t nsysbylist;
int byoptp();
int byoptc();

// The evaluator's by functions: 0 outside a by, else 1 or 2 (first or later
// group); the group number; 1 on the last group; the group's range.
int by_fcn();
int by_call();
int by_lastcall();
void by_fromto(int32_t* n1, int32_t* n2);

// The sort of the by driver: filled in by the sort code, which is built on
// the kernel side that runs `by`.
extern int (*syssort_hook)(const int32_t* vars, int n);

} // namespace korvu
