// Reading the dataset file (`use`). The file is parsed and checked whole -
// header, variable table, characteristics, the data's extent, value labels -
// before the dataset in memory is touched; only then is memory cleared and
// the data read in blocks of whole records.
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/dta/dta.h"
#include "data/dta/dta_internal.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/labels/label.h"
#include "data/vars/char.h"
#include "data/vars/vartab.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "output/spout.h"

namespace korvu {

namespace {

// Sequential buffered reading of the sections before the data.
struct Reader {
    int fd;
    int64_t pos = 0; // file position of the next byte handed out
    std::vector<uint8_t> buf = std::vector<uint8_t>(65536);
    size_t at = 0, len = 0;
    int err = 0; // 692 on a failed read

    bool fill() {
        at = 0;
        int64_t r = korvu_read(fd, buf.data(), static_cast<int64_t>(buf.size()));
        if (r < 0) {
            err = 692;
            r = 0;
        }
        len = static_cast<size_t>(r);
        return len > 0;
    }
    // Exactly n bytes, or false (short).
    bool get(void* dst, int64_t n) {
        auto* d = static_cast<uint8_t*>(dst);
        while (n > 0) {
            if (at == len && !fill()) return false;
            size_t k = std::min<int64_t>(n, static_cast<int64_t>(len - at));
            std::memcpy(d, buf.data() + at, k);
            at += k, d += k, n -= static_cast<int64_t>(k), pos += static_cast<int64_t>(k);
        }
        return true;
    }
    bool skip(int64_t n) {
        while (n > 0) {
            if (at == len) {
                // far skips by seeking
                if (n > static_cast<int64_t>(buf.size())) {
                    if (lseek(fd, n, SEEK_CUR) < 0) return false;
                    pos += n;
                    return true;
                }
                if (!fill()) return false;
            }
            size_t k = std::min<int64_t>(n, static_cast<int64_t>(len - at));
            at += k, n -= static_cast<int64_t>(k), pos += static_cast<int64_t>(k);
        }
        return true;
    }
    bool seek(int64_t to) {
        if (lseek(fd, to, SEEK_SET) < 0) return false;
        pos = to;
        at = len = 0;
        return true;
    }
};

struct FVar {
    int code = 0; // present storage code
    int width = 0;
    int64_t off = 0; // in the file's record
    char name[33] = {};
    char fmt[13] = {};
    char lbl[33] = {};
    char vlab[82] = {};
};
struct FChar {
    std::string obj, name, text;
};
struct FLab {
    std::string name;
    std::vector<int32_t> tbl;
};

struct Parsed {
    DtaHeader h;
    bool swap = false;
    int fmt = 0;
    int64_t fsize = -1; // -1 when not a regular file
    std::vector<FVar> v;
    std::vector<int16_t> srt;
    std::vector<FChar> chars;
    std::vector<FLab> labs;
    int64_t width = 0, dataoff = 0;
    int notloaded = 0;
    std::vector<std::pair<std::string, std::string>> renamed;
};

std::string field(const uint8_t* p, size_t n) {
    size_t l = strnlen(reinterpret_cast<const char*>(p), n);
    return std::string(reinterpret_cast<const char*>(p), l);
}

void copyfield(char* dst, size_t dstsize, const uint8_t* p, size_t n) {
    size_t l = strnlen(reinterpret_cast<const char*>(p), std::min(n, dstsize - 1));
    std::memcpy(dst, p, l);
    dst[l] = 0;
}

// A variable name as a file may hold it: a letter or underscore, then
// letters, digits and underscores (and dots in formats up to 106, which the
// reader renames), not a reserved word.
bool filename_ok(const char* name, int fmt) {
    const auto alpha = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    };
    if (!alpha(name[0])) return false;
    for (const char* p = name + 1; *p; ++p)
        if (!alpha(*p) && !(*p >= '0' && *p <= '9') && !(*p == '.' && fmt <= 106)) return false;
    const uint8_t lev = s_outlev;
    s_outlev = 5; // the check speaks; the reader reports the file instead
    const int reserved = chkreserved(name);
    s_outlev = lev;
    return reserved == 0;
}

// The sections before the data. 0 or a code.
int parse_front(int fd, Parsed& P) {
    if (int rc = rdhdr(fd, &P.h)) return rc;
    P.fmt = P.h.format;
    P.swap = P.h.byteorder != native_order();
    struct stat sb;
    if (fstat(fd, &sb) == 0 && S_ISREG(sb.st_mode)) P.fsize = sb.st_size;
    Reader R{fd};
    R.pos = dta_hdrlen(P.fmt);
    const int nv = P.h.nvar;
    const int64_t nl = P.fmt >= 110 ? 33 : 9, fl = P.fmt >= 105 ? 12 : 7;
    const int64_t ll = P.fmt >= 107 ? 81 : 32;
    // The descriptor sections alone must fit in the file.
    const int64_t front = nv * (1 + nl + 2 + fl + nl + ll) + 2;
    if (P.fsize >= 0 && R.pos + front > P.fsize) return 688;
    P.v.resize(static_cast<size_t>(nv));
    std::vector<uint8_t> b(static_cast<size_t>(std::max<int64_t>(nv, 1) * 81 + 2));
    if (!R.get(b.data(), nv)) return R.err ? R.err : 688;
    int64_t off = 0;
    for (int i = 0; i < nv; ++i) {
        int code = dta_type_from_file(P.fmt, b[static_cast<size_t>(i)]);
        if (!code) return 688;
        P.v[i].code = code;
        P.v[i].width = bytlenc(code);
        P.v[i].off = off;
        off += P.v[i].width;
    }
    P.width = off;
    if (!R.get(b.data(), nv * nl)) return R.err ? R.err : 688;
    for (int i = 0; i < nv; ++i) copyfield(P.v[i].name, 33, b.data() + i * nl, nl);
    {
        std::set<std::string> seen;
        for (int i = 0; i < nv; ++i)
            if (!filename_ok(P.v[i].name, P.fmt) || !seen.insert(P.v[i].name).second) return 688;
    }
    if (!R.get(b.data(), 2 * (nv + 1))) return R.err ? R.err : 688;
    {
        // keys up to the terminator: variables of the file, each once
        std::vector<bool> used(static_cast<size_t>(nv) + 1, false);
        for (int i = 0; i < nv; ++i) {
            int k = rd16(b.data() + 2 * i, P.swap);
            if (k == 0) break;
            if (k < 0 || k > nv || used[k]) return 688;
            used[k] = true;
            P.srt.push_back(static_cast<int16_t>(k));
        }
    }
    if (!R.get(b.data(), nv * fl)) return R.err ? R.err : 688;
    for (int i = 0; i < nv; ++i) copyfield(P.v[i].fmt, 13, b.data() + i * fl, fl);
    if (!R.get(b.data(), nv * nl)) return R.err ? R.err : 688;
    for (int i = 0; i < nv; ++i) copyfield(P.v[i].lbl, 33, b.data() + i * nl, nl);
    if (!R.get(b.data(), nv * ll)) return R.err ? R.err : 688;
    for (int i = 0; i < nv; ++i) copyfield(P.v[i].vlab, 82, b.data() + i * ll, ll);

    if (P.fmt >= 105) {
        const int head = P.fmt >= 110 ? 5 : 3;
        const int64_t cn = P.fmt >= 110 ? 33 : 9;
        for (;;) {
            uint8_t hb[5];
            if (!R.get(hb, head)) return R.err ? R.err : 688;
            int64_t len =
                head == 5 ? rd32(hb + 1, P.swap) : static_cast<uint16_t>(rd16(hb + 1, P.swap));
            if (hb[0] == 0 && len == 0) break;
            if (len < 0) return 688;
            if (P.fsize >= 0 && R.pos + len > P.fsize) return 688;
            if (hb[0] != 1 || len < 2 * cn + 1) {
                if (!R.skip(len)) return R.err ? R.err : 688;
                continue;
            }
            const int64_t keep = std::min<int64_t>(len, 2 * cn + CHAR_MAXTEXT + 1);
            std::vector<uint8_t> p(static_cast<size_t>(keep));
            if (!R.get(p.data(), keep) || !R.skip(len - keep)) return R.err ? R.err : 688;
            FChar c;
            c.obj = field(p.data(), static_cast<size_t>(cn));
            c.name = field(p.data() + cn, static_cast<size_t>(cn));
            c.text = field(p.data() + 2 * cn, static_cast<size_t>(keep - 2 * cn));
            if (!c.obj.empty() && !c.name.empty()) P.chars.push_back(std::move(c));
        }
    }
    P.dataoff = R.pos;
    if (P.fsize >= 0 && (P.fsize - P.dataoff) / (P.width ? P.width : 1) < P.h.nobs && P.width)
        return 688;
    return 0;
}

// The value-label section behind the data: tables used by the kept variables.
// A short read or a length of 0 or less ends it. 0 or a code.
int parse_labels(int fd, Parsed& P, const std::set<std::string>& wanted, bool all = false) {
    Reader R{fd};
    if (!R.seek(P.dataoff + P.width * static_cast<int64_t>(P.h.nobs))) return 692;
    const auto left = [&](int64_t n) { return P.fsize < 0 || R.pos + n <= P.fsize; };
    if (P.fmt >= 106) {
        const int64_t nn = P.fmt >= 110 ? 36 : 12;
        for (;;) {
            uint8_t lb[4], nb[36];
            if (!R.get(lb, 4)) break;
            int64_t len = rd32(lb, P.swap);
            if (len <= 0) break;
            if (!R.get(nb, nn)) break;
            std::string name = field(nb, static_cast<size_t>(nn - 3));
            if (!left(len) || (P.fsize < 0 && len > (int64_t{1} << 26))) break;
            bool have = std::any_of(P.labs.begin(), P.labs.end(),
                                    [&](const FLab& l) { return l.name == name; });
            if ((!all && !wanted.count(name)) || have) {
                if (!R.skip(len)) break;
                continue;
            }
            if (len < 8) return 688;
            FLab L;
            L.name = name;
            L.tbl.resize(static_cast<size_t>((len + 3) / 4));
            if (!R.get(L.tbl.data(), len)) break;
            int32_t* t = L.tbl.data();
            if (P.swap) {
                t[0] = static_cast<int32_t>(__builtin_bswap32(static_cast<uint32_t>(t[0])));
                t[1] = static_cast<int32_t>(__builtin_bswap32(static_cast<uint32_t>(t[1])));
                if (t[0] < 0 || t[1] < 0 || len != 8 + 8 * int64_t{t[0]} + t[1]) return 688;
                for (int64_t i = 0; i < 2 * int64_t{t[0]}; ++i)
                    t[2 + i] =
                        static_cast<int32_t>(__builtin_bswap32(static_cast<uint32_t>(t[2 + i])));
            }
            if (vlcheck(t, len)) return 688;
            bool toolong = t[0] > VL_MAXENTRIES;
            for (int i = 0; i < t[0] && !toolong; ++i)
                toolong = std::strlen(vl_txt(t) + vl_off(t)[i]) > static_cast<size_t>(VL_MAXTEXT);
            if (toolong) {
                ++P.notloaded;
                continue;
            }
            P.labs.push_back(std::move(L));
        }
    } else {
        for (;;) {
            uint8_t hb[12];
            if (!R.get(hb, 12)) break;
            int n = rd16(hb, P.swap);
            if (n <= 0) break;
            std::string name = field(hb + 2, 10);
            if (!left(10 * int64_t{n})) break;
            std::vector<int16_t> vals(static_cast<size_t>(n));
            std::vector<char> txt(static_cast<size_t>(8 * n));
            if (!R.get(vals.data(), 2 * n) || !R.get(txt.data(), 8 * n)) break;
            bool have = std::any_of(P.labs.begin(), P.labs.end(),
                                    [&](const FLab& l) { return l.name == name; });
            if ((!all && !wanted.count(name)) || have) continue;
            if (P.swap)
                for (auto& x : vals)
                    x = static_cast<int16_t>(__builtin_bswap16(static_cast<uint16_t>(x)));
            // Build the modern table here, ascending, first of a repeated value kept.
            std::vector<int> idx(static_cast<size_t>(n));
            for (int i = 0; i < n; ++i) idx[i] = i;
            std::stable_sort(idx.begin(), idx.end(),
                             [&](int a, int b) { return vals[a] < vals[b]; });
            std::vector<int> keep;
            for (int i : idx)
                if (keep.empty() || vals[keep.back()] != vals[i]) keep.push_back(i);
            std::string text;
            std::vector<int32_t> offs, vv;
            for (int i : keep) {
                offs.push_back(static_cast<int32_t>(text.size()));
                vv.push_back(vals[i]);
                text.append(txt.data() + 8 * i, strnlen(txt.data() + 8 * i, 8));
                text.push_back(0);
            }
            const int64_t m = static_cast<int64_t>(keep.size());
            FLab L;
            L.name = name;
            L.tbl.assign(static_cast<size_t>(2 + 2 * m + (text.size() + 3) / 4), 0);
            L.tbl[0] = static_cast<int32_t>(m);
            L.tbl[1] = static_cast<int32_t>(text.size());
            std::copy(offs.begin(), offs.end(), L.tbl.begin() + 2);
            std::copy(vv.begin(), vv.end(), L.tbl.begin() + 2 + m);
            std::memcpy(L.tbl.data() + 2 + 2 * m, text.data(), text.size());
            P.labs.push_back(std::move(L));
        }
    }
    return R.err;
}

void default_format(int code, char* slot) {
    switch (code) {
    case KV_BYTE:
    case KV_INT: std::snprintf(slot, FMTLEN1, "%%8.0g"); break;
    case KV_LONG: std::snprintf(slot, FMTLEN1, "%%12.0g"); break;
    case KV_FLOAT: std::snprintf(slot, FMTLEN1, "%%9.0g"); break;
    case KV_DOUBLE: std::snprintf(slot, FMTLEN1, "%%10.0g"); break;
    default: std::snprintf(slot, FMTLEN1, "%%%ds", code); break;
    }
}

// Names of old files may hold dots: each becomes the first character of the
// list that gives a name not yet taken.
void rename_dots(Parsed& P) {
    static constexpr const char subst[] = "_1234567890ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    for (auto& fv : P.v) {
        if (!std::strchr(fv.name, '.')) continue;
        std::string old = fv.name;
        for (const char* c = subst; *c; ++c) {
            std::string cand = old;
            std::replace(cand.begin(), cand.end(), '.', *c);
            bool taken = std::any_of(P.v.begin(), P.v.end(),
                                     [&](const FVar& o) { return &o != &fv && cand == o.name; });
            if (!taken) {
                std::snprintf(fv.name, 33, "%s", cand.c_str());
                for (auto& ch : P.chars)
                    if (ch.obj == old) ch.obj = cand;
                P.renamed.emplace_back(old, cand);
                break;
            }
        }
    }
}

