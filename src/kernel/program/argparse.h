// Taking a program's arguments apart: `syntax`, the older `parse`,
// `tokenize`, `args`, `gettoken`, `numlist`, `confirm`, the marker commands
// and `unabcmd`.
#pragma once
#include <cstddef>
#include <string>
#include <vector>

namespace korvu {

// Number lists. Flags: 1 ascending, 2 descending, 4 integer, 32 sort,
// 64 missing allowed as a value. Bounds: a value must lie in [lo, hi], or in
// the open side where loopen/hiopen is set.
enum : int { NL_ASC = 1, NL_DESC = 2, NL_INT = 4, NL_SORT = 32, NL_MISS = 64 };
struct NumRange {
    double lo, hi;
    bool loopen = false, hiopen = false;
};
// Reads `text` into `out`; at most `limit` elements (0: 1600). Returns 0 or a
// negative code -121 to -127.
int znumlist_text(const char* text, std::vector<double>& out, int minc, int maxc, int flags,
                  const NumRange* range, int limit);
// The spelling of one element: "%18.0g" trimmed, decimal point whatever the setting.
std::string numtext(double x);
// Checks and normalises `text` into the local or global `macro` (null: no
// store); prints the message and returns the code on failure.
int makemacnumlist(const char* text, const char* macro, int minc, int maxc, int flags,
                   const NumRange* range, int limit, std::string* out);
// The hook behind findoptv and `foreach ... of numlist`: prints the message of
// a bad list and returns its code, 121 to 127.
int numlist_hook(const char* text, double* values, int n, int flags, int* count);

// Hooks to stores and data that live elsewhere. Each may be null.
struct ArgHooks {
    // Posts r(name) as a macro; null stores it in the dictionary as type 21.
    int (*post_rmacro)(const char* name, const char* value);
    // Clears r() before a command that posts it.
    void (*clear_r)();
    // Makes a byte variable `name` (new) holding 1 for the selected
    // observations and 0 elsewhere, by the current parse (ifpgm, nobs1,
    // nobs2, weights); zeroweight keeps zero weights.
    int (*mark)(const char* name, int zeroweight);
    // Sets marker variable `marker` to 0 where any variable of the list is
    // missing (or an empty string, unless strok).
    int (*markout)(const char* marker, const int* vars, int nvars, int strok, int sysmissok);
};
extern ArgHooks arg_hooks;

int rpostmac(const char* name, const char* value);

int kvsyntax(int);
int kvparse(int);
int kvtoken(int);
int kvargs(int);
int kvgettok(int);
int numlist(int);
int confirm(int);
int markcmd(int);
int markout(int);
int markscmd(int);
int markin(int);

} // namespace korvu
