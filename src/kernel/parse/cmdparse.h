// Command syntax declaration: a handler sets the switches below, then calls
// `parse`, which reads varlist, if, in, using, =exp, weights and options in any
// order and leaves the results in the globals that follow.
#pragma once

#include <cstdint>
#include <string>

#include "data/area/dataarea.h"
#include "data/sort/bystate.h"
#include "kernel/loop/scratch.h"

namespace korvu {

// The command-state block, reset by `cmdinit` for every command.
extern int32_t i_nvar;
extern uint8_t wprogtype, ifable, oable, vable, opable, byable, wable, uable, wgtable, rcpable,
    allowskip, lvxtra, v_or_o_req, vexists, wgtallowt;
extern int32_t dynmattype;

struct CmdState {
    int32_t i_nvar;
    uint8_t wprogtype, vable, oable, ifable, rcpable, wgtable, uable, wable, byable, opable,
        v_or_o_req, lvxtra, allowskip, vexists, wgtallowt;
    int32_t dynmattype;
    uint8_t c_outlev;
    int32_t byvar;
};

void cmdinit();
void cmdinit_plus_byvar();
void save_cmd_state(CmdState* rec);
void restore_cmd_state(const CmdState* rec);

// Results of parse.
extern int32_t lnvar, nblist;
extern int32_t blist[5];
extern int32_t nobs1, nobs2, nobss1, nobss2;
extern uint8_t orange, ifclause, weclause, wgtold, vrange;
extern int32_t wgttype, origwgttype;
extern std::string wgtexptext; // the text of the weight's expression, as typed
extern char filesp[FNLEN];
extern char esamplename[33];

// Weight kinds.
enum : int32_t { WGT_AW = 1, WGT_FW = 2, WGT_PW = 4, WGT_IW = 8 };

int parse();
int parse1();
int parse_ifinopts();
int pfixeq();
bool iskey(const char* tok);
bool iskeyorb(const char* tok);
int wgtdflt(int dflt);

} // namespace korvu
