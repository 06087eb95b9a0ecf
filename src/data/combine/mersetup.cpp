// mersetup: the using file read and matched against the data in memory.
// Everything is checked before anything changes; the changes then cannot
// fail: the partition is grown first for the widest result.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/combine/combine_internal.h"
#include "data/labels/label.h"
#include "data/vars/char.h"
#include "data/vars/vartab.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "output/spout.h"

namespace korvu {

// The type that holds both: strings the wider; numbers the larger, a long
// with a float going to double so that no integer is rounded.
static int promote(int m, int u) {
    if (isstrtype(m)) return std::max(m, u);
    if (m == u) return m;
    if (m == KV_DOUBLE || u == KV_DOUBLE) return KV_DOUBLE;
    if ((m == KV_LONG && u == KV_FLOAT) || (m == KV_FLOAT && u == KV_LONG)) return KV_DOUBLE;
    return std::max(m, u);
}

static bool isnote(const std::string& name) {
    if (name.compare(0, 4, "note") != 0 || name.size() == 4) return false;
    return name.find_first_not_of("0123456789", 4) == std::string::npos;
}

int mersetup_read(MergeCtl& c, const char* file) {
    c.nvar0 = nvar;
    return dta_readimage(file, c.img, !c.nolabel);
}

int mersetup_check(MergeCtl& c) {
    const int nu = static_cast<int>(c.img.v.size());
    c.map.assign(static_cast<size_t>(nu), 0);
    c.newtype.assign(typlist, typlist + c.nvar0);
    c.added.clear();
    std::vector<bool> taken(static_cast<size_t>(nu), c.keep.empty());
    for (int32_t k : c.keep) taken[k - 1] = true;
    for (int j = 0; j < nu; ++j) {
        if (!taken[j]) continue;
        const DtaImageVar& u = c.img.v[j];
        int v = sysfindvar(u.name);
        if (v > c.nvar0) v = 0;
        if (v) {
            const int mt = typlist[v - 1];
            if (isstrtype(mt) != isstrtype(u.code)) {
                errsayf("%s is %s in using data\n", u.name, typename_of(u.code));
                return error(109);
            }
            c.newtype[v - 1] = static_cast<uint8_t>(promote(c.newtype[v - 1], u.code));
            c.map[j] = v;
        } else {
            c.added.push_back(j);
        }
    }
    return 0;
}

int mersetup_room(MergeCtl& c, int extra_vars, int extra_width, int64_t rows) {
    int64_t width = usedwidth() + extra_width;
    for (int v = 1; v <= c.nvar0; ++v) width += bytlenc(c.newtype[v - 1]) - bytlenc(typlist[v - 1]);
    for (int32_t j : c.added) width += bytlenc(c.img.v[j].code);
    const int64_t vars = nvar + static_cast<int64_t>(c.added.size()) + extra_vars;
    if (vars >= maxmaxvar) return dataarea_error(900);
    if (rows > 2147483646) return dataarea_error(901);
    // one byte beyond the used width, as a new variable needs
    const int64_t dw = std::max<int64_t>(0, width + 1 - syslrecl);
    const int64_t dobs = std::max<int64_t>(0, rows - maxobs);
    if (dw > 0 || dobs > 0) {
        int rc = repart(static_cast<int32_t>(dw ? dw + 2 : 0), static_cast<int32_t>(dobs));
        if (rc && dw && !dobs) rc = repartvar(static_cast<int32_t>(dw));
        if (rc && dobs && !dw) rc = repartobs(static_cast<int32_t>(dobs));
        (void)rc;
    }
    if (width + 1 > syslrecl) return dataarea_error(902);
    if (vars >= maxvar) return dataarea_error(900);
    if (rows > maxobs) return dataarea_error(901);
    return 0;
}

void mersetup_apply(MergeCtl& c) {
    colsync();
    // types raised before any data move
    for (int v = 1; v <= c.nvar0; ++v)
        if (c.newtype[v - 1] != typlist[v - 1]) change_vartype(v, c.newtype[v - 1]);
    // new variables at the end, with their formats and labels
    for (int32_t j : c.added) {
        const DtaImageVar& u = c.img.v[j];
        alcvar(u.code);
        const int v = nvar;
        std::memset(varname(v), 0, NAMELEN1);
        std::snprintf(varname(v), NAMELEN1, "%s", u.name);
        std::memset(fmtname(v), 0, FMTLEN1);
        std::memcpy(fmtname(v), u.fmt, strnlen(u.fmt, FMTLEN1 - 1));
        std::memset(lblname(v), 0, NAMELEN1);
        std::snprintf(lblname(v), NAMELEN1, "%s", u.lbl);
        putvarlab(v, u.vlab);
        c.map[j] = v;
    }
    // characteristics: all of the new variables'; of the dataset those the
    // master lacks; notes joined behind the master's unless nonotes
    bool dtanotes = false;
    for (const DtaImageChar& ch : c.img.chars) {
        const bool note = isnote(ch.name);
        if (note && c.nonotes) continue;
        if (ch.obj == "_dta") {
            if (note) {
                dtanotes = true;
                continue;
            }
            if (!charfind("_dta", ch.name.c_str(), nullptr))
                charsave("_dta", ch.name.c_str(), ch.text.c_str());
            continue;
        }
        const int v = sysfindvar(ch.obj.c_str());
        if (v > c.nvar0) charsave(ch.obj.c_str(), ch.name.c_str(), ch.text.c_str());
    }
    if (dtanotes) {
        charpreproc();
        for (const DtaImageChar& ch : c.img.chars)
            if (ch.obj == "_dta" && isnote(ch.name))
                charsave("_dta", ch.name.c_str(), ch.text.c_str());
        charspostproc();
    }
    // value labels: definitions already in memory stay
    if (!c.nolabel)
        for (const DtaImageLab& l : c.img.labs)
            if (!vlfind(l.name.c_str()))
                dmsave(l.name.c_str(), DM_VALLAB, 0, l.tbl.data(), vl_bytes(l.tbl[0], l.tbl[1]));
    if (c.img.notloaded) {
        c_outlev = 1;
        spoutf("The maximum length of labels in this version of Korvu is %d\n", VL_MAXTEXT);
        spoutf("The value label%s mentioned %s not loaded.\n", c.img.notloaded > 1 ? "s" : "",
               c.img.notloaded > 1 ? "were" : "was");
    }
    for (auto& [from, to] : c.img.renamed) {
        c_outlev = 1;
        spoutf("Warning:  renamed %s to %s\n", from.c_str(), to.c_str());
    }
}

// ---------------------------------------------------------------------------
// Cells
// ---------------------------------------------------------------------------
void cell_setmissing(uint8_t* p, int code) {
    if (isstrtype(code))
        std::memset(p, 0, static_cast<size_t>(code));
    else
        encode_cell(p, code, misval);
}

bool cell_ismissing(const uint8_t* p, int code) {
    if (isstrtype(code)) return p[0] == 0;
    return decode_cell(p, code) >= misval;
}

void cell_convert(uint8_t* dst, int dc, const uint8_t* src, int sc) {
    if (dc == sc) {
        std::memcpy(dst, src, static_cast<size_t>(bytlenc(dc)));
    } else if (isstrtype(dc)) {
        const size_t n = strnlen(reinterpret_cast<const char*>(src), static_cast<size_t>(sc));
        const size_t k = std::min<size_t>(n, static_cast<size_t>(dc));
        std::memcpy(dst, src, k);
        std::memset(dst + k, 0, static_cast<size_t>(dc) - k);
    } else {
        encode_cell(dst, dc, decode_cell(src, sc));
    }
}

int cell_compare(const uint8_t* a, int ac, const uint8_t* b, int bc) {
    if (isstrtype(ac)) {
        const size_t la = strnlen(reinterpret_cast<const char*>(a), static_cast<size_t>(ac));
        const size_t lb = strnlen(reinterpret_cast<const char*>(b), static_cast<size_t>(bc));
        int r = std::memcmp(a, b, std::min(la, lb));
        if (r) return r < 0 ? -1 : 1;
        return la < lb ? -1 : la > lb ? 1 : 0;
    }
    const double x = decode_cell(a, ac), y = decode_cell(b, bc);
    return x < y ? -1 : x > y ? 1 : 0;
}

bool cell_equal(const uint8_t* a, int ac, const uint8_t* b, int bc) {
    return cell_compare(a, ac, b, bc) == 0;
}

} // namespace korvu
