// `postfile`, `post` and `postclose`: rows of values gathered into a new
// dataset file, without touching the data in memory.
//
//   postfile name newvarlist using filename [, replace]
//   post name (exp) (exp) ...
//   postclose name
//
// The new variables are float unless a type word stands before them (a type
// word before a parenthesised list types the whole list). The rows are kept
// in memory and the file is written at postclose under a temporary name and
// renamed when whole.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/dta/dta.h"
#include "data/io/textio.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/gettok.h"
#include "output/spout.h"

namespace korvu {

namespace {

struct PostVar {
    std::string name;
    int code = KV_FLOAT;
    int off = 0;
};

struct PostFile {
    std::string name, path;
    bool replace = false;
    std::vector<PostVar> vars;
    int width = 0;
    std::vector<uint8_t> rows;
    int64_t nrows = 0;
};

std::vector<PostFile> s_posts;

PostFile* findpost(const std::string& name) {
    for (auto& p : s_posts)
        if (p.name == name) return &p;
    return nullptr;
}

int nopost(const std::string& name) {
    return errorf(111, "postfile %s not found\n", name.c_str());
}

void default_fmt(int code, char* buf, size_t n) {
    switch (code) {
    case KV_BYTE:
    case KV_INT: std::snprintf(buf, n, "%%8.0g"); break;
    case KV_LONG: std::snprintf(buf, n, "%%12.0g"); break;
    case KV_FLOAT: std::snprintf(buf, n, "%%9.0g"); break;
    case KV_DOUBLE: std::snprintf(buf, n, "%%10.0g"); break;
    default: std::snprintf(buf, n, "%%%ds", code); break;
    }
}

void put(std::vector<uint8_t>& b, const void* p, size_t n) {
    const auto* q = static_cast<const uint8_t*>(p);
    b.insert(b.end(), q, q + n);
}
void fixed(std::vector<uint8_t>& b, const char* s, size_t width) {
    size_t n = strnlen(s, width - 1);
    put(b, s, n);
    b.insert(b.end(), width - n, 0);
}

// The sections of a format-113 file before the data.
void front(const PostFile& P, std::vector<uint8_t>& b) {
    const int nv = static_cast<int>(P.vars.size());
    for (auto& v : P.vars) b.push_back(static_cast<uint8_t>(v.code));
    for (auto& v : P.vars) fixed(b, v.name.c_str(), 33);
    b.insert(b.end(), 2 * static_cast<size_t>(nv + 1), 0);
    for (auto& v : P.vars) {
        char f[16];
        default_fmt(v.code, f, sizeof f);
        fixed(b, f, 12);
    }
    b.insert(b.end(), 33 * static_cast<size_t>(nv), 0);
    b.insert(b.end(), 81 * static_cast<size_t>(nv), 0);
    b.insert(b.end(), 5, 0); // no characteristics
}

int writefile(const PostFile& P) {
    struct stat sb;
    const bool exists = stat(P.path.c_str(), &sb) == 0;
    if (exists && !P.replace) return fierr(602, P.path.c_str());
    std::string tmp = P.path + ".XXXXXX";
    int fd = mkstemp(tmp.data());
    if (fd < 0) return fierr(603, P.path.c_str());
    {
        mode_t um = umask(0);
        umask(um);
        fchmod(fd, exists ? (sb.st_mode & 07777) : (0666 & ~um));
    }
    DtaHeader h;
    h.format = 113;
    h.nvar = static_cast<int32_t>(P.vars.size());
    h.nobs = static_cast<int32_t>(P.nrows);
    bool bad = wrhdr(fd, &h, "") != 0;
    std::vector<uint8_t> b;
    front(P, b);
    if (!bad && lkorvu_write(fd, b.data(), static_cast<int64_t>(b.size())) !=
                    static_cast<int64_t>(b.size()))
        bad = true;
    if (!bad && !P.rows.empty() &&
        lkorvu_write(fd, P.rows.data(), static_cast<int64_t>(P.rows.size())) !=
            static_cast<int64_t>(P.rows.size()))
        bad = true;
    if (!bad && fsync(fd)) bad = true;
    if (close(fd)) bad = true;
    if (!bad && rename(tmp.c_str(), P.path.c_str())) bad = true;
    if (bad) {
        unlink(tmp.c_str());
        return fierr(699, P.path.c_str());
    }
    return 0;
}

} // namespace

int postfilecmd(int) {
    std::string rest = textio_rest();
    std::string opts;
    {
        // options behind the last comma outside quotes
        bool q = false;
        size_t comma = std::string::npos;
        for (size_t i = 0; i < rest.size(); ++i) {
            if (rest[i] == '"') q = !q;
            if (!q && rest[i] == ',') comma = i;
        }
        if (comma != std::string::npos) {
            opts = rest.substr(comma + 1);
            rest.resize(comma);
        }
    }
    std::vector<std::string> w(static_cast<size_t>(maxmaxvar) + 8);
    int n = 0;
    if (int rc = textio_words(rest, w.data(), static_cast<int>(w.size()), &n)) return error(rc);
    if (n < 4 || w[static_cast<size_t>(n - 2)] != "using")
        return errtext(198, "syntax is postfile name newvarlist using filename [, replace]\n");
    PostFile P;
    P.name = w[0];
    if (chkname(P.name.c_str(), 0)) return errorf(198, "%s invalid name\n", P.name.c_str());
    if (findpost(P.name)) return errorf(110, "postfile %s already exists\n", P.name.c_str());
    std::string path = w[static_cast<size_t>(n - 1)];
    textio_unquote(path, &path);
    P.path = dflttype(path);
    std::string o[4];
    int no = 0;
    if (textio_words(opts, o, 4, &no)) return error(198);
    for (int i = 0; i < no; ++i) {
        if (o[i].size() >= 7 && std::string("replace").compare(0, o[i].size(), o[i]) == 0 &&
            o[i].size() <= 7)
            P.replace = true;
        else
            return errorf(198, "option %s not allowed\n", o[i].c_str());
    }
    // the new variables
    int pending = 0;
    for (int i = 1; i < n - 2; ++i) {
        std::string x = w[static_cast<size_t>(i)];
        std::vector<std::string> names;
        bool typeonly;
        if (int rc = textio_varword(x, &pending, &names, &typeonly)) return rc;
        if (typeonly) continue;
        for (auto& nm : names) {
            if (chkname(nm.c_str(), 0) || chkreserved(nm.c_str()))
                return errorf(198, "%s invalid name\n", nm.c_str());
            for (auto& v : P.vars)
                if (v.name == nm) return errorf(110, "%s already defined\n", nm.c_str());
            PostVar v;
            v.name = nm;
            v.code = pending ? pending : KV_FLOAT;
            v.off = P.width;
            P.width += bytlenc(v.code);
            P.vars.push_back(v);
        }
        pending = 0;
    }
    if (pending) return errtext(198, "type without a name\n");
    if (P.vars.empty()) return errtext(102, "too few variables specified\n");
    if (static_cast<int>(P.vars.size()) > 32767) return error(900);
    struct stat sb;
    if (stat(P.path.c_str(), &sb) == 0 && !P.replace) return fierr(602, P.path.c_str());
    s_posts.push_back(std::move(P));
    return 0;
}

int postcmd(int) {
    std::string rest = textio_rest();
    std::vector<std::string> w(static_cast<size_t>(maxmaxvar) + 2);
    int n = 0;
    if (int rc = textio_words(rest, w.data(), static_cast<int>(w.size()), &n)) return error(rc);
    if (n < 1) return errtext(198, "syntax is post name (exp) (exp) ...\n");
    PostFile* P = findpost(w[0]);
    if (!P) return nopost(w[0]);
    const int nv = static_cast<int>(P->vars.size());
    if (n - 1 < nv) return errtext(102, "post: too few expressions\n");
    if (n - 1 > nv) return errtext(103, "post: too many expressions\n");
    if (P->nrows >= 2147483646) return error(901);
    std::vector<uint8_t> row(static_cast<size_t>(P->width), 0);
    for (int j = 0; j < nv; ++j) {
        const std::string& x = w[static_cast<size_t>(j + 1)];
        const PostVar& v = P->vars[static_cast<size_t>(j)];
        std::string text;
        if (x.size() < 2 || x.front() != '(' || x.back() != ')')
            return errorf(198, "%s found where (exp) expected\n", x.c_str());
        bool isstr = false;
        double num = 0;
        if (int rc = textio_eval(x.substr(1, x.size() - 2), &isstr, &num, &text)) return rc;
        uint8_t* cell = row.data() + v.off;
        if (isstrtype(v.code)) {
            if (!isstr) return errorf(109, "post: %s is a string variable\n", v.name.c_str());
            std::memcpy(cell, text.data(),
                        std::min<size_t>(text.size(), static_cast<size_t>(v.code)));
        } else {
            if (isstr) return errorf(109, "post: %s is a numeric variable\n", v.name.c_str());
            // integer types hold whole numbers in their range; others are `.`
            double lim_lo = 0, lim_hi = 0;
            switch (v.code) {
            case KV_BYTE: lim_lo = minbyte, lim_hi = maxbyte; break;
            case KV_INT: lim_lo = minint, lim_hi = maxint; break;
            case KV_LONG: lim_lo = minlong, lim_hi = maxlong; break;
            default: break;
            }
            if (lim_hi != 0 && num < misval) {
                num = std::trunc(num);
                if (num < lim_lo || num > lim_hi) num = misval;
            }
            encode_cell(cell, v.code, num);
        }
    }
    P->rows.insert(P->rows.end(), row.begin(), row.end());
    ++P->nrows;
    return 0;
}

int postclosecmd(int) {
    std::string rest = textio_rest();
    std::string w[4];
    int n = 0;
    if (textio_words(rest, w, 4, &n) || n != 1) return errtext(198, "syntax is postclose name\n");
    for (size_t i = 0; i < s_posts.size(); ++i) {
        if (s_posts[i].name != w[0]) continue;
        int rc = writefile(s_posts[i]);
        // the rows are gone either way, as the handle is
        s_posts.erase(s_posts.begin() + static_cast<long>(i));
        return rc;
    }
    return nopost(w[0]);
}

} // namespace korvu
