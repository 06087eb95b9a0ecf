// Dataset built-ins, continued: kv_select (the rows or columns of a matrix
// or view where a marker is not zero, keeping a view a view), kv_vlmodify
// (editing the mappings of a value label), kv_tsrevar and _kv_tsrevar
// (time-series operated variables as temporary variables).
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/labels/label.h"
#include "data/vars/vartab.h"
#include "kernel/macro/macro.h"
#include "lumo/builtins/bimore.h"
#include "results/stores.h"

namespace korvu {

namespace {

// The variable of an exact name; 0 when absent.
int exactvar(const std::string& nm) {
    for (int v = 1; v <= nvar; v++)
        if (nm == varname(v)) return v;
    return 0;
}

} // namespace

// kv_select(A, X, v): A becomes the rows of X where v (a column of rows(X)
// elements) is not zero, or the columns where v is a row of cols(X). When X
// is a view on the dataset, A is a view of the same variables on the kept
// observations (or of the kept variables), so that writes to A reach the
// dataset; otherwise A is a copy.
static void bi_kv_select(int n) {
    MObj* A = bi_any(n, 0);
    MObj* X = bi_any(n, 1);
    MObj* v = bi_mat(n, 2);
    if (!A || !X || !v || !bi_real(v)) return;
    X = bi_arg(n, 1);
    const bool byrow = v->cols == 1 && !(v->rows == 1 && X->rows == 1 && X->cols != 1);
    const int64_t len = byrow ? X->rows : X->cols;
    if (m_nel(v) != len) return m_xeqerr(3200);
    std::vector<int> keep;
    for (int64_t k = 0; k < len; k++)
        if (m_rel(v)[k] != 0) keep.push_back(static_cast<int>(k));
    if (X->view) {
        if (!v_valid(X)) return m_xeqerr(3900);
        std::vector<int> obs, vars;
        if (byrow) {
            for (int i : keep) obs.push_back(v_obs(X, i));
            for (int j = 0; j < X->cols; j++) vars.push_back(v_var(X, j));
        } else {
            for (int i = 0; i < X->rows; i++) obs.push_back(v_obs(X, i));
            for (int j : keep) vars.push_back(v_var(X, j));
        }
        bool run = true;
        for (size_t i = 1; i < obs.size() && run; i++) run = obs[i] == obs[i - 1] + 1;
        return bi_mkview(n, A, obs, run, vars, X->eltype == MT_STRING);
    }
    if (X->eltype != MT_REAL && X->eltype != MT_STRING && X->eltype != MT_COMPLEX)
        return m_xeqerr(3255);
    const int64_t R = byrow ? static_cast<int64_t>(keep.size()) : X->rows;
    const int64_t C = byrow ? X->cols : static_cast<int64_t>(keep.size());
    MObj* o = bi_new(X->eltype, R, C);
    if (!o) return;
    const int w = X->eltype == MT_COMPLEX ? 2 : 1;
    for (int64_t i = 0; i < R; i++)
        for (int64_t j = 0; j < C; j++) {
            const int64_t si = byrow ? keep[i] : i, sj = byrow ? j : keep[j];
            const int64_t p = si * X->cols + sj, q = i * C + j;
            if (X->eltype == MT_STRING) {
                sel_hold(m_sel(X)[p]);
                m_sel(o)[q] = m_sel(X)[p];
            } else {
                for (int c = 0; c < w; c++) m_rel(o)[w * q + c] = m_rel(X)[w * p + c];
            }
        }
    if (int rc = cpymat(A, o, false)) {
        mo_freemat(o);
        return m_xeqerr(rc);
    }
    mo_freemat(o);
    bi_voidres(n);
}

// kv_vlmodify(name, values, texts): sets the texts of the values in the
// value label, creating the label when it does not exist; an empty text
// removes the value's mapping. values and texts have the same number of
// elements; a value must be an integer or .a to .z (3300 otherwise).
// Returns the number of mappings the label holds afterwards (a label left
// empty still exists).
static void bi_kv_vlmodify(int n) {
    std::string name;
    MObj* x = bi_mat(n, 1);
    MObj* t = x ? bi_mat(n, 2) : nullptr;
    if (!t || !bi_getstr(n, 0, &name)) return;
    x = bi_arg(n, 1);
    t = bi_arg(n, 2);
    if (!bi_real(x) || !bi_string(t)) return;
    if (m_nel(x) != m_nel(t)) return m_xeqerr(3200);
    if (name.empty() || name.size() > 32 ||
        !(isalpha(static_cast<unsigned char>(name[0])) || name[0] == '_'))
        return m_custom_xeqerr(3300, "%s invalid name", name.c_str());
    for (char c : name)
        if (!(isalnum(static_cast<unsigned char>(c)) || c == '_'))
            return m_custom_xeqerr(3300, "%s invalid name", name.c_str());
    for (int64_t i = 0; i < m_nel(x); i++) {
        const double v = m_rel(x)[i];
        if (vlable(0, v))
            return m_custom_xeqerr(3300, "may not label %s", v == misval ? "." : "noninteger");
        if (m_sel(t)[i]->len > VL_MAXTEXT) return m_xeqerr(3300);
    }
    int32_t* tbl = vlfind(name.c_str());
    if (!tbl && !(tbl = vlallocate(name.c_str(), 0, 0))) return m_xeqerr(3900);
    for (int64_t i = 0; i < m_nel(x); i++) {
        const double v = m_rel(x)[i];
        const SCell* c = m_sel(t)[i];
        const std::string text(c->s, static_cast<size_t>(c->len));
        int at = vlfindval(tbl, nullptr, 0, v);
        if (at >= 0) {
            if (!(tbl = vlrmlab(tbl, at))) return m_xeqerr(3900);
            at = vlfindval(tbl, nullptr, 0, v);
        }
        if (text.empty()) continue;
        if (!(tbl = vladdlab(tbl, ~at, text.c_str(), v))) return m_xeqerr(3900);
    }
    updata = 1;
    bi_realres(n, vl_n(tbl));
}

// kv_tsrevar(names[, list]): for each name of the string row (names and
// operated names such as L.x or D2.y, separated by blanks), the number of a
// variable holding its values: the variable itself, or a temporary variable
// made (or found again) for an operated name. With list non-zero nothing is
// made and the underlying variables are given, each once. A name that
// cannot be resolved aborts with 3598 after the message of the command
// side; _kv_tsrevar gives missing instead (and prints nothing). r() is left
// as it was.
static void tsrevar(int n, bool status) {
    MObj* s = bi_mat(n, 0);
    if (!s || !bi_string(s)) return;
    double list = 0;
    if (n == 2 && !bi_getreal(n, 1, &list)) return;
    s = bi_arg(n, 0);
    std::vector<std::string> names;
    for (int64_t i = 0; i < m_nel(s); i++)
        for (const std::string& w : bi_words(std::string(m_sel(s)[i]->s, m_sel(s)[i]->len)))
            names.push_back(w);
    const bool aslist = list != 0 && list < misval;
    const std::string hold = "__kvtsrevar_r";
    const bool held = bi_runline("_return hold " + hold, true) == 0;
    std::string cmd = "tsrevar";
    for (const std::string& w : names) cmd += " " + w;
    if (aslist) cmd += ", list";
    int rc =
        names.empty() ? 0 : (status ? bi_runline("capture " + cmd, true) : bi_runline(cmd, true));
    std::string out;
    if (!rc && !names.empty()) {
        if (retval_find("varlist") == RF_MACRO)
            out = retval_get_strptr();
        else
            rc = 198;
        if (status) {
            // capture hides the code: the result tells
            std::vector<std::string> got = bi_words(out);
            if (got.size() != names.size() && !aslist) rc = 198;
        }
    }
    if (held) bi_runline("_return restore " + hold, true);
    std::vector<std::string> got = bi_words(out);
    if (!status && rc) return m_xeqerr(3598);
    if (status && (rc || (!aslist && got.size() != names.size()))) {
        // one by one, so that each name gets its own answer
        MObj* r = bi_new(MT_REAL, 1, static_cast<int64_t>(names.size()));
        if (!r) return;
        for (size_t k = 0; k < names.size(); k++) {
            const bool h = bi_runline("_return hold " + hold, true) == 0;
            std::string one = "capture tsrevar " + names[k] + (aslist ? ", list" : "");
            double v = misval;
            if (bi_runline(one, true) == 0 && retval_find("varlist") == RF_MACRO) {
                std::vector<std::string> g = bi_words(retval_get_strptr());
                if (g.size() == 1 && exactvar(g[0])) v = exactvar(g[0]);
            }
            if (h) bi_runline("_return restore " + hold, true);
            m_rel(r)[k] = v;
        }
        return void(bi_result(n, r));
    }
    MObj* r = bi_new(MT_REAL, 1, static_cast<int64_t>(got.size()));
    if (!r) return;
    for (size_t k = 0; k < got.size(); k++) {
        const int v = exactvar(got[k]);
        m_rel(r)[k] = v ? v : misval;
    }
    bi_result(n, r);
}
static void bi_kv_tsrevar(int n) {
    tsrevar(n, false);
}
static void bi_ukv_tsrevar(int n) {
    tsrevar(n, true);
}

void bi_link_dsmore(MBiFn* t) {
    t[bi_index("kv_select")] = bi_kv_select;
    t[bi_index("kv_vlmodify")] = bi_kv_vlmodify;
    t[bi_index("kv_tsrevar")] = bi_kv_tsrevar;
    t[bi_index("_kv_tsrevar")] = bi_ukv_tsrevar;
}

} // namespace korvu
