// Cross-product accumulation: the block reader, the passes over the data, and
// the `matrix accum`, `matrix vecaccum`, `matrix opaccum` and `_rmcoll`
// commands built on them.
#include <cblas.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/vars/vartab.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"
#include "results/matlink.h"
#include "results/matrix/matrix.h"
#include "results/regress/regress.h"
#include "results/stores.h"
#include "results/summarize.h"

namespace korvu {

void regress_gather(const int* vars, int k, int i0, int n, double* blk, int ld) {
    // each variable is one contiguous column: its type is looked at once per
    // block, and a double column is copied as it stands
    for (int j = 0; j < k; ++j) {
        double* row = blk + static_cast<size_t>(j) * ld;
        int code = 0;
        const uint8_t* col = static_cast<const uint8_t*>(colbase(vars[j], &code));
        const size_t w = static_cast<size_t>(bytlenc(code));
        const uint8_t* base = col + static_cast<size_t>(i0 - 1) * w;
        if (code == KV_DOUBLE) {
            std::memcpy(row, base, static_cast<size_t>(n) * 8);
        } else if (code == KV_FLOAT) {
            for (int t = 0; t < n; ++t) {
                float f;
                std::memcpy(&f, base + static_cast<size_t>(t) * 4, 4);
                row[t] = kvdouble_of_float(f);
            }
        } else {
            for (int t = 0; t < n; ++t)
                row[t] = decode_cell(base + static_cast<size_t>(t) * w, code);
        }
    }
}

namespace {

// A block of the pass: the variables' values (row 0 ones, then the
// variables), the weights and the observations kept.
struct Block {
    int k = 0;
    int markout = 0;        // a further variable whose missing values leave the observation out
    std::vector<double> x;  // (k + 1) x ACC_BLOCK
    std::vector<double> wx; // the same scaled by the weights
    std::vector<double> w, tmp;
    std::vector<int> keep; // observation numbers kept
    std::vector<uint8_t> sel;
    explicit Block(int nv)
        : k(nv), x(static_cast<size_t>(nv + 1) * ACC_BLOCK),
          wx(static_cast<size_t>(nv + 1) * ACC_BLOCK), w(ACC_BLOCK), tmp(ACC_BLOCK),
          keep(ACC_BLOCK), sel(ACC_BLOCK) {}
    double* row(int j) { return x.data() + static_cast<size_t>(j) * ACC_BLOCK; }
};

} // namespace

// Observations i0..i1 into the block, the kept ones moved to the front: their
// count in *m. 0, or 401/402 for a bad weight (message printed).
static int load_block(Block& b, const std::vector<int>& vars, int i0, int i1, int* m) {
    int n = i1 - i0 + 1;
    if (ifclause) {
        xeqblock(&ifpgm, i0, i1, b.tmp.data());
        for (int t = 0; t < n; ++t) b.sel[t] = b.tmp[t] != 0;
    } else {
        std::fill(b.sel.begin(), b.sel.begin() + n, 1);
    }
    if (weclause) {
        xeqblock(&wepgm, i0, i1, b.w.data());
        for (int t = 0; t < n; ++t) {
            if (!b.sel[t]) continue;
            double x = b.w[t];
            if (x >= misval || x == 0) {
                b.sel[t] = 0;
                continue;
            }
            if (x < 0 && wgttype != WGT_IW) return errtext(402, "negative weights encountered");
            if (wgttype == WGT_FW && x != std::floor(x))
                return errtext(401, "may not use noninteger frequency weights");
        }
    }
    regress_gather(vars.data(), b.k, i0, n, b.row(1), ACC_BLOCK);
    for (int j = 1; j <= b.k; ++j) {
        const double* r = b.row(j);
        for (int t = 0; t < n; ++t) b.sel[t] &= r[t] < misval;
    }
    if (b.markout) {
        if (isstrtype(typlist[b.markout - 1])) {
            char buf[2100];
            for (int t = 0; t < n; ++t)
                if (b.sel[t] && !skorvu_data(b.markout, i0 + t, buf)[0]) b.sel[t] = 0;
        } else {
            regress_gather(&b.markout, 1, i0, n, b.tmp.data(), ACC_BLOCK);
            for (int t = 0; t < n; ++t) b.sel[t] &= b.tmp[t] < misval;
        }
    }
    int c = 0;
    for (int t = 0; t < n; ++t)
        if (b.sel[t]) b.keep[c++] = t;
    if (c < n) {
        for (int j = 1; j <= b.k; ++j) {
            double* r = b.row(j);
            for (int q = 0; q < c; ++q) r[q] = r[b.keep[q]];
        }
        if (weclause)
            for (int q = 0; q < c; ++q) b.w[q] = b.w[b.keep[q]];
    }
    for (int q = 0; q < c; ++q) b.keep[q] += i0;
    if (!weclause) std::fill(b.w.begin(), b.w.begin() + c, 1.0);
    *m = c;
    return 0;
}

namespace {

// Adds the lower triangle of the block's products to the compensated sums.
void add_products(Block& b, int m, double* c, double* s, double* e) {
    int K = b.k + 1;
    if (m == 0) return;
    if (!weclause) {
        cblas_dsyrk(CblasRowMajor, CblasLower, CblasNoTrans, K, m, 1.0, b.x.data(), ACC_BLOCK, 0.0,
                    c, K);
    } else {
        for (int j = 0; j < K; ++j) {
            const double* r = b.row(j);
            double* o = b.wx.data() + static_cast<size_t>(j) * ACC_BLOCK;
            for (int q = 0; q < m; ++q) o[q] = r[q] * b.w[q];
        }
        cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasTrans, K, K, m, 1.0, b.wx.data(), ACC_BLOCK,
                    b.x.data(), ACC_BLOCK, 0.0, c, K);
    }
    for (int i = 0; i < K; ++i)
        for (int j = 0; j <= i; ++j) {
            size_t p = static_cast<size_t>(i) * K + j;
            accumerr(&s[p], &e[p], c[p]);
        }
}

} // namespace

