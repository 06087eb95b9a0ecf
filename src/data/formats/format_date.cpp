// Date and time-series formats: chkdfmt, chktfmt and their rendering.
#include <cmath>
#include <cstring>

#include "data/area/missing.h"
#include "data/formats/dates.h"
#include "data/formats/formats.h"
#include "kernel/loop/scratch.h"
#include "output/spout.h"

namespace korvu {

namespace {

// Width counted for one code; 0 for a character that is no code.
int code_width(char c) {
    switch (c) {
    case 'C':
    case 'c':
    case 'Y':
    case 'y':
    case 'N':
    case 'n':
    case 'D':
    case 'd':
    case 'W':
    case 'w': return 2;
    case 'M':
    case 'L': return 9;
    case 'm':
    case 'l':
    case 'J':
    case 'j': return 3;
    case 'h':
    case 'q':
    case '_':
    case '.':
    case ',':
    case ':':
    case '-':
    case '/':
    case '\'': return 1;
    default: return 0;
    }
}

const char* default_pattern(char unit) {
    switch (unit) {
    case 'w': return "CY!ww"; // 1960w1
    case 'm': return "CY!mn"; // 1960m1
    case 'q': return "CY!qq"; // 1960q1
    case 'h': return "CY!hh"; // 1960h1
    case 'y': return "CY";    // 1960
    case 'g': return "";
    default: return "DlCY"; // 01jan1960
    }
}

// Width of a pattern, or -1 when it holds a character that is no code.
int pattern_width(const char* p) {
    int w = 0;
    for (; *p; ++p) {
        if (*p == '!') {
            if (!p[1]) return -1;
            ++p;
            w += 1;
            continue;
        }
        int cw = code_width(*p);
        if (cw == 0) return -1;
        w += cw;
    }
    return w;
}

// Fills desc from the codes at p for unit (0 for %d).
int finish_date_desc(const char* p, int justify, char unit, FmtDesc* desc) {
    FmtDesc d;
    d.justify = justify;
    d.decimals = 0;
    d.cls = 'f';
    d.kind = 'd';
    d.mod = ' ';
    d.comma = 0;
    d.zero = 0;
    d.tsunit = unit;
    int w = pattern_width(p);
    if (w < 0) return 1;
    const char* pat = *p ? p : default_pattern(unit);
    if (std::strlen(pat) >= sizeof d.pat) return 1;
    copytext(d.pat, sizeof d.pat, pat);
    if (!*p) w = (unit == 0 || unit == 'g') ? 9 : pattern_width(pat);
    d.width = w < 8 ? 8 : w;
    *desc = d;
    return 0;
}

inline char* put_int(char* o, int v, int mindigits) {
    char t[12];
    int n = 0;
    unsigned u = v < 0 ? 0u - static_cast<unsigned>(v) : static_cast<unsigned>(v);
    do {
        t[n++] = static_cast<char>('0' + u % 10);
        u /= 10;
    } while (u);
    while (n < mindigits) t[n++] = '0';
    if (v < 0) *o++ = '-';
    while (n) *o++ = t[--n];
    return o;
}

inline char* put_name(char* o, const char* name, int maxlen, bool lower) {
    for (int i = 0; name[i] && i < maxlen; ++i) {
        char c = name[i];
        if (lower && c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        *o++ = c;
    }
    return o;
}

// Renders the date (days) by pattern into t; returns the length.
int date_text(char* t, const char* pat, int32_t y, int32_t m, int32_t d) {
    char* o = t;
    int32_t doy = date_of_ymd(y, m, d) - date_of_ymd(y, 1, 1) + 1;
    int32_t week = (doy - 1) / 7 + 1;
    if (week > 52) week = 52;
    for (const char* p = pat; *p; ++p) {
        switch (*p) {
        case 'C': o = put_int(o, y / 100, 2); break;
        case 'c': o = put_int(o, y / 100, 1); break;
        case 'Y': o = put_int(o, y % 100, 2); break;
        case 'y': o = put_int(o, y % 100, 1); break;
        case 'M': o = put_name(o, month_names[m - 1], 9, false); break;
        case 'L': o = put_name(o, month_names[m - 1], 9, true); break;
        case 'm': o = put_name(o, month_names[m - 1], 3, false); break;
        case 'l': o = put_name(o, month_names[m - 1], 3, true); break;
        case 'N': o = put_int(o, m, 2); break;
        case 'n': o = put_int(o, m, 1); break;
        case 'D': o = put_int(o, d, 2); break;
        case 'd': o = put_int(o, d, 1); break;
        case 'J': o = put_int(o, doy, 3); break;
        case 'j': o = put_int(o, doy, 1); break;
        case 'W': o = put_int(o, week, 2); break;
        case 'w': o = put_int(o, week, 1); break;
        case 'h': o = put_int(o, (m - 1) / 6 + 1, 1); break;
        case 'q': o = put_int(o, (m - 1) / 3 + 1, 1); break;
        case '_': *o++ = ' '; break;
        case '!':
            if (p[1]) *o++ = *++p;
            break;
        default: *o++ = *p; break;
        }
    }
    *o = 0;
    return static_cast<int>(o - t);
}

int numeric_path(char* buf, const FmtDesc& d, double x) {
    FmtDesc n;
    n.justify = d.justify;
    n.width = d.width;
    n.decimals = 0;
    n.cls = 'g';
    n.kind = 'g';
    return fmtrender(buf, n, x);
}

} // namespace

int chkdfmt(const char* text, FmtDesc* desc) {
    if (!text || text[0] != '%' || std::strlen(text) > static_cast<size_t>(kFmtMaxText)) return 1;
    const char* p = text + 1;
    int justify = 1;
    if (*p == '-') {
        justify = -1;
        ++p;
    }
    if (*p != 'd') return 1;
    return finish_date_desc(p + 1, justify, 0, desc);
}

int chktfmt(const char* text, FmtDesc* desc) {
    if (!text || text[0] != '%' || std::strlen(text) > static_cast<size_t>(kFmtMaxText)) return 1;
    const char* p = text + 1;
    int justify = 1;
    if (*p == '-') {
        justify = -1;
        ++p;
    }
    if (*p != 't') return 1;
    ++p;
    if (!*p || !std::strchr("dhmqwyg", *p)) return 1;
    char unit = *p;
    return finish_date_desc(p + 1, justify, unit, desc);
}

int fmtrender_date(char* buf, const FmtDesc& d, double x) {
    if (!std::isfinite(x) || ismissing(x) || d.tsunit == 'g') return numeric_path(buf, d, x);
    double days;
    switch (d.tsunit) {
    case 'w': days = dofweek(x); break;
    case 'm': days = dofmonth(x); break;
    case 'q': days = dofquarter(x); break;
    case 'h': days = dofhalfyear(x); break;
    case 'y': days = datefn::dofy(x); break;
    default: days = x; break;
    }
    int32_t y, m, dd;
    if (!date_parts(days, &y, &m, &dd)) return numeric_path(buf, d, x);
    char t[kFmtBufSize];
    date_text(t, d.pat, y, m, dd);
    return strfmt(buf, t, d.width, d.justify);
}

char* srefdate(const char* fmt, double x) {
    FmtDesc d;
    if (chkdfmt(fmt, &d)) return sreforms("%9.0g", x);
    fmtrender_date(outbuf, d, x);
    return outbuf;
}

char* sreftfmt(const char* fmt, double x) {
    FmtDesc d;
    if (chktfmt(fmt, &d)) return sreforms("%9.0g", x);
    fmtrender_date(outbuf, d, x);
    return outbuf;
}

} // namespace korvu
