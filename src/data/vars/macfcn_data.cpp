// Extended macro functions that read the dataset: `type`, `format`,
// `value label`, `variable label`, `sortedby`, `data label` and `char`.
#include <cstring>
#include <string>

#include "app/link.h"
#include "data/area/dataarea.h"
#include "data/labels/label.h"
#include "data/vars/char.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/gettok.h"

namespace korvu {

static int put(char* dst, const char* s) {
    snprintf(dst, static_cast<size_t>(macrolen), "%s", s);
    return 0;
}

// The variable named next, for the functions that take one.
static int nextvar(int* v) {
    gettok(prsevar);
    if (!token[0] || tokisstr(token)) return error(198);
    int r = korvu_findvar(token, 1, 0);
    if (r < 0) return -r;
    *v = r;
    return 0;
}

// `value label` and `variable label`: the word "label" follows.
static int labelword() {
    gettok(prsestd);
    return cmdcmp(token, "label", 3) ? 0 : error(198);
}

static int mf_type(const char*, char* dst) {
    int v = 0;
    if (int rc = nextvar(&v)) return rc;
    return put(dst, typename_of(typlist[v - 1]));
}

static int mf_format(const char*, char* dst) {
    int v = 0;
    if (int rc = nextvar(&v)) return rc;
    return put(dst, fmtname(v));
}

static int mf_valuelabel(const char*, char* dst) {
    int v = 0;
    if (int rc = labelword()) return rc;
    if (int rc = nextvar(&v)) return rc;
    return put(dst, lblname(v));
}

static int mf_varlabel(const char*, char* dst) {
    int v = 0;
    if (int rc = labelword()) return rc;
    if (int rc = nextvar(&v)) return rc;
    const char* l = ptrvarlab(v);
    return put(dst, l ? l : "");
}

static int mf_sortedby(const char*, char* dst) {
    std::string s;
    for (int k = 0; srtlist && srtlist[k]; k++) {
        if (!s.empty()) s += ' ';
        s += varname(srtlist[k]);
    }
    return put(dst, s.c_str());
}

static int mf_data(const char*, char* dst) {
    if (int rc = labelword()) return rc;
    return put(dst, datalbl);
}

// char obj[name]: the characteristic; char obj[]: the names of those of obj.
static int mf_char(const char*, char* dst) {
    char* p = peektok_chr();
    const char* open = strchr(p, '[');
    const char* close = open ? strchr(open, ']') : nullptr;
    if (!open || !close) return error(198);
    std::string obj(static_cast<const char*>(p), open), name(open + 1, close);
    while (!obj.empty() && obj.back() == ' ') obj.pop_back();
    settok(const_cast<char*>(close + 1));
    if (obj != "_dta") {
        int v = korvu_findvar(obj.c_str(), 1, 0);
        if (v < 0) return -v;
        obj = varname(v);
    }
    if (!name.empty()) {
        charload(obj.c_str(), name.c_str(), dst, static_cast<size_t>(macrolen));
        return 0;
    }
    std::string names;
    char o[CHAR_NAMELEN1], n[CHAR_NAMELEN1];
    const char* text;
    for (const void* it = charnext(nullptr, o, n, &text); it; it = charnext(it, o, n, &text))
        if (obj == o) names += (names.empty() ? "" : " ") + std::string(n);
    return put(dst, names.c_str());
}

void link_macro_functions() {
    mac_fcn_hooks[MXF_TYPE] = mf_type;
    mac_fcn_hooks[MXF_FORMAT] = mf_format;
    mac_fcn_hooks[MXF_VALUELABEL] = mf_valuelabel;
    mac_fcn_hooks[MXF_VARLABEL] = mf_varlabel;
    mac_fcn_hooks[MXF_SORTEDBY] = mf_sortedby;
    mac_fcn_hooks[MXF_DATA] = mf_data;
    mac_fcn_hooks[MXF_CHAR] = mf_char;
}

} // namespace korvu
