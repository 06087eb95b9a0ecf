// The bridge to the result stores, macros, scalars and the matrix store.
// A name of the form r(x), e(x) or s(x) goes to the store of that letter;
// any other name to the global macros, the scalars or the matrix store.
// One argument reads; two write.
#include <cstring>
#include <string>

#include "data/vars/vartab.h"
#include "kernel/loop/limits.h"
#include "kernel/macro/macro.h"
#include "lumo/builtins/bi.h"
#include "results/matlink.h"
#include "results/matrix/matrix.h"
#include "results/stores.h"

namespace korvu {

// Splits "r(x)" into 'r' and "x"; 0 for a plain name.
static char storeof(const std::string& s, std::string* name) {
    if (s.size() > 3 && (s[0] == 'r' || s[0] == 'e' || s[0] == 's') && s[1] == '(' &&
        s.back() == ')') {
        *name = s.substr(2, s.size() - 3);
        return s[0];
    }
    *name = s;
    return 0;
}

static bool goodname(const std::string& s) {
    if (s.empty() || s.size() > 32) return false;
    if (!(isalpha(static_cast<unsigned char>(s[0])) || s[0] == '_')) return false;
    for (char c : s)
        if (!(isalnum(static_cast<unsigned char>(c)) || c == '_')) return false;
    return true;
}

// The text of argument k as a name; false with 3300 (and the message) when
// it is not one.
static bool getname(int n, int k, std::string* full, std::string* name, char* which) {
    if (!bi_getstr(n, k, full)) return false;
    *which = storeof(*full, name);
    if (!goodname(*name)) {
        m_custom_xeqerr(3300, "invalid name %s", full->c_str());
        return false;
    }
    return true;
}

// kv_local(name[, text]): a local macro of the running program's level.
static void bi_kv_local(int n) {
    std::string full, name;
    char w;
    if (!getname(n, 0, &full, &name, &w)) return;
    if (w) return m_custom_xeqerr(3300, "invalid local name %s", full.c_str());
    const std::string item = "_" + name;
    if (n == 1) {
        const char* p = macptr(item.c_str());
        return void(bi_strres(n, p ? p : ""));
    }
    std::string text;
    if (!bi_getstr(n, 1, &text)) return;
    if (macresave(item.c_str(), text.c_str())) return m_xeqerr(3900);
    bi_voidres(n);
}

// kv_global(name[, text]): a global macro, or r(), e() and s() macros.
static void bi_kv_global(int n) {
    std::string full, name;
    char w;
    if (!getname(n, 0, &full, &name, &w)) return;
    if (n == 1) {
        std::string out;
        if (!w) {
            const char* p = macptr(name.c_str());
            out = p ? p : "";
        } else {
            const int f = w == 'r'   ? retval_find(name.c_str())
                          : w == 'e' ? estval_find(name.c_str())
                                     : sretval_find(name.c_str());
            if (f == RF_MACRO) {
                const char* p = retval_get_strptr();
                out = p ? p : "";
            }
        }
        return void(bi_strres(n, out));
    }
    std::string text;
    if (!bi_getstr(n, 1, &text)) return;
    int rc = 0;
    switch (w) {
    case 0: rc = macresave(name.c_str(), text.c_str()); break;
    case 'r':
        retval_erase(name.c_str());
        rc = text.empty() ? 0 : retval_set_local(name.c_str(), text.c_str());
        break;
    case 'e':
        estval_erase(name.c_str());
        rc = text.empty() ? 0 : estval_reset_local(name.c_str(), text.c_str());
        break;
    default: rc = sretval_reset_local(name.c_str(), text.c_str());
    }
    if (rc) return m_xeqerr(3900);
    bi_voidres(n);
}

// kv_numscalar(name[, value]): a scalar, or r() and e() scalars; reading an
// absent one gives a 0 x 0 matrix. A missing value written to a plain
// scalar stores missing; a 0 x 0 value removes an r() or e() scalar.
static void bi_kv_numscalar(int n) {
    std::string full, name;
    char w;
    if (!getname(n, 0, &full, &name, &w)) return;
    if (n == 1) {
        double x = 0;
        bool found = false;
        if (!w) {
            found = scalarfind(name.c_str(), &x) == 1;
        } else if (w != 's') {
            const int f = w == 'r' ? retval_find(name.c_str()) : estval_find(name.c_str());
            if (f == RF_SCALAR) {
                x = retval_get_as_double();
                found = true;
            }
        }
        if (!found) return void(bi_result(n, bi_new(MT_REAL, 0, 0)));
        return void(bi_realres(n, x));
    }
    MObj* v = bi_mat(n, 1);
    if (!v || !bi_real(v)) return;
    if (w == 's') return m_custom_xeqerr(3300, "s() holds no scalars");
    if (m_nel(v) == 0) {
        if (w == 'r') retval_erase(name.c_str());
        if (w == 'e') estval_erase(name.c_str());
        return void(bi_voidres(n));
    }
    if (!bi_scalar(v)) return;
    const double x = m_rel(v)[0];
    int rc = w == 'r'   ? retval_reset_scalar(name.c_str(), x)
             : w == 'e' ? estval_reset_scalar(name.c_str(), x)
                        : scalarset(name.c_str(), x);
    if (rc) return m_xeqerr(3900);
    bi_voidres(n);
}

// kv_strscalar(name[, text]): a string scalar.
static void bi_kv_strscalar(int n) {
    std::string full, name;
    char w;
    if (!getname(n, 0, &full, &name, &w)) return;
    if (w) return m_custom_xeqerr(3300, "invalid string scalar name %s", full.c_str());
    if (n == 1) {
        const char* p = strscalarfind(name.c_str());
        if (!p) return void(bi_result(n, bi_new(MT_STRING, 0, 0)));
        return void(bi_strres(n, p));
    }
    std::string text;
    if (!bi_getstr(n, 1, &text)) return;
    if (strscalarset(name.c_str(), text.c_str())) return m_xeqerr(3900);
    bi_voidres(n);
}

// The item name and dictionary type of a matrix name.
static void matwhere(char w, const std::string& name, std::string* item, int* type) {
    *item = name;
    switch (w) {
    case 'r': *type = RT_MATRIX; break;
    case 'e':
        *type = ET_MATRIX;
        if (name == "b") {
            *item = "_b";
            *type = ET_RECORD;
        } else if (name == "V") {
            *item = "VCE";
            *type = ET_RECORD;
        }
        break;
    default: *type = 9;
    }
}

static bool loadmat(int n, DenseMat* m, bool* found) {
    std::string full, name, item;
    char w;
    int type;
    if (!getname(n, 0, &full, &name, &w)) return false;
    if (w == 's') {
        m_custom_xeqerr(3300, "s() holds no matrices");
        return false;
    }
    if (!matlink.load) {
        m_custom_xeqerr(3996, "matrices not yet available");
        return false;
    }
    matwhere(w, name, &item, &type);
    *found = matlink.load(item.c_str(), type, m) == 0;
    return true;
}

// kv_matrix(name[, X]): a copy of a matrix of the store, 0 x 0 when absent;
// with X, stores it (a 0 x 0 X removes the matrix). Writing keeps the old
// stripes when the shape is unchanged.
static void bi_kv_matrix(int n) {
    if (n == 1) {
        DenseMat m;
        bool found;
        if (!loadmat(n, &m, &found)) return;
        if (!found) return void(bi_result(n, bi_new(MT_REAL, 0, 0)));
        MObj* o = bi_new(MT_REAL, m.rows, m.cols);
        if (!o) return;
        for (int64_t k = 0; k < m_nel(o); k++) m_rel(o)[k] = m.x[static_cast<size_t>(k)];
        return void(bi_result(n, o));
    }
    std::string full, name, item;
    char w;
    int type;
    if (!getname(n, 0, &full, &name, &w)) return;
    if (w == 's') return m_custom_xeqerr(3300, "s() holds no matrices");
    MObj* x = bi_mat(n, 1);
    if (!x || !bi_real(x)) return;
    if (!matlink.save) return m_custom_xeqerr(3996, "matrices not yet available");
    matwhere(w, name, &item, &type);
    if (m_nel(x) == 0) {
        if (matlink.drop) matlink.drop(item.c_str(), type);
        return void(bi_voidres(n));
    }
    if (x->rows > 32767 || x->cols > 32767) return m_xeqerr(3300);
    DenseMat old;
    const bool had = matlink.load(item.c_str(), type, &old) == 0;
    DenseMat m;
    m.rows = x->rows;
    m.cols = x->cols;
    m.x.assign(m_rel(x), m_rel(x) + m_nel(x));
    if (had && old.rows == m.rows && old.cols == m.cols) {
        m.rownames = old.rownames;
        m.colnames = old.colnames;
    } else {
        for (int i = 0; i < m.rows; i++) m.rownames.push_back("r" + std::to_string(i + 1));
        for (int j = 0; j < m.cols; j++) m.colnames.push_back("c" + std::to_string(j + 1));
    }
    if (matlink.save(item.c_str(), type, m)) return m_xeqerr(3900);
    bi_voidres(n);
}

// kv_matrixrowstripe(name[, S]), kv_matrixcolstripe: the names as a k x 2
// string matrix of equation and name; with S, replaces them.
static void stripe(int n, bool rows) {
    DenseMat m;
    bool found;
    if (!loadmat(n, &m, &found)) return;
    if (!found) return void(bi_result(n, bi_new(MT_STRING, 0, 2)));
    std::vector<std::string>& names = rows ? m.rownames : m.colnames;
    if (n == 1) {
        MObj* o = bi_new(MT_STRING, static_cast<int64_t>(names.size()), 2);
        if (!o) return;
        for (size_t k = 0; k < names.size(); k++) {
            const std::string& s = names[k];
            const size_t c = s.find(':');
            m_sel(o)[2 * k] = bi_cell(c == std::string::npos ? "" : s.substr(0, c));
            m_sel(o)[2 * k + 1] = bi_cell(c == std::string::npos ? s : s.substr(c + 1));
        }
        return void(bi_result(n, o));
    }
    MObj* s = bi_mat(n, 1);
    if (!s || !bi_string(s)) return;
    if (s->cols != 2 || static_cast<size_t>(s->rows) != names.size()) return m_xeqerr(3200);
    for (size_t k = 0; k < names.size(); k++) {
        const std::string eq = m_sel(s)[2 * k]->s, nm = m_sel(s)[2 * k + 1]->s;
        if (nm.empty()) return m_xeqerr(3300);
        names[k] = eq.empty() ? nm : eq + ":" + nm;
    }
    std::string full, name, item;
    char w;
    int type;
    getname(n, 0, &full, &name, &w);
    matwhere(w, name, &item, &type);
    if (matlink.save(item.c_str(), type, m)) return m_xeqerr(3900);
    bi_voidres(n);
}
static void bi_kv_matrixrowstripe(int n) {
    stripe(n, true);
}
static void bi_kv_matrixcolstripe(int n) {
    stripe(n, false);
}
// kv_replacematrix(name, X): replaces the values of an existing matrix of
// the same shape, keeping its names.
static void bi_kv_replacematrix(int n) {
    DenseMat m;
    bool found;
    if (!loadmat(n, &m, &found)) return;
    if (!found) return m_custom_xeqerr(3300, "matrix not found");
    MObj* x = bi_mat(n, 1);
    if (!x || !bi_real(x)) return;
    if (x->rows != m.rows || x->cols != m.cols) return m_xeqerr(3200);
    m.x.assign(m_rel(x), m_rel(x) + m_nel(x));
    std::string full, name, item;
    char w;
    int type;
    getname(n, 0, &full, &name, &w);
    matwhere(w, name, &item, &type);
    if (matlink.save(item.c_str(), type, m)) return m_xeqerr(3900);
    bi_voidres(n);
}

static void bi_kv_rclear(int n) {
    retval_clear();
    bi_voidres(n);
}
static void bi_kv_eclear(int n) {
    estval_clear();
    bi_voidres(n);
}
static void bi_kv_sclear(int n) {
    sretval_clear();
    bi_voidres(n);
}

// kv_dir(store, kind[, pattern]): the names in r(), e() or s() ("r", "e",
// "s") of one kind ("numscalar", "macro", "matrix"), a column.
static void bi_kv_dir(int n) {
    std::string st, kind, pat = "*";
    if (!bi_getstr(n, 0, &st) || !bi_getstr(n, 1, &kind)) return;
    if (n == 3 && !bi_getstr(n, 2, &pat)) return;
    const int cls = st == "r" || st == "r()"   ? RC_R
                    : st == "e" || st == "e()" ? RC_E
                    : st == "s" || st == "s()" ? RC_S
                                               : 0;
    const int k = kind == "numscalar" ? 1 : kind == "macro" ? 2 : kind == "matrix" ? 3 : 0;
    if (!cls || !k) return m_xeqerr(3300);
    std::string out;
    if (retvals_dir(cls, k, out)) return m_xeqerr(3900);
    std::vector<std::string> names;
    size_t i = 0;
    while (i < out.size()) {
        while (i < out.size() && out[i] == ' ') i++;
        size_t j = i;
        while (j < out.size() && out[j] != ' ') j++;
        if (j > i) {
            std::string w = out.substr(i, j - i);
            if (wildmatch(pat.c_str(), w.c_str())) names.push_back(w);
        }
        i = j;
    }
    MObj* o = bi_new(MT_STRING, static_cast<int64_t>(names.size()), 1);
    if (!o) return;
    for (size_t q = 0; q < names.size(); q++) m_sel(o)[q] = bi_cell(names[q]);
    bi_result(n, o);
}

// kv_macroexpand(text): the text with its macros expanded.
static void expand(int n, bool status) {
    std::string s;
    if (!bi_getstr(n, 0, &s)) return;
    std::vector<char> buf(static_cast<size_t>(macrolen) + 1, 0);
    if (s.size() >= buf.size() - 1) return m_xeqerr(3492);
    memcpy(buf.data(), s.c_str(), s.size() + 1);
    const int rc = macexp_text(buf.data(), buf.size());
    if (status) {
        MObj* t = bi_arg(n, 1);
        if (t->view || t->fcn) return m_xeqerr(3103);
        MObj* r = m_mkmat("", MT_STRING, 1, 1);
        if (!r) return m_xeqerr(3900);
        m_sel(r)[0] = bi_cell(rc ? "" : buf.data());
        cpymat(t, r, false);
        mo_freemat(r);
        return void(bi_realres(n, rc));
    }
    if (rc) return m_custom_xeqerr(3300, "macro expansion failed");
    bi_strres(n, buf.data());
}
static void bi_kv_macroexpand(int n) {
    expand(n, false);
}
static void bi_ukv_macroexpand(int n) {
    expand(n, true);
}

void bi_link_results(MBiFn* t) {
    t[bi_index("kv_local")] = bi_kv_local;
    t[bi_index("kv_global")] = bi_kv_global;
    t[bi_index("kv_numscalar")] = bi_kv_numscalar;
    t[bi_index("kv_strscalar")] = bi_kv_strscalar;
    t[bi_index("kv_matrix")] = bi_kv_matrix;
    t[bi_index("kv_matrixrowstripe")] = bi_kv_matrixrowstripe;
    t[bi_index("kv_matrixcolstripe")] = bi_kv_matrixcolstripe;
    t[bi_index("kv_replacematrix")] = bi_kv_replacematrix;
    t[bi_index("kv_rclear")] = bi_kv_rclear;
    t[bi_index("kv_eclear")] = bi_kv_eclear;
    t[bi_index("kv_sclear")] = bi_kv_sclear;
    t[bi_index("kv_dir")] = bi_kv_dir;
    t[bi_index("kv_macroexpand")] = bi_kv_macroexpand;
    t[bi_index("_kv_macroexpand")] = bi_ukv_macroexpand;
}

} // namespace korvu
