// Extended macro functions over other subsystems: `label` (text of a value
// label), `display` (what display shows, captured), `log` (the state of a
// log), `properties` (of a program), `tsnorm` (time-series operators in their
// normal form) and `permname` (a free variable name).
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "data/area/dataarea.h"
#include "data/expr/expr.h"
#include "data/labels/label.h"
#include "data/vars/varlist.h"
#include "data/vars/vartab.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "kernel/program/program.h"
#include "output/log/log.h"
#include "output/redirect.h"
#include "output/spout.h"

namespace korvu {

namespace {

int put(char* dst, const std::string& s) {
    if (s.size() > static_cast<size_t>(macrolen - 1)) return error(920);
    memcpy(dst, s.data(), s.size());
    dst[s.size()] = 0;
    return 0;
}

// The options after a comma, when there is one; `allowed` is checked by the
// caller through findopt and chkopt.
int readoptions(bool* had) {
    *had = false;
    char* t = gettok(prsestd);
    if (!t[0]) return 0;
    if (!tokis(t, ",")) return error(198);
    *had = true;
    noptn = 0;
    opable = 0;
    return proption();
}

// label lblname|(varname) maxlength | # [length] [, strict]
int mf_label(const char*, char* dst) {
    char* t = gettok(prsestd);
    std::string lbl;
    bool byvar = false;
    if (tokis(t, "(")) {
        gettok(prsevar);
        if (!token[0] || tokisstr(token)) return error(198);
        int v = korvu_findvar(token, 1, 0);
        if (v < 0) return -v;
        lbl = lblname(v);
        if (!tokis(gettok(prsestd), ")")) return error(198);
        byvar = true;
    } else {
        if (!t[0] || tokisstr(t)) return error(198);
        lbl = t;
    }
    const int32_t* tbl = lbl.empty() ? nullptr : vlfind(lbl.c_str());
    if (!tbl && !byvar) {
        return errorf(111, "value label %s not found\n", lbl.c_str());
    }
    gettok(prsenum);
    std::string what = token;
    if (what.empty()) return error(198);
    if (what == "maxlength") {
        if (gettok(prsestd)[0]) return error(198);
        char buf[32];
        snprintf(buf, sizeof buf, "%d", tbl ? vlmaxlen(tbl) : 0);
        return put(dst, buf);
    }
    double x;
    if (cnvstoz(what.c_str(), &x)) return error(198);
    int len = -1;
    char* p = peektok_chr();
    if (p && *p && *p != ',') {
        gettok(prsenum);
        double l;
        if (cnvstoz(token, &l) || l != std::floor(l) || l < 1 || l > 32000) return error(198);
        len = static_cast<int>(l);
    }
    bool had;
    if (int rc = readoptions(&had)) return rc;
    int strict = had ? findopt("strict", 6, 0) : 0;
    if (had)
        if (int rc = chkopt()) return rc;
    std::string out;
    const char* text = tbl ? vl_lookup(lbl.c_str(), x) : nullptr;
    if (text)
        out = text;
    else if (!strict)
        out = what; // an unlabelled value is itself, as typed
    if (len > 0 && out.size() > static_cast<size_t>(len)) out.resize(static_cast<size_t>(len));
    return put(dst, out);
}

// display ...: the lines display would show, joined, nothing shown.
int mf_display(const char*, char* dst) {
    InfBuf* buf = redirtoinf();
    if (!buf) return error(198);
    uint8_t was = s_outlev;
    s_outlev = 0;
    int rc = display(0);
    s_outlev = was;
    std::unique_ptr<InfBuf> got(redirtoinf_close());
    if (rc) return rc;
    std::string out;
    for (const std::string& l : got->lines) out += l;
    while (!out.empty() && out.back() == ' ') out.pop_back();
    return put(dst, out);
}

// log [filename|status|type] [logname]: the state of the unnamed log, or of a
// named one; a closed log gives empty text.
int mf_log(const char*, char* dst) {
    char* t = gettok(prsestd);
    std::string what = t[0] ? t : "status";
    if (what != "filename" && what != "status" && what != "type") return notalow(what.c_str());
    t = gettok(prsestd);
    std::string name = t;
    if (gettok(prsestd)[0]) return error(198);
    const LogRec* r = name.empty() ? (log_m.fd ? &log_m : nullptr) : log_named(name.c_str());
    if (!r) return put(dst, "");
    if (what == "filename") return put(dst, r->filename);
    if (what == "type") return put(dst, r->type ? "ptag" : "text");
    return put(dst, r->status ? "on" : "off");
}

// properties pgmname: the words of the program's properties(); 111 when there
// is no such program.
int mf_properties(const char*, char* dst) {
    char* t = gettok(prsestd);
    if (!t[0] || tokisstr(t)) return error(198);
    std::string name = t;
    if (gettok(prsestd)[0]) return error(198);
    void* v = pgmfind(name.c_str(), sys_pgmclass, 1);
    if (!v) return error2(5, name.c_str());
    const PgmRec* p = static_cast<const PgmRec*>(v);
    return put(dst, std::string(p->properties, strnlen(p->properties, sizeof p->properties)));
}

// The normal form of an operator: L, F, D, S with their counts where above
// one, then a dot.
std::string opnorm(const Recipe& r) {
    std::string s;
    char b[32];
    auto part = [&](char c, int n) {
        s += c;
        if (n != 1) snprintf(b, sizeof b, "%d", n), s += b;
    };
    if (r.lag) part(r.lag > 0 ? 'L' : 'F', std::abs(r.lag));
    if (r.dorder) part('D', r.dorder);
    for (int k = 0; k < r.nseas; k++) part('S', r.seas[k]);
    return s.empty() ? s : s + ".";
}

// tsnorm string [, varname]: operators in normal form; with varname the string
// ends in a variable name, which is kept as typed.
int mf_tsnorm(const char*, char* dst) {
    char* t = gettok(prsestd);
    if (!t[0]) return error(198);
    std::string text = tokisstr(t) ? t + 1 : t;
    bool had;
    if (int rc = readoptions(&had)) return rc;
    int withvar = had ? findopt("varname", 7, 0) : 0;
    if (had)
        if (int rc = chkopt()) return rc;
    std::string ops = text, var;
    if (withvar) {
        size_t dot = text.rfind('.');
        ops = dot == std::string::npos ? "" : text.substr(0, dot);
        var = dot == std::string::npos ? text : text.substr(dot + 1);
        if (var.empty() || chkname(var.c_str(), 0)) return error2(2, text.c_str());
    }
    Recipe r;
    if (int rc = rcpnormalize(&r, ops.c_str())) return rc;
    return put(dst, opnorm(r) + var);
}

bool nametaken(const std::string& n) {
    if (sysfindvar(n.c_str())) return true;
    uint8_t was = s_outlev;
    s_outlev = 5; // the reserved-word test reports; nothing is shown here
    int reserved = chkreserved(n.c_str());
    s_outlev = was;
    return reserved != 0;
}

// permname suggestion [, length(#)]: the suggestion when no variable has that
// name, otherwise its first characters followed by the smallest number that
// makes a free name, all within the length (default 32).
int mf_permname(const char*, char* dst) {
    char* t = gettok(prsestd);
    if (!t[0] || tokisstr(t)) return error(198);
    std::string want = t;
    bool had;
    if (int rc = readoptions(&had)) return rc;
    int len = 32;
    if (had) {
        len = findopta("length", 1, 32);
        if (int rc = chkopt()) return rc;
        if (len < 1 || len > 32) return error(198);
    }
    if (chkname(want.c_str(), 0)) return error2(1, want.c_str());
    if (want.size() > static_cast<size_t>(len)) want.resize(static_cast<size_t>(len));
    if (!nametaken(want)) return put(dst, want);
    for (long k = 0; k < 100000000; k++) {
        std::string num = std::to_string(k);
        if (num.size() >= static_cast<size_t>(len)) break;
        std::string n = want.substr(0, static_cast<size_t>(len) - num.size()) + num;
        if (!nametaken(n)) return put(dst, n);
    }
    return errtext(110, "no free variable name found\n");
}

} // namespace

void link_more_macro_functions() {
    mac_fcn_hooks[MXF_LABEL] = mf_label;
    mac_fcn_hooks[MXF_DISPLAY] = mf_display;
    mac_fcn_hooks[MXF_LOG] = mf_log;
    mac_fcn_hooks[MXF_PROPERTIES] = mf_properties;
    mac_fcn_hooks[MXF_TSNORM] = mf_tsnorm;
    mac_fcn_hooks[MXF_PERMNAME] = mf_permname;
}

} // namespace korvu
