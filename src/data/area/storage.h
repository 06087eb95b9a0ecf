// Storage types and cell accessors. Every read and write of a data
// value goes through these; they are inline, use unaligned copies and check
// nothing: callers guarantee variable and observation numbers.
//
// Missing values: `.` < `.a` < ... < `.z`, all above every number.
//   value   double bits          float bits   long         int    byte
//   .       0x7FE0000000000000   0x7F000000   2147483621   32741  101
//   .a      0x7FE0010000000000   0x7F000800   2147483622   32742  102
//   .z      0x7FE01A0000000000   0x7F00D000   2147483647   32767  127
#pragma once
#include <cstdint>
#include <cstring>

#include "data/area/dataarea.h"
#include "data/area/missing.h"

namespace korvu {

// ---------------------------------------------------------------------------
// Named constants ("1.0x+3ff" and friends of hexadecimal-float text)
// ---------------------------------------------------------------------------
inline constexpr double misval_z = 0x1.01ap1023; // "1.01ax+3ff"
inline constexpr double misval_110 = 0x1p1023;   // "1.0x+3ff"
inline constexpr double misval_107 = 0x1p333;    // "1.0x+14d"
inline constexpr float fltmis = 0x1p127f;        // "1.0x+7f"
inline constexpr float fltmis_110 = 0x1p127f;
inline constexpr float fltmis_107 = 0x1p127f;
inline constexpr double max_kvdouble = 0x1.fffffffffffffp1022;  // "1.fffffffffffffX+3fe"
inline constexpr double min_kvdouble = -0x1.fffffffffffffp1022; // "-1.fffffffffffffX+3fe"
inline constexpr double min_realdouble = -0x1.fffffffffffffp1023;
inline constexpr double smallest_kvdouble = 0x1.fffffffffffffp-1022; // "1.fffffffffffffX-3fe"
inline constexpr double eps_kvdouble = 0x1p-52;                      // "1.0X-34"
inline constexpr float max_kvfloat = 0x1.fffffep126f;                // "1.fffffeX+7e"
inline constexpr float min_kvfloat = -0x1.fffffep126f;
inline constexpr float eps_kvfloat = 0x1p-23f; // "1.0X-17"

// Old single-missing codes.
inline constexpr int8_t bytemis_110 = 0x7F;
inline constexpr int16_t intmis_110 = 0x7FFF;
inline constexpr int32_t longmis_110 = 0x7FFFFFFF;

// Missing codes of the present types; letter 0 is `.`, 1..26 `.a`..`.z`.
inline constexpr int8_t bytemis = 101;
inline constexpr int16_t intmis = 32741;
inline constexpr int32_t longmis = 2147483621;
inline constexpr uint32_t fltmis_bits = 0x7F000000;
inline constexpr uint64_t dblmis_bits = 0x7FE0000000000000ULL;
inline constexpr int8_t maxbyte = 100, minbyte = -127;
inline constexpr int16_t maxint = 32740, minint = -32767;
inline constexpr int32_t maxlong = 2147483620, minlong = -2147483647;

inline constexpr int8_t bytemis_of(int letter) {
    return static_cast<int8_t>(101 + letter);
}
inline constexpr int16_t intmis_of(int letter) {
    return static_cast<int16_t>(32741 + letter);
}
inline constexpr int32_t longmis_of(int letter) {
    return 2147483621 + letter;
}
inline constexpr uint32_t fltmis_bits_of(int letter) {
    return 0x7F000000u + 0x800u * letter;
}
inline constexpr uint64_t dblmis_bits_of(int letter) {
    return 0x7FE0000000000000ULL + (static_cast<uint64_t>(letter) << 40);
}

inline uint32_t fbits(float f) {
    uint32_t u;
    std::memcpy(&u, &f, 4);
    return u;
}
inline float bitsf(uint32_t u) {
    float f;
    std::memcpy(&f, &u, 4);
    return f;
}
// Unbiased exponent: the exponent field minus 1023; 1023 for every missing.
inline int dexpo(uint64_t bits) {
    return static_cast<int>((bits >> 52) & 0x7FF) - 1023;
}
// The code byte, bits 40 to 47.
inline int dcode(uint64_t bits) {
    return static_cast<int>((bits >> 40) & 0xFF);
}

// ---------------------------------------------------------------------------
// Encoders and decoders
// ---------------------------------------------------------------------------
// Float of a missing double: the exponent field is rewritten to 0x47E, so
// that the conversion lands on 2^127 and keeps the letter.
inline float kvfloat_of_missing(uint64_t bits) {
    uint64_t top = ((bits >> 48) & 0xF) | 0x47E0;
    return static_cast<float>(bitsd((bits & 0x0000FFFFFFFFFFFFULL) | (top << 48)));
}
// Encodes x as a float; returns 1 when the value had to become missing.
inline int kvfloat(float* f, double x) {
    uint64_t b = dbits(x);
    int e = dexpo(b);
    float r;
    int rc = 0;
    if (e == 1023) {
        r = kvfloat_of_missing(b);
        rc = 1;
    } else if (e < 127) {
        r = e < -127 ? 0.0f : static_cast<float>(x);
    } else {
        r = fltmis;
        rc = 1;
    }
    std::memcpy(f, &r, 4);
    return rc;
}
inline double kvdouble_of_float(float f) {
    if (f < fltmis) return static_cast<double>(f);
    uint64_t b = dbits(static_cast<double>(f));
    uint64_t top = ((b >> 48) & 0xF) | 0x7FE0;
    return bitsd((b & 0x0000FFFFFFFFFFFFULL) | (top << 48));
}
// Decodes a float at any address.
inline double kvdouble_of_kvfloatp(const void* p) {
    float f;
    std::memcpy(&f, p, 4);
    double d = static_cast<double>(f);
    uint64_t b = dbits(d);
    if (((b >> 52) & 0x7FF) == 0x47E) {
        uint64_t top = ((b >> 48) & 0xF) | 0x7FE0;
        return bitsd((b & 0x0000FFFFFFFFFFFFULL) | (top << 48));
    }
    return d;
}
inline double kvdouble_of_kvlong(int32_t v) {
    return v >= longmis ? mkmissing(v - longmis) : static_cast<double>(v);
}
inline double kvdouble_of_kvint(int16_t v) {
    return v >= intmis ? mkmissing(v - intmis) : static_cast<double>(v);
}
inline double kvdouble_of_kvbyte(int8_t v) {
    return v >= bytemis ? mkmissing(v - bytemis) : static_cast<double>(v);
}
inline int32_t kvlong_of_kvdouble(double x) {
    uint64_t b = dbits(x);
    int e = dexpo(b);
    if (e == 1023) {
        int c = dcode(b);
        return c < 27 ? longmis + c : longmis;
    }
    if (e < 31) {
        int32_t v = static_cast<int32_t>(x);
        return v >= longmis ? longmis : v;
    }
    return longmis;
}
inline int16_t kvint_of_kvdouble(double x) {
    uint64_t b = dbits(x);
    int e = dexpo(b);
    if (e == 1023) {
        int c = dcode(b);
        return static_cast<int16_t>(c < 27 ? intmis + c : intmis);
    }
    if (e < 15) {
        int32_t v = static_cast<int32_t>(x);
        return static_cast<int16_t>(v >= intmis ? intmis : v);
    }
    return intmis;
}
inline int8_t kvbyte_of_kvdouble(double x) {
    uint64_t b = dbits(x);
    int e = dexpo(b);
    if (e == 1023) {
        int c = dcode(b);
        return static_cast<int8_t>(c < 27 ? bytemis + c : bytemis);
    }
    if (e < 7) {
        int32_t v = static_cast<int32_t>(x);
        return static_cast<int8_t>(v >= bytemis ? bytemis : v);
    }
    return bytemis;
}
// Rounds to the nearest integer (halves away from zero), saturating at
// 0x7FFFFFFF above and 0x80000001 below; missing saturates above.
int32_t int4ofdouble(double x);
double kvround(double x);

// Decodes the cell at p of type code; a string type gives misval.
inline double decode_cell(const uint8_t* p, int code) {
    switch (code) {
    case KV_DOUBLE: {
        double d;
        std::memcpy(&d, p, 8);
        return d;
    }
    case KV_FLOAT: {
        float f;
        std::memcpy(&f, p, 4);
        return kvdouble_of_float(f);
    }
    case KV_LONG: {
        int32_t v;
        std::memcpy(&v, p, 4);
        return kvdouble_of_kvlong(v);
    }
    case KV_INT: {
        int16_t v;
        std::memcpy(&v, p, 2);
        return kvdouble_of_kvint(v);
    }
    case KV_BYTE: return kvdouble_of_kvbyte(static_cast<int8_t>(*p));
    case KV_OLDBYTE: {
        int8_t v = static_cast<int8_t>(*p);
        return v == bytemis_110 ? misval : v;
    }
    case KV_OLDINT: {
        int16_t v;
        std::memcpy(&v, p, 2);
        return v == intmis_110 ? misval : v;
    }
    case KV_OLDLONG: {
        int32_t v;
        std::memcpy(&v, p, 4);
        return v == longmis_110 ? misval : v;
    }
    case KV_OLDFLOAT: {
        float f;
        std::memcpy(&f, p, 4);
        return f >= fltmis_110 ? misval : static_cast<double>(f);
    }
    case KV_OLDDOUBLE: {
        double d;
        std::memcpy(&d, p, 8);
        return d >= misval_110 ? misval : d;
    }
    default: return misval;
    }
}

// Encodes x into the cell at p of type code; no effect for a string type.
inline void encode_cell(uint8_t* p, int code, double x) {
    uint64_t b = dbits(x);
    int e = dexpo(b);
    switch (code) {
    case KV_DOUBLE: std::memcpy(p, &x, 8); return;
    case KV_FLOAT: {
        float f;
        if (e == 1023)
            f = kvfloat_of_missing(b);
        else if (e > 126)
            f = fltmis;
        else if (e < -127)
            f = 0.0f;
        else
            f = static_cast<float>(x);
        std::memcpy(p, &f, 4);
        return;
    }
    case KV_LONG: {
        int32_t v = kvlong_of_kvdouble(x);
        std::memcpy(p, &v, 4);
        return;
    }
    case KV_INT: {
        int16_t v = kvint_of_kvdouble(x);
        std::memcpy(p, &v, 2);
        return;
    }
    case KV_BYTE: *p = static_cast<uint8_t>(kvbyte_of_kvdouble(x)); return;
    case KV_OLDDOUBLE: std::memcpy(p, &x, 8); return;
    case KV_OLDFLOAT: {
        float f;
        if (e > 124)
            f = fltmis_110;
        else if (e < -120)
            f = 0.0f;
        else
            f = static_cast<float>(x);
        std::memcpy(p, &f, 4);
        return;
    }
    case KV_OLDLONG: {
        int32_t v = e > 30 ? longmis_110 : static_cast<int32_t>(x);
        std::memcpy(p, &v, 4);
        return;
    }
    case KV_OLDINT: {
        int16_t v = e > 14 ? intmis_110 : static_cast<int16_t>(static_cast<int32_t>(x));
        std::memcpy(p, &v, 2);
        return;
    }
    case KV_OLDBYTE:
        *p = static_cast<uint8_t>(e > 6 ? bytemis_110
                                        : static_cast<int8_t>(static_cast<int32_t>(x)));
        return;
    default: return;
    }
}

// ---------------------------------------------------------------------------
// Cell accessors; v and i are 1-based
// ---------------------------------------------------------------------------
// Each variable is one contiguous column (see dataarea.h): the cell of
// observation i lies at colptr(v) + mapj[i-1] * bytlenc(type).
inline uint8_t* dtaptr(int v, int i) {
    return colptr(v) + static_cast<ptrdiff_t>(mapj[i - 1]) * cellwidth(v);
}

inline double korvu_data(int v, int i) {
    return decode_cell(dtaptr(v, i), typlist[v - 1]);
}
inline void store(int v, int i, double x) {
    encode_cell(dtaptr(v, i), typlist[v - 1], x);
}
inline void bstore(int v, int i, uint8_t b) {
    *dtaptr(v, i) = b;
}

// Copies a string cell into buf (which holds bytlenc + 1 bytes) and
// terminates it; a numeric variable gives "".
inline char* skorvu_data(int v, int i, char* buf) {
    int code = typlist[v - 1];
    if (code >= 245) {
        buf[0] = 0;
        return buf;
    }
    const uint8_t* p = dtaptr(v, i);
    const void* z = std::memchr(p, 0, code);
    size_t n =
        z ? static_cast<size_t>(static_cast<const uint8_t*>(z) - p) : static_cast<size_t>(code);
    std::memcpy(buf, p, n);
    buf[n] = 0;
    return buf;
}
// Stores the text of s, cut to bytlenc bytes, and zero bytes behind it to
// the end of the cell; no effect on a numeric variable. Nothing past the
// terminator of s is read, so a cell never holds stray bytes and the same
// data always save to the same file.
inline void sstore(int v, int i, const char* s) {
    int code = typlist[v - 1];
    if (code >= 245) return;
    uint8_t* p = dtaptr(v, i);
    size_t n = strnlen(s, code);
    std::memcpy(p, s, n);
    if (n < static_cast<size_t>(code)) std::memset(p + n, 0, code - n);
}
// The same as sstore.
inline void sstorez(int v, int i, const char* s) {
    sstore(v, i, s);
}

// Copies of the first n bytes of observation i as a record: the cells of
// variables 1, 2, ... end to end at their offsets mapi[v-1].
void getdtaobs(void* dst, int i, int n);
void putdtaobs(const void* src, int i, int n);
// Observations i0..i0+k-1 as k records of `width` bytes (variables 1..nv at
// their offsets mapi[v-1]) into buf: the transpose that writes a dataset file.
void getdtablock(uint8_t* buf, int width, int i0, int k, int nv);
// k cells of width w of a column to or from k records of recw bytes (the
// cell at the same place in each record).
void cells_to_records(uint8_t* rec, int64_t recw, const uint8_t* col, int w, int64_t k);
void cells_from_records(uint8_t* col, int w, const uint8_t* rec, int64_t recw, int64_t k);

// Collapses extended missing values to the old single missing in every
// variable whose type has an old code (before writing an old file format).
void change_mv_to_old();

} // namespace korvu
