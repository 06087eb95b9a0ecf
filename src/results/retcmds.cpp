// return, sreturn and ereturn, the listings of r(), e(), s(), and the reading
// of the stores from expressions and macros.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/vars/vartab.h"
#include "kernel/cmds/builtins.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/limits.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "kernel/program/program.h"
#include "output/spout.h"
#include "results/estore.h"
#include "results/regress/regress.h"
#include "results/stores.h"

namespace korvu {

int epostcmd(int repost); // estpost.cpp

namespace {

int classerr(int code) {
    return error(code);
}

// Items of a type in the order they were added (the dictionary keeps the
// newest first).
std::vector<void*> items_of(int type) {
    std::vector<void*> v;
    for (void* it = dmnext(nullptr, nullptr, type, nullptr); it;
         it = dmnext(it, nullptr, type, nullptr))
        v.push_back(it);
    std::reverse(v.begin(), v.end());
    return v;
}

struct StoreTypes {
    int scal, mac, mat; // -1 when the store has none
    char letter;
};
StoreTypes types_of(int cls) {
    switch (cls) {
    case RC_R: return {RT_SCALAR, RT_MACRO, RT_MATRIX, 'r'};
    case RC_E: return {ET_SCALAR, ET_MACRO, ET_MATRIX, 'e'};
    case RC_S: return {-1, ST_MACRO, -1, 's'};
    default: return {myrettype(1), myrettype(2), myrettype(3), 'R'};
    }
}

struct ScalarItem {
    std::string name;
    double value;
};
std::vector<ScalarItem> scalars_of(int cls) {
    std::vector<ScalarItem> out;
    char name[33];
    double v;
    if (cls == RC_R)
        for (int i = 0; retval_get_internal_scalar(i, name, &v); ++i) out.push_back({name, v});
    if (cls == RC_E)
        for (int i = 0; estval_get_internal_scalar(i, name, &v); ++i) out.push_back({name, v});
    StoreTypes t = types_of(cls);
    if (t.scal < 0 || (cls == RC_R && !(retval_flag & 2))) return out;
    for (void* it : items_of(t.scal)) {
        std::memcpy(&v, it, sizeof v);
        out.push_back({dmname(it), v});
    }
    return out;
}
std::vector<void*> macros_of(int cls) {
    StoreTypes t = types_of(cls);
    if (cls == RC_R && !(retval_flag & 2)) return {};
    return items_of(t.mac);
}
std::vector<void*> matrices_of(int cls) {
    StoreTypes t = types_of(cls);
    if (t.mat < 0 || (cls == RC_R && !(retval_flag & 2))) return {};
    return items_of(t.mat);
}

void matdims(const void* item, int* r, int* c) {
    *r = *c = 0;
    if (!matlink.dims || matlink.dims(item, r, c)) *r = *c = 0;
}

std::string numtext18(double x) {
    char buf[40];
    const char* s = safereforms("%18.0g", x);
    while (*s == ' ') ++s;
    snprintf(buf, sizeof buf, "%s", s);
    std::string out = buf;
    while (!out.empty() && out.back() == ' ') out.pop_back();
    return out;
}

// The label of a listing: "r(name) = " with the punctuation in one column.
void label(char letter, const std::string& name, char punct) {
    c_outlev = 1;
    std::string s;
    std::string n = name;
    if (n.size() > 16) {
        s = "  ";
        s += letter;
        s += '(';
        s += n.substr(0, 16);
        s += "\n";
        spout21(s.c_str());
        n = std::string("  ").append(n, 16, std::string::npos);
        s.assign(n.size() < 20 ? 20 - n.size() : 0, ' ');
        s += n;
    } else {
        s.assign(18 - n.size(), ' ');
        s += letter;
        s += '(';
        s += n;
    }
    s += ") ";
    s += punct;
    s += ' ';
    spout21(s.c_str());
}

void show_macro_value(const char* v) {
    int width = korvu_linewidth - 28;
    if (width < 10) width = 10;
    if (width > 246) width = 246;
    std::string t = v;
    c_outlev = 0;
    if (static_cast<int>(t.size()) > width) {
        t = t.substr(0, static_cast<size_t>(width - 1));
        spout21("\"");
        spout21(t.c_str());
        spout21("..\"\n");
        return;
    }
    spout21("\"");
    spout21(t.c_str());
    spout21("\"\n");
}

int listall(int cls) {
    StoreTypes t = types_of(cls);
    auto sc = scalars_of(cls);
    if (!sc.empty()) {
        c_outlev = 1;
        spout21("\nscalars:\n");
        for (auto& s : sc) {
            if (stopflag) return 1;
            label(t.letter, s.name, '=');
            c_outlev = 0;
            spout21(numtext18(s.value).c_str());
            newline();
        }
    }
    auto mc = macros_of(cls);
    if (!mc.empty()) {
        c_outlev = 1;
        spout21("\nmacros:\n");
        for (void* it : mc) {
            if (stopflag) return 1;
            label(t.letter, dmname(it), ':');
            show_macro_value(static_cast<const char*>(it));
        }
    }
    std::vector<std::pair<std::string, const void*>> mats;
    if (cls == RC_E) {
        if (const void* b = dmfind0("_b", ET_RECORD)) mats.push_back({"b", b});
        if (const void* v = dmfind0("VCE", ET_RECORD)) mats.push_back({"V", v});
    }
    for (void* it : matrices_of(cls)) mats.push_back({dmname(it), it});
    if (!mats.empty()) {
        c_outlev = 1;
        spout21("\nmatrices:\n");
        for (auto& m : mats) {
            if (stopflag) return 1;
            label(t.letter, m.first, ':');
            int r, c;
            matdims(m.second, &r, &c);
            c_outlev = 0;
            spoutf(" %d x %d\n", r, c);
        }
    }
    if (cls == RC_E && lastest && esample_var()) {
        c_outlev = 1;
        spout21("\nfunctions:\n");
        label('e', "sample", ' ');
        newline();
    }
    return 0;
}

int listnames(int cls) {
    StoreTypes t = types_of(cls);
    std::vector<std::string> names;
    for (;;) {
        gettok(prsestd);
        if (!token[0]) break;
        names.push_back(token);
    }
    if (names.empty() || (names.size() == 1 && names[0] == "_all")) return listall(cls);
    for (auto& n : names) {
        if (n == "_all") return error(198);
        if (gretval_find(cls, n.c_str()) == RF_ABSENT) {
            return errorf(111, "%c(%s) not found\n", t.letter, n.c_str());
        }
    }
    for (auto& n : names) {
        int kind = gretval_find(cls, n.c_str());
        std::string full(1, t.letter);
        full.append("(").append(n).append(")");
        c_outlev = 1;
        if (kind == RF_SCALAR) {
            spoutf("scalar %-10s", full.c_str());
            c_outlev = 0;
            spoutf("=  %s\n", numtext18(retval_get_as_double()).c_str());
        } else if (kind == RF_MACRO) {
            spoutf("local %-10s", full.c_str());
            c_outlev = 0;
            spoutf(": \"%s\"\n", retval_get_strptr());
        } else {
            int r, c;
            matdims(retval_cursor_item(), &r, &c);
            spoutf("matrix %-10s", full.c_str());
            c_outlev = 0;
            spoutf(": %d x %d\n", r, c);
        }
    }
    return 0;
}

// return scalar name = exp
int scalarsub(int cls) {
    gettok(prsestd);
    std::string name = token;
    if (name.empty() || tokisstr(token) || chkname(name.c_str(), 0)) return error(198);
    pfixeq();
    vable = ifable = oable = wgtable = opable = 3;
    wable = 1;
    if (int rc = parse()) return rc;
    initialize_xeq();
    double v = xeq(&wepgm, nobs1 > 0 ? nobs1 : 1);
    if (cls == RC_MINE) return myretval_reset_scalar(name.c_str(), v) ? error(950) : 0;
    return estval_reset_scalar(name.c_str(), v) ? error(950) : 0;
}

// return matrix name [=] matname [, copy]
int matrixsub(int cls) {
    gettok(prsestd);
    std::string name = token;
    if (name.empty() || tokisstr(token) || chkname(name.c_str(), 0)) return error(198);
    if (cls == RC_E && (name == "b" || name == "V")) return error(198);
    gettok(prsestd);
    if (tokis(token, "=")) gettok(prsestd);
    std::string src = token;
    if (src.empty()) return error(198);
    bool copy = false;
    gettok(prsestd);
    if (tokis(token, ",")) {
        gettok(prsestd);
        if (!cmdcmp(token, "copy", 4)) return error(198);
        copy = true;
        gettok(prsestd);
    }
    if (token[0]) return error(198);
    void* m = dmfind0(src.c_str(), DM_MATRIX);
    if (!m) return matnotfound(src.c_str());
    int base = cls == RC_MINE ? myrettype(3) : ET_MATRIX;
    // the source name is cleared from the store first
    if (cls == RC_MINE)
        myretval_erase(src.c_str());
    else
        estval_erase(src.c_str());
    for (int k = 0; k < 3; ++k) dmrm(dmfind0(name.c_str(), base + k));
    static const int from[3] = {DM_MATRIX, DM_MATROW, DM_MATCOL};
    for (int k = 0; k < 3; ++k) {
        void* it = dmfind0(src.c_str(), from[k]);
        if (!it) continue;
        if (copy) {
            if (!dmcp(name.c_str(), base + k, src.c_str(), from[k], 0)) return error(950);
        } else {
            dmrename(it, name.c_str());
            dmretype(it, base + k);
        }
    }
    return 0;
}

} // namespace

// --- the commands ---------------------------------------------------------------------

int returncmd(int) {
    gettok(prsestd);
    std::string w = token;
    const char* t = w.c_str();
    bool mine = program_class == 1;
    if (cmdcmp(t, "local", 3)) return mine ? macgen(4) : classerr(151);
    if (cmdcmp(t, "scalar", 3)) return mine ? scalarsub(RC_MINE) : classerr(151);
    if (cmdcmp(t, "matrix", 3)) return mine ? matrixsub(RC_MINE) : classerr(151);
    if (cmdcmp(t, "list", 2)) return listnames(RC_R);
    if (cmdcmp(t, "clear", 5)) {
        if (int rc = endofline()) return rc;
        myretval_clear();
        return 0;
    }
    if (cmdcmp(t, "add", 3)) {
        if (!mine) return classerr(151);
        if (int rc = endofline()) return rc;
        return myretval_add();
    }
    if (cmdcmp(t, "dir", 3) || cmdcmp(t, "drop", 4)) {
        if (!mine && cmdcmp(t, "drop", 4)) return classerr(151);
        return error(198);
    }
    return error(198);
}

int sreturncmd(int) {
    gettok(prsestd);
    std::string w = token;
    const char* t = w.c_str();
    bool mine = program_class == 2;
    if (cmdcmp(t, "local", 3)) return mine ? macgen(6) : classerr(153);
    if (cmdcmp(t, "list", 2)) return listnames(RC_S);
    if (cmdcmp(t, "clear", 5)) {
        if (int rc = endofline()) return rc;
        sretval_clear();
        return 0;
    }
    if (cmdcmp(t, "drop", 4)) return mine ? error(198) : classerr(153);
    return error(198);
}

static int ereturn_words(const char* t, bool* handled) {
    *handled = true;
    bool mine = program_class == 3;
    if (cmdcmp(t, "local", 3)) return mine ? macgen(5) : classerr(152);
    if (cmdcmp(t, "scalar", 3)) return mine ? scalarsub(RC_E) : classerr(152);
    if (cmdcmp(t, "matrix", 3)) return mine ? matrixsub(RC_E) : classerr(152);
    if (cmdcmp(t, "list", 2)) return listnames(RC_E);
    if (cmdcmp(t, "clear", 5)) {
        if (!mine) return classerr(152);
        if (int rc = endofline()) return rc;
        ab_est(1);
        return 0;
    }
    if (cmdcmp(t, "display", 2)) return ereturn_display();
    if (cmdcmp(t, "post", 4)) return mine ? epostcmd(0) : classerr(152);
    if (cmdcmp(t, "repost", 6)) return mine ? epostcmd(1) : classerr(152);
    *handled = false;
    return 198;
}

int ereturncmd(int) {
    gettok(prsestd);
    std::string w = token;
    bool handled;
    int rc = ereturn_words(w.c_str(), &handled);
    return handled ? rc : error(198);
}

int holdwords(const char* word); // estpost.cpp: hold unhold drop dir clear

int estimatescmd(int) {
    gettok(prsestd);
    std::string w = token;
    bool handled;
    int rc = ereturn_words(w.c_str(), &handled);
    if (handled) return rc;
    return holdwords(w.c_str());
}

int _estimatescmd(int) {
    gettok(prsestd);
    std::string w = token;
    return holdwords(w.c_str());
}

// --- names behind e(scalars) and kin ---------------------------------------------------

int retvals_dir(int cls, int kind, std::string& out) {
    out.clear();
    auto add = [&](const std::string& n) {
        if (!out.empty()) out += ' ';
        out += n;
    };
    if (kind == 1)
        for (auto& s : scalars_of(cls)) add(s.name);
    if (kind == 2)
        for (void* it : macros_of(cls)) add(dmname(it));
    if (kind == 3) {
        if (cls == RC_E && hasmatforretval(ET_MATRIX, 'b')) add("b");
        if (cls == RC_E && hasmatforretval(ET_MATRIX, 'V')) add("V");
        for (void* it : matrices_of(cls)) add(dmname(it));
    }
    if (kind == 4 && cls == RC_E && lastest && esample_var()) add("sample");
    if (static_cast<int64_t>(out.size()) >= macrolen) {
        out.clear();
        return error(1000);
    }
    return 0;
}

// r(x) and kin in macro expansion; which is 'r', 'e', 's', 'R' or 'c'.
int cfcnstr(const char* name, char* buf, size_t size); // cfcn.cpp

int result_macro_value(int which, const char* name, char* dst, size_t n) {
    dst[0] = 0;
    if (which == 'c') return cfcnstr(name, dst, n), 0;
    int cls = which == 'r' ? RC_R : which == 'e' ? RC_E : which == 's' ? RC_S : RC_MINE;
    static const char* kinds[] = {"scalars", "macros", "matrices", "functions"};
    for (int k = 0; k < 4; ++k)
        if (!std::strcmp(name, kinds[k])) {
            std::string s;
            if (int rc = retvals_dir(cls, k + 1, s)) return rc;
            snprintf(dst, n, "%s", s.c_str());
            return 0;
        }
    if (gretval_find(cls, name) != RF_ABSENT) retval_get_as_string(dst, n);
    return 0;
}

// `: r(scalars)' and kin, `: r(name)' for one result, and `: c(key)': the
// tokenizer stands behind the letter.
int result_macro_function(const char* word, char* dst) {
    int which = word[0];
    gettok(prsestd);
    if (!tokis(token, "(")) return error(198);
    gettok(prsestd);
    std::string what = token;
    gettok(prsestd);
    if (!tokis(token, ")")) return error(198);
    if (gettok(prsestd)[0]) return error(198);
    return result_macro_value(which, what.c_str(), dst, static_cast<size_t>(macrolen));
}

// r(), e(), s() in expressions: 1 number, 2 string, 0 not there; a matrix
// (e(b) and e(V) among them) is a negated 509, for it has no place in an
// ordinary expression.
int result_exp_value(int letter, const char* name, double* num, char* str) {
    int cls = letter == 'r' ? RC_R : letter == 'e' ? RC_E : RC_S;
    if (cls == RC_E && (!std::strcmp(name, "b") || !std::strcmp(name, "V")) &&
        hasmatforretval(ET_MATRIX, name[0]))
        return -509;
    int kind = gretval_find(cls, name);
    if (kind == RF_MATRIX) return -509;
    if (kind == RF_SCALAR) {
        *num = retval_get_as_double();
        return 1;
    }
    if (kind == RF_MACRO) {
        retval_get_as_string(str, EXP_STRMAX + 1);
        return 2;
    }
    return 0;
}

} // namespace korvu
