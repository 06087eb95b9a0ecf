// Do-files and programs as frames: `godo` saves the interpreter's state on
// the native stack, runs the same getreq/doreq loop one level deeper, and
// puts everything back on every way out (end, exit, error, break).
#pragma once
#include <cstdint>
#include <cstdio>

namespace korvu {

// The do-file reader.
struct DoFile {
    FILE* fp = nullptr;
    int pushed = -1; // one pushed-back character
    char echo[512];  // the raw line as read, for the echo
    int necho = 0;
    bool newline_pending = false;
    bool toolong = false; // a command outgrew the buffer: the file ended there
};

DoFile* dofopen(const char* path, int* rcout);
int getdofcm(DoFile* r);
void dofclos(DoFile* r);
int rddofile(char* dst, DoFile* r, int maxlen, int delim, uint8_t* eofout);

// Modes of godo.
enum : int { DO_DO = 0, DO_RUN = 1, DO_PROGRAM = 3, DO_INCLUDE = 4 };
inline constexpr int32_t MAXLEVEL = 64;

struct LoopBody; // a loop typed outside a program, held as a private program
struct PgmFrame; // the program side of a frame (pgmframe.h)

// Everything a frame saves at entry and puts back at its end.
struct Frame {
    DoFile* reader; // this frame's file, null for a program
    DoFile* dofilep;
    const LoopBody* loopsrc;
    int32_t tmpvctr, tmpfctr, psvfctr, sys_upline, moretime, trace_l0, trace_l1;
    int32_t vernum, caller_vernum, gstate;
    PgmFrame* pgm; // what the program side keeps, for mode 3
    uint8_t delimit, mvmodern, program_class, estrestore, syselseflg, breakallowed, breakdetail,
        resort_on_exit;
    uint8_t s_outlev, ls_outlev, runprog, sys_is_cls, trace_flg, rmsg;
    uint8_t hastmp_fhopened, hastmp_hreturn, hastmp_class, hastmp_vars;
    uint8_t stop; // end the frame on a non-zero code
    uint8_t hold; // status-line hold of the enclosing level
    char pbs_sys[16];
    char pgmname[33], pgmclass[33];
    char traceowner[33]; // the owner shown on the trace dividers of this frame
};

int godo(int mode, int keep);
int doprolog(Frame* f, int mode);
void doepilog(Frame* f, int mode, int keep);

// Flow state.
extern uint8_t breakallowed, breakdetail; // `continue` legal here; 0, 1 continue, 2 break
// These three belong to the programs subsystem; weak defaults stand in.
extern int32_t caller_vernum;
extern uint8_t program_class; // 0 nclass, 1 rclass, 2 sclass, 3 eclass
extern uint8_t resort_on_exit;
extern int32_t gstate;     // an open graph state
extern uint8_t estrestore; // held estimates are to come back at frame end
extern int32_t psvfctr;    // what this frame preserved, -1 nothing
extern uint8_t hastmp_fhopened, hastmp_hreturn, hastmp_class, hastmp_vars;
extern const LoopBody* loopsrc; // the private loop program being run, or null

// While set, doreq at do-file level holds back the status line: the lines of
// a block print their code once, on the line that opened the block.
extern uint8_t status_hold;

// Frame work that belongs to other subsystems. Each hook is null until its
// subsystem sets it; a null hook is skipped.
struct FrameHooks {
    int (*restore)(int automatic);        // preserve: bring the data back
    int (*estirestore)();                 // held estimates back
    int (*cleanesti)();                   // drop estimates made for the frame
    int (*sort_preserve)();               // sortpreserve: remember the order
    int (*sort_restore)(int automatic);   // sortpreserve order back
    int (*cleanhret)();                   // held returns of the frame
    int (*rmtmpclass)();                  // temporary class objects
    int (*file_autoclose)(int32_t level); // files opened by `file` in the frame
    void (*gstate_close)();               // an open graph state
    void (*cls_clear_return)();           // the class return slot
    int (*autoloading)();                 // an ado-file is being loaded
    void (*profiler_addtime)(const char* name, double seconds);
};
extern FrameHooks frame_hooks;

// Blocks: `{` at the head of a line.
int opbrace();

} // namespace korvu