// The old missing coding to the present one, promoting where values lie in
// what are now missing codes. 0 or 903.
int fix_old_vartypes(int fmt) {
    bool sortcleared = false;
    for (int v = 1; v <= nvar; ++v) {
        const int code = typlist[v - 1];
        if (code < KV_OLDBYTE || code > KV_OLDDOUBLE) continue;
        int target = code + 5;
        double lim = 0;
        switch (code) {
        case KV_OLDBYTE: lim = maxbyte; break;
        case KV_OLDINT: lim = maxint; break;
        case KV_OLDLONG: lim = maxlong; break;
        default: break;
        }
        if (lim != 0) {
            for (int i = 1; i <= nobs; ++i) {
                double x = decode_cell(dtaptr(v, i), code);
                if (x > lim && x < misval) {
                    target = code == KV_OLDLONG ? KV_DOUBLE : code + 6;
                    break;
                }
            }
        }
        bool changed107 = false;
        if (code == KV_OLDDOUBLE && fmt <= 107) {
            for (int i = 1; i <= nobs; ++i) {
                uint8_t* p = dtaptr(v, i);
                double x;
                std::memcpy(&x, p, 8);
                if (x == misval_107) {
                    std::memcpy(p, &misval, 8);
                    changed107 = true;
                }
            }
        }
        if (changed107 && !sortcleared) {
            bool key = false;
            for (int k = 0; srtlist[k]; ++k) key = key || srtlist[k] == v;
            if (key) {
                c_outlev = 1;
                spout21("Warning:  old-format data was sorted by ");
                for (int k = 0; srtlist[k]; ++k) spoutf("%s ", varname(srtlist[k]));
                spout21("\n");
                spout21("due to changes in Korvu, the sort information had to be cleared\n");
                spout21("in this case; you must reissue the sort command if you care\n");
                srtlist[0] = 0;
                sortcleared = true;
            }
        }
        if (bytlenc(target) != bytlenc(code)) {
            if (change_vartype(v, target)) return 903;
            continue;
        }
        for (int i = 1; i <= nobs; ++i) {
            uint8_t* p = dtaptr(v, i);
            encode_cell(p, target, decode_cell(p, code));
        }
        typlist[v - 1] = static_cast<uint8_t>(target);
    }
    return 0;
}

} // namespace

