// The match merge and the one-to-one merge of one using file. The result is
// planned first as a list of output rows, each naming its master record and
// its using record (or none); then every variable is gathered into that
// order. Among equal keys the master order holds: the k-th master record of a
// key goes with the k-th using record, and the side with fewer records
// repeats its last one.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/areahooks.h"
#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/combine/combine_internal.h"
#include "data/formats/formats.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "output/spout.h"

namespace korvu {

namespace {

// Where the codes of the merge variable come from.
enum : uint8_t {
    M_MASTER = 1, // master only
    M_USING = 2,  // using only
    M_BOTH = 3,   // both (with update: both, and equal)
    M_FILLED = 4, // update: a missing master value filled
    M_CONFLICT = 5,
};

struct Key {
    int32_t mv; // master variable
    int32_t uj; // using variable (0-based)
};

// Compares master row a with using row b on the keys.
int keycmp(const std::vector<Key>& keys, int64_t a, const DtaImage& img, int64_t b) {
    for (const Key& k : keys) {
        const int mc = typlist[k.mv - 1], uc = img.v[k.uj].code;
        int r = cell_compare(colptr(k.mv) + a * bytlenc(mc), mc,
                             img.v[k.uj].col.data() + b * bytlenc(uc), uc);
        if (r) return r;
    }
    return 0;
}
bool mastersame(const std::vector<Key>& keys, int64_t a, int64_t b) {
    for (const Key& k : keys) {
        const int mc = typlist[k.mv - 1], w = bytlenc(mc);
        if (cell_compare(colptr(k.mv) + a * w, mc, colptr(k.mv) + b * w, mc)) return false;
    }
    return true;
}
bool usingsame(const std::vector<Key>& keys, const DtaImage& img, int64_t a, int64_t b) {
    for (const Key& k : keys) {
        const int uc = img.v[k.uj].code, w = bytlenc(uc);
        const uint8_t* c = img.v[k.uj].col.data();
        if (cell_compare(c + a * w, uc, c + b * w, uc)) return false;
    }
    return true;
}

bool usingless(const std::vector<Key>& keys, const DtaImage& img, int64_t a, int64_t b) {
    for (const Key& k : keys) {
        const int uc = img.v[k.uj].code, w = bytlenc(uc);
        const uint8_t* c = img.v[k.uj].col.data();
        if (int r = cell_compare(c + a * w, uc, c + b * w, uc)) return r < 0;
    }
    return false;
}

std::string keynames(const std::vector<Key>& keys) {
    std::string s = keys.size() > 1 ? "variables" : "variable";
    for (const Key& k : keys) s += std::string(" ") + varname(k.mv);
    return s;
}

int notunique(const std::vector<Key>& keys, const char* side) {
    return errorf(459, "%s %s not uniquely identify observations in the\n%s data\n",
                  keynames(keys).c_str(), keys.size() > 1 ? "do" : "does", side);
}

// The using records put in key order, ties in file order. 0 or 1 (break).
int sortimage(DtaImage& img, const std::vector<Key>& keys) {
    const int64_t n = img.nobs;
    std::vector<int32_t> perm(static_cast<size_t>(n));
    for (int64_t i = 0; i < n; ++i) perm[i] = static_cast<int32_t>(i);
    bool sorted = true;
    for (int64_t i = 1; i < n && sorted; ++i) sorted = !usingless(keys, img, i, i - 1);
    if (sorted) return 0;
    if (kvpollstd()) return 1;
    std::stable_sort(perm.begin(), perm.end(),
                     [&](int32_t a, int32_t b) { return usingless(keys, img, a, b); });
    if (kvpollstd()) return 1;
    std::vector<uint8_t> tmp;
    for (DtaImageVar& v : img.v) {
        const int w = bytlenc(v.code);
        tmp.resize(v.col.size());
        for (int64_t i = 0; i < n; ++i)
            std::memcpy(tmp.data() + i * w, v.col.data() + static_cast<int64_t>(perm[i]) * w, w);
        v.col.swap(tmp);
    }
    return 0;
}

} // namespace

int merge_one(const char* file, const MergeOpts& o) {
    if (nvar == 0) return error(3);
    MergeCtl c;
    c.nolabel = o.nolabel;
    c.nonotes = o.nonotes;
    if (int rc = mersetup_read(c, file)) return rc;
    DtaImage& img = c.img;
    const int nu = static_cast<int>(img.v.size());
    auto findusing = [&](const char* name) {
        for (int j = 0; j < nu; ++j)
            if (!std::strcmp(img.v[j].name, name)) return j;
        return -1;
    };
    // keys, and both sides' order by them
    std::vector<Key> keys;
    for (int32_t v : o.keys) {
        int j = findusing(varname(v));
        if (j < 0) return errorf(111, "variable %s not found in using data\n", varname(v));
        keys.push_back({v, j});
    }
    // keep(): the named using variables and the keys
    if (!o.keepvars.empty()) {
        std::string list = o.keepvars;
        size_t p = 0;
        while (p < list.size()) {
            size_t e = list.find(' ', p);
            if (e == std::string::npos) e = list.size();
            std::string w = list.substr(p, e - p);
            p = e + 1;
            if (w.empty()) continue;
            bool any = false;
            for (int j = 0; j < nu; ++j)
                if (wildmatch(w.c_str(), img.v[j].name)) {
                    c.keep.push_back(j + 1);
                    any = true;
                }
            if (!any) return errorf(111, "variable %s not found in using data\n", w.c_str());
        }
        for (const Key& k : keys) c.keep.push_back(k.uj + 1);
        std::sort(c.keep.begin(), c.keep.end());
        c.keep.erase(std::unique(c.keep.begin(), c.keep.end()), c.keep.end());
    }
    if (int rc = mersetup_check(c)) return rc;
    if (!keys.empty()) {
        for (size_t k = 0; k < keys.size(); ++k)
            if (srtlist[k] != keys[k].mv) return errtext(5, "master data not sorted\n");
        if (o.sortusing) {
            if (int rc = sortimage(img, keys)) return rc;
            img.srt.clear();
            for (const Key& k : keys) img.srt.push_back(static_cast<int16_t>(k.uj + 1));
        }
        for (size_t k = 0; k < keys.size(); ++k)
            if (k >= img.srt.size() || img.srt[k] != keys[k].uj + 1)
                return errtext(5, "using data not sorted\n");
    }
    if (o.mergename) {
        if (sysfindvar(o.mergename) || findusing(o.mergename) >= 0)
            return errorf(110, "%s already defined\n", o.mergename);
        if (chkname(o.mergename, 1)) return 198;
    }

    // the plan
    const int64_t nm = nobs, nun = img.nobs;
    std::vector<int32_t> mrow, urow;
    std::vector<uint8_t> code;
    mrow.reserve(static_cast<size_t>(std::max(nm, nun)));
    urow.reserve(mrow.capacity());
    colsync();
    auto emit = [&](int64_t m, int64_t u, uint8_t k) {
        mrow.push_back(static_cast<int32_t>(m));
        urow.push_back(static_cast<int32_t>(u));
        code.push_back(k);
    };
    if (keys.empty()) {
        const int64_t r = o.nokeep ? nm : std::max(nm, nun);
        code.reserve(static_cast<size_t>(r));
        for (int64_t i = 0; i < r; ++i) {
            const bool hm = i < nm, hu = i < nun;
            emit(hm ? i : -1, hu ? i : -1, hm && hu ? M_BOTH : hm ? M_MASTER : M_USING);
        }
    } else {
        code.reserve(mrow.capacity());
        if (o.uniqmaster)
            for (int64_t i = 1; i < nm; ++i) {
                if (mastersame(keys, i - 1, i)) return notunique(keys, "master");
                if (kvpollstd()) return 1;
            }
        if (o.uniqusing)
            for (int64_t i = 1; i < nun; ++i) {
                if (usingsame(keys, img, i - 1, i)) return notunique(keys, "using");
                if (kvpollstd()) return 1;
            }
        int64_t i = 0, j = 0;
        while (i < nm || j < nun) {
            if (kvpollstd()) return 1;
            const int r = i >= nm ? 1 : j >= nun ? -1 : keycmp(keys, i, img, j);
            if (r < 0) {
                emit(i++, -1, M_MASTER);
            } else if (r > 0) {
                if (!o.nokeep) emit(-1, j, M_USING);
                ++j;
            } else {
                int64_t a = 1, b = 1;
                while (i + a < nm && mastersame(keys, i, i + a)) ++a;
                while (j + b < nun && usingsame(keys, img, j, j + b)) ++b;
                for (int64_t t = 0; t < std::max(a, b); ++t)
                    emit(i + std::min(t, a - 1), j + std::min(t, b - 1), M_BOTH);
                i += a;
                j += b;
            }
        }
    }
    const int64_t R = static_cast<int64_t>(mrow.size());
    if (int rc = mersetup_room(c, o.mergename ? 1 : 0, o.mergename ? 1 : 0, R)) return rc;

    // from here the data change, and the rest runs to its end
    mersetup_apply(c);
    colsync();
    std::vector<int32_t> from(static_cast<size_t>(nvar) + 1, -1); // using variable of each
    for (int j = 0; j < nu; ++j)
        if (c.map[j]) from[c.map[j]] = j;
    std::vector<bool> iskey(static_cast<size_t>(nvar) + 1, false);
    for (const Key& k : keys) iskey[k.mv] = true;
    int maxw = 1;
    for (int v = 1; v <= nvar; ++v) maxw = std::max(maxw, cellwidth(v));
    std::vector<uint8_t> tmp(static_cast<size_t>(std::max<int64_t>(R, 1) * maxw));
    for (int v = 1; v <= nvar; ++v) {
        const int t = typlist[v - 1], w = bytlenc(t);
        uint8_t* col = colptr(v);
        uint8_t* out = tmp.data();
        const bool fresh = v > c.nvar0;
        if (fresh) {
            for (int64_t r = 0; r < R; ++r) cell_setmissing(out + r * w, t);
        } else {
            for (int64_t r = 0; r < R; ++r) {
                if (mrow[r] >= 0)
                    std::memcpy(out + r * w, col + static_cast<int64_t>(mrow[r]) * w, w);
                else
                    cell_setmissing(out + r * w, t);
            }
        }
        const int j = from[v];
        if (j >= 0) {
            const DtaImageVar& u = img.v[j];
            const int uc = u.code, uw = bytlenc(uc);
            const uint8_t* src = u.col.data();
            const bool shared = !fresh && !iskey[v];
            for (int64_t r = 0; r < R; ++r) {
                if (urow[r] < 0) continue;
                const uint8_t* s = src + static_cast<int64_t>(urow[r]) * uw;
                uint8_t* d = out + r * w;
                if (mrow[r] < 0 || fresh) {
                    cell_convert(d, t, s, uc);
                } else if (shared && o.update) {
                    if (cell_ismissing(s, uc)) continue;
                    if (cell_ismissing(d, t)) {
                        cell_convert(d, t, s, uc);
                        if (code[r] == M_BOTH) code[r] = M_FILLED;
                    } else if (!cell_equal(d, t, s, uc)) {
                        code[r] = M_CONFLICT;
                        if (o.replace) cell_convert(d, t, s, uc);
                    }
                }
            }
        }
        std::memcpy(col, out, static_cast<size_t>(R * w));
    }
    nobs = static_cast<int32_t>(R);
    if (o.mergename) {
        sysflag = 1;
        alcvar(KV_BYTE);
        sysflag = 0;
        const int v = nvar;
        std::memset(varname(v), 0, NAMELEN1);
        std::snprintf(varname(v), NAMELEN1, "%s", o.mergename);
        std::memset(fmtname(v), 0, FMTLEN1);
        std::snprintf(fmtname(v), FMTLEN1, "%%8.0g");
        std::memset(lblname(v), 0, NAMELEN1);
        int8_t* col = static_cast<int8_t*>(static_cast<void*>(colptr(v)));
        int64_t count[6] = {};
        for (int64_t r = 0; r < R; ++r) {
            col[r] = static_cast<int8_t>(code[r]);
            ++count[code[r]];
        }
        // how many observations came from where: r(N_1) to r(N_5), r(N)
        if (dahooks.post_r) {
            char name[8];
            for (int k = 1; k <= 5; ++k) {
                std::snprintf(name, sizeof name, "N_%d", k);
                dahooks.post_r(name, static_cast<double>(count[k]));
            }
            dahooks.post_r("N", static_cast<double>(R));
        }
    }
    srtlist[0] = 0;
    updata = 1;
    i_nvar = nvar;
    return 0;
}

} // namespace korvu
