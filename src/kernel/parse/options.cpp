#include "kernel/parse/options.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "data/area/missing.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "output/spout.h"

namespace korvu {

int32_t noptn = 0;
char* optlist[MAXOPT];
uint8_t optavbl[MAXOPT];
int32_t lastopt = 0;
double cilevel = 95, dflt_cilevel = 95;
int (*znumlist_hook)(const char*, double*, int, int, int*) = nullptr;
int (*findvlist_hook)(const char*, int*, int, int*) = nullptr;

void resetopt() {
    memset(optavbl, 0, sizeof optavbl);
}

int moveto_opt_arg_end() {
    int depth = 1;
    for (;;) {
        gettok(prsestd);
        if (!token[0]) {
            return errtext(100, ") required\n");
        }
        if (tokisstr(token)) {
            char *s, *e, *nx;
            if (parse_quoted_string(nullptr, &s, &e, &nx)) return unmatchedquote();
            continue;
        }
        if (tokis(token, "("))
            depth++;
        else if (tokis(token, ")") && --depth == 0)
            return 0;
    }
}

int proption() {
    if (opable == 3) return notalow("options");
    gettok(prseopt);
    for (;;) {
        if (!token[0] || tokis(token, ",")) return 0;
        if (noptn > MAXOPT - 1) return error(1003);
        optlist[noptn] = lwheretok();
        optavbl[noptn] = 0;
        noptn++;
        gettok(prseopt);
        if (tokis(token, "(")) {
            int rc = moveto_opt_arg_end();
            if (rc) return rc;
            gettok(prseopt);
        }
    }
}

// The common search. On a match of name and form the entry is marked taken
// and its index + 1 returned, with the tokenizer behind the name (and behind
// the "(" when an argument is wanted).
static int findcommon(const char* name, int minlen, bool wantparen, bool lc) {
    for (int i = 0; i < noptn; i++) {
        if (optavbl[i] & 1) continue;
        settok(optlist[i]);
        gettok(prseopt);
        if (!(lc ? cmdcmp_lc(token, name, minlen) : cmdcmp(token, name, minlen))) continue;
        optavbl[i] |= 2;
        TokPos at;
        stattok(&at);
        gettok(prseopt);
        bool paren = tokis(token, "(") && !tokisstr(token);
        if (paren == wantparen) {
            if (!paren) resettok(&at);
            optavbl[i] |= 1;
            lastopt = i + 1;
            return i + 1;
        }
    }
    return 0;
}

static int findopt_common(const char* name, int minlen, int dflt, bool lc) {
    if (findcommon(name, minlen, false, lc)) return 1;
    char no[40];
    snprintf(no, sizeof no, "no%.30s", name);
    if (findcommon(no, minlen + 2, false, lc)) return 0;
    return dflt;
}

int findopt(const char* name, int minlen, int dflt) {
    return findopt_common(name, minlen, dflt, false);
}
int findopt_lc(const char* name, int minlen, int dflt) {
    return findopt_common(name, minlen, dflt, true);
}

int findopta(const char* name, int minlen, int dflt) {
    int k = findcommon(name, minlen, true, false);
    if (!k) return dflt;
    optavbl[k - 1] = 2;
    gettok(prsenum);
    double v;
    if (cnvstoz(token, &v) || v != std::floor(v) || v < -2147483648.0 || v > 2147483647.0)
        return dflt;
    if (gtokis(')')) return dflt;
    optavbl[k - 1] = 3;
    return static_cast<int>(v);
}

// The raw text of the argument of the option just found, the tokenizer
// standing behind its "(": [b, e) and the tokenizer left behind the ")".
static int argspan(char** b, char** e) {
    *b = wheretok();
    int rc = moveto_opt_arg_end();
    if (rc) return rc;
    *e = lwheretok();
    return 0;
}

static int findoptv_common(const char* name, int minlen, double* values, int n, int flag, bool lc) {
    int k = findcommon(name, minlen, true, lc);
    if (!k) return 0;
    optavbl[k - 1] = 2;
    if (n > 1) {
        char *b, *e;
        if (argspan(&b, &e)) return 0;
        std::string text(b, e);
        int count = 0;
        if (znumlist_hook) {
            if (znumlist_hook(text.c_str(), values, n, flag ? 64 : 0, &count)) return 0;
        } else {
            // plain numbers separated by blanks or commas until numlist arrives
            char* buf = const_cast<char*>(text.c_str());
            for (char* t = strtok(buf, " ,"); t; t = strtok(nullptr, " ,")) {
                if (count >= n || cnvstoz(t, &values[count])) return 0;
                count++;
            }
        }
        optavbl[k - 1] = 3;
        return count;
    }
    gettok(prsenum);
    if (cnvstoz(token, &values[0])) return 0;
    if (gtokis(')')) return 0;
    optavbl[k - 1] = 3;
    return 1;
}

int findoptv(const char* name, int minlen, double* values, int n, int flag) {
    return findoptv_common(name, minlen, values, n, flag, false);
}
int findoptv_lc(const char* name, int minlen, double* values, int n, int flag) {
    return findoptv_common(name, minlen, values, n, flag, true);
}

char* findargn(const char* name, int minlen, char* dst, int size, int maxwords) {
    dst[0] = 0;
    int k = findcommon(name, minlen, true, false);
    if (!k) return dst;
    optavbl[k - 1] = 2;
    char *b, *e;
    if (argspan(&b, &e)) return dst;
    std::string scratch(b, e);
    TokState saved;
    borrow_gettok(&saved);
    settok(scratch.data());
    std::string out;
    int words = 0;
    bool ok = true;
    for (;;) {
        char* p = peektok_chr();
        if (!*p) break;
        std::string w;
        char *s, *en, *nx;
        if ((*p == '"' || (p[0] == '`' && p[1] == '"')) && !parse_quoted_string(p, &s, &en, &nx)) {
            w.assign(p, nx);
            settok(nx);
        } else {
            gettok(prsestd);
            w = token;
        }
        if (!out.empty()) out += ' ';
        out += w;
        if (++words > maxwords || static_cast<int>(out.size()) >= size) {
            ok = false;
            break;
        }
    }
    return_gettok(&saved);
    if (!ok) return dst;
    memcpy(dst, out.c_str(), out.size() + 1);
    optavbl[k - 1] = 3;
    return dst;
}

char* findargasis(const char* name, int minlen, char* dst, int size) {
    dst[0] = 0;
    int k = findcommon(name, minlen, true, false);
    if (!k) return dst;
    optavbl[k - 1] = 2;
    char *b, *e;
    if (argspan(&b, &e)) return dst;
    long len = e - b;
    if (len > macrolen - 1 || len >= size) return dst;
    memcpy(dst, b, len);
    dst[len] = 0;
    optavbl[k - 1] = 3;
    return dst;
}

int findvlist(const char* name, int minlen, int* dst, int maxvars) {
    int k = findcommon(name, minlen, true, false);
    if (!k) return 0;
    optavbl[k - 1] = 2;
    char *b, *e;
    if (argspan(&b, &e)) return 0;
    if (!findvlist_hook) return 0;
    std::string text(b, e);
    int count = 0;
    if (findvlist_hook(text.c_str(), dst, maxvars, &count)) return 0;
    optavbl[k - 1] = 3;
    return count;
}

int findusg(int minlen, char* dst, int issaving) {
    const char* name = issaving ? "saving" : "using";
    int k = findcommon(name, issaving ? minlen : 5, true, false);
    if (!k) return 0;
    optavbl[k - 1] = 2;
    if (gettokfn(dst, FNLEN)) return 0;
    int result = 1;
    gettok(prseopt);
    if (issaving && tokis(token, ",")) {
        gettok(prseopt);
        if (!cmdcmp(token, "replace", 7)) return 0;
        result = 2;
        gettok(prseopt);
    }
    if (!tokis(token, ")")) return 0;
    optavbl[k - 1] = 3;
    return result;
}

int chkcilevel(double level) {
    if (level < 10 || level > 99.99) {
        return errtext(198, "level() must be between 10 and 99.99 inclusive\n");
    }
    return 0;
}

int findlevellike(const char* name, int minlen) {
    cilevel = dflt_cilevel;
    double v;
    if (findoptv(name, minlen, &v, 1, 0) == 1) {
        if (int rc = chkcilevel(v)) return rc;
        cilevel = v;
    }
    return 0;
}

int findlevel(int minlen) {
    return findlevellike("level", minlen);
}

int findscal(int dflt, int minlen) {
    return findopt("scale", minlen, dflt);
}

int chkopt() {
    for (int i = 0; i < noptn; i++) {
        if (optavbl[i] & 1) continue;
        settok(optlist[i]);
        gettok(prseopt);
        std::string name = token;
        gettok(prseopt);
        bool paren = tokis(token, "(");
        return errorf(198, "option %s%s%s", name.c_str(), paren ? "() " : " ",
                      optavbl[i] & 2 ? "incorrectly specified\n" : "not allowed\n");
    }
    return 0;
}

static int outofrange(const char* name, const char* lo, const char* hi) {
    spoutsetptagweak();
    return errorf(198, "%s must be between %s and %s\n", name, lo, hi);
}

int chkrange(const char* name, int v, int lo, int hi) {
    if (v >= lo && v <= hi) return 0;
    return outofrange(name, std::to_string(lo).c_str(), std::to_string(hi).c_str());
}

int dchkrange(const char* name, double v, double lo, double hi) {
    if (v >= lo && v <= hi) return 0;
    char l[64], h[64];
    snprintf(l, sizeof l, "%5.3f", lo);
    snprintf(h, sizeof h, "%5.3f", hi);
    return outofrange(name, l, h);
}

// Hex floats: [-]h.hhhx[+-]eee in hexadecimal, "X" accepted, as the start-up
// constants are written.
static int hexfloat(const char* s, double* out) {
    bool neg = false;
    if (*s == '-' || *s == '+') neg = *s++ == '-';
    if (!isxdigit(static_cast<unsigned char>(*s))) return 1;
    uint64_t mant = 0;
    int lead = 0, digits = 0;
    while (isxdigit(static_cast<unsigned char>(*s))) {
        lead = lead * 16 +
               (isdigit(static_cast<unsigned char>(*s)) ? *s - '0' : (tolower(*s) - 'a' + 10));
        s++;
    }
    if (*s == '.') {
        s++;
        while (isxdigit(static_cast<unsigned char>(*s))) {
            int d = isdigit(static_cast<unsigned char>(*s)) ? *s - '0' : (tolower(*s) - 'a' + 10);
            if (digits < 13)
                mant |= static_cast<uint64_t>(d) << (4 * (12 - digits));
            else if (d)
                return 1;
            digits++;
            s++;
        }
    }
    if (*s != 'x' && *s != 'X') return 1;
    s++;
    bool eneg = false;
    if (*s == '+' || *s == '-') eneg = *s++ == '-';
    if (!isxdigit(static_cast<unsigned char>(*s))) return 1;
    long e = 0;
    while (isxdigit(static_cast<unsigned char>(*s))) {
        e = e * 16 +
            (isdigit(static_cast<unsigned char>(*s)) ? *s - '0' : (tolower(*s) - 'a' + 10));
        if (e > 100000) return 1;
        s++;
    }
    if (*s) return 1;
    if (eneg) e = -e;
    if (lead > 1) return 1;
    double v =
        lead ? std::ldexp(1.0 + std::ldexp(static_cast<double>(mant), -52), static_cast<int>(e))
             : std::ldexp(std::ldexp(static_cast<double>(mant), -52), static_cast<int>(e));
    *out = neg ? -v : v;
    return 0;
}

int cnvstoz(const char* text, double* out) {
    const char* s = text;
    if (!*s) return 1;
    if (s[0] == '.' && (s[1] == 0 || (s[1] >= 'a' && s[1] <= 'z' && s[2] == 0))) {
        *out = mkmissing(s[1] ? s[1] - 'a' + 1 : 0);
        return 0;
    }
    if (strpbrk(s, "xX")) return hexfloat(s, out);
    char* end;
    double v = strtod(s, &end);
    if (*end || end == s) return 1;
    // no hex, inf or nan through strtod: only decimal digits, sign, point, exponent
    for (const char* p = s; p < end; p++)
        if (!strchr("0123456789+-.eE", *p)) return 1;
    if (!std::isfinite(v)) return 1;
    *out = v;
    return 0;
}

} // namespace korvu
