// Subscripts: reads x[i], x[i,j] and x[|m|], and the stores into a slot or
// into the object an expression yields. A subscript is a list of positions,
// a missing value meaning all of them; ranges come from .. and ::.
#include <cstring>
#include <vector>

#include "data/area/missing.h"
#include "lumo/objects/mview.h"
#include "lumo/vm/vmops.h"
#include "lumo/vm/xeqops.h"

namespace korvu {

// Positions along one dimension of extent n, 0-based. `all`: every one.
struct Idx {
    bool all;
    int64_t n;   // number of positions
    int64_t one; // the position when there is one
    const double* list;
    int64_t extent;
    int64_t at(int64_t k) const {
        if (all) return k;
        if (!list) return one;
        return static_cast<int64_t>(list[k]) - 1;
    }
};

// Reads a subscript; false with the code set.
static bool getidx(const MObj* s, int64_t extent, Idx* ix) {
    if (s->fcn) {
        m_xeqerr(3102);
        return false;
    }
    if (s->eltype != MT_REAL) {
        m_xeqerr(3253);
        return false;
    }
    ix->extent = extent;
    ix->all = false;
    ix->list = nullptr;
    const int64_t n = m_nel(s);
    const double* x = m_rel(s);
    if (n == 1 && x[0] >= misval) {
        ix->all = true;
        ix->n = extent;
        return true;
    }
    if (s->rows != 1 && s->cols != 1 && n > 0) {
        m_xeqerr(3301);
        return false;
    }
    for (int64_t k = 0; k < n; k++) {
        const double v = x[k];
        if (!(v >= 1 && v <= static_cast<double>(extent)) ||
            v != static_cast<double>(static_cast<int64_t>(v))) {
            m_xeqerr(3301);
            return false;
        }
    }
    ix->n = n;
    if (n == 1)
        ix->one = static_cast<int64_t>(x[0]) - 1;
    else
        ix->list = x;
    return true;
}

static void hold1(const MObj* o, uint64_t w) {
    if (!w) return;
    if (o->eltype == MT_STRING)
        sel_hold(reinterpret_cast<SCell*>(w));
    else if (o->eltype == MT_POINTER || o->eltype == MT_STRUCT)
        mo_hold(reinterpret_cast<MObj*>(w));
}
static void drop1(const MObj* o, uint64_t w) {
    if (!w) return;
    if (o->eltype == MT_STRING)
        selfree(reinterpret_cast<SCell*>(w));
    else if (o->eltype == MT_POINTER || o->eltype == MT_STRUCT)
        mo_release(reinterpret_cast<MObj*>(w));
}

static bool readable(const MObj* x) {
    if (x->fcn) {
        m_xeqerr(3102);
        return false;
    }
    return true;
}

// x[rows, cols] into a new object.
static MObj* gather(const MObj* x, const Idx& r, const Idx& c) {
    if (x->view) {
        if (x->eltype == MT_REAL && r.n == 1 && c.n == 1)
            return m_mktsmatsto(v_el(x, r.at(0), c.at(0)));
        MObj* o = m_mkmat("", x->eltype, static_cast<int>(r.n), static_cast<int>(c.n));
        if (!o) return nullptr;
        for (int64_t i = 0; i < r.n; i++)
            for (int64_t j = 0; j < c.n; j++) {
                if (x->eltype == MT_STRING)
                    m_sel(o)[i * c.n + j] = v_sel(x, r.at(i), c.at(j));
                else
                    m_rel(o)[i * c.n + j] = v_el(x, r.at(i), c.at(j));
            }
        return o;
    }
    if (x->eltype == MT_REAL && r.n == 1 && c.n == 1)
        return m_mktsmatsto(m_rel(x)[r.at(0) * x->cols + c.at(0)]);
    MObj* o = m_mkmat("", x->eltype, static_cast<int>(r.n), static_cast<int>(c.n));
    if (!o) return nullptr;
    const uint64_t* p = static_cast<const uint64_t*>(x->data);
    uint64_t* q = static_cast<uint64_t*>(o->data);
    if (x->eltype == MT_COMPLEX) {
        // two words an element
        for (int64_t i = 0; i < r.n; i++)
            for (int64_t j = 0; j < c.n; j++) {
                const int64_t k = r.at(i) * x->cols + c.at(j);
                q[2 * (i * c.n + j)] = p[2 * k];
                q[2 * (i * c.n + j) + 1] = p[2 * k + 1];
            }
        return o;
    }
    for (int64_t i = 0; i < r.n; i++)
        for (int64_t j = 0; j < c.n; j++) {
            const uint64_t w = p[r.at(i) * x->cols + c.at(j)];
            q[i * c.n + j] = w;
            hold1(o, w);
        }
    return o;
}

void mx_oplsubscr() {
    MObj* x = m_stak[-2];
    if (!readable(x)) return;
    Idx r, c;
    if (!getidx(m_stak[-1], x->rows, &r) || !getidx(m_stak[0], x->cols, &c)) return;
    MObj* o = gather(x, r, c);
    if (!o) return m_xeqerr(3900);
    o->count++;
    m_pop();
    m_pop();
    m_pop();
    *++m_stak = o;
}

// One subscript: along the vector's length.
void mx_oplsubscr1() {
    MObj* x = m_stak[-1];
    if (!readable(x)) return;
    if (x->rows != 1 && x->cols != 1) {
        return m_custom_xeqerr(3201, "%s[%d,%d] found where vector required", m_eltname(x), x->rows,
                               x->cols);
    }
    const bool isrow = x->rows == 1;
    Idx k, one{false, 1, 0, nullptr, 1};
    if (!getidx(m_stak[0], isrow ? x->cols : x->rows, &k)) return;
    MObj* o = isrow ? gather(x, one, k) : gather(x, k, one);
    if (!o) return m_xeqerr(3900);
    o->count++;
    m_pop();
    m_pop();
    *++m_stak = o;
}

// x[|m|]: m is (i, j) for one element or (i, j \ k, l) for a block, missing
// meaning the first or last row or column.
static bool rangeidx(const MObj* x, const MObj* m, Idx* r, Idx* c) {
    if (m->fcn) {
        m_xeqerr(3102);
        return false;
    }
    if (m->eltype != MT_REAL) {
        m_xeqerr(3253);
        return false;
    }
    if (m->cols != 2 || (m->rows != 1 && m->rows != 2)) {
        m_xeqerr(3200);
        return false;
    }
    const double* v = m_rel(m);
    auto pos = [](double d, int64_t dflt, int64_t ext, int64_t* out) {
        if (d >= misval) {
            *out = dflt;
            return true;
        }
        if (!(d >= 1 && d <= static_cast<double>(ext)) ||
            d != static_cast<double>(static_cast<int64_t>(d)))
            return false;
        *out = static_cast<int64_t>(d) - 1;
        return true;
    };
    int64_t r0, c0, r1, c1;
    const bool blk = m->rows == 2;
    if (!pos(v[0], 0, x->rows, &r0) || !pos(v[1], 0, x->cols, &c0) ||
        !pos(blk ? v[2] : v[0], x->rows - 1, x->rows, &r1) ||
        !pos(blk ? v[3] : v[1], x->cols - 1, x->cols, &c1) || r1 < r0 || c1 < c0) {
        m_xeqerr(3301);
        return false;
    }
    // a block is a run of positions: a list of one is its start
    static thread_local std::vector<double> rl, cl;
    rl.clear();
    cl.clear();
    for (int64_t i = r0; i <= r1; i++) rl.push_back(static_cast<double>(i + 1));
    for (int64_t j = c0; j <= c1; j++) cl.push_back(static_cast<double>(j + 1));
    *r = Idx{false, r1 - r0 + 1, r0, rl.size() > 1 ? rl.data() : nullptr, x->rows};
    *c = Idx{false, c1 - c0 + 1, c0, cl.size() > 1 ? cl.data() : nullptr, x->cols};
    return true;
}

void mx_oprsubscr() {
    MObj* x = m_stak[-1];
    if (!readable(x)) return;
    Idx r, c;
    if (!rangeidx(x, m_stak[0], &r, &c)) return;
    MObj* o = gather(x, r, c);
    if (!o) return m_xeqerr(3900);
    o->count++;
    m_pop();
    m_pop();
    *++m_stak = o;
}

// A source of many elements fits the subscripted place: as many elements in a
// vector, or the same rows and columns.
static bool conforms(const MObj* v, const Idx& r, const Idx& c, int64_t n, bool vector) {
    return vector ? (v->rows == 1 || v->cols == 1) && m_nel(v) == n
                  : v->rows == r.n && v->cols == c.n;
}

// A store into a view writes each element through to the dataset.
static bool viewscatter(MObj* t, const Idx& r, const Idx& c, MObj* v, bool vector) {
    if (t->eltype != v->eltype) {
        m_xeqerr(3250);
        return false;
    }
    const int64_t n = r.n * c.n;
    const bool one = m_nel(v) == 1;
    if (!one) {
        const bool ok = conforms(v, r, c, n, vector);
        if (!ok) {
            m_xeqerr(3200);
            return false;
        }
    }
    for (int64_t i = 0; i < r.n; i++)
        for (int64_t j = 0; j < c.n; j++) {
            const int64_t from = one ? 0 : i * c.n + j;
            if (t->eltype == MT_STRING)
                v_sstore(t, r.at(i), c.at(j), m_sel(v)[from]);
            else
                v_store(t, r.at(i), c.at(j), m_rel(v)[from]);
        }
    return true;
}

// Stores. The value v goes into t at the positions; v is 1 x 1 (into every
// position) or has the shape of the positions (for one subscript, as many
// elements). Returns false with the code set.
static bool scatter(MObj* t, const Idx& r, const Idx& c, MObj* v, bool vector) {
    if (t->fcn || v->fcn) {
        m_xeqerr(3102);
        return false;
    }
    MObj* plain = nullptr; // the values of a view stored elsewhere
    if (v->view) {
        plain = m_unview(v);
        if (!plain) {
            m_xeqerr(3900);
            return false;
        }
        v = plain;
    }
    if (t->view) {
        const bool ok = viewscatter(t, r, c, v, vector);
        if (plain) mo_freemat(plain);
        return ok;
    }
    MObj* cxv = nullptr; // a real value stored into a complex matrix
    if (t->eltype == MT_COMPLEX && v->eltype == MT_REAL) {
        cxv = m_mkmat("", MT_COMPLEX, v->rows, v->cols);
        if (!cxv) {
            m_xeqerr(3900);
            return false;
        }
        for (int64_t k = 0; k < m_nel(v); k++) {
            const double x = m_rel(v)[k];
            m_rel(cxv)[2 * k] = x;
            m_rel(cxv)[2 * k + 1] = x >= misval ? misval : 0;
        }
        v = cxv;
    }
    if (t->eltype != v->eltype) {
        if (plain) mo_freemat(plain);
        m_xeqerr(3250);
        return false;
    }
    const int64_t n = r.n * c.n;
    const bool one = m_nel(v) == 1;
    if (!one) {
        const bool ok = conforms(v, r, c, n, vector);
        if (!ok) {
            if (cxv) mo_freemat(cxv);
            if (plain) mo_freemat(plain);
            m_xeqerr(3200);
            return false;
        }
    }
    MObj* dup = nullptr;
    if (v == t) {
        dup = m_dupmat(v);
        if (!dup) {
            m_xeqerr(3900);
            return false;
        }
        v = dup;
    }
    uint64_t* q = static_cast<uint64_t*>(t->data);
    const uint64_t* p = static_cast<const uint64_t*>(v->data);
    if (t->eltype == MT_COMPLEX) {
        for (int64_t i = 0; i < r.n; i++)
            for (int64_t j = 0; j < c.n; j++) {
                const int64_t k = r.at(i) * t->cols + c.at(j);
                const int64_t from = one ? 0 : i * c.n + j;
                q[2 * k] = p[2 * from];
                q[2 * k + 1] = p[2 * from + 1];
            }
    } else if (t->eltype == MT_REAL) {
        if (n == 1) {
            q[r.at(0) * t->cols + c.at(0)] = p[0];
        } else {
            for (int64_t i = 0; i < r.n; i++)
                for (int64_t j = 0; j < c.n; j++)
                    q[r.at(i) * t->cols + c.at(j)] = p[one ? 0 : i * c.n + j];
        }
    } else {
        for (int64_t i = 0; i < r.n; i++)
            for (int64_t j = 0; j < c.n; j++) {
                uint64_t& cell = q[r.at(i) * t->cols + c.at(j)];
                const uint64_t w = p[one ? 0 : i * c.n + j];
                hold1(t, w);
                drop1(t, cell);
                cell = w;
            }
    }
    if (dup) mo_freemat(dup);
    if (cxv) mo_freemat(cxv);
    if (plain) mo_freemat(plain);
    return true;
}

static bool store2(MObj* t, MObj* v, MObj* si, MObj* sj) {
    Idx r, c;
    if (t->fcn) {
        m_xeqerr(3102);
        return false;
    }
    return getidx(si, t->rows, &r) && getidx(sj, t->cols, &c) && scatter(t, r, c, v, false);
}

static bool store1(MObj* t, MObj* v, MObj* s) {
    if (t->fcn) {
        m_xeqerr(3102);
        return false;
    }
    if (t->rows != 1 && t->cols != 1) {
        m_custom_xeqerr(3201, "%s[%d,%d] found where vector required", m_eltname(t), t->rows,
                        t->cols);
        return false;
    }
    const bool isrow = t->rows == 1;
    Idx k, one{false, 1, 0, nullptr, 1};
    if (!getidx(s, isrow ? t->cols : t->rows, &k)) return false;
    return isrow ? scatter(t, one, k, v, true) : scatter(t, k, one, v, true);
}

static bool storer(MObj* t, MObj* v, MObj* m) {
    Idx r, c;
    if (t->fcn) {
        m_xeqerr(3102);
        return false;
    }
    return rangeidx(t, m, &r, &c) && scatter(t, r, c, v, false);
}

static void popn(int n) {
    for (int k = 0; k < n; k++) m_pop();
}

void mx_oplstosmat2() {
    if (store2(m_rt.frame[m_rt.pc[1]], m_stak[-2], m_stak[-1], m_stak[0])) {
        popn(2);
        m_rt.pc++;
    }
}
void mx_oplstosmat2p() {
    if (store2(m_rt.frame[m_rt.pc[1]], m_stak[-2], m_stak[-1], m_stak[0])) {
        popn(3);
        m_rt.pc++;
    }
}
void mx_oplstosmat1() {
    if (store1(m_rt.frame[m_rt.pc[1]], m_stak[-1], m_stak[0])) {
        popn(1);
        m_rt.pc++;
    }
}
void mx_oplstosmat1p() {
    if (store1(m_rt.frame[m_rt.pc[1]], m_stak[-1], m_stak[0])) {
        popn(2);
        m_rt.pc++;
    }
}
void mx_oprstosmat() {
    if (storer(m_rt.frame[m_rt.pc[1]], m_stak[-1], m_stak[0])) {
        popn(1);
        m_rt.pc++;
    }
}
void mx_oprstosmatp() {
    if (storer(m_rt.frame[m_rt.pc[1]], m_stak[-1], m_stak[0])) {
        popn(2);
        m_rt.pc++;
    }
}
// Into the object an expression yields: value, object, subscripts.
void mx_oplsstosmat1() {
    if (store1(m_stak[-1], m_stak[-2], m_stak[0])) popn(2);
}
void mx_oplsstosmat2() {
    if (store2(m_stak[-2], m_stak[-3], m_stak[-1], m_stak[0])) popn(3);
}
void mx_oprsstosmat() {
    if (storer(m_stak[-1], m_stak[-2], m_stak[0])) popn(2);
}

} // namespace korvu
