// The frame every built-in function shares. A built-in is called with n,
// the number of its arguments, which are the top n entries of the machine's
// stack, the last on top. It checks them (a function where a matrix is
// needed is 3102, a wrong shape 3200 to 3205, a wrong type 3250 to 3259),
// leaving the stack alone on failure, computes, and replaces its arguments
// by exactly one result. The machine sets `m_xeqerrid` to "name()" around
// the call.
//
// Each family of built-ins fills its rows of the handler table through its
// own link function below; the table of names, indexes, return types and
// argument counts is one array in table.cpp.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "data/area/missing.h"
#include "lumo/objects/mobj.h"
#include "lumo/objects/mview.h"
#include "lumo/vm/vm.h"

namespace korvu {

inline constexpr int MBI_MAXINDEX = 400;

// The k-th of n arguments, from 0.
inline MObj* bi_arg(int n, int k) {
    return m_stak[k - n + 1];
}
// The argument as a matrix with plain storage: a view among the arguments
// is replaced on the stack by a temporary of its values. Null with the code
// set (3102 for a function).
MObj* bi_mat(int n, int k);
// The argument as it stands (a view stays a view); null with 3102 for a
// function.
MObj* bi_any(int n, int k);

// Type and shape checks; false with the code set.
bool bi_real(const MObj* o);    // 3253
bool bi_string(const MObj* o);  // 3250 (a number where text is needed)
bool bi_numeric(const MObj* o); // 3251
bool bi_scalar(const MObj* o);  // 3204
bool bi_square(const MObj* o);  // 3205
bool bi_vector(const MObj* o);  // 3201
bool bi_rowvec(const MObj* o);  // 3202
// A real scalar argument; false with the code set.
bool bi_getreal(int n, int k, double* x);
// An integer in [lo, hi] (3300 outside, missing included).
bool bi_getint(int n, int k, int64_t lo, int64_t hi, int64_t* x);
// A string scalar argument.
bool bi_getstr(int n, int k, std::string* s);

// Results: replace the n arguments by r; false with 3900 set when r is null.
bool bi_result(int n, MObj* r);
bool bi_realres(int n, double x);
bool bi_strres(int n, const std::string& s);
bool bi_voidres(int n);
// The blank- or tab-separated words of s.
std::vector<std::string> bi_words(const std::string& s);
// Makes V a view of the observations and variables (1-based numbers): a run
// of observations when run is set, else the list; the result is void.
void bi_mkview(int n, MObj* V, const std::vector<int>& obs, bool run, const std::vector<int>& vars,
               bool str);
// Replaces output argument t by r, which is freed (3103 when t is a view:
// a view cannot take a result); false when r is null or t a view.
bool bi_output(MObj* t, MObj* r);
// A new temporary; null with 3900 set.
MObj* bi_new(int eltype, int64_t rows, int64_t cols);
// A string cell of the text; the empty cell for "".
SCell* bi_cell(const std::string& s);

// Values: missing when not finite.
inline double bi_fin(double x) {
    return x == x && x < misval && x > -1.79769313486231570815e308 ? x : misval;
}

// Renders the format text of argument fmtarg with the arguments after it,
// through the display formats ("%9.2f", "%-12s", "%td"); false with the
// code set.
bool bi_format(int n, int fmtarg, std::string* out);

// Runs a command line through the command loop (quietly when asked) and
// gives its return code; the running line and command state are kept.
int bi_runline(const std::string& cmd, bool quiet);

// The cross products with constants (cross() with 4 or 5 arguments,
// crossdev() with 6 or 7), plain or quad.
void bi_crossx(int n, bool dev, bool quad);

// Families.
void bi_link_shape(MBiFn* t);
void bi_link_elem(MBiFn* t);
void bi_link_summ(MBiFn* t);
void bi_link_str(MBiFn* t);
void bi_link_la(MBiFn* t);
void bi_link_la2(MBiFn* t);
void bi_link_misc2(MBiFn* t);
void bi_link_dist(MBiFn* t);
void bi_link_dates(MBiFn* t);
void bi_link_files(MBiFn* t);
void bi_link_output(MBiFn* t);
void bi_link_control(MBiFn* t);
void bi_link_extern(MBiFn* t);
void bi_link_dataset(MBiFn* t);
void bi_link_results(MBiFn* t);
void bi_link_sys(MBiFn* t);
void bi_link_buf(MBiFn* t);

// The index of a name in the table (for the families' link functions); 0
// when the name is not there.
int bi_index(const char* name);
// The handler table filled so far (for tests): rows with a handler.
int bi_nwritten();
int bi_nrows();

} // namespace korvu

namespace korvu {

// Element by element over a real argument: missing in, missing out; a
// result that is not finite is missing.
template <class F> void bi_map1(int n, F f) {
    MObj* a = bi_mat(n, 0);
    if (!a || !bi_real(a)) return;
    MObj* r = bi_new(MT_REAL, a->rows, a->cols);
    if (!r) return;
    const int64_t m = m_nel(a);
    const double* x = m_rel(a);
    double* y = m_rel(r);
    for (int64_t i = 0; i < m; i++) y[i] = x[i] >= misval ? x[i] : bi_fin(f(x[i]));
    bi_result(n, r);
}

// The shape of two arguments under the colon rule: equal, or either one a
// scalar, a row of the right width or a column of the right height.
bool bi_cshape(const MObj* a, const MObj* b, int* R, int* C);
inline int64_t bi_cidx(const MObj* o, int i, int j) {
    return static_cast<int64_t>(o->rows == 1 ? 0 : i) * o->cols + (o->cols == 1 ? 0 : j);
}

// Element by element over arguments k0 .. k0 + m - 1 (real) under the colon
// rule; f gets the values; any missing gives missing unless keepmiss.
template <class F> void bi_mapn(int n, int m, F f, bool keepmiss = false) {
    MObj* a[4];
    int R = 1, C = 1;
    for (int k = 0; k < m; k++) {
        a[k] = bi_mat(n, k);
        if (!a[k] || !bi_real(a[k])) return;
    }
    for (int k = 0; k < m; k++) {
        a[k] = bi_arg(n, k);
        int r2, c2;
        if (!bi_cshape(k ? a[0] : a[k], a[k], &r2, &c2)) return;
        if (a[k]->rows != 1) R = a[k]->rows;
        if (a[k]->cols != 1) C = a[k]->cols;
    }
    for (int k = 0; k < m; k++)
        if ((a[k]->rows != 1 && a[k]->rows != R) || (a[k]->cols != 1 && a[k]->cols != C))
            return m_xeqerr(3200);
    for (int k = 0; k < m; k++)
        if (m_nel(a[k]) == 0) R = C = 0;
    MObj* r = bi_new(MT_REAL, R, C);
    if (!r) return;
    double v[4];
    for (int i = 0; i < R; i++)
        for (int j = 0; j < C; j++) {
            bool miss = false;
            for (int k = 0; k < m; k++) {
                v[k] = m_rel(a[k])[bi_cidx(a[k], i, j)];
                if (v[k] >= misval) miss = true;
            }
            m_rel(r)[static_cast<int64_t>(i) * C + j] = miss && !keepmiss ? misval : bi_fin(f(v));
        }
    bi_result(n, r);
}

} // namespace korvu
