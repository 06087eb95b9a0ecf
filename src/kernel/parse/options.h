// Options: the text behind the comma is split into a table of raw option
// positions; handlers pick their options out by name; `chkopt` complains of
// whatever nobody took.
#pragma once
#include <cstdint>

namespace korvu {

inline constexpr int MAXOPT = 70;
extern int32_t noptn;
extern char* optlist[MAXOPT];
extern uint8_t optavbl[MAXOPT]; // bit 1 taken, bit 2 recognised but form in doubt
extern int32_t lastopt;         // index + 1 of the last option found, 0 for none
extern double cilevel, dflt_cilevel;

int proption();
int moveto_opt_arg_end();
void resetopt();

int findopt(const char* name, int minlen, int dflt);
int findopt_lc(const char* name, int minlen, int dflt);
int findopta(const char* name, int minlen, int dflt);
int findoptv(const char* name, int minlen, double* values, int n, int flag);
int findoptv_lc(const char* name, int minlen, double* values, int n, int flag);
char* findargn(const char* name, int minlen, char* dst, int size, int maxwords);
char* findargasis(const char* name, int minlen, char* dst, int size);
int findvlist(const char* name, int minlen, int* dst, int maxvars);
int findusg(int minlen, char* dst, int issaving); // dst of FNLEN bytes
int findlevel(int minlen);
int findlevellike(const char* name, int minlen);
int findscal(int dflt, int minlen);
int chkopt();
int chkrange(const char* name, int v, int lo, int hi);
int dchkrange(const char* name, double v, double lo, double hi);
int chkcilevel(double level);

// Reads a number in the system's forms (decimal, hex float "1.0x+3ff", missing
// ".", ".a" to ".z"); 0 on success.
int cnvstoz(const char* text, double* out);

// Hooks filled in by later subsystems: a numlist reader for findoptv and a
// varlist reader for findvlist. Null until those subsystems are linked in.
extern int (*znumlist_hook)(const char* text, double* values, int n, int flags, int* count);
extern int (*findvlist_hook)(const char* text, int* dst, int maxvars, int* count);

} // namespace korvu
