// Binary buffers: numbers and text put into and got from a string at a byte
// offset, in a binary format and a byte order.
//
// Formats: "%8z" and "%4z" a double and a float; "%1b", "%2b", "%4b" signed
// integers ("s" after the b may say so), coded as the dataset stores them
// (the values above the largest number stand for `.` and `.a` to `.z`; a
// value out of range is put as `.`); "%1bu", "%2bu", "%4bu" unsigned
// integers, which have no missing values; "%#s" text of # bytes, padded with
// binary zeros and read up to the first one; "%#S" # bytes as they are.
//
// The byte order comes from C, what bufio() makes: C[1] 1 for most
// significant byte first, 2 for least first. Without C the machine's own
// order is used. Offsets count bytes from 0.
#include <cinttypes>
#include <cstdint>
#include <cstring>
#include <string>

#include "data/area/storage.h"
#include "lumo/builtins/bi.h"

namespace korvu {

namespace {

struct BFmt {
    char kind; // 'z' floating, 'b' signed, 'u' unsigned, 's' text, 'S' bytes
    int64_t len;
};

bool parsefmt(const std::string& f, BFmt* b) {
    const char* p = f.c_str();
    while (*p == ' ') p++;
    if (*p++ != '%') return false;
    if (*p < '1' || *p > '9') return false;
    int64_t w = 0;
    while (*p >= '0' && *p <= '9') {
        w = w * 10 + (*p++ - '0');
        if (w > 2147483647) return false;
    }
    char k = *p++;
    if (k == 'b' && (*p == 's' || *p == 'u')) {
        if (*p == 'u') k = 'u';
        p++;
    }
    while (*p == ' ') p++;
    if (*p) return false;
    switch (k) {
    case 'z':
        if (w != 4 && w != 8) return false;
        break;
    case 'b':
    case 'u':
        if (w != 1 && w != 2 && w != 4) return false;
        break;
    case 's':
    case 'S': break;
    default: return false;
    }
    b->kind = k;
    b->len = w;
    return true;
}

bool getfmt(int n, int k, BFmt* b) {
    std::string f;
    if (!bi_getstr(n, k, &f)) return false;
    if (parsefmt(f, b)) return true;
    m_custom_xeqerr(3302, "invalid binary format %s", f.c_str());
    return false;
}

bool nativehilo() {
    const uint16_t one = 1;
    uint8_t b;
    memcpy(&b, &one, 1);
    return b == 0;
}

// The byte order of C (argument k): true when the bytes must be reversed
// from the machine's own order.
bool getswap(int n, int k, bool* swap) {
    MObj* c = bi_mat(n, k);
    if (!c || !bi_real(c)) return false;
    if (m_nel(c) < 1) {
        m_xeqerr(3200);
        return false;
    }
    const double o = m_rel(c)[0];
    if (o != 1 && o != 2) {
        m_custom_xeqerr(3300, "byte order in C[1] must be 1 or 2");
        return false;
    }
    *swap = (o == 1) != nativehilo();
    return true;
}

void reverse(uint8_t* p, int64_t w) {
    for (int64_t i = 0, j = w - 1; i < j; i++, j--) std::swap(p[i], p[j]);
}

// One number into w bytes at p; false for a value an unsigned format
// cannot hold.
bool putnum(uint8_t* p, const BFmt& f, double x, bool swap) {
    const int64_t w = f.len;
    if (f.kind == 'u') {
        const double top = w == 1 ? 255.0 : w == 2 ? 65535.0 : 4294967295.0;
        if (!(x >= 0 && x < top + 1)) return false;
        const uint32_t v = static_cast<uint32_t>(x);
        if (w == 1) *p = static_cast<uint8_t>(v);
        if (w == 2) {
            const uint16_t s = static_cast<uint16_t>(v);
            memcpy(p, &s, 2);
        }
        if (w == 4) memcpy(p, &v, 4);
    } else {
        const int code = f.kind == 'z' ? (w == 8 ? KV_DOUBLE : KV_FLOAT)
                                       : (w == 1   ? KV_BYTE
                                          : w == 2 ? KV_INT
                                                   : KV_LONG);
        encode_cell(p, code, x);
    }
    if (swap) reverse(p, w);
    return true;
}

double getnum(const uint8_t* q, const BFmt& f, bool swap) {
    uint8_t p[8];
    memcpy(p, q, static_cast<size_t>(f.len));
    if (swap) reverse(p, f.len);
    const int64_t w = f.len;
    if (f.kind == 'u') {
        if (w == 1) return p[0];
        if (w == 2) {
            uint16_t s;
            memcpy(&s, p, 2);
            return s;
        }
        uint32_t v;
        memcpy(&v, p, 4);
        return v;
    }
    const int code = f.kind == 'z' ? (w == 8 ? KV_DOUBLE : KV_FLOAT)
                                   : (w == 1   ? KV_BYTE
                                      : w == 2 ? KV_INT
                                               : KV_LONG);
    return decode_cell(p, code);
}

// The buffer argument k: a string scalar; its bytes.
bool getbuf(int n, int k, MObj** b) {
    *b = bi_any(n, k);
    if (!*b) return false;
    if ((*b)->view) {
        m_xeqerr(3103);
        return false;
    }
    return bi_string(*b) && bi_scalar(*b);
}

bool getoffset(int n, int k, int64_t* off) {
    return bi_getint(n, k, 0, 2147483647, off);
}

// count elements of width bytes at the offset lie within have bytes.
bool fits(int64_t off, int64_t count, int64_t width, int64_t have) {
    if (off <= have && (width == 0 || count <= (have - off) / width)) return true;
    m_custom_xeqerr(3300,
                    "buffer of %" PRId64 " bytes too short for %" PRId64 " elements of %" PRId64
                    " bytes at offset %" PRId64,
                    have, count, width, off);
    return false;
}

} // namespace

// bufput([C,] B, offset, bfmt, X): the elements of X, row by row, into B
// from the offset on; B keeps its length.
static void bi_bufput(int n) {
    MObj* first = bi_any(n, 0);
    if (!first) return;
    const int k0 = first->eltype == MT_STRING ? 0 : 1;
    if (n != 4 + k0)
        return m_custom_xeqerr(3001, "expected %d arguments but received %d", 4 + k0, n);
    bool swap = false;
    if (k0 && !getswap(n, 0, &swap)) return;
    MObj* b;
    int64_t off;
    BFmt f;
    if (!getbuf(n, k0, &b) || !getoffset(n, k0 + 1, &off) || !getfmt(n, k0 + 2, &f)) return;
    MObj* x = bi_mat(n, k0 + 3);
    if (!x) return;
    x = bi_arg(n, k0 + 3);
    const bool text = f.kind == 's' || f.kind == 'S';
    if (text ? !bi_string(x) : !bi_real(x)) return;
    const SCell* cell = m_sel(b)[0];
    const int64_t m = m_nel(x);
    if (!fits(off, m, f.len, cell->len)) return;
    std::string out(cell->s, static_cast<size_t>(cell->len));
    uint8_t* p = reinterpret_cast<uint8_t*>(&out[0]) + off;
    for (int64_t i = 0; i < m; i++, p += f.len) {
        if (text) {
            const SCell* s = m_sel(x)[i];
            const int64_t c = s->len < f.len ? s->len : f.len;
            memcpy(p, s->s, static_cast<size_t>(c));
            memset(p + c, 0, static_cast<size_t>(f.len - c));
        } else if (!putnum(p, f, m_rel(x)[i], swap)) {
            return m_custom_xeqerr(3300, "value out of range of the unsigned format");
        }
    }
    SCell* nc = sel_make(out.data(), out.size());
    if (!nc) return m_xeqerr(3900);
    selfree(m_sel(b)[0]);
    m_sel(b)[0] = nc;
    bi_voidres(n);
}

// bufget([C,] B, offset, bfmt[, r][, c]): one element, a row of c, or an
// r x c matrix read row by row from B at the offset.
static void bi_bufget(int n) {
    MObj* first = bi_any(n, 0);
    if (!first) return;
    const int k0 = first->eltype == MT_STRING ? 0 : 1;
    if (n < 3 + k0)
        return m_custom_xeqerr(3001, "expected %d to %d arguments but received %d", 3 + k0, 5 + k0,
                               n);
    if (n > 5 + k0)
        return m_custom_xeqerr(3001, "expected %d to %d arguments but received %d", 3 + k0, 5 + k0,
                               n);
    bool swap = false;
    if (k0 && !getswap(n, 0, &swap)) return;
    MObj* b;
    int64_t off;
    BFmt f;
    if (!getbuf(n, k0, &b) || !getoffset(n, k0 + 1, &off) || !getfmt(n, k0 + 2, &f)) return;
    int64_t r = 1, c = 1;
    if (n == k0 + 4 && !bi_getint(n, k0 + 3, 0, 2147483647, &c)) return;
    if (n == k0 + 5 &&
        (!bi_getint(n, k0 + 3, 0, 2147483647, &r) || !bi_getint(n, k0 + 4, 0, 2147483647, &c)))
        return;
    const SCell* cell = m_sel(bi_arg(n, k0))[0];
    if (!fits(off, r * c, f.len, cell->len)) return; // r and c below 2^31: no overflow
    const bool text = f.kind == 's' || f.kind == 'S';
    MObj* o = bi_new(text ? MT_STRING : MT_REAL, r, c);
    if (!o) return;
    const uint8_t* p = reinterpret_cast<const uint8_t*>(cell->s) + off;
    for (int64_t i = 0; i < r * c; i++, p += f.len) {
        if (!text) {
            m_rel(o)[i] = getnum(p, f, swap);
            continue;
        }
        int64_t len = f.len;
        if (f.kind == 's') {
            const void* z = memchr(p, 0, static_cast<size_t>(f.len));
            if (z) len = static_cast<const uint8_t*>(z) - p;
        }
        m_sel(o)[i] =
            bi_cell(std::string(reinterpret_cast<const char*>(p), static_cast<size_t>(len)));
    }
    bi_result(n, o);
}

// bufsub(B, offset, len): the len bytes of B from the offset.
static void bi_bufsub(int n) {
    MObj* b = bi_mat(n, 0);
    int64_t off, len;
    if (!b || !bi_string(b) || !bi_scalar(b) || !getoffset(n, 1, &off) ||
        !bi_getint(n, 2, 0, 2147483647, &len))
        return;
    const SCell* cell = m_sel(bi_arg(n, 0))[0];
    if (!fits(off, len, 1, cell->len)) return;
    bi_strres(n, std::string(cell->s + off, static_cast<size_t>(len)));
}

// bufbfmtlen(bfmt): the bytes of one element; bufbfmtisnum(bfmt): 1 for a
// numeric format, 0 for text.
static void bi_bufbfmtlen(int n) {
    BFmt f;
    if (getfmt(n, 0, &f)) bi_realres(n, static_cast<double>(f.len));
}
static void bi_bufbfmtisnum(int n) {
    BFmt f;
    if (getfmt(n, 0, &f)) bi_realres(n, f.kind == 's' || f.kind == 'S' ? 0 : 1);
}

void bi_link_buf(MBiFn* t) {
    t[bi_index("bufput")] = bi_bufput;
    t[bi_index("bufget")] = bi_bufget;
    t[bi_index("bufsub")] = bi_bufsub;
    t[bi_index("bufbfmtlen")] = bi_bufbfmtlen;
    t[bi_index("bufbfmtisnum")] = bi_bufbfmtisnum;
}

} // namespace korvu
