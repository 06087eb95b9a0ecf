// Cross-product accumulation over the data, the drop of collinear columns,
// ordinary least squares with its statistics and robust variance, and the
// coefficient table every estimator prints.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace korvu {

// ---- reading the data --------------------------------------------------------
// Observations per block of a pass.
inline constexpr int ACC_BLOCK = 512;

// The one place the accumulators read the data area: fills blk[j * ld + t]
// with variable vars[j] at observation i0 + t, for j < k and t < n.
void regress_gather(const int* vars, int k, int i0, int n, double* blk, int ld);

// ---- accumulation ----------------------------------------------------------------
// What a pass over the data is asked to do.
struct AccRequest {
    std::vector<int> vars; // variables, in order
    bool deviations = false;
    std::vector<uint8_t>* used = nullptr; // when given: 1 for each observation used
    int markout = 0; // a variable whose missing values leave the observation out
    // when given: the minima then the maxima of the variables (as floats), 2k
    std::vector<double>* minmax = nullptr;
};

// The accumulator buffer: (k + 1) x (k + 1), full, row stride k + 1.
// Position (0, 0) holds N, row 0 the sums, positions 1 to k the variables.
// With deviations row 0 holds the sums of the deviations and 1..k the
// cross-products about the means.
struct AccResult {
    int k = 0;
    std::vector<double> xx;
    std::vector<double> mean; // k means
    double N = 0;             // sum of weights (aweights and pweights normalised: the count)
    double nobs = 0;          // observations used
    double sumw = 0;          // sum of the weights as given
    double at(int i, int j) const { return xx[static_cast<size_t>(i) * (k + 1) + j]; }
};

// One or two passes (with deviations) over the observations selected by the
// parse state (range, if, weight). 0, 1 on a break, or the weight's error.
int accum_data(const AccRequest& want, AccResult* out);
// The "(sum of wgt is ...)" line under analytic and sampling weights.
void show_sumwgt(double sumw);
// The "(obs=N)" line.
void show_obs(double N);
// N at or below 1 (0 under importance weights) gives 2000, a fractional N
// 1400 (except under importance weights).
int check_n(double N);

// The pass of the residuals r = y - x'b over the observations of the fit:
// their weighted sum of squares and cross-products with the regressors
// (compensated), and for each block a call of fn (when given) with the
// block: rows 0 to k of x (y then the regressors, row stride ACC_BLOCK), the
// m residuals, the weights as given and normalised, the observation numbers.
struct ResidBlock {
    const double* x;
    int k, m;
    const double *r, *w, *wn;
    const int* obs;
};
using ResidFn = int (*)(void* ctx, const ResidBlock& blk);
int resid_pass(const std::vector<int>& vars, const std::vector<double>& b, bool cons, double wscale,
               int markout, double* rss, std::vector<double>* xr, ResidFn fn, void* ctx);

// The sweep of positions [first..last] of a full buffer (stride s) in the
// order given: `order` lists the positions (constant first when there is
// one). Dropped positions are left with zero rows and columns. 0 or 1.
int sweep_in_order(double* a, int s, int first, int last, const std::vector<int>& order);

int accumcmd(const char* target);
int vecaccumcmd(const char* target);
int opaccumcmd(const char* target);
int glsaccumcmd(const char* target);
int rmcollcmd(int);

// ---- regression --------------------------------------------------------------------
int regresscmd(int);
int predictcmd(int); // _predict
int testcmd(int);    // _test
// _robust and _huber: the sandwich over e(V) (or v()) from score variables.
int robustcmd(int);
int hubercmd(int);

// ---- the coefficient table ------------------------------------------------------
struct OoState {
    double level = 95;
    int df = -1;       // residual degrees of freedom, negative: normal statistics
    bool beta = false; // standardized coefficients in the last column
    std::string eform; // column title under eform, empty: plain coefficients
    std::string vcetype;
    std::string cfmt = "%9.0g", pfmt = "%5.3f";
};
void oo_init();
void oo_init_straightline();
void oo_rchdr(const OoState& st, const char* depvar);
void oo_stub(const char* name);
void oo_sep();
void oo_close();
// One row: name, coefficient, standard error, and the beta (when shown).
void oo_coefrow(const OoState& st, const char* name, double b, double se, double beta);
// The whole table of e(b) and e(V): 0, or 301 without estimates.
int ereturn_display();

void link_regress();

} // namespace korvu
