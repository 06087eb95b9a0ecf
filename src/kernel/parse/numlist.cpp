// Number lists: single numbers and the range forms a/b, a(d)b, a[d]b, and
// "a b : c" or "a b to c", checked and written out in a normal spelling.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/missing.h"
#include "data/formats/formats.h"
#include "data/vars/varlist.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "kernel/program/argparse.h"
#include "output/spout.h"

namespace korvu {

ArgHooks arg_hooks = {};

std::string numtext(double x) {
    std::string s = safereforms("%18.0g", x);
    size_t b = s.find_first_not_of(' ');
    s = b == std::string::npos ? std::string() : s.substr(b);
    while (!s.empty() && s.back() == ' ') s.pop_back();
    for (char& c : s)
        if (c == ',') c = '.';
    return s;
}

namespace {

// The list's words: numbers and the marks / ( ) [ ] : and "to".
struct Lexer {
    std::vector<std::string> words;
    size_t at = 0;
    const std::string* peek() const { return at < words.size() ? &words[at] : nullptr; }
    const std::string* next() { return at < words.size() ? &words[at++] : nullptr; }
};

bool number(const std::string* w, double* v) {
    return w && !w->empty() && !cnvstoz(w->c_str(), v);
}

bool ismark(const std::string* w, const char* m) {
    return w && *w == m;
}

// Appends a, a+d, ... up to b; 0 or a negative code.
int range(std::vector<double>& out, double a, double d, double b, int limit) {
    if (a >= misval || b >= misval || d >= misval || d == 0 || !std::isfinite(d)) return -121;
    double span = (b - a) / d;
    if (span < -1e-9) return -121;
    double count = std::floor(span + 1e-9 * (1 + std::fabs(span))) + 1;
    if (count + out.size() > static_cast<double>(limit)) return -123;
    long n = static_cast<long>(count);
    for (long k = 0; k < n; k++) {
        double x = a + k * d;
        // the last step lands on b up to rounding: keep b as written
        if (k == n - 1 && std::fabs(x - b) <= 1e-9 * (std::fabs(b) + std::fabs(d))) x = b;
        out.push_back(x);
    }
    return 0;
}

} // namespace

int znumlist_text(const char* text, std::vector<double>& out, int minc, int maxc, int flags,
                  const NumRange* rng, int limit) {
    if (limit <= 0) limit = 1600;
    out.clear();
    Lexer lx;
    {
        std::string copy = text;
        TokState saved;
        borrow_gettok(&saved);
        settok(copy.data());
        for (;;) {
            gettok(prsenum);
            if (!token[0]) break;
            if (tokisstr(token)) {
                return_gettok(&saved);
                return -121;
            }
            lx.words.emplace_back(token);
        }
        return_gettok(&saved);
    }
    // positions in `out` where each element read stands, for the ":" form
    while (const std::string* w = lx.next()) {
        double a;
        if (!number(w, &a)) return -121;
        const std::string* nx = lx.peek();
        if (ismark(nx, "/")) {
            lx.next();
            double b;
            if (!number(lx.next(), &b)) return -121;
            if (a >= misval || b >= misval) return -121;
            if (a > b && (flags & NL_ASC)) return -124;
            if (int rc = range(out, a, a <= b ? 1 : -1, b, limit)) return rc;
        } else if (ismark(nx, "(") || ismark(nx, "[")) {
            const char* closer = *nx == "(" ? ")" : "]";
            lx.next();
            double d, b;
            if (!number(lx.next(), &d)) return -121;
            if (!ismark(lx.next(), closer)) return -121;
            if (!number(lx.next(), &b)) return -121;
            if (int rc = range(out, a, d, b, limit)) return rc;
        } else if (ismark(nx, ":") || ismark(nx, "to")) {
            lx.next();
            double b;
            if (out.empty() || !number(lx.next(), &b)) return -121;
            double d = a - out.back();
            if (int rc = range(out, a, d, b, limit)) return rc;
        } else {
            if (static_cast<int>(out.size()) >= limit) return -123;
            out.push_back(a);
        }
    }
    for (size_t i = 0; i < out.size(); i++) {
        double x = out[i];
        if (x >= misval) {
            if (!(flags & NL_MISS)) return -127;
            continue;
        }
        if (rng) {
            bool below = rng->loopen ? x <= rng->lo : x < rng->lo;
            bool above = rng->hiopen ? x >= rng->hi : x > rng->hi;
            if (below || above) return -125;
        }
        if ((flags & NL_INT) && x != std::floor(x)) return -126;
    }
    for (size_t i = 1; i < out.size(); i++) {
        if ((flags & NL_ASC) && !(out[i] > out[i - 1])) return -124;
        if ((flags & NL_DESC) && !(out[i] < out[i - 1])) return -124;
    }
    int n = static_cast<int>(out.size());
    if (minc > 0 && n < minc) return -122;
    if (maxc > 0 && n > maxc) return -123;
    if (flags & NL_SORT) std::stable_sort(out.begin(), out.end());
    return 0;
}

int makemacnumlist(const char* text, const char* macro, int minc, int maxc, int flags,
                   const NumRange* rng, int limit, std::string* outtext) {
    std::vector<double> v;
    int rc = znumlist_text(text, v, minc, maxc, flags, rng, limit);
    if (rc) return errornumlist(-rc, 0);
    std::string s;
    for (double x : v) {
        if (!s.empty()) s += ' ';
        s += numtext(x);
    }
    if (outtext) *outtext = s;
    if (macro) return macresave(macro, s.c_str());
    return 0;
}

int numlist_hook(const char* text, double* values, int n, int flags, int* count) {
    // numbers of an option may also be separated by commas
    std::string t = text;
    for (char& c : t)
        if (c == ',') c = ' ';
    std::vector<double> v;
    if (int rc = znumlist_text(t.c_str(), v, 0, n, flags, nullptr, n)) return errornumlist(-rc, 0);
    for (size_t i = 0; i < v.size(); i++) values[i] = v[i];
    *count = static_cast<int>(v.size());
    return 0;
}

int rpostmac(const char* name, const char* value) {
    if (arg_hooks.post_rmacro) return arg_hooks.post_rmacro(name, value);
    if (post_rmacro) {
        post_rmacro(name, value);
        return 0;
    }
    if (void* old = dmfind0(name, DM_RMACRO)) dmrm(old);
    size_t n = strlen(value);
    if (!n) return 0;
    return dmsave(name, DM_RMACRO, static_cast<int>(n + 1), value, n + 1) ? 0 : 950;
}

// range(>=# <=#) and the strict forms, in either order.
static int readrange(const char* text, NumRange* r) {
    r->lo = -INFINITY, r->hi = INFINITY;
    std::string copy = text;
    TokState saved;
    borrow_gettok(&saved);
    settok(copy.data());
    int rc = 0;
    for (;;) {
        gettok(prsenum);
        if (!token[0]) break;
        std::string op = token;
        bool lower = op == ">=" || op == ">", upper = op == "<=" || op == "<";
        double v;
        gettok(prsenum);
        if ((!lower && !upper) || tokisstr(token) || cnvstoz(token, &v) || v >= misval) {
            rc = 198;
            break;
        }
        if (lower) r->lo = v, r->loopen = op == ">";
        if (upper) r->hi = v, r->hiopen = op == "<";
    }
    return_gettok(&saved);
    return rc;
}

int numlist(int) {
    gettok(prsestd);
    if (!token[0]) return required("numlist");
    std::string text;
    if (tokisstr(token)) {
        char *s, *e, *nx;
        if (parse_quoted_string(nullptr, &s, &e, &nx)) return unmatchedquote();
        text.assign(s, e);
    } else {
        ungettok();
        char* p = wheretok();
        char* comma = strchr(p, ',');
        text.assign(p, comma ? comma : p + strlen(p));
        settok(comma ? comma : p + strlen(p));
    }
    int flags = 0, minc = 0, maxc = 0;
    NumRange rng;
    bool haverange = false;
    gettok(prsestd);
    if (tokis(token, ",")) {
        noptn = 0;
        opable = 0;
        if (int rc = proption()) return rc;
        if (findopt("ascending", 1, 0)) flags |= NL_ASC;
        if (findopt("descending", 1, 0)) flags |= NL_DESC;
        if (findopt("integer", 1, 0)) flags |= NL_INT;
        if (findopt("missingokay", 1, 0)) flags |= NL_MISS;
        if (findopt("sort", 1, 0)) flags |= NL_SORT;
        minc = findopta("min", 3, 0);
        maxc = findopta("max", 3, 0);
        char buf[200];
        findargn("range", 1, buf, sizeof buf, 4);
        if (buf[0]) {
            if (readrange(buf, &rng)) {
                return errtext(198, "option range() incorrectly specified\n");
            }
            haverange = true;
        }
        if (int rc = chkopt()) return rc;
    } else if (token[0]) {
        return error(198);
    }
    if ((flags & NL_ASC) && (flags & NL_DESC)) {
        return errtext(198, "options ascending and descending may not be combined\n");
    }
    if (arg_hooks.clear_r) arg_hooks.clear_r();
    std::string out;
    if (int rc = makemacnumlist(text.c_str(), nullptr, minc, maxc, flags,
                                haverange ? &rng : nullptr, maxc > 1600 ? maxc : 1600, &out))
        return rc;
    return rpostmac("numlist", out.c_str());
}

} // namespace korvu
