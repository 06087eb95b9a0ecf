// The variable table: names, types, formats and value-label names of the
// variables in dataset order, and how a typed name resolves to a number.
// The tables themselves are the fixed tables of the data area (dataarea.h):
// `varlist` (33 bytes a name), `typlist`, `fmtlist` (12 bytes), `lbllist`.
#pragma once
#include <cstdint>

#include "data/area/dataarea.h"

namespace korvu {

extern uint8_t korvu_varabbrev; // `set varabbrev`: 1 abbreviations allowed

// varname(v), fmtname(v), lblname(v) in dataarea.h address the tables.

// Resolve a possibly abbreviated name. mode above 9: a name not found is
// acceptable (returns nvar + 1); 0 or 10: exact only. Returns the number or
// the negated return code, having printed the message.
int korvu_findvar(const char* name, int mode, int noabbrev);
int sysfindvar(const char* name);        // exact, from the first; 0 when absent
int sysfindvarfromend(const char* name); // exact, from the last; 0 when absent
int findvarnoab(const char* name, int report);
int genfindvar(const char* name); // korvu_findvar plus the ~ form
int strhit(const char* prefix, const char* name);
int chkname(const char* name, int report);
int chkreserved(const char* name);
int addvar(const char* name, int code); // new variable at the end: 0 or a code
int addwrkvar(int code, int reserve);   // temporary variable: number or negated code
char* abvar(const char* name, int width);
int wildmatch(const char* pattern, const char* name); // * and ? wild cards
bool ispatexempt(int v); // the estimation-sample variable, which no pattern matches

} // namespace korvu
