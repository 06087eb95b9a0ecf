// Command handlers of the data area, reading their arguments from the
// tokenizer.
#pragma once
#include <cstddef>
#include <cstdint>

namespace korvu {

// ---------------------------------------------------------------------------
// Command handlers, reading their arguments from the tokenizer
// ---------------------------------------------------------------------------
int set_memory();      // set memory [+|-]#[b|k|m|g] [, permanently]
int set_maxvar();      // set maxvar # [, permanently]
int set_matsize();     // set matsize # [, permanently]
int set_maxobs();      // set maxobs # [width #] [old_maxvar #]  (old do-files)
int set_virtual();     // set virtual on|off
int memorycmd(int);    // memory
int repartcmd(int);    // _repart width|obs [+|-]#
int compresscmd(int);  // compress [varlist]
int drop_all_cmd(int); // drop _all

} // namespace korvu