int accum_data(const AccRequest& want, AccResult* out) {
    int k = static_cast<int>(want.vars.size());
    int K = k + 1;
    out->k = k;
    out->xx.assign(static_cast<size_t>(K) * K, 0.0);
    out->mean.assign(k, 0.0);
    Block b(k);
    b.markout = want.markout;
    std::fill(b.x.begin(), b.x.begin() + ACC_BLOCK, 1.0);
    std::vector<double> c(static_cast<size_t>(K) * K), s(c.size()), e(c.size());
    // With deviations the products are taken about a shift, the weighted
    // means of the first block holding observations, and brought to the
    // means at the end: the shift lies within a few standard errors of the
    // means, so the correction is small against the sums it corrects.
    std::vector<double> shift(K, 0.0);
    bool shifted = false;
    double used = 0;
    if (want.used) want.used->assign(static_cast<size_t>(nobs), 0);
    if (want.minmax) {
        want.minmax->assign(static_cast<size_t>(2) * k, misval);
        std::fill(want.minmax->begin() + k, want.minmax->end(), -misval);
    }
    for (int i0 = nobs1; i0 <= nobs2; i0 += ACC_BLOCK) {
        int i1 = std::min(nobs2, i0 + ACC_BLOCK - 1);
        if (kvpollstd()) return 1;
        int m;
        if (int rc = load_block(b, want.vars, i0, i1, &m)) return rc;
        if (!m) continue;
        used += m;
        if (want.minmax)
            for (int j = 1; j <= k; ++j) {
                const double* r = b.row(j);
                double& lo = (*want.minmax)[j - 1];
                double& hi = (*want.minmax)[k + j - 1];
                for (int q = 0; q < m; ++q) {
                    double v = static_cast<float>(r[q]);
                    if (v < lo) lo = v;
                    if (v > hi) hi = v;
                }
            }
        if (want.used)
            for (int q = 0; q < m; ++q) (*want.used)[b.keep[q] - 1] = 1;
        if (want.deviations) {
            if (!shifted) {
                double sw = 0;
                for (int q = 0; q < m; ++q) sw += b.w[q];
                for (int j = 1; j <= k; ++j) {
                    const double* r = b.row(j);
                    double t = 0;
                    for (int q = 0; q < m; ++q) t += b.w[q] * r[q];
                    shift[j] = sw != 0 ? t / sw : 0;
                    if (!std::isfinite(shift[j])) shift[j] = 0;
                }
                shifted = true;
            }
            for (int j = 1; j <= k; ++j) {
                double* r = b.row(j);
                double mu = shift[j];
                for (int q = 0; q < m; ++q) r[q] -= mu;
            }
        }
        add_products(b, m, c.data(), s.data(), e.data());
    }
    std::vector<double> S(c.size());
    for (size_t p = 0; p < S.size(); ++p) S[p] = s[p] + e[p];
    auto at = [&](int i, int j) -> double& {
        return i >= j ? S[static_cast<size_t>(i) * K + j] : S[static_cast<size_t>(j) * K + i];
    };
    double W = at(0, 0);
    out->nobs = used;
    out->sumw = weclause ? W : used;
    // d: the means less the shift
    std::vector<double> d(K, 0.0);
    for (int j = 1; j <= k; ++j) {
        d[j] = W != 0 ? at(j, 0) / W : 0;
        out->mean[j - 1] = shift[j] + d[j];
    }
    if (want.deviations) {
        for (int i = 1; i <= k; ++i) {
            for (int j = 1; j <= i; ++j) {
                double v = at(i, j), ve = 0;
                accumerr(&v, &ve, -d[i] * at(j, 0));
                at(i, j) = v + ve;
            }
        }
        for (int j = 1; j <= k; ++j) at(j, 0) = 0;
    }
    // analytic and sampling weights are scaled to sum to the count
    double scale = 1;
    if (weclause && (wgttype == WGT_AW || wgttype == WGT_PW) && W != 0) scale = used / W;
    for (int i = 0; i < K; ++i)
        for (int j = 0; j <= i; ++j) {
            double v = at(i, j) * scale;
            out->xx[static_cast<size_t>(i) * K + j] = v;
            out->xx[static_cast<size_t>(j) * K + i] = v;
        }
    out->N = out->xx[0];
    if (weclause && (wgttype == WGT_AW || wgttype == WGT_PW)) out->N = used, out->xx[0] = used;
    return 0;
}

