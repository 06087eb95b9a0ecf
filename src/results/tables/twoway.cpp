// The tests and measures of association of a two-way table: Pearson's and
// the likelihood-ratio chi-squared, Cramer's V, gamma and tau-b with their
// asymptotic standard errors, and Fisher's exact test by enumeration.
#include <cmath>
#include <vector>

#include "data/area/missing.h"
#include "kernel/loop/brk.h"
#include "results/distrib/distrib.h"
#include "results/tables/tables.h"

namespace korvu {

void twoway_stats(const std::vector<double>& n, int r, int c, TwoWay* out) {
    *out = TwoWay{};
    std::vector<double> R(r, 0), C(c, 0);
    double N = 0;
    for (int i = 0; i < r; i++)
        for (int j = 0; j < c; j++) R[i] += n[i * c + j], C[j] += n[i * c + j], N += n[i * c + j];
    out->df = (r - 1) * (c - 1);
    if (r < 2 || c < 2 || N <= 0) {
        out->chi2 = out->p = out->chi2_lr = out->p_lr = out->cramersv = misval;
        out->gamma = out->ase_gam = out->taub = out->ase_taub = misval;
        return;
    }
    double x2 = 0, lr = 0;
    for (int i = 0; i < r; i++)
        for (int j = 0; j < c; j++) {
            double e = R[i] * C[j] / N, o = n[i * c + j];
            if (e > 0) x2 += (o - e) * (o - e) / e;
            if (o > 0) lr += o * std::log(o / e);
        }
    lr *= 2;
    out->chi2 = x2;
    out->p = chi2tail(out->df, x2);
    out->chi2_lr = lr;
    out->p_lr = chi2tail(out->df, lr);
    if (r == 2 && c == 2) {
        double d = std::sqrt(R[0] * R[1] * C[0] * C[1]);
        out->cramersv = d > 0 ? (n[0] * n[3] - n[1] * n[2]) / d : misval;
    } else {
        int m = (r < c ? r : c) - 1;
        out->cramersv = std::sqrt(x2 / N / m);
    }

    // concordant (A) and discordant (D) weights of each cell from the
    // cumulative sums cum[i][j] = sum of n over rows <= i and columns <= j
    std::vector<double> cum(static_cast<size_t>(r) * c);
    for (int i = 0; i < r; i++)
        for (int j = 0; j < c; j++) {
            double v = n[i * c + j];
            if (i) v += cum[(i - 1) * c + j];
            if (j) v += cum[i * c + j - 1];
            if (i && j) v -= cum[(i - 1) * c + j - 1];
            cum[i * c + j] = v;
        }
    auto cm = [&](int i, int j) { return i < 0 || j < 0 ? 0.0 : cum[i * c + j]; };
    std::vector<double> Rcum(r), Ccum(c);
    for (int i = 0; i < r; i++) Rcum[i] = R[i] + (i ? Rcum[i - 1] : 0);
    for (int j = 0; j < c; j++) Ccum[j] = C[j] + (j ? Ccum[j - 1] : 0);
    std::vector<double> A(static_cast<size_t>(r) * c), D(static_cast<size_t>(r) * c);
    double P = 0, Q = 0;
    for (int i = 0; i < r; i++)
        for (int j = 0; j < c; j++) {
            double above_left = cm(i - 1, j - 1);
            double below_right = N - Rcum[i] - Ccum[j] + cm(i, j);
            double above_right = (i ? Rcum[i - 1] : 0) - cm(i - 1, j);
            double below_left = (j ? Ccum[j - 1] : 0) - cm(i, j - 1);
            A[i * c + j] = above_left + below_right;
            D[i * c + j] = above_right + below_left;
            P += n[i * c + j] * A[i * c + j];
            Q += n[i * c + j] * D[i * c + j];
        }
    if (P + Q > 0) {
        out->gamma = (P - Q) / (P + Q);
        double s = 0;
        for (int k = 0; k < r * c; k++) {
            double t = Q * A[k] - P * D[k];
            s += n[k] * t * t;
        }
        out->ase_gam = 4 / ((P + Q) * (P + Q)) * std::sqrt(s);
    } else {
        out->gamma = out->ase_gam = misval;
    }
    double wr = N * N, wc = N * N;
    for (int i = 0; i < r; i++) wr -= R[i] * R[i];
    for (int j = 0; j < c; j++) wc -= C[j] * C[j];
    if (wr > 0 && wc > 0) {
        double w = std::sqrt(wr * wc);
        double tau = (P - Q) / w;
        double s = 0;
        for (int i = 0; i < r; i++)
            for (int j = 0; j < c; j++) {
                double d = A[i * c + j] - D[i * c + j];
                double v = R[i] * wc + C[j] * wr;
                double t = 2 * w * d + tau * v;
                s += n[i * c + j] * t * t;
            }
        double sub = N * N * N * tau * tau * (wr + wc) * (wr + wc);
        double var = s - sub;
        out->taub = tau;
        out->ase_taub = var > 0 ? std::sqrt(var) / (w * w) : 0;
    } else {
        out->taub = out->ase_taub = misval;
    }
}

namespace {

struct Fisher {
    int r, c;
    std::vector<int> rowrem, colrem;
    std::vector<double> lf; // log factorials
    double base, lpobs, p;
    long long nodes, budget;
    bool stop;
};

// Fills column j from row i on, with `acc` the sum of the log factorials of
// the cells placed so far.
void fisher_fill(Fisher& F, int i, int j, double acc) {
    if (F.stop) return;
    if (++F.nodes > F.budget || ((F.nodes & 0xffff) == 0 && kvpollrare())) {
        F.stop = true;
        return;
    }
    if (j == F.c - 1) { // the last column is what the rows have left
        double a = acc;
        for (int k = 0; k < F.r; k++) a += F.lf[F.rowrem[k]];
        double lp = F.base - a;
        if (lp <= F.lpobs + 1e-7) F.p += std::exp(lp);
        return;
    }
    if (i == F.r - 1) { // the last row of a column takes what it needs
        int x = F.colrem[j];
        if (x > F.rowrem[i]) return;
        F.rowrem[i] -= x;
        fisher_fill(F, 0, j + 1, acc + F.lf[x]);
        F.rowrem[i] += x;
        return;
    }
    int below = 0;
    for (int k = i + 1; k < F.r; k++) below += F.rowrem[k];
    int need = F.colrem[j];
    int lo = need - below > 0 ? need - below : 0;
    int hi = need < F.rowrem[i] ? need : F.rowrem[i];
    for (int x = lo; x <= hi; x++) {
        F.rowrem[i] -= x;
        F.colrem[j] -= x;
        fisher_fill(F, i + 1, j, acc + F.lf[x]);
        F.rowrem[i] += x;
        F.colrem[j] += x;
        if (F.stop) return;
    }
}

} // namespace

int fisher_exact(const std::vector<double>& n, int r, int c, double* p, double* p1) {
    *p = *p1 = misval;
    int N = 0;
    std::vector<int> R(r, 0), C(c, 0);
    for (int i = 0; i < r; i++)
        for (int j = 0; j < c; j++) {
            int v = static_cast<int>(n[i * c + j]);
            R[i] += v, C[j] += v, N += v;
        }
    Fisher F;
    F.r = r, F.c = c;
    F.lf.assign(N + 1, 0);
    for (int k = 2; k <= N; k++) F.lf[k] = F.lf[k - 1] + std::log(static_cast<double>(k));
    F.base = -F.lf[N];
    for (int i = 0; i < r; i++) F.base += F.lf[R[i]];
    for (int j = 0; j < c; j++) F.base += F.lf[C[j]];
    double lobs = 0;
    for (int k = 0; k < r * c; k++) lobs += F.lf[static_cast<int>(n[k])];
    F.lpobs = F.base - lobs;
    // relative tolerance on the probabilities, as exp(1e-7) on their logs
    F.p = 0;
    F.nodes = 0;
    F.budget = 200000000;
    F.stop = false;
    F.rowrem = R;
    F.colrem = C;
    if (r == 2 && c == 2) { // one free cell: the hypergeometric law of n11
        int lo = R[0] - C[1] > 0 ? R[0] - C[1] : 0, hi = R[0] < C[0] ? R[0] : C[0];
        int x0 = static_cast<int>(n[0]);
        double two = 0, up = 0, down = 0;
        for (int x = lo; x <= hi; x++) {
            double lp = F.base - F.lf[x] - F.lf[R[0] - x] - F.lf[C[0] - x] - F.lf[R[1] - C[0] + x];
            double pr = std::exp(lp);
            if (lp <= F.lpobs + 1e-7) two += pr;
            if (x >= x0) up += pr;
            if (x <= x0) down += pr;
        }
        *p = two > 1 ? 1 : two;
        double e = static_cast<double>(R[0]) * C[0] / N;
        double one = x0 >= e ? up : down;
        *p1 = one > 1 ? 1 : one;
        return 0;
    }
    fisher_fill(F, 0, 0, 0);
    if (F.stop) return stopflag ? 1 : 2;
    *p = F.p > 1 ? 1 : F.p;
    return 0;
}

} // namespace korvu
