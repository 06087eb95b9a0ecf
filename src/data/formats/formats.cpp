// Numeric and string formats: chkfmt and the rendering core.
#include "data/formats/formats.h"

#include <charconv>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "data/area/hexfloat.h"
#include "data/area/missing.h"
#include "kernel/loop/scratch.h"
#include "output/spout.h"

namespace korvu {

uint8_t dpcomma = 0;
VlLookupFn reforml_lookup = nullptr;

namespace {

inline bool isdig(char c) {
    return c >= '0' && c <= '9';
}

// Reads an unsigned decimal of at most 3 digits; -1 when none (or too long).
int read_small(const char*& p) {
    if (!isdig(*p)) return -1;
    int v = 0, n = 0;
    while (isdig(*p)) {
        v = v * 10 + (*p - '0');
        ++p;
        if (++n > 3) return -1;
    }
    return v;
}

// Places t (n chars) in a field of width, by justify; returns the length.
int place(char* buf, const char* t, int n, int width, int justify) {
    int pad = width > n ? width - n : 0;
    int before = justify > 0 ? pad : justify < 0 ? 0 : pad / 2;
    int after = pad - before;
    std::memset(buf, ' ', before);
    std::memmove(buf + before, t, n);
    std::memset(buf + before + n, ' ', after);
    buf[before + n + after] = 0;
    return before + n + after;
}

int missing_text(char* t, double x) {
    int letter = missing_letter(x);
    t[0] = '.';
    if (letter >= 1 && letter <= 26 && x != misval && !std::isinf(x)) {
        t[1] = static_cast<char>('a' + letter - 1);
        t[2] = 0;
        return 2;
    }
    t[1] = 0;
    return 1;
}

// Unsigned %.<p>g text of ax >= 0, "0." shortened to ".".
int gtext(char* out, double ax, int p) {
    char tmp[48];
    auto r = std::to_chars(tmp, tmp + sizeof tmp, ax, std::chars_format::general, p);
    int n = static_cast<int>(r.ptr - tmp);
    int s = (n >= 2 && tmp[0] == '0' && tmp[1] == '.') ? 1 : 0;
    std::memcpy(out, tmp + s, n - s);
    out[n - s] = 0;
    return n - s;
}

// Copies src to dst with commas in the integer part; no change to exponent forms.
int addcommas(char* dst, const char* src, int n) {
    int k = 0;
    while (k < n && isdig(src[k])) ++k;
    for (int i = k; i < n; ++i)
        if (src[i] == 'e') {
            std::memcpy(dst, src, n);
            dst[n] = 0;
            return n;
        }
    int o = 0;
    for (int i = 0; i < k; ++i) {
        if (i > 0 && (k - i) % 3 == 0) dst[o++] = ',';
        dst[o++] = src[i];
    }
    std::memcpy(dst + o, src + k, n - k);
    o += n - k;
    dst[o] = 0;
    return o;
}

bool any_nonzero_digit(const char* t, int n) {
    for (int i = 0; i < n; ++i) {
        if (t[i] == 'e') return false;
        if (t[i] >= '1' && t[i] <= '9') return true;
    }
    return false;
}

// %w.dg search on ax >= 0: unsigned text into t (room for 64 chars); returns
// the length, or 0 when nothing fits within `room`.
int gsearch(char* t, double ax, int room, int decimals, bool commas) {
    int pmax = decimals > 0 ? decimals : room;
    if (pmax > 17) pmax = 17;
    if (pmax < 1) pmax = 1;
    char g[48];
    if (commas) {
        for (int p = pmax; p >= 1; --p) {
            int n = gtext(g, ax, p);
            if (std::memchr(g, 'e', n)) continue;
            if (n > room) continue; // commas only lengthen
            int m = addcommas(t, g, n);
            if (m <= room) return m;
        }
    }
    for (int p = pmax; p >= 1; --p) {
        int n = gtext(g, ax, p);
        if (n <= room) {
            std::memcpy(t, g, n + 1);
            return n;
        }
    }
    return 0;
}

// Shortest %.<p>g text, ties to more digits: the form of a value too wide.
int overflow_text(char* t, double ax) {
    char g[48];
    int best = 1 << 30;
    for (int p = 17; p >= 1; --p) {
        int n = gtext(g, ax, p);
        if (n < best) {
            best = n;
            std::memcpy(t, g, n + 1);
        }
    }
    return best;
}

// Numeric e/f/g rendering of a non-missing value.
int render_efg(char* buf, const FmtDesc& d, double x) {
    if (x == 0) x = 0; // minus zero
    bool neg = std::signbit(x);
    double ax = std::fabs(x);
    int w = d.width;
    int room = w > 1 ? w - 1 : 1;
    char t[600];
    int n = 0;
    bool zero_pad = false;

    if (d.kind == 'f') {
        if (ax < 1e244) {
            auto r = std::to_chars(t, t + sizeof t, ax, std::chars_format::fixed, d.decimals);
            n = static_cast<int>(r.ptr - t);
            bool s = neg && any_nonzero_digit(t, n);
            if (n + s > w) {
                n = 0;
            } else if (d.mod == 'c') {
                char c[600];
                int m = addcommas(c, t, n);
                if (m + s <= w) {
                    std::memcpy(t, c, m + 1);
                    n = m;
                }
            }
            zero_pad = n > 0 && d.zero;
        }
        if (n == 0) n = gsearch(t, ax, room, 0, false);
    } else if (d.kind == 'e') {
        auto r = std::to_chars(t, t + sizeof t, ax, std::chars_format::scientific, d.decimals);
        n = static_cast<int>(r.ptr - t);
        bool s = neg && any_nonzero_digit(t, n);
        if (n + s > w) n = gsearch(t, ax, room, 0, false);
    } else {
        n = gsearch(t, ax, room, d.decimals, d.mod == 'c');
    }
    if (n == 0) n = overflow_text(t, ax);
    t[n] = 0;

    if (d.comma || dpcomma) {
        for (int i = 0; i < n; ++i) {
            if (t[i] == '.')
                t[i] = ',';
            else if (t[i] == ',')
                t[i] = '.';
        }
    }
    bool sign = neg && any_nonzero_digit(t, n);
    char u[640];
    int k = 0;
    if (sign) u[k++] = '-';
    if (zero_pad) {
        int z = w - n - k;
        if (z > 0) {
            std::memset(u + k, '0', z);
            k += z;
        }
    }
    std::memcpy(u + k, t, n);
    k += n;
    return place(buf, u, k, w, d.justify);
}

int render_bits(char* buf, const FmtDesc& d, double x) {
    static const char hex[] = "0123456789abcdef";
    char t[32];
    int n = 0;
    if (d.kind == 'x') {
        n = hexfloat_write(t, x);
    } else {
        uint64_t b;
        int bytes;
        if (d.width == 8) {
            // beyond the largest float plus half its last place, the float is infinite
            float f = std::fabs(x) < 0x1.ffffffp127 ? static_cast<float>(x)
                                                    : (std::signbit(x) ? -HUGE_VALF : HUGE_VALF);
            if (x != x) f = static_cast<float>(x);
            uint32_t u;
            std::memcpy(&u, &f, 4);
            b = u;
            bytes = 4;
        } else {
            b = dbits(x);
            bytes = 8;
        }
        for (int i = 0; i < bytes; ++i) {
            int byte = d.kind == 'H' ? bytes - 1 - i : i;
            unsigned v = static_cast<unsigned>((b >> (8 * byte)) & 0xff);
            t[n++] = hex[v >> 4];
            t[n++] = hex[v & 0xf];
        }
        t[n] = 0;
    }
    return place(buf, t, n, d.width, d.justify);
}

const FmtDesc& default_desc() {
    static const FmtDesc d{}; // %9.0g
    return d;
}

char safebuf[kFmtBufSize];

} // namespace

// ---- chkfmt -----------------------------------------------------------------

int chkfmt(const char* text, int kind, FmtDesc* desc) {
    if (!text || text[0] != '%') return 1;
    if (std::strlen(text) > static_cast<size_t>(kFmtMaxText)) return 1;
    int base = kind % 10;
    bool marks = kind >= 10;
    const char* p = text + 1;
    char first = p[0] == '-' ? p[1] : p[0];
    if (first == 'd' || first == 't') {
        if (base == 2) return 1;
        return first == 'd' ? chkdfmt(text, desc) : chktfmt(text, desc);
    }
    FmtDesc d;
    d.justify = 1;
    if (*p == '-') {
        d.justify = -1;
        ++p;
    } else if (*p == '~') {
        d.justify = 0;
        ++p;
    }
    if (*p == '0' && isdig(p[1])) {
        d.zero = 1;
        ++p;
        if (*p == '0') return 1;
    }
    int w = read_small(p);
    if (w < 1 || w > kFmtMaxWidth) return 1;
    d.width = w;
    d.decimals = 0;
    d.mod = ' ';
    d.comma = 0;

    if (*p == 's') {
        if (base == 1 || d.zero || p[1]) return 1;
        d.cls = 's';
        d.kind = 's';
        *desc = d;
        return 0;
    }
    if (base == 2) return 1;
    if (d.justify != 1 && !marks) return 1;
    if (*p == 'x' || *p == 'H' || *p == 'L') {
        if (d.justify == 0 || d.zero || p[1]) return 1;
        if (*p == 'x' ? w != 21 : (w != 16 && w != 8)) return 1;
        d.cls = 'f';
        d.kind = *p;
        *desc = d;
        return 0;
    }
    if (*p != '.' && *p != ',') return 1;
    d.comma = *p == ',';
    ++p;
    int dec = read_small(p);
    if (dec < 0 || dec > w - 1) return 1;
    d.decimals = dec;
    if (*p != 'e' && *p != 'f' && *p != 'g') return 1;
    d.kind = *p++;
    d.cls = 'g';
    if (*p == 'c' && d.kind != 'e') {
        d.mod = 'c';
        ++p;
    }
    if (*p) return 1;
    if (d.zero && (d.kind != 'f' || d.mod == 'c' || d.justify != 1)) return 1;
    *desc = d;
    return 0;
}

// ---- rendering ----------------------------------------------------------------

int strfmt(char* buf, const char* s, int width, int justify) {
    int n = static_cast<int>(std::strlen(s));
    if (n > kFmtBufSize - 1) n = kFmtBufSize - 1;
    if (width > kFmtBufSize - 1) width = kFmtBufSize - 1;
    return place(buf, s, n, width, justify);
}

int fmtrender(char* buf, const FmtDesc& d, double x) {
    bool bits = d.kind == 'x' || d.kind == 'H' || d.kind == 'L';
    if (d.kind == 'd') return fmtrender_date(buf, d, x);
    if (d.kind == 's') return fmtrender(buf, default_desc(), x);
    // not-a-number and minus infinity never reach data; the bit formats show
    // them as they are, the others as `.`
    if (bits && !ismissing(x) && !std::isfinite(x)) return render_bits(buf, d, x);
    if (ismissing(x) || !std::isfinite(x)) {
        char t[4];
        int n = missing_text(t, x);
        return place(buf, t, n, d.width, d.justify);
    }
    if (bits) {
        if (x == 0) x = 0;
        return render_bits(buf, d, x);
    }
    return render_efg(buf, d, x);
}

int fmtrenderstr(char* buf, const FmtDesc& d, const char* s) {
    return strfmt(buf, s, d.width, d.justify);
}

int fmtnum(char* buf, const char* fmt, double x) {
    FmtDesc d;
    if (chkfmt(fmt, 10, &d)) return fmtrender(buf, default_desc(), x);
    return fmtrender(buf, d, x);
}

char* sreforms(const char* fmt, double x) {
    fmtnum(outbuf, fmt, x);
    return outbuf;
}

int reforms(const char* fmt, double x) {
    return spout21(sreforms(fmt, x));
}

char* safereforms(const char* fmt, double x) {
    fmtnum(safebuf, fmt, x);
    return safebuf;
}

char* sreformstr(const char* fmt, const char* s) {
    FmtDesc d;
    if (chkfmt(fmt, 12, &d)) {
        d = FmtDesc{};
        d.width = 0;
    }
    fmtrenderstr(outbuf, d, s);
    return outbuf;
}

namespace {
int render_labelled(char* buf, const char* fmt, const char* label, double x) {
    const char* text = nullptr;
    if (label && *label && reforml_lookup) text = reforml_lookup(label, x);
    if (!text) return fmtnum(buf, fmt, x);
    FmtDesc d;
    if (chkfmt(fmt, 10, &d)) d = default_desc();
    int n = static_cast<int>(std::strlen(text));
    if (n > d.width) n = d.width;
    return place(buf, text, n, d.width, d.justify);
}
} // namespace

char* sreforml(const char* fmt, const char* label, double x) {
    render_labelled(outbuf, fmt, label, x);
    return outbuf;
}

int reforml(const char* fmt, const char* label, double x) {
    return spout21(sreforml(fmt, label, x));
}

char* safereforml(const char* fmt, const char* label, double x) {
    render_labelled(safebuf, fmt, label, x);
    return safebuf;
}

char* sreformint(int64_t n) {
    std::snprintf(outbuf, sizeof outbuf, "%" PRId64, n);
    return outbuf;
}
int reformint(int64_t n) {
    return spout21(sreformint(n));
}
char* sreformptr(const void* p) {
    std::snprintf(outbuf, sizeof outbuf, "%lx",
                  static_cast<unsigned long>(reinterpret_cast<uintptr_t>(p)));
    return outbuf;
}
int reformptr(const void* p) {
    return spout21(sreformptr(p));
}

namespace {
int compact(char* buf, int n) {
    int s = 0;
    while (s < n && buf[s] == ' ') ++s;
    std::memmove(buf, buf + s, n - s + 1);
    return n - s;
}
} // namespace

int suform(char* buf, double x, int width) {
    FmtDesc d;
    d.width = width < 1 ? 1 : width > kFmtMaxWidth ? kFmtMaxWidth : width;
    return compact(buf, fmtrender(buf, d, x));
}

int suformd(char* buf, double x, int width, int decimals) {
    FmtDesc d;
    d.width = width < 1 ? 1 : width > kFmtMaxWidth ? kFmtMaxWidth : width;
    d.kind = 'f';
    d.decimals = decimals < 0 ? 0 : decimals >= d.width ? d.width - 1 : decimals;
    return compact(buf, fmtrender(buf, d, x));
}

char* reformld(int64_t n, int width) {
    char t[40], c[40];
    uint64_t mag = n < 0 ? 0 - static_cast<uint64_t>(n) : static_cast<uint64_t>(n);
    auto r = std::to_chars(t, t + sizeof t, mag);
    int m = addcommas(c + 1, t, static_cast<int>(r.ptr - t));
    char* s = c + 1;
    if (n < 0) {
        c[0] = '-';
        s = c;
        ++m;
    }
    if (width > kFmtMaxWidth) width = kFmtMaxWidth;
    place(outbuf, s, m, width, 1);
    return outbuf;
}

int fmt_memval(char* buf, uint64_t bytes) {
    if (bytes % 0x100000 == 0)
        return std::snprintf(buf, 32, "%luM", static_cast<unsigned long>(bytes / 0x100000));
    return std::snprintf(buf, 32, "%luk", static_cast<unsigned long>(bytes / 1024));
}

char* sreforms_memval(uint64_t bytes) {
    fmt_memval(outbuf, bytes);
    return outbuf;
}

// ---- formats of variables -------------------------------------------------------

int fixfmt(char* fmt, int len) {
    FmtDesc d;
    if (chkfmt(fmt, 10, &d) || d.cls != 'g') return 0;
    if (len > kFmtMaxWidth) len = kFmtMaxWidth;
    if (d.width + d.decimals >= len) return 0;
    if (d.decimals > len - 1) return 0;
    char t[32];
    const char* mark = d.justify < 0 ? "-" : d.justify == 0 ? "~" : d.zero ? "0" : "";
    std::snprintf(t, sizeof t, "%%%s%d%c%d%c%s", mark, len, d.comma ? ',' : '.', d.decimals, d.kind,
                  d.mod == 'c' ? "c" : "");
    if (std::strlen(t) > static_cast<size_t>(kFmtMaxText)) return 0;
    copytext(fmt, static_cast<size_t>(kFmtMaxText) + 1, t);
    return 1;
}

void fixfmts(int from, int to, char* (*slot)(int v), int (*labellen)(int v)) {
    for (int v = from; v <= to; ++v) {
        int len = labellen(v);
        if (len >= 0) fixfmt(slot(v), len);
    }
}

int setvarfmt(char* slot, const char* text, int vartype) {
    FmtDesc d;
    bool isstr = vartype >= 1 && vartype <= 244;
    if (chkfmt(text, isstr ? 12 : 11, &d)) return 120;
    copytext(slot, static_cast<size_t>(kFmtMaxText) + 1, text); // chkfmt checked the length
    return 0;
}

int setdp(const char* word) {
    if (word && std::strcmp(word, "comma") == 0) {
        dpcomma = 1;
        return 0;
    }
    if (word && std::strcmp(word, "period") == 0) {
        dpcomma = 0;
        return 0;
    }
    return 198;
}

const char* dpname() {
    return dpcomma ? "comma" : "period";
}

} // namespace korvu
