// The sandwich variance from Lumo: _robust() and _svy() over a matrix of
// score rows, through the engine of the command `_robust`.
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "lumo/builtins/bimore.h"
#include "results/regress/sandwich.h"

namespace korvu {

namespace {

// An optional column argument: absent, or 0 x 0 / 0 rows, is none; else it
// must have the N rows of the scores and one column. Real or string when
// text is allowed. False with the code set.
bool optcol(int n, int k, int N, bool text, MObj** out) {
    *out = nullptr;
    if (k >= n) return true;
    MObj* o = bi_mat(n, k);
    if (!o) return false;
    if (m_nel(o) == 0) return true;
    if (o->eltype != MT_REAL && !(text && o->eltype == MT_STRING)) {
        m_xeqerr(text ? 3255 : 3253);
        return false;
    }
    if (o->cols != 1 || o->rows != N) {
        m_xeqerr(3200);
        return false;
    }
    *out = o;
    return true;
}

// The key of row i of a grouping column, and whether it is missing.
std::string groupkey(const MObj* g, int i, bool* miss) {
    if (g->eltype == MT_STRING) {
        const SCell* c = m_sel(g)[i];
        *miss = c->len == 0;
        return std::string("s") + std::string(c->s, static_cast<size_t>(c->len));
    }
    const double x = m_rel(g)[i];
    *miss = x >= misval;
    char buf[40];
    snprintf(buf, sizeof buf, "n%.17g", x);
    return buf;
}

// The common work: V (argument 0) and the scores U (argument 1), then the
// optional columns at the given positions (-1 for none). svy: centred
// within strata and no small-sample multiplier. Pushes the status.
void sandwich_common(int n, bool svy, int kclust, int kstrata, int kfpc, int kminus, int kw) {
    MObj* U = bi_mat(n, 1);
    if (!U) return;
    MObj* V = bi_any(n, 0);
    if (!V) return;
    if (V->view) return m_xeqerr(3103);
    U = bi_arg(n, 1);
    if (!bi_real(V) || !bi_real(U) || !bi_square(V)) return;
    const int p = V->cols, N = U->rows;
    if (U->cols != p) return m_xeqerr(3200);
    MObj *cl = nullptr, *st = nullptr, *fp = nullptr, *wt = nullptr;
    if (kclust >= 0 && !optcol(n, kclust, N, true, &cl)) return;
    if (kstrata >= 0 && !optcol(n, kstrata, N, true, &st)) return;
    if (kfpc >= 0 && !optcol(n, kfpc, N, false, &fp)) return;
    if (kw >= 0 && !optcol(n, kw, N, false, &wt)) return;
    double minus = 1;
    if (kminus >= 0 && kminus < n) {
        if (!bi_getreal(n, kminus, &minus)) return;
        if (minus >= misval) minus = 1;
        if (minus < 0) return m_xeqerr(3300);
    }
    // re-fetch: a view argument may have been replaced on the stack
    V = bi_arg(n, 0);
    U = bi_arg(n, 1);
    const double* v = m_rel(V);
    for (int i = 0; i < p; ++i)
        for (int j = 0; j < p; ++j) {
            const double a = v[static_cast<size_t>(i) * p + j],
                         b = v[static_cast<size_t>(j) * p + i];
            if (a >= misval) return void(bi_realres(n, 504));
            if (a != b && std::fabs(a - b) > 1e-12 * (std::fabs(a) + std::fabs(b)))
                return void(bi_realres(n, 505));
        }
    std::map<std::string, int> psuix;
    std::vector<SandPsu> psus;
    double Nobs = 0;
    const double* u = m_rel(U);
    for (int i = 0; i < N; ++i) {
        bool miss = false, m1 = false;
        for (int j = 0; j < p; ++j) miss |= u[static_cast<size_t>(i) * p + j] >= misval;
        const double w = wt ? m_rel(wt)[i] : 1;
        if (wt && w < 0 && w < misval) return void(bi_realres(n, 402));
        miss |= w >= misval || w == 0;
        const double f = fp ? m_rel(fp)[i] : misval;
        if (fp) miss |= f >= misval;
        const std::string sk = st ? groupkey(st, i, &m1) : "";
        miss |= m1;
        const std::string ck = cl ? groupkey(cl, i, &m1) : std::to_string(i);
        miss |= m1;
        if (miss) continue;
        Nobs += 1;
        const std::string key = sk + '\x01' + ck;
        auto it = psuix.find(key);
        int g;
        if (it == psuix.end()) {
            g = static_cast<int>(psus.size());
            psuix.emplace(key, g);
            psus.push_back({std::vector<double>(p, 0.0), 1, f, sk});
        } else {
            g = it->second;
            if (fp && psus[g].fpc != f) return void(bi_realres(n, 198));
        }
        for (int j = 0; j < p; ++j) psus[g].u[j] += w * u[static_cast<size_t>(i) * p + j];
    }
    if (Nobs <= 0) return void(bi_realres(n, 2000));
    // the fpc must be one value within a stratum
    if (fp) {
        std::map<std::string, double> sf;
        for (const SandPsu& g : psus) {
            auto it = sf.find(g.stratum);
            if (it == sf.end())
                sf.emplace(g.stratum, g.fpc);
            else if (it->second != g.fpc)
                return void(bi_realres(n, 198));
        }
    }
    const bool centred = svy || st || fp;
    std::vector<double> M;
    int nstrata = 0;
    double npsu = 0;
    const char* msg = "";
    if (int rc = sandwich_meat(psus, p, centred, fp != nullptr, &M, &nstrata, &npsu, &msg))
        return void(bi_realres(n, rc));
    double scale = 1;
    if (!svy) {
        scale = (Nobs - 1) / (Nobs - minus);
        if (!centred) scale *= npsu > 1 ? npsu / (npsu - 1) : misval;
        if (!(Nobs - minus > 0)) scale = misval;
    }
    std::vector<double> R(static_cast<size_t>(p) * p);
    sandwich_vmv(v, M, p, scale, R.data());
    for (size_t i = 0; i < R.size(); ++i) m_rel(V)[i] = R[i];
    bi_realres(n, 0);
}

} // namespace

// _robust(V, U[, cluster[, strata[, fpc[, minus[, w]]]]]): V (p x p, the
// model-based variance) becomes the sandwich V M V times the small-sample
// multiplier, from the score rows of U (N x p, one an observation), summed
// by cluster, centred within strata when strata or fpc are given. minus (1
// by default) is taken off N in (N - 1) / (N - minus); without strata the
// multiplier also has G / (G - 1) over the G clusters (or observations).
// An empty matrix for an optional argument is none; rows with a missing
// value are left out. Returns 0, or a code with V as it was: 2000 no
// observations, 460 a stratum of one unit, 198 an fpc that varies in a
// stratum or is out of range, 402 a negative weight, 504/505 V missing or
// not symmetric.
static void bi_urobust(int n) {
    if (n < 2) return m_xeqerr(3001);
    sandwich_common(n, false, 2, 3, 4, 5, 6);
}

// _svy(V, U[, strata[, psu[, fpc[, w]]]]): the linearized survey variance
// V M V, M summed over primary units (psu, or each observation) centred
// within strata, with n_h / (n_h - 1) and the finite-population factor of
// each stratum, and no further multiplier. Returns as _robust().
static void bi_usvy(int n) {
    if (n < 2) return m_xeqerr(3001);
    sandwich_common(n, true, 3, 2, 4, -1, 5);
}

void bi_link_sandwich(MBiFn* t) {
    t[bi_index("_robust")] = bi_urobust;
    t[bi_index("_svy")] = bi_usvy;
}

} // namespace korvu
