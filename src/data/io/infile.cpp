// `infile` (free format) and `infix` (column ranges): text files into the
// dataset. The whole file is read and parsed into columns first; only then
// is the data in memory replaced, so a file that is missing or malformed
// leaves it as it was.
//
//   infile [type] newvar [[type] newvar ...] using filename [, clear]
//   infix [# lines] [#:] [type] newvar start[-end] ... using filename [, clear]
//
// Free format: values are separated by blanks, tabs, line ends or commas
// (two commas with nothing between give a missing value), text may stand in
// double quotes, and the values fill the variables in order, observation
// after observation, whatever the lines. A value that is not a number in a
// numeric variable becomes missing and is counted in a note.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/dta/dta.h"
#include "data/io/textio.h"
#include "data/io/textread.h"
#include "data/labels/label.h"
#include "data/vars/vartab.h"
#include "kernel/cmds/builtins.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

int textio_readwhole(const std::string& path, std::string& out) {
    int fd = open(path.c_str(), O_RDONLY);
    if (fd < 0) return fierr(errno == ENOENT ? 601 : 603, path.c_str());
    struct stat sb;
    if (fstat(fd, &sb) == 0 && S_ISDIR(sb.st_mode)) {
        close(fd);
        return fierr(603, path.c_str());
    }
    char buf[65536];
    for (;;) {
        ssize_t r = read(fd, buf, sizeof buf);
        if (r < 0 && errno == EINTR) continue;
        if (r < 0) {
            close(fd);
            return fierr(692, path.c_str());
        }
        if (r == 0) break;
        out.append(buf, static_cast<size_t>(r));
    }
    close(fd);
    return 0;
}

// Splits "... using filename [, options]" off the words: the words before
// `using`, the file name, and the options taken (clear).
int textio_split_using(const std::string& rest, std::vector<std::string>& specs, std::string& fname,
                       bool* clear) {
    std::string main = rest, opts;
    {
        bool q = false;
        size_t comma = std::string::npos;
        int depth = 0;
        for (size_t i = 0; i < rest.size(); ++i) {
            if (rest[i] == '"') q = !q;
            if (q) continue;
            if (rest[i] == '(') ++depth;
            if (rest[i] == ')') --depth;
            if (rest[i] == ',' && depth == 0) comma = i;
        }
        if (comma != std::string::npos) {
            opts = rest.substr(comma + 1);
            main = rest.substr(0, comma);
        }
    }
    std::vector<std::string> w(static_cast<size_t>(maxmaxvar) * 3 + 8);
    int n = 0;
    if (int rc = textio_words(main, w.data(), static_cast<int>(w.size()), &n)) return error(rc);
    int u = -1;
    for (int i = 0; i < n; ++i)
        if (w[static_cast<size_t>(i)] == "using") u = i;
    if (u < 0 || u != n - 2) return errtext(198, "using filename required at the end\n");
    specs.assign(w.begin(), w.begin() + u);
    fname = w[static_cast<size_t>(n - 1)];
    textio_unquote(fname, &fname);
    std::string o[4];
    int no = 0;
    if (textio_words(opts, o, 4, &no)) return error(198);
    *clear = false;
    for (int i = 0; i < no; ++i) {
        if (o[i] == "clear")
            *clear = true;
        else
            return errorf(198, "option %s not allowed\n", o[i].c_str());
    }
    return 0;
}

int textio_checkname(const std::string& nm, const std::vector<TextCol>& cols) {
    if (chkname(nm.c_str(), 0) || chkreserved(nm.c_str()))
        return errorf(198, "%s invalid name\n", nm.c_str());
    for (auto& c : cols)
        if (c.name == nm) return errorf(110, "%s already defined\n", nm.c_str());
    return 0;
}

