// The command loop: one line at a time from the user, a do-file or a stored
// program, expanded, looked up and handed to a handler. Commands nest by plain
// recursion: a do-file or program runs getreq/doreq one level deeper.
#pragma once
#include <cstdint>

namespace korvu {

struct DoFile; // the open do-file reader

extern char* console; // the current request line, conslen bytes
extern uint8_t procflg, syselseflg, runprog, doeof, delimit;
extern DoFile* dofilep;
extern char sys_pgmname[33], sys_pgmclass[33];
extern const void* sys_pgmloc;
extern int32_t sys_upline;
extern uint8_t sys_is_cls, exitflg, gexitflg, mac_expanded, realbusy, korvu_rmsg, nokbrd;
extern int32_t korvu_level;
// The prompt in front of a line the user types or a do-file supplies: ". ",
// or what a command reading lines of its own (input) puts there meanwhile.
extern const char* req_prompt;
extern int32_t sysclock;
// Set while a `lumo` block reads its lines: a line starting with `*` is a
// statement there (a pointer dereference), not a comment.
extern uint8_t getreq_keepstar;
extern int16_t korvu_busy;
extern int32_t batchmode;
extern int32_t sinit_state;
extern char* tmpdir;
extern int32_t unix_pid;
extern int32_t usermask;
extern char kvFAST;
extern int32_t lastby;
extern double rmsgtime;
extern uint8_t korvu_trace_flg;
extern int32_t cmdlog_on;
extern uint8_t in_byable_ado; // a by-able program is running under by

int getreq(int fromprog);
int pgmgetline();                // next line of the running program into `console`; 1 at its end
int runprogram();                // runs `cmd` as a defined or autoloaded program
void log_echo(const char* line); // the echo of a typed line, for the logs only
[[noreturn]] void sexit(int status);
int doreq();
int selreq();
int readcons(int maxlen, int fromdo, int allowhash);
void statusline();

// Key source of the console: returns one line; 1 at end of input.
int console_readline(char* buf, int maxlen, const char* prompt);
void console_history_add(const char* line);
int console_is_tty();

} // namespace korvu
