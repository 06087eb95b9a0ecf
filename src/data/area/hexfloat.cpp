#include "data/area/hexfloat.h"

#include <cstdint>
#include <cstring>

#include "data/area/missing.h"

namespace korvu {

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

} // namespace korvu