// Stores one value read as text into row r of column c.
void textio_putvalue(TextCol& c, const char* p, size_t len) {
    if (isstrtype(c.code)) {
        const size_t w = static_cast<size_t>(c.code);
        if (len > w) {
            ++c.cut;
            len = w;
        }
        c.str.append(p, len);
        c.str.append(w - len, '\0');
        return;
    }
    while (len && (*p == ' ' || *p == '\t')) ++p, --len;
    while (len && (p[len - 1] == ' ' || p[len - 1] == '\t' || p[len - 1] == '\r')) --len;
    double x = misval;
    if (len) {
        char buf[64];
        if (len >= sizeof buf) {
            ++c.bad;
        } else {
            std::memcpy(buf, p, len);
            buf[len] = 0;
            if (cnvstoz(buf, &x)) {
                x = misval;
                ++c.bad;
            }
        }
    }
    c.num.push_back(x);
}

// The new dataset in place of the old one. 0 or a code.
int textio_install(std::vector<TextCol>& cols, int64_t n) {
    if (n > 2147483646) return error(901);
    drop_all(0);
    labels_clear(1);
    for (auto& c : cols) {
        if (int rc = addvar(c.name.c_str(), c.code)) {
            drop_all(0);
            return rc;
        }
    }
    if (n > maxobs) {
        if (int rc = repartobs(static_cast<int32_t>(n - maxobs))) {
            drop_all(0);
            return dataarea_error(rc >= 9000 ? 901 : rc);
        }
    }
    nobs = static_cast<int32_t>(n);
    std::string s;
    for (size_t k = 0; k < cols.size(); ++k) {
        const int v = static_cast<int>(k) + 1;
        TextCol& c = cols[k];
        if (isstrtype(c.code)) {
            const size_t w = static_cast<size_t>(c.code);
            for (int64_t i = 0; i < n; ++i) {
                s.assign(c.str.data() + static_cast<size_t>(i) * w, w);
                sstore(v, static_cast<int>(i + 1), s.c_str());
            }
        } else {
            for (int64_t i = 0; i < n; ++i)
                store(v, static_cast<int>(i + 1), c.num[static_cast<size_t>(i)]);
        }
    }
    for (size_t k = 0; k < cols.size(); ++k)
        if (!cols[k].label.empty()) putvarlab(static_cast<int>(k) + 1, cols[k].label.c_str());
    updata = 1;
    i_nvar = nvar;
    for (auto& c : cols) {
        c_outlev = 1;
        if (c.bad)
            spoutf("(%lld value%s of %s not numbers, made missing)\n",
                   static_cast<long long>(c.bad), c.bad > 1 ? "s" : "", c.name.c_str());
        if (c.cut)
            spoutf("(%lld value%s of %s cut to %d characters)\n", static_cast<long long>(c.cut),
                   c.cut > 1 ? "s" : "", c.name.c_str(), c.code);
    }
    c_outlev = 1;
    spoutf("(%lld observation%s read)\n", static_cast<long long>(n), n == 1 ? "" : "s");
    return 0;
}

// Free format: the values in text from byte start fill the columns in
// order, observation after observation; *nobs gets the observations.
int textio_free(std::vector<TextCol>& cols, const std::string& text, size_t start, int64_t* nobs) {
    // the values in order
    const size_t nv = cols.size();
    size_t k = 0; // column of the next value
    const char* p = text.data() + start;
    const char* e = text.data() + text.size();
    bool aftercomma = false;
    if (e - p >= 3 && std::memcmp(p, "\xEF\xBB\xBF", 3) == 0) p += 3;
    while (p < e) {
        const char c = *p;
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
            if (c == '\n') aftercomma = false;
            ++p;
            continue;
        }
        if (c == ',') {
            if (aftercomma) {
                textio_putvalue(cols[k], "", 0);
                k = (k + 1) % nv;
            }
            aftercomma = true;
            ++p;
            continue;
        }
        const char* b = p;
        const char* en;
        if (c == '"') {
            ++b;
            const char* q =
                static_cast<const char*>(std::memchr(b, '"', static_cast<size_t>(e - b)));
            en = q ? q : e;
            p = q ? q + 1 : e;
        } else {
            while (p < e && *p != ' ' && *p != '\t' && *p != '\r' && *p != '\n' && *p != ',') ++p;
            en = p;
        }
        aftercomma = false;
        textio_putvalue(cols[k], b, static_cast<size_t>(en - b));
        k = (k + 1) % nv;
        if (((p - text.data()) & 0xFFFFF) == 0 && kvpollstd()) return 1;
    }
    int64_t n = 0;
    {
        const TextCol& c0 = cols[0];
        n = isstrtype(c0.code) ? static_cast<int64_t>(c0.str.size() / static_cast<size_t>(c0.code))
                               : static_cast<int64_t>(c0.num.size());
    }
    if (k != 0) {
        c_outlev = 1;
        spoutf("(the last observation had values for %zu of %zu variables; the rest are missing)\n",
               k, nv);
        for (; k < nv; ++k) textio_putvalue(cols[k], "", 0);
    }
    *nobs = n;
    return 0;
}

