// Writing the dataset file (`save`).
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/dta/dta.h"
#include "data/dta/dta_internal.h"
#include "data/labels/label.h"
#include "data/vars/char.h"
#include "data/vars/vartab.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

static int default_esample_var() {
    if (!esamplename[0]) return 0;
    return sysfindvar(esamplename);
}
int (*dta_esample_var)() = default_esample_var;

namespace {

// Output gathered in a block and written whole; the first failure sticks.
struct Out {
    int fd;
    std::vector<uint8_t> buf;
    size_t used = 0;
    int64_t flushed = 0; // bytes handed to the file before buf
    bool bad = false;
    int64_t pos() const { return flushed + static_cast<int64_t>(used); }
    void flush() {
        flushed += static_cast<int64_t>(used);
        if (!bad && used &&
            lkorvu_write(fd, buf.data(), static_cast<int64_t>(used)) != static_cast<int64_t>(used))
            bad = true;
        used = 0;
    }
    void put(const void* p, size_t n) {
        const auto* s = static_cast<const uint8_t*>(p);
        while (n) {
            if (used == buf.size()) flush();
            size_t k = std::min(n, buf.size() - used);
            std::memcpy(buf.data() + used, s, k);
            used += k, s += k, n -= k;
        }
    }
    void fixed(const char* text, size_t width) { // zero-padded field
        size_t n = strnlen(text, width);
        put(text, n);
        static const uint8_t zeros[128] = {};
        for (size_t left = width - n; left;) {
            size_t k = std::min(left, sizeof zeros);
            put(zeros, k);
            left -= k;
        }
    }
    void u8(uint8_t b) { put(&b, 1); }
    void i16(int16_t v) { put(&v, 2); }
    void i32(int32_t v) { put(&v, 4); }
    void i64(int64_t v) { put(&v, 8); }
    void tag(const char* t) { put(t, std::strlen(t)); }
};

// The tagged format 118: the map of section offsets, filled in at the end.
constexpr int MAPN = 14;
struct Tagged {
    int64_t map[MAPN] = {};
    int64_t mapat = 0;
};

void tagged_front(Out& out, Tagged& T, int nv, int32_t no, const char* label, const char* stamp) {
    out.tag("<korvu_dta><header><release>118</release><byteorder>");
    out.tag(native_order() == 2 ? "LSF" : "MSF");
    out.tag("</byteorder><K>");
    out.i16(static_cast<int16_t>(nv));
    out.tag("</K><N>");
    out.i64(no);
    out.tag("</N><label>");
    const size_t ln = std::strlen(label);
    out.i16(static_cast<int16_t>(ln));
    out.put(label, ln);
    out.tag("</label><timestamp>");
    out.u8(17);
    out.put(stamp, 17);
    out.tag("</timestamp></header>");
    T.map[1] = out.pos();
    out.tag("<map>");
    T.mapat = out.pos();
    for (int i = 0; i < MAPN; ++i) out.i64(0);
    out.tag("</map>");
    T.map[2] = out.pos();
    out.tag("<variable_types>");
    for (int v = 1; v <= nv; ++v) {
        const int c = typlist[v - 1];
        out.i16(static_cast<int16_t>(isstrtype(c) ? c : 65530 - (c - KV_BYTE)));
    }
    out.tag("</variable_types>");
    T.map[3] = out.pos();
    out.tag("<varnames>");
    for (int v = 1; v <= nv; ++v) out.fixed(varname(v), 129);
    out.tag("</varnames>");
    T.map[4] = out.pos();
    out.tag("<sortlist>");
    {
        int k = 0;
        for (; srtlist[k] && srtlist[k] <= nv && k < nv; ++k) out.i16(srtlist[k]);
        for (; k <= nv; ++k) out.i16(0);
    }
    out.tag("</sortlist>");
    T.map[5] = out.pos();
    out.tag("<formats>");
    for (int v = 1; v <= nv; ++v) out.fixed(fmtname(v), 57);
    out.tag("</formats>");
    T.map[6] = out.pos();
    out.tag("<value_label_names>");
    for (int v = 1; v <= nv; ++v) out.fixed(lblname(v), 129);
    out.tag("</value_label_names>");
    T.map[7] = out.pos();
    out.tag("<variable_labels>");
    for (int v = 1; v <= nv; ++v) {
        const char* l = ptrvarlab(v);
        out.fixed(l ? l : "", 321);
    }
    out.tag("</variable_labels>");
    T.map[8] = out.pos();
    out.tag("<characteristics>");
}

} // namespace

