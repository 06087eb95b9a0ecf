// Value-label tables, variable labels and the data label.
#include "data/labels/label.h"

#include <cmath>
#include <cstring>
#include <string>

#include "app/link.h"
#include "data/area/areahooks.h"
#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/formats/formats.h"
#include "data/vars/char.h"
#include "data/vars/varcmds.h"
#include "data/vars/varlist.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/scratch.h"
#include "kernel/macro/macro.h"
#include "output/spout.h"

namespace korvu {

char datalbl[VARLAB_MAX + 1];
int vl_error;

// The integer a labellable value is kept as.
static inline int32_t vlkey(double x) {
    return kvlong_of_kvdouble(x);
}
static inline double vlvalue(int32_t k) {
    return kvdouble_of_kvlong(k);
}

int32_t* vlfind(const char* name) {
    return static_cast<int32_t*>(dmfind(name, DM_VALLAB, nullptr));
}

int32_t* vlallocate(const char* name, int32_t n, int32_t txtlen) {
    if (n > VL_MAXENTRIES || n < 0 || txtlen < 0) {
        vl_error = 134;
        return nullptr;
    }
    auto* t = static_cast<int32_t*>(dmadd(name, DM_VALLAB, 0, vl_bytes(n, txtlen)));
    if (!t) {
        vl_error = 950;
        return nullptr;
    }
    t[0] = n;
    t[1] = txtlen;
    return t;
}

int vlable(int report, double x) {
    if (ismissing(x)) {
        int c = missing_letter(x);
        if (c >= 1 && c <= 26 && x == mkmissing(c)) return 0;
    } else if (x >= minlong && x <= maxlong && x == std::trunc(x)) {
        return 0;
    }
    if (report) {
        const char* t = safereforms("%18.0g", x);
        while (*t == ' ') ++t; // the value, not a column
        errsayf("may not label %s\n", t);
    }
    return 198;
}

int vlfindval(const int32_t* tbl, char* dst, int maxlen, double x) {
    if (!tbl || vlable(0, x)) return -1;
    const int32_t key = vlkey(x);
    const int32_t* val = vl_val(tbl);
    int lo = 0, hi = vl_n(tbl);
    while (lo < hi) {
        int mid = lo + (hi - lo) / 2;
        if (val[mid] < key)
            lo = mid + 1;
        else
            hi = mid;
    }
    if (lo < vl_n(tbl) && val[lo] == key) {
        if (dst) {
            const char* t = vl_txt(tbl) + vl_off(tbl)[lo];
            if (maxlen > VL_MAXTEXT) {
                copytext(dst, static_cast<size_t>(maxlen) + 1, t);
            } else {
                size_t n = strnlen(t, static_cast<size_t>(maxlen));
                std::memcpy(dst, t, n);
                dst[n] = 0;
            }
        }
        return lo;
    }
    return -(lo + 1);
}

int vlfindzval(const int32_t* tbl, char* dst, int maxlen, double x) {
    if (vlable(0, x)) return 0;
    return vlfindval(tbl, dst, maxlen, x) >= 0;
}

int32_t* vladdlab(int32_t* tbl, int position, const char* text, double x) {
    const int32_t n = vl_n(tbl), tl = vl_txtlen(tbl);
    const int64_t len = static_cast<int64_t>(std::strlen(text)) + 1;
    if (n + 1 > VL_MAXENTRIES || tl + len > INT32_MAX - 8 - 8 * int64_t{n + 1}) {
        vl_error = 134;
        return nullptr;
    }
    std::string name = dmname(tbl);
    auto* t = static_cast<int32_t*>(dmadd(name.c_str(), DM_VALLAB, 0, vl_bytes(n + 1, tl + len)));
    if (!t) {
        vl_error = 950;
        return nullptr;
    }
    t[0] = n + 1;
    t[1] = static_cast<int32_t>(tl + len);
    const int32_t *ooff = vl_off(tbl), *oval = vl_val(tbl);
    int32_t *noff = vl_off(t), *nval = vl_val(t);
    for (int i = 0, j = 0; i <= n; ++i) {
        if (i == position) {
            noff[i] = tl;
            nval[i] = vlkey(x);
        } else {
            noff[i] = ooff[j];
            nval[i] = oval[j];
            ++j;
        }
    }
    std::memcpy(vl_txt(t), vl_txt(tbl), static_cast<size_t>(tl));
    std::memcpy(vl_txt(t) + tl, text, static_cast<size_t>(len));
    dmrm(tbl);
    return vlfind(name.c_str());
}

int32_t* vlrmlab(int32_t* tbl, int index) {
    const int32_t n = vl_n(tbl), tl = vl_txtlen(tbl);
    if (index < 0 || index >= n) return tbl;
    const int32_t at = vl_off(tbl)[index];
    const int32_t len = static_cast<int32_t>(std::strlen(vl_txt(tbl) + at)) + 1;
    std::string name = dmname(tbl);
    auto* t = static_cast<int32_t*>(dmadd(name.c_str(), DM_VALLAB, 0, vl_bytes(n - 1, tl - len)));
    if (!t) {
        vl_error = 950;
        return nullptr;
    }
    t[0] = n - 1;
    t[1] = tl - len;
    int32_t *noff = vl_off(t), *nval = vl_val(t);
    for (int i = 0, j = 0; i < n; ++i) {
        if (i == index) continue;
        int32_t o = vl_off(tbl)[i];
        noff[j] = o > at ? o - len : o;
        nval[j] = vl_val(tbl)[i];
        ++j;
    }
    std::memcpy(vl_txt(t), vl_txt(tbl), static_cast<size_t>(at));
    std::memcpy(vl_txt(t) + at, vl_txt(tbl) + at + len, static_cast<size_t>(tl - at - len));
    dmrm(tbl);
    return vlfind(name.c_str());
}

int vlfindtxt(const int32_t* tbl, const char* text, double* x) {
    if (x) *x = misval;
    if (!tbl) return 0;
    for (int i = 0; i < vl_n(tbl); ++i)
        if (std::strcmp(vl_txt(tbl) + vl_off(tbl)[i], text) == 0) {
            if (x) *x = vlvalue(vl_val(tbl)[i]);
            return 1;
        }
    return 0;
}

int vlsearch(const char* name, const char* text, double* x) {
    return vlfindtxt(vlfind(name), text, x);
}

int vlgetcount(const int32_t* tbl) {
    return tbl ? vl_n(tbl) : 0;
}

int vlnmappings(const char* name) {
    const int32_t* t = vlfind(name);
    return t ? vl_n(t) : -1;
}

int vlgetmapping(const int32_t* tbl, int i, double* x, const char** text) {
    if (!tbl || i < 0 || i >= vl_n(tbl)) return 9270;
    if (x) *x = vlvalue(vl_val(tbl)[i]);
    if (text) *text = vl_txt(tbl) + vl_off(tbl)[i];
    return 0;
}

double vlgetofi(const int32_t* tbl, int i) {
    return vlvalue(vl_val(tbl)[i]);
}
const char* vlgetofz(const int32_t* tbl, int i) {
    return vl_txt(tbl) + vl_off(tbl)[i];
}

int vllist(const int32_t* tbl) {
    c_outlev = 1;
    for (int i = 0; i < vl_n(tbl); ++i) {
        if (kvpollstd()) return 1;
        spout21(safereforms("%12.0g", vlgetofi(tbl, i)));
        spout21(" ");
        spout21(vlgetofz(tbl, i));
        spout21("\n");
    }
    return 0;
}

int vlmaxlen(const int32_t* tbl) {
    int m = 0;
    for (int i = 0; tbl && i < vl_n(tbl); ++i) {
        int l = static_cast<int>(std::strlen(vlgetofz(tbl, i)));
        if (l > m) m = l;
    }
    return m;
}

static std::string valtext(double x) {
    if (ismissing(x)) {
        char b[3] = {'.', static_cast<char>('a' + missing_letter(x) - 1), 0};
        return b;
    }
    return std::to_string(static_cast<long long>(x));
}

int vlwrite(FILE* f, const int32_t* tbl) {
    const char* name = dmname(tbl);
    for (int i = 0; i < vl_n(tbl); ++i) {
        if (std::fprintf(f, "label define %s %s `\"%s\"'%s\n", name,
                         valtext(vlgetofi(tbl, i)).c_str(), vlgetofz(tbl, i),
                         i ? ", modify" : "") < 0)
            return 693;
    }
    return 0;
}

static inline uint32_t bswap32(uint32_t v) {
    return __builtin_bswap32(v);
}

void vlrevbytes(int32_t* tbl, int tonative) {
    auto* u = reinterpret_cast<uint32_t*>(tbl);
    const int64_t n = static_cast<int32_t>(tonative ? bswap32(u[0]) : u[0]);
    u[0] = bswap32(u[0]);
    u[1] = bswap32(u[1]);
    for (int64_t i = 0; i < 2 * n; ++i) u[2 + i] = bswap32(u[2 + i]);
}

int vlcheck(const int32_t* tbl, int64_t len) {
    if (len < 8) return 688;
    const int64_t n = tbl[0], tl = tbl[1];
    if (n < 0 || tl < 0 || len != 8 + 8 * n + tl) return 688;
    if (n > 0 && tl == 0) return 688;
    const char* txt = vl_txt(tbl);
    if (tl && txt[tl - 1]) return 688;
    for (int64_t i = 0; i < n; ++i) {
        int32_t o = vl_off(tbl)[i];
        if (o < 0 || o >= tl) return 688;
        if (i && vl_val(tbl)[i] <= vl_val(tbl)[i - 1]) return 688;
    }
    return 0;
}

int32_t* vloldvlab(const char* name, int n, const int16_t* vals, const char* texts8) {
    int64_t tl = 0;
    for (int i = 0; i < n; ++i) tl += static_cast<int64_t>(strnlen(texts8 + 8 * i, 8)) + 1;
    dmrm(vlfind(name));
    int32_t* t = vlallocate(name, 0, 0);
    for (int i = 0; t && i < n; ++i) {
        char text[9];
        size_t l = strnlen(texts8 + 8 * i, 8);
        std::memcpy(text, texts8 + 8 * i, l);
        text[l] = 0;
        int at = vlfindval(t, nullptr, 0, vals[i]);
        if (at >= 0) continue; // a repeated value: the first stands
        t = vladdlab(t, ~at, text, vals[i]);
    }
    return t;
}

int vallabinuse(const char* name) {
    for (int v = 1; v <= nvar; ++v)
        if (std::strcmp(lblname(v), name) == 0) return 1;
    return 0;
}

const char* vl_lookup(const char* name, double x) {
    const int32_t* t = vlfind(name);
    if (!t) return nullptr;
    int i = vlfindval(t, nullptr, 0, x);
    return i >= 0 ? vlgetofz(t, i) : nullptr;
}

// --- variable labels and the data label ------------------------------------------

const char* ptrvarlab(int v) {
    return static_cast<const char*>(dmfind(varname(v), DM_VARLAB, nullptr));
}

char* getvarlab(int v, char* buf) {
    const char* t = ptrvarlab(v);
    std::snprintf(buf, VARLAB_MAX + 1, "%s", t ? t : "");
    return buf;
}

char* getvarlabshort(int v, char* buf, int n) {
    const char* t = ptrvarlab(v);
    std::snprintf(buf, static_cast<size_t>(n) + 1, "%s", t ? t : "");
    return buf;
}

int putvarlab(int v, const char* text) {
    dmrm(dmfind0(varname(v), DM_VARLAB));
    size_t n = strnlen(text, VARLAB_MAX);
    if (!n) return 0;
    char* it = static_cast<char*>(dmadd(varname(v), DM_VARLAB, static_cast<int>(n + 1), n + 1));
    if (!it) return 950;
    std::memcpy(it, text, n);
    it[n] = 0;
    return 0;
}

void putdatalbl(const char* text) {
    size_t n = strnlen(text, VARLAB_MAX);
    std::memcpy(datalbl, text, n);
    datalbl[n] = 0;
}

void labels_clear(int vallabs) {
    dmzap(DM_VARLAB);
    dmzap(DM_CHAR);
    datalbl[0] = 0;
    if (vallabs) dmzap(DM_VALLAB);
}

static void drop_all_extra(int zap) {
    labels_clear(zap);
}

static int charvalue_hook(const char* var, const char* ch, char* dst, size_t n) {
    return charfcn(var, ch, dst, n);
}

// Labels and characteristics as the rest of the data side and the macro
// functions read them.
void link_labels() {
    dahooks.drop_all_extra = drop_all_extra;
    reforml_lookup = vl_lookup;
    mac_hooks.charvalue = charvalue_hook;
    varlabel_hook = [](int v) -> const char* {
        const char* l = ptrvarlab(v);
        return l ? l : "";
    };
    datalabel_hook = []() -> const char* { return datalbl; };
    datadate_hook = []() -> const char* {
        const char* d = macptr("S_FNDATE");
        return d ? d : "";
    };
    charget_hook = [](const char* obj, const char* name) -> const char* {
        static char buf[245];
        return charload(obj, name, buf, sizeof buf);
    };
    charset_hook = [](const char* obj, const char* name, const char* value) {
        return charsave(obj, name, value);
    };
}

} // namespace korvu
