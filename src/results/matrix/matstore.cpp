// Storage of named matrices: items, the three storage kinds, stripes, the
// dense working buffers and the checks on whole matrices.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/parse/cmdparse.h"
#include "output/spout.h"
#include "results/matrix/matrix.h"

namespace korvu {

int diag0cnt = 0;

int mxnmt(int letter) {
    return letter == 'r' ? DM_RMATRIX : letter == 'e' ? DM_EMATRIX : DM_MATRIX;
}
int mxnrt(int letter) {
    return mxnmt(letter) + 1;
}
int mxnct(int letter) {
    return mxnmt(letter) + 2;
}
std::string stripename(const char* name, int type, int row, int* stype) {
    if (type == DM_EST) {
        *stype = DM_EST;
        std::string s = row ? "<r>" : "<c>";
        s += name;
        if (s.size() > dm_namelen) s.resize(dm_namelen);
        return s;
    }
    if (type >= DM_RETMAT0 && type <= DM_RETMATEND) {
        *stype = type + (row ? 64 : 128);
        return name;
    }
    *stype = type + (row ? 1 : 2);
    return name;
}

static MatHdr* hdrof(void* item) {
    return static_cast<MatHdr*>(item);
}

void matsett(const char* name, int type, MatDesc* d) {
    int tag = 0;
    void* it = dmfind(name, type, &tag);
    if (!it) {
        *d = MatDesc{nullptr, nullptr, 1, 0, 0, 0};
        return;
    }
    MatHdr* h = hdrof(it);
    d->item = it;
    d->data = reinterpret_cast<double*>(static_cast<char*>(it) + sizeof(MatHdr));
    d->kind = tag;
    d->nnz = h->nnz;
    d->rows = h->rows;
    d->cols = h->cols;
}

void matset(const char* name, MatDesc* d) {
    matsett(name, dynmattype, d);
}

double matel(const MatDesc* d, int i, int j) {
    switch (d->kind) {
    case 2: {
        int r = i > j ? i : j, c = i > j ? j : i;
        return d->data[static_cast<size_t>(r) * (r + 1) / 2 + c];
    }
    case 3: {
        const char* p = reinterpret_cast<const char*>(d->data);
        for (uint32_t k = 0; k < d->nnz; k++) {
            SparseEl e;
            std::memcpy(&e, p + k * sizeof(SparseEl), sizeof e);
            if (e.r > i || (e.r == i && e.c > j)) break;
            if (e.r == i && e.c == j) return e.v;
        }
        return 0.0;
    }
    default: return d->data[static_cast<size_t>(i) * d->cols + j];
    }
}

void matstel(MatDesc* d, int i, int j, double v) {
    if (d->kind == 1)
        d->data[static_cast<size_t>(i) * d->cols + j] = v;
    else if (d->kind == 2) {
        int r = i > j ? i : j, c = i > j ? j : i;
        d->data[static_cast<size_t>(r) * (r + 1) / 2 + c] = v;
    }
    // kind 3 is read-only
}

static size_t kindsize(int kind, int rows, int cols, uint32_t nnz) {
    if (kind == 2) return static_cast<size_t>(cols) * (cols + 1) / 2 * sizeof(double);
    if (kind == 3) return static_cast<size_t>(nnz) * sizeof(SparseEl);
    return static_cast<size_t>(rows) * cols * sizeof(double);
}

static void* declare(const char* name, int type, int kind, int rows, int cols, uint32_t nnz) {
    int tag = 0;
    void* it = dmfind(name, type, &tag);
    if (it) {
        MatHdr* h = hdrof(it);
        if (tag == kind && h->rows == rows && h->cols == cols && h->nnz == nnz) return it;
        dmrm(it);
    }
    it = dmadd(name, type, kind, sizeof(MatHdr) + kindsize(kind, rows, cols, nnz));
    if (!it) return nullptr;
    MatHdr* h = hdrof(it);
    h->nnz = kind == 3 ? nnz : 0;
    h->rows = static_cast<int16_t>(rows);
    h->cols = static_cast<int16_t>(cols);
    return it;
}

int matdcl(MatDesc* d, const char* name, int kind, int rows, int cols) {
    if (kind == 3) kind = 1;
    if (!declare(name, dynmattype, kind, rows, cols, 0)) return 950;
    matset(name, d);
    return 0;
}

void* matstors(const char* name, int kind, const double* buf, int stride, int r0, int r1, int c0,
               int c1) {
    int rows = r1 - r0 + 1, cols = c1 - c0 + 1;
    auto at = [&](int i, int j) { return buf[static_cast<size_t>(r0 + i) * stride + c0 + j]; };
    if (kind == 3) {
        uint32_t nnz = 0;
        for (int i = 0; i < rows; i++)
            for (int j = 0; j < cols; j++)
                if (at(i, j) != 0.0) nnz++;
        if (static_cast<size_t>(nnz) * sizeof(SparseEl) <
                static_cast<size_t>(rows) * cols * sizeof(double) &&
            rows <= 65535 && cols <= 65535) {
            void* it = declare(name, dynmattype, 3, rows, cols, nnz);
            if (!it) return nullptr;
            char* p = static_cast<char*>(it) + sizeof(MatHdr);
            uint32_t k = 0;
            for (int i = 0; i < rows; i++)
                for (int j = 0; j < cols; j++)
                    if (double v = at(i, j); v != 0.0) {
                        SparseEl e{v, static_cast<uint16_t>(i), static_cast<uint16_t>(j)};
                        std::memcpy(p + (k++) * sizeof(SparseEl), &e, sizeof e);
                    }
            return it;
        }
        kind = 1;
    }
    if (kind == 2 && rows != cols) kind = 1;
    void* it = declare(name, dynmattype, kind, rows, cols, 0);
    if (!it) return nullptr;
    double* out = reinterpret_cast<double*>(static_cast<char*>(it) + sizeof(MatHdr));
    if (kind == 2) {
        size_t k = 0;
        for (int i = 0; i < rows; i++)
            for (int j = 0; j <= i; j++) out[k++] = at(i, j);
    } else {
        for (int i = 0; i < rows; i++)
            for (int j = 0; j < cols; j++) out[static_cast<size_t>(i) * cols + j] = at(i, j);
    }
    return it;
}

void* matstor(const char* name, int kind, const double* buf, int r0, int r1, int c0, int c1) {
    return matstors(name, kind, buf, matsize, r0, r1, c0, c1);
}

void* symatstor(const char* name, const double* buf, int i0, int i1) {
    return matstors(name, 2, buf, matsize, i0, i1, i0, i1);
}

int matloads(const char* name, double* buf, int stride) {
    MatDesc d;
    matset(name, &d);
    if (!d.item) return 111;
    for (int i = 0; i < d.rows; i++)
        for (int j = 0; j < d.cols; j++) buf[static_cast<size_t>(i) * stride + j] = matel(&d, i, j);
    return 0;
}

int matload(const char* name, double* buf) {
    return matloads(name, buf, matsize);
}

static std::vector<double> workbuf[4];

double* matbuffer(int k) {
    size_t need = static_cast<size_t>(matsize) * matsize;
    if (k < 0 || k > 3) return nullptr;
    if (workbuf[k].size() != need) {
        try {
            std::vector<double>(need).swap(workbuf[k]);
        } catch (const std::bad_alloc&) {
            std::vector<double>().swap(workbuf[k]);
            return nullptr;
        }
    }
    return workbuf[k].data();
}

// ---- stripes -----------------------------------------------------------------

char* stripedcl(const char* name, int type, int n) {
    dmrm(dmfind0(name, type));
    char* s = static_cast<char*>(dmadd(name, type, n, static_cast<size_t>(n) * STRIPE_ENTRY));
    if (s) std::memset(s, 0, static_cast<size_t>(n) * STRIPE_ENTRY);
    return s;
}

static void putfield(char* dst, int width, const char* src) {
    std::memset(dst, 0, width);
    if (src) std::memcpy(dst, src, strnlen(src, width - 1));
}

void matputfullname(char* stripe, int k, const char* eq, const char* nm, const char* op) {
    char* e = stripe + static_cast<size_t>(k) * STRIPE_ENTRY;
    putfield(e, STRIPE_EQ, eq && std::strcmp(eq, "_") ? eq : "");
    putfield(e + STRIPE_EQ, STRIPE_NAME, nm);
    putfield(e + STRIPE_EQ + STRIPE_NAME, STRIPE_OP, op);
}

std::string matgetfullname(const char* stripe, int k, int witheq) {
    const char* e = stripe + static_cast<size_t>(k) * STRIPE_ENTRY;
    std::string out;
    if (witheq && e[0]) out.append(e, strnlen(e, STRIPE_EQ)).push_back(':');
    const char* op = e + STRIPE_EQ + STRIPE_NAME;
    if (op[0]) out.append(op, strnlen(op, STRIPE_OP)).push_back('.');
    out.append(e + STRIPE_EQ, strnlen(e + STRIPE_EQ, STRIPE_NAME));
    return out;
}

void consecstd(char* stripe, int n, char prefix) {
    char nm[16];
    for (int k = 0; k < n; k++) {
        snprintf(nm, sizeof nm, "%c%d", prefix, k + 1);
        matputfullname(stripe, k, "", nm, "");
    }
}

int matfullnameparse(const char* tok, char* eq, char* nm, char* op) {
    eq[0] = nm[0] = op[0] = 0;
    const char* colon = std::strchr(tok, ':');
    const char* rest = tok;
    if (colon) {
        size_t n = colon - tok;
        if (n >= STRIPE_EQ) return 198;
        std::memcpy(eq, tok, n);
        eq[n] = 0;
        if (!std::strcmp(eq, "_")) eq[0] = 0;
        rest = colon + 1;
        if (!*rest) return 1; // an equation alone
    }
    if (std::strchr(rest, ':')) return 198;
    const char* dot = std::strrchr(rest, '.');
    if (dot) {
        size_t n = dot - rest;
        if (n >= STRIPE_OP) return 198;
        std::memcpy(op, rest, n);
        op[n] = 0;
        rest = dot + 1;
    }
    if (!*rest || std::strlen(rest) >= STRIPE_NAME) return 198;
    std::memcpy(nm, rest, std::strlen(rest) + 1);
    return 0;
}

// ---- user matrices -----------------------------------------------------------

void killusermat(const char* name) {
    dmrm(dmfind0(name, DM_MATRIX));
    dmrm(dmfind0(name, DM_MATROW));
    dmrm(dmfind0(name, DM_MATCOL));
    dmrm(dmfind0(name, DM_SCALAR));
}

int makeusermat(MatDesc* d, const char* name, int kind, int rows, int cols) {
    killusermat(name);
    int save = dynmattype;
    dynmattype = DM_MATRIX;
    int rc = matdcl(d, name, kind, rows, cols);
    dynmattype = save;
    if (rc) return error(950);
    char* rs = stripedcl(name, DM_MATROW, rows);
    char* cs = stripedcl(name, DM_MATCOL, cols);
    if ((!rs && rows) || (!cs && cols)) {
        killusermat(name);
        return error(950);
    }
    if (rs) consecstd(rs, rows, 'r');
    if (cs) consecstd(cs, cols, 'c');
    matsett(name, DM_MATRIX, d);
    return 0;
}

int matnotfound_m(const char* name) {
    return errorf(111, "matrix %s not found\n", name);
}

int umatmustset(const char* name, int type, MatDesc* d) {
    matsett(name, type, d);
    if (!d->item) return matnotfound_m(name);
    return 0;
}

int umatnotmiss(const MatDesc* d, int whole, const char* label) {
    bool lower = d->kind == 2 || whole;
    for (int i = 0; i < d->rows; i++)
        for (int j = 0; j < (lower ? i + 1 : d->cols) && j < d->cols; j++)
            if (matel(d, i, j) >= misval) {
                errorf(504, "%s: ", label);
                return error(504);
            }
    return 0;
}

// The symmetry test on a dense n x n matrix (row stride n).
bool issymdense(const double* a, int n) {
    for (int i = 0; i < n; i++)
        for (int j = 0; j < i; j++) {
            double x = a[static_cast<size_t>(i) * n + j], y = a[static_cast<size_t>(j) * n + i];
            if (x == y) continue;
            if (x >= misval || y >= misval) return false;
            double di = a[static_cast<size_t>(i) * n + i], dj = a[static_cast<size_t>(j) * n + j];
            di = di >= misval ? 1.0 : std::fabs(di);
            dj = dj >= misval ? 1.0 : std::fabs(dj);
            double diff = x - y;
            if (diff * diff <= 1e-16 * di * dj) continue;
            if ((di == 0 || dj == 0) && std::fabs(diff) <= 1e-8 * std::fabs(x) + 1e-8) continue;
            return false;
        }
    return true;
}

int issymmatrix(const char* name, int type) {
    MatDesc d;
    matsett(name, type, &d);
    if (!d.item || d.rows != d.cols) return 0;
    if (d.kind == 2) return 1;
    std::vector<double> a(static_cast<size_t>(d.rows) * d.cols);
    for (int i = 0; i < d.rows; i++)
        for (int j = 0; j < d.cols; j++) a[static_cast<size_t>(i) * d.cols + j] = matel(&d, i, j);
    return issymdense(a.data(), d.rows);
}

void fix1x1sym(const char* name, int type) {
    int tag = 0;
    void* it = dmfind(name, type, &tag);
    if (!it || tag != 1) return;
    MatHdr* h = hdrof(it);
    if (h->rows == 1 && h->cols == 1) dmsettag(it, 2);
}

// ---- scalars ----------------------------------------------------------------

// A scalar item holds a double (tag 0) or a text with its NUL (tag 1).
int scalarset(const char* name, double v) {
    dmrm(dmfind0(name, DM_MATRIX));
    dmrm(dmfind0(name, DM_MATROW));
    dmrm(dmfind0(name, DM_MATCOL));
    dmrm(dmfind0(name, DM_SCALAR));
    void* it = dmreadd(name, DM_SCALAR, 0, sizeof(double));
    if (!it) return error(950);
    std::memcpy(it, &v, sizeof v);
    return 0;
}

int strscalarset(const char* name, const char* text) {
    dmrm(dmfind0(name, DM_MATRIX));
    dmrm(dmfind0(name, DM_MATROW));
    dmrm(dmfind0(name, DM_MATCOL));
    dmrm(dmfind0(name, DM_SCALAR));
    return dmsave(name, DM_SCALAR, 1, text, std::strlen(text) + 1) ? 0 : error(950);
}

int scalarfind(const char* name, double* v) {
    int tag = 0;
    void* it = dmfind(name, DM_SCALAR, &tag);
    if (!it || tag != 0 || dmsize(it) != sizeof(double)) return 0;
    std::memcpy(v, it, sizeof *v);
    return 1;
}

const char* strscalarfind(const char* name) {
    int tag = 0;
    void* it = dmfind(name, DM_SCALAR, &tag);
    return it && tag == 1 ? static_cast<const char*>(it) : nullptr;
}

} // namespace korvu
