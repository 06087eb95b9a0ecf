#include "data/hexfloat.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "data/missing.h"

namespace korvu {

namespace {

inline bool isblank_(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
inline bool isdig(char c) { return c >= '0' && c <= '9'; }
inline int hexval(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Hex-float after the sign. Returns 1 when the text is this form and valid,
// 0 when it is not this form at all, -1 when it is this form but malformed.
int read_hex(const char* p, const char* end, bool neg, double* x) {
    if (p >= end || (*p != '0' && *p != '1')) return 0;
    int lead = *p - '0';
    const char* q = p + 1;
    uint64_t frac = 0;
    int nd = 0;
    if (q >= end || *q != '.') return 0;  // the point is part of the form
    {
        ++q;
        while (q < end && hexval(*q) >= 0) {
            int v = hexval(*q);
            if (nd < 13) {
                frac |= static_cast<uint64_t>(v) << (48 - 4 * nd);
            } else if (v != 0) {
                return -1;  // more precision than a double holds
            }
            ++nd;
            ++q;
        }
    }
    if (q >= end || (*q != 'x' && *q != 'X')) return 0;
    ++q;
    bool eneg = false;
    if (q < end && (*q == '+' || *q == '-')) {
        eneg = *q == '-';
        ++q;
    }
    int64_t e = 0;
    int ne = 0;
    while (q < end && hexval(*q) >= 0) {
        e = e * 16 + hexval(*q);
        if (e > 0x10000) return -1;
        ++ne;
        ++q;
    }
    if (ne == 0 || q != end) return -1;
    if (eneg) e = -e;
    uint64_t sign = neg ? (uint64_t{1} << 63) : 0;
    if (lead == 1 && e >= -1022 && e <= 1024) {
        *x = bitsd(sign | (static_cast<uint64_t>(e + 1023) << 52) | frac);
        return 1;
    }
    if (lead == 0 && frac == 0) {
        *x = neg ? -0.0 : 0.0;
        return 1;
    }
    if (e > 1024) return -1;
    // lead 1 below the normal range, or lead 0: scale the 53-bit integer
    double m = std::ldexp(static_cast<double>((static_cast<uint64_t>(lead) << 52) | frac),
                          static_cast<int>(e) - 52);
    if (std::isinf(m)) return -1;
    *x = neg ? -m : m;
    return 1;
}

}  // namespace

int cnvstoz(const char* s, double* x) {
    if (!s) return 1;
    const char* p = s;
    while (isblank_(*p)) ++p;
    const char* end = p + std::strlen(p);
    while (end > p && isblank_(end[-1])) --end;
    if (p == end) return 1;

    // missing values
    if (*p == '.' && (end - p == 1 || (end - p == 2 && p[1] >= 'a' && p[1] <= 'z'))) {
        *x = end - p == 1 ? misval : mkmissing(p[1] - 'a' + 1);
        return 0;
    }

    bool neg = false;
    const char* q = p;
    if (*q == '+' || *q == '-') {
        neg = *q == '-';
        ++q;
    }
    int h = read_hex(q, end, neg, x);
    if (h == 1) return 0;
    if (h == -1) return 1;

    // decimal: digits, one point, optional exponent; normalised for from_chars
    char buf[400];
    int n = 0;
    if (end - q >= static_cast<long>(sizeof buf) - 2) return 1;
    if (neg) buf[n++] = '-';
    int mant_digits = 0;
    bool point = false;
    const char* r = q;
    while (r < end && (isdig(*r) || *r == '.')) {
        if (*r == '.') {
            if (point) return 1;
            point = true;
        } else {
            ++mant_digits;
        }
        buf[n++] = *r++;
    }
    if (mant_digits == 0) return 1;
    bool eneg = false;
    if (r < end) {
        if (*r != 'e' && *r != 'E' && *r != 'd' && *r != 'D') return 1;
        buf[n++] = 'e';
        ++r;
        if (r < end && (*r == '+' || *r == '-')) {
            eneg = *r == '-';
            if (eneg) buf[n++] = '-';
            ++r;
        }
        if (r >= end) return 1;
        while (r < end) {
            if (!isdig(*r)) return 1;
            buf[n++] = *r++;
        }
    }
    double v = 0;
    auto res = std::from_chars(buf, buf + n, v, std::chars_format::general);
    if (res.ptr != buf + n) return 1;
    if (res.ec == std::errc::result_out_of_range) {
        if (!eneg) return 1;
        v = neg ? -0.0 : 0.0;  // underflow
    } else if (res.ec != std::errc()) {
        return 1;
    }
    *x = v;
    return 0;
}

int hexfloat_write(char* out, double x) {
    static const char hex[] = "0123456789abcdef";
    uint64_t b = dbits(x);
    char* p = out;
    *p++ = (b >> 63) ? '-' : '+';
    int ebits = static_cast<int>((b >> 52) & 0x7ff);
    uint64_t frac = b & ((uint64_t{1} << 52) - 1);
    int lead = 1;
    int e = ebits - 1023;
    if (ebits == 0) {
        lead = 0;
        e = frac == 0 ? 0 : -1022;
    }
    *p++ = static_cast<char>('0' + lead);
    *p++ = '.';
    char digs[13];
    for (int i = 0; i < 13; ++i) digs[i] = hex[(frac >> (48 - 4 * i)) & 0xf];
    int nd = 13;
    while (nd > 1 && digs[nd - 1] == '0') --nd;
    std::memcpy(p, digs, nd);
    p += nd;
    *p++ = 'X';
    *p++ = e < 0 ? '-' : '+';
    int ae = e < 0 ? -e : e;
    *p++ = hex[(ae >> 8) & 0xf];
    *p++ = hex[(ae >> 4) & 0xf];
    *p++ = hex[ae & 0xf];
    *p = 0;
    return static_cast<int>(p - out);
}

}  // namespace korvu
