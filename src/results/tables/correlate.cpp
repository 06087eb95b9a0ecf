// correlate: the correlation (or covariance) matrix of variables over the
// observations where all are present, or, with `pairwise`, each pair over the
// observations where both are present, with significance levels.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/formats/formats.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/options.h"
#include "output/spout.h"
#include "results/distrib/distrib.h"
#include "results/stores.h"
#include "results/summarize.h"
#include "results/tables/tables.h"
#include "results/tables/tables_internal.h"

namespace korvu {

namespace {

constexpr int BLK = 2048;

// Means and the centred cross products of k variables over the observations
// of `obs` where mask says all are present (two passes; block sums gathered
// with compensation).
struct Moments {
    double sumw = 0;
    long long n = 0;
    std::vector<double> mean, cp, mn, mx; // cp: k x k
};

// Reads observations b0.. of the sample (up to BLK) variable by variable into
// columns col[a * BLK + q], keeps the complete ones packed at the front with
// their weights in wt, and returns how many there are.
int load_block(const std::vector<int>& vars, const Sample& S, size_t b0, double* col, double* wt) {
    int k = static_cast<int>(vars.size());
    int m = static_cast<int>(std::min<size_t>(BLK, S.size() - b0));
    for (int a = 0; a < k; a++) {
        double* c = col + static_cast<size_t>(a) * BLK;
        int v = vars[a];
        if (S.all)
            for (int q = 0; q < m; q++) c[q] = korvu_data(v, S.i0 + static_cast<int>(b0) + q);
        else
            for (int q = 0; q < m; q++) c[q] = korvu_data(v, S.obs[b0 + q]);
    }
    int n = 0;
    for (int q = 0; q < m; q++) {
        bool ok = true;
        for (int a = 0; a < k; a++) ok &= col[static_cast<size_t>(a) * BLK + q] < misval;
        if (!ok) continue;
        if (n != q)
            for (int a = 0; a < k; a++)
                col[static_cast<size_t>(a) * BLK + n] = col[static_cast<size_t>(a) * BLK + q];
        wt[n++] = S.wt(b0 + q);
    }
    return n;
}

// Sums and dot products with four running sums, so that the additions of a
// block need not wait for each other.
double sum4(const double* x, int n) {
    double s0 = 0, s1 = 0, s2 = 0, s3 = 0;
    int q = 0;
    for (; q + 4 <= n; q += 4) s0 += x[q], s1 += x[q + 1], s2 += x[q + 2], s3 += x[q + 3];
    for (; q < n; q++) s0 += x[q];
    return (s0 + s1) + (s2 + s3);
}
double dot4(const double* x, const double* y, int n) {
    double s0 = 0, s1 = 0, s2 = 0, s3 = 0;
    int q = 0;
    for (; q + 4 <= n; q += 4)
        s0 += x[q] * y[q], s1 += x[q + 1] * y[q + 1], s2 += x[q + 2] * y[q + 2],
            s3 += x[q + 3] * y[q + 3];
    for (; q < n; q++) s0 += x[q] * y[q];
    return (s0 + s1) + (s2 + s3);
}

// One pass over the data: each block, held in cache as columns, gives its
// weighted means and centred cross products (two sweeps of the block), and
// blocks are merged by the exact update for the sums of products about the
// mean of two groups, C = C1 + C2 + (m2 - m1)(m2 - m1)' w1 w2 / (w1 + w2),
// with the sums compensated.
int moments(const std::vector<int>& vars, const Sample& S, Moments* m) {
    int k = static_cast<int>(vars.size());
    m->mean.assign(k, 0);
    m->cp.assign(static_cast<size_t>(k) * k, 0);
    m->mn.assign(k, misval);
    m->mx.assign(k, -misval);
    std::vector<double> col(static_cast<size_t>(k) * BLK), wt(BLK),
        wd(static_cast<size_t>(k) * BLK);
    std::vector<double> ce(static_cast<size_t>(k) * k, 0), bm(k), delta(k);
    double W = 0;
    long long n = 0;
    const bool weighted = S.weighted;
    for (size_t b0 = 0; b0 < S.size(); b0 += BLK) {
        if (kvpollstd()) return 1;
        int nb = load_block(vars, S, b0, col.data(), wt.data());
        if (nb == 0) continue;
        double wb = weighted ? sum4(wt.data(), nb) : nb;
        // the block's means, corrected by a second sweep
        for (int a = 0; a < k; a++) {
            double* c = col.data() + static_cast<size_t>(a) * BLK;
            double lo = m->mn[a], hi = m->mx[a];
            double sum = weighted ? dot4(wt.data(), c, nb) : sum4(c, nb);
            for (int q = 0; q < nb; q++) lo = std::min(lo, c[q]), hi = std::max(hi, c[q]);
            m->mn[a] = lo, m->mx[a] = hi;
            double mu = sum / wb;
            for (int q = 0; q < nb; q++) c[q] -= mu;
            double* w = wd.data() + static_cast<size_t>(a) * BLK;
            if (weighted)
                for (int q = 0; q < nb; q++) w[q] = wt[q] * c[q];
            else
                for (int q = 0; q < nb; q++) w[q] = c[q];
            double corr = sum4(w, nb) / wb;
            for (int q = 0; q < nb; q++) c[q] -= corr;
            if (weighted)
                for (int q = 0; q < nb; q++) w[q] = wt[q] * c[q];
            else
                for (int q = 0; q < nb; q++) w[q] = c[q];
            bm[a] = mu + corr;
        }
        // merge: the block's own products, and those of the shift of its mean
        double Wn = W + wb, f = W * wb / Wn;
        for (int a = 0; a < k; a++) delta[a] = bm[a] - m->mean[a];
        for (int a = 0; a < k; a++) {
            const double* w = wd.data() + static_cast<size_t>(a) * BLK;
            for (int b = 0; b <= a; b++) {
                const double* c = col.data() + static_cast<size_t>(b) * BLK;
                double t = dot4(w, c, nb);
                accumerr(&m->cp[a * k + b], &ce[a * k + b], t + delta[a] * delta[b] * f);
            }
        }
        for (int a = 0; a < k; a++) m->mean[a] += delta[a] * (wb / Wn);
        W = Wn;
        n += nb;
    }
    m->n = n;
    m->sumw = W;
    for (int a = 0; a < k; a++)
        for (int b = 0; b <= a; b++)
            m->cp[b * k + a] = m->cp[a * k + b] = m->cp[a * k + b] + ce[a * k + b];
    return 0;
}

// The divisor of a covariance: the sum of the weights less one (frequency
// and analytic weights alike, the latter scaled to sum to the count).
double covdiv(const Moments& m) {
    return m.sumw - 1;
}

// A number in a format, as a string of its own (the formatter's buffer is
// shared by every call).
std::string fm(const char* fmt, double x) {
    return safereforms(fmt, x);
}

std::string head8(int v) {
    return abvar(varname(v), 8);
}

// The lower triangle of a k x k matrix in blocks of columns that fit the line.
void showmatrix(const std::vector<int>& vars, const std::vector<double>& M, bool cov) {
    int k = static_cast<int>(vars.size());
    int per = std::max(1, (korvu_linewidth - 14) / 9);
    for (int c0 = 0; c0 < k; c0 += per) {
        int c1 = std::min(k, c0 + per);
        std::string h = "\n             {c |}";
        for (int j = c0; j < c1; j++) h += rjust(head8(vars[j]), 9);
        tab_txt(h + "\n");
        tab_txt("{hline 13}{c +}{hline " + std::to_string(9 * (c1 - c0)) + "}\n");
        for (int i = c0; i < k; i++) {
            tab_txt(rjust(abvar(varname(vars[i]), 12), 12) + " {c |}");
            std::string line;
            for (int j = c0; j < c1 && j <= i; j++) {
                double x = M[i * k + j];
                line += " " + fm(cov ? "%8.0g" : "%8.4f", x);
            }
            tab_res(line);
            newline();
        }
    }
}

int casewise(const std::vector<int>& vars, const Sample& S, bool means, bool cov) {
    bool weighted = S.weighted;
    int k = static_cast<int>(vars.size());
    Moments m;
    if (int rc = moments(vars, S, &m)) return rc;
    if (m.n == 0) return errtext(2000, "no observations\n");
    if (m.n == 1 && !cov) return errtext(2001, "insufficient observations\n");
    double N = weighted && wgttype == WGT_FW ? kvround(m.sumw) : static_cast<double>(m.n);
    std::vector<double> C(static_cast<size_t>(k) * k);
    double div = covdiv(m);
    for (int a = 0; a < k; a++)
        for (int b = 0; b < k; b++) {
            double v = m.cp[a * k + b];
            if (cov) {
                C[a * k + b] = div > 0 ? v / div : misval;
            } else {
                double d = std::sqrt(m.cp[a * k + a] * m.cp[b * k + b]);
                C[a * k + b] = a == b ? (m.cp[a * k + a] > 0 ? 1 : misval) : d > 0 ? v / d : misval;
            }
        }
    retval_clear();
    retval_set_scalar("N", N);
    if (k >= 2) {
        if (cov) {
            retval_set_scalar("cov_12", C[1]);
            retval_set_scalar("Var_1", C[0]);
            retval_set_scalar("Var_2", C[k + 1]);
        } else {
            retval_set_scalar("rho", C[1]);
        }
    }
    std::vector<std::string> nm;
    for (int v : vars) nm.emplace_back(varname(v));
    if (int rc = tab_postmat("C", RT_MATRIX, C, k, k, nm, nm)) return rc;
    if (s_outlev > 2) return 0;
    char b[64];
    snprintf(b, sizeof b, "(obs=%.0f)\n", N);
    tab_txt(b);
    if (means) {
        tab_txt("\n    Variable {c |}        Mean    Std. Dev.          Min          Max\n");
        tab_txt("{hline 13}{c +}{hline 52}\n");
        for (int a = 0; a < k; a++) {
            double sd = div > 0 ? std::sqrt(m.cp[a * k + a] / div) : misval;
            tab_txt(rjust(abvar(varname(vars[a]), 12), 12) + " {c |}");
            tab_res(" " + fm("%11.0g", m.mean[a]) + "  " + fm("%11.0g", sd) + "  " +
                    fm("%11.0g", m.mn[a]) + "  " + fm("%11.0g", m.mx[a]));
            newline();
        }
    }
    showmatrix(vars, C, cov);
    return 0;
}

// The pairwise form: each pair over the observations where both are present.
int pairwise(const std::vector<int>& vars, const Sample& S, bool sig, bool showobs, double star,
             double print, int adjust) {
    bool weighted = S.weighted;
    int k = static_cast<int>(vars.size());
    std::vector<double> R(static_cast<size_t>(k) * k, misval), P(R), NN(R);
    int npairs = k * (k - 1) / 2;
    double lastrho = misval, lastn = 0;
    for (int a = 0; a < k; a++)
        for (int b = 0; b <= a; b++) {
            Moments m;
            std::vector<int> pv = {vars[a], vars[b]};
            if (int rc = moments(pv, S, &m)) return rc;
            double n = weighted && wgttype == WGT_FW ? kvround(m.sumw) : static_cast<double>(m.n);
            double r = misval, p = misval;
            if (m.n > 0) {
                double d = std::sqrt(m.cp[0] * m.cp[3]);
                r = a == b ? (m.cp[0] > 0 ? 1 : misval) : d > 0 ? m.cp[1] / d : misval;
            }
            if (a != b && r < misval && n > 2) {
                double rr = std::min(1.0, std::fabs(r));
                double t = rr < 1 ? rr * std::sqrt((n - 2) / (1 - rr * rr)) : misval;
                p = t < misval ? std::min(1.0, 2 * ttail(n - 2, t)) : 0;
                if (adjust == 1) p = std::min(1.0, p * npairs);
                if (adjust == 2) p = std::min(1.0, 1 - std::pow(1 - p, npairs));
            }
            R[a * k + b] = R[b * k + a] = r;
            P[a * k + b] = P[b * k + a] = p;
            NN[a * k + b] = NN[b * k + a] = n;
            if (a != b) lastrho = r, lastn = n;
        }
    retval_clear();
    retval_set_scalar("N", k >= 2 ? lastn : NN[0]);
    if (k >= 2) retval_set_scalar("rho", lastrho);
    std::vector<std::string> nm;
    for (int v : vars) nm.emplace_back(varname(v));
    if (int rc = tab_postmat("C", RT_MATRIX, R, k, k, nm, nm)) return rc;
    if (int rc = tab_postmat("P", RT_MATRIX, P, k, k, nm, nm)) return rc;
    if (int rc = tab_postmat("Nobs", RT_MATRIX, NN, k, k, nm, nm)) return rc;
    if (s_outlev > 2) return 0;
    int per = std::max(1, (korvu_linewidth - 14) / 10);
    for (int c0 = 0; c0 < k; c0 += per) {
        int c1 = std::min(k, c0 + per);
        std::string h = "\n             {c |}";
        for (int j = c0; j < c1; j++) h += rjust(head8(vars[j]), 9) + " ";
        tab_txt(h + "\n");
        tab_txt("{hline 13}{c +}{hline " + std::to_string(10 * (c1 - c0)) + "}\n");
        for (int i = c0; i < k; i++) {
            if (kvpollstd()) return 1;
            // the coefficient (starred below the level), its significance
            // and its count, one line each
            std::string a1, l2, l3;
            for (int j = c0; j < c1 && j <= i; j++) {
                double r = R[i * k + j], p = P[i * k + j];
                bool shown = print >= misval || i == j || (p < misval && p <= print);
                bool st = star < misval && i != j && p < misval && p <= star && shown;
                std::string s = shown ? fm("%8.4f", r) : std::string(8, ' ');
                a1 += " " + s + (st ? "*" : " ");
                l2 += " " + (i != j && shown ? fm("%8.4f", p) + " " : std::string(9, ' '));
                l3 += " " + fm("%8.0f", NN[i * k + j]) + " ";
            }
            tab_txt(rjust(abvar(varname(vars[i]), 12), 12) + " {c |}");
            tab_res(a1);
            newline();
            if (sig) {
                tab_txt("             {c |}");
                tab_res(l2);
                newline();
            }
            if (showobs) {
                tab_txt("             {c |}");
                tab_res(l3);
                newline();
            }
            if (sig || showobs) tab_txt("             {c |}\n");
        }
    }
    return 0;
}

} // namespace

int correlatecmd(int) {
    vable = 0;
    byable = ifable = oable = opable = 0;
    wgtable = 0;
    wgtallowt = WGT_AW | WGT_FW;
    if (int rc = parse()) return rc;
    bool means = findopt("means", 1, 0);
    bool cov = findopt("covariance", 3, 0);
    bool pw = findopt("pairwise", 4, 0);
    bool sig = findopt("sig", 3, 0);
    bool showobs = findopt("obs", 3, 0);
    bool bonf = findopt("bonferroni", 1, 0);
    bool sidak = findopt("sidak", 3, 0);
    double star = misval, print = misval;
    double v = 0;
    if (findoptv("star", 2, &v, 1, 0)) star = v;
    if (findoptv("print", 2, &v, 1, 0)) print = v;
    if (int rc = chkopt()) return rc;
    if (weclause)
        if (int rc = wgtdflt(WGT_AW)) return rc;
    if (bonf && sidak) return errtext(198, "bonferroni and sidak may not be combined\n");
    if (!pw && (sig || showobs || bonf || sidak || star < misval || print < misval))
        return errtext(198, "sig, obs, star(), print(), bonferroni and sidak go with pairwise\n");
    if (pw && (means || cov)) return errtext(198, "means and covariance do not go with pairwise\n");
    for (double x : {star, print})
        if (x < misval && (x <= 0 || x >= 1)) {
            if (x >= 1 && x < 100) continue; // a level given in percent
            return errtext(198, "star() and print() take a level between 0 and 1\n");
        }
    if (star < misval && star >= 1) star /= 100;
    if (print < misval && print >= 1) print /= 100;
    std::vector<int> vars;
    if (lnvar)
        vars.assign(varlist_vr, varlist_vr + lnvar);
    else
        for (int j = 1; j <= nvar; j++)
            if (!ispatexempt(j)) vars.push_back(j);
    for (int x : vars)
        if (isstrtype(typlist[x - 1])) return errorf(109, "%s is a string variable\n", varname(x));
    if (vars.empty()) return error(102);
    Sample S;
    if (int rc = tab_sample(&S)) return rc;
    if (pw) return pairwise(vars, S, sig, showobs, star, print, bonf ? 1 : sidak ? 2 : 0);
    return casewise(vars, S, means, cov);
}

} // namespace korvu