static void clear_dataset() {
    drop_all(0);
    labels_clear(1);
}

// Opens the file; one of the newer formats is rebuilt in memory first and
// *fd is then that image.
static int openfile(const char* fname, int* fd) {
    *fd = open(fname, O_RDONLY);
    if (*fd < 0) return errno == ENOENT ? 601 : 603;
    uint8_t first = 0;
    if (pread(*fd, &first, 1, 0) == 1 && dta_newer_kind(&first, 1)) {
        int img = -1;
        int rc = dta_newer_image(*fd, &img);
        close(*fd);
        *fd = -1;
        if (rc) return rc;
        *fd = img;
    }
    return 0;
}

static int report(int rc, const char* fname) {
    if (rc == 6101) {
        return errorf(610, "file %s from more recent version of Korvu\n", fname);
    }
    if (rc >= 900 && rc < 1100) return dataarea_error(rc);
    if (rc == 1) return 1;
    return fierr(rc, fname);
}

// Everything after the front sections are parsed: the rest of the load.
static int load(int fd, Parsed& P, const UseOpts& o, const char* fname) {
    // kept variables
    std::vector<int32_t> keep;
    if (o.nkeep > 0)
        keep.assign(o.keep, o.keep + o.nkeep);
    else
        for (int i = 1; i <= P.h.nvar; ++i) keep.push_back(i);
    for (int32_t k : keep)
        if (k < 1 || k > P.h.nvar) return 198;
    std::set<std::string> wanted;
    if (o.label)
        for (int32_t k : keep)
            if (P.v[k - 1].lbl[0] && isnumtype(P.v[k - 1].code)) wanted.insert(P.v[k - 1].lbl);
    if (int rc = parse_labels(fd, P, wanted, o.label && o.orphans)) return rc;
    if (P.fmt <= 106) rename_dots(P);

    // observations wanted
    int64_t o1 = std::max<int64_t>(1, o.obs1), o2 = std::min<int64_t>(P.h.nobs, o.obs2);
    const int64_t nwant = o2 >= o1 ? o2 - o1 + 1 : 0;
    int64_t kw = 0;
    for (int32_t k : keep) kw += P.v[k - 1].width;
    if (static_cast<int64_t>(keep.size()) >= maxmaxvar) return 900;
    {
        Layout L;
        int64_t w = kw + 2 + (kw & 1);
        if (!layout_for(std::max<int64_t>(w, 4), L)) return 902;
        if (!o.useif && L.n <= nwant) return 901;
    }

    // From here the dataset is replaced.
    clear_dataset();
    std::vector<uint8_t> codes;
    for (int32_t k : keep) codes.push_back(static_cast<uint8_t>(P.v[k - 1].code));
    if (P.fmt < 112) map_vartypes_to_old(codes.data(), static_cast<int>(codes.size()));
    for (size_t j = 0; j < keep.size(); ++j) {
        if (int rc = alcvar(codes[j])) {
            clear_dataset();
            return rc >= 9000 ? 902 : rc;
        }
        const FVar& f = P.v[keep[j] - 1];
        int v = static_cast<int>(j) + 1;
        std::memset(varname(v), 0, NAMELEN1);
        std::snprintf(varname(v), NAMELEN1, "%s", f.name);
        std::memset(fmtname(v), 0, FMTLEN1);
        if (setvarfmt(fmtname(v), f.fmt, f.code)) default_format(f.code, fmtname(v));
        std::memset(lblname(v), 0, NAMELEN1);
        if (isnumtype(f.code)) std::snprintf(lblname(v), NAMELEN1, "%s", f.lbl);
        if (putvarlab(v, f.vlab)) {
            clear_dataset();
            return 950;
        }
    }
    // sort order by the kept numbering; the first key not kept ends it
    {
        int n = 0;
        for (int16_t k : P.srt) {
            auto it = std::find(keep.begin(), keep.end(), k);
            if (it == keep.end()) break;
            srtlist[n++] = static_cast<int16_t>(it - keep.begin() + 1);
        }
        srtlist[n] = 0;
    }
    putdatalbl(P.h.label);
    for (auto& c : P.chars) {
        if (c.obj != "_dta" && !sysfindvar(c.obj.c_str())) continue;
        if (charsave(c.obj.c_str(), c.name.c_str(), c.text.c_str())) {
            clear_dataset();
            return 950;
        }
    }
    for (auto& l : P.labs) {
        if (!dmsave(l.name.c_str(), DM_VALLAB, 0, l.tbl.data(), vl_bytes(l.tbl[0], l.tbl[1]))) {
            clear_dataset();
            return 950;
        }
    }

    // data
    if (!o.useif && nwant > maxobs) {
        if (int rc = repartobs(static_cast<int32_t>(nwant - maxobs))) {
            clear_dataset();
            return rc >= 9000 ? 901 : rc;
        }
    }
    // The records of a block are scattered into the columns of the kept
    // variables, one loop per variable over the block.
    struct Cell {
        int32_t v;   // variable in memory
        int64_t src; // offset in the file's record
        int32_t w;
        bool num, swap;
    };
    std::vector<Cell> cells;
    for (size_t j = 0; j < keep.size(); ++j) {
        const FVar& f = P.v[keep[j] - 1];
        const int w = bytlenc(codes[j]);
        const bool num = isnumtype(codes[j]) != 0;
        cells.push_back({static_cast<int32_t>(j + 1), f.off, w, num, P.swap && num && w > 1});
    }
    // observations nobs+1 .. nobs+k from k records
    auto scatter = [&](const uint8_t* recs, int64_t k) {
        for (const Cell& c : cells)
            dta_scatter(colptr(c.v) + static_cast<int64_t>(nobs) * c.w, c.w, c.num, c.swap,
                        recs + c.src, P.width, k);
    };
    colsync();
    const int64_t W = P.width;
    if (W > 0 && nwant > 0) {
        const int64_t per = dta_blockrecs(W);
        std::vector<uint8_t> buf(static_cast<size_t>(per * W));
        if (lseek(fd, P.dataoff + (o1 - 1) * W, SEEK_SET) < 0) {
            clear_dataset();
            return 692;
        }
        int64_t left = nwant;
        while (left > 0) {
            const int64_t k = std::min(per, left);
            int64_t r = lkorvu_read(fd, buf.data(), k * W);
            if (r != k * W) {
                clear_dataset();
                return r < 0 ? 692 : 688;
            }
            if (!o.useif) {
                if (nobs + k > maxobs) {
                    if (int rc = repartobs(static_cast<int32_t>(nobs + k - maxobs))) {
                        clear_dataset();
                        return rc >= 9000 ? 901 : rc;
                    }
                }
                scatter(buf.data(), k);
                nobs += static_cast<int32_t>(k);
            } else {
                for (int64_t j = 0; j < k; ++j) {
                    if (nobs >= maxobs) {
                        if (int rc = repartobs(1)) {
                            clear_dataset();
                            return rc >= 9000 ? 901 : rc;
                        }
                    }
                    scatter(buf.data() + j * W, 1);
                    ++nobs;
                    if (xeq(&ifpgm, nobs) == 0) --nobs;
                }
            }
            left -= k;
            if (kvpollstd()) {
                clear_dataset();
                return 1;
            }
        }
    }
    for (auto& [from, to] : P.renamed) {
        c_outlev = 1;
        spoutf("Warning:  renamed %s to %s\n", from.c_str(), to.c_str());
    }
    if (P.fmt < 112) {
        if (int rc = fix_old_vartypes(P.fmt)) {
            clear_dataset();
            return rc;
        }
    }
    dta_newer_notes();
    if (P.notloaded) {
        c_outlev = 1;
        spoutf("The maximum length of labels in this version of Korvu is %d\n", VL_MAXTEXT);
        spoutf("The value label%s mentioned %s not loaded.\n", P.notloaded > 1 ? "s" : "",
               P.notloaded > 1 ? "were" : "was");
    }
    if (datalbl[0]) {
        c_outlev = 1;
        spoutf("(%s)\n", datalbl);
    }
    updata = 0;
    std::snprintf(filesp, sizeof filesp, "%s", fname);
    macresave("S_FN", fname);
    macresave("S_FNDATE", P.h.stamp);
    return 0;
}