namespace {

// The compensated sum of a[q] * b[q] (* c[q] when given) over a block, in
// four independent lanes (two pairs of doubles) so that the additions run
// side by side.
typedef double v2d __attribute__((vector_size(16)));

inline void twosum(v2d& s, v2d& e, v2d x) {
    v2d t = s + x;
    v2d bb = t - s;
    e += (s - (t - bb)) + (x - bb);
    s = t;
}

double csum3(const double* a, const double* b, const double* c, int m) {
    v2d s0 = {0, 0}, e0 = {0, 0}, s1 = {0, 0}, e1 = {0, 0};
    int q = 0;
    for (; q + 4 <= m; q += 4) {
        v2d a0, a1, b0, b1;
        std::memcpy(&a0, a + q, 16);
        std::memcpy(&a1, a + q + 2, 16);
        std::memcpy(&b0, b + q, 16);
        std::memcpy(&b1, b + q + 2, 16);
        v2d x0 = a0 * b0, x1 = a1 * b1;
        if (c) {
            v2d c0, c1;
            std::memcpy(&c0, c + q, 16);
            std::memcpy(&c1, c + q + 2, 16);
            x0 *= c0;
            x1 *= c1;
        }
        twosum(s0, e0, x0);
        twosum(s1, e1, x1);
    }
    double tot = 0, err = 0;
    accumerr(&tot, &err, s0[0]);
    accumerr(&tot, &err, s0[1]);
    accumerr(&tot, &err, s1[0]);
    accumerr(&tot, &err, s1[1]);
    err += e0[0] + e0[1] + e1[0] + e1[1];
    for (; q < m; ++q) accumerr(&tot, &err, a[q] * b[q] * (c ? c[q] : 1.0));
    return tot + err;
}

} // namespace

