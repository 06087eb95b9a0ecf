// Commands on the variables and observations of the dataset: the table rows
// call these.
#pragma once

namespace korvu {

int drop(int keep); // drop varlist | drop _all; keep varlist (arg 1)
int renamecmd(int); // rename old new
int ordercmd(int);  // order varlist
int stmove(int);    // move a b
int mvvar(int a, int b, int flag);
int formatcmd(int);   // format varlist %fmt | format %fmt varlist | format [varlist]
int describecmd(int); // describe [varlist] [, short]
int listcmd(int);     // list [varlist] [if] [in] [, options]
int inputcmd(int);    // input [[type] name ...]
int revar(int);       // tsrevar varlist [, substitute list]
int set_obs();        // set obs #
int set_varabbrev();  // set varabbrev on|off

// Links to the labels subsystem; null until it is built.
extern const char* (*varlabel_hook)(int v); // variable label of v
extern const char* (*datalabel_hook)();     // data label
extern const char* (*datadate_hook)();      // time stamp of the data

} // namespace korvu