int dta_use(const char* fname, const UseOpts& o) {
    int fd;
    if (int rc = openfile(fname, &fd)) return report(rc, fname);
    Parsed P;
    int rc = parse_front(fd, P);
    if (!rc) rc = load(fd, P, o, fname);
    close(fd);
    return rc ? report(rc, fname) : 0;
}

// The cells of an old-format numeric column in the present coding, promoted
// as `use` promotes them.
static void modernize_column(DtaImageVar& iv, int oldcode, int fmt, int64_t n) {
    int target = oldcode + 5;
    double lim = oldcode == KV_OLDBYTE   ? maxbyte
                 : oldcode == KV_OLDINT  ? maxint
                 : oldcode == KV_OLDLONG ? maxlong
                                         : 0;
    const int ow = bytlenc(oldcode);
    uint8_t* p = iv.col.data();
    if (lim != 0)
        for (int64_t i = 0; i < n; ++i) {
            double x = decode_cell(p + i * ow, oldcode);
            if (x > lim && x < misval) {
                target = oldcode == KV_OLDLONG ? KV_DOUBLE : oldcode + 6;
                break;
            }
        }
    const int nw = bytlenc(target);
    std::vector<uint8_t> out(static_cast<size_t>(n * nw));
    for (int64_t i = 0; i < n; ++i) {
        double x;
        if (oldcode == KV_OLDDOUBLE && fmt <= 107) {
            std::memcpy(&x, p + i * ow, 8);
            if (x == misval_107)
                x = misval;
            else
                x = decode_cell(p + i * ow, oldcode);
        } else {
            x = decode_cell(p + i * ow, oldcode);
        }
        encode_cell(out.data() + i * nw, target, x);
    }
    iv.col.swap(out);
    iv.code = static_cast<uint8_t>(target);
}