int resid_pass(const std::vector<int>& vars, const std::vector<double>& b, bool cons, double wscale,
               int markout, double* rss, std::vector<double>* xr, ResidFn fn, void* ctx) {
    int k = static_cast<int>(vars.size()) - 1; // regressors
    int p = k + (cons ? 1 : 0);
    Block blk(k + 1);
    blk.markout = markout;
    std::vector<double> r(ACC_BLOCK), wn(ACC_BLOCK);
    double s = 0, e = 0;
    std::vector<double> xs(p, 0.0), xe(p, 0.0);
    for (int i0 = nobs1; i0 <= nobs2; i0 += ACC_BLOCK) {
        int i1 = std::min(nobs2, i0 + ACC_BLOCK - 1);
        if (kvpollstd()) return 1;
        int m;
        if (int rc = load_block(blk, vars, i0, i1, &m)) return rc;
        if (!m) continue;
        // rows of the block: 1 is y, 2 to k + 1 the regressors
        const double* y = blk.row(1);
        double c0 = cons ? b[p - 1] : 0;
        for (int q = 0; q < m; ++q) r[q] = y[q] - c0;
        for (int j = 0; j < k; ++j) {
            const double* x = blk.row(j + 2);
            double bj = b[j];
            if (bj == 0) continue;
            for (int q = 0; q < m; ++q) r[q] -= bj * x[q];
        }
        for (int q = 0; q < m; ++q) wn[q] = blk.w[q] * wscale;
        accumerr(&s, &e, csum3(wn.data(), r.data(), r.data(), m));
        for (int j = 0; j < p; ++j) {
            const double* x = j < k ? blk.row(j + 2) : nullptr;
            accumerr(&xs[j], &xe[j], csum3(wn.data(), r.data(), x, m));
        }
        if (fn) {
            ResidBlock rb{blk.row(1), k, m, r.data(), blk.w.data(), wn.data(), blk.keep.data()};
            if (int rc = fn(ctx, rb)) return rc;
        }
    }
    *rss = s + e;
    xr->assign(p, 0.0);
    for (int j = 0; j < p; ++j) (*xr)[j] = xs[j] + xe[j];
    return 0;
}

void show_sumwgt(double sumw) {
    if (s_outlev > 2) return;
    c_outlev = 1;
    spoutf("(sum of wgt is %12.4e)\n", sumw);
}

void show_obs(double N) {
    if (s_outlev > 2) return;
    double shown = (weclause && wgttype == WGT_IW) ? N : kvround(N);
    std::string t = safereforms("%12.0g", shown);
    size_t a = t.find_first_not_of(' ');
    c_outlev = 1;
    spoutf("(obs=%s)\n", a == std::string::npos ? t.c_str() : t.c_str() + a);
}

int check_n(double N) {
    bool iw = weclause && wgttype == WGT_IW;
    if (iw ? N <= 0 : N <= 1) {
        error(2000); // the message; the code is ours to return
        return 2000;
    }
    if (!iw && std::fabs(N - std::round(N)) > 1e-7) return error(1400);
    return 0;
}

int sweep_in_order(double* a, int s, int first, int last, const std::vector<int>& order) {
    std::vector<int> ord(order);
    ord.push_back(-1);
    return matrinfs(a, s, first, last, ord.data(), -1);
}

