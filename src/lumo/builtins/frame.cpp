// The shared checks and result helpers of the built-in functions.
#include <cstring>

#include "lumo/builtins/bi.h"

namespace korvu {

MObj* bi_any(int n, int k) {
    MObj* o = bi_arg(n, k);
    if (o->fcn) {
        m_xeqerr(3102);
        return nullptr;
    }
    return o;
}

MObj* bi_mat(int n, int k) {
    MObj* o = bi_any(n, k);
    if (!o || !o->view) return o;
    MObj* t = m_unview(o);
    if (!t) {
        m_xeqerr(3900);
        return nullptr;
    }
    // every argument that is this view takes the one copy
    for (int j = 0; j < n; j++) {
        if (m_stak[j - n + 1] != o) continue;
        t->count++;
        m_stak[j - n + 1] = t;
        mo_release(o);
    }
    return t;
}

bool bi_real(const MObj* o) {
    if (o->eltype == MT_REAL) return true;
    m_xeqerr(3253);
    return false;
}
bool bi_string(const MObj* o) {
    if (o->eltype == MT_STRING) return true;
    m_xeqerr(3250);
    return false;
}
bool bi_numeric(const MObj* o) {
    if (o->eltype == MT_REAL || o->eltype == MT_COMPLEX) return true;
    m_xeqerr(3251);
    return false;
}
bool bi_scalar(const MObj* o) {
    if (o->rows == 1 && o->cols == 1) return true;
    m_custom_xeqerr(3204, "%s[%d,%d] found where scalar required", m_eltname(o), o->rows, o->cols);
    return false;
}
bool bi_square(const MObj* o) {
    if (o->rows == o->cols) return true;
    m_xeqerr(3205);
    return false;
}
bool bi_vector(const MObj* o) {
    if (o->rows == 1 || o->cols == 1) return true;
    m_custom_xeqerr(3201, "%s[%d,%d] found where vector required", m_eltname(o), o->rows, o->cols);
    return false;
}
bool bi_rowvec(const MObj* o) {
    if (o->rows == 1) return true;
    m_custom_xeqerr(3202, "%s[%d,%d] found where rowvector required", m_eltname(o), o->rows,
                    o->cols);
    return false;
}

bool bi_getreal(int n, int k, double* x) {
    MObj* o = bi_mat(n, k);
    if (!o || !bi_real(o) || !bi_scalar(o)) return false;
    *x = m_rel(o)[0];
    return true;
}

bool bi_getint(int n, int k, int64_t lo, int64_t hi, int64_t* x) {
    double d;
    if (!bi_getreal(n, k, &d)) return false;
    if (!(d >= static_cast<double>(lo) && d <= static_cast<double>(hi))) {
        m_xeqerr(3300);
        return false;
    }
    *x = static_cast<int64_t>(d);
    return true;
}

bool bi_getstr(int n, int k, std::string* s) {
    MObj* o = bi_mat(n, k);
    if (!o || !bi_string(o) || !bi_scalar(o)) return false;
    const SCell* c = m_sel(o)[0];
    s->assign(c->s, static_cast<size_t>(c->len));
    return true;
}

bool bi_result(int n, MObj* r) {
    if (!r) {
        m_xeqerr(3900);
        return false;
    }
    r->count++;
    for (int k = 0; k < n; k++) m_pop();
    *++m_stak = r;
    return true;
}

bool bi_realres(int n, double x) {
    return bi_result(n, m_mktsmatsto(x));
}

SCell* bi_cell(const std::string& s) {
    SCell* c = sel_make(s.data(), s.size());
    return c ? c : sel_empty();
}

bool bi_strres(int n, const std::string& s) {
    MObj* r = m_mkmat("", MT_STRING, 1, 1);
    if (r) m_sel(r)[0] = bi_cell(s);
    return bi_result(n, r);
}

bool bi_voidres(int n) {
    MObj* r = m_mkmat("", MT_REAL, 0, 0);
    if (r) r->isvoid = 1;
    return bi_result(n, r);
}

MObj* bi_new(int eltype, int64_t rows, int64_t cols) {
    if (rows < 0 || cols < 0 || rows > 2147483647 || cols > 2147483647) {
        m_xeqerr(3300);
        return nullptr;
    }
    MObj* r = m_mkmat("", eltype, static_cast<int>(rows), static_cast<int>(cols));
    if (!r) m_xeqerr(3900);
    return r;
}

} // namespace korvu

namespace korvu {

bool bi_cshape(const MObj* a, const MObj* b, int* R, int* C) {
    const int r = a->rows > b->rows ? a->rows : b->rows;
    const int c = a->cols > b->cols ? a->cols : b->cols;
    auto fits = [&](const MObj* o) {
        return (o->rows == r || o->rows == 1) && (o->cols == c || o->cols == 1);
    };
    if (!fits(a) || !fits(b)) {
        m_xeqerr(3200);
        return false;
    }
    *R = r;
    *C = c;
    return true;
}

bool bi_output(MObj* t, MObj* r) {
    if (!r) return false;
    if (t->view) {
        mo_freemat(r);
        m_xeqerr(3103);
        return false;
    }
    m_swapmat(t, r);
    mo_freemat(r);
    return true;
}

} // namespace korvu
