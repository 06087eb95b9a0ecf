// Tables of frequencies and correlations: `tabulate` (one- and two-way, with
// its tests and measures of association, and the summary of a second
// variable in the cells of a first) and `correlate` (casewise, or pairwise
// with significance levels).
#pragma once
#include <cstdint>
#include <vector>

namespace korvu {

int tabulatecmd(int);
int correlatecmd(int);
int tabstatcmd(int);  // _tabstat: a table of chosen statistics, by groups
int inspectcmd(int);  // inspect: counts of negative, zero, positive, integer values
int codebookcmd(int); // _codebook: a description of each variable
int dscmd(int);       // _ds: the names of variables chosen by type, format or label
int tabdispcmd(int);  // tabdisp: values of variables in the cells of a table
int tablecmd(int);    // _table: statistics in the cells of a table of up to three variables

// ---- the statistics of a two-way table (counts n[i * c + j], r rows) ----
struct TwoWay {
    double chi2 = 0, p = 0;       // Pearson
    double chi2_lr = 0, p_lr = 0; // likelihood ratio
    double cramersv = 0;
    double gamma = 0, ase_gam = 0;
    double taub = 0, ase_taub = 0;
    int df = 0;
};
void twoway_stats(const std::vector<double>& n, int r, int c, TwoWay* out);

// Fisher's exact test of an r x c table of whole counts: the probability of
// tables with the margins of n no more probable than n itself, and for a
// 2 x 2 table the one-sided probability in the direction of the observed
// table (p1 is `.` otherwise). 0, or 1 for a break, 2 when the enumeration
// would take too long.
int fisher_exact(const std::vector<double>& n, int r, int c, double* p, double* p1);

} // namespace korvu