namespace {} // namespace

static bool saved_var(const char* obj, int nv) {
    if (std::strcmp(obj, "_dta") == 0) return true;
    int v = sysfindvar(obj);
    return v >= 1 && v <= nv;
}

int syssave(const char* fname, const SaveOpts& o) {
    if (nvar == 0 && !o.emptyok) return error(111);
    const int format = o.oldformat ? (o.midband ? 110 : 111) : (o.tagged ? 118 : 113);
    if (o.oldformat) {
        int bad = 0;
        char name[40];
        for (void* it = dmnext(nullptr, name, DM_VALLAB, nullptr); it;
             it = dmnext(it, name, DM_VALLAB, nullptr)) {
            if (vlmaxlen(static_cast<int32_t*>(it)) > 80) {
                errorf(459, "value label %s contains labels longer than 80 characters\n", name);
                ++bad;
            }
        }
        if (bad) {
            return errtext(459, "The older format cannot hold such labels; shorten them with label "
                                "define,\nmodify or save in the present format.\n");
        }
    }
    int nv = nvar;
    if (!o.all) {
        int ev = dta_esample_var ? dta_esample_var() : 0;
        if (ev >= 1 && ev <= nvar) {
            movevar(ev, nvar);
            nv = nvar - 1;
        }
    }
    if (format == 110)
        for (int v = 1; v <= nv; ++v)
            if (!cnv111to110vtype(typlist[v - 1])) {
                return errorf(459,
                              "variable %s is %s; the format holds strings of 128 characters "
                              "at most\n",
                              varname(v), typename_of(typlist[v - 1]));
            }
    if (nobs == 0) {
        c_outlev = 1;
        spout21("(note: dataset contains 0 observations)\n");
    }
    const int64_t width = nv ? mapi[nv - 1] + bytlenc(typlist[nv - 1]) : 0;
    // records go out a megabyte at a time: few system calls for large data
    const int64_t block = int64_t{1} << 20;
    int64_t bsize = 24000;
    if (width) {
        bsize = std::max<int64_t>(2 * width, (block / width) * width);
    }
    Out out;
    try {
        out.buf.resize(static_cast<size_t>(bsize + 2));
    } catch (...) {
        return error(909);
    }

    // The file is written under a temporary name in the same directory and
    // renamed over the target only when it is whole and on disk: a failure or
    // a break leaves an old file as it was.
    struct stat sb;
    const bool exists = stat(fname, &sb) == 0;
    if (exists && !o.replace) return fierr(602, fname);
    if (exists && (!S_ISREG(sb.st_mode) || access(fname, W_OK))) return fierr(608, fname);
    std::string tmpname = std::string(fname) + ".XXXXXX";
    int fd = mkstemp(tmpname.data());
    if (fd < 0) return fierr(603, fname);
    {
        mode_t um = umask(0);
        umask(um);
        fchmod(fd, exists ? (sb.st_mode & 07777) : (0666 & ~um));
    }
    // past a file-size limit a write fails instead of ending the process
    struct sigaction ign = {}, oldxfsz;
    ign.sa_handler = SIG_IGN;
    sigaction(SIGXFSZ, &ign, &oldxfsz);
    out.fd = fd;

    DtaHeader h;
    h.format = static_cast<uint8_t>(format);
    h.nvar = nv;
    h.nobs = nobs;
    if (format == 118)
        getstamp(h.stamp);
    else if (wrhdr(fd, &h, datalbl))
        out.bad = true;
    else
        out.flushed = 109;

    for (int v = 1; v <= nv && format != 118; ++v)
        out.u8(static_cast<uint8_t>(format == 110 ? cnv111to110vtype(typlist[v - 1])
                                                  : typlist[v - 1]));
    if (format != 118) {
        for (int v = 1; v <= nv; ++v) out.fixed(varname(v), 33);
        {
            int k = 0;
            for (; srtlist[k] && srtlist[k] <= nv && k < nv; ++k) out.i16(srtlist[k]);
            for (; k <= nv; ++k) out.i16(0);
        }
        for (int v = 1; v <= nv; ++v) out.fixed(fmtname(v), 12);
        for (int v = 1; v <= nv; ++v) out.fixed(lblname(v), 33);
        for (int v = 1; v <= nv; ++v) {
            const char* l = ptrvarlab(v);
            out.fixed(l ? l : "", 81);
        }
    }
    char obj[33], name[33];
    const char* text;
    const bool tagged = format == 118;
    Tagged T;
    if (tagged) tagged_front(out, T, nv, nobs, datalbl, h.stamp);
    for (const void* it = charnext(nullptr, obj, name, &text); it;
         it = charnext(it, obj, name, &text)) {
        if (!saved_var(obj, nv)) continue;
        size_t tl = std::strlen(text);
        if (tagged) {
            out.tag("<ch>");
            out.i32(static_cast<int32_t>(129 + 129 + tl + 1));
            out.fixed(obj, 129);
            out.fixed(name, 129);
            out.put(text, tl + 1);
            out.tag("</ch>");
            continue;
        }
        out.u8(1);
        out.i32(static_cast<int32_t>(33 + 33 + tl + 1));
        out.fixed(obj, 33);
        out.fixed(name, 33);
        out.put(text, tl + 1);
    }
    if (tagged) {
        out.tag("</characteristics>");
        T.map[9] = out.pos();
        out.tag("<data>");
    } else {
        out.u8(0);
        out.i32(0);
    }

    // The old formats know one missing value per type: extended missing
    // values are converted as the records are gathered, the data in memory
    // keep theirs. `extended` counts the cells that lost their letter.
    std::vector<std::pair<int32_t, int>> oldcells; // offset, type
    if (o.oldformat)
        for (int v = 1; v <= nv; ++v)
            if (isnumtype(typlist[v - 1]) && typlist[v - 1] >= KV_BYTE)
                oldcells.emplace_back(mapi[v - 1], typlist[v - 1]);
    int64_t extended = 0;
    if (width) {
        // a megabyte of records a write, gathered a block of records at a
        // time with one loop per variable over the block
        const int64_t per = dta_blockrecs(width);
        const int64_t cap = static_cast<int64_t>(out.buf.size() - 2) / width;
        colsync();
        for (int i = 1; i <= nobs && !out.bad;) {
            out.flush();
            const int k = static_cast<int>(std::min<int64_t>(cap, nobs - i + 1));
            for (int64_t r0 = 0; r0 < k; r0 += per) {
                const int64_t m = std::min<int64_t>(per, k - r0);
                uint8_t* rec = out.buf.data() + r0 * width;
                for (int v = 1; v <= nv; ++v) {
                    const int w = cellwidth(v);
                    dta_gather(rec + mapi[v - 1], width,
                               colptr(v) + (static_cast<int64_t>(i) - 1 + r0) * w, w, m);
                }
            }
            i += k;
            for (int r = 0; r < k && !oldcells.empty(); ++r) {
                uint8_t* rec = out.buf.data() + r * width;
                for (auto& [at, code] : oldcells) {
                    const double x = decode_cell(rec + at, code);
                    if (!ismissing(x)) continue;
                    if (x != misval) ++extended;
                    encode_cell(rec + at, code - 5, misval);
                }
            }
            out.used = static_cast<size_t>(k * width);
            if (kvpollstd()) break;
        }
    }
    if (tagged) {
        out.tag("</data>");
        T.map[10] = out.pos();
        out.tag("<strls></strls>");
        T.map[11] = out.pos();
        out.tag("<value_labels>");
    }
    if (o.label) {
        for (void* it = dmnext(nullptr, name, DM_VALLAB, nullptr); it;
             it = dmnext(it, name, DM_VALLAB, nullptr)) {
            bool inuse = false;
            for (int v = 1; v <= nv && !inuse; ++v) inuse = std::strcmp(lblname(v), name) == 0;
            if (!o.orphans && !inuse) continue;
            const auto* t = static_cast<const int32_t*>(it);
            const int64_t len = static_cast<int64_t>(vl_bytes(vl_n(t), vl_txtlen(t)));
            if (tagged) out.tag("<lbl>");
            out.i32(static_cast<int32_t>(len));
            out.fixed(name, tagged ? 132 : 36);
            out.put(t, static_cast<size_t>(len));
            if (tagged) out.tag("</lbl>");
        }
    }
    if (tagged) {
        out.tag("</value_labels>");
        T.map[12] = out.pos();
        out.tag("</korvu_dta>");
        T.map[13] = out.pos();
    }
    out.flush();
    if (tagged && !out.bad &&
        pwrite(fd, T.map, sizeof T.map, T.mapat) != static_cast<ssize_t>(sizeof T.map))
        out.bad = true;
    const bool broke = stopflag != 0;
    if (!out.bad && !broke && fsync(fd)) out.bad = true;
    if (close(fd)) out.bad = true;
    if (!out.bad && !broke && rename(tmpname.c_str(), fname)) out.bad = true;
    sigaction(SIGXFSZ, &oldxfsz, nullptr);
    if (out.bad || broke) {
        unlink(tmpname.c_str());
        if (broke) return 1;
        return fierr(699, fname);
    }
    if (!exists && o.replace) fierr(698, fname);
    fierr(697, fname);
    // data whose extended missing values the file could not hold are not
    // what was saved
    if (!extended) updata = 0;
    macresave("S_FN", fname);
    macresave("S_FNDATE", h.stamp);
    return 0;
}