int infilecmd(int) {
    std::string rest = textio_rest();
    if (textio_starts_using(rest)) return textio_dictcmd(rest, false);
    std::vector<std::string> specs;
    std::string fname;
    bool clear;
    if (int rc = textio_split_using(rest, specs, fname, &clear)) return rc;
    std::vector<TextCol> cols;
    int pending = 0;
    for (const auto& x : specs) {
        std::vector<std::string> names;
        bool typeonly;
        if (int rc = textio_varword(x, &pending, &names, &typeonly)) return rc;
        if (typeonly) continue;
        for (auto& nm : names) {
            if (int rc = textio_checkname(nm, cols)) return rc;
            TextCol c;
            c.name = nm;
            c.code = pending ? pending : KV_FLOAT;
            cols.push_back(std::move(c));
        }
        pending = 0;
    }
    if (pending) return errtext(198, "type without a name\n");
    if (cols.empty()) return errtext(102, "too few variables specified\n");
    if (static_cast<int>(cols.size()) >= maxmaxvar) return error(900);
    if (nvar && !clear) return errtext(18, "you must start with an empty dataset or give clear\n");
    std::string text;
    if (int rc = textio_readwhole(fname, text)) return rc;
    int64_t n = 0;
    if (int rc = textio_free(cols, text, 0, &n)) return rc;
    return textio_install(cols, n);
}

// One stretch of infix words ([# lines] [#:] [type] newvar start[-end]
// ...) added to the columns; st carries the pending type, the line and the
// lines an observation from one stretch to the next. With labels, a quoted
// word labels the variable before it. 0 or a code (printed).
int textio_infix_words(const std::vector<std::string>& specs, TextInfix& st,
                       std::vector<TextCol>& cols, bool labels) {
    auto number = [](const std::string& s, int64_t* out) {
        if (s.empty() || s.size() > 9) return false;
        int64_t v = 0;
        for (char c : s) {
            if (c < '0' || c > '9') return false;
            v = v * 10 + (c - '0');
        }
        *out = v;
        return true;
    };
    for (size_t i = 0; i < specs.size(); ++i) {
        const std::string& x = specs[i];
        int64_t num;
        if (cols.empty() && !st.pending && i + 1 < specs.size() && specs[i + 1] == "lines" &&
            number(x, &num) && num >= 1) {
            st.nlines = static_cast<int>(num);
            ++i;
            continue;
        }
        if (x.size() > 1 && x.back() == ':' && number(x.substr(0, x.size() - 1), &num) &&
            num >= 1) {
            st.line = static_cast<int>(num) - 1;
            if (st.line + 1 > st.nlines) st.nlines = st.line + 1;
            continue;
        }
        std::string lab;
        if (labels && !cols.empty() && !st.pending && textio_unquote(x, &lab)) {
            cols.back().label = lab;
            continue;
        }
        if (int c = textio_typecode(x)) {
            if (st.pending) return errorf(198, "%s found where name expected\n", x.c_str());
            st.pending = c;
            continue;
        }
        if (int rc = textio_checkname(x, cols)) return rc;
        if (i + 1 >= specs.size()) return errorf(198, "%s: column range expected\n", x.c_str());
        const std::string& r = specs[++i];
        int64_t a, b;
        size_t dash = r.find('-');
        if (dash == std::string::npos) {
            if (!number(r, &a)) return errorf(198, "%s invalid column range\n", r.c_str());
            b = a;
        } else if (!number(r.substr(0, dash), &a) || !number(r.substr(dash + 1), &b)) {
            return errorf(198, "%s invalid column range\n", r.c_str());
        }
        if (a < 1 || b < a) return errorf(198, "%s invalid column range\n", r.c_str());
        TextCol c;
        c.name = x;
        c.code = st.pending ? st.pending : KV_FLOAT;
        c.line = st.line;
        c.from = a - 1;
        c.to = b;
        cols.push_back(std::move(c));
        st.pending = 0;
    }
    return 0;
}