namespace {

// Variables of the parsed varlist, numeric ones only: 0 or 109.
int numeric_vars(std::vector<int>* vars) {
    vars->assign(varlist_vr, varlist_vr + lnvar);
    for (int v : *vars)
        if (isstrtype(typlist[v - 1])) return errtext(109, "type mismatch");
    return 0;
}

std::string vname(int v) {
    return varname(v);
}

int savemat(const char* name, int rows, int cols, const std::vector<double>& x,
            const std::vector<std::string>& rn, const std::vector<std::string>& cn,
            bool symmetric) {
    DenseMat m;
    m.rows = rows, m.cols = cols;
    m.x = x;
    m.rownames = rn;
    m.colnames = cn;
    m.symmetric_storage = symmetric;
    if (!matlink.save) return errtext(199, "matrices not yet available");
    if (matlink.save(name, DM_MATRIX, m)) return error(950);
    return 0;
}

// The parse shared by the accumulators: weights allowed, options read by the
// caller.
int accum_parse() {
    vable = 1;
    wgtallowt = WGT_AW | WGT_FW | WGT_IW | WGT_PW;
    byable = 3;
    opable = wgtable = 0;
    if (int rc = parse()) return rc;
    return 0;
}

} // namespace

namespace {

std::string cell13(double x, const char* f) {
    std::string t = x >= misval ? "." : safereforms(f, x);
    return t.size() < 13 ? std::string(13 - t.size(), ' ') + t : t;
}

// The summary of the accumulated variables: mean, standard deviation,
// minimum and maximum of each.
void show_summary(const AccResult& r, const std::vector<int>& vars,
                  const std::vector<double>& minmax, bool dev, const char* f) {
    int k = r.k;
    double N = r.N;
    c_outlev = 1;
    spoutptlf("\n    Variable {c |}%13s%13s%13s%13s\n", "Mean", "Std. Dev.", "Min", "Max");
    spoutptl("{hline 13}{c +}{hline 52}\n");
    for (int j = 0; j < k; ++j) {
        double mu = r.mean[j], S = r.at(j + 1, j + 1);
        double var = misval;
        if (N > 1) var = dev ? S / (N - 1) : S / (N - 1) - mu * mu * N / (N - 1);
        double sd = var < misval ? std::sqrt(var > 0 ? var : 0) : misval;
        // a name over 12 characters: its first 10, "~", and its last
        std::string name = varname(vars[j]);
        if (name.size() > 12) name = name.substr(0, 10) + "~" + name.back();
        c_outlev = 1;
        spoutptlf("%12s {c |}", name.c_str());
        c_outlev = 0;
        std::string row =
            cell13(mu, f) + cell13(sd, f) + cell13(minmax[j], f) + cell13(minmax[k + j], f);
        spout21(row.c_str());
        newline();
    }
}

} // namespace

// matrix accum A = varlist [weight] [if] [in] [, noconstant deviations means(name)
// summary format(%fmt)]
int accumcmd(const char* target) {
    if (int rc = accum_parse()) return rc;
    int nocons = findopt("noconstant", 1, 0);
    int dev = findopt("deviations", 1, 0);
    int summ = findopt("summary", 2, 0);
    char sfmt[64] = "";
    findargasis("format", 3, sfmt, sizeof sfmt);
    if (!sfmt[0]) std::snprintf(sfmt, sizeof sfmt, "%s", "%9.0g");
    FmtDesc fd;
    if (chkfmt(sfmt, 1, &fd)) return error(120);
    char means[64] = "";
    findargn("means", 1, means, sizeof means, 1);
    if (int rc = chkopt()) return rc;
    if (means[0] && chkname(means, 0)) return error(198);
    std::vector<int> vars;
    if (int rc = numeric_vars(&vars)) return rc;
    int k = static_cast<int>(vars.size());
    if (k == 0 && nocons) return error(198);
    if (k + (nocons ? 0 : 1) > matsize) return error(908);
    initialize_xeq();
    AccRequest want;
    want.vars = vars;
    want.deviations = dev;
    std::vector<double> minmax;
    if (summ) want.minmax = &minmax;
    AccResult r;
    if (int rc = accum_data(want, &r)) return rc;
    if (weclause && (wgttype == WGT_AW || wgttype == WGT_PW)) show_sumwgt(r.sumw);
    if (int rc = check_n(r.N)) return rc;
    show_obs(r.N);
    if (summ && s_outlev <= 2) show_summary(r, vars, minmax, dev, sfmt);
    // variables first, the constant last
    int n = k + (nocons ? 0 : 1);
    std::vector<double> a(static_cast<size_t>(n) * n);
    auto src = [&](int i) { return i < k ? i + 1 : 0; };
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) a[static_cast<size_t>(i) * n + j] = r.at(src(i), src(j));
    std::vector<std::string> names;
    for (int v : vars) names.push_back(vname(v));
    if (!nocons) names.push_back("_cons");
    retval_clear();
    if (int rc = savemat(target, n, n, a, names, names, true)) return rc;
    retval_set_scalar("N", r.N);
    if (means[0]) {
        std::vector<double> mu(k);
        for (int j = 0; j < k; ++j) mu[j] = r.N != 0 ? r.mean[j] : 0;
        std::vector<std::string> cn(names.begin(), names.begin() + k);
        if (int rc = savemat(means, 1, k, mu, {"_cons"}, cn, false)) return rc;
    }
    return 0;
}

