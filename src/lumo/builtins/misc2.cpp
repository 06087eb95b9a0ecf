// Built-ins of several families written after the rest: the selection of
// extreme values, deviation cross products, traces of products, the
// complex argument, Chebyshev series, the Fourier transform and the
// reordering of rows in place.
#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "data/labels/label.h"
#include "kernel/loop/limits.h"
#include "lumo/builtins/bi.h"
#include "output/spout.h"
#include "results/rng/rng.h"

namespace korvu {

// minindex(v, k, i, w): i becomes the column of the positions in v (a
// vector) of its |k| smallest values (k > 0) or largest (k < 0), in order
// of value and, among equal values, of position; all values tied with the
// last one taken are included. w becomes one row for each distinct value
// in i: where its run starts in i and how long it is. Missing values order
// above every number.
static void bi_minindex(int n) {
    MObj* v = bi_mat(n, 0);
    if (!v) return;
    v = bi_arg(n, 0);
    MObj* io = bi_any(n, 2);
    MObj* wo = bi_any(n, 3);
    int64_t k;
    if (!io || !wo || !bi_real(v) || !bi_vector(v) || !bi_getint(n, 1, -2147483647, 2147483647, &k))
        return;
    if (io->view || wo->view) return m_xeqerr(3103);
    const int64_t N = m_nel(v);
    const double* x = m_rel(v);
    const bool mx = k < 0;
    const int64_t want = std::min<int64_t>(mx ? -k : k, N);
    std::vector<int64_t> ix(static_cast<size_t>(N));
    std::iota(ix.begin(), ix.end(), 0);
    std::stable_sort(ix.begin(), ix.end(),
                     [&](int64_t p, int64_t q) { return mx ? x[p] > x[q] : x[p] < x[q]; });
    int64_t take = 0, runs = 0;
    while (take < want) {
        int64_t e = take + 1;
        while (e < N && x[ix[e]] == x[ix[take]]) e++;
        take = e;
        runs++;
    }
    MObj* ir = bi_new(MT_REAL, take, 1);
    MObj* wr = ir ? bi_new(MT_REAL, runs, 2) : nullptr;
    if (!ir || !wr) {
        if (ir) mo_freemat(ir);
        return;
    }
    int64_t r = 0;
    for (int64_t s = 0; s < take;) {
        int64_t e = s + 1;
        while (e < take && x[ix[e]] == x[ix[s]]) e++;
        m_rel(wr)[2 * r] = static_cast<double>(s + 1);
        m_rel(wr)[2 * r + 1] = static_cast<double>(e - s);
        r++;
        s = e;
    }
    for (int64_t s = 0; s < take; s++) m_rel(ir)[s] = static_cast<double>(ix[s] + 1);
    m_swapmat(io, ir);
    mo_freemat(ir);
    m_swapmat(wo, wr);
    mo_freemat(wr);
    bi_voidres(n);
}

// crossdev(X, x, Z, z) = (X - x)'(Z - z) and crossdev(X, x, w, Z, z) =
// (X - x)'diag(w)(Z - z), with x and z rows of the columns' centres (or
// scalars), skipping rows with a missing element in X, w or Z. The quad
// form sums in extended precision.
static void crossdevs(int n, bool quad) {
    if (n != 4 && n != 5) return bi_crossx(n, true, quad);
    MObj* a[5];
    for (int k = 0; k < n; k++)
        if (!bi_mat(n, k)) return;
    for (int k = 0; k < n; k++) {
        a[k] = bi_arg(n, k);
        if (!bi_real(a[k])) return;
    }
    const MObj* X = a[0];
    const MObj* xc = a[1];
    const MObj* w = n == 5 ? a[2] : nullptr;
    const MObj* Z = a[n - 2];
    const MObj* zc = a[n - 1];
    const int64_t N = X->rows, p = X->cols, q = Z->cols;
    if (Z->rows != N) return m_xeqerr(3200);
    if (!(m_nel(xc) == 1 || (xc->rows == 1 && xc->cols == p))) return m_xeqerr(3200);
    if (!(m_nel(zc) == 1 || (zc->rows == 1 && zc->cols == q))) return m_xeqerr(3200);
    if (w && !(m_nel(w) == 1 || (w->cols == 1 && w->rows == N))) return m_xeqerr(3200);
    MObj* o = bi_new(MT_REAL, p, q);
    if (!o) return;
    std::vector<long double> s(static_cast<size_t>(p * q), 0.0L);
    std::vector<double> dx(static_cast<size_t>(p)), dz(static_cast<size_t>(q));
    for (int64_t i = 0; i < N; i++) {
        bool bad = false;
        for (int64_t j = 0; j < p; j++) {
            const double c = m_rel(xc)[m_nel(xc) == 1 ? 0 : j], e = m_rel(X)[i * p + j];
            bad |= e >= misval || c >= misval;
            dx[j] = e - c;
        }
        for (int64_t j = 0; j < q; j++) {
            const double c = m_rel(zc)[m_nel(zc) == 1 ? 0 : j], e = m_rel(Z)[i * q + j];
            bad |= e >= misval || c >= misval;
            dz[j] = e - c;
        }
        const double wi = w ? m_rel(w)[m_nel(w) == 1 ? 0 : i] : 1.0;
        if (bad || wi >= misval) continue;
        for (int64_t r = 0; r < p; r++) {
            if (quad) {
                const long double xr = static_cast<long double>(dx[r]) * wi;
                for (int64_t c = 0; c < q; c++) s[r * q + c] += xr * dz[c];
            } else {
                const double xr = dx[r] * wi;
                for (int64_t c = 0; c < q; c++)
                    s[r * q + c] = static_cast<double>(s[r * q + c]) + xr * dz[c];
            }
        }
    }
    for (int64_t k = 0; k < p * q; k++) m_rel(o)[k] = bi_fin(static_cast<double>(s[k]));
    bi_result(n, o);
}
static void bi_crossdev(int n) {
    crossdevs(n, false);
}
static void bi_quadcrossdev(int n) {
    crossdevs(n, true);
}

static bool twomats(int n, MObj** a, MObj** b) {
    *a = bi_mat(n, 0);
    *b = *a ? bi_mat(n, 1) : nullptr;
    if (!*a || !*b) return false;
    *a = bi_arg(n, 0);
    return bi_real(*a) && bi_real(*b);
}
// trace_AVBV(X, Y): the trace of XY (X = AV, Y = BV) without forming the
// product; X r x c, Y c x r.
static void bi_trace_avbv(int n) {
    MObj *x, *y;
    if (!twomats(n, &x, &y)) return;
    const int64_t R = x->rows, C = x->cols;
    if (y->rows != C || y->cols != R) return m_xeqerr(3200);
    double t = 0;
    for (int64_t i = 0; i < R; i++)
        for (int64_t j = 0; j < C; j++) {
            const double u = m_rel(x)[i * C + j], v = m_rel(y)[j * R + i];
            if (u >= misval || v >= misval) return void(bi_realres(n, misval));
            t += u * v;
        }
    bi_realres(n, bi_fin(t));
}
// trace_ABBAV(X, V): the trace of XX'V (X = AB); X r x c, V r x r.
static void bi_trace_abbav(int n) {
    MObj *x, *v;
    if (!twomats(n, &x, &v)) return;
    const int64_t R = x->rows, C = x->cols;
    if (v->rows != R || v->cols != R) return m_xeqerr(3200);
    for (int64_t i = 0; i < m_nel(x); i++)
        if (m_rel(x)[i] >= misval) return void(bi_realres(n, misval));
    for (int64_t i = 0; i < m_nel(v); i++)
        if (m_rel(v)[i] >= misval) return void(bi_realres(n, misval));
    double t = 0;
    for (int64_t i = 0; i < R; i++)
        for (int64_t j = 0; j < R; j++) {
            double g = 0; // (XX')ij
            for (int64_t k = 0; k < C; k++) g += m_rel(x)[i * C + k] * m_rel(x)[j * C + k];
            t += g * m_rel(v)[j * R + i];
        }
    bi_realres(n, bi_fin(t));
}

// arg(Z): the angle of each element in (-pi, pi]; for real values 0, or pi
// below zero.
static void bi_argfn(int n) {
    MObj* a = bi_mat(n, 0);
    if (!a || !bi_numeric(a)) return;
    a = bi_arg(n, 0);
    MObj* r = bi_new(MT_REAL, a->rows, a->cols);
    if (!r) return;
    for (int64_t i = 0; i < m_nel(a); i++) {
        if (a->eltype == MT_COMPLEX) {
            const double re = m_rel(a)[2 * i], im = m_rel(a)[2 * i + 1];
            m_rel(r)[i] = re >= misval || im >= misval ? misval : std::atan2(im, re);
        } else {
            const double x = m_rel(a)[i];
            m_rel(r)[i] = x >= misval ? misval : x < 0 ? M_PI : 0;
        }
    }
    bi_result(n, r);
}

// chebyeval(c, x[, ab]): the series c[1]T0(t) + c[2]T1(t) + ... at each
// element of x, with t = x, or t = (2x - a - b)/(b - a) when the interval
// ab = (a, b) is given; by Clenshaw's recurrence.
static void bi_chebyeval(int n) {
    MObj* c = bi_mat(n, 0);
    MObj* x = c ? bi_mat(n, 1) : nullptr;
    MObj* ab = x && n == 3 ? bi_mat(n, 2) : nullptr;
    if (!c || !x || (n == 3 && !ab)) return;
    c = bi_arg(n, 0);
    x = bi_arg(n, 1);
    if (!bi_real(c) || !bi_vector(c) || !bi_real(x) || (ab && !bi_real(ab))) return;
    double a = -1, b = 1;
    if (ab) {
        if (m_nel(ab) != 2) return m_xeqerr(3200);
        a = m_rel(ab)[0];
        b = m_rel(ab)[1];
        if (a >= misval || b >= misval || a == b) return m_xeqerr(3300);
    }
    const int64_t K = m_nel(c);
    MObj* r = bi_new(MT_REAL, x->rows, x->cols);
    if (!r) return;
    for (int64_t i = 0; i < m_nel(x); i++) {
        const double xi = m_rel(x)[i];
        if (xi >= misval) {
            m_rel(r)[i] = misval;
            continue;
        }
        const double t = (2 * xi - a - b) / (b - a);
        double b1 = 0, b2 = 0;
        bool miss = false;
        for (int64_t k = K - 1; k >= 1; k--) {
            const double ck = m_rel(c)[k];
            miss |= ck >= misval;
            const double b0 = 2 * t * b1 - b2 + ck;
            b2 = b1;
            b1 = b0;
        }
        miss |= K > 0 && m_rel(c)[0] >= misval;
        m_rel(r)[i] = miss ? misval : K == 0 ? 0 : bi_fin(t * b1 - b2 + m_rel(c)[0]);
    }
    bi_result(n, r);
}

// mreldifre(Z, X): how far Z (real or complex) is from the real X: the
// largest |Z - X| / (|X| + 1), the imaginary part counting as difference;
// missing when the shapes differ.
static void bi_mreldifre(int n) {
    MObj* z = bi_mat(n, 0);
    MObj* x = z ? bi_mat(n, 1) : nullptr;
    if (!z || !x) return;
    z = bi_arg(n, 0);
    if (!bi_numeric(z) || !bi_real(x)) return;
    if (z->rows != x->rows || z->cols != x->cols) return void(bi_realres(n, misval));
    double m = 0;
    for (int64_t i = 0; i < m_nel(x); i++) {
        const double xr = m_rel(x)[i];
        const double zr = z->eltype == MT_COMPLEX ? m_rel(z)[2 * i] : m_rel(z)[i];
        const double zi = z->eltype == MT_COMPLEX ? m_rel(z)[2 * i + 1] : 0;
        double d;
        if (xr >= misval || zr >= misval || zi >= misval)
            d = xr == zr && zi == 0 ? 0 : 1.79769313486231570815e308;
        else
            d = std::hypot(zr - xr, zi) / (std::fabs(xr) + 1);
        if (d > m) m = d;
    }
    bi_realres(n, m >= 1.79769313486231570815e308 ? misval : m);
}

// The discrete Fourier transform of a vector in place: radix 2 for a power
// of two, the direct sum otherwise. inv: the inverse, divided by the length.
static void dft(std::vector<std::complex<double>>& a, bool inv) {
    const size_t N = a.size();
    if (N <= 1) return;
    const double sg = inv ? 1 : -1;
    if ((N & (N - 1)) == 0) {
        for (size_t i = 1, j = 0; i < N; i++) {
            size_t bit = N >> 1;
            for (; j & bit; bit >>= 1) j ^= bit;
            j ^= bit;
            if (i < j) std::swap(a[i], a[j]);
        }
        for (size_t len = 2; len <= N; len <<= 1) {
            for (size_t i = 0; i < N; i += len)
                for (size_t k = 0; k < len / 2; k++) {
                    const double th =
                        sg * 2 * M_PI * static_cast<double>(k) / static_cast<double>(len);
                    const std::complex<double> w(std::cos(th), std::sin(th));
                    const std::complex<double> u = a[i + k], v = a[i + k + len / 2] * w;
                    a[i + k] = u + v;
                    a[i + k + len / 2] = u - v;
                }
        }
    } else {
        std::vector<std::complex<double>> b(N);
        for (size_t k = 0; k < N; k++) {
            std::complex<double> s = 0;
            for (size_t j = 0; j < N; j++) {
                const double th =
                    sg * 2 * M_PI * static_cast<double>((j * k) % N) / static_cast<double>(N);
                s += a[j] * std::complex<double>(std::cos(th), std::sin(th));
            }
            b[k] = s;
        }
        a.swap(b);
    }
    if (inv)
        for (auto& e : a) e /= static_cast<double>(N);
}
// _fft(H), _invfft(H): H (a real or complex vector) becomes its transform,
// complex, in place.
static void ffts(int n, bool inv) {
    MObj* h = bi_any(n, 0);
    if (!h) return;
    if (h->view) return m_xeqerr(3103);
    if (!bi_numeric(h) || !bi_vector(h)) return;
    const int64_t N = m_nel(h);
    std::vector<std::complex<double>> a(static_cast<size_t>(N));
    for (int64_t i = 0; i < N; i++) {
        const double re = h->eltype == MT_COMPLEX ? m_rel(h)[2 * i] : m_rel(h)[i];
        const double im = h->eltype == MT_COMPLEX ? m_rel(h)[2 * i + 1] : 0;
        if (re >= misval || im >= misval) return m_xeqerr(3351);
        a[static_cast<size_t>(i)] = {re, im};
    }
    dft(a, inv);
    MObj* r = bi_new(MT_COMPLEX, h->rows, h->cols);
    if (!r) return;
    for (int64_t i = 0; i < N; i++) {
        m_rel(r)[2 * i] = a[static_cast<size_t>(i)].real();
        m_rel(r)[2 * i + 1] = a[static_cast<size_t>(i)].imag();
    }
    m_swapmat(h, r);
    mo_freemat(r);
    bi_voidres(n);
}
static void bi_ufft(int n) {
    ffts(n, false);
}
static void bi_uinvfft(int n) {
    ffts(n, true);
}

// _collate(X, p): the rows of X reordered in place so that row i becomes
// the old row p[i]; p must be a permutation of 1 .. rows(X).
static void bi_ucollate(int n) {
    MObj* x = bi_any(n, 0);
    MObj* p = x ? bi_mat(n, 1) : nullptr;
    if (!x || !p) return;
    if (x->view) return m_xeqerr(3103);
    if (!bi_real(p) || !bi_vector(p)) return;
    const int64_t R = x->rows, C = x->cols;
    if (m_nel(p) != R) return m_xeqerr(3200);
    std::vector<char> seen(static_cast<size_t>(R), 0);
    for (int64_t i = 0; i < R; i++) {
        const double v = m_rel(p)[i];
        if (!(v >= 1 && v <= static_cast<double>(R)) || v != std::floor(v) ||
            seen[static_cast<size_t>(v) - 1])
            return m_xeqerr(3300);
        seen[static_cast<size_t>(v) - 1] = 1;
    }
    if (x->eltype != MT_REAL && x->eltype != MT_COMPLEX && x->eltype != MT_STRING &&
        x->eltype != MT_POINTER)
        return m_xeqerr(3250);
    const size_t w = x->eltype == MT_COMPLEX ? 16 : 8; // element bytes
    const size_t row = w * static_cast<size_t>(C);
    std::vector<unsigned char> old(row * static_cast<size_t>(R));
    if (!old.empty()) memcpy(old.data(), x->data, old.size());
    unsigned char* d = static_cast<unsigned char*>(x->data);
    for (int64_t i = 0; i < R; i++)
        if (row)
            memcpy(d + row * i, old.data() + row * (static_cast<size_t>(m_rel(p)[i]) - 1), row);
    bi_voidres(n);
}

// uniformseed(): the state of the main generator as its text;
// uniformseed(n) seeds it with the number n; uniformseed(text) restores a
// state that uniformseed() gave.
static void bi_uniformseed(int n) {
    if (n == 0) {
        char buf[URN_TEXTLEN + 8];
        geturnseed(buf, sizeof buf);
        return void(bi_strres(n, buf));
    }
    MObj* a = bi_mat(n, 0);
    if (!a || !bi_scalar(a)) return;
    a = bi_arg(n, 0);
    if (a->eltype == MT_STRING) {
        if (seturnseed(m_sel(a)[0]->s)) return m_custom_xeqerr(3300, "invalid generator state");
    } else {
        int64_t s;
        if (!bi_getint(n, 0, -2147483647, 2147483647, &s)) return;
        seturnseed_i4(static_cast<int32_t>(s));
    }
    bi_voidres(n);
}

// displayas(level): what is printed next is "result", "text", "error" or
// "input" ("txt", "as txt", "err", "inp" too).
static void bi_displayas(int n) {
    std::string s;
    if (!bi_getstr(n, 0, &s)) return;
    if (s.rfind("as ", 0) == 0) s = s.substr(3);
    if (s == "result")
        c_outlev = 0;
    else if (s == "text" || s == "txt")
        c_outlev = 1;
    else if (s == "error" || s == "err")
        c_outlev = 3;
    else if (s == "input" || s == "inp")
        c_outlev = 4;
    else
        return m_custom_xeqerr(3300, "displayas(): %s not a display level", s.c_str());
    bi_voidres(n);
}
// more(): a pause now, as the command does.
static void bi_more(int n) {
    sysmore();
    bi_voidres(n);
}
// korvusetversion(v): the version the running code is interpreted under,
// from 1 up to the system's own.
static void bi_korvusetversion(int n) {
    double v;
    if (!bi_getreal(n, 0, &v)) return;
    if (!(v >= 1 && v <= vernum / 100.0)) return m_xeqerr(3300);
    m_rt.version = static_cast<int32_t>(std::lround(v * 100));
    bi_voidres(n);
}

// kv_vlload(name, values, texts): values becomes the column of the values
// of the value label, texts the column of their texts, in the label's
// order; both empty when there is no such label.
static void bi_kv_vlload(int n) {
    std::string s;
    MObj* vo = bi_any(n, 1);
    MObj* to = bi_any(n, 2);
    if (!vo || !to || !bi_getstr(n, 0, &s)) return;
    if (vo->view || to->view) return m_xeqerr(3103);
    const int32_t* t = vlfind(s.c_str());
    const int k = t ? vlgetcount(t) : 0;
    MObj* v = bi_new(MT_REAL, k, 1);
    MObj* x = v ? bi_new(MT_STRING, k, 1) : nullptr;
    if (!v || !x) {
        if (v) mo_freemat(v);
        return;
    }
    for (int i = 0; i < k; i++) {
        double val = misval;
        const char* txt = "";
        vlgetmapping(t, i, &val, &txt);
        m_rel(v)[i] = val;
        m_sel(x)[i] = bi_cell(txt ? txt : "");
    }
    m_swapmat(vo, v);
    mo_freemat(v);
    m_swapmat(to, x);
    mo_freemat(x);
    bi_voidres(n);
}

// sys_memory(): the bytes the matrices of the object store take.
static void bi_sys_memory(int n) {
    int64_t b = 0;
    for (MObj* o = mo_nextmat(nullptr); o; o = mo_nextmat(o)) b += m_objsize(o);
    bi_realres(n, static_cast<double>(b));
}

void bi_link_misc2(MBiFn* t) {
    t[bi_index("sys_memory")] = bi_sys_memory;
    t[bi_index("kv_vlload")] = bi_kv_vlload;
    t[bi_index("uniformseed")] = bi_uniformseed;
    t[bi_index("displayas")] = bi_displayas;
    t[bi_index("more")] = bi_more;
    t[bi_index("korvusetversion")] = bi_korvusetversion;
    t[bi_index("minindex")] = bi_minindex;
    t[bi_index("crossdev")] = bi_crossdev;
    t[bi_index("quadcrossdev")] = bi_quadcrossdev;
    t[bi_index("trace_AVBV")] = bi_trace_avbv;
    t[bi_index("trace_ABBAV")] = bi_trace_abbav;
    t[bi_index("arg")] = bi_argfn;
    t[bi_index("chebyeval")] = bi_chebyeval;
    t[bi_index("mreldifre")] = bi_mreldifre;
    t[bi_index("_fft")] = bi_ufft;
    t[bi_index("_invfft")] = bi_uinvfft;
    t[bi_index("_collate")] = bi_ucollate;
}

} // namespace korvu
