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

} // namespace korvu
