// Reading delimited text: the scanner, type guessing, names, and the load.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/io/io.h"
#include "data/labels/label.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "output/spout.h"

namespace korvu {

namespace {

// ---------------------------------------------------------------------------
// The scanner: records of fields over the mapped text
// ---------------------------------------------------------------------------
struct Field {
    const char* b;
    const char* e;
    uint8_t quoted; // was in double quotes
    uint8_t esc;    // holds a doubled quote
};

struct Scan {
    const char* p;
    const char* end;
    bool stop[256]; // delimiter or line end
    bool isdelim[256];
    int64_t line = 1; // physical line at p
    int64_t errline = 0;
    const char* errwhat = nullptr;
};

void scan_init(Scan& s, const char* b, const char* e, const std::string& delims) {
    s.p = b;
    s.end = e;
    std::memset(s.stop, 0, sizeof s.stop);
    std::memset(s.isdelim, 0, sizeof s.isdelim);
    for (unsigned char c : delims) s.isdelim[c] = s.stop[c] = true;
    s.stop[static_cast<unsigned char>('\n')] = s.stop[static_cast<unsigned char>('\r')] = true;
    s.line = 1;
}

// One record into f: 1, 0 at the end of the text, -1 malformed (errline and
// errwhat set). Blank lines are skipped; *recline is the line the record
// starts on.
int next_record(Scan& s, std::vector<Field>& f, int64_t* recline) {
    f.clear();
    const char* end = s.end;
    for (;;) {
        if (s.p >= end) return 0;
        if (*s.p == '\n') {
            ++s.line, ++s.p;
            continue;
        }
        if (*s.p == '\r') {
            ++s.p;
            if (s.p < end && *s.p == '\n') ++s.p;
            ++s.line;
            continue;
        }
        break;
    }
    *recline = s.line;
    const bool spdelim = s.isdelim[static_cast<unsigned char>(' ')];
    for (;;) {
        const char* q = s.p;
        if (!spdelim)
            while (q < end && *q == ' ') ++q;
        Field fl;
        if (q < end && *q == '"') {
            const int64_t startline = s.line;
            const char* b = q + 1;
            const char* r = b;
            bool esc = false;
            for (;;) {
                while (r < end && *r != '"') {
                    if (*r == '\n') ++s.line;
                    ++r;
                }
                if (r >= end) {
                    s.errline = startline;
                    s.errwhat = "a quoted field is not closed before the end of the file";
                    return -1;
                }
                if (r + 1 < end && r[1] == '"') {
                    esc = true;
                    r += 2;
                    continue;
                }
                break;
            }
            fl = {b, r, 1, static_cast<uint8_t>(esc)};
            q = r + 1;
            if (!spdelim)
                while (q < end && *q == ' ') ++q;
            if (q < end && !s.stop[static_cast<unsigned char>(*q)]) {
                s.errline = s.line;
                s.errwhat = "text follows the closing quote of a field";
                return -1;
            }
        } else {
            const char* r = q;
            while (r < end && !s.stop[static_cast<unsigned char>(*r)]) ++r;
            const char* e2 = r;
            if (!spdelim)
                while (e2 > q && e2[-1] == ' ') --e2;
            fl = {q, e2, 0, 0};
            q = r;
        }
        f.push_back(fl);
        if (q >= end) {
            s.p = end;
            return 1;
        }
        if (s.isdelim[static_cast<unsigned char>(*q)]) {
            s.p = q + 1;
            if (s.p >= end) { // a delimiter closing the file: one more empty field
                f.push_back({end, end, 0, 0});
                return 1;
            }
            continue;
        }
        if (*q == '\r') {
            ++q;
            if (q < end && *q == '\n') ++q;
        } else {
            ++q;
        }
        ++s.line;
        s.p = q;
        return 1;
    }
}

// Bytes of a field's text as stored: doubled quotes count once, and Latin-1
// bytes above 127 become two bytes of UTF-8.
int64_t textlen(const Field& f, bool latin1) {
    if (!f.esc && !latin1) return f.e - f.b;
    int64_t n = 0;
    for (const char* p = f.b; p < f.e; ++p) {
        if (f.esc && *p == '"' && p + 1 < f.e && p[1] == '"') ++p;
        n += (latin1 && static_cast<unsigned char>(*p) >= 0x80) ? 2 : 1;
    }
    return n;
}

// The field's text into out (reused; no allocation once it is large enough).
void fieldtext(const Field& f, bool latin1, std::string& out) {
    out.clear();
    if (!f.esc && !latin1) {
        out.append(f.b, f.e);
        return;
    }
    for (const char* p = f.b; p < f.e; ++p) {
        if (f.esc && *p == '"' && p + 1 < f.e && p[1] == '"') ++p;
        unsigned char c = static_cast<unsigned char>(*p);
        if (latin1 && c >= 0x80) {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(c);
        }
    }
}

// Copies at most w bytes of text into a cell of w bytes, zero-padded; a cut
// never splits a UTF-8 character.
void put_cell(uint8_t* dst, int w, const char* t, int64_t n) {
    if (n > w) {
        n = w;
        while (n > 0 && (static_cast<unsigned char>(t[n]) & 0xC0) == 0x80) --n;
    }
    std::memcpy(dst, t, static_cast<size_t>(n));
    if (n < w) std::memset(dst + n, 0, static_cast<size_t>(w - n));
}

// ---------------------------------------------------------------------------
// Per-column facts gathered by the first scan
// ---------------------------------------------------------------------------
struct Stat {
    bool text = false;   // a field that is not a number nor a missing marker
    bool anynum = false; // a number seen
    bool allint = true;
    bool floatok = true;
    double lo = 0, hi = 0;
    int64_t maxlen = 0;
};

void note_field(Stat& st, const Field& f, bool latin1) {
    const int64_t n = textlen(f, latin1);
    if (n > st.maxlen) st.maxlen = n;
    double x;
    int k = f.esc ? 0 : csv_number(f.b, f.e, &x);
    if (k == 0) {
        st.text = true;
        return;
    }
    if (k == 2) return;
    if (!st.anynum) {
        st.anynum = true;
        st.lo = st.hi = x;
    } else {
        if (x < st.lo) st.lo = x;
        if (x > st.hi) st.hi = x;
    }
    if (st.allint && x != std::trunc(x)) st.allint = false;
    if (st.floatok && static_cast<double>(static_cast<float>(x)) != x) st.floatok = false;
}

bool forced(const std::vector<int32_t>& cols, int32_t c) {
    return std::find(cols.begin(), cols.end(), c) != cols.end();
}

bool reserved_name(const std::string& s) {
    static const char* const words[] = {
        "_pred", "_b",  "_n",   "_N",   "float", "double", "int", "long",  "_uniform", "_coef",
        "_rc",   "_pi", "byte", "_all", "_skip", "in",     "if",  "using", "with",     "_cons"};
    for (const char* w : words)
        if (s == w) return true;
    if (s.size() > 3 && s.compare(0, 3, "str") == 0 &&
        s.find_first_not_of("0123456789", 3) == std::string::npos)
        return true;
    return false;
}

struct Mapped {
    const char* base = nullptr;
    size_t size = 0;
    int fd = -1;
    ~Mapped() {
        if (base && size) munmap(const_cast<char*>(base), size);
        if (fd >= 0) close(fd);
    }
};

void clear_dataset() {
    drop_all(0);
    labels_clear(1);
}

} // namespace

// ---------------------------------------------------------------------------
// Numbers, types and names
// ---------------------------------------------------------------------------
int csv_number(const char* b, const char* e, double* x) {
    while (b < e && (*b == ' ' || *b == '\t')) ++b;
    while (e > b && (e[-1] == ' ' || e[-1] == '\t')) --e;
    const int64_t n = e - b;
    if (n == 0 || (n == 1 && *b == '.')) {
        *x = misval;
        return 2;
    }
    if (n == 2 && b[0] == '.' && b[1] >= 'a' && b[1] <= 'z') {
        *x = mkmissing(b[1] - 'a' + 1);
        return 2;
    }
    if (n <= 4) {
        static const char* const markers[] = {"NA",  "na",   "N/A",  "n/a", "NaN",
                                              "nan", "NULL", "null", "#N/A"};
        for (const char* m : markers)
            if (static_cast<int64_t>(std::strlen(m)) == n && std::memcmp(b, m, n) == 0) {
                *x = misval;
                return 2;
            }
    }
    if (*b == '+') {
        ++b;
        if (b == e || *b == '-' || *b == '+') return 0;
    }
    // plain integers of up to 15 digits directly
    {
        const char* p = b;
        bool neg = false;
        if (*p == '-') neg = true, ++p;
        const char* d = p;
        int64_t v = 0;
        while (p < e && *p >= '0' && *p <= '9' && p - d < 16) v = v * 10 + (*p++ - '0');
        if (p == e && p > d && p - d <= 15) {
            *x = neg ? -static_cast<double>(v) : static_cast<double>(v);
            return 1;
        }
    }
    const char c0 = *b == '-' ? (b + 1 < e ? b[1] : 0) : *b;
    if (!((c0 >= '0' && c0 <= '9') || c0 == '.')) return 0; // no inf, nan, hex
    double v;
    auto r = std::from_chars(b, e, v, std::chars_format::general);
    if (r.ec != std::errc() || r.ptr != e) return 0;
    if (std::fabs(v) > 0x1.fffffffffffffp1022) return 0; // beyond a storable double: keep as text
    *x = v;
    return 1;
}

int csv_numtype(bool allint, double lo, double hi, bool floatok, bool asdouble) {
    if (allint) {
        if (lo >= -127 && hi <= 100) return KV_BYTE;
        if (lo >= -32767 && hi <= 32740) return KV_INT;
        if (lo >= -2147483647.0 && hi <= 2147483620.0) return KV_LONG;
    }
    if (floatok && !asdouble && std::fabs(lo) <= 0x1.fffffep126 && std::fabs(hi) <= 0x1.fffffep126)
        return KV_FLOAT;
    return KV_DOUBLE;
}

std::string csv_validname(const std::string& text, int vcase) {
    std::string s;
    for (unsigned char c : text) {
        if (vcase == 1 && c >= 'A' && c <= 'Z') c = static_cast<unsigned char>(c - 'A' + 'a');
        if (vcase == 2 && c >= 'a' && c <= 'z') c = static_cast<unsigned char>(c - 'a' + 'A');
        bool ok =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        s += ok ? static_cast<char>(c) : '_';
    }
    // a name of nothing but underscores from blanks at the ends: trim them
    size_t a = 0, z = s.size();
    while (a < z && s[a] == '_' && !(text[a] == '_')) ++a;
    while (z > a && s[z - 1] == '_' && !(text[z - 1] == '_')) --z;
    s = s.substr(a, z - a);
    if (s.empty()) return s;
    if (s[0] >= '0' && s[0] <= '9') s.insert(s.begin(), vcase == 2 ? 'V' : 'v');
    if (s.size() > 32) s.resize(32);
    return s;
}

// ---------------------------------------------------------------------------
// The load
// ---------------------------------------------------------------------------
int csv_read(const char* fname, const CsvReadOpts& o) {
    Mapped M;
    M.fd = open(fname, O_RDONLY);
    if (M.fd < 0) return fierr(errno == ENOENT ? 601 : 603, fname);
    struct stat sb;
    if (fstat(M.fd, &sb) != 0 || !S_ISREG(sb.st_mode)) return fierr(603, fname);
    M.size = static_cast<size_t>(sb.st_size);
    if (M.size) {
        void* p = mmap(nullptr, M.size, PROT_READ, MAP_PRIVATE, M.fd, 0);
        if (p == MAP_FAILED) return fierr(603, fname);
        M.base = static_cast<const char*>(p);
        madvise(p, M.size, MADV_SEQUENTIAL);
    }
    const char* b = M.base;
    const char* e = M.base + M.size;
    if (e - b >= 3 && std::memcmp(b, "\xEF\xBB\xBF", 3) == 0) b += 3;

    std::string delims = o.delims;
    if (delims.empty()) {
        // tab when the first lines hold more tabs than commas, else comma
        int64_t tabs = 0, commas = 0;
        int lines = 0;
        for (const char* p = b; p < e && lines < 20 && p - b < (1 << 16); ++p) {
            if (*p == '\t')
                ++tabs;
            else if (*p == ',')
                ++commas;
            else if (*p == '\n')
                ++lines;
        }
        delims = tabs > commas ? "\t" : ",";
    }

    // --- first scan: records, widths, types -------------------------------
    Scan s;
    scan_init(s, b, e, delims);
    std::vector<Field> f;
    f.reserve(64);
    int64_t rec = 0, recline = 0;
    int namesrow = o.namesrow;
    int32_t ncol = -1;
    std::vector<std::string> header;
    std::vector<Stat> st;
    int64_t nrows = 0;
    const int64_t row1 = std::max<int64_t>(o.row1, 1);
    std::string tbuf;
    for (;;) {
        int r = next_record(s, f, &recline);
        if (r < 0)
            return errorf(198, "line %lld of %s: %s\n", static_cast<long long>(s.errline), fname,
                          s.errwhat);
        if (r == 0) break;
        ++rec;
        if (rec > o.row2) break;
        if (rec == 1 && namesrow < 0) {
            // names when no field of the first record is a number and some hold text
            bool anytext = false, anynum = false;
            double x;
            for (const Field& fl : f) {
                int k = fl.esc ? 0 : csv_number(fl.b, fl.e, &x);
                if (k == 0) anytext = true;
                if (k == 1) anynum = true;
            }
            namesrow = (anytext && !anynum) ? 1 : 0;
        }
        if (namesrow > 0 && rec < namesrow) continue;
        if (ncol < 0 && (namesrow == 0 ? rec >= row1 : rec == namesrow)) {
            ncol = static_cast<int32_t>(f.size());
            st.assign(static_cast<size_t>(ncol), Stat{});
            if (rec == namesrow) {
                for (const Field& fl : f) {
                    fieldtext(fl, o.latin1, tbuf);
                    header.push_back(tbuf);
                }
                continue;
            }
        } else if (rec == namesrow) {
            continue;
        }
        if (rec < row1) continue;
        if (static_cast<int32_t>(f.size()) != ncol)
            return errorf(198,
                          "line %lld of %s has %d field%s where %d %s expected; nothing was read\n",
                          static_cast<long long>(recline), fname, static_cast<int>(f.size()),
                          f.size() == 1 ? "" : "s", ncol, ncol == 1 ? "was" : "were");
        for (int32_t c = 0; c < ncol; ++c) note_field(st[c], f[c], o.latin1);
        ++nrows;
        if ((nrows & 0xffff) == 0 && kvpollstd()) return 1;
    }
    if (ncol < 0) return errorf(2000, "file %s holds no data; nothing was read\n", fname);
    if (o.col1 > ncol)
        return errorf(198, "colrange() starts at column %d; the file has %d\n", o.col1, ncol);
    const int32_t c1 = std::max(o.col1, 1), c2 = std::min(o.col2, ncol);
    if (c2 < c1) return errorf(198, "colrange() is empty\n");

    // --- columns: types and names ----------------------------------------
    std::vector<CsvColumn> cols;
    std::vector<std::string> cutnotes;
    for (int32_t c = c1; c <= c2; ++c) {
        const Stat& t = st[c - 1];
        CsvColumn col;
        col.filecol = c;
        col.maxlen = t.maxlen;
        bool str =
            o.strall || forced(o.strcols, c) || (t.text && !o.numall && !forced(o.numcols, c));
        if (str) {
            col.code = static_cast<int>(std::clamp<int64_t>(t.maxlen, 1, KV_STRMAX));
        } else if (!t.anynum) {
            col.code = KV_BYTE;
        } else {
            col.code = csv_numtype(t.allint, t.lo, t.hi, t.floatok, o.asdouble);
        }
        cols.push_back(col);
    }
    // names: those given, else the header, else v#
    std::vector<std::string> taken;
    auto istaken = [&](const std::string& n) {
        return std::find(taken.begin(), taken.end(), n) != taken.end();
    };
    for (size_t j = 0; j < cols.size(); ++j) {
        CsvColumn& col = cols[j];
        std::string nm;
        if (j < o.names.size()) {
            nm = o.names[j];
            if (istaken(nm)) return errorf(110, "%s already defined\n", nm.c_str());
        } else {
            const std::string h = header.size() >= static_cast<size_t>(col.filecol)
                                      ? header[col.filecol - 1]
                                      : std::string();
            nm = csv_validname(h, o.vcase);
            if (!nm.empty() && reserved_name(nm)) nm += '_';
            if (nm.empty()) {
                char buf[16];
                std::snprintf(buf, sizeof buf, o.vcase == 2 ? "V%d" : "v%d", col.filecol);
                nm = buf;
            }
            if (istaken(nm)) {
                for (int k = 2;; ++k) {
                    char suf[16];
                    std::snprintf(suf, sizeof suf, "_%d", k);
                    std::string base = nm.substr(0, 32 - std::strlen(suf));
                    std::string cand = base + suf;
                    if (!istaken(cand)) {
                        nm = cand;
                        break;
                    }
                }
            }
            if (!h.empty() && h != nm) col.label = h;
        }
        taken.push_back(nm);
        col.name = nm;
        if (isstrtype(col.code) && col.maxlen > KV_STRMAX) cutnotes.push_back(nm);
    }
    for (size_t j = 0; j < o.names.size(); ++j)
        if (chkname(o.names[j].c_str(), 1) || chkreserved(o.names[j].c_str())) return 198;

    // --- room: checked before anything changes -----------------------------
    if (static_cast<int64_t>(cols.size()) >= maxmaxvar) return dataarea_error(900);
    int64_t width = 0;
    for (const CsvColumn& col : cols) width += bytlenc(col.code);
    {
        Layout L;
        int64_t w = width + 2 + (width & 1);
        if (!layout_for(std::max<int64_t>(w, 4), L)) return dataarea_error(902);
        if (L.n <= nrows) return dataarea_error(901);
    }

    // --- from here the dataset is replaced ---------------------------------
    clear_dataset();
    for (size_t j = 0; j < cols.size(); ++j) {
        const CsvColumn& col = cols[j];
        if (int rc = alcvar(col.code)) {
            clear_dataset();
            return dataarea_error(rc >= 9000 ? 902 : rc);
        }
        const int v = static_cast<int>(j) + 1;
        std::memset(varname(v), 0, NAMELEN1);
        std::snprintf(varname(v), NAMELEN1, "%s", col.name.c_str());
        std::memset(fmtname(v), 0, FMTLEN1);
        switch (col.code) {
        case KV_BYTE:
        case KV_INT: std::snprintf(fmtname(v), FMTLEN1, "%%8.0g"); break;
        case KV_LONG: std::snprintf(fmtname(v), FMTLEN1, "%%12.0g"); break;
        case KV_FLOAT: std::snprintf(fmtname(v), FMTLEN1, "%%9.0g"); break;
        case KV_DOUBLE: std::snprintf(fmtname(v), FMTLEN1, "%%10.0g"); break;
        default: std::snprintf(fmtname(v), FMTLEN1, "%%%ds", std::clamp(col.code, 9, 244)); break;
        }
        std::memset(lblname(v), 0, NAMELEN1);
        if (!col.label.empty() && putvarlab(v, col.label.c_str())) {
            clear_dataset();
            return dataarea_error(950);
        }
    }
    if (nrows > maxobs) {
        if (int rc = repartobs(static_cast<int32_t>(nrows - maxobs))) {
            clear_dataset();
            return dataarea_error(rc >= 9000 ? 901 : rc);
        }
    }
    colsync();

    // --- second scan: the cells -------------------------------------------
    struct Dest {
        uint8_t* base;
        int code, w;
        int32_t fc; // 0-based field
        bool str;
    };
    std::vector<Dest> dest;
    for (size_t j = 0; j < cols.size(); ++j) {
        const int v = static_cast<int>(j) + 1;
        dest.push_back({colptr(v), cols[j].code, bytlenc(cols[j].code), cols[j].filecol - 1,
                        isstrtype(cols[j].code)});
    }
    scan_init(s, b, e, delims);
    rec = 0;
    int64_t row = 0;
    while (row < nrows) {
        if (next_record(s, f, &recline) <= 0) break; // cannot happen: the first scan saw them
        ++rec;
        if ((namesrow > 0 && rec <= namesrow) || rec < row1) continue;
        if (static_cast<int32_t>(f.size()) < ncol)
            f.resize(static_cast<size_t>(ncol), Field{e, e, 0, 0}); // changed meanwhile
        for (const Dest& d : dest) {
            const Field& fl = f[d.fc];
            uint8_t* cell = d.base + row * d.w;
            if (d.str) {
                if (!fl.esc && !o.latin1) {
                    put_cell(cell, d.w, fl.b, fl.e - fl.b);
                } else {
                    fieldtext(fl, o.latin1, tbuf);
                    put_cell(cell, d.w, tbuf.data(), static_cast<int64_t>(tbuf.size()));
                }
            } else {
                double x;
                if (fl.esc || !csv_number(fl.b, fl.e, &x)) x = misval;
                encode_cell(cell, d.code, x);
            }
        }
        ++row;
        if ((row & 0xffff) == 0 && kvpollstd()) {
            clear_dataset();
            return 1;
        }
    }
    nobs = static_cast<int32_t>(row);
    i_nvar = nvar;
    updata = 1;
    filesp[0] = 0;
    macresave("S_FN", "");
    c_outlev = 1;
    for (const std::string& n : cutnotes)
        spoutf("note: %s has values longer than %d characters; they were cut to %d\n", n.c_str(),
               KV_STRMAX, KV_STRMAX);
    spoutf("(%d var%s, %d obs)\n", nvar, nvar == 1 ? "" : "s", nobs);
    return 0;
}

} // namespace korvu
