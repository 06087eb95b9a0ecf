// compress: the smallest storage type for each variable, applied in one pass.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "kernel/loop/brk.h"
#include "output/spout.h"

namespace korvu {

int compress_target(int v, uint8_t* to) {
    const uint8_t code = typlist[v - 1];
    *to = code;
    if (isstrtype(code)) {
        if (code <= 1) return 0;
        int32_t longest = 1;
        for (int i = 1; i <= nobs; i++) {
            if (kvpollstd()) return 1;
            int32_t len =
                static_cast<int32_t>(strnlen(reinterpret_cast<const char*>(dtaptr(v, i)), code));
            if (len == code) return 0;
            if (len > longest) longest = len;
        }
        *to = static_cast<uint8_t>(longest);
        return 0;
    }
    if (code < KV_INT) return 0; // byte and the old types stay
    uint8_t cand = KV_BYTE;
    for (int i = 1; i <= nobs; i++) {
        if (kvpollstd()) return 1;
        double x = korvu_data(v, i);
        if (x >= misval) continue;
        if (x != std::trunc(x) || dexpo(dbits(x)) > 30 || x < -2147483647.0 || x > 2147483620.0)
            return 0;
        int32_t iv = static_cast<int32_t>(x);
        if (cand == KV_BYTE && static_cast<uint32_t>(iv) + 127u > 227u) {
            cand = KV_INT;
            if (code == KV_INT) return 0;
        }
        if (cand == KV_INT && static_cast<uint32_t>(iv) + 32767u > 65507u) {
            cand = KV_LONG;
            if (code == KV_LONG || code == KV_FLOAT) return 0;
        }
    }
    if (cand < code) *to = cand;
    return 0;
}

// "%20s" -> "%5s", "%-20s" -> "%-5s"; other formats stay.
static void rescale_strfmt(char* fmt, int width) {
    const char* p = fmt;
    if (*p++ != '%') return;
    bool left = *p == '-';
    if (left) p++;
    if (*p < '0' || *p > '9') return;
    while (*p >= '0' && *p <= '9') p++;
    if (p[0] != 's' || p[1] != 0) return;
    snprintf(fmt, FMTLEN1, left ? "%%-%ds" : "%%%ds", width);
}

// Rewrites every column with the new types (each no wider than the old),
// from the first column to the last: each moves down to its new offset,
// converted cell by cell from the first, so none overwrites cells not yet
// read.
static void apply_types(const std::vector<uint8_t>& newcode) {
    colsync();
    int64_t to = 0;
    for (int v = 1; v <= nvar; v++) {
        const uint8_t oc = typlist[v - 1], nc = newcode[v - 1];
        uint8_t* src = colptr(v);
        uint8_t* dst = xtraptr + to * colstride;
        if (oc == nc) {
            if (dst != src) memmove(dst, src, static_cast<size_t>(nobs) * bytlenc(oc));
        } else {
            convert_cells(dst, nc, src, oc, nobs, false);
        }
        to += bytlenc(nc);
    }
    for (int v = 1; v <= nvar; v++) {
        if (typlist[v - 1] == newcode[v - 1]) continue;
        typlist[v - 1] = newcode[v - 1];
        if (isstrtype(newcode[v - 1])) rescale_strfmt(fmtname(v), newcode[v - 1]);
    }
    setmap();
}

int compress_vars(const int32_t* vars, int n, CompressChange* out, int* nout) {
    if (nout) *nout = 0;
    if (nvar == 0) return 3;
    if (nobs == 0) return 0;
    std::vector<int32_t> list;
    if (n > 0)
        list.assign(vars, vars + n);
    else
        for (int v = 1; v <= nvar; v++) list.push_back(v);
    std::vector<uint8_t> newcode(typlist, typlist + nvar);
    std::vector<CompressChange> changes;
    // int, long and float first, then double, then strings
    for (int pass = 0; pass < 3; pass++) {
        for (int32_t v : list) {
            const uint8_t code = typlist[v - 1];
            const bool mine = pass == 0   ? code >= KV_INT && code <= KV_FLOAT
                              : pass == 1 ? code == KV_DOUBLE
                                          : isstrtype(code);
            if (!mine || newcode[v - 1] != code) continue;
            uint8_t t;
            if (compress_target(v, &t)) return 1;
            if (t != code) {
                newcode[v - 1] = t;
                changes.push_back({v, code, t});
            }
        }
    }
    if (changes.empty()) return 0;
    apply_types(newcode);
    updata = 1;
    for (const CompressChange& c : changes) {
        char from[8];
        snprintf(from, sizeof from, "%s", typename_of(c.from));
        spoutptlf("{txt}%s was {res}%s{txt} now {res}%s\n", varname(c.v), from, typename_of(c.to));
    }
    if (out)
        for (size_t k = 0; k < changes.size(); k++) out[k] = changes[k];
    if (nout) *nout = static_cast<int>(changes.size());
    return 0;
}

} // namespace korvu
