// Cross products of views, a block of rows at a time.
#include "lumo/objects/mvcross.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include <cblas.h>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "kernel/loop/brk.h"
#include "lumo/objects/mview.h"

namespace korvu {

namespace {

// One view read a block of rows at a time.
struct Src {
    const MObj* o = nullptr;
    int64_t C = 0;
    int64_t first = 0;                // kind 1: the first observation, 1-based
    std::vector<const uint8_t*> base; // each column's cell of observation 1
    std::vector<int> type;
    int64_t ld = 0; // not 0: doubles one after another, a matrix of this stride
};

void srcopen(Src* s, const MObj* o, int64_t blockrows) {
    s->o = o;
    s->C = o->cols;
    s->first = o->view == 1 ? v_obs(o, 0) : 0;
    s->base.assign(static_cast<size_t>(s->C), nullptr);
    s->type.assign(static_cast<size_t>(s->C), 0);
    bool doubles = o->view == 1;
    for (int64_t j = 0; j < s->C; j++) {
        int t = 0;
        s->base[j] = static_cast<const uint8_t*>(colbase(v_var(o, j), &t));
        s->type[j] = t;
        doubles = doubles && t == KV_DOUBLE;
    }
    s->ld = 0;
    if (!doubles || s->C == 0) return;
    if (s->C == 1) {
        s->ld = blockrows;
        return;
    }
    // the columns of variables stored one after another are a matrix
    const int64_t bytes = s->base[1] - s->base[0];
    if (bytes % 8 || bytes / 8 < blockrows || bytes / 8 > 0x7fffffff) return;
    for (int64_t j = 2; j < s->C; j++)
        if (s->base[j] - s->base[0] != j * bytes) return;
    s->ld = bytes / 8;
}

// Rows [i0, i0 + nb) as a column-major nb x C matrix: where they lie, or
// gathered into buf (room for nb x C); *ld its leading dimension.
const double* fetch(const Src& s, int64_t i0, int64_t nb, double* buf, int64_t* ld) {
    if (s.ld) {
        *ld = s.ld;
        return reinterpret_cast<const double*>(s.base[0]) + (s.first - 1 + i0);
    }
    for (int64_t j = 0; j < s.C; j++) {
        const int t = s.type[j];
        const int w = bytlenc(t);
        double* q = buf + j * nb;
        if (s.o->view == 1) {
            const uint8_t* p = s.base[j] + (s.first - 1 + i0) * w;
            if (t == KV_DOUBLE) {
                memcpy(q, p, static_cast<size_t>(nb) * 8);
            } else {
                for (int64_t i = 0; i < nb; i++, p += w) q[i] = decode_cell(p, t);
            }
        } else {
            for (int64_t i = 0; i < nb; i++)
                q[i] =
                    decode_cell(s.base[j] + (static_cast<int64_t>(v_obs(s.o, i0 + i)) - 1) * w, t);
        }
    }
    *ld = nb;
    return buf;
}

// The block into buf (ld nb) when it is not there already.
const double* tobuf(const double* x, int64_t ld, int64_t nb, int64_t C, double* buf) {
    if (x == buf) return buf;
    for (int64_t j = 0; j < C; j++) memcpy(buf + j * nb, x + j * ld, static_cast<size_t>(nb) * 8);
    return buf;
}

// Missing values in a column of the block (a loop the compiler vectorizes).
int64_t nmiss(const double* col, int64_t nb) {
    int64_t k = 0;
    for (int64_t i = 0; i < nb; i++) k += col[i] >= misval;
    return k;
}

// Marks the rows of the block holding a missing value; true if any.
bool markbad(const double* x, int64_t ld, int64_t nb, int64_t C, char* bad) {
    bool any = false;
    for (int64_t j = 0; j < C; j++) {
        const double* col = x + j * ld;
        if (!nmiss(col, nb)) continue;
        any = true;
        for (int64_t i = 0; i < nb; i++)
            if (col[i] >= misval) bad[i] = 1;
    }
    return any;
}

// X'X of a block, added into acc (p x p, upper triangle) when the block
// holds no missing value. The scan for missing values comes free: a missing
// value squares past 1e300 on the diagonal, and so does any value above 1e150,
// whose block then goes the careful way too. False, acc untouched, otherwise.
bool cleansyrk(const double* x, int64_t ld, int64_t nb, int64_t p, double* tmp, double* acc) {
    cblas_dsyrk(CblasColMajor, CblasUpper, CblasTrans, static_cast<int>(p), static_cast<int>(nb),
                1.0, x, static_cast<int>(ld), 0.0, tmp, static_cast<int>(p));
    for (int64_t j = 0; j < p; j++)
        if (!(tmp[j + j * p] < 1e300)) return false;
    for (int64_t b = 0; b < p; b++)
        for (int64_t a = 0; a <= b; a++) acc[a + b * p] += tmp[a + b * p];
    return true;
}

double fin(double x) {
    return x == x && x < misval && x > -1.79769313486231570815e308 ? x : misval;
}

} // namespace

bool v_crossable(const MObj* o) {
    return o && !o->fcn && (o->view == 1 || o->view == 2) && o->eltype == MT_REAL && v_valid(o);
}

int v_cross(const MObj* x, const MObj* w, const MObj* z, double* r) {
    const int64_t N = x->rows, p = x->cols, q = z->cols;
    const bool same = x == z;
    const int64_t B = std::max<int64_t>(1, std::min<int64_t>(N, MV_BLOCKROWS));
    Src sx, sz, sw;
    srcopen(&sx, x, B);
    if (!same) srcopen(&sz, z, B);
    const bool wview = w && w->view;
    const bool wscalar = w && !wview && m_nel(w) == 1;
    if (wview) srcopen(&sw, w, B);
    std::vector<double> bx(static_cast<size_t>(B * p)), bz(same ? 0 : static_cast<size_t>(B * q));
    std::vector<double> bs(w ? static_cast<size_t>(B * p) : 0), bw(w ? static_cast<size_t>(B) : 0);
    std::vector<double> acc(static_cast<size_t>(p * q), 0.0);
    std::vector<char> bad(static_cast<size_t>(B));
    std::vector<double> tmp(same ? static_cast<size_t>(p * p) : 0);
    if (wscalar) std::fill(bw.begin(), bw.end(), m_rel(w)[0]);
    for (int64_t i0 = 0; i0 < N; i0 += B) {
        if (kvpollstd()) return 1;
        const int64_t nb = std::min(B, N - i0);
        int64_t lx = 0, lz = 0, lw = 0;
        const double* X = fetch(sx, i0, nb, bx.data(), &lx);
        const double* Z = same ? X : fetch(sz, i0, nb, bz.data(), &lz);
        if (same) lz = lx;
        const double* W = nullptr;
        if (wview)
            W = fetch(sw, i0, nb, bw.data(), &lw);
        else if (wscalar)
            W = bw.data();
        else if (w)
            W = m_rel(w) + i0;
        if (same && !W && cleansyrk(X, lx, nb, p, tmp.data(), acc.data())) continue;
        std::fill(bad.begin(), bad.begin() + nb, 0);
        bool any = markbad(X, lx, nb, p, bad.data());
        if (!same) any = markbad(Z, lz, nb, q, bad.data()) || any;
        if (W) any = markbad(W, nb, nb, 1, bad.data()) || any;
        // a row of zeros in the left operand adds nothing: that is how a
        // row with a missing value drops out
        if (W) {
            double* s = bs.data();
            for (int64_t j = 0; j < p; j++)
                for (int64_t i = 0; i < nb; i++)
                    s[j * nb + i] = bad[i] ? 0.0 : X[j * lx + i] * W[i];
            cblas_dgemm(CblasColMajor, CblasTrans, CblasNoTrans, static_cast<int>(p),
                        static_cast<int>(q), static_cast<int>(nb), 1.0, s, static_cast<int>(nb), Z,
                        static_cast<int>(lz), 1.0, acc.data(), static_cast<int>(p));
            continue;
        }
        if (any) {
            double* b = const_cast<double*>(tobuf(X, lx, nb, p, bx.data()));
            for (int64_t j = 0; j < p; j++)
                for (int64_t i = 0; i < nb; i++)
                    if (bad[i]) b[j * nb + i] = 0;
            X = b;
            lx = nb;
        }
        if (same) {
            cblas_dsyrk(CblasColMajor, CblasUpper, CblasTrans, static_cast<int>(p),
                        static_cast<int>(nb), 1.0, X, static_cast<int>(lx), 1.0, acc.data(),
                        static_cast<int>(p));
        } else {
            cblas_dgemm(CblasColMajor, CblasTrans, CblasNoTrans, static_cast<int>(p),
                        static_cast<int>(q), static_cast<int>(nb), 1.0, X, static_cast<int>(lx), Z,
                        static_cast<int>(lz), 1.0, acc.data(), static_cast<int>(p));
        }
    }
    const bool upper = same && !w;
    for (int64_t a = 0; a < p; a++)
        for (int64_t b = 0; b < q; b++) {
            const double v = upper && a > b ? acc[b + a * p] : acc[a + b * p];
            r[a * q + b] = fin(v);
        }
    return 0;
}

int v_tcross(const MObj* x, double* r) {
    const int64_t N = x->rows, p = x->cols;
    const int64_t B = std::max<int64_t>(1, std::min<int64_t>(N, MV_BLOCKROWS));
    Src sx;
    srcopen(&sx, x, B);
    std::vector<double> bx(static_cast<size_t>(B * p)), acc(static_cast<size_t>(p * p), 0.0);
    std::vector<char> colmiss(static_cast<size_t>(p), 0);
    std::vector<double> tmp(static_cast<size_t>(p * p));
    for (int64_t i0 = 0; i0 < N; i0 += B) {
        if (kvpollstd()) return 1;
        const int64_t nb = std::min(B, N - i0);
        int64_t lx = 0;
        const double* X = fetch(sx, i0, nb, bx.data(), &lx);
        if (cleansyrk(X, lx, nb, p, tmp.data(), acc.data())) continue;
        for (int64_t j = 0; j < p; j++) {
            if (!nmiss(X + j * lx, nb)) continue;
            // missing values enter as zeros; their column is marked
            colmiss[j] = 1;
            double* b = const_cast<double*>(tobuf(X, lx, nb, p, bx.data()));
            X = b;
            lx = nb;
            for (int64_t i = 0; i < nb; i++)
                if (b[j * nb + i] >= misval) b[j * nb + i] = 0;
        }
        cblas_dsyrk(CblasColMajor, CblasUpper, CblasTrans, static_cast<int>(p),
                    static_cast<int>(nb), 1.0, X, static_cast<int>(lx), 1.0, acc.data(),
                    static_cast<int>(p));
    }
    for (int64_t a = 0; a < p; a++)
        for (int64_t b = 0; b < p; b++) {
            const double v = a > b ? acc[b + a * p] : acc[a + b * p];
            r[a * p + b] = colmiss[a] || colmiss[b] ? misval : fin(v);
        }
    return 0;
}

} // namespace korvu
