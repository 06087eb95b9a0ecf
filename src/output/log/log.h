// Logs: a record of the session as the results window shows it, in text or
// ptag form, and the command log of typed lines.
#pragma once
#include <cstdint>

#include "kernel/loop/scratch.h"

namespace korvu {

struct LogRec {
    int32_t fd = 0;     // 0 when closed
    uint8_t type = 0;   // 1 ptag, 0 text
    uint8_t status = 0; // 1 on, 0 paused
    char filename[FNLEN] = {};
    char logname[33] = {};
};

extern LogRec log_m; // the unnamed log
// The open log of that name; null when there is none.
const LogRec* log_named(const char* name);
extern int32_t cmdlog_fd;
extern char cmdlog_finame[FNLEN];
extern uint8_t cmdlog_ok;
extern int32_t korvu_log_default; // 1 text, else ptag

int logcmd(int iscmdlog);
void cmdlog_write(const char* line);
void cmdlog_flush();
// Opens a log as `log using` does; flags: 1 new, 17 replace, 129 append, +8 quiet.
int log_open(const char* filename, int flags, int type, const char* logname);
void log_closeall();
int log_open_batch(const char* filename); // the log of korvu-xe -b
// kind: 0 text, 1 texman, 2 html, 3 webhtml
int translate_cmd(int kind);
int translate_row(int);

} // namespace korvu
