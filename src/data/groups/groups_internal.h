// Helpers shared by the group commands.
#pragma once
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "data/area/missing.h"
#include "data/groups/groups.h"
#include "kernel/parse/cmdparse.h"

namespace korvu {

// The by-variables a program hands over before the `:` of `_groups sub
// [byvars] : rest`; set by the dispatcher, empty without by.
extern std::vector<int32_t> grp_byvars;

// The selection of nobs1..nobs2 by the `if` of the command (and, when w is
// given, usable weights: not missing, not zero): take[i - nobs1]; with wout
// the weights too. 0, 1 (break) or a code.
int grp_take(std::vector<uint8_t>& take, std::vector<double>* wout);
// Writes x[0 .. n2-n1] into numeric variable v at n1..n2.
void grp_putcolumn(int v, int32_t n1, int32_t n2, const double* x);
// The variables of a varlist text; 0 or a code (message printed).
int grp_varlist(const std::string& text, std::vector<int32_t>& out);
// The numbers of a numlist text; 0 or a code.
int grp_numlist(const std::string& text, std::vector<double>& out);
// The text of an option's argument, "" when absent; found sets *given.
std::string grp_optarg(const char* name, int minlen, bool* given = nullptr);
// Reads a parenthesised span at the tokenizer: the text inside; moves past
// it. 0 or 198.
int grp_paren(std::string& inside);
// Removes the variables marked in drop[v-1]. 0 or a code.
int grp_dropvars(const std::vector<uint8_t>& drop);
// Keeps observations 1..n (n no more than nobs).
void grp_truncobs(int32_t n);

// A new variable of the data made from groups.
struct NewCol {
    std::string name, label, format;
    int type;
    std::vector<double> values;         // one per group
    std::vector<std::string> strs = {}; // one per group instead, for a string type
};
// Replaces the data by one observation per group of g: the key variables
// (values of each group's first observation) then the new columns, sorted on
// the keys. All checks must be done before: only want of room can fail.
int grp_newdata(const std::vector<int32_t>& keys, const Groups& g, std::vector<NewCol>& cols);

// The running sum of one group, compensated (the part lost from the larger
// operand kept in e), with its count and weight total: one record per group,
// so that a group's sums share a cache line.
struct GsAcc {
    double s, e, c, cw;
};
inline void gs_add(GsAcc& a, double xk, double wk) {
    double v = wk * xk;
    double t = a.s + v;
    a.e += std::fabs(a.s) >= std::fabs(v) ? (a.s - t) + v : (v - t) + a.s;
    a.s = t;
    a.c += 1;
    a.cw += wk;
}
// The statistic (mean, count, sum, rawsum) of a group's record.
inline double gs_value(const GsAcc& a, int stat, bool wt, int wkind) {
    double sum = a.s + a.e;
    switch (stat) {
    case GS_MEAN: return a.c > 0 ? sum / a.cw : misval;
    case GS_COUNT: return wt && wkind == WGT_FW ? a.cw : a.c;
    case GS_SUM: return wt && wkind == WGT_AW && a.cw > 0 ? sum * a.c / a.cw : sum;
    default: return sum;
    }
}

int grp_xgen();
int grp_collapse();
int grp_duplicates();
int grp_idcheck();
int grp_levels();
int grp_fillall();
int grp_freqdata();
int grp_dsort();
int grp_sample();

} // namespace korvu
