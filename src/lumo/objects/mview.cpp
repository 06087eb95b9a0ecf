// Reading and writing views through the data area.
#include "lumo/objects/mview.h"

#include <cstring>
#include <string>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"

namespace korvu {

int32_t m_nviews = 0;

int m_mkview(MObj* o, int eltype, int kind, int rows, int cols) {
    if (m_remkmat(o, MT_REAL, 0, 0, 0)) return 3900;
    const int64_t words =
        kind == 1 ? static_cast<int64_t>(cols) + 1 : static_cast<int64_t>(rows) + cols;
    if (mo_resize(o, static_cast<size_t>(words * 4))) return 3900;
    memset(o->data, 0, static_cast<size_t>(words * 4));
    o->eltype = static_cast<int16_t>(eltype);
    o->view = static_cast<uint8_t>(kind);
    o->rows = rows;
    o->cols = cols;
    o->isvoid = 0;
    m_nviews++;
    return 0;
}

bool v_valid(const MObj* o) {
    for (int64_t j = 0; j < o->cols; j++) {
        const int v = v_var(o, j);
        if (v < 1 || v > nvar) return false;
        if ((o->eltype == MT_STRING) != (typlist[v - 1] <= 244)) return false;
    }
    for (int64_t i = 0; i < o->rows; i++) {
        const int k = v_obs(o, i);
        if (k < 1 || k > nobs) return false;
    }
    return true;
}

double v_el(const MObj* o, int64_t i, int64_t j) {
    const int v = v_var(o, j), k = v_obs(o, i);
    if (v < 1 || v > nvar || k < 1 || k > nobs || typlist[v - 1] <= 244) return misval;
    return korvu_data(v, k);
}

SCell* v_sel(const MObj* o, int64_t i, int64_t j) {
    const int v = v_var(o, j), k = v_obs(o, i);
    if (v < 1 || v > nvar || k < 1 || k > nobs || typlist[v - 1] > 244) return sel_empty();
    std::string buf(static_cast<size_t>(typlist[v - 1]) + 1, '\0');
    skorvu_data(v, k, buf.data());
    return sel_make(buf.c_str(), strlen(buf.c_str()));
}

void v_store(const MObj* o, int64_t i, int64_t j, double x) {
    const int v = v_var(o, j), k = v_obs(o, i);
    if (v < 1 || v > nvar || k < 1 || k > nobs || typlist[v - 1] <= 244) return;
    store(v, k, x);
    updata = 1;
}

void v_sstore(const MObj* o, int64_t i, int64_t j, const SCell* s) {
    const int v = v_var(o, j), k = v_obs(o, i);
    if (v < 1 || v > nvar || k < 1 || k > nobs || typlist[v - 1] > 244) return;
    sstore(v, k, s->s);
    updata = 1;
}

void v_readall(MObj* t, const MObj* o) {
    const int64_t R = o->rows, C = o->cols;
    if (o->eltype == MT_STRING) {
        SCell** q = m_sel(t);
        for (int64_t i = 0; i < R; i++)
            for (int64_t j = 0; j < C; j++) {
                SCell*& cell = q[i * C + j];
                selfree(cell);
                cell = v_sel(o, i, j);
            }
        return;
    }
    double* q = m_rel(t);
    if (o->view == 1 && v_valid(o)) {
        // a run of observations: one column at a time
        const int64_t first = v_obs(o, 0);
        for (int64_t j = 0; j < C; j++) {
            int type = 0;
            const auto* base = static_cast<const uint8_t*>(colbase(v_var(o, j), &type));
            const int w = bytlenc(type);
            const uint8_t* p = base + (first - 1) * w;
            for (int64_t i = 0; i < R; i++, p += w) q[i * C + j] = decode_cell(p, type);
        }
        return;
    }
    for (int64_t i = 0; i < R; i++)
        for (int64_t j = 0; j < C; j++) q[i * C + j] = v_el(o, i, j);
}

MObj* m_unview(const MObj* o) {
    MObj* t = m_mkmat("", o->eltype, o->rows, o->cols);
    if (!t) return nullptr;
    v_readall(t, o);
    return t;
}

} // namespace korvu
