// Flow control: blocks, if/else, while, forvalues, foreach, continue, and
// program trace. Loops re-read their stored lines: in a program, `sys_upline`
// moves back; a loop typed in a do-file or at the prompt is first read whole
// into a private program and run from there.
#pragma once
#include <cstddef>
#include <cstdint>

namespace korvu {

inline constexpr int32_t MAXWHILE = 1000;   // nested loops typed outside a program
inline constexpr int32_t MAXFOREACH = 9999; // nested foreach

// Command handlers (the argument of ifcmd: 1 for `while`).
int ifcmd(int iswhile);
int elsecmd(int);
int forvals(int);
int foreach (int);
int continuecmd(int);
int cexitcmd(int);

// The rest of the innermost foreach list, for `ferest()`.
int foreachrest(char* dst, size_t n);

// Next line of the running source into `console`: the private loop program
// when one runs, else getreq(1). 1 at the end of the source.
int flow_getline();

// A single command standing in the tokenizer, run in place: no second
// expansion and no status line; an `exit` leaves `exitflg` set.
int flow_dispatch();

// Trace.
extern uint8_t korvu_trace_code, korvu_trace_exp, korvu_trace_sep, korvu_trace_indent,
    korvu_trace_number;
extern int32_t korvu_trace_l0, korvu_trace_l1, korvu_trace_depth;
extern char korvu_trace_hilite[81];
extern uint8_t korvu_trace_hiword;
void tracepgm(int phase);                                         // 0 as read, 1 expanded
void tracepgmdiv(int phase, const char* owner, const char* name); // 0 begin, 1 end
bool trace_shown();
// `set trace`, `set tracedepth`, `set traceexpand`, `set tracesep`,
// `set traceindent`, `set tracenumber`, `set tracehilite`.
int set_trace();
int set_tracedepth();
int set_traceexpand();
int set_tracesep();
int set_traceindent();
int set_tracenumber();
int set_tracehilite();

} // namespace korvu
