// generate, replace, and dropping or keeping observations.
#pragma once
#include <cstdint>

namespace korvu {

extern uint8_t deftype; // `set type`: the default numeric type of generate

int gen(int);
int replacecmd(int);
// drop if/in (keep 0) and keep if/in (keep 1)
int stdelete(int keep);
bool selobs(int i);
int promoted_vartype(int type, double x);
int doupnum(int v, int* type, double x);
void missmsg(int64_t n, int nl);
bool chkint(int code); // byte, int or long
// Removes the observations whose flag in gone[1..nobs] is set, the others
// keeping their order (observation pointers move, records stay); returns how
// many went.
int64_t lclcmprs(const char* gone);
// Removes the observations where the long marker variable v is non-zero.
int64_t dropobsifmarked(int v);
// "aweight", "fweight", "iweight" or "pweight" for a weight kind.
const char* wgtkeyword(int kind);

} // namespace korvu