int dta_readimage(const char* fname, DtaImage& out, bool labels) {
    int fd;
    if (int rc = openfile(fname, &fd)) return report(rc, fname);
    Parsed P;
    int rc = parse_front(fd, P);
    if (!rc && labels) rc = parse_labels(fd, P, {}, true);
    if (rc) {
        close(fd);
        return report(rc, fname);
    }
    if (P.fmt <= 106) rename_dots(P);
    const int nv = P.h.nvar;
    const int64_t n = P.h.nobs;
    out.h = P.h;
    out.nobs = n;
    out.v.assign(static_cast<size_t>(nv), DtaImageVar{});
    std::vector<uint8_t> codes;
    for (auto& f : P.v) codes.push_back(static_cast<uint8_t>(f.code));
    if (P.fmt < 112) map_vartypes_to_old(codes.data(), nv);
    for (int j = 0; j < nv; ++j) {
        const FVar& f = P.v[j];
        DtaImageVar& iv = out.v[j];
        std::memcpy(iv.name, f.name, 33);
        iv.code = static_cast<uint8_t>(f.code);
        if (setvarfmt(iv.fmt, f.fmt, f.code)) default_format(f.code, iv.fmt);
        if (isnumtype(f.code)) std::memcpy(iv.lbl, f.lbl, 33);
        std::memcpy(iv.vlab, f.vlab, 82);
        iv.col.resize(static_cast<size_t>(n * f.width));
    }
    out.srt = P.srt;
    for (auto& c : P.chars) out.chars.push_back({c.obj, c.name, c.text});
    for (auto& l : P.labs) out.labs.push_back({l.name, std::move(l.tbl)});
    out.notloaded = P.notloaded;
    out.renamed = P.renamed;
    const int64_t W = P.width;
    if (W > 0 && n > 0) {
        const int64_t per = dta_blockrecs(W);
        std::vector<uint8_t> buf(static_cast<size_t>(per * W));
        if (lseek(fd, P.dataoff, SEEK_SET) < 0) rc = 692;
        for (int64_t done = 0; !rc && done < n;) {
            const int64_t k = std::min(per, n - done);
            int64_t r = lkorvu_read(fd, buf.data(), k * W);
            if (r != k * W) {
                rc = r < 0 ? 692 : 688;
                break;
            }
            for (int j = 0; j < nv; ++j) {
                const FVar& f = P.v[j];
                const int w = f.width;
                const bool num = isnumtype(f.code) != 0;
                dta_scatter(out.v[j].col.data() + done * w, w, num, P.swap && num && w > 1,
                            buf.data() + f.off, W, k);
            }
            done += k;
            if (kvpollstd()) rc = 1;
        }
    }
    close(fd);
    if (rc) {
        out.v.clear();
        return report(rc, fname);
    }
    if (P.fmt < 112)
        for (int j = 0; j < nv; ++j)
            if (isnumtype(codes[j])) modernize_column(out.v[j], codes[j], P.fmt, n);
    return 0;
}

int dta_readnames(const char* fname, DtaNames& out) {
    int fd;
    if (int rc = openfile(fname, &fd)) return report(rc, fname);
    Parsed P;
    int rc = parse_front(fd, P);
    close(fd);
    if (rc) return report(rc, fname);
    out.names.assign(static_cast<size_t>(P.h.nvar) * 33 + 33, 0);
    out.types.assign(static_cast<size_t>(P.h.nvar) + 1, 0);
    if (P.fmt <= 106) rename_dots(P);
    for (int i = 0; i < P.h.nvar; ++i) {
        std::memcpy(out.names.data() + 33 * i, P.v[i].name, 33);
        out.types[i] = static_cast<uint8_t>(P.v[i].code);
    }
    out.nobs = P.h.nobs;
    return 0;
}

} // namespace korvu
