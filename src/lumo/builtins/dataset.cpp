// The bridge to the dataset: reading and writing cells, views, and the
// variable table.
//
// Observations: a real missing value (.) means all; a column vector lists
// observation numbers; a row vector (a, b) of two elements is the run a to
// b; a k x 2 matrix is k such runs. Variables: by number (a scalar, a row
// vector, missing for all) or by name, a string scalar holding names,
// abbreviations, a-b ranges and * ? wild cards, or a string row vector of
// them. The optional selection variable keeps the observations where it is
// not zero.
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/formats/formats.h"
#include "data/labels/label.h"
#include "data/vars/varcmds.h"
#include "data/vars/vartab.h"
#include "kernel/macro/macro.h"
#include "lumo/builtins/bi.h"

namespace korvu {

// The variable of a name, abbreviations allowed when abbrev; 0 when absent
// or ambiguous.
static int findname(const std::string& nm, bool abbrev) {
    if (nm.empty()) return 0;
    for (int v = 1; v <= nvar; v++)
        if (nm == varname(v)) return v;
    if (!abbrev) return 0;
    int hit = 0;
    for (int v = 1; v <= nvar; v++)
        if (!strncmp(varname(v), nm.c_str(), nm.size())) {
            if (hit) return 0;
            hit = v;
        }
    return hit;
}

std::vector<std::string> bi_words(const std::string& s) {
    std::vector<std::string> w;
    size_t i = 0;
    while (i < s.size()) {
        while (i < s.size() && (s[i] == ' ' || s[i] == '\t')) i++;
        size_t j = i;
        while (j < s.size() && s[j] != ' ' && s[j] != '\t') j++;
        if (j > i) w.push_back(s.substr(i, j - i));
        i = j;
    }
    return w;
}

// Resolves one word of a variable list; false with the message and 3500.
static bool varword(const std::string& w, std::vector<int>* out, bool report) {
    if (w.find_first_of("*?") != std::string::npos) {
        bool any = false;
        for (int v = 1; v <= nvar; v++)
            if (wildmatch(w.c_str(), varname(v))) {
                out->push_back(v);
                any = true;
            }
        if (any) return true;
    } else if (const size_t d = w.find('-'); d != std::string::npos && d > 0) {
        const int a = findname(w.substr(0, d), true), b = findname(w.substr(d + 1), true);
        if (a && b && a <= b) {
            for (int v = a; v <= b; v++) out->push_back(v);
            return true;
        }
    } else if (const int v = findname(w, true)) {
        out->push_back(v);
        return true;
    }
    if (report) m_custom_xeqerr(3500, "variable %s not found", w.c_str());
    return false;
}

// The variables of argument k; false with the code set.
static bool getvars(int n, int k, std::vector<int>* out) {
    MObj* a = bi_mat(n, k);
    if (!a) return false;
    out->clear();
    if (a->eltype == MT_STRING) {
        for (int64_t i = 0; i < m_nel(a); i++)
            for (const std::string& w : bi_words(m_sel(a)[i]->s))
                if (!varword(w, out, true)) return false;
        return true;
    }
    if (a->eltype != MT_REAL) {
        m_xeqerr(3255);
        return false;
    }
    if (m_nel(a) == 1 && m_rel(a)[0] >= misval) {
        for (int v = 1; v <= nvar; v++) out->push_back(v);
        return true;
    }
    if (a->rows != 1 && m_nel(a) > 0) {
        m_custom_xeqerr(3202, "%s[%d,%d] found where rowvector required", m_eltname(a), a->rows,
                        a->cols);
        return false;
    }
    for (int64_t i = 0; i < m_nel(a); i++) {
        const double x = m_rel(a)[i];
        if (!(x >= 1 && x <= nvar) || x != static_cast<int>(x)) {
            m_custom_xeqerr(3500, "invalid variable number %g", x < misval ? x : -1.0);
            return false;
        }
        out->push_back(static_cast<int>(x));
    }
    return true;
}

// The observations of argument k, filtered by the selection variable of
// argument sel (-1: none); false with the code set. *run is set when they
// form one ascending run.
static bool getobs(int n, int k, int sel, std::vector<int>* out, bool* run) {
    MObj* a = bi_mat(n, k);
    if (!a || !bi_real(a)) return false;
    out->clear();
    auto add = [&](double x) {
        if (!(x >= 1 && x <= nobs) || x != static_cast<int>(x)) {
            m_xeqerr(3301);
            return false;
        }
        out->push_back(static_cast<int>(x));
        return true;
    };
    const double* x = m_rel(a);
    if (m_nel(a) == 1 && x[0] >= misval) {
        out->resize(static_cast<size_t>(nobs));
        for (int i = 0; i < nobs; i++) (*out)[i] = i + 1;
    } else if (a->cols == 2 && !(a->rows == 2 && false)) {
        for (int r = 0; r < a->rows; r++) {
            const double lo = x[2 * r], hi = x[2 * r + 1];
            if (!add(lo) || !add(hi)) return false;
            out->pop_back();
            out->pop_back();
            for (int i = static_cast<int>(lo); i <= static_cast<int>(hi); i++) out->push_back(i);
        }
    } else if (a->cols == 1 || a->rows == 1) {
        for (int64_t i = 0; i < m_nel(a); i++)
            if (!add(x[i])) return false;
    } else {
        m_xeqerr(3200);
        return false;
    }
    if (sel >= 0) {
        MObj* s = bi_mat(n, sel);
        if (!s) return false;
        int v = 0;
        if (s->eltype == MT_STRING) {
            if (!bi_scalar(s)) return false;
            const std::string nm = m_sel(s)[0]->s;
            if (!nm.empty()) {
                std::vector<int> vs;
                if (!varword(nm, &vs, true)) return false;
                v = vs[0];
            }
        } else if (s->eltype == MT_REAL) {
            if (!bi_scalar(s)) return false;
            const double d = m_rel(s)[0];
            if (d < misval) {
                if (!(d >= 1 && d <= nvar)) {
                    m_xeqerr(3300);
                    return false;
                }
                v = static_cast<int>(d);
            }
        } else {
            m_xeqerr(3255);
            return false;
        }
        if (v) {
            if (typlist[v - 1] <= 244) {
                m_xeqerr(3250);
                return false;
            }
            std::vector<int> kept;
            kept.reserve(out->size());
            for (int i : *out)
                if (korvu_data(v, i) != 0) kept.push_back(i);
            out->swap(kept);
        }
    }
    *run = true;
    for (size_t i = 1; i < out->size() && *run; i++) *run = (*out)[i] == (*out)[i - 1] + 1;
    return true;
}

static bool allof(const std::vector<int>& vars, bool str) {
    for (int v : vars)
        if ((typlist[v - 1] <= 244) != str) return false;
    return true;
}

// kv_data(i, j[, sel]), kv_sdata: a new matrix of the cells.
static void getdata(int n, bool str, bool status) {
    std::vector<int> obs, vars;
    bool run;
    if (!getvars(n, 1, &vars) || !getobs(n, 0, n == 3 ? 2 : -1, &obs, &run)) return;
    if (!allof(vars, str)) {
        if (status) return void(bi_realres(n, str ? 3253 : 3250));
        return m_custom_xeqerr(str ? 3253 : 3250, "%s variable found where %s variable required",
                               str ? "numeric" : "string", str ? "string" : "numeric");
    }
    MObj* o = bi_new(str ? MT_STRING : MT_REAL, static_cast<int64_t>(obs.size()),
                     static_cast<int64_t>(vars.size()));
    if (!o) return;
    const int64_t C = static_cast<int64_t>(vars.size());
    std::string buf;
    for (size_t i = 0; i < obs.size(); i++)
        for (int64_t j = 0; j < C; j++) {
            const int v = vars[j];
            if (str) {
                buf.assign(static_cast<size_t>(typlist[v - 1]) + 1, '\0');
                skorvu_data(v, obs[i], buf.data());
                m_sel(o)[static_cast<int64_t>(i) * C + j] = bi_cell(buf.c_str());
            } else {
                m_rel(o)[static_cast<int64_t>(i) * C + j] = korvu_data(v, obs[i]);
            }
        }
    bi_result(n, o);
}
static void bi_kv_data(int n) {
    getdata(n, false, false);
}
static void bi_ukv_data(int n) {
    getdata(n, false, true);
}
static void bi_kv_sdata(int n) {
    getdata(n, true, false);
}
static void bi_ukv_sdata(int n) {
    getdata(n, true, true);
}

// kv_store(i, j[, sel], X), kv_sstore: X (or a scalar) into the cells. Every
// check comes before the first cell is written.
static void putdata(int n, bool str, bool status) {
    const int xk = n - 1;
    MObj* x = bi_mat(n, xk);
    if (!x) return;
    auto fail = [&](int code, const char* text) {
        if (status) return void(bi_realres(n, code));
        if (text)
            m_custom_xeqerr(code, "%s", text);
        else
            m_xeqerr(code);
    };
    if (str ? x->eltype != MT_STRING : x->eltype != MT_REAL)
        return fail(str ? 3250 : 3253, nullptr);
    std::vector<int> obs, vars;
    bool run;
    if (!getvars(n, 1, &vars) || !getobs(n, 0, n == 4 ? 2 : -1, &obs, &run)) return;
    if (!allof(vars, str))
        return fail(3250, str ? "numeric variable found where string variable required"
                              : "string variable found where numeric variable required");
    x = bi_arg(n, xk);
    const int64_t R = static_cast<int64_t>(obs.size()), C = static_cast<int64_t>(vars.size());
    const bool one = m_nel(x) == 1;
    if (!one && !(x->rows == R && x->cols == C)) return fail(3200, nullptr);
    for (int64_t i = 0; i < R; i++)
        for (int64_t j = 0; j < C; j++) {
            const int64_t k = one ? 0 : i * C + j;
            if (str)
                sstore(vars[j], obs[i], m_sel(x)[k]->s);
            else
                store(vars[j], obs[i], m_rel(x)[k]);
        }
    if (R && C) updata = 1;
    if (status) return void(bi_realres(n, 0));
    bi_voidres(n);
}
static void bi_kv_store(int n) {
    putdata(n, false, false);
}
static void bi_ukv_store(int n) {
    putdata(n, false, true);
}
static void bi_kv_sstore(int n) {
    putdata(n, true, false);
}
static void bi_ukv_sstore(int n) {
    putdata(n, true, true);
}

void bi_mkview(int n, MObj* V, const std::vector<int>& obs, bool run, const std::vector<int>& vars,
               bool str) {
    const int R = static_cast<int>(obs.size()), C = static_cast<int>(vars.size());
    const int kind = run && R > 0 ? 1 : 2;
    if (int rc = m_mkview(V, str ? MT_STRING : MT_REAL, kind, R, C)) return m_xeqerr(rc);
    auto* w = static_cast<int32_t*>(V->data);
    if (kind == 1) {
        for (int j = 0; j < C; j++) w[j] = vars[j];
        w[C] = obs[0];
    } else {
        for (int i = 0; i < R; i++) w[i] = obs[i];
        for (int j = 0; j < C; j++) w[R + j] = vars[j];
    }
    bi_voidres(n);
}

// kv_view(V, i, j[, sel]), kv_sview.
static void view(int n, bool str) {
    MObj* V = bi_any(n, 0);
    if (!V) return;
    if (V->eltype == MT_STRUCT || V->eltype == MT_POINTER) return m_xeqerr(3102);
    MObj* j = bi_mat(n, 2);
    if (!j) return;
    if (j->eltype != MT_REAL && j->eltype != MT_STRING) return m_xeqerr(3255);
    if (j->rows != 1 && m_nel(j) > 0) return m_xeqerr(3202);
    std::vector<int> obs, vars;
    bool run;
    if (!getvars(n, 2, &vars) || !getobs(n, 1, n == 4 ? 3 : -1, &obs, &run)) return;
    if (!allof(vars, str))
        return m_custom_xeqerr(3250, "%s variable found where %s variable required",
                               str ? "numeric" : "string", str ? "string" : "numeric");
    bi_mkview(n, V, obs, run, vars, str);
}
static void bi_kv_view(int n) {
    view(n, false);
}
static void bi_kv_sview(int n) {
    view(n, true);
}

// kv_subview(X, V, i, j): X becomes a view of the rows i and columns j of
// the view V (a missing value means all); a plain V gives X a copy.
static void bi_kv_subview(int n) {
    MObj* X = bi_any(n, 0);
    MObj* V = bi_any(n, 1);
    MObj* ri = bi_mat(n, 2);
    MObj* cj = bi_mat(n, 3);
    if (!X || !V || !ri || !cj || !bi_real(ri) || !bi_real(cj)) return;
    auto pick = [&](const MObj* s, int extent, std::vector<int>* out) {
        out->clear();
        if (m_nel(s) == 1 && m_rel(s)[0] >= misval) {
            for (int k = 1; k <= extent; k++) out->push_back(k);
            return true;
        }
        for (int64_t k = 0; k < m_nel(s); k++) {
            const double x = m_rel(s)[k];
            if (!(x >= 1 && x <= extent) || x != static_cast<int>(x)) {
                m_xeqerr(3301);
                return false;
            }
            out->push_back(static_cast<int>(x));
        }
        return true;
    };
    std::vector<int> rows, cols;
    if (!pick(ri, V->rows, &rows) || !pick(cj, V->cols, &cols)) return;
    if (!V->view) {
        // a plain matrix: the submatrix as a copy
        MObj* o =
            bi_new(V->eltype, static_cast<int64_t>(rows.size()), static_cast<int64_t>(cols.size()));
        if (!o) return;
        if (V->eltype != MT_REAL && V->eltype != MT_STRING) {
            mo_freemat(o);
            return m_xeqerr(3255);
        }
        for (size_t i = 0; i < rows.size(); i++)
            for (size_t j = 0; j < cols.size(); j++) {
                const int64_t p = static_cast<int64_t>(rows[i] - 1) * V->cols + cols[j] - 1;
                const int64_t q = static_cast<int64_t>(i * cols.size() + j);
                if (V->eltype == MT_REAL) {
                    m_rel(o)[q] = m_rel(V)[p];
                } else {
                    sel_hold(m_sel(V)[p]);
                    m_sel(o)[q] = m_sel(V)[p];
                }
            }
        if (int rc = cpymat(X, o, false)) {
            mo_freemat(o);
            return m_xeqerr(rc);
        }
        mo_freemat(o);
        return void(bi_voidres(n));
    }
    std::vector<int> obs, vars;
    for (int r : rows) obs.push_back(v_obs(V, r - 1));
    for (int c : cols) vars.push_back(v_var(V, c - 1));
    bool run = true;
    for (size_t i = 1; i < obs.size() && run; i++) run = obs[i] == obs[i - 1] + 1;
    bi_mkview(n, X, obs, run, vars, V->eltype == MT_STRING);
}

// kv_viewvars(V), kv_viewobs(V): the variables (a row) and observations (a
// column) of a view.
static void bi_kv_viewvars(int n) {
    MObj* V = bi_any(n, 0);
    if (!V) return;
    if (!V->view) return m_xeqerr(3104);
    MObj* o = bi_new(MT_REAL, 1, V->cols);
    if (!o) return;
    for (int j = 0; j < V->cols; j++) m_rel(o)[j] = v_var(V, j);
    bi_result(n, o);
}
static void bi_kv_viewobs(int n) {
    MObj* V = bi_any(n, 0);
    if (!V) return;
    if (!V->view) return m_xeqerr(3104);
    MObj* o = bi_new(MT_REAL, V->rows, 1);
    if (!o) return;
    for (int i = 0; i < V->rows; i++) m_rel(o)[i] = v_obs(V, i);
    bi_result(n, o);
}

static void bi_kv_nvar(int n) {
    bi_realres(n, nvar);
}
static void bi_kv_nobs(int n) {
    bi_realres(n, nobs);
}

// kv_varindex(names[, abbrev]): the numbers of the named variables; an
// unknown name aborts (3500), and _kv_varindex gives missing for it.
static void varindex(int n, bool status) {
    MObj* a = bi_mat(n, 0);
    if (!a || !bi_string(a)) return;
    double ab = 0;
    if (n == 2 && !bi_getreal(n, 1, &ab)) return;
    a = bi_arg(n, 0);
    std::vector<double> out;
    for (int64_t i = 0; i < m_nel(a); i++)
        for (const std::string& w : bi_words(m_sel(a)[i]->s)) {
            const int v = findname(w, ab != 0 && ab < misval);
            if (!v && !status) return m_custom_xeqerr(3500, "variable %s not found", w.c_str());
            out.push_back(v ? v : misval);
        }
    MObj* o = bi_new(MT_REAL, 1, static_cast<int64_t>(out.size()));
    if (!o) return;
    for (size_t k = 0; k < out.size(); k++) m_rel(o)[k] = out[k];
    bi_result(n, o);
}
static void bi_kv_varindex(int n) {
    varindex(n, false);
}
static void bi_ukv_varindex(int n) {
    varindex(n, true);
}

// The variable of a scalar argument: a number or a name.
static int onevar(int n, int k) {
    std::vector<int> vars;
    if (!getvars(n, k, &vars)) return 0;
    if (vars.size() != 1) {
        m_xeqerr(3204);
        return 0;
    }
    return vars[0];
}

static void bi_kv_varname(int n) {
    std::vector<int> vars;
    if (!getvars(n, 0, &vars)) return;
    MObj* o = bi_new(MT_STRING, 1, static_cast<int64_t>(vars.size()));
    if (!o) return;
    for (size_t k = 0; k < vars.size(); k++) m_sel(o)[k] = bi_cell(varname(vars[k]));
    bi_result(n, o);
}
static void bi_kv_vartype(int n) {
    if (const int v = onevar(n, 0)) bi_strres(n, typename_of(typlist[v - 1]));
}
static void bi_kv_isnumvar(int n) {
    if (const int v = onevar(n, 0)) bi_realres(n, typlist[v - 1] > 244);
}
static void bi_kv_isstrvar(int n) {
    if (const int v = onevar(n, 0)) bi_realres(n, typlist[v - 1] <= 244);
}
// kv_varformat(j[, fmt]): reads or sets the display format.
static void bi_kv_varformat(int n) {
    const int v = onevar(n, 0);
    if (!v) return;
    if (n == 1) return void(bi_strres(n, fmtname(v)));
    std::string f;
    if (!bi_getstr(n, 1, &f)) return;
    if (f.empty() || f[0] != '%' || f.size() >= FMTLEN1) return m_xeqerr(3300);
    snprintf(fmtname(v), FMTLEN1, "%s", f.c_str());
    bi_voidres(n);
}
static void bi_kv_isname(int n) {
    std::string s;
    if (!bi_getstr(n, 0, &s)) return;
    bool ok =
        !s.empty() && s.size() <= 32 && (isalpha(static_cast<unsigned char>(s[0])) || s[0] == '_');
    for (char c : s)
        if (!(isalnum(static_cast<unsigned char>(c)) || c == '_')) ok = false;
    if (ok && chkreserved(s.c_str())) ok = false;
    bi_realres(n, ok);
}
static void bi_kv_updata(int n) {
    if (n == 1) {
        double x;
        if (!bi_getreal(n, 0, &x)) return;
        updata = x != 0;
        return void(bi_voidres(n));
    }
    bi_realres(n, updata != 0);
}

// kv_addvar(type, names[, nofill]): new variables at the end; their
// numbers. The type is a name such as "double" or "str10", one for all or
// one a variable.
static int typecode(const std::string& t) {
    static const struct {
        const char* name;
        int code;
    } tab[] = {{"byte", 251}, {"int", 252}, {"long", 253}, {"float", 254}, {"double", 255}};
    for (const auto& e : tab)
        if (t == e.name) return e.code;
    if (t.size() > 3 && !t.compare(0, 3, "str")) {
        char* end = nullptr;
        const long k = strtol(t.c_str() + 3, &end, 10);
        if (*end == 0 && k >= 1 && k <= 244) return static_cast<int>(k);
    }
    return 0;
}
static void addvars(int n, bool status) {
    MObj* t = bi_mat(n, 0);
    MObj* nm = bi_mat(n, 1);
    if (!t || !nm || !bi_string(t) || !bi_string(nm)) return;
    t = bi_arg(n, 0);
    std::vector<std::string> names;
    for (int64_t i = 0; i < m_nel(nm); i++)
        for (const std::string& w : bi_words(m_sel(nm)[i]->s)) names.push_back(w);
    if (m_nel(t) != 1 && static_cast<size_t>(m_nel(t)) != names.size()) return m_xeqerr(3200);
    std::vector<int> codes;
    for (size_t k = 0; k < names.size(); k++) {
        const int c = typecode(m_sel(t)[m_nel(t) == 1 ? 0 : k]->s);
        if (!c) {
            if (status) return void(bi_realres(n, -3300));
            return m_custom_xeqerr(3300, "invalid storage type %s",
                                   m_sel(t)[m_nel(t) == 1 ? 0 : k]->s);
        }
        if (findname(names[k], false) || chkname(names[k].c_str(), 0)) {
            if (status) return void(bi_realres(n, -110));
            return m_custom_xeqerr(3500, "%s invalid or already defined", names[k].c_str());
        }
        codes.push_back(c);
    }
    MObj* o = bi_new(MT_REAL, 1, static_cast<int64_t>(names.size()));
    if (!o) return;
    for (size_t k = 0; k < names.size(); k++) {
        if (int rc = addvar(names[k].c_str(), codes[k])) {
            mo_freemat(o);
            if (status) return void(bi_realres(n, -rc));
            return m_custom_xeqerr(3900, "could not add variable %s", names[k].c_str());
        }
        const int v = nvar;
        for (int i = 1; i <= nobs; i++) {
            if (codes[k] > 244)
                store(v, i, misval);
            else
                sstore(v, i, "");
        }
        m_rel(o)[k] = v;
    }
    updata = 1;
    bi_result(n, o);
}
static void bi_kv_addvar(int n) {
    addvars(n, false);
}
static void bi_ukv_addvar(int n) {
    addvars(n, true);
}

// Changes of the dataset's shape go through the commands that make them,
// so that every rule of theirs holds; a failing command aborts with 3598.
static void bycommand(int n, const std::string& cmd, bool status) {
    const int rc = bi_runline(cmd, true);
    if (status) return void(bi_realres(n, rc));
    if (rc) return m_xeqerr(rc == 1 ? 1 : 3598);
    bi_voidres(n);
}
static void addobs(int n, bool status) {
    int64_t k;
    if (!bi_getint(n, 0, 0, 2147483647, &k)) return;
    bycommand(n, "set obs " + std::to_string(nobs + k), status);
}
static void bi_kv_addobs(int n) {
    addobs(n, false);
}
static void bi_ukv_addobs(int n) {
    addobs(n, true);
}
static std::string namelist(const std::vector<int>& vars) {
    std::string s;
    for (int v : vars) {
        if (!s.empty()) s += ' ';
        s += varname(v);
    }
    return s;
}
static void dropkeepvar(int n, bool drop) {
    std::vector<int> vars;
    if (!getvars(n, 0, &vars)) return;
    if (vars.empty()) return void(bi_voidres(n));
    bycommand(n, (drop ? "drop " : "keep ") + namelist(vars), false);
}
static void bi_kv_dropvar(int n) {
    dropkeepvar(n, true);
}
static void bi_kv_keepvar(int n) {
    dropkeepvar(n, false);
}
// Drops the observations marked, by runs from the last, so that numbers
// ahead of a run stay valid.
static void dropmarked(int n, const std::vector<char>& mark) {
    int i = nobs;
    while (i >= 1) {
        if (!mark[static_cast<size_t>(i)]) {
            i--;
            continue;
        }
        int a = i;
        while (a > 1 && mark[static_cast<size_t>(a - 1)]) a--;
        const int rc = bi_runline("drop in " + std::to_string(a) + "/" + std::to_string(i), true);
        if (rc) return m_xeqerr(rc == 1 ? 1 : 3598);
        i = a - 1;
    }
    bi_voidres(n);
}
static void obsin(int n, bool drop) {
    std::vector<int> obs;
    bool run;
    if (!getobs(n, 0, -1, &obs, &run)) return;
    std::vector<char> mark(static_cast<size_t>(nobs) + 1, drop ? 0 : 1);
    mark[0] = 0;
    for (int i : obs) mark[static_cast<size_t>(i)] = drop ? 1 : 0;
    dropmarked(n, mark);
}
static void obsif(int n, bool drop) {
    MObj* a = bi_mat(n, 0);
    if (!a || !bi_real(a)) return;
    if (m_nel(a) != nobs || (a->cols != 1 && nobs > 1)) return m_xeqerr(3200);
    std::vector<char> mark(static_cast<size_t>(nobs) + 1, 0);
    for (int i = 1; i <= nobs; i++) mark[static_cast<size_t>(i)] = (m_rel(a)[i - 1] != 0) == drop;
    dropmarked(n, mark);
}
static void bi_kv_dropobsin(int n) {
    obsin(n, true);
}
static void bi_kv_keepobsin(int n) {
    obsin(n, false);
}
static void bi_kv_dropobsif(int n) {
    obsif(n, true);
}
static void bi_kv_keepobsif(int n) {
    obsif(n, false);
}
static void bi_kv_varrename(int n) {
    const int v = onevar(n, 0);
    std::string to;
    if (!v || !bi_getstr(n, 1, &to)) return;
    bycommand(n, std::string("rename ") + varname(v) + " " + to, false);
}
// kv_varlabel(j[, text]), kv_varvaluelabel(j[, name]).
static void bi_kv_varlabel(int n) {
    const int v = onevar(n, 0);
    if (!v) return;
    if (n == 1) {
        const char* l = varlabel_hook ? varlabel_hook(v) : nullptr;
        return void(bi_strres(n, l ? l : ""));
    }
    std::string text;
    if (!bi_getstr(n, 1, &text)) return;
    bycommand(n, std::string("label variable ") + varname(v) + " `\"" + text + "\"'", false);
}
static void bi_kv_varvaluelabel(int n) {
    const int v = onevar(n, 0);
    if (!v) return;
    if (n == 1) return void(bi_strres(n, lblname(v)));
    std::string name;
    if (!bi_getstr(n, 1, &name)) return;
    if (name.size() > 32) return m_xeqerr(3300);
    snprintf(lblname(v), NAMELEN1, "%s", name.c_str());
    updata = 1;
    bi_voidres(n);
}
static void isfmt(int n, int kind) {
    std::string f;
    if (!bi_getstr(n, 0, &f)) return;
    FmtDesc d;
    bool ok = chkfmt(f.c_str(), kind + 10, &d) == 0;
    if (!ok && kind != 2) ok = chkdfmt(f.c_str(), &d) == 0 || chktfmt(f.c_str(), &d) == 0;
    bi_realres(n, ok);
}
static void bi_kv_isfmt(int n) {
    isfmt(n, 0);
}
static void bi_kv_isnumfmt(int n) {
    isfmt(n, 1);
}
static void bi_kv_isstrfmt(int n) {
    isfmt(n, 2);
}
// kv_tempname([k]), kv_tempfilename([k]): k new names, a column.
static void tempnames(int n, bool file) {
    int64_t k = 1;
    if (n == 1 && !bi_getint(n, 0, 0, 1000000, &k)) return;
    MObj* o = bi_new(MT_STRING, k, 1);
    if (!o) return;
    for (int64_t i = 0; i < k; i++) {
        char buf[4096];
        if (file) {
            if (mktmpfn(buf, sizeof buf)) {
                mo_freemat(o);
                return m_xeqerr(3602);
            }
        } else {
            mktmpvn(buf);
        }
        m_sel(o)[i] = bi_cell(buf);
    }
    bi_result(n, o);
}
static void bi_kv_tempname(int n) {
    tempnames(n, false);
}
static void bi_kv_tempfilename(int n) {
    tempnames(n, true);
}
// Value labels.
static void bi_kv_vlexists(int n) {
    std::string s;
    if (bi_getstr(n, 0, &s)) bi_realres(n, vlfind(s.c_str()) != nullptr);
}
static void bi_kv_vldrop(int n) {
    std::string s;
    if (!bi_getstr(n, 0, &s)) return;
    if (!vlfind(s.c_str())) return void(bi_voidres(n));
    bycommand(n, "label drop " + s, false);
}
// kv_vlmap(name, values): the texts of the values ("" where none).
static void bi_kv_vlmap(int n) {
    std::string s;
    MObj* x = bi_mat(n, 1);
    if (!x || !bi_real(x) || !bi_getstr(n, 0, &s)) return;
    x = bi_arg(n, 1);
    const int32_t* t = vlfind(s.c_str());
    MObj* o = bi_new(MT_STRING, x->rows, x->cols);
    if (!o) return;
    for (int64_t i = 0; i < m_nel(x); i++) {
        char buf[4096] = "";
        if (t && vlfindval(t, buf, sizeof buf - 1, m_rel(x)[i]) < 0) buf[0] = 0;
        m_sel(o)[i] = bi_cell(buf);
    }
    bi_result(n, o);
}
// kv_vlsearch(name, texts): the values of the texts (missing where none).
static void bi_kv_vlsearch(int n) {
    std::string s;
    MObj* x = bi_mat(n, 1);
    if (!x || !bi_string(x) || !bi_getstr(n, 0, &s)) return;
    x = bi_arg(n, 1);
    const int32_t* t = vlfind(s.c_str());
    MObj* o = bi_new(MT_REAL, x->rows, x->cols);
    if (!o) return;
    for (int64_t i = 0; i < m_nel(x); i++) {
        double v = misval;
        if (!t || !vlfindtxt(t, m_sel(x)[i]->s, &v)) v = misval;
        m_rel(o)[i] = v;
    }
    bi_result(n, o);
}

void bi_link_dataset(MBiFn* t) {
    t[bi_index("kv_addobs")] = bi_kv_addobs;
    t[bi_index("_kv_addobs")] = bi_ukv_addobs;
    t[bi_index("kv_dropvar")] = bi_kv_dropvar;
    t[bi_index("kv_keepvar")] = bi_kv_keepvar;
    t[bi_index("kv_dropobsin")] = bi_kv_dropobsin;
    t[bi_index("kv_keepobsin")] = bi_kv_keepobsin;
    t[bi_index("kv_dropobsif")] = bi_kv_dropobsif;
    t[bi_index("kv_keepobsif")] = bi_kv_keepobsif;
    t[bi_index("kv_varrename")] = bi_kv_varrename;
    t[bi_index("kv_varlabel")] = bi_kv_varlabel;
    t[bi_index("kv_varvaluelabel")] = bi_kv_varvaluelabel;
    t[bi_index("kv_isfmt")] = bi_kv_isfmt;
    t[bi_index("kv_isnumfmt")] = bi_kv_isnumfmt;
    t[bi_index("kv_isstrfmt")] = bi_kv_isstrfmt;
    t[bi_index("kv_tempname")] = bi_kv_tempname;
    t[bi_index("kv_tempfilename")] = bi_kv_tempfilename;
    t[bi_index("kv_vlexists")] = bi_kv_vlexists;
    t[bi_index("kv_vldrop")] = bi_kv_vldrop;
    t[bi_index("kv_vlmap")] = bi_kv_vlmap;
    t[bi_index("kv_vlsearch")] = bi_kv_vlsearch;
    t[bi_index("kv_nvar")] = bi_kv_nvar;
    t[bi_index("kv_nobs")] = bi_kv_nobs;
    t[bi_index("kv_data")] = bi_kv_data;
    t[bi_index("_kv_data")] = bi_ukv_data;
    t[bi_index("kv_sdata")] = bi_kv_sdata;
    t[bi_index("_kv_sdata")] = bi_ukv_sdata;
    t[bi_index("kv_store")] = bi_kv_store;
    t[bi_index("_kv_store")] = bi_ukv_store;
    t[bi_index("kv_sstore")] = bi_kv_sstore;
    t[bi_index("_kv_sstore")] = bi_ukv_sstore;
    t[bi_index("kv_view")] = bi_kv_view;
    t[bi_index("kv_sview")] = bi_kv_sview;
    t[bi_index("kv_subview")] = bi_kv_subview;
    t[bi_index("kv_viewvars")] = bi_kv_viewvars;
    t[bi_index("kv_viewobs")] = bi_kv_viewobs;
    t[bi_index("kv_varindex")] = bi_kv_varindex;
    t[bi_index("_kv_varindex")] = bi_ukv_varindex;
    t[bi_index("kv_varname")] = bi_kv_varname;
    t[bi_index("kv_vartype")] = bi_kv_vartype;
    t[bi_index("kv_isnumvar")] = bi_kv_isnumvar;
    t[bi_index("kv_isstrvar")] = bi_kv_isstrvar;
    t[bi_index("kv_varformat")] = bi_kv_varformat;
    t[bi_index("kv_isname")] = bi_kv_isname;
    t[bi_index("kv_updata")] = bi_kv_updata;
    t[bi_index("kv_addvar")] = bi_kv_addvar;
    t[bi_index("_kv_addvar")] = bi_ukv_addvar;
}

} // namespace korvu