// matrix vecaccum a = y x1 ... [weight] [, noconstant]
int vecaccumcmd(const char* target) {
    if (int rc = accum_parse()) return rc;
    int nocons = findopt("noconstant", 1, 0);
    if (int rc = chkopt()) return rc;
    std::vector<int> vars;
    if (int rc = numeric_vars(&vars)) return rc;
    int k = static_cast<int>(vars.size());
    if (k == 0) return error(102);
    if (k - 1 + (nocons ? 0 : 1) > matsize) return error(908);
    initialize_xeq();
    AccRequest want;
    want.vars = vars;
    AccResult r;
    if (int rc = accum_data(want, &r)) return rc;
    if (int rc = check_n(r.N)) return rc;
    int n = k - 1 + (nocons ? 0 : 1);
    std::vector<double> a(n);
    std::vector<std::string> names;
    for (int j = 1; j < k; ++j) {
        a[j - 1] = r.at(1, j + 1);
        names.push_back(vname(vars[j]));
    }
    if (!nocons) {
        a[n - 1] = r.at(1, 0);
        names.push_back("_cons");
    }
    retval_clear();
    if (int rc = savemat(target, 1, n, a, {vname(vars[0])}, names, false)) return rc;
    retval_set_scalar("N", r.N);
    return 0;
}

// The group walk of opaccum and glsaccum, in observation order over the
// sample: an observation failing `if`, or missing `keyvar` or one of `vars`,
// is skipped; x gets the values (and 1 for the constant); `flush()` runs when
// the group variable changes and once at the end, `add(i, key)` for each kept
// observation (a code other than 0 stops the walk). 0, 1 on a break, 2000
// with no observations, or add's code.
template <class Flush, class Add>
static int walk_groups(int grpvar, int keyvar, const std::vector<int>& vars, bool nocons,
                       std::vector<double>& x, double* N, Flush flush, Add add) {
    const int k = static_cast<int>(vars.size());
    char prev[2100] = "", cur[2100];
    bool have = false, isstr = isstrtype(typlist[grpvar - 1]);
    double pv = 0;
    std::vector<double> sel(1);
    *N = 0;
    for (int i = nobs1; i <= nobs2; ++i) {
        if ((i & 0xfff) == 0 && kvpollstd()) return 1;
        if (ifclause) {
            xeqblock(&ifpgm, i, i, sel.data());
            if (sel[0] == 0) continue;
        }
        double key = korvu_data(keyvar, i);
        if (key >= misval) continue;
        bool miss = false;
        for (int j = 0; j < k; ++j) {
            x[j] = korvu_data(vars[j], i);
            miss |= x[j] >= misval;
        }
        if (miss) continue;
        if (!nocons) x[k] = 1;
        bool same;
        if (isstr) {
            skorvu_data(grpvar, i, cur);
            same = have && !std::strcmp(cur, prev);
            std::memcpy(prev, cur, sizeof prev);
        } else {
            double g = korvu_data(grpvar, i);
            same = have && g == pv;
            pv = g;
        }
        if (have && !same) flush();
        have = true;
        if (int rc = add(i, key)) return rc;
        *N += 1;
    }
    if (have) flush();
    return *N == 0 ? error(2000) : 0;
}

