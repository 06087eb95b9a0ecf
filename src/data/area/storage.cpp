// Conversions that are not in the hot path.
#include "data/area/storage.h"

#include <cmath>

namespace korvu {

double kvround(double x) {
    if (x >= misval) return x;
    return x < 0 ? -std::floor(-x + 0.5) : std::floor(x + 0.5);
}

int32_t int4ofdouble(double x) {
    if (!(x == x)) return 0x7FFFFFFF;
    double r = kvround(x);
    if (r >= 2147483647.0) return 0x7FFFFFFF;
    if (r <= -2147483647.0) return static_cast<int32_t>(0x80000001);
    return static_cast<int32_t>(r);
}

void change_mv_to_old() {
    for (int v = 1; v <= nvar; v++) {
        const uint8_t code = typlist[v - 1];
        if (code < KV_BYTE) continue;
        const uint8_t old = static_cast<uint8_t>(code - 5);
        for (int i = 1; i <= nobs; i++) {
            uint8_t* p = dtaptr(v, i);
            double x = decode_cell(p, code);
            if (x >= misval) encode_cell(p, old, x);
        }
    }
}

} // namespace korvu
