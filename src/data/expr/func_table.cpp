// The function table and the functions that are not one-line numeric helpers.
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "data/expr/exp_func.h"
#include "data/expr/exp_ops.h"
#include "data/expr/expr.h"
#include "data/formats/dates.h"
#include "data/formats/formats.h"
#include "data/vars/vartab.h"
#include "kernel/parse/options.h"
#include "kernel/regex/regex.h"

namespace korvu {

const FnRow fntable[] = {
    {"abs", fndesc(OP_ABS, 1, 0, 0, 0)},
    {"log", fndesc(OP_LOG, 1, 0, 0, 0)},
    {"exp", fndesc(OP_EXP, 1, 0, 0, 0)},
    {"sqrt", fndesc(OP_SQRT, 1, 0, 0, 0)},
    {"trunc", fndesc(OP_TRUNC, 1, 0, 0, 0)},
    {"int", fndesc(OP_TRUNC, 1, 0, 0, 0)},
    {"float", fndesc(OP_FLOAT, 1, 0, 0, 0)},
    {"uniform", fndesc(OP_UNIFORM, 0, 0, 1, 0)},
    {"uniform0", fndesc(OP_UNIFORM0, 0, 0, 1, 0)},
    {"mod", fndesc(OP_MOD, 2, 0, 0, 0)},
    {"group", fndesc(OP_GROUP, 1, 0, 0, 0)},
    {"normal", fndesc(OP_NORMAL, 1, 0, 0, 0)},
    {"normprob", fndesc(OP_NORMAL, 1, 0, 0, 0)},
    {"lnnormal", fndesc(OP_LNNORMAL, 1, 0, 0, 0)},
    {"lnormal", fndesc(OP_LNNORMAL, 1, 0, 0, 0)},
    {"invnormal", fndesc(OP_INVNORMAL, 1, 0, 0, 0)},
    {"tprob", fndesc(OP_TPROB, 2, 0, 0, 0)},
    {"fprob", fndesc(OP_FTAIL, 3, 0, 0, 0)},
    {"invfprob", fndesc(OP_INVFTAIL, 3, 0, 0, 0)},
    {"Ftail", fndesc(OP_FTAIL, 3, 0, 0, 0)},
    {"F", fndesc(OP_FCUMM, 3, 0, 0, 0)},
    {"invFtail", fndesc(OP_INVFTAIL, 3, 0, 0, 0)},
    {"invF", fndesc(OP_INVFCUMM, 3, 0, 0, 0)},
    {"chi2", fndesc(OP_CHI2, 2, 0, 0, 0)},
    {"chi2tail", fndesc(OP_CHI2TAIL, 2, 0, 0, 0)},
    {"invchi2", fndesc(OP_INVCHI2, 2, 0, 0, 0)},
    {"invchi2tail", fndesc(OP_INVCHI2TAIL, 2, 0, 0, 0)},
    {"chiprob", fndesc(OP_CHI2TAIL, 2, 0, 0, 0)},
    {"nchi", fndesc(OP_NCHI2, 3, 0, 0, 0)},
    {"nchi2", fndesc(OP_NCHI2, 3, 0, 0, 0)},
    {"invnchi", fndesc(OP_INVNCHI2, 3, 0, 0, 0)},
    {"invnchi2", fndesc(OP_INVNCHI2, 3, 0, 0, 0)},
    {"npnchi", fndesc(OP_NPNCHI2, 3, 0, 0, 0)},
    {"npnchi2", fndesc(OP_NPNCHI2, 3, 0, 0, 0)},
    {"Binomial", fndesc(OP_BINOMIAL, 3, 0, 0, 0)},
    {"invbinomial", fndesc(OP_INVBINOMIAL, 3, 0, 0, 0)},
    {"binorm", fndesc(OP_BINORMAL, 3, 0, 0, 0)},
    {"binormal", fndesc(OP_BINORMAL, 3, 0, 0, 0)},
    {"comb", fndesc(OP_COMB, 2, 0, 0, 0)},
    {"gammap", fndesc(OP_GAMMAP, 2, 0, 0, 0)},
    {"dgammapda", fndesc(OP_DGAMMAPDA, 2, 0, 0, 0)},
    {"dgammapdx", fndesc(OP_DGAMMAPDX, 2, 0, 0, 0)},
    {"dgammapdada", fndesc(OP_DGAMMAPDADA, 2, 0, 0, 0)},
    {"dgammapdadx", fndesc(OP_DGAMMAPDADX, 2, 0, 0, 0)},
    {"dgammapdxdx", fndesc(OP_DGAMMAPDXDX, 2, 0, 0, 0)},
    {"invgammap", fndesc(OP_INVGAMMAP, 2, 0, 0, 0)},
    {"ibeta", fndesc(OP_IBETA, 3, 0, 0, 0)},
    {"atan", fndesc(OP_ATAN, 1, 0, 0, 0)},
    {"atan2", fndesc(OP_ATAN2, 2, 0, 0, 0)},
    {"sin", fndesc(OP_SIN, 1, 0, 0, 0)},
    {"cos", fndesc(OP_COS, 1, 0, 0, 0)},
    {"sign", fndesc(OP_SIGN, 1, 0, 0, 0)},
    {"_result", fndesc(0, 1, 0, 0, 0)},
    {"length", fndesc(OP_LENGTH, 1, 1, 0, 0)},
    {"strlen", fndesc(OP_LENGTH, 1, 1, 0, 0)},
    {"real", fndesc(OP_REAL, 1, 1, 0, 0)},
    {"lower", fndesc(OP_LOWER, 1, 1, 0, 1)},
    {"upper", fndesc(OP_UPPER, 1, 1, 0, 1)},
    {"proper", fndesc(OP_PROPER, 1, 1, 0, 1)},
    {"strlower", fndesc(OP_LOWER, 1, 1, 0, 1)},
    {"strupper", fndesc(OP_UPPER, 1, 1, 0, 1)},
    {"strproper", fndesc(OP_PROPER, 1, 1, 0, 1)},
    {"lngamma", fndesc(OP_LNGAMMA, 1, 0, 0, 0)},
    {"_lnbk", fndesc(0, 2, 0, 0, 0)},
    {"_dibk", fndesc(0, 2, 0, 0, 0)},
    {"_tribk", fndesc(0, 2, 0, 0, 0)},
    {"_hyp2f1", fndesc(0, 1, 0, 0, 0)},
    {"ln", fndesc(OP_LOG, 1, 0, 0, 0)},
    {"itrim", fndesc(OP_ITRIM, 1, 1, 0, 1)},
    {"ltrim", fndesc(OP_LTRIM, 1, 1, 0, 1)},
    {"rtrim", fndesc(OP_RTRIM, 1, 1, 0, 1)},
    {"trim", fndesc(OP_TRIM, 1, 1, 0, 1)},
    {"stritrim", fndesc(OP_ITRIM, 1, 1, 0, 1)},
    {"strltrim", fndesc(OP_LTRIM, 1, 1, 0, 1)},
    {"strrtrim", fndesc(OP_RTRIM, 1, 1, 0, 1)},
    {"strtrim", fndesc(OP_TRIM, 1, 1, 0, 1)},
    {"strpos", fndesc(OP_STRPOS, 2, 1, 0, 0)},
    {"log10", fndesc(OP_LOG10, 1, 0, 0, 0)},
    {"reldif", fndesc(OP_RELDIF, 2, 0, 0, 0)},
    {"dow", fndesc(OP_DOW, 1, 0, 0, 0)},
    {"day", fndesc(OP_DAY, 1, 0, 0, 0)},
    {"month", fndesc(OP_MONTH, 1, 0, 0, 0)},
    {"year", fndesc(OP_YEAR, 1, 0, 0, 0)},
    {"yofd", fndesc(OP_YEAR, 1, 0, 0, 0)},
    {"lnfactorial", fndesc(OP_LNFACT, 1, 0, 0, 0)},
    {"tan", fndesc(OP_TAN, 1, 0, 0, 0)},
    {"asin", fndesc(OP_ASIN, 1, 0, 0, 0)},
    {"acos", fndesc(OP_ACOS, 1, 0, 0, 0)},
    {"digamma", fndesc(OP_DIGAMMA, 1, 0, 0, 0)},
    {"trigamma", fndesc(OP_TRIGAMMA, 1, 0, 0, 0)},
    {"mdy", fndesc(OP_MDY, 3, 0, 0, 0)},
    {"autocode", fndesc(OP_AUTOCODE, 4, 0, 0, 0)},
    {"replay", fndesc(0, 0, 0, 0, 0)},
    {"dofy", fndesc(OP_DOFY, 1, 0, 0, 0)},
    {"dofh", fndesc(OP_DOFH, 1, 0, 0, 0)},
    {"dofq", fndesc(OP_DOFQ, 1, 0, 0, 0)},
    {"dofm", fndesc(OP_DOFM, 1, 0, 0, 0)},
    {"dofw", fndesc(OP_DOFW, 1, 0, 0, 0)},
    {"dofd", fndesc(OP_DOFD, 1, 0, 0, 0)},
    {"hofd", fndesc(OP_HOFD, 1, 0, 0, 0)},
    {"qofd", fndesc(OP_QOFD, 1, 0, 0, 0)},
    {"mofd", fndesc(OP_MOFD, 1, 0, 0, 0)},
    {"wofd", fndesc(OP_WOFD, 1, 0, 0, 0)},
    {"halfyear", fndesc(OP_HALFYEAR, 1, 0, 0, 0)},
    {"quarter", fndesc(OP_QUARTER, 1, 0, 0, 0)},
    {"week", fndesc(OP_WEEK, 1, 0, 0, 0)},
    {"doy", fndesc(OP_DOY, 1, 0, 0, 0)},
    {"yw", fndesc(OP_YW, 2, 0, 0, 0)},
    {"ym", fndesc(OP_YM, 2, 0, 0, 0)},
    {"yq", fndesc(OP_YQ, 2, 0, 0, 0)},
    {"yh", fndesc(OP_YH, 2, 0, 0, 0)},
    {"_Eabsk", fndesc(0, 3, 0, 0, 0)},
    {"reverse", fndesc(OP_REVERSE, 1, 1, 0, 1)},
    {"strreverse", fndesc(OP_REVERSE, 1, 1, 0, 1)},
    {"match", fndesc(OP_MATCH, 2, 1, 0, 0)},
    {"strmatch", fndesc(OP_MATCH, 2, 1, 0, 0)},
    {"regex", fndesc(OP_REGEXM, 2, 1, 0, 0)},
    {"regexm", fndesc(OP_REGEXM, 2, 1, 0, 0)},
    {"regexr", fndesc(OP_REGEXR, 3, 1, 0, 1)},
    {"regexs", fndesc(OP_REGEXS, 1, 0, 0, 1)},
    {"_by", fndesc(OP_BY, 0, 0, 1, 0)},
    {"_bylastcall", fndesc(OP_BY, 0, 0, 1, 0)},
    {"_byindex", fndesc(OP_BY, 0, 0, 1, 0)},
    {"_byn1", fndesc(OP_BY, 0, 0, 1, 0)},
    {"_byn2", fndesc(OP_BY, 0, 0, 1, 0)},
    {"ttail", fndesc(OP_TTAIL, 2, 0, 0, 0)},
    {"invttail", fndesc(OP_INVTTAIL, 2, 0, 0, 0)},
    {"serset", fndesc(0, 2, 0, 0, 0)},
    {"strserset", fndesc(0, 2, 0, 0, 1)},
    {"char", fndesc(OP_CHAR, 1, 0, 0, 1)},
    {"floor", fndesc(OP_FLOOR, 1, 0, 0, 0)},
    {"ceil", fndesc(OP_CEIL, 1, 0, 0, 0)},
    {"clip", fndesc(OP_CLIP, 3, 0, 0, 0)},
    {"chop", fndesc(OP_CHOP, 2, 0, 0, 0)},
    {"cls", fndesc(OP_CLS, 1, 1, 0, 0)},
    {"scls", fndesc(OP_SCLS, 1, 1, 0, 1)},
    {"wordcount", fndesc(OP_WORDCOUNT, 1, 1, 0, 0)},
    {"gammaden", fndesc(OP_GAMMADEN, 4, 0, 0, 0)},
    {"betaden", fndesc(OP_BETADEN, 3, 0, 0, 0)},
    {"invibeta", fndesc(OP_INVIBETA, 3, 0, 0, 0)},
    {"Fden", fndesc(OP_FDEN, 3, 0, 0, 0)},
    {"nbetaden", fndesc(OP_NBETADEN, 4, 0, 0, 0)},
    {"nibeta", fndesc(OP_NIBETA, 4, 0, 0, 0)},
    {"invnibeta", fndesc(OP_INVNIBETA, 4, 0, 0, 0)},
    {"nFden", fndesc(OP_NFDEN, 4, 0, 0, 0)},
    {"nFtail", fndesc(OP_NFTAIL, 4, 0, 0, 0)},
    {"invnFtail", fndesc(OP_INVNFTAIL, 4, 0, 0, 0)},
    {"logit", fndesc(OP_LOGIT, 1, 0, 0, 0)},
    {"invlogit", fndesc(OP_INVLOGIT, 1, 0, 0, 0)},
    {"cloglog", fndesc(OP_CLOGLOG, 1, 0, 0, 0)},
    {"invcloglog", fndesc(OP_INVCLOGLOG, 1, 0, 0, 0)},
    {"tanh", fndesc(OP_TANH, 1, 0, 0, 0)},
    {"atanh", fndesc(OP_ATANH, 1, 0, 0, 0)},
    {"tden", fndesc(OP_TDEN, 2, 0, 0, 0)},
    {"indexnot", fndesc(OP_INDEXNOT, 2, 1, 0, 0)},
    {"E1overkBin", fndesc(0, 3, 0, 0, 0)},
    {"E1overkHyp", fndesc(0, 3, 0, 0, 0)},
    {"strsubdp", fndesc(OP_STRSUBDP, 1, 1, 0, 1)},
};
const int nfntable = sizeof fntable / sizeof fntable[0];

const FnRow* findfn(const char* name) {
    for (int k = 0; k < nfntable; k++)
        if (!std::strcmp(fntable[k].name, name)) return &fntable[k];
    return nullptr;
}

// ---- numeric functions beyond one line ------------------------------------------

double f_comb(double n, double k) {
    if (xmis(n) || xmis(k)) return misval;
    n = std::trunc(n), k = std::trunc(k);
    if (n < 0 || k < 0 || k > n) return misval;
    if (k > n - k) k = n - k;
    if (n <= 1000) { // exact while the product stays an integer below 2^53
        double r = 1;
        for (double j = 1; j <= k; j++) {
            r = r * (n - k + j) / j;
            if (r > 9007199254740992.0) break;
        }
        if (r <= 9007199254740992.0) return std::round(r);
    }
    return std::round(std::exp(std::lgamma(n + 1) - std::lgamma(k + 1) - std::lgamma(n - k + 1)));
}

double f_autocode(double x, double n, double lo, double hi) {
    if (xmis(n) || n <= 0 || n >= 1000) return misval;
    if (xmis(lo) || xmis(hi) || lo >= hi) return misval;
    if (xmis(x)) return x;
    double step = (hi - lo) / n;
    for (int k = 1; k < n; k++) {
        double brk = lo + k * step;
        if (brk >= x) return brk;
    }
    return hi;
}

// ---- strings ------------------------------------------------------------------

// Copies n bytes of s (cut at EXP_STRMAX); s and out may overlap.
static void putn(char* out, const char* s, size_t n) {
    if (n > EXP_STRMAX) n = EXP_STRMAX;
    std::memmove(out, s, n);
    out[n] = 0;
}
static void put(char* out, const char* s) {
    putn(out, s, strnlen(s, EXP_STRMAX));
}
// Appends n bytes of s at *len, cut at EXP_STRMAX.
static void append(char* out, size_t* len, const char* s, size_t n) {
    if (*len + n > EXP_STRMAX) n = EXP_STRMAX - *len;
    std::memcpy(out + *len, s, n);
    *len += n;
    out[*len] = 0;
}

void s_lower(const char* s, char* out) {
    size_t k = 0;
    for (; s[k] && k < EXP_STRMAX; k++)
        out[k] = static_cast<char>(std::tolower(static_cast<unsigned char>(s[k])));
    out[k] = 0;
}
void s_upper(const char* s, char* out) {
    size_t k = 0;
    for (; s[k] && k < EXP_STRMAX; k++)
        out[k] = static_cast<char>(std::toupper(static_cast<unsigned char>(s[k])));
    out[k] = 0;
}
// First letter of each run of letters capitalised, the rest lower case.
void s_proper(const char* s, char* out) {
    size_t k = 0;
    bool prev_alpha = false;
    for (; s[k] && k < EXP_STRMAX; k++) {
        unsigned char c = static_cast<unsigned char>(s[k]);
        out[k] = static_cast<char>(prev_alpha ? std::tolower(c) : std::toupper(c));
        prev_alpha = std::isalpha(c);
    }
    out[k] = 0;
}
void s_itrim(const char* s, char* out) {
    size_t k = 0;
    for (const char* p = s; *p && k < EXP_STRMAX; p++)
        if (!(*p == ' ' && p > s && p[-1] == ' ')) out[k++] = *p;
    out[k] = 0;
}
void s_ltrim(const char* s, char* out) {
    while (*s == ' ') s++;
    put(out, s);
}
void s_rtrim(const char* s, char* out) {
    size_t n = std::strlen(s);
    while (n && s[n - 1] == ' ') n--;
    putn(out, s, n);
}
void s_trim(const char* s, char* out) {
    while (*s == ' ') s++;
    s_rtrim(s, out);
}
void s_reverse(const char* s, char* out) {
    size_t n = strnlen(s, EXP_STRMAX);
    for (size_t k = 0; k < n; k++) out[k] = s[n - 1 - k];
    out[n] = 0;
}

// substr(s, n1, n2): n2 characters from position n1 (negative: from the end);
// a missing n2 takes the rest.
void s_substr(const char* s, double n1, double n2, char* out) {
    out[0] = 0;
    long len = static_cast<long>(std::strlen(s));
    if (xmis(n1) || n1 == 0) return;
    long b = static_cast<long>(std::trunc(n1));
    if (b < 0) b = len + b + 1;
    if (b < 1 || b > len) return;
    long n = len - b + 1;
    if (!xmis(n2)) {
        if (n2 <= 0) return;
        double want = std::trunc(n2);
        if (want < n) n = static_cast<long>(want);
    }
    putn(out, s + b - 1, static_cast<size_t>(n));
}

static bool wordedge(const char* s, const char* at, size_t n) {
    return (at == s || at[-1] == ' ') && (at[n] == 0 || at[n] == ' ');
}

void s_subinstr(const char* s, const char* from, const char* to, double count, int words,
                char* out) {
    size_t fn = std::strlen(from), tn = std::strlen(to), len = 0;
    out[0] = 0;
    if (!fn || (!xmis(count) && count <= 0)) return put(out, s);
    double left = xmis(count) ? 1e300 : std::trunc(count);
    const char* p = s;
    while (*p && left >= 1 && len < EXP_STRMAX) {
        const char* hit = std::strstr(p, from);
        while (hit && words && !wordedge(s, hit, fn)) hit = std::strstr(hit + 1, from);
        if (!hit) break;
        append(out, &len, p, static_cast<size_t>(hit - p));
        append(out, &len, to, tn);
        p = hit + fn;
        left -= 1;
    }
    append(out, &len, p, std::strlen(p));
}

// word(s, n): the n-th blank-separated word, counting from the end when n < 0.
void s_word(const char* s, double n, char* out) {
    out[0] = 0;
    if (xmis(n) || !(std::fabs(n) < 1e9)) return;
    long k = static_cast<long>(std::trunc(n));
    if (k < 0) k = static_cast<long>(s_wordcount(s)) + k + 1;
    if (k < 1) return;
    for (const char* p = s; *p;) {
        while (*p == ' ') p++;
        if (!*p) break;
        const char* q = p;
        while (*q && *q != ' ') q++;
        if (--k == 0) return putn(out, p, static_cast<size_t>(q - p));
        p = q;
    }
}

void s_abbrev(const char* s, double n, char* out) {
    if (xmis(n)) return put(out, s);
    int w = static_cast<int>(std::trunc(n));
    if (w < 5) w = 5;
    if (w > 32) w = 32;
    if (static_cast<int>(std::strlen(s)) <= w) return put(out, s);
    put(out, abvar(s, w));
}

void s_char(double n, char* out) {
    out[0] = 0;
    if (xmis(n) || n < 1 || n > 255 || n != std::floor(n)) return;
    out[0] = static_cast<char>(static_cast<int>(n));
    out[1] = 0;
}

void s_strsubdp(const char* s, char* out) {
    put(out, s);
    for (char* p = out; *p; p++)
        if (*p == '.') *p = ',';
}

void s_string(double x, const char* fmt, char* out) {
    uint8_t save = dpcomma;
    dpcomma = 0;
    char buf[kFmtBufSize];
    if (fmt) {
        FmtDesc d;
        if (chkfmt(fmt, 0, &d) || d.cls == 's') {
            out[0] = 0;
        } else {
            fmtrender(buf, d, x);
            put(out, buf);
        }
    } else {
        fmtnum(buf, "%9.0g", x);
        const char* p = buf;
        while (*p == ' ') p++;
        put(out, p);
    }
    dpcomma = save;
}

void s_plural(double n, const char* s, const char* s2, char* out) {
    size_t len = 0;
    out[0] = 0;
    if (n == 1) return put(out, s);
    if (!s2) {
        append(out, &len, s, std::strlen(s));
        return append(out, &len, "s", 1);
    }
    if (s2[0] == '+') {
        append(out, &len, s, std::strlen(s));
        return append(out, &len, s2 + 1, std::strlen(s2 + 1));
    }
    if (s2[0] == '-') {
        size_t sn = std::strlen(s), k = std::strlen(s2 + 1);
        if (sn >= k && !std::strcmp(s + sn - k, s2 + 1)) sn -= k;
        return putn(out, s, sn);
    }
    put(out, s2);
}

void s_regexr(const char* s, const char* re, const char* repl, char* out) {
    std::string r;
    if (regexr(s, re, repl, r, 1)) r = s;
    putn(out, r.data(), r.size());
}

void s_regexs(double n, char* out) {
    std::string r;
    if (xmis(n) || n < 0 || regexs(static_cast<int>(n), r)) r.clear();
    putn(out, r.data(), r.size());
}

double s_real(const char* s) {
    while (*s == ' ') s++;
    size_t n = std::strlen(s);
    while (n && s[n - 1] == ' ') n--;
    char buf[EXP_STRMAX + 1];
    std::memcpy(buf, s, n);
    buf[n] = 0;
    double v;
    if (!n || cnvstoz(buf, &v)) return misval;
    return v;
}

double s_strpos(const char* s, const char* t) {
    if (!*t) return 0;
    const char* p = std::strstr(s, t);
    return p ? static_cast<double>(p - s + 1) : 0.0;
}

double s_indexnot(const char* s, const char* t) {
    for (const char* p = s; *p; p++)
        if (!std::strchr(t, *p)) return static_cast<double>(p - s + 1);
    return 0;
}

double s_wordcount(const char* s) {
    int n = 0;
    for (const char* p = s; *p;) {
        while (*p == ' ') p++;
        if (!*p) break;
        n++;
        while (*p && *p != ' ') p++;
    }
    return n;
}

double s_match(const char* s, const char* pattern) {
    return wildmatch(pattern, s) ? 1.0 : 0.0;
}

double s_regexm(const char* s, const char* re) {
    return regexm(s, re) == 1 ? 1.0 : 0.0;
}

double s_sdate(const char* s, const char* order, int kind) {
    switch (kind) {
    case 2: return datefn::weekly(s, order);
    case 3: return datefn::monthly(s, order);
    case 4: return datefn::quarterly(s, order);
    case 5: return datefn::halfyearly(s, order);
    case 6: return datefn::yearly(s, order);
    default: return datefn::daily(s, order);
    }
}

} // namespace korvu