void textio_lines(const std::string& text, size_t start, std::vector<size_t>& ls) {
    size_t at = start;
    if (text.size() - at >= 3 && std::memcmp(text.data() + at, "\xEF\xBB\xBF", 3) == 0) at += 3;
    while (at < text.size()) {
        ls.push_back(at);
        size_t nl = text.find('\n', at);
        at = nl == std::string::npos ? text.size() : nl + 1;
    }
}

void textio_linetext(const std::string& text, const std::vector<size_t>& ls, size_t j,
                     const char** p, size_t* len) {
    if (j >= ls.size()) {
        *p = "";
        *len = 0;
        return;
    }
    size_t b = ls[j];
    size_t en = j + 1 < ls.size() ? ls[j + 1] : text.size();
    if (en > b && text[en - 1] == '\n') --en;
    if (en > b && text[en - 1] == '\r') --en;
    *p = text.data() + b;
    *len = en - b;
}

void textio_field(TextCol& c, const char* p, size_t len, size_t a, size_t b) {
    if (a >= len) {
        textio_putvalue(c, "", 0);
        return;
    }
    const size_t l = std::min(b, len) - a;
    if (isstrtype(c.code)) {
        // blanks around text are not part of it
        const char* s = p + a;
        size_t m = l;
        while (m && *s == ' ') ++s, --m;
        while (m && s[m - 1] == ' ') --m;
        textio_putvalue(c, s, m);
    } else {
        textio_putvalue(c, p + a, l);
    }
}

int textio_columns(std::vector<TextCol>& cols, int nlines, const std::string& text, size_t start,
                   int64_t* nobs) {
    std::vector<size_t> ls;
    textio_lines(text, start, ls);
    const int64_t n = (static_cast<int64_t>(ls.size()) + nlines - 1) / nlines;
    for (int64_t o = 0; o < n; ++o) {
        for (auto& c : cols) {
            const char* p;
            size_t len;
            textio_linetext(text, ls, static_cast<size_t>(o * nlines + c.line), &p, &len);
            textio_field(c, p, len, static_cast<size_t>(c.from), static_cast<size_t>(c.to));
        }
        if ((o & 0xFFFF) == 0 && kvpollstd()) return 1;
    }
    *nobs = n;
    return 0;
}

int infixcmd(int) {
    std::string rest = textio_rest();
    if (textio_starts_using(rest)) return textio_dictcmd(rest, true);
    std::vector<std::string> specs;
    std::string fname;
    bool clear;
    if (int rc = textio_split_using(rest, specs, fname, &clear)) return rc;
    std::vector<TextCol> cols;
    TextInfix st;
    if (int rc = textio_infix_words(specs, st, cols, false)) return rc;
    if (st.pending) return errtext(198, "type without a name\n");
    if (cols.empty()) return errtext(102, "too few variables specified\n");
    if (static_cast<int>(cols.size()) >= maxmaxvar) return error(900);
    if (nvar && !clear) return errtext(18, "you must start with an empty dataset or give clear\n");
    std::string text;
    if (int rc = textio_readwhole(fname, text)) return rc;
    int64_t n = 0;
    if (int rc = textio_columns(cols, st.nlines, text, 0, &n)) return rc;
    return textio_install(cols, n);
}

} // namespace korvu