int savecmd(int) {
    opable = 0;
    noptn = 0;
    char fn[FNLEN] = {};
    int rc = gettokfn(fn, sizeof fn);
    if (rc == 7199) return error(rc);
    bool opts = false;
    if (rc) {
        if (tokis(token, ","))
            opts = true;
        else if (token[0])
            return error(198);
        const char* s = macptr("S_FN");
        size_t n = s ? std::strlen(s) : 0;
        if (n < 1 || n > 498) return error(7197);
        std::snprintf(fn, sizeof fn, "%s", s);
    } else {
        gettok(prsestd);
        if (tokis(token, ","))
            opts = true;
        else if (token[0])
            return error(198);
    }
    if (opts)
        if (int prc = proption()) return prc;
    SaveOpts o;
    o.replace = findopt("replace", 7, 0);
    o.label = !findopt("nolabel", 7, 0);
    o.orphans = findopt("orphans", 7, 0);
    o.oldformat = findopt("oldformat", 9, 0);
    o.midband = findopt("midband", 7, 0);
    o.all = findopt("all", 3, 0);
    o.emptyok = findopt("emptyok", 5, 0);
    double ver = 0;
    if (findoptv("version", 7, &ver, 1, 0) != 1) ver = 0;
    if (int crc = chkopt()) return crc;
    if (ver && ver != 113 && ver != 118) return errtext(198, "option version() takes 113 or 118\n");
    if (ver == 118 && o.oldformat)
        return errtext(198, "options version(118) and oldformat may not be combined\n");
    o.tagged = ver == 118;
    std::string name = dflttype(fn);
    return syssave(name.c_str(), o);
}

} // namespace korvu
