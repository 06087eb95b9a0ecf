// The program side of a frame, as the programs subsystem defines it. Until
// that subsystem is linked in, weak defaults in dofile.cpp stand in (a
// program frame then fails with 199); this header then gives way to its own.
#pragma once
#include <cstdint>

namespace korvu {

struct PgmRec;

// What a program frame saves on entry and puts back on exit.
struct PgmFrame {
    PgmRec* rec;
    uint8_t running, rmsg, is_cls, pclass, mvmodern, byable_ado;
    int32_t caller_vernum;
    char pgmclass[33];
};
// On entry of godo(3): finds the program `cmd` in the scope `sys_pgmclass`,
// marks it running, and sets sys_pgmname, sys_pgmclass, sys_pgmloc, runprog.
int pgm_prolog(PgmFrame* f);
// The class code the frame end gives rmtmpdyn: 1 r-class, 2 e-class,
// 3 s-class, 0 none.
int pgm_retcls(const PgmFrame* f);
// On exit of godo(3), after the locals are gone.
void pgm_epilog(const PgmFrame* f);

} // namespace korvu
