// Cross products with constants: cross(X, xc, Z, zc), cross(X, xc, w, Z,
// zc), crossdev(X, xc, x, Z, zc, z) and crossdev(X, xc, x, w, Z, zc, z),
// with their quad forms.
//
// A non-zero xc adds a column of ones after the columns of X (zc the same
// for Z). Weights w are a column of one per row or a scalar for all. Rows
// where X, w or Z has a missing element drop out. In the deviation forms x
// and z are the centres subtracted from the columns: a scalar for every
// column of the data, a row of one per column of the data (the column of
// ones is then left as it is), or, with the constant, one more whose last
// element is subtracted from the ones.
#include <vector>

#include "lumo/builtins/bi.h"

namespace korvu {

namespace {

struct Side {
    const MObj* m; // the data
    const MObj* c; // the centres, or null
    bool one;      // the column of ones
    int64_t cols;  // of the data
    int64_t width; // cols plus the one
    bool centre(int64_t j, double* v) const {
        if (!c) {
            *v = 0;
            return true;
        }
        const int64_t k = m_nel(c);
        if (j == cols) { // the column of ones
            *v = k == cols + 1 ? m_rel(c)[cols] : 0;
        } else {
            *v = k == 1 ? m_rel(c)[0] : m_rel(c)[j];
        }
        return *v < misval;
    }
};

bool flagof(int n, int k, bool* on) {
    double v;
    if (!bi_getreal(n, k, &v)) return false;
    *on = v != 0;
    return true;
}

bool centresfit(const Side& s) {
    const int64_t k = m_nel(s.c);
    if (s.c->rows == 1 && (k == 1 || k == s.cols || (s.one && k == s.cols + 1))) return true;
    m_xeqerr(3200);
    return false;
}

} // namespace

void bi_crossx(int n, bool dev, bool quad) {
    const char* name =
        dev ? (quad ? "quadcrossdev()" : "crossdev()") : (quad ? "quadcross()" : "cross()");
    const int lo = dev ? 6 : 4;
    if (n != lo && n != lo + 1)
        return m_custom_xeqerr(3001, "%s takes %d or %d arguments, or %d or %d without constants",
                               name, lo, lo + 1, dev ? 4 : 2, dev ? 5 : 3);
    const bool weighted = n == lo + 1;
    for (int k = 0; k < n; k++)
        if (!bi_mat(n, k)) return;
    for (int k = 0; k < n; k++)
        if (!bi_real(bi_arg(n, k))) return;
    // positions: X, xc, [x], [w], Z, zc, [z]
    int k = 0;
    Side a{}, b{};
    a.m = bi_arg(n, k++);
    if (!flagof(n, k++, &a.one)) return;
    if (dev) a.c = bi_arg(n, k++);
    const MObj* w = weighted ? bi_arg(n, k++) : nullptr;
    b.m = bi_arg(n, k++);
    if (!flagof(n, k++, &b.one)) return;
    if (dev) b.c = bi_arg(n, k++);
    a.cols = a.m->cols;
    b.cols = b.m->cols;
    a.width = a.cols + a.one;
    b.width = b.cols + b.one;
    const int64_t N = a.m->rows;
    if (b.m->rows != N) return m_xeqerr(3200);
    if (w && !(m_nel(w) == 1 || (w->cols == 1 && w->rows == N))) return m_xeqerr(3200);
    if (dev && (!centresfit(a) || !centresfit(b))) return;
    std::vector<double> ca(static_cast<size_t>(a.width) + 1), cb(static_cast<size_t>(b.width) + 1);
    for (int64_t j = 0; j < a.width; j++)
        if (!a.centre(j, &ca[j])) return m_xeqerr(3351);
    for (int64_t j = 0; j < b.width; j++)
        if (!b.centre(j, &cb[j])) return m_xeqerr(3351);
    MObj* o = bi_new(MT_REAL, a.width, b.width);
    if (!o) return;
    const int64_t P = a.width, Q = b.width;
    std::vector<double> s(static_cast<size_t>(P * Q) + 1, 0.0);
    std::vector<long double> sq(quad ? static_cast<size_t>(P * Q) + 1 : 1, 0.0L);
    std::vector<double> dx(static_cast<size_t>(P) + 1), dz(static_cast<size_t>(Q) + 1);
    const double* X = m_rel(a.m);
    const double* Z = m_rel(b.m);
    for (int64_t i = 0; i < N; i++) {
        const double wi = w ? m_rel(w)[m_nel(w) == 1 ? 0 : i] : 1.0;
        bool bad = wi >= misval;
        for (int64_t j = 0; j < a.cols && !bad; j++) {
            const double e = X[i * a.cols + j];
            bad = e >= misval;
            dx[j] = e - ca[j];
        }
        for (int64_t j = 0; j < b.cols && !bad; j++) {
            const double e = Z[i * b.cols + j];
            bad = e >= misval;
            dz[j] = e - cb[j];
        }
        if (bad) continue;
        if (a.one) dx[a.cols] = 1 - ca[a.cols];
        if (b.one) dz[b.cols] = 1 - cb[b.cols];
        for (int64_t r = 0; r < P; r++) {
            if (quad) {
                const long double xr = static_cast<long double>(dx[r]) * wi;
                for (int64_t c = 0; c < Q; c++) sq[r * Q + c] += xr * dz[c];
            } else {
                const double xr = dx[r] * wi;
                for (int64_t c = 0; c < Q; c++) s[r * Q + c] += xr * dz[c];
            }
        }
    }
    for (int64_t e = 0; e < P * Q; e++)
        m_rel(o)[e] = bi_fin(quad ? static_cast<double>(sq[e]) : s[e]);
    bi_result(n, o);
}

} // namespace korvu
