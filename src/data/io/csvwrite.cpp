// Writing delimited text: one line per observation into a temporary file
// beside the target, renamed over it when complete.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/io/io.h"
#include "data/labels/label.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"

namespace korvu {

namespace {

struct Out {
    int fd = -1;
    std::string buf;
    bool bad = false;
    void flush() {
        const char* p = buf.data();
        size_t n = buf.size();
        while (n > 0 && !bad) {
            ssize_t w = ::write(fd, p, n);
            if (w < 0) {
                if (errno == EINTR) continue;
                bad = true;
                break;
            }
            p += w, n -= static_cast<size_t>(w);
        }
        buf.clear();
    }
};

void put_text(std::string& out, const char* t, size_t n, bool quote) {
    if (!quote) {
        out.append(t, n);
        return;
    }
    out += '"';
    for (size_t k = 0; k < n; ++k) {
        if (t[k] == '"') out += '"';
        out += t[k];
    }
    out += '"';
}

// Shortest text that reads back as the same double; whole numbers below
// 10^16 in magnitude in plain digits (100000, not 1e+05), except -0, which
// the shortest text writes as "-0" and so keeps its sign.
void put_number(std::string& out, double x) {
    char b[40];
    auto r = (x == std::trunc(x) && std::fabs(x) < 1e16 && !(x == 0 && std::signbit(x)))
                 ? std::to_chars(b, b + sizeof b, static_cast<int64_t>(x))
                 : std::to_chars(b, b + sizeof b, x);
    out.append(b, r.ptr);
}

} // namespace

int csv_write(const char* fname, const std::vector<int32_t>& vars, const CsvWriteOpts& o) {
    struct stat sb;
    if (stat(fname, &sb) == 0 && !o.replace) return fierr(602, fname);
    std::string tmp = std::string(fname) + ".XXXXXX";
    std::vector<char> tname(tmp.begin(), tmp.end());
    tname.push_back(0);
    Out w;
    w.fd = mkstemp(tname.data());
    if (w.fd < 0) return fierr(603, fname);
    fchmod(
        w.fd, 0644 & ~[] {
            mode_t m = umask(0);
            umask(m);
            return m;
        }());
    auto fail = [&](int rc) {
        close(w.fd);
        unlink(tname.data());
        return rc;
    };
    w.buf.reserve(1 << 20);

    struct Col {
        int v, code;
        const char* vl; // value label name, null for none
        FmtDesc fd;
        bool usefmt;
    };
    std::vector<Col> cols;
    for (int32_t v : vars) {
        Col c{v, typlist[v - 1], nullptr, {}, false};
        if (isnumtype(c.code) && o.labels && lblname(v)[0]) c.vl = lblname(v);
        if (o.datafmt && isnumtype(c.code)) c.usefmt = chkfmt(fmtname(v), 10, &c.fd) == 0;
        cols.push_back(c);
    }
    if (o.names) {
        for (size_t k = 0; k < cols.size(); ++k) {
            if (k) w.buf += o.delim;
            w.buf += varname(cols[k].v);
        }
        w.buf += '\n';
    }
    std::vector<char> sbuf(KV_STRMAX + 1);
    char fbuf[kFmtBufSize];
    int64_t n = 0;
    for (int32_t i = nobs1; i <= nobs2; ++i) {
        if (ifclause && xeq(&ifpgm, i) == 0) continue;
        for (size_t k = 0; k < cols.size(); ++k) {
            const Col& c = cols[k];
            if (k) w.buf += o.delim;
            if (isstrtype(c.code)) {
                skorvu_data(c.v, i, sbuf.data());
                put_text(w.buf, sbuf.data(), std::strlen(sbuf.data()), o.quote);
                continue;
            }
            double x = korvu_data(c.v, i);
            if (c.vl) {
                if (const char* t = vl_lookup(c.vl, x)) {
                    put_text(w.buf, t, std::strlen(t), o.quote);
                    continue;
                }
            }
            if (ismissing(x)) {
                int l = missing_letter(x);
                if (l) {
                    w.buf += '.';
                    w.buf += static_cast<char>('a' + l - 1);
                }
                continue;
            }
            if (c.usefmt) {
                int len = fmtrender(fbuf, c.fd, x);
                const char* p = fbuf;
                const char* q = fbuf + (len > 0 ? len : std::strlen(fbuf));
                while (p < q && *p == ' ') ++p;
                while (q > p && q[-1] == ' ') --q;
                w.buf.append(p, q);
            } else {
                put_number(w.buf, x);
            }
        }
        w.buf += '\n';
        if (w.buf.size() >= (1u << 20) - 4096) w.flush();
        if ((++n & 0xffff) == 0 && kvpollstd()) return fail(1);
    }
    w.flush();
    if (w.bad) return fail(fierr(693, fname));
    if (close(w.fd) != 0) {
        unlink(tname.data());
        return fierr(693, fname);
    }
    if (rename(tname.data(), fname) != 0) {
        unlink(tname.data());
        return fierr(603, fname);
    }
    return 0;
}

} // namespace korvu