// Stores the symmetric n x n sum (its two triangles averaged) under the
// variables' names and _cons, and r(N).
static int post_groupsum(const char* target, int n, const std::vector<double>& acc,
                         const std::vector<double>& err, const std::vector<int>& vars, bool nocons,
                         double N) {
    std::vector<double> a(acc.size());
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            size_t p = static_cast<size_t>(i) * n + j, q = static_cast<size_t>(j) * n + i;
            a[p] = ((acc[p] + err[p]) + (acc[q] + err[q])) / 2;
        }
    std::vector<std::string> names;
    for (int v : vars) names.push_back(vname(v));
    if (!nocons) names.push_back("_cons");
    retval_clear();
    if (int rc = savemat(target, n, n, a, names, names, true)) return rc;
    retval_set_scalar("N", N);
    return 0;
}

// matrix opaccum A = varlist [if] [in], group(varname) opvar(varname) [noconstant]
// The sum over groups of X_g' e_g e_g' X_g, the data sorted by group.
int opaccumcmd(const char* target) {
    vable = 1;
    wgtable = 3;
    byable = 3;
    opable = 0;
    if (int rc = parse()) return rc;
    int nocons = findopt("noconstant", 1, 0);
    int grp[2] = {0, 0}, opv[2] = {0, 0};
    int ng = findvlist("group", 1, grp, 2);
    int no = findvlist("opvar", 1, opv, 2);
    if (int rc = chkopt()) return rc;
    if (ng != 1) return required("option group()");
    if (no != 1) return required("option opvar()");
    std::vector<int> vars;
    if (int rc = numeric_vars(&vars)) return rc;
    if (isstrtype(typlist[opv[0] - 1])) return errtext(109, "type mismatch");
    int k = static_cast<int>(vars.size());
    int n = k + (nocons ? 0 : 1);
    if (n == 0) return error(102);
    if (n > matsize) return error(908);
    initialize_xeq();
    std::vector<double> acc(static_cast<size_t>(n) * n, 0.0), err(acc.size(), 0.0);
    std::vector<double> u(n, 0.0), xi(n);
    auto flush = [&] {
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) {
                size_t p = static_cast<size_t>(i) * n + j;
                accumerr(&acc[p], &err[p], u[i] * u[j]);
            }
        std::fill(u.begin(), u.end(), 0.0);
    };
    double N = 0;
    int rc = walk_groups(grp[0], opv[0], vars, nocons, xi, &N, flush, [&](int, double e) {
        for (int j = 0; j < n; ++j) u[j] += e * xi[j];
        return 0;
    });
    if (rc) return rc;
    return post_groupsum(target, n, acc, err, vars, nocons, N);
}

