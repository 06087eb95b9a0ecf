// Helpers shared by the group commands.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "data/groups/groups.h"

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