// matrix glsaccum A = varlist [if] [in], group(g) glsmat(W) row(r) [noconstant]:
// the sum over the groups of X_g' W_g X_g, W_g the rows and columns of W
// named by row() for the group's observations. The data are sorted by group.
int glsaccumcmd(const char* target) {
    vable = 1;
    wgtable = 0;
    byable = 3;
    opable = 0;
    if (int rc = parse()) return rc;
    int nocons = findopt("noconstant", 1, 0);
    int grp[2] = {0, 0}, rowv[2] = {0, 0};
    int ng = findvlist("group", 1, grp, 2);
    int nr = findvlist("row", 1, rowv, 2);
    char wname[64] = "";
    findargn("glsmat", 4, wname, sizeof wname, 1);
    if (int rc = chkopt()) return rc;
    if (ng != 1) return required("option group()");
    if (nr != 1) return required("option row()");
    if (!wname[0]) return required("option glsmat()");
    if (isstrtype(typlist[rowv[0] - 1])) return errtext(109, "type mismatch");
    if (!matlink.load) return errtext(199, "matrices not yet available");
    DenseMat W;
    if (matlink.load(wname, 9, &W)) return errorf(111, "matrix %s not found", wname);
    if (W.rows != W.cols) return errtext(503, "conformability error");
    for (int i = 0; i < W.rows; ++i)
        for (int j = 0; j < i; ++j)
            if (W.at(i, j) != W.at(j, i)) return errtext(505, "matrix not symmetric");
    std::vector<int> vars;
    if (int rc = numeric_vars(&vars)) return rc;
    int k = static_cast<int>(vars.size());
    int n = k + (nocons ? 0 : 1);
    if (n == 0) return error(102);
    if (n > matsize) return error(908);
    initialize_xeq();
    std::vector<double> acc(static_cast<size_t>(n) * n, 0.0), err(acc.size(), 0.0);
    std::vector<double> xg; // the group's rows, n values each
    std::vector<int> rg;    // their rows of W, from 0
    std::vector<double> z(n);
    auto flush = [&] {
        int m = static_cast<int>(rg.size());
        for (int a = 0; a < m; ++a) {
            // z = sum over b of W[r_a, r_b] x_b
            std::fill(z.begin(), z.end(), 0.0);
            for (int b = 0; b < m; ++b) {
                double wab = W.at(rg[a], rg[b]);
                const double* xb = &xg[static_cast<size_t>(b) * n];
                for (int j = 0; j < n; ++j) z[j] += wab * xb[j];
            }
            const double* xa = &xg[static_cast<size_t>(a) * n];
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < n; ++j) {
                    size_t p = static_cast<size_t>(i) * n + j;
                    accumerr(&acc[p], &err[p], xa[i] * z[j]);
                }
        }
        xg.clear();
        rg.clear();
    };
    std::vector<double> xi(n);
    double N = 0;
    int rc = walk_groups(grp[0], rowv[0], vars, nocons, xi, &N, flush, [&](int, double r) {
        if (r != std::floor(r) || r < 1 || r > W.rows)
            return errorf(503, "row() value %g outside the rows of %s", r, wname);
        xg.insert(xg.end(), xi.begin(), xi.end());
        rg.push_back(static_cast<int>(r) - 1);
        return 0;
    });
    if (rc) return rc;
    return post_groupsum(target, n, acc, err, vars, nocons, N);
}

// _rmcoll varlist [weight] [if] [in] [, noconstant collinear]
int rmcollcmd(int) {
    vable = 1;
    wgtallowt = WGT_AW | WGT_FW | WGT_IW | WGT_PW;
    byable = 3;
    opable = wgtable = 0;
    if (int rc = parse()) return rc;
    int nocons = findopt("noconstant", 3, 0);
    int collin = findopt("collinear", 3, 0);
    if (int rc = chkopt()) return rc;
    std::vector<int> vars;
    if (int rc = numeric_vars(&vars)) return rc;
    int k = static_cast<int>(vars.size());
    if (k > matsize - 2) return error(908);
    if (k == 1 && nocons) return error(102);
    initialize_xeq();
    std::vector<int> kept = vars;
    if (!collin) {
        AccRequest want;
        want.vars = vars;
        AccResult r;
        if (int rc = accum_data(want, &r)) return rc;
        if (int rc = check_n(r.N)) return rc;
        // the constant (position 0) is swept first, then the variables in order
        int K = k + 1;
        std::vector<double> a = r.xx;
        std::vector<int> order;
        int first = nocons ? 1 : 0;
        for (int i = first; i <= k; ++i) order.push_back(i);
        if (int rc = sweep_in_order(a.data(), K, first, k, order)) return rc;
        kept.clear();
        for (int j = 1; j <= k; ++j) {
            if (a[static_cast<size_t>(j) * K + j] != 0) {
                kept.push_back(vars[j - 1]);
                continue;
            }
            if (s_outlev <= 2) {
                c_outlev = 1;
                spoutf("(note: %s dropped because of collinearity)\n", varname(vars[j - 1]));
            }
        }
    }
    std::string list;
    for (int v : kept) {
        if (!list.empty()) list += ' ';
        list += varname(v);
    }
    retval_clear();
    return retval_set_local("varlist", list.c_str()) ? error(950) : 0;
}

} // namespace korvu
